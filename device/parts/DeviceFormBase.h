#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "core/ActiveForm.h"

class QLabel;
class QPushButton;

namespace lxm {

struct CollectionState;
struct LoggedSample;
struct SampleLogHeader;
class SampleLog;

class FormMenus;
class InterruptSampler;
class PacedCollection;
class RecordFrame;
class RegisterPanel;
class Session;
class StatusStrip;
class ThresholdPanel;

// What every device form is besides its own controls: the form the transfer layer reports on
// (its lamps, "Fail" label, "Test Comm" and register rows live in the status strip and the
// register panel), a form that becomes the active one when it gets the focus, and one whose
// closing ends a running collection and then the program.
class DeviceFormBase : public QWidget, public ActiveForm {
public:
    ~DeviceFormBase() override;

    Shape* ShpAttach() override;
    Shape* Shp_USB_Transfer() override;
    ColorLabel* LblCommTest() override;
    QRadioButton* OptMode(int index) override;
    QLineEdit* txtRegRd(int reg) override;
    QLineEdit* txtRegHex(int reg) override;
    Shape* ShpIndrd(int reg) override;
    Shape* ShpIndwr(int reg) override;

    void Form_GotFocus();

    // The register panel's buttons and "Read All", and "Test Comm", as other handlers call them.
    void cmdRDReg_Click(int Index);
    void cmdWrtReg_Click(int Index);
    void cmdReadAllRegs_Click();
    void OptMode_Click(int Index);

    // The interrupt thresholds and the board's interrupt line, as the form's parts hold them.
    void cmdWrtILimits_Click();
    void cmdReadILimits_Click();
    // The limits are to be read again at the collection's next register refresh.
    bool LimitsReadPending() const;
    bool IntLineActive() const;
    InterruptSampler& interruptSampler() { return *interrupts_; }

    // The collection as a caller outside the form drives it (a run without a window): Start
    // and Stop as their buttons run them, the loop's state with its pass hook and latest
    // reading, the frame that names the "Log every sample" file, and the log of the run under
    // way (closed between runs).
    virtual void cmdCollectData_Click() = 0;
    virtual void cmdStopData_Click() = 0;
    virtual CollectionState& collection() = 0;
    RecordFrame& dataRecord() const { return *logFrame_; }
    const SampleLog& sampleLog() const;

    // File, View and Help.
    FormMenus* formMenus = nullptr;
    StatusStrip& statusStrip() const { return *strip_; }

    // Called once the form has closed (the program then ends).
    std::function<void()> onClosed;

protected:
    explicit DeviceFormBase(Session& session, QWidget* parent);
    // "Write to Disk": the readings of the last run into the frame's file, with registers 0 and
    // 1 and the interval in the header; Start stays out of reach while the file is written.
    // The collection loop's register refresh: deferred rows through the panel, then the limits
    // when a read of them waits, then the form's own steps with the bus held again.
    void WireRefresh(PacedCollection& loop, std::function<void()> afterward);
    void RecordRun(RecordFrame& frame, const std::int32_t& sampleCount, const std::vector<double>& samples,
                   QLineEdit* interval, QPushButton* collect, QLabel* result);
    // "Log every sample" of the frame for the loop: the header gets the sensor and registers 0
    // and 1 from here, the interval from the loop, the rest (range, unit, mode) from describe.
    void WireLog(PacedCollection& loop, RecordFrame& frame, std::function<void(SampleLogHeader&)> describe,
                 std::function<LoggedSample()> sample);
    // The form's own unload steps, run when it closes.
    virtual void Form_Unload() {}
    // For the form's destructor, before its own members go: a window torn down with the focus
    // in a register entry sends that entry a focus-out, which must not reach the handlers of a
    // form that is no longer whole.
    void ReleasePanelHandlers();

    void changeEvent(QEvent* e) override;
    void closeEvent(QCloseEvent* e) override;
    void showEvent(QShowEvent* e) override;

    Session& s_;
    StatusStrip* strip_ = nullptr;
    RegisterPanel* panel_ = nullptr;
    std::unique_ptr<ThresholdPanel> thresholds_;
    std::unique_ptr<InterruptSampler> interrupts_;

private:
    // What WireLog was given.
    const PacedCollection* logged_ = nullptr;
    RecordFrame* logFrame_ = nullptr;
};

}  // namespace lxm
