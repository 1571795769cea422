// The device forms neither lose nor misread what they measure: a re-plugged board is not read
// before it is reopened, failed and saturated readings are marked, settings changed during a
// run and every run's rows are kept, and the multi-function form waits for a busy bus.
#include <QCheckBox>
#include <QRadioButton>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "device/BoardMenu.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"
#include "scripts/frmScriptOps.h"
#include "support/Files.h"

namespace lxm::test {
namespace {

struct Trust : FormFixture {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("run.csv"));
    void LogTo(const QString& file, bool chosen = true) {
        form->frmDataRecord->SetLogFile(file, chosen);
        form->frmDataRecord->chkLogAll->setChecked(true);
    }
};

TEST_F(Trust, ABoardPluggedInAgainIsNotReadUntilItIsReopened) {
    Measure(5);
    LogTo(path);
    driver.Unplug();
    Pump();
    driver.Plug();
    Pump();
    messages.clear();
    const std::size_t wireBefore = wire().size();
    EXPECT_EQ(Collect(5), 0);
    form->cmdRead_ADC_Click();
    EXPECT_EQ(DataReads(wireBefore), 0);
    ASSERT_EQ(messages.texts.size(), 2) << "one message per click";
    EXPECT_TRUE(messages.texts[0].contains("Board > Reconnect"));
    EXPECT_FALSE(QFile::exists(path)) << "no log of zeros";
    form->boardMenu->mnuReconnect_Click();
    EXPECT_EQ(Collect(5), 5);
}

TEST_F(Trust, AFailedReadIsNoReadingOfZero) {
    Measure(5);
    Settle();
    LogTo(path);
    Collect([&](int n) {
        if (n == 3) driver.TimeOutNext(2);  // the next pass's read gets no reply
        return n < 6;
    });
    // The reply that never came may also cost the read after it.
    const int failed = int(ReadFile(path).count(",,,lux,failed\r\n"));
    EXPECT_GE(failed, 1) << ReadFile(path).toStdString();
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
        if (n == 3) form->OptGain.at(1)->click();  // 4000 lux
        if (n == 4) Settle();
        return n < 6;
    });
    const QByteArray log = ReadFile(path);
    const int change = log.indexOf("# range: 4000 lux\r\n");
    ASSERT_GT(change, log.indexOf("time,")) << log.toStdString();
    EXPECT_TRUE(log.left(change).contains(",saturated\r\n")) << log.toStdString();
    EXPECT_TRUE(log.mid(change).endsWith(",ok\r\n")) << log.toStdString();
    EXPECT_TRUE(form->FrmMeasureDetails->lblFlagged->text().contains(QString::number(form->stats.Saturated())));
}

// A file the user chose is the first run's; a file only offered is never replaced.
TEST_F(Trust, EveryStartLogsToAFileOfItsOwnAndTheFormNamesIt) {
    Measure(5);
    const QString offered = dir.filePath("offered.csv");
    ASSERT_TRUE(WriteFile(offered, "earlier\n"));
    for (const auto& [file, chosen, runs] :
         {std::tuple{path, true, QStringList{"run.csv", "run-2.csv", "run-3.csv"}},
          std::tuple{offered, false, QStringList{"offered-2.csv"}}}) {
        LogTo(file, chosen);
        for (const QString& run : runs) {
            Collect(3);
            EXPECT_EQ(ReadFile(dir.filePath(run)).count("\r\n20"), 3) << run.toStdString();
            QTest::qWait(600);
            EXPECT_TRUE(form->frmDataRecord->chkLogAll->toolTip().contains(run + ", 3 rows"));
        }
    }
    EXPECT_EQ(ReadFile(offered), "earlier\n");
}

TEST_F(Trust, WritingToDiskDoesNotWidenTheForm) {
    if (form->CompactView) form->Label13_DblClick();
    Measure(5);
    Collect(25);
    form->txtFilePath->setText(dir.filePath("block.txt"));
    Pump();
    const QSize before = form->minimumSizeHint();
    form->cmdStartRec_Click();
    Pump();
    EXPECT_EQ(form->minimumSizeHint(), before);
    EXPECT_TRUE(form->Label18->toolTip().contains(" Measurement set(s) written: "));
}

using MultiFunctionTrust = Lxm600FormFixture;

TEST_F(MultiFunctionTrust, ReadAdAndThePollWaitForABusyBusThenRead) {
    session.TransferBusy = true;
    form->cmdReadAd_Click();
    form->TimerIPol_Timer();
    form->TimerIPol_Timer();
    EXPECT_EQ(form->lblUSBStatis->text(), "Rd_AD Waiting");
    QTest::qWait(20);
    EXPECT_TRUE(wire().empty()) << "nothing inside the transfer in progress";
    session.TransferBusy = false;
    QTest::qWait(20);
    // Out the packet, in the length asked for: registers 8 to 10 with 5, then 0 and 1 with 3.
    std::vector<std::vector<std::uint8_t>> packets;
    for (auto& p : wire())
        packets.push_back(p.dir == sim::WireDir::In ? std::vector{std::uint8_t(p.bytes.size())} : p.bytes);
    EXPECT_EQ(packets, (std::vector<std::vector<std::uint8_t>>{{3, 0x89, 8}, {5}, {2, 0x89, 0}, {3}}));
    EXPECT_EQ(form->lblUSBStatis->text(), "");
    EXPECT_EQ(form->polls(), 1);
}

TEST_F(MultiFunctionTrust, AnAlsReadingBeforeItsFirstConversionIsEarly) {
    form->OptGraph.at(1)->click();
    form->OptALSRange.at(0)->click();  // 2000 lux: 300 lux is no saturated count
    form->txtInterval->setText("0");
    form->chkALSEnable->click();
    form->collection().onPass = [&] { form->cmdStopData_Click(); };
    form->cmdCollectData_Click();
    EXPECT_EQ(form->collection().PassStatus, SampleStatus::Early);
    clock.AdvanceMs(30);
    form->cmdCollectData_Click();
    EXPECT_EQ(form->collection().PassStatus, SampleStatus::Ok);
}

TEST_F(MultiFunctionTrust, AScaleBeyond32BitsPlotsWithinTheGraph) {
    for (QLineEdit* box : {form->chart().txtScaleMin, form->chart().txtScaleMin2}) box->setText("-3000000000");
    form->cmdScale_Click();
    form->collection().onPass = [&] { form->cmdStopData_Click(); };
    form->cmdCollectData_Click();
    EXPECT_GE(form->plot().TracePixels[kTraceNewest], 1);
    EXPECT_LE(form->plot().TracePixels2[kTraceNewest], kPlotRows);
}

TEST_F(MultiFunctionTrust, ScriptsSayEachBlankLineAndReloadLeavesAbortHidden) {
    QTemporaryDir dir;
    ASSERT_TRUE(WriteFile(dir.filePath("s.txt"), "04,01\r\n\r\n\r\n04\r\n"));
    frmScriptOps script(session);
    script.Form_Load();
    files.answers.push_back(dir.filePath("s.txt"));
    script.mnuScript_Read_Click();
    EXPECT_EQ(messages.count("Script File has a blank line"), 2);
    script.cmdReload2_Click();
    EXPECT_FALSE(script.cmdExecAll->isHidden() || script.cmdRunContinuous->isHidden());
    EXPECT_TRUE(script.cmdAbort->isHidden());
}

}  // namespace
}  // namespace lxm::test
