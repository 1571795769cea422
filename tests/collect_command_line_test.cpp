// The command line of a collection without a window: its options, what goes with what, and
// the numbers, which must never convert with undefined behaviour.
#include <gtest/gtest.h>

#include "app/CommandLine.h"

namespace lxm {
namespace {

CommandLine Parse(std::initializer_list<const char*> args) {
    return ParseCommandLine(std::vector<std::string>(args.begin(), args.end()));
}

TEST(CollectCommandLine, OptionsAndTheirValues) {
    const CommandLine cl =
        Parse({"--collect", "prox-ir", "--output", "run.csv", "--sensor", "lxm430", "--interval", "0",
               "--samples", "1000000000000", "--range", "64000", "--resolution", "4", "--simulate"});
    ASSERT_EQ(cl.error, "");
    ASSERT_TRUE(cl.collect);
    ASSERT_NE(cl.collect->type, nullptr);
    EXPECT_STREQ(cl.collect->type->name, "prox-ir");
    EXPECT_TRUE(cl.collect->type->dual);
    EXPECT_EQ(cl.collect->output, "run.csv");
    EXPECT_EQ(cl.collect->intervalMs, 0);
    EXPECT_EQ(cl.collect->samples, 1'000'000'000'000u);
    EXPECT_FALSE(cl.collect->durationSeconds);
    EXPECT_EQ(cl.collect->rangeLux, 64000);
    EXPECT_EQ(cl.collect->resolutionBits, 4);
    EXPECT_EQ(cl.sensor, "LXM430");
    EXPECT_TRUE(cl.simulate);

    // Options in any order, with "=", and the defaults: no end, the form's 8 ms.
    const CommandLine eq = Parse({"--output=a b.csv", "--duration=0.5", "--collect=als-cont"});
    ASSERT_EQ(eq.error, "");
    EXPECT_EQ(eq.collect->output, "a b.csv");
    EXPECT_DOUBLE_EQ(*eq.collect->durationSeconds, 0.5);
    EXPECT_TRUE(eq.collect->type->lux && eq.collect->type->continuous);
    const CommandLine plain = Parse({"--collect", "ir", "--output", "x.csv"});
    EXPECT_EQ(plain.collect->intervalMs, kDefaultCollectIntervalMs);
    EXPECT_FALSE(plain.collect->samples || plain.collect->durationSeconds);
    EXPECT_FALSE(Parse({"--simulate"}).collect);

    // Every type maps onto a distinct measurement choice of the form.
    std::vector<int> choices;
    for (const CollectType& t : CollectTypes()) {
        EXPECT_EQ(FindCollectType(t.name), &t);
        choices.push_back(t.optMeasure);
        EXPECT_EQ(Parse({"--collect", t.name, "--output", "x.csv", "--sensor", "LXM410"}).error, "")
            << t.name;
    }
    std::sort(choices.begin(), choices.end());
    EXPECT_EQ(choices, (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    // The ranges of the multi-function chip are its own.
    EXPECT_EQ(Parse({"--collect", "als", "--output", "x", "--sensor", "LXM600", "--range", "125"}).error, "");
    for (const char* type : {"als", "ir", "prox", "als-cont", "ir-cont", "prox-cont"})
        EXPECT_EQ(Parse({"--collect", type, "--output", "x", "--sensor", "LXM600"}).error, "") << type;
}

TEST(CollectCommandLine, BadArgumentsSayWhatIsWrong) {
    struct Case {
        std::initializer_list<const char*> args;
        const char* says;
    } cases[] = {
        {{"--collect", "lux"}, "one of als, ir, prox, als-cont, ir-cont, prox-cont, prox-ir, not 'lux'"},
        {{"--collect", "ALS"}, "not 'ALS'"},
        {{"--collect"}, "--collect needs one of"},
        {{"--collect", "als"}, "--collect needs --output FILE.csv"},
        {{"--collect", "als", "--output"}, "--output needs the name"},
        {{"--collect", "als", "--output="}, "--output needs the name"},
        {{"--output", "x.csv"}, "--output only applies with --collect TYPE"},
        {{"--samples", "5", "--simulate"}, "--samples only applies with --collect"},
        {{"--collect", "als", "--output", "x", "--script", "s.txt"}, "cannot run together"},
        {{"--collect", "als", "--output", "x", "--samples", "5", "--duration", "2"}, "give one of them"},
        // Numbers: signs, blanks, fractions, exponents and values past any integer.
        {{"--collect", "als", "--output", "x", "--interval", "-1"}, "0 to 3600000, not '-1'"},
        {{"--collect", "als", "--output", "x", "--interval", "3600001"}, "not '3600001'"},
        {{"--collect", "als", "--output", "x", "--interval", " 5"}, "not ' 5'"},
        {{"--collect", "als", "--output", "x", "--interval", "5ms"}, "not '5ms'"},
        {{"--collect", "als", "--output", "x", "--interval", "99999999999999999999999"}, "--interval needs"},
        {{"--collect", "als", "--output", "x", "--samples", "0"}, "1 to 1000000000000, not '0'"},
        {{"--collect", "als", "--output", "x", "--samples", "1000000000001"}, "not '1000000000001'"},
        {{"--collect", "als", "--output", "x", "--samples", "18446744073709551616"}, "--samples needs"},
        {{"--collect", "als", "--output", "x", "--samples", "+5"}, "not '+5'"},
        {{"--collect", "als", "--output", "x", "--samples", "1e3"}, "not '1e3'"},
        {{"--collect", "als", "--output", "x", "--duration", "0"}, "above 0 and up to 2678400"},
        {{"--collect", "als", "--output", "x", "--duration", "2678400.5"}, "not '2678400.5'"},
        {{"--collect", "als", "--output", "x", "--duration", "1e3"}, "not '1e3'"},
        {{"--collect", "als", "--output", "x", "--duration", "inf"}, "not 'inf'"},
        {{"--collect", "als", "--output", "x", "--duration", "nan"}, "not 'nan'"},
        {{"--collect", "als", "--output", "x", "--duration", "-2"}, "not '-2'"},
        {{"--collect", "als", "--output", "x", "--duration", "1."}, "not '1.'"},
        {{"--collect", "als", "--output", "x", "--duration", "."}, "not '.'"},
        {{"--collect", "als", "--output", "x", "--duration", "1.2.3"}, "not '1.2.3'"},
        // Values that depend on the sensor, whichever comes first on the line.
        {{"--collect", "als", "--output", "x", "--range", "2000"},
         "1000, 4000, 16000 or 64000 (lux) for LXM410"},
        {{"--range", "1000", "--sensor", "LXM600", "--collect", "als", "--output", "x"},
         "2000 or 125 (lux) for LXM600"},
        {{"--collect", "als", "--output", "x", "--range", "lots"}, "not 'lots'"},
        {{"--collect", "als", "--output", "x", "--resolution", "10"},
         "16, 12, 8 or 4 (bits) for LXM410, not '10'"},
        {{"--collect", "als", "--output", "x", "--sensor", "LXM600", "--resolution", "12"},
         "fixed resolution"},
        {{"--collect", "prox-cont", "--output", "x", "--sensor", "LXM470"}, "LXM470 has no proximity sensor"},
        // The multi-function chip has neither the dual mode nor a resolution to choose.
        {{"--collect", "prox-ir", "--output", "x", "--sensor", "LXM600"}, "collect prox and ir in two runs"},
        {{"--sensor", "LXM600", "--collect", "als", "--output", "x", "--resolution", "16"}, "leave it out"},
    };
    for (const Case& c : cases) {
        const CommandLine cl = ParseCommandLine(std::vector<std::string>(c.args.begin(), c.args.end()));
        EXPECT_NE(cl.error.find(c.says), std::string::npos) << cl.error << " / expected: " << c.says;
    }
    // The limits themselves are accepted.
    EXPECT_EQ(
        Parse({"--collect", "als", "--output", "x", "--interval", "3600000", "--duration", "2678400"}).error,
        "");
    EXPECT_EQ(
        Parse({"--collect", "ir-cont", "--output", "x", "--sensor", "LXM470", "--duration", ".25"}).error,
        "");
}

TEST(CollectCommandLine, HelpTellsEverythingNeeded) {
    const std::string help = HelpText();
    for (const char* needed : {"--collect TYPE", "--output FILE.csv", "--interval MS", "--samples N",
                               "--duration SECONDS", "--range LUX", "--resolution BITS",
                               "time,seconds,sample,raw,value,unit,status[,ir,prox]", "Ctrl-C", "SIGTERM"})
        EXPECT_NE(help.find(needed), std::string::npos) << needed;
    for (const CollectType& t : CollectTypes())
        EXPECT_NE(help.find(std::string("   ") + t.name + " "), std::string::npos) << t.name;
    // Fits a terminal of 100 columns.
    std::size_t from = 0;
    for (std::size_t nl; (nl = help.find('\n', from)) != std::string::npos; from = nl + 1)
        EXPECT_LE(nl - from, 100u) << help.substr(from, nl - from);
}

}  // namespace
}  // namespace lxm
