#include "Conversion.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "core/VbText.h"

namespace lxm {

namespace {

struct SignLimits {
    std::int32_t threshold;
    std::int16_t max;
};

SignLimits SignLimitsFor(int adcBits) {
    switch (adcBits) {
        case 12:
            return {2048, 2047};
        case 8:
            return {128, 127};
        // With a threshold of 16 and a 4-bit mask of 15 no 4-bit reading comes out negative.
        // Deliberately left that way: 4-bit proximity readings are shown unsigned.
        case 4:
            return {16, 7};
        // 16-bit, and any width the resolution control has not set yet.
        default:
            return {32768, 32767};
    }
}

// Half away from zero, the rounding of the display patterns, applied to the value as it
// prints with 15 significant digits so that 2.675 shows as 2.68 and not 2.67.
double RoundForDisplay(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    return std::round(std::strtod(buf, nullptr));
}

// Whole part of a count as the panel keeps it, saturating instead of overflowing.
std::int32_t WholeCount(double count) {
    return std::int32_t(std::clamp(std::floor(count), -2147483648.0, 2147483647.0));
}

}  // namespace

SignedReading InterpretData(std::uint8_t low, std::uint8_t high, bool measureProx, int proxScheme,
                            int adcBits, std::int32_t adcCountMax) {
    SignedReading r;
    const SignLimits limits = SignLimitsFor(adcBits);
    r.signThreshold = limits.threshold;
    r.signMax = limits.max;
    const std::int32_t word = std::int32_t(high) * 256 + low;
    if (!(measureProx && proxScheme != 0)) {
        r.value = word;
        return r;
    }
    r.signedBranch = true;
    const std::int32_t raw = word & adcCountMax;
    if (proxScheme == 1 && raw >= limits.threshold) {
        r.value = -(((raw - limits.threshold) ^ limits.max) + 1);
        r.lastNegative = -1;
    } else {
        r.value = raw;
    }
    return r;
}

int SwatchRed(std::int32_t value, bool signedBranch, std::int32_t fullScaleCounts) {
    if (value < 1) return -1;
    const double k = signedBranch ? 2.0 : 1.0;
    // Compared before rounding so that a zero full scale saturates instead of overflowing.
    const double level = k * value * 255.0 / fullScaleCounts;
    if (!(level < 255.0)) return 255;
    return int(RoundEven(level));
}

double ConvertToLux(double counts, std::int32_t rangeLux, std::int32_t rangeScaleDivisor,
                    std::int32_t fullScaleCounts) {
    return rangeLux * (500000.0 / rangeScaleDivisor) * counts / (double(fullScaleCounts) + 1.0);
}

std::int32_t Signed16(int msb, int lsb) {
    const std::int32_t word = (msb & 0xFF) * 256 + (lsb & 0xFF);
    return word >= 0x8000 ? word - 0x10000 : word;
}

std::int32_t AmbientIr(int mode, int before, int after) {
    switch (AmbientIrMode(mode)) {
        case AmbientIrMode::Before:
            return before;
        case AmbientIrMode::After:
            return after;
        case AmbientIrMode::Average:
            break;
    }
    return std::int32_t(RoundEven((double(before) + double(after)) / 2.0));
}

QString ProxMinusIrResult::text() const {
    return available() ? Trim(proxMinusIr) : QStringLiteral("NA");
}

ProxMinusIrResult ProxMinusIr(std::int32_t proxCount, std::int32_t ambientIr, std::int32_t fullScaleCounts) {
    ProxMinusIrResult r;
    r.proxSaturated = proxCount == fullScaleCounts;
    r.irSaturated = ambientIr == fullScaleCounts;
    r.proxMinusIr = r.available() ? proxCount - ambientIr : kNotAvailable;
    return r;
}

std::int32_t PlotRow(double latest, std::int32_t scaleMin, std::int32_t scaleMax, std::int32_t scaleSpan,
                     bool signedCase) {
    double row;
    if (signedCase) {
        double t = latest;
        if (scaleMin < 0) t = std::fabs(double(scaleMin)) + latest;
        if (scaleMin > 0) t = latest - scaleMin;
        row = kPlotRows - t * (double(kPlotRows) / scaleSpan);
    } else {
        const double d = std::nearbyint(latest - scaleMin);
        row = kPlotRows - d * (double(kPlotRows) / (double(scaleMax) - scaleMin));
    }
    // A collapsed scale (zero span) divides by zero: an infinite row is clamped like any
    // other, and the undefined one of a reading right at the minimum goes to the bottom.
    if (std::isnan(row)) return kPlotRows;
    row = std::nearbyint(row);
    if (row >= kPlotRows) return kPlotRows;
    if (row < 1) return 1;
    return std::int32_t(row);
}

QString FormatReading(double v, bool lux, int decimals) {
    if (!std::isfinite(v)) return QString();
    const int places = lux ? std::clamp(decimals, 0, 6) : 0;
    double scale = 1;
    for (int i = 0; i < places; ++i) scale *= 10;
    const double rounded = RoundForDisplay(v * scale);
    // Beyond what an int64 holds exactly the digits come from the double itself.
    if (std::fabs(rounded) >= 9e15) return QString::number(v, 'f', places);

    const std::int64_t whole = std::llabs(std::int64_t(rounded));
    const std::int64_t unit = std::int64_t(scale);
    QString text;
    // "#" places print nothing for a zero, so a reading that rounds to zero shows as an empty
    // box ("" or ".00"); there is no sign on such a zero.
    if (rounded < 0) text += QLatin1Char('-');
    if (whole / unit != 0) text += QString::number(whole / unit);
    if (places > 0) {
        text += QLatin1Char('.');
        text += QString::number(whole % unit).rightJustified(places, QLatin1Char('0'));
    }
    return text;
}

QString FormatLabel(const QString& text) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return text;
    const double rounded = RoundForDisplay(v);
    if (std::fabs(rounded) >= 9e15) return QString::number(rounded, 'f', 0);
    const std::int64_t whole = std::llabs(std::int64_t(rounded));
    const QString digits = QString::number(whole).rightJustified(5, QLatin1Char('0'));
    return rounded < 0 ? QStringLiteral("-") + digits : digits;
}

