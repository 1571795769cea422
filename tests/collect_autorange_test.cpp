// Auto-range: no hunting at range boundaries, ramps followed, a form's step as the option's click.
#include <QCheckBox>
#include <QLabel>
#include <QTemporaryDir>
#include "acquisition/PictureBox.h"
#include "acquisition/SensorFields.h"
#include "app/CoreCollect.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"
#include "support/Files.h"

namespace lxm::test {
namespace {

// A steady light just either side of each threshold of each pair of neighbouring ranges, on a
// noise-free chip whose reading right after a step is the old range's, early: one step at most.
TEST(AutoRangeDecision, SteadyLightAtEveryBoundaryStepsOnceAtMost) {
    using enum SampleStatus;
    for (const std::span<const std::int32_t> ranges :
         {std::span<const std::int32_t>(kFamilyRangesLux), std::span<const std::int32_t>(kLxm600RangesLux)})
        for (int lo = 0; lo < int(ranges.size()); ++lo) {
            const auto hi = AutoRange(ranges).Neighbour(lo, true);
            if (!hi) continue;
            const double up = AutoRange::kUpFraction * ranges[std::size_t(lo)];
            const double down = AutoRange::kDownFraction * ranges[std::size_t(*hi)];
            for (const double lux : {up * 0.999, up * 1.001, down * 0.999, down * 1.001})
                for (int range : {lo, *hi}) {
                    AutoRange a(ranges);
                    std::int64_t count = 0, steps = 0;
                    for (int n = 0, early = 0; n < 30; ++n) {
                        if (!early) count = std::int64_t(lux / a.lux(range) * 4096);
                        const auto to = a.Next(count, 4095, early ? Early : Ok, range);
                        if ((early = to.has_value())) range = *to, ++steps;
                    }
                    EXPECT_TRUE(steps <= 1 && lux < AutoRange::kUpFraction * a.lux(range)) << lux;
                }
        }
}

// Daylight does not flicker: between the last reading under the old range and the first whole one
// under the new, the noise, a count and the ramp (1 %, the LXM600's passes being longer) move it.
TEST(AutoRangeCollect, FollowsARampThroughEveryRangeWithoutSaturatingOrJumping) {
    struct Case {
        const char* sensor;
        double topLux, periodS;
        QStringList ranges;
    } const cases[] = {{"LXM410", 50000, 20, {"1000", "4000", "16000", "64000", "16000", "4000", "1000"}},
                       {"LXM600", 1800, 60, {"125", "2000", "125"}}};
    for (const Case& c : cases) {
        BoardFixture f;
        if (c.sensor == std::string("LXM600")) f.board.Carry(sim::Chip::Lxm600);
        auto& s = f.board.scene();
        s.kind = sim::LightScene::Kind::Ramp, s.periodS = c.periodS, s.rampToLux = c.topLux;
        s.ambientLux = 10, s.ideal = false, s.source = sim::Source::Daylight;
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("run.csv"));
        const CommandLine cl =
            ParseCommandLine({"--collect", "als-cont", "--sensor", c.sensor, "--auto-range", "--range",
                              c.ranges[0].toStdString(), "--duration", std::to_string(2 * c.periodS),
                              "--output", path.toStdString()});
        ASSERT_EQ(RunCollectOnCore(cl, f.driver, f.clock, stderr, false), 0);
        QStringList ranges, status;
        bool stepped = false;
        double before = 0;  // the last ok reading
        for (const QString& line : QString::fromUtf8(ReadFile(path)).split(QStringLiteral("\r\n"))) {
            const QStringList cols = line.split(QLatin1Char(','));
            if (line.startsWith(u"# range: ")) ranges << line.mid(9).chopped(4), stepped = !status.isEmpty();
            if (cols.size() < 7 || cols[2] == u"sample") continue;
            status << cols[6];
            // The early reading holds the conversion the step cut short, at the old range's lux.
            const double lux = cols[4].toDouble();
            EXPECT_TRUE(!stepped || std::abs(lux - before) <= 0.025 * before) << line.toStdString();
            if (cols[6] == u"ok") stepped = false, before = lux;
        }
        EXPECT_EQ(ranges, c.ranges);
        EXPECT_EQ(status.count(QStringLiteral("saturated")), 0);
        // After the first reading, only those of the conversions the steps cut short are early;
        // the LXM600's next read comes after its 25 ms conversion under the new range.
        EXPECT_EQ(status.mid(1).count(QStringLiteral("early")), c.sensor == std::string("LXM600") ? 0 : ranges.size() - 1);
    }
}

TEST_F(FormFixture, AutoRangeStepIsTheRangeOptionsClickLoggedCountedAndMarked) {
    QTemporaryDir dir;
    Measure(5);  // "ALS Cont."
    scene().ambientLux = 800;
    form->frmDataRecord->SetLogFile(dir.filePath(QStringLiteral("run.csv")), true);
    form->frmDataRecord->chkLogAll->setChecked(true);
    form->chkAutoRange->setChecked(true);
    Collect([&](int n) {
        if (n == 12) scene().ambientLux = 3000;  // above the 1000 lux range, once the graph draws
        clock.AdvanceMs(10);
        return n < 20;
    });
    EXPECT_TRUE(form->OptGain.at(1)->isChecked());
    EXPECT_EQ(chip(1) & 0x03, 0x01) << "the chip is at 4000 lux";
    EXPECT_EQ(form->chart().txtScale->text(), QStringLiteral("4000"));
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains(QStringLiteral("1 range step")));
    EXPECT_TRUE(
        QString::fromUtf8(ReadFile(dir.filePath(QStringLiteral("run.csv"))))
            .contains(QRegularExpression(QStringLiteral(
                ",saturated\r\n# register 1: 45\r\n# range: 4000 lux\r\n[^\r]*,999.75[0-9]*,lux,early\r\n"
                "[^\r]*,(2999|300[0-2])[.0-9]*,lux,ok\r\n"))));
    const auto& marks = form->plot.TraceMarks;
    const int x = int(std::find(marks.begin(), marks.end(), 1) - marks.begin());
    EXPECT_EQ(std::count(marks.begin(), marks.end(), 1), 1);
    EXPECT_EQ(form->chart().Picture1->image().pixel(x, 1), qRgb(150, 150, 150)) << "a grey line, scrolled";
}

}  // namespace
}  // namespace lxm::test
