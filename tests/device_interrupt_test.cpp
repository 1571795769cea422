// Interrupt thresholds and the interrupt line on the family form: what the boxes and messages
// show, what reaches the chip, and how the simulated sensor's line answers the window.
#include <QCheckBox>

#include <cmath>

#include "core/Shape.h"
#include "core/VbText.h"
#include "device/parts/InterruptSampler.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

constexpr int kOK = 10, kAlt = 2, kFail = 12, kOff = 0;

struct InterruptTest : FormFixture {
    // Scheme first: the resolution handler derives the entry bounds from it.
    void Format(int resolution, int scheme) {
        form->OptIRMode.at(scheme)->setChecked(true);
        form->OptIRMode_Click(scheme);
        Resolution(resolution);
    }
    void Type(const QString& low, const QString& high) {
        form->txtILow.at(0)->setText(low);
        form->txtIHigh.at(0)->setText(high);
    }
    std::vector<std::uint8_t> Chip4to7() { return {chip(4), chip(5), chip(6), chip(7)}; }
    // Registers written on the I2C pipe since a point in the wire log, in order.
    std::vector<int> WrittenRegisters(std::size_t from) {
        std::vector<int> regs;
        for (std::size_t i = from; i < wire().size(); ++i) {
            const auto& p = wire()[i];
            if (p.dir == sim::WireDir::Out && p.endpoint == 0x02 && p.bytes.size() >= 4 && p.bytes[0] == 0)
                regs.push_back(p.bytes[2]);
        }
        return regs;
    }
    int PortExchanges(std::size_t from) {
        int n = 0;
        for (std::size_t i = from; i < wire().size(); ++i)
            n += wire()[i].dir == sim::WireDir::Out && wire()[i].endpoint == 0x01;
        return n;
    }
    Shape* Line() { return form->ShpINTexternal; }
    Shape* Activity() { return form->ShpINt; }
};

TEST_F(InterruptTest, ThresholdsProgramRegistersFourToSevenInOrderAtEveryResolutionAndScheme) {
    const struct {
        int resolution, scheme;
        const char *low, *high;
        std::vector<std::uint8_t> bytes;  // registers 4..7
        const char *lowHex, *highHex;
    } cases[] = {{0, 0, "100", "65535", {0x64, 0x00, 0xFF, 0xFF}, "0064", "FFFF"},
                 {0, 1, "-100", "32768", {0x9C, 0xFF, 0x00, 0x80}, "FF9C", "8000"},
                 {1, 0, "100", "1500", {0x64, 0x00, 0xDC, 0x05}, "0064", "05DC"},
                 {1, 1, "-1", "2048", {0xFF, 0xFF, 0x00, 0x08}, "FFFF", "0800"},
                 {2, 0, "0", "255", {0x00, 0x00, 0xFF, 0x00}, "0000", "00FF"},
                 {2, 1, "-10", "128", {0xF6, 0xFF, 0x80, 0x00}, "FFF6", "0080"},
                 {3, 0, "3", "15", {0x03, 0x00, 0x0F, 0x00}, "0003", "000F"},
                 {3, 1, "-2", "8", {0xFE, 0xFF, 0x08, 0x00}, "FFFE", "0008"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.low);
        Format(c.resolution, c.scheme);
        Type(QString::fromLatin1(c.low), QString::fromLatin1(c.high));
        const std::size_t mark = wire().size();
        form->cmdWrtILimits_Click();
        EXPECT_EQ(WrittenRegisters(mark), (std::vector<int>{4, 5, 6, 7}));
        EXPECT_EQ(Chip4to7(), c.bytes);
        for (int r = 4; r <= 7; ++r) EXPECT_EQ(form->txtRegHex(r)->text(), Hex2(c.bytes[std::size_t(r - 4)]));
        EXPECT_EQ(form->txtILow.at(1)->text() + " " + form->txtIHigh.at(1)->text(),
                  QString("%1 %2").arg(c.lowHex, c.highHex));
    }
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
}

