#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

// Interrupt thresholds as the user types them and as the sensor's registers hold them: the
// entry check, its messages, and the byte encodings of both device forms. No widgets here.
namespace lxm {

// The pair of numbers the two's-complement arithmetic works with: the largest magnitude of the
// width and the raw value from which on a reading counts as negative.
struct SignLimits {
    std::int32_t signMax = 0;
    std::int32_t signThreshold = 0;
};

// Writing and reading use different tables: the write side builds a negative value as
// signMax - |v| + 1 (so signMax is the all-ones pattern of the width), the read side folds
// raw values at signThreshold and XORs with the largest positive value. 4 bits writes with
// signMax 15 but reads back with 7. Any other width counts as 4 bits.
SignLimits WriteSignLimits(int bits);
SignLimits ReadSignLimits(int bits);

// A threshold entry as the handlers take it: the leading number of the text, its whole part
// towards zero. A number whose whole part does not fit in 32 bits has no value (nullopt).
struct ThresholdEntry {
    double entered = 0;         // the leading number of the text
    std::int32_t value = 0;     // its whole part
    bool representable = true;  // false when the whole part does not fit
};
ThresholdEntry ParseThreshold(const QString& text);

// The entry check's messages, exactly as the program has always worded them.
QString LowLimitMessage(std::int32_t min, std::int32_t max);
QString HighLimitMessage(std::int32_t min, std::int32_t max);
inline bool WithinLimits(std::int32_t v, std::int32_t min, std::int32_t max) {
    return v >= min && v <= max;
}

struct ThresholdBytes {
    std::uint8_t low = 0;
    std::uint8_t high = 0;
    std::uint16_t word() const { return std::uint16_t(low | (high << 8)); }
};

// The family's 16-bit little-endian threshold. A non-negative entry is sent as its value (the
// high byte keeps its low eight bits when the value exceeds 16 bits); a negative one as the
// two's complement of its whole magnitude in the resolution's width, sign-extended to 16 bits,
// with the 4-bit low nibble's upper half set as well. A negative fraction above -1 has a
// magnitude of 0 and is sent as signMax + 1, as the board software always did. Only for an
// entry whose whole part is representable.
ThresholdBytes EncodeFamilyThreshold(const ThresholdEntry& e, int bits);

// The family's read-back. In two's-complement format the raw word is masked to the width
// first; the 16-bit case uses the 12-bit mask, so it never reads back negative and shows its
// value modulo 4096. Single polarity is the plain word.
std::int32_t DecodeFamilyThreshold(ThresholdBytes b, int bits, bool singlePolarity);

// The multi-function sensor's ALS window: two 12-bit values, low bytes in their own registers
// and both upper nibbles sharing the middle one (high nibble above low nibble). Returned in
// register order: low threshold bits 7..0, the shared nibbles, high threshold bits 7..0.
std::array<std::uint8_t, 3> PackAls12Thresholds(std::int32_t low, std::int32_t high);
// And back, for a read of the same three registers.
std::pair<std::int32_t, std::int32_t> UnpackAls12Thresholds(const std::array<std::uint8_t, 3>& regs);

// Register bytes in the order they are to be written.
using RegisterBytes = std::vector<std::pair<int, std::uint8_t>>;

// Two hexadecimal digits per byte, high byte first: how a threshold's hex box shows it.
QString ThresholdHex(ThresholdBytes b);

}  // namespace lxm
