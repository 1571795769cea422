#include "device/parts/RegisterPanel.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>
#include <cstdlib>

#include "core/EntryCheck.h"
#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/parts/Controls.h"
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

QString CheckedHexByte(const QString& text, bool cut) {
    QString t = text.toUpper();
    if (cut) t = t.left(2);
    const std::int32_t v = HexValue(t);
    return v < 0 || v > 255 ? QStringLiteral("00") : t;
}

RegisterPanel::RegisterPanel(Session& session, int rows, const std::vector<QString>& readTips,
                             QWidget* parent)
    : QGroupBox(QStringLiteral("Register Access"), parent), s_(session), rows_(rows) {
    auto* rg = new QGridLayout(this);
    rg->setHorizontalSpacing(4);
    rg->setVerticalSpacing(1);
    rg->addWidget(new QLabel(QStringLiteral("Reg"), this), 0, 0);
    rg->addWidget(new QLabel(QStringLiteral("Write"), this), 0, 1, 1, 2, Qt::AlignCenter);
    rg->addWidget(new QLabel(QStringLiteral("Read"), this), 0, 4, 1, 2, Qt::AlignCenter);
    for (int i = 0; i < rows; ++i) {
        const int row = i + 1;
        rg->addWidget(new QLabel(QString::number(i), this), row, 0);
        auto* hex = MakeBox(this, QStringLiteral("00"), 36);
        hex->setToolTip(QStringLiteral("Display actual hex value of LXM200 control Register."));
        hex->installEventFilter(this);
        CheckHexByte(hex);
        auto* wr = new QPushButton(QStringLiteral("Write to Register"), this);
        auto* indWr = new Shape(this);
        auto* rd = MakeBox(this, QString(), 36);
        rd->setReadOnly(true);
        if (!readTips.empty()) rd->setToolTip(readTips[std::min<std::size_t>(i, readTips.size() - 1)]);
        auto* rdb = new QPushButton(QStringLiteral("Read Register"), this);
        auto* indRd = new Shape(this);
        rg->addWidget(hex, row, 1);
        rg->addWidget(wr, row, 2);
        rg->addWidget(indWr, row, 3);
        rg->addWidget(rd, row, 4);
        rg->addWidget(rdb, row, 5);
        rg->addWidget(indRd, row, 6);
        hex_.push_back(hex);
        rd_.push_back(rd);
        wrButton_.push_back(wr);
        rdButton_.push_back(rdb);
        indWr_.push_back(indWr);
        indRd_.push_back(indRd);
        // Every click and Enter is one user action, which tells of a missing board once.
        connect(rdb, &QPushButton::clicked, this, AsUserAction(s_, [this, i] {
                    if (onRead) onRead(i);
                }));
        connect(wr, &QPushButton::clicked, this, AsUserAction(s_, [this, i] {
                    if (onWrite) onWrite(i);
                }));
        connect(hex, &QLineEdit::returnPressed, this, AsUserAction(s_, [this, i] {
                    if (onEnter) onEnter(i);
                }));
    }
    readAll_ = new QPushButton(QStringLiteral("Read All"), this);
    auto* adrRow = new QHBoxLayout;
    adrRow->addWidget(new QLabel(QStringLiteral("I2C Adr"), this));
    address_ = MakeBox(this, QStringLiteral("88"), 40);
    CheckHexByte(address_);
    address_->installEventFilter(this);
    adrRow->addWidget(address_);
    adrRow->addStretch(1);
    rg->addLayout(adrRow, rows + 1, 0, 1, 4);
    rg->addWidget(readAll_, rows + 1, 4, 1, 3);
    footer_ = new QGridLayout;
    rg->addLayout(footer_, rows + 2, 0, 1, 7);
    connect(readAll_, &QPushButton::clicked, this, AsUserAction(s_, [this] { ReadAll(); }));
    connect(address_, &QLineEdit::returnPressed, this, [this] { AddressEntered(); });
}

QLineEdit* RegisterPanel::txtRegHex(int reg) const {
    return reg >= 0 && reg < rows_ ? hex_[reg] : nullptr;
}
QLineEdit* RegisterPanel::txtRegRd(int reg) const {
    return reg >= 0 && reg < rows_ ? rd_[reg] : nullptr;
}
QPushButton* RegisterPanel::cmdRDReg(int reg) const {
    return reg >= 0 && reg < rows_ ? rdButton_[reg] : nullptr;
}
QPushButton* RegisterPanel::cmdWrtReg(int reg) const {
    return reg >= 0 && reg < rows_ ? wrButton_[reg] : nullptr;
}
Shape* RegisterPanel::ShpIndrd(int reg) const {
    return reg >= 0 && reg < rows_ ? indRd_[reg] : nullptr;
}
Shape* RegisterPanel::ShpIndwr(int reg) const {
    return reg >= 0 && reg < rows_ ? indWr_[reg] : nullptr;
}

void RegisterPanel::SetRowToolTips(const QString& hexTip, const QString& readTip) {
    for (int i = 0; i < rows_; ++i) {
        hex_[i]->setToolTip(hexTip);
        rd_[i]->setToolTip(readTip);
        wrButton_[i]->setToolTip(QStringLiteral("Click to Write to Register ") + Str(i));
        rdButton_[i]->setToolTip(QStringLiteral("Click to Read from Register ") + Str(i));
    }
}

void RegisterPanel::ShowRegister(int reg) {
    if (QLineEdit* box = txtRegHex(reg)) box->setText(Hex2(s_.RegWriteMirror[reg]));
}

