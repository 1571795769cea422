// The per-sample CSV log: its exact text, when it reaches the disk, and how it ends.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <cmath>
#include <csignal>
#include <vector>

#include "acquisition/SampleLog.h"
#include "support/FakeClock.h"

namespace lxm {
namespace {

class SampleLogTest : public ::testing::Test {
protected:
    QByteArray Content(const QString& path) const {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    int DataRows(const QString& path) const {
        int n = 0;
        for (const QByteArray& line : Content(path).split('\n'))
            if (!line.isEmpty() && !line.startsWith('#') && !line.startsWith("time,")) ++n;
        return n;
    }
    SampleLog::ErrorHandler Recorder() {
        return
            [this](const QString& path, const QString& reason) { errors.push_back(path + " | " + reason); };
    }
    SampleLogHeader Als() const {
        SampleLogHeader h;
        h.sensor = "LXM410";
        h.measurement = "ALS Continuous";
        h.reg0 = 0xA0;
        h.reg1 = 0x03;
        h.intervalMs = 100;
        h.rangeLux = 1000;
        h.lux = true;
        return h;
    }

    test::FakeClock clock;
    QTemporaryDir dir;
    std::vector<QString> errors;
};

TEST_F(SampleLogTest, HeaderAndRowsExactly) {
    const QString path = dir.filePath("run.csv");
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("an earlier run\n");
    old.close();
    {
        SampleLog log(clock, Recorder());
        ASSERT_TRUE(log.Open(path, Als()));
        log.Append({1234, 18.8232421875, {}, {}});
        clock.AdvanceUs(1'234'567);
        log.Append({0, 0.0, {}, {}});
        clock.AdvanceUs(59'000'000);  // across a minute
        log.Append({65535, 1000, {}, {}});
        clock.AdvanceUs(1);
        log.Append({{}, std::nan(""), {}, {}});
        EXPECT_EQ(log.Rows(), 4u);
    }
    const QString text = QString::fromUtf8(Content(path));
    const QRegularExpression started(
        QStringLiteral("# started: 2009-11-15T14:30:00\\.000(Z|[+-]\\d\\d:\\d\\d)\r\n"));
    EXPECT_TRUE(started.match(text).hasMatch()) << text.toStdString();
    QString rest = text;
    rest.remove(started);
    EXPECT_EQ(rest.toStdString(),
              "# lxmeval sample log\r\n"
              "# sensor: LXM410\r\n"
              "# measurement: ALS Continuous\r\n"
              "# register 0: A0\r\n"
              "# register 1: 03\r\n"
              "# interval: 100 ms\r\n"
              "# range: 1000 lux\r\n"
              "time,seconds,sample,raw,value,unit,status\r\n"
              "2009-11-15T14:30:00.000,0.000000,1,1234,18.8232421875,lux,ok\r\n"
              "2009-11-15T14:30:01.234,1.234567,2,0,0,lux,ok\r\n"
              "2009-11-15T14:31:00.234,60.234567,3,65535,1000,lux,ok\r\n"
              "2009-11-15T14:31:00.234,60.234568,4,,,lux,ok\r\n");
    EXPECT_TRUE(errors.empty());
}

TEST_F(SampleLogTest, DualModeCarriesTheIrAndProximityParts) {
    SampleLogHeader h = Als();
    h.sensor = "LXM430";
    h.measurement.clear();
    h.lux = false;
    h.dual = true;
    const QString path = dir.filePath("dual.csv");
    SampleLog log(clock, Recorder());
    ASSERT_TRUE(log.Open(path, h));
    log.Append({-12, -12, 40, 28});
    clock.AdvanceMs(5);
    // Saturated proximity: no difference, the previous value repeats, the parts stay.
    log.Append({{}, -12, 40, 65535});
    log.Close();
    const QList<QByteArray> lines = Content(path).split('\n');
    EXPECT_FALSE(Content(path).contains("# measurement")) << "no line for what was not given";
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines[lines.size() - 4], "time,seconds,sample,raw,value,unit,status,ir,prox\r");
    EXPECT_EQ(lines[lines.size() - 3], "2009-11-15T14:30:00.000,0.000000,1,-12,-12,counts,ok,40,28\r");
    EXPECT_EQ(lines[lines.size() - 2], "2009-11-15T14:30:00.005,0.005000,2,,-12,counts,ok,40,65535\r");
}

// Everything appended is on disk within a second of clock time, without a write per row,
// and no row limit of any sample buffer applies.
TEST_F(SampleLogTest, ReachesTheDiskEverySecondNotEveryRow) {
    const QString path = dir.filePath("fast.csv");
    SampleLog log(clock, Recorder());
    ASSERT_TRUE(log.Open(path, Als()));
    const int headerOnly = int(Content(path).size());
    EXPECT_GT(headerOnly, 0) << "the header is there from the start";

    std::vector<std::int64_t> appendedAt;
    QSet<int> sizesSeen;
    for (int i = 0; i < 5000; ++i) {  // 5 s at 1 ms per pass, far past 1011 samples
        log.Append({i, double(i), {}, {}});
        appendedAt.push_back(clock.Micros());
        clock.AdvanceMs(1);
        if (i % 10 != 9) continue;
        const int onDisk = DataRows(path);
        sizesSeen.insert(onDisk);
        for (int r = onDisk; r < int(appendedAt.size()); ++r)
            ASSERT_LE(clock.Micros() - appendedAt[std::size_t(r)], 1'000'000) << "row " << r << " is overdue";
    }
    EXPECT_LE(sizesSeen.size(), 8) << "written about once a second, not per row";
    log.Close();
    EXPECT_EQ(DataRows(path), 5000);
    EXPECT_TRUE(Content(path).endsWith("4999,4999,lux,ok\r\n"));

    // Slow samples are written one by one as they come.
    ASSERT_TRUE(log.Open(path, Als()));
    for (int i = 0; i < 3; ++i) {
        clock.AdvanceMs(700);
        log.Append({i, double(i), {}, {}});
        EXPECT_EQ(DataRows(path), i + 1);
    }
    // And a caller that idles has what waits written by a second after the last write.
    clock.AdvanceMs(1);
    log.Append({9, 9, {}, {}});
    EXPECT_EQ(DataRows(path), 3);
    clock.AdvanceMs(500);
    log.FlushIfDue();
    EXPECT_EQ(DataRows(path), 3) << "not before its second";
    clock.AdvanceMs(500);
    log.FlushIfDue();
    EXPECT_EQ(DataRows(path), 4);
    EXPECT_TRUE(errors.empty());
}

TEST_F(SampleLogTest, ClosesOnceWhateverEndsIt) {
    const QString path = dir.filePath("close.csv");
    auto log = std::make_unique<SampleLog>(clock, Recorder());
    ASSERT_TRUE(log->Open(path, Als()));
    log->Append({1, 1, {}, {}});
    log->Close();
    EXPECT_FALSE(log->IsOpen());
    log->Close();
    log->Append({2, 2, {}, {}});  // a pass that comes after Stop is not logged
    EXPECT_EQ(DataRows(path), 1);

    // Reopening starts a new log; the destructor closes it with everything in it.
    ASSERT_TRUE(log->Open(path, Als()));
    log->Append({3, 3, {}, {}});
    log->Append({4, 4, {}, {}});
    EXPECT_EQ(log->Rows(), 2u);
    log.reset();
    EXPECT_EQ(DataRows(path), 2);
    EXPECT_TRUE(Content(path).contains(",1,3,3,lux,ok\r\n"));
    EXPECT_TRUE(errors.empty());
}

TEST_F(SampleLogTest, PathsThatCannotBeWrittenAreReportedOnce) {
    QFile file(dir.filePath("plain"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    struct Case {
        QString path, reason;
    } cases[] = {
        {dir.filePath("no/such/dir/x.csv"), "No such file or directory"},
        {dir.filePath("plain/x.csv"), "Not a directory"},
        {dir.path(), "Is a directory"},
        {QString(), "No such file or directory"},
    };
    for (const Case& c : cases) {
        errors.clear();
        SampleLog log(clock, Recorder());
        EXPECT_FALSE(log.Open(c.path, Als()));
        EXPECT_FALSE(log.IsOpen());
        log.Append({1, 1, {}, {}});
        log.Close();
        ASSERT_EQ(errors.size(), 1u) << c.path.toStdString();
        EXPECT_EQ(errors[0], c.path + " | " + c.reason);
    }
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Hidden | QDir::Files).contains("plain"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Hidden | QDir::Files).size(), 1) << "no temporary file left";
}

TEST_F(SampleLogTest, AFullDiskStopsTheLogNotTheCaller) {
    SampleLog log(clock, Recorder());
    EXPECT_FALSE(log.Open(QStringLiteral("/dev/full"), Als()));
    for (int i = 0; i < 3000; ++i, clock.AdvanceMs(1)) log.Append({i, double(i), {}, {}});
    log.Close();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], "/dev/full | No space left on device");
    EXPECT_EQ(
        SampleLogErrorMessage("/dev/full", "No space left on device"),
        "Logging to \"/dev/full\" stopped: No space left on device. The rows written before are kept in "
        "the file and the collection goes on. Free some space or choose another file, then log again.");
}

