#pragma once

#include <QString>
#include <array>
#include <cstdint>

// Arithmetic between the sensor's data bytes and what the forms show: signed interpretation,
// the light swatch, lux, the dual-mode difference, the plot row and the reading texts. No
// widgets and no transfers here, so every rule can be checked on its own.
namespace lxm {

// Result of interpreting the two data bytes of one reply.
struct SignedReading {
    std::int32_t value = 0;
    std::int16_t lastNegative = 1;  // 1 after a non-negative reading, -1 (True) after a negative one
    // Sign limits of the resolution, filled in whichever way the bytes were read.
    std::int32_t signThreshold = 0;
    std::int16_t signMax = 0;
    bool signedBranch = false;  // the two's-complement path was taken (doubles the swatch brightness)
};

// Turns the data bytes into a reading. Only a proximity measurement with a non-zero scheme is
// treated as two's complement; everything else is the plain 16-bit count. adcCountMax is the
// mask for the resolution (-1 keeps all bits at 16-bit resolution).
SignedReading InterpretData(std::uint8_t low, std::uint8_t high, bool measureProx, int proxScheme,
                            int adcBits, std::int32_t adcCountMax);

// Red level of the light swatch, or -1 when the reading is below one count.
int SwatchRed(std::int32_t value, bool signedBranch, std::int32_t fullScaleCounts);

// Counts to lux for the selected range and resolution.
double ConvertToLux(double counts, std::int32_t rangeLux, std::int32_t rangeScaleDivisor,
                    std::int32_t fullScaleCounts);

// Two data bytes read as one signed 16-bit number.
std::int32_t Signed16(int msb, int lsb);

// Which IR reading of the dual-mode sequence is subtracted from the proximity count.
enum class AmbientIrMode { Before = 0, After = 1, Average = 2 };

// The ambient IR of the dual-mode sequence (mode as AmbientIrMode; any other value averages).
// The average rounds halves to even.
std::int32_t AmbientIr(int mode, int before, int after);

// Outcome of proximity minus ambient IR. A saturated proximity or IR reading makes the
// difference meaningless, so it is reported as "NA" with the marker value -9999.
struct ProxMinusIrResult {
    std::int32_t proxMinusIr = 0;
    bool proxSaturated = false;
    bool irSaturated = false;
    bool available() const { return !proxSaturated && !irSaturated; }
    bool nonNegative() const { return proxMinusIr >= 0; }
    QString text() const;  // trimmed decimal, or "NA"
};

constexpr std::int32_t kNotAvailable = -9999;

ProxMinusIrResult ProxMinusIr(std::int32_t proxCount, std::int32_t ambientIr, std::int32_t fullScaleCounts);

// Number of pixel rows the value scale spans; row 304 is the scale minimum, row 0 its maximum.
constexpr int kPlotRows = 304;

// Pixel row of a reading on the strip chart, clamped to 1..304. In the signed case the
// reading is offset by the scale minimum without rounding it first.
std::int32_t PlotRow(double latest, std::int32_t scaleMin, std::int32_t scaleMax, std::int32_t scaleSpan,
                     bool signedCase);

// The live reading as the "######" pattern shows it, or "######.00" (decimals 2) /
// "######.000" (decimals 3) for lux. Halves round away from zero; a value that rounds to
// zero shows no digits and no sign ("" or ".00").
QString FormatReading(double v, bool lux, int decimals);

// A scale label through the "00000" pattern: a numeric text is zero-padded to five digits,
// anything else is shown as it is.
QString FormatLabel(const QString& text);

// The maximum/minimum panel beside the live reading: texts 0/1 hold the largest raw count and
// its bytes, 2/3 the smallest, 4/5 a periodically refreshed snapshot of the current one.
class MaxMinPanel {
public:
    // The snapshot is taken when the pass counter exceeds this, and the counter restarts:
    // every 26th pass, so the snapshot box stays readable while readings change fast.
    static constexpr int kSnapshotPasses = 25;

    void Update(double count, const QString& rawText, std::uint8_t lowByte, std::uint8_t highByte);
    // The same for a whole count, written out only when a box takes it: most passes change
    // nothing on the panel.
    void UpdateCount(std::int32_t count, std::uint8_t lowByte, std::uint8_t highByte);
    // The panel's Clear button: forgets the extremes and empties the boxes; the pass counter
    // keeps running.
    void Clear();
    // Collection start: as Clear, and the pass counter starts again from zero.
    void Reset();

    std::int32_t countMax() const { return countMax_; }
    std::int32_t countMin() const { return countMin_; }
    int counter() const { return counter_; }
    const std::array<QString, 6>& texts() const { return texts_; }

    // The bytes box: low then high byte, two hex digits each, separated by a blank.
    static QString BytesText(std::uint8_t lowByte, std::uint8_t highByte);

private:
    template <class Text>
    void Take(double count, const Text& text, std::uint8_t lowByte, std::uint8_t highByte);

    std::int32_t countMax_ = -9999999;
    std::int32_t countMin_ = 9999999;
    int counter_ = 0;
    std::array<QString, 6> texts_;
};

}  // namespace lxm
