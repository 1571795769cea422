#pragma once

// The photodiode front end both simulated chips share: light sources with their infrared
// content and mains flicker, the cover glass, and one conversion with shot noise, read noise,
// dark counts, quantisation and clipping. Plain functions of their arguments and a seeded
// generator the board owns, so a bench is reproducible from its seed.
//
// Units. Visible light is in lux as a reference lux meter reads it. Infrared is in "IR
// units": what the IR photodiode reads, scaled so that one unit gives as many counts on the IR
// channel as one lux gives on the ALS channel. A source's ratio below is IR units per lux.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace lxm::sim {

struct LightScene;

enum class Source { Daylight, Incandescent, Fluorescent, Led, Ir850 };

struct SourceInfo {
    Source source;
    const char* name;     // on the command line
    const char* caption;  // in the simulator panel
    double visible;       // lux per lux of the setting (0: a lux meter does not see it)
    double irPerLux;      // IR units per unit of the setting
    double flicker;       // percent flicker / 100 of the ripple at twice the mains frequency
};
const std::array<SourceInfo, 5>& Sources();
const SourceInfo& InfoOf(Source source);
std::optional<Source> SourceNamed(std::string_view name);

// The board's noise generator (splitmix64): cheap, and the same sequence for the same seed.
class Rng {
public:
    explicit Rng(std::uint64_t seed = 1) : state_(seed) {}
    void Seed(std::uint64_t seed) { state_ = seed; }
    std::uint64_t Next();
    // A standard normal deviate as the sum of four uniforms from one draw: the variance is
    // exact, the tails stop at 3.5 SD, and it costs a few nanoseconds.
    double Normal();

private:
    std::uint64_t state_;
};

// Front-end figures shared by both chips (see the README's simulated-board section).
namespace frontend {
// Electrons per second per lux (or IR unit) that reach the integrator: an effective figure,
// the filter, the diode's small area and the integrator's charge step included. It puts the
// most sensitive range (1000 lux) at 30 electrons per count, so that a steady mid-scale
// reading there varies by about 0.1 %, as ALS datasheets' noise figures do.
constexpr double kElectronsPerLuxSecond = 2.0e4;
// Amplifier and ADC noise per conversion, in electrons (RMS).
constexpr double kReadNoiseElectrons = 45;
// Dark current left after the chip's own dark-diode subtraction, at 25 °C; doubles every 10 °C.
constexpr double kDarkElectronsPerSecond25C = 1000;
constexpr double kDarkDoublingC = 10;
// The ALS photodiode's filter passes this much of the infrared; the channel is calibrated
// so that it reads right under white LED light.
constexpr double kAlsInfraredLeak = 0.25;
// Light reflected off the cover glass back into the proximity photodiode, as a fraction of
// what an object of reflectance 1 at 1 cm returns; only with a glass in place.
constexpr double kGlassEcho = 0.002;
// Below this distance the reflected light stops growing as 1/d^2 (the optics' own size).
constexpr double kNearFieldMm = 3;
// Ambient infrared that fills the proximity front end: the LED's light gets what is left, so
// full sunlight (about 30000) halves a proximity reading and twice that hides any object.
constexpr double kFrontEndLimitIr = 60000;
}  // namespace frontend

// The mean of 1 + depth x sin(2 pi x 2 x mainsHz x t) over [startS, startS + lengthS]: a
// whole number of ripple periods gives exactly 1, a very short window the instantaneous value.
double FlickerMean(double depth, int mainsHz, double startS, double lengthS);

// Light on the photodiodes, averaged over an integration window, behind the cover glass.
struct Exposure {
    double visibleLux;
    double irUnits;
};
Exposure Expose(const LightScene& scene, std::int64_t endMicros, std::int64_t lengthMicros);
// How much brighter the ripple makes the first half of a window than the second, relative to
// the mean: what a measurement that subtracts an LED-off half from an LED-on half keeps of a
// flickering ambient.
double FlickerSwing(const LightScene& scene, std::int64_t endMicros, std::int64_t lengthMicros);

// What each photodiode reads, in the units of its counts-per-unit scale.
double AlsUnits(const Exposure& e);
inline double IrUnits(const Exposure& e) {
    return e.irUnits;
}

// Light returned by an object at a distance with the LED at a fraction of its reference
// drive, in the units whose gain is `gain` at reflectance 1 and 1 cm. Ideal: 1/d^2 all the
// way in; otherwise it levels off at the optics' size.
double ReflectedUnits(double distanceMm, double reflectance, double drive, double gain, bool ideal);
// The glass's crosstalk in the same units (0 without a glass).
double GlassEchoUnits(double glassPercent, double drive, double gain);
// What the proximity photodiode gets of the LED: the object's light through the glass and
// back, and the glass's echo, in the share of the front end the ambient infrared leaves.
double LedUnits(const LightScene& scene, double drive, double gain, double ambientIr);

double DarkElectronsPerSecond(double temperatureC);

// One conversion of a photodiode's charge.
struct Conversion {
    double signalCounts;        // mean signal in counts (light only)
    double noiseOnlyCounts;     // light whose shot noise adds but whose mean was subtracted
    double electronsPerCount;   // the range's charge per count
    double integrationS;        // how long the charge was collected
    double temperatureC;
    std::int64_t low, high;     // the ADC's codes; clipped there, never wrapped
};
// An ALS or IR conversion: `units` of light on a range of `fullScaleUnits` at `bits`,
// integrating for `lengthMicros`. The charge per count follows from the range and the time.
Conversion ChannelConversion(double units, double fullScaleUnits, int bits, std::int64_t lengthMicros,
                             double temperatureC);
double DarkCounts(const Conversion& c);
// The mean reading before quantisation and clipping: signal + dark.
double ExpectedCounts(const Conversion& c);
// The SD of steady readings: shot (signal and dark), read noise and quantisation.
double PredictedSd(const Conversion& c);
// A reading: the normal approximation of Poisson in electrons, rounded to a code.
std::int64_t Convert(const Conversion& c, Rng& rng);

}  // namespace lxm::sim
