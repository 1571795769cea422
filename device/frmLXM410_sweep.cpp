// What the family form lends a characterisation: its range, resolution and measurement options
// and its one-shot reading.
#include <algorithm>
#include <tuple>

#include "device/frmLXM410.h"
#include "device/parts/FormSweepTarget.h"
#include "device/parts/StripChart.h"
#include "transport/Session.h"

namespace lxm {

namespace {
// The one-shot measurements of "Operation".
int OnceOption(std::string_view measure) {
    return measure == "ir" ? 2 : measure == "prox" ? 3 : 1;
}

template <class Array, class T>
int IndexOf(const Array& values, T value, T Array::value_type::*field) {
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i].*field == value) return int(i);
    return -1;
}
}  // namespace

SweepForm frmLXM410::SweepParts() {
    SweepForm f;
    f.form = this;
    f.sensor = s_.SelectedType;
    for (std::int32_t lux : RangeTable)
        for (const Resolution& r : kFamilyResolutions) f.settings.push_back({int(lux), r.bits});
    // The proximity member has no ALS, the ALS / IR member no proximity.
    if (s_.SelectedType == "LXM450") f.measures = {"ir", "prox"};
    if (s_.SelectedType == "LXM470") f.measures = {"als", "ir"};

    // The measurement first: its handler runs the selected range and resolution handlers again.
    f.apply = [this](const characterise::Setting& s, std::string_view measure) {
        const int once = OnceOption(measure);
        if (MeasureIndex != once || !OptMeasure.at(once)->isChecked())
            Choose(OptMeasure, once, [this](int i) { OptMeasure_Click(i); });
        if (const int r = IndexOf(kFamilyResolutions, s.resolutionBits, &Resolution::bits); r >= 0)
            Choose(OptITime, r, [this](int i) { OptITime_Click(i); });
        for (int i = 0; i < int(RangeTable.size()); ++i)
            if (RangeTable[std::size_t(i)] == s.rangeLux) Choose(OptGain, i, [this](int g) { OptGain_Click(g); });
    };

    // As a one-shot pass of the collection: register 0 triggers the conversion, and the read
    // comes after the delay the resolution sets (118 ms at 16 bits, where the chip takes 100),
    // or at the shortest resolutions a millisecond after the conversion's nominal end.
    f.trigger = [this] {
        s_.TransferBusy = false;
        cmdWrtReg_Click(0);
        ConversionStartUs = s_.clock.Micros();
        return ConversionStartUs + std::max(std::int64_t(SampleDelayMs * 1000), ConversionMicros(AdcBits) + 1000);
    };
    f.fetch = [this] {
        s_.TransferBusy = true;
        const std::int32_t count = ReadDataRegisters();
        const SampleStatus status = CountStatus(count);
        s_.TransferBusy = false;
        return FormReading(status, count, ShowLux ? ConvertToLux(count) : double(count), ShowLux);
    };

    f.keepDerived = [this] {
        const auto fields = [this] {
            return std::tie(RangeIndex, GainIndex, RangeKLux, AdcBits, FullScaleCounts, AdcHalfScale, AdcCountMax,
                            SinglePolarity, IntLimitMax, IntLimitMin, ProxScheme, ExternalTiming, AdcModeSelected,
                            MeasModeAdc, MeasModeTimer, SampleDelayMs, MeasureIndex, MeasureSingleShot, ShowLux,
                            MeasureProx, MeasureProxIrDual, DualHold, SignThreshold, SignMax, ConversionStartUs, plot);
        };
        return [fields, kept = std::apply([](const auto&... v) { return std::make_tuple(v...); }, fields())] {
            fields() = kept;
        };
    };
    // Register 8 is cleared by every measurement choice; the command register goes last.
    f.configRegisters = {1, 8, 0};
    f.writeRegister = [this](int reg) { cmdWrtReg_Click(reg); };
    f.redraw = [this] { chart_->Redraw(); };
    return f;
}

}  // namespace lxm
