// The device form on a laptop screen: both views fit 1280 x 800, the chart grows with the
// window, and choosing a measurement, clearing the graph or starting a run moves nothing under
// the pointer.
#include <gtest/gtest.h>
#include <QAction>
#include <QCheckBox>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>

#include "acquisition/PictureBox.h"
#include "device/BoardMenu.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/StripChart.h"
#include "device_form_fixture.h"

namespace lxm {
namespace {

// 1280 x 800 less a window frame and title bar.
constexpr QSize kLaptop(1280 - 8, 800 - 34);

class Layout : public test::FormFixture {
protected:
    explicit Layout(const char* type = "LXM410") : FormFixture(type) {}
    void FullView() {
        if (form->CompactView) form->Label13_DblClick();
    }
    QScrollArea* Controls() { return form->findChild<QScrollArea*>(); }
};

TEST_F(Layout, BothViewsFitALaptopScreenWithoutScrolling) {
    for (const char* type : {"LXM410", "LXM430", "LXM450", "LXM470"}) {
        session.SelectedType = type;
        auto f = std::make_unique<frmLXM410>(session);
        f->Form_Load();
        for (int view = 0; view < 2; ++view) {
            const QSize min = f->minimumSizeHint();
            EXPECT_LE(min.width(), kLaptop.width()) << type << (f->CompactView ? " compact" : " full");
            EXPECT_LE(min.height(), kLaptop.height()) << type << (f->CompactView ? " compact" : " full");
            f->resize(kLaptop);
            f->show();
            QCoreApplication::processEvents();
            auto* area = f->findChild<QScrollArea*>();
            EXPECT_FALSE(area->horizontalScrollBar()->isVisible()) << type << " view " << view;
            EXPECT_FALSE(area->verticalScrollBar()->isVisible()) << type << " view " << view;
            f->Label13_DblClick();
        }
        f->hide();
    }
}

TEST_F(Layout, TheChartGrowsWithTheWindow) {
    FullView();
    form->resize(kLaptop);
    form->show();
    QCoreApplication::processEvents();
    EXPECT_EQ(form->chart().Picture2->DisplayScale(), 1.0);
    const QSize small = form->chart().Picture1->size();
    form->resize(1920 - 8, 1080 - 34);
    QCoreApplication::processEvents();
    EXPECT_GE(form->chart().Picture2->DisplayScale(), 1.5);
    EXPECT_GT(form->chart().Picture1->width(), small.width() * 1.4);
    EXPECT_EQ(form->chart().Picture1->ScaleWidth(), 405) << "the trace keeps its columns";
}

TEST_F(Layout, ChoosingAMeasurementOrClearingTheGraphMovesNothingUnderThePointer) {
    FullView();
    form->resize(kLaptop);
    form->show();
    QCoreApplication::processEvents();
    auto where = [this] {
        std::vector<QRect> places;
        for (QWidget* w : std::initializer_list<QWidget*>{
                 form->cmdCollectData, form->cmdStopData, form->chart().cmdRestoreScreen,
                 form->chart().cmdScale, form->OptMeasure.at(7), form->chart().Picture1})
            places.emplace_back(w->mapTo(form.get(), QPoint(0, 0)), w->size());
        places.emplace_back(QPoint(0, 0), form->size());
        return places;
    };
    const auto before = where();
    for (int m : {1, 4, 5, 2, 4, 6, 1}) {
        form->OptMeasure.at(m)->click();
        QCoreApplication::processEvents();
        EXPECT_EQ(where(), before) << "after choosing measurement " << m;
    }
    form->chart().cmdRestoreScreen->click();
    QCoreApplication::processEvents();
    EXPECT_EQ(where(), before) << "after Clear Graph";
}

// Where the controls a user reaches for during a run are, in window coordinates, and whether
// the form scrolls.
std::vector<QRect> Places(QWidget* form, std::initializer_list<QWidget*> widgets) {
    std::vector<QRect> places;
    for (QWidget* w : widgets) places.emplace_back(w->mapTo(form, QPoint(0, 0)), w->size());
    auto* area = form->findChild<QScrollArea*>();
    places.emplace_back(area->horizontalScrollBar()->isVisible(), area->verticalScrollBar()->isVisible(), 0,
                        0);
    return places;
}

// Start and the status line change their captions when a run starts; the window must not
// widen, scroll or shift under the pointer on its way to Stop.
TEST_F(Layout, StartingAndStoppingARunMovesNothingUnderThePointer) {
    FullView();
    form->resize(kLaptop);
    form->show();
    form->OptMeasure.at(5)->click();  // ALS continuous, in lux
    QCoreApplication::processEvents();
    auto where = [this] {
        return Places(form.get(), {form->cmdCollectData, form->cmdStopData, form->ChkSampleInt,
                                   form->chart().Picture1, form->FrmMeasureDetails->cmdClearHist});
    };
    const auto before = where();
    std::vector<QRect> during;
    Collect([&](int pass) {
        QCoreApplication::processEvents();
        if (pass == 3) during = where();
        return pass < 3;
    });
    EXPECT_EQ(during, before) << "during the run";
    QCoreApplication::processEvents();
    EXPECT_EQ(where(), before) << "after Stop";
}

using MultiFunctionLayout = test::Lxm600FormFixture;

TEST_F(MultiFunctionLayout, BothViewsFitALaptopScreenWithoutScrollingAndTheChartGrows) {
    for (int view = 0; view < 2; ++view) {
        const char* name = form->CompactView ? "compact" : "full";
        const QSize min = form->minimumSizeHint();
        EXPECT_LE(min.width(), kLaptop.width()) << name;
        EXPECT_LE(min.height(), kLaptop.height()) << name;
        form->resize(kLaptop);
        form->show();
        QCoreApplication::processEvents();
        auto* area = form->findChild<QScrollArea*>();
        EXPECT_FALSE(area->horizontalScrollBar()->isVisible()) << name;
        EXPECT_FALSE(area->verticalScrollBar()->isVisible()) << name;
        form->Label13_DblClick();
    }
    const int small = form->chart().Picture1->width();
    form->resize(1920 - 8, 1080 - 34);
    QCoreApplication::processEvents();
    EXPECT_GT(form->chart().Picture1->width(), small * 1.4);
}

TEST_F(MultiFunctionLayout, CarriesTheBoardMenuToo) {
    ASSERT_NE(form->boardMenu, nullptr);
    EXPECT_EQ(form->boardMenu->mnuBoard->menuAction()->text(), "Board");
    form->txtRegHex(3)->setText("2A");
    form->cmdWrtReg_Click(3);
    driver.Unplug();
    Pump();
    driver.Plug();
    Pump();
    ASSERT_NE(chip(3), 0x2A);
    messages.clear();
    form->boardMenu->mnuReconnect_Click();
    EXPECT_EQ(chip(3), 0x2A);
    EXPECT_EQ(form->txtRegRd(3)->text(), "2A");
    EXPECT_EQ(messages.count("USB is not Connected"), 0);
}

TEST_F(MultiFunctionLayout, StartingAndStoppingARunMovesNothingUnderThePointer) {
    form->resize(kLaptop);
    form->show();
    form->chkALSEnable->click();
    form->OptGraph.at(1)->click();
    QCoreApplication::processEvents();
    auto where = [this] {
        return Places(form.get(),
                      {form->cmdCollectData, form->cmdStopData, form->cmdAbort, form->chart().Picture1,
                       form->chkALSEnable, form->FrmMeasureDetails->cmdClearHist});
    };
    const auto before = where();
    std::vector<QRect> during;
    int passes = 0;
    form->collection().onPass = [&] {
        QCoreApplication::processEvents();
        if (++passes == 3) {
            during = where();
            form->cmdStopData_Click();
        }
    };
    form->cmdCollectData_Click();
    form->collection().onPass = nullptr;
    EXPECT_EQ(during, before) << "during the run";
    QCoreApplication::processEvents();
    EXPECT_EQ(where(), before) << "after Stop";
}

}  // namespace
}  // namespace lxm
