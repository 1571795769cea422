#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "transport/BoardPlace.h"

namespace lxm {

// A measurement type of --collect: its name on the command line, the "Operation" choice it
// stands for on the device form, and what its values are.
struct CollectType {
    const char* name;
    int optMeasure;  // index into the form's measurement choices
    bool continuous;
    bool lux;
    bool proximity;
    bool dual;  // proximity minus IR, with both parts logged
    const char* help;
};
const std::vector<CollectType>& CollectTypes();
const CollectType* FindCollectType(const std::string& name);

constexpr int kDefaultCollectIntervalMs = 8;
constexpr int kMaxCollectIntervalMs = 3'600'000;
constexpr std::uint64_t kMaxCollectSamples = 1'000'000'000'000;
constexpr double kMaxCollectSeconds = 31.0 * 24 * 3600;

// A collection with no window, every sample logged to a CSV file.
struct CollectOptions {
    const CollectType* type = nullptr;
    std::string output;
    int intervalMs = kDefaultCollectIntervalMs;
    // Without --interval the form's own choice for the resolution stands (118 ms at 16 bits).
    bool intervalGiven = false;
    // Neither: the collection runs until it is interrupted.
    std::optional<std::uint64_t> samples;
    std::optional<double> durationSeconds;
    std::optional<int> rangeLux;  // one of the sensor's ALS ranges
    std::optional<int> resolutionBits;
    bool autoRange = false;  // the ALS range follows the light; --range is where it starts
};

// The simulated board's bench, set from the command line; each only with --simulate.
struct BenchOptions {
    std::optional<double> lightLux, distanceMm, glassPercent, temperatureC;
    std::optional<int> scene;  // a sim::LightScene::Kind
    std::optional<double> periodS, depthPercent;
    std::optional<std::string> source;  // a name of sim::Sources()
    std::optional<std::uint32_t> seed;
    bool ideal = false;
    std::string firstGiven;  // the first of them on the command line, for the message
};

// Looking back at logged runs: --view opens the files in the run viewer, --plot draws them
// into a PNG or SVG picture without a display.
struct ViewOptions {
    bool plot = false;
    std::vector<std::string> files;
    std::string output;  // the picture, with --plot
    std::optional<std::string> title;
};

// --characterise: every setting of the sensor measured in the same light, the table, a plot
// and a report written into a folder.
struct CharacteriseOptions {
    std::string measure = "als";  // als, ir or prox
    int readings = 64;            // per setting
    std::optional<double> referenceLux;
    std::string outputDir;
};

// The program's command line. Parsed before any Qt application object exists, so that
// --help, --version and a mistyped option answer without a display.
struct CommandLine {
    bool simulate = false;
    bool listBoards = false;           // --boards
    std::optional<BoardPlace> board;  // --board BUS:PORT
    bool keepGpioLoaded = false;  // "/d"
    bool help = false;
    bool version = false;
    std::optional<std::string> script;  // run this script file without a window
    int loops = 1;
    bool abortOnFail = false;
    // The sensor type to select, one of SensorNames(), upper case.
    std::optional<std::string> sensor;
    std::optional<CollectOptions> collect;
    BenchOptions bench;
    std::optional<ViewOptions> view;
    std::optional<CharacteriseOptions> characterise;
    // Set when the arguments are wrong; the program prints it and exits with 2.
    std::string error;

    // What the start-up window is told of the command line ("/d" or nothing).
    std::string StartupArguments() const { return keepGpioLoaded ? "/d" : ""; }
};

constexpr int kMaxLoops = 100000;

const std::vector<std::string>& SensorNames();
// The ALS ranges in lux and the resolutions in bits a sensor type offers; no resolutions
// when it has a fixed one.
const std::vector<int>& SensorRanges(const std::string& sensor);
const std::vector<int>& SensorResolutions(const std::string& sensor);

// args: the arguments after the program name.
CommandLine ParseCommandLine(const std::vector<std::string>& args);

namespace sim {
class SimBoard;
}
// Puts the bench the options describe on a simulated board.
void ApplyBench(const BenchOptions& bench, sim::SimBoard& board);

std::string HelpText();
std::string VersionText();

}  // namespace lxm
