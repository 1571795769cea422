#include "HeadlessCollect.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTimer>

#include <algorithm>
#include <cmath>

#include "app/CollectControl.h"
#include "app/HeadlessScript.h"
#include "core/Seams.h"
#include "device/frmLXM410.h"
#include "device/parts/RecordFrame.h"
#include "transport/Session.h"
#include "transport/UsbDriver.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

constexpr int kExitDone = 0;
constexpr int kExitBoardGone = 1;
constexpr int kExitUnusable = 2;
// Often enough for Ctrl-C and --duration to act at once during a long interval, and for the
// progress line to look alive; rare enough to cost nothing beside the transfers.
constexpr int kWatchMs = 100;
constexpr std::int64_t kProgressEveryUs = 250'000;

// The option of an array whose caption value is `wanted` in `values`, as the user clicks it.
template <class Click>
void Choose(CtlArray<QRadioButton>& options, const std::vector<int>& values, int wanted, Click click) {
    const auto it = std::find(values.begin(), values.end(), wanted);
    if (it == values.end()) return;
    const int index = int(it - values.begin());
    options.at(index)->setChecked(true);
    click(index);
}

}  // namespace

int RunCollectHeadless(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err,
                       bool progress) {
    const CollectOptions& opt = *cl.collect;
    const std::string sensor = cl.sensor.value_or(SensorNames().front());
    if (sensor == "LXM600") {
        Print(err, QStringLiteral("lxmeval: --collect is for the LXM410, LXM430, LXM450 and LXM470; collect "
                                  "from the LXM600 form instead.\n"));
        return kExitUnusable;
    }

    StreamMessages messages(err);
    NoFileDialogs files;
    Session session(driver, messages, files, clock);
    if (!OpenBoardHeadless(session, sensor, err)) return kExitUnusable;

    frmLXM410 form(session);
    form.Form_Load();
    if (opt.resolutionBits)
        Choose(form.OptITime, SensorResolutions(sensor), *opt.resolutionBits,
               [&](int i) { form.OptITime_Click(i); });
    const int measure = opt.type->optMeasure;
    form.OptMeasure.at(measure)->setChecked(true);
    form.OptMeasure_Click(measure);
    if (opt.rangeLux)
        Choose(form.OptGain, SensorRanges(sensor), *opt.rangeLux, [&](int i) { form.OptGain_Click(i); });
    form.txtInterval->setText(QString::number(opt.intervalMs));
    form.txtInterval_LostFocus();
    const QString output = QString::fromLocal8Bit(opt.output.c_str());
    form.frmDataRecord->SetLogFile(output);
    form.frmDataRecord->chkLogAll->setChecked(true);

    StopOnSignal stopper;
    std::uint64_t samples = 0;
    bool logLost = false;
    const std::int64_t startUs = clock.Micros();
    std::int64_t lastProgressUs = startUs - kProgressEveryUs;
    const std::int64_t durationUs =
        opt.durationSeconds ? std::int64_t(std::llround(*opt.durationSeconds * 1e6)) : INT64_MAX;
    auto showProgress = [&](bool force) {
        if (!progress) return;
        const std::int64_t now = clock.Micros();
        if (!force && now - lastProgressUs < kProgressEveryUs) return;
        lastProgressUs = now;
        std::fprintf(err, "\r%s\033[K",
                     ProgressLine(samples, now - startUs, form.LatestReading, form.ShowLux).c_str());
        std::fflush(err);
    };
    auto due = [&] {
        if (!form.sampleLog().IsOpen()) logLost = true;
        return logLost || stopper.Requested() || clock.Micros() - startUs >= durationUs ||
               (opt.samples && samples >= *opt.samples);
    };
    form.onPass = [&] {
        ++samples;
        showProgress(false);
        if (due()) form.cmdStopData_Click();
    };
    // Signals and the duration are also watched between passes, which a long interval spaces.
    QTimer watch;
    watch.setInterval(kWatchMs);
    QObject::connect(&watch, &QTimer::timeout, [&] {
        showProgress(false);
        if (session.Collecting && due()) form.cmdStopData_Click();
    });
    watch.start();
    form.cmdCollectData_Click();
    watch.stop();
    showProgress(true);
    if (progress) std::fputc('\n', err);

    const bool boardGone = !session.UsbConnected;
    const std::uint64_t rows = form.sampleLog().Rows();
    session.usb().ShutdownUsb();
    if (logLost) {
        Print(err,
              QStringLiteral("lxmeval: the collection stopped after %1 samples because the log could not "
                             "be written.\n")
                  .arg(samples));
        return kExitUnusable;
    }
    if (boardGone) {
        Print(err, QStringLiteral("lxmeval: the board went away after %1 samples; %2 keeps them.\n")
                       .arg(rows)
                       .arg(output));
        return kExitBoardGone;
    }
    if (stopper.Requested())
        Print(err, QStringLiteral("lxmeval: stopped by signal %1 after %2 samples; %3 is complete.\n")
                       .arg(stopper.Signal())
                       .arg(rows)
                       .arg(output));
    return kExitDone;
}

}  // namespace lxm
