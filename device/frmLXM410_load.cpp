// The family form's set-up, its two views, "Test Comm" and the small lifecycle handlers.
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include "acquisition/PictureBox.h"
#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Options.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "scripts/frmScriptOps.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"

namespace lxm {

frmLXM410::frmLXM410(Session& session, QWidget* parent) : QWidget(parent), s_(session) {
    BuildLayout();
    WireHandlers();
}

frmLXM410::~frmLXM410() {
    s_.Collecting = false;
    s_.FormGone(this);
}

QRadioButton* frmLXM410::OptMode(int index) {
    auto it = OptMode_.find(index);
    return it == OptMode_.end() ? nullptr : it->second;
}
QLineEdit* frmLXM410::txtRegRd(int reg) {
    return reg >= 0 && reg < kRegisterRows ? txtRegRd_[reg] : nullptr;
}
QLineEdit* frmLXM410::txtRegHex(int reg) {
    return reg >= 0 && reg < kRegisterRows ? txtRegHex_[reg] : nullptr;
}
Shape* frmLXM410::ShpIndrd(int reg) {
    return reg >= 0 && reg < kRegisterRows ? ShpIndrd_[reg] : nullptr;
}
Shape* frmLXM410::ShpIndwr(int reg) {
    return reg >= 0 && reg < kRegisterRows ? ShpIndwr_[reg] : nullptr;
}

void frmLXM410::ShowRegister(int reg) {
    txtRegHex_[reg]->setText(Hex2(s_.RegWriteMirror[reg]));
}

void frmLXM410::Form_Load() {
    // 1. This form is the one the transfer layer reports on.
    s_.activeForm = this;
    ShpStatus->setFillIndex(PaletteIndex(s_.colours.ColLightBlue));

    // 2. Family defaults.
    s_.CmdPipe = 2;
    s_.Collecting = false;
    RangeTable = {1000, 4000, 16000, 64000};
    RangeKLux = 1;
    RangeIndex = 0;
    plot.AxisCaption = QStringLiteral("AD Cnt");
    plot.AxisCaption2 = QStringLiteral("AD Cnt");
    RangeScaleDivisor = 500000;

    // 3. Row tool tips; the number follows with its sign blank, so two blanks stand before it.
    for (int i = 0; i < kRegisterRows; ++i) {
        txtRegHex_[i]->setToolTip(
            QStringLiteral("Enter Hex value, click Wr Button below to write to register"));
        txtRegRd_[i]->setToolTip(QStringLiteral("Rd Hex Value, click RD Button below to read from register"));
        cmdWrtReg[i]->setToolTip(QStringLiteral("Click to Write to Register ") + Str(i));
        cmdRDReg[i]->setToolTip(QStringLiteral("Click to Read from Register ") + Str(i));
    }

    // 4. Resolution and interrupt-limit defaults.
    AdcBits = 12;
    OptMeasure.at(1)->setEnabled(true);
    AdcHalfScale = 8;
    AdcCountMax = 4095;
    lblIlimitsformat.at(0)->setText(QStringLiteral("Single Polarity"));
    lblIlimitsformat.at(1)->setText(QStringLiteral("12 Bits"));
    SinglePolarity = true;
    IntLimitMax = 4095;
    IntLimitMin = 0;
    lblIlimitsformat.at(2)->setText(Trim(IntLimitMax) + QStringLiteral(" Max"));
    lblIlimitsformat.at(3)->setText(Trim(IntLimitMin) + QStringLiteral(" Min"));

    // 5.
    Label36->hide();
    txtADCRaw->hide();
    InitColours(s_.colours);
    LblCommTest_->hide();

    // 6.
    LstDeviceSel->clear();
    LstDeviceSel->addItem(QStringLiteral("LXM410 ADR-44"));
    LstDeviceSel->setCurrentRow(0);

    // 7. The image only; the option handlers below program the chip.
    s_.RegWriteMirror[0] = 0x00;
    s_.RegWriteMirror[1] = 0x00;
    s_.RegWriteMirror[2] = 0xFF;
    s_.RegWriteMirror[3] = 0x00;
    ShowRegister(0);
    ShowRegister(1);

    // 8.
    txtFilePath->setText(QCoreApplication::applicationDirPath() + QStringLiteral("/Data.txt"));

    // 9.
    txtInterval->setText(QStringLiteral("8"));
    IntervalMs = std::int32_t(Val(txtInterval->text()));
    s_.Collecting = false;
    for (int i = 0; i < 11; ++i) TimeLabels[i] = QString::number(40 * i);

    // 10.
    Label36->hide();
    txtADCRaw->hide();
    txtScale2->setText(QStringLiteral("4095"));
    txtScale->setText(QStringLiteral("4095"));
    txtScaleMin->setText(QStringLiteral("0"));
    txtScaleMin2->setText(QStringLiteral("0"));
    plot.ScaleMax = std::int32_t(RoundEven(Val(txtScale2->text()) + 1));
    PreparePlot();

    // 11.
    frmMode->show();
    FrmDevice->show();

    // The option groups start on the choices that match the image.
    OptGain.at(0)->setChecked(true);
    OptIRMode.at(0)->setChecked(true);
    OptMeasMode.at(0)->setChecked(true);
    OptExtTime.at(0)->setChecked(true);
    optINTP.at(0)->setChecked(true);
    OptProxE.at(0)->setChecked(true);
    OptMeasure.at(0)->setChecked(true);

    // 12. These write registers 1 and 0 themselves; writing them once more afterwards is
    // deliberate.
    OptITime.at(1)->setChecked(true);
    OptITime_Click(1);
    OptPSrc.at(3)->setChecked(true);
    OptPSrc_Click(3);
    OptMFreq.at(3)->setChecked(true);
    OptMFreq_Click(3);
    s_.comm().WriteRegister(1);
    s_.comm().WriteRegister(0);

    // 13.
    const std::string& t = s_.SelectedType;
    if (t == "LXM410")
        setWindowTitle(QStringLiteral("LXM410  Multi-Function  Sensor Evaluation Software"));
    else if (t == "LXM430")
        setWindowTitle(QStringLiteral("LXM430  Multi-Function  Sensor Evaluation Software"));
    else if (t == "LXM450")
        setWindowTitle(QStringLiteral("LXM450  Proximity / IR   Sensor Evaluation Software"));
    else if (t == "LXM470")
        setWindowTitle(QStringLiteral("LXM470  ALS / IR  Sensor Evaluation Software"));

    // 14. Open in the compact view.
    CompactView = false;
    Label13_DblClick();

    // 15.
    txtIHigh.at(0)->setText(QStringLiteral("1500"));
    txtILow.at(0)->setText(QStringLiteral("100"));
}

void frmLXM410::Label13_DblClick() {
    if (!CompactView) {
        CompactView = true;
        Picture3->setFixedSize(28, 28);
        for (QWidget* w : std::initializer_list<QWidget*>{
                 Frame12, FrmDevice, Frame4, Frame5, Frame10, Frame11, Frame2, Frame3, frmDataRecord,
                 OptITime.at(2), OptITime.at(3), OptMeasure.at(1), OptMeasure.at(2), OptMeasure.at(3),
                 cmdRead_ADC, cmdProx_IR})
            w->hide();
    } else {
        CompactView = false;
        Picture3->setFixedSize(40, 40);
        for (QWidget* w : std::initializer_list<QWidget*>{
                 Frame11, Frame4, Frame5, Frame2, Frame3, frmDataRecord, OptITime.at(2), OptITime.at(3),
                 OptMeasure.at(1), OptMeasure.at(2), OptMeasure.at(3), cmdRead_ADC, cmdProx_IR})
            w->show();
        Frame10->hide();
        FrmDevice->hide();
    }
    ApplyPartHiding();
    FitWindow();
}

void frmLXM410::ApplyPartHiding() {
    const std::string& t = s_.SelectedType;
    if (t == "LXM470") {
        for (QWidget* w : std::initializer_list<QWidget*>{Frame6, Frame7, Frame11, FraScheme, frmProxControl,
                                                          OptMeasure.at(3), OptMeasure.at(4),
                                                          OptMeasure.at(7), cmdProx_IR})
            w->hide();
    } else if (t == "LXM450") {
        OptMeasure.at(5)->hide();
        OptMeasure.at(1)->hide();
    }
}

void frmLXM410::OptMode_Click(int Index) {
    if (Index != 2) return;
    auto fail = [this] {
        LblCommTest_->setBackColor(kRgbRed);
        LblCommTest_->setForeColor(kRgbWhite);
        LblCommTest_->setText(QStringLiteral("Fail"));
    };
    if (!s_.UsbDetached && !s_.UsbConnected) {
        fail();
        SetOptionValue(OptMode_.at(2), false);
        s_.messages.MsgBox(QStringLiteral("USB is not Connected"));
        return;
    }
    if (s_.UsbDetached) {
        fail();
        s_.messages.MsgBox(QStringLiteral("USB has been disconnected"));
        return;
    }
    frmGPIO& gpio = s_.GpioForm();
    for (int n = 0; n < 2; ++n) {
        QCheckBox* box = gpio.chkOutEn.at(n);
        box->setChecked(!box->isChecked());
        gpio.chkOutEn_Click(n);
    }
    gpio.cmdGPIO_Write_Click();
    cmdRDReg_Click(0);
    LblCommTest_->setBackColor(kRgbGreen);
    LblCommTest_->setForeColor(LongFromColor(palette().color(QPalette::ButtonText)));
    LblCommTest_->setText(QStringLiteral("Good"));
    if (s_.ReadStatusByte != 1) fail();
    LblCommTest_->show();
    SetOptionValue(OptMode_.at(2), false);
    DoEvents();
    DoEvents();
}

void frmLXM410::Form_Activate() {
    DoEvents();
}

void frmLXM410::Form_GotFocus() {
    s_.activeForm = this;
    DoEvents();
}

void frmLXM410::Form_QueryUnload() {
    DoEvents();
}

void frmLXM410::Form_Unload() {
    s_.UnloadGpioForm();
    if (script_) script_->close();
}

void frmLXM410::changeEvent(QEvent* e) {
    if (e->type() == QEvent::ActivationChange && isActiveWindow()) Form_GotFocus();
    QWidget::changeEvent(e);
}

void frmLXM410::closeEvent(QCloseEvent* e) {
    s_.Collecting = false;
    Form_QueryUnload();
    Form_Unload();
    e->accept();
    if (onClosed) onClosed();
}

void frmLXM410::Command4_Click() {
    s_.Collecting = false;
    close();
}

void frmLXM410::mnuScript_Click() {
    if (!script_) script_ = new frmScriptOps(s_, this);
    script_->show();
    script_->raise();
}

void frmLXM410::mnuGPIO_Click() {
    frmGPIO& g = s_.GpioForm();
    g.show();
    g.raise();
}

void frmLXM410::SetReadCount() {
    s_.ReadCount = AdcModeSelected ? 2 : 4;
}

void frmLXM410::UpdateAdStats() {
    auto hex = [](std::int32_t v) {
        QString h = Hex(v);
        return h.size() == 1 ? QStringLiteral("0") + h : h;
    };
    txtADMax.at(0)->setText(Trim(CountMax));
    txtADMax.at(1)->setText(hex(CountMax));
    txtADMax.at(2)->setText(Trim(CountMin));
    txtADMax.at(3)->setText(hex(CountMin));
    txtADMax.at(4)->setText(Trim(std::int32_t(LatestReading)));
    txtADMax.at(5)->setText(hex(std::int32_t(LatestReading)));
    txtADMax.at(6)->setText(Trim(IntLimitMax));
    txtADMax.at(7)->setText(Trim(IntLimitMin));
    AdStatMax = CountMax;
    AdStatMin = CountMin;
}

void frmLXM410::RestartCollection() {
    s_.Collecting = false;
    DoEvents();
    Picture1->Cls();
    cmdCollectData_Click();
}

}  // namespace lxm
