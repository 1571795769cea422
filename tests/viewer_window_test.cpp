// The run viewer as a user meets it: two runs in one window, zoom and reset, a span, a shift,
// the pictures; and the built program drawing a picture without a display.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

#include "core/MenuBar.h"
#include "support/RecordingSeams.h"
#include "viewer/RunPlot.h"
#include "viewer/RunViewer.h"
#include "viewer/ViewerMenu.h"

using namespace lxm;

namespace {

QString Write(const QTemporaryDir& dir, const QString& name, const QByteArray& text) {
    const QString path = dir.filePath(name);
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text);
    return path;
}

// A run of `n` rows 10 ms apart that steps from `low` to `high` at `stepAt` seconds.
QByteArray StepLog(int n, double stepAt, double low, double high, const char* extra = "") {
    QByteArray t = "# sensor: LXM410\r\n# range: 1000 lux\r\ntime,seconds,sample,raw,value,unit,status\r\n";
    for (int i = 0; i < n; ++i) {
        const double s = i * 0.01;
        t += "T," + QByteArray::number(s) + "," + QByteArray::number(i + 1) + ",1," +
             QByteArray::number(s < stepAt ? low : high) + ",lux,ok\r\n";
    }
    return t + extra;
}

QString Cell(viewer::RunViewer& w, int row, int col) {
    const QTableWidgetItem* item = w.statsTable().item(row, col);
    return item ? item->text() : QString();
}

}  // namespace

TEST(RunViewerWindow, OverlaysZoomsSumsUpAndExports) {
    QTemporaryDir dir;
    const QString a = Write(dir, "a.csv", StepLog(1000, 4, 100, 200));
    const QString b = Write(dir, "b.csv", StepLog(250, 2, 10, 20, "T,9,1,1,abc,lux,ok\r\n"));
    test::RecordingMessages messages;
    test::ScriptedFileDialogs files;
    viewer::RunViewer w(messages, files);
    w.setAttribute(Qt::WA_DeleteOnClose, false);
    w.show();
    w.OpenFiles({a, b});

    // One message for the one damaged file, naming its first unreadable line.
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains(b)) << messages.texts[0].toStdString();
    EXPECT_TRUE(messages.texts[0].contains(QStringLiteral("line 254"))) << messages.texts[0].toStdString();
    ASSERT_EQ(w.plot().RunCount(), 2);
    EXPECT_EQ(w.plot().ValueLabel(), QStringLiteral("value (lux)"));
    EXPECT_EQ(Cell(w, 0, 1), QStringLiteral("1000"));
    EXPECT_EQ(Cell(w, 1, 1), QStringLiteral("250"));

    // A zoom into the low part of run a: the statistics follow the visible span.
    w.plot().xAxis->setRange(0, 1.995);
    w.plot().replot();
    QTest::qWait(100);
    EXPECT_EQ(Cell(w, 0, 1), QStringLiteral("200"));
    EXPECT_EQ(Cell(w, 0, 6), QStringLiteral("0"));
    w.ResetView();
    EXPECT_NEAR(w.plot().xAxis->range().upper, 9.99, 1e-9);
    // The wheel with Ctrl zooms time only, with Shift value only.
    const QCPRange time = w.plot().xAxis->range(), value = w.plot().yAxis->range();
    const QPointF middle = w.plot().axisRect()->rect().center();
    for (Qt::KeyboardModifier m : {Qt::ControlModifier, Qt::ShiftModifier}) {
        QWheelEvent wheel(middle, w.plot().mapToGlobal(middle), {}, {0, 120}, Qt::NoButton, m, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&w.plot(), &wheel);
        EXPECT_LT(w.plot().xAxis->range().size(), time.size());
        EXPECT_EQ(w.plot().yAxis->range() == value, m == Qt::ControlModifier);
        EXPECT_EQ(w.plot().yAxis->range().size() < value.size(), m == Qt::ShiftModifier);
    }
    w.ResetView();

    // A span across both steps; shifting b by 2 s lines its step up with a's.
    w.SelectSpan(std::pair(3.0, 5.0));
    EXPECT_EQ(Cell(w, 0, 6), QStringLiteral("100"));
    EXPECT_EQ(Cell(w, 1, 1), QStringLiteral("0"));
    w.plot().SetShift(1, 2);
    w.SelectSpan(std::pair(3.0, 4.5));
    EXPECT_EQ(Cell(w, 1, 2), QStringLiteral("13.33333"));  // b's own 1.0 to 2.5 s

    // Both pictures of the view, named without their suffix in the dialog.
    files.answers = {dir.filePath("view"), dir.filePath("view")};
    w.ExportPicture(QStringLiteral("png"));
    w.ExportPicture(QStringLiteral("svg"));
    EXPECT_GT(QFileInfo(dir.filePath("view.png")).size(), 10000);
    QFile svg(dir.filePath("view.svg"));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    const QByteArray svgText = svg.readAll();
    EXPECT_TRUE(svgText.contains("<svg")) << svgText.left(200).toStdString();
    EXPECT_GT(svgText.size(), 10000);
    EXPECT_EQ(messages.texts.size(), 1);

    // A folder that does not exist: one message with the path and the reason.
    files.answers = {dir.filePath("no/such/view.png")};
    w.ExportPicture(QStringLiteral("png"));
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_TRUE(messages.texts[1].contains(dir.filePath("no/such/view.png")));
}

