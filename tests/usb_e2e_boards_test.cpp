// Two boards on one emulated USB bus: both are listed, each is taken by its place, and two
// threads collect from them at once with every reply staying with its own board.
#include <gtest/gtest.h>

#include <thread>

#include "measure/Board.h"
#include "transport/libusb/BoardList.h"
#include "transport/libusb/LibusbDriver.h"
#include "usb_e2e/EmulatedBoard.h"

namespace lxm {
namespace {

using test::usb::EmulatedBoard;

TEST(TwoBoards, ListedAndCollectingSideBySide) {
    EmulatedBoard first;
    EmulatedBoard second(first, 2);
    first.Plug();
    second.Plug();
    const double lux[2] = {100, 700};
    EmulatedBoard* emulated[2] = {&first, &second};
    for (int i = 0; i < 2; ++i)
        emulated[i]->WithBoard([&](sim::SimBoard& b) { b.scene().ambientLux = lux[i]; });

    const auto listed = usb::ListBoards();
    ASSERT_EQ(listed.size(), 2u);
    EXPECT_EQ(listed[0].port, first.address());
    EXPECT_EQ(listed[1].port, second.address());
    EXPECT_TRUE(listed[0].openable && listed[1].openable);

    SteadyClock clock;
    usb::LibusbDriver drivers[2];
    std::unique_ptr<measure::Board> boards[2];
    for (int i = 0; i < 2; ++i) {
        // Listed order is not taking order: the second board is asked for first.
        const int j = 1 - i;
        boards[j] = std::make_unique<measure::Board>(drivers[j], clock, BoardPlace{1, emulated[j]->address()});
        boards[j]->SetResolution(8);
        boards[j]->SetRange(1000);
        boards[j]->SetMeasure("als-cont");
        emulated[j]->AdvanceBoardMs(5);
    }
    EXPECT_THROW(measure::Board(drivers[0], clock, BoardPlace{1, 99}), measure::Error);

    std::vector<measure::Sample> got[2];
    std::thread threads[2];
    for (int i = 0; i < 2; ++i)
        threads[i] = std::thread([&, i] {
            boards[i]->Collect(150, 0, [&](const measure::Sample& s) {
                got[i].push_back(s);
                return true;
            });
        });
    for (auto& t : threads) t.join();
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(got[i].size(), 150u);
        for (const measure::Sample& s : got[i]) {
            ASSERT_FALSE(s.reading.flags & measure::kFailed) << "board " << i << " sample " << s.index;
            ASSERT_NEAR(s.reading.value, lux[i], lux[i] * 0.25) << "board " << i << " sample " << s.index;
        }
    }
}

}  // namespace
}  // namespace lxm
