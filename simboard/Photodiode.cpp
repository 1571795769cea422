#include "Photodiode.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "SimBoard.h"

namespace lxm::sim {

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

// Scene changes (sine, steps, noise) are averaged over a window at this spacing; the noise
// scene holds each level for 10 ms, so a finer one would buy nothing.
constexpr std::int64_t kSceneStepMicros = 5'000;
constexpr int kMaxSceneSteps = 20;

// The cosine of a number of turns, from a table: a conversion may not spend on two library
// cosines what the rest of its model costs (the error, under 5e-6, is far below any noise).
double CosTurns(double turns) {
    constexpr int kSteps = 1024;
    static const std::array<double, kSteps + 1> table = [] {
        std::array<double, kSteps + 1> t{};
        for (int i = 0; i <= kSteps; ++i) t[std::size_t(i)] = std::cos(kTwoPi * i / kSteps);
        return t;
    }();
    const double x = (turns - std::floor(turns)) * kSteps;
    // A turn a hair below a whole one rounds up to it.
    const auto i = std::min(std::size_t(x), std::size_t(kSteps - 1));
    return table[i] + (table[i + 1] - table[i]) * (x - double(i));
}

}  // namespace

// Infrared per lux as the two photodiodes see the sources: a white LED has almost none, a
// fluorescent tube a little, daylight a quarter to a third, a filament more than half its
// visible. Flicker: a filament's thermal inertia keeps it at about 12 %, a tube on a magnetic
// ballast ripples by about a third, an LED lamp's driver by under 10 % (a good one) up to
// 100 % (a dimmed or simple one; the middle of the good ones is taken). The infrared lamp
// gives no lux: its setting is its infrared in IR units, and it runs from a DC supply.
const std::array<SourceInfo, 5>& Sources() {
    static const std::array<SourceInfo, 5> sources{{
        {Source::Daylight, "daylight", "Daylight", 1, 0.30, 0},
        {Source::Incandescent, "incandescent", "Incandescent", 1, 0.55, 0.12},
        {Source::Fluorescent, "fluorescent", "Fluorescent", 1, 0.15, 0.35},
        {Source::Led, "led", "White LED", 1, 0.07, 0.08},
        {Source::Ir850, "ir850", "IR lamp 850 nm", 0, 1, 0},
    }};
    return sources;
}

const SourceInfo& InfoOf(Source source) {
    return Sources()[std::size_t(source)];
}

std::optional<Source> SourceNamed(std::string_view name) {
    for (const SourceInfo& s : Sources())
        if (name == s.name) return s.source;
    return std::nullopt;
}

std::uint64_t Rng::Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double Rng::Normal() {
    const std::uint64_t r = Next();
    const double sum = double(r & 0xFFFF) + double((r >> 16) & 0xFFFF) + double((r >> 32) & 0xFFFF) +
                       double(r >> 48);
    // Four uniforms on [0, 1) sum to a mean of 2 and a variance of 1/3.
    return (sum / 65536.0 - 2.0) * std::numbers::sqrt3;
}

double FlickerMean(double depth, int mainsHz, double startS, double lengthS) {
    if (depth <= 0 || mainsHz <= 0) return 1.0;
    const double ripples = 2.0 * mainsHz;
    const double start = startS * ripples;  // in ripple periods
    const double length = lengthS * ripples;
    if (length < 1e-6) return 1.0 + depth * CosTurns(start - 0.25);
    return 1.0 + depth * (CosTurns(start) - CosTurns(start + length)) / (kTwoPi * length);
}

namespace {

// The scene's own variation, averaged over the window.
double SceneMean(const LightScene& scene, std::int64_t start, std::int64_t length) {
    if (scene.kind == LightScene::Kind::Steady) return 1.0;
    const int steps = int(std::clamp<std::int64_t>(length / kSceneStepMicros, 1, kMaxSceneSteps));
    double sum = 0;
    for (int i = 0; i < steps; ++i) sum += scene.Factor(start + (2 * i + 1) * length / (2 * steps));
    return sum / steps;
}

}  // namespace

