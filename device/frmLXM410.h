#pragma once

#include <QString>
#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "acquisition/Conversion.h"
#include "acquisition/PlotState.h"
#include "device/parts/AutoRangeBox.h"
#include "device/parts/Collection.h"
#include "device/parts/Controls.h"
#include "device/parts/DeviceFormBase.h"
#include "device/parts/StripChart.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenuBar;
class QVBoxLayout;
class QAction;
class QPushButton;
class QRadioButton;

namespace lxm {

struct SweepForm;
class CharacteriseMenu;

class Session;
class PictureBox;
class ColorLabel;
class ReadingFlag;
class RegisterPanel;
class Shape;
class frmScriptOps;
class BoardMenu;
class DeviceSelection;
class MaxMinFrame;
class Doco;
class InterruptSampler;
class RecordFrame;
class ThresholdPanel;

// The device form of the four-member sensor family. Its handlers are split by concern:
//   frmLXM410_layout.cpp     building the controls
//   frmLXM410_load.cpp       Form_Load, the view toggle, "Test Comm", small handlers
//   frmLXM410_registers.cpp  the register access panel
//   frmLXM410_config.cpp     the option controls that program registers 0 and 1
//   frmLXM410_measure.cpp    measurement selection, single reads, conversion
//   frmLXM410_collect.cpp    continuous collection
//   frmLXM410_interrupt.cpp  interrupt thresholds, the interrupt line and recording
//   frmLXM410_plot.cpp       the strip chart's buttons and drawing
// The register panel, the status strip, the strip chart, the max/min panel and the collection
// loop are the device-form parts it shares with the multi-function form.
class frmLXM410 : public DeviceFormBase, public CollectionState {
public:
    static constexpr int kRegisterRows = 9;
    static constexpr int kSampleLast = CollectionState::kSampleLast;
    // The names and fields the register panel shows beside its rows.
    static std::vector<RegisterName> RegisterNames();

    explicit frmLXM410(Session& session, QWidget* parent = nullptr);
    ~frmLXM410() override;

    // ---- form lifecycle (frmLXM410_load.cpp)
    void Form_Load();
    void Form_Activate();
    void Form_QueryUnload();
    void Form_Unload() override;
    void Label13_DblClick();
    void Command4_Click();
    void mnuScript_Click();
    void mnuGPIO_Click();
    void SetReadCount();
    void UpdateAdStats();
    void RestartCollection();
    void cmdProxDemo_Click() {}
    void cmdIDemo_Click() {}

    // ---- register access panel (frmLXM410_registers.cpp)
    void txtRegHex_KeyPress(int Index, int KeyAscii);
    void txtRegHex_LostFocus(int Index);
    void txtI2CADR_KeyPress(int KeyAscii);
    void txtI2CADR_LostFocus();
    void LstDeviceSel_MouseUp();

    // ---- configuration controls (frmLXM410_config.cpp)
    void OptGain_Click(int Index);
    void OptITime_Click(int Index);
    void OptIRMode_Click(int Index);
    void OptMeasMode_Click(int Index);
    void OptExtTime_Click(int Index);
    void optINTP_Click(int Index);
    void OptPSrc_Click(int Index);
    void OptMFreq_Click(int Index);
    void OptProxE_Click(int Index);
    void ChKLed_Click();

    // ---- measurement (frmLXM410_measure.cpp)
    void OptMeasure_Click(int Index);
    void OptMeasure_GotFocus(int Index);
    void cmdRead_ADC_Click();
    void cmdProx_IR_Click();
    void cmdProx_IR_GotFocus();
    void cmdProx_IR_LostFocus() {}
    std::int32_t ReadDataRegisters();
    // At the range option rangeIndex; -1: the one selected.
    double ConvertToLux(double counts, int rangeIndex = -1) const;

    // ---- continuous collection (frmLXM410_collect.cpp)
    void cmdCollectData_Click() override;
    void cmdStopData_Click() override;
    CollectionState& collection() override { return *this; }
    void cmdClearHist_Click();
    void txtInterval_KeyPress(int KeyAscii);
    void txtInterval_LostFocus();
    // The strip chart's signed case: proximity readings in the two's-complement scheme.
    bool SignedPlotCase() const { return MeasureProx && ProxScheme == 1; }

    // ---- interrupt thresholds and the interrupt line (frmLXM410_interrupt.cpp)
    void cmdSampleInterrupt_Click();
    void cmdSampleIIIntr_Click();

    // ---- recording (frmLXM410_interrupt.cpp)
    void cmdBrowse_Click();
    void cmdStartRec_Click();
    void mnuDoco_Click();
    Doco* DocoForm() { return doco_; }

    // What a characterisation drives: the form's options and reading (frmLXM410_sweep.cpp).
    SweepForm SweepParts();
    CharacteriseMenu* characterise = nullptr;

    // ---- strip chart (frmLXM410_plot.cpp)
    void cmdScale_Click();
    // Enter in any of the four scale boxes re-scales, as "Manual Re-Scale" does.
    void txtScale_KeyPress(int KeyAscii);
    void cmdAutoScale_Click();
    void cmdSaveScreen_Click();
    void cmdRestoreScreen_Click();
    void DrawGrid();
    void DrawGraphLabels();
    void PreparePlot();  // form-load part of the chart

