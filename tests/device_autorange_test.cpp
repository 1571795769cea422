// "Auto Range" on the family form: a step is the range option's own click, logged, counted and
// marked on the graph, and the early reading it leaves keeps the old range's lux.
#include <QCheckBox>
#include <QLabel>
#include <QTemporaryDir>

#include "acquisition/PictureBox.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"
#include "support/Files.h"

namespace lxm::test {
namespace {

TEST_F(FormFixture, AutoRangeStepIsTheRangeOptionsClickLoggedCountedAndMarked) {
    QTemporaryDir dir;
    Measure(5);  // "ALS Cont."
    scene().ambientLux = 800;
    form->frmDataRecord->SetLogFile(dir.filePath(QStringLiteral("run.csv")), true);
    form->frmDataRecord->chkLogAll->setChecked(true);
    form->chkAutoRange->setChecked(true);
    // The light goes above the 1000 lux range once the graph draws.
    Collect([&](int n) {
        if (n == 12) scene().ambientLux = 3000;
        clock.AdvanceMs(10);
        return n < 20;
    });
    EXPECT_TRUE(form->OptGain.at(1)->isChecked());
    EXPECT_EQ(chip(1) & 0x03, 0x01) << "the chip is at 4000 lux";
    EXPECT_EQ(form->chart().txtScale->text(), QStringLiteral("4000"));
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains(QStringLiteral("1 range step")));
    const QString log = QString::fromUtf8(ReadFile(dir.filePath(QStringLiteral("run.csv"))));
    EXPECT_TRUE(log.contains(QRegularExpression(
        QStringLiteral(",saturated\r\n# register 1: 45\r\n# range: 4000 lux\r\n[^\r]*,999.75[0-9]*,lux,early\r\n"
                       "[^\r]*,(2999|300[0-2])[.0-9]*,lux,ok\r\n"))))
        << log.toStdString();
    // One mark, scrolled with the trace: a grey line the height of the graph.
    const auto& marks = form->plot.TraceMarks;
    ASSERT_EQ(std::count(marks.begin(), marks.end(), 1), 1);
    const int x = int(std::find(marks.begin(), marks.end(), 1) - marks.begin());
    EXPECT_EQ(form->chart().Picture1->image().pixel(x, 1), qRgb(150, 150, 150));
}

}  // namespace
}  // namespace lxm::test