// The item every window's File menu carries: a cancel opens nothing, a file opens a viewer.
TEST(RunViewerWindow, OpenRunMenuOpensTheChosenRun) {
    QTemporaryDir dir;
    QWidget owner;
    QMenuBar bar(&owner);
    test::RecordingMessages messages;
    test::ScriptedFileDialogs files;
    AddOpenRunMenu(bar, owner, messages, files);
    const QList<QAction*> items = MenuNamed(bar, QStringLiteral("File"))->actions();
    ASSERT_EQ(items.size(), 1);
    QAction* open = items[0];
    EXPECT_EQ(open->text(), QStringLiteral("Open Run..."));
    open->trigger();
    EXPECT_TRUE(owner.findChildren<viewer::RunViewer*>().isEmpty());
    files.answers = {Write(dir, "a.csv", StepLog(50, 1, 1, 2))};
    open->trigger();
    const auto viewers = owner.findChildren<viewer::RunViewer*>();
    ASSERT_EQ(viewers.size(), 1);
    EXPECT_EQ(viewers[0]->plot().RunCount(), 1);
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST(RunViewerCommandLine, PlotsWithoutADisplay) {
    QTemporaryDir dir;
    const QString a = Write(dir, "a.csv", StepLog(300, 1, 5, 6));
    const QString junk = Write(dir, "junk.csv", "not a log\r\n");
    struct Case {
        QStringList args;
        int exitCode;
        const char* stderrHas;
        const char* picture;
    } cases[] = {
        {{"--plot", a, "--output", dir.filePath("p.png"), "--title", "Step"}, 0, "", "p.png"},
        {{"--plot", a, a, "--output", dir.filePath("p.svg")}, 0, "", "p.svg"},
        {{"--plot", a, junk, "--output", dir.filePath("q.png")}, 2, "line 1", nullptr},
        {{"--plot", a, "--output", dir.filePath("q.pdf")}, 2, "must end in .png or .svg", nullptr},
        {{"--plot", "--output", dir.filePath("q.png")}, 2, "needs the names", nullptr},
        {{"--view", a, "--title", "x"}, 2, "--title only applies with --plot", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(LXMEVAL_BINARY), c.args);
        ASSERT_TRUE(p.waitForFinished(30000));
        EXPECT_EQ(p.exitCode(), c.exitCode);
        EXPECT_TRUE(p.readAllStandardError().contains(c.stderrHas));
        if (c.picture) {
            EXPECT_GT(QFileInfo(dir.filePath(c.picture)).size(), 5000);
        }
    }
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("q.png")));
}
