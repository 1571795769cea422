#include "SpanStats.h"

#include <algorithm>
#include <vector>

#include "acquisition/RunningStats.h"

namespace lxm::viewer {

namespace {

// Times are sorted, so a span is two binary searches whatever its length.
std::pair<std::size_t, std::size_t> Range(const std::vector<double>& t, double from, double to) {
    const auto lo = std::lower_bound(t.begin(), t.end(), from);
    const auto hi = std::upper_bound(lo, t.end(), to);
    return {std::size_t(lo - t.begin()), std::size_t(hi - t.begin())};
}

std::size_t CountIn(const std::vector<double>& t, double from, double to) {
    const auto [lo, hi] = Range(t, from, to);
    return hi - lo;
}

}  // namespace

SpanStats StatsOver(const Run& run, double from, double to) {
    SpanStats s;
    if (from > to) std::swap(from, to);
    const auto [lo, hi] = Range(run.t, from, to);
    RunningStats stats;
    if (lo < hi) s.min = s.max = run.v[lo];
    for (std::size_t i = lo; i < hi; ++i) {
        const double v = run.v[i];
        stats.Add(v);
        s.min = std::min(s.min, v);
        s.max = std::max(s.max, v);
    }
    s.n = hi - lo;
    s.mean = stats.Mean();
    s.sd = stats.StdDev();
    s.failed = CountIn(run.failedT, from, to);
    s.saturated = CountIn(run.saturatedT, from, to);
    s.early = CountIn(run.earlyT, from, to);
    return s;
}

}  // namespace lxm::viewer
