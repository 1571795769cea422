#include "app/CoreCollect.h"

#include <cmath>

#include "acquisition/SampleLog.h"
#include "app/CollectControl.h"
#include "app/HeadlessScript.h"
#include "measure/Board.h"
#include "measure/Logging.h"

namespace lxm {

namespace {
constexpr int kExitUnusable = 2;
}  // namespace

int RunCollectOnCore(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err, bool progress) {
    const CollectOptions& opt = *cl.collect;
    const std::string sensor = cl.sensor.value_or(SensorNames().front());
    // A log that cannot be created is a bad file, told before the board is touched.
    const QString output = QString::fromLocal8Bit(opt.output.c_str());
    const QString problem = LogCreationProblem(output);
    if (!problem.isEmpty()) {
        Print(err, QStringLiteral("lxmeval: cannot create the log \"%1\": %2. Choose a file in a folder you "
                                  "may write to.\n")
                       .arg(output, problem));
        return kExitUnusable;
    }
    std::unique_ptr<measure::Board> board;
    int interval = 0;
    try {
        board = std::make_unique<measure::Board>(driver, clock);
        board->SelectSensor(sensor);
        // The resolution first: the measurement and the range go on top of it, as the form
        // sets them.
        if (opt.resolutionBits) board->SetResolution(*opt.resolutionBits);
        // The collection types are named as the core's measurements. The multi-function chip
        // converts continuously while a part is enabled, so a type and its -cont twin set it
        // up alike.
        board->SetMeasure(opt.type->name);
        if (opt.rangeLux) board->SetRange(*opt.rangeLux);
        board->SetAutoRange(opt.autoRange);
        interval = opt.intervalGiven ? opt.intervalMs : board->DefaultIntervalMs();
        // A one-shot reading (and each conversion of the dual mode) waits the interval between
        // its command and its read.
        if (!board->continuous()) board->SetOneShotDelayMs(double(interval));
    } catch (const measure::Error& e) {
        if (e.kind() == measure::Error::Kind::NoBoard)
            Print(err, NotConnectedText());
        else
            Print(err, QStringLiteral("lxmeval: %1\n").arg(QString::fromStdString(e.what())));
        return kExitUnusable;
    }
    if (sensor != "LXM600") WarnOfEarlyReadings(board->resolutionBits(), opt, err);

    bool logLost = false;
    double latest = 0;
    SampleLog log(clock, [&](const QString& path, const QString& reason) {
        logLost = true;
        Print(err, QStringLiteral("lxmeval: ") + SampleLogErrorMessage(path, reason) + QLatin1Char('\n'));
    });
    const SampleLogHeader header = measure::LogHeader(*board, interval);
    if (!log.Open(output, header)) return kExitUnusable;

    // A range the auto-range stepped to is noted before the first row taken under it.
    int loggedRange = board->rangeLux();
    CollectWatch watcher(clock, opt, err, progress);
    auto goOn = [&] {
        watcher.Tick();
        log.FlushIfDue();
        return !logLost && !watcher.Due();
    };
    bool boardGone = false;
    try {
        board->Collect(
            0, interval,
            [&](const measure::Sample& s) {
                if (board->rangeLux() != loggedRange) {
                    loggedRange = board->rangeLux();
                    log.NoteSettings(measure::LogHeader(*board, interval));
                }
                log.Append(measure::LogRow(s));
                // A reading that is no number keeps the last value on show, as the form's live
                // box does.
                if (!std::isnan(s.reading.value)) latest = s.reading.value;
                watcher.Sample(latest);
                return goOn();
            },
            goOn);
    } catch (const measure::Error& e) {
        boardGone = e.kind() == measure::Error::Kind::BoardGone;
        if (!boardGone) Print(err, QStringLiteral("lxmeval: %1\n").arg(QString::fromStdString(e.what())));
    }
    const std::uint64_t rows = log.Rows();
    log.Close();
    if (boardGone)
        Print(err, QStringLiteral("lxmeval: Device has been disconnected, reconnect and re-initialize all "
                                  "registers\n"));
    return watcher.End(rows, logLost, boardGone, output);
}

}  // namespace lxm
