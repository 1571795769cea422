#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace lxm {

// Where the report looks; tests point it at a tree of their own.
struct SystemProbe {
    QString usbDevices = QStringLiteral("/sys/bus/usb/devices");
    QString devRoot = QStringLiteral("/dev/bus/usb");
    QStringList ruleDirs{QStringLiteral("/etc/udev/rules.d"), QStringLiteral("/usr/lib/udev/rules.d"),
                         QStringLiteral("/lib/udev/rules.d")};
};

// One evaluation board on the bus.
struct BoardFact {
    QString node;  // device node, e.g. /dev/bus/usb/001/004
    bool mayOpen = false;
};

// What a user reporting a problem is asked for first.
struct SystemFacts {
    QString program;  // name and version
    QString build;    // build type, compiler, Qt the program was built with
    QString os;
    QString kernel;
    QString architecture;
    QString qt;  // Qt in use
    QString libusb;
    QString user;
    std::vector<BoardFact> boards;
    QString udevRule;  // the installed rule file, empty when there is none
};

inline constexpr const char* kBoardId = "5e3d:1c07";

SystemFacts GatherSystemFacts(const SystemProbe& probe = {});
// The report as the user copies it: one "Field: value" line each.
QString FormatSystemReport(const SystemFacts& facts);

}  // namespace lxm
