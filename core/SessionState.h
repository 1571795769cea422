#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Colours.h"

namespace lxm {

class ActiveForm;
class StartupLamps;

constexpr int kMaxRegisters = 256;

// The state every form and module of one session reads and writes. A test builds a fresh
// one; nothing here is a hidden global.
struct SessionState {
    ActiveForm* activeForm = nullptr;
    StartupLamps* startupLamps = nullptr;
    ColourTable colours;

    std::string SelectedType;
    std::uint8_t I2cWriteAddr = 0;
    std::uint8_t I2cReadAddr = 0;

    bool UsbConnected = false;
    bool UsbDetached = false;
    bool DriverInitOK = false;
    bool DeviceInfoOK = false;
    bool DeviceOpen = false;
    bool SessionOpen = false;
    // The board went away since it was last opened: plugged in again it is attached, but
    // nothing reaches it until it is opened anew ("Board > Reconnect").
    bool ReopenNeeded = false;

    // Continuous collection is running; the transfer layer and the detach handler stop it.
    bool Collecting = false;

    // Transfer state.
    bool TransferBusy = false;
    bool TransferDeferred = false;
    bool TransferOK = false;
    std::uint32_t LastStatus = 0;
    int ReadStatusByte = 0;
    int CmdPipe = 2;
    int ReadCount = 1;

    std::array<std::uint8_t, kMaxRegisters> RegReadMirror{};
    std::array<std::uint8_t, kMaxRegisters> RegWriteMirror{};
    std::array<bool, kMaxRegisters> PendingRead{};
    std::array<bool, kMaxRegisters> PendingWrite{};

    // Port-line image: port B enables, port C enables, port B levels, port C levels.
    std::array<std::uint8_t, 4> GpioImage{};
};

}  // namespace lxm
