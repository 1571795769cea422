#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <span>

#include "acquisition/PlotState.h"

// Scale arithmetic behind the "Manual Re-Scale" and "Automatic Re-Scale" buttons. The form
// reads its text boxes, calls these, applies the result and then redraws the labels, restores
// the graph background and (automatic case) restarts collection.
namespace lxm {

struct ScaleResult {
    std::int32_t scaleMax = 0;
    std::int32_t scaleMin = 0;
    std::int32_t scaleSpan = 0;
    ScaleTexts labels;
    ScaleTexts labels2;
};

// Manual re-scale from "Scale Max" (txtScale), "Scale Min" (txtScaleMin) and the right-hand
// maximum (txtScale2). The entered maximum is taken plus one and the label step is a tenth
// of the span rounded half to even, so labels need not be round numbers. Without lux the
// right column repeats the left one.
ScaleResult ManualRescale(const QString& txtScale, const QString& txtScaleMin, const QString& txtScale2,
                          bool showLux);

struct AutoScaleResult {
    QString txtScale;     // new text of "Scale Max"
    QString txtScaleMin;  // new text of "Scale Min"
    ScaleResult scale;
};

// Automatic re-scale over the stored samples: 15 % head-room above the largest of samples
// 1..sampleCount. Returns nothing (the button then only yields) until more than five readings
// exist and the one at sampleCount - 1 is non-zero. The signed proximity case keeps room
// below zero.
std::optional<AutoScaleResult> AutoRescale(std::span<const double> sampleValues, std::int32_t sampleCount,
                                           bool signedCase);

// The span between a scale's top and bottom. Both come from the user's text, so the difference
// may not fit 32 bits ("-2147483648" as the bottom): it saturates, as the scale values do.
std::int32_t ScaleSpanOf(std::int32_t scaleMax, std::int32_t scaleMin);

// A scale value from the number typed for it: 32-bit, rounded half to even; an absurd entry
// saturates rather than wrapping round.
std::int32_t ToScale(double v);

// Puts a result into the plot state. The automatic case also re-captions both axes.
void ApplyScale(const ScaleResult& scale, PlotState& state);
void ApplyScale(const AutoScaleResult& scale, PlotState& state);

}  // namespace lxm
