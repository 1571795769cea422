// The family form against a missing board and absurd entries: what a new user types and what
// a flaky cable does. Every case here once showed a box too many, froze the window, ran
// without a board or converted a number with undefined behaviour.
#include <QPushButton>

#include <cmath>
#include <limits>

#include "core/ServedWait.h"
#include "core/VbText.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

TEST(WholeNumbers, EveryDoubleConvertsToADefinedIntegerAndTypedWaitsAreCapped) {
    constexpr auto i64max = std::numeric_limits<std::int64_t>::max();
    constexpr auto i64min = std::numeric_limits<std::int64_t>::min();
    constexpr auto i32max = std::numeric_limits<std::int32_t>::max();
    constexpr auto i32min = std::numeric_limits<std::int32_t>::min();
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_EQ(RoundEven(2.5), 2);
    EXPECT_EQ(RoundEven(-3.5), -4);
    EXPECT_EQ(RoundEven(9.2233720368547758e18), i64max);
    EXPECT_EQ(RoundEven(1e300), i64max);
    EXPECT_EQ(RoundEven(inf), i64max);
    EXPECT_EQ(RoundEven(-9.2233720368547758e18), i64min);
    EXPECT_EQ(RoundEven(-inf), i64min);
    EXPECT_EQ(RoundEven(nan), 0);

    EXPECT_EQ(TruncInt32(-7.9), -7);
    EXPECT_EQ(TruncInt32(2147483647.9), i32max);
    EXPECT_EQ(TruncInt32(4294967296.0), i32max);
    EXPECT_EQ(TruncInt32(-2147483648.0), i32min);
    EXPECT_EQ(TruncInt32(-2147483649.0), i32min);
    EXPECT_EQ(TruncInt32(Val("1e309")), i32max);
    EXPECT_EQ(TruncInt32(nan), 0);

    // Typed waits are capped at the documented maximum.
    EXPECT_EQ(WaitMsOf("3000"), 3000);
    EXPECT_EQ(WaitMsOf("-5"), -5) << "a negative interval means no wait, as before";
    EXPECT_EQ(WaitMsOf("3600001"), kMaxWaitMs);
    EXPECT_EQ(WaitMsOf("4294967296"), kMaxWaitMs);
    EXPECT_EQ(WaitMsOf("1e309"), kMaxWaitMs);
    EXPECT_EQ(WaitMsOf("-1e309"), std::numeric_limits<std::int32_t>::min());
}

struct FaultForm : FormFixture {
    FaultForm() {
        Measure(6);
        Settle();
    }
};

