#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <array>
#include <cstdint>

namespace lxm {

// Columns of the trace arrays. Index 403 receives the newest reading; 404..410 are never
// written by collection and stay 1, which the trace step relies on (see ScrollTrace).
constexpr int kTracePoints = 411;
constexpr int kTraceNewest = 403;

using TraceRows = std::array<std::int32_t, kTracePoints>;
using ScaleTexts = std::array<QString, 11>;

// Everything the strip chart draws from: the value scale and its label texts, the trace rows
// and the saved background that erasing restores. One per device form.
struct PlotState {
    std::int32_t ScaleMax = 0;
    std::int32_t ScaleMin = 0;
    std::int32_t ScaleSpan = 0;

    ScaleTexts ScaleLabels;   // left column, index 0 at the bottom
    ScaleTexts ScaleLabels2;  // right column
    QString AxisCaption = QStringLiteral("AD Cnt");
    QString AxisCaption2 = QStringLiteral("AD Cnt");
    // The horizontal axis counts readings back from the newest, so index 10 is printed at
    // the left end.
    ScaleTexts SampleScaleLabels{"0", "40", "80", "120", "160", "200", "240", "280", "320", "360", "400"};

    TraceRows TracePixels = FilledRows();
    TraceRows TracePixels2 = FilledRows();
    // Columns where the range changed: a vertical line, scrolled with the trace.
    std::array<std::uint8_t, kTracePoints> TraceMarks{};
    std::int32_t TraceStart = kTraceNewest;
    QColor TraceColour{255, 0, 0};

    // The empty (or saved) graph; restoring a pixel copies it back from here.
    QImage GraphBackground;

    // A trace drawn once a frame rather than once a step: what it has put on the picture,
    // column by column, and whether steps taken since are still to be drawn. Restoring the
    // background wipes both.
    struct TraceInk {
        enum : std::uint8_t { kNone, kRun, kMarkedRun };
        std::array<std::uint8_t, kTracePoints> drawn{};
        std::array<std::int32_t, kTracePoints> from{}, to{};
        std::int32_t newest = 1;  // the newest row as the last step found it
        bool owed = false;
    };
    TraceInk Ink;

    static TraceRows FilledRows() {
        TraceRows rows;
        rows.fill(1);
        return rows;
    }
};

}  // namespace lxm
