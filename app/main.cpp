// lxmeval: evaluation program for ambient-light, infrared and proximity sensors on the USB
// evaluation board. With --simulate it runs on the built-in simulated board.
#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <cstdio>
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
    QCommandLineOption sensor(QStringLiteral("sensor"),
                              QStringLiteral("Select the sensor NAME (LXM410, LXM430, LXM450, LXM470 or "
                                             "LXM600) once start-up has finished."),
                              QStringLiteral("NAME"));
    parser.addOption(sensor);
    parser.addPositionalArgument(QStringLiteral("/d"),
                                 QStringLiteral("Keep the GPIO panel loaded after type selection."),
                                 QStringLiteral("[/d]"));
    parser.process(app);
    const QString sensorName = parser.value(sensor);
    static const QStringList kSensors{"LXM410", "LXM430", "LXM450", "LXM470", "LXM600"};
    if (parser.isSet(sensor) && !kSensors.contains(sensorName)) {
        std::fprintf(stderr, "lxmeval: unknown sensor \"%s\"; choose one of %s\n", qPrintable(sensorName),
                     qPrintable(kSensors.join(QStringLiteral(", "))));
        return 2;
    }

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
    QTimer::singleShot(0, &startup, [&startup, sensorName] {
        startup.Form_Load();
        if (!sensorName.isEmpty()) startup.SelectSensor(sensorName);
    });
    const int rc = app.exec();
    return rc;
}
