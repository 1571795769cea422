// Where a window goes so that its whole frame is on the screen, at the two screen sizes users
// have: a laptop's 1280 x 800 and a desktop's 1920 x 1080.
#include <gtest/gtest.h>

#include "core/OnScreen.h"

namespace lxm {
namespace {

TEST(OnScreen, AFrameReachingPastAnEdgeMovesBackWholly) {
    const QRect laptop(0, 0, 1280, 800), desktop(0, 0, 1920, 1080), panelled(0, 30, 1920, 1050);
    const struct {
        QRect room, outer;
        QPoint corner;
    } cases[] = {
        {laptop, {0, 0, 700, 540}, {0, 0}},             // inside: stays
        {laptop, {20, 275, 720, 540}, {20, 260}},       // 15 px off the bottom
        {laptop, {900, 10, 720, 540}, {560, 10}},       // off the right
        {laptop, {-30, -5, 720, 540}, {0, 0}},          // off the top left
        {laptop, {10, 10, 1400, 900}, {0, 0}},          // larger than the screen: title bar on it
        {desktop, {625, 290, 1296, 791}, {624, 289}},   // a tall form off the bottom and right
        {panelled, {100, 0, 800, 600}, {100, 30}},      // under a top panel
    };
    for (const auto& c : cases) EXPECT_EQ(OnScreenCorner(c.outer, c.room), c.corner) << c.outer.y();
}

TEST(OnScreen, TheClientSizeLeavesRoomForTheFrame) {
    const QSize frame(2, 25);
    EXPECT_EQ(FittedSize({1300, 900}, {500, 300}, {1280, 800}, frame), QSize(1278, 775));
    EXPECT_EQ(FittedSize({700, 540}, {500, 300}, {1280, 800}, frame), QSize(700, 540));
    EXPECT_EQ(FittedSize({1300, 900}, {1290, 820}, {1280, 800}, frame), QSize(1290, 820))
        << "never below what the layout needs: the form scrolls instead";
}

}  // namespace
}  // namespace lxm
