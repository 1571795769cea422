// The register access panel of the family form: hex entry, read, write, "Read All" and the
// sensor's I2C address.
#include <QLineEdit>
#include <QListWidget>

#include <cmath>
#include <cstdlib>

#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

using USB_Comm::HexValue;

namespace {
constexpr int kLightGreen = 10;
constexpr int kGreen = 2;
constexpr int kLightRed = 12;
constexpr int kBlack = 0;
}  // namespace

void frmLXM410::txtRegHex_KeyPress(int Index, int KeyAscii) {
    if (KeyAscii != 13) return;
    QLineEdit* box = txtRegHex_[Index];
    box->setText(box->text().toUpper());
    const std::int32_t v = HexValue(box->text());
    if (v < 0 || v >= 256) box->setText(QStringLiteral("00"));
    if (Index == 0) {
        CmdBelow50 = HexValue(box->text()) < 0x50;
        s_.comm().WriteRegister(0);
    } else if (Index == 1) {
        s_.comm().WriteRegister(1);
    } else if (Index > 3) {
        cmdWrtReg_Click(Index);
    }
    // The data registers 2 and 3 are read-only on the chip: their entries are never sent.
}

void frmLXM410::txtRegHex_LostFocus(int Index) {
    QLineEdit* box = txtRegHex_[Index];
    box->setText(box->text().toUpper().left(2));
}

void frmLXM410::cmdWrtReg_Click(int Index) {
    s_.comm().WriteRegister(Index);
}

void frmLXM410::cmdRDReg_Click(int Index) {
    // Without a board, or while another transfer holds the bus, nothing was read: the
    // transfer layer has said so, and the steps below would only judge stale bytes.
    if (!s_.UsbConnected || s_.TransferBusy) {
        s_.comm().ReadRegister(Index);
        return;
    }
    Shape* ind = ShpIndrd_[Index];
    const bool wasLightGreen = ind->hasFillIndex(kLightGreen);
    s_.comm().ReadRegister(Index);
    if (Index != 2 && Index != 3) {
        if (txtRegHex_[Index]->text() != txtRegRd_[Index]->text()) ind->setFillIndex(kLightRed);
    } else {
        // The data registers change with every conversion: their lamp shows activity, never a
        // mismatch with the entry box, and flips once per read.
        ind->setFillIndex(wasLightGreen ? kGreen : kLightGreen);
    }
    if (Index == 0) ShpIntFlag->setFillIndex((s_.RegReadMirror[0] & 4) ? kLightRed : kBlack);
    s_.PendingRead[Index] = false;
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    DoEvents();
    LblCommTest_->hide();
    if (s_.ReadStatusByte != 1) {
        ind->setFillIndex(kLightRed);
        LblCommTest_->show();
        LblCommTest_->setBackColor(kRgbRed);
        LblCommTest_->setForeColor(kRgbWhite);
        LblCommTest_->setText(QStringLiteral("Fail"));
    }
}

void frmLXM410::cmdReadAllRegs_Click() {
    for (int i = 0; i < kRegisterRows; ++i) {
        if (!s_.UsbConnected) {
            s_.comm().NotConnected();
            return;
        }
        cmdRDReg_Click(i);
        DoEvents();
    }
}

void frmLXM410::txtI2CADR_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) txtI2CADR_LostFocus();
}

void frmLXM410::txtI2CADR_LostFocus() {
    txtI2CADR->setText(txtI2CADR->text().toUpper());
    if (std::llabs(std::int64_t(HexValue(txtI2CADR->text()))) >= 256)
        txtI2CADR->setText(QStringLiteral("88"));
    s_.I2cWriteAddr = std::uint8_t(HexValue(txtI2CADR->text()));
    s_.I2cReadAddr = std::uint8_t(s_.I2cWriteAddr + 1);
}

void frmLXM410::LstDeviceSel_MouseUp() {
    s_.I2cWriteAddr = 0x88;
    s_.I2cReadAddr = 0x89;
    // Kept as the board software always did it: the list moves only the read address.
    const int row = LstDeviceSel->currentRow();
    if (row <= 0) s_.I2cReadAddr = 0x8A;
    if (row == 1) s_.I2cReadAddr = 0x8B;
    txtI2CAddr->setText(Hex(long(RoundEven(s_.I2cReadAddr / 2.0))));
    txtI2cXmitAdr->setText(Hex(s_.I2cReadAddr));
}

}  // namespace lxm
