// The collection without a window, run in-process on the simulated board where a test can
// pull the cable and watch the error stream.
#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include "app/HeadlessCollect.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "support/FakeClock.h"

namespace lxm::test {
namespace {

struct HeadlessCollect : ::testing::Test {
    FakeClock clock;
    sim::SimBoard board{clock};
    sim::SimDriver driver{board};
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("run.csv"));
    std::string err;

    int Run(std::vector<std::string> args, bool progress = false) {
        args.insert(args.end(), {"--output", path.toStdString()});
        const CommandLine cl = ParseCommandLine(args);
        EXPECT_EQ(cl.error, "");
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* stream = ::open_memstream(&text, &size);
        const int rc = RunCollectHeadless(cl, driver, clock, stream, progress);
        std::fclose(stream);
        err.assign(text, size);
        std::free(text);
        return rc;
    }
    QList<QByteArray> Rows() {
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly)) return {};
        QList<QByteArray> rows;
        bool columns = false;
        for (const QByteArray& line : f.readAll().split('\n')) {
            if (line.isEmpty() || line.startsWith('#')) continue;
            if (!columns) {
                columns = true;
                continue;
            }
            rows << line;
        }
        return rows;
    }
};

TEST_F(HeadlessCollect, RunsTheAskedSamplesThroughTheFormsOwnSetUp) {
    ASSERT_EQ(Run({"--collect", "ir-cont", "--samples", "40", "--resolution", "12", "--interval", "3"}, true),
              0)
        << err;
    const QList<QByteArray> rows = Rows();
    ASSERT_EQ(rows.size(), 40);
    EXPECT_TRUE(rows.back().startsWith("2009-11-15T14:30:")) << rows.back().toStdString();
    EXPECT_TRUE(rows.back().contains(",40,")) << rows.back().toStdString();
    EXPECT_TRUE(rows.back().endsWith(",counts\r"));
    // The run wrote the resolution and the continuous infrared mode to the sensor.
    EXPECT_EQ(board.sensor().Read(1) & 0x0C, 1 << 2);
    EXPECT_NE(err.find("40 samples, "), std::string::npos) << err;
}

TEST_F(HeadlessCollect, ABoardThatGoesAwayEndsWithExitOneAndTheFileKeepsItsRows) {
    driver.UnplugAfterTransfers(120);
    EXPECT_EQ(Run({"--collect", "als-cont", "--interval", "0"}), 1);
    const QList<QByteArray> rows = Rows();
    EXPECT_GT(rows.size(), 5);
    EXPECT_NE(err.find("the board went away after " + std::to_string(rows.size()) + " samples"),
              std::string::npos)
        << err;
}

TEST_F(HeadlessCollect, NoBoardIsExitTwoWithoutAFile) {
    driver.Unplug();
    EXPECT_EQ(Run({"--collect", "als", "--samples", "3"}), 2);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_NE(err.find("not connected"), std::string::npos) << err;
}

}  // namespace
}  // namespace lxm::test
