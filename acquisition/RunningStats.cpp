#include "RunningStats.h"

#include <cmath>

namespace lxm {

double RunningStats::StdDev() const {
    if (count_ < 2) return 0;
    // Rounding can leave the sum of squares a hair below zero for identical readings.
    return m2_ > 0 ? std::sqrt(m2_ / double(count_ - 1)) : 0;
}

}  // namespace lxm
