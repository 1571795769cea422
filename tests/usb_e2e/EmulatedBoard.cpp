#include "EmulatedBoard.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
// GLib names a structure member "signals", which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <umockdev.h>
#pragma pop_macro("signals")

#include <QMetaObject>
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "transport/UsbDriver.h"

namespace lxm::test::usb {

namespace {

// Device, configuration, interface 0 (vendor-specific, four endpoints) and the bulk endpoints
// 0x01, 0x81, 0x02 and 0x82 of 64 bytes: a full-speed board 5e3d:1c07.
constexpr const char* kDescriptors =
    "12011001000000403d5e071c000100000001"
    "09022e000101008032"
    "0904000004ff000000"
    "07050102400000"
    "07058102400000"
    "07050202400000"
    "07058202400000";

constexpr std::uint8_t kEndpoints[] = {0x01, 0x81, 0x02, 0x82};
constexpr const char* kDevicePath = "/devices/pci0000:00/0000:00:14.0/usb1/1-1";

bool BoardHasEndpoint(unsigned ep) {
    return std::find(std::begin(kEndpoints), std::end(kEndpoints), ep) != std::end(kEndpoints);
}

void Fail(UMockdevIoctlClient* client, int err) {
    umockdev_ioctl_client_complete(client, -1, err);
}
void Succeed(UMockdevIoctlClient* client) {
    umockdev_ioctl_client_complete(client, 0, 0);
}

void Check(gboolean ok, GError* err, const char* what) {
    if (ok) return;
    std::string msg = std::string(what) + ": " + (err ? err->message : "failed");
    if (err) g_error_free(err);
    throw std::runtime_error(msg);
}

}  // namespace

EmulatedBoard::EmulatedBoard() : EmulatedBoard(umockdev_testbed_new(), 1) {}

// Another board on the same bus, in another port of the hub, with addresses of its own.
EmulatedBoard::EmulatedBoard(EmulatedBoard& sameBus, int hubPort)
    : EmulatedBoard(UMOCKDEV_TESTBED(g_object_ref(sameBus.testbed_)), hubPort) {}

EmulatedBoard::EmulatedBoard(UMockdevTestbed* testbed, int hubPort)
    : testbed_(testbed), mainThread_(std::make_unique<QObject>()) {
    handler_ = umockdev_ioctl_base_new();
    g_signal_connect_after(handler_, "handle-ioctl", G_CALLBACK(&EmulatedBoard::OnIoctl), this);
    devicePath_ = std::string(kDevicePath, std::strlen(kDevicePath) - 1) + std::to_string(hubPort);
    syspath_ = "/sys" + devicePath_;
    address_ = hubPort == 1 ? 1 : hubPort * 10;
    board_ = std::make_unique<sim::SimBoard>(boardClock_);
    board_->scene().ideal = true;  // exact counts
}

EmulatedBoard::~EmulatedBoard() {
    mainThread_.reset();  // drops removals still posted
    if (plugged_) umockdev_testbed_remove_device(testbed_, syspath_.c_str());
    {
        std::lock_guard lock(mu_);
        for (auto& [path, node] : nodes_) {
            for (Urb& u : node.waiting) g_object_unref(u.data);
            for (Urb& u : node.done) g_object_unref(u.data);
        }
        nodes_.clear();
    }
    g_object_unref(handler_);
    g_object_unref(testbed_);
}

void EmulatedBoard::Plug() {
    if (plugged_) return;
    ++address_;
    char node[64];
    std::snprintf(node, sizeof node, "/dev/bus/usb/001/%03d", address_);
    devnode_ = node;
    {
        std::lock_guard lock(mu_);
        board_ = std::make_unique<sim::SimBoard>(boardClock_);  // power-on state
        board_->scene().ideal = true;
        nodes_[devnode_] = Node{};
    }
    // The node must answer before the "add" event makes libusb look at it.
    GError* err = nullptr;
    Check(umockdev_testbed_attach_ioctl(testbed_, devnode_.c_str(), handler_, &err), err, "attach ioctl");

    char record[1024];
    std::snprintf(record, sizeof record,
                  "P: %s\n"
                  "N: bus/usb/001/%03d\n"
                  "E: SUBSYSTEM=usb\n"
                  "E: DEVTYPE=usb_device\n"
                  "E: DRIVER=usb\n"
                  "E: BUSNUM=001\n"
                  "E: DEVNUM=%03d\n"
                  "E: DEVNAME=%s\n"
                  "E: PRODUCT=5e3d/1c07/100\n"
                  "A: busnum=1\\n\n"
                  "A: devnum=%d\\n\n"
                  "A: speed=12\\n\n"
                  "A: bConfigurationValue=1\\n\n"
                  "H: descriptors=%s\n",
                  devicePath_.c_str(), address_, address_, devnode_.c_str(), address_, kDescriptors);
    Check(umockdev_testbed_add_from_string(testbed_, record, &err), err, "add device");
    plugged_ = true;
    removalPosted_ = false;
}

void EmulatedBoard::Unplug() {
    if (!plugged_) return;
    {
        std::lock_guard lock(mu_);
        Vanish(nodes_[devnode_]);
    }
    AnnounceRemoval();
}

void EmulatedBoard::AnnounceRemoval() {
    if (!plugged_) return;
    // The event first: it is built from the record that removing deletes.
    umockdev_testbed_uevent(testbed_, syspath_.c_str(), "remove");
    umockdev_testbed_remove_device(testbed_, syspath_.c_str());
    plugged_ = false;
}

void EmulatedBoard::UnplugDuringUrb(int n) {
    std::lock_guard lock(mu_);
    unplugCountdown_ = n;
}

// What the kernel does when a device goes: URBs still on the bus end with -ESHUTDOWN, and from
// then on every request on the node fails with ENODEV once nothing is left to reap.
void EmulatedBoard::Vanish(Node& node) {
    node.gone = true;
    while (!node.waiting.empty()) {
        Urb u = std::move(node.waiting.front());
        node.waiting.pop_front();
        u.status = -ESHUTDOWN;
        u.actual = 0;
        u.in.clear();
        node.done.push_back(std::move(u));
    }
}

// ---------------------------------------------------------------- usbfs, on umockdev's thread

int EmulatedBoard::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, void* self) {
    return static_cast<EmulatedBoard*>(self)->Handle(client) ? TRUE : FALSE;
}

