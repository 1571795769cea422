#include "Lxm600Sensor.h"

#include <algorithm>
#include <cmath>

#include "SimBoard.h"
#include "core/Seams.h"

namespace lxm::sim {

namespace {

enum Reg : std::uint8_t {
    kIdReg = 0,
    kConfig = 1,
    kInterrupt = 2,
    kProxLow = 3,
    kProxHigh = 4,
    kAlsLowLsb = 5,
    kAlsNibbles = 6,
    kAlsHighLsb = 7,
    kProxData = 8,
    kAlsDataLow = 9,
    kAlsDataHigh = 10
};

// Register 1.
constexpr std::uint8_t kIrMode = 0x01;
constexpr std::uint8_t kRange2000 = 0x02;
constexpr std::uint8_t kAlsEnable = 0x04;
constexpr std::uint8_t kDrive200 = 0x08;
constexpr std::uint8_t kProxEnable = 0x80;
constexpr std::uint8_t kAlsBits = 0x07;
constexpr std::uint8_t kProxBits = 0xF8;

// Register 2.
constexpr std::uint8_t kPinAnd = 0x01;
constexpr std::uint8_t kAlsFlag = 0x08;
constexpr std::uint8_t kProxFlag = 0x80;
constexpr std::uint8_t kFlags = kAlsFlag | kProxFlag;

constexpr int kPersistence[4] = {1, 4, 8, 16};
constexpr std::int64_t kSleepMicros[8] = {800'000, 400'000, 200'000, 100'000, 75'000, 50'000, 12'500, 0};
constexpr int kAlsTop = 4095;
constexpr int kProxTop = 255;

// A conversion left running for a long time is not replayed result by result: only the
// most recent ones are, enough to fill the longest persistence.
constexpr std::int64_t kMaxCatchUp = 64;

int Counts(double value, int top) {
    return int(std::clamp<double>(std::floor(value), 0, top));
}

// Lands every result of a cycle that is due by now, oldest first; skipped results only count.
template <typename Complete>
void CatchUp(bool& running, std::int64_t& next, std::int64_t period, std::int64_t now, int& conversions,
             Complete complete) {
    if (!running || now < next) return;
    const std::int64_t due = (now - next) / period + 1;
    const std::int64_t skipped = std::max<std::int64_t>(0, due - kMaxCatchUp);
    conversions += int(skipped);
    next += skipped * period;
    for (; next <= now; next += period) complete(next);
}

}  // namespace

Lxm600Sensor::Lxm600Sensor(Clock& clock, const LightScene& scene, Rng& rng)
    : clock_(clock), scene_(scene), rng_(rng) {
    Reset();
}

void Lxm600Sensor::Reset() {
    regs_.fill(0);
    regs_[kIdReg] = kId;
    // The windows start wide open so that a fresh chip does not interrupt before they have
    // been programmed.
    regs_[kProxHigh] = 0xFF;
    regs_[kAlsNibbles] = 0xF0;
    regs_[kAlsHighLsb] = 0xFF;
    als_ = {};
    prox_ = {};
    alsOutside_ = proxOutside_ = 0;
    alsConversions_ = proxConversions_ = 0;
}

std::int64_t Lxm600Sensor::ProxPeriodMicros() const {
    return kProxMeasureMicros + kSleepMicros[(regs_[kConfig] >> 4) & 0x07];
}

std::uint8_t Lxm600Sensor::Read(std::uint8_t reg) {
    return Peek(reg);
}

std::uint8_t Lxm600Sensor::Peek(std::uint8_t reg) {
    if (reg >= kRegisterCount) return 0;
    Advance();
    return regs_[reg];
}

bool Lxm600Sensor::InterruptLineHigh() {
    Advance();
    const std::uint8_t r = regs_[kInterrupt];
    const bool als = r & kAlsFlag;
    const bool prox = r & kProxFlag;
    const bool asserted = (r & kPinAnd) ? (als && prox) : (als || prox);
    return !asserted;
}

void Lxm600Sensor::Write(std::uint8_t reg, std::uint8_t value) {
    if (reg >= kRegisterCount || reg == kIdReg) return;
    if (reg == kProxData || reg == kAlsDataLow || reg == kAlsDataHigh) return;
    // Results that landed before this write landed under the old settings.
    Advance();
    const std::int64_t now = clock_.Micros();
    if (reg == kInterrupt) {
        const std::uint8_t kept = regs_[kInterrupt] & value & kFlags;
        regs_[kInterrupt] = std::uint8_t((value & ~kFlags) | kept);
        return;
    }
    const std::uint8_t old = regs_[reg];
    regs_[reg] = value;
    if (reg != kConfig) return;

    if ((old ^ value) & kAlsBits) {
        als_.running = value & kAlsEnable;
        als_.next = now + kAlsConversionMicros;
        alsOutside_ = 0;
    }
    if ((old ^ value) & kProxBits) {
        prox_.running = value & kProxEnable;
        prox_.next = now + kProxMeasureMicros;
        proxOutside_ = 0;
    }
}

void Lxm600Sensor::Advance() {
    const std::int64_t now = clock_.Micros();
    CatchUp(als_.running, als_.next, kAlsConversionMicros, now, alsConversions_,
            [this](std::int64_t at) { CompleteAls(at); });
    CatchUp(prox_.running, prox_.next, ProxPeriodMicros(), now, proxConversions_,
            [this](std::int64_t at) { CompleteProx(at); });
}

int Lxm600Sensor::AlsCounts(std::int64_t at) {
    const std::uint8_t config = regs_[kConfig];
    const double fullScale = (config & kRange2000) ? 2000.0 : 125.0;
    if (scene_.ideal) {
        const LightScene::Sample light = scene_.At(at);
        const double units = (config & kIrMode) ? light.ir : light.lux;
        return Counts(units * (kAlsTop + 1) / fullScale, kAlsTop);
    }
    const Exposure light = Expose(scene_, at, kAlsConversionMicros);
    const double units = (config & kIrMode) ? IrUnits(light) : AlsUnits(light);
    return int(Convert(ChannelConversion(units, fullScale, 12, kAlsConversionMicros, scene_.temperatureC), rng_));
}

int Lxm600Sensor::ProxCounts(std::int64_t at) {
    const double drive = (regs_[kConfig] & kDrive200) ? 2.0 : 1.0;
    if (scene_.ideal) {
        const LightScene::Sample light = scene_.At(at);
        return Counts(ReflectedUnits(light.distanceMm, scene_.reflectance, drive, kProximityGain, true), kProxTop);
    }
    const double ambient = Expose(scene_, at, kProxMeasureMicros).irUnits;
    const double counts = LedUnits(scene_, drive, kProximityGain, ambient) + kProxAmbientLeak * ambient;
    const double seconds = kProxMeasureMicros / 1e6;
    return int(Convert({counts, 0, kProxElectronsPerCount, seconds, scene_.temperatureC, 0, kProxTop}, rng_));
}

void Lxm600Sensor::CompleteAls(std::int64_t at) {
    const int counts = AlsCounts(at);
    regs_[kAlsDataLow] = std::uint8_t(counts & 0xFF);
    regs_[kAlsDataHigh] = std::uint8_t(counts >> 8);
    ++alsConversions_;

    const int low = regs_[kAlsLowLsb] | ((regs_[kAlsNibbles] & 0x0F) << 8);
    const int high = regs_[kAlsHighLsb] | ((regs_[kAlsNibbles] >> 4) << 8);
    const bool outside = counts < low || counts > high;
    alsOutside_ = outside ? std::min(alsOutside_ + 1, kPersistence[3]) : 0;
    if (alsOutside_ >= kPersistence[(regs_[kInterrupt] >> 1) & 0x03]) regs_[kInterrupt] |= kAlsFlag;
}

void Lxm600Sensor::CompleteProx(std::int64_t at) {
    const int counts = ProxCounts(at);
    regs_[kProxData] = std::uint8_t(counts);
    ++proxConversions_;

    const bool outside = counts < regs_[kProxLow] || counts > regs_[kProxHigh];
    proxOutside_ = outside ? std::min(proxOutside_ + 1, kPersistence[3]) : 0;
    if (proxOutside_ >= kPersistence[(regs_[kInterrupt] >> 5) & 0x03]) regs_[kInterrupt] |= kProxFlag;
}

}  // namespace lxm::sim
