#include "CommandLine.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace lxm {

const std::vector<std::string>& SensorNames() {
    static const std::vector<std::string> names{"LXM410", "LXM430", "LXM450", "LXM470", "LXM600"};
    return names;
}

const std::vector<CollectType>& CollectTypes() {
    static const std::vector<CollectType> types{
        {"als", 1, false, true, false, false, "ambient light, one conversion per sample (lux)"},
        {"ir", 2, false, false, false, false, "infrared, one conversion per sample (counts)"},
        {"prox", 3, false, false, true, false, "proximity, one conversion per sample (counts)"},
        {"als-cont", 5, true, true, false, false, "ambient light, converting continuously (lux)"},
        {"ir-cont", 6, true, false, false, false, "infrared, converting continuously (counts)"},
        {"prox-cont", 7, true, false, true, false, "proximity, converting continuously (counts)"},
        {"prox-ir", 4, false, false, true, true,
         "proximity minus ambient infrared, the dual mode\n"
         "(counts); the infrared and proximity parts get\n"
         "columns of their own"},
    };
    return types;
}

const CollectType* FindCollectType(const std::string& name) {
    for (const CollectType& t : CollectTypes())
        if (name == t.name) return &t;
    return nullptr;
}

const std::vector<int>& SensorRanges(const std::string& sensor) {
    static const std::vector<int> family{1000, 4000, 16000, 64000};
    static const std::vector<int> multi{2000, 125};
    return sensor == "LXM600" ? multi : family;
}

const std::vector<int>& SensorResolutions(const std::string& sensor) {
    static const std::vector<int> family{16, 12, 8, 4};
    static const std::vector<int> fixed;
    return sensor == "LXM600" ? fixed : family;
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

// A whole number in [min, max] written in plain digits. from_chars reports a value too large
// for the type instead of wrapping, so no text converts with undefined behaviour.
template <typename T>
std::optional<T> ParseWhole(const std::string& text, T min, T max) {
    if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    T v{};
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec != std::errc() || end != text.data() + text.size() || v < min || v > max) return std::nullopt;
    return v;
}

// Seconds as digits with an optional decimal fraction ("90", "0.5"): no sign, exponent,
// "inf" or "nan".
std::optional<double> ParseSeconds(const std::string& text) {
    const std::size_t dot = text.find('.');
    const std::string whole = text.substr(0, dot);
    const std::string fraction = dot == std::string::npos ? "" : text.substr(dot + 1);
    auto digits = [](const std::string& s) {
        return std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
    };
    if (whole.empty() && fraction.empty()) return std::nullopt;
    if (!digits(whole) || !digits(fraction) || (dot != std::string::npos && fraction.empty()))
        return std::nullopt;
    double v = 0;
    const auto [end, ec] =
        std::from_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed);
    if (ec != std::errc() || end != text.data() + text.size() || !(v > 0) || v > kMaxCollectSeconds)
        return std::nullopt;
    return v;
}

std::string Joined(const std::vector<int>& values) {
    std::string s;
    for (std::size_t i = 0; i < values.size(); ++i)
        s += (i == 0 ? "" : i + 1 == values.size() ? " or " : ", ") + std::to_string(values[i]);
    return s;
}

std::string Quoted(const std::optional<std::string>& v) {
    return v ? ", not '" + *v + "'" : "";
}

