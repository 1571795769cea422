#include "frmGPIO.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include "core/OnScreen.h"
#include <algorithm>

#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {
constexpr int kLightGreen = 10;
constexpr int kLightRed = 12;
constexpr int kBlack = 0;
// The two board LEDs sit on port C; their boxes stand for these bits.
constexpr int kGreenLedBit = 4;
constexpr int kRedLedBit = 5;

QLineEdit* HexBox(QWidget* parent, bool readOnly) {
    auto* e = new QLineEdit(QStringLiteral("00"), parent);
    e->setMaxLength(2);
    e->setFixedWidth(36);
    e->setAlignment(Qt::AlignCenter);
    e->setReadOnly(readOnly);
    return e;
}
}  // namespace

frmGPIO::frmGPIO(Session& session, QWidget* parent) : QWidget(parent), s_(session) {
    setWindowTitle(QStringLiteral("GPIO Control"));
    BuildLayout();
}

frmGPIO::~frmGPIO() {
    s_.FormGone(this);
}

void frmGPIO::BuildLayout() {
    auto* root = new QVBoxLayout(this);

    // Enables and data, one row per line.
    auto* lines = new QHBoxLayout;
    FrOutEn = new QGroupBox(QStringLiteral("Enable"), this);
    frameGPIO_Data = new QGroupBox(QStringLiteral("Data"), this);
    Frame1 = new QGroupBox(QStringLiteral("GPIO Usage"), this);
    auto* enGrid = new QGridLayout(FrOutEn);
    auto* dataGrid = new QGridLayout(frameGPIO_Data);
    auto* useGrid = new QGridLayout(Frame1);

    // The three groups sit side by side and must read as one table: every row of every group
    // has the same height and spacing, the usage column keeps empty rows where the LED boxes
    // are, and spare height goes below the last row instead of between rows.
    const int rowHeight =
        std::max(QCheckBox(QStringLiteral("PB7 P1.09")).sizeHint().height(), QLineEdit().sizeHint().height());
    for (QGridLayout* g : {enGrid, dataGrid, useGrid}) {
        g->setVerticalSpacing(2);
        g->setContentsMargins(6, 4, 6, 4);
    }
    auto place = [rowHeight](QGridLayout* grid, QWidget* w, int row) {
        w->setFixedHeight(rowHeight);
        grid->addWidget(w, row, 0);
    };
    auto addRow = [&](int row, const QString& name, std::map<int, QCheckBox*>& en,
                      std::map<int, QCheckBox*>& data, int bit, const QString& usage) {
        en[bit] = new QCheckBox(name, FrOutEn);
        data[bit] = new QCheckBox(name, frameGPIO_Data);
        place(enGrid, en[bit], row);
        place(dataGrid, data[bit], row);
        auto* user = new QLineEdit(usage, Frame1);
        user->setMinimumWidth(180);
        txtGPIOUserName[row] = user;
        place(useGrid, user, row);
    };
    int row = 0;
    for (int bit = 7; bit >= 0; --bit) {
        const QString name = QStringLiteral("PB%1 P1.%2").arg(bit).arg(bit + 2, 2, 10, QLatin1Char('0'));
        QString usage;
        if (bit == 7) usage = QStringLiteral("Read Interrupt Out  Pin7");
        if (bit == 6) usage = QStringLiteral("External LED");
        addRow(row++, name, chkOutEn, ChkBData, bit, usage);
    }
    for (int bit = 7; bit >= 4; --bit) {
        const QString name = QStringLiteral("PC%1 P2.%2").arg(bit).arg(9 - bit, 2, 10, QLatin1Char('0'));
        QString usage;
        if (bit == kGreenLedBit) usage = QStringLiteral("Orange Led Drive Low=On");
        if (bit == kRedLedBit) usage = QStringLiteral("Red Led Drive Low = On");
        addRow(row++, name, chkOutEnc, ChkCData, bit, usage);
    }
    ChLed1[kGreenLedBit] = new QCheckBox(QStringLiteral("Green Led"), FrOutEn);
    ChLed1[kRedLedBit] = new QCheckBox(QStringLiteral("Red Led"), FrOutEn);
    ChKLedData[kGreenLedBit] = new QCheckBox(QStringLiteral("Green Led"), frameGPIO_Data);
    ChKLedData[kRedLedBit] = new QCheckBox(QStringLiteral("Red Led"), frameGPIO_Data);
    place(enGrid, ChLed1[kGreenLedBit], row);
    place(enGrid, ChLed1[kRedLedBit], row + 1);
    place(dataGrid, ChKLedData[kGreenLedBit], row);
    place(dataGrid, ChKLedData[kRedLedBit], row + 1);
    for (QGridLayout* g : {enGrid, dataGrid, useGrid}) {
        for (int r = 0; r < row + 2; ++r) g->setRowMinimumHeight(r, rowHeight);
        g->setRowStretch(row + 2, 1);
    }
    lines->addWidget(FrOutEn);
    lines->addWidget(frameGPIO_Data);
    lines->addWidget(Frame1, 1);
    root->addLayout(lines);

    // Hex columns: written (W) and read back (R), with the comparison lamps.
    auto* hexRow = new QHBoxLayout;
    Frame_GPIOOUTEN = new QGroupBox(QStringLiteral("GPIO Output Enables"), this);
    frame_GPIOData = new QGroupBox(QStringLiteral("GPIO Data"), this);
    auto buildHex = [&](QGroupBox* box, std::array<QLineEdit*, 4>& col, int lampB, int lampC) {
        auto* g = new QGridLayout(box);
        g->addWidget(new QLabel(QStringLiteral("PB Hex"), box), 0, 0);
        g->addWidget(new QLabel(QStringLiteral("PC Hex"), box), 0, 3);
        g->addWidget(new QLabel(QStringLiteral("W"), box), 1, 0, Qt::AlignCenter);
        g->addWidget(new QLabel(QStringLiteral("R"), box), 1, 1, Qt::AlignCenter);
        g->addWidget(new QLabel(QStringLiteral("W"), box), 1, 3, Qt::AlignCenter);
        g->addWidget(new QLabel(QStringLiteral("R"), box), 1, 4, Qt::AlignCenter);
        for (int i = 0; i < 4; ++i) col[i] = HexBox(box, i % 2 == 1);
        g->addWidget(col[0], 2, 0);
        g->addWidget(col[1], 2, 1);
        g->addWidget(col[2], 2, 3);
        g->addWidget(col[3], 2, 4);
        shpGpioWr[lampB] = new Shape(box);
        shpGpioWr[lampC] = new Shape(box);
        g->addWidget(shpGpioWr[lampB], 2, 2);
        g->addWidget(shpGpioWr[lampC], 2, 5);
    };
    buildHex(Frame_GPIOOUTEN, txtPCHex, 2, 3);
    buildHex(frame_GPIOData, txtPCHexData, 4, 5);
    hexRow->addWidget(Frame_GPIOOUTEN);
    hexRow->addWidget(frame_GPIOData);

    FrGPIOIo = new QGroupBox(QStringLiteral("GPIO Execute"), this);
    auto* io = new QHBoxLayout(FrGPIOIo);
    cmdReadGPIO = new QPushButton(QStringLiteral("Read"), FrGPIOIo);
    cmdGPIO_Write = new QPushButton(QStringLiteral("Write"), FrGPIOIo);
    io->addWidget(cmdReadGPIO);
    io->addWidget(cmdGPIO_Write);
    hexRow->addWidget(FrGPIOIo);
    root->addLayout(hexRow);

    // Link status.
    auto* status = new QHBoxLayout;
    Label13 = new QLabel(QStringLiteral("USB COMM"), this);
    ShpAttach_ = new Shape(this);
    Shp_USB_Info = new Shape(this);
    Shp_USB_Transfer_ = new Shape(this);
    LblCommTest_ = new ColorLabel(QStringLiteral("Fail"), this);
    LblCommTest_->setMinimumWidth(50);
    LblCommTest_->hide();
    status->addWidget(Label13);
    status->addWidget(ShpAttach_);
    status->addWidget(Shp_USB_Info);
    status->addWidget(Shp_USB_Transfer_);
    status->addWidget(LblCommTest_);
    status->addStretch(1);
    root->addLayout(status);

    auto wire = [this](std::map<int, QCheckBox*>& group, void (frmGPIO::*handler)(int)) {
        for (auto& [bit, box] : group) {
            const int n = bit;
            connect(box, &QCheckBox::clicked, this, [this, handler, n] { (this->*handler)(n); });
        }
    };
    wire(chkOutEn, &frmGPIO::chkOutEn_Click);
    wire(chkOutEnc, &frmGPIO::chkOutEnc_Click);
    wire(ChLed1, &frmGPIO::ChLed1_Click);
    wire(ChkBData, &frmGPIO::ChkBData_Click);
    wire(ChkCData, &frmGPIO::ChkCData_Click);
    wire(ChKLedData, &frmGPIO::ChKLedData_Click);
    connect(cmdGPIO_Write, &QPushButton::clicked, this, [this] { cmdGPIO_Write_Click(); });
    connect(cmdReadGPIO, &QPushButton::clicked, this, [this] { cmdReadGPIO_Click(); });

    linkTimer_ = new QTimer(this);
    linkTimer_->setInterval(kLinkRefreshMs);
    connect(linkTimer_, &QTimer::timeout, this, [this] { ShowLinkState(); });
}

