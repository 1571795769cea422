#pragma once

#include <QObject>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "transport/UsbDriver.h"

struct libusb_context;
struct libusb_device;
struct libusb_device_handle;
class QSocketNotifier;
class QTimer;

namespace lxm::usb {

// The real board, reached through libusb.
//
// Everything the program sees happens on the thread that made the driver (the user-interface
// thread): libusb's file descriptors are watched with socket notifiers and its events handled
// there, and arrivals and departures are queued and handed to the program's handlers from the
// Qt event loop, never from inside a libusb call. A board that is already present when a
// registration is made is the one exception the program relies on: it attaches before Init
// returns.
class LibusbDriver final : public QObject, public UsbDriver {
public:
    struct Options {
        // Find arrivals and departures by enumerating at intervals even where libusb can report
        // them as they happen. Where it cannot, the driver does this anyway.
        bool forcePolling = false;
        int pollIntervalMs = 250;
    };

    LibusbDriver();
    explicit LibusbDriver(const Options& options);
    ~LibusbDriver() override;
    LibusbDriver(const LibusbDriver&) = delete;
    LibusbDriver& operator=(const LibusbDriver&) = delete;

    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override;
    std::uint32_t Uninit(DriverHandle handle) override;
    std::uint32_t SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) override;
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override;
    void PutDeviceInfo(const UsbDeviceInfo* info) override;
    // A time-out of 0 means the usual 1000 ms: libusb would read it as "wait for ever", and
    // nothing in the program may block the user interface that long.
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override;
    // Clears a halt on the pipe's endpoint. A pipe the board does not have cannot be halted,
    // so it is reported as reset (kUsbOk) as long as the device itself is there; this keeps the
    // shutdown step, which releases the driver only when the reset of pipe 3 succeeds, working
    // the same on the real board as on the simulated one.
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override;
    // Deliberately no bus reset: the program resets the device when it closes it and expects
    // the same handle to work at the next open. A port reset would drop the board's port-line
    // state and may re-enumerate it under a new address, invalidating that handle. The call
    // only reports whether the device is still there.
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) override;
    std::string LastOpenProblem() const override { return lastOpenProblem_; }

    // The driver's own libusb context (null when libusb could not be initialised).
    libusb_context* context() const { return ctx_; }
    // True when libusb itself reports arrivals and departures (no enumeration at intervals).
    bool hotplugNotifications() const { return hotplug_; }
    // Device handles that still hold an open libusb handle.
    int openHandles() const;
    // Device information blocks handed out and not yet put back.
    int infosOutstanding() const { return int(infos_.size()); }

private:
    struct Device {
        libusb_device* dev = nullptr;            // referenced while the entry lives
        libusb_device_handle* handle = nullptr;  // null once closed
        UsbDeviceInfo info;
        std::vector<std::uint8_t> endpoints;  // endpoint addresses of the active configuration
        int claimed = -1;                     // claimed interface, -1 for none
        bool gone = false;                    // unplugged (or found so by a transfer)
    };
    struct Registration {
        UsbMatch match;
        UsbEvents events;
        bool hasCallback = false;
        int callback = 0;                  // libusb hot-plug callback handle
        std::set<DeviceHandle> accepted;   // devices this registration took
        std::vector<libusb_device*> seen;  // enumeration at intervals only; referenced
    };
    struct Event {
        DriverHandle reg;
        bool arrived;
        libusb_device* dev;  // referenced until delivered
    };
    struct CallbackTag {
        LibusbDriver* self;
        DriverHandle reg;
    };
    friend struct HotplugBridge;

    void WatchFd(int fd, short events);
    void UnwatchFd(int fd);
    void ServiceEvents();
    void Poll();
    void PollRegistration(DriverHandle reg, Registration& r, libusb_device* const* list, long count);
    bool Matches(const UsbMatch& match, libusb_device* dev) const;

    void Queue(DriverHandle reg, bool arrived, libusb_device* dev);
    void DeliverPending();
    void DeliverArrival(DriverHandle reg, libusb_device* dev);
    void DeliverDeparture(DriverHandle reg, libusb_device* dev);

    DeviceHandle FindOrOpen(libusb_device* dev);
    Device* Live(DeviceHandle dev);
    void CloseHandle(Device& d);
    void EraseIfUnheld(DeviceHandle dh);
    bool HeldByRegistration(DeviceHandle dh) const;
    std::uint32_t Status(int libusbError, DeviceHandle dh);

    Options options_;
    libusb_context* ctx_ = nullptr;
    bool hotplug_ = false;
    std::map<int, std::vector<QSocketNotifier*>> watches_;
    QTimer* serviceTimer_ = nullptr;  // only where libusb cannot list its file descriptors
    QTimer* pollTimer_ = nullptr;     // enumeration at intervals

    std::map<DriverHandle, Registration> regs_;
    std::vector<std::unique_ptr<CallbackTag>> tags_;
    std::map<DeviceHandle, Device> devices_;
    std::vector<std::unique_ptr<UsbDeviceInfo>> infos_;
    DriverHandle nextReg_ = 1;
    DeviceHandle nextDevice_ = 0x100;
    std::string lastOpenProblem_;

    // Hot-plug callbacks may come from one of libusb's threads: the queue is locked and the
    // delivery posted to this object's thread.
    std::mutex pendingMutex_;
    std::deque<Event> pending_;
    bool deliveryPosted_ = false;
};

}  // namespace lxm::usb
