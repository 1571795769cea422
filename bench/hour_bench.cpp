// An hour of unattended logging, in accelerated time: `lxmeval --collect` at interval 0 on the
// simulated board, where the bus rather than the wall clock moves time on, one millisecond per
// transfer. What it shows: the memory the run holds does not grow, and the log has one row for
// every data read the board answered.
#include <benchmark/benchmark.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include "app/CoreCollect.h"
#include "bench/BenchSupport.h"
#include "core/Seams.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"

namespace {

using namespace lxm;

// Time as the bus makes it: it moves only when a transfer (or a pause) spends it.
class BusClock final : public Clock {
public:
    std::uint32_t timeGetTime() override { return std::uint32_t(us_ / 1000); }
    std::int64_t Micros() override { return us_; }
    void Sleep(std::uint32_t ms) override { us_ += std::int64_t(ms) * 1000; }
    void SleepMicros(std::int64_t us) override { us_ += std::max<std::int64_t>(us, 0); }
    QDateTime Now() override { return start_.addMSecs(us_ / 1000); }
    void Spend(std::int64_t us) { us_ += us; }

private:
    std::int64_t us_ = 0;
    const QDateTime start_ = QDateTime::currentDateTime();
};

std::int64_t ResidentKb() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return std::int64_t(resident) * ::sysconf(_SC_PAGESIZE) / 1024;
}

// The simulated board behind a bus that takes a millisecond per transfer of the clock's time.
// It counts the data reads (two bytes from register 2) and watches the memory once a
// simulated minute, from the end of the first minute on.
class TimedBus final : public bench::ForwardingDriver {
public:
    TimedBus(UsbDriver& inner, BusClock& clock) : ForwardingDriver(inner), clock_(clock) {}
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override {
        clock_.Spend(1000);
        if (DataRead(dir, buf, size)) ++dataReads;
        const std::int64_t minute = clock_.Micros() / 60'000'000;
        if (minute != lastMinute_) {
            lastMinute_ = minute;
            const std::int64_t kb = ResidentKb();
            if (minute == 1) firstMinuteKb = kb;
            if (minute >= 1) maxAfterKb = std::max(maxAfterKb, kb);
        }
        return ForwardingDriver::Transfer(dev, pipe, dir, buf, size, done, timeoutMs);
    }

    std::uint64_t dataReads = 0;
    std::int64_t firstMinuteKb = 0;
    std::int64_t maxAfterKb = 0;

private:
    BusClock& clock_;
    std::int64_t lastMinute_ = -1;
};

// Rows after the column names, and the sample number of the last one.
std::pair<std::uint64_t, std::uint64_t> CountRows(const QString& path) {
    std::uint64_t rows = 0;
    std::string last;
    bench::ForEachLogRow(path, [&](const std::string& row) {
        ++rows;
        last = row;
    });
    return {rows, rows ? std::stoull(bench::Field(last, 2)) : 0};
}

void BM_SimulatedHourOfLogging(benchmark::State& state) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("hour.csv"));
    for (auto _ : state) {
        BusClock clock;
        sim::SimBoard board{clock};
        sim::SimDriver sim{board};
        board.scene().kind = sim::LightScene::Kind::Noise;
        // 0: the chip with its noise, as the program runs it; 1: the noise-free chip.
        board.scene().ideal = state.range(0) == 1;
        TimedBus bus{sim, clock};
        const CommandLine cl = ParseCommandLine({"--collect", "ir-cont", "--interval", "0", "--duration",
                                                 "3600", "--output", path.toStdString()});
        std::FILE* null = std::fopen("/dev/null", "w");
        const auto start = std::chrono::steady_clock::now();
        const int rc = RunCollectOnCore(cl, bus, clock, null, false);
        const double realSeconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::fclose(null);
        if (rc != 0) {
            state.SkipWithError("the collection failed");
            return;
        }
        const auto [rows, lastSample] = CountRows(path);
        state.counters["simulated_s"] = double(clock.Micros()) / 1e6;
        state.counters["real_s"] = realSeconds;
        state.counters["passes"] = double(bus.dataReads);
        state.counters["rows"] = double(rows);
        state.counters["rows_minus_passes"] = double(rows) - double(bus.dataReads);
        state.counters["last_sample_no"] = double(lastSample);
        state.counters["rss_1min_kb"] = double(bus.firstMinuteKb);
        state.counters["rss_growth_kb"] = double(bus.maxAfterKb - bus.firstMinuteKb);
        state.counters["csv_mb"] = double(QFile(path).size()) / 1e6;
    }
}
BENCHMARK(BM_SimulatedHourOfLogging)->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
