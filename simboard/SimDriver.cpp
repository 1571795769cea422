#include "SimDriver.h"

#include <algorithm>
#include <cerrno>
#include <time.h>

namespace lxm::sim {

SimDriver::SimDriver(SimBoard& board, bool pluggedIn) : board_(board), plugged_(pluggedIn) {
    info_.vendorId = kBoardVendorId;
    info_.productId = kBoardProductId;
    info_.busNumber = 1;
    info_.deviceAddress = 2;
    if (plugged_) handle_ = nextHandle_++;
}

// Notifications still queued are dropped with the QObject they were posted to.
SimDriver::~SimDriver() = default;

bool SimDriver::Matches(const UsbMatch& match) const {
    return (match.vendorId == 0 || match.vendorId == info_.vendorId) &&
           (match.productId == 0 || match.productId == info_.productId);
}

std::uint32_t SimDriver::Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) {
    if (!out) return kUsbInvalidArg;
    const DriverHandle reg = nextReg_++;
    regs_[reg] = Registration{match, events, 0};
    *out = reg;
    // The program counts on a board that is already there attaching before Init returns.
    if (plugged_) DeliverAttach(reg, handle_);
    return kUsbOk;
}

std::uint32_t SimDriver::Uninit(DriverHandle handle) {
    return regs_.erase(handle) ? std::uint32_t(kUsbOk) : std::uint32_t(kUsbInvalidArg);
}

void SimDriver::DeliverAttach(DriverHandle reg, DeviceHandle dev) {
    auto it = regs_.find(reg);
    if (it == regs_.end() || !Valid(dev) || !Matches(it->second.match) || !it->second.events.attach) return;
    // The handler may call back into the driver, Uninit included, so work on a copy.
    const UsbEvents events = it->second.events;
    const bool accepted = events.attach(dev, info_, events.userData);
    it = regs_.find(reg);
    if (accepted) {
        refused_ = false;
        if (it != regs_.end()) it->second.accepted = dev;
    } else {
        // One registration refusing does not take the board from another that accepted it.
        bool takenElsewhere = false;
        for (const auto& [other, r] : regs_) takenElsewhere |= other != reg && r.accepted == dev;
        refused_ = !takenElsewhere;
    }
}

void SimDriver::DeliverDetach(DriverHandle reg, DeviceHandle dev) {
    auto it = regs_.find(reg);
    // Only a registration that took the device hears that it went.
    if (it == regs_.end() || it->second.accepted != dev) return;
    it->second.accepted = 0;
    const UsbEvents events = it->second.events;
    if (events.detach) events.detach(dev, events.userData);
}

void SimDriver::Plug() {
    if (plugged_) return;
    plugged_ = true;
    refused_ = false;
    handle_ = nextHandle_++;
    const DeviceHandle dev = handle_;
    for (const auto& entry : regs_) {
        const DriverHandle reg = entry.first;
        QMetaObject::invokeMethod(
            this, [this, reg, dev] { DeliverAttach(reg, dev); }, Qt::QueuedConnection);
    }
}

void SimDriver::Unplug() {
    if (!plugged_) return;
    plugged_ = false;
    refused_ = false;
    // The board is bus-powered: pulling the cable loses the sensor's registers and whatever
    // the controller had queued.
    board_.controller().Reset();
    board_.sensor().Reset();
    const DeviceHandle dev = handle_;
    for (const auto& entry : regs_) {
        const DriverHandle reg = entry.first;
        QMetaObject::invokeMethod(
            this, [this, reg, dev] { DeliverDetach(reg, dev); }, Qt::QueuedConnection);
    }
}

std::uint32_t SimDriver::SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) {
    if (!Valid(dev)) return kUsbNoDevice;
    if (failSetInterface_) return kUsbIoError;
    if (interfaceNumber != info_.interfaceNumber || alternateSetting != 0) return kUsbNotFound;
    info_.alternateSetting = alternateSetting;
    return kUsbOk;
}

std::uint32_t SimDriver::GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) {
    if (!info) return kUsbInvalidArg;
    *info = nullptr;
    if (!Valid(dev)) return kUsbNoDevice;
    *info = &info_;
    ++infoOut_;
    return kUsbOk;
}

void SimDriver::PutDeviceInfo(const UsbDeviceInfo* info) {
    if (info == &info_ && infoOut_ > 0) --infoOut_;
}

std::uint32_t SimDriver::Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                                  std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) {
    if (done) *done = 0;
    if (!Valid(dev) || refused_) return kUsbNoDevice;
    if (pipe > 255 || (pipe >= 128) != (dir == UsbDir::In) || (!buf && size > 0)) return kUsbInvalidArg;
    if (unplugAfter_ > 0 && --unplugAfter_ == 0) {
        Unplug();
        return kUsbNoDevice;
    }
    // This transfer's frame follows those the OUTs before it still owe. An OUT that will be
    // answered owes its frame rather than sleeping it: the next transfer ends where the two
    // would have ended, the board having taken the command as soon as it was sent.
    const std::int64_t timeoutUs = instantTimeouts_ ? 0 : std::int64_t(timeoutMs) * 1000;
    if (latencyUs_ > 0 || owedUntilUs_ > 0) {
        const std::int64_t frameEndUs = std::max(NowMicros(), owedUntilUs_) + latencyUs_;
        owedUntilUs_ = 0;
        if (dir == UsbDir::Out && timeoutNext_ == 0)
            owedUntilUs_ = frameEndUs;
        else
            WaitUntil(frameEndUs);
    }
    if (timeoutNext_ > 0) {
        --timeoutNext_;
        if (timeoutUs > 0) WaitUntil(NowMicros() + timeoutUs);
        return kUsbTimeout;
    }

    BoardController& board = board_.controller();
    if (dir == UsbDir::Out) {
        const std::uint32_t status = board.BulkOut(std::uint8_t(pipe), buf, size);
        if (status == kUsbOk && done) *done = size;
        return status;
    }
    std::size_t actual = 0;
    const std::uint32_t status = board.BulkIn(std::uint8_t(0x80 | (pipe - 128)), buf, size, &actual);
    if (done) *done = std::uint32_t(actual);
    if (status == kUsbTimeout && timeoutUs > 0) WaitUntil(NowMicros() + timeoutUs);
    return status;
}

std::uint32_t SimDriver::ResetPipe(DeviceHandle dev, std::uint32_t pipe) {
    if (!Valid(dev)) return kUsbNoDevice;
    return pipe > 255 ? std::uint32_t(kUsbInvalidArg) : std::uint32_t(kUsbOk);
}

std::uint32_t SimDriver::ResetDevice(DeviceHandle dev, std::uint32_t) {
    return Valid(dev) ? kUsbOk : kUsbNoDevice;
}

std::int64_t SimDriver::NowMicros() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * 1'000'000 + now.tv_nsec / 1000;
}

void SimDriver::WaitUntil(std::int64_t untilUs) {
    // Asleep to an absolute deadline, never spinning: the board stands in for a bus, and a
    // millisecond per transfer of busy waiting would cost the program a third of its processor
    // time. The wake-up comes up to the timer's slack (some tens of microseconds) late, which
    // a real bus's own jitter exceeds; both the loop and any reference it is held against pay
    // it alike.
    const timespec until{time_t(untilUs / 1'000'000), long(untilUs % 1'000'000) * 1000};
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

}  // namespace lxm::sim
