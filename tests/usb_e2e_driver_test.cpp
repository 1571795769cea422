// The libusb backend on its own, against the emulated board: registrations, arrivals and
// departures, the life of a device handle, and how libusb's errors reach the program.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>
#include <vector>

#include "transport/libusb/LibusbDriver.h"
#include "usb_e2e/DenyOpen.h"
#include "usb_e2e/EmulatedBoard.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

using lxm::usb::LibusbDriver;
using SteadyTime = std::chrono::steady_clock;

class DriverOnEmulatedBus : public ::testing::Test {
protected:
    struct Notice {
        bool attach;
        DeviceHandle dev;
        UsbDeviceInfo info;
    };

    void Start(bool boardPresent, LibusbDriver::Options options = {}) {
        if (boardPresent) bus.Plug();
        driver = std::make_unique<LibusbDriver>(options);
    }

    DriverHandle Register(bool accept = true) {
        UsbEvents ev;
        ev.attach = [this, accept](DeviceHandle dev, const UsbDeviceInfo& info, void*) {
            notices.push_back({true, dev, info});
            return accept && driver->SetInterface(dev, 0, 0) == kUsbOk;
        };
        ev.detach = [this](DeviceHandle dev, void*) { notices.push_back({false, dev, {}}); };
        DriverHandle h = 0;
        EXPECT_EQ(driver->Init(&h, UsbMatch{kBoardVendorId, kBoardProductId}, ev), kUsbOk);
        return h;
    }

    int Count(bool attach) const {
        int n = 0;
        for (const Notice& x : notices) n += x.attach == attach;
        return n;
    }
    DeviceHandle LastAttached() const {
        for (auto it = notices.rbegin(); it != notices.rend(); ++it)
            if (it->attach) return it->dev;
        return 0;
    }

    std::uint32_t Send(DeviceHandle dev, std::vector<std::uint8_t> packet, std::uint32_t timeoutMs = 100) {
        std::uint32_t done = 0;
        return driver->Transfer(dev, 2, UsbDir::Out, packet.data(), std::uint32_t(packet.size()), &done,
                                timeoutMs);
    }
    // The bytes land in reply.
    std::uint32_t Receive(DeviceHandle dev, std::uint32_t len, std::uint32_t timeoutMs = 100) {
        reply.assign(len, 0xEE);
        std::uint32_t done = 0;
        return driver->Transfer(dev, 130, UsbDir::In, reply.data(), len, &done, timeoutMs);
    }
    // One register read as the program makes it: command on pipe 2, six bytes back on 0x82.
    std::uint32_t ReadRegister(DeviceHandle dev, std::uint8_t reg) {
        const std::uint32_t st = Send(dev, {1, 0x89, reg});
        return st != kUsbOk ? st : Receive(dev, 6);
    }
    // The board that is there when the driver starts, attached by the registration.
    DeviceHandle Attached() {
        Start(true);
        Register();
        return LastAttached();
    }

    EmulatedBoard bus;  // before libusb comes up, gone after it
    std::unique_ptr<LibusbDriver> driver;
    std::vector<Notice> notices;
    std::vector<std::uint8_t> reply;  // of the last IN
};

TEST_F(DriverOnEmulatedBus, BoardPresentAttachesInsideInitAndAnswers) {
    Start(true);
    ASSERT_TRUE(driver->hotplugNotifications());
    Register();
    ASSERT_EQ(Count(true), 1) << "a board already present attaches before Init returns";
    const Notice& a = notices.front();
    EXPECT_EQ(a.info.vendorId, kBoardVendorId);
    EXPECT_EQ(a.info.productId, kBoardProductId);
    EXPECT_EQ(a.info.interfaceNumber, 0);
    EXPECT_EQ(a.info.busNumber, 1);
    EXPECT_EQ(a.info.deviceAddress, 2);

    ASSERT_EQ(Send(a.dev, {0, 0x88, 4, 0x5A}), kUsbOk);
    ASSERT_EQ(ReadRegister(a.dev, 4), kUsbOk);
    EXPECT_EQ(reply, (std::vector<std::uint8_t>{1, 0x5A, 0, 0, 0, 0}));
    // Pipe numbers name the direction: an IN on an OUT pipe never reaches the bus.
    std::uint32_t done = 0;
    EXPECT_EQ(driver->Transfer(a.dev, 2, UsbDir::In, reply.data(), 6, &done, 100), kUsbInvalidArg);
    EXPECT_EQ(driver->Transfer(a.dev, 300, UsbDir::In, reply.data(), 6, &done, 100), kUsbInvalidArg);
    // The host asking for fewer bytes than the board sends is libusb's overflow.
    ASSERT_EQ(Send(a.dev, {4, 0x89, 4}), kUsbOk);
    EXPECT_EQ(Receive(a.dev, 2), kUsbOverflow);
}

