// A seeded fault soak: the family form on the simulated board while the cable is pulled in the
// middle of every kind of action and of collection runs in every measurement type, and while
// replies time out, come late, get lost or are not acknowledged. After every fault the program
// is recovered the way the user recovers it, and checked: no hang (ctest's time-out ends one),
// the disconnect message exactly once per pull, at most one "USB is not Connected" per click,
// no sample lost, nothing on the wire but the action's own packets, and every read right once
// the board answers again.
//
// LXM_SOAK_SEED in the environment replays another seed.
#include <QPushButton>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <string>

#include "core/VbText.h"
#include "device_form_fixture.h"
#include "transport/generic_usb_lib.h"

namespace lxm::test {
namespace {

constexpr int kFaultsWanted = 600;

enum class Action { Read, Write, ReadAll, MeasureType, Range, Resolution, DataRead, ProxIr, kCount };
// What each action may put on the wire: register reads, data reads, writes to these registers.
const struct {
    const char* name;
    bool registerReads, dataReads;
    std::set<int> writes;
} kActions[] = {{"read", true, false, {}},       {"write", false, false, {4, 5, 6, 7, 8}},
                {"read all", true, false, {}},   {"measurement type", false, false, {0, 1, 8}},
                {"range", false, false, {0, 1}}, {"resolution", false, false, {0, 1}},
                {"data read", false, true, {}},  {"prox-IR", false, true, {0}}};

struct Soak : FormFixture {
    std::mt19937 rng;
    std::uint32_t seed = 20261122;
    int faults = 0;
    int pulls = 0;
    int pullsInActions = 0;
    int pullsInRuns = 0;
    int measureType = 6;

    Soak() {
        if (const char* s = std::getenv("LXM_SOAK_SEED")) seed = std::uint32_t(std::strtoul(s, nullptr, 10));
        rng.seed(seed);
        // Long enough for a 12-bit conversion, so that each one-shot pass reads a fresh one.
        form->txtSampling_Delay->setText(QStringLiteral("10"));
    }
    int Pick(int n) { return int(rng() % std::uint32_t(n)); }
    std::string Where(const std::string& what) const {
        return "seed " + std::to_string(seed) + ", fault " + std::to_string(faults) + ": " + what;
    }

    void ChooseType(int type) {
        measureType = type;
        form->OptMeasure.at(type)->click();
        Settle();
    }

    // The OUT packets on the wire since mark, each checked against what the action may send.
    // kinds: 'r' register reads, 'd' data reads, and the registers it may write.
    void ExpectOnlyOwnPackets(std::size_t mark, bool registerReads, bool dataReads, std::set<int> writes,
                              const std::string& what) {
        for (std::size_t i = mark; i < wire().size(); ++i) {
            const sim::WirePacket& p = wire()[i];
            if (p.dir == sim::WireDir::In) {
                EXPECT_EQ(p.endpoint, 0x82) << Where(what);
                continue;
            }
            ASSERT_EQ(p.endpoint, 0x02) << Where(what);
            ASSERT_GE(p.bytes.size(), 3u) << Where(what);
            const int count = p.bytes[0], address = p.bytes[1], reg = p.bytes[2];
            if (count == 0) {
                EXPECT_EQ(address, 0x88) << Where(what);
                EXPECT_EQ(p.bytes.size(), 4u) << Where(what);
                EXPECT_TRUE(writes.count(reg)) << Where(what) << ": a write to register " << reg;
            } else if (count == 1) {
                EXPECT_TRUE(registerReads) << Where(what) << ": a read of register " << reg;
                EXPECT_EQ(address, 0x89) << Where(what);
            } else {
                EXPECT_TRUE(dataReads && count == 2 && reg == 2) << Where(what) << ": a read of " << count;
                EXPECT_EQ(address, 0x89) << Where(what);
            }
        }
    }

    // In the order of Action.
    void Run(Action a) {
        const int reg = 4 + Pick(5);
        const std::function<void()> clicks[] = {
            [&] { form->cmdRDReg[reg]->click(); },
            [&] {
                form->txtRegHex(reg)->setText(Hex2(Pick(256)));
                form->cmdWrtReg[reg]->click();
            },
            [&] { form->cmdReadAllRegs->click(); },
            [&] { form->OptMeasure.at(1 + Pick(7))->click(); },
            [&] { form->OptGain.at(Pick(4))->click(); },
            [&] { form->OptITime.at(Pick(4))->click(); },
            [&] { form->cmdRead_ADC->click(); },
            [&] { form->cmdProx_IR->click(); },
        };
        static_assert(std::extent_v<decltype(clicks)> == std::size_t(Action::kCount));
        clicks[int(a)]();
    }
    void ExpectOwnPackets(Action a, std::size_t mark) {
        const auto& k = kActions[int(a)];
        ExpectOnlyOwnPackets(mark, k.registerReads, k.dataReads, k.writes, k.name);
    }

