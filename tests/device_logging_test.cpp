// "Log every sample", the running statistics and "Save Picture" on the device forms, on the
// simulated board: the CSV as the user opens it after a run, detached boards and files that
// cannot be written.
#include <QCheckBox>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "acquisition/PictureBox.h"
#include "device/frmLXM600.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/StripChart.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

struct Log {
    QStringList header;  // the "#" lines
    QString columns;
    std::vector<QStringList> rows;
};

Log ReadLog(const QString& path) {
    Log log;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return log;
    const QString text = QString::fromUtf8(f.readAll());
    EXPECT_TRUE(text.endsWith(QStringLiteral("\r\n"))) << "the last row is complete";
    for (const QString& line : text.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts)) {
        if (line.startsWith(QLatin1Char('#')))
            log.header << line;
        else if (log.columns.isEmpty())
            log.columns = line;
        else
            log.rows.push_back(line.split(QLatin1Char(',')));
    }
    return log;
}

// What a pass left on the form when its row was written (the raw count as kept for its box,
// which shows it ten times a second).
struct Pass {
    double reading;
    QString raw;
    QString ir, prox;
};

struct LoggingTest : FormFixture {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("run.csv"));

    void LogTo(const QString& file) {
        form->frmDataRecord->SetLogFile(file);
        form->frmDataRecord->chkLogAll->setChecked(true);
    }
    std::vector<Pass> CollectPasses(int n, const std::function<void(int)>& during = {}) {
        std::vector<Pass> passes;
        Collect([&](int i) {
            passes.push_back({form->LatestReading, QString::number(form->PassCount), form->txtProx_IR.at(5)->text(),
                              form->txtProx_IR.at(4)->text()});
            clock.AdvanceMs(37);  // rows a known time apart
            if (during) during(i);
            return i < n;
        });
        return passes;
    }
};

TEST_F(LoggingTest, EveryPassIsOneRowWithItsTimeRawCountValueAndUnit) {
    Measure(5);  // ALS continuous, in lux
    scene().kind = sim::LightScene::Kind::Noise;
    LogTo(path);
    const auto passes = CollectPasses(25);
    ASSERT_EQ(passes.size(), 25u);

    // Read after Stop with nothing else done: the file is complete and closed.
    const Log log = ReadLog(path);
    EXPECT_EQ(log.columns, "time,seconds,sample,raw,value,unit,status");
    EXPECT_TRUE(log.header.contains("# sensor: LXM410")) << log.header.join('\n').toStdString();
    EXPECT_TRUE(log.header.contains("# register 0: " + form->txtRegHex(0)->text().toUpper()));
    EXPECT_TRUE(log.header.contains("# register 1: " + form->txtRegHex(1)->text().toUpper()));
    EXPECT_TRUE(log.header.contains("# interval: 8 ms"));
    EXPECT_TRUE(log.header.contains("# range: 1000 lux"));
    ASSERT_EQ(log.rows.size(), passes.size());

    double lastSeconds = -1;
    for (std::size_t i = 0; i < log.rows.size(); ++i) {
        const QStringList& r = log.rows[i];
        ASSERT_EQ(r.size(), 7) << i;
        EXPECT_EQ(r[2].toULongLong(), i + 1);
        EXPECT_EQ(r[3], passes[i].raw) << i;
        EXPECT_DOUBLE_EQ(r[4].toDouble(), passes[i].reading) << i;
        EXPECT_EQ(r[5], "lux");
        // The time column is the run's start plus the seconds column, to the millisecond.
        const double seconds = r[1].toDouble();
        EXPECT_GT(seconds, lastSeconds);
        if (i > 0) {
            EXPECT_GE(seconds - lastSeconds, 0.0369);
        }
        lastSeconds = seconds;
        ASSERT_TRUE(r[0].startsWith("2009-11-15T14:")) << r[0].toStdString();
        const QTime t = QTime::fromString(r[0].mid(11), Qt::ISODateWithMs);
        EXPECT_EQ(QTime(14, 30).msecsTo(t), std::int64_t(std::floor(seconds * 1000))) << r[0].toStdString();
    }
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();
}

