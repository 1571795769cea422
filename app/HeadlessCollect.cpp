#include "HeadlessCollect.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <memory>

#include "app/CollectControl.h"
#include "app/CoreCollect.h"
#include "app/HeadlessScript.h"
#include "core/Seams.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/Collection.h"
#include "device/parts/RecordFrame.h"
#include "transport/Session.h"
#include "transport/UsbDriver.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

constexpr int kExitUnusable = 2;
// Often enough for Ctrl-C and --duration to act at once during a long interval, and for the
// progress line to look alive; rare enough to cost nothing beside the transfers.
constexpr int kWatchMs = 100;

// An option of an array as the user clicks it.
template <class Click>
void Select(CtlArray<QRadioButton>& options, int index, Click click) {
    options.at(index)->setChecked(true);
    click(index);
}

// The option whose caption value is `wanted` in `values` (the form's table for the array).
template <class Values, class Click>
void Choose(CtlArray<QRadioButton>& options, const Values& values, int wanted, Click click) {
    const auto it = std::find(std::begin(values), std::end(values), wanted);
    if (it != std::end(values)) Select(options, int(it - std::begin(values)), click);
}

template <class Click>
void Tick(QCheckBox* box, Click click) {
    box->setChecked(true);
    click();
}

// The family form: resolution, then the measurement (whose handler rewrites the range
// controls), then the range and the interval.
std::unique_ptr<frmLXM410> FamilyForm(Session& session, const CollectOptions& opt) {
    auto form = std::make_unique<frmLXM410>(session);
    form->Form_Load();
    if (opt.resolutionBits)
        Choose(form->OptITime, SensorResolutions(session.SelectedType), *opt.resolutionBits,
               [&](int i) { form->OptITime_Click(i); });
    Select(form->OptMeasure, opt.type->optMeasure, [&](int i) { form->OptMeasure_Click(i); });
    if (opt.rangeLux)
        Choose(form->OptGain, form->RangeTable, *opt.rangeLux, [&](int i) { form->OptGain_Click(i); });
    // Without --interval the resolution's own delay stands, as the form chose it.
    if (opt.intervalGiven) form->txtInterval->setText(QString::number(opt.intervalMs));
    form->txtInterval_LostFocus();
    return form;
}

// The multi-function chip converts continuously while a part is enabled, so a type taken once
// and its continuous twin set it up alike. Its form converts ALS counts at one range whatever
// the range option says, and its image starts on the other one: the converting range is the
// default here, so that a run without --range logs the right lux.
std::unique_ptr<DeviceFormBase> MultiFunctionForm(Session& session, const CollectOptions& opt) {
    auto form = std::make_unique<frmLXM600>(session);
    form->Form_Load();
    Choose(form->OptALSRange, form->RangeTable,
           opt.rangeLux.value_or(form->RangeTable[std::size_t(form->RangeIndex)]),
           [&](int i) { form->OptALSRange_Click(i); });
    if (opt.type->proximity) {
        Tick(form->ChkPEnable, [&] { form->ChkPEnable_Click(); });
        Select(form->OptGraph, 0, [&](int i) { form->OptGraph_Click(i); });  // "Proximity"
    } else {
        Select(form->OptMMode, opt.type->lux ? 0 : 1, [&](int i) { form->OptMMode_Click(i); });
        Tick(form->chkALSEnable, [&] { form->chkALSEnable_Click(); });
        Select(form->OptGraph, 1, [&](int i) { form->OptGraph_Click(i); });  // "ALS/IR"
    }
    if (opt.intervalGiven) form->txtInterval->setText(QString::number(opt.intervalMs));
    form->chkAutoRange->setChecked(opt.autoRange);
    return form;
}

// The form's own collection with every sample logged, ended by the samples or the duration
// asked for, a signal, a log that stopped or a board that went away.
int Collect(DeviceFormBase& form, Session& session, const CollectOptions& opt, std::FILE* err,
            bool progress) {
    Clock& clock = session.clock;
    CollectionState& run = form.collection();
    const QString output = QString::fromLocal8Bit(opt.output.c_str());
    form.dataRecord().SetLogFile(output);
    form.dataRecord().chkLogAll->setChecked(true);

    CollectWatch watcher(clock, opt, err, progress);
    bool logLost = false;
    auto due = [&] {
        if (!form.sampleLog().IsOpen()) logLost = true;
        return logLost || watcher.Due();
    };
    run.onPass = [&] {
        watcher.Sample(run.LatestReading);
        if (due()) form.cmdStopData_Click();
    };
    // Signals and the duration are also watched between passes, which a long interval spaces.
    QTimer watch;
    watch.setInterval(kWatchMs);
    QObject::connect(&watch, &QTimer::timeout, [&] {
        watcher.Tick();
        if (session.Collecting && due()) form.cmdStopData_Click();
    });
    watch.start();
    form.cmdCollectData_Click();
    watch.stop();
    run.onPass = nullptr;
    const bool boardGone = !session.UsbConnected;
    const std::uint64_t rows = form.sampleLog().Rows();
    session.usb().ShutdownUsb();
    return watcher.End(rows, logLost, boardGone, output);
}

}  // namespace

int RunCollectHeadless(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err,
                       bool progress) {
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
    if (CollectsOnCore(cl)) return RunCollectOnCore(cl, driver, clock, err, progress);
    StreamMessages messages(err);
    NoFileDialogs files;
    Session session(driver, messages, files, clock);
    if (!OpenBoardHeadless(session, sensor, err)) return kExitUnusable;
    if (sensor == "LXM600") return Collect(*MultiFunctionForm(session, opt), session, opt, err, progress);
    const auto form = FamilyForm(session, opt);
    WarnOfEarlyReadings(form->AdcBits, opt, err);
    return Collect(*form, session, opt, err, progress);
}

}  // namespace lxm
