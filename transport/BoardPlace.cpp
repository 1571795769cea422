#include "transport/BoardPlace.h"

#include <charconv>
#include <memory>

namespace lxm {

std::optional<BoardPlace> ParseBoardPlace(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    auto number = [](std::string_view t) -> std::optional<int> {
        int v = 0;
        if (t.empty() || t.size() > 3) return std::nullopt;
        const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
        if (ec != std::errc() || end != t.data() + t.size() || v < 0 || v > 255) return std::nullopt;
        return v;
    };
    const auto bus = number(text.substr(0, colon));
    const auto port = number(text.substr(colon + 1));
    if (!bus || !port) return std::nullopt;
    return BoardPlace{*bus, *port};
}

std::uint32_t OneBoardDriver::Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) {
    // The device this registration holds, 0 for none; shared by its two handlers.
    auto held = std::make_shared<DeviceHandle>(0);
    UsbEvents only = events;
    only.attach = [attach = events.attach, place = place_, held](DeviceHandle dev, const UsbDeviceInfo& info,
                                                                   void* user) {
        const bool wanted = place ? IsAt(info, *place) : (*held == 0 || *held == dev);
        if (!wanted || !attach || !attach(dev, info, user)) return false;
        *held = dev;
        return true;
    };
    only.detach = [detach = events.detach, held](DeviceHandle dev, void* user) {
        if (dev != *held) return;
        *held = 0;
        if (detach) detach(dev, user);
    };
    return inner_.Init(out, match, only);
}

}  // namespace lxm
