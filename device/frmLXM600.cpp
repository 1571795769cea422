// The multi-function form's set-up, its one-way view toggle, its register panel rules and the
// controls that program registers 1 and 2.
#include "device/frmLXM600.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include "acquisition/PictureBox.h"
#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/FormFit.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "device/parts/StripChart.h"
#include "device/parts/ThresholdPanel.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"

namespace lxm {

std::vector<RegisterName> frmLXM600::RegisterNames() {
    std::vector<RegisterName> names{
        {QStringLiteral("ID"), QStringLiteral("ID"), {}},
        {QStringLiteral("ALS / proximity configuration"),
         QStringLiteral("Cfg"),
         {{"proximity enable", kLxm600ProxEnable},
          {"proximity sleep", kLxm600Sleep},
          {"IR LED drive", kLxm600Drive},
          {"ALS / IR enable", kLxm600AlsEnable},
          {"ALS range", kLxm600Range},
          {"ALS / IR measurement", kLxm600IrMode}}},
        {QStringLiteral("Interrupt configuration"),
         QStringLiteral("Int"),
         {{"proximity flag", kLxm600ProxFlag},
          {"proximity persistence", kLxm600ProxPersistence},
          {"ALS flag", kLxm600AlsFlag},
          {"ALS persistence", kLxm600AlsPersistence},
          {"pin function (Or / And)", kLxm600PinFunction}}},
        {QStringLiteral("Proximity low threshold"), QStringLiteral("PL"), {}},
        {QStringLiteral("Proximity high threshold"), QStringLiteral("PH"), {}},
        {QStringLiteral("ALS / IR low threshold (7:0)"), QStringLiteral("AL"), {}},
        {QStringLiteral("ALS / IR thresholds (11:8): high in bits 7:4, low in bits 3:0"),
         QStringLiteral("AHL"),
         {}},
        {QStringLiteral("ALS / IR high threshold (7:0)"), QStringLiteral("AH"), {}},
        {QStringLiteral("Proximity data"), QStringLiteral("P"), {}},
        {QStringLiteral("ALS / IR data LSB (7:0)"), QStringLiteral("DL"), {}},
        {QStringLiteral("ALS / IR data MSB (11:8)"), QStringLiteral("DH"), {}}};
    names.resize(std::size_t(kRegisterRows), {QStringLiteral("Not used by the form"), QString(), {}});
    return names;
}

namespace {
constexpr const std::array<std::uint8_t, frmLXM600::kRegisterRows>& kImage = kLxm600Image;
}  // namespace

frmLXM600::frmLXM600(Session& session, QWidget* parent) : DeviceFormBase(session, parent) {
    BuildLayout();
    BuildParts();
    PacedCollection::Controls c{txtInterval,   txtTime1,          lblLoop_Count,  chart_->Picture1,
                                kRegisterRows, FrmMeasureDetails, lblReadingFlag, autoRange_.get()};
    loop_ = std::make_unique<PacedCollection>(s_, run_, plot_, c);
    auto& h = loop_->hooks;
    h.start = [this] { StartRun(); };
    // The single read of every pass is paced by the interval.
    h.singleShot = [] { return false; };
    WireRefresh(*loop_, [this] { cmdScale_Click(); });
    h.sample = [this] { return SamplePass(); };
    h.plotRows = [this] { PlotRows(); };
    h.showReading = [this] { ShowReading(); };
    h.end = [this] { EndRun(); };
    WireLog(
        *loop_, *frmDataRecord,
        [this](SampleLogHeader& header) {
            header.rangeLux =
                RangeTable[std::size_t(autoRange_->ConvertingRange(SampleStatus::Ok, RangeIndex))];
            header.lux = AlsSample();
            header.resolutionBits = TraceEnable1 == 255 ? kProxBits : AdcBits;
            // The proximity trace is read whatever the ALS/IR mode says.
            if (TraceEnable1 == 255)
                header.measurement = OptGraph.at(0)->text();
            else
                for (const auto& [i, option] : OptMMode)
                    if (option->isChecked()) header.measurement = option->text();
        },
        [this] {
            LoggedSample row;
            row.raw = TraceEnable1 == 255 ? ProxCount600 : AlsIrCount600;
            row.value = run_.LatestReading;
            row.status = run_.PassStatus;
            return row;
        });
    WireHandlers();
}

frmLXM600::~frmLXM600() {
    ReleasePanelHandlers();
}

// Every handler a control starts runs as one user action, which tells of a missing board once.
void frmLXM600::WireHandlers() {
    strip_->onLabel13DblClick = [this] { Label13_DblClick(); };
    connect(strip_->OptMode(2), &QRadioButton::clicked, this, AsUserAction(s_, [this] { OptMode_Click(2); }));
    panel_->onRead = [this](int i) { cmdRDReg_Click(i); };
    panel_->onWrite = [this](int i) { cmdWrtReg_Click(i); };
    panel_->onEnter = [this](int i) { txtRegHex_KeyPress(i, 13); };
    panel_->onLostFocus = [this](int i) { txtRegHex_LostFocus(i); };
    auto& rules = panel_->rules();
    rules.activityRows = {8, 9, 10};
    rules.flagLamps = {{kLxm600ProxFlag.reg, kLxm600ProxFlag.mask, ShpProxFlag},
                       {kLxm600AlsFlag.reg, kLxm600AlsFlag.mask, ShpALSFlag}};
    panel_->SetRegisterNames(RegisterNames());
    rules.commTest = strip_->LblCommTest();
    rules.busyStatus = lblUSBStatis;
    rules.clearDeferredAfterRead = true;

    for (auto& [i, box] : ChKLed)
        connect(box, &QCheckBox::clicked, this, AsUserAction(s_, [this, i = i] { ChKLed_Click(i); }));
    connect(mnuGPIO, &QAction::triggered, this, AsUserAction(s_, [this] {
                frmGPIO& g = s_.GpioForm();
                g.show();
                g.raise();
            }));
    connect(Command4, &QPushButton::clicked, this, AsUserAction(s_, [this] { close(); }));
    connect(cmdReadID, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdReadID_Click(); }));
    connect(cmdUpdateReg, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdUpdateReg_Click(spnBitReg->value()); }));
    connect(cmdUpdateRead, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdUpdateRead_Click(spnBitReg->value()); }));
    WireArray(s_, OptMMode, this, [this](int i) { OptMMode_Click(i); });
    WireArray(s_, OptALSRange, this, [this](int i) { OptALSRange_Click(i); });
    WireArray(s_, OptProxDr, this, [this](int i) { OptProxDr_Click(i); });
    WireArray(s_, OptIRSleep, this, [this](int i) { OptIRSleep_Click(i); });
    WireArray(s_, OptEPIN, this, [this](int i) { OptEPIN_Click(i); });
    WireArray(s_, optINTPALS, this, [this](int i) { optINTPALS_Click(i); });
    WireArray(s_, optINTP, this, [this](int i) { optINTP_Click(i); });
    WireArray(s_, OptGraph, this, [this](int i) { OptGraph_Click(i); });
    connect(cmdWrtILimits, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdWrtILimits_Click(); }));
    connect(cmdReadILimits, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdReadILimits_Click(); }));
    connect(cmdALSClear, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdALSClear_Click(); }));
    connect(cmdPIClear, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdPIClear_Click(); }));
    connect(cmdSampleInternalIntrs, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdSampleInternalIntrs_Click(); }));
    connect(cmdISamples, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdISamples_Click(); }));
    connect(chkPoll, &QCheckBox::clicked, this, [this] { chkPoll_Click(); });
    connect(frmDataRecord->cmdStartRec, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdStartRec_Click(); }));
    connect(chkALSEnable, &QCheckBox::clicked, this, AsUserAction(s_, [this] { chkALSEnable_Click(); }));
    connect(ChkPEnable, &QCheckBox::clicked, this, AsUserAction(s_, [this] { ChkPEnable_Click(); }));
    connect(cmdReadAd, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdReadAd_Click(); }));
    connect(cmdCollectData, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdCollectData_Click(); }));
    connect(cmdCollect, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdCollectData_Click(); }));
    connect(cmdStopData, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdStopData_Click(); }));
    connect(cmdAbort, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdAbort_Click(); }));
    connect(FrmMeasureDetails->cmdClearHist, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdClearHist_Click(); }));
    connect(chart_->cmdScale, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdScale_Click(); }));
    // Enter in a scale box re-scales, as its tool tip promises.
    for (QLineEdit* box : {chart_->txtScale, chart_->txtScaleMin, chart_->txtScale2, chart_->txtScaleMin2})
        connect(box, &QLineEdit::returnPressed, this, AsUserAction(s_, [this] { cmdScale_Click(); }));
    connect(chart_->cmdAutoScale, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdAutoScale_Click(); }));
    connect(chart_->cmdRestoreScreen, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdRestoreScreen_Click(); }));
}

