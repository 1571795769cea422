// Flagged readings and where files go: the log's status column and its "#" lines for settings
// changed during a run, and the folder a file dialog starts in.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "acquisition/SampleLog.h"
#include "core/FileFolders.h"
#include "support/FakeClock.h"
#include "support/Files.h"

namespace lxm {
namespace {

TEST(SampleLogFlags, StatusColumnAndSettingsChangedDuringTheRun) {
    test::FakeClock clock;
    QTemporaryDir dir;
    const QString path = dir.filePath("run.csv");
    const SampleLogHeader h{"LXM410", "ALS Cont.", 0, 0, 8, 1000, 16, true, false};
    {
        SampleLog log(clock);
        ASSERT_TRUE(log.Open(path, h));
        log.Append({100, 1.5, {}, {}, SampleStatus::Ok});
        log.NoteSettings(h);  // nothing changed: no line
        log.NoteSettings({"LXM410", "ALS Cont.", 0, 0, 8, 4000, 12, false, false});
        log.Append({4095, 4095, {}, {}, SampleStatus::Saturated});
        log.Append({0, 0, {}, {}, SampleStatus::Failed});
        log.Append({7, 7, {}, {}, SampleStatus::Early});
    }
    const QByteArray text = test::ReadFile(path);
    EXPECT_TRUE(text.contains("# range: 1000 lux\r\n# resolution: 16 bits\r\n# started: ")) << text.toStdString();
    const QList<QByteArray> lines = text.mid(text.indexOf("time,")).split('\n');
    ASSERT_EQ(lines.size(), 8) << text.toStdString();
    EXPECT_TRUE(lines[1].endsWith(",1,100,1.5,lux,ok\r"));
    EXPECT_EQ(lines[2] + lines[3], "# range: 4000 lux\r# resolution: 12 bits\r");
    EXPECT_TRUE(lines[4].endsWith(",2,4095,4095,counts,saturated\r"));
    EXPECT_TRUE(lines[5].endsWith(",3,,,counts,failed\r")) << "a failed read is no 0";
    EXPECT_TRUE(lines[6].endsWith(",4,7,7,counts,early\r"));
}

TEST(FileFolders, DialogsStartInTheDocumentsThenWhereTheUserLastWent) {
    QStandardPaths::setTestModeEnabled(true);
    const QString documents = DocumentsFolder();
    EXPECT_TRUE(QFileInfo(documents).isDir());
    const QString programs = QCoreApplication::applicationDirPath() + "/Data.txt";
    QTemporaryDir elsewhere;
    DialogStart start;
    EXPECT_EQ(start.For(QString()), documents);
    EXPECT_EQ(start.For(programs), documents + "/Data.txt");
    EXPECT_EQ(start.For("setup.lxm"), documents + "/setup.lxm");
    EXPECT_EQ(start.For(elsewhere.filePath("a.csv")), elsewhere.filePath("a.csv"));
    start.Chosen(elsewhere.filePath("run1.csv"));
    EXPECT_EQ(start.For(QString()), elsewhere.path());
    EXPECT_EQ(start.For(programs), elsewhere.filePath("Data.txt"));
}

}  // namespace
}  // namespace lxm
