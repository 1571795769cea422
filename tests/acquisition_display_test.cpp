// The strip chart shown larger than its own pixels: the scale steps, sharp blocks, and the
// labels and graph staying together.
#include <gtest/gtest.h>
#include <QImage>
#include <QPixmap>
#include <QSignalSpy>

#include <memory>
#include <vector>

#include "acquisition/GraphDrawing.h"
#include "acquisition/PictureBox.h"

namespace lxm {
namespace {

TEST(FitScale, HalfStepsAboveOneAndAnyFractionBelow) {
    const QSize strip(525, 380);
    EXPECT_EQ(FitScale(strip, QSizeF(525, 380), 1.0), 1.0);
    EXPECT_EQ(FitScale(strip, QSizeF(700, 380), 1.0), 1.0) << "the height limits";
    EXPECT_EQ(FitScale(strip, QSizeF(800, 580), 1.0), 1.5);
    EXPECT_EQ(FitScale(strip, QSizeF(1049, 759), 1.0), 1.5) << "one pixel short of 2";
    EXPECT_EQ(FitScale(strip, QSizeF(1050, 760), 1.0), 2.0);
    // A screen at 125 %: 420 logical pixels are 525 device pixels.
    EXPECT_EQ(FitScale(strip, QSizeF(420, 304), 1.25), 1.0);
    EXPECT_EQ(FitScale(strip, QSizeF(640, 470), 1.25), 1.5);
    // Too little room shrinks the picture rather than cutting it.
    EXPECT_DOUBLE_EQ(FitScale(strip, QSizeF(262.5, 380), 1.0), 0.5);
    EXPECT_EQ(FitScale(strip, QSizeF(), 1.0), 1.0);
}

class ScaledChart : public ::testing::Test {
protected:
    void SetUp() override {
        labels.reset(MakeLabelPicture(nullptr));
        graph = MakeGraphPicture(labels.get());
        PlaceGraph(*labels, *graph);
        labels->SetFitToWidget(true);
        labels->resize(kLabelStripSize);
        labels->show();  // a hidden window hears of its size only when shown
    }
    std::unique_ptr<PictureBox> labels;
    PictureBox* graph = nullptr;
};

TEST_F(ScaledChart, GrowsInStepsAndKeepsTheGraphInItsPlace) {
    QSignalSpy rescaled(labels.get(), &PictureBox::Rescaled);
    EXPECT_EQ(labels->DisplayScale(), 1.0);
    EXPECT_EQ(graph->pos(), kGraphOrigin);

    const QSize twice = kLabelStripSize * 2;
    labels->resize(twice + QSize(50, 40));  // fits 2, centred across, at the top
    EXPECT_EQ(labels->DisplayScale(), 2.0);
    EXPECT_EQ(rescaled.count(), 1);
    EXPECT_EQ(graph->DisplayScale(), 2.0);
    EXPECT_EQ(graph->size(), kGraphSize * 2);
    const QPoint corner(25, 0);
    EXPECT_EQ(labels->DisplayRect().topLeft().toPoint(), corner);
    EXPECT_EQ(graph->pos(), corner + kGraphOrigin * 2);
    // Text is drawn at the shown resolution; the picture keeps its own units.
    EXPECT_EQ(labels->image().size(), kLabelStripSize * 2);
    EXPECT_EQ(labels->ScaleWidth(), kLabelStripSize.width());

    labels->resize(twice + QSize(60, 40));  // same scale: only the place moves
    EXPECT_EQ(rescaled.count(), 1);
    EXPECT_EQ(graph->pos(), QPoint(30, 0) + kGraphOrigin * 2);
}

TEST_F(ScaledChart, EachGraphPixelIsAnUnsmoothedBlock) {
    labels->resize(kLabelStripSize * 2);
    ASSERT_EQ(graph->DisplayScale(), 2.0);
    graph->SetPixel(100, 50, Qt::red);
    graph->SetPixel(101, 50, Qt::blue);
    graph->Refresh();
    const QImage shown = graph->grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(shown.size(), kGraphSize * 2);
    for (int dy = 0; dy < 2; ++dy) {
        for (int dx = 0; dx < 2; ++dx) {
            EXPECT_EQ(shown.pixel(200 + dx, 100 + dy), qRgb(255, 0, 0));
            EXPECT_EQ(shown.pixel(202 + dx, 100 + dy), qRgb(0, 0, 255));
        }
    }
    EXPECT_EQ(shown.pixel(199, 100), qRgb(255, 255, 255)) << "no colour bleeds into a neighbour";
    EXPECT_EQ(shown.pixel(200, 102), qRgb(255, 255, 255));
}

TEST_F(ScaledChart, AtAHalfStepEveryGridLineIsEquallyWideAndSharp) {
    labels->resize(kLabelStripSize * 1.5 + QSize(10, 10));
    ASSERT_EQ(graph->DisplayScale(), 1.5);
    DrawGrid(*graph);
    graph->Refresh();
    const QImage shown = graph->grab().toImage().convertToFormat(QImage::Format_RGB32);
    // Runs of black along a row between two horizontal lines, and down a column between two
    // vertical ones; anything but black or white would be smoothing.
    auto runs = [&](bool alongRow, int at) {
        std::vector<int> widths;
        const int n = alongRow ? shown.width() : shown.height();
        int run = 0;
        for (int i = 0; i < n; ++i) {
            const QRgb p = alongRow ? shown.pixel(i, at) : shown.pixel(at, i);
            EXPECT_TRUE(p == qRgb(0, 0, 0) || p == qRgb(255, 255, 255)) << i;
            if (p == qRgb(0, 0, 0)) {
                ++run;
            } else if (run) {
                widths.push_back(run);
                run = 0;
            }
        }
        if (run) widths.push_back(run);
        return widths;
    };
    const std::vector<int> columns = runs(true, int(20 * 1.5));
    ASSERT_EQ(columns.size(), 10u);
    for (int w : columns) EXPECT_EQ(w, columns.front());
    const std::vector<int> rows = runs(false, int(20 * 1.5));
    ASSERT_EQ(rows.size(), 11u);
    for (int w : rows) EXPECT_EQ(w, rows.front());
}

TEST_F(ScaledChart, ALabelPixelPaintedAtTwiceTheSizeIsABlockOfTheLabelColour) {
    labels->resize(kLabelStripSize * 2);
    labels->SetPixel(3, 3, Qt::black);
    EXPECT_EQ(labels->Pixel(3, 3), QColor(Qt::black));
    EXPECT_EQ(labels->image().pixel(7, 7), qRgb(0, 0, 0));
    EXPECT_NE(labels->image().pixel(8, 8), qRgb(0, 0, 0));
    // Repainting what changed covers the whole block on screen.
    EXPECT_EQ(labels->ToWidget(QRect(3, 3, 1, 1)), QRect(6, 6, 2, 2));
}

TEST(PictureBox, AFixedPictureTakesTheSizeItsScaleNeeds) {
    PictureBox picture(QSize(20, 10));
    picture.SetDisplayScale(1.5);
    EXPECT_EQ(picture.size(), QSize(30, 15));
    EXPECT_EQ(picture.ScaleWidth(), 20);
    EXPECT_EQ(picture.image().size(), QSize(20, 10)) << "a pixel picture keeps its pixels";
}

}  // namespace
}  // namespace lxm