Exposure Expose(const LightScene& scene, std::int64_t endMicros, std::int64_t lengthMicros) {
    const SourceInfo& src = InfoOf(scene.source);
    const std::int64_t start = endMicros - lengthMicros;
    const double level = scene.ambientLux * SceneMean(scene, start, lengthMicros) *
                         FlickerMean(src.flicker, scene.mainsHz, start / 1e6, lengthMicros / 1e6) *
                         scene.glassPercent / 100.0;
    return {level * src.visible, level * src.irPerLux};
}

double FlickerSwing(const LightScene& scene, std::int64_t endMicros, std::int64_t lengthMicros) {
    const double depth = InfoOf(scene.source).flicker;
    if (depth <= 0) return 0;
    const double half = lengthMicros / 2e6;
    const double start = endMicros / 1e6 - 2 * half;
    return FlickerMean(depth, scene.mainsHz, start, half) - FlickerMean(depth, scene.mainsHz, start + half, half);
}

double AlsUnits(const Exposure& e) {
    static const double calibration = 1.0 + frontend::kAlsInfraredLeak * InfoOf(Source::Led).irPerLux;
    return (e.visibleLux + frontend::kAlsInfraredLeak * e.irUnits) / calibration;
}

double ReflectedUnits(double distanceMm, double reflectance, double drive, double gain, bool ideal) {
    if (distanceMm <= 0) return 0;
    const double cm = distanceMm / 10.0;
    if (ideal) return drive * reflectance * gain / (cm * cm);
    const double near = frontend::kNearFieldMm / 10.0;
    return drive * reflectance * gain / (cm * cm + near * near);
}

double GlassEchoUnits(double glassPercent, double drive, double gain) {
    return glassPercent < 100 ? drive * gain * frontend::kGlassEcho : 0;
}

double LedUnits(const LightScene& scene, double drive, double gain, double ambientIr) {
    const double glass = scene.glassPercent / 100.0;
    const double headroom = std::clamp(1.0 - ambientIr / frontend::kFrontEndLimitIr, 0.0, 1.0);
    return (ReflectedUnits(scene.objectDistanceMm, scene.reflectance, drive, gain, false) * glass * glass +
            GlassEchoUnits(scene.glassPercent, drive, gain)) *
           headroom;
}

double DarkElectronsPerSecond(double temperatureC) {
    return frontend::kDarkElectronsPerSecond25C * std::exp2((temperatureC - 25.0) / frontend::kDarkDoublingC);
}

Conversion ChannelConversion(double units, double fullScaleUnits, int bits, std::int64_t lengthMicros,
                             double temperatureC) {
    const double codes = double(std::int64_t(1) << bits);
    const double seconds = lengthMicros / 1e6;
    return {units * codes / fullScaleUnits,
            0,
            fullScaleUnits * frontend::kElectronsPerLuxSecond * seconds / codes,
            seconds,
            temperatureC,
            0,
            (std::int64_t(1) << bits) - 1};
}

double DarkCounts(const Conversion& c) {
    return DarkElectronsPerSecond(c.temperatureC) * c.integrationS / c.electronsPerCount;
}

double ExpectedCounts(const Conversion& c) {
    return c.signalCounts + DarkCounts(c);
}

namespace {

// Variance in counts^2 before quantisation: Poisson in electrons for the light and the dark
// charge, plus the read noise.
double Variance(const Conversion& c, double dark) {
    const double read = frontend::kReadNoiseElectrons / c.electronsPerCount;
    return (std::max(c.signalCounts, 0.0) + std::max(c.noiseOnlyCounts, 0.0) + dark) / c.electronsPerCount +
           read * read;
}

}  // namespace

double PredictedSd(const Conversion& c) {
    return std::sqrt(Variance(c, DarkCounts(c)) + 1.0 / 12.0);
}

std::int64_t Convert(const Conversion& c, Rng& rng) {
    const double dark = DarkCounts(c);
    const double x = c.signalCounts + dark + std::sqrt(Variance(c, dark)) * rng.Normal();
    // Clamped as a double first: far above the range the value would not fit an integer.
    const double code = std::floor(std::clamp(x + 0.5, double(c.low), double(c.high)));
    return std::int64_t(code);
}

}  // namespace lxm::sim
