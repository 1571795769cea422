// Building the multi-function form's controls from the device-form parts and its own frames.
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "acquisition/PictureBox.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/parts/CharacteriseDialog.h"
#include "device/parts/FormMenus.h"
#include "device/FormFit.h"
#include "device/frmLXM600.h"
#include "device/parts/ReadingFlag.h"
#include "device/parts/FormLayout.h"
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

QCheckBox* Check(QWidget* parent, const QString& caption) {
    return new QCheckBox(caption, parent);
}

QLabel* Caption(QWidget* parent, const QString& text = {}) {
    return new QLabel(text, parent);
}

}  // namespace

void frmLXM600::BuildLayout() {
    setWindowTitle(QStringLiteral("Form1"));
    // Three columns: the registers, the strip chart (which takes the room a larger window has)
    // and the configuration above the interrupt set-up.
    FormColumns cols(this, 3);
    for (int c = 0; c < 3; ++c) cols.column(c)->setSpacing(3);

    menuBar = new QMenuBar(this);
    QMenu* tools = MenuNamed(*menuBar, QStringLiteral("Tools"));
    mnuGPIO = tools->addAction(QStringLiteral("GPIO Control"));
    characterise = new CharacteriseMenu(s_, *menuBar, *this, [this] { return SweepParts(); });
    SetupMenu* setup = AddSetupMenu(*menuBar, *this, s_.messages, s_.files);
    AddOpenRunMenu(*menuBar, *this, s_.messages, s_.files);
    // The ID and the readings (0, 8, 9, 10) are read-only; the configuration goes last, once
    // thresholds and interrupt set-up are back.
    boardMenu = new BoardMenu(s_, *menuBar,
                              BoardRegisters{this,
                                             {2, 3, 4, 5, 6, 7, 11, 12, 13, 14, 15, 1},
                                             [this](int r) { cmdWrtReg_Click(r); },
                                             [this](int r) { cmdRDReg_Click(r); }});
    layout()->setMenuBar(menuBar);

    // ---- status strip: lamps, "Test Comm", the two test LEDs, the transfer status, close
    strip_ = new StatusStrip(s_, this);
    ChKLed[0] = Check(strip_, QStringLiteral("Test Red LED"));
    ChKLed[1] = Check(strip_, QStringLiteral("Test ORN LED"));
    lblUSBStatis = Caption(strip_);
    lblUSBStatis->setMinimumWidth(120);
    Command4 = new QPushButton(QStringLiteral("Close"), strip_);
    strip_->row()->addWidget(ChKLed[0]);
    strip_->row()->addWidget(ChKLed[1]);
    strip_->row()->addSpacing(12);
    strip_->row()->addWidget(lblUSBStatis);
    strip_->row()->addStretch(1);
    strip_->row()->addWidget(Command4);
    cols.top()->addWidget(strip_);

    // ---- column 1: registers
    std::vector<QString> readTips(kRegisterRows, QStringLiteral("Hex Read back of control register"));
    readTips[8] = QStringLiteral("Proximity data (7:0)");
    readTips[9] = QStringLiteral("ALS / IR data LSB (7:0)");
    readTips[10] = QStringLiteral("ALS / IR data MSB (11:8)");
    panel_ = new RegisterPanel(s_, kRegisterRows, readTips, this);
    cmdReadID = new QPushButton(QStringLiteral("Read ID"), panel_);
    lblID = Caption(panel_);
    lblID->setMinimumWidth(30);
    panel_->footer()->addWidget(cmdReadID, 0, 0);
    panel_->footer()->addWidget(lblID, 0, 1);
    cols.column(0)->addWidget(panel_);

    FrameReg2User = new QGroupBox(QStringLiteral("Register Bits"), this);
    auto* bg = new QGridLayout(FrameReg2User);
    bg->setHorizontalSpacing(2);
    for (int k = 0; k < 8; ++k) {
        ChkReg1Bit[k] = Check(FrameReg2User, QStringLiteral("Bit %1").arg(7 - k));
        bg->addWidget(ChkReg1Bit[k], k / 4, k % 4);
    }
    spnBitReg = new QSpinBox(FrameReg2User);
    spnBitReg->setRange(0, kRegisterRows - 1);
    spnBitReg->setValue(1);
    spnBitReg->setPrefix(QStringLiteral("Reg "));
    cmdUpdateReg = new QPushButton(QStringLiteral("Write"), FrameReg2User);
    cmdUpdateRead = new QPushButton(QStringLiteral("Read"), FrameReg2User);
    lblRegDatax = Caption(FrameReg2User, QStringLiteral("00"));
    bg->addWidget(spnBitReg, 2, 0);
    bg->addWidget(cmdUpdateReg, 2, 1);
    bg->addWidget(cmdUpdateRead, 2, 2);
    bg->addWidget(lblRegDatax, 2, 3, Qt::AlignCenter);
    cols.column(0)->addWidget(FrameReg2User);

    FrmDevice = new DeviceSelection(this);
    cols.column(0)->addWidget(FrmDevice);
    cols.column(0)->addStretch(1);

    // ---- column 3: the sensor settings, the interrupt set-up and the recording
    frmALS = new QGroupBox(QStringLiteral("ALS / IR"), this);
    auto* ag = new QGridLayout(frmALS);
    ag->setVerticalSpacing(2);
    auto* mmode = new QGroupBox(QStringLiteral("Measurement"), frmALS);
    MakeOptionArray(mmode, OptMMode, {{0, "ALS"}, {1, "IR"}}, 2);
    auto* range = new QGroupBox(QStringLiteral("Range"), frmALS);
    MakeOptionArray(range, OptALSRange, {{0, "2000 Lux"}, {1, "125 Lux"}}, 2);
    autoRange_ = std::make_unique<AutoRangeBox>(
        AutoRangeBox::Form{RangeTable, &OptALSRange, [this](int i) { OptALSRange_Click(i); },
                           [this]() -> std::optional<AutoRangeBox::Reading> {
                               if (!AlsSample()) return std::nullopt;
                               return AutoRangeBox::Reading{AlsIrCount600, kLxm600FullScale, run_.PassStatus};
                           }});
    chkAutoRange = autoRange_->chkAutoRange;
    chkALSEnable = Check(frmALS, QStringLiteral("ALS / IR Enable"));
    ag->addWidget(mmode, 0, 0);
    ag->addWidget(range, 0, 1);
    ag->addWidget(chkALSEnable, 1, 0);
    ag->addWidget(chkAutoRange, 1, 1);
    cols.column(2)->addWidget(frmALS);

    frmProx = new QGroupBox(QStringLiteral("Proximity"), this);
    auto* pg = new QGridLayout(frmProx);
    pg->setVerticalSpacing(2);
    auto* drive = new QGroupBox(QStringLiteral("IR LED Drive"), frmProx);
    MakeOptionArray(drive, OptProxDr, {{0, "100mA"}, {1, "200mA"}}, 2);
    auto* sleep = new QGroupBox(QStringLiteral("Sleep Time mS"), frmProx);
    MakeOptionArray(sleep, OptIRSleep,
                    {{0, "800"},
                     {1, "400"},
                     {2, "200"},
                     {3, "100"},
                     {4, "75"},
                     {5, "50"},
                     {6, "12.5"},
                     {7, "Continuous"}},
                    4);
    ChkPEnable = Check(frmProx, QStringLiteral("Prox Enable"));
    pg->addWidget(drive, 0, 0);
    pg->addWidget(ChkPEnable, 0, 1);
    pg->addWidget(sleep, 1, 0, 1, 2);
    cols.column(2)->addWidget(frmProx);

    frmIntConfig = new QGroupBox(QStringLiteral("Interrupt"), this);
    auto* ig = new QGridLayout(frmIntConfig);
    auto* pin = new QGroupBox(QStringLiteral("Pin Function"), frmIntConfig);
    MakeOptionArray(pin, OptEPIN, {{0, "Or"}, {1, "And"}}, 2);
    auto* persistAls = new QGroupBox(QStringLiteral("ALS Persistance"), frmIntConfig);
    MakeOptionArray(persistAls, optINTPALS, {{0, "1"}, {1, "4"}, {2, "8"}, {3, "16"}}, 2);
    auto* persistProx = new QGroupBox(QStringLiteral("Prox Persistance"), frmIntConfig);
    MakeOptionArray(persistProx, optINTP, {{0, "1"}, {1, "4"}, {2, "8"}, {3, "16"}}, 2);
    ShpALSFlag = new Shape(frmIntConfig);
    ShpALSFlag->setToolTip(QStringLiteral("ALS interrupt flag (register 2, bit 3)"));
    ShpProxFlag = new Shape(frmIntConfig);
    ShpProxFlag->setToolTip(QStringLiteral("Proximity interrupt flag (register 2, bit 7)"));
    // The flags stand beside the pin function, the two persistences share the row below.
    auto* flags = new QGridLayout;
    flags->setVerticalSpacing(2);
    flags->setHorizontalSpacing(6);
    flags->addWidget(Caption(frmIntConfig, QStringLiteral("ALS flag")), 0, 0);
    flags->addWidget(ShpALSFlag, 0, 1);
    flags->addWidget(Caption(frmIntConfig, QStringLiteral("Prox flag")), 1, 0);
    flags->addWidget(ShpProxFlag, 1, 1);
    ig->setVerticalSpacing(2);
    ig->addWidget(pin, 0, 0);
    ig->addLayout(flags, 0, 1, Qt::AlignCenter);
    ig->addWidget(persistAls, 1, 0);
    ig->addWidget(persistProx, 1, 1);
    cols.column(2)->addWidget(frmIntConfig);

    BuildLimits();
    cols.column(2)->addWidget(fraINT);

    RecordCaptions record;
    record.frameTitle = QStringLiteral("Save Measurements to File");
    record.filter = QStringLiteral("All Files (*.*)|*.*|LXM20x Data Files(*.txt)|*.txt");
    record.defaultFile = QStringLiteral("Data.txt");
    frmDataRecord = new RecordFrame(s_, record, this);
    frmDataRecord->LogOnItsOwnRow();
    cols.column(2)->addWidget(frmDataRecord);
    cols.column(2)->addStretch(1);

    // ---- column 2: the strip chart; under it what reads, paces and sums up its readings,
    // then the collection
    chart_ = new StripChart(s_, plot_, true, this);
    cols.column(1)->addWidget(chart_, 1);
    auto* under = new QHBoxLayout;
    cols.column(1)->addLayout(under);
    BuildCollection(under);
    cols.column(1)->addWidget(frmCollect);
    cols.Grow(1);
    formMenus = new FormMenus(s_, *menuBar,
                              {DeviceFileItems({frmDataRecord, [this] { cmdStartRec_Click(); }, {}, chart_, setup}),
                               [this] { return CompactView; }, [this] { Label13_DblClick(); }});
    // Tight frames: on a laptop screen every row counts.
    TightFrames(*this);
    if (auto* mg = qobject_cast<QGridLayout*>(FrmMeasureDetails->layout())) mg->setVerticalSpacing(1);
    // The compact view hides these for good: what stays beside them does not move.
    KeepRoomWhenHidden({cmdCollect, Label17, txtReading2, txtReading3});
}

