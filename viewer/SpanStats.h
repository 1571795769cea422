#pragma once

#include <cstddef>

#include "viewer/RunLog.h"

namespace lxm::viewer {

// What a span of a run holds: its ordinary readings summed up, and how many readings in it
// were failed, saturated or early (never part of the figures).
struct SpanStats {
    std::size_t n = 0;
    double mean = 0, sd = 0, min = 0, max = 0;
    std::size_t failed = 0, saturated = 0, early = 0;
    double PeakToPeak() const { return max - min; }
};

// The readings with from <= t <= to, in the run's own time.
SpanStats StatsOver(const Run& run, double from, double to);

}  // namespace lxm::viewer
