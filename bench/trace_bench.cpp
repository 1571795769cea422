#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>

#include "acquisition/Conversion.h"
#include "acquisition/GraphDrawing.h"
#include "acquisition/ModWaveform_ALS.h"
#include "acquisition/PlotState.h"

namespace {

using namespace lxm;

// A gridded graph with its background saved, as a device form has it after loading.
struct Chart {
    std::unique_ptr<PictureBox> graph{MakeGraphPicture(nullptr)};
    PlotState state;

    Chart() {
        DrawGrid(*graph);
        ModWaveform_ALS::SaveGraphBackground(*graph, state);
        state.ScaleMin = 0;
        state.ScaleMax = 4096;
        state.ScaleSpan = 4096;
    }

    // One collection pass once the trace spans the whole width: the newest row enters at 403
    // and every column is redrawn.
    void Step(double reading) {
        state.TracePixels[kTraceNewest] =
            PlotRow(reading, state.ScaleMin, state.ScaleMax, state.ScaleSpan, false);
        ModWaveform_ALS::ScrollTrace(*graph, state, 1);
    }
};

// A slow sine over the middle of the scale: short erase spans and joins per column.
void BM_TraceStep_Sine(benchmark::State& bs) {
    Chart chart;
    double phase = 0;
    for (int i = 0; i < 500; ++i) chart.Step(2048 + 1500 * std::sin(phase += 0.05));
    for (auto _ : bs) {
        chart.Step(2048 + 1500 * std::sin(phase += 0.05));
        benchmark::DoNotOptimize(chart.graph->image().constBits());
    }
}
BENCHMARK(BM_TraceStep_Sine)->Unit(benchmark::kMicrosecond);

// Noise over the full scale: nearly every column erases and joins across most of its height,
// the most pixels a step can touch.
void BM_TraceStep_FullScaleNoise(benchmark::State& bs) {
    Chart chart;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> level(0, 4096);
    for (int i = 0; i < 500; ++i) chart.Step(level(rng));
    for (auto _ : bs) {
        chart.Step(level(rng));
        benchmark::DoNotOptimize(chart.graph->image().constBits());
    }
}
BENCHMARK(BM_TraceStep_FullScaleNoise)->Unit(benchmark::kMicrosecond);

// The per-sample arithmetic of a collection pass: interpret the bytes, convert to lux, find
// the row.
void BM_SampleArithmetic(benchmark::State& bs) {
    std::uint16_t word = 0;
    for (auto _ : bs) {
        word += 977;
        const SignedReading r =
            InterpretData(std::uint8_t(word & 0xFF), std::uint8_t(word >> 8), false, 0, 16, -1);
        const double lux = ConvertToLux(r.value, 4000, 500000, 65535);
        benchmark::DoNotOptimize(PlotRow(lux, 0, 4001, 4001, false));
    }
}
BENCHMARK(BM_SampleArithmetic);

}  // namespace
