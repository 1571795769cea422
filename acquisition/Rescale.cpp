#include "Rescale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/VbText.h"

namespace lxm {

std::int32_t ToScale(double v) {
    if (std::isnan(v)) return 0;
    return std::int32_t(RoundEven(std::clamp(v, -2147483648.0, 2147483647.0)));
}

namespace {

std::int32_t TenthOf(std::int64_t span) {
    return ToScale(double(span) / 10.0);
}

ScaleTexts Ladder(std::int64_t start, std::int64_t step) {
    ScaleTexts texts;
    for (int i = 0; i <= 10; ++i) texts[i] = Trim(double(start + i * step));
    return texts;
}

}  // namespace

ScaleResult ManualRescale(const QString& txtScale, const QString& txtScaleMin, const QString& txtScale2,
                          bool showLux) {
    ScaleResult r;
    const std::int32_t rightMax = ToScale(Val(txtScale2) + 1);
    r.labels2 = Ladder(0, TenthOf(rightMax));

    r.scaleMax = ToScale(Val(txtScale) + 1);
    r.scaleMin = ToScale(Val(txtScaleMin));
    const std::int64_t span = std::int64_t(r.scaleMax) - r.scaleMin;
    r.scaleSpan = ToScale(double(span));
    r.labels = Ladder(r.scaleMin, TenthOf(span));
    if (!showLux) r.labels2 = r.labels;
    return r;
}

std::optional<AutoScaleResult> AutoRescale(std::span<const double> sampleValues, std::int32_t sampleCount,
                                           bool signedCase) {
    if (sampleCount <= 5 || std::size_t(sampleCount) > sampleValues.size()) return std::nullopt;
    if (!(std::fabs(sampleValues[sampleCount - 1]) > 0)) return std::nullopt;

    // Samples 1..sampleCount inclusive. During a run the slot at sampleCount is the one the
    // next pass fills, so it may still hold its start-up 1.0 and count towards the peak.
    const std::size_t last = std::min<std::size_t>(std::size_t(sampleCount), sampleValues.size() - 1);
    double peak = -99999;
    for (std::size_t i = 1; i <= last; ++i)
        if (sampleValues[i] > peak) peak = sampleValues[i];

    AutoScaleResult r;
    r.txtScale = Trim(std::floor(peak * 1.15));
    ScaleResult& s = r.scale;
    s.scaleMin = signedCase ? -100 : 0;
    s.scaleMax = ToScale(Val(r.txtScale) + 1);
    r.txtScaleMin = Trim(s.scaleMin);
    const std::int64_t span = std::llabs(std::int64_t(s.scaleMin)) + s.scaleMax;
    s.scaleSpan = ToScale(double(span));
    s.labels = Ladder(s.scaleMin, TenthOf(span));
    s.labels2 = s.labels;
    return r;
}

std::int32_t ScaleSpanOf(std::int32_t scaleMax, std::int32_t scaleMin) {
    return ToScale(double(std::int64_t(scaleMax) - scaleMin));
}

void ApplyScale(const ScaleResult& scale, PlotState& state) {
    state.ScaleMax = scale.scaleMax;
    state.ScaleMin = scale.scaleMin;
    state.ScaleSpan = scale.scaleSpan;
    state.ScaleLabels = scale.labels;
    state.ScaleLabels2 = scale.labels2;
}

void ApplyScale(const AutoScaleResult& scale, PlotState& state) {
    ApplyScale(scale.scale, state);
    state.AxisCaption = QStringLiteral("Scaled");
    state.AxisCaption2 = QStringLiteral("Scaled");
}

}  // namespace lxm
