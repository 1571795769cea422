// A live value box draws its panel from a cache; it must look exactly as a box without one,
// whatever happened to it since the panel was cached.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <functional>

#include "core/PanelCacheStyle.h"

namespace lxm {
namespace {

TEST(PanelCacheStyle, BoxLooksAsWithoutItAfterEveryChange) {
    QLineEdit plain(QStringLiteral("1234.56")), cached(QStringLiteral("1234.56"));
    for (QLineEdit* box : {&plain, &cached}) box->setFixedSize(62, 22);
    UsePanelCache(&cached);
    UsePanelCache(&cached);  // made live again at the next Start: still the one style
    EXPECT_EQ(cached.findChildren<PanelCacheStyle*>().size(), 1);

    const std::pair<const char*, std::function<void(QLineEdit&)>> steps[] = {
        {"as made", [](QLineEdit&) {}},
        {"wider", [](QLineEdit& b) { b.setFixedSize(90, 22); }},
        {"disabled", [](QLineEdit& b) { b.setEnabled(false); }},
        {"enabled again", [](QLineEdit& b) { b.setEnabled(true); }},
        {"read only", [](QLineEdit& b) { b.setReadOnly(true); }},
        {"marked in colour", [](QLineEdit& b) { b.setPalette(QPalette(QColor(255, 200, 200))); }},
        {"no frame", [](QLineEdit& b) { b.setFrame(false); }},
    };
    for (const auto& [what, change] : steps) {
        change(plain);
        change(cached);
        EXPECT_EQ(plain.grab().toImage(), cached.grab().toImage()) << what;
    }
}

}  // namespace
}  // namespace lxm
