#include <chrono>
#include <thread>

#include "core/Seams.h"

namespace lxm {

namespace {
std::int64_t NowMicros() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}
}  // namespace

SteadyClock::SteadyClock() : start_(NowMicros()) {}

std::uint32_t SteadyClock::timeGetTime() {
    return std::uint32_t((NowMicros() - start_) / 1000);
}

std::int64_t SteadyClock::Micros() {
    return NowMicros() - start_;
}

void SteadyClock::Sleep(std::uint32_t ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void SteadyClock::SleepMicros(std::int64_t us) {
    if (us > 0) std::this_thread::sleep_for(std::chrono::microseconds(us));
}

QDateTime SteadyClock::Now() {
    return QDateTime::currentDateTime();
}

}  // namespace lxm
