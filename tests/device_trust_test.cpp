// The device forms do not lose or misread what they measure: a board plugged in again is not
// read before it is reopened, a failed read is no reading of 0, a saturated one is marked, and
// a setting changed during a run is in the log before the rows it applies to.
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "device/BoardMenu.h"
#include "device/frmLXM600.h"
#include "scripts/frmScriptOps.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/ReadingFlag.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

struct Trust : FormFixture {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("run.csv"));
    void LogTo(const QString& file) {
        form->frmDataRecord->SetLogFile(file);
        form->frmDataRecord->chkLogAll->setChecked(true);
    }
    QByteArray Content(const QString& file) {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

TEST_F(Trust, ABoardPluggedInAgainIsNotReadUntilItIsReopened) {
    Measure(5);
    LogTo(path);
    driver.Unplug();
    Pump();
    driver.Plug();
    Pump();
    ASSERT_TRUE(session.UsbConnected) << "the lamps are green again";
    messages.clear();
    const std::size_t wireBefore = wire().size();
    EXPECT_EQ(Collect(5), 0) << "no run on a board that is not open";
    form->cmdRead_ADC_Click();
    EXPECT_EQ(DataReads(wireBefore), 0);
    ASSERT_EQ(messages.texts.size(), 2) << messages.texts.join(" | ").toStdString();
    EXPECT_TRUE(messages.texts[0].contains("Board > Reconnect"));
    EXPECT_FALSE(QFile::exists(path)) << "no log of zeros";

    form->boardMenu->mnuReconnect_Click();
    messages.clear();
    EXPECT_EQ(Collect(5), 5);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" | ").toStdString();
}

TEST_F(Trust, AFailedReadIsLoggedFailedAndLeftOutOfTheStatistics) {
    Measure(5);
    Settle();
    LogTo(path);
    Collect([&](int n) {
        if (n == 3) driver.TimeOutNext(2);  // the next pass's read gets no reply
        return n < 6;
    });
    const QByteArray log = Content(path);
    // The reply that never came may also cost the read after it.
    const int failed = int(log.count(",failed\r\n"));
    EXPECT_GE(failed, 1) << log.toStdString();
    EXPECT_EQ(log.count(",,,lux,failed\r\n"), failed) << "no raw count and no value";
    EXPECT_EQ(form->stats.Failed(), std::uint64_t(failed));
    EXPECT_EQ(form->stats.Count(), std::uint64_t(6 - failed));
    EXPECT_GT(form->stats.Mean(), 100) << "no 0 in the mean";
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains(QString::number(failed) + " failed"));
}

TEST_F(Trust, ASaturatedCountIsMarkedAndARangeChangedDuringTheRunIsLogged) {
    Measure(5);
    scene().ambientLux = 3000;  // above the 1000 lux range
    Settle();
    LogTo(path);
    Collect([&](int n) {
        if (n == 3) form->OptGain.at(1)->click();  // 4000 lux: the counts come down
        if (n == 4) Settle();
        return n < 6;
    });
    const QByteArray log = Content(path);
    const int change = log.indexOf("# range: 4000 lux\r\n");
    ASSERT_GT(change, log.indexOf("time,")) << log.toStdString();
    EXPECT_TRUE(log.left(change).contains(",saturated\r\n")) << log.toStdString();
    EXPECT_TRUE(log.mid(change).endsWith(",ok\r\n")) << log.toStdString();
    EXPECT_GE(form->stats.Saturated(), 2u);
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains("sat."));
    EXPECT_TRUE(form->FrmMeasureDetails->title().contains("lux"));
}

TEST_F(Trust, EveryStartLogsToAFileOfItsOwnAndTheFormNamesIt) {
    Measure(5);
    QFile existing(dir.filePath("offered.csv"));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    existing.write("an earlier run\n");
    existing.close();
    // A file the user chose is the first run's; a file only offered is never replaced.
    const struct {
        QString file;
        bool chosen;
        QStringList runs;
    } cases[] = {{path, true, {"run.csv", "run-2.csv", "run-3.csv"}},
                 {existing.fileName(), false, {"offered-2.csv", "offered-3.csv"}}};
    for (const auto& c : cases) {
        form->frmDataRecord->SetLogFile(c.file, c.chosen);
        form->frmDataRecord->chkLogAll->setChecked(true);
        for (const QString& run : c.runs) {
            Collect(3);
            EXPECT_EQ(Content(dir.filePath(run)).count(",ok\r\n") + Content(dir.filePath(run)).count(",early\r\n"), 3)
                << run.toStdString();
            QTest::qWait(600);
            EXPECT_TRUE(form->frmDataRecord->chkLogAll->toolTip().contains(run + ", 3 rows"))
                << form->frmDataRecord->chkLogAll->toolTip().toStdString();
        }
    }
    EXPECT_EQ(Content(existing.fileName()), "an earlier run\n");
}

