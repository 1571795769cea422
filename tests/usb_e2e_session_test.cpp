// The transport layer of the program (attach, open and close, register packets, port lines) on
// the real libusb backend, with the emulated board on an emulated USB bus.
#include <gtest/gtest.h>

#include <memory>

#include "core/Colours.h"
#include "core/VbText.h"
#include "support/FakeClock.h"
#include "support/RecordingSeams.h"
#include "support/TestForm.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"
#include "transport/generic_usb_lib.h"
#include "transport/libusb/LibusbDriver.h"
#include "usb_e2e/DenyOpen.h"
#include "usb_e2e/EmulatedBoard.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

using lxm::usb::LibusbDriver;
using SteadyTime = std::chrono::steady_clock;

constexpr int kOff = 0;
constexpr int kOk = 10;
constexpr int kFail = 12;

class SessionOnEmulatedBus : public ::testing::Test {
protected:
    void Start(bool boardPresent) {
        if (boardPresent) bus.Plug();
        driver = std::make_unique<LibusbDriver>();
        session = std::make_unique<Session>(*driver, messages, files, clock);
        session->activeForm = &form;
        session->startupLamps = &form;
        session->I2cWriteAddr = 0x88;
        session->I2cReadAddr = 0x89;
        session->CmdPipe = 2;
        comm().timeoutMs = 100;
    }
    // What start-up does: register with the driver, then wait for the board and open it.
    void StartUp() {
        usb().InitDriver();
        usb().OpenDevice();
    }
    // The board there, opened at start-up and held open for the session.
    void Open() {
        Start(true);
        StartUp();
        session->SessionOpen = true;
    }
    // Plug the board back in and do what the user does then: "Init Table", then open.
    void ReplugAndReinitialise() {
        bus.Plug();
        ASSERT_TRUE(WaitForLibusb(driver->context()));
        StartUp();
        ASSERT_TRUE(session->UsbConnected);
        ASSERT_TRUE(session->DeviceOpen);
    }

    generic_usb_lib::UsbLib& usb() { return session->usb(); }
    USB_Comm::Comm& comm() { return session->comm(); }

    std::uint8_t Chip(int reg) {
        return bus.WithBoard([reg](sim::SimBoard& b) { return b.sensor().Peek(std::uint8_t(reg)); });
    }
    sim::WireLog Wire() {
        return bus.WithBoard([](sim::SimBoard& b) { return b.controller().wireLog(); });
    }
    void Write(int reg, const QString& hex) {
        form.hex[reg]->setText(hex);
        comm().WriteRegister(reg);
    }
    QString Read(int reg) {
        comm().ReadRegister(reg);
        return form.rd[reg]->text();
    }

    EmulatedBoard bus;  // before libusb comes up, gone after it
    std::unique_ptr<LibusbDriver> driver;
    RecordingMessages messages;
    ScriptedFileDialogs files;
    FakeClock clock;
    TestForm form;
    std::unique_ptr<Session> session;
};

TEST_F(SessionOnEmulatedBus, ABoardPluggedInAfterInitialisationAttachesWhileTheOpenStepYields) {
    Start(false);
    usb().InitDriver();
    EXPECT_TRUE(form.init.hasFillIndex(kOk));
    EXPECT_FALSE(session->UsbConnected);
    bus.Plug();
    ASSERT_TRUE(WaitForLibusb(driver->context()));
    ASSERT_FALSE(session->UsbConnected) << "nothing is delivered until the program yields";
    usb().OpenDevice();
    EXPECT_TRUE(session->UsbConnected);
    EXPECT_TRUE(session->DeviceOpen);
    EXPECT_TRUE(form.attach.hasFillIndex(kOk));
    EXPECT_TRUE(form.info.hasFillIndex(kOk));
}

TEST_F(SessionOnEmulatedBus, RegisterWriteAndReadBackTravelAsTheBoardsPackets) {
    Open();
    Write(5, "A7");
    EXPECT_EQ(Chip(5), 0xA7);
    EXPECT_EQ(Read(5), "A7");
    EXPECT_EQ(session->ReadStatusByte, 1);
    EXPECT_TRUE(form.transfer.hasFillIndex(kOk));
    EXPECT_FALSE(form.indRd[5]->hasFillIndex(kFail));

    // The packets' bytes are the transfer layer's, checked on the simulated driver; here the
    // three transfers and nothing more (no drain or probe) on libusb.
    EXPECT_EQ(Wire().size(), 3u);
}

TEST_F(SessionOnEmulatedBus, APortLineWriteSendsFourBytesAndShowsTheTwentyFiveByteReadBack) {
    Open();
    session->GpioImage = {0x60, 0x30, 0x40, 0x10};
    frmGPIO& gpio = session->GpioForm();
    session->activeForm = &gpio;
    gpio.cmdGPIO_Write_Click();

    bus.WithBoard([](sim::SimBoard& b) {
        EXPECT_EQ(b.controller().portBEnables(), 0x60);
        EXPECT_EQ(b.controller().portCEnables(), 0x30);
        EXPECT_EQ(b.controller().portBLevels(), 0x40);
        EXPECT_EQ(b.controller().portCLevels(), 0x10);
    });
    EXPECT_EQ(Wire().size(), 2u);
    // What the window makes of the read-back is the simulated board's port-line test's.
    EXPECT_EQ(gpio.txtPCHex[3]->text() + gpio.txtPCHexData[1]->text(), "30C0");
}

