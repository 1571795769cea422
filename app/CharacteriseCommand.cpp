#include "app/CharacteriseCommand.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <cmath>
#include <memory>

#include "app/CollectControl.h"
#include "app/HeadlessScript.h"
#include "characterise/Sweep.h"
#include "measure/Board.h"
#include "simboard/SimBoard.h"

namespace lxm {

namespace {

constexpr int kExitFailed = 1, kExitUnusable = 2;
constexpr int kMaxReadings = 100000;

// Plain digits with an optional fraction, nothing else: no sign, exponent, "inf" or "nan".
std::optional<double> Number(const std::string& text) {
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos) return std::nullopt;
    double v = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return v;
}

std::string Given(const std::optional<std::string>& v) {
    return v ? ", not '" + *v + "'" : "";
}

// The three files of one sweep, with the first suffix that replaces none of them: a sweep never
// overwrites an earlier one.
struct Outputs {
    QString csv, png, md;
};
Outputs FreeNames(const QString& dir) {
    for (int n = 1;; ++n) {
        const QString base = QDir(dir).filePath(n == 1 ? QStringLiteral("characterisation")
                                                        : QStringLiteral("characterisation-%1").arg(n));
        Outputs o{base + QStringLiteral(".csv"), base + QStringLiteral(".png"), base + QStringLiteral(".md")};
        if (!QFileInfo::exists(o.csv) && !QFileInfo::exists(o.png) && !QFileInfo::exists(o.md)) return o;
    }
}

QString SettingText(const characterise::Setting& s) {
    return s.resolutionBits ? QStringLiteral("%1 lux %2 bits").arg(s.rangeLux).arg(s.resolutionBits)
                            : QStringLiteral("%1 lux").arg(s.rangeLux);
}

}  // namespace

bool ParseCharacteriseOption(const std::string& arg, const std::function<std::optional<std::string>()>& value,
                             const std::optional<std::string>& inlineValue, CommandLine& cl, std::string& first) {
    if (arg == "--characterise") {
        if (inlineValue) cl.error = "option --characterise takes no value";
        cl.characterise.emplace();
        return true;
    }
    if (arg != "--measure" && arg != "--readings" && arg != "--reference") return false;
    if (first.empty()) first = arg;
    CharacteriseOptions& c = cl.characterise ? *cl.characterise : cl.characterise.emplace();
    const std::optional<std::string> v = value();
    if (arg == "--measure") {
        if (!v || (*v != "als" && *v != "ir" && *v != "prox"))
            cl.error = "option --measure needs als, ir or prox" + Given(v);
        else
            c.measure = *v;
    } else if (arg == "--readings") {
        const std::optional<double> n = v ? Number(*v) : std::nullopt;
        if (!n || *n != std::floor(*n) || *n < 2 || *n > kMaxReadings)
            cl.error = "option --readings needs a whole number from 2 to " + std::to_string(kMaxReadings) + Given(v);
        else
            c.readings = int(*n);
    } else {
        const std::optional<double> lux = v ? Number(*v) : std::nullopt;
        if (!lux || !(*lux > 0) || *lux > 200000)
            cl.error = "option --reference needs the lux a meter beside the sensor reads, above 0 and up to 200000" +
                       Given(v);
        else
            c.referenceLux = lux;
    }
    return true;
}

std::string CheckCharacterise(CommandLine& cl, bool given, const std::string& output, const std::string& first) {
    if (!given) {
        cl.characterise.reset();
        return first.empty() ? "" : first + " only applies with --characterise";
    }
    if (cl.collect || cl.script || cl.view)
        return std::string("--characterise cannot run with ") +
               (cl.collect ? "--collect" : cl.script ? "--script" : "--view or --plot") + ": give one of them";
    if (output.empty()) return "--characterise needs --output DIR, the folder the table, plot and report go to";
    const std::string sensor = cl.sensor.value_or(SensorNames().front());
    if (cl.characterise->measure == "prox" && sensor == "LXM470")
        return "the LXM470 has no proximity sensor: --measure prox needs another --sensor";
    cl.characterise->outputDir = output;
    return "";
}

std::string CharacteriseHelp() {
    return "Characterising without a window:\n"
           "  --characterise     measure every setting of the sensor (LXM410 to LXM470: every\n"
           "                     range at every resolution; LXM600: every range) in the same\n"
           "                     light, and write characterisation.csv, .png and .md into the\n"
           "                     folder --output DIR (created if missing; files already there\n"
           "                     are kept, the new ones get the first free suffix, -2, -3, ...);\n"
           "                     the table goes to standard output\n"
           "  --measure TYPE     als (default), ir or prox\n"
           "  --readings N       readings per setting, 2 to 100000 (default 64)\n"
           "  --reference LUX    what a lux meter beside the sensor reads: each setting's error\n";
}

