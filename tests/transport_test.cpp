// The board attach/open/close steps and the register transfer packets, on the simulated board.
#include <gtest/gtest.h>

#include <random>

#include "core/Colours.h"
#include "core/VbText.h"
#include "support/DeviceFixture.h"
#include "support/TestForm.h"
#include "transport/USB_Comm.h"

namespace lxm {
namespace {

using test::BoardFixture;
using test::kDisconnected;
using test::kNotConnected;
using test::TestForm;
using USB_Comm::HexValue;

constexpr int kBlack = 0, kGreen = 2, kLightGreen = 10, kLightRed = 12;

std::vector<std::uint8_t> Bytes(std::initializer_list<int> v) {
    return {v.begin(), v.end()};
}

TEST(HexValue, ReadsLeadingHexDigitsLikeTheEntryBoxesNeedUpTo32Bits) {
    EXPECT_EQ(HexValue("88"), 136);
    EXPECT_EQ(HexValue(""), 0);
    EXPECT_EQ(HexValue("a"), 10);
    EXPECT_EQ(HexValue("1FF"), 511);
    EXPECT_EQ(HexValue("1G"), 1);
    EXPECT_EQ(HexValue("zz"), 0);
    EXPECT_EQ(HexValue(" 5"), 0) << "a blank is not a digit";
    // Four digits are a 16-bit integer, so the top half reads negative...
    EXPECT_EQ(HexValue("FFFF"), -1);
    EXPECT_EQ(HexValue("8000"), -32768);
    // ...while five or more are a long.
    EXPECT_EQ(HexValue("10000"), 65536);
    EXPECT_EQ(HexValue("FFFFFFFF"), -1);
    // A value beyond 32 bits is too large however it is written.
    EXPECT_EQ(HexValue("123456789"), USB_Comm::kHexTooLarge);
    EXPECT_EQ(HexValue("1FFFFFFFF"), USB_Comm::kHexTooLarge);
    EXPECT_EQ(HexValue(QString(40, QLatin1Char('F'))), USB_Comm::kHexTooLarge);
    // Leading zeros are digits without value: the number is what the other digits say.
    EXPECT_EQ(HexValue("00000081F"), 0x81F);
    EXPECT_EQ(HexValue("000000100"), 0x100);
    EXPECT_EQ(HexValue(QString(30, QLatin1Char('0')) + "7F"), 0x7F);
}

class Transport : public ::testing::Test, protected BoardFixture {
protected:
    void SetUp() override {
        session.activeForm = &form;
        session.startupLamps = &form;
    }
    USB_Comm::Comm& comm() { return session.comm(); }
    sim::WireLog Packets() {
        auto log = wire();
        wire().clear();
        return log;
    }
    TestForm form;
};

TEST_F(Transport, BoardPresentAtStartAttachesDuringInitAndLightsTheLamps) {
    session.usb().InitDriver();
    EXPECT_TRUE(session.DriverInitOK);
    EXPECT_TRUE(session.UsbConnected) << "attach must arrive inside the initialisation";
    EXPECT_TRUE(form.init.hasFillIndex(kLightGreen));
    EXPECT_TRUE(form.attach.hasFillIndex(kLightGreen));
    session.usb().OpenDevice();
    EXPECT_TRUE(session.DeviceOpen);
    EXPECT_TRUE(form.info.hasFillIndex(kLightGreen));
    EXPECT_TRUE(form.transfer.hasFillIndex(kBlack));
}

TEST_F(Transport, NoBoardLeavesInfoRedAndALaterPlugArrivesWhileTheOpenStepYields) {
    Unplug();
    session.usb().InitDriver();
    EXPECT_FALSE(session.UsbConnected);
    session.usb().OpenDevice();
    EXPECT_FALSE(session.DeviceOpen);
    EXPECT_TRUE(form.attach.hasFillIndex(kLightRed));
    EXPECT_TRUE(form.info.hasFillIndex(kLightRed));
    EXPECT_TRUE(messages.texts.isEmpty()) << "no message for a missing board";

    driver.Plug();  // queued: delivered by the open step's yields
    session.usb().OpenDevice();
    EXPECT_TRUE(session.UsbConnected);
    EXPECT_TRUE(session.DeviceOpen);
    EXPECT_TRUE(form.attach.hasFillIndex(kLightGreen));
    EXPECT_TRUE(form.info.hasFillIndex(kLightGreen));
}

TEST_F(Transport, RefusedInterfaceKeepsTheBoardAway) {
    driver.FailSetInterface(true);
    session.usb().InitDriver();
    EXPECT_FALSE(session.UsbConnected);
    EXPECT_EQ(session.usb().attachContext.deviceHandle, 0u);
    EXPECT_TRUE(form.attach.hasFillIndex(kLightRed));
}

TEST_F(Transport, ReadRegisterAsksForSixBytesAndWriteRegisterSendsFour) {
    OpenSession();
    board.sensor().Write(8, 0x0A);
    form.hex[8]->setText("0A");
    wire().clear();
    comm().ReadRegister(8);
    auto log = Packets();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].endpoint, 0x02);
    EXPECT_EQ(log[0].bytes, Bytes({1, 0x89, 8}));
    EXPECT_EQ(log[1].endpoint, 0x82);
    EXPECT_EQ(log[1].bytes.size(), 6u);
    EXPECT_EQ(form.rd[8]->text(), "0A");
    EXPECT_EQ(session.RegReadMirror[8], 0x0A);
    EXPECT_EQ(session.ReadStatusByte, 1);
    EXPECT_TRUE(form.indRd[8]->hasFillIndex(kLightGreen));
    EXPECT_TRUE(form.attach.hasFillIndex(kLightGreen)) << "the outgoing transfer reports on Attach";
    EXPECT_TRUE(form.transfer.hasFillIndex(kLightGreen));
    EXPECT_FALSE(session.TransferBusy);

