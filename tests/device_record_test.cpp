// Recording on the family form and the trace window: the measurement file as the user gets
// it after a collection, the file dialog, and files that cannot be written.
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextEdit>

#include "device/parts/Doco.h"
#include "device/parts/RecordFrame.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

const char* const kHeader20 = "Collect Reg0:&hA0 :Reg1 &h44,Interval 8, 11/15/2009,2:30:00 PM, Qty 9\r\n";

struct RecordTest : FormFixture {
    QTemporaryDir dir;
    RecordTest() {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        form->txtFilePath->setText(dir.filePath("Data.txt"));
        Measure(5);  // ALS continuous: register 0 reads A0
    }
    ~RecordTest() override { QLocale::setDefault(QLocale::c()); }
    // The buffer as a run of n passes leaves it, with readings that are easy to tell apart.
    void Readings(int count, double first = 100) {
        form->SampleCount = count;
        for (int i = 0; i <= FormFixture::form->kSampleLast; ++i)
            form->SampleValues[std::size_t(i)] = first + i;
    }
    std::string File(const QString& name = QStringLiteral("Data.txt")) {
        QFile f(dir.filePath(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : "<missing>";
    }
    static std::string Block20(double first = 100) {
        std::string b = kHeader20;
        for (int i = 0; i < 9; ++i)
            b += " " + std::to_string(i) + "," + NumberText(first + 11 + i).toStdString() + "\r\n";
        return b + "END\r\n";
    }
};

TEST_F(RecordTest, AfterACollectionTheReadingsGoToTheFile) {
    const int passes = Collect([&](int) { return form->SampleCount < 31; });
    ASSERT_EQ(form->SampleCount, 31);
    ASSERT_GT(passes, 0);
    form->cmdStartRec->click();
    const QList<QByteArray> lines = QByteArray::fromStdString(File()).split('\n');
    ASSERT_EQ(lines.size(), 1 + 20 + 1 + 1);
    EXPECT_TRUE(lines[0].endsWith(", Qty 20\r"));
    EXPECT_EQ(lines[1], " 0," + NumberText(form->SampleValues[11]).toUtf8() + "\r");
    EXPECT_EQ(lines[20], " 19," + NumberText(form->SampleValues[30]).toUtf8() + "\r");
    EXPECT_EQ(lines[21], "END\r");
    EXPECT_EQ(form->Label18->toolTip(), " 21 Measurement set(s) written: 11/15/2009 2:30:00 PM");
}

TEST_F(RecordTest, TwentyReadingsMakeNineLinesAndAppendAddsBlocks) {
    form->txtInterval->setText(QStringLiteral("8"));
    Readings(20);
    form->cmdStartRec_Click();
    EXPECT_EQ(File(), Block20());
    EXPECT_EQ(form->Label18->toolTip(), " 10 Measurement set(s) written: 11/15/2009 2:30:00 PM");
    EXPECT_TRUE(form->cmdCollectData->isEnabled());

    form->chkAppend->setChecked(true);
    Readings(20, -50);
    form->cmdStartRec_Click();
    EXPECT_EQ(File(), Block20() + Block20(-50));

    form->chkAppend->setChecked(false);
    Readings(20, 7);
    form->cmdStartRec_Click();
    EXPECT_EQ(File(), Block20(7)) << "without Append the file holds the last block only";
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(RecordTest, TooFewReadingsWriteNothing) {
    Readings(19);
    form->cmdStartRec_Click();
    EXPECT_EQ(messages.texts, QStringList{"Save More Measurements"});
    EXPECT_FALSE(QFile::exists(dir.filePath("Data.txt")));
    EXPECT_TRUE(form->Label18->text().isEmpty());
}

TEST_F(RecordTest, UnwritablePathIsReportedAndTheReadingsStayForAnotherTry) {
    form->txtInterval->setText(QStringLiteral("8"));
    Readings(20);
    form->chkAppend->setChecked(true);
    form->txtFilePath->setText(dir.filePath("no such folder/Data.txt"));
    form->cmdStartRec_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0],
              "Could not write \"" + dir.filePath("no such folder/Data.txt") +
                  "\": No such file or directory. The measurements are kept. Choose another "
                  "file with \"Browse\" and write again.");
    EXPECT_TRUE(form->cmdCollectData->isEnabled());

    form->txtFilePath->setText(dir.path());
    messages.clear();
    form->cmdStartRec_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains(": Is a directory.")) << messages.texts[0].toStdString();

