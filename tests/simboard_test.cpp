#include <gtest/gtest.h>

#include <QCoreApplication>
#include <chrono>
#include <vector>

#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "support/FakeClock.h"

namespace lxm::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kWr = 0x88, kRd = 0x89;
constexpr std::uint8_t kAlsOnce = 0x20, kIrOnce = 0x40, kProxOnce = 0x60, kAlsCont = 0xA0;
constexpr std::uint8_t kBits16 = 0x00, kBits12 = 0x04, kBits4 = 0x0C, kRange4000 = 0x01;
constexpr std::uint8_t kDrive100 = 0x30, kDrive50 = 0x20, kScheme1 = 0x80;

class BoardTest : public ::testing::Test {
protected:
    BoardTest() { board.scene().ideal = true; }
    std::uint32_t Out(std::uint8_t ep, const Bytes& b) { return ctl().BulkOut(ep, b.data(), b.size()); }
    void Write(std::uint8_t reg, Bytes data, std::uint8_t addr = kWr) {
        data.insert(data.begin(), {0, addr, reg});
        ASSERT_EQ(Out(0x02, data), kUsbOk);
    }
    // A read as the host does it: command out, then an IN of fixed length. Empty on failure.
    Bytes Read(std::uint8_t reg, std::uint8_t count, std::size_t askLen, std::uint8_t addr = kRd) {
        Out(0x02, {count, addr, reg});
        return In(0x82, askLen);
    }
    Bytes In(std::uint8_t ep, std::size_t len, std::uint32_t* status = nullptr) {
        Bytes buf(len, 0xEE);
        std::size_t actual = 0;
        const std::uint32_t st = ctl().BulkIn(ep, buf.data(), len, &actual);
        if (status) *status = st;
        return st == kUsbOk && actual == len ? buf : Bytes{};
    }
    int Data() { return board.sensor().Peek(2) | (board.sensor().Peek(3) << 8); }
    bool LineHigh() { return board.sensor().InterruptLineHigh(); }
    void Thresholds(std::uint16_t lo, std::uint16_t hi) {
        Write(4, {std::uint8_t(lo), std::uint8_t(lo >> 8), std::uint8_t(hi), std::uint8_t(hi >> 8)});
    }
    void Measure(std::uint8_t command2, std::uint8_t command1) {
        Write(1, {command2});
        Write(0, {command1});
    }
    void WaitConversions(int n) {
        clock.AdvanceUs(n * FamilySensor::ConversionMicros(board.family().ResolutionBits()) + 1);
    }
    int Once(std::uint8_t command2, std::uint8_t command1) {
        Measure(command2, command1);
        WaitConversions(1);
        return Data();
    }
    BoardController& ctl() { return board.controller(); }

    test::FakeClock clock;
    SimBoard board{clock};
};

TEST_F(BoardTest, ReadRepliesCarryStatusDataPaddingAndAutoIncrement) {
    Write(8, {0x5A});
    EXPECT_EQ(Read(8, 1, 6), (Bytes{1, 0x5A, 0, 0, 0, 0}));
    Write(4, {0x11, 0x22, 0x33, 0x44});
    EXPECT_EQ(Read(4, 4, 5), (Bytes{4, 0x11, 0x22, 0x33, 0x44}));
    EXPECT_EQ(Read(5, 2, 3), (Bytes{2, 0x22, 0x33}));
}

TEST_F(BoardTest, UnansweredTransactionsReportStatusZero) {
    Write(8, {0x5A});
    const Bytes nothing(6, 0);
    EXPECT_EQ(Read(8, 1, 6, 0x8B), nothing) << "another address";
    EXPECT_EQ(Read(8, 1, 6, kWr), nothing) << "read sent to the write address";
    ctl().NackNext(1);
    EXPECT_EQ(Read(8, 1, 6), nothing);
    EXPECT_EQ(Read(8, 1, 6)[0], 1) << "a NACK affects only the next transaction";

    Write(8, {0x77}, 0x8A);
    ctl().SetSensorPresent(false);
    Write(8, {0x66});
    EXPECT_EQ(Read(8, 1, 6), nothing);
    ctl().SetSensorPresent(true);
    EXPECT_EQ(Read(8, 1, 6)[1], 0x5A) << "writes nobody acknowledged change nothing";
}

