#pragma once

#include "acquisition/PictureBox.h"
#include "acquisition/PlotState.h"

// Pixel routines of the strip chart: the saved background, the scrolling trace and plain
// dot plots.
namespace lxm::ModWaveform_ALS {

// The picture as it is now becomes the background that erasing restores.
void SaveGraphBackground(const PictureBox& picture, PlotState& state);
// Puts the whole saved background back (removing every trace) and repaints. Parts of the
// picture the background does not cover are cleared to the back colour.
void RestoreGraphBackground(PictureBox& picture, PlotState& state);

// Highest column a trace is drawn in.
constexpr int kTraceLastColumn = 402;

// One scroll-and-draw step of TracePixels in TraceColour: columns start-1 .. 402 take over
// the row of their right-hand neighbour. Only pixels that change are written (the erased
// span, a three-pixel dot and the stroke joining the next point) and the picture is repainted
// once. A start of 404 or more only repaints. withMarks: TraceMarks scroll with it, a marked
// column a grey line the height of the picture under the trace.
void ScrollTrace(PictureBox& picture, PlotState& state, int start, bool withMarks = false);
// The same step on the second trace, TracePixels2.
void ScrollTrace2(PictureBox& picture, PlotState& state, int start, bool withMarks = false);

// The same step in two halves, for a picture repainted less often than the trace steps: the
// rows (and, withMarks, TraceMarks) scroll on every step, and DrawTrace brings the picture up
// to the rows once a frame. With one trace on the picture the result is the same, pixel for
// pixel, as a ScrollTrace on every step, for one walk along the trace a frame instead of one
// a step. A second trace's erasing would show through the first in another order, so two
// traces step with ScrollTrace.
void ShiftTrace(TraceRows& rows, PlotState& state, int start, bool withMarks);
// Draws what the shifts since the last DrawTrace changed; start as at the last shift.
void DrawTrace(PictureBox& picture, PlotState& state, const TraceRows& rows, int start, bool withMarks);

// Red three-pixel dots at (x, rows[x]) from the right edge to the left, repainting every 25
// columns so the plot shows as it grows.
void PlotDots(PictureBox& picture, const TraceRows& rows);

// Rows of the eight-step test staircase (levels 100..800 of a 0..1000 scale, 50 columns each).
TraceRows StaircaseRows();

}  // namespace lxm::ModWaveform_ALS
