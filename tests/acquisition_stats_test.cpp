// Running statistics against a two-pass reference in extended precision.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "acquisition/RunningStats.h"

namespace lxm {
namespace {

struct Reference {
    long double mean = 0, sd = 0;
};

Reference TwoPass(const std::vector<double>& xs) {
    Reference r;
    for (double x : xs) r.mean += x;
    r.mean /= xs.size();
    long double ss = 0;
    for (double x : xs) ss += (x - r.mean) * (x - r.mean);
    r.sd = xs.size() > 1 ? std::sqrt(ss / (xs.size() - 1)) : 0;
    return r;
}

RunningStats Feed(const std::vector<double>& xs) {
    RunningStats s;
    for (double x : xs) s.Add(x);
    return s;
}

TEST(RunningStats, SmallSetsAndTheDegenerateOnes) {
    const RunningStats known = Feed({2, 4, 4, 4, 5, 5, 7, 9});
    EXPECT_EQ(known.Count(), 8u);
    EXPECT_DOUBLE_EQ(known.Mean(), 5.0);
    EXPECT_DOUBLE_EQ(known.StdDev(), std::sqrt(32.0 / 7.0)) << "sample deviation, divided by n - 1";

    const RunningStats none;
    EXPECT_EQ(none.Count(), 0u);
    EXPECT_EQ(none.Mean(), 0.0);
    EXPECT_EQ(none.StdDev(), 0.0);

    const RunningStats one = Feed({-17.5});
    EXPECT_EQ(one.Mean(), -17.5);
    EXPECT_EQ(one.StdDev(), 0.0) << "one reading has no spread, and no division by zero";

    // Readings that do not divide evenly: rounding must not leave a tiny negative square.
    const RunningStats same = Feed(std::vector<double>(1000, 0.1));
    EXPECT_EQ(same.StdDev(), 0.0);
    EXPECT_FALSE(std::isnan(same.StdDev()));
}

TEST(RunningStats, AgreesWithTheReferenceOnLargeOffsets) {
    std::mt19937_64 rng(14);
    for (double offset : {0.0, 65535.0, 1e6, 1e9}) {
        std::normal_distribution<double> noise(offset, 0.25);
        std::vector<double> xs(20000);
        for (double& x : xs) x = noise(rng);
        const Reference ref = TwoPass(xs);
        const RunningStats s = Feed(xs);
        EXPECT_EQ(s.Count(), xs.size());
        EXPECT_NEAR(s.Mean(), double(ref.mean), 1e-9 * std::max(1.0, offset)) << offset;
        EXPECT_NEAR(s.StdDev(), double(ref.sd), 1e-6) << "offset " << offset;
    }

    // The naive sum-of-squares formula loses everything here; the test above would not
    // notice a switch to it if this did not hold.
    std::vector<double> xs;
    for (int i = 0; i < 1000; ++i) xs.push_back(1e9 + (i % 2 ? 0.5 : -0.5));
    double sum = 0, sumSq = 0;
    for (double x : xs) sum += x, sumSq += x * x;
    const double naive = std::sqrt(std::max(0.0, (sumSq - sum * sum / xs.size()) / (xs.size() - 1)));
    const double truth = double(TwoPass(xs).sd);
    EXPECT_GT(std::fabs(naive - truth), 0.1);
    EXPECT_NEAR(Feed(xs).StdDev(), truth, 1e-9);
}

TEST(RunningStats, ResetStartsAfresh) {
    RunningStats s = Feed({1e9, 1e9 + 1000, 3});
    s.Reset();
    EXPECT_EQ(s.Count(), 0u);
    EXPECT_EQ(s.StdDev(), 0.0);
    s.Add(10);
    s.Add(14);
    EXPECT_EQ(s.Count(), 2u);
    EXPECT_DOUBLE_EQ(s.Mean(), 12.0);
    EXPECT_DOUBLE_EQ(s.StdDev(), std::sqrt(8.0));
}

}  // namespace
}  // namespace lxm
