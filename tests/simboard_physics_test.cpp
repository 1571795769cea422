// The simulated chips' photodiode front end, through their registers: statistics of steady
// readings under fixed seeds against what the model predicts.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "app/CommandLine.h"
#include "simboard/SimBoard.h"
#include "support/FakeClock.h"

namespace lxm::sim {
namespace {

constexpr double kRanges[] = {1000, 4000, 16000, 64000};
constexpr int kBits[] = {16, 12, 8, 4};
constexpr std::uint8_t kAlsCont = 0xA0, kProxCont = 0xE0;
constexpr std::uint8_t k600Als2000 = 0x06, k600Als125 = 0x04, k600Prox = 0xF0, k600Drive200 = 0x08;

struct Stats { double mean = 0, sd = 0; };
Stats Of(const std::vector<double>& v) {
    Stats s;
    for (double x : v) s.mean += x / double(v.size());
    for (double x : v) s.sd += (x - s.mean) * (x - s.mean) / double(v.size() - 1);
    s.sd = std::sqrt(s.sd);
    return s;
}

// A chip converting continuously in a scene; one reading per conversion.
struct Bench {
    test::FakeClock clock;
    SimBoard board;
    Bench(Chip chip, LightScene scene) : board(clock, chip) {
        board.scene() = scene;
        board.Seed(7);
    }
    // Family: register 1 from a range and resolution index, register 0 the command.
    std::vector<double> Family(int range, int bits, std::uint8_t command, int n = 1000) {
        board.sensor().Write(1, std::uint8_t(range | bits << 2));
        board.sensor().Write(0, command);
        return Take(FamilySensor::ConversionMicros(kBits[bits]), 2, n);
    }
    std::vector<double> Lxm600(std::uint8_t config, int n = 1000) {
        board.sensor().Write(1, config);
        const bool prox = config & 0x80;
        return Take(prox ? board.lxm600().ProxPeriodMicros() : Lxm600Sensor::kAlsConversionMicros, prox ? 8 : 9, n);
    }
    std::vector<double> Take(std::int64_t period, int reg, int n) {
        std::vector<double> v;
        for (int i = 0; i < n; ++i) {
            clock.AdvanceUs(period);
            const int hi = reg == 8 ? 0 : board.sensor().Peek(std::uint8_t(reg + 1));
            v.push_back(board.sensor().Peek(std::uint8_t(reg)) | hi << 8);
        }
        return v;
    }
};

LightScene Scene(double lux, Source source = Source::Daylight, double distanceMm = 0) {
    return {.ambientLux = lux, .objectDistanceMm = distanceMm, .source = source};
}

// The lux that puts a daylight ALS reading at a fraction of a full scale.
double DaylightLux(double fullScale, double fraction) {
    return fullScale * fraction / AlsUnits({1, InfoOf(Source::Daylight).irPerLux});
}

struct Setting {
    Chip chip;
    int range, bits;  // family: indexes; multi-function: full scale in lux, 12
};

std::vector<double> Readings(const Setting& s, double fraction, int n) {
    const bool family = s.chip == Chip::Family;
    Bench bench(s.chip, Scene(DaylightLux(family ? kRanges[s.range] : s.range, fraction)));
    return family ? bench.Family(s.range, s.bits, kAlsCont, n) : bench.Lxm600(s.range == 2000 ? k600Als2000 : k600Als125, n);
}

Conversion Model(const Setting& s, double fraction) {
    const bool family = s.chip == Chip::Family;
    const double fullScale = family ? kRanges[s.range] : s.range;
    const int bits = family ? kBits[s.bits] : 12;
    const std::int64_t us = family ? FamilySensor::ConversionMicros(bits) : Lxm600Sensor::kAlsConversionMicros;
    return ChannelConversion(fullScale * fraction, fullScale, bits, us, 25);
}

// Shot noise dominates at 16 bits on the most sensitive range: a quarter of the light, half the SD.
TEST(Photodiode, MeanAndSdAreTheModelsOnEveryRangeAndResolution) {
    std::vector<std::pair<Setting, double>> cases{{{Chip::Family, 0, 0}, 0.125},
                                                  {{Chip::Lxm600, 2000, 12}, 0.5},
                                                  {{Chip::Lxm600, 125, 12}, 0.5},
                                                  {{Chip::Lxm600, 125, 12}, 0.2}};
    for (int r = 0; r < 4; ++r)
        for (int b = 0; b < 4; ++b) cases.push_back({{Chip::Family, r, b}, 0.5});
    std::vector<double> sds;
    for (const auto& [s, fraction] : cases) {
        SCOPED_TRACE(testing::Message()
                     << "range " << s.range << ", resolution " << s.bits << ", " << fraction);
        const Stats got = Of(Readings(s, fraction, 4000));
        const double expected = ExpectedCounts(Model(s, fraction)),
                     predicted = PredictedSd(Model(s, fraction));
        EXPECT_NEAR(got.mean, expected, expected * 0.01);
        // Under half a count of noise the converter's steps hide it.
        if (predicted >= 0.5) {
            EXPECT_NEAR(got.sd, predicted, predicted * 0.15);
        }
        sds.push_back(got.sd);
    }
    EXPECT_NEAR(sds[4] / sds[0], 2.0, 0.3);
}

TEST(Photodiode, AShortConversionSeesTheRippleALongOneAveragesItAway) {
    for (int mains : {50, 60}) {
        auto relativeSd = [mains](Source source, int bits) {
            LightScene scene = Scene(500, source);
            scene.mainsHz = mains;
            const Stats s = Of(Bench(Chip::Family, scene).Family(0, bits, kAlsCont));
            return s.sd / s.mean;
        };
        EXPECT_GE(relativeSd(Source::Fluorescent, 2), 5 * relativeSd(Source::Daylight, 2)) << mains << " Hz";
        const double at16 = relativeSd(Source::Fluorescent, 0) / relativeSd(Source::Daylight, 0);
        EXPECT_TRUE(at16 > 0.5 && at16 < 2) << mains << " Hz: " << at16;
    }
}

TEST(Photodiode, DarkReadingsAreSmallPositiveAndGrowWithTemperature) {
    LightScene scene = Scene(0);
    const double room = Of(Bench(Chip::Family, scene).Family(0, 0, kAlsCont)).mean;
    scene.temperatureC = 45;
    EXPECT_TRUE(room > 0.5 && room < 20) << room;
    EXPECT_GT(Of(Bench(Chip::Family, scene).Family(0, 0, kAlsCont)).mean, 3 * room) << "doubling every 10 degrees";
}

TEST(Photodiode, AboveTheRangeTheCountSticksAtFullScale) {
    for (double over : {1.5, 200.0}) {
        for (int b = 0; b < 4; ++b) {
            EXPECT_EQ(Bench(Chip::Family, Scene(1000 * over)).Family(0, b, kAlsCont, 50),
                      std::vector<double>(50, (1 << kBits[b]) - 1))
                << kBits[b] << " bits, " << over;
        }
        EXPECT_EQ(Bench(Chip::Lxm600, Scene(2000 * over)).Lxm600(k600Als2000, 50),
                  std::vector<double>(50, 4095))
            << over;
    }
}

TEST(Photodiode, TheAlsReadsRightUnderLedAndHighUnderAFilament) {
    auto lux = [](Source source) {
        return Of(Bench(Chip::Family, Scene(300, source)).Family(0, 0, kAlsCont, 100)).mean * 1000 / 65536;
    };
    EXPECT_NEAR(lux(Source::Led), 300, 3);
    EXPECT_GT(lux(Source::Incandescent), 330);
    EXPECT_GT(lux(Source::Daylight), 310);
    // The IR channel sees the infrared lamp, the ALS only a little of it.
    Bench ir(Chip::Family, Scene(100, Source::Ir850));
    EXPECT_NEAR(Of(ir.Family(0, 0, 0xC0, 100)).mean, 100 * 65.536, 100);
    EXPECT_LT(Of(ir.Family(0, 0, kAlsCont, 100)).mean, 30 * 65.536);
}

TEST(Photodiode, ProximityFallsAsTheSquareOfDistanceAndTheGlassEchoesTheLed) {
    auto prox = [](double mm, double glass, std::uint8_t drive) {
        LightScene scene = Scene(300, Source::Led, mm);
        scene.glassPercent = glass;
        return Of(Bench(Chip::Lxm600, scene).Lxm600(k600Prox | drive, 400)).mean;
    };
    EXPECT_NEAR(prox(60, 100, 0) / prox(120, 100, 0), 4, 0.3);
    EXPECT_LT(prox(0, 100, 0), 2) << "no object, no glass";
    const double echo = prox(0, 80, 0);
    EXPECT_GT(echo, 5);
    EXPECT_NEAR(prox(0, 80, k600Drive200) / echo, 2, 0.2) << "the echo grows with the drive";
    auto sunlit = [](double mm) { return Of(Bench(Chip::Lxm600, Scene(200000, Source::Daylight, mm)).Lxm600(k600Prox, 100)).mean; };
    EXPECT_NEAR(sunlit(60), sunlit(0), 2) << "the sunlight's infrared fills the front end: the object is gone";
    // The family chip's DC scheme adds the ambient infrared to the object's light.
    Bench family(Chip::Family, Scene(3000, Source::Incandescent));
    EXPECT_GT(Of(family.Family(1, 1, kProxCont, 100)).mean, 3000 * 0.55 * 1.024 * 0.95);
}

TEST(Photodiode, TheSameSeedGivesTheSameReadings) {
    auto run = [](std::uint32_t seed) {
        Bench b(Chip::Family, Scene(500, Source::Fluorescent));
        b.board.Seed(seed);
        return b.Family(0, 1, kAlsCont, 50);
    };
    EXPECT_EQ(run(3), run(3));
    EXPECT_NE(run(3), run(4));
}

TEST(BenchOptions, BadValuesNameTheOptionAndItsRangeGoodOnesSetTheBoard) {
    const struct {
        const char* option;
        const char* value;
        const char* says;
    } bad[] = {{"--light", "-1", "from 0 to 200000"},    {"--light", "1e3", "from 0 to 200000"},
               {"--distance", "1001", "from 0 to 1000"}, {"--glass", "0", "from 1 to 100"},
               {"--temperature", "86", "from -40 to 85"}, {"--temperature", "nan", "from -40 to 85"},
               {"--seed", "4294967296", "to 4294967295"}, {"--source", "sodium", "led or ir850"}};
    for (const auto& b : bad) {
        const std::string error = ParseCommandLine({"--simulate", b.option, b.value}).error;
        EXPECT_NE(error.find(b.option), std::string::npos) << error;
        EXPECT_NE(error.find(b.says), std::string::npos) << error;
    }
    EXPECT_NE(ParseCommandLine({"--glass", "50"}).error.find("only applies with --simulate"), std::string::npos);

    const CommandLine cl = ParseCommandLine({"--simulate", "--light", "1500.5", "--source", "ir850", "--distance",
                                             "25", "--glass", "40", "--temperature", "-10", "--seed", "9", "--ideal"});
    ASSERT_EQ(cl.error, "");
    test::FakeClock clock;
    SimBoard board(clock);
    ApplyBench(cl.bench, board);
    const LightScene& s = board.scene();
    EXPECT_EQ(std::vector<double>({s.ambientLux, s.objectDistanceMm, s.glassPercent, s.temperatureC, double(s.seed)}),
              std::vector<double>({1500.5, 25, 40, -10, 9}));
    EXPECT_EQ(s.source, Source::Ir850);
    EXPECT_TRUE(s.ideal);
}

}  // namespace
}  // namespace lxm::sim
