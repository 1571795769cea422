// The measuring core's collection against bare reads of the same registers through the same
// wire, on the simulated board at one USB frame per transfer: what the core adds to a sample.
#include <benchmark/benchmark.h>

#include "acquisition/SensorFields.h"
#include "measure/SimulatedBoard.h"
#include "transport/PacketLink.h"

namespace {

using namespace lxm;

constexpr int kSamples = 500;

void BM_CoreCollect(benchmark::State& state) {
    SteadyClock clock;
    measure::SimulatedBoard sim(clock, "LXM410", 1000);
    sim.board().SetResolution(4);
    sim.board().SetMeasure("ir-cont");
    for (auto _ : state) {
        std::int64_t n = 0;
        sim.board().Collect(kSamples, 0, [&](const measure::Sample&) { return ++n, true; });
    }
    state.counters["samples/s"] = benchmark::Counter(double(kSamples) * double(state.iterations()),
                                                     benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CoreCollect)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void BM_BareReads(benchmark::State& state) {
    SteadyClock clock;
    measure::SimulatedBoard sim(clock, "LXM410", 1000);
    sim.board().SetResolution(4);
    sim.board().SetMeasure("ir-cont");
    PacketLink link(sim.driver());
    const DeviceHandle dev = sim.driver().currentHandle();
    for (auto _ : state) {
        for (int i = 0; i < kSamples; ++i) {
            std::vector<std::uint8_t> cmd = CommandPacket(2, 0x89, 2), reply(3);
            std::uint32_t done = 0;
            link.Out(dev, 2, cmd.data(), 3, &done, 1000);
            link.In(dev, 130, reply.data(), 3, &done, 1000);
        }
    }
    state.counters["samples/s"] = benchmark::Counter(double(kSamples) * double(state.iterations()),
                                                     benchmark::Counter::kIsRate);
}
BENCHMARK(BM_BareReads)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
