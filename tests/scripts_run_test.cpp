// Running scripts against the simulated board: the bytes on the wire, the read counts, Abort On
// fail, loops, delays on the fake clock, pauses, refusals and a board pulled out mid-run.
#include <gtest/gtest.h>

#include "scripts/ScriptRunner.h"
#include "support/DeviceFixture.h"

namespace lxm::scripts {
namespace {

using test::kDisconnected;
using test::kNotConnected;
using Bytes = std::vector<std::uint8_t>;

// Records what the runner reports; pauses answer from a queue.
class Recorder : public RunObserver {
public:
    void RowDone(const ScriptRow& row, const RowResult& result) override {
        done.push_back(row.line);
        results.push_back(result);
    }
    PauseAnswer KeyPause(const ScriptRow&, const QString& text,
                         const std::function<bool()>& aborted) override {
        pauseTexts.push_back(text);
        if (whilePaused) whilePaused();
        if (aborted()) return PauseAnswer::Abort;
        PauseAnswer a = answers.empty() ? PauseAnswer::Continue : answers.front();
        if (!answers.empty()) answers.erase(answers.begin());
        return a;
    }
    void Yield() override {
        ++yields;
        RunObserver::Yield();
        if (onYield) onYield();
    }
    std::vector<int> done;
    std::vector<RowResult> results;
    std::vector<QString> pauseTexts;
    std::vector<PauseAnswer> answers;
    std::function<void()> whilePaused, onYield;
    int yields = 0;
};

class ScriptRun : public ::testing::Test, protected test::BoardFixture {
protected:
    void SetUp() override {
        OpenSession();
        wire().clear();
    }
    std::vector<ScriptRow> Load(const char* text) {
        LoadResult r = LoadScript(text);
        EXPECT_EQ(r.errorRows, 0);
        return r.rows;
    }
    RunEnd Run(std::vector<ScriptRow>& rows, int loops = 1, bool abortOnFail = false,
               std::string address = "88") {
        return runner.Run(rows, address, loops, abortOnFail);
    }
    // The command packets the host sent, in order.
    std::vector<Bytes> Sent() {
        std::vector<Bytes> out;
        for (const sim::WirePacket& p : wire())
            if (p.dir == sim::WireDir::Out && p.endpoint == 0x02) out.push_back(p.bytes);
        return out;
    }