    comm().ReadRegister(8);
    EXPECT_TRUE(form.indRd[8]->hasFillIndex(kGreen)) << "each read flips the activity lamp";
    comm().ReadRegister(8);
    EXPECT_TRUE(form.indRd[8]->hasFillIndex(kLightGreen));

    form.hex[8]->setText("A");  // plain text comparison: "0A" and "A" differ
    comm().ReadRegister(8);
    EXPECT_TRUE(form.indRd[8]->hasFillIndex(kLightRed));

    // A write sends four bytes and keeps the mirror.
    form.hex[4]->setText("5A");
    wire().clear();
    comm().WriteRegister(4);
    log = Packets();
    ASSERT_EQ(log.size(), 1u) << "a write is never read back";
    EXPECT_EQ(log[0].endpoint, 0x02);
    EXPECT_EQ(log[0].bytes, Bytes({0, 0x88, 4, 0x5A}));
    EXPECT_EQ(chip(4), 0x5A);
    EXPECT_EQ(session.RegWriteMirror[4], 0x5A);
    EXPECT_TRUE(form.indWr[4]->hasFillIndex(kLightGreen));
    comm().WriteRegister(4);
    EXPECT_TRUE(form.indWr[4]->hasFillIndex(kGreen));
}

TEST_F(Transport, ARequestWhileBusyIsMarkedNotSent) {
    OpenSession();
    wire().clear();
    session.TransferBusy = true;
    comm().ReadRegister(5);
    comm().WriteRegister(6);
    EXPECT_TRUE(wire().empty());
    EXPECT_TRUE(session.TransferDeferred);
    EXPECT_TRUE(session.PendingRead[5]);
    EXPECT_TRUE(session.PendingWrite[6]);
    session.TransferBusy = false;
    comm().ReadRegister(5);
    EXPECT_FALSE(session.PendingRead[5]) << "a read that goes out clears its pending mark";
}

