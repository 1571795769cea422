// The simulated multi-function chip, driven over the board's real packet format.
#include <gtest/gtest.h>

#include <vector>

#include "simboard/SimBoard.h"
#include "support/FakeClock.h"
#include "transport/UsbDriver.h"

namespace lxm::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kWr = 0x88, kRd = 0x89;
// Register 1.
constexpr std::uint8_t kIr = 0x01, kRange2000 = 0x02, kAlsOn = 0x04, kDrive200 = 0x08, kProxOn = 0x80;
constexpr std::uint8_t kSleep100 = 0x30, kSleepNone = 0x70;
// Register 2.
constexpr std::uint8_t kPinAnd = 0x01, kAlsPersist4 = 0x02, kProxPersist8 = 0x40;
constexpr std::uint8_t kAlsFlag = 0x08, kProxFlag = 0x80;

constexpr std::int64_t kAlsUs = Lxm600Sensor::kAlsConversionMicros;

class Lxm600Test : public ::testing::Test {
protected:
    void Write(std::uint8_t reg, Bytes data) {
        data.insert(data.begin(), {0, kWr, reg});
        ASSERT_EQ(ctl().BulkOut(0x02, data.data(), data.size()), kUsbOk);
    }
    // Command out, then an IN of the length the host asks for.
    Bytes Read(std::uint8_t reg, std::uint8_t count, std::size_t askLen) {
        const Bytes cmd{count, kRd, reg};
        ctl().BulkOut(0x02, cmd.data(), cmd.size());
        Bytes buf(askLen, 0xEE);
        std::size_t actual = 0;
        return ctl().BulkIn(0x82, buf.data(), askLen, &actual) == kUsbOk ? buf : Bytes{};
    }
    std::uint8_t Reg(std::uint8_t reg) { return Read(reg, 1, 6).at(1); }
    int Als() { return Reg(9) | (Reg(10) << 8); }
    // Light that converts to exactly `counts` at the given full scale.
    static double LuxFor(int counts, double fullScale) { return (counts + 0.5) * fullScale / 4096.0; }
    // ALS thresholds as the form writes them: 5, 6, 7 in that order.
    void AlsWindow(int low, int high) {
        Write(5, {std::uint8_t(low & 0xFF)});
        Write(6, {std::uint8_t((high >> 8) * 16 + (low >> 8))});
        Write(7, {std::uint8_t(high & 0xFF)});
    }
    bool PinHigh() {
        // PB7 an input: the reply's first byte carries the line.
        const Bytes lines{0x00, 0x00, 0x00, 0x00};
        ctl().BulkOut(0x01, lines.data(), lines.size());
        Bytes buf(25, 0);
        std::size_t actual = 0;
        ctl().BulkIn(0x81, buf.data(), buf.size(), &actual);
        return buf[0] & 0x80;
    }
    BoardController& ctl() { return board.controller(); }

    test::FakeClock clock;
    SimBoard board{clock, Chip::Lxm600};
    Lxm600Test() { board.scene().ideal = true; }
};

TEST_F(Lxm600Test, PowerOnImageIdAndWhichRegistersTakeWrites) {
    EXPECT_EQ(Read(0, 1, 6), (Bytes{1, 0xA0, 0, 0, 0, 0})) << "the ID the form shows as \"A0\"";
    EXPECT_EQ(Read(3, 4, 5), (Bytes{4, 0x00, 0xFF, 0x00, 0xF0}));
    EXPECT_EQ(Reg(7), 0xFF);

    Write(0, {0x12});
    EXPECT_EQ(Reg(0), 0xA0) << "the ID is read-only";
    Write(8, {0x11, 0x22, 0x33});
    EXPECT_EQ(Read(8, 3, 5), (Bytes{3, 0, 0, 0, 0})) << "data registers are read-only";

    // One packet writes several registers in a row; the spare ones keep what they are given.
    Write(11, {1, 2, 3, 4, 5});
    EXPECT_EQ(Read(11, 4, 5), (Bytes{4, 1, 2, 3, 4}));
    EXPECT_EQ(Reg(15), 5);
    EXPECT_EQ(Read(15, 2, 3), (Bytes{2, 5, 0})) << "past the last register reads 0";

    Write(2, {0x7F});
    EXPECT_EQ(Reg(2), 0x77) << "a flag cannot be set by writing it";
}