    Recorder obs;
    ScriptRunner runner{session, obs};
};

TEST_F(ScriptRun, WritesAndReadsGoOutAsPacketsAndCountTheComparisons) {
    auto rows = Load(
        "# thresholds\n"
        "04,5A\n"
        "04,,5A\n"
        "04,A55A,A55A\n"
        "05,,5B\n"    // fails: holds 5A
        "06,,XX\n");  // read, not compared
    EXPECT_EQ(Run(rows), RunEnd::Done);
    EXPECT_EQ(Sent(), (std::vector<Bytes>{{0, 0x88, 0x04, 0x5A},
                                          {1, 0x89, 0x04},
                                          {0, 0x88, 0x04, 0xA5, 0x5A},
                                          {2, 0x89, 0x04},
                                          {1, 0x89, 0x05},
                                          {1, 0x89, 0x06}}));
    EXPECT_EQ(chip(4), 0xA5);
    EXPECT_EQ(chip(5), 0x5A);
    EXPECT_EQ(runner.Counts().total, 3);
    EXPECT_EQ(runner.Counts().pass, 2);
    EXPECT_EQ(runner.Counts().fail, 1);

    EXPECT_EQ(rows[2].actRd, "5A");
    EXPECT_EQ(rows[3].actRd, "A55A");
    EXPECT_EQ(rows[3].adDecimal, std::to_string(0x5AA5)) << "read bytes as a little-endian number";
    EXPECT_EQ(rows[4].actRd, "5A");
    EXPECT_EQ(rows[1].i2cAdr, "88") << "the grid shows the address each row used";
    EXPECT_EQ(rows[1].actRd, "") << "a write reads nothing";
    EXPECT_EQ(obs.done, (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(obs.results[4].compared);
    EXPECT_FALSE(obs.results[4].passed);
    EXPECT_FALSE(obs.results[5].compared);
}

TEST_F(ScriptRun, AReadTheSensorDoesNotAcknowledgeFails) {
    auto rows = Load("`A90\n04,,00\n");
    EXPECT_EQ(Run(rows), RunEnd::Done);
    EXPECT_EQ(Sent(), (std::vector<Bytes>{{1, 0x91, 0x04}}));
    EXPECT_EQ(runner.Counts().fail, 1) << "zeros from a NACK must not pass as the expected 00";
}

TEST_F(ScriptRun, AbortOnFailStopsAtTheFirstFailedRead) {
    auto rows = Load("04,11\n04,,22\n04,33\n");
    EXPECT_EQ(Run(rows, 1, true), RunEnd::StoppedOnFail);
    EXPECT_EQ(Sent().size(), 2u) << "the write after the failed read must not go out";
    EXPECT_EQ(chip(4), 0x11);
    EXPECT_EQ(runner.LastLine(), 2);

    wire().clear();
    EXPECT_EQ(Run(rows, 1, false), RunEnd::Done);
    EXPECT_EQ(Sent().size(), 3u);
}

TEST_F(ScriptRun, LoopsRepeatTheScriptAndStartEachPassAtTheDefaultAddress) {
    auto rows = Load("04,,00\n`A90\n04,01\n");
    EXPECT_EQ(Run(rows, 3), RunEnd::Done);
    const Bytes read{1, 0x89, 0x04}, write{0, 0x90, 0x04, 0x01};
    EXPECT_EQ(Sent(), (std::vector<Bytes>{read, write, read, write, read, write}));
    EXPECT_EQ(runner.Counts().total, 3);
    EXPECT_EQ(runner.Counts().pass, 3);
}

TEST_F(ScriptRun, DelaysWaitOnTheClockAndKeepTheWindowServed) {
    auto rows = Load("04,01\n`w250\n04,02\n");
    const std::uint32_t start = clock.timeGetTime();
    EXPECT_EQ(Run(rows), RunEnd::Done);
    EXPECT_GE(clock.timeGetTime() - start, 250u);
    EXPECT_LT(clock.timeGetTime() - start, 300u);
    EXPECT_GE(obs.yields, 25) << "a delay yields at least every 10 ms";
}

TEST_F(ScriptRun, AbortDuringADelayEndsItAtOnce) {
    auto rows = Load("04,01\n`w60000\n04,02\n");
    const std::uint32_t start = clock.timeGetTime();
    obs.onYield = [&] {
        if (clock.timeGetTime() - start >= 100) runner.Abort();
    };
    EXPECT_EQ(Run(rows), RunEnd::Aborted);
    EXPECT_LT(clock.timeGetTime() - start, 200u);
    EXPECT_EQ(Sent().size(), 1u);
    EXPECT_EQ(runner.LastLine(), 2);
}

TEST_F(ScriptRun, KeyPausesAskAndEitherGoOnOrEndTheRun) {
    auto rows = Load("04,01\n`w\n04,02\n");
    EXPECT_EQ(Run(rows), RunEnd::Done);
    EXPECT_EQ(obs.pauseTexts,
              std::vector<QString>{"Script Pause Line :2 Click OK to Continue, Cancel to Abort"});
    EXPECT_EQ(Sent().size(), 2u);

    wire().clear();
    obs.answers = {PauseAnswer::Abort};
    EXPECT_EQ(Run(rows), RunEnd::Aborted);
    EXPECT_EQ(Sent().size(), 1u) << "Cancel ends the run before the next row";

    wire().clear();
    obs.whilePaused = [&] { runner.Abort(); };
    EXPECT_EQ(Run(rows), RunEnd::Aborted) << "Abort while the question is up";
    EXPECT_EQ(Sent().size(), 1u);

    wire().clear();
    obs.whilePaused = nullptr;
    obs.answers = {PauseAnswer::Unavailable};
    EXPECT_EQ(Run(rows), RunEnd::PauseUnavailable);
    EXPECT_EQ(Sent().size(), 1u);
}

TEST_F(ScriptRun, IllegalAddressesAndRowsThatCannotRunRefuseTheRunBeforeAnyByteGoesOut) {
    struct Case {
        const char* script;
        const char* address;
        const char* message;
    } cases[] = {
        {"04,01\n`A89\n04,02\n", "88", "Illegal I2C address Script Row 2 Value = 89"},
        {"04,01\n`AZZ\n", "88", "Illegal I2C address Script Row 2 Value = ZZ"},
        {"# c\n04,01\n", "8G", "Illegal I2C address Script Row 2 Value = 8G"},
        {"`A\n04,01\n", "88", "Illegal I2C address Script Row 1 Value = "},
        {"04,01\n04,123\n", "88", "Script Row 2: Write data \"123\" has an odd number of hex digits"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.script);
        auto rows = LoadScript(c.script).rows;
        messages.clear();
        EXPECT_EQ(Run(rows, 1, false, c.address), RunEnd::Refused);
        ASSERT_EQ(messages.texts.size(), 1);
        EXPECT_TRUE(messages.texts[0].startsWith(c.message)) << messages.texts[0].toStdString();
        EXPECT_TRUE(Sent().empty());
    }
    // An odd default address is harmless while every row sets its own.
    auto rows = Load("`A88\n04,01\n");
    EXPECT_EQ(Run(rows, 1, false, "89"), RunEnd::Done);
}

TEST_F(ScriptRun, NoBoardSaysSoOnce) {
    session.UsbConnected = false;
    auto rows = Load("04,01\n");
    EXPECT_EQ(Run(rows), RunEnd::NotConnected);
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
    EXPECT_TRUE(Sent().empty());
}

TEST_F(ScriptRun, ABoardPulledOutMidRunStopsItWithOneMessage) {
    auto rows = Load("04,01\n04,,01\n04,,01\n04,,01\n`w100\n04,,01\n");
    driver.UnplugAfterTransfers(4);  // the second read's command
    EXPECT_EQ(Run(rows), RunEnd::Disconnected);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(runner.Counts().total, 1) << "the read the unplug broke is not counted as a sensor failure";
    EXPECT_EQ(runner.Counts().fail, 0);
    EXPECT_EQ(runner.LastLine(), 3);
}

TEST_F(ScriptRun, ABusyBusOrARunningCollectionRefusesTheRun) {
    auto rows = Load("04,01\n");
    session.TransferBusy = true;
    EXPECT_EQ(Run(rows), RunEnd::Refused);
    EXPECT_TRUE(session.TransferDeferred);
    session.TransferBusy = false;
    session.Collecting = true;
    EXPECT_EQ(Run(rows), RunEnd::Refused);
    EXPECT_EQ(messages.texts.size(), 2);
    EXPECT_TRUE(Sent().empty()) << "never interleaved with another sequence on the wire";
}

}  // namespace
}  // namespace lxm::scripts
