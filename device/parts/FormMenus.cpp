#include "device/parts/FormMenus.h"

#include <QAction>
#include <QActionGroup>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

#include "core/MenuBar.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/StripChart.h"
#include "setup/SetupMenu.h"
#include "transport/Session.h"

namespace lxm {

QStringList DocRoots() {
    QStringList roots{QStringLiteral("/usr/share/doc/lxmeval")};
#ifdef LXM_SOURCE_DIR
    roots << QStringLiteral(LXM_SOURCE_DIR);
#endif
    return roots;
}

QString FindDoc(HelpDoc doc, const QStringList& roots) {
    QStringList names;
    switch (doc) {
        case HelpDoc::UserGuide:
            names = {QStringLiteral("README.md")};
            break;
        case HelpDoc::ScriptFormat:
            names = {QStringLiteral("scripts.md"), QStringLiteral("docs/scripts.md")};
            break;
        case HelpDoc::Examples:
            names = {QStringLiteral("examples")};
            break;
    }
    for (const QString& root : roots)
        for (const QString& name : names) {
            const QFileInfo f(QDir(root).filePath(name));
            if (f.exists() && f.isDir() == (doc == HelpDoc::Examples)) return f.absoluteFilePath();
        }
    return {};
}

std::vector<FormMenuItem> DeviceFileItems(const DeviceFiles& f) {
    RecordFrame* record = f.record;
    StripChart* chart = f.chart;
    SetupMenu* setup = f.setup;
    std::vector<FormMenuItem> items{
        {QStringLiteral("Record File..."), [record] { record->cmdBrowse_Click(); },
         QStringLiteral("Chooses the file \"Write to Disk\" writes the readings of a run to")},
        {QStringLiteral("Write to Disk"), f.writeToDisk,
         QStringLiteral("Writes the readings of the last run (at least 20) to the record file")},
    };
    items.insert(items.end(), f.more.begin(), f.more.end());
    items.push_back({});
    items.push_back({QStringLiteral("Save Picture..."), [chart] { chart->SavePicture(); },
                     QStringLiteral("Saves the graph with its scale as a PNG picture file")});
    items.push_back({});
    items.push_back({QStringLiteral("Load Setup..."), [setup] { setup->mnuLoadSetup_Click(); },
                     QStringLiteral("Reads an applications board setup file (*.lxm)")});
    items.push_back({QStringLiteral("Save Setup..."), [setup] { setup->mnuSaveSetup_Click(); },
                     QStringLiteral("Writes the applications board setup to a *.lxm file")});
    return items;
}

HelpMenu::HelpMenu(Session& session, QMenuBar& bar)
    : QObject(&bar), openUrl(&QDesktopServices::openUrl), docRoots(DocRoots()), s_(session) {
    mnuHelp = MenuNamed(bar, QStringLiteral("Help"));
    const struct {
        QAction** action;
        const char* caption;
        HelpDoc doc;
    } docs[] = {{&mnuUserGuide, "User Guide", HelpDoc::UserGuide},
                {&mnuScriptFormat, "Script File Format", HelpDoc::ScriptFormat},
                {&mnuExamples, "Example Scripts", HelpDoc::Examples}};
    for (const auto& d : docs) {
        *d.action = mnuHelp->addAction(QLatin1String(d.caption));
        connect(*d.action, &QAction::triggered, this, [this, doc = d.doc] { OpenDoc(doc); });
    }
    mnuHelp->addSeparator();
    mnuAbout = mnuHelp->addAction(QStringLiteral("About"));
    mnuSystemInfo = mnuHelp->addAction(QStringLiteral("System Info..."));
    connect(mnuAbout, &QAction::triggered, this, [this] {
        if (about_) about_();
    });
    connect(mnuSystemInfo, &QAction::triggered, this, [this] {
        if (systemInfo_) systemInfo_();
    });
    SetAppLinks({}, {});
}

void HelpMenu::SetAppLinks(std::function<void()> about, std::function<void()> systemInfo) {
    about_ = std::move(about);
    systemInfo_ = std::move(systemInfo);
    mnuAbout->setVisible(bool(about_));
    mnuSystemInfo->setVisible(bool(systemInfo_));
}

FormMenus::FormMenus(Session& session, QMenuBar& bar, FormMenuItems items)
    : QObject(&bar), s_(session), items_(std::move(items)) {
    mnuFile = MenuNamed(bar, QStringLiteral("File"));
    mnuFile->setToolTipsVisible(true);
    for (const FormMenuItem& item : items_.file) {
        if (item.caption.isEmpty()) {
            mnuFile->addSeparator();
            continue;
        }
        QAction* a = mnuFile->addAction(item.caption);
        a->setToolTip(item.tip);
        connect(a, &QAction::triggered, this, AsUserAction(s_, item.run));
    }

    mnuView = MenuNamed(bar, QStringLiteral("View"));
    auto* views = new QActionGroup(this);
    mnuCompactView = mnuView->addAction(QStringLiteral("Compact View"));
    mnuFullView = mnuView->addAction(QStringLiteral("Full View"));
    for (QAction* a : {mnuCompactView, mnuFullView}) {
        a->setCheckable(true);
        views->addAction(a);
    }
    mnuFullView->setToolTip(QStringLiteral("The same as a double-click on \"USB COMM\""));
    mnuSimulatedBoard = mnuView->addAction(QStringLiteral("Simulated Board"));
    mnuSimulatedBoard->setVisible(false);
    connect(mnuView, &QMenu::aboutToShow, this, [this] { ShowViewState(); });
    connect(mnuCompactView, &QAction::triggered, this, [this] { mnuCompactView_Click(); });
    connect(mnuFullView, &QAction::triggered, this, [this] { mnuFullView_Click(); });
    connect(mnuSimulatedBoard, &QAction::triggered, this, [this] {
        if (links_.simulatedBoard) links_.simulatedBoard();
    });
    help = new HelpMenu(session, bar);
    ShowViewState();
}

void FormMenus::SetAppLinks(AppLinks links) {
    links_ = std::move(links);
    help->SetAppLinks(links_.about, links_.systemInfo);
    mnuSimulatedBoard->setVisible(bool(links_.simulatedBoard));
}

void FormMenus::ShowViewState() {
    const bool compact = items_.compactView && items_.compactView();
    mnuCompactView->setChecked(compact);
    mnuFullView->setChecked(!compact);
}

// The toggle runs only when it leads to the view asked for; asking for the view shown
// changes nothing.
void FormMenus::mnuCompactView_Click() {
    if (items_.compactView && !items_.compactView() && items_.toggleView) items_.toggleView();
    ShowViewState();
}

void FormMenus::mnuFullView_Click() {
    if (items_.compactView && items_.compactView() && items_.toggleView) items_.toggleView();
    ShowViewState();
}

void HelpMenu::OpenDoc(HelpDoc doc) {
    const QString path = FindDoc(doc, docRoots);
    if (path.isEmpty()) {
        s_.messages.MsgBox(QStringLiteral("The document was not found in %1.\nReinstall the lxmeval package, "
                                          "or read it in the source tree's README.md, docs and examples.")
                               .arg(docRoots.join(QStringLiteral(" or "))));
        return;
    }
    if (!openUrl(QUrl::fromLocalFile(path)))
        s_.messages.MsgBox(
            QStringLiteral("No program to show %1 was found.\nOpen the file with a text editor.")
                .arg(QDir::toNativeSeparators(path)));
}

}  // namespace lxm
