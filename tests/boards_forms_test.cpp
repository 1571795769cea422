// Several device forms at once, each on a board of its own on one simulated bus.
#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>

#include "app/FormBoards.h"
#include "app/frmStartup.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/StatusStrip.h"
#include "simboard/SimBus.h"
#include "support/FakeClock.h"
#include "support/RecordingSeams.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"

namespace lxm {
namespace {

struct TwoForms : ::testing::Test {
    test::FakeClock clock;
    test::RecordingMessages messages;
    test::ScriptedFileDialogs files;
    sim::SimBoard boardA{clock}, boardB{clock}, boardC{clock};
    sim::SimDriver a{boardA}, b{boardB}, c{boardC};
    sim::SimBus bus;
    OneBoardDriver windowOnly{bus};
    Session session{windowOnly, messages, files, clock};
    FormBoards boards{session, &windowOnly,
                      [this] {
                          FormBoards::BoardList list;
                          for (const sim::SimDriver* d : bus.boards())
                              if (d->IsPlugged()) list.push_back({{1, d->info().deviceAddress}, ""});
                          return list;
                      },
                      [this](std::optional<BoardPlace> place, const std::string& type) {
                          if (!place) return FormBoards::Made{};
                          bus.At(place->bus, place->port)->board().CarryForType(type);
                          auto only = std::make_shared<OneBoardDriver>(bus, place);
                          return FormBoards::Made{only.get(), only.get(), only};
                      },
                      "simulated"};
    std::unique_ptr<frmStartup> startup;

    void SetUp() override {
        b.SetPlace(1, 3);
        c.SetPlace(1, 4);
        bus.Add(a);
        bus.Add(b);
        session.usb().openWaitYields = 50;
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->anotherBoard = [this](const std::string& type) { return boards.Open(type); };
        startup->onFormMade = [this](DeviceFormBase& f, Session& s, BoardSteps& steps) { boards.FormMade(f, s, steps); };
        startup->show();
        startup->Form_Load();
    }
    void TearDown() override { startup.reset(); }

    static std::size_t Wire(sim::SimBoard& board) { return board.controller().wireLog().size(); }
    // A register written from a form's panel, as typed and sent with its button.
    static void Write(DeviceFormBase& form, int reg, const char* hex) {
        form.txtRegHex(reg)->setText(QString::fromLatin1(hex));
        form.cmdWrtReg_Click(reg);
    }
};

TEST_F(TwoForms, WritesChoicesAndUnplugsStayWithTheirOwnForm) {
    startup->cboTypeSelect->setCurrentIndex(1);
    frmLXM410* one = startup->DeviceForm();
    ASSERT_NE(one, nullptr);
    QMenu* another = one->boardMenu->mnuAnotherBoard;
    emit another->aboutToShow();
    ASSERT_EQ(another->actions().size(), 5);
    another->actions()[4]->trigger();  // the multi-function sensor, on the free board
    ASSERT_EQ(startup->OtherForms().size(), 1u);
    auto* two = dynamic_cast<frmLXM600*>(startup->OtherForms()[0].get());
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(one->statusStrip().lblBoard()->text(), "simulated 1:2");
    EXPECT_EQ(two->statusStrip().lblBoard()->text(), "simulated 1:3");

    // Each write reaches its own board, and the other board's wire stays silent.
    std::size_t wireB = Wire(boardB);
    Write(*one, 4, "5A");
    EXPECT_EQ(boardA.family().Peek(4), 0x5A);
    EXPECT_EQ(Wire(boardB), wireB);
    std::size_t wireA = Wire(boardA);
    Write(*two, 3, "A5");
    EXPECT_EQ(boardB.lxm600().Peek(3), 0xA5);
    EXPECT_EQ(Wire(boardA), wireA);

    // A third board: the first form moves to it, the second stays where it was.
    bus.Add(c);
    QMenu* choose = one->boardMenu->mnuChooseBoard;
    emit choose->aboutToShow();
    const auto items = choose->actions();
    ASSERT_EQ(items.size(), 3);
    EXPECT_TRUE(items[0]->isChecked());
    EXPECT_FALSE(items[1]->isEnabled()) << "the second form's board";
    EXPECT_EQ(items[1]->toolTip(), "Another window talks to this board");
    items[2]->trigger();
    EXPECT_EQ(boardC.family().Peek(4), 0x5A) << "the image went to the chosen board";
    boards.Refresh();
    EXPECT_EQ(one->statusStrip().lblBoard()->text(), "simulated 1:4");
    EXPECT_EQ(two->statusStrip().lblBoard()->text(), "simulated 1:3");
    wireA = Wire(boardA);
    const std::size_t wireC = Wire(boardC);
    Write(*two, 3, "3C");
    EXPECT_EQ(boardB.lxm600().Peek(3), 0x3C);
    EXPECT_EQ(Wire(boardA) + Wire(boardC), wireA + wireC);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();

    // The second form's board pulled while the first collects: one message, the run goes on.
    int passes = 0;
    one->onPass = [&] {
        if (++passes == 2) b.Unplug();
        if (passes == 8) one->cmdStopData_Click();
    };
    one->cmdCollectData_Click();
    one->onPass = nullptr;
    EXPECT_EQ(passes, 8);
    EXPECT_EQ(messages.texts,
              QStringList{"Device has been disconnected, reconnect and re-initialize all registers"});
    EXPECT_TRUE(session.UsbConnected);
    EXPECT_TRUE(two->ShpAttach()->hasFillIndex(12)) << "the second form's lamp shows its board gone";
    EXPECT_TRUE(one->ShpAttach()->hasFillIndex(10));
}

}  // namespace
}  // namespace lxm
