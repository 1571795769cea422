// The device form's Board menu: the start-up window's steps, and Reconnect after an unplug on
// the simulated board.
#include <gtest/gtest.h>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

#include <memory>

#include "app/frmStartup.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/BoardMenu.h"
#include "device/frmLXM410.h"
#include "device_form_fixture.h"
#include "support/DeviceFixture.h"

namespace lxm {
namespace {

constexpr int kLightGreen = 10;
const QString kDisconnected =
    QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers");

class Reconnect : public test::FormFixture {
protected:
    // The chip as the user left it: a measurement, a range and two thresholds.
    void Configure() {
        Measure(5);  // ALS continuous
        form->OptGain.at(2)->click();
        form->txtRegHex(4)->setText("A7");
        form->cmdWrtReg[4]->click();
        form->txtRegHex(7)->setText("5C");
        form->cmdWrtReg[7]->click();
    }
    void Replug() {
        driver.Unplug();
        Pump();
        driver.Plug();
        Pump();
    }
};

TEST_F(Reconnect, WritesTheImageBackAndReadsShowTheChip) {
    Configure();
    const auto image = session.RegWriteMirror;
    Replug();
    ASSERT_EQ(messages.count(kDisconnected), 1);
    ASSERT_NE(chip(7), 0x5C) << "the board came back at its defaults";

    messages.clear();
    form->boardMenu->mnuReconnect->trigger();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
    for (int r : {0, 1, 4, 7}) {
        EXPECT_EQ(chip(r), image[r]) << "register " << r;
        EXPECT_EQ(form->txtRegRd(r)->text(), form->txtRegHex(r)->text()) << "register " << r;
        EXPECT_FALSE(form->ShpIndrd(r)->hasFillIndex(12)) << "register " << r;
    }
    EXPECT_EQ(form->txtRegRd(7)->text(), "5C");
    EXPECT_TRUE(form->LblCommTest()->isHidden()) << "every read acknowledged";
    EXPECT_TRUE(form->ShpAttach()->hasFillIndex(kLightGreen));
    // A single read now gives a real measurement, not the dead board's zeros.
    scene().ambientLux = 500;
    Settle();
    form->cmdRead_ADC->click();
    EXPECT_NE(form->txtRegRd(2)->text() + form->txtRegRd(3)->text(), "0000");
}

TEST_F(Reconnect, DataRegistersAreNotWrittenAndTheCommandGoesLast) {
    Configure();
    Replug();
    const std::size_t from = wire().size();
    form->boardMenu->mnuReconnect_Click();
    std::vector<int> order;
    for (std::size_t i = from; i < wire().size(); ++i) {
        const auto& p = wire()[i];
        if (p.dir == sim::WireDir::Out && p.endpoint == 0x02 && p.bytes.size() == 4 && p.bytes[0] == 0)
            order.push_back(p.bytes[2]);
    }
    EXPECT_EQ(order, (std::vector<int>{1, 4, 5, 6, 7, 8, 0}));
}

TEST_F(Reconnect, WithoutTheBoardSaysSoOnce) {
    driver.Unplug();
    Pump();
    messages.clear();
    form->boardMenu->mnuReconnect_Click();
    ASSERT_EQ(messages.texts.size(), 1) << messages.texts.join(" | ").toStdString();
    EXPECT_TRUE(messages.texts.front().contains("Reconnect again"));
}

TEST_F(Reconnect, TheStepsAreTheOnesHandedIn) {
    std::vector<std::string> ran;
    form->boardMenu->SetSteps(
        {[&] { ran.push_back("init"); }, [&] { ran.push_back("open"); }, [&] { ran.push_back("close"); }});
    form->boardMenu->mnuCloseUsb->trigger();
    form->boardMenu->mnuInitTable->trigger();
    form->boardMenu->mnuOpenUsb->trigger();
    EXPECT_EQ(ran, (std::vector<std::string>{"close", "init", "open"}));
    ran.clear();
    form->boardMenu->mnuReconnect->trigger();
    EXPECT_EQ(ran, (std::vector<std::string>{"init", "open"}));
}

class BoardMenuFromStartup : public ::testing::Test, protected test::BoardFixture {
protected:
    void SetUp() override {
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->show();
        startup->Form_Load();
        startup->cboTypeSelect->setCurrentIndex(1);
        form = startup->DeviceForm();
        ASSERT_NE(form, nullptr);
    }
    void TearDown() override { startup.reset(); }
    std::unique_ptr<frmStartup> startup;
    frmLXM410* form = nullptr;
};

TEST_F(BoardMenuFromStartup, TheDeviceFormOffersTheStartupStepsAndRunsThem) {
    QStringList items;
    for (QAction* a : form->boardMenu->mnuBoard->actions())
        if (!a->isSeparator()) items << a->text();
    EXPECT_EQ(items, (QStringList{"Init Table", "Open USB", "Close USB", "Reconnect", "Choose Board",
                               "New Window on Another Board"}));
    EXPECT_EQ(form->boardMenu->mnuBoard->menuAction()->text(), "Board");

    // "Close USB" is the start-up window's: it brings "Init Table" out there.
    ASSERT_TRUE(startup->Command3->isHidden());
    form->boardMenu->mnuCloseUsb->trigger();
    EXPECT_FALSE(startup->Command3->isHidden());
    EXPECT_EQ(session.activeForm, form) << "the device form stays the one its lamps report on";

    // After an unplug and a re-plug, Reconnect through those same steps brings reads back.
    form->txtRegHex(8)->setText("3C");
    form->cmdWrtReg[8]->click();
    driver.Unplug();
    Pump();
    driver.Plug();
    Pump();
    form->boardMenu->mnuReconnect->trigger();
    EXPECT_EQ(chip(8), 0x3C);
    EXPECT_EQ(form->txtRegRd(8)->text(), "3C");
    EXPECT_TRUE(startup->Shp_USB_Info()->hasFillIndex(kLightGreen));
}

}  // namespace
}  // namespace lxm
