#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "transport/UsbDriver.h"

namespace lxm {

// Where a board sits on the USB: its bus and its address (port) there.
struct BoardPlace {
    int bus = 0;
    int port = 0;
    std::string Text() const { return std::to_string(bus) + ":" + std::to_string(port); }
};

// "BUS:PORT" to a place; nothing when the text is not two whole numbers from 0 to 255.
std::optional<BoardPlace> ParseBoardPlace(std::string_view text);

inline bool IsAt(const UsbDeviceInfo& info, const BoardPlace& place) {
    return info.busNumber == place.bus && info.deviceAddress == place.port;
}

// A driver that offers only the board at one place: with several boards attached, a program
// (or one window of it) takes the board it was told to and leaves the others alone. Without a
// place a registration takes the first board offered and no other while it holds that one, so
// a second board plugged in never pulls a window off its own, nor does its unplugging reach
// it. A new place acts from the next registration on.
class OneBoardDriver final : public UsbDriver {
public:
    explicit OneBoardDriver(UsbDriver& inner, std::optional<BoardPlace> place = {}) : inner_(inner), place_(place) {}
    void Take(std::optional<BoardPlace> place) { place_ = place; }
    const std::optional<BoardPlace>& place() const { return place_; }

    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override;
    std::uint32_t Uninit(DriverHandle h) override { return inner_.Uninit(h); }
    std::uint32_t SetInterface(DeviceHandle dev, int i, int alt) override { return inner_.SetInterface(dev, i, alt); }
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override {
        return inner_.GetDeviceInfo(dev, info);
    }
    void PutDeviceInfo(const UsbDeviceInfo* info) override { inner_.PutDeviceInfo(info); }
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf, std::uint32_t size,
                           std::uint32_t* done, std::uint32_t timeoutMs) override {
        return inner_.Transfer(dev, pipe, dir, buf, size, done, timeoutMs);
    }
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override { return inner_.ResetPipe(dev, pipe); }
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t o) override { return inner_.ResetDevice(dev, o); }
    std::string LastOpenProblem() const override { return inner_.LastOpenProblem(); }

private:
    UsbDriver& inner_;
    std::optional<BoardPlace> place_;
};

}  // namespace lxm