void frmLXM600::Form_Load() {
    // 1. The same caption for every sensor type.
    setWindowTitle(QStringLiteral("LXM600  Multi-Function  Sensor Evaluation Software"));
    s_.activeForm = this;
    strip_->ShpStatus()->setFillIndex(PaletteIndex(s_.colours.ColLightBlue));

    // 2.
    s_.CmdPipe = 2;
    s_.Collecting = false;
    RangeTable = kLxm600RangesLux;
    RangeIndex = 0;
    plot_.AxisCaption = QStringLiteral("AD Cnt");
    plot_.AxisCaption2 = QStringLiteral("AD Cnt");
    RangeScaleDivisor = 500000;

    // 3.
    panel_->SetRowToolTips(QStringLiteral("Enter Hex value, Press Enter"), QStringLiteral("Rd Hex Value"));

    // 4.
    CompactView = true;
    ShowLux = false;
    ProxScheme = 0;
    AdcBits = 12;
    AdcHalfScale = 8;
    AdcCountMax = 4095;

    // 5. The ALS/IR limits are 12-bit, the proximity limits 8-bit.
    lblIlimitsformat.at(0)->setText(QStringLiteral("Single Polarity"));
    lblIlimitsformat.at(1)->setText(QStringLiteral("12 Bits"));
    lblIlimitsformat.at(0)->setText(QStringLiteral("ALS_IR Single Polarity"));
    lblIlimitsformat.at(2)->setText(Trim(4095) + QStringLiteral(" Max"));
    lblIlimitsformat.at(3)->setText(Trim(0) + QStringLiteral(" Min"));
    lblIlimitsformat.at(4)->setText(QStringLiteral("Prox Single Polarity"));
    lblIlimitsformat.at(5)->setText(QStringLiteral("8 Bits"));
    lblIlimitsformat.at(6)->setText(Trim(255) + QStringLiteral(" Max"));
    lblIlimitsformat.at(7)->setText(Trim(0) + QStringLiteral(" Min"));
    SinglePolarity = true;
    InitColours(s_.colours);
    strip_->LblCommTest()->hide();
    FrmDevice->LstDeviceSel->clear();
    FrmDevice->LstDeviceSel->addItem(QStringLiteral("LXM600 ADR-44"));
    FrmDevice->LstDeviceSel->setCurrentRow(0);

    // 6. The image only: nothing is sent until the user acts.
    for (int r = 0; r < kRegisterRows; ++r) {
        s_.RegWriteMirror[r] = kImage[r];
        panel_->ShowRegister(r);
    }
    // The controls start on the choices the image holds.
    OptMMode.at(0)->setChecked(true);
    OptALSRange.at(1)->setChecked(true);
    OptProxDr.at(0)->setChecked(true);
    OptIRSleep.at(0)->setChecked(true);
    OptEPIN.at(0)->setChecked(true);
    optINTPALS.at(0)->setChecked(true);
    optINTP.at(0)->setChecked(true);
    OptGraph.at(0)->setChecked(true);
    OptGraph_Click(0);
    frmDataRecord->Form_Load();

    // 7.
    txtInterval->setText(QStringLiteral("50"));
    run_.IntervalMs = std::int32_t(Val(txtInterval->text()));
    for (int i = 0; i < 11; ++i) TimeLabels[i] = QString::number(40 * i);

    // 8.
    chart_->PreparePlot(QStringLiteral("4095"), QStringLiteral("0"));
    strip_->frmMode()->show();
    frmTimeBase->show();
    FrmDevice->show();
    // Set before the toggle runs, so this form opens in the full view.
    CompactView = true;
    Label13_DblClick();

    txtIHigh.at(0)->setText(QStringLiteral("1500"));
    txtILow.at(0)->setText(QStringLiteral("100"));
    txtIHigh.at(2)->setText(QStringLiteral("255"));
    txtILow.at(2)->setText(QStringLiteral("0"));
}

