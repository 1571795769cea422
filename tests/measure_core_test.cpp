// The measuring core without any window: readings and their flags, the errors a script sees,
// pacing, and several boards at once.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "acquisition/Conversion.h"
#include "acquisition/SensorFields.h"
#include "measure/SimulatedBoard.h"
#include "support/FakeClock.h"

namespace lxm::measure {
namespace {

using test::FakeClock;

struct FlagCase {
    const char* name;
    int rangeLux, bits;
    double sceneLux;
    unsigned flags;
};

// The value is the forms' conversion of the count, and what cannot be trusted says so.
TEST(MeasureCore, ReadingsCarryTheFormsArithmeticAndTheirFlags) {
    const FlagCase cases[] = {
        {"in range", 1000, 16, 300, 0},
        {"at 4 bits", 64000, 4, 20000, 0},
        {"above full scale", 1000, 12, 5000, kSaturated},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeClock clock;
        SimulatedBoard sim(clock, "LXM410", 0);
        sim.scene().ambientLux = c.sceneLux;
        Board& b = sim.board();
        b.SetResolution(c.bits);
        b.SetRange(c.rangeLux);
        b.SetMeasure("als-cont");
        const Reading early = b.TakeReading();
        EXPECT_TRUE(early.flags & kEarly);
        clock.AdvanceMs(120);
        const Reading r = b.TakeReading();
        EXPECT_EQ(r.flags, c.flags);
        const auto& res = kFamilyResolutions[std::size_t(*IndexOf(std::array{16, 12, 8, 4}, c.bits))];
        EXPECT_DOUBLE_EQ(r.value, ConvertToLux(r.raw, c.rangeLux, 500000, res.fullScale));
        if (!c.flags) {
            EXPECT_NEAR(r.value, c.sceneLux, c.sceneLux * 0.1 + c.rangeLux / 16.0);
        }
    }
}

// A failed read is flagged and the next one is in step; every error names what went wrong.
TEST(MeasureCore, FailedReadsAndErrors) {
    FakeClock clock;
    SimulatedBoard sim(clock, "LXM410", 0);
    Board& b = sim.board();
    b.SetMeasure("ir-cont");
    clock.AdvanceMs(20);
    sim.sim().controller().NackNext(1);
    const Reading failed = b.TakeReading();
    EXPECT_EQ(std::string(failed.Status()), "failed");
    EXPECT_TRUE(std::isnan(failed.value));
    EXPECT_EQ(std::string(b.TakeReading().Status()), "ok");
    EXPECT_EQ(b.Read(0) >> 5, 6) << "register 0 holds IR continuous";

    auto kindOf = [](auto&& op) {
        try {
            op();
        } catch (const Error& e) {
            EXPECT_FALSE(std::string(e.what()).empty());
            return e.kind();
        }
        ADD_FAILURE() << "no error";
        return Error::Kind::NoBoard;
    };
    EXPECT_EQ(kindOf([&] { b.Read(256); }), Error::Kind::OutOfRange);
    EXPECT_EQ(kindOf([&] { b.ReadBlock(0, 5); }), Error::Kind::OutOfRange);
    EXPECT_EQ(kindOf([&] { b.Write(1, 300); }), Error::Kind::BadValue);
    EXPECT_EQ(kindOf([&] { b.SetRange(500); }), Error::Kind::BadValue);
    EXPECT_EQ(kindOf([&] { b.SetMeasure("lux"); }), Error::Kind::BadValue);
    EXPECT_EQ(kindOf([&] { Board other(sim.driver(), clock, Where{9, 9}); }), Error::Kind::NoBoard);
    OneBoardDriver elsewhere(sim.driver(), BoardPlace{1, 3});
    EXPECT_EQ(kindOf([&] { Board other(elsewhere, clock); }), Error::Kind::NoBoard);
    sim.sim().controller().DropNextReplies(1);
    EXPECT_EQ(kindOf([&] { b.Read(1); }), Error::Kind::Timeout);
    b.Write(1, 0x04);
    EXPECT_EQ(b.Read(1), 0x04) << "the late reply did not cross into the next read";
    sim.Unplug();
    EXPECT_EQ(kindOf([&] { b.Read(0); }), Error::Kind::BoardGone);
    sim.Plug();
    EXPECT_EQ(b.Read(1), b.image()[1]) << "the operating registers are written back";
}

TEST(MeasureCore, BoardPlacesAreTwoBytesAndAColon) {
    EXPECT_EQ(ParseBoardPlace("1:7")->Text(), "1:7");
    EXPECT_EQ(ParseBoardPlace("003:255")->port, 255);
    for (const char* bad : {"1", "1:", ":7", "1:256", "-1:7", "1:7x", "a:b", "1:2:3"})
        EXPECT_FALSE(ParseBoardPlace(bad)) << bad;
}

// A continuous collection keeps the collection loop's pacing: a pass is let go 4 ms before its
// deadline, so at 8 ms with 1 ms transfers the passes come 5 ms apart.
TEST(MeasureCore, CollectionIsPacedLikeTheLoop) {
    FakeClock clock;
    SimulatedBoard sim(clock, "LXM410", 0);
    sim.board().SetMeasure("als-cont");
    std::vector<double> at;
    sim.board().Collect(5, 8, [&](const Sample& s) {
        at.push_back(s.seconds);
        clock.AdvanceMs(1);
        return true;
    });
    ASSERT_EQ(at.size(), 5u);
    for (std::size_t i = 1; i < at.size(); ++i) EXPECT_NEAR(at[i] - at[i - 1], 0.005, 1e-9);
}

// Boards in threads of their own: every sample arrives and is its own board's.
TEST(MeasureCore, SeveralBoardsCollectAtOnce) {
    SteadyClock clock;
    constexpr int kBoards = 4, kSamples = 300;
    // Three times apart: a reply that crossed to another board could not pass for its own, noise
    // and the light source's response included.
    constexpr double kLux[kBoards] = {100, 300, 900, 2700};
    std::vector<std::unique_ptr<SimulatedBoard>> sims;
    for (int i = 0; i < kBoards; ++i) {
        sims.push_back(std::make_unique<SimulatedBoard>(clock, "LXM410", 100));
        sims.back()->scene().ambientLux = kLux[i];
        sims.back()->board().SetRange(4000);
        sims.back()->board().SetResolution(12);
        sims.back()->board().SetMeasure("als-cont");
    }
    std::vector<std::vector<Sample>> got(kBoards);
    std::vector<std::thread> threads;
    for (int i = 0; i < kBoards; ++i)
        threads.emplace_back([&, i] {
            sims[std::size_t(i)]->board().Collect(kSamples, 0, [&](const Sample& s) {
                got[std::size_t(i)].push_back(s);
                return true;
            });
        });
    for (auto& t : threads) t.join();
    for (int i = 0; i < kBoards; ++i) {
        ASSERT_EQ(got[std::size_t(i)].size(), std::size_t(kSamples));
        for (const Sample& s : got[std::size_t(i)]) {
            // The first conversion's reads: early, or (as the forms count it) ending just after it.
            if (s.reading.flags & kEarly || s.seconds < 0.02) continue;
            ASSERT_EQ(s.reading.flags, 0u);
            ASSERT_NEAR(s.reading.value, kLux[i], kLux[i] * 0.4) << "board " << i << " sample " << s.index;
        }
    }
}

}  // namespace
}  // namespace lxm::measure
