#pragma once

#include <csignal>
#include <cstdint>
#include <string>

// Pieces of a collection without a window that stand apart from the sensor: ending it on a
// signal, and the progress line.
namespace lxm {

// While it exists, Ctrl-C (SIGINT) and SIGTERM only ask the collection to end, so it can close
// its file complete; a second signal ends the program at once, for a run that does not stop.
// The previous handlers come back when it is destroyed. One at a time.
class StopOnSignal {
public:
    StopOnSignal();
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;

    bool Requested() const;
    // The signal that asked, 0 when none did.
    int Signal() const;

private:
    struct sigaction oldInt_ {};
    struct sigaction oldTerm_ {};
};

// "1234 samples, 487.2/s, 0:02:03 elapsed, last 18.82 lux": the rate over the whole run,
// the elapsed time in hours, minutes and seconds, the last value as the collection shows it.
std::string ProgressLine(std::uint64_t samples, std::int64_t elapsedUs, double lastValue, bool lux);

}  // namespace lxm
