// The multi-function form's single read of its data registers and its two-trace collection.
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "acquisition/Conversion.h"
#include "acquisition/PictureBox.h"
#include "acquisition/Readings.h"
#include "acquisition/Rescale.h"
#include "core/BusFree.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM600.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StripChart.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"

namespace lxm {

namespace {
constexpr int kProxData = 8;  // register 8: proximity; 9 and 10: ALS/IR low and high
// A stop waits this many yields for a transfer under way to end before it lets go of the bus.
constexpr int kStopYields = 10000;
}  // namespace

// While another transfer holds the bus the read says it waits, and is made once that one has
// ended; the caption goes with the read.
void frmLXM600::cmdReadAd_Click() {
    if (!s_.UsbConnected) {
        s_.comm().NotConnected();
        return;
    }
    if (s_.comm().RefuseUnopenedBoard()) return;
    if (s_.TransferBusy) {
        if (readAdWaiting_) return;
        readAdWaiting_ = true;
        lblUSBStatis->setText(QStringLiteral("Rd_AD Waiting"));
        WhenBusFree(
            s_, this,
            [this] {
                readAdWaiting_ = false;
                cmdReadAd_Click();
            },
            [this] { return readAdWaiting_ = s_.UsbConnected; });
        return;
    }
    const auto bytes = panel_->ReadRows(kProxData, 3);
    if (!bytes) return;
    ProxCount600 = (*bytes)[0];
    AlsIrCount600 = (*bytes)[1] + (*bytes)[2] * 256;
    lblMeasurements.at(1)->setText(Trim(ProxCount600));
    lblMeasurements.at(2)->setText(Trim(AlsIrCount600));
}

double frmLXM600::ConvertToLux(double counts, int rangeIndex) const {
    return lxm::ConvertToLux(counts, RangeTable[std::size_t(rangeIndex < 0 ? RangeIndex : rangeIndex)],
                             RangeScaleDivisor, FullScaleCounts);
}

// The ALS/IR trace of an ALS measurement is shown in lux.
bool frmLXM600::AlsSample() const {
    return TraceEnable2 == 255 && OptMMode.at(0)->isChecked();
}

void frmLXM600::OptGraph_Click(int Index) {
    Label16->setText(Index == 0 ? QStringLiteral("Proximity") : QStringLiteral("ALS/IR"));
    TraceEnable1 = Index == 0 ? 255 : 0;
    TraceEnable2 = Index == 0 ? 0 : 255;
    loop_->drawTrace1 = TraceEnable1 == 255;
    loop_->drawTrace2 = TraceEnable2 == 255;
    loop_->SettingsChanged();
}

void frmLXM600::cmdCollectData_Click() {
    loop_->Run();
}

void frmLXM600::StartRun() {
    Label18->setText(QStringLiteral("Data Collection In Process"));
    cmdCollectData->setText(
        QStringLiteral("Real Time data display is executing, Click -Stop Real Time- to End"));
    cmdCollectData->setEnabled(false);
    cmdCollect->setEnabled(false);
    cmdStopData->setEnabled(true);
    cmdStopData->show();
    Command4->setEnabled(false);
    FrmMeasureDetails->Empty();
    FrmMeasureDetails->SetUnit(AlsSample() ? QStringLiteral("lux") : QStringLiteral("counts"));
    Label6->show();
    unshown_.reset();
    for (QLineEdit* box : {txtReading, txtADCRaw, txtReading2, txtReading3, txtTime1}) MakeLiveValue(box);
}

bool frmLXM600::SamplePass() {
    if (run_.CollectAbort) {
        s_.Collecting = false;
        return false;
    }
    // The read waits for the bus like any other; the pass lets go of it for the read.
    s_.TransferBusy = false;
    cmdReadAd_Click();
    s_.TransferBusy = true;
    if (!s_.Collecting) return false;
    const bool proximity = TraceEnable1 == 255;
    const Lxm600Reading r = TakeLxm600Reading(s_.ReadStatusByte == 3, std::uint8_t(ProxCount600),
                                              std::uint8_t(AlsIrCount600 & 0xFF), std::uint8_t(AlsIrCount600 >> 8),
                                              proximity, s_.clock.Micros() - s_.comm().LastWriteUs(1));
    double value = r.raw;
    // Auto Range converts at the range the chip is set to, which it changes.
    if (AlsSample()) value = ConvertToLux(r.raw, autoRange_->ConvertingRange(r.status, RangeIndex));
    auto& trace = proximity ? run_.SampleValues : run_.SampleValues2;
    trace[std::size_t(run_.SampleCount)] = value;
    lastLow_ = std::uint8_t(r.raw & 0xFF);
    lastHigh_ = std::uint8_t(r.raw >> 8);
    run_.PassStatus = r.status;
    if (run_.Displayed) unshown_ = PassCounts{r.raw, ProxCount600, AlsIrCount600};
    run_.LatestReading = value;
    FrmMeasureDetails->UpdateCount(run_, r.raw, lastLow_, lastHigh_);
    // A sample of the interrupt line asked for during the run is taken here, between reads.
    interruptSampler().Pass(false);
    return true;
}

// Each trace has its own scale: the proximity trace the left one, the ALS/IR trace the right.
void frmLXM600::PlotRows() {
    const auto n = std::size_t(run_.SampleCount);
    plot_.TracePixels[kTraceNewest] =
        PlotRow(run_.SampleValues[n], plot_.ScaleMin, plot_.ScaleMax, ScaleSpanOf(plot_.ScaleMax, plot_.ScaleMin), false);
    const std::int32_t max2 = ToScale(Val(chart_->txtScale2->text()) + 1);
    const std::int32_t min2 = ToScale(Val(chart_->txtScaleMin2->text()));
    plot_.TracePixels2[kTraceNewest] = PlotRow(run_.SampleValues2[n], min2, max2, ScaleSpanOf(max2, min2), false);
}

void frmLXM600::ShowReading() {
    const bool lux = AlsSample();
    const QString text = FormatReading(run_.LatestReading, lux, lux ? 3 : 0);
    if (txtReading->text() != text) txtReading->setText(text);
    if (!unshown_) return;
    for (const auto& [box, count] : {std::pair{txtADCRaw, unshown_->raw}, std::pair{txtReading2, unshown_->prox},
                                     std::pair{txtReading3, unshown_->alsIr}}) {
        const QString t = Trim(count);
        if (box->text() != t) box->setText(t);
    }
    unshown_.reset();
}

void frmLXM600::EndRun() {
    Label18->setText(QStringLiteral("Data Collection Halted"));
    cmdCollectData->setText(QStringLiteral("Collect Data Graphical Real Time Data"));
    cmdCollectData->setEnabled(true);
    cmdCollect->setEnabled(true);
    cmdStopData->setEnabled(false);
    Command4->setEnabled(true);
    DoEvents();
}

void frmLXM600::cmdStopData_Click() {
    s_.Collecting = false;
    run_.CollectStopRequested = true;
    Label18->setText(QStringLiteral("Data Collection Halted"));
    for (int i = 0; i < kStopYields && s_.TransferBusy; ++i) DoEvents();
    s_.TransferBusy = false;
}

void frmLXM600::cmdAbort_Click() {
    run_.CollectAbort = true;
}

void frmLXM600::cmdClearHist_Click() {
    FrmMeasureDetails->Clear(run_);
}

void frmLXM600::cmdScale_Click() {
    chart_->Scale(ShowLux);
}

void frmLXM600::cmdAutoScale_Click() {
    const auto& samples = TraceEnable1 == 255 ? run_.SampleValues : run_.SampleValues2;
    chart_->AutoScale(samples, run_.SampleCount, false, [this] { cmdCollectData_Click(); });
}

void frmLXM600::cmdRestoreScreen_Click() {
    chart_->RestoreScreen(cmdCollectData, cmdStopData);
}

void frmLXM600::cmdDrawTrace_Click() {
    chart_->DrawTrace();
}

}  // namespace lxm
