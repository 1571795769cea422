#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "acquisition/FastDrawing.h"
#include "acquisition/GraphDrawing.h"
#include "acquisition/ModWaveform_ALS.h"

namespace lxm {
namespace {

constexpr QRgb kBlack = 0xFF000000;
constexpr QRgb kRed = 0xFFFF0000;
constexpr QRgb kBlue = 0xFF0000FF;

std::vector<int> RowsOfColour(const QImage& image, int x, QRgb colour) {
    std::vector<int> rows;
    for (int y = 0; y < image.height(); ++y)
        if (image.pixel(x, y) == colour) rows.push_back(y);
    return rows;
}

std::vector<int> Range(int from, int to) {
    std::vector<int> rows;
    for (int y = from; y <= to; ++y) rows.push_back(y);
    return rows;
}

bool SameColumn(const QImage& a, const QImage& b, int x) {
    for (int y = 0; y < a.height(); ++y)
        if (a.pixel(x, y) != b.pixel(x, y)) return false;
    return true;
}

TEST(PictureBox, PixelsOutsideAreIgnoredAndRefreshConsumesTheDirtyArea) {
    PictureBox picture(QSize(20, 10));
    picture.SetPixel(20, 5, Qt::red);
    EXPECT_TRUE(picture.DirtyRect().isEmpty());
    EXPECT_FALSE(picture.Pixel(0, 10).isValid());
    picture.SetPixel(3, 4, Qt::red);
    picture.SetPixel(7, 2, Qt::red);
    EXPECT_EQ(picture.Pixel(3, 4), QColor(Qt::red));
    EXPECT_EQ(picture.DirtyRect(), QRect(QPoint(3, 2), QPoint(7, 4)));
    picture.Refresh();
    EXPECT_TRUE(picture.DirtyRect().isEmpty());
}

TEST(FastDrawing, ArraysAreBlueGreenRedAndBottomUp) {
    PictureBox picture(QSize(5, 4));
    picture.SetPixel(1, 0, QColor(10, 20, 30));  // top row
    FastDrawing fast;
    FastDrawing::Pixels3D pixels;
    fast.ReadPixels3D(picture, pixels);
    EXPECT_EQ(pixels.rows(), 5);  // one spare row
    EXPECT_EQ(pixels(0, 1, 3), 30);
    EXPECT_EQ(pixels(1, 1, 3), 20);
    EXPECT_EQ(pixels(2, 1, 3), 10);
    pixels(2, 4, 0) = 0;  // bottom right loses its red
    fast.WritePixels3D(picture, pixels);
    EXPECT_EQ(picture.image().pixel(4, 3), qRgb(0, 255, 255));
    EXPECT_EQ(picture.image().pixel(1, 0), qRgb(10, 20, 30));

    std::vector<std::uint8_t> flat;
    fast.ReadPixels1D(picture, flat);
    ASSERT_EQ(flat.size(), 60u);
    EXPECT_EQ(flat[(3 * 5 + 1) * 3 + 0], 30);
    flat[(0 * 5 + 0) * 3 + 1] = 0;  // bottom left loses its green
    fast.WritePixels1D(picture, flat);
    EXPECT_EQ(picture.image().pixel(0, 3), qRgb(255, 0, 255));
}

TEST(DrawGrid, LinesEveryTenthWithNoneAtTheLeftEdge) {
    std::unique_ptr<PictureBox> graph(MakeGraphPicture(nullptr));
    DrawGrid(*graph);
    const QImage& image = graph->image();
    std::vector<int> columns;
    for (int x = 0; x < image.width(); ++x)
        if (RowsOfColour(image, x, kBlack).size() == std::size_t(image.height())) columns.push_back(x);
    EXPECT_EQ(columns, (std::vector<int>{40, 80, 120, 160, 200, 240, 280, 320, 360, 400}));
    // Horizontal lines count from the bottom row in steps of 30.
    EXPECT_EQ(RowsOfColour(image, 10, kBlack),
              (std::vector<int>{4, 34, 64, 94, 124, 154, 184, 214, 244, 274, 304}));
}

TEST(DrawGraphLabels, TextStaysBesideAndBelowTheGraph) {
    std::unique_ptr<PictureBox> labels(MakeLabelPicture(nullptr));
    std::unique_ptr<PictureBox> graph(MakeGraphPicture(nullptr));
    PlotState state;
    for (int i = 0; i <= 10; ++i)
        state.ScaleLabels[i] = state.ScaleLabels2[i] = QString::number(-25000 + 5000 * i);
    DrawGraphLabels(*labels, *graph, state);

    const QImage& image = labels->image();
    const QRgb back = labels->BackColor().rgb();
    const QRect graphArea(kGraphOrigin, kGraphSize);
    auto inked = [&](const QRect& area) {
        int count = 0;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x) count += image.pixel(x, y) != back;
        return count;
    };
    EXPECT_EQ(inked(graphArea), 0);
    // Labels level with the top grid line on both sides, and the sample axis below.
    const int topLine = kGraphOrigin.y() + 4;
    EXPECT_GT(inked(QRect(0, topLine - 3, graphArea.left(), 7)), 0);
    EXPECT_GT(inked(QRect(graphArea.right() + 1, topLine - 3, 60, 7)), 0);
    EXPECT_GT(inked(QRect(graphArea.left(), graphArea.bottom() + 1, graphArea.width(), 12)), 0);
    // Everything fits: nothing touches the strip's bottom rows.
    EXPECT_EQ(inked(QRect(0, image.height() - 3, image.width(), 3)), 0);
}

class TraceTest : public ::testing::Test {
protected:
    void SetUp() override {
        graph.reset(MakeGraphPicture(nullptr));
        DrawGrid(*graph);
        ModWaveform_ALS::SaveGraphBackground(*graph, state);
    }

