#include "LibusbDriver.h"

#include <libusb.h>
#include <poll.h>

#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <climits>

namespace lxm::usb {

namespace {

// Where libusb cannot hand out its file descriptors, its events are serviced this often.
constexpr int kServiceIntervalMs = 10;

std::uint8_t EndpointOf(std::uint32_t pipe) {
    return pipe < 128 ? std::uint8_t(pipe) : std::uint8_t(0x80 | (pipe - 128));
}

std::uint32_t MapError(int e) {
    switch (e) {
        case LIBUSB_SUCCESS:
            return kUsbOk;
        case LIBUSB_ERROR_TIMEOUT:
            return kUsbTimeout;
        case LIBUSB_ERROR_NO_DEVICE:
            return kUsbNoDevice;
        case LIBUSB_ERROR_ACCESS:
            return kUsbAccessDenied;
        case LIBUSB_ERROR_NOT_FOUND:
            return kUsbNotFound;
        case LIBUSB_ERROR_INVALID_PARAM:
            return kUsbInvalidArg;
        case LIBUSB_ERROR_OVERFLOW:
            return kUsbOverflow;
        case LIBUSB_ERROR_BUSY:
            return kUsbBusy;
        // A stall, an interrupted or refused request: to the program all of these are a failed transfer.
        default:
            return kUsbIoError;
    }
}

std::string AccessProblem(libusb_device* dev) {
    return "The evaluation board is plugged in (USB bus " + std::to_string(libusb_get_bus_number(dev)) +
           ", device " + std::to_string(libusb_get_device_address(dev)) +
           "), but this user may not open it. Install the udev rule 60-lxmeval.rules that comes with the "
           "program (copy it to /etc/udev/rules.d/ and run \"udevadm control --reload-rules\"), then unplug "
           "the board and plug it in again.";
}

}  // namespace

// The C callbacks libusb calls; they only queue work for the driver's own thread.
struct HotplugBridge {
    static int LIBUSB_CALL Hotplug(libusb_context*, libusb_device* dev, libusb_hotplug_event event,
                                   void* user) {
        auto* tag = static_cast<LibusbDriver::CallbackTag*>(user);
        tag->self->Queue(tag->reg, event == LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED, dev);
        return 0;  // stay registered
    }

    static void LIBUSB_CALL FdAdded(int fd, short events, void* user) {
        auto* self = static_cast<LibusbDriver*>(user);
        if (QThread::currentThread() == self->thread())
            self->WatchFd(fd, events);
        else
            QMetaObject::invokeMethod(
                self, [self, fd, events] { self->WatchFd(fd, events); }, Qt::QueuedConnection);
    }

    static void LIBUSB_CALL FdRemoved(int fd, void* user) {
        auto* self = static_cast<LibusbDriver*>(user);
        if (QThread::currentThread() == self->thread())
            self->UnwatchFd(fd);
        else
            QMetaObject::invokeMethod(
                self, [self, fd] { self->UnwatchFd(fd); }, Qt::QueuedConnection);
    }
};

LibusbDriver::LibusbDriver() : LibusbDriver(Options{}) {}

LibusbDriver::LibusbDriver(const Options& options) : options_(options) {
    if (libusb_init(&ctx_) != LIBUSB_SUCCESS) {
        // No USB stack to talk to: every call reports it, the program shows red lamps.
        ctx_ = nullptr;
        return;
    }
    hotplug_ = !options_.forcePolling && libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) != 0;

    libusb_set_pollfd_notifiers(ctx_, &HotplugBridge::FdAdded, &HotplugBridge::FdRemoved, this);
    if (const libusb_pollfd** fds = libusb_get_pollfds(ctx_)) {
        for (const libusb_pollfd** p = fds; *p; ++p) WatchFd((*p)->fd, (*p)->events);
        libusb_free_pollfds(fds);
    } else {
        serviceTimer_ = new QTimer(this);
        serviceTimer_->setInterval(kServiceIntervalMs);
        connect(serviceTimer_, &QTimer::timeout, this, &LibusbDriver::ServiceEvents);
        serviceTimer_->start();
    }
    // Every transfer here is synchronous and libusb times it out itself, so nothing needs a timer
    // that follows libusb_get_next_timeout.