TEST_F(LoggingTest, TheDualModeLogsItsInfraredAndProximityPartsAndLeavesASaturatedDifferenceEmpty) {
    Measure(4);
    scene().infrared = 100;
    scene().objectDistanceMm = 60;
    LogTo(path);
    const auto passes = CollectPasses(4, [&](int n) {
        if (n == 2) scene().objectDistanceMm = 5;  // saturates from the third pass on
    });
    const Log log = ReadLog(path);
    EXPECT_EQ(log.columns, "time,seconds,sample,raw,value,unit,status,ir,prox");
    ASSERT_EQ(log.rows.size(), 4u);
    auto field = [](const QString& box) {
        bool numeric = false;
        box.toLongLong(&numeric);
        return numeric ? box : QString();
    };
    for (std::size_t i = 0; i < 4; ++i) {
        ASSERT_EQ(log.rows[i].size(), 9);
        EXPECT_EQ(log.rows[i][5], "counts");
        EXPECT_EQ(log.rows[i][7], field(passes[i].ir)) << i;
        EXPECT_EQ(log.rows[i][8], field(passes[i].prox)) << i;
    }
    EXPECT_EQ(log.rows[0][3], "205");
    EXPECT_EQ(log.rows[0][4], "205");
    // Not a repeat of the last good difference: that is the chart's stand-in, not a reading.
    EXPECT_EQ(log.rows[3][3], "");
    EXPECT_EQ(log.rows[3][4], "");
}

TEST_F(LoggingTest, ADetachEndsTheLogWithEveryRowTaken) {
    Measure(5);
    LogTo(path);
    const auto passes = CollectPasses(100, [&](int n) {
        if (n == 6) driver.Unplug();
    });
    EXPECT_FALSE(session.Collecting);
    const Log log = ReadLog(path);
    EXPECT_EQ(log.rows.size(), passes.size());
    EXPECT_GE(log.rows.size(), 6u);
    EXPECT_EQ(messages.texts.filter("Logging").size(), 0);
}

TEST_F(LoggingTest, ClosingTheWindowDuringARunLeavesTheFileComplete) {
    Measure(5);
    LogTo(path);
    const auto passes = CollectPasses(100, [&](int n) {
        if (n == 4) form->close();
    });
    EXPECT_FALSE(session.Collecting);
    EXPECT_EQ(ReadLog(path).rows.size(), passes.size());
    form.reset();  // and once the form is gone, nothing is added or lost
    EXPECT_EQ(ReadLog(path).rows.size(), passes.size());
}

TEST_F(LoggingTest, AReScaleRestartGoesOnInTheSameFile) {
    Measure(5);
    LogTo(path);
    int restarted = 0;
    Collect([&](int n) {
        if (n == 3 && !restarted++) form->cmdAutoScale_Click();
        return n < 8;
    });
    const Log log = ReadLog(path);
    ASSERT_GE(log.rows.size(), 8u);
    for (std::size_t i = 0; i < log.rows.size(); ++i) EXPECT_EQ(log.rows[i][2].toULongLong(), i + 1);
}

TEST_F(LoggingTest, AFileThatCannotBeWrittenStopsTheLogWithOneMessageAndNeverTheCollection) {
    Measure(5);
    for (const QString& bad : {dir.filePath("no/such/folder/run.csv"), QStringLiteral("/dev/full")}) {
        SCOPED_TRACE(bad.toStdString());
        messages.clear();
        LogTo(bad);
        const auto passes = CollectPasses(20);
        EXPECT_EQ(passes.size(), 20u);
        ASSERT_EQ(messages.texts.size(), 1) << messages.texts.join('\n').toStdString();
        EXPECT_TRUE(messages.texts[0].contains("\"" + bad + "\"")) << messages.texts[0].toStdString();
        EXPECT_TRUE(messages.texts[0].contains(bad.startsWith("/dev") ? "No space left" : "No such file"));
    }
}

