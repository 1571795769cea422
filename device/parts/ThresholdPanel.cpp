#include "ThresholdPanel.h"

#include <QLineEdit>

#include "core/VbText.h"
#include "transport/Session.h"

namespace lxm {

ThresholdScheme FamilyThresholdScheme(ThresholdBoxes boxes, std::function<ThresholdFormat()> format) {
    ThresholdScheme s;
    s.windows = {boxes};
    s.formats = [format] { return std::vector<ThresholdFormat>{format()}; };
    s.encode = [](const std::vector<ThresholdWindow>& w, const std::vector<ThresholdFormat>& f) {
        const ThresholdBytes low = EncodeFamilyThreshold(w[0].low, f[0].bits);
        const ThresholdBytes high = EncodeFamilyThreshold(w[0].high, f[0].bits);
        return RegisterBytes{{4, low.low}, {5, low.high}, {6, high.low}, {7, high.high}};
    };
    s.hexText = [](const ThresholdEntry& e, const ThresholdFormat& f) {
        return ThresholdHex(EncodeFamilyThreshold(e, f.bits));
    };
    s.readRegisters = {4, 5, 6, 7};
    s.decode = [](const std::map<int, std::uint8_t>& r, const std::vector<ThresholdFormat>& f) {
        const auto value = [&](int lsb) {
            return DecodeFamilyThreshold({r.at(lsb), r.at(lsb + 1)}, f[0].bits, f[0].singlePolarity);
        };
        return std::vector<std::pair<std::int32_t, std::int32_t>>{{value(4), value(6)}};
    };
    return s;
}

ThresholdPanel::ThresholdPanel(Session& session, RegisterRows rows, ThresholdScheme scheme)
    : s_(session), rows_(std::move(rows)), scheme_(std::move(scheme)) {}

void ThresholdPanel::Write() {
    const std::vector<ThresholdFormat> formats = scheme_.formats();
    if (formats.size() < scheme_.windows.size()) return;
    std::vector<ThresholdWindow> typed(scheme_.windows.size());
    bool allNumbers = true;
    for (std::size_t i = 0; i < typed.size(); ++i) {
        const ThresholdBoxes& b = scheme_.windows[i];
        const ThresholdFormat& f = formats[i];
        typed[i].low = ParseThreshold(b.low->text());
        if (!typed[i].low.representable || !WithinLimits(typed[i].low.value, f.min, f.max))
            s_.messages.MsgBox(LowLimitMessage(f.min, f.max));
        typed[i].high = ParseThreshold(b.high->text());
        if (!typed[i].high.representable || !WithinLimits(typed[i].high.value, f.min, f.max))
            s_.messages.MsgBox(HighLimitMessage(f.min, f.max));
        allNumbers = allNumbers && typed[i].low.representable && typed[i].high.representable;
    }
    // Such a number has no encoding; sending the low bits of some approximation of it would
    // program a window the user never typed.
    if (!allNumbers) return;

    const RegisterBytes bytes = scheme_.encode(typed, formats);
    for (const auto& [reg, byte] : bytes)
        if (QLineEdit* e = rows_.entry(reg)) e->setText(Hex2(byte));
    // A board that is gone has said so once (the detach message, or "not connected" from the
    // first write); the remaining registers would only repeat it.
    for (const auto& [reg, byte] : bytes) {
        rows_.write(reg);
        if (!s_.UsbConnected) break;
    }

    for (std::size_t i = 0; i < typed.size(); ++i) {
        const ThresholdBoxes& b = scheme_.windows[i];
        b.low->setText(Trim(typed[i].low.value));
        b.high->setText(Trim(typed[i].high.value));
        if (!scheme_.hexText) continue;
        if (b.lowHex) b.lowHex->setText(scheme_.hexText(typed[i].low, formats[i]));
        if (b.highHex) b.highHex->setText(scheme_.hexText(typed[i].high, formats[i]));
    }
}

void ThresholdPanel::Read() {
    // The running collection owns the board between its own transfers: reading now would put
    // these reads in the middle of its exchange.
    if (s_.TransferBusy) {
        readPending_ = true;
        s_.TransferDeferred = true;
        return;
    }
    const std::vector<ThresholdFormat> formats = scheme_.formats();
    std::map<int, std::uint8_t> bytes;
    for (int reg : scheme_.readRegisters) {
        rows_.read(reg);
        if (!s_.UsbConnected) return;
        bytes[reg] = s_.RegReadMirror[std::size_t(reg)];
    }
    readPending_ = false;
    const auto windows = scheme_.decode(bytes, formats);
    for (std::size_t i = 0; i < windows.size() && i < scheme_.windows.size(); ++i) {
        scheme_.windows[i].low->setText(Trim(windows[i].first));
        scheme_.windows[i].high->setText(Trim(windows[i].second));
    }
}

}  // namespace lxm
