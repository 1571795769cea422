#pragma once

#include <cstdint>

#include "transport/UsbDriver.h"

namespace lxm {
class Session;
}

// Attaching, opening and closing the evaluation board through the driver, and the lamps that
// show how far that got.
namespace lxm::generic_usb_lib {

// Handed to the driver as user data; the attach handler fills in the device handle.
struct AttachContext {
    std::int32_t interfaceNumber = 0;
    std::int32_t alternateSetting = 0;
    std::uint32_t deviceHandle = 0;
    std::int32_t reserved = 0;
    std::int32_t status = 0;
};
static_assert(sizeof(AttachContext) == 20);

class UsbLib {
public:
    explicit UsbLib(Session& session);

    void InitDriver();
    void OpenDevice();
    void CloseDevice();
    void ShutdownUsb();

    bool OnDeviceAttach(DeviceHandle device, const UsbDeviceInfo& info, void* userData);
    void OnDeviceDetach(DeviceHandle device, void* userData);

    AttachContext attachContext;
    DriverHandle driverHandle = 0;
    DeviceHandle deviceHandle = 0;
    const UsbDeviceInfo* deviceInfoPtr = nullptr;

    // How many user-interface yields the open step waits for the board to attach.
    int openWaitYields = 10000;

private:
    void AttachLamp(int colour);
    void TransferLamp(int colour);
    void InfoLamp(int colour);
    void InitLamp(int colour);

    Session& s_;
    bool problemShown_ = false;
};

}  // namespace lxm::generic_usb_lib
