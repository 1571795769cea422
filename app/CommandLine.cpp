#include "CommandLine.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>

#include "app/CharacteriseCommand.h"
#include "simboard/SimBoard.h"

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

bool EndsWith(const std::string& s, const std::string& end) {
    return s.size() >= end.size() && Upper(s.substr(s.size() - end.size())) == Upper(end);
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

// A decimal number in [min, max]: an optional minus, digits, an optional fraction.
std::optional<double> ParseDecimal(const std::string& text, double min, double max) {
    if (text.find_first_not_of("-0123456789.") != std::string::npos || text.find('-', 1) != std::string::npos)
        return std::nullopt;
    double v = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed);
    if (ec != std::errc() || end != text.data() + text.size() || !(v >= min && v <= max)) return std::nullopt;
    return v;
}

// The bench options of the simulated board: name, what the value is, its limits.
struct BenchNumber {
    const char* option;
    const char* what;
    double min, max;
    std::optional<double> BenchOptions::*target;
};
constexpr BenchNumber kBenchNumbers[] = {
    {"--light", "the light in lux", 0, 200000, &BenchOptions::lightLux},
    {"--distance", "the object's distance in mm (0: none)", 0, 1000, &BenchOptions::distanceMm},
    {"--glass", "the cover glass's transmission in percent", 1, 100, &BenchOptions::glassPercent},
    {"--temperature", "the temperature in degrees C", -40, 85, &BenchOptions::temperatureC},
    {"--period", "the scene's period in seconds", 0, 86400, &BenchOptions::periodS},
    {"--depth", "the scene's swing in percent", 0, 100, &BenchOptions::depthPercent},
};

// The light's variation over time, by the names --scene takes.
constexpr std::pair<const char*, sim::LightScene::Kind> kScenes[] = {
    {"steady", sim::LightScene::Kind::Steady},
    {"sine", sim::LightScene::Kind::Sine},
    {"steps", sim::LightScene::Kind::Steps},
    {"noise", sim::LightScene::Kind::Noise},
    {"ramp", sim::LightScene::Kind::Ramp}};

std::string SourceList() {
    std::string list;
    for (const sim::SourceInfo& s : sim::Sources())
        list += (list.empty() ? "" : &s == &sim::Sources().back() ? " or " : ", ") + std::string(s.name);
    return list;
}

