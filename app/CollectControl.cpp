#include "CollectControl.h"

#include <cmath>
#include <cstdio>

#include "acquisition/SampleStatus.h"
#include "app/HeadlessScript.h"

namespace lxm {

namespace {

volatile std::sig_atomic_t gStopSignal = 0;

extern "C" void OnStopSignal(int sig) {
    gStopSignal = sig;
}

}  // namespace

StopOnSignal::StopOnSignal() {
    gStopSignal = 0;
    struct sigaction sa {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    // The handler runs once; the next signal takes the default action and ends the program.
    sa.sa_flags = SA_RESETHAND;
    ::sigaction(SIGINT, &sa, &oldInt_);
    ::sigaction(SIGTERM, &sa, &oldTerm_);
}

StopOnSignal::~StopOnSignal() {
    ::sigaction(SIGINT, &oldInt_, nullptr);
    ::sigaction(SIGTERM, &oldTerm_, nullptr);
}

bool StopOnSignal::Requested() const {
    return gStopSignal != 0;
}

int StopOnSignal::Signal() const {
    return int(gStopSignal);
}

std::string ProgressLine(std::uint64_t samples, std::int64_t elapsedUs, double lastValue, bool lux) {
    const double seconds = double(elapsedUs > 0 ? elapsedUs : 0) / 1e6;
    const double rate = seconds > 0 ? double(samples) / seconds : 0;
    const std::int64_t whole = std::int64_t(seconds);
    char value[48] = "-";
    if (std::isfinite(lastValue)) {
        if (std::fabs(lastValue) < 1e15)
            std::snprintf(value, sizeof value, "%.*f", lux ? 2 : 0, lastValue);
        else
            std::snprintf(value, sizeof value, "%g", lastValue);
    }
    char line[200];
    std::snprintf(line, sizeof line, "%llu samples, %.1f/s, %lld:%02lld:%02lld elapsed, last %s %s",
                  static_cast<unsigned long long>(samples), rate, static_cast<long long>(whole / 3600),
                  static_cast<long long>(whole / 60 % 60), static_cast<long long>(whole % 60), value,
                  lux ? "lux" : "counts");
    return line;
}

namespace {
constexpr std::int64_t kProgressEveryUs = 250'000;
constexpr int kExitDone = 0;
constexpr int kExitBoardGone = 1;
constexpr int kExitUnusable = 2;
}  // namespace

void WarnOfEarlyReadings(int adcBits, const CollectOptions& opt, std::FILE* err) {
    const std::int64_t conversionUs = ConversionMicros(adcBits);
    if (!opt.intervalGiven || opt.type->continuous ||
        std::int64_t(opt.intervalMs) * 1000 + kReadMicros >= conversionUs)
        return;
    Print(err, QStringLiteral("lxmeval: an interval of %1 ms is shorter than the %2 ms a %3-bit conversion "
                              "takes; the readings are marked early. Leave --interval out for the "
                              "resolution's own.\n")
                   .arg(opt.intervalMs)
                   .arg(double(conversionUs) / 1000.0, 0, 'f', 1)
                   .arg(adcBits));
}

CollectWatch::CollectWatch(Clock& clock, const CollectOptions& opt, std::FILE* err, bool progress)
    : clock_(clock),
      opt_(opt),
      err_(err),
      progress_(progress),
      startUs_(clock.Micros()),
      lastShownUs_(startUs_ - kProgressEveryUs),
      durationUs_(opt.durationSeconds ? std::int64_t(std::llround(*opt.durationSeconds * 1e6)) : INT64_MAX) {}

void CollectWatch::Sample(double latest) {
    ++samples_;
    latest_ = latest;
    Show(false);
}

void CollectWatch::Tick() {
    Show(false);
}

bool CollectWatch::Due() const {
    return stopper_.Requested() || clock_.Micros() - startUs_ >= durationUs_ ||
           (opt_.samples && samples_ >= *opt_.samples);
}

void CollectWatch::Show(bool force) {
    if (!progress_) return;
    const std::int64_t now = clock_.Micros();
    if (!force && now - lastShownUs_ < kProgressEveryUs) return;
    lastShownUs_ = now;
    std::fprintf(err_, "\r%s\033[K", ProgressLine(samples_, now - startUs_, latest_, opt_.type->lux).c_str());
    std::fflush(err_);
}

int CollectWatch::End(std::uint64_t rows, bool logLost, bool boardGone, const QString& output) {
    Show(true);
    if (progress_) std::fputc('\n', err_);
    if (logLost) {
        Print(err_,
              QStringLiteral("lxmeval: the collection stopped after %1 samples because the log could not "
                             "be written.\n")
                  .arg(samples_));
        return kExitUnusable;
    }
    if (boardGone) {
        Print(err_, QStringLiteral("lxmeval: the board went away after %1 samples; %2 keeps them.\n")
                        .arg(rows)
                        .arg(output));
        return kExitBoardGone;
    }
    if (stopper_.Requested())
        Print(err_, QStringLiteral("lxmeval: stopped by signal %1 after %2 samples; %3 is complete.\n")
                        .arg(stopper_.Signal())
                        .arg(rows)
                        .arg(output));
    return kExitDone;
}

}  // namespace lxm