TEST_F(Trust, WritingToDiskDoesNotWidenTheForm) {
    if (form->CompactView) form->Label13_DblClick();
    Measure(5);
    Collect(25);
    form->txtFilePath->setText(dir.filePath("block.txt"));
    Pump();
    const QSize before = form->minimumSizeHint();
    const int labelWidth = form->Label18->width();
    form->cmdStartRec_Click();
    Pump();
    EXPECT_EQ(form->minimumSizeHint(), before);
    EXPECT_EQ(form->Label18->width(), labelWidth);
    EXPECT_TRUE(form->Label18->toolTip().contains(" Measurement set(s) written: "));
}

class MultiFunctionTrust : public Lxm600FormFixture {
protected:
    // I2C packets out, and the lengths of the replies asked for.
    std::vector<std::vector<std::uint8_t>> Sent() {
        std::vector<std::vector<std::uint8_t>> out;
        for (auto& p : wire())
            if (p.dir == sim::WireDir::Out && p.endpoint == 2) out.push_back(p.bytes);
        return out;
    }
    std::vector<std::size_t> ReplyLengths() {
        std::vector<std::size_t> out;
        for (auto& p : wire())
            if (p.dir == sim::WireDir::In && p.endpoint == 0x82) out.push_back(p.bytes.size());
        return out;
    }
};

TEST_F(MultiFunctionTrust, ReadAdAndThePollWaitForABusyBusThenRead) {
    session.TransferBusy = true;
    form->cmdReadAd_Click();
    form->TimerIPol_Timer();
    form->TimerIPol_Timer();
    EXPECT_EQ(form->lblUSBStatis->text(), "Rd_AD Waiting");
    QTest::qWait(20);
    EXPECT_TRUE(Sent().empty()) << "nothing inside the transfer in progress";
    session.TransferBusy = false;
    QTest::qWait(20);
    using Packet = std::vector<std::uint8_t>;
    EXPECT_EQ(Sent(), (std::vector<Packet>{{3, 0x89, 8}, {2, 0x89, 0}}));
    EXPECT_EQ(ReplyLengths(), (std::vector<std::size_t>{5, 3}));
    EXPECT_EQ(form->lblUSBStatis->text(), "");
    EXPECT_EQ(form->polls(), 1);
}

TEST_F(MultiFunctionTrust, AScaleBeyond32BitsPlotsWithinTheGraph) {
    for (QLineEdit* box : {form->chart().txtScaleMin, form->chart().txtScaleMin2}) box->setText("-3000000000");
    form->cmdScale_Click();
    int passes = 0;
    form->collection().onPass = [&] {
        if (++passes == 3) form->cmdStopData_Click();
    };
    form->cmdCollectData_Click();
    EXPECT_EQ(passes, 3);
    EXPECT_GE(form->plot().TracePixels[kTraceNewest], 1);
    EXPECT_LE(form->plot().TracePixels2[kTraceNewest], kPlotRows);
}

TEST_F(MultiFunctionTrust, ScriptsSayEachBlankLineAndReloadLeavesAbortHidden) {
    QTemporaryDir dir;
    QFile f(dir.filePath("s.txt"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("04,01\r\n\r\n\r\n04\r\n");
    f.close();
    frmScriptOps script(session);
    script.Form_Load();
    files.answers.push_back(f.fileName());
    script.mnuScript_Read_Click();
    EXPECT_EQ(messages.texts, QStringList({"Script File has a blank line", "Script File has a blank line"}));
    script.cmdReload2_Click();
    EXPECT_FALSE(script.cmdExecAll->isHidden());
    EXPECT_FALSE(script.cmdRunContinuous->isHidden());
    EXPECT_TRUE(script.cmdAbort->isHidden());
}

}  // namespace
}  // namespace lxm::test
