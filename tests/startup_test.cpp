// The start-up window: driver initialisation, the four lamps and the sensor-type selection.
#include <gtest/gtest.h>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/frmStartup.h"
#include "core/Shape.h"
#include "device/frmLXM410.h"
#include "support/DeviceFixture.h"
#include "transport/frmGPIO.h"

namespace lxm {
namespace {

using test::BoardFixture;

constexpr int kBlack = 0, kLightGreen = 10, kLightRed = 12;

class Startup : public ::testing::Test, protected BoardFixture {
protected:
    void Make(const QString& commandLine = {}) {
        startup = std::make_unique<frmStartup>(session, commandLine);
        startup->onExit = [this] { ++exits; };
        startup->show();
        startup->Form_Load();
    }
    void TearDown() override { startup.reset(); }
    std::unique_ptr<frmStartup> startup;
    int exits = 0;
};

TEST_F(Startup, LoadLightsInitAttachAndInfoAndOffersTheFiveEntries) {
    Make();
    EXPECT_EQ(startup->windowTitle(), "Velmarin ALS / Proximity Evaluation Software");
    EXPECT_TRUE(startup->Shp_USB_Init()->hasFillIndex(kLightGreen));
    EXPECT_TRUE(startup->ShpAttach()->hasFillIndex(kLightGreen));
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kLightGreen));
    EXPECT_TRUE(startup->Shp_USB_Transfer()->hasFillIndex(kBlack));
    QStringList items;
    for (int i = 0; i < startup->cboTypeSelect->count(); ++i) items << startup->cboTypeSelect->itemText(i);
    EXPECT_EQ(items, (QStringList{"ALS Type Selections", "LXM410 Adr 88", "LXM430 Adr 88", "LXM450 Adr 88",
                                  "LXM470 Adr 88"}));
    EXPECT_EQ(startup->cboTypeSelect->currentIndex(), 0);
    EXPECT_EQ(session.SelectedType, "");
    // Index 0 with the board there opens the session and loads the port-line panel, hidden.
    EXPECT_TRUE(session.SessionOpen);
    EXPECT_TRUE(session.HasGpioForm());
    EXPECT_TRUE(session.GpioForm().isHidden());
    EXPECT_EQ(startup->DeviceForm(), nullptr);
    EXPECT_TRUE(startup->Command3->isHidden());
    EXPECT_EQ(startup->Label2[0]->text(), "USB Init              Attach");
}

TEST_F(Startup, ChoosingATypeOpensTheDeviceFormAtTheDefaultAddress) {
    Make();
    session.I2cWriteAddr = 0x20;
    startup->cboTypeSelect->setCurrentIndex(2);
    ASSERT_NE(startup->DeviceForm(), nullptr);
    frmLXM410& f = *startup->DeviceForm();
    EXPECT_EQ(session.SelectedType, "LXM430");
    EXPECT_EQ(f.windowTitle(), "LXM430  Multi-Function  Sensor Evaluation Software");
    EXPECT_EQ(f.txtI2CADR->text(), "88");
    EXPECT_EQ(session.I2cWriteAddr, 0x88);
    EXPECT_EQ(session.I2cReadAddr, 0x89);
    EXPECT_TRUE(f.isVisible());
    EXPECT_TRUE(startup->isHidden());
    EXPECT_TRUE(session.GpioForm().isHidden());
    EXPECT_TRUE(session.SessionOpen);
    EXPECT_EQ(chip(1), 0x44) << "the form programmed the chip";
    EXPECT_TRUE(messages.texts.isEmpty());

    // A later selection resets an address the user changed.
    f.txtI2CADR->setText("90");
    f.txtI2CADR_LostFocus();
    startup->cboTypeSelect->setCurrentIndex(1);
    EXPECT_EQ(session.SelectedType, "LXM410");
    EXPECT_EQ(f.txtI2CADR->text(), "88");
    EXPECT_EQ(session.I2cReadAddr, 0x89);
}

TEST_F(Startup, ChoosingATypeWithoutABoardSaysSoAndOpensNothing) {
    driver.Unplug();
    Pump();
    Make();
    messages.clear();
    EXPECT_TRUE(startup->ShpAttach()->hasFillIndex(kLightRed));
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kLightRed));
    startup->cboTypeSelect->setCurrentIndex(3);
    EXPECT_EQ(messages.texts,
              QStringList{"Evaluation Board is not connected, or another application is using it."});
    EXPECT_EQ(startup->cboTypeSelect->currentIndex(), 0);
    EXPECT_FALSE(session.SessionOpen);
    EXPECT_EQ(startup->DeviceForm(), nullptr);
    EXPECT_FALSE(session.HasGpioForm());
}

TEST_F(Startup, SlashDOnlySkipsTheSecondHideOfThePanel) {
    Make("/d");
    startup->cboTypeSelect->setCurrentIndex(1);
    ASSERT_NE(startup->DeviceForm(), nullptr);
    EXPECT_TRUE(session.GpioForm().isHidden()) << "the panel was loaded hidden in the first place";
    EXPECT_EQ(session.SelectedType, "LXM410");
}

TEST_F(Startup, CloseUsbShowsInitTableWhichRegistersAgain) {
    Make();
    startup->Command2->click();
    EXPECT_FALSE(startup->Command3->isHidden());
    EXPECT_EQ(driver.registrations(), 0);
    EXPECT_FALSE(session.DeviceOpen);
    // Without a registration a re-plugged board goes unnoticed: the program still holds the
    // handle of the board that went away...
    driver.Unplug();
    Pump();
    driver.Plug();
    Pump();
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_NE(session.usb().attachContext.deviceHandle, driver.currentHandle());
    // ...until "Init Table" registers again and the attach hands over the new one.
    startup->Command3->click();
    EXPECT_EQ(driver.registrations(), 1);
    EXPECT_TRUE(session.UsbConnected);
    EXPECT_EQ(session.usb().attachContext.deviceHandle, driver.currentHandle());
    startup->Command1->click();
    EXPECT_TRUE(session.DeviceOpen);
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kLightGreen));
}

TEST_F(Startup, ExitReleasesTheBoardAndEndsTheProgram) {
    Make();
    startup->ExitProgram();
    EXPECT_EQ(exits, 1);
    EXPECT_EQ(session.usb().driverHandle, 0u);
    EXPECT_EQ(driver.registrations(), 0);
}

}  // namespace
}  // namespace lxm
