#include <gtest/gtest.h>

#include <vector>

#include "acquisition/Rescale.h"

namespace lxm {
namespace {

ScaleTexts Texts(std::initializer_list<const char*> values) {
    ScaleTexts texts;
    int i = 0;
    for (const char* v : values) texts[i++] = QString::fromLatin1(v);
    return texts;
}

TEST(ManualRescale, EnteredMaximumPlusOneAndTenthStepsWithLuxInItsOwnRightColumn) {
    const ScaleResult r = ManualRescale("4095", "0", "65535", false);
    EXPECT_EQ(r.scaleMax, 4096);
    EXPECT_EQ(r.scaleMin, 0);
    EXPECT_EQ(r.scaleSpan, 4096);
    const ScaleTexts expected =
        Texts({"0", "410", "820", "1230", "1640", "2050", "2460", "2870", "3280", "3690", "4100"});
    EXPECT_EQ(r.labels, expected);
    // Without lux the right column repeats the left one, whatever txtScale2 says.
    EXPECT_EQ(r.labels2, expected);

    // Lux keeps its own right column.
    const ScaleResult lux = ManualRescale("25000", "-25000", "4000", true);
    EXPECT_EQ(lux.scaleSpan, 50001);
    EXPECT_EQ(lux.labels, Texts({"-25000", "-20000", "-15000", "-10000", "-5000", "0", "5000", "10000",
                                 "15000", "20000", "25000"}));
    EXPECT_EQ(lux.labels2,
              Texts({"0", "400", "800", "1200", "1600", "2000", "2400", "2800", "3200", "3600", "4000"}));
}

TEST(ManualRescale, StepRoundsHalvesToEvenAndNonNumericEntriesCountAsZero) {
    EXPECT_EQ(ManualRescale("44", "0", "0", false).labels[1], "4");    // span 45 -> 4.5 -> 4
    EXPECT_EQ(ManualRescale("54", "0", "0", false).labels[1], "6");    // span 55 -> 5.5 -> 6
    EXPECT_EQ(ManualRescale("0", "0", "24", true).labels2[10], "20");  // 25 -> 2.5 -> 2
    // Entries that are no number count as zero.
    const ScaleResult r = ManualRescale("max", "", "?", true);
    EXPECT_EQ(r.scaleMax, 1);
    EXPECT_EQ(r.scaleMin, 0);
    EXPECT_EQ(r.scaleSpan, 1);
    EXPECT_EQ(r.labels[10], "0");
}

TEST(AutoRescale, WaitsForReadingsThenPutsTheTopFifteenPercentAboveThePeak) {
    std::vector<double> samples(1011, 100);
    EXPECT_FALSE(AutoRescale(samples, 5, false).has_value());
    EXPECT_TRUE(AutoRescale(samples, 6, false).has_value());
    samples[9] = 0;
    EXPECT_FALSE(AutoRescale(samples, 10, false).has_value());
    samples[9] = -3;  // only the magnitude must be non-zero
    EXPECT_TRUE(AutoRescale(samples, 10, false).has_value());

    // Then fifteen per cent above the peak.
    samples.assign(1011, 1.0);
    samples[3] = 1000;
    const auto r = AutoRescale(samples, 8, false);
    ASSERT_TRUE(r.has_value());
    EXPECT_EQ(r->txtScale, "1150");
    EXPECT_EQ(r->txtScaleMin, "0");
    EXPECT_EQ(r->scale.scaleMax, 1151);
    EXPECT_EQ(r->scale.scaleSpan, 1151);
    const ScaleTexts expected =
        Texts({"0", "115", "230", "345", "460", "575", "690", "805", "920", "1035", "1150"});
    EXPECT_EQ(r->scale.labels, expected);
    EXPECT_EQ(r->scale.labels2, expected);

    PlotState state;
    ApplyScale(*r, state);
    EXPECT_EQ(state.ScaleMax, 1151);
    EXPECT_EQ(state.AxisCaption, "Scaled");
    EXPECT_EQ(state.AxisCaption2, "Scaled");
}

TEST(AutoRescale, PeakCoversSamplesOneThroughCount) {
    std::vector<double> samples(1011, 10);
    samples[0] = 5000;
    samples[21] = 9000;
    samples[20] = 2000;
    EXPECT_EQ(AutoRescale(samples, 20, false)->txtScale, "2300");
    // The head-room product is truncated as computed: 200 x 1.15 falls just short of 230.
    samples[20] = 200;
    EXPECT_EQ(AutoRescale(samples, 20, false)->txtScale, "229");
}

TEST(AutoRescale, SignedCaseKeepsRoomBelowZeroAllNegativeGivesANegativeMaximum) {
    const std::vector<double> samples(1011, 1000);
    const auto r = AutoRescale(samples, 50, true);
    ASSERT_TRUE(r.has_value());
    EXPECT_EQ(r->txtScaleMin, "-100");
    EXPECT_EQ(r->scale.scaleSpan, 1251);
    EXPECT_EQ(r->scale.labels[1], "25");
    EXPECT_EQ(r->scale.labels[10], "1150");

    // All readings negative: a negative maximum.
    const auto negative = AutoRescale(std::vector<double>(1011, -50), 1010, false);
    ASSERT_TRUE(negative.has_value());
    EXPECT_EQ(negative->txtScale, "-58");  // Int(-57.5) goes down
    EXPECT_EQ(negative->scale.scaleMax, -57);
    EXPECT_EQ(negative->scale.scaleSpan, -57);
    EXPECT_EQ(negative->scale.labels[10], "-60");
}

}  // namespace
}  // namespace lxm