    if (!hotplug_) {
        pollTimer_ = new QTimer(this);
        pollTimer_->setInterval(std::max(10, options_.pollIntervalMs));
        connect(pollTimer_, &QTimer::timeout, this, &LibusbDriver::Poll);
    }
}

LibusbDriver::~LibusbDriver() {
    if (pollTimer_) pollTimer_->stop();
    if (serviceTimer_) serviceTimer_->stop();
    if (!ctx_) return;
    for (auto& [reg, r] : regs_) {
        if (r.hasCallback) libusb_hotplug_deregister_callback(ctx_, r.callback);
        for (libusb_device* d : r.seen) libusb_unref_device(d);
    }
    regs_.clear();
    {
        std::lock_guard lock(pendingMutex_);
        for (const Event& e : pending_) libusb_unref_device(e.dev);
        pending_.clear();
    }
    for (auto& [dh, d] : devices_) {
        CloseHandle(d);
        libusb_unref_device(d.dev);
    }
    devices_.clear();
    infos_.clear();
    libusb_set_pollfd_notifiers(ctx_, nullptr, nullptr, nullptr);
    for (auto& [fd, list] : watches_)
        for (QSocketNotifier* n : list) delete n;
    watches_.clear();
    libusb_exit(ctx_);
    ctx_ = nullptr;
}

int LibusbDriver::openHandles() const {
    return int(std::count_if(devices_.begin(), devices_.end(),
                             [](const auto& e) { return e.second.handle != nullptr; }));
}

// ---------------------------------------------------------------- event servicing

void LibusbDriver::WatchFd(int fd, short events) {
    UnwatchFd(fd);  // a descriptor number libusb hands out again replaces the old watch
    std::vector<QSocketNotifier*>& list = watches_[fd];
    auto add = [&](QSocketNotifier::Type type) {
        auto* n = new QSocketNotifier(qintptr(fd), type, this);
        connect(n, &QSocketNotifier::activated, this, &LibusbDriver::ServiceEvents);
        list.push_back(n);
    };
    if (events & POLLIN) add(QSocketNotifier::Read);
    if (events & POLLOUT) add(QSocketNotifier::Write);
}

void LibusbDriver::UnwatchFd(int fd) {
    auto it = watches_.find(fd);
    if (it == watches_.end()) return;
    for (QSocketNotifier* n : it->second) {
        // Removal can come from inside this notifier's own activation (a device closed while
        // events are delivered), and the number may be reused at once: stop watching now,
        // delete later.
        n->setEnabled(false);
        n->deleteLater();
    }
    watches_.erase(it);
}

void LibusbDriver::ServiceEvents() {
    if (!ctx_) return;
    timeval zero{0, 0};
    libusb_handle_events_timeout_completed(ctx_, &zero, nullptr);
    DeliverPending();
}

void LibusbDriver::Poll() {
    if (!ctx_ || regs_.empty()) return;
    libusb_device** list = nullptr;
    const ssize_t n = libusb_get_device_list(ctx_, &list);
    if (n < 0) return;
    for (auto& [reg, r] : regs_) PollRegistration(reg, r, list, long(n));
    libusb_free_device_list(list, 1);
    DeliverPending();
}

// Enumeration at intervals produces the same events hot-plug would: an arrival for each
// matching device the registration has not seen, a departure for each one that went.
void LibusbDriver::PollRegistration(DriverHandle reg, Registration& r, libusb_device* const* list,
                                    long count) {
    std::vector<libusb_device*> now;
    for (long i = 0; i < count; ++i)
        if (Matches(r.match, list[i])) now.push_back(list[i]);
    for (libusb_device* d : now) {
        if (std::find(r.seen.begin(), r.seen.end(), d) != r.seen.end()) continue;
        r.seen.push_back(libusb_ref_device(d));
        Queue(reg, true, d);
    }
    for (auto it = r.seen.begin(); it != r.seen.end();) {
        if (std::find(now.begin(), now.end(), *it) != now.end()) {
            ++it;
            continue;
        }
        Queue(reg, false, *it);
        libusb_unref_device(*it);
        it = r.seen.erase(it);
    }
}

