#include <gtest/gtest.h>

#include "acquisition/Conversion.h"

namespace lxm {
namespace {

TEST(InterpretData, PlainCountUnlessSignedProximityThenTwosComplementMaskedToTheResolution) {
    // Not a proximity measurement, or scheme 0: the whole word, unmasked and never negative.
    EXPECT_EQ(InterpretData(0xFF, 0xFF, false, 1, 12, 4095).value, 65535);
    SignedReading r = InterpretData(0xFF, 0xFF, true, 0, 16, -1);
    EXPECT_EQ(r.value, 65535);
    EXPECT_EQ(r.lastNegative, 1);
    EXPECT_FALSE(r.signedBranch);

    r = InterpretData(0xFF, 0xFF, true, 1, 16, -1);
    EXPECT_EQ(r.value, -1);
    EXPECT_EQ(r.lastNegative, -1);
    EXPECT_TRUE(r.signedBranch);
    EXPECT_EQ(InterpretData(0x00, 0x80, true, 1, 16, -1).value, -32768);
    r = InterpretData(0xFF, 0x7F, true, 1, 16, -1);
    EXPECT_EQ(r.value, 32767);
    EXPECT_EQ(r.lastNegative, 1);

    EXPECT_EQ(InterpretData(0x00, 0x08, true, 1, 12, 4095).value, -2048);
    EXPECT_EQ(InterpretData(0xFF, 0xF7, true, 1, 12, 4095).value, 2047);  // high nibble masked off
    EXPECT_EQ(InterpretData(0x80, 0x00, true, 1, 8, 255).value, -128);

    // Four-bit readings are never negative.
    for (int raw = 0; raw < 256; ++raw) {
        const SignedReading r = InterpretData(std::uint8_t(raw), 0xFF, true, 1, 4, 15);
        EXPECT_EQ(r.value, raw & 15);
        EXPECT_EQ(r.lastNegative, 1);
        EXPECT_EQ(r.signThreshold, 16);
    }
}

TEST(SwatchRed, DarkBelowOneCountOtherwiseScaledAndCapped) {
    EXPECT_EQ(SwatchRed(0, false, 4095), -1);
    EXPECT_EQ(SwatchRed(-5, true, 4095), -1);
    EXPECT_EQ(SwatchRed(1024, false, 4095), 64);  // 63.77
    EXPECT_EQ(SwatchRed(1024, true, 4095), 128);  // doubled in the signed case: 127.53
    EXPECT_EQ(SwatchRed(4000, true, 4095), 255);
    EXPECT_EQ(SwatchRed(10, false, 0), 255);  // no full scale yet: saturates, no crash
}

TEST(ConvertToLux, FullScaleOfTheRangeOverCountsPlusOne) {
    EXPECT_DOUBLE_EQ(ConvertToLux(32768, 4000, 500000, 65535), 2000.0);
    // 4-bit resolution keeps a full scale of 16, so the divisor is 17.
    EXPECT_DOUBLE_EQ(ConvertToLux(17, 1000, 500000, 16), 1000.0);
    EXPECT_DOUBLE_EQ(ConvertToLux(128, 16000, 250000, 255), 16000.0);
}

TEST(DualMode, SignedBytesAmbientIrAndNotAvailableWhenSaturated) {
    EXPECT_EQ(Signed16(0xFF, 0xFF), -1);
    EXPECT_EQ(Signed16(0x80, 0x00), -32768);
    EXPECT_EQ(Signed16(0x7F, 0xFF), 32767);
    EXPECT_EQ(AmbientIr(0, 10, 20), 10);
    EXPECT_EQ(AmbientIr(1, 10, 20), 20);
    // The average rounds halves to the even neighbour.
    EXPECT_EQ(AmbientIr(2, 3, 4), 4);
    EXPECT_EQ(AmbientIr(2, 2, 3), 2);
    EXPECT_EQ(AmbientIr(2, -3, -4), -4);

    // A saturated reading gives no difference.
    ProxMinusIrResult r = ProxMinusIr(100, 120, 4095);
    EXPECT_EQ(r.text(), "-20");
    EXPECT_FALSE(r.nonNegative());
    EXPECT_EQ(ProxMinusIr(500, 120, 4095).text(), "380");

    for (const auto& [prox, ir] : {std::pair{4095, 120}, std::pair{500, 4095}}) {
        r = ProxMinusIr(prox, ir, 4095);
        EXPECT_EQ(r.proxSaturated, prox == 4095);
        EXPECT_EQ(r.irSaturated, ir == 4095);
        EXPECT_EQ(r.proxMinusIr, kNotAvailable);
        EXPECT_EQ(r.text(), "NA");
    }
}

TEST(PlotRow, MapsTheScaleOntoRowsClampsAndRoundsOnlyUnsignedReadings) {
    EXPECT_EQ(PlotRow(0, 0, 4096, 4096, false), 304);
    EXPECT_EQ(PlotRow(2048, 0, 4096, 4096, false), 152);
    EXPECT_EQ(PlotRow(4095, 0, 4096, 4096, false), 1);  // 0.07 rounds to row 0, drawn on row 1
    EXPECT_EQ(PlotRow(1e9, 0, 4096, 4096, false), 1);
    EXPECT_EQ(PlotRow(-1e9, 0, 4096, 4096, false), 304);
    EXPECT_EQ(PlotRow(5000, -100, 4096, 4196, true), 1);
    // A collapsed scale lands on an edge row instead of failing.
    EXPECT_EQ(PlotRow(10, 10, 10, 0, false), 304);
    EXPECT_EQ(PlotRow(50, 10, 10, 0, false), 1);

    // The normal case rounds the reading first, the signed case does not. Scale 0..608: half a row per count.
    EXPECT_EQ(PlotRow(1.4, 0, 608, 608, false), 304);  // 1 count -> 303.5 -> even 304
    EXPECT_EQ(PlotRow(1.4, 0, 608, 608, true), 303);   // 303.3
    EXPECT_EQ(PlotRow(3, 0, 608, 608, false), 302);    // 302.5 -> even 302
    EXPECT_EQ(PlotRow(2.5, 0, 608, 608, false), 303);  // 2 counts (even) -> 303
    // Signed: below zero the minimum's magnitude is added, above zero it is subtracted.
    EXPECT_EQ(PlotRow(0, -100, 100, 200, true), 152);
    EXPECT_EQ(PlotRow(150, 100, 300, 200, true), 228);
}

TEST(FormatReading, WholeNumbersWithoutLeadingZerosZeroAsEmptyAndLuxWithItsDecimals) {
    EXPECT_EQ(FormatReading(0, false, 0), "");
    EXPECT_EQ(FormatReading(-0.4, false, 0), "");
    EXPECT_EQ(FormatReading(12.5, false, 0), "13");  // halves away from zero, unlike RoundEven
    EXPECT_EQ(FormatReading(-7, false, 0), "-7");
    EXPECT_EQ(FormatReading(65535, false, 2), "65535");  // decimals only apply to lux
    EXPECT_EQ(FormatReading(12345678, false, 0), "12345678");
    // Lux keeps its decimals.
    EXPECT_EQ(FormatReading(2000, true, 2), "2000.00");
    EXPECT_EQ(FormatReading(0, true, 2), ".00");
    EXPECT_EQ(FormatReading(0.5, true, 2), ".50");
    EXPECT_EQ(FormatReading(-3.25, true, 2), "-3.25");
    EXPECT_EQ(FormatReading(2.675, true, 2), "2.68");  // as printed, not as stored in binary
    EXPECT_EQ(FormatReading(999.9999, true, 3), "1000.000");
}

TEST(FormatLabel, NumbersArePaddedToFiveDigits) {
    EXPECT_EQ(FormatLabel("410"), "00410");
    EXPECT_EQ(FormatLabel("-100"), "-00100");
    EXPECT_EQ(FormatLabel("123456"), "123456");
    EXPECT_EQ(FormatLabel(""), "");
}

TEST(MaxMinPanel, TracksExtremesWithTheirBytesAndSnapshotsEvery26thPass) {
    MaxMinPanel panel;
    panel.Update(300, "300", 0x2C, 0x01);
    panel.Update(500.7, "500.7", 0xF4, 0x01);
    panel.Update(20, "20", 0x14, 0x00);
    panel.Update(400, "400", 0x90, 0x01);
    EXPECT_EQ(panel.countMax(), 500);
    EXPECT_EQ(panel.countMin(), 20);
    EXPECT_EQ(panel.texts(), (std::array<QString, 6>{"500.7", "F4 01", "20", "14 00", "", ""}));

    // A snapshot on every 26th pass; Clear keeps the count.
    for (int pass = 5; pass <= 25; ++pass) panel.Update(pass, "x", 0, 0);
    EXPECT_EQ(panel.texts()[4], "");
    panel.Update(26, "26", 0x1A, 0x00);
    EXPECT_EQ(panel.texts()[4], "26");
    EXPECT_EQ(panel.texts()[5], "1A 00");

    for (int pass = 1; pass <= 10; ++pass) panel.Update(pass, "x", 0, 0);
    panel.Clear();
    for (const QString& text : panel.texts()) EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(panel.counter(), 10);
    panel.Update(-5, "-5", 0xFB, 0xFF);  // extremes start afresh
    EXPECT_EQ(panel.countMax(), -5);
    EXPECT_EQ(panel.countMin(), -5);
    panel.Reset();
    EXPECT_EQ(panel.counter(), 0);
}

}  // namespace
}  // namespace lxm
