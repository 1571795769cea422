#pragma once

#include <QString>
#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "acquisition/Conversion.h"
#include "acquisition/PlotState.h"
#include "core/ActiveForm.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenuBar;
class QAction;
class QPushButton;
class QRadioButton;

namespace lxm {

class Session;
class PictureBox;
class ColorLabel;
class Shape;
class frmScriptOps;
class BoardMenu;

// A control array: the index is the one the handlers receive; arrays may have gaps.
template <class T>
using CtlArray = std::map<int, T*>;

// The device form of the four-member sensor family. Its handlers are split by concern:
//   frmLXM410_layout.cpp     building the controls
//   frmLXM410_load.cpp       Form_Load, the view toggle, "Test Comm", small handlers
//   frmLXM410_registers.cpp  the register access panel
//   frmLXM410_config.cpp     the option controls that program registers 0 and 1
//   frmLXM410_measure.cpp    measurement selection, single reads, conversion
//   frmLXM410_collect.cpp    continuous collection
//   frmLXM410_plot.cpp       the strip chart's buttons and drawing
class frmLXM410 : public QWidget, public ActiveForm {
public:
    static constexpr int kRegisterRows = 9;
    static constexpr int kSampleLast = 1010;

    explicit frmLXM410(Session& session, QWidget* parent = nullptr);
    ~frmLXM410() override;

    // ---- ActiveForm
    Shape* ShpAttach() override { return ShpAttach_; }
    Shape* Shp_USB_Transfer() override { return Shp_USB_Transfer_; }
    ColorLabel* LblCommTest() override { return LblCommTest_; }
    QRadioButton* OptMode(int index) override;
    QLineEdit* txtRegRd(int reg) override;
    QLineEdit* txtRegHex(int reg) override;
    Shape* ShpIndrd(int reg) override;
    Shape* ShpIndwr(int reg) override;

    // ---- form lifecycle (frmLXM410_load.cpp)
    void Form_Load();
    void Form_Activate();
    void Form_GotFocus();
    void Form_QueryUnload();
    void Form_Unload();
    void Label13_DblClick();
    void OptMode_Click(int Index);  // "Test Comm"
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
    void cmdRDReg_Click(int Index);
    void cmdWrtReg_Click(int Index);
    void cmdReadAllRegs_Click();
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
    double ConvertToLux(double counts) const;

    // ---- continuous collection (frmLXM410_collect.cpp)
    void cmdCollectData_Click();
    void cmdStopData_Click();
    void cmdClearHist_Click();
    void txtInterval_KeyPress(int KeyAscii);
    void txtInterval_LostFocus();
    // Placeholders for the interrupt-threshold controls the loop calls.
    void cmdReadILimits_Click() {}
    void cmdSampleInterrupt_Click() {}
    // Runs at the end of every collection pass while the pass still holds the transport, the
    // way a click arriving during the pass would; tests and benchmarks stop the loop from here.
    std::function<void()> onPass;
    // The strip chart's signed case: proximity readings in the two's-complement scheme.
    bool SignedPlotCase() const { return MeasureProx && ProxScheme == 1; }

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

    // Called once the form has closed (the program then ends).
    std::function<void()> onClosed;

