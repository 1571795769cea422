#pragma once

#include <QObject>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "simboard/SimBoard.h"
#include "support/FakeClock.h"

typedef struct _UMockdevTestbed UMockdevTestbed;
typedef struct _UMockdevIoctlBase UMockdevIoctlBase;
typedef struct _UMockdevIoctlClient UMockdevIoctlClient;
typedef struct _UMockdevIoctlData UMockdevIoctlData;

namespace lxm::test::usb {

// The evaluation board on an emulated USB bus: a umockdev testbed holds the board's sysfs record
// and device node, and the node's usbfs requests are answered by the simulated board's controller
// at the byte level, so the real libusb, unmodified, talks to exactly the board the simulator
// models. The kernel's part is played here too: URBs of a board that goes away fail the way the
// kernel fails them, and a cancelled URB is handed back as cancelled.
//
// Make it before anything initialises libusb, and let libusb go before it.
class EmulatedBoard {
public:
    EmulatedBoard();
    // A second board on the first one's bus, at another port of its hub (2 or more).
    EmulatedBoard(EmulatedBoard& sameBus, int hubPort);
    ~EmulatedBoard();
    int address() const { return address_; }
    EmulatedBoard(const EmulatedBoard&) = delete;
    EmulatedBoard& operator=(const EmulatedBoard&) = delete;

    // Plugging gives the board a new address and a freshly powered board behind it.
    void Plug();
    void Unplug();
    bool plugged() const { return plugged_; }
    // The board's device node, as libusb opens it.
    const std::string& devnode() const { return devnode_; }

    // The cable is pulled while the n-th URB from now (1 = the next) is on the bus. The URB is
    // accepted and then fails as the kernel fails the URBs of a vanished device; the departure
    // is announced at the next yield of the event loop.
    void UnplugDuringUrb(int n);

    // Runs f on the board behind the bus, locked against the emulation's own thread.
    template <class F>
    auto WithBoard(F&& f) {
        std::lock_guard lock(mu_);
        return f(*board_);
    }

    // The board's time moves only when told, so that conversions finish when a test says.
    void AdvanceBoardMs(double ms) {
        std::lock_guard lock(mu_);
        boardClock_.AdvanceMs(ms);
    }

private:
    struct Urb {
        UMockdevIoctlData* data = nullptr;  // the submitted URB, referenced
        std::uint8_t endpoint = 0;
        int status = 0;  // completion status, a negative errno
        int actual = 0;
        std::vector<std::uint8_t> in;  // what an IN delivers
    };
    struct Node {
        bool gone = false;
        std::deque<Urb> waiting;  // IN URBs the board has not answered
        std::deque<Urb> done;     // completed, waiting to be reaped
    };

    EmulatedBoard(UMockdevTestbed* testbed, int hubPort);
    static int OnIoctl(UMockdevIoctlBase* handler, UMockdevIoctlClient* client, void* self);
    bool Handle(UMockdevIoctlClient* client);
    void Submit(UMockdevIoctlClient* client, Node& node);
    void Reap(UMockdevIoctlClient* client, Node& node);
    void Discard(UMockdevIoctlClient* client, Node& node);
    bool AnswerIn(Urb& urb, bool firstTry);
    void Vanish(Node& node);
    void AnnounceRemoval();

    UMockdevTestbed* testbed_ = nullptr;
    UMockdevIoctlBase* handler_ = nullptr;
    std::unique_ptr<QObject> mainThread_;  // context for work posted from the emulation thread
    std::string devicePath_;
    std::string syspath_;
    std::string devnode_;
    int address_ = 1;
    bool plugged_ = false;
    bool removalPosted_ = false;

    mutable std::mutex mu_;  // everything below
    FakeClock boardClock_;
    std::unique_ptr<sim::SimBoard> board_;
    std::map<std::string, Node> nodes_;
    int unplugCountdown_ = 0;
};

}  // namespace lxm::test::usb
