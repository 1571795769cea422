// Record files: number text, block layout byte for byte, and writing a file whole.
#include <gtest/gtest.h>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "acquisition/Recording.h"
#include "support/Files.h"

namespace lxm {
namespace {

using test::ReadFile;

TEST(RecordingTest, NumberTextHasItsSignBlankAndShortestDigits) {
    EXPECT_EQ(NumberText(0), " 0");
    EXPECT_EQ(NumberText(-0.0), " 0");
    EXPECT_EQ(NumberText(1234.5), " 1234.5");
    EXPECT_EQ(NumberText(-3), "-3");
    EXPECT_EQ(NumberText(0.1 + 0.2), " 0.30000000000000004") << "exact, not rounded to 15 digits";
    EXPECT_EQ(NumberText(299.8046875), " 299.8046875");
    EXPECT_EQ(NumberText(1e21), " 1000000000000000000000") << "no exponent";
    EXPECT_EQ(NumberText(-0.00025), "-0.00025");
}

TEST(RecordingTest, MeasurementBlockByteForByte) {
    std::vector<double> samples(1011, 1.0);
    for (int i = 0; i < 20; ++i) samples[std::size_t(i)] = 1000 + i;
    samples[12] = -3;
    samples[13] = 0.5;
    const MeasurementHeader h{"A0", "03", "100", "11/15/2009", "2:30:00 PM"};
    EXPECT_EQ(MeasurementBlock(h, samples, 20),
              QByteArray("Collect Reg0:&hA0 :Reg1 &h03,Interval 100, 11/15/2009,2:30:00 PM, Qty 9\r\n"
                         " 0, 1011\r\n"
                         " 1,-3\r\n"
                         " 2, 0.5\r\n"
                         " 3, 1014\r\n"
                         " 4, 1015\r\n"
                         " 5, 1016\r\n"
                         " 6, 1017\r\n"
                         " 7, 1018\r\n"
                         " 8, 1019\r\n"
                         "END\r\n"));
    EXPECT_EQ(RecordedCaption(20, "11/15/2009", "2:30:00 PM"),
              " 10 Measurement set(s) written: 11/15/2009 2:30:00 PM");
    // A full buffer: samples 11..1009, the last entry (overwritten in place) is never recorded.
    const QByteArray full = MeasurementBlock(h, samples, 1010);
    EXPECT_EQ(full.count("\r\n"), 1 + 999 + 1);
    EXPECT_TRUE(full.contains(", Qty 999\r\n 0, 1011\r\n"));
    EXPECT_TRUE(full.endsWith(" 998, 1\r\nEND\r\n"));
}

TEST(RecordingTest, TraceBlockKeepsTheTextAsItIs) {
    EXPECT_EQ(TraceBlock("W 88 01 40\nR 89 00", "11/15/2009", "2:30:00 PM"),
              QByteArray("Trace File11/15/2009 2:30:00 PM\r\nW 88 01 40\nR 89 00\r\nEND\r\n"));
    EXPECT_EQ(TraceBlock("", "d", "t"), QByteArray("Trace Filed t\r\n\r\nEND\r\n"));
}

TEST(RecordingTest, DateAndTimeOfARecord) {
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(RecordDate(QDate(2009, 11, 15), us), "11/15/2009");
    EXPECT_EQ(RecordTime(QTime(14, 30, 0), us), "2:30:00 PM");
    const QLocale de(QLocale::German, QLocale::Germany);
    EXPECT_EQ(RecordDate(QDate(2009, 11, 5), de), "05.11.2009");
    EXPECT_EQ(RecordTime(QTime(9, 5, 7), de), "09:05:07");
}

TEST(RecordingTest, DialogFilterAndDefaultExtension) {
    EXPECT_EQ(DialogFilter("All Files (*.*)|*.*|LXM20x Data Files(*.txt)|*.txt"),
              "All Files (*.*);;LXM20x Data Files(*.txt)");
    EXPECT_EQ(DialogFilter("Text|*.txt"), "Text (*.txt)");
    EXPECT_EQ(WithDefaultExtension("/tmp/run1", "*.txt"), "/tmp/run1.txt");
    EXPECT_EQ(WithDefaultExtension("/tmp/run1.csv", "*.txt"), "/tmp/run1.csv");
    EXPECT_EQ(WithDefaultExtension("/tmp.d/run1", "*.txt"), "/tmp.d/run1.txt");
}

struct FileTest : ::testing::Test {
    QTemporaryDir dir;
    QString Path(const char* name) { return dir.filePath(QString::fromLatin1(name)); }
    QStringList Entries() {
        return QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
};

TEST_F(FileTest, OverwriteReplacesAndAppendAddsWithoutLeftovers) {
    const QString p = Path("Data.txt");
    EXPECT_EQ(WriteFileWhole(p, "one\r\n", false), "");
    EXPECT_EQ(WriteFileWhole(p, "two\r\n", true), "");
    EXPECT_EQ(ReadFile(p), "one\r\ntwo\r\n");
    EXPECT_EQ(WriteFileWhole(p, "three\r\n", false), "");
    EXPECT_EQ(ReadFile(p), "three\r\n");
    EXPECT_EQ(WriteFileWhole(Path("new.txt"), "x", true), "") << "appending to no file creates it";
    EXPECT_EQ(Entries(), (QStringList{"Data.txt", "new.txt"})) << "no temporary file stays behind";
}

TEST_F(FileTest, ThroughALinkTheLinkedFileIsReplaced) {
    const QString real = Path("real.txt");
    ASSERT_EQ(WriteFileWhole(real, "one\r\n", false), "");
    ASSERT_TRUE(QFile::link(real, Path("link.txt")));
    EXPECT_EQ(WriteFileWhole(Path("link.txt"), "two\r\n", true), "");
    EXPECT_TRUE(QFileInfo(Path("link.txt")).isSymLink());
    EXPECT_EQ(ReadFile(real), "one\r\ntwo\r\n");
}

TEST_F(FileTest, KeepsThePermissionsOfTheFileItReplaces) {
    const QString p = Path("Data.txt");
    ASSERT_EQ(WriteFileWhole(p, "one", false), "");
    QFile::setPermissions(p, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    ASSERT_EQ(WriteFileWhole(p, "two", false), "");
    const auto perms = QFile::permissions(p);
    EXPECT_TRUE(perms.testFlag(QFile::ReadOther));
    EXPECT_FALSE(perms.testFlag(QFile::ReadGroup)) << "a fresh file would have had it";
    EXPECT_TRUE(perms.testFlag(QFile::WriteOwner));
}

TEST_F(FileTest, FailuresGiveTheSystemsReasonAndLeaveNothing) {
    EXPECT_EQ(WriteFileWhole(Path("missing/Data.txt"), "x", false), "No such file or directory");
    EXPECT_EQ(WriteFileWhole(dir.path(), "x", false), "Is a directory");
    EXPECT_EQ(WriteFileWhole(dir.path(), "x", true), "Is a directory");
    EXPECT_EQ(WriteFileWhole(QString(), "x", false), "No such file or directory");
    EXPECT_TRUE(Entries().isEmpty());
    EXPECT_EQ(FileErrorMessage("/x/Data.txt", "Permission denied", "The measurements are kept."),
              "Could not write \"/x/Data.txt\": Permission denied. The measurements are kept. Choose another "
              "file with \"Browse\" and write again.");
}

}  // namespace
}  // namespace lxm
