// When the auto-range steps: thresholds, the run of low readings, readings that decide nothing,
// and steady light at every boundary of both chips' ranges never stepping back and forth.
#include <gtest/gtest.h>

#include <cmath>

#include "acquisition/AutoRange.h"
#include "acquisition/SensorFields.h"

namespace lxm {
namespace {

constexpr std::int64_t kFull = 4095;

TEST(AutoRange, OneReadingStepsUpAtNinetyPercentOrSaturatedOnly) {
    struct Case {
        bool family;
        int index;
        std::int64_t count;
        SampleStatus status;
        std::optional<int> to;
    };
    const Case cases[] = {
        {true, 0, 3686, SampleStatus::Ok, 1},         // 90.01 %
        {true, 0, 3685, SampleStatus::Ok, {}},        // 89.99 %
        {true, 2, 4095, SampleStatus::Saturated, 3},
        {true, 3, 4095, SampleStatus::Saturated, {}},  // nowhere higher to go
        {true, 1, 4095, SampleStatus::Early, {}},      // the conversion before the step
        {true, 1, 0, SampleStatus::Failed, {}},
        {false, 1, 3900, SampleStatus::Ok, 0},         // the multi-function chip lists 2000 before 125
        {false, 0, 3900, SampleStatus::Ok, {}},
    };
    for (const Case& c : cases) {
        AutoRange a(c.family ? std::span<const std::int32_t>(kFamilyRangesLux)
                             : std::span<const std::int32_t>(kLxm600RangesLux));
        EXPECT_EQ(a.Next(c.count, kFull, c.status, c.index), c.to) << c.family << " " << c.index << " " << c.count;
    }
}

TEST(AutoRange, StepsDownOnlyAfterARunOfLowReadings) {
    AutoRange a(kFamilyRangesLux);
    const std::int64_t low = 200;  // 4.9 %
    EXPECT_FALSE(a.Next(low, kFull, SampleStatus::Ok, 2));
    EXPECT_FALSE(a.Next(low, kFull, SampleStatus::Ok, 2));
    EXPECT_FALSE(a.Next(300, kFull, SampleStatus::Ok, 2));  // one reading in the range starts over
    EXPECT_FALSE(a.Next(low, kFull, SampleStatus::Ok, 2));
    EXPECT_FALSE(a.Next(low, kFull, SampleStatus::Early, 2));  // neither counts nor breaks the run
    EXPECT_FALSE(a.Next(low, kFull, SampleStatus::Ok, 2));
    EXPECT_EQ(a.Next(low, kFull, SampleStatus::Ok, 2), 1);
    // The run starts over under the new range, and the most sensitive range has nowhere to go.
    for (int i = 0; i < 2; ++i) EXPECT_FALSE(a.Next(0, kFull, SampleStatus::Ok, 1));
    EXPECT_EQ(a.Next(0, kFull, SampleStatus::Ok, 1), 0);
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(a.Next(0, kFull, SampleStatus::Ok, 0));
}

// A steady light just either side of each threshold of each pair of neighbouring ranges, read
// by a noise-free chip: the reading of the conversion in flight at a step is early and made
// under the old range. At most one step, and the range it ends on holds the light unsaturated.
TEST(AutoRange, SteadyLightAtEveryBoundaryStepsOnceAtMost) {
    const std::span<const std::int32_t> chips[] = {kFamilyRangesLux, kLxm600RangesLux};
    for (const auto ranges : chips) {
        AutoRange probe(ranges);
        for (int lo = 0; lo < int(ranges.size()); ++lo) {
            const auto hi = probe.Neighbour(lo, true);
            if (!hi) continue;
            const double loLux = ranges[std::size_t(lo)], hiLux = ranges[std::size_t(*hi)];
            const double up = AutoRange::kUpFraction * loLux, down = AutoRange::kDownFraction * hiLux;
            for (const double lux : {up * 0.999, up * 1.001, down * 0.999, down * 1.001}) {
                for (const int start : {lo, *hi}) {
                    AutoRange a(ranges);
                    int range = start, steps = 0;
                    bool early = false;
                    std::int64_t count = 0;
                    for (int n = 0; n < 30; ++n) {
                        if (!early)
                            count = std::min(kFull, std::int64_t(lux / ranges[std::size_t(range)] * (kFull + 1)));
                        const auto status = early             ? SampleStatus::Early
                                            : count >= kFull ? SampleStatus::Saturated
                                                             : SampleStatus::Ok;
                        early = false;
                        if (const auto to = a.Next(count, kFull, status, range)) {
                            range = *to;
                            ++steps;
                            early = true;
                        }
                    }
                    SCOPED_TRACE(testing::Message() << loLux << "/" << hiLux << " at " << lux << " from " << start);
                    EXPECT_LE(steps, 1);
                    EXPECT_LT(lux, 0.9 * ranges[std::size_t(range)]);
                }
            }
        }
    }
}

}  // namespace
}  // namespace lxm