    // One collection pass with the trace spanning the graph.
    void Step(int row, int start = 1) {
        state.TracePixels[kTraceNewest] = row;
        ModWaveform_ALS::ScrollTrace(*graph, state, start);
    }

    const QImage& image() const { return graph->image(); }
    const QImage& background() const { return state.GraphBackground; }

    std::unique_ptr<PictureBox> graph;
    PlotState state;
};

TEST_F(TraceTest, RestoreBringsBackTheSavedBackground) {
    for (int k = 0; k < 5; ++k) Step(50 + 40 * k);
    graph->SetPixel(0, 0, Qt::green);
    ASSERT_NE(image(), background());
    ModWaveform_ALS::RestoreGraphBackground(*graph, state);
    EXPECT_EQ(image(), background());

    // After "Save Screen" the trace is part of what gets restored.
    Step(150);
    const QImage withTrace = image().copy();
    ModWaveform_ALS::SaveGraphBackground(*graph, state);
    graph->Cls();
    ModWaveform_ALS::RestoreGraphBackground(*graph, state);
    EXPECT_EQ(image(), withTrace);
}

TEST_F(TraceTest, NewestPointEntersAtTheRightAndJoinsUpToRowOne) {
    Step(100, 403);
    EXPECT_EQ(RowsOfColour(image(), 402, kRed), Range(1, 101));
    EXPECT_TRUE(SameColumn(image(), background(), 401));
    EXPECT_EQ(state.TracePixels[402], 100);

    Step(200, 402);
    // Column 401 now holds the first point, joined down to the second.
    EXPECT_EQ(RowsOfColour(image(), 401, kRed), Range(99, 200));
    EXPECT_EQ(RowsOfColour(image(), 402, kRed), Range(1, 201));
    EXPECT_TRUE(SameColumn(image(), background(), 400));
    EXPECT_EQ(state.TracePixels[401], 100);
    EXPECT_EQ(state.TracePixels[402], 200);
    EXPECT_EQ(state.TracePixels[404], 1);
}

TEST_F(TraceTest, ScrollingErasesWhatAColumnShowedBefore) {
    for (int k = 0; k < 404; ++k) Step(150);
    EXPECT_EQ(RowsOfColour(image(), 0, kRed), Range(149, 151));
    EXPECT_EQ(RowsOfColour(image(), 402, kRed), Range(1, 151));

    Step(50);
    EXPECT_EQ(RowsOfColour(image(), 401, kRed), Range(50, 151));
    Step(50);
    // The stroke down to 150 has moved on to column 400; 401 keeps only its dot, the rest
    // of the column is grid again.
    EXPECT_EQ(RowsOfColour(image(), 400, kRed), Range(50, 151));
    EXPECT_EQ(RowsOfColour(image(), 401, kRed), Range(49, 51));
    for (int y = 0; y < image().height(); ++y) {
        if (y >= 49 && y <= 51) continue;
        EXPECT_EQ(image().pixel(401, y), background().pixel(401, y)) << y;
    }
    EXPECT_EQ(RowsOfColour(image(), 402, kRed), Range(1, 51));
    EXPECT_TRUE(SameColumn(image(), background(), 403));
}

TEST_F(TraceTest, RowsAtTheEdgesStayInsideThePicture) {
    Step(304);
    Step(1);
    Step(0);  // a zero row is drawn as row 1
    EXPECT_EQ(RowsOfColour(image(), 400, kRed), Range(1, 304));
    EXPECT_EQ(state.TracePixels[401], 1);
    EXPECT_EQ(RowsOfColour(image(), 401, kRed), Range(0, 2));
}

// Steps drawn a frame at a time leave the picture a step on every pass leaves, from the first
// column entering at the right to a full trace: random rows (off the picture and 0 included),
// range marks, a "Save Screen" in the middle, frames from one step to twelve.
TEST_F(TraceTest, StepsDrawnAFrameAtATimeLeaveTheSamePicture) {
    std::unique_ptr<PictureBox> framed(MakeGraphPicture(nullptr));
    DrawGrid(*framed);
    PlotState byFrame = state;
    std::mt19937 rng(7);
    int start = kTraceNewest, lastStart = start, untilFrame = 1;
    for (int pass = 0; pass < 900; ++pass) {
        const int row = std::uniform_int_distribution<int>(-20, 330)(rng);
        const bool mark = rng() % 23 == 0;
        for (PlotState* p : {&state, &byFrame}) {
            p->TracePixels[kTraceNewest] = pass % 97 == 5 ? 0 : row;
            p->TraceMarks[kTraceNewest] = mark;
        }
        // Drawn after the next reading came in but before its step (a run's end, a window
        // hidden): the picture is still that of the last step.
        if (rng() % 9 == 0 && pass > 0) {
            ModWaveform_ALS::DrawTrace(*framed, byFrame, byFrame.TracePixels, lastStart, true);
            ASSERT_EQ(framed->image(), image()) << "before pass " << pass;
        }
        ModWaveform_ALS::ScrollTrace(*graph, state, start, true);
        ModWaveform_ALS::ShiftTrace(byFrame.TracePixels, byFrame, start, true);
        lastStart = start;
        if (--untilFrame == 0 || pass == 899) {
            ModWaveform_ALS::DrawTrace(*framed, byFrame, byFrame.TracePixels, start, true);
            ASSERT_EQ(framed->image(), image()) << "pass " << pass;
            untilFrame = 1 + int(rng() % 12);
        }
        if (pass == 450) {  // drawn up to date first, as "Save Screen" does
            ModWaveform_ALS::DrawTrace(*framed, byFrame, byFrame.TracePixels, start, true);
            ModWaveform_ALS::SaveGraphBackground(*graph, state);
            ModWaveform_ALS::SaveGraphBackground(*framed, byFrame);
        }
        if (start > 1) --start;
    }
    EXPECT_EQ(byFrame.TracePixels, state.TracePixels);
    EXPECT_EQ(byFrame.TraceMarks, state.TraceMarks);
}

TEST_F(TraceTest, SecondTraceHasItsOwnRowsAndColourAndLateStartsOnlyRepaint) {
    state.TraceColour = QColor(0, 0, 255);
    state.TracePixels2[kTraceNewest] = 60;
    ModWaveform_ALS::ScrollTrace2(*graph, state, 404);
    EXPECT_EQ(image(), background());
    ModWaveform_ALS::ScrollTrace2(*graph, state, 403);
    EXPECT_EQ(state.TracePixels2[402], 60);
    EXPECT_EQ(state.TracePixels[402], 1);
    EXPECT_EQ(RowsOfColour(image(), 402, kBlue), Range(1, 61));
}

TEST_F(TraceTest, StaircaseTestTrace) {
    const TraceRows rows = ModWaveform_ALS::StaircaseRows();
    EXPECT_EQ(rows[49], 274);
    EXPECT_EQ(rows[50], 243);
    EXPECT_EQ(rows[399], 61);
    EXPECT_EQ(rows[400], 1);
    ModWaveform_ALS::PlotDots(*graph, rows);
    EXPECT_EQ(RowsOfColour(image(), 0, kRed), Range(273, 275));
    EXPECT_EQ(RowsOfColour(image(), 404, kRed), Range(0, 2));
}

}  // namespace
}  // namespace lxm
