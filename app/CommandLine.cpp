#include "CommandLine.h"

#include <algorithm>
#include <cctype>

namespace lxm {

const std::vector<std::string>& SensorNames() {
    static const std::vector<std::string> names{"LXM410", "LXM430", "LXM450", "LXM470", "LXM600"};
    return names;
}

namespace {

std::string Upper(std::string s) {
    for (char& c : s) c = char(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// A whole number from 1 to kMaxLoops, digits only; anything else (signs, blanks, a value too
// large for any integer) is refused without converting it.
std::optional<int> ParseLoops(const std::string& text) {
    if (text.empty() || text.size() > 6) return std::nullopt;
    if (!std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    const int n = std::stoi(text);
    if (n < 1 || n > kMaxLoops) return std::nullopt;
    return n;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& args) {
    CommandLine cl;
    bool loopsGiven = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string arg = args[i];
        std::optional<std::string> inlineValue;
        if (arg.rfind("--", 0) == 0) {
            const std::size_t eq = arg.find('=');
            if (eq != std::string::npos) {
                inlineValue = arg.substr(eq + 1);
                arg = arg.substr(0, eq);
            }
        }
        auto value = [&]() -> std::optional<std::string> {
            if (inlineValue) return inlineValue;
            if (i + 1 < args.size()) return args[++i];
            return std::nullopt;
        };
        auto flag = [&](bool& target) {
            if (inlineValue) {
                cl.error = "option " + arg + " takes no value";
                return;
            }
            target = true;
        };

        if (arg == "--simulate") {
            flag(cl.simulate);
        } else if (arg == "/d") {
            cl.keepGpioLoaded = true;
        } else if (arg == "--help" || arg == "-h") {
            flag(cl.help);
        } else if (arg == "--version") {
            flag(cl.version);
        } else if (arg == "--abort-on-fail") {
            flag(cl.abortOnFail);
        } else if (arg == "--script") {
            std::optional<std::string> v = value();
            if (!v || v->empty())
                cl.error = "option --script needs the name of a script file";
            else
                cl.script = *v;
        } else if (arg == "--loops") {
            std::optional<std::string> v = value();
            std::optional<int> n = v ? ParseLoops(*v) : std::nullopt;
            if (!n)
                cl.error = "option --loops needs a whole number from 1 to " + std::to_string(kMaxLoops) +
                           (v ? ", not '" + *v + "'" : "");
            else
                cl.loops = *n, loopsGiven = true;
        } else if (arg == "--sensor") {
            std::optional<std::string> v = value();
            const std::string name = v ? Upper(*v) : std::string();
            const auto& names = SensorNames();
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                std::string list;
                for (const std::string& n : names) list += (list.empty() ? "" : ", ") + n;
                cl.error = "option --sensor needs one of " + list + (v ? ", not '" + *v + "'" : "");
            } else {
                cl.sensor = name;
            }
        } else if (!arg.empty() && arg[0] == '-') {
            cl.error = "unknown option '" + args[i] + "'";
        } else {
            cl.error = "unexpected argument '" + arg + "'";
        }
        if (!cl.error.empty()) return cl;
    }
    if (!cl.script && (loopsGiven || cl.abortOnFail))
        cl.error =
            std::string(loopsGiven ? "--loops" : "--abort-on-fail") + " only applies with --script FILE";
    return cl;
}

std::string HelpText() {
    return "Usage: lxmeval [options] [/d]\n"
           "Velmarin ALS / Proximity Evaluation Software: evaluates ambient-light, infrared and\n"
           "proximity sensors on the USB evaluation board.\n"
           "\n"
           "Options:\n"
           "  --simulate         run on the built-in simulated evaluation board\n"
           "  --sensor NAME      the sensor type: LXM410, LXM430, LXM450, LXM470 or LXM600\n"
           "  --script FILE      run a register script without a window and exit: one line per\n"
           "                     row on standard output, then \"N passed, M failed\"\n"
           "  --loops N          run the script N times (1 to 100000; default 1)\n"
           "  --abort-on-fail    stop the script at the first read that does not match\n"
           "  /d                 keep the GPIO panel loaded after type selection\n"
           "  -h, --help         show this help and exit\n"
           "  --version          show the version and exit\n"
           "\n"
           "With --script the exit status is 0 when every compared read passed, 1 when a read\n"
           "failed or the run was cancelled, and 2 for bad arguments, a script file that cannot\n"
           "be loaded or run, or no board.\n";
}

std::string VersionText() {
    return std::string("lxmeval ") + LXMEVAL_VERSION + "\n";
}

}  // namespace lxm