TEST_F(InterruptTest, OutOfRangeEntriesAreReportedAndWrittenAllTheSame) {
    Format(0, 1);
    Type(QStringLiteral("-101"), QStringLiteral("40000.7"));
    form->cmdWrtILimits_Click();
    EXPECT_EQ(messages.texts,
              (QStringList{"Low Limit must be within -100 Min and  32768 Max. Re-enter Low Limit",
                           "High Limit must be within -100 Min and  32768 Max. Re-enter High Limt"}));
    EXPECT_EQ(Chip4to7(), (std::vector<std::uint8_t>{0x9B, 0xFF, 0x40, 0x9C}));
    EXPECT_EQ(form->txtILow.at(0)->text(), "-101");
    EXPECT_EQ(form->txtIHigh.at(0)->text(), "40000");

    messages.clear();
    Format(1, 0);
    Type(QStringLiteral("-1"), QStringLiteral("4096"));
    form->cmdWrtILimits_Click();
    EXPECT_EQ(messages.texts,
              (QStringList{"Low Limit must be within  0 Min and  4095 Max. Re-enter Low Limit",
                           "High Limit must be within  0 Min and  4095 Max. Re-enter High Limt"}));
    EXPECT_EQ(Chip4to7(), (std::vector<std::uint8_t>{0xFF, 0xFF, 0x00, 0x10}));
}

TEST_F(InterruptTest, AnEntryTooLargeForANumberStopsTheWriteBeforeAnyByte) {
    Type(QStringLiteral("200"), QStringLiteral("1e12"));
    const auto before = Chip4to7();
    const std::size_t mark = wire().size();
    form->cmdWrtILimits_Click();
    EXPECT_EQ(messages.texts,
              (QStringList{"High Limit must be within  0 Min and  4095 Max. Re-enter High Limt"}));
    EXPECT_TRUE(WrittenRegisters(mark).empty());
    EXPECT_EQ(Chip4to7(), before);
    EXPECT_EQ(form->txtIHigh.at(0)->text(), "1e12") << "the entry stays for the user to correct";
}

TEST_F(InterruptTest, ReadBackDecodesPerFormat) {
    struct {
        int resolution, scheme;
        const char *low, *high;
        const char *lowBack, *highBack;
    } cases[] = {
        {1, 1, "-100", "2047", "-100", "2047"},
        {1, 0, "100", "4095", "100", "4095"},
        {2, 1, "-10", "127", "-10", "127"},
        // 16 bits in two's complement reads back through the 12-bit mask.
        {0, 1, "-1", "4660", "4095", "564"},
        {0, 0, "0", "65535", "0", "65535"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.low);
        Format(c.resolution, c.scheme);
        Type(QString::fromLatin1(c.low), QString::fromLatin1(c.high));
        form->cmdWrtILimits_Click();
        Type(QString(), QString());
        form->cmdReadILimits_Click();
        EXPECT_EQ(form->txtILow.at(0)->text(), c.lowBack);
        EXPECT_EQ(form->txtIHigh.at(0)->text(), c.highBack);
        EXPECT_EQ(form->txtRegRd(5)->text(), Hex2(chip(5))) << "the panel shows the bytes read";
    }
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(InterruptTest, WriteAndReadDuringACollectionWaitForTheRegisterRefresh) {
    Measure(6);
    Collect([&](int pass) {
        if (pass == 2) {
            Type(QStringLiteral("7"), QStringLiteral("700"));
            form->cmdWrtILimits_Click();
        }
        if (pass == 4) {
            Type(QString(), QString());
            const std::size_t mark = wire().size();
            form->cmdReadILimits_Click();
            EXPECT_EQ(wire().size(), mark) << "nothing goes out in the middle of the pass";
            EXPECT_TRUE(form->LimitsReadPending());
        }
        return pass < 6;
    });
    EXPECT_EQ(Chip4to7(), (std::vector<std::uint8_t>{0x07, 0x00, 0xBC, 0x02}));
    EXPECT_FALSE(form->LimitsReadPending());
    EXPECT_EQ(form->txtILow.at(0)->text() + " " + form->txtIHigh.at(0)->text(), "7 700");
}

TEST_F(InterruptTest, UnplugDuringAThresholdWriteSaysSoOnce) {
    Type(QStringLiteral("10"), QStringLiteral("20"));
    driver.UnplugAfterTransfers(2);  // the second register write never arrives
    const std::size_t mark = wire().size();
    form->cmdWrtILimits_Click();
    Pump();
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});
    EXPECT_EQ(WrittenRegisters(mark), std::vector<int>{4});

    messages.clear();
    form->cmdWrtILimits_Click();
    form->cmdReadILimits_Click();
    EXPECT_EQ(messages.texts, (QStringList{kNotConnected, kNotConnected})) << "one message per click";
}

