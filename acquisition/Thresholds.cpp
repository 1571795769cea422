#include "Thresholds.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "core/VbText.h"

namespace lxm {

namespace {

// Whole-number division rounding down, as the integer part of a quotient of the original
// arithmetic (a negative word divided by 256 lands one lower, not towards zero).
std::int64_t FloorDiv256(std::int64_t v) {
    return v >= 0 ? v / 256 : -((-v + 255) / 256);
}

}  // namespace

SignLimits WriteSignLimits(int bits) {
    switch (bits) {
        case 16:
            return {65535, 65535};
        case 12:
            return {4095, 2048};
        case 8:
            return {255, 128};
        default:
            return {15, 16};
    }
}

SignLimits ReadSignLimits(int bits) {
    switch (bits) {
        case 16:
            return {32767, 65535};
        case 12:
            return {2047, 2048};
        case 8:
            return {127, 128};
        default:
            return {7, 16};
    }
}

ThresholdEntry ParseThreshold(const QString& text) {
    ThresholdEntry e;
    e.entered = Val(text);
    const double whole = std::trunc(e.entered);
    if (!std::isfinite(whole) || whole < double(std::numeric_limits<std::int32_t>::min()) ||
        whole > double(std::numeric_limits<std::int32_t>::max())) {
        e.representable = false;
        e.value = 0;
        return e;
    }
    e.value = std::int32_t(whole);
    return e;
}

QString LowLimitMessage(std::int32_t min, std::int32_t max) {
    return QStringLiteral("Low Limit must be within ") + Str(min) + QStringLiteral(" Min and ") + Str(max) +
           QStringLiteral(" Max. Re-enter Low Limit");
}

QString HighLimitMessage(std::int32_t min, std::int32_t max) {
    return QStringLiteral("High Limit must be within ") + Str(min) + QStringLiteral(" Min and ") + Str(max) +
           QStringLiteral(" Max. Re-enter High Limt");
}

ThresholdBytes EncodeFamilyThreshold(const ThresholdEntry& e, int bits) {
    ThresholdBytes b;
    if (e.entered >= 0) {
        const std::int64_t v = e.value;
        b.low = std::uint8_t(v & 255);
        b.high = std::uint8_t(FloorDiv256(v) & 255);
        return b;
    }
    const SignLimits s = WriteSignLimits(bits);
    const std::int64_t a = std::llabs(std::int64_t(e.value));
    const std::int64_t w = std::int64_t(s.signMax) - a + 1;
    b.high = std::uint8_t(FloorDiv256(w) & 255);
    b.low = std::uint8_t(w & 255);
    if (bits == 12) b.high |= 0xF0;
    if (bits == 8 || bits == 4) b.high = 255;
    if (bits == 4) b.low |= 0xF0;
    return b;
}

std::int32_t DecodeFamilyThreshold(ThresholdBytes b, int bits, bool singlePolarity) {
    const std::int32_t word = b.high * 256 + b.low;
    if (singlePolarity) return word;
    const SignLimits s = ReadSignLimits(bits);
    std::int32_t raw = word;
    if (s.signThreshold == 65535 || s.signThreshold == 2048)
        raw &= 0xFFF;
    else if (s.signThreshold == 128)
        raw &= 0xFF;
    else if (s.signThreshold == 16)
        raw &= 0xF;
    if (raw >= s.signThreshold) return -(((raw - s.signThreshold) ^ s.signMax) + 1);
    return raw;
}

std::array<std::uint8_t, 3> PackAls12Thresholds(std::int32_t low, std::int32_t high) {
    const auto nibble = [](std::int32_t v) { return std::int64_t(FloorDiv256(v)); };
    return {std::uint8_t(low & 255), std::uint8_t((nibble(high) * 16 + nibble(low)) & 255),
            std::uint8_t(high & 255)};
}

std::pair<std::int32_t, std::int32_t> UnpackAls12Thresholds(const std::array<std::uint8_t, 3>& regs) {
    return {(regs[1] & 0x0F) * 256 + regs[0], (regs[1] >> 4) * 256 + regs[2]};
}

QString ThresholdHex(ThresholdBytes b) {
    return Hex2(b.high) + Hex2(b.low);
}

}  // namespace lxm