    // With the cable out, Start and a choice of measurement say so once each and do nothing.
    void ExpectNothingWithoutTheBoard(const std::string& what) {
        messages.clear();
        EXPECT_EQ(ClickStart(2), 0) << Where(what) << ": Start ran without the board";
        EXPECT_EQ(messages.texts, QStringList{kNotConnected}) << Where(what) << ": Start";
        messages.clear();
        form->OptMeasure.at(1 + Pick(7))->click();
        EXPECT_EQ(messages.texts, QStringList{kNotConnected}) << Where(what) << ": measurement type";
    }

    // What the user does after a pull: plug the board back, "Init Table", "Open USB", and
    // write the registers again by choosing the measurement once more.
    void Recover() {
        Replug();
        ASSERT_TRUE(session.UsbConnected) << Where("recovery");
        RestoreChoices();
    }
    // The range, resolution and measurement the steady readings are compared in.
    void RestoreChoices() {
        form->OptGain.at(0)->click();
        form->OptITime.at(1)->click();
        ChooseType(measureType);
    }

    // Registers written from their entry boxes and read back: each read shows its own value.
    void ExpectReadsRight(const std::string& what) {
        messages.clear();
        for (int reg = 4; reg <= 7; ++reg) {
            const QString hex = Hex2(Pick(256));
            form->txtRegHex(reg)->setText(hex);
            form->txtRegHex_KeyPress(reg, 13);
            EXPECT_EQ(Hex2(chip(reg)), hex) << Where(what) << ", register " << reg;
        }
        for (int reg : {7, 4, 6, 5}) {
            form->cmdRDReg[reg]->click();
            EXPECT_EQ(form->txtRegRd(reg)->text(), Hex2(chip(reg))) << Where(what) << ", register " << reg;
        }
        EXPECT_TRUE(messages.texts.isEmpty()) << Where(what);
    }

    // The pull shows the disconnect message once; a click shows "not connected" at most once.
    void ExpectOnePullMessage(const std::string& what) {
        Pump();
        EXPECT_EQ(messages.count(kDisconnected), 1) << Where(what);
        EXPECT_LE(messages.count(kNotConnected), 1) << Where(what);
        EXPECT_FALSE(session.Collecting) << Where(what);
        EXPECT_FALSE(session.TransferBusy) << Where(what);
    }

    // Pulls go round every kind of action and every measurement type in turn.
    void PullDuringAction() {
        const Action a = Action(pullsInActions++ % int(Action::kCount));
        const std::string what = std::string("pull during ") + kActions[int(a)].name;
        messages.clear();
        const std::size_t mark = wire().size();
        driver.UnplugAfterTransfers(1 + Pick(12));
        Run(a);
        if (driver.IsPlugged()) {
            // The action needed fewer transfers: the cable goes right after it.
            driver.UnplugAfterTransfers(0);
            driver.Unplug();
        }
        ++faults, ++pulls;
        ExpectOwnPackets(a, mark);
        ExpectOnePullMessage(what);
        if (Pick(4) == 0) ExpectNothingWithoutTheBoard(what);
        Recover();
        ExpectReadsRight(what);
    }

    // One collection run; perPass may inject faults. Returns the readings of the passes.
    std::vector<double> CollectRun(int passes, const std::function<void(int)>& perPass, int* taken) {
        std::vector<double> readings;
        *taken = Collect([&](int n) {
            readings.push_back(form->LatestReading);
            if (perPass) perPass(n);
            return n < passes;
        });
        return readings;
    }
    void ExpectNoSampleLost(const std::vector<double>& readings, const std::string& what) {
        for (std::size_t i = 0; i < readings.size() && i <= std::size_t(frmLXM410::kSampleLast); ++i)
            ASSERT_EQ(form->SampleValues[i], readings[i]) << Where(what) << ", sample " << i;
    }

    void PullDuringCollection() {
        const int type = pullsInRuns++ % 8;
        const std::string what = "pull during collection, type " + std::to_string(type);
        if (type != 0)
            ChooseType(type);
        else
            form->OptMeasure.at(0)->click();
        messages.clear();
        const std::size_t mark = wire().size();
        const int pullAt = 1 + Pick(10);
        int pulledIn = 0;  // the pass the cable went in
        int taken = 0;
        const auto readings = CollectRun(
            40,
            [&](int n) {
                if (n == pullAt) driver.UnplugAfterTransfers(1 + Pick(6));
                if (!driver.IsPlugged() && pulledIn == 0) pulledIn = n;
            },
            &taken);
        ++faults, ++pulls;
        EXPECT_EQ(taken, pulledIn) << Where(what) << ": the run ends with the pass the cable went in";
        ExpectNoSampleLost(readings, what);
        ExpectOnlyOwnPackets(mark, false, true, {0, 1, 8}, what);
        ExpectOnePullMessage(what);
        if (Pick(4) == 0) ExpectNothingWithoutTheBoard(what);
        if (type == 0) measureType = 5;  // Start switched a powered-down sensor to continuous ALS
        Recover();
        ExpectReadsRight(what);
    }

