#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "transport/UsbDriver.h"

// The board's wire: command packets and their replies kept in step over one driver. It has no
// window and no session in it, so that the register panel and the measuring core that scripts
// and other programs use move the same packets the same way.
namespace lxm {

// The I2C command packet: count bytes to read (0 for a write), the 8-bit address, the first
// register, then the data bytes of a write.
std::vector<std::uint8_t> CommandPacket(std::uint8_t count, std::uint8_t address, std::uint8_t reg,
                                        const std::vector<std::uint8_t>& data = {});

class PacketLink {
public:
    explicit PacketLink(UsbDriver& driver) : driver_(driver) {}

    // What one transfer came to: the driver's status (valid only when the transfer was made),
    // whether it succeeded outright (the lamps), and whether the buffer holds this command's
    // reply (an overflowing reply does, without succeeding).
    struct Result {
        std::uint32_t status = kUsbOk;
        bool made = true;
        bool ok = false;
        bool ours = false;
    };

    // One packet out on pipe. Replies the board still owes on its IN pipe are drained first.
    Result Out(DeviceHandle dev, std::uint32_t pipe, std::uint8_t* buf, std::uint32_t size,
               std::uint32_t* done, std::uint32_t timeoutMs);
    // The reply to the last command on IN pipe (pipe >= 128), size bytes, zeros when it is not
    // this command's reply.
    Result In(DeviceHandle dev, std::uint32_t pipe, std::uint8_t* buf, std::uint32_t size,
              std::uint32_t* done, std::uint32_t timeoutMs);

private:
    std::uint32_t RawIn(DeviceHandle dev, std::uint8_t pipe, std::uint8_t* buf, std::uint32_t size,
                        std::uint32_t timeout);
    void SyncDevice(DeviceHandle dev);
    void NoteSilence(std::uint8_t pipe);
    void DrainOwed(DeviceHandle dev, std::uint8_t pipe);
    void Probe(DeviceHandle dev, std::uint8_t pipe, std::uint8_t* buf, std::uint32_t size);

    UsbDriver& driver_;
    // Per IN pipe: replies the board still owes, empty INs in a row while it owes one, whether a
    // reply was given up as lost and not yet proven so, and whether the last command reached
    // the board with its IN still to come.
    std::array<int, 256> owed_{};
    std::array<int, 256> silent_{};
    std::array<bool, 256> probation_{};
    std::array<bool, 256> commandSent_{};
    DeviceHandle device_ = 0;
};

}  // namespace lxm
