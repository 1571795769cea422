// The family form's set-up, its two views, "Test Comm" and the small lifecycle handlers.
#include <QCheckBox>
#include <QCloseEvent>
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
#include "device/parts/InterruptSampler.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "device/parts/StripChart.h"
#include "device/parts/ThresholdPanel.h"
#include "scripts/frmScriptOps.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"

namespace lxm {

frmLXM410::frmLXM410(Session& session, QWidget* parent) : DeviceFormBase(session, parent) {
    BuildLayout();
    BuildParts();
    WireHandlers();
    WireCollection();
}

frmLXM410::~frmLXM410() {
    ReleasePanelHandlers();
}

void frmLXM410::ShowRegister(int reg) {
    panel_->ShowRegister(reg);
}

void frmLXM410::Form_Load() {
    // 1. This form is the one the transfer layer reports on.
    s_.activeForm = this;
    strip_->ShpStatus()->setFillIndex(PaletteIndex(s_.colours.ColLightBlue));

    // 2. Family defaults.
    s_.CmdPipe = 2;
    s_.Collecting = false;
    RangeTable = kFamilyRangesLux;
    RangeKLux = 1;
    RangeIndex = 0;
    plot.AxisCaption = QStringLiteral("AD Cnt");
    plot.AxisCaption2 = QStringLiteral("AD Cnt");
    RangeScaleDivisor = 500000;

    // 3. Row tool tips; the number follows with its sign blank, so two blanks stand before it.
    panel_->SetRowToolTips(QStringLiteral("Enter Hex value, click Wr Button below to write to register"),
                           QStringLiteral("Rd Hex Value, click RD Button below to read from register"));

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
    strip_->LblCommTest()->hide();

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
    frmDataRecord->Form_Load();

    // 9.
    txtInterval->setText(QStringLiteral("8"));
    IntervalMs = std::int32_t(Val(txtInterval->text()));
    s_.Collecting = false;
    for (int i = 0; i < 11; ++i) TimeLabels[i] = QString::number(40 * i);

    // 10.
    Label36->hide();
    txtADCRaw->hide();
    chart_->PreparePlot(QStringLiteral("4095"), QStringLiteral("0"));

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
    chart_->Picture3->setFixedSize(CompactView ? 40 : 28, CompactView ? 40 : 28);
    CompactView = ToggleView(
        CompactView,
        {{Frame12, FrmDevice, Frame4, Frame5, Frame10, Frame11, Frame2, Frame3, frmDataRecord, OptITime.at(2),
          OptITime.at(3), OptMeasure.at(1), OptMeasure.at(2), OptMeasure.at(3), cmdRead_ADC, cmdProx_IR},
         {Frame11, Frame4, Frame5, Frame2, Frame3, frmDataRecord, OptITime.at(2), OptITime.at(3),
          OptMeasure.at(1), OptMeasure.at(2), OptMeasure.at(3), cmdRead_ADC, cmdProx_IR},
         {Frame10, FrmDevice}});
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

void frmLXM410::Form_Activate() {
    DoEvents();
}

void frmLXM410::Form_QueryUnload() {
    DoEvents();
}

void frmLXM410::Form_Unload() {
    s_.UnloadGpioForm();
    if (script_) script_->close();
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
    chart_->Picture1->Cls();
    cmdCollectData_Click();
}

}  // namespace lxm
