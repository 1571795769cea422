#pragma once

#include <csignal>
#include <cstdint>
#include <string>

#include <QString>

#include "app/CommandLine.h"
#include "core/Seams.h"

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

// The end of a collection without a window as the options say it (samples, duration), or a
// signal; the progress line on a terminal; and the report of how it ended, with its exit status.
// The device form's collection and the core's share it.
class CollectWatch {
public:
    CollectWatch(Clock& clock, const CollectOptions& opt, std::FILE* err, bool progress);

    // One more sample, whose value the progress line shows.
    void Sample(double latest);
    // Between samples: the progress line, once a quarter of a second.
    void Tick();
    bool Due() const;
    // Finishes the progress line and tells on err how the run ended: the exit status.
    int End(std::uint64_t rows, bool logLost, bool boardGone, const QString& output);

private:
    void Show(bool force);

    Clock& clock_;
    const CollectOptions& opt_;
    std::FILE* err_;
    bool progress_;
    StopOnSignal stopper_;
    std::uint64_t samples_ = 0;
    double latest_ = 0;
    std::int64_t startUs_, lastShownUs_, durationUs_;
};

// A one-shot read needs its conversion done: an interval shorter than that (the read's own
// transfers counted) takes every reading early. Said once on err; the rows say it each.
void WarnOfEarlyReadings(int adcBits, const CollectOptions& opt, std::FILE* err);

// "1234 samples, 487.2/s, 0:02:03 elapsed, last 18.82 lux": the rate over the whole run,
// the elapsed time in hours, minutes and seconds, the last value as the collection shows it.
std::string ProgressLine(std::uint64_t samples, std::int64_t elapsedUs, double lastValue, bool lux);

}  // namespace lxm