    files.answers.push_back(dir.filePath("second"));
    form->cmdBrowse->click();
    EXPECT_EQ(form->txtFilePath->text(), dir.filePath("second.txt"));
    form->cmdStartRec_Click();
    EXPECT_EQ(File("second.txt"), Block20());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"second.txt"});
}

TEST_F(RecordTest, BrowseOffersTheDialogAndCancelKeepsThePath) {
    const QString before = form->txtFilePath->text();
    form->cmdBrowse_Click();
    EXPECT_EQ(files.titles, QStringList{"Select File For Recording"});
    EXPECT_EQ(form->txtFilePath->text(), before);
    files.answers.push_back(QStringLiteral("/data/run.csv"));
    form->cmdBrowse_Click();
    EXPECT_EQ(form->txtFilePath->text(), "/data/run.csv");
}

TEST_F(RecordTest, WritingDuringARunLeavesStartDisabled) {
    Collect([&](int) {
        if (form->SampleCount == 25) form->cmdStartRec_Click();
        return form->SampleCount < 27;
    });
    EXPECT_NE(File().find(", Qty 14\r\n"), std::string::npos);
    EXPECT_TRUE(form->cmdCollectData->isEnabled()) << "the run's end enables it";
    Collect([&](int pass) {
        if (pass == 1) {
            Readings(20);
            form->cmdStartRec_Click();
            EXPECT_FALSE(form->cmdCollectData->isEnabled());
        }
        return false;
    });
}

TEST_F(RecordTest, TraceWindowSavesItsTextAndClears) {
    ASSERT_NE(form->mnuDoco, nullptr);
    form->mnuDoco->trigger();
    Doco* doco = form->DocoForm();
    ASSERT_NE(doco, nullptr);
    EXPECT_EQ(doco->windowTitle(), "I2C Trace Options");
    EXPECT_TRUE(doco->frmDataRecord->txtFilePath->text().endsWith("/Trace.txt"));
    doco->frmDataRecord->txtFilePath->setText(dir.filePath("trace.txt"));
    doco->rtxt1->setPlainText(QStringLiteral("W 88 01 A0\nR 89 00 A0"));
    doco->ChkTrace.at(0)->setChecked(true);  // has no effect on what is written
    doco->frmDataRecord->cmdStartRec->click();
    const std::string one = "Trace File11/15/2009 2:30:00 PM\r\nW 88 01 A0\nR 89 00 A0\r\nEND\r\n";
    EXPECT_EQ(File("trace.txt"), one);

    doco->frmDataRecord->chkAppend->setChecked(true);
    doco->cndTclear->click();
    EXPECT_TRUE(doco->rtxt1->toPlainText().isEmpty());
    doco->cmdStartRec_Click();
    EXPECT_EQ(File("trace.txt"), one + "Trace File11/15/2009 2:30:00 PM\r\n\r\nEND\r\n");

    doco->frmDataRecord->txtFilePath->setText(dir.filePath("gone/trace.txt"));
    doco->cmdStartRec_Click();
    EXPECT_TRUE(messages.texts.isEmpty()) << "the trace window reports in its own line";
    EXPECT_TRUE(doco->lblResult->text().contains("No such file or directory"));

    files.answers.push_back(dir.filePath("t2"));
    doco->frmDataRecord->cmdBrowse->click();
    EXPECT_EQ(doco->frmDataRecord->txtFilePath->text(), dir.filePath("t2.txt"));
    form->mnuDoco->trigger();
    EXPECT_EQ(form->DocoForm(), doco) << "one window, reused";
}

}  // namespace
}  // namespace lxm::test
