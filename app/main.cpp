// lxmeval: evaluation program for ambient-light, infrared and proximity sensors on the USB
// evaluation board. With --simulate it runs on the built-in simulated board; with --script it
// runs a register script without any window; with --collect it logs a collection to a CSV
// file without any window.
#include <unistd.h>
#include <QApplication>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CharacteriseCommand.h"
#include "app/CommandLine.h"
#include "app/CoreCollect.h"
#include "app/FormBoards.h"
#include "app/HeadlessScript.h"
#include "app/SimulatorPanel.h"
#include "app/WindowPlacement.h"
#include "app/frmStartup.h"
#include "core/Seams.h"
#include "simboard/SimBoard.h"
#include "simboard/SimBus.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"
#include "transport/BoardPlace.h"
#include "transport/libusb/BoardList.h"
#include "transport/libusb/LibusbDriver.h"
#include "viewer/LoadRuns.h"
#include "viewer/RunViewer.h"

namespace {

// The board the program talks to: the built-in simulated one, a full-speed USB frame per
// transfer as a real board has, or a real one through libusb.
struct Board {
    std::unique_ptr<lxm::UsbDriver> all;   // a real USB: the driver that sees every board
    lxm::OneBoardDriver* only = nullptr;  // owned by driver: the one board taken of them
    std::unique_ptr<lxm::sim::SimBoard> simulated;
    lxm::sim::SimDriver* simDriver = nullptr;  // owned by driver
    std::unique_ptr<lxm::UsbDriver> driver;
};

// `sensor`: the chip the simulated board carries from the start (a run without a window is
// meant for that type); without it, the chip follows the type the user picks.
Board OpenBoard(const lxm::CommandLine& cl, lxm::Clock& clock, std::optional<std::string> sensor) {
    Board b;
    if (!cl.simulate) {
        b.all = std::make_unique<lxm::usb::LibusbDriver>();
        auto only = std::make_unique<lxm::OneBoardDriver>(*b.all, cl.board);
        b.only = only.get();
        b.driver = std::move(only);
        return b;
    }
    b.simulated = std::make_unique<lxm::sim::SimBoard>(clock);
    if (sensor) b.simulated->CarryForType(*sensor);
    lxm::ApplyBench(cl.bench, *b.simulated);
    // Nobody reads the packet log in the program, and a night's collection would fill memory
    // with it.
    b.simulated->controller().SetWireLogCapacity(0);
    auto sim = std::make_unique<lxm::sim::SimDriver>(*b.simulated);
    sim->SetLatencyMicros(1000);
    b.simDriver = sim.get();
    b.driver = std::move(sim);
    return b;
}

// The simulated boards on one bus, as real ones on the USB: the window takes the first, and each
// further device form one the program adds, with a panel of its own, at the next address.
struct SimulatedBus {
    struct Extra {  // made in this order, gone in the reverse
        std::unique_ptr<lxm::sim::SimBoard> board;
        std::unique_ptr<lxm::sim::SimDriver> driver;
        std::unique_ptr<lxm::SimulatorPanel> panel;
    };
    lxm::sim::SimBus bus;
    std::vector<std::unique_ptr<Extra>> extra;