void frmGPIO::ToggleBit(QCheckBox* box, int n, int imageByte, QLineEdit* column) {
    std::uint8_t& b = s_.GpioImage[std::size_t(imageByte)];
    const std::uint8_t mask = std::uint8_t(1u << n);
    if (box->isChecked())
        b = std::uint8_t(b | mask);
    else if (b & mask)
        b = std::uint8_t(b & ~mask);
    column->setText(Hex2(b));
}

void frmGPIO::chkOutEn_Click(int Index) {
    ToggleBit(chkOutEn.at(Index), Index, 0, txtPCHex[0]);
}
void frmGPIO::chkOutEnc_Click(int Index) {
    ToggleBit(chkOutEnc.at(Index), Index, 1, txtPCHex[2]);
}
void frmGPIO::ChLed1_Click(int Index) {
    ToggleBit(ChLed1.at(Index), Index, 1, txtPCHex[2]);
}
void frmGPIO::ChkBData_Click(int Index) {
    ToggleBit(ChkBData.at(Index), Index, 2, txtPCHexData[0]);
}
void frmGPIO::ChkCData_Click(int Index) {
    ToggleBit(ChkCData.at(Index), Index, 3, txtPCHexData[2]);
}
void frmGPIO::ChKLedData_Click(int Index) {
    ToggleBit(ChKLedData.at(Index), Index, 3, txtPCHexData[2]);
}

