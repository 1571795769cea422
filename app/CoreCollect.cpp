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

// The collection types by the family form's measurement option they stand for.
const char* CoreMeasure(int optMeasure) {
    static constexpr const char* kNames[8] = {nullptr, "als", "ir", "prox", nullptr, "als-cont", "ir-cont", "prox-cont"};
    return optMeasure >= 0 && optMeasure < 8 ? kNames[optMeasure] : nullptr;
}
}  // namespace

bool CollectsOnCore(const CommandLine& cl) {
    return cl.collect && cl.collect->type && cl.sensor.value_or("LXM410") != "LXM600" && !cl.collect->type->dual &&
           CoreMeasure(cl.collect->type->optMeasure);
}

int RunCollectOnCore(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err, bool progress) {
    const CollectOptions& opt = *cl.collect;
    const std::string sensor = cl.sensor.value_or(SensorNames().front());
    const QString output = QString::fromLocal8Bit(opt.output.c_str());
    std::unique_ptr<measure::Board> board;
    int interval = 0;
    try {
        board = std::make_unique<measure::Board>(driver, clock);
        board->SelectSensor(sensor);
        // The resolution first: the measurement and the range go on top of it, as the form
        // sets them.
        if (opt.resolutionBits) board->SetResolution(*opt.resolutionBits);
        board->SetMeasure(CoreMeasure(opt.type->optMeasure));
        if (opt.rangeLux) board->SetRange(*opt.rangeLux);
        board->SetAutoRange(opt.autoRange);
        interval = opt.intervalGiven ? opt.intervalMs : board->DefaultIntervalMs();
        // A one-shot reading waits the interval between its trigger and its read.
        if (!board->continuous()) board->SetOneShotDelayMs(double(interval));
    } catch (const measure::Error& e) {
        if (e.kind() == measure::Error::Kind::NoBoard)
            Print(err, NotConnectedText());
        else
            Print(err, QStringLiteral("lxmeval: %1\n").arg(QString::fromStdString(e.what())));
        return kExitUnusable;
    }
    WarnOfEarlyReadings(board->resolutionBits(), opt, err);

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
                // A failed reading keeps the last value on show, as the form's live box does.
                if (s.reading.status != SampleStatus::Failed) latest = s.reading.value;
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