    RegisterPanel& panel() { return *panel_; }
    StripChart& chart() { return *chart_; }

    // ======== controls ========
    // The status strip's frame frmMode (no caption) and "USB COMM".
    QGroupBox* frmMode = nullptr;
    QLabel* Label13 = nullptr;
    // register access panel (the panel's own controls, by the names the handlers use)
    QGroupBox* frmRegisters = nullptr;
    std::array<QPushButton*, kRegisterRows> cmdRDReg{};
    std::array<QPushButton*, kRegisterRows> cmdWrtReg{};
    QPushButton* cmdReadAllRegs = nullptr;
    QLineEdit* txtI2CADR = nullptr;
    Shape* ShpIntFlag = nullptr;  // register 0 bit 2, the sensor's interrupt flag
    // FrmDevice "Device Selection"
    DeviceSelection* FrmDevice = nullptr;
    QLineEdit* txtI2cXmitAdr = nullptr;
    QLineEdit* txtI2CAddr = nullptr;
    QListWidget* LstDeviceSel = nullptr;
    QLabel* Label20 = nullptr;
    QLabel* Label10 = nullptr;
    // frGain "AD Sensitivity - Range Select"
    QGroupBox* frGain = nullptr;
    CtlArray<QRadioButton> OptGain;
    QCheckBox* chkAutoRange = nullptr;
    // frItime "AD Resolution / Integration Time"
    QGroupBox* frItime = nullptr;
    CtlArray<QRadioButton> OptITime;
    QLineEdit* txtInterval = nullptr;
    QLabel* Label25 = nullptr;
    QLabel* Label4 = nullptr;
    // FraScheme "Measurement Type"
    QGroupBox* FraScheme = nullptr;
    CtlArray<QRadioButton> OptIRMode;
    // Frame4 "Measurement", Frame5 "Timing"
    QGroupBox* Frame4 = nullptr;
    CtlArray<QRadioButton> OptMeasMode;
    QGroupBox* Frame5 = nullptr;
    CtlArray<QRadioButton> OptExtTime;
    // frmProxControl "Proximity Options"
    QGroupBox* frmProxControl = nullptr;
    QGroupBox* Frame7 = nullptr;
    CtlArray<QRadioButton> OptMFreq;
    QGroupBox* Frame6 = nullptr;
    CtlArray<QRadioButton> OptPSrc;
    // FrmProxExternal "Prox External Options"
    QGroupBox* FrmProxExternal = nullptr;
    CtlArray<QRadioButton> OptProxE;
    QLineEdit* txtPLoopDelay = nullptr;
    QLabel* Label3 = nullptr;
    CtlArray<QLabel> lblIR1;
    // frmMeasure "Operation"
    QGroupBox* frmMeasure = nullptr;
    CtlArray<QRadioButton> OptMeasure;
    // fraINT "Interrupt Persistance"
    QGroupBox* fraINT = nullptr;
    CtlArray<QRadioButton> optINTP;
    CtlArray<QLineEdit> txtIHigh;
    CtlArray<QLineEdit> txtILow;
    CtlArray<QLabel> lblIlimitsformat;
    CtlArray<QLabel> Label38;
    QLabel* Label39 = nullptr;  // "Interrupt Limits Dec     Hex"
    QPushButton* cmdWrtILimits = nullptr;
    QPushButton* cmdReadILimits = nullptr;
    QPushButton* cmdSampleInterrupt = nullptr;
    QPushButton* cmdSampleIIIntr = nullptr;
    Shape* ShpINTexternal = nullptr;  // the board's interrupt line
    Shape* ShpINt = nullptr;          // flips on every sample of the line
    // Frame3 "Measurement Loop Timing"
    QGroupBox* Frame3 = nullptr;
    QLabel* Label9 = nullptr;
    QLineEdit* txtSampling_Delay = nullptr;
    // readings
    QGroupBox* frmCollect = nullptr;  // live value and the collection buttons
    QGroupBox* Frame2 = nullptr;      // single reads
    QLabel* Label16 = nullptr;
    QLineEdit* txtReading = nullptr;
    QLabel* Label36 = nullptr;
    QLineEdit* txtADCRaw = nullptr;
    QPushButton* cmdRead_ADC = nullptr;
    QPushButton* cmdProx_IR = nullptr;
    QLabel* Label6 = nullptr;
    QLineEdit* txtTime1 = nullptr;
    QLabel* lblLoop_Count = nullptr;
    QLabel* Label18 = nullptr;
    QPushButton* cmdCollectData = nullptr;
    QPushButton* cmdStopData = nullptr;
    QCheckBox* ChkSampleInt = nullptr;
    QLabel* lblRange = nullptr;
    // dual-mode results
    QGroupBox* Frame9 = nullptr;
    QGroupBox* Frame10 = nullptr;
    CtlArray<QLineEdit> txtProx_IR;
    CtlArray<Shape> ShpOVRange;
    // FrmMeasureDetails: maximum/minimum panel
    MaxMinFrame* FrmMeasureDetails = nullptr;
    CtlArray<QLineEdit> txtADMax;
    QPushButton* cmdClearHist = nullptr;
    // proximity demo, device variant, recording
    QGroupBox* Frame11 = nullptr;
    QPushButton* cmdProxDemo = nullptr;
    QPushButton* cmdIDemo = nullptr;
    QGroupBox* Frame12 = nullptr;
    CtlArray<QRadioButton> OptVariant;
    RecordFrame* frmDataRecord = nullptr;  // "Save Measurements to File"
    QLineEdit* txtFilePath = nullptr;      // the frame's own controls, by their names
    QPushButton* cmdBrowse = nullptr;
    QCheckBox* chkAppend = nullptr;
    QPushButton* cmdStartRec = nullptr;
    // the form's own
    QCheckBox* ChKLed = nullptr;
    QPushButton* Command4 = nullptr;
    QMenuBar* menuBar = nullptr;
    QAction* mnuScript = nullptr;
    QAction* mnuGPIO = nullptr;
    QAction* mnuDoco = nullptr;
    // Init Table, Open USB, Close USB and Reconnect.
    BoardMenu* boardMenu = nullptr;