TEST_F(DriverOnEmulatedBus, ArrivalAndDepartureComeWhileYieldingAndAHandleDiesWithItsBoard) {
    Start(false);
    Register();
    EXPECT_EQ(Count(true), 0);

    bus.Plug();
    ASSERT_TRUE(YieldUntil([&] { return Count(true) == 1; }));
    const DeviceHandle first = LastAttached();
    const UsbDeviceInfo* info = nullptr;
    ASSERT_EQ(driver->GetDeviceInfo(first, &info), kUsbOk);
    EXPECT_EQ(driver->openHandles(), 1);

    bus.Unplug();
    ASSERT_TRUE(YieldUntil([&] { return Count(false) == 1; }));
    EXPECT_EQ(notices.back().dev, first);
    EXPECT_EQ(driver->openHandles(), 0);
    EXPECT_EQ(ReadRegister(first, 0), kUsbNoDevice);
    const UsbDeviceInfo* again = nullptr;
    EXPECT_EQ(driver->GetDeviceInfo(first, &again), kUsbNoDevice);
    // The block handed out before stays the program's until it puts it back.
    EXPECT_EQ(info->productId, kBoardProductId);
    driver->PutDeviceInfo(info);
    EXPECT_EQ(driver->infosOutstanding(), 0);

    bus.Plug();
    ASSERT_TRUE(YieldUntil([&] { return Count(true) == 2; }));
    EXPECT_NE(LastAttached(), first);
    EXPECT_EQ(ReadRegister(LastAttached(), 0), kUsbOk);
    YieldUntil([] { return false; }, 50);
    EXPECT_EQ(Count(false), 1) << "one departure, one detach";
}

TEST_F(DriverOnEmulatedBus, UninitEndsNotificationsButNotTheBoardHandedOut) {
    Start(true);
    const DriverHandle reg = Register();
    const DeviceHandle dev = LastAttached();
    ASSERT_EQ(driver->Uninit(reg), kUsbOk);
    EXPECT_EQ(driver->Uninit(reg), kUsbInvalidArg);

    EXPECT_EQ(ReadRegister(dev, 1), kUsbOk);
    bus.Unplug();
    YieldUntil([] { return false; }, 100);
    EXPECT_EQ(Count(false), 0);
    EXPECT_EQ(ReadRegister(dev, 1), kUsbNoDevice);
    bus.Plug();
    YieldUntil([] { return false; }, 100);
    EXPECT_EQ(Count(true), 1) << "no registration, no attach";
}

// "Init Table" registers again while the board is attached, then drops the old registration.
TEST_F(DriverOnEmulatedBus, ASecondRegistrationGetsTheSameOpenBoard) {
    Start(true);
    const DriverHandle first = Register();
    const DriverHandle second = Register();
    ASSERT_EQ(Count(true), 2);
    EXPECT_EQ(notices[0].dev, notices[1].dev);
    EXPECT_EQ(driver->openHandles(), 1);
    driver->Uninit(first);

    EXPECT_EQ(ReadRegister(notices[1].dev, 0), kUsbOk);
    bus.Unplug();
    ASSERT_TRUE(YieldUntil([&] { return Count(false) == 1; }));
    YieldUntil([] { return false; }, 50);
    EXPECT_EQ(Count(false), 1);
    driver->Uninit(second);
}

TEST_F(DriverOnEmulatedBus, ARefusedBoardIsClosedAgain) {
    Start(true);
    Register(false);
    ASSERT_EQ(Count(true), 1);
    EXPECT_EQ(driver->openHandles(), 0);
    EXPECT_EQ(ReadRegister(notices[0].dev, 0), kUsbNoDevice);
}

