// What logging every sample adds to a collection pass: one row of the CSV log, its share of
// the once-a-second write included, against the pass time of collection_bench.
#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <cmath>

#include "acquisition/SampleLog.h"
#include "core/Seams.h"

namespace {

using namespace lxm;

SampleLogHeader Header(bool dual) {
    SampleLogHeader h;
    h.sensor = QStringLiteral("LXM410");
    h.reg0 = 0xA0;
    h.reg1 = 0x44;
    h.rangeLux = 1000;
    h.lux = !dual;
    h.dual = dual;
    return h;
}

// A row per iteration on the real clock: lux values with all their digits (the worst case
// for the number formatting), or the dual mode's five integers.
void RunRows(benchmark::State& state, const QString& path, bool dual) {
    SteadyClock clock;
    int errors = 0;
    SampleLog log(clock, [&](const QString&, const QString&) { ++errors; });
    if (!log.Open(path, Header(dual))) {
        state.SkipWithError("cannot open the log");
        return;
    }
    std::int64_t i = 0;
    for (auto _ : state) {
        ++i;
        if (dual)
            log.Append({i % 4096 - 40, double(i % 4096 - 40), 40 + i % 7, i % 4096});
        else
            log.Append({i % 65536, double(i % 65536) * 0.0152587890625 + std::sin(double(i)), {}, {}});
    }
    log.Close();
    if (errors) state.SkipWithError("the log reported an error");
    state.SetItemsProcessed(state.iterations());
}

void BM_SampleLogRowToFile(benchmark::State& state) {
    QTemporaryDir dir;
    RunRows(state, dir.filePath(QStringLiteral("bench.csv")), state.range(0) != 0);
}
// A bounded number of rows keeps the file to a few tens of megabytes.
BENCHMARK(BM_SampleLogRowToFile)->Arg(0)->Arg(1)->Iterations(1'000'000)->Unit(benchmark::kNanosecond);

// The same rows thrown away: the formatting alone, without the file system.
void BM_SampleLogRowFormatting(benchmark::State& state) {
    RunRows(state, QStringLiteral("/dev/null"), state.range(0) != 0);
}
BENCHMARK(BM_SampleLogRowFormatting)->Arg(0)->Arg(1)->Unit(benchmark::kNanosecond);

}  // namespace
