// The auto-range: no hunting at any boundary of either chip's ranges, and collections that
// follow a ramp of light through every range without saturating or jumping, logged truthfully.
#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

#include "acquisition/AutoRange.h"
#include "acquisition/SensorFields.h"
#include "app/HeadlessCollect.h"
#include "simboard/SimDriver.h"
#include "support/FakeClock.h"

namespace lxm::test {
namespace {

// A steady light just either side of each threshold of each pair of neighbouring ranges, on a
// noise-free chip whose reading right after a step is the old range's, early: one step at most.
TEST(AutoRangeDecision, SteadyLightAtEveryBoundaryStepsOnceAtMost) {
    for (const std::span<const std::int32_t> ranges : {std::span<const std::int32_t>(kFamilyRangesLux),
                                                      std::span<const std::int32_t>(kLxm600RangesLux)})
        for (int lo = 0; lo < int(ranges.size()); ++lo) {
            const auto hi = AutoRange(ranges).Neighbour(lo, true);
            if (!hi) continue;
            const double up = AutoRange::kUpFraction * ranges[std::size_t(lo)];
            const double down = AutoRange::kDownFraction * ranges[std::size_t(*hi)];
            for (const double lux : {up * 0.999, up * 1.001, down * 0.999, down * 1.001})
                for (const int start : {lo, *hi}) {
                    AutoRange a(ranges);
                    int range = start, steps = 0;
                    std::int64_t count = 0;
                    for (int n = 0, early = 0; n < 30; ++n) {
                        if (!early) count = std::min(std::int64_t{4095}, std::int64_t(lux / ranges[std::size_t(range)] * 4096));
                        const auto to = a.Next(count, 4095, early ? SampleStatus::Early : SampleStatus::Ok, range);
                        early = to.has_value();
                        if (to) range = *to, ++steps;
                    }
                    EXPECT_LE(steps, 1) << ranges[std::size_t(lo)] << " at " << lux << " lux from " << start;
                    EXPECT_LT(lux, AutoRange::kUpFraction * ranges[std::size_t(range)]) << lux << " lux";
                }
        }
}

// Daylight does not flicker, so what moves a reading between passes is the chip's noise, a count
// and the ramp (1 % between the last reading under the old range and the first whole one under
// the new, the multi-function chip's passes being ten times as long as the family's).
TEST(AutoRangeCollect, FollowsARampThroughEveryRangeWithoutSaturatingOrJumping) {
    struct Case {
        const char* sensor;
        double topLux, periodS;
        QStringList ranges;
    };
    const Case cases[] = {{"LXM410", 50000, 20, {"1000", "4000", "16000", "64000", "16000", "4000", "1000"}},
                          {"LXM600", 1800, 60, {"125", "2000", "125"}}};
    for (const Case& c : cases) {
        FakeClock clock;
        sim::SimBoard board{clock};
        sim::SimDriver driver{board};
        if (c.sensor == std::string("LXM600")) board.Carry(sim::Chip::Lxm600);
        board.scene() = {.kind = sim::LightScene::Kind::Ramp, .ambientLux = 10, .periodS = c.periodS,
                         .rampToLux = c.topLux, .source = sim::Source::Daylight};
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("run.csv"));
        const CommandLine cl =
            ParseCommandLine({"--collect", "als-cont", "--sensor", c.sensor, "--auto-range", "--range",
                              c.ranges[0].toStdString(), "--duration", std::to_string(2 * c.periodS), "--output",
                              path.toStdString()});
        std::FILE* err = std::tmpfile();
        ASSERT_EQ(RunCollectHeadless(cl, driver, clock, err, false), 0) << c.sensor;
        std::fclose(err);
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        QStringList ranges, status;
        bool stepped = false;
        double before = 0;  // the last ok reading
        for (const QString& line : QString::fromUtf8(f.readAll()).split(QStringLiteral("\r\n"))) {
            const QStringList cols = line.split(QLatin1Char(','));
            if (line.startsWith(QStringLiteral("# range: "))) ranges << line.mid(9).chopped(4), stepped = !status.isEmpty();
            if (cols.size() < 7 || cols[2] == QStringLiteral("sample")) continue;
            status << cols[6];
            // The early reading holds the conversion the step cut short, at the old range's lux.
            if (stepped) {
                const double count = std::max(ranges.end()[-1].toDouble(), ranges.end()[-2].toDouble()) / 4096;
                EXPECT_NEAR(cols[4].toDouble(), before, 0.02 * before + count) << c.sensor << ": " << line.toStdString();
            }
            if (cols[6] == QStringLiteral("ok")) stepped = false, before = cols[4].toDouble();
        }
        EXPECT_EQ(ranges, c.ranges) << c.sensor;
        EXPECT_EQ(status.count(QStringLiteral("saturated")), 0) << c.sensor;
        // After the first reading, only those of the conversions the steps cut short are early.
        EXPECT_EQ(status.mid(1).count(QStringLiteral("early")), ranges.size() - 1) << c.sensor;
        EXPECT_GT(status.size(), 700) << c.sensor;
    }
}

}  // namespace
}  // namespace lxm::test