void frmLXM600::BuildCollection(QHBoxLayout* under) {
    Frame2 = new QGroupBox(QStringLiteral("Single Read"), this);
    auto* sg = new QGridLayout(Frame2);
    sg->setVerticalSpacing(2);
    cmdReadAd = new QPushButton(QStringLiteral("Read AD"), Frame2);
    cmdReadAd->setToolTip(QStringLiteral("Reads the proximity and the ALS / IR data registers"));
    lblMeasurements[1] = Caption(Frame2, QStringLiteral("0"));
    lblMeasurements[2] = Caption(Frame2, QStringLiteral("0"));
    sg->addWidget(cmdReadAd, 0, 0, 1, 2);
    sg->addWidget(Caption(Frame2, QStringLiteral("Prox")), 1, 0);
    sg->addWidget(lblMeasurements[1], 1, 1);
    sg->addWidget(Caption(Frame2, QStringLiteral("ALS / IR")), 2, 0);
    sg->addWidget(lblMeasurements[2], 2, 1);
    sg->setRowStretch(3, 1);
    auto* single = new QVBoxLayout;
    single->addWidget(Frame2);
    single->addWidget(chart_->cmdDrawTrace);
    single->addStretch(1);
    under->addLayout(single);

    auto* pace = new QVBoxLayout;
    frmTimeBase = new QGroupBox(QStringLiteral("Time Base"), this);
    auto* tb = new QHBoxLayout(frmTimeBase);
    Label3 = Caption(frmTimeBase, QStringLiteral("Interval mS"));
    txtInterval = MakeBox(frmTimeBase, QString(), 56);
    txtInterval->setToolTip(QStringLiteral("Operator Selected time between Measurement Triggers."));
    tb->addWidget(Label3, 1);
    tb->addWidget(txtInterval);
    pace->addWidget(frmTimeBase);
    frmGraphSel = new QGroupBox(QStringLiteral("Graph"), this);
    MakeOptionArray(frmGraphSel, OptGraph, {{0, "Proximity"}, {1, "ALS/IR"}}, 1);
    pace->addWidget(frmGraphSel);
    pace->addStretch(1);
    under->addLayout(pace);

    FrmMeasureDetails = new MaxMinFrame(this);
    under->addWidget(FrmMeasureDetails, 0, Qt::AlignTop);
    under->addStretch(1);

    // Three rows across the chart's width: the readings, the loop's timing, the commands.
    frmCollect = new QGroupBox(QStringLiteral("Data Collection"), this);
    auto* cg = new QGridLayout(frmCollect);
    cg->setVerticalSpacing(2);
    Label16 = Caption(frmCollect, QStringLiteral("Proximity"));
    txtReading = MakeBox(frmCollect, QString(), 70);
    txtReading->setReadOnly(true);
    Label17 = Caption(frmCollect, QStringLiteral("Prox / ALS"));
    txtReading2 = MakeBox(frmCollect, QString(), 50);
    txtReading3 = MakeBox(frmCollect, QString(), 50);
    txtReading2->setReadOnly(true);
    txtReading3->setReadOnly(true);
    txtADCRaw = MakeBox(frmCollect, QString(), 70);
    txtADCRaw->setReadOnly(true);
    Label6 = Caption(frmCollect, QStringLiteral("Measured Loop Time"));
    txtTime1 = MakeBox(frmCollect, QString(), 70);
    txtTime1->setReadOnly(true);
    lblLoop_Count = Caption(frmCollect);
    Label18 = Caption(frmCollect);
    // During a run its caption is a sentence, shortened on the button rather than widening it.
    cmdCollectData = new EllipsisButton(QStringLiteral("Collect Data Graphical Real Time Data"),
                                        QStringLiteral("Collect Data Graphical Real Time Data"), frmCollect);
    cmdCollect = new QPushButton(QStringLiteral("Collect"), frmCollect);
    cmdStopData = new QPushButton(QStringLiteral("Stop Real Time"), frmCollect);
    cmdStopData->setEnabled(false);
    cmdAbort = new QPushButton(QStringLiteral("Abort"), frmCollect);
    auto* readings = new QHBoxLayout;
    readings->setSpacing(6);
    readings->addWidget(Label16);
    readings->addWidget(txtReading);
    readings->addSpacing(8);
    readings->addWidget(Label17);
    readings->addWidget(txtReading2);
    readings->addWidget(txtReading3);
    readings->addSpacing(8);
    readings->addWidget(Caption(frmCollect, QStringLiteral("ADC Reading")));
    readings->addWidget(txtADCRaw);
    readings->addStretch(1);
    auto* timing = new QHBoxLayout;
    timing->setSpacing(6);
    timing->addWidget(Label6);
    timing->addWidget(txtTime1);
    // Under the live value: the readings row has no room to spare on a laptop screen.
    lblReadingFlag = new ReadingFlag(frmCollect);
    timing->addWidget(lblReadingFlag);
    timing->addSpacing(8);
    timing->addWidget(lblLoop_Count, 1);
    timing->addWidget(Label18, 2);
    auto* commands = new QHBoxLayout;
    commands->setSpacing(6);
    commands->addWidget(cmdCollectData);
    commands->addWidget(cmdCollect);
    commands->addWidget(cmdStopData);
    commands->addWidget(cmdAbort);
    commands->addStretch(1);
    cg->addLayout(readings, 0, 0);
    cg->addLayout(timing, 1, 0);
    cg->addLayout(commands, 2, 0);
}