bool EmulatedBoard::Handle(UMockdevIoctlClient* client) {
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
    std::lock_guard lock(mu_);
    Node& node = nodes_[umockdev_ioctl_client_get_devnode(client)];
    auto fail = [client](int err) {
        Fail(client, err);
        return true;
    };

    switch (request) {
        case USBDEVFS_GET_CAPABILITIES: {
            UMockdevIoctlData* d = umockdev_ioctl_data_resolve(arg, 0, sizeof(std::uint32_t), nullptr);
            const std::uint32_t caps = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION |
                                       USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            std::memcpy(d->data, &caps, sizeof caps);
            g_object_unref(d);
            Succeed(client);
            return true;
        }
        case USBDEVFS_CLAIMINTERFACE:
        case USBDEVFS_RELEASEINTERFACE: {
            if (node.gone) return fail(ENODEV);
            UMockdevIoctlData* d = umockdev_ioctl_data_resolve(arg, 0, sizeof(unsigned), nullptr);
            unsigned itf = 0;
            std::memcpy(&itf, d->data, sizeof itf);
            g_object_unref(d);
            if (itf != 0) return fail(ENOENT);
            Succeed(client);
            return true;
        }
        case USBDEVFS_SETINTERFACE: {
            if (node.gone) return fail(ENODEV);
            UMockdevIoctlData* d =
                umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_setinterface), nullptr);
            usbdevfs_setinterface si{};
            std::memcpy(&si, d->data, sizeof si);
            g_object_unref(d);
            if (si.interface != 0 || si.altsetting != 0) return fail(EINVAL);
            Succeed(client);
            return true;
        }
        case USBDEVFS_CLEAR_HALT: {
            if (node.gone) return fail(ENODEV);
            UMockdevIoctlData* d = umockdev_ioctl_data_resolve(arg, 0, sizeof(unsigned), nullptr);
            unsigned ep = 0;
            std::memcpy(&ep, d->data, sizeof ep);
            g_object_unref(d);
            if (!BoardHasEndpoint(ep)) return fail(ENOENT);
            Succeed(client);
            return true;
        }
        case USBDEVFS_SUBMITURB:
            Submit(client, node);
            return true;
        case USBDEVFS_REAPURB:
        case USBDEVFS_REAPURBNDELAY:
            Reap(client, node);
            return true;
        case USBDEVFS_DISCARDURB:
            Discard(client, node);
            return true;
        default:
            return false;
    }
}

