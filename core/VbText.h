#pragma once

#include <QString>
#include <cstdint>

// Small text and number conversions whose exact behaviour the program's displays rely on.
namespace lxm {

// Decimal text of a number with a blank in front when it is not negative (" 3", "-2").
QString Str(double v);
// Decimal text without that blank.
QString Trim(double v);
// Numeric value of the leading number in a text, 0 when there is none ("12ab" -> 12, "x" -> 0).
double Val(const QString& text);
// Upper-case hexadecimal of a byte, with a "0" put in front of a single digit.
QString Hex2(int value);
// Upper-case hexadecimal without padding (negative values as 32-bit two's complement).
QString Hex(long value);
// Whole-number rounding that rounds halves to the even neighbour (2.5 -> 2, 3.5 -> 4). A value
// beyond the 64-bit range gives the nearest end of it, NaN gives 0.
std::int64_t RoundEven(double v);
// A number cut to its whole part (towards zero) as a 32-bit integer, the way a typed number
// becomes a count: beyond the 32-bit range it gives the nearest end of it, NaN gives 0.
std::int32_t TruncInt32(double v);

}  // namespace lxm
