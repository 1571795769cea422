// Looking back at an hour at interval 0: 1.8 million rows, written once into a scratch folder
// in the log's own format. Timed: reading it, opening it as the viewer does (read, hand to the
// plot, first draw), and a redraw of a 1200x700 view at full span and zoomed in while panning.
// Memory: resident set before and after opening, against the file's numeric data (a time and
// a value per row as doubles).
#include <benchmark/benchmark.h>

#include <QDir>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "viewer/RunLog.h"
#include "viewer/RunPlot.h"

namespace {

using namespace lxm::viewer;

constexpr std::size_t kRows = 1'800'000;

double ResidentMB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::stod(line.substr(6)) / 1024.0;
    return 0;
}

// Rows as "Log every sample" writes them: 2 ms apart, lux with all their digits.
const std::string& HourLog() {
    static const std::string path = [] {
        const std::string p = QDir::tempPath().toStdString() + "/lxm_viewer_bench_hour.csv";
        std::FILE* f = std::fopen(p.c_str(), "wb");
        std::fputs("# lxmeval sample log\r\n# sensor: LXM410\r\n# measurement: ALS Cont.\r\n# register 0: A0\r\n"
                   "# register 1: 44\r\n# interval: 0 ms\r\n# range: 1000 lux\r\n"
                   "time,seconds,sample,raw,value,unit,status\r\n",
                   f);
        std::uint32_t noise = 12345;
        char row[160];
        for (std::size_t i = 0; i < kRows; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const int raw = 19600 + int(noise >> 26);
            const double us = double(i) * 2000;
            char* p = row + std::snprintf(row, 64, "2026-11-24T10:%02d:%02d.%03d,%.6f,%zu,%d,", int(i / 30000 % 60),
                                          int(i / 500 % 60), int(i * 2 % 1000), us / 1e6, i + 1, raw);
            p = std::to_chars(p, row + sizeof row, raw * 1000.0 / 65535.0).ptr;
            p += std::snprintf(p, 16, ",lux,ok\r\n");
            std::fwrite(row, 1, std::size_t(p - row), f);
        }
        std::fclose(f);
        return p;
    }();
    return path;
}

void BM_ViewerRead(benchmark::State& state) {
    const std::string& path = HourLog();
    for (auto _ : state) {
        ReadResult r = ReadRunFile(path);
        if (r.runs.empty() || r.runs[0].t.size() != kRows) state.SkipWithError("rows lost");
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_ViewerRead)->Unit(benchmark::kMillisecond)->Iterations(3);

// What the user waits for: the file read, handed to the plot, and drawn once.
void BM_ViewerOpen(benchmark::State& state) {
    const std::string& path = HourLog();
    double before = 0, added = 0;
    for (auto _ : state) {
        state.PauseTiming();
        before = ResidentMB();
        state.ResumeTiming();
        auto plot = std::make_unique<RunPlot>();
        plot->resize(1200, 700);
        plot->AddRun(std::move(ReadRunFile(path).runs.at(0)));
        plot->ResetView();
        plot->toPixmap(1200, 700);
        state.PauseTiming();
        added = ResidentMB() - before;
        plot.reset();
        state.ResumeTiming();
    }
    state.counters["resident_MB_added"] = added;
    state.counters["numeric_data_MB"] = double(kRows) * 16 / (1024 * 1024);
}
BENCHMARK(BM_ViewerOpen)->Unit(benchmark::kMillisecond)->Iterations(3);

// One redraw of the view shown on screen, panned a little each time so nothing is reused.
// Arg: the visible span in seconds (3600: the whole hour).
void BM_ViewerRedraw(benchmark::State& state) {
    static std::unique_ptr<RunPlot> plot;
    if (!plot) {
        plot = std::make_unique<RunPlot>();
        plot->resize(1200, 700);
        plot->AddRun(std::move(ReadRunFile(HourLog()).runs.at(0)));
        plot->ResetView();
        plot->show();
    }
    const double span = double(state.range(0));
    double start = 0;
    for (auto _ : state) {
        start = std::fmod(start + span / 97, std::max(1.0, 3600 - span));
        plot->xAxis->setRange(start, start + span);
        plot->replot(QCustomPlot::rpImmediateRefresh);
    }
    state.counters["library_replot_ms"] = plot->replotTime(true);
}
BENCHMARK(BM_ViewerRedraw)->Arg(3600)->Arg(60)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
