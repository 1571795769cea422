#include "acquisition/AutoRange.h"

namespace lxm {

AutoRange::AutoRange(std::span<const std::int32_t> rangesLux) : ranges_(rangesLux.begin(), rangesLux.end()) {}

void AutoRange::Reset() {
    lowRun_ = 0;
}

std::optional<int> AutoRange::Neighbour(int rangeIndex, bool up) const {
    if (rangeIndex < 0 || std::size_t(rangeIndex) >= ranges_.size()) return std::nullopt;
    const std::int32_t here = ranges_[std::size_t(rangeIndex)];
    std::optional<int> best;
    for (std::size_t i = 0; i < ranges_.size(); ++i) {
        const std::int32_t r = ranges_[i];
        if (up ? r <= here : r >= here) continue;
        if (!best || (up ? r < ranges_[std::size_t(*best)] : r > ranges_[std::size_t(*best)])) best = int(i);
    }
    return best;
}

std::optional<int> AutoRange::Next(std::int64_t count, std::int64_t fullScale, SampleStatus status,
                                   int rangeIndex) {
    if (status == SampleStatus::Failed || status == SampleStatus::Early || fullScale <= 0)
        return std::nullopt;
    std::optional<int> to;
    if (status == SampleStatus::Saturated || double(count) >= kUpFraction * double(fullScale)) {
        lowRun_ = 0;
        to = Neighbour(rangeIndex, true);
    } else if (double(count) < kDownFraction * double(fullScale)) {
        if (++lowRun_ >= kLowReadings) to = Neighbour(rangeIndex, false);
    } else {
        lowRun_ = 0;
    }
    if (to) lowRun_ = 0;
    return to;
}

}  // namespace lxm
