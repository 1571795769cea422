// Collection without a window, as `lxmeval --collect` runs it: the sample rate it keeps against
// bare reads of the same registers through the same driver interface.
#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "app/CoreCollect.h"
#include "bench/BenchSupport.h"
#include "core/Seams.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/UsbDriver.h"
#include "transport/generic_usb_lib.h"

namespace {

using namespace lxm;

// The "seconds since start" column of every sample row of a log.
std::vector<double> SampleSeconds(const QString& path) {
    std::vector<double> seconds;
    bench::ForEachLogRow(path,
                         [&](const std::string& row) { seconds.push_back(std::stod(bench::Field(row, 1))); });
    return seconds;
}

// The simulated board's driver, timing the transfers: what a pass costs besides them. At each
// data read (two bytes from register 2) it notes the clock and the time spent inside the
// driver so far.
class TimedDriver final : public bench::ForwardingDriver {
public:
    TimedDriver(UsbDriver& inner, Clock& clock) : ForwardingDriver(inner), clock_(clock) {}
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override {
        const std::int64_t start = clock_.Micros();
        if (DataRead(dir, buf, size)) reads.push_back({start, insideUs_});
        const std::uint32_t status = ForwardingDriver::Transfer(dev, pipe, dir, buf, size, done, timeoutMs);
        insideUs_ += clock_.Micros() - start;
        return status;
    }

    struct Mark {
        std::int64_t atUs, insideUs;
    };
    std::vector<Mark> reads;
    // Microseconds per read spent outside the driver from read `from` to the last one.
    double OutsideUsPerRead(std::size_t from) const {
        const Mark& a = reads[from];
        const Mark& b = reads.back();
        return double((b.atUs - a.atUs) - (b.insideUs - a.insideUs)) / double(reads.size() - 1 - from);
    }

private:
    Clock& clock_;
    std::int64_t insideUs_ = 0;
};

// Interval 0 and 1 ms per transfer (one full-speed USB frame): samples per second of a
// headless continuous-IR collection, taken from its own log, against a bare loop of the same
// two-byte data reads. The two alternate in rounds, so that a slow spell of the shared
// machine weighs on both; the median of the rounds' ratios is reported. The first samples of
// a run, which carry its set-up, are left out.
void BM_HeadlessVersusBareReads(benchmark::State& state) {
    constexpr int kSamples = 600;
    constexpr int kSettle = 100;
    constexpr int kRounds = 7;
    SteadyClock clock;
    sim::SimBoard board{clock};
    sim::SimDriver sim{board};
    TimedDriver driver{sim, clock};
    sim.SetLatencyMicros(state.range(0));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bench.csv"));
    const CommandLine cl = ParseCommandLine({"--collect", "ir-cont", "--interval", "0", "--samples",
                                             std::to_string(kSamples), "--output", path.toStdString()});
    std::vector<double> loopRates, bareRates, ratios, loopOutsideUs, bareOutsideUs;
    for (auto _ : state) {
        for (int round = 0; round < kRounds; ++round) {
            std::FILE* null = std::fopen("/dev/null", "w");
            driver.reads.clear();
            const int rc = RunCollectOnCore(cl, driver, clock, null, false);
            std::fclose(null);
            const std::vector<double> seconds = SampleSeconds(path);
            if (rc != 0 || seconds.size() != std::size_t(kSamples)) {
                state.SkipWithError("the headless collection failed or its log lacks rows");
                return;
            }
            loopRates.push_back(double(seconds.size() - 1 - kSettle) / (seconds.back() - seconds[kSettle]));
            loopOutsideUs.push_back(driver.OutsideUsPerRead(driver.reads.size() - (kSamples - kSettle)));

            bench::SilentMessages messages;
            bench::NoFiles files;
            Session session{driver, messages, files, clock};
            session.usb().openWaitYields = 50;
            session.usb().InitDriver();
            session.usb().OpenDevice();
            session.SessionOpen = true;
            session.I2cWriteAddr = 0x88;
            session.I2cReadAddr = 0x89;
            const int reads = kSamples - kSettle;
            driver.reads.clear();
            const std::int64_t start = clock.Micros();
            for (int i = 0; i < reads; ++i) benchmark::DoNotOptimize(session.comm().ReadBlock(2, 2, 3));
            bareRates.push_back(double(reads) / (double(clock.Micros() - start) / 1e6));
            bareOutsideUs.push_back(driver.OutsideUsPerRead(0));
            session.usb().ShutdownUsb();
            ratios.push_back(loopRates.back() / bareRates.back());
        }
    }
    auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    state.counters["loop_per_s"] = median(loopRates);
    state.counters["bare_per_s"] = median(bareRates);
    state.counters["ratio"] = median(ratios);
    // Time outside the driver per pass: what the program adds to the bus's own time.
    state.counters["loop_outside_us"] = median(loopOutsideUs);
    state.counters["bare_outside_us"] = median(bareOutsideUs);
    state.counters["ratio_min"] = *std::min_element(ratios.begin(), ratios.end());
}
BENCHMARK(BM_HeadlessVersusBareReads)->Arg(1000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
