// The collection without a window, run in-process on the simulated board where a test can
// pull the cable and watch the error stream.
#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/CoreCollect.h"
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

    HeadlessCollect() { board.scene().ideal = true; }  // exact counts
    int Run(std::vector<std::string> args, bool progress = false) {
        args.insert(args.end(), {"--output", path.toStdString()});
        const CommandLine cl = ParseCommandLine(args);
        EXPECT_EQ(cl.error, "");
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* stream = ::open_memstream(&text, &size);
        const int rc = RunCollectOnCore(cl, driver, clock, stream, progress);
        std::fclose(stream);
        err.assign(text, size);
        std::free(text);
        return rc;
    }
    QByteArray Header() {
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly)) return {};
        QByteArray header;
        for (QByteArray line = f.readLine(); line.startsWith('#'); line = f.readLine()) header += line;
        return header;
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

TEST_F(HeadlessCollect, RunsTheAskedSamplesWithTheAskedSettings) {
    ASSERT_EQ(Run({"--collect", "ir-cont", "--samples", "40", "--resolution", "12", "--interval", "3"}, true),
              0)
        << err;
    const QList<QByteArray> rows = Rows();
    ASSERT_EQ(rows.size(), 40);
    EXPECT_TRUE(rows.back().startsWith("2009-11-15T14:30:")) << rows.back().toStdString();
    EXPECT_TRUE(rows.back().contains(",40,")) << rows.back().toStdString();
    EXPECT_TRUE(rows.back().contains(",counts,"));
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

// The multi-function chip on the board, collected through its own form.
struct MultiFunctionCollect : HeadlessCollect {
    MultiFunctionCollect() { board.Carry(sim::Chip::Lxm600); }
    int Run600(std::vector<std::string> args, bool progress = false) {
        args.insert(args.end(), {"--sensor", "LXM600"});
        return Run(std::move(args), progress);
    }
    // The columns of the last row: time, seconds, sample, raw, value, unit.
    QList<QByteArray> Last() {
        const QList<QByteArray> rows = Rows();
        return rows.isEmpty() ? QList<QByteArray>{} : rows.back().trimmed().split(',');
    }
};

struct TypeCase {
    const char* type;
    const char* measurement;
    std::uint8_t config;  // register 1 as the run leaves it
    const char* unit;
};

void PrintTo(const TypeCase& c, std::ostream* os) {
    *os << c.type;
}

struct MultiFunctionTypes : MultiFunctionCollect, ::testing::WithParamInterface<TypeCase> {};

// A type and its continuous twin set the chip up alike; each logs the reading of its own part
// at the default range, which is the one the form converts lux at.
TEST_P(MultiFunctionTypes, SetsThePartUpAndLogsItsReading) {
    const TypeCase& c = GetParam();
    ASSERT_EQ(Run600({"--collect", c.type, "--samples", "25", "--interval", "30"}, true), 0) << err;
    const QByteArray header = Header();
    EXPECT_TRUE(header.contains("# sensor: LXM600\r\n")) << header.toStdString();
    EXPECT_TRUE(header.contains(QByteArray("# measurement: ") + c.measurement + "\r\n"))
        << header.toStdString();
    EXPECT_TRUE(header.contains("# range: 2000 lux\r\n")) << header.toStdString();
    EXPECT_EQ(board.sensor().Read(1), c.config);

    ASSERT_EQ(Rows().size(), 25);
    const QList<QByteArray> last = Last();
    ASSERT_EQ(last.size(), 7) << Rows().back().toStdString();
    EXPECT_EQ(last[2], "25");
    EXPECT_EQ(last[5], c.unit);
    // The default scene: 300 lux and 120 of infrared on a 2000 lux full scale of 4096 counts,
    // and an object of reflectance 0.5 at 6 cm.
    const sim::LightScene scene;
    const double value = last[4].toDouble();
    if (std::string(c.unit) == "lux") {
        EXPECT_EQ(last[3], "614");
        EXPECT_NEAR(value, scene.ambientLux, scene.ambientLux * 0.01);
    } else {
        EXPECT_EQ(value, last[3].toDouble());
        EXPECT_EQ(last[3], c.measurement == std::string("IR") ? "245" : "100");
    }
    EXPECT_NE(err.find(std::string(" ") + c.unit), std::string::npos) << err;
}

INSTANTIATE_TEST_SUITE_P(EachType, MultiFunctionTypes,
                         ::testing::Values(TypeCase{"als", "ALS", 0x06, "lux"},
                                           TypeCase{"als-cont", "ALS", 0x06, "lux"},
                                           TypeCase{"ir", "IR", 0x07, "counts"},
                                           TypeCase{"ir-cont", "IR", 0x07, "counts"},
                                           TypeCase{"prox", "Proximity", 0x82, "counts"},
                                           TypeCase{"prox-cont", "Proximity", 0x82, "counts"}),
                         [](const auto& info) {
                             std::string name = info.param.type;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST_F(MultiFunctionCollect, TheRangeIsChosenByItsLuxValue) {
    ASSERT_EQ(Run600({"--collect", "ir-cont", "--samples", "5", "--interval", "30", "--range", "125"}), 0)
        << err;
    EXPECT_EQ(board.sensor().Read(1), 0x05);
    // 120 of infrared on a 125 lux full scale.
    EXPECT_EQ(Last().value(3), "3932");
}

TEST_F(MultiFunctionCollect, ABoardThatGoesAwayEndsWithExitOneAndTheFileKeepsItsRows) {
    driver.UnplugAfterTransfers(60);
    EXPECT_EQ(Run600({"--collect", "prox-cont", "--interval", "0"}), 1);
    const QList<QByteArray> rows = Rows();
    EXPECT_GT(rows.size(), 5);
    EXPECT_TRUE(rows.back().contains(",counts,")) << rows.back().toStdString();
    EXPECT_NE(err.find("the board went away after " + std::to_string(rows.size()) + " samples"),
              std::string::npos)
        << err;
    // The disconnection is told once, then the ending.
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 2) << err;
}

}  // namespace
}  // namespace lxm::test
