// The collection loop of the family form on the simulated board: the cost of one pass, how
// closely passes keep their time, and the sample rate against bare register reads.
#include <benchmark/benchmark.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTemporaryDir>

#include <time.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "bench/BenchSupport.h"
#include "core/Seams.h"
#include "device/frmLXM410.h"
#include "device/parts/RecordFrame.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace {

using namespace lxm;

// The program as the user has it after choosing LXM410: real clock, simulated board, the
// family form shown (on the offscreen platform unless a display is given), continuous IR
// under a sine-varying light so that the trace moves.
struct Bench {
    SteadyClock clock;
    bench::SilentMessages messages;
    bench::NoFiles files;
    sim::SimBoard board{clock};
    sim::SimDriver driver{board};
    Session session{driver, messages, files, clock};
    std::unique_ptr<frmLXM410> form;

    explicit Bench(std::int64_t latencyUs, const char* intervalMs) {
        session.usb().openWaitYields = 50;
        session.usb().InitDriver();
        session.usb().OpenDevice();
        session.SessionOpen = true;
        session.SelectedType = "LXM410";
        session.I2cWriteAddr = 0x88;
        session.I2cReadAddr = 0x89;
        form = std::make_unique<frmLXM410>(session);
        form->Form_Load();
        form->show();
        form->OptMeasure.at(6)->setChecked(true);
        form->OptMeasure_Click(6);
        form->chart().txtScale->setText(QStringLiteral("999"));
        form->cmdScale_Click();
        board.scene().kind = sim::LightScene::Kind::Sine;
        board.scene().periodS = 1.0;
        driver.SetLatencyMicros(latencyUs);
        form->txtInterval->setText(QString::fromLatin1(intervalMs));
    }

    // Runs one collection of the given number of passes and returns the clock at the end of
    // each pass, plus what the pacing recorded for it.
    struct Pass {
        std::int64_t endUs, deadlineUs, releasedUs;
    };
    std::vector<Pass> Run(int passes) {
        std::vector<Pass> log;
        log.reserve(passes);
        form->onPass = [&] {
            log.push_back({clock.Micros(), form->PacedDeadlineUs, form->PassReleasedUs});
            if (int(log.size()) >= passes) form->cmdStopData_Click();
        };
        form->cmdCollectData_Click();
        form->onPass = nullptr;
        return log;
    }
};

// Passes before the trace spans the whole width redraw only part of it; measure after.
constexpr int kFullWidthFrom = 420;

