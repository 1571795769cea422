// The command line, and the headless runner's terminal pauses. The built program itself is run
// by headless_script_test.sh.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cstdio>
#include <deque>

#include "app/CommandLine.h"
#include "app/HeadlessScript.h"
#include "support/DeviceFixture.h"
#include "support/Files.h"

namespace lxm {
namespace {

CommandLine Parse(std::initializer_list<const char*> args) {
    return ParseCommandLine(std::vector<std::string>(args.begin(), args.end()));
}

TEST(CommandLineParse, OptionsAndTheirValues) {
    EXPECT_EQ(Parse({}).error, "");
    EXPECT_FALSE(Parse({}).simulate);

    const CommandLine all = Parse(
        {"--simulate", "/d", "--script", "a.txt", "--loops", "12", "--abort-on-fail", "--sensor", "lxm600"});
    EXPECT_EQ(all.error, "");
    EXPECT_TRUE(all.simulate);
    EXPECT_TRUE(all.keepGpioLoaded);
    EXPECT_EQ(all.StartupArguments(), "/d");
    EXPECT_EQ(all.script, "a.txt");
    EXPECT_EQ(all.loops, 12);
    EXPECT_TRUE(all.abortOnFail);
    EXPECT_EQ(all.sensor, "LXM600") << "names are matched without regard to case";

    const CommandLine eq = Parse({"--script=b c.txt", "--loops=3", "--sensor=LXM430"});
    EXPECT_EQ(eq.script, "b c.txt");
    EXPECT_EQ(eq.loops, 3);
    EXPECT_EQ(eq.sensor, "LXM430");
    EXPECT_EQ(Parse({"--sensor", "LXM410"}).error, "") << "the sensor alone is for the window";
    EXPECT_TRUE(Parse({"--help"}).help);
    EXPECT_TRUE(Parse({"-h"}).help);
    EXPECT_TRUE(Parse({"--version"}).version);
}

TEST(CommandLineParse, BadArgumentsSayWhatIsWrong) {
    struct Case {
        std::initializer_list<const char*> args;
        const char* says;
    } cases[] = {
        {{"--bogus"}, "unknown option '--bogus'"},
        {{"-x"}, "unknown option '-x'"},
        {{"extra"}, "unexpected argument 'extra'"},
        {{"--script"}, "--script needs"},
        {{"--script="}, "--script needs"},
        {{"--script", "a", "--loops"}, "--loops needs"},
        {{"--script", "a", "--loops", "0"}, "not '0'"},
        {{"--script", "a", "--loops", "100001"}, "not '100001'"},
        {{"--script", "a", "--loops", "-3"}, "not '-3'"},
        {{"--script", "a", "--loops", "99999999999999999999999"}, "--loops needs"},
        {{"--script", "a", "--loops", "1e3"}, "--loops needs"},
        {{"--sensor", "LXM999"}, "LXM410, LXM430, LXM450, LXM470, LXM600, not 'LXM999'"},
        {{"--sensor"}, "--sensor needs"},
        {{"--simulate=yes"}, "takes no value"},
        {{"--loops", "3"}, "only applies with --script"},
        {{"--abort-on-fail"}, "only applies with --script"},
    };
    for (const Case& c : cases) {
        const CommandLine cl = ParseCommandLine(std::vector<std::string>(c.args.begin(), c.args.end()));
        EXPECT_NE(cl.error.find(c.says), std::string::npos) << cl.error << " / expected: " << c.says;
    }
    EXPECT_EQ(Parse({"--script", "a", "--loops", "100000"}).loops, 100000);
}

class FakeTerminal final : public Terminal {
public:
    bool Interactive() override { return interactive; }
    std::optional<std::string> ReadLine() override {
        if (lines.empty()) return std::nullopt;
        std::string l = lines.front();
        lines.pop_front();
        return l;
    }
    bool interactive = true;
    std::deque<std::string> lines;
};

// The headless runner on a simulated board, its two streams captured.
class Headless : public ::testing::Test, protected test::BoardFixture {
protected:
    int Run(const QByteArray& script, int loops = 1) {
        const QString path = dir.filePath("s.txt");
        EXPECT_TRUE(test::WriteFile(path, script));
        CommandLine cl;
        cl.script = path.toStdString();
        cl.loops = loops;
        std::FILE* o = std::tmpfile();
        std::FILE* e = std::tmpfile();
        const int rc = RunScriptHeadless(cl, driver, clock, terminal, o, e);
        out = Slurp(o);
        err = Slurp(e);
        return rc;
    }
    static std::string Slurp(std::FILE* f) {
        std::rewind(f);
        std::string s;
        char buf[4096];
        for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) s.append(buf, n);
        std::fclose(f);
        return s;
    }
    QTemporaryDir dir;
    FakeTerminal terminal;
    std::string out, err;
};

TEST_F(Headless, PausesAskOnTheTerminal) {
    terminal.lines = {""};
    EXPECT_EQ(Run("04,5A\n`w\n04,,5A\n"), 0);
    EXPECT_NE(err.find("Script Pause Line :2 Click OK to Continue, Cancel to Abort"), std::string::npos);
    EXPECT_NE(out.find("3\t1 Reg: R:1\t01 89 04\t5A\t5A\tpass\n"), std::string::npos) << out;
    EXPECT_NE(out.find("1 passed, 0 failed\n"), std::string::npos);

    terminal.lines = {"c"};
    EXPECT_EQ(Run("04,5A\n`w\n04,,5A\n"), 1) << "cancelled: the measurement did not complete";
    EXPECT_EQ(out.find("\n3\t"), std::string::npos) << "no row after the pause";
    EXPECT_NE(err.find("cancelled at line 2"), std::string::npos) << err;

    terminal.lines = {};
    EXPECT_EQ(Run("`w\n04,,00\n"), 1) << "end of input cancels";
}

}  // namespace
}  // namespace lxm
