#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "acquisition/SampleStatus.h"

namespace lxm {

// When to change the ALS range during a collection: a less sensitive range as soon as a
// reading nears the top of the scale, a more sensitive one once the readings have stayed low
// for a while. The thresholds are apart by more than any ratio of two neighbouring ranges, so
// a step lands well inside the new range and the next readings do not step back.
class AutoRange {
public:
    static constexpr double kUpFraction = 0.90;  // of the full-scale count, or saturated
    static constexpr double kDownFraction = 0.05;
    static constexpr int kLowReadings = 3;  // in a row, before a step down

    // The ranges as the form's option array lists them (full-scale lux), in any order.
    explicit AutoRange(std::span<const std::int32_t> rangesLux);

    // One reading taken at rangeIndex: the index to change to, or none. Failed and early readings
    // decide nothing: the caller marks early every reading of a conversion that began before the
    // last register write, so the reading of the conversion in flight at a step (made under the
    // old range) can never give a second step.
    std::optional<int> Next(std::int64_t count, std::int64_t fullScale, SampleStatus status, int rangeIndex);
    // A new run: forgets the low readings.
    void Reset();

    // The neighbour of a range, if there is one: less sensitive (up) or more sensitive.
    std::optional<int> Neighbour(int rangeIndex, bool up) const;
    std::int32_t lux(int rangeIndex) const { return ranges_[std::size_t(rangeIndex)]; }

private:
    std::vector<std::int32_t> ranges_;
    int lowRun_ = 0;
};

}  // namespace lxm