TEST_F(InterruptTest, UnplugDuringAThresholdReadSaysSoOnceAndShowsNothing) {
    Type(QStringLiteral("10"), QStringLiteral("20"));
    form->cmdWrtILimits_Click();
    Type(QStringLiteral("keep"), QStringLiteral("these"));
    driver.UnplugAfterTransfers(3);  // the second register read
    form->cmdReadILimits_Click();
    Pump();
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});
    EXPECT_EQ(form->txtILow.at(0)->text(), "keep");
    EXPECT_EQ(form->txtIHigh.at(0)->text(), "these");
}

TEST_F(InterruptTest, LineLampFollowsTheSensorAndTheActivityLampFlips) {
    Type(QStringLiteral("100"), QStringLiteral("1500"));
    form->cmdWrtILimits_Click();
    scene().ambientLux = 200;  // 819 counts: inside
    Measure(1);
    Settle();
    form->cmdSampleInterrupt_Click();
    EXPECT_TRUE(Line()->hasFillIndex(kOff));
    EXPECT_FALSE(form->IntLineActive());
    EXPECT_TRUE(Activity()->hasFillIndex(kOK));

    scene().ambientLux = 600;  // 2457 counts: above the window
    Measure(1);
    Settle();
    form->cmdSampleInterrupt_Click();
    EXPECT_TRUE(Line()->hasFillIndex(kFail));
    EXPECT_TRUE(form->IntLineActive());
    EXPECT_TRUE(Activity()->hasFillIndex(kAlt));

    form->cmdSampleIIIntr_Click();
    EXPECT_TRUE(form->ShpIntFlag->hasFillIndex(kFail)) << "the flag register agrees with the line";
    form->cmdSampleInterrupt_Click();
    EXPECT_TRUE(Activity()->hasFillIndex(kOK));
}

// The simulated sensor's line against windows written through the form, at every resolution
// and in both schemes: unsigned light readings, and signed proximity readings against a
// negative low threshold.
class LineTest : public InterruptTest, public ::testing::WithParamInterface<std::tuple<int, int>> {};

