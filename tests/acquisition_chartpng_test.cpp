// The strip chart saved as a PNG file and read back.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <memory>

#include "acquisition/ChartPicture.h"
#include "acquisition/GraphDrawing.h"

namespace lxm {
namespace {

// Pixels that differ between two images, or -1 when their sizes differ.
int Differences(const QImage& a, const QImage& b) {
    if (a.size() != b.size()) return -1;
    int n = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) n += a.pixel(x, y) != b.pixel(x, y);
    return n;
}

class ChartPng : public ::testing::Test {
protected:
    void SetUp() override {
        labels.reset(MakeLabelPicture(nullptr));
        graph.reset(MakeGraphPicture(nullptr));
        DrawGrid(*graph);
        PlotState state;
        for (int i = 0; i <= 10; ++i) state.ScaleLabels[i] = state.ScaleLabels2[i] = QString::number(100 * i);
        DrawGraphLabels(*labels, *graph, state);
        for (int x = 0; x < 403; ++x) graph->SetPixel(x, 150 + x % 40, QColor(255, 0, 0));
    }
    std::unique_ptr<PictureBox> labels, graph;
    QTemporaryDir dir;
};

TEST_F(ChartPng, ReadsBackPixelForPixel) {
    const QString path = dir.filePath("chart.png");
    ASSERT_EQ(SavePng(graph->image(), path), "");
    const QImage back(path);
    ASSERT_FALSE(back.isNull());
    EXPECT_EQ(Differences(back.convertToFormat(QImage::Format_RGB32), graph->image()), 0);

    // The whole chart: the graph at its place in the label strip, the labels around it.
    const QImage chart = ChartPicture(*labels, *graph);
    ASSERT_EQ(chart.size(), kLabelStripSize);
    EXPECT_EQ(Differences(chart.copy(QRect(kGraphOrigin, kGraphSize)), graph->image()), 0);
    EXPECT_EQ(chart.pixel(kGraphOrigin + QPoint(0, 150)), qRgb(255, 0, 0));
    EXPECT_EQ(Differences(chart.copy(0, 0, kGraphOrigin.x(), kLabelStripSize.height()),
                          labels->image().copy(0, 0, kGraphOrigin.x(), kLabelStripSize.height())),
              0);
    ASSERT_EQ(SavePng(chart, path), "") << "an existing file is replaced";
    EXPECT_EQ(Differences(QImage(path).convertToFormat(QImage::Format_RGB32), chart), 0);
}

TEST_F(ChartPng, AFailureNamesTheReasonAndKeepsTheOldFile) {
    EXPECT_EQ(SavePng(graph->image(), dir.filePath("missing/chart.png")), "No such file or directory");
    EXPECT_EQ(SavePng(graph->image(), dir.path()), "Is a directory");
    EXPECT_NE(SavePng(QImage(), dir.filePath("empty.png")), "");
    EXPECT_FALSE(QFile::exists(dir.filePath("empty.png")));

    const QString path = dir.filePath("old.png");
    ASSERT_EQ(SavePng(graph->image(), path), "");
    const QImage before(path);
    EXPECT_NE(SavePng(QImage(), path), "");
    EXPECT_EQ(Differences(QImage(path), before), 0);
}

}  // namespace
}  // namespace lxm