// True when `arg` is a bench option; sets the value or the error.
bool ParseBench(const std::string& arg, const std::function<std::optional<std::string>()>& value,
                const std::optional<std::string>& inlineValue, BenchOptions& bench, std::string& error) {
    auto range = [](double v) {
        std::string s = std::to_string(v);
        return s.substr(0, s.find('.'));
    };
    bool known = arg == "--source" || arg == "--seed" || arg == "--ideal" || arg == "--scene";
    for (const BenchNumber& n : kBenchNumbers) {
        if (arg != n.option) continue;
        known = true;
        const std::optional<std::string> v = value();
        const std::optional<double> d = v ? ParseDecimal(*v, n.min, n.max) : std::nullopt;
        if (!d)
            error = "option " + arg + " needs " + n.what + ", from " + range(n.min) + " to " + range(n.max) +
                    Quoted(v);
        else
            bench.*n.target = d;
    }
    if (!known) return false;
    if (arg == "--source") {
        const std::optional<std::string> v = value();
        if (!v || !sim::SourceNamed(*v))
            error = "option --source needs one of " + SourceList() + Quoted(v);
        else
            bench.source = *v;
    } else if (arg == "--seed") {
        const std::optional<std::string> v = value();
        const std::optional<std::uint32_t> n = v ? ParseWhole<std::uint32_t>(*v, 0, UINT32_MAX) : std::nullopt;
        if (!n)
            error = "option --seed needs a whole number from 0 to " + std::to_string(UINT32_MAX) + Quoted(v);
        else
            bench.seed = n;
    } else if (arg == "--ideal") {
        if (inlineValue) error = "option --ideal takes no value";
        bench.ideal = true;
    } else if (arg == "--scene") {
        const std::optional<std::string> v = value();
        bench.scene.reset();
        for (const auto& [name, kind] : kScenes)
            if (v == name) bench.scene = int(kind);
        if (!bench.scene) error = "option --scene needs steady, sine, steps, noise or ramp" + Quoted(v);
    }
    if (bench.firstGiven.empty()) bench.firstGiven = arg;
    return true;
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
    if (c.autoRange && !c.type->lux)
        return std::string(
                   "--auto-range steps the range of lux readings: it needs --collect als or "
                   "als-cont, not ") +
               c.type->name;
    return "";
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& args) {
    CommandLine cl;
    bool loopsGiven = false;
    CollectOptions collect;
    std::optional<std::string> titleText;
    std::string collectOnly;  // the first option given that only a collection takes
    bool samplesGiven = false, durationGiven = false;
    // --output names the picture of --plot, wherever on the line --plot comes.
    const bool plotting = std::any_of(args.begin(), args.end(), [](const std::string& a) {
        return a == "--plot" || a.rfind("--plot=", 0) == 0;
    });
    // --output names the folder of --characterise.
    const bool characterising = std::find(args.begin(), args.end(), "--characterise") != args.end();
    std::string characteriseOnly;  // the first option given that only --characterise takes
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
            if (collectOnly.empty() && !plotting && !characterising) collectOnly = arg;
        } else if (arg == "--interval") {
            std::optional<std::string> v = value();
            std::optional<int> n = v ? ParseWhole(*v, 0, kMaxCollectIntervalMs) : std::nullopt;
            if (!n)
                cl.error = "option --interval needs a whole number of milliseconds from 0 to " +
                           std::to_string(kMaxCollectIntervalMs) + Quoted(v);
            else
                collect.intervalMs = *n, collect.intervalGiven = true;
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
        } else if (arg == "--auto-range") {
            if (inlineValue) cl.error = "option --auto-range takes no value";
            collect.autoRange = true;
            if (collectOnly.empty()) collectOnly = arg;
        } else if (ParseBench(arg, value, inlineValue, cl.bench, cl.error)) {
        } else if (ParseCharacteriseOption(arg, value, inlineValue, cl, characteriseOnly)) {
        } else if (arg == "--view" || arg == "--plot") {
            if (cl.view) cl.error = "--view and --plot cannot run together, nor either twice: give one of them";
            ViewOptions& view = cl.view.emplace();
            view.plot = arg == "--plot";
            if (inlineValue) view.files.push_back(*inlineValue);
            while (i + 1 < args.size() && !args[i + 1].empty() && args[i + 1][0] != '-') view.files.push_back(args[++i]);
            if (view.files.empty() || std::any_of(view.files.begin(), view.files.end(), [](auto& f) { return f.empty(); }))
                cl.error = "option " + arg + " needs the names of one or more logged runs";
        } else if (arg == "--title") {
            std::optional<std::string> v = value();
            if (!v) cl.error = "option --title needs a text";
            else titleText = *v;
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
    if (!cl.simulate && !cl.bench.firstGiven.empty()) {
        cl.error = cl.bench.firstGiven + " sets up the simulated board: it only applies with --simulate";
        return cl;
    }
    if (titleText && !(cl.view && cl.view->plot)) {
        cl.error = "--title only applies with --plot FILE...";
        return cl;
    }
    if (cl.view) {
        if (cl.collect || cl.script)
            cl.error = std::string(cl.view->plot ? "--plot" : "--view") + " cannot run with " +
                       (cl.collect ? "--collect" : "--script") + ": give one of them";
        else if (cl.view->plot && collect.output.empty())
            cl.error = "--plot needs --output PICTURE.png or PICTURE.svg, the picture to write";
        else if (cl.view->plot && !EndsWith(collect.output, ".png") && !EndsWith(collect.output, ".svg"))
            cl.error = "the picture of --plot must end in .png or .svg, not '" + collect.output + "'";
        cl.view->output = collect.output;
        cl.view->title = titleText;
        if (!cl.error.empty()) return cl;
    }
    if ((cl.error = CheckCharacterise(cl, characterising, collect.output, characteriseOnly)) != "") return cl;
    if (cl.collect) {
        collect.type = cl.collect->type;
        cl.collect = collect;
    }
    cl.error = CheckCollect(cl, collect, collectOnly, samplesGiven, durationGiven);
    return cl;
}

