// Continuous collection on the family form: the shared paced loop with the family's sample
// (a re-triggered one-shot, a continuous read or the dual-mode sequence), its captions and
// its single red trace.
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <cmath>
#include <limits>

#include "acquisition/PictureBox.h"
#include "acquisition/Readings.h"
#include "acquisition/Rescale.h"
#include "core/ServedWait.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/MaxMinFrame.h"
#include "transport/Session.h"

namespace lxm {

void frmLXM410::WireCollection() {
    PacedCollection::Controls c{txtInterval,   txtTime1,          lblLoop_Count,  chart_->Picture1,
                                kRegisterRows, FrmMeasureDetails, lblReadingFlag, autoRange_.get()};
    loop_ = std::make_unique<PacedCollection>(s_, *this, plot, c);
    auto& h = loop_->hooks;
    h.start = [this] { StartCollection(); };
    h.singleShot = [this] { return MeasureSingleShot; };
    WireRefresh(*loop_, [this] {
        ConversionStartUs = s_.clock.Micros();
        cmdScale_Click();
        // The first conversion after a register change may be a mixed one: read and dropped.
        ReadDataRegisters();
    });
    h.sample = [this] { return SamplePass(); };
    h.plotRows = [this] {
        plot.TracePixels[kTraceNewest] =
            PlotRow(LatestReading, plot.ScaleMin, plot.ScaleMax, plot.ScaleSpan, SignedPlotCase());
    };
    h.showReading = [this] {
        const QString text = FormatReading(LatestReading, ShowLux, 2);
        if (txtReading->text() != text) txtReading->setText(text);
        if (PassCountUnshown) {
            const QString raw = Trim(PassCount);
            if (txtADCRaw->text() != raw) txtADCRaw->setText(raw);
            PassCountUnshown = false;
        }
        chart_->ShowSwatch();
    };
    h.end = [this] { EndCollection(); };
    WireLog(
        *loop_, *frmDataRecord,
        [this](SampleLogHeader& header) {
            header.rangeLux = RangeTable[std::size_t(RangeIndex)];
            header.resolutionBits = AdcBits;
            header.lux = ShowLux;
            header.dual = MeasureProxIrDual;
            for (const auto& [i, option] : OptMeasure)
                if (option->isChecked()) header.measurement = option->text();
        },
        [this] { return LoggedPass(); });
}

namespace {
std::optional<std::int64_t> CountIn(const QLineEdit* box) {
    bool numeric = false;
    const double v = box->text().trimmed().toDouble(&numeric);
    if (!numeric || !(std::abs(v) < 9e18)) return std::nullopt;
    return std::int64_t(v);
}
}  // namespace

// The dual mode's difference, IR and proximity are logged as the sequence left them; a part
// that was not a number stays empty rather than repeating the last one.
LoggedSample frmLXM410::LoggedPass() const {
    LoggedSample row;
    row.value = LatestReading;
    row.status = PassStatus;
    if (MeasureProxIrDual) {
        row.raw = CountIn(txtProx_IR.at(6));
        if (!row.raw) row.value = std::numeric_limits<double>::quiet_NaN();
        row.ir = CountIn(txtProx_IR.at(5));
        row.prox = CountIn(txtProx_IR.at(4));
    } else {
        // The count itself rather than its box: parsing text back costs more than the rest of
        // the row.
        row.raw = PassCount;
    }
    return row;
}

// A read is early when the conversion that began with the last write of the registers (a
// one-shot's trigger, or a change of settings) cannot have ended by the time the read came
// back. A signed proximity count has no top of scale to be stuck at.
SampleStatus frmLXM410::CountStatus(std::int32_t value) const {
    const bool early = s_.clock.Micros() - ConversionStartUs < ConversionMicros(AdcBits);
    return FamilyCountStatus(s_.ReadStatusByte == 2, value, SignedPlotCase(), AdcBits, early);
}

void frmLXM410::cmdCollectData_Click() {
    loop_->Run();
}

void frmLXM410::StartCollection() {
    lblRange->hide();
    Frame11->hide();
    IrBefore = IrAfter = AmbientIr = 0;
    ProxCount = ProxCountSigned = ProxMinusIr = 0;
    for (int i = 0; i < 3; ++i) lblIR1.at(i)->setText(QStringLiteral("------"));
    cmdIDemo->setEnabled(false);

    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
    IntervalDisplayMs = Val(txtSampling_Delay->text());
    txtInterval->setEnabled(true);
    plot.ScaleSpan = ScaleSpanOf(plot.ScaleMax, plot.ScaleMin);

    // A powered-down sensor has nothing to collect: switch to continuous ALS.
    if (s_.RegWriteMirror[0] < 32) {
        OptMeasure.at(5)->setChecked(true);
        OptMeasure_Click(5);
        DoEvents();
    }

    // "Clear Graph" hides Stop; it comes back with the next run.
    Label18->setText(QStringLiteral("Data Collection In Process"));
    cmdCollectData->setText(QStringLiteral("Click -Stop-  to End"));
    cmdCollectData->setEnabled(false);
    cmdStopData->setEnabled(true);
    cmdStopData->show();
    Command4->setEnabled(false);
    Frame11->hide();
    FrmMeasureDetails->Empty();

    for (QLineEdit* box : {txtReading, txtADCRaw, txtTime1}) MakeLiveValue(box);
    for (const auto& [i, box] : txtProx_IR) MakeLiveValue(box);
    MakeLiveValue(lblLoop_Count);
    for (const auto& [i, label] : lblIR1) MakeLiveValue(label);
    Label6->show();
    FrmMeasureDetails->SetUnit(ShowLux ? QStringLiteral("lux") : QStringLiteral("counts"));
    ConversionStartUs = s_.clock.Micros();
}

bool frmLXM410::SamplePass() {
    bool counted = false;  // the pass read a whole count of its own
    if (!MeasureProxIrDual && !InterruptHold) {
        if (MeasureSingleShot) {
            s_.TransferBusy = false;
            cmdWrtReg_Click(0);
            ConversionStartUs = s_.clock.Micros();
            if (!ServedPauseMs(s_, s_.clock, Val(txtSampling_Delay->text()),
                               [this] { return s_.Collecting; }))
                return false;
        }
        s_.TransferBusy = true;
        const std::int32_t value = ReadDataRegisters();
        PassCount = value;
        PassStatus = CountStatus(value);
        counted = true;
        SampleValues[SampleCount] = value;
        if (Displayed) PassCountUnshown = true;
        LatestReading = value;
        if (ShowLux) {
            const double lux = ConvertToLux(value, autoRange_->ConvertingRange(PassStatus, RangeIndex));
            SampleValues[SampleCount] = lux;
            LatestReading = lux;
        }
    }

    // A saturated reading has no difference; the previous sample stands in for it.
    if (MeasureProxIrDual && !DualHold) {
        cmdProx_IR_Click();
        // The sequence releases the transport when it ends; the pass still holds it.
        s_.TransferBusy = true;
        AmbientIr = TruncInt32(Val(txtProx_IR.at(5)->text()));
        ProxCount = TruncInt32(Val(txtProx_IR.at(4)->text()));
        const QString difference = txtProx_IR.at(6)->text();
        bool numeric = false;
        const double value = difference.trimmed().toDouble(&numeric);
        PassStatus = DualStatus;
        if (numeric) {
            SampleValues[SampleCount] = value;
            txtADCRaw->setText(difference);
            PassCountUnshown = false;
            LatestReading = value;
        } else {
            SampleValues[SampleCount] = LatestReading;
        }
    }

    // The raw count of the pass goes to the max/min panel.
    if (counted)
        FrmMeasureDetails->UpdateCount(*this, PassCount, LastLow, LastHigh);
    else if (!InterruptHold)
        FrmMeasureDetails->Update(*this, txtADCRaw->text(), LastLow, LastHigh);

    interruptSampler().Pass(ChkSampleInt->isChecked());
    return true;
}

void frmLXM410::EndCollection() {
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
    FrmMeasureDetails->Clear(*this);
}

void frmLXM410::txtInterval_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) txtSampling_Delay->setText(txtInterval->text());
}

void frmLXM410::txtInterval_LostFocus() {
    txtSampling_Delay->setText(txtInterval->text());
}

}  // namespace lxm
