// The about box and its system report.
#include <gtest/gtest.h>
#include <unistd.h>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "app/SystemReport.h"
#include "app/frmAbout2.h"
#include "app/frmStartup.h"
#include "support/DeviceFixture.h"
#include "support/Files.h"

namespace lxm {
namespace {

void Put(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(test::WriteFile(path, text));
}

// A USB bus as sysfs shows it, with device nodes and udev rule folders beside it.
struct FakeSystem {
    QTemporaryDir root;
    SystemProbe probe;

    FakeSystem() {
        probe.usbDevices = root.filePath("sys");
        probe.devRoot = root.filePath("dev");
        probe.ruleDirs = {root.filePath("etc-rules"), root.filePath("lib-rules")};
        QDir().mkpath(probe.usbDevices);
        // Something else on the bus, and an interface entry without ids.
        Device("1-1", "1d6b", "0002", 1, 1);
        QDir().mkpath(probe.usbDevices + "/1-1:1.0");
    }
    // A device's sysfs entry (ids written with the newline the kernel puts there).
    void Device(const char* name, const char* vid, const char* pid, int bus, int dev, bool node = true) {
        const QString d = probe.usbDevices + "/" + name;
        Put(d + "/idVendor", QByteArray(vid) + "\n");
        Put(d + "/idProduct", QByteArray(pid) + "\n");
        Put(d + "/busnum", QByteArray::number(bus) + "\n");
        Put(d + "/devnum", QByteArray::number(dev) + "\n");
        if (node) Put(QStringLiteral("%1/%2/%3").arg(probe.devRoot, Pad(bus), Pad(dev)), {});
    }
    static QString Pad(int n) { return QStringLiteral("%1").arg(n, 3, 10, QLatin1Char('0')); }
    QString Report() const { return FormatSystemReport(GatherSystemFacts(probe)); }
};

TEST(SystemReport, NamesProgramSystemLibrariesAndTheBoardsState) {
    FakeSystem sys;
    QString report = sys.Report();
    for (const char* field :
         {"Program: lxmeval " LXMEVAL_VERSION "\n", "Build: ", "Operating system: ", "Kernel: ", "User: "})
        EXPECT_TRUE(report.contains(field)) << field << "\n" << report.toStdString();
    EXPECT_TRUE(report.contains(QStringLiteral("Qt: %1\n").arg(qVersion()))) << report.toStdString();
    EXPECT_TRUE(report.contains(QRegularExpression("\nlibusb: 1\\.\\d+\\.\\d+"))) << report.toStdString();
    EXPECT_TRUE(report.contains("Evaluation board 5e3d:1c07: not connected\n")) << report.toStdString();
    EXPECT_TRUE(report.contains("udev rule: not installed\n"));
    // Every line is "Field: value", nothing left empty.
    for (const QString& line : report.trimmed().split('\n'))
        EXPECT_TRUE(QRegularExpression("^[A-Za-z][^:]*(:[0-9a-f]+)?: \\S").match(line).hasMatch())
            << line.toStdString();

    // The rule in either folder is found, the one that takes precedence first.
    Put(sys.probe.ruleDirs[1] + "/60-lxmeval.rules", "x");
    EXPECT_TRUE(sys.Report().contains("udev rule: " + sys.probe.ruleDirs[1] + "/60-lxmeval.rules\n"));
    Put(sys.probe.ruleDirs[0] + "/60-lxmeval.rules", "x");
    EXPECT_TRUE(sys.Report().contains("udev rule: " + sys.probe.ruleDirs[0] + "/60-lxmeval.rules\n"));
}

TEST(SystemReport, ABoardIsFoundByItsIdsAndItsNodeCheckedForThisUser) {
    FakeSystem sys;
    sys.Device("3-2", "5e3d", "1c07", 3, 17);
    // Same vendor, another product: not ours.
    sys.Device("3-3", "5e3d", "1c08", 3, 18);
    SystemFacts facts = GatherSystemFacts(sys.probe);
    ASSERT_EQ(facts.boards.size(), 1u);
    EXPECT_EQ(facts.boards[0].node, sys.probe.devRoot + "/003/017");
    if (::geteuid() != 0) {
        // Without the rule's access the node is there but closed to the user.
        QFile::setPermissions(facts.boards[0].node, QFile::ReadOwner);
        EXPECT_FALSE(GatherSystemFacts(sys.probe).boards[0].mayOpen);
        QFile::setPermissions(facts.boards[0].node, QFile::ReadOwner | QFile::WriteOwner);
    }
    EXPECT_TRUE(GatherSystemFacts(sys.probe).boards[0].mayOpen);
    EXPECT_TRUE(sys.Report().contains("5e3d:1c07: connected at " + sys.probe.devRoot +
                                      "/003/017, this user may open it\n"));

    // A second board whose node cannot be opened (gone, or not this user's) says what to do.
    sys.Device("1-4", "5e3d", "1c07", 1, 4, /*node=*/false);
    const QString report = sys.Report();
    EXPECT_TRUE(
        report.contains(sys.probe.devRoot + "/001/004, this user may NOT open it (install the udev rule"))
        << report.toStdString();
    EXPECT_EQ(report.count("Evaluation board 5e3d:1c07"), 2);
}

TEST(AboutBox, OpensFromTheStartupWindowWithNameVersionAndDisclaimer) {
    test::BoardFixture f;
    frmStartup startup(f.session, {});
    startup.onExit = [] {};
    startup.mnuAbout->trigger();
    frmAbout2* about = startup.AboutForm();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->isVisible());
    EXPECT_EQ(about->windowTitle(), "About");
    EXPECT_EQ(about->lblTitle->text(), "Velmarin ALS / Proximity Evaluation Software");
    EXPECT_EQ(about->lblVersion->text(), "lxmeval version " LXMEVAL_VERSION);
    EXPECT_TRUE(about->lblDisclaimer->text().contains("without warranty"))
        << about->lblDisclaimer->text().toStdString();
    EXPECT_EQ(about->cmdSysInfo->text(), "System Info...");
    EXPECT_TRUE(f.messages.texts.isEmpty());

    about->cmdOK->click();
    EXPECT_FALSE(about->isVisible());
    startup.mnuAbout->trigger();
    EXPECT_EQ(startup.AboutForm(), about);
    EXPECT_TRUE(about->isVisible());
}

TEST(AboutBox, SystemInfoShowsACopyableReportGatheredAfresh) {
    FakeSystem sys;
    frmAbout2 about;
    about.SetProbe(sys.probe);
    about.show();
    about.cmdSysInfo->click();
    ASSERT_NE(about.frmSysInfo, nullptr);
    EXPECT_TRUE(about.frmSysInfo->isVisible());
    EXPECT_TRUE(about.txtReport->isReadOnly());
    EXPECT_TRUE(about.txtReport->toPlainText().contains("5e3d:1c07: not connected"));

    // Plugged in while the box is open: the next "System Info..." sees it.
    sys.Device("2-1", "5e3d", "1c07", 2, 9);
    about.cmdSysInfo->click();
    const QString report = about.txtReport->toPlainText();
    EXPECT_TRUE(report.contains("connected at " + sys.probe.devRoot + "/002/009")) << report.toStdString();

    QApplication::clipboard()->clear();
    about.cmdCopy->click();
    EXPECT_EQ(QApplication::clipboard()->text(), report);
}

}  // namespace
}  // namespace lxm
