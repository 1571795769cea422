#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lxm {

// The program's command line. Parsed before any Qt application object exists, so that
// --help, --version and a mistyped option answer without a display.
struct CommandLine {
    bool simulate = false;
    bool keepGpioLoaded = false;  // "/d"
    bool help = false;
    bool version = false;
    std::optional<std::string> script;  // run this script file without a window
    int loops = 1;
    bool abortOnFail = false;
    // The sensor type to select, one of SensorNames(), upper case.
    std::optional<std::string> sensor;
    // Set when the arguments are wrong; the program prints it and exits with 2.
    std::string error;

    // What the start-up window is told of the command line ("/d" or nothing).
    std::string StartupArguments() const { return keepGpioLoaded ? "/d" : ""; }
};

constexpr int kMaxLoops = 100000;

const std::vector<std::string>& SensorNames();

// args: the arguments after the program name.
CommandLine ParseCommandLine(const std::vector<std::string>& args);

std::string HelpText();
std::string VersionText();

}  // namespace lxm
