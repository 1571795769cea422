#pragma once

#include <QPoint>
#include <QSize>
#include <QWidget>

#include "acquisition/PictureBox.h"
#include "acquisition/PlotState.h"

// The strip chart's fixed layout: the graph picture sits inside the label picture, which
// carries the value labels left and right of it and the sample axis, captions and the sample
// count below it.
namespace lxm {

// 405 columns (0..404; the trace uses up to 402) by 305 rows (0..304, the value scale).
constexpr QSize kGraphSize{405, 305};
constexpr QSize kLabelStripSize{501, 350};
// Top-left corner of the graph inside the label picture.
constexpr QPoint kGraphOrigin{48, 10};
// Gap between a value label and the graph's edge.
constexpr int kLabelGap = 4;
constexpr int kLabelPixelSize = 11;

// A graph picture (white, pixels) and a label picture (label font, window-grey, drawn at the
// shown resolution) of the sizes above. Both are owned by their parent.
PictureBox* MakeGraphPicture(QWidget* parent);
PictureBox* MakeLabelPicture(QWidget* parent);
// Makes the graph a child of the label picture at kGraphOrigin, shown at the label picture's
// scale wherever that goes.
void PlaceGraph(PictureBox& labels, PictureBox& graph);

// Black grid lines on the graph: vertical every tenth of its width (none at column 0) and
// horizontal every tenth of its height counted from the bottom row. Drawn in a pixel array
// that is shown every 25 columns and once at the end.
void DrawGrid(PictureBox& graph);

// Clears the label picture and prints the value labels beside the grid lines ("00000"
// pattern, scale minimum at the bottom), the axis captions, the sample axis ("400" at the
// left to "0" at the right) and the sample count line.
void DrawGraphLabels(PictureBox& labels, const PictureBox& graph, const PlotState& state);

// The line printed under the sample axis.
inline const char* const kTotalSamplesLine = "                     Total 400 Samples";

}  // namespace lxm
