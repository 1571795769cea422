// The whole program above the driver — start-up window, type selection, the family form and its
// collection loop — on the real libusb backend with the emulated board on an emulated USB bus.
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "usb_e2e/ProgramFixture.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

TEST_F(ProgramOnEmulatedBus, TypeSelectionProgramsTheChipAndReadAllShowsIt) {
    EXPECT_TRUE(startup->Shp_USB_Init()->hasFillIndex(kOk));
    EXPECT_TRUE(startup->ShpAttach()->hasFillIndex(kOk));
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kOk));

    frmLXM410& form = Select(1);
    EXPECT_EQ(form.windowTitle(), "LXM410  Multi-Function  Sensor Evaluation Software");
    EXPECT_EQ(Chip(1), 0x44);

    form.txtRegHex(8)->setText("5C");
    form.cmdWrtReg[8]->click();
    form.cmdReadAllRegs->click();
    EXPECT_EQ(form.txtRegRd(1)->text(), "44");
    EXPECT_EQ(form.txtRegRd(8)->text(), "5C");
    EXPECT_TRUE(form.LblCommTest()->isHidden()) << "every read was acknowledged";
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(ProgramOnEmulatedBus, UnplugDuringCollectionEndsTheRunOnceAndInitTableRecovers) {
    frmLXM410& form = Select(1);
    form.OptMeasure.at(6)->click();  // IR continuous
    int passes = 0;
    form.onPass = [&] {
        bus.AdvanceBoardMs(8);
        if (++passes == 6) bus.UnplugDuringUrb(1);
        if (passes == 50) form.cmdStopData_Click();  // the unplug went unnoticed: fail, don't hang
    };
    form.cmdCollectData->click();  // returns when the run has ended
    EXPECT_FALSE(session->Collecting);
    EXPECT_LT(passes, 50) << "the run must end when the board goes";
    EXPECT_GE(form.SampleCount, 6) << "the samples taken before the cable went are kept";
    YieldUntil([&] { return messages.count(kDisconnected) > 0; }, 2000);
    YieldUntil([] { return false; }, 50);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_EQ(form.cmdCollectData->text(), "Start");
    EXPECT_FALSE(session->TransferBusy);

    // Re-plug, then what the disconnect message asks for: "Init Table", "Open USB", rewrite.
    form.onPass = nullptr;
    bus.Plug();
    ASSERT_TRUE(WaitForLibusb(driver->context()));
    startup->Command3_Click();
    startup->Command1_Click();
    ASSERT_TRUE(session->UsbConnected);
    form.txtRegHex(1)->setText("44");
    form.cmdWrtReg[1]->click();
    form.cmdRDReg[1]->click();
    EXPECT_EQ(form.txtRegRd(1)->text(), "44");
    EXPECT_EQ(Chip(1), 0x44);
}

}  // namespace
}  // namespace lxm::test::usb