void EmulatedBoard::Submit(UMockdevIoctlClient* client, Node& node) {
    if (node.gone) return Fail(client, ENODEV);
    UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_urb), nullptr);
    const auto* urb = reinterpret_cast<const usbdevfs_urb*>(data->data);
    if (urb->type != USBDEVFS_URB_TYPE_BULK || !BoardHasEndpoint(urb->endpoint) || urb->buffer_length < 0) {
        g_object_unref(data);
        return Fail(client, EINVAL);
    }
    Urb u;
    u.data = data;
    u.endpoint = urb->endpoint;

    if (unplugCountdown_ > 0 && --unplugCountdown_ == 0) {
        node.waiting.push_back(std::move(u));
        Vanish(node);
        if (!removalPosted_) {
            removalPosted_ = true;
            QMetaObject::invokeMethod(
                mainThread_.get(), [this] { AnnounceRemoval(); }, Qt::QueuedConnection);
        }
        return Succeed(client);
    }

    if (!(u.endpoint & 0x80)) {
        UMockdevIoctlData* buf = umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_urb, buffer),
                                                             gsize(urb->buffer_length), nullptr);
        const std::uint32_t st =
            board_->controller().BulkOut(u.endpoint, buf->data, std::size_t(urb->buffer_length));
        u.status = st == kUsbOk ? 0 : -EPIPE;
        u.actual = st == kUsbOk ? urb->buffer_length : 0;
        g_object_unref(buf);
        node.done.push_back(std::move(u));
        // A command may be what an IN already on the bus was waiting for.
        for (auto it = node.waiting.begin(); it != node.waiting.end();) {
            if (AnswerIn(*it, false)) {
                node.done.push_back(std::move(*it));
                it = node.waiting.erase(it);
            } else {
                ++it;
            }
        }
    } else if (AnswerIn(u, true)) {
        node.done.push_back(std::move(u));
    } else {
        node.waiting.push_back(std::move(u));
    }
    Succeed(client);
}

// A new IN asks the controller once, exactly as one transfer of the simulated driver does (that
// is also what lets a late reply miss this IN and reach the next one). An IN already waiting is
// answered only once the controller has a reply ready for it.
bool EmulatedBoard::AnswerIn(Urb& u, bool firstTry) {
    sim::BoardController& board = board_->controller();
    if (!firstTry && !board.ReplyPending(u.endpoint)) return false;
    const auto* urb = reinterpret_cast<const usbdevfs_urb*>(u.data->data);
    u.in.assign(std::size_t(urb->buffer_length), 0);
    std::size_t actual = 0;
    const std::uint32_t st = board.BulkIn(u.endpoint, u.in.data(), u.in.size(), &actual);
    if (st == kUsbTimeout) return false;
    u.actual = int(actual);
    u.status = st == kUsbOk ? 0 : st == kUsbOverflow ? -EOVERFLOW : -EPIPE;
    return true;
}

void EmulatedBoard::Reap(UMockdevIoctlClient* client, Node& node) {
    if (node.done.empty()) return Fail(client, node.gone ? ENODEV : EAGAIN);
    Urb u = std::move(node.done.front());
    node.done.pop_front();
    auto* urb = reinterpret_cast<usbdevfs_urb*>(u.data->data);
    urb->status = u.status;
    urb->actual_length = u.actual;
    // Same address space: the reply goes straight into the caller's buffer, as the kernel's
    // copy-out would put it.
    if (u.actual > 0 && !u.in.empty())
        std::memcpy(urb->buffer, u.in.data(), std::min<std::size_t>(std::size_t(u.actual), u.in.size()));
    UMockdevIoctlData* slot =
        umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof(void*), nullptr);
    umockdev_ioctl_data_set_ptr(slot, 0, u.data);
    g_object_unref(slot);
    g_object_unref(u.data);
    Succeed(client);
}

// A cancelled URB comes back with -ENOENT on the next reap; one that has already completed
// cannot be cancelled (EINVAL), which libusb takes as "already done".
void EmulatedBoard::Discard(UMockdevIoctlClient* client, Node& node) {
    UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
    gulong addr = 0;
    std::memcpy(&addr, arg->data, sizeof addr);
    auto it = std::find_if(node.waiting.begin(), node.waiting.end(),
                           [addr](const Urb& u) { return u.data->client_addr == addr; });
    if (it == node.waiting.end()) return Fail(client, EINVAL);
    Urb u = std::move(*it);
    node.waiting.erase(it);
    u.status = -ENOENT;
    u.actual = 0;
    u.in.clear();
    node.done.push_back(std::move(u));
    Succeed(client);
}

}  // namespace lxm::test::usb