TEST_F(BoardTest, InWithoutReplyTimesOutAndLateRepliesComeOneInLater) {
    std::uint32_t st = 0;
    In(0x82, 6, &st);
    EXPECT_EQ(st, kUsbTimeout);
    Write(8, {0x42});
    EXPECT_FALSE(ctl().ReplyPending(0x82)) << "writes have no reply";

    ctl().DelayNextReply(1);
    Out(0x02, {1, kRd, 8});
    EXPECT_FALSE(ctl().ReplyPending(0x82));
    In(0x82, 6, &st);
    EXPECT_EQ(st, kUsbTimeout);
    // The host has moved on to the next register and gets the stale reply first.
    Out(0x02, {1, kRd, 4});
    EXPECT_EQ(In(0x82, 6), (Bytes{1, 0x42, 0, 0, 0, 0}));
    EXPECT_EQ(In(0x82, 6), (Bytes{1, 0x00, 0, 0, 0, 0}));
    In(0x82, 6, &st);
    EXPECT_EQ(st, kUsbTimeout) << "each reply is delivered once";

    ctl().DropNextReplies(1);
    Out(0x02, {1, kRd, 8});
    In(0x82, 6, &st);
    EXPECT_EQ(st, kUsbTimeout);
    const auto& log = ctl().wireLog();
    EXPECT_EQ(log[log.size() - 2].bytes, (Bytes{1, kRd, 8}));
    EXPECT_EQ(log.back().dir, WireDir::In);
    EXPECT_EQ(log.back().status, kUsbTimeout);
}

TEST_F(BoardTest, TheWireLogIsARingAndCanBeSwitchedOff) {
    // A day's collection is millions of packets: the log keeps the newest and no more.
    const std::size_t capacity = BoardController::kWireLogCapacity;
    for (std::size_t i = 0; i < capacity + 100; ++i) Out(0x02, {0, kWr, 4, std::uint8_t(i)});
    ASSERT_EQ(ctl().wireLog().size(), capacity);
    EXPECT_EQ(ctl().wireLog().back().bytes[3], std::uint8_t(capacity + 99));
    EXPECT_EQ(ctl().wireLog().front().bytes[3], std::uint8_t(100));

    ctl().SetWireLogCapacity(3);
    EXPECT_EQ(ctl().wireLog().size(), 3u);
    EXPECT_EQ(ctl().wireLog().back().bytes[3], std::uint8_t(capacity + 99));
    ctl().SetWireLogCapacity(0);
    EXPECT_TRUE(ctl().wireLog().empty());
    Read(8, 1, 6);
    EXPECT_TRUE(ctl().wireLog().empty()) << "off keeps nothing, and the board still works";
    EXPECT_EQ(board.sensor().Peek(4), std::uint8_t(capacity + 99));
}

TEST_F(BoardTest, PortLinesEchoAndPb7ReadsTheInterruptLine) {
    // PB6 driven high, PC4 low (green on), PC5 high (red off), PB7 an input.
    const Bytes lines{0x40, 0x20, 0x40, 0x30};
    Out(0x01, lines);
    Bytes expected(25, 0);
    expected[0] = 0xC0;  // line idle high
    std::copy(lines.begin() + 1, lines.end(), expected.begin() + 1);
    EXPECT_EQ(In(0x81, 25), expected);
    EXPECT_TRUE(ctl().ExternalLedOn());
    EXPECT_TRUE(ctl().GreenLedOn());
    EXPECT_FALSE(ctl().RedLedOn());

    Thresholds(0, 1000);
    Once(kBits12, kAlsOnce);
    Out(0x01, lines);
    EXPECT_EQ(In(0x81, 25)[0], 0x40) << "asserted interrupt pulls PB7 low";
    Out(0x01, {0x80, 0x00, 0x80, 0x00});
    EXPECT_EQ(In(0x81, 25)[0], 0x80) << "as an output PB7 reads back its latch";
    EXPECT_FALSE(ctl().GreenLedOn()) << "an LED line that is not an output stays dark";
}

// Resolution field, bits, and the delay after which the program samples (0 = not used).
class ResolutionTest : public BoardTest, public ::testing::WithParamInterface<std::tuple<int, int, int>> {};