QString MaxMinPanel::BytesText(std::uint8_t lowByte, std::uint8_t highByte) {
    return Hex2(lowByte) + QLatin1Char(' ') + Hex2(highByte);
}

template <class Text>
void MaxMinPanel::Take(double count, const Text& text, std::uint8_t lowByte, std::uint8_t highByte) {
    if (count > countMax_) {
        countMax_ = WholeCount(count);
        texts_[0] = text();
        texts_[1] = BytesText(lowByte, highByte);
    }
    if (count < countMin_) {
        countMin_ = WholeCount(count);
        texts_[2] = text();
        texts_[3] = BytesText(lowByte, highByte);
    }
    if (++counter_ > kSnapshotPasses) {
        counter_ = 0;
        texts_[4] = text();
        texts_[5] = BytesText(lowByte, highByte);
    }
}

void MaxMinPanel::Update(double count, const QString& rawText, std::uint8_t lowByte, std::uint8_t highByte) {
    Take(
        count, [&] { return rawText; }, lowByte, highByte);
}

void MaxMinPanel::UpdateCount(std::int32_t count, std::uint8_t lowByte, std::uint8_t highByte) {
    Take(
        double(count), [&] { return Trim(count); }, lowByte, highByte);
}

void MaxMinPanel::Clear() {
    countMax_ = -9999999;
    countMin_ = 9999999;
    texts_.fill(QString());
}

void MaxMinPanel::Reset() {
    Clear();
    counter_ = 0;
}

}  // namespace lxm
