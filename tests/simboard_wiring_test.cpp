// How the program picks the simulated board's chip: the start-up window's type choice, and
// the chip chooser of the Simulated Board panel.
#include <gtest/gtest.h>

#include <QComboBox>
#include <string>
#include <vector>

#include "app/SimulatorPanel.h"
#include "app/frmStartup.h"
#include "device/frmLXM410.h"
#include "support/DeviceFixture.h"

namespace lxm {
namespace {

using sim::Chip;

struct ChipWiring : ::testing::Test, test::BoardFixture {
    // The start-up window wired to the panel as the program does it with --simulate.
    void Make() {
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->onTypeSelected = [this](const std::string& type) {
            heard.push_back(type);
            formLoadedFirst = startup->DeviceForm() != nullptr;
            panel.CarryForType(type);
        };
        startup->show();
        startup->Form_Load();
    }
    void TearDown() override { startup.reset(); }

    SimulatorPanel panel{driver};
    std::unique_ptr<frmStartup> startup;
    std::vector<std::string> heard;
    bool formLoadedFirst = false;
};

TEST_F(ChipWiring, ChoosingAFamilyTypePutsTheFamilyChipOnBeforeTheFormProgramsIt) {
    board.Carry(Chip::Lxm600);
    panel.RefreshFromBoard();
    Make();
    startup->cboTypeSelect->setCurrentIndex(3);
    EXPECT_EQ(heard, (std::vector<std::string>{"LXM450"}));
    EXPECT_FALSE(formLoadedFirst) << "the chip must be there when the form writes its registers";
    ASSERT_NE(startup->DeviceForm(), nullptr);
    EXPECT_EQ(board.chip(), Chip::Family);
    EXPECT_EQ(panel.cboChip->currentData().toInt(), int(Chip::Family)) << "the panel shows the chip";
    // The form's load programmed the family chip, and the chip it replaced saw nothing.
    ASSERT_NE(session.RegWriteMirror[1], 0);
    EXPECT_EQ(board.family().Peek(1), session.RegWriteMirror[1]);
    EXPECT_EQ(board.lxm600().Peek(1), 0);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(QStringLiteral(" | ")).toStdString();
}

TEST_F(ChipWiring, NoBoardNoChoice) {
    driver.Unplug();
    Pump();
    Make();
    startup->cboTypeSelect->setCurrentIndex(1);
    EXPECT_TRUE(heard.empty()) << "a refused selection picks no chip";
}

TEST_F(ChipWiring, ThePanelShowsAndChangesTheChip) {
    EXPECT_EQ(panel.cboChip->count(), 2);
    EXPECT_EQ(panel.cboChip->currentData().toInt(), int(Chip::Family));

    panel.cboChip->setCurrentIndex(panel.cboChip->findData(int(Chip::Lxm600)));
    EXPECT_EQ(board.chip(), Chip::Lxm600);
    EXPECT_EQ(board.sensor().Peek(0), 0xA0);

    panel.CarryForType("LXM410");
    EXPECT_EQ(board.chip(), Chip::Family);
    EXPECT_EQ(panel.cboChip->currentData().toInt(), int(Chip::Family));
    panel.CarryForType("nonsense");
    EXPECT_EQ(board.chip(), Chip::Family);

    // A change made elsewhere shows at the next refresh.
    board.Carry(Chip::Lxm600);
    panel.RefreshFromBoard();
    EXPECT_EQ(panel.cboChip->currentData().toInt(), int(Chip::Lxm600));
}

}  // namespace
}  // namespace lxm