TEST_F(Lxm600Test, AlsAndIrConvertAtBothRanges) {
    board.scene().ambientLux = 300;
    board.scene().infrared = 120;
    struct Case {
        std::uint8_t config;
        int counts;
    } cases[] = {
        {kAlsOn | kRange2000, 614},        // 300 × 4096 / 2000
        {kAlsOn, 4095},                    // 125 lux full scale: saturated
        {kAlsOn | kIr | kRange2000, 245},  // 120 × 4096 / 2000
        {kAlsOn | kIr, 3932},              // 120 × 4096 / 125
    };
    for (const Case& c : cases) {
        Write(1, {0x00});
        Write(1, {c.config});
        clock.AdvanceUs(kAlsUs - 1);
        EXPECT_EQ(Als(), 0) << "nothing before the first conversion ends, config " << int(c.config);
        clock.AdvanceUs(1);
        EXPECT_EQ(Als(), c.counts) << "config " << int(c.config);
        Write(1, {0x00});
        EXPECT_EQ(Als(), c.counts) << "disabling keeps the last result";
        // Power-on data for the next case.
        board.lxm600().Reset();
    }
}

TEST_F(Lxm600Test, CountsConvertBackToTheLightWithinOneCount) {
    // The form turns counts into lux as range × counts / 4096; the chip must agree.
    for (const double range : {2000.0, 125.0}) {
        for (const double lux : {0.3, 7.0, 64.9, 124.0, 999.0, 1999.0}) {
            if (lux >= range) continue;
            board.lxm600().Reset();
            board.scene().ambientLux = lux;
            Write(1, {std::uint8_t(kAlsOn | (range == 2000 ? kRange2000 : 0))});
            clock.AdvanceUs(kAlsUs);
            const int counts = Als();
            EXPECT_LE(range * counts / 4096, lux) << range << " lux range, " << lux << " lux";
            EXPECT_GT(range * (counts + 1) / 4096, lux) << range << " lux range, " << lux << " lux";
        }
    }
}

TEST_F(Lxm600Test, RewritingTheSameConfigurationDoesNotRestartTheConversion) {
    board.scene().ambientLux = LuxFor(1000, 2000);
    Write(1, {kAlsOn | kRange2000});
    clock.AdvanceUs(kAlsUs / 2);
    Write(1, {kAlsOn | kRange2000});  // the form rewrites its image during collection
    clock.AdvanceUs(kAlsUs / 2);
    EXPECT_EQ(Als(), 1000);

    Write(1, {kAlsOn | kIr | kRange2000});
    board.scene().infrared = LuxFor(77, 2000);
    clock.AdvanceUs(kAlsUs - 1);
    EXPECT_EQ(Als(), 1000) << "a new mode starts its conversion over";
    clock.AdvanceUs(1);
    EXPECT_EQ(Als(), 77);
}

TEST_F(Lxm600Test, ProximityFallsWithDistanceAndFollowsTheLedDrive) {
    board.scene().reflectance = 0.5;
    board.scene().infrared = 5000;  // ambient infrared is not proximity
    struct Case {
        double mm;
        std::uint8_t drive;
        int counts;
    } cases[] = {
        {60, 0, 100},                        // 7200 × 0.5 / 6²
        {120, 0, 25},                        // a quarter at twice the distance
        {120, kDrive200, 50}, {30, 0, 255},  // saturated
        {0, kDrive200, 0},                   // nothing in front
    };
    for (const Case& c : cases) {
        board.scene().objectDistanceMm = c.mm;
        Write(1, {0x00});
        Write(1, {std::uint8_t(kProxOn | kSleepNone | c.drive)});
        clock.AdvanceUs(Lxm600Sensor::kProxMeasureMicros);
        EXPECT_EQ(Reg(8), c.counts) << c.mm << " mm, drive bit " << int(c.drive);
    }
    EXPECT_EQ(Als(), 0) << "the ALS stays off while only proximity is enabled";
}

