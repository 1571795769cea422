// The script form: loading through the file dialog, the grid, a run with its counts, the pause
// box, the CSV export and writing the script back.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>

#include "scripts/frmScriptOps.h"
#include "support/DeviceFixture.h"
#include "support/Files.h"

namespace lxm {
namespace {

class ScriptForm : public ::testing::Test, protected test::BoardFixture {
protected:
    void SetUp() override {
        OpenSession();
        wire().clear();
    }
    QString Write(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(test::WriteFile(path, bytes));
        return path;
    }
    QString Cell(int row, int column) {
        QTableWidgetItem* item = form.vbalGrid1->item(row, column);
        return item ? item->text() : QStringLiteral("<none>");
    }
    void Open(const QString& path) {
        files.answers.push_back(path);
        form.mnuScript_Read_Click();
    }
    int SentPackets() {
        int n = 0;
        for (const sim::WirePacket& p : wire()) n += p.dir == sim::WireDir::Out && p.endpoint == 0x02;
        return n;
    }

    QTemporaryDir dir;
    frmScriptOps form{session};
};

TEST_F(ScriptForm, StartsEmptyWithTheNineColumns) {
    EXPECT_EQ(form.windowTitle(), "Setup - Script IC Send/Receive");
    EXPECT_EQ(form.txtRunning->text(), "No Script File Selected");
    EXPECT_TRUE(form.frmScriptExec->isHidden());
    // The names themselves are the export's header, checked byte for byte there.
    ASSERT_EQ(form.vbalGrid1->columnCount(), 9);
    EXPECT_EQ(form.vbalGrid1->horizontalHeaderItem(5)->text(), "Act_Rd");
}

TEST_F(ScriptForm, OpeningAFileFillsTheGridAndShowsTheControls) {
    const QString path = Write("thresholds.txt", "# set-up\r\n`A88\r\n\r\n2,F\r\n04,,5A # check\r\n`w250");
    Open(path);
    EXPECT_EQ(files.titles, QStringList{"Select Script File to Open"});
    EXPECT_EQ(messages.texts, QStringList{"Script File has a blank line"});
    ASSERT_EQ(form.vbalGrid1->rowCount(), 6);
    // Each column from its own cell of the loaded row.
    EXPECT_EQ(
        QStringList({Cell(0, 0), Cell(1, 1), Cell(3, 2), Cell(3, 3), Cell(4, 4), Cell(5, 6), Cell(4, 7)}),
        QStringList({"1", "88", "02", "0F", "5A", "Cmd:Delay :250: mSec", "# check"}));
    EXPECT_FALSE(form.frmScriptExec->isHidden());
    EXPECT_FALSE(form.cmdReload2->isHidden());
    EXPECT_EQ(form.txtTotLines->text(), "6");
    EXPECT_EQ(form.txtRunning->text(), path);
    EXPECT_EQ(form.windowTitle(), "[ thresholds.txt ]    Script IC Send / Receive");
}

TEST_F(ScriptForm, FilesThatCannotBeLoadedSayWhyAndKeepTheGrid) {
    Open(Write("good.txt", "04,01\n"));
    ASSERT_EQ(form.vbalGrid1->rowCount(), 1);
    struct Case {
        QString path;
        QString says;
    } cases[] = {
        {dir.filePath("missing.txt"), "missing.txt"},
        {dir.path(), dir.path()},  // a folder
        {Write("empty.txt", ""), "is empty"},
        {Write("binary.txt", QByteArray("\x7f"
                                        "ELF\0\0\x01",
                                        7)),
         "binary"},
    };
    for (const Case& c : cases) {
        messages.clear();
        Open(c.path);
        ASSERT_EQ(messages.texts.size(), 1) << c.path.toStdString();
        EXPECT_TRUE(messages.texts[0].contains(c.says)) << messages.texts[0].toStdString();
        EXPECT_TRUE(messages.texts[0].contains(c.path)) << "a file error names the path";
        EXPECT_EQ(form.vbalGrid1->rowCount(), 1);
    }
}

TEST_F(ScriptForm, RunAllStepsFillsActRdAndTheCounts) {
    Open(Write("run.txt", "04,A55A\n04,,A55A\n04,,0000\n"));
    form.cmdExecAll->click();
    EXPECT_EQ(Cell(1, 5), "A55A");
    EXPECT_EQ(Cell(1, 8), "23205");  // 0x5AA5
    EXPECT_EQ(Cell(1, 1), "88");
    EXPECT_EQ(Cell(2, 5), "A55A");
    EXPECT_EQ(form.txttotReads->text(), "2");
    EXPECT_EQ(form.txtRdPass->text(), "1");
    EXPECT_EQ(form.txtRdFails->text(), "1");
    EXPECT_EQ(form.txtScriptLine1->text(), "Done");
    EXPECT_TRUE(form.cmdExecAll->isEnabled());
    EXPECT_FALSE(form.cmdAbort->isEnabled());

    // Reload clears the pass and fail counts and the read cells.
    form.cmdReload2_Click();
    EXPECT_EQ(form.txtRdPass->text(), "");
    EXPECT_EQ(form.txtRdFails->text(), "");
    EXPECT_EQ(Cell(1, 5), "");
    EXPECT_FALSE(form.cmdExecAll->isHidden());
}

TEST_F(ScriptForm, LoopContRunsTheLoopCountAndRefusesANonsenseCount) {
    Open(Write("loop.txt", "04,,00\n"));
    form.txtLoopCount->setText("4");
    form.cmdRunContinuous->click();
    EXPECT_EQ(form.txttotReads->text(), "4");
    EXPECT_EQ(SentPackets(), 4);

    for (const char* bad : {"0", "-1", "abc", "99999999999999999999", ""}) {
        wire().clear();
        messages.clear();
        form.txtLoopCount->setText(bad);
        form.cmdRunContinuous->click();
        EXPECT_EQ(messages.texts.size(), 1) << bad;
        EXPECT_EQ(SentPackets(), 0) << bad;
    }
}

TEST_F(ScriptForm, ThePauseBoxGoesOnWithOkAndAbortEndsItAtOnce) {
    Open(Write("pause.txt", "04,01\n`w\n04,02\n"));
    auto answerBox = [&](QMessageBox::StandardButton button) {
        QTimer::singleShot(20, &form, [this, button] {
            for (QMessageBox* box : form.findChildren<QMessageBox*>()) {
                EXPECT_EQ(box->text(), "Script Pause Line :2 Click OK to Continue, Cancel to Abort");
                box->button(button)->click();
            }
        });
    };
    answerBox(QMessageBox::Ok);
    form.cmdExecAll->click();
    EXPECT_EQ(SentPackets(), 2);
    EXPECT_EQ(form.txtScriptLine1->text(), "Done");

    wire().clear();
    answerBox(QMessageBox::Cancel);
    form.cmdExecAll->click();
    EXPECT_EQ(SentPackets(), 1);
    EXPECT_EQ(form.txtScriptLine1->text(), "Aborted at line 2");

    // Abort on the form while the question is up: the box goes, the run ends.
    wire().clear();
    QTimer::singleShot(20, &form, [this] { form.cmdAbort->click(); });
    form.cmdExecAll->click();
    EXPECT_EQ(SentPackets(), 1);
    EXPECT_EQ(form.txtScriptLine1->text(), "Aborted at line 2");
    Pump();
    for (QMessageBox* box : form.findChildren<QMessageBox*>()) EXPECT_FALSE(box->isVisible());
}

TEST_F(ScriptForm, TheGridExportsAsCsvAndAppends) {
    Open(Write("export.txt", "# say \"hi\", twice\n04,,5A\n"));
    form.cmdExecAll->click();
    const QString csv = dir.filePath("table");
    files.answers.push_back(csv);
    form.cmdBrowse_Click();
    EXPECT_EQ(files.titles.last(), "Select File For Update");
    EXPECT_EQ(form.txtFilePath->text(), csv + ".csv") << "the default extension";

    form.cmdStartRec_Click();
    const QByteArray header =
        "\"Line\",\"I2C Adr\",\"Reg Adr\",\"Data_Wr\",\"Data_Rd\",\"Act_Rd\",\"Operation\",\"Comment\",\"AD "
        "Decimal\"\r\n";
    const QByteArray rows =
        "\"1\",\"\",\"\",\"\",\"\",\"\",\"NOP\",\"# say \"\"hi\"\", twice\",\"\"\r\n"
        "\"2\",\"88\",\"04\",\"\",\"5A\",\"00\",\"1 Reg: R:1\",\"\",\"0\"\r\n";
    EXPECT_EQ(test::ReadFile(csv + ".csv"), header + rows);
    EXPECT_TRUE(form.Label18->text().startsWith(" 2 Row(s) written: "));

    form.chkAppend->setChecked(true);
    form.cmdStartRec_Click();
    EXPECT_EQ(test::ReadFile(csv + ".csv"), header + rows + rows)
        << "appending adds rows, not a second header";

    messages.clear();
    form.txtFilePath->setText(dir.filePath("no/such/folder/t.csv"));
    form.cmdStartRec_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains(dir.filePath("no/such/folder/t.csv")));
}

TEST_F(ScriptForm, TheGridIsWrittenBackAsAScriptThatLoadsTheSame) {
    Open(Write("orig.txt", "# c\n`A 8\n\n2,F\n04,,xx\n`w10"));
    const QString out = dir.filePath("copy.txt");
    files.answers.push_back(out);
    form.mnuScript_Write_Click();
    const QByteArray text = test::ReadFile(out);
    EXPECT_TRUE(text.endsWith("\r\nEND\r\n"));
    EXPECT_TRUE(form.txtScriptLine1->text().startsWith("copy.txt Script written: "));

    QStringList before;
    for (int r = 0; r < form.vbalGrid1->rowCount(); ++r) before << Cell(r, 2) + Cell(r, 3) + Cell(r, 6);
    messages.clear();
    Open(out);
    EXPECT_TRUE(messages.texts.isEmpty());
    QStringList after;
    for (int r = 0; r < form.vbalGrid1->rowCount(); ++r) after << Cell(r, 2) + Cell(r, 3) + Cell(r, 6);
    before[2] = after[2];  // the empty line came back as an empty comment
    EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace lxm
