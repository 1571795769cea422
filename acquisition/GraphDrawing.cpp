#include "GraphDrawing.h"

#include <QFont>
#include <QPalette>
#include <algorithm>

#include "acquisition/Conversion.h"
#include "acquisition/FastDrawing.h"
#include "core/VbText.h"

namespace lxm {

PictureBox* MakeGraphPicture(QWidget* parent) {
    auto* graph = new PictureBox(kGraphSize, parent);
    graph->SetBackColor(Qt::white);
    graph->Cls();
    graph->setToolTip(QStringLiteral("Real Time Graph Display of Light Level."));
    return graph;
}

PictureBox* MakeLabelPicture(QWidget* parent) {
    auto* labels = new PictureBox(kLabelStripSize, parent, PictureBox::Scaling::Resolution);
    // A pixel-sized font keeps the labels inside the strip whatever the desktop's font.
    QFont font = labels->font();
    font.setPixelSize(kLabelPixelSize);
    labels->setFont(font);
    labels->SetBackColor(labels->palette().color(QPalette::Window));
    labels->SetForeColor(Qt::black);
    labels->Cls();
    return labels;
}

void PlaceGraph(PictureBox& labels, PictureBox& graph) {
    graph.setParent(&labels);
    auto place = [&labels, &graph] {
        graph.SetDisplayScale(labels.DisplayScale());
        graph.move(labels.ToWidget(QRect(kGraphOrigin, QSize(1, 1))).topLeft());
    };
    place();
    QObject::connect(&labels, &PictureBox::Rescaled, &graph, place);
    QObject::connect(&labels, &PictureBox::Resized, &graph, place);
    graph.show();
}

void DrawGrid(PictureBox& graph) {
    FastDrawing fast;
    FastDrawing::Pixels3D pixels;
    fast.ReadPixels3D(graph, pixels);
    const int maxX = fast.GetMaxX(graph);
    const int height = fast.GetHeight(graph);
    auto black = [&pixels](int x, int y) {
        pixels(0, x, y) = 0;
        pixels(1, x, y) = 0;
        pixels(2, x, y) = 0;
    };

    const int sx = int(RoundEven(maxX / 10.0));
    if (sx > 0) {
        for (int x = sx; x <= maxX; x += sx) {
            for (int y = 0; y <= height; ++y) black(x, y);
            if (x % 25 == 0) fast.WritePixels3D(graph, pixels);
        }
    }
    const int sy = int(RoundEven(height / 10.0));
    if (sy > 0) {
        for (int x = 0; x <= maxX; ++x) {
            for (int y = 0; y <= height; y += sy) black(x, y);
            if (x % 25 == 0) fast.WritePixels3D(graph, pixels);
        }
    }
    fast.WritePixels3D(graph, pixels);
}

void DrawGraphLabels(PictureBox& labels, const PictureBox& graph, const PlotState& state) {
    const int graphWidth = graph.ScaleWidth();
    const int graphHeight = graph.ScaleHeight();
    const int lineHeight = labels.TextHeight(QStringLiteral("Yy"));
    const int leftColumnEnd = kGraphOrigin.x() - kLabelGap;
    const int rightColumn = kGraphOrigin.x() + graphWidth + kLabelGap;
    labels.Cls();

    // Value labels, right-aligned on the left and left-aligned on the right, each centred
    // on the horizontal grid line it names (the grid counts its rows from the bottom one).
    const int sy = graphHeight / 10;
    for (int k = 0; sy > 0 && k <= 10 && graphHeight - k * sy >= 0; ++k) {
        const int top = kGraphOrigin.y() + graphHeight - 1 - k * sy - lineHeight / 2;
        const QString left = FormatLabel(state.ScaleLabels[k]);
        labels.PrintAt(leftColumnEnd - labels.TextWidth(left), top, left);
        labels.PrintAt(rightColumn, top, FormatLabel(state.ScaleLabels2[k]));
    }

    // Sample axis under the vertical grid lines, counting back from the newest reading.
    const int axisTop = kGraphOrigin.y() + graphHeight + 2;
    const int sx = int(RoundEven(graphWidth / 10.0));
    for (int i = 0; sx > 0 && i <= 10 && i * sx <= graphWidth; ++i) {
        const QString& text = state.SampleScaleLabels[10 - i];
        labels.PrintAt(kGraphOrigin.x() + i * sx - labels.TextWidth(text) / 2, axisTop, text);
    }

    // The captions go under the ends of the sample axis, on the line of the sample count.
    const int captionTop = axisTop + lineHeight + 4;
    labels.PrintAt(std::max(0, kGraphOrigin.x() - labels.TextWidth(state.AxisCaption) / 2), captionTop,
                   state.AxisCaption);
    labels.PrintAt(std::min(labels.ScaleWidth() - labels.TextWidth(state.AxisCaption2),
                            kGraphOrigin.x() + graphWidth - labels.TextWidth(state.AxisCaption2) / 2),
                   captionTop, state.AxisCaption2);

    // The line's leading blanks are padding; it is placed so that its words are centred
    // under the graph.
    const QString line = QString::fromLatin1(kTotalSamplesLine);
    const QString words = line.trimmed();
    const int padding = labels.TextWidth(line.left(line.size() - words.size()));
    const int x = kGraphOrigin.x() + graphWidth / 2 - labels.TextWidth(words) / 2 - padding;
    labels.PrintAt(x, captionTop, line);
    labels.Refresh();
}

}  // namespace lxm
