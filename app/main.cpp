// lxmeval: evaluation program for ambient-light, infrared and proximity sensors on the USB
// evaluation board. With --simulate it runs on the built-in simulated board.
#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <memory>

#include "app/SimulatorPanel.h"
#include "app/frmStartup.h"
#include "core/Seams.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/libusb/LibusbDriver.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("lxmeval"));
    QApplication::setApplicationVersion(QStringLiteral(LXMEVAL_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Velmarin ALS / Proximity Evaluation Software"));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption simulate(QStringLiteral("simulate"),
                                QStringLiteral("Run on the simulated evaluation board."));
    parser.addOption(simulate);
    parser.addPositionalArgument(QStringLiteral("/d"),
                                 QStringLiteral("Keep the GPIO panel loaded after type selection."),
                                 QStringLiteral("[/d]"));
    parser.process(app);

    lxm::SteadyClock clock;
    lxm::QtMessages messages;
    lxm::QtFileDialogs files;

    std::unique_ptr<lxm::sim::SimBoard> board;
    std::unique_ptr<lxm::UsbDriver> driver;
    std::unique_ptr<lxm::SimulatorPanel> simPanel;
    std::unique_ptr<lxm::SimulatorMenu> simMenu;
    if (parser.isSet(simulate)) {
        board = std::make_unique<lxm::sim::SimBoard>(clock);
        // Nobody reads the packet log here, and a day's collection would fill memory with it.
        board->controller().SetWireLogCapacity(0);
        // A full-speed USB frame per transfer, as a real board has.
        auto sim = std::make_unique<lxm::sim::SimDriver>(*board);
        sim->SetLatencyMicros(1000);
        // The panel that sets the simulated light and cable, and the menu item that brings
        // it back once closed.
        simPanel = std::make_unique<lxm::SimulatorPanel>(*sim);
        simMenu = std::make_unique<lxm::SimulatorMenu>(*simPanel);
        app.installEventFilter(simMenu.get());
        driver = std::move(sim);
    } else {
        driver = std::make_unique<lxm::usb::LibusbDriver>();
    }

    lxm::Session session(*driver, messages, files, clock);
    lxm::frmStartup startup(session, parser.positionalArguments().join(QLatin1Char(' ')));
    // The simulated board carries the chip of the type the user picks, so the form finds the
    // chip it expects; a real board carries whatever is soldered on it.
    if (simPanel)
        startup.onTypeSelected = [panel = simPanel.get()](const std::string& type) {
            panel->CarryForType(type);
        };
    startup.show();
    if (simPanel) {
        simPanel->move(startup.frameGeometry().topRight() + QPoint(16, 0));
        simPanel->show();
    }
    QTimer::singleShot(0, &startup, [&startup] { startup.Form_Load(); });
    const int rc = app.exec();
    return rc;
}
