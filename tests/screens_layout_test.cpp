// The device form on a laptop screen: both views fit 1280 x 800, the chart grows with the
// window, and choosing a measurement or clearing the graph moves nothing under the pointer.
#include <gtest/gtest.h>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>

#include "acquisition/PictureBox.h"
#include "device/frmLXM410.h"
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

}  // namespace
}  // namespace lxm