TEST_P(LineTest, AssertedExactlyOutsideTheWindow) {
    const auto [resolution, scheme] = GetParam();
    const int bits = 16 - 4 * resolution;
    const double fullScale = std::ldexp(1.0, bits);
    // Selecting a proximity reading switches to the signed scheme by itself; the resolution
    // handler then derives the entry bounds from the scheme, and rewrites register 0, which
    // starts a conversion under the window just written.
    auto asserted = [&](int measure) {
        Measure(measure);
        EXPECT_EQ(form->SinglePolarity, scheme == 0);
        Resolution(resolution);
        form->cmdWrtILimits_Click();
        Resolution(resolution);
        Settle();
        Settle();
        form->cmdSampleInterrupt_Click();
        return form->IntLineActive();
    };
    if (scheme == 0) {
        // The 1000-lux range: a count is fullScale / 1000 per lux.
        Type(QString::number(int(fullScale * 0.1)), QString::number(int(fullScale * 0.4)));
        scene().ambientLux = 200;
        EXPECT_FALSE(asserted(1));
        scene().ambientLux = 20;
        EXPECT_TRUE(asserted(1)) << "below";
        scene().ambientLux = 900;
        EXPECT_TRUE(asserted(1)) << "above";
    } else {
        // No object: the ambient-cancelled reading sits just above zero, and far below it
        // under a bright infrared background. Continuous, since the signed proximity command
        // also sets the low persistence bit: four conversions out of the window.
        scene().objectDistanceMm = 0;
        const int lowest[] = {-100, -100, -10, -2};
        Type(QString::number(lowest[resolution]), QString::number(int(fullScale * 0.4)));
        scene().infrared = 0;
        EXPECT_FALSE(asserted(7));
        scene().infrared = 10000;
        EXPECT_TRUE(asserted(7)) << "below the negative threshold";
    }
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
}

INSTANTIATE_TEST_SUITE_P(AllResolutions, LineTest,
                         ::testing::Combine(::testing::Values(0, 1, 2, 3), ::testing::Values(0, 1)));

TEST_F(InterruptTest, LampFollowsTheLineOnEveryPassWhileSampling) {
    // A one-shot reading re-triggers every pass, which clears the sensor's latched flag, so
    // the lamp turns off again when the light comes back into the window.
    Type(QStringLiteral("100"), QStringLiteral("1500"));
    form->cmdWrtILimits_Click();
    Measure(1);
    form->ChkSampleInt->setChecked(true);
    const double light[] = {200, 200, 600, 600, 200, 10, 200};
    std::vector<bool> lamp;
    scene().ambientLux = light[0];
    Collect([&](int pass) {
        lamp.push_back(Line()->hasFillIndex(kFail));
        if (pass < 7) scene().ambientLux = light[pass];
        return pass < 7;
    });
    EXPECT_EQ(lamp, (std::vector<bool>{false, false, true, true, false, true, false}));
}

TEST_F(InterruptTest, SampleClickedDuringAPassWaitsForItsSamplingPoint) {
    Measure(6);
    std::size_t mark = 0;
    Collect([&](int pass) {
        if (pass == 2) {
            mark = wire().size();
            form->cmdSampleInterrupt_Click();
            EXPECT_EQ(PortExchanges(mark), 0);
            EXPECT_TRUE(form->interruptSampler().samplePending());
        }
        return pass < 4;
    });
    EXPECT_EQ(PortExchanges(mark), 1);
    EXPECT_FALSE(form->interruptSampler().samplePending());

    // Another transfer under way outside a run: nothing is sent and nothing is kept for later.
    session.TransferBusy = true;
    mark = wire().size();
    form->cmdSampleInterrupt_Click();
    session.TransferBusy = false;
    EXPECT_EQ(PortExchanges(mark), 0);
    EXPECT_FALSE(form->interruptSampler().samplePending());
}

TEST_F(InterruptTest, UnplugDuringASampleSaysSoOnceAndLeavesTheLamp) {
    form->cmdSampleInterrupt_Click();
    ASSERT_TRUE(Line()->hasFillIndex(kOff));
    driver.UnplugAfterTransfers(1);
    form->cmdSampleInterrupt_Click();
    Pump();
    EXPECT_TRUE(Line()->hasFillIndex(kOff)) << "a failed exchange is not an asserted line";
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});

    // While collecting with sampling on, the run ends on the detach and says nothing more.
    driver.Plug();
    Pump();
    session.usb().OpenDevice();
    messages.clear();
    form->ChkSampleInt->setChecked(true);
    Measure(6);
    const int passes = Collect([&](int pass) {
        if (pass == 2) driver.UnplugAfterTransfers(2);
        return pass < 10;
    });
    EXPECT_LT(passes, 10);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_EQ(messages.count(kNotConnected), 0);
}

}  // namespace
}  // namespace lxm::test
