// Threshold entries, their range messages and the register encodings of both device forms.
#include <gtest/gtest.h>

#include "acquisition/Thresholds.h"

namespace lxm {
namespace {

struct Encoded {
    int bits;
    const char* text;
    std::uint8_t low, high;
};

class EncodeTest : public ::testing::TestWithParam<Encoded> {};

TEST_P(EncodeTest, BytesOfTheTypedValue) {
    const Encoded& c = GetParam();
    const ThresholdBytes b = EncodeFamilyThreshold(ParseThreshold(QString::fromLatin1(c.text)), c.bits);
    EXPECT_EQ(b.low, c.low) << c.text << " at " << c.bits << " bits";
    EXPECT_EQ(b.high, c.high) << c.text << " at " << c.bits << " bits";
}

INSTANTIATE_TEST_SUITE_P(
    AllWidths, EncodeTest,
    ::testing::Values(
        // Negative values are the width's two's complement, sign-extended to 16 bits.
        Encoded{16, "-1", 0xFF, 0xFF}, Encoded{12, "-1", 0xFF, 0xFF}, Encoded{8, "-1", 0xFF, 0xFF},
        Encoded{4, "-1", 0xFF, 0xFF}, Encoded{16, "-100", 0x9C, 0xFF}, Encoded{12, "-100", 0x9C, 0xFF},
        Encoded{8, "-10", 0xF6, 0xFF}, Encoded{4, "-2", 0xFE, 0xFF}, Encoded{12, "-2048", 0x00, 0xF8},
        // Positive values are little-endian whatever the width.
        Encoded{16, "32768", 0x00, 0x80}, Encoded{16, "65535", 0xFF, 0xFF}, Encoded{12, "1500", 0xDC, 0x05},
        Encoded{4, "8", 0x08, 0x00},
        // Entries as Val reads them: fractions lose their fraction, trailing text is ignored,
        // no number is 0, and a value beyond 16 bits keeps its low bytes.
        Encoded{12, "12.9", 0x0C, 0x00}, Encoded{12, "-1.7", 0xFF, 0xFF},
        Encoded{12, "  300 lux", 0x2C, 0x01}, Encoded{12, "abc", 0x00, 0x00},
        Encoded{16, "70000", 0x70, 0x11},
        // A negative fraction above -1 has no magnitude: it goes out as the width's signMax + 1.
        Encoded{16, "-0.5", 0x00, 0x00}, Encoded{12, "-0.5", 0x00, 0xF0}, Encoded{8, "-0.5", 0x00, 0xFF},
        Encoded{4, "-0.5", 0xF0, 0xFF}));

TEST(ThresholdTest, SignedValuesReadBackAsWritten) {
    // Every value of the signed entry window survives a write and a read, except the top one,
    // which is half the full scale and therefore reads back as its negative twin.
    const struct {
        int bits;
        int min, max;
    } widths[] = {{12, -100, 2048}, {8, -10, 128}};
    for (const auto& w : widths) {
        for (int v = w.min; v < w.max; ++v) {
            const ThresholdBytes b = EncodeFamilyThreshold(ParseThreshold(QString::number(v)), w.bits);
            ASSERT_EQ(DecodeFamilyThreshold(b, w.bits, false), v) << w.bits << " bits";
        }
        const ThresholdBytes top = EncodeFamilyThreshold(ParseThreshold(QString::number(w.max)), w.bits);
        EXPECT_EQ(DecodeFamilyThreshold(top, w.bits, false), -w.max);
    }
}

TEST(ThresholdTest, ReadBackQuirksOfSixteenAndFourBits) {
    // 16 bits is masked to 12 and never reads back negative; 4 bits folds at 16, which a
    // four-bit value never reaches.
    EXPECT_EQ(DecodeFamilyThreshold({0x34, 0x12}, 16, false), 564);
    EXPECT_EQ(DecodeFamilyThreshold({0xFF, 0xFF}, 16, false), 4095);
    EXPECT_EQ(DecodeFamilyThreshold({0xFE, 0xFF}, 4, false), 14);
    EXPECT_EQ(DecodeFamilyThreshold({0xFF, 0xFF}, 12, false), -1);
    EXPECT_EQ(DecodeFamilyThreshold({0x80, 0xFF}, 8, false), -128);
    // Single polarity is the plain word at every width.
    EXPECT_EQ(DecodeFamilyThreshold({0xFF, 0xFF}, 16, true), 65535);
    EXPECT_EQ(DecodeFamilyThreshold({0x34, 0x12}, 4, true), 0x1234);
}

TEST(ThresholdTest, EntriesTooLargeForANumberHaveNoValue) {
    for (const char* text : {"1e10", "-3e9", "99999999999999999999", "1e308", "2147483648"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(ParseThreshold(QString::fromLatin1(text)).representable);
    }
    EXPECT_EQ(ParseThreshold(QStringLiteral("2147483647.9")).value, 2147483647);
    EXPECT_EQ(ParseThreshold(QStringLiteral("-2147483648")).value, -2147483647 - 1);
    // The most negative value has a magnitude one beyond the positive range.
    const ThresholdBytes b = EncodeFamilyThreshold(ParseThreshold(QStringLiteral("-2147483648")), 16);
    EXPECT_EQ(b.word(), 0x0000);
}

}  // namespace
}  // namespace lxm
