// The auto-range of a collection on the core, end to end on the simulated board: a light that
// sweeps from 10 to 50000 lux and back is followed through every range and logged truthfully.
#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/HeadlessCollect.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "support/FakeClock.h"

namespace lxm::test {
namespace {

TEST(AutoRangeCollect, FollowsARampThroughEveryRangeWithoutSaturatingOrJumping) {
    FakeClock clock;
    sim::SimBoard board{clock};
    sim::SimDriver driver{board};
    sim::LightScene& scene = board.scene();
    scene.kind = sim::LightScene::Kind::Ramp;
    scene.ambientLux = 10;
    scene.periodS = 20;
    // Daylight does not flicker, so what is left between passes is the chip's noise.
    scene.source = sim::Source::Daylight;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("run.csv"));
    const CommandLine cl = ParseCommandLine({"--collect", "als-cont", "--auto-range", "--duration", "40",
                                             "--output", path.toStdString()});
    ASSERT_EQ(cl.error, "");
    std::FILE* err = std::tmpfile();
    ASSERT_EQ(RunCollectHeadless(cl, driver, clock, err, false), 0);
    std::fclose(err);

    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    QStringList ranges;
    int saturated = 0, early = 0, rows = 0;
    double before = NAN;  // the last ok reading before the latest step
    bool stepped = false;
    for (const QByteArray& raw : f.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QStringLiteral("# range: "))) {
            ranges << line.mid(9);
            stepped = ranges.size() > 1;
            continue;
        }
        const QStringList cols = line.split(QLatin1Char(','));
        if (cols.size() < 7 || cols[2] == QStringLiteral("sample")) continue;
        ++rows;
        const QString status = cols[6];
        saturated += status == QStringLiteral("saturated");
        early += status == QStringLiteral("early");
        if (status != QStringLiteral("ok") && status != QStringLiteral("early")) continue;
        const double lux = cols[4].toDouble();
        // The readings up to the first ok one under a new range are within the noise of the last
        // one under the old: the light moves 1 % in the passes between, the noise and a count at
        // 5 % of the scale 1 % more. The early one holds the old range's conversion.
        if (stepped && std::isfinite(before)) {
            EXPECT_NEAR(lux / before, 1.0, 0.025) << "at " << ranges.last().toStdString() << ", row " << rows;
        }
        if (status == QStringLiteral("ok")) stepped = false, before = lux;
    }
    const QStringList expected{"1000 lux", "4000 lux", "16000 lux", "64000 lux",
                               "16000 lux", "4000 lux", "1000 lux"};
    EXPECT_EQ(ranges, expected);
    EXPECT_EQ(saturated, 0);
    // Only the reading of the conversion each step cut short.
    EXPECT_EQ(early, 1 + 6);
    EXPECT_GT(rows, 3000);
}

}  // namespace
}  // namespace lxm::test