// The disk fills in the middle of a run (a file size limit stands in for it): what was
// written stays, the failure is reported once, and an earlier log survives a failed start.
TEST_F(SampleLogTest, ADiskThatFillsDuringTheRunKeepsWhatWasWritten) {
    const QString path = dir.filePath("limited.csv");
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("kept\n");
    old.close();

    // Past the limit a write fails with EFBIG instead of the signal ending the process.
    rlimit saved{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto savedSignal = std::signal(SIGXFSZ, SIG_IGN);
    auto limitTo = [&](rlim_t bytes) {
        rlimit limit = saved;
        limit.rlim_cur = bytes;
        return ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    auto restore = [&] { ::setrlimit(RLIMIT_FSIZE, &saved); };

    ASSERT_TRUE(limitTo(16));  // not even the header fits
    {
        SampleLog log(clock, Recorder());
        EXPECT_FALSE(log.Open(path, Als()));
    }
    restore();
    EXPECT_EQ(Content(path), "kept\n");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], path + " | File too large");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Hidden | QDir::Files).size(), 1) << "no temporary file left";

    errors.clear();
    ASSERT_TRUE(limitTo(8192));
    {
        SampleLog log(clock, Recorder());
        EXPECT_TRUE(log.Open(path, Als()));
        for (int i = 0; i < 2000; ++i, clock.AdvanceMs(1)) log.Append({i, double(i), {}, {}});
        EXPECT_FALSE(log.IsOpen());
    }
    restore();
    std::signal(SIGXFSZ, savedSignal);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], path + " | File too large");
    const QByteArray kept = Content(path);
    EXPECT_EQ(kept.size(), 8192);
    EXPECT_TRUE(kept.startsWith("# lxmeval sample log\r\n"));
    EXPECT_TRUE(kept.contains("\r\n2009-11-15T14:30:00.000,0.000000,1,0,0,lux,ok\r\n"));
}

}  // namespace
}  // namespace lxm