TEST_P(ResolutionTest, DataUpdatesOnlyWhenTheConversionEnds) {
    const auto [field, bits, sampleDelayUs] = GetParam();
    Measure(std::uint8_t(field), kAlsOnce);
    ASSERT_EQ(board.family().ResolutionBits(), bits);
    const std::int64_t t = FamilySensor::ConversionMicros(bits);
    if (sampleDelayUs) {
        EXPECT_LT(t, sampleDelayUs);
    }
    clock.AdvanceUs(t - 1);
    EXPECT_EQ(Data(), 0);
    clock.AdvanceUs(1);
    EXPECT_GT(Data(), 0);
    EXPECT_EQ(board.family().conversions(), 1);
}

INSTANTIATE_TEST_SUITE_P(AllResolutions, ResolutionTest,
                         ::testing::Values(std::tuple{0x00, 16, 118'000}, std::tuple{0x04, 12, 8'000},
                                           std::tuple{0x08, 8, 0}, std::tuple{0x0C, 4, 0}));

TEST_F(BoardTest, OnceHoldsItsReadingWhileContinuousFollowsTheLight) {
    const int first = Once(kBits12, kAlsOnce);
    board.scene().ambientLux = 600;
    WaitConversions(10);
    EXPECT_EQ(Data(), first);
    EXPECT_EQ(board.family().conversions(), 1);
    EXPECT_EQ(board.sensor().Peek(0), kAlsOnce) << "the operation stays as written";

    Write(0, {kAlsCont});
    WaitConversions(1);
    EXPECT_EQ(Data(), 2457);
    board.scene().ambientLux = 300;
    WaitConversions(1);
    EXPECT_EQ(Data(), first);

    Write(0, {0x00});
    board.scene().ambientLux = 900;
    WaitConversions(5);
    EXPECT_EQ(Data(), first) << "power down keeps the last result";
}

