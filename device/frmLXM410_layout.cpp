// Building the family form's controls. Positions are ours: group boxes on grid layouts, so
// that the compact view can simply hide frames and the rest closes up.
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
#include "core/EntryCheck.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/FormFit.h"
#include "device/frmLXM410.h"

namespace lxm {

namespace {

QLineEdit* Box(QWidget* parent, const QString& text = {}, int width = 44) {
    auto* e = new QLineEdit(text, parent);
    e->setFixedWidth(width);
    e->setAlignment(Qt::AlignCenter);
    return e;
}

QGroupBox* Group(QWidget* parent, const QString& caption) {
    return new QGroupBox(caption, parent);
}

}  // namespace

void frmLXM410::BuildLayout() {
    setWindowTitle(QStringLiteral("Form1"));
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(6, 4, 6, 6);
    root->setSpacing(4);

    menuBar = new QMenuBar(this);
    QMenu* tools = menuBar->addMenu(QStringLiteral("Tools"));
    mnuScript = tools->addAction(QStringLiteral("Script"));
    mnuGPIO = tools->addAction(QStringLiteral("GPIO Control"));
    // The data registers 2 and 3 are read-only; the command register goes last, once the
    // chip is configured again.
    boardMenu = new BoardMenu(s_, *menuBar,
                              BoardRegisters{this,
                                             {1, 4, 5, 6, 7, 8, 0},
                                             [this](int r) { cmdWrtReg_Click(r); },
                                             [this](int r) { cmdRDReg_Click(r); }});
    root->setMenuBar(menuBar);

    // ---- status strip: link lamps, "Test Comm", the external LED, close
    auto* strip = new QHBoxLayout;
    Label13 = new QLabel(QStringLiteral("USB COMM"), this);
    Label13->setToolTip(QStringLiteral("Double-click to switch between the compact and the full view"));
    Label13->installEventFilter(this);
    ShpAttach_ = new Shape(this);
    ShpAttach_->setToolTip(QStringLiteral("Attach / outgoing transfer"));
    Shp_USB_Transfer_ = new Shape(this);
    Shp_USB_Transfer_->setToolTip(QStringLiteral("Incoming transfer"));
    ShpStatus = new Shape(this);
    ShpStatus->hide();
    frmMode = Group(this, QString());
    frmMode->setFlat(true);
    auto* modeRow = new QHBoxLayout(frmMode);
    modeRow->setContentsMargins(0, 0, 0, 0);
    OptMode_[2] = new QRadioButton(QStringLiteral("Test Comm"), frmMode);
    LblCommTest_ = new ColorLabel(QStringLiteral("Fail"), frmMode);
    LblCommTest_->setMinimumWidth(48);
    modeRow->addWidget(OptMode_[2]);
    modeRow->addWidget(LblCommTest_);
    ChKLed = new QCheckBox(QStringLiteral("External LED"), this);
    ChKLed->setToolTip(QStringLiteral("Turns LED on Eval board on/off."));
    Command4 = new QPushButton(QStringLiteral("Close"), this);
    strip->addWidget(Label13);
    strip->addWidget(ShpAttach_);
    strip->addWidget(Shp_USB_Transfer_);
    strip->addWidget(ShpStatus);
    strip->addSpacing(12);
    strip->addWidget(frmMode);
    strip->addSpacing(12);
    strip->addWidget(ChKLed);
    strip->addStretch(1);
    strip->addWidget(Command4);
    // The strip rides in the menu bar's corner: a laptop screen has no height to spare.
    auto* stripBox = new QWidget(menuBar);
    stripBox->setLayout(strip);
    strip->setContentsMargins(12, 0, 4, 0);
    menuBar->setCornerWidget(stripBox, Qt::TopRightCorner);

    // Left, the register panel and the configuration in a scroll area that scrolls only on a
    // screen too small for them. Right, the operation column beside the strip chart, and under
    // them the panels that change with the measurement; the chart takes all the room left over.
    auto* body = new QHBoxLayout;
    body->setSpacing(6);
    root->addLayout(body, 1);
    auto* controls = new QWidget(this);
    auto* columns = new QHBoxLayout(controls);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(6);
    auto* scroll = new ControlsArea(this);
    scroll->setWidget(controls);
    body->addWidget(scroll);
    auto* right = new QGridLayout;
    right->setSpacing(6);
    body->addLayout(right, 1);

    // ---- column 1: the register access panel
    auto* col1 = new QVBoxLayout;
    frmRegisters = Group(this, QStringLiteral("Register Access"));
    auto* rg = new QGridLayout(frmRegisters);
    rg->setHorizontalSpacing(4);
    rg->setVerticalSpacing(2);
    rg->addWidget(new QLabel(QStringLiteral("Reg"), frmRegisters), 0, 0);
    rg->addWidget(new QLabel(QStringLiteral("Write"), frmRegisters), 0, 1, 1, 2, Qt::AlignCenter);
    rg->addWidget(new QLabel(QStringLiteral("Read"), frmRegisters), 0, 4, 1, 2, Qt::AlignCenter);
    static const char* kReadTips[kRegisterRows] = {
        "Hex Read back of control register",
        "Hex Read back of control register",
        "ADC Readback LSB (7:0)",
        "ADC Readback MSB (15:8)",
        "Integration Counter LSB Value",
        "Integration Counter MSB Value",
        "Hex Read back of control register",
        "Hex Read back of control register",
        "Hex Read back of control register",
    };
    for (int i = 0; i < kRegisterRows; ++i) {
        const int row = i + 1;
        rg->addWidget(new QLabel(QStringLiteral("%1").arg(i), frmRegisters), row, 0);
        txtRegHex_[i] = Box(frmRegisters, QStringLiteral("00"), 36);
        txtRegHex_[i]->setToolTip(QStringLiteral("Display actual hex value of LXM200 control Register."));
        txtRegHex_[i]->installEventFilter(this);
        CheckHexByte(txtRegHex_[i]);
        cmdWrtReg[i] = new QPushButton(QStringLiteral("Write to Register"), frmRegisters);
        ShpIndwr_[i] = new Shape(frmRegisters);
        txtRegRd_[i] = Box(frmRegisters, QString(), 36);
        txtRegRd_[i]->setReadOnly(true);
        txtRegRd_[i]->setToolTip(QString::fromLatin1(kReadTips[i]));
        cmdRDReg[i] = new QPushButton(QStringLiteral("Read Register"), frmRegisters);
        ShpIndrd_[i] = new Shape(frmRegisters);
        rg->addWidget(txtRegHex_[i], row, 1);
        rg->addWidget(cmdWrtReg[i], row, 2);
        rg->addWidget(ShpIndwr_[i], row, 3);
        rg->addWidget(txtRegRd_[i], row, 4);
        rg->addWidget(cmdRDReg[i], row, 5);
        rg->addWidget(ShpIndrd_[i], row, 6);
    }
    cmdReadAllRegs = new QPushButton(QStringLiteral("Read All"), frmRegisters);
    auto* adrRow = new QHBoxLayout;
    adrRow->addWidget(new QLabel(QStringLiteral("I2C Adr"), frmRegisters));
    txtI2CADR = Box(frmRegisters, QStringLiteral("88"), 40);
    txtI2CADR->installEventFilter(this);
    CheckHexByte(txtI2CADR);
    adrRow->addWidget(txtI2CADR);
    adrRow->addStretch(1);
    adrRow->addWidget(new QLabel(QStringLiteral("INT flag"), frmRegisters));
    ShpIntFlag = new Shape(frmRegisters);
    ShpIntFlag->setToolTip(QStringLiteral("Interrupt flag of the sensor (register 0, bit 2)"));
    adrRow->addWidget(ShpIntFlag);
    rg->addLayout(adrRow, kRegisterRows + 1, 0, 1, 4);
    rg->addWidget(cmdReadAllRegs, kRegisterRows + 1, 4, 1, 3);
    col1->addWidget(frmRegisters);

    FrmDevice = Group(this, QStringLiteral("Device Selection"));
    auto* dg = new QGridLayout(FrmDevice);
    LstDeviceSel = new QListWidget(FrmDevice);
    LstDeviceSel->setMaximumHeight(44);
    LstDeviceSel->viewport()->installEventFilter(this);
    Label10 = new QLabel(QStringLiteral("I2C Adr"), FrmDevice);
    Label20 = new QLabel(QStringLiteral("Actual"), FrmDevice);
    txtI2CAddr = Box(FrmDevice, QStringLiteral("44"), 40);
    txtI2cXmitAdr = Box(FrmDevice, QStringLiteral("88"), 40);
    dg->addWidget(LstDeviceSel, 0, 0, 2, 1);
    dg->addWidget(Label10, 0, 1);
    dg->addWidget(txtI2CAddr, 0, 2);
    dg->addWidget(Label20, 1, 1);
    dg->addWidget(txtI2cXmitAdr, 1, 2);
    col1->addWidget(FrmDevice);

    Frame12 = Group(this, QStringLiteral("Device Variant"));
    auto* vg = new QHBoxLayout(Frame12);
    OptVariant[0] = new QRadioButton(QStringLiteral("A"), Frame12);
    OptVariant[1] = new QRadioButton(QStringLiteral("B"), Frame12);
    OptVariant[1]->setChecked(true);
    vg->addWidget(OptVariant[0]);
    vg->addWidget(OptVariant[1]);
    col1->addWidget(Frame12);

    frmDataRecord = Group(this, QStringLiteral("Data Record"));
    auto* drg = new QHBoxLayout(frmDataRecord);
    txtFilePath = new QLineEdit(frmDataRecord);
    drg->addWidget(new QLabel(QStringLiteral("File"), frmDataRecord));
    drg->addWidget(txtFilePath, 1);
    col1->addWidget(frmDataRecord);

    // ---- column 2: configuration of registers 0 and 1
    auto* col2 = col1;
    auto optionRow = [](QGroupBox* box, CtlArray<QRadioButton>& arr,
                        const std::vector<std::pair<int, QString>>& items, int perRow) {
        auto* g = new QGridLayout(box);
        g->setVerticalSpacing(1);
        int n = 0;
        for (const auto& [index, caption] : items) {
            arr[index] = new QRadioButton(caption, box);
            g->addWidget(arr[index], n / perRow, n % perRow);
            ++n;
        }
        return g;
    };
    frGain = Group(this, QStringLiteral("AD Sensitivity - Range Select"));
    optionRow(frGain, OptGain, {{0, "1000"}, {1, "4000"}, {2, "16000"}, {3, "64000"}}, 4);
    for (auto& [i, b] : OptGain) b->setToolTip(QStringLiteral("Set the AD Sensitivity Gain  / Level."));
    col2->addWidget(frGain);

    frItime = Group(this, QStringLiteral("AD Resolution / Integration Time"));
    auto* ig = optionRow(frItime, OptITime, {{0, "16"}, {1, "12"}, {2, "8 "}, {3, "4"}}, 4);
    Label25 = new QLabel(QStringLiteral("N-bit A/D Converter"), frItime);
    Label4 = new QLabel(QStringLiteral("Integration Time"), frItime);
    txtInterval = Box(frItime, QString(), 56);
    txtInterval->setToolTip(QStringLiteral("Operator Selected time between Measurement Triggers."));
    txtInterval->installEventFilter(this);
    ig->addWidget(Label25, 1, 0, 1, 2);
    ig->addWidget(Label4, 2, 0, 1, 2);
    ig->addWidget(txtInterval, 2, 2, 1, 2);
    col2->addWidget(frItime);

    FraScheme = Group(this, QStringLiteral("Measurement Type"));
    optionRow(FraScheme, OptIRMode, {{0, "Scheme0"}, {1, "Scheme1"}}, 2);

    auto* modeTiming = new QHBoxLayout;
    Frame4 = Group(this, QStringLiteral("Measurement"));
    optionRow(Frame4, OptMeasMode, {{0, "ADC"}}, 1);
    Frame5 = Group(this, QStringLiteral("Timing"));
    optionRow(Frame5, OptExtTime, {{0, "Internal"}}, 1);
    modeTiming->addWidget(FraScheme);
    modeTiming->addWidget(Frame4);
    modeTiming->addWidget(Frame5);
    col2->addLayout(modeTiming);

    frmProxControl = Group(this, QStringLiteral("Proximity Options"));
    auto* pc = new QVBoxLayout(frmProxControl);
    Frame7 = Group(frmProxControl, QStringLiteral("IR Modulation Frequency kHz"));
    optionRow(Frame7, OptMFreq, {{0, "DC"}, {3, "327.7"}}, 2);
    Frame6 = Group(frmProxControl, QStringLiteral("IRDR Pin Source Current"));
    optionRow(Frame6, OptPSrc, {{0, "100mA"}, {1, "50mA"}, {2, "25mA"}, {3, "12.5mA"}}, 2);
    pc->addWidget(Frame7);
    pc->addWidget(Frame6);

    fraINT = Group(this, QStringLiteral("Interrupt Persistance"));
    auto* ng = optionRow(fraINT, optINTP, {{0, "1"}, {1, "4"}, {2, "8"}, {3, "16"}}, 4);
    for (auto& [i, b] : optINTP) b->setToolTip(QStringLiteral("Sets the Clock Cycle Integration Time"));
    Label38[0] = new QLabel(QStringLiteral("Lower"), fraINT);
    Label38[1] = new QLabel(QStringLiteral("Upper"), fraINT);
    txtILow[0] = Box(fraINT, QString(), 56);
    txtIHigh[0] = Box(fraINT, QString(), 56);
    for (int i = 0; i < 4; ++i) lblIlimitsformat[i] = new QLabel(fraINT);
    ng->addWidget(Label38[0], 1, 0);
    ng->addWidget(txtILow[0], 1, 1);
    ng->addWidget(Label38[1], 1, 2);
    ng->addWidget(txtIHigh[0], 1, 3);
    ng->addWidget(lblIlimitsformat[0], 2, 0, 1, 2);
    ng->addWidget(lblIlimitsformat[1], 2, 2, 1, 2);
    ng->addWidget(lblIlimitsformat[3], 3, 0, 1, 2);
    ng->addWidget(lblIlimitsformat[2], 3, 2, 1, 2);
    col1->addWidget(fraINT);
    col1->addStretch(1);
    columns->addLayout(col1);

    // ---- column 3: operation, readings, collection
    auto* col3 = new QVBoxLayout;
    auto* underLeft = new QVBoxLayout;
    auto* underRight = new QVBoxLayout;
    frmMeasure = Group(this, QStringLiteral("Operation"));
    optionRow(frmMeasure, OptMeasure,
              {{0, "Power Down"},
               {1, "ALS Once"},
               {2, "IR Once"},
               {3, "Prox. Once"},
               {4, "Prox-IR External Calculated"},
               {5, "ALS Cont."},
               {6, "IR Cont"},
               {7, "Prox. Cont"}},
              1);
    for (auto& [i, b] : OptMeasure) b->installEventFilter(this);
    // Two to a row, the long one on a row of its own.
    auto* mg3 = static_cast<QGridLayout*>(frmMeasure->layout());
    const int place[8][3] = {{0, 0, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 1},
                             {2, 0, 2}, {3, 0, 1}, {3, 1, 1}, {4, 0, 1}};
    for (int i = 0; i < 8; ++i) mg3->addWidget(OptMeasure.at(i), place[i][0], place[i][1], 1, place[i][2]);
    col3->addWidget(frmMeasure);

    Frame3 = Group(this, QStringLiteral("Measurement Loop Timing"));
    auto* tg = new QHBoxLayout(Frame3);
    Label9 = new QLabel(QStringLiteral("Integration Time"), Frame3);
    txtSampling_Delay = Box(Frame3, QString(), 56);
    tg->addWidget(Label9, 1);
    tg->addWidget(txtSampling_Delay);
    col3->addWidget(Frame3);

    FrmProxExternal = Group(this, QStringLiteral("Prox External Options"));
    auto* xg =
        optionRow(FrmProxExternal, OptProxE, {{0, "IR Before"}, {1, "IR After"}, {2, "IR Both / Avg"}}, 1);
    for (int i = 0; i < 3; ++i) {
        lblIR1[i] = new QLabel(QStringLiteral("------"), FrmProxExternal);
        xg->addWidget(lblIR1[i], i, 1);
    }
    Label3 = new QLabel(QStringLiteral("Delay MS"), FrmProxExternal);
    txtPLoopDelay = Box(FrmProxExternal, QStringLiteral("0"), 56);
    txtPLoopDelay->setToolTip(QStringLiteral("Delay in Milliseconds between measurement sequence execution"));
    xg->addWidget(Label3, 3, 0);
    xg->addWidget(txtPLoopDelay, 3, 1);

    frmCollect = Group(this, QStringLiteral("Data Collection"));
    auto* rdg = new QGridLayout(frmCollect);
    Label16 = new QLabel(QStringLiteral("ADC Reading"), frmCollect);
    txtReading = Box(frmCollect, QString(), 90);
    txtReading->setReadOnly(true);
    Label36 = new QLabel(QStringLiteral("ADC Reading"), frmCollect);
    txtADCRaw = Box(frmCollect, QString(), 90);
    txtADCRaw->setReadOnly(true);
    Label6 = new QLabel(QStringLiteral("Measured Loop Time"), frmCollect);
    txtTime1 = Box(frmCollect, QString(), 90);
    txtTime1->setReadOnly(true);
    lblLoop_Count = new QLabel(frmCollect);
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
    rdg->addWidget(Label36, 1, 0);
    rdg->addWidget(txtADCRaw, 1, 1);
    rdg->addWidget(Label6, 2, 0);
    rdg->addWidget(txtTime1, 2, 1);
    rdg->addWidget(lblLoop_Count, 3, 0);
    rdg->addWidget(lblRange, 3, 1);
    rdg->addWidget(cmdCollectData, 4, 0);
    rdg->addWidget(cmdStopData, 4, 1);
    rdg->addWidget(Label18, 5, 0);
    rdg->addWidget(ChkSampleInt, 5, 1);
    col3->addWidget(frmCollect);

    // Single reads; the compact view hides them with their frame.
    Frame2 = Group(this, QStringLiteral("Single Read"));
    auto* sr = new QHBoxLayout(Frame2);
    cmdRead_ADC->setParent(Frame2);
    cmdProx_IR->setParent(Frame2);
    sr->addWidget(cmdRead_ADC);
    sr->addWidget(cmdProx_IR);
    underRight->addWidget(Frame2);

    Frame9 = Group(this, QStringLiteral("Prox && IR Hex"));
    auto* h9 = new QGridLayout(Frame9);
    static const char* kHexCaps[4] = {"IR  Hex", "IR  Hex", "Prox Hex", "Prox Hex"};
    for (int i = 0; i < 4; ++i) {
        txtProx_IR[i] = Box(Frame9, QString(), 40);
        h9->addWidget(new QLabel(QString::fromLatin1(kHexCaps[i]), Frame9), 0, i);
        h9->addWidget(txtProx_IR[i], 1, i);
    }
    Frame10 = Group(this, QStringLiteral("Prox && IR Decimal"));
    auto* h10 = new QGridLayout(Frame10);
    static const char* kDecCaps[3] = {"Prox", "IR", "Prox-IR"};
    h10->addWidget(new QLabel(QStringLiteral("Over Range   V"), Frame10), 2, 3);
    for (int i = 0; i < 3; ++i) {
        txtProx_IR[4 + i] = Box(Frame10, QString(), 64);
        h10->addWidget(new QLabel(QString::fromLatin1(kDecCaps[i]), Frame10), 0, i);
        h10->addWidget(txtProx_IR[4 + i], 1, i);
        ShpOVRange[i] = new Shape(Frame10);
        h10->addWidget(ShpOVRange[i], 2, i, Qt::AlignCenter);
    }

    FrmMeasureDetails = Group(this, QStringLiteral("Max / Min"));
    auto* mg = new QGridLayout(FrmMeasureDetails);
    static const char* kMaxCaps[3] = {"Max", "Min", "Now"};
    for (int r = 0; r < 3; ++r) {
        mg->addWidget(new QLabel(QString::fromLatin1(kMaxCaps[r]), FrmMeasureDetails), r, 0);
        txtADMax[2 * r] = Box(FrmMeasureDetails, QString(), 70);
        txtADMax[2 * r + 1] = Box(FrmMeasureDetails, QString(), 56);
        mg->addWidget(txtADMax[2 * r], r, 1);
        mg->addWidget(txtADMax[2 * r + 1], r, 2);
    }
    txtADMax[6] = Box(FrmMeasureDetails, QString(), 70);
    txtADMax[7] = Box(FrmMeasureDetails, QString(), 56);
    txtADMax[6]->hide();
    txtADMax[7]->hide();
    Label37 = new QLabel(QStringLiteral("Max Min Count"), FrmMeasureDetails);
    cmdClearHist = new QPushButton(QStringLiteral("Clear"), FrmMeasureDetails);
    mg->addWidget(Label37, 3, 0, 1, 2);
    mg->addWidget(cmdClearHist, 3, 2);
    // The max/min panel and the dual-mode panels take turns in one place, which keeps room for
    // the larger of the two: choosing a measurement moves nothing else.
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
    underRight->addLayout(details);
    underRight->addStretch(1);

    Frame11 = Group(this, QStringLiteral("Demonstrations"));
    auto* dm = new QHBoxLayout(Frame11);
    cmdProxDemo = new QPushButton(QStringLiteral("Proximity Demo"), Frame11);
    cmdIDemo = new QPushButton(QStringLiteral("Interrupt Demo"), Frame11);
    dm->addWidget(cmdProxDemo);
    dm->addWidget(cmdIDemo);
    underLeft->addWidget(frmProxControl);
    col3->addWidget(Frame11);
    underLeft->addStretch(1);
    col3->addStretch(1);
    right->addLayout(col3, 0, 0);
    right->addLayout(underLeft, 1, 0);
    right->addLayout(underRight, 1, 1);

    // ---- column 4: the strip chart
    frmGraph = Group(this, QStringLiteral("Real Time Graph"));
    auto* gg = new QGridLayout(frmGraph);
    Picture2 = MakeLabelPicture(frmGraph);
    Picture1 = MakeGraphPicture(Picture2);
    PlaceGraph(*Picture2, *Picture1);
    Picture2->SetFitToWidget(true);
    Picture1->setToolTip(QStringLiteral("Real Time Graph Display of Light Level."));
    Picture3 = new QWidget(frmGraph);
    Picture3->setFixedSize(40, 40);
    Picture3->setAutoFillBackground(true);
    Picture3->setToolTip(QStringLiteral("Light level"));
    gg->addWidget(Picture2, 0, 0, 1, 4);
    lblScaleCaption = new QLabel(QStringLiteral("Scale Max    Scale Min"), frmGraph);
    txtScale = Box(frmGraph, QStringLiteral("25000"), 64);
    txtScale->setToolTip(QStringLiteral(
        "Enter a number here followed by the \"Enter\" key to set the Max range toa specific number."));
    txtScaleMin = Box(frmGraph, QStringLiteral("-25000"), 64);
    txtScale2 = Box(frmGraph, QStringLiteral("65535"), 64);
    txtScaleMin2 = Box(frmGraph, QString(), 64);
    cmdAutoScale = new QPushButton(QStringLiteral("Automatic Re-Scale"), frmGraph);
    cmdAutoScale->setToolTip(QStringLiteral(
        "If measurements are executing, click here for an automatic calculation of the Graph Scaling."));
    cmdScale = new QPushButton(QStringLiteral("Manual Re-Scale"), frmGraph);
    cmdScale->setToolTip(
        QStringLiteral("Updates Graph Scaling based on value enter into the \"Scale Max\" entry box."));
    cmdSaveScreen = new QPushButton(QStringLiteral("Save Screen"), frmGraph);
    cmdRestoreScreen = new QPushButton(QStringLiteral("Clear Graph"), frmGraph);
    // Scale boxes and buttons in two rows under the chart.
    auto* scaleRow = new QHBoxLayout;
    scaleRow->addWidget(lblScaleCaption);
    scaleRow->addWidget(txtScale);
    scaleRow->addWidget(txtScaleMin);
    scaleRow->addWidget(txtScale2);
    scaleRow->addWidget(txtScaleMin2);
    scaleRow->addStretch(1);
    scaleRow->addWidget(new QLabel(QStringLiteral("Light"), frmGraph));
    scaleRow->addWidget(Picture3);
    auto* buttonRow = new QHBoxLayout;
    for (QPushButton* b : {cmdScale, cmdAutoScale, cmdSaveScreen, cmdRestoreScreen}) buttonRow->addWidget(b);
    buttonRow->addStretch(1);
    gg->addLayout(scaleRow, 1, 0);
    gg->addLayout(buttonRow, 2, 0);
    gg->setRowStretch(0, 1);
    right->addWidget(frmGraph, 0, 1);
    right->setColumnStretch(1, 1);
    right->setRowStretch(0, 1);

    // Tight frames: on a laptop screen every row counts.
    TightFrames(*this, {frmMode});
    // Controls that come and go while the form is in use keep their room, so that nothing
    // moves under the pointer.
    KeepRoomWhenHidden({FrmProxExternal, Frame9, Frame10, FrmMeasureDetails, fraINT, Frame11, Label36,
                        txtADCRaw, Label6, txtTime1, lblRange, cmdStopData, cmdSaveScreen, cmdRestoreScreen,
                        cmdProx_IR, LblCommTest_});

    // The dual-mode panels show only while that measurement is selected.
    FrmProxExternal->hide();
    Frame9->hide();
    Frame10->hide();
}

void frmLXM410::FitWindow() {
    lxm::FitWindow(*this);
}

void frmLXM410::WireHandlers() {
    auto wireArray = [this](CtlArray<QRadioButton>& arr, void (frmLXM410::*handler)(int)) {
        for (auto& [index, button] : arr) {
            const int i = index;
            connect(button, &QRadioButton::clicked, this, [this, handler, i] { (this->*handler)(i); });
        }
    };
    wireArray(OptMode_, &frmLXM410::OptMode_Click);
    wireArray(OptGain, &frmLXM410::OptGain_Click);
    wireArray(OptITime, &frmLXM410::OptITime_Click);
    wireArray(OptIRMode, &frmLXM410::OptIRMode_Click);
    wireArray(OptMeasMode, &frmLXM410::OptMeasMode_Click);
    wireArray(OptExtTime, &frmLXM410::OptExtTime_Click);
    wireArray(optINTP, &frmLXM410::optINTP_Click);
    wireArray(OptPSrc, &frmLXM410::OptPSrc_Click);
    wireArray(OptMFreq, &frmLXM410::OptMFreq_Click);
    wireArray(OptProxE, &frmLXM410::OptProxE_Click);
    wireArray(OptMeasure, &frmLXM410::OptMeasure_Click);
    for (int i = 0; i < kRegisterRows; ++i) {
        connect(cmdRDReg[i], &QPushButton::clicked, this, [this, i] { cmdRDReg_Click(i); });
        connect(cmdWrtReg[i], &QPushButton::clicked, this, [this, i] { cmdWrtReg_Click(i); });
        connect(txtRegHex_[i], &QLineEdit::returnPressed, this, [this, i] { txtRegHex_KeyPress(i, 13); });
    }
    connect(cmdReadAllRegs, &QPushButton::clicked, this, [this] { cmdReadAllRegs_Click(); });
    connect(txtI2CADR, &QLineEdit::returnPressed, this, [this] { txtI2CADR_KeyPress(13); });
    connect(txtInterval, &QLineEdit::returnPressed, this, [this] { txtInterval_KeyPress(13); });
    connect(ChKLed, &QCheckBox::clicked, this, [this] { ChKLed_Click(); });
    connect(Command4, &QPushButton::clicked, this, [this] { Command4_Click(); });
    connect(cmdProxDemo, &QPushButton::clicked, this, [this] { cmdProxDemo_Click(); });
    connect(cmdIDemo, &QPushButton::clicked, this, [this] { cmdIDemo_Click(); });
    connect(cmdRead_ADC, &QPushButton::clicked, this, [this] { cmdRead_ADC_Click(); });
    connect(cmdProx_IR, &QPushButton::clicked, this, [this] { cmdProx_IR_Click(); });
    connect(cmdCollectData, &QPushButton::clicked, this, [this] { cmdCollectData_Click(); });
    connect(cmdStopData, &QPushButton::clicked, this, [this] { cmdStopData_Click(); });
    connect(cmdClearHist, &QPushButton::clicked, this, [this] { cmdClearHist_Click(); });
    connect(cmdScale, &QPushButton::clicked, this, [this] { cmdScale_Click(); });
    for (QLineEdit* box : {txtScale, txtScaleMin, txtScale2, txtScaleMin2})
        connect(box, &QLineEdit::returnPressed, this, [this] { txtScale_KeyPress(13); });
    connect(cmdAutoScale, &QPushButton::clicked, this, [this] { cmdAutoScale_Click(); });
    connect(cmdSaveScreen, &QPushButton::clicked, this, [this] { cmdSaveScreen_Click(); });
    connect(cmdRestoreScreen, &QPushButton::clicked, this, [this] { cmdRestoreScreen_Click(); });
    connect(mnuScript, &QAction::triggered, this, [this] { mnuScript_Click(); });
    connect(mnuGPIO, &QAction::triggered, this, [this] { mnuGPIO_Click(); });
    // The labels are drawn at the resolution they are shown at, so a new scale draws them anew.
    connect(Picture2, &PictureBox::Rescaled, this, [this] { DrawGraphLabels(); });
}

bool frmLXM410::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == Label13 && type == QEvent::MouseButtonDblClick) {
        Label13_DblClick();
        return true;
    }
    if (type == QEvent::FocusOut) {
        for (int i = 0; i < kRegisterRows; ++i)
            if (watched == txtRegHex_[i]) txtRegHex_LostFocus(i);
        if (watched == txtI2CADR) txtI2CADR_LostFocus();
        if (watched == txtInterval) txtInterval_LostFocus();
    }
    if (type == QEvent::FocusIn) {
        for (auto& [i, b] : OptMeasure)
            if (watched == b) OptMeasure_GotFocus(i);
        if (watched == cmdProx_IR) cmdProx_IR_GotFocus();
    }
    // Events reach here while the controls are still being built.
    if (LstDeviceSel && watched == LstDeviceSel->viewport() && type == QEvent::MouseButtonRelease) {
        // Let the list take the click first, then act on its new selection.
        QWidget::eventFilter(watched, event);
        QMetaObject::invokeMethod(
            this, [this] { LstDeviceSel_MouseUp(); }, Qt::QueuedConnection);
        return false;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace lxm
