#pragma once

#include <cstdint>

#include "acquisition/SampleStatus.h"

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
    // A reading with its status: a failed one is no reading and stays out of the mean, only
    // counted; a saturated or early one is a count the chip gave, taken in and counted.
    void Add(double x, SampleStatus status) {
        if (status == SampleStatus::Failed) {
            ++failed_;
            return;
        }
        if (status == SampleStatus::Saturated) ++saturated_;
        if (status == SampleStatus::Early) ++early_;
        Add(x);
    }
    void Reset() { *this = RunningStats(); }

    // Readings in the mean; failed reads are not among them.
    std::uint64_t Count() const { return count_; }
    std::uint64_t Failed() const { return failed_; }
    std::uint64_t Saturated() const { return saturated_; }
    std::uint64_t Early() const { return early_; }
    // 0 before the first reading.
    double Mean() const { return mean_; }
    // The sample standard deviation (divided by count - 1), the figure a datasheet quotes as
    // noise; 0 until there are two readings.
    double StdDev() const;

private:
    std::uint64_t count_ = 0;
    double mean_ = 0;
    double m2_ = 0;  // sum of squared deviations from the running mean
    std::uint64_t failed_ = 0, saturated_ = 0, early_ = 0;
};

}  // namespace lxm