    // A time-out, a late or lost reply or a NACK on the next transfers.
    std::string InjectTransferFault() {
        const std::pair<const char*, std::function<void()>> kinds[] = {
            {"time-out", [&] { driver.TimeOutNext(1 + Pick(3)); }},
            {"late reply", [&] { board.controller().DelayNextReply(1 + Pick(2)); }},
            {"lost reply", [&] { board.controller().DropNextReplies(1); }},
            {"NACK", [&] { board.controller().NackNext(1 + Pick(2)); }},
        };
        const auto& [name, inject] = kinds[Pick(4)];
        inject();
        return name;
    }
    void ClearTransferFaults() {
        driver.TimeOutNext(0);
        board.controller().DelayNextReply(0);
        board.controller().DropNextReplies(0);
        board.controller().NackNext(0);
    }

    void TransferFaultsDuringActions() {
        const Action a = Action(Pick(int(Action::kCount)));
        const std::string kind = InjectTransferFault();
        const std::string what = kind + " during " + kActions[int(a)].name;
        messages.clear();
        const std::size_t mark = wire().size();
        Run(a);
        ++faults;
        ExpectOwnPackets(a, mark);
        EXPECT_TRUE(messages.texts.isEmpty()) << Where(what) << ": a failed transfer is not a message";
        ClearTransferFaults();
        // Choices the action made are put back, so the steady readings stay comparable.
        if (a == Action::MeasureType || a == Action::Range || a == Action::Resolution) RestoreChoices();
        ExpectReadsRight(what);
    }

    // Several faults in a row, one before each read: late replies whose drains time out, lost
    // ones, NACKs. A read that reports success shows its own register, and once the faults
    // stop every read is right.
    void FaultBurstDuringReads() {
        const std::string what = "a burst of transfer faults during reads";
        messages.clear();
        const std::size_t mark = wire().size();
        const int n = 3 + Pick(5);
        for (int i = 0; i < n; ++i) {
            const std::string kind = InjectTransferFault();
            ++faults;
            const int reg = 4 + Pick(4);
            form->cmdRDReg[reg]->click();
            if (session.TransferOK && session.ReadStatusByte == 1) {
                EXPECT_EQ(form->txtRegRd(reg)->text(), Hex2(chip(reg))) << Where(what) << ", " << kind;
            }
        }
        ClearTransferFaults();
        ExpectOnlyOwnPackets(mark, true, false, {}, what);
        EXPECT_TRUE(messages.texts.isEmpty()) << Where(what);
        ExpectReadsRight(what);
    }

    void TransferFaultsDuringCollection() {
        const int type = 1 + Pick(7);
        const std::string what = "transfer faults during collection, type " + std::to_string(type);
        ChooseType(type);
        messages.clear();
        const std::size_t mark = wire().size();
        const int injected = 1 + Pick(3);
        std::set<int> at;
        while (int(at.size()) < injected) at.insert(2 + Pick(8));
        int taken = 0;
        int outOfStep = 0;
        const auto readings = CollectRun(
            24,
            [&](int n) {
                if (at.count(n)) InjectTransferFault();
                // Long after the last fault, the bytes of each pass are the chip's own: a pass
                // that shows the one before it is out of step (in the dual mode, sign flipped).
                if (n > 16 && (form->LastLow != chip(2) || form->LastHigh != chip(3))) ++outOfStep;
            },
            &taken);
        faults += injected;
        ClearTransferFaults();
        EXPECT_EQ(taken, 24) << Where(what) << ": a failed transfer does not stop the run";
        ExpectNoSampleLost(readings, what);
        ExpectOnlyOwnPackets(mark, false, true, {0, 1}, what);
        EXPECT_TRUE(messages.texts.isEmpty()) << Where(what);
        EXPECT_EQ(outOfStep, 0) << Where(what);
    }
};

TEST_F(Soak, SeededFaultsNeverPutTheProgramOutOfStep) {
    const auto start = std::chrono::steady_clock::now();
    // Light that changes from one conversion to the next, so that a reading one behind shows.
    scene().kind = sim::LightScene::Kind::Noise;
    form->OptGain.at(0)->click();
    form->OptITime.at(1)->click();
    ExpectReadsRight("no fault");

    void (Soak::*const kinds[])() = {&Soak::PullDuringAction, &Soak::PullDuringCollection,
                                     &Soak::TransferFaultsDuringActions, &Soak::FaultBurstDuringReads,
                                     &Soak::TransferFaultsDuringCollection};
    while (faults < kFaultsWanted && !HasFatalFailure()) (this->*kinds[Pick(5)])();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("fault soak: seed %u, %d faults injected (%d cable pulls) in %.1f s\n", seed, faults, pulls,
                seconds);
    RecordProperty("faults", faults);
    RecordProperty("pulls", pulls);
    EXPECT_GE(faults, 500);
    EXPECT_GE(pullsInActions, 3 * int(Action::kCount)) << "every kind of action had its pulls";
    EXPECT_GE(pullsInRuns, 3 * 8) << "every measurement type had its pulls";
}

}  // namespace
}  // namespace lxm::test
