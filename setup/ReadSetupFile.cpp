#include "setup/ReadSetupFile.h"

#include <QStringList>

namespace lxm {

namespace {

// A whole decimal number within [lo, hi], or nothing.
std::optional<int> Number(const QString& field, int lo, int hi) {
    bool ok = false;
    const int v = field.toInt(&ok);
    if (!ok || v < lo || v > hi) return std::nullopt;
    return v;
}

std::optional<bool> Flag(const QString& field) {
    if (field == QLatin1String("1")) return true;
    if (field == QLatin1String("0")) return false;
    return std::nullopt;
}

// One item line into `setup`; the reason when it is not one.
QString ParseItem(const QStringList& f, BoardSetup& setup) {
    const QString& tag = f.front();
    if (tag == QLatin1String("i")) {
        if (f.size() != 5) return QStringLiteral("a channel line is \"i out in gain enable\"");
        const auto out = Number(f[1], 0, kSetupChannels - 1);
        const auto in = Number(f[2], 0, kSetupChannels - 1);
        const auto gain = Number(f[3], 1, 8);
        const auto enable = Flag(f[4]);
        if (!out || !in) return QStringLiteral("channels are numbered 0 to %1").arg(kSetupChannels - 1);
        if (!gain || (*gain & (*gain - 1)) != 0) return QStringLiteral("the gain is 1, 2, 4 or 8");
        if (!enable) return QStringLiteral("enable is 0 or 1");
        setup.channels[std::size_t(*out)] = {*in, *gain, *enable};
        return {};
    }
    if (f.size() != 2) return QStringLiteral("\"%1\" takes one value").arg(tag);
    if (tag == QLatin1String("b")) {
        const auto chan = Number(f[1], 0, kSetupChannels - 1);
        if (!chan) return QStringLiteral("channels are numbered 0 to %1").arg(kSetupChannels - 1);
        setup.broadcastChannel = *chan;
        return {};
    }
    bool* target = tag == QLatin1String("p")   ? &setup.power
                   : tag == QLatin1String("o") ? &setup.commonOe
                   : tag == QLatin1String("e") ? &setup.broadcast
                   : tag == QLatin1String("c") ? &setup.clamp
                                               : nullptr;
    if (!target) return QStringLiteral("\"%1\" is not a setup item (i, p, o, b, e or c)").arg(tag.left(20));
    const auto on = Flag(f[1]);
    if (!on) return QStringLiteral("\"%1\" is 0 or 1").arg(tag);
    *target = *on;
    return {};
}

}  // namespace

std::variant<BoardSetup, SetupParseError> ParseSetupFile(const QString& text, const BoardSetup& start) {
    BoardSetup setup = start;
    const QStringList lines = text.split(QLatin1Char('\n'));
    int items = 0;
    for (int n = 0; n < lines.size(); ++n) {
        const QString line = lines[n].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';'))) continue;
        const QStringList fields = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const QString reason = ParseItem(fields, setup);
        if (!reason.isEmpty()) return SetupParseError{n + 1, reason};
        ++items;
    }
    // A text without a single item is not a setup file, whatever its comments say.
    if (items == 0) return SetupParseError{1, QStringLiteral("the file holds no setup lines")};
    return setup;
}

}  // namespace lxm
