// Board > Reconnect on the real libusb backend: the emulated board is unplugged and plugged in
// again on the emulated bus, and the device form brings the chip back without a restart.
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "usb_e2e/ProgramFixture.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

class ReconnectOnEmulatedBus : public ProgramOnEmulatedBus {
protected:
    void SetUp() override {
        ProgramOnEmulatedBus::SetUp();
        startup->cboTypeSelect->setCurrentIndex(1);
        form = startup->DeviceForm();
        ASSERT_NE(form, nullptr);
    }
    void Write(int reg, const char* hex) {
        form->txtRegHex(reg)->setText(QString::fromLatin1(hex));
        form->cmdWrtReg[reg]->click();
    }

    frmLXM410* form = nullptr;
};

TEST_F(ReconnectOnEmulatedBus, AfterAReplugTheImageIsWrittenBackAndReadsAreRight) {
    form->OptGain.at(3)->click();
    Write(4, "A7");
    Write(7, "5C");
    const auto image = session->RegWriteMirror;
    ASSERT_EQ(Chip(7), 0x5C);

    bus.Unplug();
    ASSERT_TRUE(YieldUntil([&] { return messages.count(kDisconnected) > 0; }, 2000));
    bus.Plug();
    ASSERT_TRUE(WaitForLibusb(driver->context()));
    YieldUntil([] { return false; }, 50);
    // The state the issue describes: a board that is back but not reconnected reads nothing.
    ASSERT_NE(Chip(7), 0x5C) << "the board came back powered up afresh";

    messages.clear();
    form->boardMenu->mnuReconnect->trigger();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
    EXPECT_TRUE(session->UsbConnected);
    for (int r : {0, 1, 4, 7}) {
        EXPECT_EQ(Chip(r), image[r]) << "register " << r;
        EXPECT_EQ(form->txtRegRd(r)->text(), form->txtRegHex(r)->text()) << "register " << r;
    }
    EXPECT_EQ(form->txtRegRd(7)->text(), "5C");
    EXPECT_TRUE(form->LblCommTest()->isHidden()) << "every read acknowledged";
    EXPECT_TRUE(form->ShpAttach()->hasFillIndex(kOk));
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kOk));

    // And the board keeps answering afterwards.
    Write(5, "3C");
    form->cmdRDReg[5]->click();
    EXPECT_EQ(form->txtRegRd(5)->text(), "3C");
}

}  // namespace
}  // namespace lxm::test::usb