TEST_F(DriverOnEmulatedBus, ASilentBoardTimesOutAndALateReplyGoesToTheNextIn) {
    const DeviceHandle dev = Attached();

    bus.WithBoard([](sim::SimBoard& b) { b.controller().DropNextReplies(1); });
    auto t0 = SteadyTime::now();
    EXPECT_EQ(ReadRegister(dev, 0), kUsbTimeout);
    const double waited = MillisSince(t0);
    EXPECT_GE(waited, 90.0);
    EXPECT_LT(waited, 900.0) << "the caller's time-out, not the usual 1000 ms";
    EXPECT_EQ(ReadRegister(dev, 4), kUsbOk) << "the handle outlives a time-out";

    Send(dev, {0, 0x88, 5, 0x33});
    bus.WithBoard([](sim::SimBoard& b) { b.controller().DelayNextReply(1); });
    ASSERT_EQ(Send(dev, {1, 0x89, 5}), kUsbOk);
    EXPECT_EQ(Receive(dev, 6), kUsbTimeout);
    ASSERT_EQ(Receive(dev, 6), kUsbOk);
    EXPECT_EQ(reply[1], 0x33);
}

TEST_F(DriverOnEmulatedBus, UnplugWithAnInOnTheBusFailsItAtOnce) {
    const DeviceHandle dev = Attached();
    bus.UnplugDuringUrb(2);
    const auto t0 = SteadyTime::now();
    ASSERT_EQ(Send(dev, {1, 0x89, 0}, 2000), kUsbOk);
    EXPECT_EQ(Receive(dev, 6, 2000), kUsbNoDevice);
    EXPECT_LT(MillisSince(t0), 1000.0) << "not left to the time-out";
    EXPECT_EQ(Send(dev, {1, 0x89, 0}), kUsbNoDevice);
    ASSERT_TRUE(YieldUntil([&] { return Count(false) == 1; }));
}

TEST_F(DriverOnEmulatedBus, PipeResetsSucceedOnAPresentBoardAndDeviceResetKeepsTheHandle) {
    const DeviceHandle dev = Attached();
    for (std::uint32_t pipe : {1u, 2u, 3u, 129u, 130u})
        EXPECT_EQ(driver->ResetPipe(dev, pipe), kUsbOk) << pipe;
    EXPECT_EQ(driver->ResetDevice(dev, 0), kUsbOk);
    EXPECT_EQ(ReadRegister(dev, 0), kUsbOk);

    bus.Unplug();
    ASSERT_TRUE(YieldUntil([&] { return Count(false) == 1; }));
    EXPECT_EQ(driver->ResetPipe(dev, 3), kUsbNoDevice);
    EXPECT_EQ(driver->ResetDevice(dev, 0), kUsbNoDevice);
    EXPECT_EQ(driver->ResetPipe(0, 3), kUsbNoDevice);
}

TEST_F(DriverOnEmulatedBus, NoPermissionOnTheNodeIsRememberedUntilAnOpenSucceeds) {
    bus.Plug();
    DenyOpen(bus.devnode());
    Start(false);
    Register();
    DenyOpen({});
    EXPECT_EQ(Count(true), 0);
    const std::string problem = driver->LastOpenProblem();
    EXPECT_NE(problem.find("60-lxmeval.rules"), std::string::npos) << problem;
    EXPECT_NE(problem.find("plug"), std::string::npos) << problem;

    bus.Unplug();
    bus.Plug();
    ASSERT_TRUE(YieldUntil([&] { return Count(true) == 1; }));
    EXPECT_EQ(driver->LastOpenProblem(), "");
}

TEST_F(DriverOnEmulatedBus, EnumerationAtIntervalsStandsInForHotplug) {
    Start(true, LibusbDriver::Options{true, 20});
    ASSERT_FALSE(driver->hotplugNotifications());
    Register();
    ASSERT_EQ(Count(true), 1) << "a board already present attaches before Init returns";
    bus.Unplug();
    ASSERT_TRUE(YieldUntil([&] { return Count(false) == 1; }));
    bus.Plug();
    ASSERT_TRUE(YieldUntil([&] { return Count(true) == 2; }));
    EXPECT_EQ(ReadRegister(LastAttached(), 0), kUsbOk);
}

}  // namespace
}  // namespace lxm::test::usb