// The reply to a timed-out read arrives late and would be taken for the answer to the next read,
// and so on down the line; the stale reply is drained before the next command goes out.
TEST_F(SessionOnEmulatedBus, ALateReplyDoesNotShiftTheReadingsAfterIt) {
    Open();
    Write(4, "11");
    Write(5, "22");
    Write(6, "33");
    bus.WithBoard([](sim::SimBoard& b) { b.controller().DelayNextReply(1); });
    EXPECT_EQ(Read(4), "00");
    EXPECT_EQ(session->LastStatus, kUsbTimeout);
    EXPECT_EQ(Read(5), "22");
    EXPECT_EQ(Read(6), "33");
    EXPECT_EQ(Read(4), "11");
}

TEST_F(SessionOnEmulatedBus, UnplugDuringARegisterReadIsReportedOnceAndReinitialisationRecovers) {
    Open();
    comm().timeoutMs = 1000;
    Write(4, "5A");
    bus.UnplugDuringUrb(2);  // the reply's IN is on the bus when the cable goes
    const auto t0 = SteadyTime::now();
    EXPECT_EQ(Read(4), "00");
    EXPECT_LT(MillisSince(t0), 500.0) << "failed by the departure, not by the time-out";
    EXPECT_EQ(session->LastStatus, kUsbNoDevice);

    ASSERT_TRUE(YieldUntil([&] { return session->UsbDetached; }));
    YieldUntil([] { return false; }, 50);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_FALSE(session->UsbConnected);
    EXPECT_TRUE(form.attach.hasFillIndex(kFail));
    EXPECT_TRUE(form.transfer.hasFillIndex(kOff));
    EXPECT_TRUE(form.info.hasFillIndex(kOff));
    comm().ReadRegister(4);
    EXPECT_EQ(messages.count(kNotConnected), 1);
    EXPECT_EQ(form.commTest.text(), "Fail");

    ReplugAndReinitialise();
    Write(4, "6B");  // the board came back in its power-on state
    EXPECT_EQ(Read(4), "6B");
    EXPECT_EQ(messages.count(kDisconnected), 1);
}

TEST_F(SessionOnEmulatedBus, UnplugDuringASequenceOfReadsNeitherHangsNorRepeatsTheMessage) {
    Open();
    comm().timeoutMs = 1000;
    bus.UnplugDuringUrb(6);  // the third read's reply
    const auto t0 = SteadyTime::now();
    for (int r = 0; r < 9; ++r) comm().ReadRegister(r);
    EXPECT_LT(MillisSince(t0), 900.0) << "no read waited for its time-out";
    ASSERT_TRUE(YieldUntil([&] { return session->UsbDetached; }));
    for (int r = 0; r < 9; ++r) comm().ReadRegister(r);
    YieldUntil([] { return false; }, 50);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_FALSE(session->TransferBusy);

    ReplugAndReinitialise();
    Write(7, "3C");
    EXPECT_EQ(Read(7), "3C");
}

// "Close USB" gives up the registration but not the board: a register access with the session
// closed opens it again; only "Init Table" brings notifications back.
TEST_F(SessionOnEmulatedBus, AfterCloseARegisterAccessReopensTheBoardWithoutANewRegistration) {
    Start(true);
    StartUp();
    usb().CloseDevice();
    EXPECT_EQ(usb().driverHandle, 0u);
    EXPECT_FALSE(session->DeviceOpen);
    EXPECT_TRUE(session->UsbConnected);

    session->SessionOpen = false;
    Write(4, "3C");
    EXPECT_EQ(Read(4), "3C");
    EXPECT_TRUE(form.transfer.hasFillIndex(kOk));

    bus.Unplug();
    YieldUntil([] { return false; }, 100);
    EXPECT_EQ(messages.count(kDisconnected), 0) << "nobody registered to hear it";
    ReplugAndReinitialise();
    EXPECT_EQ(Read(4), "00");
    EXPECT_TRUE(form.transfer.hasFillIndex(kOk));
}

TEST_F(SessionOnEmulatedBus, NoPermissionOnTheBoardsNodeNamesTheUdevRuleOnce) {
    bus.Plug();
    DenyOpen(bus.devnode());
    Start(false);
    StartUp();
    usb().OpenDevice();
    DenyOpen({});
    EXPECT_FALSE(session->UsbConnected);
    EXPECT_TRUE(form.info.hasFillIndex(kFail));
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0].toStdString(), driver->LastOpenProblem());
    EXPECT_TRUE(messages.texts[0].contains("60-lxmeval.rules"));
}

}  // namespace
}  // namespace lxm::test::usb
