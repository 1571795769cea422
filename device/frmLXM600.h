#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "acquisition/PlotState.h"
#include "device/parts/AutoRangeBox.h"
#include "device/parts/Collection.h"
#include "device/parts/Controls.h"
#include "device/parts/DeviceFormBase.h"

class QCheckBox;
class QHBoxLayout;
class QAction;
class QLabel;
class QMenuBar;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTimer;

namespace lxm {

struct SweepForm;
class CharacteriseMenu;

class BoardMenu;
class ReadingFlag;
class DeviceSelection;
class InterruptSampler;
class MaxMinFrame;
class RecordFrame;
class StripChart;
class ThresholdPanel;

// The device form of the multi-function ALS/IR and proximity sensor: sixteen registers, its
// own bit fields, a single read of the three data registers and a collection that keeps a
// proximity and an ALS/IR trace. Composed of the device-form parts; its files:
//   frmLXM600_layout.cpp   building the controls
//   frmLXM600.cpp          Form_Load, the view toggle, the register panel and register controls
//   frmLXM600_collect.cpp  the single read and the collection
//   frmLXM600_interrupt.cpp  thresholds, interrupt flags and line, polling, recording
class frmLXM600 : public DeviceFormBase {
public:
    static constexpr int kRegisterRows = 16;
    // The names and fields the register panel shows beside its rows.
    static std::vector<RegisterName> RegisterNames();

    explicit frmLXM600(Session& session, QWidget* parent = nullptr);
    ~frmLXM600() override;

    // ---- lifecycle and panel (frmLXM600.cpp)
    void Form_Load();
    void Label13_DblClick();
    void txtRegHex_KeyPress(int Index, int KeyAscii);
    void txtRegHex_LostFocus(int Index);
    void cmdReadID_Click();
    void cmdUpdateReg_Click(int Index);
    void cmdUpdateRead_Click(int Index);
    void ChKLed_Click(int Index);
    // The register controls: one handler each, the field given as data.
    void OptMMode_Click(int Index);
    void OptALSRange_Click(int Index);
    void chkALSEnable_Click();
    void OptProxDr_Click(int Index);
    void OptIRSleep_Click(int Index);
    void ChkPEnable_Click();
    void OptEPIN_Click(int Index);
    void optINTPALS_Click(int Index);
    void optINTP_Click(int Index);

    // ---- reads and collection (frmLXM600_collect.cpp)
    void cmdReadAd_Click();
    void cmdCollectData_Click() override;
    void cmdStopData_Click() override;
    void cmdAbort_Click();
    void cmdClearHist_Click();
    void OptGraph_Click(int Index);
    void cmdScale_Click();
    void cmdAutoScale_Click();
    void cmdRestoreScreen_Click();
    void cmdDrawTrace_Click();
    // At the range option rangeIndex; -1: the one the form converts at, whatever the chip's.
    double ConvertToLux(double counts, int rangeIndex = -1) const;

    // ---- interrupts and recording (frmLXM600_interrupt.cpp)
    void cmdSampleInternalIntrs_Click();
    void cmdALSClear_Click();
    void cmdPIClear_Click();
    void cmdISamples_Click();
    void chkPoll_Click();
    void TimerIPol_Timer();
    void cmdStartRec_Click();
    int polls() const { return polls_; }
    static constexpr int kPollMs = 250;

    // What a characterisation drives: the form's options and reading (frmLXM600_sweep.cpp).
    SweepForm SweepParts();
    CharacteriseMenu* characterise = nullptr;

    RegisterPanel& panel() { return *panel_; }
    StatusStrip& strip() { return *strip_; }
    StripChart& chart() { return *chart_; }
    CollectionState& collection() override { return run_; }
    PlotState& plot() { return plot_; }

