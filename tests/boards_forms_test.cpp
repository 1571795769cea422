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
#include "device/parts/StatusStrip.h"
#include "simboard/SimBus.h"
#include "simboard/SimDriver.h"
#include "support/FakeClock.h"
#include "support/RecordingSeams.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"

namespace lxm {
namespace {

TEST(TwoForms, WritesChoicesAndUnplugsStayWithTheirOwnForm) {
    test::FakeClock clock;
    test::RecordingMessages messages;
    test::ScriptedFileDialogs files;
    sim::SimBoard boards[3] = {sim::SimBoard{clock}, sim::SimBoard{clock}, sim::SimBoard{clock}};
    sim::SimDriver a{boards[0]}, b{boards[1]}, c{boards[2]};
    b.SetPlace(1, 3);
    c.SetPlace(1, 4);
    sim::SimBus bus;
    bus.Add(a);
    bus.Add(b);
    OneBoardDriver windowOnly{bus};
    Session session{windowOnly, messages, files, clock};
    session.usb().openWaitYields = 50;
    FormBoards links{session, &windowOnly, [&] { return FormBoards::OnBus(bus); },
                     [&](std::optional<BoardPlace> place, const std::string& type) {
                         if (place) bus.At(place->bus, place->port)->board().CarryForType(type);
                         return FormBoards::TakeAlone(bus, place);
                     },
                     "simulated"};
    frmStartup startup(session, QString());
    startup.onExit = [] {};
    links.Serve(startup);
    startup.show();
    startup.Form_Load();
    // A register written from a form's panel reaches its board, and no other board's wire.
    auto writesAlone = [&](DeviceFormBase& form, int reg, int value, sim::SimBoard& to) {
        auto others = [&] {
            std::size_t n = 0;
            for (sim::SimBoard& x : boards) n += &x == &to ? 0 : x.controller().wireLog().size();
            return n;
        };
        const std::size_t before = others();
        form.txtRegHex(reg)->setText(QString::number(value, 16).toUpper());
        form.cmdWrtReg_Click(reg);
        return to.sensor().Peek(std::uint8_t(reg)) == value && others() == before;
    };

    startup.cboTypeSelect->setCurrentIndex(1);
    frmLXM410* one = startup.DeviceForm();
    QMenu* another = one->boardMenu->mnuAnotherBoard;
    emit another->aboutToShow();
    ASSERT_EQ(another->actions().size(), 5);
    another->actions()[4]->trigger();  // the multi-function sensor, on the free board
    ASSERT_EQ(startup.OtherForms().size(), 1u);
    DeviceFormBase* two = startup.OtherForms()[0].get();
    EXPECT_EQ(one->statusStrip().lblBoard()->text(), "simulated 1:2");
    EXPECT_EQ(two->statusStrip().lblBoard()->text(), "simulated 1:3");
    EXPECT_TRUE(writesAlone(*one, 4, 0x5A, boards[0]));
    EXPECT_TRUE(writesAlone(*two, 3, 0xA5, boards[1]));

    // A third board: the first form moves to it, the second stays where it was.
    bus.Add(c);
    QMenu* choose = one->boardMenu->mnuChooseBoard;
    emit choose->aboutToShow();
    const auto items = choose->actions();
    ASSERT_EQ(items.size(), 3);
    EXPECT_TRUE(items[0]->isChecked());
    EXPECT_EQ(items[1]->toolTip(), "Another window talks to this board");
    EXPECT_FALSE(items[1]->isEnabled());
    items[2]->trigger();
    EXPECT_EQ(boards[2].sensor().Peek(4), 0x5A) << "the image went to the chosen board";
    EXPECT_TRUE(writesAlone(*one, 5, 0x12, boards[2]));
    EXPECT_TRUE(writesAlone(*two, 3, 0x3C, boards[1]));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();

    // The second form's board pulled while the first collects: one message, the run goes on.
    int passes = 0;
    one->onPass = [&] {
        if (++passes == 2) b.Unplug();
        if (passes == 8) one->cmdStopData_Click();
    };
    one->cmdCollectData_Click();
    EXPECT_EQ(passes, 8);
    EXPECT_EQ(messages.texts, QStringList{test::kDisconnected});
    EXPECT_TRUE(session.UsbConnected);
    EXPECT_TRUE(two->ShpAttach()->hasFillIndex(12)) << "the second form's lamp shows its board gone";
}

}  // namespace
}  // namespace lxm
