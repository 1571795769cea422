#include "device/parts/Collection.h"

#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <utility>

#include "acquisition/ModWaveform_ALS.h"
#include "acquisition/PictureBox.h"
#include "acquisition/SensorFields.h"
#include "core/PanelCacheStyle.h"
#include "core/ServedWait.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/parts/AutoRangeBox.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/PaintPacer.h"
#include "device/parts/ReadingFlag.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

constexpr std::int64_t kMs = 1000;
constexpr std::int64_t kReadoutUs = PacedCollection::kReadoutMs * kMs;
constexpr std::int64_t kFrameUs = PaintPacer::kFrameMs * kMs;
const QColor kTrace1Colour(255, 0, 0), kTrace2Colour(0, 0, 255);

void SetTextIfChanged(QLineEdit* box, const QString& text) {
    if (box->text() != text) box->setText(text);
}

}  // namespace

void MakeLiveValue(QWidget* w) {
    w->setBackgroundRole(QPalette::Window);
    w->setAutoFillBackground(true);
    // Digits and points look the same without the text shaper, which is most of the cost of
    // setting a text. Only that is set: the rest of the font still follows the window's.
    QFont font;
    font.setStyleStrategy(QFont::PreferNoShaping);
    w->setFont(font);
    if (qobject_cast<QLineEdit*>(w)) UsePanelCache(w);
}

void MakeLiveValue(QLabel* label) {
    MakeLiveValue(static_cast<QWidget*>(label));
    // A number is never markup; a label left to guess looks at every new text to decide.
    label->setTextFormat(Qt::PlainText);
    const QFontMetrics m(label->font());
    label->setFixedSize(m.horizontalAdvance(QStringLiteral("-000000")) + 4, m.height() + 2);
}

PacedCollection::PacedCollection(Session& session, CollectionState& state, PlotState& plot, Controls controls)
    : s_(session),
      st_(state),
      plot_(plot),
      c_(controls),
      log_(session.clock, [this](const QString& path, const QString& reason) {
          s_.messages.MsgBox(SampleLogErrorMessage(path, reason));
      }) {
    typedIntervalMs_ = WaitMsOf(c_.txtInterval->text());
    // An interval typed during a run takes effect at the next pass.
    intervalWatch_ = QObject::connect(c_.txtInterval, &QLineEdit::textChanged, c_.txtInterval,
                                      [this](const QString& text) {
                                          typedIntervalMs_ = WaitMsOf(text);
                                          settingsChanged_ = true;
                                      });
}

PacedCollection::~PacedCollection() {
    QObject::disconnect(intervalWatch_);
}

void PacedCollection::Run() {
    if (depth_ > 0) {
        if (!s_.Collecting) restartPending_ = true;
        return;
    }
    // Without a board there is nothing to collect: say so once and leave the form as it was.
    if (!s_.UsbConnected) {
        s_.comm().NotConnected();
        return;
    }
    if (s_.comm().RefuseUnopenedBoard()) return;
    ++depth_;
    do {
        restartPending_ = false;
        Start();
        while (s_.Collecting) Pass();
        End();
    } while (restartPending_);
    --depth_;
}

void PacedCollection::Start() {
    // The system timer already ticks in milliseconds here; nothing to request.
    typedIntervalMs_ = WaitMsOf(c_.txtInterval->text());
    st_.IntervalMs = typedIntervalMs_;
    st_.PeakSample = -999999.0;
    if (hooks.start) hooks.start();
    st_.CollectAbort = false;
    st_.CollectStopRequested = false;

    std::fill(plot_.TracePixels.begin(), plot_.TracePixels.begin() + kTraceNewest + 1, 1);
    std::fill(plot_.TracePixels2.begin(), plot_.TracePixels2.begin() + kTraceNewest + 1, 1);
    plot_.TraceMarks.fill(0);
    st_.RangeSteps = 0;
    if (c_.autoRange) c_.autoRange->Start();
    ModWaveform_ALS::RestoreGraphBackground(*c_.graph, plot_);
    plot_.TraceStart = kTraceNewest;
    traceByFrame_ = drawTrace1 != drawTrace2;
    traceByFrameIsFirst_ = drawTrace1;
    traceDrawnUs_ = 0;
    c_.graph->owedDrawing = [this] { DrawOwedTrace(); };
    st_.SampleCount = 0;
    std::fill(st_.SampleValues.begin(), st_.SampleValues.end(), 1.0);
    std::fill(st_.SampleValues2.begin(), st_.SampleValues2.end(), 1.0);
    st_.maxMinPanel.Reset();
    st_.stats.Reset();
    st_.CountMax = st_.maxMinPanel.countMax();
    st_.CountMin = st_.maxMinPanel.countMin();
    st_.MaxMinCounter = 0;

    // The board may have gone during the form's start; a run without it would only collect zeros.
    s_.Collecting = s_.UsbConnected;
    window_ = c_.graph->window();
    c_.txtTime1->show();
    loopMs_ = loopCount_ = -1;
    showPending_ = false;
    restUntilUs_ = 0;
    // The first pass shows at once.
    shownUs_ = s_.clock.Micros() - kReadoutUs;
    st_.PassStartUs = s_.clock.Micros();
    st_.DeadlineUs = st_.PassStartUs + std::int64_t(st_.IntervalMs) * kMs;
    if (!s_.SessionOpen) s_.usb().OpenDevice();
    // A re-scale's restart goes on in the same file; replacing it would lose the run so far.
    if (s_.Collecting && !log_.IsOpen()) OpenLog();
}