void frmLXM600::Label13_DblClick() {
    // The full view does not bring back what the compact view hid beyond its three frames.
    CompactView = ToggleView(CompactView, {{cmdCollect, Label3, Frame2, frmTimeBase, frmDataRecord,
                                            txtReading3, txtReading2, Label17},
                                           {Frame2, frmTimeBase, frmDataRecord},
                                           {}});
    FitWindow(*this);
}

void frmLXM600::txtRegHex_KeyPress(int Index, int KeyAscii) {
    if (KeyAscii != 13) return;
    QLineEdit* box = panel_->txtRegHex(Index);
    const QString cut = box->text().toUpper().left(2);
    box->setText(CheckedHexByte(cut, true));
    if (box->text() != cut) return;
    cmdWrtReg_Click(Index);
    DoEvents();
    // Read straight back, so the row shows what the chip took.
    cmdRDReg_Click(Index);
}

void frmLXM600::txtRegHex_LostFocus(int Index) {
    QLineEdit* box = panel_->txtRegHex(Index);
    box->setText(CheckedHexByte(box->text(), true));
    cmdWrtReg_Click(Index);
}

void frmLXM600::cmdReadID_Click() {
    cmdRDReg_Click(0);
    lblID->setText(panel_->txtRegRd(0)->text());
}

