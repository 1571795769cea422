#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "transport/UsbDriver.h"

namespace lxm::sim {

class SimDriver;

// Several simulated boards on one bus behind one driver, as libusb puts every real board
// behind one: a registration hears of each board, and a device handle names its board in its
// top byte, so a transfer can only ever reach the board it was meant for.
class SimBus final : public UsbDriver {
public:
    // Puts a board on the bus; registrations already made hear of it as of a board plugged in.
    void Add(SimDriver& board);
    const std::vector<SimDriver*>& boards() const { return boards_; }
    // The board at bus:address, nullptr when none.
    SimDriver* At(int bus, int address) const;

    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override;
    std::uint32_t Uninit(DriverHandle handle) override;
    std::uint32_t SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) override;
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override;
    void PutDeviceInfo(const UsbDeviceInfo* info) override;
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override;
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override;
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) override;

private:
    struct Registration {
        UsbMatch match;
        UsbEvents events;
        std::vector<DriverHandle> inner;  // one per board, in board order
    };
    void Register(DriverHandle reg, std::size_t board);
    // The board a handle names and its own handle there; nullptr for a handle of no board.
    SimDriver* Route(DeviceHandle dev, DeviceHandle* inner) const;

    std::vector<SimDriver*> boards_;
    std::map<DriverHandle, Registration> regs_;
    DriverHandle nextReg_ = 1;
};

}  // namespace lxm::sim