TEST_F(FaultForm, StartWithoutABoardSaysSoOnceAndRunsNothing) {
    // Power-down makes Start switch the measurement first: the most transfers a Start tries.
    Measure(0);
    Unplug();
    EXPECT_EQ(ClickStart(), 0);
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
    EXPECT_FALSE(session.Collecting);
    EXPECT_EQ(form->SampleCount, 0);
    EXPECT_EQ(form->cmdCollectData->text(), "Start");
    EXPECT_TRUE(form->cmdCollectData->isEnabled());

    // Back with the board, the same click runs.
    Replug();
    messages.clear();
    EXPECT_EQ(ClickStart(), 3);
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(FaultForm, OneClickTellsOfTheMissingBoardOnce) {
    Unplug();
    const std::vector<std::pair<const char*, std::function<void()>>> clicks = {
        {"measurement type", [&] { form->OptMeasure.at(3)->click(); }},
        {"dual mode", [&] { form->OptMeasure.at(4)->click(); }},
        {"range", [&] { form->OptGain.at(1)->click(); }},
        {"resolution", [&] { form->OptITime.at(2)->click(); }},
        {"scheme", [&] { form->OptIRMode.at(1)->click(); }},
        {"read all", [&] { form->cmdReadAllRegs->click(); }},
        {"read", [&] { form->cmdRDReg[4]->click(); }},
        {"write", [&] { form->cmdWrtReg[4]->click(); }},
        {"enter", [&] { TypeAndEnter(form->txtRegHex(0), "A0"); }},
    };
    for (const auto& [what, click] : clicks) {
        messages.clear();
        click();
        EXPECT_EQ(messages.texts, QStringList{kNotConnected}) << what;
    }
    // Each click the user makes is told again.
    messages.clear();
    form->cmdRDReg[4]->click();
    form->cmdRDReg[5]->click();
    EXPECT_EQ(messages.count(kNotConnected), 2);
}

// The wait for a pass's deadline and the one-shot delay: a Stop clicked 100 ms into a wait of
// seconds ends the run within 50 ms, and the wait holds the transport meanwhile. The long value
// is typed after the first pass, so the second pass is the one that waits.
struct LongWait : FaultForm {
    std::int64_t stopPostedUs = -1;
    bool busyWhileWaiting = true;
    int passes = 0;

    // waitsAfterPass: the pass whose end starts the long wait (the interval takes effect one
    // pass later than a delay).
    void RunAndStopInsideTheWait(QLineEdit* box, const char* value, int waitsAfterPass) {
        passes = 0;
        stopPostedUs = -1;
        std::int64_t waitFromUs = -1;
        clock.onSleep = [&] {
            if (waitFromUs < 0) return;
            busyWhileWaiting = busyWhileWaiting && session.TransferBusy;
            if (stopPostedUs < 0 && clock.Micros() - waitFromUs >= 100'000) {
                stopPostedUs = clock.Micros();
                QMetaObject::invokeMethod(form->cmdStopData, "click", Qt::QueuedConnection);
            }
        };
        form->onPass = [&] {
            ++passes;
            if (passes == 1) box->setText(QString::fromLatin1(value));
            if (passes == waitsAfterPass) waitFromUs = clock.Micros();
            if (passes > waitsAfterPass) form->cmdStopData_Click();
        };
        form->cmdCollectData->click();
        clock.onSleep = nullptr;
        form->onPass = nullptr;
    }
};

TEST_F(LongWait, StopActsWithinFiftyMillisecondsOfAnyIntervalOrOneShotDelay) {
    for (const bool oneShot : {false, true}) {
        if (oneShot) Measure(2);
        QLineEdit* box = oneShot ? form->txtSampling_Delay : form->txtInterval;
        for (const char* wait : {"3000", oneShot ? "9.3e18" : "4294967296", "1e309"}) {
            SCOPED_TRACE(wait);
            RunAndStopInsideTheWait(box, wait, oneShot ? 1 : 2);
            EXPECT_EQ(passes, oneShot ? 1 : 2) << "the next pass never took its sample";
            ASSERT_GE(stopPostedUs, 0);
            EXPECT_LE(clock.Micros() - stopPostedUs, 50'000);
            EXPECT_TRUE(busyWhileWaiting);
            EXPECT_FALSE(session.TransferBusy);
            EXPECT_EQ(form->cmdCollectData->text(), "Start");
        }
    }
}

TEST_F(LongWait, AHugeIntervalIsTakenAsTheMaximum) {
    Collect([&](int n) {
        if (n == 1) form->txtInterval->setText(QStringLiteral("1e309"));
        if (n < 2) return true;
        EXPECT_EQ(form->IntervalMs, kMaxWaitMs);
        EXPECT_EQ(form->DeadlineUs - clock.Micros(), kMaxWaitMs * 1000);
        return false;
    });
}

TEST_F(FaultForm, ABottomOfTheScaleAtTheInt32LimitStillPlots) {
    form->chart().txtScale->setText(QStringLiteral("1000"));
    form->chart().txtScaleMin->setText(QStringLiteral("-2147483648"));
    form->cmdScale_Click();
    Collect(12);
    EXPECT_EQ(form->plot.ScaleSpan, std::numeric_limits<std::int32_t>::max());
    const std::int32_t row = form->plot.TracePixels[kTraceNewest];
    EXPECT_GE(row, 1);
    EXPECT_LE(row, 304);
}

TEST_F(FaultForm, HexEntriesThatDoNotFitAreOutOfRangeHoweverLong) {
    const std::size_t mark = wire().size();
    TypeAndEnter(form->txtRegHex(4), "00000081F");
    EXPECT_EQ(form->txtRegHex(4)->text(), "00");
    EXPECT_EQ(WritesTo(4, mark), std::vector<std::uint8_t>{0x00});
    TypeAndEnter(form->txtRegHex(4), "0000000000000000000000000000000000000000001F");
    EXPECT_EQ(WritesTo(4, mark), (std::vector<std::uint8_t>{0x00, 0x1F})) << "leading zeros alone are fine";

    for (const char* address : {"000000100", "80000000", "FFFFFFFFFFFF"}) {
        form->txtI2CADR->setText(QStringLiteral("44"));
        TypeAndEnter(form->txtI2CADR, QString::fromLatin1(address));
        EXPECT_EQ(form->txtI2CADR->text(), "88") << address;
        EXPECT_EQ(session.I2cWriteAddr, 0x88) << address;
        EXPECT_EQ(session.I2cReadAddr, 0x89) << address;
    }
}

}  // namespace
}  // namespace lxm::test
