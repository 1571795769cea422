#include "LibusbDriver.h"

// Placeholder until the libusb backend lands: reports that no board is present.
namespace lxm::usb {

LibusbDriver::LibusbDriver() = default;
LibusbDriver::~LibusbDriver() = default;
std::uint32_t LibusbDriver::Init(DriverHandle* out, const UsbMatch&, const UsbEvents&) {
    *out = 1;
    return kUsbOk;
}
std::uint32_t LibusbDriver::Uninit(DriverHandle) { return kUsbOk; }
std::uint32_t LibusbDriver::SetInterface(DeviceHandle, int, int) { return kUsbNoDevice; }
std::uint32_t LibusbDriver::GetDeviceInfo(DeviceHandle, const UsbDeviceInfo**) { return kUsbNoDevice; }
void LibusbDriver::PutDeviceInfo(const UsbDeviceInfo*) {}
std::uint32_t LibusbDriver::Transfer(DeviceHandle, std::uint32_t, UsbDir, std::uint8_t*, std::uint32_t, std::uint32_t*,
                                     std::uint32_t) {
    return kUsbNoDevice;
}
std::uint32_t LibusbDriver::ResetPipe(DeviceHandle, std::uint32_t) { return kUsbNoDevice; }
std::uint32_t LibusbDriver::ResetDevice(DeviceHandle, std::uint32_t) { return kUsbNoDevice; }

}  // namespace lxm::usb
