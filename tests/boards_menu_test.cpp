// The Board menu's choice among the attached boards.
#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>

#include "device/BoardMenu.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

using ChooseBoard = FormFixture;

TEST_F(ChooseBoard, ListsTheBoardsMarksTheOneInUseAndReconnectsToTheChoice) {
    std::vector<std::string> chosen;
    BoardSteps steps;
    steps.listBoards = [] {
        return std::vector<std::pair<BoardPlace, QString>>{{{1, 2}, ""}, {{1, 5}, "no permission to open it"}};
    };
    steps.chooseBoard = [&](const BoardPlace& p) { chosen.push_back(p.Text()); };
    form->boardMenu->SetSteps(steps);
    QMenu* menu = form->boardMenu->mnuChooseBoard;
    emit menu->aboutToShow();
    const auto items = menu->actions();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0]->text(), "Bus 1, port 2");
    EXPECT_TRUE(items[0]->isChecked() && items[0]->isEnabled()) << "the simulated board is 1:2, in use";
    EXPECT_FALSE(items[1]->isChecked() || items[1]->isEnabled());
    EXPECT_EQ(items[1]->toolTip(), "no permission to open it");

    const std::size_t before = wire().size();
    items[0]->trigger();
    EXPECT_EQ(chosen, std::vector<std::string>{"1:2"});
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
    EXPECT_FALSE(WritesTo(0, before).empty()) << "the register image went back to the chosen board";

    steps.listBoards = [] { return std::vector<std::pair<BoardPlace, QString>>{}; };
    form->boardMenu->SetSteps(steps);
    emit menu->aboutToShow();
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_FALSE(menu->actions()[0]->isEnabled());
}

}  // namespace
}  // namespace lxm::test
