#pragma once

#include <QObject>
#include <cstdint>
#include <map>

#include "SimBoard.h"
#include "transport/UsbDriver.h"

namespace lxm::sim {

// The simulated board on a simulated USB bus, behind the same driver interface as a real
// board. A board that is plugged in when a registration is made attaches inside Init; later
// plug and unplug events are posted to the event loop and arrive while the program yields.
class SimDriver final : public QObject, public UsbDriver {
public:
    explicit SimDriver(SimBoard& board, bool pluggedIn = true);
    ~SimDriver() override;

    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override;
    std::uint32_t Uninit(DriverHandle handle) override;
    std::uint32_t SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) override;
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override;
    void PutDeviceInfo(const UsbDeviceInfo* info) override;
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override;
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override;
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) override;

    // The cable. Unplug makes every transfer on the old handle fail at once, powers the board
    // down (sensor registers and queued replies are lost) and posts the detach notification;
    // Plug gives the board a new handle and posts the attach.
    void Plug();
    void Unplug();
    bool IsPlugged() const { return plugged_; }
    // Unplug in the middle of the n-th transfer from now (1 = the next one).
    void UnplugAfterTransfers(int n) { unplugAfter_ = n; }

    // Latency added to every transfer (0 by default; 1000 models a full-speed USB frame). An
    // OUT is taken at once and its frame is owed: the transfer after it ends no earlier than
    // the two frames would have, but the program waits once for the pair instead of twice.
    void SetLatencyMicros(std::int64_t us) { latencyUs_ = us; }
    // The next n transfers time out (after the caller's time-out, unless instant time-outs are on).
    void TimeOutNext(int n) { timeoutNext_ = n; }
    // Time-outs return at once instead of waiting the full time-out; on by default so tests stay fast.
    void SetInstantTimeouts(bool on) { instantTimeouts_ = on; }
    // Interface selection fails (the attach handler must refuse the device).
    void FailSetInterface(bool on) { failSetInterface_ = on; }
    // Where the board sits on the simulated bus (1:2 unless told), so several can be told apart.
    void SetPlace(int bus, int address) {
        info_.busNumber = bus;
        info_.deviceAddress = address;
    }
    const UsbDeviceInfo& info() const { return info_; }
    // Report a different interface number on attach.
    void SetInterfaceNumber(int n) { info_.interfaceNumber = n; }

    int registrations() const { return int(regs_.size()); }
    // Every attach handler that saw the present board refused it; its transfers fail.
    bool deviceRefused() const { return refused_; }
    // Device information blocks handed out and not yet put back.
    int infosOutstanding() const { return infoOut_; }
    DeviceHandle currentHandle() const { return plugged_ ? handle_ : 0; }
    SimBoard& board() { return board_; }

private:
    struct Registration {
        UsbMatch match;
        UsbEvents events;
        DeviceHandle accepted = 0;  // the device this registration took, 0 for none
    };

    bool Matches(const UsbMatch& match) const;
    void DeliverAttach(DriverHandle reg, DeviceHandle dev);
    void DeliverDetach(DriverHandle reg, DeviceHandle dev);
    bool Valid(DeviceHandle dev) const { return plugged_ && dev != 0 && dev == handle_; }
    // Sleeps until the monotonic clock reads untilUs.
    static void WaitUntil(std::int64_t untilUs);
    static std::int64_t NowMicros();

    SimBoard& board_;
    bool plugged_;
    DeviceHandle handle_ = 0;
    DeviceHandle nextHandle_ = 0x100;
    DriverHandle nextReg_ = 1;
    std::map<DriverHandle, Registration> regs_;
    UsbDeviceInfo info_;
    std::int64_t latencyUs_ = 0;
    std::int64_t owedUntilUs_ = 0;  // the end of the frame the last OUT owes (0: none)
    int timeoutNext_ = 0;
    int unplugAfter_ = 0;
    bool instantTimeouts_ = true;
    bool failSetInterface_ = false;
    bool refused_ = false;
    int infoOut_ = 0;
};

}  // namespace lxm::sim
