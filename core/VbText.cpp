#include "VbText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace lxm {

namespace {
QString Number(double v) {
    if (v == std::floor(v) && std::fabs(v) < 1e15) {
        // Counts are formatted on every collection pass; this skips the locale machinery.
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, std::int64_t(v)).ptr;
        return QString::fromLatin1(digits, qsizetype(end - digits));
    }
    return QString::number(v, 'g', 15);
}
}  // namespace

QString Str(double v) {
    return v < 0 ? Number(v) : QStringLiteral(" ") + Number(v);
}

QString Trim(double v) {
    return Number(v);
}

double Val(const QString& text) {
    // Leading blanks are skipped; the number ends at the first character that cannot continue it.
    // The collection loop reads its counts back through here on every pass, so the common case,
    // a whole number of up to 15 digits, is taken without allocating; anything longer goes to
    // strtod, which rounds as the language's own conversion does.
    const QChar* p = text.constData();
    const QChar* const end = p + text.size();
    auto digit = [&](const QChar* q) { return q < end && q->unicode() >= '0' && q->unicode() <= '9'; };
    auto is = [&](const QChar* q, char c) { return q < end && q->unicode() == c; };
    while (p < end && p->isSpace()) ++p;
    const QChar* const first = p;
    bool negative = false;
    if (is(p, '+') || is(p, '-')) negative = (p++)->unicode() == '-';
    const QChar* const intStart = p;
    std::int64_t whole = 0;
    // Digits beyond the fifteenth go to the general scan; adding them up here would overflow.
    while (digit(p) && p - intStart < 16) whole = whole * 10 + (p->unicode() - '0'), ++p;
    // 15 digits fit a double exactly; no fraction or exponent follows.
    if (p > intStart && p - intStart <= 15 && !digit(p) && !is(p, '.') && !is(p, 'e') && !is(p, 'E'))
        return negative ? -double(whole) : double(whole);

    std::string num;
    num.reserve(std::size_t(end - first) + 2);
    p = first;
    if (is(p, '+') || is(p, '-')) num += char((p++)->unicode());
    bool digits = false;
    while (digit(p)) num += char((p++)->unicode()), digits = true;
    if (is(p, '.')) {
        num += char((p++)->unicode());
        while (digit(p)) num += char((p++)->unicode()), digits = true;
    }
    if (!digits) return 0;
    if (is(p, 'e') || is(p, 'E')) {
        const QChar* q = p + 1;
        std::string exp = "e";
        if (is(q, '+') || is(q, '-')) exp += char((q++)->unicode());
        bool expDigits = false;
        while (digit(q)) exp += char((q++)->unicode()), expDigits = true;
        if (expDigits) num += exp;
    }
    return std::strtod(num.c_str(), nullptr);
}

QString Hex2(int value) {
    QString t = QString::number(value & 0xFF, 16).toUpper();
    return t.size() == 1 ? QStringLiteral("0") + t : t;
}

QString Hex(long value) {
    return QString::number(std::uint32_t(value), 16).toUpper();
}

std::int64_t RoundEven(double v) {
    // 2^63 is exact in a double; converting it or anything above it would be undefined.
    constexpr double kTwo63 = 9223372036854775808.0;
    if (std::isnan(v)) return 0;
    const double r = std::nearbyint(v);
    if (r >= kTwo63) return std::numeric_limits<std::int64_t>::max();
    if (r < -kTwo63) return std::numeric_limits<std::int64_t>::min();
    return std::int64_t(r);
}

std::int32_t TruncInt32(double v) {
    if (std::isnan(v)) return 0;
    const double t = std::trunc(v);
    if (t >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (t <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return std::int32_t(t);
}

}  // namespace lxm
