// The device-form parts on their own: bit fields, entry checks, the view toggle, the register
// panel's per-form rules and the collection loop's start, driven on the simulated board.
#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QTest>
#include <QWidget>

#include "acquisition/PictureBox.h"
#include "core/ActiveForm.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/parts/Collection.h"
#include "device/parts/Controls.h"
#include "device/parts/PaintPacer.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "support/DeviceFixture.h"

namespace lxm {
namespace {

using test::BoardFixture;
using test::kNotConnected;
using Kind = BitField::Kind;

TEST(BitFields, EachKindPutsItsValueIntoItsOwnBitsOnly) {
    const BitField sleep{1, 0x70, Kind::Index};
    EXPECT_EQ(sleep.Value(5, false), 0x50);
    EXPECT_EQ(sleep.Value(9, false), 0x10) << "an index wider than the field keeps to it";
    const BitField range{1, 0x02, Kind::Member, 0};
    EXPECT_EQ(range.Value(1, true), 0x02) << "set while the named member is selected";
    EXPECT_EQ(range.Value(0, false), 0x00);
    const BitField enable{1, 0x80, Kind::Check};
    EXPECT_EQ(enable.Value(0, true), 0x80);
    EXPECT_EQ(WithField(0xFF, 0x06, 0x02), 0xFB);
    EXPECT_EQ(WithField(0x00, 0x06, 0xFF), 0x06) << "bits outside the mask are not set";
}

TEST(HexEntries, OutOfRangeBecomesZeroAndCuttingComesFirst) {
    EXPECT_EQ(CheckedHexByte("3c", false), "3C");
    EXPECT_EQ(CheckedHexByte("1FF", false), "00");
    EXPECT_EQ(CheckedHexByte("1FF", true), "1F");
    EXPECT_EQ(CheckedHexByte("FFFF", false), "00") << "a 16-bit -1 is not a byte";
    EXPECT_EQ(CheckedHexByte("", true), "");
}

TEST(ViewToggle, FullViewBringsBackOnlyWhatItNames) {
    QWidget a, b, c;
    for (QWidget* w : {&a, &b, &c}) w->show();
    auto hidden = [&] { return std::vector<bool>{a.isHidden(), b.isHidden(), c.isHidden()}; };
    bool compact = ToggleView(false, {{&a, &b}, {&a}, {&c}});
    EXPECT_TRUE(compact);
    EXPECT_EQ(hidden(), (std::vector<bool>{true, true, false}));
    compact = ToggleView(compact, {{&a, &b}, {&a}, {&c}});
    EXPECT_FALSE(compact);
    EXPECT_EQ(hidden(), (std::vector<bool>{false, true, true}));
}

// A panel of twelve rows reporting on a bare form of its own.
class PanelRules : public ::testing::Test, protected BoardFixture {
protected:
    struct Host : QWidget, ActiveForm {
        RegisterPanel* panel = nullptr;
        ColorLabel fail;
        Shape attach, transfer;
        Shape* ShpAttach() override { return &attach; }
        Shape* Shp_USB_Transfer() override { return &transfer; }
        ColorLabel* LblCommTest() override { return &fail; }
        QRadioButton* OptMode(int) override { return nullptr; }
        QLineEdit* txtRegRd(int r) override { return panel->txtRegRd(r); }
        QLineEdit* txtRegHex(int r) override { return panel->txtRegHex(r); }
        Shape* ShpIndrd(int r) override { return panel->ShpIndrd(r); }
        Shape* ShpIndwr(int r) override { return panel->ShpIndwr(r); }
    };
    PanelRules() {
        board.Carry(sim::Chip::Lxm600);
        OpenSession();
        host.panel = new RegisterPanel(session, 12, {QStringLiteral("tip")}, &host);
        session.activeForm = &host;
        auto& r = host.panel->rules();
        r.activityRows = {8};
        r.flagLamps = {{0, 0x80, &lamp}};
        r.commTest = &host.fail;
        r.busyStatus = &status;
    }
    ~PanelRules() override { session.activeForm = nullptr; }
    Host host;
    Shape lamp;
    QLabel status;
};

TEST_F(PanelRules, DataRowsFlipAndOtherRowsJudgeTheEntry) {
    RegisterPanel& p = *host.panel;
    EXPECT_EQ(p.txtRegRd(11)->toolTip(), "tip") << "rows beyond the tips take the last one";
    p.txtRegHex(8)->setText("77");
    p.Read(8);
    const bool first = p.ShpIndrd(8)->hasFillIndex(10);
    p.Read(8);
    EXPECT_NE(p.ShpIndrd(8)->hasFillIndex(10), first) << "a data row flips, whatever the entry says";
    p.txtRegHex(0)->setText("00");
    p.Read(0);
    EXPECT_TRUE(p.ShpIndrd(0)->hasFillIndex(12)) << "register 0 reads A0, not the 00 entered";
    EXPECT_TRUE(lamp.hasFillIndex(12)) << "bit 7 of A0 lights the flag lamp";
    EXPECT_TRUE(host.fail.isHidden());
}

TEST_F(PanelRules, ABusyBusDefersAndSaysWhichWait) {
    RegisterPanel& p = *host.panel;
    session.TransferBusy = true;
    wire().clear();
    p.Read(3);
    EXPECT_EQ(status.text(), "Read_Reg Waiting");
    EXPECT_FALSE(p.ReadRows(8, 3, QStringLiteral("Rd_AD Waiting")).has_value());
    EXPECT_EQ(status.text(), "Rd_AD Waiting");
    EXPECT_TRUE(wire().empty());
    EXPECT_TRUE(session.TransferDeferred && session.PendingRead[3] && session.PendingRead[10]);
    session.TransferBusy = false;
    const auto bytes = p.ReadRows(8, 3);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(bytes->size(), 3u);
    EXPECT_TRUE(status.text().isEmpty());
}

TEST_F(PanelRules, ReadAllStopsAtTheFirstRowWithoutABoard) {
    int reads = 0;
    host.panel->onRead = [&](int) { ++reads; };
    host.panel->ReadAll();
    EXPECT_EQ(reads, 12);
    Unplug();
    reads = 0;
    host.panel->ReadAll();
    EXPECT_EQ(reads, 0);
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
}

TEST_F(PanelRules, TheCollectionLoopRefusesToStartWithoutABoard) {
    CollectionState st;
    PlotState plot;
    QLineEdit interval("5"), time1;
    QLabel count;
    PictureBox graph(QSize(405, 305));
    PacedCollection loop(session, st, plot, {&interval, &time1, &count, &graph, 12, nullptr});
    int started = 0;
    loop.hooks.start = [&] { ++started; };
    Unplug();
    loop.Run();
    EXPECT_EQ(started, 0);
    EXPECT_FALSE(session.Collecting);
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
}

// A collection at interval 0 changes the window several hundred times a second. The window
// is painted at most once a frame, and what changed last is on screen a frame later.
TEST(PaintPacer, PaintsAtMostOnceAFrameAndShowsTheLastChange) {
    struct Counting : QWidget {
        int paints = 0;
        int shown = -1, value = 0;
        void paintEvent(QPaintEvent*) override {
            ++paints;
            shown = value;
            QPainter(this).fillRect(rect(), Qt::white);
        }
    } window;
    window.resize(120, 80);
    new PaintPacer(&window);
    window.show();
    QTest::qWait(PaintPacer::kFrameMs * 2);
    const int before = window.paints;

    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < 160) {
        ++window.value;
        window.update();
        QCoreApplication::processEvents();
    }
    const qint64 ms = elapsed.elapsed();
    EXPECT_GT(window.value, 100) << "the loop must change the window far faster than frames come";
    EXPECT_LE(window.paints - before, ms / PaintPacer::kFrameMs + 2);
    EXPECT_GE(window.paints - before, 1);
    QTest::qWait(PaintPacer::kFrameMs * 3);
    EXPECT_EQ(window.shown, window.value) << "the last change is painted";
}

}  // namespace
}  // namespace lxm
