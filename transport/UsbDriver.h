#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace lxm {

// Status codes of the driver interface; 0 is success, every other value a failure that the
// program shows only as a lamp.
enum UsbStatus : std::uint32_t {
    kUsbOk = 0,
    kUsbTimeout = 1,
    kUsbNoDevice = 2,
    kUsbIoError = 3,
    kUsbAccessDenied = 4,
    kUsbNotFound = 5,
    kUsbInvalidArg = 6,
    kUsbOverflow = 7,
    kUsbBusy = 8,
    kUsbNotInitialised = 9,
};

const char* UsbStatusText(std::uint32_t status);

using DriverHandle = std::uint32_t;  // > 0 once registered
using DeviceHandle = std::uint32_t;  // 0 = none

// Device information handed to the attach handler and by GetDeviceInfo.
struct UsbDeviceInfo {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    int interfaceNumber = 0;
    int alternateSetting = 0;
    int busNumber = 0;
    int deviceAddress = 0;
};

struct UsbMatch {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
};

// The attach handler returns true to accept the device. Both handlers run on the user
// interface thread, while the program yields (or inside Init for a board already present).
struct UsbEvents {
    std::function<bool(DeviceHandle, const UsbDeviceInfo&, void* userData)> attach;
    std::function<void(DeviceHandle, void* userData)> detach;
    void* userData = nullptr;
};

enum class UsbDir { Out = 0, In = 1 };

constexpr std::uint32_t kTransferTimeoutMs = 1000;

// The operations of the user-mode USB driver the program is written against. The real
// board is reached through libusb; the simulated board implements the same interface, so
// everything above it runs one code path for both.
class UsbDriver {
public:
    virtual ~UsbDriver() = default;

    // Registers for one vendor/product pair. Attach is called for a matching board already
    // present (before Init returns) and for each later arrival.
    virtual std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) = 0;
    // Unregisters: no more attach or detach notifications for that registration. Devices
    // already handed to the program stay usable.
    virtual std::uint32_t Uninit(DriverHandle handle) = 0;
    virtual std::uint32_t SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) = 0;
    virtual std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) = 0;
    virtual void PutDeviceInfo(const UsbDeviceInfo* info) = 0;
    // Bulk transfer. Pipe N is endpoint N out; pipe N + 128 is endpoint 0x80 | N in.
    virtual std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                                   std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) = 0;
    virtual std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) = 0;
    virtual std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) = 0;

    // A short, human-readable reason for the last failure to open a device, empty when there
    // is none. Used for the permission message of a real board.
    virtual std::string LastOpenProblem() const { return {}; }
};

constexpr std::uint16_t kBoardVendorId = 0x5E3D;
constexpr std::uint16_t kBoardProductId = 0x1C07;

}  // namespace lxm
