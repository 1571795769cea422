// What the multi-function form lends a characterisation: its ALS range, ALS / IR and enable
// options and its read of the data registers.
#include <QCheckBox>
#include <algorithm>
#include <tuple>

#include "device/frmLXM600.h"
#include "device/parts/FormSweepTarget.h"
#include "device/parts/StripChart.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"

namespace lxm {

namespace {
// A check box ticked as the user ticks it; its handler runs only when that changes it.
void Tick(QCheckBox* box, const std::function<void()>& handler) {
    if (box->isChecked()) return;
    box->setChecked(true);
    handler();
}
}  // namespace

SweepForm frmLXM600::SweepParts() {
    SweepForm f;
    f.form = this;
    f.sensor = "LXM600";
    for (std::int32_t lux : kLxm600RangesLux) f.settings.push_back({int(lux), 0});

    struct Under {
        bool prox = false;
        std::int64_t readUs = 0;
    };
    auto under = std::make_shared<Under>();
    f.apply = [this, under](const characterise::Setting& s, std::string_view measure) {
        const bool prox = measure == "prox";
        Tick(prox ? ChkPEnable : chkALSEnable, [this, prox] { prox ? ChkPEnable_Click() : chkALSEnable_Click(); });
        if (!prox) Choose(OptMMode, measure == "ir" ? 1 : 0, [this](int i) { OptMMode_Click(i); });
        for (int i = 0; i < int(kLxm600RangesLux.size()); ++i)
            if (kLxm600RangesLux[std::size_t(i)] == s.rangeLux)
                Choose(OptALSRange, i, [this](int r) { OptALSRange_Click(r); });
        under->prox = prox;
    };

    // The chip converts on its own while a part is enabled: a reading waits for a result that
    // began after the settings and after the previous reading, so no two readings share one.
    // Proximity is measured once per sleep time.
    f.trigger = [this, under] {
        const std::int64_t period =
            under->prox ? kLxm600ProxConversionUs + kLxm600ProxSleepUs[std::size_t(SelectedIndex(OptIRSleep) & 7)]
                        : kLxm600ConversionUs;
        return std::max(s_.comm().LastWriteUs(1), under->readUs) + period + 1000;
    };
    f.fetch = [this, under] {
        s_.TransferBusy = false;
        cmdReadAd_Click();
        under->readUs = s_.clock.Micros();
        const std::int32_t raw = under->prox ? ProxCount600 : AlsIrCount600;
        const bool early = !under->prox && under->readUs - s_.comm().LastWriteUs(1) < kLxm600ConversionUs;
        const SampleStatus status = Classify(s_.ReadStatusByte == 3, raw, under->prox ? kProxBits : AdcBits, early);
        // Lux at the range the option selects, which the chip converts at.
        const bool lux = !under->prox && OptMMode.at(0)->isChecked();
        const std::int32_t rangeLux = kLxm600RangesLux[std::size_t(SelectedIndex(OptALSRange))];
        return FormReading(status, raw, lux ? lxm::ConvertToLux(raw, rangeLux, RangeScaleDivisor, FullScaleCounts) : raw,
                           lux);
    };

    f.keepDerived = [this] {
        const auto fields = [this] {
            return std::tie(RangeTable, RangeIndex, AdcBits, FullScaleCounts, AdcHalfScale, AdcCountMax, SinglePolarity,
                            ProxScheme, ShowLux, RangeScaleDivisor, TraceEnable1, TraceEnable2, plot_);
        };
        return [fields, kept = std::apply([](const auto&... v) { return std::make_tuple(v...); }, fields())] {
            fields() = kept;
        };
    };
    f.configRegisters = {1};
    f.writeRegister = [this](int reg) { cmdWrtReg_Click(reg); };
    f.redraw = [this] { chart_->Redraw(); };
    return f;
}

}  // namespace lxm
