// Reading logged runs back: both formats, odd but valid files, and damaged ones that must open
// what is readable and name the first line that is not.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <string>

#include "support/Files.h"
#include "viewer/RunLog.h"
#include "viewer/SpanStats.h"

using namespace lxm::viewer;

namespace {

const std::string kHead =
    "# lxmeval sample log\r\n# sensor: LXM410\r\n# interval: 8 ms\r\n# range: 1000 lux\r\n";

struct Case {
    const char* name;
    std::string text;
    std::size_t runs, ok, failed, saturated, early;
    std::size_t firstBadLine;  // 0: none
    const char* unit;
};

}  // namespace

TEST(RunReader, ReadsWhatItCanAndNamesTheFirstLineItCannot) {
    const Case cases[] = {
        {"older log without status", kHead + "time,seconds,sample,raw,value,unit\r\nT,0.01,1,5,1.5,lux\r\nT,0.02,2,6,1.7,lux\r\n",
         1, 2, 0, 0, 0, 0, "lux"},
        {"status column, columns in another order, unknown column ignored",
         kHead + "seconds,status,extra,value,unit\r\n0.1,ok,x,3,counts\r\n0.2,failed,x,,counts\r\n"
                 "0.3,saturated,x,65535,counts\r\n0.4,early,x,7,counts\r\n",
         1, 1, 1, 1, 1, 0, "counts"},
        {"LF line ends, blank lines, no title line", "time,seconds,sample,raw,value,unit\n\nT,1,1,2,3,lux\n", 1, 1, 0, 0,
         0, 0, "lux"},
        {"dual mode columns", kHead + "time,seconds,sample,raw,value,unit,status,ir,prox\r\nT,0.5,1,9,-4,counts,ok,3,7\r\n",
         1, 1, 0, 0, 0, 0, "counts"},
        {"cut short in a row", kHead + "time,seconds,sample,raw,value,unit\r\nT,0.01,1,5,1.5,lux\r\nT,0.0", 1, 1, 0, 0, 0,
         7, "lux"},
        {"bad rows among good ones",
         kHead + "time,seconds,sample,raw,value,unit,status\r\nT,0.1,1,5,x,lux,ok\r\nT,0.2,2,5,2,lux,ok\r\n"
                 "T,0.05,3,5,2,lux,ok\r\nT,0.3,4,5,2,lux,odd\r\nT,nan,5,5,2,lux,ok\r\nT,0.3,6,5,2,lux,ok\r\n",
         1, 2, 0, 0, 0, 6, "lux"},
        {"no column row at all", kHead, 1, 0, 0, 0, 0, 5, ""},
        {"column row without seconds", "time,raw,value\r\n1,2,3\r\n", 1, 0, 0, 0, 0, 1, ""},
        {"not a log", "hello\r\nworld\r\n", 0, 0, 0, 0, 0, 1, ""},
        {"empty file", "", 0, 0, 0, 0, 0, 1, ""},
        {"record file, two blocks",
         "Collect Reg0:&hA0 :Reg1 &h03,Interval 100, 11/15/2009,2:30:00 PM, Qty 2\r\n 0, 1234\r\n 1,-3\r\nEND\r\n"
         "Collect Reg0:&hA0 :Reg1 &h03,Interval 0, 11/15/2009,2:31:00 PM, Qty 1\r\n 0, 5.5\r\nEND\r\n",
         2, 3, 0, 0, 0, 0, ""},
        {"record file without END", "Collect Reg0:&hA0 :Reg1 &h03,Interval 10, 1/1/2020,1:00:00, Qty 2\r\n 0, 1\r\n", 1,
         1, 0, 0, 0, 3, ""},
        {"record block shorter than its Qty, and a stray line",
         "Collect Reg0:&hA0 :Reg1 &h03,Interval 10, d,t, Qty 3\r\n 0, 1\r\n 2, 1\r\nEND\r\nstray\r\n", 1, 1, 0, 0, 0, 3,
         ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ReadResult r = ReadRunText(c.text);
        ASSERT_EQ(r.runs.size(), c.runs);
        std::size_t ok = 0, failed = 0, saturated = 0, early = 0;
        for (const lxm::viewer::Run& run : r.runs) {
            ok += run.t.size();
            failed += run.failedT.size();
            saturated += run.saturatedT.size();
            early += run.earlyT.size();
            EXPECT_EQ(run.t.size(), run.v.size());
        }
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(failed, c.failed);
        EXPECT_EQ(saturated, c.saturated);
        EXPECT_EQ(early, c.early);
        EXPECT_EQ(r.firstBadLine, c.firstBadLine) << r.firstBadReason;
        if (c.runs > 0) {
            EXPECT_EQ(r.runs[0].unit, c.unit);
        }
    }
}

TEST(RunReader, PlacesSettingChangesAndRecordTimes) {
    const ReadResult csv = ReadRunText(kHead +
                                       "time,seconds,sample,raw,value,unit,status\r\nT,0.1,1,5,1,lux,ok\r\n"
                                       "# range: 4000 lux\r\n# interval: 0 ms\r\nT,0.2,2,5,2,lux,failed\r\n"
                                       "# range: 1000 lux\r\n");
    ASSERT_EQ(csv.runs.size(), 1u);
    const lxm::viewer::Run& run = csv.runs[0];
    ASSERT_EQ(run.changes.size(), 3u);
    EXPECT_EQ(run.changes[0].t, 0.2);  // at the first row taken with it, a failed one too
    EXPECT_EQ(run.changes[1].key, "interval");
    EXPECT_EQ(run.changes[2].t, 0.2);  // after the last row: at the end
    EXPECT_EQ(run.Header("range"), "1000 lux");
    EXPECT_EQ(SettingsText(run), "LXM410, range 1000 lux, interval 8 ms");

    const ReadResult rec = ReadRunText(
        "Collect Reg0:&hA0 :Reg1 &h03,Interval 250, 11/15/2009,2:30:00 PM, Qty 3\r\n 0, 1\r\n 1, 2\r\n 2, 3\r\nEND\r\n");
    ASSERT_EQ(rec.runs.size(), 1u);
    EXPECT_EQ(rec.runs[0].t, (std::vector<double>{0, 0.25, 0.5}));
    EXPECT_EQ(rec.runs[0].Header("register 1"), "03");
    EXPECT_EQ(rec.runs[0].Header("recorded"), "11/15/2009 2:30:00 PM");
    EXPECT_FALSE(rec.runs[0].timeIsSample);
}

// A file read in chunks gives what the same text gives whole, rows cut at chunk ends included.
TEST(RunReader, FileInChunksEqualsWholeText) {
    std::string text = kHead + "time,seconds,sample,raw,value,unit\r\n";
    for (int i = 0; i < 60000; ++i)
        text += "2026-11-24T10:00:00.000," + std::to_string(i * 0.002) + "," + std::to_string(i + 1) + ",1," +
                std::to_string(i % 977) + ".25,lux\r\n";
    QTemporaryDir dir;
    const std::string path = dir.filePath("run.csv").toStdString();
    ASSERT_TRUE(lxm::test::WriteFile(QString::fromStdString(path), QByteArray::fromStdString(text)));
    ASSERT_GT(text.size(), 2u << 20);

    const ReadResult file = ReadRunFile(path), whole = ReadRunText(text);
    ASSERT_EQ(file.runs.size(), 1u);
    EXPECT_EQ(file.runs[0].name, "run.csv");
    EXPECT_EQ(file.badLines, 0u);
    EXPECT_EQ(file.runs[0].t, whole.runs[0].t);
    EXPECT_EQ(file.runs[0].v, whole.runs[0].v);

    EXPECT_FALSE(ReadRunFile(dir.filePath("missing.csv").toStdString()).fileError.empty());
    EXPECT_FALSE(ReadRunFile(dir.path().toStdString()).fileError.empty());
}

TEST(SpanStats, SumsOnlyOrdinaryReadingsInTheSpan) {
    const ReadResult r = ReadRunText(
        "seconds,value,status\r\n0,100,ok\r\n1,2,ok\r\n2,4,ok\r\n3,4,ok\r\n3.5,,failed\r\n4,5,ok\r\n5,7,ok\r\n"
        "5.5,9999,saturated\r\n6,9,ok\r\n7,-100,ok\r\n");
    const lxm::viewer::Run& run = r.runs.at(0);
    const SpanStats s = StatsOver(run, 6, 1);  // given backwards
    EXPECT_EQ(s.n, 6u);
    EXPECT_DOUBLE_EQ(s.mean, 31.0 / 6);
    EXPECT_NEAR(s.sd, 2.483277, 1e-6);
    EXPECT_EQ(s.min, 2);
    EXPECT_EQ(s.max, 9);
    EXPECT_EQ(s.failed, 1u);
    EXPECT_EQ(s.saturated, 1u);

    const SpanStats empty = StatsOver(run, 3.2, 3.8);
    EXPECT_EQ(empty.n, 0u);
    EXPECT_EQ(empty.failed, 1u);
    EXPECT_EQ(StatsOver(run, 7, 7).n, 1u);
}
