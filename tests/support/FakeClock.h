#pragma once

#include <cstdint>
#include <functional>

#include "core/Seams.h"

namespace lxm::test {

// A clock that moves only when a test advances it or the program sleeps.
class FakeClock final : public Clock {
public:
    std::uint32_t timeGetTime() override { return std::uint32_t(us_ / 1000); }
    std::int64_t Micros() override { return us_; }
    void Sleep(std::uint32_t ms) override {
        us_ += std::int64_t(ms) * 1000;
        slept_ += ms;
        if (onSleep) onSleep();
    }
    void AdvanceMs(double ms) { us_ += std::int64_t(ms * 1000); }
    void AdvanceUs(std::int64_t us) { us_ += us; }
    std::uint64_t sleptMs() const { return slept_; }
    // Called after every sleep: lets a test act at a moment inside a long wait.
    std::function<void()> onSleep;
    // A fixed wall-clock time, so that what the program records is exact.
    QDateTime Now() override { return now; }
    QDateTime now{QDate(2009, 11, 15), QTime(14, 30, 0)};

private:
    std::int64_t us_ = 1'000'000;
    std::uint64_t slept_ = 0;
};

}  // namespace lxm::test