    lxm::BoardPlace Add(const lxm::CommandLine& cl, lxm::Clock& clock) {
        auto e = std::make_unique<Extra>();
        e->board = std::make_unique<lxm::sim::SimBoard>(clock);
        lxm::ApplyBench(cl.bench, *e->board);
        e->board->controller().SetWireLogCapacity(0);
        e->driver = std::make_unique<lxm::sim::SimDriver>(*e->board);
        e->driver->SetLatencyMicros(1000);
        const lxm::BoardPlace place{1, 3 + int(extra.size())};
        e->driver->SetPlace(place.bus, place.port);
        e->panel = std::make_unique<lxm::SimulatorPanel>(*e->driver);
        e->panel->setWindowTitle(e->panel->windowTitle() +
                                 QStringLiteral(" %1").arg(QString::fromStdString(place.Text())));
        e->panel->show();
        bus.Add(*e->driver);
        extra.push_back(std::move(e));
        return place;
    }
};

// The board of one more device form: the free one at place, taken alone; without one, a new
// simulated board (a real USB has none to offer then).
lxm::FormBoards::Maker MakeFormBoard(const lxm::CommandLine& cl, lxm::Clock& clock, lxm::UsbDriver& all,
                                     SimulatedBus* sims) {
    return [&cl, &clock, &all, sims](std::optional<lxm::BoardPlace> place, const std::string& type) {
        if (!place && !sims) return lxm::FormBoards::Made{};
        if (!place) place = sims->Add(cl, clock);
        if (lxm::sim::SimDriver* d = sims ? sims->bus.At(place->bus, place->port) : nullptr)
            d->board().CarryForType(type);
        return lxm::FormBoards::TakeAlone(all, place);
    };
}

// Runs a script with no window at all: a core application serves the driver's notifications.
int RunHeadless(int argc, char** argv, const lxm::CommandLine& cl) {
    QCoreApplication app(argc, argv);
    lxm::SteadyClock clock;
    Board board = OpenBoard(cl, clock, cl.sensor.value_or("LXM410"));
    lxm::StdinTerminal terminal;
    return lxm::RunScriptHeadless(cl, *board.driver, clock, terminal, stdout, stderr);
}

// A collection on the measuring core, with no window object at all: a core application serves
// the driver's notifications.
int RunCollect(int argc, char** argv, const lxm::CommandLine& cl) {
    QCoreApplication app(argc, argv);
    lxm::SteadyClock clock;
    Board board = OpenBoard(cl, clock, cl.sensor.value_or("LXM410"));
    return lxm::RunCollectOnCore(cl, *board.driver, clock, stderr, ::isatty(STDERR_FILENO) == 1);
}

// --characterise: the core sweeps the board with no window object; the plot is painted on an
// image, whose text needs a platform: the offscreen one, so no display is needed.
int RunCharacteriseCommand(int argc, char** argv, const lxm::CommandLine& cl) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    lxm::SteadyClock clock;
    Board board = OpenBoard(cl, clock, cl.sensor.value_or("LXM410"));
    const QString scene = board.simulated ? lxm::SceneText(board.simulated->scene()) : QString();
    return lxm::RunCharacterise(cl, *board.driver, clock, scene, stdout, stderr, ::isatty(STDERR_FILENO) == 1);
}

// --boards: one line per attached board on standard output.
int ListBoards() {
    const auto boards = lxm::usb::ListBoards();
    for (const auto& b : boards)
        std::printf("%d:%d\t%s\n", b.bus, b.port, b.openable ? "ready" : ("cannot open: " + b.problem).c_str());
    if (boards.empty()) std::fputs("lxmeval: no evaluation board is attached: plug one in\n", stderr);
    return boards.empty() ? 2 : 0;
}

QStringList Files(const std::vector<std::string>& files) {
    QStringList out;
    for (const std::string& f : files) out << QString::fromLocal8Bit(f.c_str());
    return out;
}

// --plot: the picture is drawn offscreen, so no display is needed.
int RunPlotCommand(int argc, char** argv, const lxm::ViewOptions& v) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString problems;
    const int rc = lxm::viewer::PlotToPicture(Files(v.files), QString::fromLocal8Bit(v.output.c_str()),
                                              QString::fromLocal8Bit(v.title.value_or("").c_str()), problems);
    if (!problems.isEmpty()) std::fprintf(stderr, "lxmeval: %s\n", problems.toLocal8Bit().constData());
    return rc;
}

// --view: the run viewer alone, no board.
int RunViewCommand(int argc, char** argv, const lxm::ViewOptions& v) {
    QApplication app(argc, argv);
    lxm::QtMessages messages;
    lxm::QtFileDialogs files;
    auto* viewer = new lxm::viewer::RunViewer(messages, files);
    viewer->show();
    viewer->OpenFiles(Files(v.files));
    return app.exec();
}

}  // namespace

