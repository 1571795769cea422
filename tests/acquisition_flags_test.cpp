// Flagged readings: what a count is worth, the log's status column and "#" lines for settings
// changed during a run, and statistics that leave failed reads out.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "acquisition/RunningStats.h"
#include "acquisition/SampleLog.h"
#include "core/FileFolders.h"
#include "support/FakeClock.h"

namespace lxm {
namespace {

TEST(SampleStatus, ClassifiesByReplyTimingAndTopOfScale) {
    struct Case {
        bool ok;
        std::int64_t count;
        int bits;
        bool early;
        SampleStatus want;
    } cases[] = {
        {true, 4094, 12, false, SampleStatus::Ok},
        {true, 4095, 12, false, SampleStatus::Saturated},
        {true, 65535, 16, false, SampleStatus::Saturated},
        {true, 4095, 16, false, SampleStatus::Ok},
        {true, 15, 4, false, SampleStatus::Saturated},
        {true, 255, 8, false, SampleStatus::Saturated},
        {false, 4095, 12, true, SampleStatus::Failed},
        {true, 4095, 12, true, SampleStatus::Early},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Classify(c.ok, c.count, c.bits, c.early), c.want) << c.count << " at " << c.bits;
    // The one-shot delays the form offers per resolution cover its conversion.
    EXPECT_LT(ConversionMicros(16), 118'000);
    EXPECT_GT(ConversionMicros(16), 8'000);
    EXPECT_LT(ConversionMicros(12), 8'000);
}

TEST(RunningStatsFlags, FailedReadsStayOutSaturatedOnesAreCounted) {
    RunningStats s;
    s.Add(10, SampleStatus::Ok);
    s.Add(0, SampleStatus::Failed);
    s.Add(20, SampleStatus::Saturated);
    s.Add(0, SampleStatus::Failed);
    EXPECT_EQ(s.Count(), 2u);
    EXPECT_DOUBLE_EQ(s.Mean(), 15);
    EXPECT_EQ(s.Failed(), 2u);
    EXPECT_EQ(s.Saturated(), 1u);
}

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
        SampleLogHeader changed = h;
        changed.rangeLux = 4000;
        changed.resolutionBits = 12;
        changed.lux = false;
        log.NoteSettings(changed);
        log.Append({4095, 4095, {}, {}, SampleStatus::Saturated});
        log.Append({0, 0, {}, {}, SampleStatus::Failed});
        log.Append({7, 7, {}, {}, SampleStatus::Early});
    }
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray text = f.readAll();
    EXPECT_TRUE(text.contains("# range: 1000 lux\r\n# resolution: 16 bits\r\n# started: "))
        << text.toStdString();
    const QByteArray body = text.mid(text.indexOf("time,"));
    const QList<QByteArray> lines = body.split('\n');
    ASSERT_EQ(lines.size(), 8) << body.toStdString();
    EXPECT_EQ(lines[0], "time,seconds,sample,raw,value,unit,status\r");
    EXPECT_TRUE(lines[1].endsWith(",1,100,1.5,lux,ok\r"));
    EXPECT_EQ(lines[2], "# range: 4000 lux\r");
    EXPECT_EQ(lines[3], "# resolution: 12 bits\r");
    EXPECT_TRUE(lines[4].endsWith(",2,4095,4095,counts,saturated\r"));
    EXPECT_TRUE(lines[5].endsWith(",3,,,counts,failed\r")) << "a failed read is no 0";
    EXPECT_TRUE(lines[6].endsWith(",4,7,7,counts,early\r"));
}

TEST(FileFolders, DialogsStartInTheDocumentsThenWhereTheUserLastWent) {
    QStandardPaths::setTestModeEnabled(true);
    const QString documents = DocumentsFolder();
    EXPECT_TRUE(QFileInfo(documents).isDir());
    QTemporaryDir elsewhere;
    DialogStart start;
    EXPECT_EQ(start.For(QString()), documents);
    EXPECT_EQ(start.For(QCoreApplication::applicationDirPath() + "/Data.txt"), documents + "/Data.txt");
    EXPECT_EQ(start.For("setup.lxm"), documents + "/setup.lxm");
    EXPECT_EQ(start.For(elsewhere.filePath("a.csv")), elsewhere.filePath("a.csv"));
    start.Chosen(elsewhere.filePath("run1.csv"));
    EXPECT_EQ(start.For(QString()), elsewhere.path());
    EXPECT_EQ(start.For(QCoreApplication::applicationDirPath() + "/Data.txt"), elsewhere.filePath("Data.txt"));
}

TEST(SampleLogFlags, AFurtherRunTakesTheNextFreeName) {
    QTemporaryDir dir;
    for (const char* name : {"run1.csv", "run1-2.csv"}) {
        QFile f(dir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    EXPECT_EQ(NextFreeLogPath(dir.filePath("run1.csv")), dir.filePath("run1-3.csv"));
    EXPECT_EQ(NextFreeLogPath(dir.filePath("log")), dir.filePath("log-2"));
}

}  // namespace
}  // namespace lxm