void RegisterPanel::ShowBusy(const QString& text) {
    if (rules_.busyStatus && s_.UsbConnected && s_.TransferBusy) rules_.busyStatus->setText(text);
}

void RegisterPanel::Write(int reg) {
    ShowBusy(QStringLiteral("Wrt_Reg Waiting"));
    s_.comm().WriteRegister(reg);
}

void RegisterPanel::Read(int reg) {
    if (rules_.busyStatus) rules_.busyStatus->clear();
    // Without a board, or while another transfer holds the bus, nothing was read: the
    // transfer layer has said so, and the steps below would only judge stale bytes.
    if (!s_.UsbConnected || s_.TransferBusy) {
        ShowBusy(QStringLiteral("Read_Reg Waiting"));
        s_.comm().ReadRegister(reg);
        return;
    }
    Shape* ind = indRd_[reg];
    const bool wasLightGreen = ind->hasFillIndex(kLightGreen);
    s_.comm().ReadRegister(reg);
    const auto& act = rules_.activityRows;
    if (std::find(act.begin(), act.end(), reg) == act.end()) {
        if (hex_[reg]->text() != rd_[reg]->text()) ind->setFillIndex(kLightRed);
    } else {
        ind->setFillIndex(wasLightGreen ? kGreen : kLightGreen);
    }
    for (const FlagLamp& f : rules_.flagLamps)
        if (f.reg == reg) f.lamp->setFillIndex((s_.RegReadMirror[reg] & f.mask) ? kLightRed : kBlack);
    s_.PendingRead[reg] = false;
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    DoEvents();
    if (ColorLabel* fail = rules_.commTest) {
        fail->hide();
        if (s_.ReadStatusByte != 1) {
            ind->setFillIndex(kLightRed);
            fail->show();
            fail->setBackColor(kRgbRed);
            fail->setForeColor(kRgbWhite);
            fail->setText(QStringLiteral("Fail"));
        }
    }
    if (rules_.clearDeferredAfterRead) s_.TransferDeferred = false;
}

void RegisterPanel::ReadAll() {
    for (int i = 0; i < rows_; ++i) {
        if (!s_.UsbConnected) {
            s_.comm().NotConnected();
            return;
        }
        if (onRead)
            onRead(i);
        else
            Read(i);
        DoEvents();
    }
}

void RegisterPanel::AddressEntered() {
    address_->setText(address_->text().toUpper());
    if (std::llabs(std::int64_t(HexValue(address_->text()))) >= 256) address_->setText(QStringLiteral("88"));
    s_.I2cWriteAddr = std::uint8_t(HexValue(address_->text()));
    s_.I2cReadAddr = std::uint8_t(s_.I2cWriteAddr + 1);
}

std::optional<std::vector<std::uint8_t>> RegisterPanel::ReadRows(int first, int count,
                                                                 const QString& busyText) {
    if (s_.comm().RefuseUnopenedBoard()) return std::nullopt;
    if (s_.TransferBusy) {
        if (!busyText.isEmpty()) ShowBusy(busyText);
        s_.TransferDeferred = true;
        for (int r = first; r < first + count; ++r) s_.PendingRead[r] = true;
        return std::nullopt;
    }
    if (rules_.busyStatus) rules_.busyStatus->clear();
    s_.TransferBusy = true;
    if (!s_.SessionOpen) {
        s_.usb().OpenDevice();
        DoEvents();
    }
    // A three- or four-byte read asks for five bytes, as the board's other reads of that size do.
    const int replyLen = count >= 3 ? 5 : count + 1;
    const std::vector<std::uint8_t>& reply = s_.comm().ReadBlock(std::uint8_t(first), count, replyLen);
    std::vector<std::uint8_t> bytes(std::size_t(count), 0);
    for (int k = 0; k < count; ++k)
        if (std::size_t(k + 1) < reply.size()) bytes[k] = reply[k + 1];
    const int ok = PaletteIndex(s_.colours.ColOK);
    const int alt = PaletteIndex(s_.colours.ColAlt);
    for (int k = 0; k < count; ++k) {
        const int reg = first + k;
        s_.RegReadMirror[reg] = bytes[k];
        if (QLineEdit* box = txtRegRd(reg)) box->setText(Hex2(bytes[k]));
        if (Shape* lamp = ShpIndrd(reg)) lamp->setFillIndex(lamp->hasFillIndex(ok) ? alt : ok);
    }
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    s_.TransferBusy = false;
    DoEvents();
    return bytes;
}

bool RegisterPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == address_) AddressEntered();
        for (int i = 0; i < rows_; ++i)
            if (watched == hex_[i] && onLostFocus) onLostFocus(i);
    }
    return QGroupBox::eventFilter(watched, event);
}

DeviceSelection::DeviceSelection(QWidget* parent) : QGroupBox(QStringLiteral("Device Selection"), parent) {
    auto* dg = new QGridLayout(this);
    LstDeviceSel = new QListWidget(this);
    LstDeviceSel->setMaximumHeight(44);
    Label10 = new QLabel(QStringLiteral("I2C Adr"), this);
    Label20 = new QLabel(QStringLiteral("Actual"), this);
    txtI2CAddr = MakeBox(this, QStringLiteral("44"), 40);
    txtI2cXmitAdr = MakeBox(this, QStringLiteral("88"), 40);
    dg->addWidget(LstDeviceSel, 0, 0, 2, 1);
    dg->addWidget(Label10, 0, 1);
    dg->addWidget(txtI2CAddr, 0, 2);
    dg->addWidget(Label20, 1, 1);
    dg->addWidget(txtI2cXmitAdr, 1, 2);
}

}  // namespace lxm
