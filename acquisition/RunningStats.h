#pragma once

#include <cstdint>

namespace lxm {

// Count, mean and standard deviation of the readings of a run, updated one reading at a time.
// Welford's update keeps the spread exact to rounding even when the readings sit on a large
// offset (a lux value near 100000 that varies in its last digits), where summing squares
// would cancel to nothing or go negative.
class RunningStats {
public:
    void Add(double x) {
        ++count_;
        const double delta = x - mean_;
        mean_ += delta / double(count_);
        m2_ += delta * (x - mean_);
    }
    void Reset() { *this = RunningStats(); }

    std::uint64_t Count() const { return count_; }
    // 0 before the first reading.
    double Mean() const { return mean_; }
    // The sample standard deviation (divided by count - 1), the figure a datasheet quotes as
    // noise; 0 until there are two readings.
    double StdDev() const;

private:
    std::uint64_t count_ = 0;
    double mean_ = 0;
    double m2_ = 0;  // sum of squared deviations from the running mean
};

}  // namespace lxm
