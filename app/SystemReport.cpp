#include "SystemReport.h"

#include <libusb.h>
#include <pwd.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QtGlobal>

namespace lxm {

namespace {

QString ReadLine(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QString::fromLatin1(f.readLine()).trimmed();
}

std::vector<BoardFact> FindBoards(const SystemProbe& probe) {
    std::vector<BoardFact> boards;
    const QDir devices(probe.usbDevices);
    const QStringList ids = QString::fromLatin1(kBoardId).split(QLatin1Char(':'));
    for (const QString& entry : devices.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString dir = devices.filePath(entry);
        if (ReadLine(dir + QStringLiteral("/idVendor")) != ids[0] ||
            ReadLine(dir + QStringLiteral("/idProduct")) != ids[1])
            continue;
        const int bus = ReadLine(dir + QStringLiteral("/busnum")).toInt();
        const int dev = ReadLine(dir + QStringLiteral("/devnum")).toInt();
        BoardFact b;
        b.node = QStringLiteral("%1/%2/%3")
                     .arg(probe.devRoot)
                     .arg(bus, 3, 10, QLatin1Char('0'))
                     .arg(dev, 3, 10, QLatin1Char('0'));
        // The kernel's answer for this user, access lists of the "uaccess" tag included.
        b.mayOpen = ::access(QFile::encodeName(b.node).constData(), R_OK | W_OK) == 0;
        boards.push_back(b);
    }
    return boards;
}

QString LibusbVersion() {
    const libusb_version* v = libusb_get_version();
    return QStringLiteral("%1.%2.%3.%4%5")
        .arg(v->major)
        .arg(v->minor)
        .arg(v->micro)
        .arg(v->nano)
        .arg(QString::fromLatin1(v->rc));
}

}  // namespace

SystemFacts GatherSystemFacts(const SystemProbe& probe) {
    SystemFacts f;
    f.program = QStringLiteral("%1 %2").arg(QStringLiteral(LXMEVAL_NAME), QStringLiteral(LXMEVAL_VERSION));
    f.build = QStringLiteral("%1, %2, built with Qt %3")
                  .arg(QStringLiteral(LXMEVAL_BUILD_TYPE), QStringLiteral(LXMEVAL_COMPILER),
                       QStringLiteral(QT_VERSION_STR));
    f.os = QSysInfo::prettyProductName();
    f.kernel = QSysInfo::kernelType() + QLatin1Char(' ') + QSysInfo::kernelVersion();
    f.architecture = QSysInfo::currentCpuArchitecture();
    f.qt = QString::fromLatin1(qVersion());
    f.libusb = LibusbVersion();
    const passwd* pw = ::getpwuid(::getuid());
    f.user = QStringLiteral("%1 (uid %2)")
                 .arg(pw ? QString::fromLocal8Bit(pw->pw_name) : QStringLiteral("?"))
                 .arg(::getuid());
    f.boards = FindBoards(probe);
    for (const QString& dir : probe.ruleDirs) {
        const QString rule = dir + QStringLiteral("/60-lxmeval.rules");
        if (QFile::exists(rule)) {
            f.udevRule = rule;
            break;
        }
    }
    return f;
}

QString FormatSystemReport(const SystemFacts& f) {
    QStringList lines{
        QStringLiteral("Program: %1").arg(f.program),
        QStringLiteral("Build: %1").arg(f.build),
        QStringLiteral("Operating system: %1").arg(f.os),
        QStringLiteral("Kernel: %1 (%2)").arg(f.kernel, f.architecture),
        QStringLiteral("Qt: %1").arg(f.qt),
        QStringLiteral("libusb: %1").arg(f.libusb),
        QStringLiteral("User: %1").arg(f.user),
    };
    const QString board = QStringLiteral("Evaluation board %1: ").arg(QLatin1String(kBoardId));
    if (f.boards.empty()) lines << board + QStringLiteral("not connected");
    for (const BoardFact& b : f.boards)
        lines << board + (b.mayOpen
                              ? QStringLiteral("connected at %1, this user may open it").arg(b.node)
                              : QStringLiteral("connected at %1, this user may NOT open it (install the udev "
                                               "rule, then unplug and replug the board)")
                                    .arg(b.node));
    lines << QStringLiteral("udev rule: %1")
                 .arg(f.udevRule.isEmpty() ? QStringLiteral("not installed") : f.udevRule);
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

}  // namespace lxm