    // ======== state owned by the form while it is open ========
    // conversion state
    std::array<std::int32_t, 4> RangeTable = kFamilyRangesLux;
    int RangeIndex = 0;
    int GainIndex = 0;
    int RangeKLux = 1;
    int AdcBits = 12;
    std::int32_t FullScaleCounts = 4095;
    std::int32_t AdcHalfScale = 8;
    std::int32_t AdcCountMax = 4095;
    bool SinglePolarity = true;
    std::int32_t IntLimitMax = 4095;
    std::int32_t IntLimitMin = 0;
    int ProxScheme = 0;
    bool ExternalTiming = false;
    int DriveIndex = 0;
    bool AdcModeSelected = true;
    bool MeasModeAdc = false;
    bool MeasModeTimer = false;
    double SampleDelayMs = 100;
    std::int32_t RangeScaleDivisor = 500000;
    bool CompactView = false;
    bool CmdBelow50 = false;
    // Device variant ("A" or "B") the proximity set-up reads.
    QString DeviceVariant = QStringLiteral("B");
    std::array<QString, 11> TimeLabels;
    // numbers kept by UpdateAdStats
    std::int32_t AdStatMax = 0;
    std::int32_t AdStatMin = 0;

    // measurement state
    int MeasureIndex = 0;
    bool MeasureSingleShot = true;
    bool ShowLux = false;
    bool MeasureProx = false;
    bool MeasureProxIrDual = false;
    bool DualHold = false;
    bool MeasureClicked = false;
    double IntervalDisplayMs = 0;
    double LoopDelayMs = 0;
    std::int16_t LastNegative = 1;
    std::int32_t SignThreshold = 2048;
    std::int16_t SignMax = 2047;
    std::uint8_t ProxMsb = 0, ProxLsb = 0, IrMsb = 0, IrLsb = 0;
    std::int32_t IrBefore = 0, IrAfter = 0, AmbientIr = 0;
    std::int32_t ProxCount = 0, ProxCountSigned = 0, ProxMinusIr = 0;
    SampleStatus DualStatus = SampleStatus::Ok;  // what the last dual-mode sequence's reading is worth
    std::uint8_t LastLow = 0, LastHigh = 0;  // data bytes of the last reply
    std::int32_t PassCount = 0;              // the count the last pass read, as it is logged
    bool PassCountUnshown = false;           // ... and not yet in its box
    // When the chip last started converting anew (a write of register 0 or 1), for telling a
    // continuous read that came before its first conversion could end.
    std::int64_t ConversionStartUs = 0;
    ReadingFlag* lblReadingFlag = nullptr;  // beside txtReading

    // collection state beyond the shared one
    bool InterruptHold = false;

    // plot state
    PlotState plot;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildLayout();
    void BuildConfigColumn(QVBoxLayout* col);
    void BuildMeasureColumn(QVBoxLayout* col);
    void WireHandlers();
    // The shared parts the form is composed of, given the form's values.
    void BuildParts();
    void ApplyPartHiding();
    // The view's own size, as far as the screen has room, and wholly on the screen.
    void FitWindow();
    // Shows a register byte of the image in its entry box.
    void ShowRegister(int reg);
    // Collection hooks (frmLXM410_collect.cpp).
    void WireCollection();
    void StartCollection();
    bool SamplePass();
    void EndCollection();
    LoggedSample LoggedPass() const;
    // What the count of the pass is worth, from the reply and the timing of the read.
    SampleStatus CountStatus(std::int32_t value) const;

    frmScriptOps* script_ = nullptr;
    StripChart* chart_ = nullptr;
    // Under the chart: the single reads and the panels that change with the measurement.
    QVBoxLayout* under_ = nullptr;
    std::unique_ptr<PacedCollection> loop_;
    std::unique_ptr<AutoRangeBox> autoRange_;
    Doco* doco_ = nullptr;
};

}  // namespace lxm
