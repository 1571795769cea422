#include "CollectControl.h"

#include <cmath>
#include <cstdio>

namespace lxm {

namespace {

volatile std::sig_atomic_t gStopSignal = 0;

extern "C" void OnStopSignal(int sig) {
    gStopSignal = sig;
}

}  // namespace

StopOnSignal::StopOnSignal() {
    gStopSignal = 0;
    struct sigaction sa {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    // The handler runs once; the next signal takes the default action and ends the program.
    sa.sa_flags = SA_RESETHAND;
    ::sigaction(SIGINT, &sa, &oldInt_);
    ::sigaction(SIGTERM, &sa, &oldTerm_);
}

StopOnSignal::~StopOnSignal() {
    ::sigaction(SIGINT, &oldInt_, nullptr);
    ::sigaction(SIGTERM, &oldTerm_, nullptr);
}

bool StopOnSignal::Requested() const {
    return gStopSignal != 0;
}

int StopOnSignal::Signal() const {
    return int(gStopSignal);
}

std::string ProgressLine(std::uint64_t samples, std::int64_t elapsedUs, double lastValue, bool lux) {
    const double seconds = double(elapsedUs > 0 ? elapsedUs : 0) / 1e6;
    const double rate = seconds > 0 ? double(samples) / seconds : 0;
    const std::int64_t whole = std::int64_t(seconds);
    char value[48] = "-";
    if (std::isfinite(lastValue)) {
        if (std::fabs(lastValue) < 1e15)
            std::snprintf(value, sizeof value, "%.*f", lux ? 2 : 0, lastValue);
        else
            std::snprintf(value, sizeof value, "%g", lastValue);
    }
    char line[200];
    std::snprintf(line, sizeof line, "%llu samples, %.1f/s, %lld:%02lld:%02lld elapsed, last %s %s",
                  static_cast<unsigned long long>(samples), rate, static_cast<long long>(whole / 3600),
                  static_cast<long long>(whole / 60 % 60), static_cast<long long>(whole % 60), value,
                  lux ? "lux" : "counts");
    return line;
}

}  // namespace lxm
