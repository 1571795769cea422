#pragma once

#include <QMetaObject>

#include <cstdint>
#include <functional>
#include <vector>

#include "acquisition/Conversion.h"
#include "acquisition/PlotState.h"
#include "acquisition/RunningStats.h"
#include "acquisition/SampleLog.h"
#include "acquisition/SampleStatus.h"

class QLabel;
class QLineEdit;
class QWidget;

namespace lxm {

class AutoRangeBox;
class MaxMinFrame;
class PictureBox;
class ReadingFlag;
class Session;

// What a continuous collection keeps: the sample buffers, the live extremes and the pacing
// marks. Every device form carries one; the buffers keep their contents after a run ends.
struct CollectionState {
    static constexpr int kSampleLast = 1010;

    bool CollectStopRequested = false;
    bool CollectAbort = false;
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
    RunningStats stats;       // of the readings since Start or "Clear"
    int RangeSteps = 0;       // the auto-range's, since Start or "Clear"
    // What the reading of the pass under way is worth; the form's sample sets it.
    SampleStatus PassStatus = SampleStatus::Ok;
    // Pacing, in clock microseconds: the deadline of the next pass, the end of the previous
    // pass (for the measured loop time), and for the pass under way the deadline it was
    // paced against and the moment the pacing let it go.
    std::int64_t DeadlineUs = 0;
    std::int64_t PassStartUs = 0;
    std::int64_t PacedDeadlineUs = 0;
    std::int64_t PassReleasedUs = 0;
    // Whether the form is on screen, as the pass under way found it. A form nobody sees (a
    // collection run without a window) skips its live texts and drawing: at interval 0 they
    // would add several per cent to the transfers' time, the widgets having gone cold in the
    // cache while a transfer waited. What is measured, logged and kept is the same either way.
    bool Displayed = true;
    // Runs at the end of every collection pass while the pass still holds the transport, the
    // way a click arriving during the pass would; tests and benchmarks stop the loop from here.
    std::function<void()> onPass;
};

// The paced collection loop shared by the device forms. It runs inside the Start button's
// handler on the user-interface thread and lets every other control run in its yields; Stop,
// a detached board or a re-scale end it by clearing the session's Collecting flag. The form
// supplies what it measures and shows through the hooks.
class PacedCollection {
public:
    // How often the live boxes follow the run: ten times a second, as a meter's display does.
    // Digits that change faster cannot be read, and each new text costs its box a layout and a
    // paint. The chart still moves every frame, and the values behind the boxes (statistics,
    // extremes, log) take every pass.
    static constexpr int kReadoutMs = 100;

    struct Controls {
        QLineEdit* txtInterval;
        QLineEdit* txtTime1;
        QLabel* lblLoop_Count;
        PictureBox* graph;
        int panelRows;  // register rows the form can show; deferred reads beyond go bare
        MaxMinFrame* maxMin;  // none: the form shows no extremes
        ReadingFlag* flag = nullptr;  // the mark beside the live value
        AutoRangeBox* autoRange = nullptr;  // none: the form has no auto-range
    };
    struct Hooks {
        std::function<void()> start;         // the form's own start steps, before the run begins
        std::function<bool()> singleShot;    // a pass paced by its re-trigger delay instead
        std::function<void(int)> readRow;    // the register panel's read of a deferred row
        std::function<void(int)> writeRow;   // ... and its write
        std::function<void()> afterRefresh;  // after deferred register transfers were served
        // Takes the sample of the pass; false when the run ended inside it and the pass stops.
        std::function<bool()> sample;
        std::function<void()> plotRows;  // the newest point's rows, once per drawn pass
        // The live values of the latest pass into their boxes: at most once a kReadoutMs, and
        // once more when the run ends, so the boxes end on the last pass.
        std::function<void()> showReading;
        std::function<void()> end;          // the form's own end steps
        // "Log every sample": the file to log to (empty: no log), what its header records,
        // and the sample of the pass as it goes to the file.
        std::function<QString()> logPath;
        std::function<SampleLogHeader()> logHeader;
        std::function<LoggedSample()> logSample;
    };

    PacedCollection(Session& session, CollectionState& state, PlotState& plot, Controls controls);
    ~PacedCollection();
    PacedCollection(const PacedCollection&) = delete;
    PacedCollection& operator=(const PacedCollection&) = delete;
    Hooks hooks;
    // Whether a trace step draws the first (red) and the second (blue) trace.
    bool drawTrace1 = true;
    bool drawTrace2 = false;

    // Starts and runs the loop until Collecting turns False; returns only then. Called again
    // from inside a run (a re-scale restarts collection from one of its yields) it asks the
    // running loop to start over once it has ended, rather than nesting a second loop.
    void Run();
    // A setting the log records changed without a register write (the trace a form collects):
    // the log says so before the next row.
    void SettingsChanged() { settingsChanged_ = true; }
    // The log of the run under way (closed between runs).
    const SampleLog& log() const { return log_; }

private:
    void Start();
    void Pass();
    // Waits for the pass's time and, within the same wait, for the rest owed.
    void PaceToDeadline(std::int64_t restUntilUs);
    void Rest(std::int64_t untilUs);
    void RefreshRegisters();
    void DrawStep();
    void DrawOwedTrace();
    void ShowValues();
    void End();
    void OpenLog();
    void NoteSettings();

    Session& s_;
    CollectionState& st_;
    PlotState& plot_;
    Controls c_;
    QWidget* window_ = nullptr;  // the form's window, looked up once per run
    // The interval box as last typed, read when it changes rather than on every pass.
    std::int32_t typedIntervalMs_ = 0;
    QMetaObject::Connection intervalWatch_;
    int depth_ = 0;
    bool restartPending_ = false;
    // The settings the log last recorded changed: registers 0 and 1 as last seen, and the
    // interval box typed since.
    std::uint8_t loggedReg0_ = 0, loggedReg1_ = 0;
    bool settingsChanged_ = false;
    // What the boxes are to show, kept every pass and shown once a kReadoutMs: a box set on
    // every pass lays its text out again each time, although only one pass in several is ever
    // painted.
    std::int64_t loopMs_ = -1;     // none yet this run
    std::int32_t loopCount_ = -1;  // none yet this run
    bool showPending_ = false;
    std::int64_t shownUs_ = 0;
    // The clock until which the next pass rests before it starts (0: none owed).
    std::int64_t restUntilUs_ = 0;
    // One trace on the chart, the same since the run began: its steps scroll the rows on every
    // pass and are drawn once a frame (the first trace, or the second), from the start of the
    // last step.
    bool traceByFrame_ = false;
    bool traceByFrameIsFirst_ = true;
    int shiftedStart_ = kTraceNewest;
    std::int64_t traceDrawnUs_ = 0;
    SampleLog log_;
};

// For the values rewritten on every pass. A transparent box repaints the frame around it with
// each new text, which costs more than the rest of the pass; a label free to change its size
// makes the whole window lay itself out again.
void MakeLiveValue(QWidget* w);
void MakeLiveValue(QLabel* label);

}  // namespace lxm
