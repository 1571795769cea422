// Ending a collection without a window on a signal, and its progress line.
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

#include "app/CollectControl.h"

namespace lxm {
namespace {

TEST(StopOnSignal, ASignalAsksOnceAndTheOldHandlerComesBack) {
    for (int sig : {SIGTERM, SIGINT}) {
        StopOnSignal stop;
        EXPECT_FALSE(stop.Requested());
        std::raise(sig);  // would end this test program without the handler
        EXPECT_TRUE(stop.Requested());
        EXPECT_EQ(stop.Signal(), sig);
        // The second signal is left to the default action.
        struct sigaction now {};
        ::sigaction(sig, nullptr, &now);
        EXPECT_EQ(now.sa_handler, SIG_DFL);
    }
    // Gone with the object: the handler that was there before is back.
    struct sigaction before {};
    ::sigaction(SIGTERM, nullptr, &before);
    {
        StopOnSignal stop;
        EXPECT_FALSE(stop.Requested()) << "a new collection starts unasked";
    }
    struct sigaction after {};
    ::sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST(ProgressLine, RateElapsedAndLastValue) {
    EXPECT_EQ(ProgressLine(1234, 2'533'000, 18.8232, true),
              "1234 samples, 487.2/s, 0:00:02 elapsed, last 18.82 lux");
    EXPECT_EQ(ProgressLine(0, 0, 0, false), "0 samples, 0.0/s, 0:00:00 elapsed, last 0 counts");
    EXPECT_EQ(ProgressLine(3, 90'061'000'000, -12, false),
              "3 samples, 0.0/s, 25:01:01 elapsed, last -12 counts");
    EXPECT_EQ(ProgressLine(1, 1'000'000, std::nan(""), true),
              "1 samples, 1.0/s, 0:00:01 elapsed, last - lux");
    // Whatever the numbers, the line stays whole.
    const std::string huge = ProgressLine(UINT64_MAX, INT64_MAX, 1e300, true);
    EXPECT_NE(huge.find("last 1e+300 lux"), std::string::npos) << huge;
}

}  // namespace
}  // namespace lxm
