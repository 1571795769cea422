#include <cmath>
#include <numbers>

#include "SimBoard.h"

namespace lxm::sim {

namespace {

// Noise holds one level for this long, so that consecutive conversions of a fast resolution
// see the same light, as they would behind a real lamp's flicker filter.
constexpr std::int64_t kNoiseBucketMicros = 10'000;

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
    std::int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
    return q;
}

// A well-mixed 64-bit hash; the noise has to be a pure function of seed and time so that
// a reading taken twice at the same instant agrees.
std::uint64_t Mix(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

}  // namespace

LightScene::Sample LightScene::At(std::int64_t micros) const {
    const double factor = Factor(micros);
    return {ambientLux * factor, infrared * factor, objectDistanceMm};
}

double LightScene::Factor(std::int64_t micros) const {
    double factor = 1.0;
    const double t = double(micros) / 1e6;
    switch (kind) {
        case Kind::Steady:
            break;
        case Kind::Sine:
            if (periodS > 0) factor = 1.0 + depth * std::sin(2.0 * std::numbers::pi * t / periodS);
            break;
        case Kind::Steps: {
            const auto dwell = std::int64_t(periodS * 1e6);
            if (dwell > 0) factor = (FloorDiv(micros, dwell) % 2 == 0) ? 1.0 - depth : 1.0 + depth;
            break;
        }
        case Kind::Noise: {
            const std::uint64_t bucket = std::uint64_t(FloorDiv(micros, kNoiseBucketMicros));
            const std::uint64_t h = Mix(Mix(seed) ^ bucket);
            const double u = double(h >> 11) / double(1ull << 53);  // [0, 1)
            factor = 1.0 + depth * (2.0 * u - 1.0);
            break;
        }
        case Kind::Ramp:
            if (periodS > 0 && ambientLux > 0 && rampToLux > 0) {
                double phase = std::fmod(t / periodS, 2.0);
                if (phase < 0) phase += 2.0;
                factor = std::pow(rampToLux / ambientLux, phase <= 1.0 ? phase : 2.0 - phase);
            }
            break;
    }
    return factor < 0 ? 0 : factor;
}

}  // namespace lxm::sim