    // ======== controls ========
    QMenuBar* menuBar = nullptr;
    // Init Table, Open USB, Close USB and Reconnect.
    BoardMenu* boardMenu = nullptr;
    QAction* mnuGPIO = nullptr;
    CtlArray<QCheckBox> ChKLed;  // 0 "Test Red LED", 1 "Test ORN LED"
    QLabel* lblUSBStatis = nullptr;
    QPushButton* Command4 = nullptr;
    QPushButton* cmdReadID = nullptr;
    QLabel* lblID = nullptr;
    // FrameReg2User: the bit editor; its buttons serve the register chosen beside them.
    QGroupBox* FrameReg2User = nullptr;
    CtlArray<QCheckBox> ChkReg1Bit;  // 0 is bit 7, 7 is bit 0
    QSpinBox* spnBitReg = nullptr;
    QPushButton* cmdUpdateReg = nullptr;
    QPushButton* cmdUpdateRead = nullptr;
    QLabel* lblRegDatax = nullptr;
    DeviceSelection* FrmDevice = nullptr;
    // register controls
    QGroupBox* frmALS = nullptr;
    CtlArray<QRadioButton> OptMMode;
    CtlArray<QRadioButton> OptALSRange;
    QCheckBox* chkAutoRange = nullptr;
    QCheckBox* chkALSEnable = nullptr;
    QGroupBox* frmProx = nullptr;
    CtlArray<QRadioButton> OptProxDr;
    CtlArray<QRadioButton> OptIRSleep;
    QCheckBox* ChkPEnable = nullptr;
    QGroupBox* frmIntConfig = nullptr;
    CtlArray<QRadioButton> OptEPIN;
    CtlArray<QRadioButton> optINTPALS;
    CtlArray<QRadioButton> optINTP;
    Shape* ShpALSFlag = nullptr;   // register 2 bit 3
    Shape* ShpProxFlag = nullptr;  // register 2 bit 7
    // fraINT: the interrupt limits, 0 the ALS/IR window and 2 the proximity one
    QGroupBox* fraINT = nullptr;
    CtlArray<QLabel> lblIlimitsformat;  // 0..3 ALS/IR, 4..7 proximity
    CtlArray<QLineEdit> txtILow;
    CtlArray<QLineEdit> txtIHigh;
    QPushButton* cmdWrtILimits = nullptr;
    QPushButton* cmdReadILimits = nullptr;
    QPushButton* cmdALSClear = nullptr;
    QPushButton* cmdPIClear = nullptr;
    QPushButton* cmdSampleInternalIntrs = nullptr;
    QPushButton* cmdISamples = nullptr;
    Shape* ShpINTexternal = nullptr;  // the board's interrupt line
    Shape* ShpINt = nullptr;          // flips on every sample of the line
    QCheckBox* chkPoll = nullptr;     // runs TimerIPol
    QTimer* TimerIPol = nullptr;
    // single read
    QGroupBox* Frame2 = nullptr;
    QPushButton* cmdReadAd = nullptr;
    CtlArray<QLabel> lblMeasurements;  // 1 proximity, 2 ALS/IR
    // time base and collection
    QGroupBox* frmTimeBase = nullptr;
    QLabel* Label3 = nullptr;
    QLineEdit* txtInterval = nullptr;
    QGroupBox* frmCollect = nullptr;
    QLabel* Label16 = nullptr;
    QLineEdit* txtReading = nullptr;
    ReadingFlag* lblReadingFlag = nullptr;  // beside txtReading
    QLabel* Label17 = nullptr;
    QLineEdit* txtReading2 = nullptr;
    QLineEdit* txtReading3 = nullptr;
    QLineEdit* txtADCRaw = nullptr;
    QLabel* Label6 = nullptr;
    QLineEdit* txtTime1 = nullptr;
    QLabel* lblLoop_Count = nullptr;
    QLabel* Label18 = nullptr;
    QPushButton* cmdCollectData = nullptr;
    QPushButton* cmdCollect = nullptr;
    QPushButton* cmdStopData = nullptr;
    QPushButton* cmdAbort = nullptr;
    QGroupBox* frmGraphSel = nullptr;
    CtlArray<QRadioButton> OptGraph;  // 0 "Proximity", 1 "ALS/IR"
    MaxMinFrame* FrmMeasureDetails = nullptr;
    RecordFrame* frmDataRecord = nullptr;  // "Save Measurements to File"

    // ======== state ========
    std::array<std::int32_t, 2> RangeTable = kLxm600RangesLux;
    int RangeIndex = 0;
    int AdcBits = 12;
    std::int32_t FullScaleCounts = 4095;
    std::int32_t AdcHalfScale = 8;
    std::int32_t AdcCountMax = 4095;
    bool SinglePolarity = true;
    int ProxScheme = 0;
    bool ShowLux = false;
    std::int32_t RangeScaleDivisor = 500000;
    bool CompactView = false;
    std::array<QString, 11> TimeLabels;
    std::int32_t ProxCount600 = 0;
    std::int32_t AlsIrCount600 = 0;
    // Which trace is drawn: OptGraph swaps them between 255 and 0.
    std::uint8_t TraceEnable1 = 255;
    std::uint8_t TraceEnable2 = 0;
    // The proximity result is an 8-bit count.
    static constexpr int kProxBits = 8;

private:
    void BuildLayout();
    void BuildLimits();
    void BuildCollection(QHBoxLayout* under);
    void BuildParts();
    void WireHandlers();
    void ClearFlag(std::uint8_t flag);
    // Clear the field, set the control's value, show the register and write it.
    void ApplyField(const BitField& field, int index, bool selected);
    void ApplyOption(const BitField& field, const CtlArray<QRadioButton>& arr, int index);
    // Collection hooks.
    void StartRun();
    bool SamplePass();
    void PlotRows();
    void ShowReading();
    void EndRun();
    bool AlsSample() const;

    StripChart* chart_ = nullptr;
    PlotState plot_;
    CollectionState run_;
    std::unique_ptr<PacedCollection> loop_;
    std::unique_ptr<AutoRangeBox> autoRange_;
    int polls_ = 0;
    // A read asked for while the bus was taken, waiting for it (one each at most).
    bool readAdWaiting_ = false;
    bool pollWaiting_ = false;
    std::uint8_t lastLow_ = 0, lastHigh_ = 0;
    // The counts of the latest pass for the boxes, shown once a display frame.
    struct PassCounts {
        std::int32_t raw, prox, alsIr;
    };
    std::optional<PassCounts> unshown_;
};

}  // namespace lxm
