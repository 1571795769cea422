// Board > Reconnect on the real libusb backend: the emulated board is unplugged and plugged in
// again on the emulated bus, and the device form brings the chip back without a restart.
#include <gtest/gtest.h>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <memory>

#include "app/frmStartup.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/frmLXM410.h"
#include "support/FakeClock.h"
#include "support/RecordingSeams.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"
#include "transport/libusb/LibusbDriver.h"
#include "usb_e2e/EmulatedBoard.h"
#include "usb_e2e/Yielding.h"

namespace lxm::test::usb {
namespace {

constexpr int kOk = 10;
const QString kDisconnected =
    QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers");

class ReconnectOnEmulatedBus : public ::testing::Test {
protected:
    void SetUp() override {
        bus.Plug();
        driver = std::make_unique<lxm::usb::LibusbDriver>();
        session = std::make_unique<Session>(*driver, messages, files, clock);
        session->comm().timeoutMs = 100;
        session->usb().openWaitYields = 200;
        startup = std::make_unique<frmStartup>(*session, QString());
        startup->onExit = [] {};
        startup->show();
        startup->Form_Load();
        startup->cboTypeSelect->setCurrentIndex(1);
        form = startup->DeviceForm();
        ASSERT_NE(form, nullptr);
    }
    void TearDown() override {
        startup.reset();
        session.reset();
        driver.reset();
    }
    std::uint8_t Chip(int reg) {
        return bus.WithBoard([reg](sim::SimBoard& b) { return b.sensor().Peek(std::uint8_t(reg)); });
    }
    void Write(int reg, const char* hex) {
        form->txtRegHex(reg)->setText(QString::fromLatin1(hex));
        form->cmdWrtReg[reg]->click();
    }

    EmulatedBoard bus;  // before libusb comes up, gone after it
    FakeClock clock;
    RecordingMessages messages;
    ScriptedFileDialogs files;
    std::unique_ptr<lxm::usb::LibusbDriver> driver;
    std::unique_ptr<Session> session;
    std::unique_ptr<frmStartup> startup;
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
