// Collecting without a window tells the truth about its file and its readings: a log that
// cannot be created ends the run before any sample, a one-shot reading gets the time its
// conversion needs, and one that is taken too early says so.
#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/HeadlessCollect.h"
#include "support/DeviceFixture.h"

namespace lxm::test {
namespace {

// The board fixture's board and clock; the program makes its own session on them.
struct CollectTrust : ::testing::Test, BoardFixture {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("run.csv"));
    std::string err;

    // The error stream as the program wrote it, through a scratch file.
    int Run(std::vector<std::string> args) {
        args.insert(args.end(), {"--output", path.toStdString()});
        const CommandLine cl = ParseCommandLine(args);
        EXPECT_EQ(cl.error, "");
        std::FILE* stream = std::tmpfile();
        const int rc = RunCollectHeadless(cl, driver, clock, stream, false);
        std::rewind(stream);
        err.clear();
        for (int c; (c = std::fgetc(stream)) != EOF;) err += char(c);
        std::fclose(stream);
        return rc;
    }
    QByteArray Content() {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

TEST_F(CollectTrust, AOneShotReadingWaitsForItsConversionOrIsMarkedEarly) {
    ASSERT_EQ(Run({"--collect", "als", "--range", "4000", "--resolution", "16", "--samples", "5"}), 0) << err;
    QByteArray log = Content();
    EXPECT_TRUE(log.contains("# interval: 118 ms\r\n# range: 4000 lux\r\n# resolution: 16 bits\r\n"))
        << log.toStdString();
    EXPECT_EQ(log.count(",lux,ok\r\n"), 5) << log.toStdString();
    EXPECT_FALSE(log.contains(",0,0,lux")) << "no reading of 0 lux at 300 lux";
    EXPECT_EQ(err, "");

    ASSERT_EQ(Run({"--collect", "als", "--resolution", "16", "--interval", "8", "--samples", "5"}), 0);
    log = Content();
    EXPECT_EQ(log.count(",lux,early\r\n"), 5) << log.toStdString();
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    EXPECT_NE(err.find("shorter than the 98.3 ms a 16-bit conversion takes"), std::string::npos) << err;
}

TEST_F(CollectTrust, ALogThatCannotBeCreatedEndsTheRunBeforeAnySample) {
    const struct {
        QString output;
        const char* reason;
    } cases[] = {{dir.filePath("missing/run.csv"), "No such file or directory"}, {dir.path(), "Is a directory"}};
    for (const auto& c : cases) {
        path = c.output;
        EXPECT_EQ(Run({"--collect", "als-cont", "--samples", "5"}), 2);
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
        EXPECT_NE(err.find(c.output.toStdString()), std::string::npos) << err;
        EXPECT_NE(err.find(c.reason), std::string::npos) << err;
        EXPECT_EQ(err.find("goes on"), std::string::npos) << err;
    }
}

}  // namespace
}  // namespace lxm::test