int main(int argc, char** argv) {
    // Parsed before any application object, which would want a display.
    const lxm::CommandLine cl = lxm::ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (!cl.error.empty()) {
        std::fprintf(stderr, "lxmeval: %s\nTry 'lxmeval --help' for the options.\n", cl.error.c_str());
        return 2;
    }
    if (cl.help) {
        std::fputs(lxm::HelpText().c_str(), stdout);
        return 0;
    }
    if (cl.version) {
        std::fputs(lxm::VersionText().c_str(), stdout);
        return 0;
    }
    if (cl.listBoards) return ListBoards();
    if (cl.script) return RunHeadless(argc, argv, cl);
    if (cl.collect) return RunCollect(argc, argv, cl);
    if (cl.characterise) return RunCharacteriseCommand(argc, argv, cl);
    if (cl.view) return cl.view->plot ? RunPlotCommand(argc, argv, *cl.view) : RunViewCommand(argc, argv, *cl.view);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("lxmeval"));
    QApplication::setApplicationVersion(QStringLiteral(LXMEVAL_VERSION));

    lxm::SteadyClock clock;
    lxm::QtMessages messages;
    lxm::QtFileDialogs files;

    Board board = OpenBoard(cl, clock, std::nullopt);
    std::unique_ptr<lxm::SimulatorPanel> simPanel;
    std::unique_ptr<lxm::SimulatorMenu> simMenu;
    if (board.simDriver) {
        // The panel that sets the simulated light and cable, and the menu item that brings
        // it back once closed.
        simPanel = std::make_unique<lxm::SimulatorPanel>(*board.simDriver);
        simMenu = std::make_unique<lxm::SimulatorMenu>(*simPanel);
        app.installEventFilter(simMenu.get());
    }

    // The window's board, taken alone beside any others on the bus.
    std::unique_ptr<SimulatedBus> sims;
    std::unique_ptr<lxm::OneBoardDriver> simulatedOnly;
    if (board.simDriver) {
        sims = std::make_unique<SimulatedBus>();
        sims->bus.Add(*board.simDriver);
        simulatedOnly = std::make_unique<lxm::OneBoardDriver>(sims->bus);
        board.only = simulatedOnly.get();
    }
    lxm::Session session(*board.only, messages, files, clock);
    // Each device form on a board of its own.
    auto list = [all = sims ? nullptr : board.all.get(), sims = sims.get()] {
        lxm::FormBoards::BoardList boards;
        if (!all) return lxm::FormBoards::OnBus(sims->bus);
        for (const auto& b : lxm::usb::ListBoards())
            boards.emplace_back(lxm::BoardPlace{b.bus, b.port}, QString::fromStdString(b.problem));
        return boards;
    };
    lxm::FormBoards formBoards(
        session, board.only, list,
        MakeFormBoard(cl, clock, sims ? static_cast<lxm::UsbDriver&>(sims->bus) : *board.all, sims.get()),
        sims ? QStringLiteral("simulated") : QStringLiteral("board"));
    lxm::frmStartup startup(session, QString::fromStdString(cl.StartupArguments()));
    // The simulated board carries the chip of the type the user picks, so the form finds the
    // chip it expects; a real board carries whatever is soldered on it.
    if (simPanel)
        startup.onTypeSelected = [panel = simPanel.get()](const std::string& type) {
            panel->CarryForType(type);
        };
    if (simPanel) startup.showSimulatedBoard = [panel = simPanel.get()] { panel->Reopen(); };
    formBoards.Serve(startup);
    // "Characterise..." offers the light of the form's simulated board as the reference a lux meter
    // would read (an infrared lamp it does not see).
    if (sims)
        startup.benchLight = [sims = sims.get()](lxm::Session& s) {
            const lxm::UsbDeviceInfo* info = s.usb().deviceInfoPtr;
            lxm::sim::SimDriver* d = info ? sims->bus.At(info->busNumber, info->deviceAddress) : nullptr;
            if (!d) return lxm::BenchLight{};
            const lxm::sim::LightScene& scene = d->board().scene();
            const bool visible = lxm::sim::InfoOf(scene.source).visible > 0;
            return lxm::BenchLight{visible ? std::optional(scene.ambientLux) : std::nullopt, lxm::SceneText(scene)};
        };
    startup.show();
    if (simPanel) {
        // A first guess beside the start-up window; the panel corrects it once the window
        // manager has framed that window.
        lxm::MoveBeside(*simPanel, {&startup});
        simPanel->show();
    }
    // --sensor makes the selection the user would, once start-up has finished.
    QTimer::singleShot(0, &startup, [&startup, &cl] {
        startup.Form_Load();
        if (cl.sensor) startup.SelectSensor(QString::fromStdString(*cl.sensor));
    });
    const int rc = app.exec();
    return rc;
}