// A log that cannot be opened has said why; the collection runs without it.
void PacedCollection::OpenLog() {
    if (!hooks.logPath) return;
    const QString path = hooks.logPath();
    if (path.isEmpty()) return;
    SampleLogHeader header = hooks.logHeader();
    header.intervalMs = st_.IntervalMs;
    loggedReg0_ = s_.RegWriteMirror[0];
    loggedReg1_ = s_.RegWriteMirror[1];
    settingsChanged_ = false;
    log_.Open(path, header);
}

// Range, resolution and measurement live in registers 0 and 1: comparing two bytes a pass
// finds every change, however it was made, for the cost of nothing.
void PacedCollection::NoteSettings() {
    if (!settingsChanged_ && s_.RegWriteMirror[0] == loggedReg0_ && s_.RegWriteMirror[1] == loggedReg1_)
        return;
    settingsChanged_ = false;
    loggedReg0_ = s_.RegWriteMirror[0];
    loggedReg1_ = s_.RegWriteMirror[1];
    SampleLogHeader header = hooks.logHeader();
    header.intervalMs = st_.IntervalMs;
    log_.NoteSettings(header);
}

// The margins are those of a millisecond timer; the deadline is kept in microseconds and the
// sleep is as fine as the clock allows, so that a pass starts where the margins put it and not
// up to a millisecond later. A long interval is waited in served slices, so Stop ends it early.
void PacedCollection::PaceToDeadline(std::int64_t restUntilUs) {
    st_.PacedDeadlineUs = st_.DeadlineUs;
    if (const auto until = PaceSleepUntil(s_.clock.Micros(), st_.DeadlineUs))
        ServedWait(s_, s_.clock, std::max(*until, restUntilUs), [this] {
            // A long interval still gets its rows to the disk within the second.
            if (log_.IsOpen()) log_.FlushIfDue();
            return s_.Collecting;
        });
    else
        Rest(restUntilUs);
    st_.PassReleasedUs = s_.clock.Micros();
}

void PacedCollection::Rest(std::int64_t untilUs) {
    const std::int64_t left = untilUs - s_.clock.Micros();
    if (left > 0) s_.clock.SleepMicros(left);
}

// Registers the user changed or asked for while the loop held the transport.
void PacedCollection::RefreshRegisters() {
    s_.TransferBusy = false;
    for (int n = 15; n >= 0; --n) {
        if (s_.PendingWrite[n]) hooks.writeRow(n);
        DoEvents();
    }
    for (int n = 0; n <= 15; ++n) {
        // Registers beyond the panel's rows have no boxes of their own to judge.
        if (s_.PendingRead[n]) {
            if (n < c_.panelRows)
                hooks.readRow(n);
            else
                s_.comm().ReadRegister(n);
        }
        DoEvents();
    }
    s_.TransferDeferred = false;
    if (hooks.afterRefresh) hooks.afterRefresh();
}

void PacedCollection::Pass() {
    // Stop and every other control are served here.
    s_.TransferBusy = true;
    DoEvents();
    if (!s_.Collecting) return;
    // The window is looked up at the start of the run: the walk up the parents touches a dozen
    // widgets that the transfer's wait has left cold.
    st_.Displayed = window_->isVisible();
    st_.IntervalMs = typedIntervalMs_;

    // The rest the previous pass owes is taken first, inside the pacing's wait when there is
    // one.
    const std::int64_t restUntilUs = std::exchange(restUntilUs_, 0);
    if (!hooks.singleShot()) {
        PaceToDeadline(restUntilUs);
    } else {
        Rest(restUntilUs);
        st_.PacedDeadlineUs = st_.PassReleasedUs = s_.clock.Micros();
    }
    if (!s_.Collecting) return;

    if (s_.TransferDeferred) RefreshRegisters();
    // A board pulled during the refresh has ended the run; its message has been given.
    if (s_.Collecting) {
        st_.PassStatus = SampleStatus::Ok;
        if (!hooks.sample()) return;
        if (log_.IsOpen()) {
            NoteSettings();
            log_.Append(hooks.logSample());
        }
        // A step goes after the row of the reading that called for it: the log's next "#" lines
        // are the new range's.
        const bool stepped = c_.autoRange && c_.autoRange->Pass();
        st_.RangeSteps += stepped;
        plot_.TraceMarks[kTraceNewest] = stepped;
    }

    // A run stopped during this pass draws nothing more: "Clear Graph" may already have
    // restored the picture.
    if (s_.Collecting) {
        const std::int64_t now = s_.clock.Micros();
        st_.DeadlineUs = now + std::int64_t(st_.IntervalMs) * kMs;
        if (st_.Displayed) loopMs_ = (now - st_.PassStartUs + kMs / 2) / kMs;
        hooks.plotRows();
        if (st_.SampleCount < CollectionState::kSampleLast) ++st_.SampleCount;
        if (st_.SampleCount > 10 && st_.Displayed) DrawStep();
    }

    if (st_.Displayed) {
        showPending_ = true;
        if (s_.clock.Micros() - shownUs_ >= kReadoutUs) ShowValues();
    }
    if (!(st_.PeakSample >= st_.LatestReading)) st_.PeakSample = st_.LatestReading;

    // The measured loop time starts after the rest, as it did when the rest was slept here.
    st_.PassStartUs = std::max(s_.clock.Micros(), restUntilUs_);
    if (st_.onPass) st_.onPass();
    s_.TransferBusy = false;
    DoEvents();
}

