// Where a window goes so that its whole frame is on the screen, at the two screen sizes users
// have: a laptop's 1280 x 800 and a desktop's 1920 x 1080.
#include <gtest/gtest.h>

#include "core/OnScreen.h"

namespace lxm {
namespace {

TEST(OnScreen, AFrameReachingPastAnEdgeMovesBackWholly) {
    const QRect laptop(0, 0, 1280, 800), desktop(0, 0, 1920, 1080);
    const struct {
        QRect room, outer;
        QPoint corner;
    } cases[] = {
        {laptop, {20, 275, 720, 540}, {20, 260}},      // 15 px off the bottom
        {laptop, {10, 10, 1400, 900}, {0, 0}},         // larger than the screen: title bar on it
        {desktop, {625, 290, 1296, 791}, {624, 289}},  // a tall form off the bottom and right
    };
    for (const auto& c : cases) EXPECT_EQ(OnScreenCorner(c.outer, c.room), c.corner) << c.outer.y();
}

}  // namespace
}  // namespace lxm