QString SceneText(const sim::LightScene& s) {
    QString text = QStringLiteral("%1 %2 of %3")
                       .arg(s.ambientLux)
                       .arg(s.source == sim::Source::Ir850 ? QStringLiteral("IR units") : QStringLiteral("lux"))
                       .arg(QString::fromLatin1(sim::InfoOf(s.source).caption));
    text += s.objectDistanceMm > 0 ? QStringLiteral(", an object at %1 mm").arg(s.objectDistanceMm)
                                   : QStringLiteral(", no object");
    text += s.glassPercent < 100 ? QStringLiteral(", cover glass passing %1 %").arg(s.glassPercent)
                                 : QStringLiteral(", no cover glass");
    text += QStringLiteral(", %1 C").arg(s.temperatureC);
    text += s.ideal ? QStringLiteral(", the ideal chip (no noise)") : QStringLiteral(", noise seed %1").arg(s.seed);
    return QStringLiteral("simulated board: ") + text;
}

int RunCharacterise(const CommandLine& cl, UsbDriver& driver, Clock& clock, const QString& scene, std::FILE* out,
                    std::FILE* err, bool progress) {
    const CharacteriseOptions& opt = *cl.characterise;
    std::unique_ptr<measure::Board> board;
    try {
        board = std::make_unique<measure::Board>(driver, clock);
        board->SelectSensor(cl.sensor.value_or(SensorNames().front()));
    } catch (const measure::Error& e) {
        Print(err, e.kind() == measure::Error::Kind::NoBoard
                       ? NotConnectedText()
                       : QStringLiteral("lxmeval: %1\n").arg(QString::fromStdString(e.what())));
        return kExitUnusable;
    }

    const QString dir = QString::fromLocal8Bit(opt.outputDir.c_str());
    errno = 0;
    const bool made = QDir().mkpath(dir);
    const int madeErrno = errno;
    const QFileInfo info(dir);
    const int why = info.exists() && !info.isDir() ? ENOTDIR
                    : !made                        ? (madeErrno ? madeErrno : EIO)
                    : !info.isWritable()           ? EACCES
                                                   : 0;
    if (why) {
        Print(err, QStringLiteral("lxmeval: the folder %1 cannot be written to: %2. Give a folder you may write in.\n")
                       .arg(dir, QString::fromLocal8Bit(std::strerror(why))));
        return kExitUnusable;
    }
    characterise::Options options;
    options.measure = opt.measure;
    options.readings = opt.readings;
    options.referenceLux = opt.referenceLux;
    characterise::BoardTarget target(*board);
    StopOnSignal stopper;
    std::int64_t shownUs = 0;
    std::optional<characterise::Setting> last;
    const auto onProgress = [&](int done, int total, const characterise::Setting& under, double left) {
        if (progress && (clock.Micros() - shownUs >= 250'000 || done == total)) {
            shownUs = clock.Micros();
            Print(err, QStringLiteral("\r%1, %2 of %3 readings, %4 s left   ")
                           .arg(SettingText(under))
                           .arg(done)
                           .arg(total)
                           .arg(std::lround(left)));
        } else if (!progress && !(last && *last == under)) {
            Print(err, QStringLiteral("lxmeval: measuring %1\n").arg(SettingText(under)));
        }
        last = under;
        return !stopper.Requested();
    };
    characterise::Result result = characterise::Run(target, clock, options, onProgress);
    if (progress) Print(err, QStringLiteral("\n"));
    result.scene = scene;

    const Outputs files = FreeNames(dir);
    std::optional<QString> problem = characterise::WriteCsv(result, files.csv);
    if (!problem) problem = characterise::WritePlot(result, files.png);
    if (!problem) problem = characterise::WriteReport(result, files.md);
    Print(out, characterise::TableText(result));
    if (problem) {
        Print(err, QStringLiteral("lxmeval: %1\n").arg(*problem));
        return kExitUnusable;
    }
    Print(err, QStringLiteral("lxmeval: %1 settings in %2 s; written %3, %4 and %5\n")
                   .arg(result.rows.size())
                   .arg(result.seconds, 0, 'f', 1)
                   .arg(files.csv, files.png, files.md));
    if (result.cancelled) {
        Print(err, QStringLiteral("lxmeval: stopped by signal %1; the files hold the settings measured so far\n")
                       .arg(stopper.Signal()));
        return kExitFailed;
    }
    if (!result.error.isEmpty()) {
        Print(err, QStringLiteral("lxmeval: %1; the files hold the settings measured so far\n").arg(result.error));
        return kExitFailed;
    }
    return 0;
}

}  // namespace lxm
