// Continuous collection on the family form. The loop runs inside the Start button's handler
// on the user-interface thread and lets every other control run in its yields; Stop, a
// detached board or a re-scale end it by clearing the session's Collecting flag.
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

#include "acquisition/ModWaveform_ALS.h"
#include "acquisition/PictureBox.h"
#include "acquisition/Rescale.h"
#include "core/ServedWait.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "device/parts/InterruptSampler.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

constexpr std::int64_t kMs = 1000;
// The pass is let go once it is this close to its deadline; the sleep before that aims at 3 ms
// before the deadline, so the transfers of the pass overlap the last milliseconds of the wait.
constexpr std::int64_t kReleaseMarginUs = 4 * kMs;
constexpr std::int64_t kSleepMarginUs = 3 * kMs;
constexpr int kPanelTexts = 6;

void SetTextIfChanged(QLineEdit* box, const QString& text) {
    if (box->text() != text) box->setText(text);
}

// For the values rewritten on every pass. A transparent box repaints the frame around it with
// each new text, which costs more than the rest of the pass; a label free to change its size
// makes the whole window lay itself out again.
void MakeLiveValue(QWidget* w) {
    w->setBackgroundRole(QPalette::Window);
    w->setAutoFillBackground(true);
}
void MakeLiveValue(QLabel* label) {
    MakeLiveValue(static_cast<QWidget*>(label));
    const QFontMetrics m(label->font());
    label->setFixedSize(m.horizontalAdvance(QStringLiteral("-000000")) + 4, m.height() + 2);
}

}  // namespace

void frmLXM410::cmdCollectData_Click() {
    // Re-scaling and other restarts call this from inside a running loop (during one of its
    // yields). Starting a second loop on top of the first would nest one loop per restart;
    // the running one is asked to start over once it has ended instead.
    if (collectDepth_ > 0) {
        if (!s_.Collecting) restartPending_ = true;
        return;
    }
    // Without a board there is nothing to collect: say so once and leave the form as it was.
    if (!s_.UsbConnected) {
        s_.comm().NotConnected();
        return;
    }
    ++collectDepth_;
    do {
        restartPending_ = false;
        StartCollection();
        while (s_.Collecting) CollectionPass();
        EndCollection();
    } while (restartPending_);
    --collectDepth_;
}

void frmLXM410::StartCollection() {
    // 1. The system timer already ticks in milliseconds here; nothing to request.
    IntervalMs = WaitMsOf(txtInterval->text());

    // 2.
    lblRange->hide();
    Frame11->hide();
    MaxMinCounter = 0;
    PeakSample = -999999.0;
    IrBefore = IrAfter = AmbientIr = 0;
    ProxCount = ProxCountSigned = ProxMinusIr = 0;
    for (int i = 0; i < 3; ++i) lblIR1.at(i)->setText(QStringLiteral("------"));
    cmdIDemo->setEnabled(false);

    // 3.
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
    IntervalDisplayMs = Val(txtSampling_Delay->text());
    txtInterval->setEnabled(true);
    plot.ScaleSpan = ScaleSpanOf(plot.ScaleMax, plot.ScaleMin);

    // 4. A powered-down sensor has nothing to collect: switch to continuous ALS.
    if (s_.RegWriteMirror[0] < 32) {
        OptMeasure.at(5)->setChecked(true);
        OptMeasure_Click(5);
        DoEvents();
    }

    // 5. "Clear Graph" hides Stop; it comes back with the next run.
    Label18->setText(QStringLiteral("Data Collection In Process"));
    cmdCollectData->setText(QStringLiteral("Click -Stop-  to End"));
    cmdCollectData->setEnabled(false);
    cmdStopData->setEnabled(true);
    cmdStopData->show();
    Command4->setEnabled(false);
    Frame11->hide();
    CollectAbort = false;
    CollectStopRequested = false;

    // 6.
    std::fill(plot.TracePixels.begin(), plot.TracePixels.begin() + kTraceNewest + 1, 1);
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot);
    plot.TraceStart = kTraceNewest;
    SampleCount = 0;
    std::fill(SampleValues.begin(), SampleValues.end(), 1.0);
    std::fill(SampleValues2.begin(), SampleValues2.end(), 1.0);
    maxMinPanel.Reset();
    CountMax = maxMinPanel.countMax();
    CountMin = maxMinPanel.countMin();
    for (int i = 0; i < kPanelTexts; ++i) txtADMax.at(i)->clear();

    for (QLineEdit* box : {txtReading, txtADCRaw, txtTime1}) MakeLiveValue(box);
    for (const auto& [i, box] : txtProx_IR) MakeLiveValue(box);
    for (const auto& [i, box] : txtADMax) MakeLiveValue(box);
    MakeLiveValue(lblLoop_Count);
    for (const auto& [i, label] : lblIR1) MakeLiveValue(label);

    // 7.
    // The board may have gone during the writes above; a run without it would only collect zeros.
    s_.Collecting = s_.UsbConnected;
    Label6->show();
    txtTime1->show();
    PassStartUs = s_.clock.Micros();
    DeadlineUs = PassStartUs + std::int64_t(IntervalMs) * kMs;
    if (!s_.SessionOpen) s_.usb().OpenDevice();
}

