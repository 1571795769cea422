// Windows that tell the truth and stay on screen: the GPIO window following the port-line image
// and the link, its rows lined up, the start-up window's no-board hint, and where the simulated
// board's window goes.
#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <memory>

#include "app/WindowPlacement.h"
#include "app/frmStartup.h"
#include "core/Shape.h"
#include "device/frmLXM410.h"
#include "device_form_fixture.h"
#include "support/DeviceFixture.h"
#include "transport/frmGPIO.h"

namespace lxm {
namespace {

constexpr int kBlack = 0, kLightGreen = 10, kLightRed = 12;

class GpioWindow : public test::FormFixture {
protected:
    frmGPIO& Gpio() { return session.GpioForm(); }
};

TEST_F(GpioWindow, FollowsTheImageTheDeviceFormWrites) {
    form->mnuGPIO_Click();
    ASSERT_TRUE(Gpio().isVisible());
    // "Test Comm" toggles the enables of PB0 and PB1 through the window's own boxes...
    form->OptMode_Click(2);
    EXPECT_EQ(Gpio().txtPCHex[0]->text(), "03");
    // ...and the external LED then sets the enables outright.
    form->ChKLed->click();
    ASSERT_EQ(session.GpioImage[0], 0x40);
    EXPECT_EQ(Gpio().txtPCHex[0]->text(), "40");
    EXPECT_EQ(Gpio().txtPCHexData[0]->text(), "40");
    EXPECT_FALSE(Gpio().chkOutEn.at(0)->isChecked());
    EXPECT_FALSE(Gpio().chkOutEn.at(1)->isChecked());
    EXPECT_TRUE(Gpio().chkOutEn.at(6)->isChecked());
    EXPECT_TRUE(Gpio().ChkBData.at(6)->isChecked());
    EXPECT_EQ(Gpio().txtPCHex[1]->text(), "40") << "and the board reads back what was sent";

    // A change made while the window is closed shows when it opens again.
    Gpio().hide();
    form->ChKLed->click();
    session.GpioImage[3] = 0x20;
    form->mnuGPIO_Click();
    EXPECT_EQ(Gpio().txtPCHexData[0]->text(), "00");
    EXPECT_TRUE(Gpio().ChKLedData.at(5)->isChecked());
    EXPECT_TRUE(Gpio().ChkCData.at(5)->isChecked());
}

TEST_F(GpioWindow, ItsLampsShowTheLinkWhileAnotherFormIsActive) {
    form->mnuGPIO_Click();
    session.activeForm = form.get();
    form->ChKLed->click();
    EXPECT_TRUE(Gpio().ShpAttach()->hasFillIndex(kLightGreen));
    EXPECT_TRUE(Gpio().Shp_USB_Info->hasFillIndex(kLightGreen));
    EXPECT_TRUE(Gpio().Shp_USB_Transfer()->hasFillIndex(kLightGreen));

    driver.Unplug();
    EXPECT_TRUE(QTest::qWaitFor([&] { return Gpio().ShpAttach()->hasFillIndex(kLightRed); }, 2000));
    EXPECT_TRUE(Gpio().Shp_USB_Info->hasFillIndex(kBlack));
    EXPECT_TRUE(Gpio().Shp_USB_Transfer()->hasFillIndex(kBlack));
    EXPECT_EQ(messages.count("Device has been disconnected, reconnect and re-initialize all registers"), 1);
}

TEST_F(GpioWindow, WhileActiveItsLampsReportItsOwnTransfers) {
    form->mnuGPIO_Click();
    Gpio().Form_GotFocus();
    driver.TimeOutNext(2);
    Gpio().cmdGPIO_Write_Click();
    EXPECT_TRUE(Gpio().ShpAttach()->hasFillIndex(kLightRed)) << "the failed transfer, not the link";
}

TEST_F(GpioWindow, UsageNamesLineUpWithTheirCheckBoxRows) {
    frmGPIO& g = Gpio();
    g.show();
    auto centre = [&g](QWidget* w) { return w->mapTo(&g, w->rect().center()).y(); };
    auto check = [&] {
        for (int row = 0; row < 12; ++row) {
            const bool portB = row < 8;
            const int bit = portB ? 7 - row : 15 - row;
            QCheckBox* en = portB ? g.chkOutEn.at(bit) : g.chkOutEnc.at(bit);
            QCheckBox* data = portB ? g.ChkBData.at(bit) : g.ChkCData.at(bit);
            const int y = centre(g.txtGPIOUserName.at(row));
            EXPECT_NEAR(centre(en), y, 1) << "row " << row;
            EXPECT_NEAR(centre(data), y, 1) << "row " << row;
        }
    };
    check();
    g.resize(g.width() + 100, g.height() + 200);
    QCoreApplication::processEvents();
    check();
}

TEST(PlaceBeside, BesideTheOthersAndWhollyOnTheScreen) {
    const QRect screen(0, 0, 1366, 740);
    const QSize panel(410, 430);
    // Beside the start-up window in the middle of the screen.
    const QRect startup(508, 265, 350, 240);
    const QRect placed(PlaceBeside(screen, panel, {startup}), panel);
    EXPECT_TRUE(screen.contains(placed));
    EXPECT_FALSE(placed.intersects(startup));
    EXPECT_EQ(placed.topLeft(), QPoint(866, 265)) << "to its right first";

    // A start-up window at the right edge: to its left instead.
    const QRect right(1000, 0, 350, 240);
    const QRect left(PlaceBeside(screen, panel, {right}), panel);
    EXPECT_TRUE(screen.contains(left));
    EXPECT_FALSE(left.intersects(right));

    // Two windows: clear of both.
    const QRect form(0, 0, 900, 700);
    const QRect both(PlaceBeside(screen, panel, {form, startup}), panel);
    EXPECT_TRUE(screen.contains(both));
    EXPECT_FALSE(both.intersects(form));
    EXPECT_FALSE(both.intersects(startup));
}

TEST(PlaceBeside, WithNoFreePlaceItCoversTheLeastAndKeepsItsTitleBarOnScreen) {
    const QRect screen(0, 0, 1920, 1050);
    const QRect form(0, 0, 1600, 900);
    const QRect placed(PlaceBeside(screen, QSize(410, 430), {form}), QSize(410, 430));
    EXPECT_TRUE(screen.contains(placed));
    EXPECT_EQ(placed.topLeft(), QPoint(1510, 620)) << "47 x 280 of the form covered, the least there is";

    const QPoint huge = PlaceBeside(screen, QSize(2500, 1200), {form});
    EXPECT_EQ(huge, screen.topLeft());
}

class StartupHint : public ::testing::Test, protected test::BoardFixture {
protected:
    void TearDown() override { startup.reset(); }
    std::unique_ptr<frmStartup> startup;
};

TEST_F(StartupHint, ShownUnderTheLampsWhileNoBoardIsThere) {
    driver.Unplug();
    startup = std::make_unique<frmStartup>(session, QString());
    startup->onExit = [] {};
    startup->show();
    startup->Form_Load();
    EXPECT_TRUE(startup->lblNoBoard->isVisible());
    EXPECT_GT(startup->lblNoBoard->y(), startup->Shp_USB_Info()->mapTo(startup.get(), QPoint(0, 0)).y());
    EXPECT_TRUE(startup->lblNoBoard->text().contains("--simulate"));
    EXPECT_FALSE(startup->lblNoBoard->wordWrap()) << "one line";
    // The choice itself still answers with the message, as before.
    startup->cboTypeSelect->setCurrentIndex(1);
    EXPECT_EQ(messages.count("Evaluation Board is not connected, or another application is using it."), 1);

    // Plugged in later, the hint goes by itself.
    driver.Plug();
    EXPECT_TRUE(QTest::qWaitFor([&] { return startup->lblNoBoard->isHidden(); }, 2000));
}

TEST_F(StartupHint, NotShownWithTheBoardThere) {
    startup = std::make_unique<frmStartup>(session, QString());
    startup->onExit = [] {};
    startup->show();
    startup->Form_Load();
    EXPECT_TRUE(startup->lblNoBoard->isHidden());
}

}  // namespace
}  // namespace lxm