TEST_F(BoardTest, LongIdleInContinuousModeCatchesUpQuickly) {
    Measure(kBits4, kAlsCont);
    const auto start = std::chrono::steady_clock::now();
    clock.AdvanceMs(3'600'000.0);  // an hour of 24-us conversions
    board.scene().ambientLux = 500;
    EXPECT_EQ(Data(), 8);
    EXPECT_GT(board.family().conversions(), 100'000'000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(BoardTest, CountsScaleWithRangeResolutionAndDriveAndClip) {
    EXPECT_EQ(Once(kBits16, kAlsOnce), 19660);  // 300 lux of 1000 full scale
    EXPECT_EQ(Once(kBits16 | kRange4000, kAlsOnce), 4915);
    EXPECT_EQ(Once(kBits12, kAlsOnce), 1228);
    EXPECT_EQ(Once(kBits12, kIrOnce), 491);  // 120 of 1000
    // Object at 6 cm: 400 units reflected at 100 mA, plus the ambient infrared.
    EXPECT_EQ(Once(kBits12 | kDrive100, kProxOnce), 2129);
    EXPECT_EQ(Once(kBits12 | kDrive50, kProxOnce), 1310);

    board.scene().ambientLux = 2500;
    EXPECT_EQ(Once(kBits16, kAlsOnce), 65535);
    EXPECT_EQ(Once(kBits4, kAlsOnce), 15);
    EXPECT_TRUE(LineHigh()) << "full scale stays inside the power-on threshold window";
    Write(2, {0x12, 0x34});
    EXPECT_EQ(Data(), 15) << "data registers are read-only";
}

TEST_F(BoardTest, SchemeOneReadsNegativeAsTwosComplementAndComparesSigned) {
    // No object and a bright infrared background: the ambient-cancelled reading is -80.
    board.scene().objectDistanceMm = 0;
    board.scene().infrared = 1000;
    Thresholds(0xFF9C, 100);  // -100 .. 100
    EXPECT_EQ(Once(kScheme1 | kBits12 | kDrive100, kProxOnce), 0x0FB0);
    EXPECT_TRUE(LineHigh());
    EXPECT_EQ(Once(kBits12 | kDrive100, kProxOnce), 4095) << "scheme 0 is unsigned and clips";

    Thresholds(0xFFCE, 100);  // -50 .. 100
    Once(kScheme1 | kBits12 | kDrive100, kProxOnce);
    EXPECT_FALSE(LineHigh());
}

TEST_F(BoardTest, InterruptNeedsPersistenceAndIsClearedByAWrite) {
    Thresholds(0, 1000);
    Write(1, {kBits16});
    Write(0, {kAlsCont | 0x04 | 0x01});  // persistence 4; the host cannot set the flag
    EXPECT_EQ(board.sensor().Peek(0), kAlsCont | 0x01);
    WaitConversions(3);
    EXPECT_TRUE(LineHigh());
    WaitConversions(1);
    EXPECT_FALSE(LineHigh());
    EXPECT_EQ(Read(0, 1, 6)[1], kAlsCont | 0x05);

    Write(0, {kAlsCont | 0x05});
    EXPECT_FALSE(LineHigh()) << "writing the flag as 1 keeps it";
    Write(0, {kAlsCont | 0x01});
    EXPECT_TRUE(LineHigh());
    WaitConversions(3);
    EXPECT_TRUE(LineHigh()) << "clearing restarts the count";
    WaitConversions(1);
    EXPECT_FALSE(LineHigh());

    Write(0, {kAlsCont | 0x01});
    WaitConversions(3);
    Thresholds(0, 0xFFFF);  // the fourth conversion lands inside the window
    WaitConversions(1);
    Thresholds(0, 1000);
    WaitConversions(3);
    EXPECT_TRUE(LineHigh()) << "a reading inside the window starts the count over";
}

TEST(LightSceneTest, VariationsAreDeterministicFunctionsOfTime) {
    LightScene s;
    s.kind = LightScene::Kind::Sine;
    EXPECT_DOUBLE_EQ(s.At(1'000'000).lux, 300 * 1.6);  // a quarter of the 4 s period
    EXPECT_DOUBLE_EQ(s.At(1'000'000).ir, 120 * 1.6);

    s.kind = LightScene::Kind::Noise;
    LightScene other = s;
    other.seed = 2;
    bool varies = false, seedMatters = false;
    for (std::int64_t t = 0; t < 1'000'000; t += 10'000) {
        const double lux = s.At(t).lux;
        EXPECT_EQ(lux, s.At(t + 9'999).lux) << "one level per 10 ms";
        EXPECT_GE(lux, 300 * 0.4);
        EXPECT_LE(lux, 300 * 1.6);
        varies |= lux != s.At(0).lux;
        seedMatters |= lux != other.At(t).lux;
    }
    EXPECT_TRUE(varies);
    EXPECT_TRUE(seedMatters);
}

class DriverTest : public ::testing::Test {
protected:
    DriverHandle Register(bool accept = true, UsbMatch match = {kBoardVendorId, kBoardProductId}) {
        UsbEvents ev;
        ev.attach = [this, accept](DeviceHandle dev, const UsbDeviceInfo& info, void*) {
            attached.push_back(dev);
            EXPECT_EQ(info.productId, kBoardProductId);
            return accept;
        };
        ev.detach = [this](DeviceHandle dev, void*) { detached.push_back(dev); };
        DriverHandle h = 0;
        EXPECT_EQ(driver.Init(&h, match, ev), kUsbOk);
        EXPECT_GT(h, 0u);
        return h;
    }
    // Read of the test register through pipes 2 and 130.
    std::uint32_t ReadReg8(DeviceHandle dev, Bytes* reply = nullptr) {
        std::uint8_t cmd[3] = {1, kRd, 8};
        std::uint32_t done = 0;
        std::uint32_t st = driver.Transfer(dev, 2, UsbDir::Out, cmd, 3, &done, 1000);
        if (st != kUsbOk) return st;
        Bytes buf(6, 0);
        st = driver.Transfer(dev, 130, UsbDir::In, buf.data(), 6, &done, 1000);
        EXPECT_EQ(done, st == kUsbOk ? 6u : 0u);
        if (reply) *reply = buf;
        return st;
    }
    static void Yield() { QCoreApplication::processEvents(); }

    test::FakeClock clock;
    SimBoard board{clock};
    SimDriver driver{board};
    std::vector<DeviceHandle> attached, detached;
};

TEST_F(DriverTest, PresentBoardAttachesInsideInit) {
    Register();
    ASSERT_EQ(attached, (std::vector<DeviceHandle>{driver.currentHandle()}));
    board.sensor().Write(8, 0x3C);
    Bytes reply;
    EXPECT_EQ(ReadReg8(driver.currentHandle(), &reply), kUsbOk);
    EXPECT_EQ(reply, (Bytes{1, 0x3C, 0, 0, 0, 0}));

    const UsbDeviceInfo* info = nullptr;
    EXPECT_EQ(driver.GetDeviceInfo(driver.currentHandle(), &info), kUsbOk);
    driver.PutDeviceInfo(info);
    EXPECT_EQ(driver.infosOutstanding(), 0);
    Register(true, {0x1234, 0x5678});
    EXPECT_EQ(attached.size(), 1u) << "another product does not match";
}

TEST_F(DriverTest, RefusedBoardIsNotHandedOver) {
    Register(false);
    EXPECT_TRUE(driver.deviceRefused());
    EXPECT_EQ(ReadReg8(driver.currentHandle()), kUsbNoDevice);
    driver.Unplug();
    Yield();
    EXPECT_TRUE(detached.empty()) << "a device never taken never departs";
}

TEST_F(DriverTest, PlugAndUnplugArriveWhenTheProgramYields) {
    Register();
    const DeviceHandle old = driver.currentHandle();
    board.sensor().Write(8, 0x3C);
    driver.Unplug();
    EXPECT_TRUE(detached.empty());
    EXPECT_EQ(ReadReg8(old), kUsbNoDevice) << "transfers fail at once";
    const UsbDeviceInfo* info = nullptr;
    EXPECT_EQ(driver.GetDeviceInfo(old, &info), kUsbNoDevice);
    Yield();
    EXPECT_EQ(detached, (std::vector<DeviceHandle>{old}));

    driver.Plug();
    EXPECT_EQ(attached.size(), 1u);
    Yield();
    ASSERT_EQ(attached.size(), 2u);
    EXPECT_NE(attached[1], old);
    Bytes reply;
    EXPECT_EQ(ReadReg8(attached[1], &reply), kUsbOk);
    EXPECT_EQ(reply[1], 0) << "the sensor lost power with the cable";
    EXPECT_EQ(ReadReg8(old), kUsbNoDevice);

    // Notifications still queued when the driver goes are dropped with it.
    auto doomed = std::make_unique<SimDriver>(board);
    DriverHandle h = 0;
    doomed->Init(&h, {kBoardVendorId, kBoardProductId},
                 UsbEvents{nullptr, [](DeviceHandle, void*) { FAIL(); }});
    doomed->Unplug();
    doomed.reset();
    Yield();
}

TEST_F(DriverTest, UninitStopsNotificationsButKeepsTheDevice) {
    EXPECT_EQ(driver.Uninit(Register()), kUsbOk);
    EXPECT_EQ(ReadReg8(driver.currentHandle()), kUsbOk);
    driver.Unplug();
    driver.Plug();
    Yield();
    EXPECT_TRUE(detached.empty());
    EXPECT_EQ(attached.size(), 1u);
}

TEST_F(DriverTest, InjectedTimeoutsAndUnplugMidTransfer) {
    Register();
    const DeviceHandle dev = driver.currentHandle();
    driver.TimeOutNext(1);
    EXPECT_EQ(ReadReg8(dev), kUsbTimeout);
    EXPECT_EQ(ReadReg8(dev), kUsbOk);

    driver.UnplugAfterTransfers(2);
    EXPECT_EQ(ReadReg8(dev), kUsbNoDevice) << "the IN is the second transfer";
    EXPECT_FALSE(driver.IsPlugged());
    Yield();
    EXPECT_EQ(detached.size(), 1u);

    driver.Plug();
    Yield();
    driver.SetInstantTimeouts(false);
    Bytes buf(6);
    std::uint32_t done = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(driver.Transfer(driver.currentHandle(), 130, UsbDir::In, buf.data(), 6, &done, 30),
              kUsbTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

// The OUT owes its frame instead of sleeping it, so that the program wakes once per command
// and reply; the reply must still come no sooner than the frames of every transfer before it.
TEST_F(DriverTest, EachTransferStillCostsItsFrameWhenTheOutOnlyOwesIt) {
    Register();
    driver.SetLatencyMicros(1000);
    const DeviceHandle dev = driver.currentHandle();
    std::uint8_t write[4] = {0, kWr, 8, 0x3C};
    std::uint32_t done = 0;
    for (const int writes : {1, 2, 0}) {
        SCOPED_TRACE(writes);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < writes; ++i)
            ASSERT_EQ(driver.Transfer(dev, 2, UsbDir::Out, write, 4, &done, 1000), kUsbOk);
        Bytes reply;
        ASSERT_EQ(ReadReg8(dev, &reply), kUsbOk);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(1000 * (writes + 2)));
        EXPECT_EQ(reply, (Bytes{1, 0x3C, 0, 0, 0, 0})) << "the writes were taken before the read";
    }
}

}  // namespace
}  // namespace lxm::sim
