// Reaching a sensor from the start-up window other than through the type list: the menu item of
// the multi-function sensor and selection by name.
#include <gtest/gtest.h>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>

#include "app/frmStartup.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/RegisterPanel.h"
#include "support/DeviceFixture.h"
#include "transport/frmGPIO.h"

namespace lxm {
namespace {

using test::BoardFixture;

class SensorChoice : public ::testing::Test, protected BoardFixture {
protected:
    void Make() {
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->onTypeSelected = [this](const std::string& t) { told.push_back(t); };
        startup->show();
        startup->Form_Load();
    }
    void TearDown() override { startup.reset(); }
    std::unique_ptr<frmStartup> startup;
    std::vector<std::string> told;
};

TEST_F(SensorChoice, TheMenuItemSelectsTheMultiFunctionSensorLikeAListChoice) {
    Make();
    session.I2cWriteAddr = 0x20;
    startup->mnuLXM600->trigger();
    frmLXM600* f = startup->MultiFunctionForm();
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(session.SelectedType, "LXM600");
    EXPECT_EQ(told, std::vector<std::string>{"LXM600"});
    // The steps it shares with a list choice (address, session, hidden port-line window) are
    // the start-up test's; here that they ran for this form.
    EXPECT_EQ(f->panel().txtI2CADR()->text(), "88");
    EXPECT_TRUE(f->isVisible());
    EXPECT_TRUE(startup->isHidden());
    EXPECT_EQ(session.activeForm, f);
    EXPECT_EQ(startup->DeviceForm(), nullptr);
    EXPECT_EQ(startup->cboTypeSelect->count(), 5) << "the list keeps its five entries";
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(SensorChoice, SelectionByNameTakesTheSameStepsAsTheUser) {
    Make();
    EXPECT_FALSE(startup->SelectSensor("LXM999"));
    EXPECT_FALSE(startup->SelectSensor(""));
    EXPECT_EQ(startup->DeviceForm(), nullptr);
    ASSERT_TRUE(startup->SelectSensor("LXM450"));
    EXPECT_EQ(startup->cboTypeSelect->currentIndex(), 3);
    ASSERT_NE(startup->DeviceForm(), nullptr);
    EXPECT_EQ(startup->DeviceForm()->windowTitle(), "LXM450  Proximity / IR   Sensor Evaluation Software");
    ASSERT_TRUE(startup->SelectSensor("LXM600"));
    ASSERT_NE(startup->MultiFunctionForm(), nullptr);
    EXPECT_EQ(session.SelectedType, "LXM600");
    EXPECT_EQ(told, (std::vector<std::string>{"LXM450", "LXM600"}));
}

}  // namespace
}  // namespace lxm
