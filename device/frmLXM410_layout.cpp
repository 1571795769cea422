// Building the family form's controls from the device-form parts and its own frames. Group
// boxes on grid layouts, so that the compact view can simply hide frames and the rest closes up.
#include <QAction>
#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "acquisition/GraphDrawing.h"
#include "acquisition/PictureBox.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/FormFit.h"
#include "device/frmLXM410.h"
#include "device/parts/Doco.h"
#include "device/parts/ReadingFlag.h"
#include "device/parts/FormLayout.h"
#include "device/parts/CharacteriseDialog.h"
#include "device/parts/FormMenus.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "device/parts/StripChart.h"
#include "setup/SetupMenu.h"
#include "viewer/ViewerMenu.h"
#include "transport/Session.h"
#include "core/MenuBar.h"

namespace lxm {

namespace {

QGroupBox* Group(QWidget* parent, const QString& caption) {
    return new QGroupBox(caption, parent);
}

}  // namespace

void frmLXM410::BuildLayout() {
    setWindowTitle(QStringLiteral("Form1"));
    // Three columns: the register panel above the configuration, the operation, and the strip
    // chart with the panels that change with the measurement under it. The chart's column takes
    // whatever room the window has.
    FormColumns cols(this, 3);

    menuBar = new QMenuBar(this);
    QMenu* tools = MenuNamed(*menuBar, QStringLiteral("Tools"));
    mnuScript = tools->addAction(QStringLiteral("Script"));
    mnuGPIO = tools->addAction(QStringLiteral("GPIO Control"));
    mnuDoco = tools->addAction(QStringLiteral("I2C Trace Options"));
    characterise = new CharacteriseMenu(s_, *menuBar, *this, [this] { return SweepParts(); });
    SetupMenu* setup = AddSetupMenu(*menuBar, *this, s_.messages, s_.files);
    AddOpenRunMenu(*menuBar, *this, s_.messages, s_.files);
    // The data registers 2 and 3 are read-only; the command register goes last, once the
    // chip is configured again.
    boardMenu = new BoardMenu(s_, *menuBar,
                              BoardRegisters{this,
                                             {1, 4, 5, 6, 7, 8, 0},
                                             [this](int r) { cmdWrtReg_Click(r); },
                                             [this](int r) { cmdRDReg_Click(r); }});
    layout()->setMenuBar(menuBar);

    // ---- status strip: link lamps, "Test Comm", the external LED, close
    strip_ = new StatusStrip(s_, this);
    frmMode = strip_->frmMode();
    Label13 = strip_->Label13();
    ChKLed = new QCheckBox(QStringLiteral("External LED"), strip_);
    ChKLed->setToolTip(QStringLiteral("Turns LED on Eval board on/off."));
    Command4 = new QPushButton(QStringLiteral("Close"), strip_);
    strip_->row()->addWidget(ChKLed);
    strip_->row()->addStretch(1);
    strip_->row()->addWidget(Command4);
    cols.top()->addWidget(strip_);

    // ---- column 1: the register access panel
    QVBoxLayout* col1 = cols.column(0);
    panel_ = new RegisterPanel(
        s_, kRegisterRows,
        {"Hex Read back of control register", "Hex Read back of control register", "ADC Readback LSB (7:0)",
         "ADC Readback MSB (15:8)", "Integration Counter LSB Value", "Integration Counter MSB Value",
         "Hex Read back of control register"},
        this);
    frmRegisters = panel_;
    for (int i = 0; i < kRegisterRows; ++i) {
        cmdRDReg[i] = panel_->cmdRDReg(i);
        cmdWrtReg[i] = panel_->cmdWrtReg(i);
    }
    cmdReadAllRegs = panel_->cmdReadAllRegs();
    txtI2CADR = panel_->txtI2CADR();
    ShpIntFlag = new Shape(panel_);
    ShpIntFlag->setToolTip(QStringLiteral("Interrupt flag of the sensor (register 0, bit 2)"));
    panel_->footer()->addWidget(new QLabel(QStringLiteral("INT flag"), panel_), 0, 0, Qt::AlignRight);
    panel_->footer()->addWidget(ShpIntFlag, 0, 1);
    col1->addWidget(panel_);

    FrmDevice = new DeviceSelection(this);
    LstDeviceSel = FrmDevice->LstDeviceSel;
    LstDeviceSel->viewport()->installEventFilter(this);
    txtI2CAddr = FrmDevice->txtI2CAddr;
    txtI2cXmitAdr = FrmDevice->txtI2cXmitAdr;
    Label20 = FrmDevice->Label20;
    Label10 = FrmDevice->Label10;
    col1->addWidget(FrmDevice);

    Frame12 = Group(this, QStringLiteral("Device Variant"));
    auto* vg = new QHBoxLayout(Frame12);
    OptVariant[0] = new QRadioButton(QStringLiteral("A"), Frame12);
    OptVariant[1] = new QRadioButton(QStringLiteral("B"), Frame12);
    OptVariant[1]->setChecked(true);
    vg->addWidget(OptVariant[0]);
    vg->addWidget(OptVariant[1]);
    col1->addWidget(Frame12);

    RecordCaptions record;
    record.frameTitle = QStringLiteral("Save Measurements to File");
    record.filter = QStringLiteral("All Files (*.*)|*.*|LXM20x Data Files(*.txt)|*.txt");
    record.defaultFile = QStringLiteral("Data.txt");
    frmDataRecord = new RecordFrame(s_, record, this);
    txtFilePath = frmDataRecord->txtFilePath;
    cmdBrowse = frmDataRecord->cmdBrowse;
    chkAppend = frmDataRecord->chkAppend;
    cmdStartRec = frmDataRecord->cmdStartRec;

    BuildConfigColumn(col1);
    chart_ = new StripChart(s_, plot, false, this);
    cols.column(2)->addWidget(chart_, 1);
    under_ = cols.column(2);
    BuildMeasureColumn(cols.column(1));
    cols.Grow(2);

    // Tight frames: on a laptop screen every row counts.
    TightFrames(*this, {frmMode});
    // Controls that come and go while the form is in use keep their room, so that nothing
    // moves under the pointer.
    KeepRoomWhenHidden({FrmProxExternal, Frame9, Frame10, FrmMeasureDetails, fraINT, Frame11, Label36,
                        txtADCRaw, Label6, txtTime1, lblRange, cmdStopData, cmdProx_IR, LblCommTest()});

    DeviceFiles files{frmDataRecord, [this] { cmdStartRec_Click(); }, {}, chart_, setup};
    files.more = {{QStringLiteral("Trace File..."),
                   [this] {
                       mnuDoco_Click();
                       DocoForm()->frmDataRecord->cmdBrowse_Click();
                   },
                   QStringLiteral("Chooses the file the I2C trace text is saved to")},
                  {QStringLiteral("Save Trace"),
                   [this] {
                       mnuDoco_Click();
                       DocoForm()->cmdStartRec_Click();
                   },
                   QStringLiteral("Saves the text of \"I2C Trace Options\" to its file")}};
    formMenus = new FormMenus(s_, *menuBar,
                              {DeviceFileItems(files), [this] { return CompactView; }, [this] { Label13_DblClick(); }});

    // The dual-mode panels show only while that measurement is selected.
    FrmProxExternal->hide();
    Frame9->hide();
    Frame10->hide();
}

void frmLXM410::BuildConfigColumn(QVBoxLayout* col2) {
    frGain = Group(this, QStringLiteral("AD Sensitivity - Range Select"));
    auto* gg = MakeOptionArray(frGain, OptGain, {{0, "1000"}, {1, "4000"}, {2, "16000"}, {3, "64000"}}, 4);
    for (auto& [i, b] : OptGain) b->setToolTip(QStringLiteral("Set the AD Sensitivity Gain  / Level."));
    // The dual mode's difference and the other measurements are counts, which a step would break.
    autoRange_ = std::make_unique<AutoRangeBox>(AutoRangeBox::Form{
        RangeTable, &OptGain, [this](int i) { OptGain_Click(i); },
        [this]() -> std::optional<AutoRangeBox::Reading> {
            if (!ShowLux || MeasureProxIrDual || InterruptHold) return std::nullopt;
            return AutoRangeBox::Reading{PassCount & TopCount(AdcBits), TopCount(AdcBits), PassStatus};
        }});
    chkAutoRange = autoRange_->chkAutoRange;
    gg->addWidget(chkAutoRange, 1, 0, 1, 4);
    col2->addWidget(frGain);

    frItime = Group(this, QStringLiteral("AD Resolution / Integration Time"));
    auto* ig = MakeOptionArray(frItime, OptITime, {{0, "16"}, {1, "12"}, {2, "8 "}, {3, "4"}}, 4);
    Label25 = new QLabel(QStringLiteral("N-bit A/D Converter"), frItime);
    Label4 = new QLabel(QStringLiteral("Integration Time"), frItime);
    // Not the sensor's conversion time, whatever the caption says.
    Label4->setToolTip(QStringLiteral(
        "The time between the samples of a run, in milliseconds; the resolution above sets the "
        "sensor's own conversion time"));
    txtInterval = MakeBox(frItime, QString(), 56);
    txtInterval->setToolTip(QStringLiteral("Operator Selected time between Measurement Triggers."));
    txtInterval->installEventFilter(this);
    ig->addWidget(Label25, 1, 0, 1, 2);
    ig->addWidget(Label4, 2, 0, 1, 2);
    ig->addWidget(txtInterval, 2, 2, 1, 2);
    col2->addWidget(frItime);

    FraScheme = Group(this, QStringLiteral("Measurement Type"));
    MakeOptionArray(FraScheme, OptIRMode, {{0, "Scheme0"}, {1, "Scheme1"}}, 2);

    auto* modeTiming = new QHBoxLayout;
    Frame4 = Group(this, QStringLiteral("Measurement"));
    MakeOptionArray(Frame4, OptMeasMode, {{0, "ADC"}}, 1);
    Frame5 = Group(this, QStringLiteral("Timing"));
    MakeOptionArray(Frame5, OptExtTime, {{0, "Internal"}}, 1);
    modeTiming->addWidget(FraScheme);
    modeTiming->addWidget(Frame4);
    modeTiming->addWidget(Frame5);
    col2->addLayout(modeTiming);

    frmProxControl = Group(this, QStringLiteral("Proximity Options"));
    auto* pc = new QVBoxLayout(frmProxControl);
    Frame7 = Group(frmProxControl, QStringLiteral("IR Modulation Frequency kHz"));
    MakeOptionArray(Frame7, OptMFreq, {{0, "DC"}, {3, "327.7"}}, 2);
    Frame6 = Group(frmProxControl, QStringLiteral("IRDR Pin Source Current"));
    MakeOptionArray(Frame6, OptPSrc, {{0, "100mA"}, {1, "50mA"}, {2, "25mA"}, {3, "12.5mA"}}, 2);
    pc->addWidget(Frame7);
    pc->addWidget(Frame6);

    fraINT = Group(this, QStringLiteral("Interrupt Persistance"));
    auto* ng = MakeOptionArray(fraINT, optINTP, {{0, "1"}, {1, "4"}, {2, "8"}, {3, "16"}}, 4);
    for (auto& [i, b] : optINTP) b->setToolTip(QStringLiteral("Sets the Clock Cycle Integration Time"));
    Label39 = new QLabel(QStringLiteral("Interrupt Limits Dec     Hex"), fraINT);
    Label38[0] = new QLabel(QStringLiteral("Lower"), fraINT);
    Label38[1] = new QLabel(QStringLiteral("Upper"), fraINT);
    // Index 0 takes the decimal entry, index 1 shows the bytes written.
    txtILow[0] = MakeBox(fraINT, QString(), 56);
    txtIHigh[0] = MakeBox(fraINT, QString(), 56);
    txtILow[1] = MakeBox(fraINT, QString(), 48);
    txtIHigh[1] = MakeBox(fraINT, QString(), 48);
    txtILow[1]->setReadOnly(true);
    txtIHigh[1]->setReadOnly(true);
    for (int i = 0; i < 4; ++i) lblIlimitsformat[i] = new QLabel(fraINT);
    cmdWrtILimits = new QPushButton(QStringLiteral("Write Limits"), fraINT);
    cmdReadILimits = new QPushButton(QStringLiteral("Read Limits"), fraINT);
    cmdSampleInterrupt = new QPushButton(QStringLiteral("INT Line"), fraINT);
    cmdSampleInterrupt->setToolTip(QStringLiteral("Samples the interrupt line of the board (red: asserted)"));
    cmdSampleIIIntr = new QPushButton(QStringLiteral("INT Flag"), fraINT);
    cmdSampleIIIntr->setToolTip(
        QStringLiteral("Reads register 0, which carries the sensor's interrupt flag"));
    ShpINTexternal = new Shape(fraINT);
    ShpINTexternal->setToolTip(QStringLiteral("Interrupt line (red: asserted)"));
    ShpINt = new Shape(fraINT);
    ShpINt->setToolTip(QStringLiteral("Changes colour with every sample of the interrupt line"));
    auto* lamps = new QHBoxLayout;
    lamps->addWidget(cmdSampleInterrupt);
    lamps->addWidget(ShpINTexternal);
    lamps->addWidget(ShpINt);
    lamps->addWidget(cmdSampleIIIntr);
    ng->addWidget(Label39, 1, 0, 1, 4);
    ng->addWidget(Label38[0], 2, 0);
    ng->addWidget(txtILow[0], 2, 1);
    ng->addWidget(txtILow[1], 2, 2);
    ng->addWidget(cmdWrtILimits, 2, 3);
    ng->addWidget(Label38[1], 3, 0);
    ng->addWidget(txtIHigh[0], 3, 1);
    ng->addWidget(txtIHigh[1], 3, 2);
    ng->addWidget(cmdReadILimits, 3, 3);
    ng->addWidget(lblIlimitsformat[0], 4, 0, 1, 2);
    ng->addWidget(lblIlimitsformat[1], 4, 2, 1, 2);
    ng->addWidget(lblIlimitsformat[3], 5, 0, 1, 2);
    ng->addWidget(lblIlimitsformat[2], 5, 2, 1, 2);
    ng->addLayout(lamps, 6, 0, 1, 4);
    col2->addWidget(fraINT);
    col2->addStretch(1);
}

void frmLXM410::BuildMeasureColumn(QVBoxLayout* col3) {
    frmMeasure = Group(this, QStringLiteral("Operation"));
    OptionItems measures;
    for (std::size_t i = 0; i < kFamilyMeasureCaptions.size(); ++i)
        measures.emplace_back(int(i), QString::fromLatin1(kFamilyMeasureCaptions[i]));
    MakeOptionArray(frmMeasure, OptMeasure, measures, 1);
    for (auto& [i, b] : OptMeasure) b->installEventFilter(this);
    // Two to a row, the long one on a row of its own: a laptop screen has no height to spare.
    auto* mg = static_cast<QGridLayout*>(frmMeasure->layout());
    const int place[8][3] = {{0, 0, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 1},
                             {2, 0, 2}, {3, 0, 1}, {3, 1, 1}, {4, 0, 1}};
    for (int i = 0; i < 8; ++i) mg->addWidget(OptMeasure.at(i), place[i][0], place[i][1], 1, place[i][2]);
    col3->addWidget(frmMeasure);

    Frame3 = Group(this, QStringLiteral("Measurement Loop Timing"));
    auto* tg = new QHBoxLayout(Frame3);
    Label9 = new QLabel(QStringLiteral("Integration Time"), Frame3);
    txtSampling_Delay = MakeBox(Frame3, QString(), 56);
    // One tip for the three captions the operation gives the box.
    for (QWidget* w : std::initializer_list<QWidget*>{Label9, txtSampling_Delay})
        w->setToolTip(QStringLiteral(
            "A one-shot measurement waits this many milliseconds between its command and the "
            "reading (\"Delay Command to Sample\"); a continuous one shows here the time between "
            "samples (\"Delay Between Samples\"), set in the box beside \"Integration Time\""));
    tg->addWidget(Label9, 1);
    tg->addWidget(txtSampling_Delay);
    col3->addWidget(Frame3);

    FrmProxExternal = Group(this, QStringLiteral("Prox External Options"));
    auto* xg = MakeOptionArray(FrmProxExternal, OptProxE,
                               {{0, "IR Before"}, {1, "IR After"}, {2, "IR Both / Avg"}}, 1);
    for (int i = 0; i < 3; ++i) {
        lblIR1[i] = new QLabel(QStringLiteral("------"), FrmProxExternal);
        xg->addWidget(lblIR1[i], i, 1);
    }
    Label3 = new QLabel(QStringLiteral("Delay MS"), FrmProxExternal);
    txtPLoopDelay = MakeBox(FrmProxExternal, QStringLiteral("0"), 56);
    txtPLoopDelay->setToolTip(QStringLiteral("Delay in Milliseconds between measurement sequence execution"));
    xg->addWidget(Label3, 3, 0);
    xg->addWidget(txtPLoopDelay, 3, 1);

    frmCollect = Group(this, QStringLiteral("Data Collection"));
    auto* rdg = new QGridLayout(frmCollect);
    Label16 = new QLabel(QStringLiteral("ADC Reading"), frmCollect);
    txtReading = MakeBox(frmCollect, QString(), 90);
    txtReading->setReadOnly(true);
    Label36 = new QLabel(QStringLiteral("ADC Reading"), frmCollect);
    txtADCRaw = MakeBox(frmCollect, QString(), 90);
    txtADCRaw->setReadOnly(true);
    Label6 = new QLabel(QStringLiteral("Measured Loop Time"), frmCollect);
    txtTime1 = MakeBox(frmCollect, QString(), 90);
    txtTime1->setReadOnly(true);
    lblLoop_Count = new QLabel(frmCollect);
    MakeLiveValue(lblLoop_Count);  // its size from the outset: the count appears with Start
    Label18 = new QLabel(frmCollect);
    cmdCollectData = new QPushButton(QStringLiteral("Start"), frmCollect);
    cmdCollectData->setToolTip(
        QStringLiteral("Begins a continuous timer controller trigger, reading and display of the LXM20x "
                       "Ambient Light Reading."));
    cmdStopData = new QPushButton(QStringLiteral("Stop"), frmCollect);
    cmdStopData->setEnabled(false);
    cmdRead_ADC = new QPushButton(QStringLiteral("Read ADC"), frmCollect);
    cmdRead_ADC->setToolTip(QStringLiteral("Read AD Register  hex value."));
    cmdProx_IR = new QPushButton(QStringLiteral("Proximity-IR (External Calculation)"), frmCollect);
    cmdProx_IR->setToolTip(QStringLiteral("Dual Mode Proximity Prox - IR (External Calculation)"));
    cmdProx_IR->installEventFilter(this);
    ChkSampleInt = new QCheckBox(QStringLiteral("Sample Interrupt"), frmCollect);
    lblRange = new QLabel(QStringLiteral("Range Change"), frmCollect);
    rdg->addWidget(Label16, 0, 0);
    rdg->addWidget(txtReading, 0, 1);
    lblReadingFlag = new ReadingFlag(frmCollect);
    rdg->addWidget(lblReadingFlag, 0, 2);
    rdg->addWidget(Label36, 1, 0);
    rdg->addWidget(txtADCRaw, 1, 1);
    rdg->addWidget(Label6, 2, 0);
    rdg->addWidget(txtTime1, 2, 1);
    // The pass count and the status line share a row, the status taking what the count leaves.
    auto* status = new QHBoxLayout;
    status->addWidget(lblLoop_Count);
    status->addWidget(Label18, 1);
    rdg->addLayout(status, 3, 0, 1, 3);
    // Start's caption changes when a run starts; it gets the room of its longer text from the
    // outset, so that nothing moves under the pointer.
    auto* startStop = new QHBoxLayout;
    cmdCollectData->setText(QStringLiteral("Click -Stop-  to End"));
    cmdCollectData->setMinimumWidth(cmdCollectData->sizeHint().width());
    cmdCollectData->setText(QStringLiteral("Start"));
    startStop->addWidget(cmdCollectData);
    startStop->addWidget(cmdStopData, 1);
    rdg->addLayout(startStop, 4, 0, 1, 3);
    rdg->addWidget(lblRange, 5, 0);
    rdg->addWidget(ChkSampleInt, 5, 1, 1, 2);
    col3->addWidget(frmCollect);
    col3->addWidget(frmDataRecord);

    // Single reads; the compact view hides them with their frame.
    Frame2 = Group(this, QStringLiteral("Single Read"));
    auto* sr = new QHBoxLayout(Frame2);
    cmdRead_ADC->setParent(Frame2);
    cmdProx_IR->setParent(Frame2);
    sr->addWidget(cmdRead_ADC);
    sr->addWidget(cmdProx_IR);
    under_->addWidget(Frame2);

    Frame9 = Group(this, QStringLiteral("Prox && IR Hex"));
    auto* h9 = new QGridLayout(Frame9);
    static const char* kHexCaps[4] = {"IR  Hex", "IR  Hex", "Prox Hex", "Prox Hex"};
    for (int i = 0; i < 4; ++i) {
        txtProx_IR[i] = MakeBox(Frame9, QString(), 40);
        h9->addWidget(new QLabel(QString::fromLatin1(kHexCaps[i]), Frame9), 0, i);
        h9->addWidget(txtProx_IR[i], 1, i);
    }
    Frame10 = Group(this, QStringLiteral("Prox && IR Decimal"));
    auto* h10 = new QGridLayout(Frame10);
    static const char* kDecCaps[3] = {"Prox", "IR", "Prox-IR"};
    h10->addWidget(new QLabel(QStringLiteral("Over Range   V"), Frame10), 2, 3);
    for (int i = 0; i < 3; ++i) {
        txtProx_IR[4 + i] = MakeBox(Frame10, QString(), 64);
        h10->addWidget(new QLabel(QString::fromLatin1(kDecCaps[i]), Frame10), 0, i);
        h10->addWidget(txtProx_IR[4 + i], 1, i);
        ShpOVRange[i] = new Shape(Frame10);
        h10->addWidget(ShpOVRange[i], 2, i, Qt::AlignCenter);
    }

    FrmMeasureDetails = new MaxMinFrame(this);
    txtADMax = FrmMeasureDetails->txtADMax;
    cmdClearHist = FrmMeasureDetails->cmdClearHist;
    // The max/min panel and the dual-mode panels take turns in one place under the chart, which
    // keeps room for the larger: choosing a measurement moves nothing else.
    auto* details = new QGridLayout;
    auto* dualPanels = new QHBoxLayout;
    auto* hexAndDecimal = new QVBoxLayout;
    hexAndDecimal->addWidget(Frame9);
    hexAndDecimal->addWidget(Frame10);
    dualPanels->addWidget(FrmProxExternal, 0, Qt::AlignTop);
    dualPanels->addLayout(hexAndDecimal);
    dualPanels->addStretch(1);
    details->addWidget(FrmMeasureDetails, 0, 0, Qt::AlignTop);
    details->addLayout(dualPanels, 0, 0, Qt::AlignTop);
    under_->addLayout(details);

    Frame11 = Group(this, QStringLiteral("Demonstrations"));
    auto* dm = new QHBoxLayout(Frame11);
    cmdProxDemo = new QPushButton(QStringLiteral("Proximity Demo"), Frame11);
    cmdIDemo = new QPushButton(QStringLiteral("Interrupt Demo"), Frame11);
    dm->addWidget(cmdProxDemo);
    dm->addWidget(cmdIDemo);
    col3->addWidget(Frame11);
    col3->addWidget(frmProxControl);
    col3->addStretch(1);
}

// Every handler a control starts runs as one user action, which tells of a missing board once.
void frmLXM410::FitWindow() {
    lxm::FitWindow(*this);
}

void frmLXM410::WireHandlers() {
    auto wire = [this](CtlArray<QRadioButton>& arr, void (frmLXM410::*handler)(int)) {
        WireArray(s_, arr, this, [this, handler](int i) { (this->*handler)(i); });
    };
    connect(strip_->OptMode(2), &QRadioButton::clicked, this, AsUserAction(s_, [this] { OptMode_Click(2); }));
    strip_->onLabel13DblClick = [this] { Label13_DblClick(); };
    wire(OptGain, &frmLXM410::OptGain_Click);
    wire(OptITime, &frmLXM410::OptITime_Click);
    wire(OptIRMode, &frmLXM410::OptIRMode_Click);
    wire(OptMeasMode, &frmLXM410::OptMeasMode_Click);
    wire(OptExtTime, &frmLXM410::OptExtTime_Click);
    wire(optINTP, &frmLXM410::optINTP_Click);
    wire(OptPSrc, &frmLXM410::OptPSrc_Click);
    wire(OptMFreq, &frmLXM410::OptMFreq_Click);
    wire(OptProxE, &frmLXM410::OptProxE_Click);
    wire(OptMeasure, &frmLXM410::OptMeasure_Click);
    panel_->onRead = [this](int i) { cmdRDReg_Click(i); };
    panel_->onWrite = [this](int i) { cmdWrtReg_Click(i); };
    panel_->onEnter = [this](int i) { txtRegHex_KeyPress(i, 13); };
    panel_->onLostFocus = [this](int i) { txtRegHex_LostFocus(i); };
    auto& rules = panel_->rules();
    rules.activityRows = {2, 3};
    rules.flagLamps = {{kFamilyIntFlag.reg, kFamilyIntFlag.mask, ShpIntFlag}};
    panel_->SetRegisterNames(RegisterNames());
    rules.commTest = strip_->LblCommTest();
    connect(txtInterval, &QLineEdit::returnPressed, this,
            AsUserAction(s_, [this] { txtInterval_KeyPress(13); }));
    connect(ChKLed, &QCheckBox::clicked, this, AsUserAction(s_, [this] { ChKLed_Click(); }));
    connect(Command4, &QPushButton::clicked, this, AsUserAction(s_, [this] { Command4_Click(); }));
    connect(cmdProxDemo, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdProxDemo_Click(); }));
    connect(cmdIDemo, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdIDemo_Click(); }));
    connect(cmdRead_ADC, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdRead_ADC_Click(); }));
    connect(cmdProx_IR, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdProx_IR_Click(); }));
    connect(cmdCollectData, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdCollectData_Click(); }));
    connect(cmdStopData, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdStopData_Click(); }));
    connect(cmdClearHist, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdClearHist_Click(); }));
    connect(chart_->cmdScale, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdScale_Click(); }));
    for (QLineEdit* box : {chart_->txtScale, chart_->txtScaleMin, chart_->txtScale2, chart_->txtScaleMin2})
        connect(box, &QLineEdit::returnPressed, this, AsUserAction(s_, [this] { txtScale_KeyPress(13); }));
    connect(chart_->cmdAutoScale, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdAutoScale_Click(); }));
    connect(chart_->cmdRestoreScreen, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdRestoreScreen_Click(); }));
    connect(mnuScript, &QAction::triggered, this, AsUserAction(s_, [this] { mnuScript_Click(); }));
    connect(mnuGPIO, &QAction::triggered, this, AsUserAction(s_, [this] { mnuGPIO_Click(); }));
    connect(mnuDoco, &QAction::triggered, this, AsUserAction(s_, [this] { mnuDoco_Click(); }));
    connect(cmdWrtILimits, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdWrtILimits_Click(); }));
    connect(cmdReadILimits, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdReadILimits_Click(); }));
    connect(cmdSampleInterrupt, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdSampleInterrupt_Click(); }));
    connect(cmdSampleIIIntr, &QPushButton::clicked, this,
            AsUserAction(s_, [this] { cmdSampleIIIntr_Click(); }));
    connect(cmdStartRec, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdStartRec_Click(); }));
}

bool frmLXM410::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::FocusOut && watched == txtInterval) txtInterval_LostFocus();
    if (type == QEvent::FocusIn) {
        for (auto& [i, b] : OptMeasure)
            if (watched == b) OptMeasure_GotFocus(i);
        if (watched == cmdProx_IR) cmdProx_IR_GotFocus();
    }
    if (watched == LstDeviceSel->viewport() && type == QEvent::MouseButtonRelease) {
        // Let the list take the click first, then act on its new selection.
        QWidget::eventFilter(watched, event);
        QMetaObject::invokeMethod(
            this, [this] { LstDeviceSel_MouseUp(); }, Qt::QueuedConnection);
        return false;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace lxm