TEST_F(Transport, NotConnectedShowsFailAndTheMessageAndSendsNothing) {
    session.Collecting = true;
    form.testComm.setChecked(true);
    comm().ReadRegister(0);
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
    EXPECT_EQ(form.commTest.text(), "Fail");
    EXPECT_EQ(form.commTest.BackColor(), 255);
    EXPECT_EQ(form.commTest.ForeColor(), 0xFFFFFF);
    EXPECT_FALSE(form.testComm.isChecked());
    EXPECT_FALSE(session.Collecting);
    comm().WriteRegister(0);
    EXPECT_EQ(messages.count(kNotConnected), 2);
    EXPECT_TRUE(wire().empty());
}

TEST_F(Transport, WithoutASessionEachAccessOpensAndClosesAndNeedsInitTableAfterwards) {
    session.usb().InitDriver();
    session.I2cWriteAddr = 0x88;
    session.I2cReadAddr = 0x89;
    session.SessionOpen = false;
    form.hex[8]->setText("33");
    comm().WriteRegister(8);
    EXPECT_EQ(chip(8), 0x33);
    EXPECT_EQ(session.usb().driverHandle, 0u) << "closing releases the whole registration";
    EXPECT_EQ(driver.registrations(), 0);
    EXPECT_TRUE(session.UsbConnected) << "close leaves the connection flag as it was";
    // The device handed over earlier still answers; a fresh attach would need "Init Table".
    comm().ReadRegister(8);
    EXPECT_EQ(form.rd[8]->text(), "33");
    EXPECT_EQ(clock.sleptMs(), 100u) << "only the first close finds a registration to release";
}

TEST_F(Transport, UnplugShowsTheMessageOnceAndReplugWithInitTableRecovers) {
    OpenSession();
    driver.Unplug();
    Pump();
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});
    EXPECT_FALSE(session.UsbConnected);
    EXPECT_TRUE(session.UsbDetached);
    EXPECT_FALSE(session.DeviceOpen);
    EXPECT_TRUE(form.attach.hasFillIndex(kLightRed));
    EXPECT_TRUE(form.info.hasFillIndex(kBlack));
    EXPECT_TRUE(form.transfer.hasFillIndex(kBlack));

    comm().ReadRegister(0);
    EXPECT_EQ(messages.count(kNotConnected), 1);

    driver.Plug();
    Pump();
    EXPECT_TRUE(session.UsbConnected) << "the registration is still there, so the attach arrives";
    session.usb().InitDriver();  // "Init Table": one registration, not two
    EXPECT_EQ(driver.registrations(), 1);
    session.usb().OpenDevice();
    form.hex[8]->setText("44");
    comm().WriteRegister(8);
    comm().ReadRegister(8);
    EXPECT_EQ(form.rd[8]->text(), "44");
    driver.Unplug();
    Pump();
    EXPECT_EQ(messages.count(kDisconnected), 2) << "once per detach";
}

TEST_F(Transport, TimeOutShowsRedAndALateReplyDoesNotShiftLaterReadings) {
    OpenSession();
    board.sensor().Write(8, 0x11);
    board.sensor().Write(4, 0x22);
    board.controller().DelayNextReply(1);
    comm().ReadRegister(8);
    EXPECT_FALSE(session.TransferOK);
    EXPECT_TRUE(form.transfer.hasFillIndex(kLightRed));
    EXPECT_EQ(form.rd[8]->text(), "00") << "a failed read leaves zeros";
    comm().ReadRegister(4);
    EXPECT_EQ(form.rd[4]->text(), "22") << "the late reply to register 8 must not be taken for register 4";
    comm().ReadRegister(8);
    EXPECT_EQ(form.rd[8]->text(), "11");
}

// Registers 4, 5 and 6 hold 11, 22 and 33; every read below must show its own register's value.
struct InStep : Transport {
    void SetUp() override {
        Transport::SetUp();
        OpenSession();
        for (int r : {4, 5, 6}) board.sensor().Write(std::uint8_t(r), std::uint8_t(0x11 * (r - 3)));
    }
    QString Read(int r) {
        comm().ReadRegister(r);
        return form.rd[r]->text();
    }
};

