// The family form's rules on the shared register panel: which entries Enter sends, and the
// device list that moves the read address.
#include <QLineEdit>
#include <QListWidget>

#include "core/VbText.h"
#include "device/frmLXM410.h"
#include "device/parts/RegisterPanel.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"

namespace lxm {

using USB_Comm::HexValue;

void frmLXM410::txtRegHex_KeyPress(int Index, int KeyAscii) {
    if (KeyAscii != 13) return;
    QLineEdit* box = panel_->txtRegHex(Index);
    box->setText(CheckedHexByte(box->text(), false));
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
    QLineEdit* box = panel_->txtRegHex(Index);
    box->setText(box->text().toUpper().left(2));
}

void frmLXM410::txtI2CADR_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) txtI2CADR_LostFocus();
}

void frmLXM410::txtI2CADR_LostFocus() {
    panel_->AddressEntered();
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
