// lxmeval: evaluation program for ambient-light, infrared and proximity sensors on the USB
// evaluation board. With --simulate it runs on the built-in simulated board.
#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <memory>

#include "app/SimulatorPanel.h"
#include "app/WindowPlacement.h"
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
    startup.show();
    if (simPanel) {
        // A first guess beside the start-up window; the panel corrects it once the window
        // manager has framed that window.
        lxm::MoveBeside(*simPanel, {&startup});
        simPanel->show();
    }
    QTimer::singleShot(0, &startup, [&startup] { startup.Form_Load(); });
    const int rc = app.exec();
    return rc;
}