// The checks that need the whole command line: what goes with what, and the values that
// depend on the sensor.
std::string CheckCollect(const CommandLine& cl, const CollectOptions& c, const std::string& collectOnly,
                         bool samplesGiven, bool durationGiven) {
    if (!cl.collect) return collectOnly.empty() ? "" : collectOnly + " only applies with --collect TYPE";
    if (cl.script) return "--collect and --script cannot run together: give one of them";
    if (c.output.empty()) return "--collect needs --output FILE.csv, the file every sample is logged to";
    if (samplesGiven && durationGiven)
        return "--samples and --duration both say when to stop: give one of them";
    const std::string sensor = cl.sensor.value_or(SensorNames().front());
    const auto& ranges = SensorRanges(sensor);
    if (c.rangeLux && std::find(ranges.begin(), ranges.end(), *c.rangeLux) == ranges.end())
        return "option --range needs " + Joined(ranges) + " (lux) for " + sensor + ", not '" +
               std::to_string(*c.rangeLux) + "'";
    const auto& bits = SensorResolutions(sensor);
    if (c.resolutionBits && bits.empty())
        return "the " + sensor + " has a fixed resolution, which --resolution cannot change: leave it out";
    if (c.resolutionBits && std::find(bits.begin(), bits.end(), *c.resolutionBits) == bits.end())
        return "option --resolution needs " + Joined(bits) + " (bits) for " + sensor + ", not '" +
               std::to_string(*c.resolutionBits) + "'";
    if (c.type->dual && sensor == "LXM600")
        return "the LXM600 has no proximity-minus-IR mode: collect prox and ir in two runs instead";
    if (c.type->proximity && sensor == "LXM470")
        return std::string("the LXM470 has no proximity sensor: --collect ") + c.type->name +
               " needs another --sensor";
    return "";
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& args) {
    CommandLine cl;
    bool loopsGiven = false;
    CollectOptions collect;
    std::string collectOnly;  // the first option given that only a collection takes
    bool samplesGiven = false, durationGiven = false;
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
        } else if (arg == "--boards") {
            flag(cl.listBoards);
        } else if (arg == "--board") {
            // Which of several attached boards to take, as --boards lists them.
            const std::optional<std::string> v = value();
            if (!v || !ParseBoardPlace(*v))
                cl.error = "option --board needs BUS:PORT as --boards lists them, such as 1:7" +
                           (v ? ", not '" + *v + "'" : std::string());
            else
                cl.board = ParseBoardPlace(*v);
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
        } else if (arg == "--collect") {
            std::optional<std::string> v = value();
            collect.type = v ? FindCollectType(*v) : nullptr;
            if (!collect.type) {
                std::string list;
                for (const CollectType& t : CollectTypes())
                    list += (list.empty() ? "" : ", ") + std::string(t.name);
                cl.error = "option --collect needs one of " + list + Quoted(v);
            } else {
                cl.collect = collect;  // filled in at the end
            }
        } else if (arg == "--output") {
            std::optional<std::string> v = value();
            if (!v || v->empty())
                cl.error = "option --output needs the name of the CSV file";
            else
                collect.output = *v;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (arg == "--interval") {
            std::optional<std::string> v = value();
            std::optional<int> n = v ? ParseWhole(*v, 0, kMaxCollectIntervalMs) : std::nullopt;
            if (!n)
                cl.error = "option --interval needs a whole number of milliseconds from 0 to " +
                           std::to_string(kMaxCollectIntervalMs) + Quoted(v);
            else
                collect.intervalMs = *n;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (arg == "--samples") {
            std::optional<std::string> v = value();
            std::optional<std::uint64_t> n =
                v ? ParseWhole<std::uint64_t>(*v, 1, kMaxCollectSamples) : std::nullopt;
            if (!n)
                cl.error = "option --samples needs a whole number from 1 to " +
                           std::to_string(kMaxCollectSamples) + Quoted(v);
            else
                collect.samples = *n, samplesGiven = true;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (arg == "--duration") {
            std::optional<std::string> v = value();
            std::optional<double> s = v ? ParseSeconds(*v) : std::nullopt;
            if (!s)
                cl.error = "option --duration needs a number of seconds above 0 and up to " +
                           std::to_string(std::int64_t(kMaxCollectSeconds)) + " (31 days)" + Quoted(v);
            else
                collect.durationSeconds = *s, durationGiven = true;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (arg == "--range") {
            std::optional<std::string> v = value();
            std::optional<int> n = v ? ParseWhole(*v, 1, 1'000'000) : std::nullopt;
            if (!n)
                cl.error = "option --range needs the ALS range in lux, such as 1000" + Quoted(v);
            else
                collect.rangeLux = *n;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (arg == "--resolution") {
            std::optional<std::string> v = value();
            std::optional<int> n = v ? ParseWhole(*v, 1, 64) : std::nullopt;
            if (!n)
                cl.error = "option --resolution needs the ADC resolution in bits, such as 16" + Quoted(v);
            else
                collect.resolutionBits = *n;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (!arg.empty() && arg[0] == '-') {
            cl.error = "unknown option '" + args[i] + "'";
        } else {
            cl.error = "unexpected argument '" + arg + "'";
        }
        if (!cl.error.empty()) return cl;
    }
    if (!cl.script && (loopsGiven || cl.abortOnFail)) {
        cl.error =
            std::string(loopsGiven ? "--loops" : "--abort-on-fail") + " only applies with --script FILE";
        return cl;
    }
    if (cl.collect) {
        collect.type = cl.collect->type;
        cl.collect = collect;
    }
    cl.error = CheckCollect(cl, collect, collectOnly, samplesGiven, durationGiven);
    return cl;
}

std::string HelpText() {
    std::string types;
    for (const CollectType& t : CollectTypes()) {
        std::string name = std::string("                       ") + t.name;
        name.resize(35, ' ');
        std::string help = t.help;
        for (std::size_t nl = 0; (nl = help.find('\n', nl)) != std::string::npos; nl += 36)
            help.replace(nl, 1, "\n" + std::string(35, ' '));
        types += name + help + "\n";
    }
    return "Usage: lxmeval [options] [/d]\n"
           "       lxmeval --boards\n"
           "       lxmeval --script FILE [--loops N] [--abort-on-fail] [--simulate] [--sensor NAME]\n"
           "       lxmeval --collect TYPE --output FILE.csv [--sensor NAME] [--interval MS]\n"
           "               [--samples N | --duration SECONDS] [--range LUX]\n"
           "               [--resolution BITS] [--simulate]\n"
           "Velmarin ALS / Proximity Evaluation Software: evaluates ambient-light, infrared and\n"
           "proximity sensors on the USB evaluation board.\n"
           "\n"
           "Options:\n"
           "  --simulate         run on the built-in simulated evaluation board\n"
           "  --sensor NAME      the sensor type: LXM410, LXM430, LXM450, LXM470 or LXM600\n"
           "                     (default LXM410)\n"
           "  --script FILE      run a register script without a window and exit: one line per\n"
           "                     row on standard output, then \"N passed, M failed\"\n"
           "  --loops N          run the script N times (1 to 100000; default 1)\n"
           "  --abort-on-fail    stop the script at the first read that does not match\n"
           "  --boards           list the attached evaluation boards (BUS:PORT and whether you\n"
           "                     may open them) and exit\n"
           "  --board BUS:PORT   take the board at this place when several are attached\n"
           "  /d                 keep the GPIO panel loaded after type selection\n"
           "  -h, --help         show this help and exit\n"
           "  --version          show the version and exit\n"
           "\n"
           "Collecting without a window:\n"
           "  --collect TYPE     set the sensor up as the device form does, take samples until\n"
           "                     the end given below, and log every sample; TYPE is one of\n" +
           types +
           "                     The LXM600 converts continuously while a part is enabled:\n"
           "                     als and als-cont (and ir and ir-cont, prox and prox-cont) set\n"
           "                     it up alike; it has no prox-ir.\n"
           "  --output FILE.csv  the log (required), replaced if it exists: lines starting with\n"
           "                     \"#\" (sensor, measurement, registers 0 and 1, interval, range,\n"
           "                     start time), one line of column names, then one line per sample:\n"
           "                     time,seconds,sample,raw,value,unit[,ir,prox]\n"
           "                     local time (ISO 8601 with milliseconds), seconds since the start,\n"
           "                     sample number from 1, raw count, value, \"lux\" or \"counts\", and\n"
           "                     for prox-ir the infrared and proximity counts; a field is empty\n"
           "                     when its reading was not a number\n"
           "  --interval MS      milliseconds between samples, 0 to 3600000 (default 8); for the\n"
           "                     one-conversion types the wait between trigger and read\n"
           "  --samples N        stop after N samples (1 to 1000000000000)\n"
           "  --duration SECONDS stop after this many seconds (\"90\", \"0.5\"; at most 31 days)\n"
           "                     With neither, the collection runs until Ctrl-C.\n"
           "  --range LUX        ALS range in lux: 1000, 4000, 16000 or 64000 (LXM600: 2000 or\n"
           "                     125, default 2000; its lux are converted at 2000 whichever\n"
           "                     range is set, so at 125 use the raw counts)\n"
           "  --resolution BITS  ADC resolution: 16, 12, 8 or 4 (not for the LXM600, fixed at\n"
           "                     12 bits)\n"
           "While collecting, a progress line (samples, rate, elapsed time, last value) goes to\n"
           "standard error when it is a terminal. Ctrl-C or SIGTERM ends the collection with the\n"
           "file complete.\n"
           "\n"
           "Exit status: 0 on success; 1 when a script's read failed or the run was cancelled, or\n"
           "the board went away during a collection (the file is kept); 2 for bad arguments, a\n"
           "file that cannot be loaded or written, or no board.\n";
}

std::string VersionText() {
    return std::string("lxmeval ") + LXMEVAL_VERSION + "\n";
}

}  // namespace lxm
