#include "VbText.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace lxm {

namespace {
QString Number(double v) {
    if (v == std::floor(v) && std::fabs(v) < 1e15) return QString::number(std::int64_t(v));
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
    QByteArray s = text.trimmed().toLatin1();
    int i = 0;
    const int n = s.size();
    QByteArray num;
    if (i < n && (s[i] == '+' || s[i] == '-')) num += s[i++];
    bool digits = false;
    while (i < n && std::isdigit(static_cast<unsigned char>(s[i]))) num += s[i++], digits = true;
    if (i < n && s[i] == '.') {
        num += s[i++];
        while (i < n && std::isdigit(static_cast<unsigned char>(s[i]))) num += s[i++], digits = true;
    }
    if (!digits) return 0;
    if (i < n && (s[i] == 'e' || s[i] == 'E')) {
        int j = i + 1;
        QByteArray exp = "e";
        if (j < n && (s[j] == '+' || s[j] == '-')) exp += s[j++];
        bool expDigits = false;
        while (j < n && std::isdigit(static_cast<unsigned char>(s[j]))) exp += s[j++], expDigits = true;
        if (expDigits) num += exp;
    }
    return std::strtod(num.constData(), nullptr);
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
