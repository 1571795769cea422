#include <benchmark/benchmark.h>
#include <QApplication>
#include <QTemporaryFile>

// Drawing needs a QApplication; without a display it runs on the offscreen platform, on a
// screen of 1280x800 so that a device form is painted whole, as on the smallest screen it is
// made for (the platform's own screen is smaller than a form).
int main(int argc, char** argv) {
    QTemporaryFile screens;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && screens.open()) {
        screens.write(R"({"screens": [{"name": "bench", "x": 0, "y": 0, "width": 1280, "height": 800,)"
                      R"( "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
        screens.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toLocal8Bit());
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
