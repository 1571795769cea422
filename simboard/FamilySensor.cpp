#include <algorithm>
#include <cmath>

#include "SimBoard.h"
#include "core/Seams.h"

namespace lxm::sim {

namespace {

enum Reg : std::uint8_t {
    kCommand1 = 0,
    kCommand2 = 1,
    kDataLow = 2,
    kDataHigh = 3,
    kLowLsb = 4,
    kHighLsb = 6
};

constexpr std::uint8_t kFlagBit = 0x04;

// Operation of register 0 bits 7..5. The low two bits name the measurement, bit 2 makes it
// continuous; 100 has no measurement and behaves as power down.
enum Measurement { kNone = 0, kAls = 1, kIr = 2, kProx = 3 };
int MeasurementOf(std::uint8_t command) {
    return (command >> 5) & 0x03;
}
bool Continuous(std::uint8_t command) {
    return (command & 0x80) != 0;
}

constexpr double kRangeLux[4] = {1000, 4000, 16000, 64000};
constexpr double kDriveMilliamps[4] = {12.5, 25, 50, 100};
constexpr int kPersistence[4] = {1, 4, 8, 16};

// The two proximity samples of scheme 1 do not cancel the ambient infrared exactly: a little
// LED-to-sensor crosstalk adds, and the ambient sample is weighted slightly high. With no
// object in front, a bright infrared background therefore reads slightly negative.
constexpr double kCrosstalk = 0.5;
constexpr double kAmbientOverweight = 0.02;

// A continuous conversion left alone for a long time is not replayed conversion by
// conversion: only the most recent ones are, enough to fill the longest persistence.
constexpr std::int64_t kMaxCatchUp = 64;

bool SignedScheme(std::uint8_t command2) {
    return (command2 & 0x80) != 0;
}

std::int32_t SignExtend(std::uint32_t raw, int bits) {
    const std::uint32_t sign = 1u << (bits - 1);
    return std::int32_t(raw ^ sign) - std::int32_t(sign);
}

}  // namespace

FamilySensor::FamilySensor(Clock& clock, const LightScene& scene, Rng& rng)
    : clock_(clock), scene_(scene), rng_(rng) {
    Reset();
}

void FamilySensor::Reset() {
    regs_.fill(0);
    // The high threshold starts at the top so that a fresh chip does not interrupt before
    // the window has been programmed.
    regs_[kHighLsb] = 0xFF;
    regs_[kHighLsb + 1] = 0xFF;
    convStart_ = 0;
    converting_ = false;
    persistCount_ = 0;
    conversions_ = 0;
}

// 100 ms at 16 bits: a whole number of ripple periods on 50 Hz and on 60 Hz mains alike.
std::int64_t FamilySensor::ConversionMicros(int bits) {
    return 100'000 >> (16 - bits);
}

int FamilySensor::ResolutionBits() const {
    static constexpr int kBits[4] = {16, 12, 8, 4};
    return kBits[(regs_[kCommand2] >> 2) & 0x03];
}

std::uint8_t FamilySensor::Read(std::uint8_t reg) {
    if (reg >= kRegisterCount) return 0;
    Advance();
    return regs_[reg];
}

std::uint8_t FamilySensor::Peek(std::uint8_t reg) {
    if (reg >= kRegisterCount) return 0;
    Advance();
    return regs_[reg];
}

bool FamilySensor::InterruptLineHigh() {
    Advance();
    return (regs_[kCommand1] & kFlagBit) == 0;
}

void FamilySensor::Write(std::uint8_t reg, std::uint8_t value) {
    if (reg >= kRegisterCount || reg == kDataLow || reg == kDataHigh) return;
    // Conversions that ended before this write ended under the old settings.
    Advance();
    const std::int64_t now = clock_.Micros();
    if (reg == kCommand1) {
        // The flag belongs to the chip: writing 0 clears it, writing 1 keeps what is there.
        const std::uint8_t flag = regs_[kCommand1] & value & kFlagBit;
        regs_[kCommand1] = std::uint8_t((value & ~kFlagBit) | flag);
        persistCount_ = 0;
        converting_ = MeasurementOf(value) != kNone;
        convStart_ = now;
        return;
    }
    regs_[reg] = value;
    // New range or resolution: the conversion under way is discarded and starts over.
    if (reg == kCommand2 && converting_) convStart_ = now;
}

void FamilySensor::Advance() {
    if (!converting_) return;
    const std::int64_t now = clock_.Micros();
    const std::int64_t length = ConversionMicros(ResolutionBits());
    if (now < convStart_ + length) return;

    if (!Continuous(regs_[kCommand1])) {
        converting_ = false;
        CompleteConversion(convStart_ + length);
        return;
    }
    const std::int64_t done = (now - convStart_) / length;
    const std::int64_t skipped = std::max<std::int64_t>(0, done - kMaxCatchUp);
    conversions_ += int(skipped);
    for (std::int64_t i = skipped + 1; i <= done; ++i) CompleteConversion(convStart_ + i * length);
    convStart_ += done * length;
}

// The photodiodes integrate the light over the whole conversion; the proximity LED is on for
// it too.
std::uint16_t FamilySensor::Measure(int op, std::int64_t at) {
    if (scene_.ideal) return MeasureIdeal(op, at);
    const std::uint8_t c2 = regs_[kCommand2];
    const int bits = ResolutionBits();
    const std::int64_t length = ConversionMicros(bits);
    const Exposure light = Expose(scene_, at, length);
    double units = 0;
    double ambient = 0;  // the prox measurement's infrared sample, scheme 1
    if (op == kAls) units = AlsUnits(light);
    if (op == kIr) units = IrUnits(light);
    if (op == kProx) {
        units = LedUnits(scene_, kDriveMilliamps[(c2 >> 4) & 0x03] / 100.0, kProximityGain, light.irUnits);
        if (SignedScheme(c2)) {
            ambient = light.irUnits;
            units += kCrosstalk - kAmbientOverweight * ambient + ambient * FlickerSwing(scene_, at, length);
        } else {
            units += light.irUnits;
        }
    }
    const double range = kRangeLux[c2 & 0x03];
    Conversion c = ChannelConversion(units, range, bits, length, scene_.temperatureC);
    if (op != kProx || !SignedScheme(c2)) return std::uint16_t(Convert(c, rng_));
    // Both samples carry the ambient's shot noise; only its mean cancels.
    c.noiseOnlyCounts = 2 * ChannelConversion(ambient, range, bits, length, 0).signalCounts;
    c.low = -(std::int64_t(1) << (bits - 1));
    c.high = -c.low - 1;
    return std::uint16_t(std::uint64_t(Convert(c, rng_)) & std::uint64_t(c.high * 2 + 1));
}

std::uint16_t FamilySensor::MeasureIdeal(int op, std::int64_t at) const {
    const LightScene::Sample light = scene_.At(at);
    const std::uint8_t c2 = regs_[kCommand2];
    const int bits = ResolutionBits();
    const double countsPerUnit = double(1 << bits) / kRangeLux[c2 & 0x03];
    const std::int64_t top = (std::int64_t(1) << bits) - 1;

    auto unsignedCounts = [&](double units) {
        return std::uint16_t(
            std::clamp<std::int64_t>(std::int64_t(std::floor(units * countsPerUnit)), 0, top));
    };

    switch (op) {
        case kAls:
            return unsignedCounts(light.lux);
        case kIr:
            return unsignedCounts(light.ir);
        case kProx: {
            const double drive = kDriveMilliamps[(c2 >> 4) & 0x03] / 100.0;
            const double reflected =
                ReflectedUnits(light.distanceMm, scene_.reflectance, drive, kProximityGain, true);
            if (!SignedScheme(c2)) return unsignedCounts(reflected + light.ir);
            const double units = reflected + kCrosstalk - kAmbientOverweight * light.ir;
            const std::int64_t half = std::int64_t(1) << (bits - 1);
            const std::int64_t counts =
                std::clamp<std::int64_t>(std::int64_t(std::floor(units * countsPerUnit)), -half, half - 1);
            return std::uint16_t(std::uint64_t(counts) & std::uint64_t(top));
        }
        default:
            return 0;
    }
}

void FamilySensor::CompleteConversion(std::int64_t at) {
    const int op = MeasurementOf(regs_[kCommand1]);
    const std::uint16_t raw = Measure(op, at);
    regs_[kDataLow] = std::uint8_t(raw & 0xFF);
    regs_[kDataHigh] = std::uint8_t(raw >> 8);
    ++conversions_;

    const auto threshold = [&](int lsb) { return std::uint16_t(regs_[lsb] | (regs_[lsb + 1] << 8)); };
    const std::uint16_t lowRaw = threshold(kLowLsb);
    const std::uint16_t highRaw = threshold(kHighLsb);
    bool outside;
    if (op == kProx && SignedScheme(regs_[kCommand2])) {
        // Signed readings against thresholds stored sign-extended to 16 bits.
        const std::int32_t value = SignExtend(raw, ResolutionBits());
        outside = value < std::int16_t(lowRaw) || value > std::int16_t(highRaw);
    } else {
        outside = raw < lowRaw || raw > highRaw;
    }
    persistCount_ = outside ? std::min(persistCount_ + 1, kPersistence[3]) : 0;
    if (persistCount_ >= kPersistence[regs_[kCommand1] & 0x03]) regs_[kCommand1] |= kFlagBit;
}

}  // namespace lxm::sim