bool LibusbDriver::Matches(const UsbMatch& m, libusb_device* dev) const {
    libusb_device_descriptor desc{};
    if (libusb_get_device_descriptor(dev, &desc) != LIBUSB_SUCCESS) return false;
    return (m.vendorId == 0 || m.vendorId == desc.idVendor) &&
           (m.productId == 0 || m.productId == desc.idProduct);
}

// ---------------------------------------------------------------- arrivals and departures

void LibusbDriver::Queue(DriverHandle reg, bool arrived, libusb_device* dev) {
    bool post = false;
    {
        std::lock_guard lock(pendingMutex_);
        pending_.push_back({reg, arrived, libusb_ref_device(dev)});
        post = !deliveryPosted_;
        deliveryPosted_ = true;
    }
    // Events that libusb reports from inside a transfer would otherwise wait for the next
    // descriptor activity; a posted delivery brings them to the next yield.
    if (post) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                {
                    std::lock_guard lock(pendingMutex_);
                    deliveryPosted_ = false;
                }
                DeliverPending();
            },
            Qt::QueuedConnection);
    }
}

// One event at a time, taken off the queue before its handler runs: handlers yield (and the
// detach handler shows a modal message), so this is re-entered while an event is delivered.
void LibusbDriver::DeliverPending() {
    for (;;) {
        Event e{};
        {
            std::lock_guard lock(pendingMutex_);
            if (pending_.empty()) return;
            e = pending_.front();
            pending_.pop_front();
        }
        if (e.arrived)
            DeliverArrival(e.reg, e.dev);
        else
            DeliverDeparture(e.reg, e.dev);
        libusb_unref_device(e.dev);
    }
}

void LibusbDriver::DeliverArrival(DriverHandle reg, libusb_device* dev) {
    auto it = regs_.find(reg);
    if (it == regs_.end() || !it->second.events.attach) return;
    const DeviceHandle dh = FindOrOpen(dev);
    if (dh == 0) return;
    // libusb may report a board twice (once while enumerating, once from its event queue).
    if (it->second.accepted.count(dh)) return;
    const UsbEvents events = it->second.events;  // the handler may call Uninit
    const UsbDeviceInfo info = devices_.at(dh).info;
    const bool accepted = events.attach(dh, info, events.userData);
    it = regs_.find(reg);
    if (accepted && it != regs_.end() && devices_.count(dh)) it->second.accepted.insert(dh);
    if (!accepted) EraseIfUnheld(dh);
}

void LibusbDriver::DeliverDeparture(DriverHandle reg, libusb_device* dev) {
    std::vector<DeviceHandle> handles;
    for (auto& [dh, d] : devices_) {
        if (d.dev != dev) continue;
        d.gone = true;
        CloseHandle(d);
        handles.push_back(dh);
    }
    for (DeviceHandle dh : handles) {
        auto it = regs_.find(reg);
        // Only the registration that took the device hears that it went.
        if (it != regs_.end() && it->second.accepted.erase(dh)) {
            const UsbEvents events = it->second.events;
            if (events.detach) events.detach(dh, events.userData);
        }
        EraseIfUnheld(dh);
    }
}

// ---------------------------------------------------------------- devices