void frmGPIO::ShowImage() {
    const auto& img = s_.GpioImage;
    txtPCHex[0]->setText(Hex2(img[0]));
    txtPCHex[2]->setText(Hex2(img[1]));
    txtPCHexData[0]->setText(Hex2(img[2]));
    txtPCHexData[2]->setText(Hex2(img[3]));
    auto setFrom = [](std::map<int, QCheckBox*>& group, std::uint8_t byte) {
        for (auto& [bit, box] : group) box->setChecked(byte & (1u << bit));
    };
    setFrom(chkOutEn, img[0]);
    setFrom(chkOutEnc, img[1]);
    setFrom(ChLed1, img[1]);
    setFrom(ChkBData, img[2]);
    setFrom(ChkCData, img[3]);
    setFrom(ChKLedData, img[3]);
}

void frmGPIO::Form_Load() {
    txtPCHex[0]->setText(QStringLiteral("FF"));
    txtPCHex[2]->setText(QStringLiteral("FF"));
    txtPCHexData[0]->setText(QStringLiteral("FF"));
    txtPCHexData[2]->setText(QStringLiteral("FF"));
    ShowImage();
}

void frmGPIO::Form_GotFocus() {
    s_.activeForm = this;
    SyncLamps();
}

void frmGPIO::ShowLinkState() {
    // The active form's lamps are the transfer layer's to set: they report single transfers.
    if (s_.activeForm != this) SyncLamps();
}

void frmGPIO::SyncLamps() {
    if (!s_.UsbConnected) {
        ShpAttach_->setFillIndex(kLightRed);
        Shp_USB_Info->setFillIndex(kBlack);
        Shp_USB_Transfer_->setFillIndex(kBlack);
        return;
    }
    ShpAttach_->setFillIndex(kLightGreen);
    Shp_USB_Info->setFillIndex(s_.DeviceInfoOK ? kLightGreen : kLightRed);
    Shp_USB_Transfer_->setFillIndex(s_.TransferOK ? kLightGreen : kLightRed);
}

void frmGPIO::showEvent(QShowEvent* e) {
    // A device form may have changed the image while this window was hidden.
    ShowImage();
    ShowLinkState();
    linkTimer_->start();
    QWidget::showEvent(e);
    // Its rows make it tall: a laptop screen may not hold it where the window manager puts it.
    KeepOnScreenWhenFramed(*this);
}

void frmGPIO::hideEvent(QHideEvent* e) {
    linkTimer_->stop();
    QWidget::hideEvent(e);
}

void frmGPIO::changeEvent(QEvent* e) {
    if (e->type() == QEvent::ActivationChange && isActiveWindow()) Form_GotFocus();
    QWidget::changeEvent(e);
}

void frmGPIO::cmdGPIO_Write_Click() {
    // The device forms change the image and call this: what is sent is what the window shows.
    ShowImage();
    if (!s_.SessionOpen) s_.usb().OpenDevice();
    const auto img = s_.GpioImage;
    auto& comm = s_.comm();
    const auto reply = comm.Exchange(1, {img[2], img[3], img[0], img[1]}, 25);
    txtPCHexData[1]->setText(Hex2(reply[0]));
    txtPCHexData[3]->setText(Hex2(reply[1]));
    txtPCHex[1]->setText(Hex2(reply[2]));
    txtPCHex[3]->setText(Hex2(reply[3]));
    shpGpioWr[2]->setFillIndex(reply[2] == img[0] ? kLightGreen : kLightRed);
    shpGpioWr[3]->setFillIndex(reply[3] == img[1] ? kLightGreen : kLightRed);
    shpGpioWr[4]->setFillIndex(reply[0] == img[2] ? kLightGreen : kLightRed);
    shpGpioWr[5]->setFillIndex(reply[1] == img[3] ? kLightGreen : kLightRed);
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    ShowLinkState();
}

}  // namespace lxm