// The margins are those of a millisecond timer; the deadline is kept in microseconds and the
// sleep is as fine as the clock allows, so that a pass starts where the margins put it and not
// up to a millisecond later. A long interval is waited in served slices, so Stop ends it early.
void frmLXM410::PaceToDeadline() {
    PacedDeadlineUs = DeadlineUs;
    if (s_.clock.Micros() < DeadlineUs - kReleaseMarginUs)
        ServedWait(s_, s_.clock, DeadlineUs - kSleepMarginUs, [this] { return s_.Collecting; });
    PassReleasedUs = s_.clock.Micros();
}

void frmLXM410::CollectionPass() {
    // 1. Stop and every other control are served here.
    s_.TransferBusy = true;
    DoEvents();
    if (!s_.Collecting) return;
    IntervalMs = WaitMsOf(txtInterval->text());

    // 2. One-shot types are paced by their re-trigger delay instead.
    if (!MeasureSingleShot)
        PaceToDeadline();
    else
        PacedDeadlineUs = PassReleasedUs = s_.clock.Micros();
    if (!s_.Collecting) return;

    // 3. Registers the user changed or asked for while the loop held the transport.
    if (s_.TransferDeferred) {
        s_.TransferBusy = false;
        for (int n = 15; n >= 0; --n) {
            if (s_.PendingWrite[n]) cmdWrtReg_Click(n);
            DoEvents();
        }
        for (int n = 0; n <= 15; ++n) {
            // Registers beyond the panel's rows have no boxes of their own to judge.
            if (s_.PendingRead[n]) {
                if (n < kRegisterRows)
                    cmdRDReg_Click(n);
                else
                    s_.comm().ReadRegister(n);
            }
            DoEvents();
        }
        s_.TransferDeferred = false;
        if (LimitsReadPending()) cmdReadILimits_Click();
        s_.TransferBusy = true;
        cmdScale_Click();
        // The first conversion after a register change may be a mixed one: read and dropped.
        ReadDataRegisters();
    }

    // 4.
    if (!MeasureProxIrDual && !InterruptHold) {
        if (MeasureSingleShot) {
            s_.TransferBusy = false;
            cmdWrtReg_Click(0);
            if (!ServedPauseMs(s_, s_.clock, Val(txtSampling_Delay->text()),
                               [this] { return s_.Collecting; }))
                return;
        }
        s_.TransferBusy = true;
        const std::int32_t value = ReadDataRegisters();
        SampleValues[SampleCount] = value;
        txtADCRaw->setText(Trim(value));
        LatestReading = value;
        if (ShowLux) {
            const double lux = ConvertToLux(Val(txtADCRaw->text()));
            SampleValues[SampleCount] = lux;
            LatestReading = lux;
        }
    }

    // 5. A saturated reading has no difference; the previous sample stands in for it.
    if (MeasureProxIrDual && !DualHold) {
        cmdProx_IR_Click();
        // The sequence releases the transport when it ends; the pass still holds it.
        s_.TransferBusy = true;
        AmbientIr = TruncInt32(Val(txtProx_IR.at(5)->text()));
        ProxCount = TruncInt32(Val(txtProx_IR.at(4)->text()));
        const QString difference = txtProx_IR.at(6)->text();
        bool numeric = false;
        const double value = difference.trimmed().toDouble(&numeric);
        if (numeric) {
            SampleValues[SampleCount] = value;
            txtADCRaw->setText(difference);
            LatestReading = value;
        } else {
            SampleValues[SampleCount] = LatestReading;
        }
    }

    // 6.
    if (!InterruptHold) ShowMaxMin();

    // 7.
    interruptSampler().Pass(ChkSampleInt->isChecked());

    // 8. and 9. A run stopped during this pass draws nothing more: "Clear Graph" may already
    // have restored the picture.
    if (s_.Collecting) {
        const std::int64_t now = s_.clock.Micros();
        DeadlineUs = now + std::int64_t(IntervalMs) * kMs;
        SetTextIfChanged(txtTime1, Trim(double((now - PassStartUs + kMs / 2) / kMs)));
        plot.TracePixels[kTraceNewest] =
            PlotRow(LatestReading, plot.ScaleMin, plot.ScaleMax, plot.ScaleSpan, SignedPlotCase());
        if (SampleCount < kSampleLast) ++SampleCount;

        if (SampleCount > 10) {
            lblLoop_Count->setText(Trim(SampleCount - 10));
            ModWaveform_ALS::ScrollTrace(*Picture1, plot, plot.TraceStart);
            if (plot.TraceStart < 2) {
                // Once every column is redrawn per pass, the pass rests a millisecond, but
                // only when that millisecond is still free before the next deadline: with a
                // deadline already due it would only lower the sample rate.
                if (DeadlineUs - s_.clock.Micros() >= kMs) s_.clock.Sleep(1);
            } else {
                --plot.TraceStart;
            }
        }
    }

    // 10.
    SetTextIfChanged(txtReading, FormatReading(LatestReading, ShowLux, 2));

    // 11.
    if (!(PeakSample >= LatestReading)) PeakSample = LatestReading;

    // 12.
    PassStartUs = s_.clock.Micros();
    if (onPass) onPass();
    s_.TransferBusy = false;
    DoEvents();
}

