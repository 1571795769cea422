// "Auto Range" on the device forms: a step is the range option's own click, logged, counted and
// marked on the graph, and the lux stay right across it.
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTemporaryDir>

#include <algorithm>

#include "acquisition/PictureBox.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"
#include "support/Files.h"

namespace lxm::test {
namespace {

using AutoRangeForm = FormFixture;

TEST_F(AutoRangeForm, AStepIsTheRangeOptionsClickLoggedCountedAndMarked) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("run.csv"));
    Measure(5);  // "ALS Cont."
    scene().ambientLux = 800;
    Settle();
    form->frmDataRecord->SetLogFile(path, true);
    form->frmDataRecord->chkLogAll->setChecked(true);
    form->chkAutoRange->setChecked(true);
    // Past the passes the graph leaves out, the light goes above the 1000 lux range.
    Collect([&](int n) {
        if (n == 12) scene().ambientLux = 3000;
        clock.AdvanceMs(10);
        return n < 20;
    });

    EXPECT_TRUE(form->OptGain.at(1)->isChecked());
    EXPECT_EQ(form->RangeIndex, 1);
    EXPECT_EQ(chip(1) & 0x03, 0x01) << "the chip is at 4000 lux";
    EXPECT_EQ(form->chart().txtScale->text(), QStringLiteral("4000"));
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains(QStringLiteral("1 range step")));

    const QStringList log = QString::fromUtf8(ReadFile(path)).split(QStringLiteral("\r\n"));
    const auto step = std::find(log.begin(), log.end(), QStringLiteral("# range: 4000 lux"));
    ASSERT_NE(step, log.end()) << log.join('\n').toStdString();
    // The row that called for the step, the one read before a conversion under the new range
    // could end (still the old range's, so its lux are the old conversion's), then the light.
    EXPECT_TRUE(step[-2].endsWith(QStringLiteral(",saturated"))) << step[-2].toStdString();
    EXPECT_TRUE(step[1].endsWith(QStringLiteral(",early"))) << step[1].toStdString();
    EXPECT_NEAR(step[1].split(',')[4].toDouble(), 1000, 1);
    EXPECT_NEAR(step[2].split(',')[4].toDouble(), 3000, 3) << step[2].toStdString();

    // One mark, scrolled with the trace: a grey line the height of the graph.
    const auto& marks = form->plot.TraceMarks;
    ASSERT_EQ(std::count(marks.begin(), marks.end(), 1), 1);
    const int x = int(std::find(marks.begin(), marks.end(), 1) - marks.begin());
    EXPECT_EQ(form->chart().Picture1->image().pixel(x, 1), qRgb(150, 150, 150));
}

// The multi-function form converts at one range whatever its option says; with Auto Range
// checked its lux follow the range the chip is set to, which is the one it steps.
TEST_F(Lxm600FormFixture, AutoRangeConvertsAtTheRangeItSteps) {
    board.scene().ambientLux = 1000;  // the form starts on "125 Lux"
    form->OptMMode.at(0)->setChecked(true);
    form->OptMMode_Click(0);
    form->chkALSEnable->setChecked(true);
    form->chkALSEnable_Click();
    form->OptGraph.at(1)->setChecked(true);
    form->OptGraph_Click(1);
    form->chkAutoRange->setChecked(true);
    int passes = 0;
    form->collection().onPass = [&] {
        clock.AdvanceMs(50);
        if (++passes == 8) form->cmdStopData_Click();
    };
    form->cmdCollectData_Click();
    EXPECT_TRUE(form->OptALSRange.at(0)->isChecked());
    EXPECT_EQ(chip(1) & 0x02, 0x02) << "the chip is at 2000 lux";
    EXPECT_EQ(form->collection().PassStatus, SampleStatus::Ok);
    EXPECT_NEAR(form->collection().LatestReading, 1000, 1);
}

}  // namespace
}  // namespace lxm::test
