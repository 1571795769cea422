// The characterisation sweep: its waits, its cancel, the setting it calls best, and the settings
// it leaves behind, on a scripted target and on the simulated board.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <stdexcept>

#include "characterise/Sweep.h"
#include "measure/SimulatedBoard.h"

namespace lxm::characterise {
namespace {

// A clock that moves only when slept on, to the microsecond: the sweep's waits are shorter than
// a millisecond at the low resolutions.
class FakeClock final : public Clock {
public:
    std::uint32_t timeGetTime() override { return std::uint32_t(us_ / 1000); }
    std::int64_t Micros() override { return us_; }
    void Sleep(std::uint32_t ms) override { us_ += std::int64_t(ms) * 1000; }
    void SleepMicros(std::int64_t us) override { us_ += std::max<std::int64_t>(us, 0); }
    QDateTime Now() override { return {}; }

private:
    std::int64_t us_ = 1'000'000;
};

// Counts scripted per setting: 1000 lux is saturated and steady (the quietest row, were it
// not saturated), 4000 lux at 16 bits swings 4 counts, at 12 bits 1 count (more lux).
class ScriptedTarget final : public SweepTarget {
public:
    explicit ScriptedTarget(FakeClock& clock) : clock_(clock) {}
    std::string Sensor() const override { return "LXM410"; }
    std::vector<Setting> Settings() const override { return {{1000, 16}, {4000, 16}, {4000, 12}}; }
    void Apply(const Setting& s, std::string_view) override {
        current_ = s;
        appliedUs_ = clock_.Micros();
        fresh_ = true;
    }
    measure::Reading Read() override {
        ++reads;
        if (fail && reads == 3) fail();
        if (fresh_) waitedUs.push_back(clock_.Micros() - appliedUs_);
        fresh_ = false;
        clock_.SleepMicros(1000);
        measure::Reading r;
        const int sign = reads % 2 ? 1 : -1;
        if (current_.rangeLux == 1000)
            r.raw = 65535, r.status = SampleStatus::Saturated;
        else
            r.raw = current_.resolutionBits == 16 ? 5000 + 4 * sign : 312 + sign;
        return r;
    }
    std::array<std::uint8_t, 256> Image() const override { return {}; }
    void Restore() override {
        ++restores;
        if (gone) throw measure::Error(measure::Error::Kind::BoardGone, QStringLiteral("gone again"));
    }