DeviceHandle LibusbDriver::FindOrOpen(libusb_device* dev) {
    for (auto& [dh, d] : devices_)
        if (d.dev == dev && !d.gone && d.handle) return dh;

    libusb_device_handle* handle = nullptr;
    const int rc = libusb_open(dev, &handle);
    if (rc != LIBUSB_SUCCESS) {
        // Without permission the board would simply never attach; remember why, so that the
        // program can say what fixes it.
        if (rc == LIBUSB_ERROR_ACCESS) lastOpenProblem_ = AccessProblem(dev);
        return 0;
    }
    lastOpenProblem_.clear();

    Device d;
    d.dev = libusb_ref_device(dev);
    d.handle = handle;
    libusb_device_descriptor desc{};
    libusb_get_device_descriptor(dev, &desc);
    d.info.vendorId = desc.idVendor;
    d.info.productId = desc.idProduct;
    d.info.busNumber = libusb_get_bus_number(dev);
    d.info.deviceAddress = libusb_get_device_address(dev);
    libusb_config_descriptor* config = nullptr;
    if (libusb_get_active_config_descriptor(dev, &config) == LIBUSB_SUCCESS ||
        libusb_get_config_descriptor(dev, 0, &config) == LIBUSB_SUCCESS) {
        // The attaching interface is the configuration's first one.
        if (config->bNumInterfaces > 0 && config->interface[0].num_altsetting > 0)
            d.info.interfaceNumber = config->interface[0].altsetting[0].bInterfaceNumber;
        for (int i = 0; i < config->bNumInterfaces; ++i) {
            const libusb_interface& itf = config->interface[i];
            for (int a = 0; a < itf.num_altsetting; ++a)
                for (int e = 0; e < itf.altsetting[a].bNumEndpoints; ++e)
                    d.endpoints.push_back(itf.altsetting[a].endpoint[e].bEndpointAddress);
        }
        libusb_free_config_descriptor(config);
    }
    const DeviceHandle dh = nextDevice_++;
    devices_.emplace(dh, std::move(d));
    return dh;
}

LibusbDriver::Device* LibusbDriver::Live(DeviceHandle dev) {
    auto it = devices_.find(dev);
    if (it == devices_.end() || it->second.gone || !it->second.handle) return nullptr;
    return &it->second;
}

void LibusbDriver::CloseHandle(Device& d) {
    if (!d.handle) return;
    if (d.claimed >= 0 && !d.gone) libusb_release_interface(d.handle, d.claimed);
    d.claimed = -1;
    libusb_close(d.handle);
    d.handle = nullptr;
}

bool LibusbDriver::HeldByRegistration(DeviceHandle dh) const {
    return std::any_of(regs_.begin(), regs_.end(),
                       [dh](const auto& r) { return r.second.accepted.count(dh) > 0; });
}

void LibusbDriver::EraseIfUnheld(DeviceHandle dh) {
    auto it = devices_.find(dh);
    if (it == devices_.end() || HeldByRegistration(dh)) return;
    CloseHandle(it->second);
    libusb_unref_device(it->second.dev);
    devices_.erase(it);
}

// A device found gone by a transfer is closed at once; its departure (and the detach
// notification) still comes through the hot-plug path.
std::uint32_t LibusbDriver::Status(int libusbError, DeviceHandle dh) {
    if (libusbError == LIBUSB_ERROR_NO_DEVICE) {
        auto it = devices_.find(dh);
        if (it != devices_.end()) {
            it->second.gone = true;
            CloseHandle(it->second);
        }
    }
    return MapError(libusbError);
}

// ---------------------------------------------------------------- the driver interface

std::uint32_t LibusbDriver::Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) {
    if (!out) return kUsbInvalidArg;
    *out = 0;
    if (!ctx_) return kUsbNotInitialised;
    const DriverHandle reg = nextReg_++;
    Registration& r = regs_[reg];
    r.match = match;
    r.events = events;
    if (hotplug_) {
        auto tag = std::make_unique<CallbackTag>(CallbackTag{this, reg});
        const int rc = libusb_hotplug_register_callback(
            ctx_, LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED | LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT,
            LIBUSB_HOTPLUG_ENUMERATE, match.vendorId ? match.vendorId : LIBUSB_HOTPLUG_MATCH_ANY,
            match.productId ? match.productId : LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
            &HotplugBridge::Hotplug, tag.get(), &r.callback);
        if (rc != LIBUSB_SUCCESS) {
            regs_.erase(reg);
            return MapError(rc);
        }
        r.hasCallback = true;
        // Kept until the driver goes: libusb may still hold the pointer for a moment after
        // the callback is deregistered.
        tags_.push_back(std::move(tag));
    } else {
        libusb_device** list = nullptr;
        const ssize_t n = libusb_get_device_list(ctx_, &list);
        if (n >= 0) {
            PollRegistration(reg, r, list, long(n));
            libusb_free_device_list(list, 1);
        }
        pollTimer_->start();
    }
    *out = reg;
    // The program expects a board that is already there to have attached when Init returns.
    DeliverPending();
    return kUsbOk;
}

