#pragma once

#include <QObject>

#include "transport/UsbDriver.h"

namespace lxm::usb {

// The real board, reached through libusb.
class LibusbDriver final : public QObject, public UsbDriver {
public:
    LibusbDriver();
    ~LibusbDriver() override;

    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override;
    std::uint32_t Uninit(DriverHandle handle) override;
    std::uint32_t SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) override;
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override;
    void PutDeviceInfo(const UsbDeviceInfo* info) override;
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf, std::uint32_t size,
                           std::uint32_t* done, std::uint32_t timeoutMs) override;
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override;
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) override;
};

}  // namespace lxm::usb