void PacedCollection::DrawStep() {
    loopCount_ = st_.SampleCount - 10;
    if (traceByFrame_ && (drawTrace1 == drawTrace2 || drawTrace1 != traceByFrameIsFirst_)) {
        // The other trace from now on: what the first owes is drawn, and the rest of the run
        // steps as it always did, the old trace staying on the picture where it was.
        DrawOwedTrace();
        traceByFrame_ = false;
    }
    if (traceByFrame_) {
        // A step of the drawing costs a walk along the whole trace, and at 8 ms there are four
        // or five of them to a frame.
        ModWaveform_ALS::ShiftTrace(traceByFrameIsFirst_ ? plot_.TracePixels : plot_.TracePixels2, plot_,
                                    plot_.TraceStart, true);
        shiftedStart_ = plot_.TraceStart;
        if (s_.clock.Micros() - traceDrawnUs_ >= kFrameUs) DrawOwedTrace();
    } else {
        // The range steps' marks go with one trace: the red one when it is drawn.
        if (drawTrace2) {
            plot_.TraceColour = kTrace2Colour;
            ModWaveform_ALS::ScrollTrace2(*c_.graph, plot_, plot_.TraceStart, !drawTrace1);
        }
        if (drawTrace1) {
            plot_.TraceColour = kTrace1Colour;
            ModWaveform_ALS::ScrollTrace(*c_.graph, plot_, plot_.TraceStart, true);
        }
    }
    if (plot_.TraceStart < 2) {
        // Once the trace spans every column, the pass rests a millisecond, but only when
        // that millisecond is still free before the next deadline: with a deadline already due
        // it would only lower the sample rate. The rest is owed rather than slept here, so
        // that it falls within the pacing's wait where there is one: a sleep of its own would
        // wake the program once more every pass.
        const std::int64_t now = s_.clock.Micros();
        if (st_.DeadlineUs - now >= kMs) restUntilUs_ = now + kMs;
    } else {
        --plot_.TraceStart;
    }
}

void PacedCollection::DrawOwedTrace() {
    if (!traceByFrame_ || !plot_.Ink.owed) return;
    plot_.TraceColour = traceByFrameIsFirst_ ? kTrace1Colour : kTrace2Colour;
    ModWaveform_ALS::DrawTrace(*c_.graph, plot_, traceByFrameIsFirst_ ? plot_.TracePixels : plot_.TracePixels2,
                               shiftedStart_, true);
    traceDrawnUs_ = s_.clock.Micros();
}

void PacedCollection::ShowValues() {
    showPending_ = false;
    shownUs_ = s_.clock.Micros();
    if (loopMs_ >= 0) SetTextIfChanged(c_.txtTime1, Trim(double(loopMs_)));
    if (loopCount_ >= 0) {
        const QString count = Trim(loopCount_);
        if (c_.lblLoop_Count->text() != count) c_.lblLoop_Count->setText(count);
    }
    hooks.showReading();
    if (c_.flag) c_.flag->Show(st_.PassStatus);
    if (c_.maxMin) c_.maxMin->ShowTexts(st_);
}

void PacedCollection::End() {
    if (showPending_ && window_->isVisible()) ShowValues();
    // The trace ends on the last step. "Clear Graph" during the run has wiped what was owed.
    DrawOwedTrace();
    c_.graph->owedDrawing = nullptr;
    s_.Collecting = false;
    // A run stopped at the start of a pass still holds the transport.
    s_.TransferBusy = false;
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    st_.CollectAbort = false;
    if (!restartPending_) log_.Close();
    if (hooks.end) hooks.end();
}

}  // namespace lxm
