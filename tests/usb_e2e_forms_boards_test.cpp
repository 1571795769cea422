// Two device forms on two boards of one emulated USB bus, through libusb: each form's writes
// reach its own board, and pulling one board's cable leaves the other form working.
#include <QComboBox>
#include <QLineEdit>
#include <set>

#include "app/FormBoards.h"
#include "transport/libusb/BoardList.h"
#include "usb_e2e/ProgramFixture.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

TEST(TwoFormsOnEmulatedBus, EachFormKeepsToItsOwnBoard) {
    EmulatedBoard first;
    EmulatedBoard second(first, 2);
    first.Plug();
    second.Plug();
    EmulatedBoard* emulated[2] = {&first, &second};
    auto chip = [&](int i) {
        return emulated[i]->WithBoard([](sim::SimBoard& b) { return b.sensor().Peek(8); });
    };
    FakeClock clock;
    RecordingMessages messages;
    ScriptedFileDialogs files;
    {  // libusb goes before the bus it runs on
        lxm::usb::LibusbDriver driver;
        OneBoardDriver windowOnly(driver);
        Session session(windowOnly, messages, files, clock);
        session.usb().openWaitYields = 200;
        FormBoards links(
            session, &windowOnly,
            [] {
                FormBoards::BoardList list;
                for (const auto& b : lxm::usb::ListBoards())
                    list.push_back({{b.bus, b.port}, QString::fromStdString(b.problem)});
                return list;
            },
            [&driver](std::optional<BoardPlace> place, const std::string&) {
                return FormBoards::TakeAlone(driver, place);
            },
            "board");
        frmStartup startup(session, QString());
        startup.onExit = [] {};
        links.Serve(startup);
        startup.show();
        startup.Form_Load();
        startup.cboTypeSelect->setCurrentIndex(1);
        startup.OpenAnother("LXM430");
        ASSERT_EQ(startup.OtherForms().size(), 1u);
        DeviceFormBase* forms[2] = {startup.DeviceForm(), startup.OtherForms()[0].get()};
        const char* values[2] = {"5C", "A3"};
        for (int f = 0; f < 2; ++f) {
            forms[f]->txtRegHex(8)->setText(values[f]);
            forms[f]->cmdWrtReg_Click(8);
        }
        EXPECT_EQ((std::set<int>{chip(0), chip(1)}), (std::set<int>{0x5C, 0xA3})) << "one write per board";

        emulated[chip(0) == 0xA3 ? 0 : 1]->Unplug();  // the second form's board
        EXPECT_TRUE(YieldUntil([&] { return messages.count(kDisconnected) > 0; }, 2000));
        YieldUntil([] { return false; }, 50);
        EXPECT_EQ(messages.texts, QStringList{kDisconnected});
        forms[0]->txtRegHex(8)->setText("6D");
        forms[0]->cmdWrtReg_Click(8);
        forms[0]->cmdRDReg_Click(8);
        EXPECT_EQ(forms[0]->txtRegRd(8)->text(), "6D") << "the first form's board is still there";
    }
}

}  // namespace
}  // namespace lxm::test::usb