// Raw count of the pass: the extremes with their bytes, and a snapshot of the current count
// refreshed once the pass counter exceeds 25, i.e. on every 26th pass, so that it stays
// readable while readings change fast.
void frmLXM410::ShowMaxMin() {
    const QString raw = txtADCRaw->text();
    maxMinPanel.Update(Val(raw), raw, LastLow, LastHigh);
    CountMax = maxMinPanel.countMax();
    CountMin = maxMinPanel.countMin();
    MaxMinCounter = maxMinPanel.counter();
    const auto& texts = maxMinPanel.texts();
    for (int i = 0; i < kPanelTexts; ++i) SetTextIfChanged(txtADMax.at(i), texts[i]);
}

void frmLXM410::EndCollection() {
    s_.Collecting = false;
    // A run stopped at the start of a pass still holds the transport.
    s_.TransferBusy = false;
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    CollectAbort = false;
    // A run ended by a detached board or a re-scale did not pass through Stop, which says so.
    Label18->setText(QStringLiteral("Data Collection Halted"));
    cmdIDemo->setEnabled(true);
    cmdCollectData->setText(QStringLiteral("Start"));
    cmdCollectData->setEnabled(true);
    cmdStopData->setEnabled(false);
    DoEvents();
    if (!CompactView) Frame11->show();
    Command4->setEnabled(true);
}

void frmLXM410::cmdStopData_Click() {
    s_.Collecting = false;
    CollectStopRequested = true;
    Label18->setText(QStringLiteral("Data Collection Halted"));
    cmdIDemo->setEnabled(true);
    DoEvents();
}

void frmLXM410::cmdClearHist_Click() {
    maxMinPanel.Clear();
    CountMax = maxMinPanel.countMax();
    CountMin = maxMinPanel.countMin();
    for (int i = 0; i < kPanelTexts; ++i) txtADMax.at(i)->clear();
}

void frmLXM410::txtInterval_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) txtSampling_Delay->setText(txtInterval->text());
}

void frmLXM410::txtInterval_LostFocus() {
    txtSampling_Delay->setText(txtInterval->text());
}

}  // namespace lxm