void frmLXM600::cmdUpdateReg_Click(int Index) {
    int value = 0;
    int weight = 128;
    for (int k = 0; k < 8; ++k) {
        if (ChkReg1Bit.at(k)->isChecked()) value += weight;
        weight /= 2;
    }
    s_.RegWriteMirror[Index] = std::uint8_t(value);
    lblRegDatax->setText(Hex2(value));
    panel_->txtRegHex(Index)->setText(Hex2(value));
    DoEvents();
    cmdWrtReg_Click(Index);
}

void frmLXM600::cmdUpdateRead_Click(int Index) {
    cmdRDReg_Click(Index);
    const int value = s_.RegReadMirror[Index];
    lblRegDatax->setText(Hex2(value));
    for (int k = 0; k < 8; ++k) ChkReg1Bit.at(k)->setChecked(value & (128 >> k));
}

void frmLXM600::ChKLed_Click(int /*Index*/) {
    std::uint8_t levels = s_.GpioImage[2] & ~0x60;
    if (ChKLed.at(0)->isChecked()) levels |= 0x40;
    if (ChKLed.at(1)->isChecked()) levels |= 0x20;
    s_.GpioImage[2] = levels;
    s_.GpioImage[0] = 0x60;
    s_.GpioForm().cmdGPIO_Write_Click();
}

void frmLXM600::ApplyField(const BitField& field, int index, bool selected) {
    SetField(s_.RegWriteMirror[field.reg], field.mask, field.Value(index, selected));
    panel_->ShowRegister(field.reg);
    cmdWrtReg_Click(field.reg);
}

void frmLXM600::ApplyOption(const BitField& field, const CtlArray<QRadioButton>& arr, int index) {
    const bool selected = field.kind == BitField::Kind::Member && arr.at(field.member)->isChecked();
    ApplyField(field, index, selected);
}

void frmLXM600::OptMMode_Click(int Index) {
    ApplyOption(kLxm600IrMode, OptMMode, Index);
}
void frmLXM600::OptALSRange_Click(int Index) {
    ApplyOption(kLxm600Range, OptALSRange, Index);
}
void frmLXM600::chkALSEnable_Click() {
    ApplyField(kLxm600AlsEnable, 0, chkALSEnable->isChecked());
}
void frmLXM600::OptProxDr_Click(int Index) {
    ApplyOption(kLxm600Drive, OptProxDr, Index);
}
void frmLXM600::OptIRSleep_Click(int Index) {
    ApplyOption(kLxm600Sleep, OptIRSleep, Index);
}
void frmLXM600::ChkPEnable_Click() {
    ApplyField(kLxm600ProxEnable, 0, ChkPEnable->isChecked());
}
void frmLXM600::OptEPIN_Click(int Index) {
    ApplyOption(kLxm600PinFunction, OptEPIN, Index);
}
void frmLXM600::optINTPALS_Click(int Index) {
    ApplyOption(kLxm600AlsPersistence, optINTPALS, Index);
}
void frmLXM600::optINTP_Click(int Index) {
    ApplyOption(kLxm600ProxPersistence, optINTP, Index);
}

}  // namespace lxm