// Processor time of this thread, so that other processes on the machine do not count.
double ThreadCpuUs() {
    timespec t{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e6 + double(t.tv_nsec) / 1e3;
}

// One pass with the board answering at once: yields, the read, the max/min panel and the
// full-width trace's rows moved on, with the texts refreshed ten times a second and the trace
// drawn and the window painted once a frame. Interval 0, so no pacing wait.
// Wall time per pass, and the thread's processor time as a counter.
void BM_CollectionPass(benchmark::State& state) {
    Bench b(0, "0");
    std::vector<double> cpu;
    for (auto _ : state) {
        double cpuStart = 0;
        std::int64_t wallStart = 0;
        int passes = 0;
        b.form->onPass = [&] {
            if (++passes == kFullWidthFrom) {
                cpuStart = ThreadCpuUs();
                wallStart = b.clock.Micros();
            }
            if (passes == kFullWidthFrom + 500) b.form->cmdStopData_Click();
        };
        b.form->cmdCollectData_Click();
        b.form->onPass = nullptr;
        cpu.push_back((ThreadCpuUs() - cpuStart) / 500);
        state.SetIterationTime(double(b.clock.Micros() - wallStart) / 500 / 1e6);
    }
    std::sort(cpu.begin(), cpu.end());
    state.counters["cpu_us"] = cpu[cpu.size() / 2];
}
BENCHMARK(BM_CollectionPass)->UseManualTime()->Iterations(5)->Unit(benchmark::kMicrosecond);

// Interval 8 ms, 500 passes, board latency of one USB frame per transfer. The margins let a
// continuous pass go 3 ms before its deadline (its transfers then end near the deadline), so
// the error is taken against that instant.
void BM_PacingAtEightMs(benchmark::State& state) {
    Bench b(1000, "8");
    std::vector<double> errors;
    for (auto _ : state) {
        const auto log = b.Run(500);
        errors.clear();
        // The first pass waits for the deadline set at start rather than by a pass.
        for (std::size_t i = 1; i < log.size(); ++i)
            errors.push_back(std::fabs(double(log[i].releasedUs - (log[i].deadlineUs - 3000))));
    }
    std::sort(errors.begin(), errors.end());
    double sum = 0;
    for (double e : errors) sum += e;
    state.counters["mean_err_us"] = sum / double(errors.size());
    state.counters["p99_err_us"] = errors[std::size_t(double(errors.size()) * 0.99)];
    state.counters["max_err_us"] = errors.back();
}
BENCHMARK(BM_PacingAtEightMs)->Iterations(1)->Unit(benchmark::kMillisecond);

// Interval 0 and 1 ms per transfer: samples per second of the loop against a bare loop of the
// same two-byte data reads through the same driver interface.
void BM_SampleRateVersusBareReads(benchmark::State& state) {
    Bench b(1000, "0");
    constexpr int kPasses = kFullWidthFrom + 300;
    double loopSamples = 0, loopSeconds = 0, bareReads = 0, bareSeconds = 0;
    for (auto _ : state) {
        const auto log = b.Run(kPasses);
        loopSamples += double(log.size() - 1 - kFullWidthFrom);
        loopSeconds += double(log.back().endUs - log[kFullWidthFrom].endUs) / 1e6;

        const int reads = kPasses - kFullWidthFrom;
        const std::int64_t start = b.clock.Micros();
        for (int i = 0; i < reads; ++i) benchmark::DoNotOptimize(b.session.comm().ReadBlock(2, 2, 3));
        bareReads += reads;
        bareSeconds += double(b.clock.Micros() - start) / 1e6;
    }
    state.counters["loop_per_s"] = loopSamples / loopSeconds;
    state.counters["bare_per_s"] = bareReads / bareSeconds;
    state.counters["ratio"] = (loopSamples / loopSeconds) / (bareReads / bareSeconds);
}
BENCHMARK(BM_SampleRateVersusBareReads)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

namespace {

double ProcessCpuUs() {
    timespec t{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e6 + double(t.tv_nsec) / 1e3;
}

// What the program costs the machine while it collects with its window shown: processor time
// of the whole process per second of wall time, at the interval given, 1 ms per transfer.
// The interval is typed once the run is under way, as a user would; the first half second
// (start-up, the first trace columns) is not counted.
void BM_WindowCpuPerSecond(benchmark::State& state) {
    const QString interval = QString::number(state.range(0));
    Bench b(1000, "8");
    std::vector<double> shares;
    for (auto _ : state) {
        double cpuStart = 0;
        std::int64_t wallStart = 0, runStart = b.clock.Micros(), wallEnd = 0;
        double cpuEnd = 0;
        b.form->onPass = [&] {
            const std::int64_t now = b.clock.Micros();
            if (b.form->txtInterval->text() != interval) b.form->txtInterval->setText(interval);
            if (wallStart == 0 && now - runStart >= 500'000) {
                wallStart = now;
                cpuStart = ProcessCpuUs();
            } else if (wallStart != 0 && now - wallStart >= 3'000'000) {
                wallEnd = now;
                cpuEnd = ProcessCpuUs();
                b.form->cmdStopData_Click();
            }
        };
        b.form->cmdCollectData_Click();
        b.form->onPass = nullptr;
        const double wallUs = double(wallEnd - wallStart);
        shares.push_back(100.0 * (cpuEnd - cpuStart) / wallUs);
        state.SetIterationTime(wallUs / 1e6);
    }
    std::sort(shares.begin(), shares.end());
    state.counters["cpu_pct"] = shares[shares.size() / 2];
    state.counters["cpu_pct_max"] = shares.back();
}
BENCHMARK(BM_WindowCpuPerSecond)->Arg(0)->Arg(8)->Arg(50)->Iterations(3)->UseManualTime()->Unit(benchmark::kSecond);

}  // namespace