void ApplyBench(const BenchOptions& b, sim::SimBoard& board) {
    sim::LightScene& s = board.scene();
    if (b.seed) board.Seed(*b.seed);
    s.ambientLux = b.lightLux.value_or(s.ambientLux);
    s.objectDistanceMm = b.distanceMm.value_or(s.objectDistanceMm);
    s.glassPercent = b.glassPercent.value_or(s.glassPercent);
    s.temperatureC = b.temperatureC.value_or(s.temperatureC);
    if (b.source) s.source = *sim::SourceNamed(*b.source);
    s.ideal = s.ideal || b.ideal;
    if (b.scene) s.kind = sim::LightScene::Kind(*b.scene);
    s.periodS = b.periodS.value_or(s.periodS);
    if (b.depthPercent) s.depth = *b.depthPercent / 100;
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
           "               [--resolution BITS] [--auto-range] [--simulate]\n"
           "       lxmeval --characterise --output DIR [--measure als|ir|prox] [--readings N]\n"
           "               [--reference LUX] [--sensor NAME] [--simulate]\n"
           "       lxmeval --view FILE...\n"
           "       lxmeval --plot FILE... --output PICTURE.png|PICTURE.svg [--title TEXT]\n"
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
           "                     resolution, start time), one line of column names, then one\n"
           "                     line per sample:\n"
           "                     time,seconds,sample,raw,value,unit,status[,ir,prox]\n"
           "                     local time (ISO 8601 with milliseconds), seconds since the start,\n"
           "                     sample number from 1, raw count, value, \"lux\" or \"counts\",\n"
           "                     ok, failed (raw and value empty), saturated (top of the scale)\n"
           "                     or early (read before its conversion could end), and for\n"
           "                     prox-ir the infrared and proximity counts; a field is empty\n"
           "                     when its reading was not a number\n"
           "  --interval MS      milliseconds between samples, 0 to 3600000 (default: the\n"
           "                     form's for the resolution, 118 at 16 bits, 8 at 12); for the\n"
           "                     one-conversion types the wait between trigger and read\n"
           "  --samples N        stop after N samples (1 to 1000000000000)\n"
           "  --duration SECONDS stop after this many seconds (\"90\", \"0.5\"; at most 31 days)\n"
           "                     With neither, the collection runs until Ctrl-C.\n"
           "  --range LUX        ALS range in lux: 1000, 4000, 16000 or 64000 (LXM600: 2000 or\n"
           "                     125, default 2000; its lux are converted at 2000 whichever\n"
           "                     range is set, so at 125 use the raw counts)\n"
           "  --resolution BITS  ADC resolution: 16, 12, 8 or 4 (not for the LXM600, fixed at\n"
           "                     12 bits)\n"
           "  --auto-range       als and als-cont: the range follows the light, one step up\n"
           "                     when a reading reaches 90 % of the scale, one down after three\n"
           "                     under 5 %; each step is a \"# range\" line in the log\n"
           "\n"
           "The simulated board's bench (with --simulate; the default is an office: 300 lux of\n"
           "white LED light, an object at 60 mm, no cover glass, 25 C, the chip's noise on):\n"
           "  --light LUX        the light as a lux meter reads it, 0 to 200000 (ir850: its\n"
           "                     infrared, in the IR channel's units)\n"
           "  --source NAME      daylight, incandescent, fluorescent, led or ir850\n"
           "  --distance MM      a reflecting object's distance, 0 (none) to 1000 mm\n"
           "  --glass PERCENT    the cover glass's transmission, 1 to 100 (100: no glass)\n"
           "  --temperature C    the chip's temperature, -40 to 85\n"
           "  --seed N           the noise's seed, 0 to 4294967295: the same seed, the same run\n"
           "  --ideal            the noise-free chip: counts follow the light exactly\n"
           "  --scene NAME       the light's variation: steady (default), sine, steps, noise,\n"
           "                     or ramp (from --light up to 50000 lux geometrically and back)\n"
           "  --period SECONDS   the sine's period, the steps' dwell, each way of the ramp\n"
           "                     (default 4)\n"
           "  --depth PERCENT    the swing of sine, steps and noise, 0 to 100 (default 60)\n"
           "\n"
           "While collecting, a progress line (samples, rate, elapsed time, last value) goes to\n"
           "standard error when it is a terminal. Ctrl-C or SIGTERM ends the collection with the\n"
           "file complete.\n"
           "\n" +
           CharacteriseHelp() +
           "\n"
           "Looking back at runs:\n"
           "  --view FILE...     open logged runs (sample logs, record files) in the run viewer\n"
           "  --plot FILE...     draw logged runs over each other into the picture named by\n"
           "                     --output (.png or .svg) without a display, and exit\n"
           "  --title TEXT       with --plot: the picture's title (default: the file names)\n"
           "\n"
           "Exit status: 0 on success; 1 when a script's read failed or the run was cancelled, or\n"
           "the board went away during a collection (the file is kept); 2 for bad arguments, a\n"
           "file that cannot be loaded or written, or no board.\n";
}

std::string VersionText() {
    return std::string("lxmeval ") + LXMEVAL_VERSION + "\n";
}

}  // namespace lxm