void frmLXM600::BuildLimits() {
    fraINT = new QGroupBox(QStringLiteral("Interrupt Limits"), this);
    auto* lg = new QGridLayout(fraINT);
    lg->setVerticalSpacing(2);
    lg->addWidget(Caption(fraINT, QStringLiteral("Interrupt Limits Dec")), 0, 0);
    lg->addWidget(Caption(fraINT, QStringLiteral("Lower")), 0, 1);
    lg->addWidget(Caption(fraINT, QStringLiteral("Upper")), 0, 2);
    const std::pair<int, const char*> windows[2] = {{0, "ALS / IR"}, {2, "Prox"}};
    int row = 1;
    for (const auto& [i, caption] : windows) {
        txtILow[i] = MakeBox(fraINT, QString(), 52);
        txtIHigh[i] = MakeBox(fraINT, QString(), 52);
        lg->addWidget(Caption(fraINT, QString::fromLatin1(caption)), row, 0);
        lg->addWidget(txtILow[i], row, 1);
        lg->addWidget(txtIHigh[i], row, 2);
        ++row;
    }
    // Each window's format in two lines: its polarity, then its bits and range.
    auto* formats = new QGridLayout;
    formats->setVerticalSpacing(0);
    for (int i = 0; i < 8; ++i) lblIlimitsformat[i] = Caption(fraINT);
    for (int w = 0; w < 2; ++w) {
        formats->addWidget(lblIlimitsformat[4 * w], 0, w);
        auto* range = new QHBoxLayout;
        range->setSpacing(8);
        for (int k = 1; k < 4; ++k) range->addWidget(lblIlimitsformat[4 * w + k]);
        range->addStretch(1);
        formats->addLayout(range, 1, w);
    }
    lg->addLayout(formats, row++, 0, 1, 4);
    cmdWrtILimits = new QPushButton(QStringLiteral("Write Limits"), fraINT);
    cmdReadILimits = new QPushButton(QStringLiteral("Read Limits"), fraINT);
    cmdALSClear = new QPushButton(QStringLiteral("Clear ALS INT"), fraINT);
    cmdALSClear->setToolTip(QStringLiteral("Clears the ALS interrupt flag (register 2, bit 3)"));
    cmdPIClear = new QPushButton(QStringLiteral("Clear Prox INT"), fraINT);
    cmdPIClear->setToolTip(QStringLiteral("Clears the proximity interrupt flag (register 2, bit 7)"));
    cmdSampleInternalIntrs = new QPushButton(QStringLiteral("INT Flags"), fraINT);
    cmdSampleInternalIntrs->setToolTip(
        QStringLiteral("Reads register 2, which carries both interrupt flags"));
    cmdISamples = new QPushButton(QStringLiteral("INT Line"), fraINT);
    cmdISamples->setToolTip(QStringLiteral("Samples the interrupt line of the board (red: asserted)"));
    ShpINTexternal = new Shape(fraINT);
    ShpINTexternal->setToolTip(QStringLiteral("Interrupt line (red: asserted)"));
    ShpINt = new Shape(fraINT);
    ShpINt->setToolTip(QStringLiteral("Changes colour with every sample of the interrupt line"));
    chkPoll = Check(fraINT, QStringLiteral("Poll"));
    chkPoll->setToolTip(QStringLiteral("Reads the sensor every quarter second"));
    // Writing and reading the limits beside them, the clearing of the flags under them.
    lg->addWidget(cmdWrtILimits, 1, 3);
    lg->addWidget(cmdReadILimits, 2, 3);
    auto* clear = new QHBoxLayout;
    clear->addWidget(cmdALSClear);
    clear->addWidget(cmdPIClear);
    lg->addLayout(clear, row, 0, 1, 4);
    auto* line = new QHBoxLayout;
    line->addWidget(cmdSampleInternalIntrs);
    line->addWidget(chkPoll);
    line->addSpacing(8);
    line->addWidget(cmdISamples);
    line->addWidget(ShpINTexternal);
    line->addWidget(ShpINt);
    line->addStretch(1);
    lg->addLayout(line, row + 1, 0, 1, 4);
}

}  // namespace lxm