    // ======== controls ========
    // frame frmMode (no caption)
    QGroupBox* frmMode = nullptr;
    CtlArray<QRadioButton> OptMode_;
    ColorLabel* LblCommTest_ = nullptr;
    // register access panel
    QGroupBox* frmRegisters = nullptr;
    std::array<QLineEdit*, kRegisterRows> txtRegHex_{};
    std::array<QLineEdit*, kRegisterRows> txtRegRd_{};
    std::array<QPushButton*, kRegisterRows> cmdRDReg{};
    std::array<QPushButton*, kRegisterRows> cmdWrtReg{};
    std::array<Shape*, kRegisterRows> ShpIndrd_{};
    std::array<Shape*, kRegisterRows> ShpIndwr_{};
    QPushButton* cmdReadAllRegs = nullptr;
    QLineEdit* txtI2CADR = nullptr;
    Shape* ShpIntFlag = nullptr;  // register 0 bit 2, the sensor's interrupt flag
    // FrmDevice "Device Selection"
    QGroupBox* FrmDevice = nullptr;
    QLineEdit* txtI2cXmitAdr = nullptr;
    QLineEdit* txtI2CAddr = nullptr;
    QListWidget* LstDeviceSel = nullptr;
    QLabel* Label20 = nullptr;
    QLabel* Label10 = nullptr;
    // frGain "AD Sensitivity - Range Select"
    QGroupBox* frGain = nullptr;
    CtlArray<QRadioButton> OptGain;
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
    QGroupBox* FrmMeasureDetails = nullptr;
    CtlArray<QLineEdit> txtADMax;
    QLabel* Label37 = nullptr;
    QPushButton* cmdClearHist = nullptr;
    // proximity demo, device variant, recording
    QGroupBox* Frame11 = nullptr;
    QPushButton* cmdProxDemo = nullptr;
    QPushButton* cmdIDemo = nullptr;
    QGroupBox* Frame12 = nullptr;
    CtlArray<QRadioButton> OptVariant;
    QGroupBox* frmDataRecord = nullptr;
    QLineEdit* txtFilePath = nullptr;
    // the strip chart
    QGroupBox* frmGraph = nullptr;
    PictureBox* Picture1 = nullptr;
    PictureBox* Picture2 = nullptr;
    QWidget* Picture3 = nullptr;  // light swatch
    QLineEdit* txtScale = nullptr;
    QLineEdit* txtScaleMin = nullptr;
    QLineEdit* txtScale2 = nullptr;
    QLineEdit* txtScaleMin2 = nullptr;
    QLabel* lblScaleCaption = nullptr;
    QPushButton* cmdAutoScale = nullptr;
    QPushButton* cmdScale = nullptr;
    QPushButton* cmdSaveScreen = nullptr;
    QPushButton* cmdRestoreScreen = nullptr;
    // the form's own
    QCheckBox* ChKLed = nullptr;
    QPushButton* Command4 = nullptr;
    QLabel* Label13 = nullptr;
    Shape* ShpAttach_ = nullptr;
    Shape* Shp_USB_Transfer_ = nullptr;
    Shape* ShpStatus = nullptr;
    QMenuBar* menuBar = nullptr;
    QAction* mnuScript = nullptr;
    QAction* mnuGPIO = nullptr;
    // Init Table, Open USB, Close USB and Reconnect.
    BoardMenu* boardMenu = nullptr;

    // ======== state owned by the form while it is open ========
    // conversion state
    std::array<std::int32_t, 4> RangeTable{1000, 4000, 16000, 64000};
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
    std::uint8_t LastLow = 0, LastHigh = 0;  // data bytes of the last reply

    // collection state
    bool CollectStopRequested = false;
    bool CollectAbort = false;
    bool InterruptHold = false;
    bool LimitsReadPending = false;
    std::int32_t IntervalMs = 8;
    std::vector<double> SampleValues = std::vector<double>(kSampleLast + 1, 1.0);
    std::vector<double> SampleValues2 = std::vector<double>(kSampleLast + 1, 1.0);
    std::int32_t SampleCount = 0;
    double LatestReading = 0;
    double PeakSample = -999999.0;
    std::int32_t CountMax = -9999999;
    std::int32_t CountMin = 9999999;
    int MaxMinCounter = 0;
    MaxMinPanel maxMinPanel;  // CountMax, CountMin and MaxMinCounter mirror it
    // Pacing, in clock microseconds: the deadline of the next pass, the end of the previous
    // pass (for the measured loop time), and for the pass under way the deadline it was
    // paced against and the moment the pacing let it go.
    std::int64_t DeadlineUs = 0;
    std::int64_t PassStartUs = 0;
    std::int64_t PacedDeadlineUs = 0;
    std::int64_t PassReleasedUs = 0;

    // plot state
    PlotState plot;

protected:
    void changeEvent(QEvent* e) override;
    void closeEvent(QCloseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildLayout();
    void WireHandlers();
    void ApplyPartHiding();
    // The view's own size, as far as the screen has room, and wholly on the screen.
    void FitWindow();
    // Shows a register byte of the image in its entry box.
    void ShowRegister(int reg);
    // Read the light colour into the swatch (-1 means the "True" colour of the original).
    void SetSwatch(int red);
    // Collection (frmLXM410_collect.cpp).
    void StartCollection();
    void CollectionPass();
    void PaceToDeadline();
    void EndCollection();
    void ShowMaxMin();

    Session& s_;
    frmScriptOps* script_ = nullptr;
    // Collection: loops on the stack, a restart asked for from inside one, the swatch level.
    int collectDepth_ = 0;
    bool restartPending_ = false;
    int swatchRed_ = -2;
};

}  // namespace lxm