    int reads = 0, restores = 0;
    bool gone = false;
    std::function<void()> fail;
    std::vector<std::int64_t> waitedUs;

private:
    FakeClock& clock_;
    Setting current_;
    std::int64_t appliedUs_ = 0;
    bool fresh_ = false;
};

TEST(CharacteriseSweep, WaitsAConversionChoosesTheQuietestUnsaturatedAndRestoresOnEveryWayOut) {
    struct Case {
        const char* name;
        int cancelAt;  // progress says stop after this many readings (0: never)
        bool boardGone, otherThrow;
        int reads;
        std::size_t rows;
    };
    const Case cases[] = {
        {"done", 0, false, false, 12, 3},
        {"cancelled", 6, false, false, 6, 2},
        {"board gone", 0, true, false, 3, 1},
        {"any other throw", 0, false, true, 3, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FakeClock clock;
        ScriptedTarget target(clock);
        if (c.boardGone)
            target.fail = [&] {
                target.gone = true;
                throw measure::Error(measure::Error::Kind::BoardGone, QStringLiteral("unplugged"));
            };
        if (c.otherThrow) target.fail = [] { throw std::logic_error("a fault of the target"); };
        Options options;
        options.readings = 4;
        options.referenceLux = 300;
        int lastDone = 0;
        const Progress progress = [&](int done, int total, const Setting&, double) {
            EXPECT_EQ(total, 12);
            EXPECT_EQ(done, lastDone + 1);
            lastDone = done;
            return done != c.cancelAt;
        };
        if (c.otherThrow) {
            EXPECT_THROW(characterise::Run(target, clock, options, progress), std::logic_error);
            EXPECT_EQ(target.restores, 1);
            continue;
        }
        const Result r = characterise::Run(target, clock, options, progress);
        EXPECT_EQ(target.restores, 1);
        EXPECT_EQ(target.reads, c.reads);
        ASSERT_EQ(r.rows.size(), c.rows);
        EXPECT_EQ(r.cancelled, c.cancelAt != 0);
        EXPECT_EQ(r.complete(), c.rows == 3);
        // The first error is the one told, not the failed restore after it.
        EXPECT_EQ(r.error, c.boardGone ? QStringLiteral("unplugged") : QString());
        for (std::int64_t us : target.waitedUs) EXPECT_GE(us, 6250);
        EXPECT_GE(target.waitedUs.front(), 100'000);
        EXPECT_EQ(r.rows[0].saturated, r.rows[0].readings);
        if (c.rows < 3) continue;
        EXPECT_EQ(r.best, std::optional<std::size_t>(1));
        EXPECT_DOUBLE_EQ(r.rows[1].meanLux, 5000 * 4000.0 / 65536);
        EXPECT_NEAR(*r.rows[1].errorPercent, (5000 * 4000.0 / 65536 - 300) / 3, 1e-9);
        EXPECT_EQ(r.rows[1].peakToPeak, 8);
        EXPECT_EQ(r.rows[2].setting, (Setting{4000, 12}));
    }
}

// The whole sweep on the simulated board's noise-free chip in light that saturates the most
// sensitive range: the figures follow from the chip, and the board ends as it began.
TEST(CharacteriseSweep, SimulatedBoardRowsArePhysicalAndTheBoardIsRestored) {
    FakeClock clock;
    measure::SimulatedBoard sim(clock, "LXM410");
    sim.scene().ideal = true;
    sim.scene().ambientLux = 3000;
    measure::Board& board = sim.board();
    board.SelectSensor("LXM410");
    board.SetResolution(8);
    board.SetMeasure("als-cont");
    board.SetRange(16000);
    board.SetPersistence(4);
    const auto before = board.image();

    BoardTarget target(board);
    Options options;
    options.readings = 8;
    const Result r = characterise::Run(target, clock, options);
    ASSERT_TRUE(r.complete()) << r.error.toStdString();
    ASSERT_EQ(r.rows.size(), 16u);
    for (const Row& row : r.rows) {
        SCOPED_TRACE(row.setting.rangeLux * 100 + row.setting.resolutionBits);
        const double steps = row.setting.resolutionBits == 4 ? 17 : double(1 << row.setting.resolutionBits);
        EXPECT_DOUBLE_EQ(row.luxPerCount, row.setting.rangeLux / steps);
        EXPECT_EQ(row.early + row.failed, 0);
        EXPECT_EQ(row.saturated, row.setting.rangeLux == 1000 ? 8 : 0);
        if (row.setting.rangeLux > 1000) {
            EXPECT_NEAR(row.meanLux, 3000, row.luxPerCount);
        }
        EXPECT_GE(row.measuredMs, row.nominalMs);
    }
    EXPECT_EQ(r.rows[*r.best].setting, (Setting{4000, 16}));
    EXPECT_EQ(board.image(), before);
    EXPECT_EQ(r.image, before);
    EXPECT_EQ(board.rangeLux(), 16000);
    EXPECT_EQ(board.resolutionBits(), 8);
    EXPECT_EQ(board.measure(), "als-cont");
    // The chip holds them too, not only the board's copy.
    EXPECT_EQ(board.Read(0), before[0]);
    EXPECT_EQ(board.Read(1), before[1]);

    // Unplugged mid-sweep: what was measured stays, and the table says it stopped short.
    const Result cut = characterise::Run(target, clock, options, [&](int done, int, const Setting&, double) {
        if (done == 12) sim.Unplug();
        return true;
    });
    EXPECT_TRUE(cut.error.contains(QStringLiteral("disconnected"))) << cut.error.toStdString();
    ASSERT_EQ(cut.rows.size(), 2u);
    EXPECT_EQ(cut.rows[1].readings, 4);
    QTemporaryDir dir;
    const QString csv = dir.filePath(QStringLiteral("t.csv"));
    ASSERT_FALSE(WriteCsv(cut, csv));
    QFile f(csv);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.readAll().contains("# status: incomplete (2 of 16 settings): Device has been disconnected"));
}

}  // namespace
}  // namespace lxm::characterise