std::uint32_t LibusbDriver::Uninit(DriverHandle handle) {
    auto it = regs_.find(handle);
    if (it == regs_.end()) return kUsbInvalidArg;
    if (it->second.hasCallback) libusb_hotplug_deregister_callback(ctx_, it->second.callback);
    for (libusb_device* d : it->second.seen) libusb_unref_device(d);
    const std::set<DeviceHandle> held = std::move(it->second.accepted);
    regs_.erase(it);
    if (regs_.empty() && pollTimer_) pollTimer_->stop();
    // Devices handed out stay open for the program; only those already gone are let go.
    for (DeviceHandle dh : held) {
        auto d = devices_.find(dh);
        if (d != devices_.end() && d->second.gone) EraseIfUnheld(dh);
    }
    return kUsbOk;
}

std::uint32_t LibusbDriver::SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) {
    Device* d = Live(dev);
    if (!d) return kUsbNoDevice;
    if (interfaceNumber < 0 || interfaceNumber > 255 || alternateSetting < 0 || alternateSetting > 255)
        return kUsbInvalidArg;
    // The board is vendor-specific: no kernel driver binds to it, so none is detached here.
    if (d->claimed != interfaceNumber) {
        if (d->claimed >= 0) libusb_release_interface(d->handle, d->claimed);
        d->claimed = -1;
        const int rc = libusb_claim_interface(d->handle, interfaceNumber);
        if (rc != LIBUSB_SUCCESS) return Status(rc, dev);
        d->claimed = interfaceNumber;
    }
    const int rc = libusb_set_interface_alt_setting(d->handle, interfaceNumber, alternateSetting);
    if (rc != LIBUSB_SUCCESS) return Status(rc, dev);
    d->info.interfaceNumber = interfaceNumber;
    d->info.alternateSetting = alternateSetting;
    return kUsbOk;
}

std::uint32_t LibusbDriver::GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) {
    if (!info) return kUsbInvalidArg;
    *info = nullptr;
    Device* d = Live(dev);
    if (!d) return kUsbNoDevice;
    // A copy of its own: the program may keep it after the device has gone.
    infos_.push_back(std::make_unique<UsbDeviceInfo>(d->info));
    *info = infos_.back().get();
    return kUsbOk;
}

void LibusbDriver::PutDeviceInfo(const UsbDeviceInfo* info) {
    auto it = std::find_if(infos_.begin(), infos_.end(), [info](const auto& p) { return p.get() == info; });
    if (it != infos_.end()) infos_.erase(it);
}

std::uint32_t LibusbDriver::Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                                     std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) {
    if (done) *done = 0;
    Device* d = Live(dev);
    if (!d) return kUsbNoDevice;
    if (pipe > 255 || (pipe >= 128) != (dir == UsbDir::In) || (!buf && size > 0) || size > INT_MAX)
        return kUsbInvalidArg;
    const unsigned int timeout = timeoutMs == 0 ? kTransferTimeoutMs : timeoutMs;
    int actual = 0;
    // libusb handles its events while it waits; arrivals and departures it sees meanwhile are
    // only queued, so the device table stays as it is until the program yields.
    const int rc = libusb_bulk_transfer(d->handle, EndpointOf(pipe), buf, int(size), &actual, timeout);
    if (done) *done = std::uint32_t(std::max(actual, 0));
    return Status(rc, dev);
}

std::uint32_t LibusbDriver::ResetPipe(DeviceHandle dev, std::uint32_t pipe) {
    Device* d = Live(dev);
    if (!d) return kUsbNoDevice;
    if (pipe > 255) return kUsbInvalidArg;
    const std::uint8_t ep = EndpointOf(pipe);
    if ((ep & 0x7F) == 0 || std::find(d->endpoints.begin(), d->endpoints.end(), ep) == d->endpoints.end())
        return kUsbOk;
    return Status(libusb_clear_halt(d->handle, ep), dev);
}

std::uint32_t LibusbDriver::ResetDevice(DeviceHandle dev, std::uint32_t) {
    return Live(dev) ? kUsbOk : kUsbNoDevice;
}

}  // namespace lxm::usb