// A late reply (its drain timing out once, or every drain giving up on it before it comes), a
// dropped reply, and a command that never left after the late one was given up: each read after
// the fault shows its own register, and the one whose command failed shows nothing.
TEST_F(InStep, EachKindOfLostReplyLeavesTheReadsAfterItTheirOwn) {
    const struct {
        const char* what;
        bool late;
        int timeOutsAfter;
        const char* secondRead;
    } cases[] = {{"late, its drain timing out", true, 1, "22"},
                 {"dropped", false, 0, "22"},
                 {"late, given up too early", true, 3, "22"},
                 {"late, given up, the next command failing", true, 3 + 1, "00"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.late)
            board.controller().DelayNextReply(1);
        else
            board.controller().DropNextReplies(1);
        EXPECT_EQ(Read(4), "00");
        driver.TimeOutNext(c.timeOutsAfter);
        EXPECT_EQ(Read(5), c.secondRead);
        EXPECT_EQ(Read(6), "33");
        EXPECT_EQ(Read(4), "11");
    }
}

// Any mix of late, dropped and timed-out replies and NACKs for a while; once the board answers
// again, every read is its own, and a read that says it succeeded never shows another's bytes.
TEST_F(InStep, AnyMixOfFaultsLeavesTheReadsInStepOnceTheBoardAnswersAgain) {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        auto pick = [&](int n) { return int(rng() % std::uint32_t(n)); };
        // Two of the six choices inject nothing.
        const std::function<void()> faults[] = {[&] { board.controller().DelayNextReply(1 + pick(2)); },
                                                [&] { board.controller().DropNextReplies(1); },
                                                [&] { driver.TimeOutNext(1 + pick(3)); },
                                                [&] { board.controller().NackNext(1); },
                                                [] {},
                                                [] {}};
        for (int step = 0; step < 30; ++step) {
            faults[pick(6)]();
            const int r = 4 + pick(3);
            const QString shown = Read(r);
            if (session.TransferOK && session.ReadStatusByte == 1) {
                EXPECT_EQ(shown, Hex2(0x11 * (r - 3))) << "step " << step;
            }
        }
        board.controller().DelayNextReply(0);
        board.controller().DropNextReplies(0);
        board.controller().NackNext(0);
        driver.TimeOutNext(0);
        for (int step = 0; step < 12; ++step) {
            const int r = 4 + pick(3);
            EXPECT_EQ(Read(r), Hex2(0x11 * (r - 3))) << "after the faults, step " << step;
        }
    }
}

TEST_F(Transport, AnAbsentChipOrATimeOutOnTheWayOutReadsZeroWithStatusZero) {
    OpenSession();
    session.I2cReadAddr = 0x8B;
    comm().ReadRegister(1);
    EXPECT_EQ(session.ReadStatusByte, 0);
    EXPECT_EQ(form.rd[1]->text(), "00");
    session.I2cReadAddr = 0x89;
    driver.TimeOutNext(1);
    comm().ReadRegister(0);
    EXPECT_TRUE(form.attach.hasFillIndex(kLightRed));
    EXPECT_EQ(session.ReadStatusByte, 0);
}

TEST_F(Transport, ShutdownReleasesWithADeviceAndNothingWithout) {
    OpenSession();
    session.usb().ShutdownUsb();
    EXPECT_EQ(session.usb().driverHandle, 0u);
    EXPECT_EQ(driver.infosOutstanding(), 0);

    BoardFixture empty;
    empty.driver.Unplug();
    BoardFixture::Pump();
    empty.session.usb().InitDriver();
    empty.session.usb().ShutdownUsb();
    EXPECT_GT(empty.session.usb().driverHandle, 0u) << "pipe resets fail without a device: nothing released";
}

}  // namespace
}  // namespace lxm