TEST_F(Lxm600Test, ProximitySleepSetsTheTimeBetweenReadings) {
    board.scene().reflectance = 1.0;
    board.scene().objectDistanceMm = 100;  // 72 counts
    Write(1, {kProxOn | kSleep100});
    clock.AdvanceUs(Lxm600Sensor::kProxMeasureMicros);
    EXPECT_EQ(Reg(8), 72);
    board.scene().objectDistanceMm = 200;  // 18 counts
    clock.AdvanceUs(100'000);
    EXPECT_EQ(Reg(8), 72) << "still asleep";
    clock.AdvanceUs(Lxm600Sensor::kProxMeasureMicros);
    EXPECT_EQ(Reg(8), 18);
    EXPECT_EQ(board.lxm600().proxConversions(), 2);
}

TEST_F(Lxm600Test, AlsFlagNeedsPersistenceAndStaysUntilCleared) {
    board.scene().ambientLux = LuxFor(0x235, 2000);
    AlsWindow(0x236, 0xABC);
    EXPECT_EQ(Read(5, 3, 5), (Bytes{3, 0x36, 0xA2, 0xBC, 0})) << "12-bit thresholds in nibbles";
    Write(2, {kAlsPersist4});
    Write(1, {kAlsOn | kRange2000});

    clock.AdvanceUs(3 * kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4) << "three conversions below the window are not enough";
    clock.AdvanceUs(kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4 | kAlsFlag);

    board.scene().ambientLux = LuxFor(0x236, 2000);  // on the low threshold: inside
    clock.AdvanceUs(5 * kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4 | kAlsFlag) << "the flag is latched";
    Write(2, {kAlsPersist4});
    EXPECT_EQ(Reg(2), kAlsPersist4) << "writing the image clears it";
    clock.AdvanceUs(5 * kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4);

    // Above the high threshold; one inside conversion in between restarts the count. (The
    // chip converts when it is next looked at, so each stretch of light ends in a read.)
    board.scene().ambientLux = LuxFor(0xABD, 2000);
    clock.AdvanceUs(3 * kAlsUs);
    EXPECT_EQ(Als(), 0xABD);
    board.scene().ambientLux = LuxFor(0xABC, 2000);
    clock.AdvanceUs(kAlsUs);
    EXPECT_EQ(Als(), 0xABC);
    board.scene().ambientLux = LuxFor(0xABD, 2000);
    clock.AdvanceUs(3 * kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4);
    clock.AdvanceUs(kAlsUs);
    EXPECT_EQ(Reg(2), kAlsPersist4 | kAlsFlag);
}

TEST_F(Lxm600Test, ProximityFlagAndClearingOneFlagKeepsTheOther) {
    board.scene().reflectance = 0.5;
    board.scene().objectDistanceMm = 60;  // 100 counts
    board.scene().ambientLux = LuxFor(4000, 2000);
    Write(3, {10, 50});
    AlsWindow(0, 3000);
    Write(2, {kProxPersist8});
    Write(1, {kProxOn | kSleepNone | kAlsOn | kRange2000});

    clock.AdvanceUs(7 * Lxm600Sensor::kProxMeasureMicros);
    EXPECT_EQ(Reg(2), kProxPersist8) << "seven readings above the window";
    clock.AdvanceUs(Lxm600Sensor::kProxMeasureMicros);
    EXPECT_EQ(Reg(2), kProxPersist8 | kProxFlag);
    clock.AdvanceUs(kAlsUs);
    EXPECT_EQ(Reg(2), kProxPersist8 | kProxFlag | kAlsFlag);

    // Clearing the ALS flag alone: write 1 to the flag that is to stay.
    board.scene().ambientLux = 100;
    board.scene().objectDistanceMm = 100;  // 36 counts: inside
    clock.AdvanceUs(kAlsUs);
    Write(2, {kProxPersist8 | kProxFlag});
    EXPECT_EQ(Reg(2), kProxPersist8 | kProxFlag);
    Write(2, {kProxPersist8});
    EXPECT_EQ(Reg(2), kProxPersist8);
}

TEST_F(Lxm600Test, InterruptPinIsTheOrOrTheAndOfTheFlags) {
    // Thresholds that one conversion each crosses: ALS above 0..100, proximity above 0..10.
    board.scene().ambientLux = 1000;
    board.scene().objectDistanceMm = 60;
    AlsWindow(0, 100);
    Write(3, {0, 10});
    EXPECT_TRUE(PinHigh()) << "idle";

    Write(1, {kAlsOn | kRange2000});
    clock.AdvanceUs(kAlsUs);
    EXPECT_FALSE(PinHigh()) << "Or: the ALS flag alone asserts";
    Write(2, {kPinAnd | kAlsFlag});
    EXPECT_TRUE(PinHigh()) << "And: not without the proximity flag";

    Write(1, {kAlsOn | kRange2000 | kProxOn | kSleepNone});
    clock.AdvanceUs(Lxm600Sensor::kProxMeasureMicros);
    EXPECT_FALSE(PinHigh()) << "And: both flags assert";
    Write(2, {kPinAnd | kProxFlag});
    EXPECT_TRUE(PinHigh()) << "And: the proximity flag alone does not";
    Write(2, {kProxFlag});
    EXPECT_FALSE(PinHigh()) << "Or: it does";
    Write(1, {0x00});
    Write(2, {0x00});
    EXPECT_TRUE(PinHigh()) << "both cleared";
}

TEST_F(Lxm600Test, MultiByteReadOfTheResultsAsTheFormAsksForIt) {
    board.scene().ambientLux = LuxFor(0x9C4, 2000);
    board.scene().objectDistanceMm = 60;
    board.scene().reflectance = 0.5;
    Write(1, {kAlsOn | kRange2000 | kProxOn | kSleepNone});
    clock.AdvanceUs(kAlsUs);
    EXPECT_EQ(Read(8, 3, 5), (Bytes{3, 100, 0xC4, 0x09, 0})) << "proximity, ALS low, ALS high";
    // The poll timer's two-byte read from register 0.
    EXPECT_EQ(Read(0, 2, 3), (Bytes{2, 0xA0, kAlsOn | kRange2000 | kProxOn | kSleepNone}));
}

TEST_F(Lxm600Test, LongRunsCatchUpWithoutReplayingEveryConversion) {
    board.scene().ambientLux = 1000;
    AlsWindow(0, 100);
    Write(2, {0x06});  // persistence 16
    Write(1, {kAlsOn | kRange2000 | kProxOn | kSleepNone});
    clock.AdvanceUs(std::int64_t(3600) * 1'000'000);
    EXPECT_EQ(Reg(2), 0x06 | kAlsFlag);
    EXPECT_EQ(board.lxm600().alsConversions(), std::int64_t(3600) * 1'000'000 / kAlsUs);
    EXPECT_EQ(board.lxm600().proxConversions(), 3600 * 2000);
}

// The board and the start-up window's type names.
TEST(SimBoardChip, TypeNamesChooseTheChipAndASwapStartsFromPowerOn) {
    EXPECT_EQ(ChipForType("LXM410"), Chip::Family);
    EXPECT_EQ(ChipForType("LXM470"), Chip::Family);
    EXPECT_EQ(ChipForType("LXM600"), Chip::Lxm600);
    EXPECT_EQ(ChipForType(""), std::nullopt);
    EXPECT_EQ(ChipForType("LXM460"), std::nullopt);

    test::FakeClock clock;
    SimBoard board{clock};
    EXPECT_EQ(board.chip(), Chip::Family);
    auto readReg0 = [&board] {
        const Bytes cmd{1, kRd, 0};
        board.controller().BulkOut(0x02, cmd.data(), cmd.size());
        Bytes buf(6, 0);
        std::size_t actual = 0;
        board.controller().BulkIn(0x82, buf.data(), buf.size(), &actual);
        return buf[1];
    };
    EXPECT_EQ(readReg0(), 0x00);

    board.lxm600().Write(11, 0x5A);
    EXPECT_TRUE(board.CarryForType("LXM600"));
    EXPECT_EQ(readReg0(), 0xA0) << "the same address now answers with the other chip";
    EXPECT_EQ(board.sensor().Peek(11), 0x00) << "a chip put on the board starts from power-on";
    board.sensor().Write(11, 0x5A);
    board.Carry(Chip::Lxm600);
    EXPECT_EQ(board.sensor().Peek(11), 0x5A) << "choosing the chip already carried changes nothing";

    EXPECT_FALSE(board.CarryForType("ALS Type Selections"));
    EXPECT_EQ(board.chip(), Chip::Lxm600);
    EXPECT_TRUE(board.CarryForType("LXM430"));
    EXPECT_EQ(board.chip(), Chip::Family);
    EXPECT_EQ(readReg0(), 0x00);
}

}  // namespace
}  // namespace lxm::sim