TEST_F(LoggingTest, LoggingOffWritesNothingAndCheckingItAsksForACsvFile) {
    Measure(5);
    form->frmDataRecord->SetLogFile(path);
    CollectPasses(5);
    EXPECT_FALSE(QFile::exists(path));

    files.answers.push_back(std::nullopt);  // cancelled: the log stays off
    form->frmDataRecord->chkLogAll->click();
    EXPECT_FALSE(form->frmDataRecord->chkLogAll->isChecked());
    EXPECT_EQ(form->frmDataRecord->LogPath(), "");

    files.answers.push_back(dir.filePath("chosen"));
    form->frmDataRecord->chkLogAll->click();
    EXPECT_TRUE(form->frmDataRecord->chkLogAll->isChecked());
    EXPECT_EQ(form->frmDataRecord->LogPath(), dir.filePath("chosen.csv"));
    EXPECT_TRUE(form->frmDataRecord->chkLogAll->toolTip().contains(dir.filePath("chosen.csv")));
    CollectPasses(5);
    EXPECT_EQ(ReadLog(dir.filePath("chosen.csv")).rows.size(), 5u);

    form->frmDataRecord->chkLogAll->click();  // off again, no question
    EXPECT_EQ(files.titles.size(), 2);
    EXPECT_EQ(form->frmDataRecord->LogPath(), "");
}

// The panel against a two-pass reference over the readings the passes showed.
TEST_F(LoggingTest, ThePanelShowsCountMeanAndDeviationOfTheReadingsSinceStartOrClear) {
    Measure(5);
    scene().kind = sim::LightScene::Kind::Noise;
    scene().ambientLux = 600;
    auto expectStats = [&](const std::vector<Pass>& passes, std::size_t from) {
        std::vector<double> v;
        for (std::size_t i = from; i < passes.size(); ++i) v.push_back(passes[i].reading);
        const double mean = std::accumulate(v.begin(), v.end(), 0.0) / double(v.size());
        double ss = 0;
        for (double x : v) ss += (x - mean) * (x - mean);
        const double sd = std::sqrt(ss / double(v.size() - 1));
        ASSERT_GT(sd, 0) << "the scene must vary";
        EXPECT_EQ(form->FrmMeasureDetails->txtStats.at(0)->text(), QString::number(v.size()));
        EXPECT_EQ(form->FrmMeasureDetails->txtStats.at(1)->text(), QString::number(mean, 'g', 6));
        EXPECT_EQ(form->FrmMeasureDetails->txtStats.at(2)->text(), QString::number(sd, 'g', 6));
    };
    auto passes = CollectPasses(30);
    expectStats(passes, 0);

    // A second run starts its own statistics; "Clear" during it starts them over.
    passes = CollectPasses(20, [&](int n) {
        if (n == 8) form->cmdClearHist->click();
    });
    expectStats(passes, 8);

    form->cmdClearHist->click();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(form->FrmMeasureDetails->txtStats.at(i)->text(), "") << i;
    EXPECT_EQ(form->stats.Count(), 0u);
}

// A form nobody sees leaves its live boxes alone. The
// extremes, the snapshot, the statistics and the log must come from the counts themselves,
// not from boxes that were never filled.
TEST_F(LoggingTest, AFormNobodySeesKeepsTheSameExtremesStatisticsAndLog) {
    form->hide();
    Measure(6);  // IR continuous, in counts
    scene().kind = sim::LightScene::Kind::Noise;
    scene().infrared = 900;
    LogTo(path);
    const QString boxBefore = form->txtADCRaw->text();
    const auto passes = CollectPasses(40);
    EXPECT_EQ(form->txtADCRaw->text(), boxBefore) << "an unseen box is not rewritten";

    const Log log = ReadLog(path);
    ASSERT_EQ(log.rows.size(), 40u);
    std::vector<double> raw;
    for (const QStringList& r : log.rows) raw.push_back(r[3].toDouble());
    for (std::size_t i = 0; i < raw.size(); ++i) EXPECT_EQ(raw[i], passes[i].reading) << i;
    const auto [lo, hi] = std::minmax_element(raw.begin(), raw.end());
    ASSERT_LT(*lo, *hi) << "the scene must vary";
    EXPECT_EQ(form->CountMax, *hi);
    EXPECT_EQ(form->CountMin, *lo);
    EXPECT_EQ(form->maxMinPanel.texts()[0], QString::number(*hi));
    EXPECT_EQ(form->maxMinPanel.texts()[4], log.rows[25][3]) << "the snapshot of the 26th pass";
    EXPECT_EQ(form->stats.Count(), 40u);
    EXPECT_DOUBLE_EQ(form->stats.Mean(), std::accumulate(raw.begin(), raw.end(), 0.0) / 40);

    // Shown afterwards, the light swatch has the colour of the last reading.
    form->show();
    const int red = SwatchRed(std::int32_t(raw.back()), false, form->FullScaleCounts);
    EXPECT_EQ(form->chart().Picture3->palette().color(QPalette::Window),
              red < 0 ? QColor(255, 255, 255) : QColor(red, 0, 0));
}

TEST(StatsTexts, NothingIsShownThatIsNotYetDefined) {
    RunningStats s;
    EXPECT_EQ(StatsTexts(s), (std::array<QString, 3>{"0", "", ""}));
    s.Add(100000.2);
    EXPECT_EQ(StatsTexts(s), (std::array<QString, 3>{"1", "100000", ""}));
    s.Add(100000.4);
    EXPECT_EQ(StatsTexts(s), (std::array<QString, 3>{"2", "100000", "0.141421"}));
}

TEST_F(LoggingTest, SavePictureWritesTheChartAsAPngOrSaysWhyNot) {
    Measure(5);
    CollectPasses(30);
    StripChart* chart = &form->chart();

    files.answers.push_back(dir.filePath("chart"));
    chart->cmdSavePicture->click();
    const QImage saved(dir.filePath("chart.png"), "PNG");
    ASSERT_FALSE(saved.isNull());
    EXPECT_EQ(saved.size(), chart->Picture2->image().size());
    EXPECT_TRUE(messages.texts.isEmpty());

    const QString bad = dir.filePath("missing/chart.png");
    files.answers.push_back(bad);
    chart->cmdSavePicture->click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains("\"" + bad + "\"")) << messages.texts[0].toStdString();
    EXPECT_TRUE(messages.texts[0].contains("No such file")) << messages.texts[0].toStdString();

    files.answers.push_back(std::nullopt);
    chart->cmdSavePicture->click();
    EXPECT_EQ(messages.texts.size(), 1);
}

// The multi-function form logs through the same parts.
struct MultiFunctionLogging : Lxm600FormFixture {
    QTemporaryDir dir;
};

TEST_F(MultiFunctionLogging, OneRowPerPassWithTheProximityCount) {
    const QString path = dir.filePath("prox.csv");
    form->frmDataRecord->SetLogFile(path);
    form->frmDataRecord->chkLogAll->setChecked(true);
    std::vector<QString> raws;
    form->collection().onPass = [&] {
        raws.push_back(form->txtADCRaw->text());
        clock.AdvanceMs(20);
        if (raws.size() == 12) form->cmdStopData_Click();
    };
    form->cmdCollectData_Click();
    const Log log = ReadLog(path);
    EXPECT_TRUE(log.header.contains("# sensor: LXM600"));
    // The proximity trace, though the ALS/IR mode stands on "ALS".
    EXPECT_TRUE(log.header.contains("# measurement: Proximity")) << log.header.join("|").toStdString();
    ASSERT_EQ(log.rows.size(), raws.size());
    for (std::size_t i = 0; i < raws.size(); ++i) {
        EXPECT_EQ(log.rows[i][3], raws[i]) << i;
        EXPECT_EQ(log.rows[i][5], "counts");
    }
    EXPECT_EQ(form->FrmMeasureDetails->txtStats.at(0)->text(), QString::number(raws.size()));
}

}  // namespace
}  // namespace lxm::test
