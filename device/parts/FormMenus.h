#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <vector>

class QAction;
class QMenu;
class QMenuBar;

namespace lxm {

class RecordFrame;
class Session;
class SetupMenu;
class StripChart;

// The local documents Help opens.
enum class HelpDoc { UserGuide, ScriptFormat, Examples };

// Where the documents are looked for, first match wins: the package's folder, then the source
// tree the program was built from (a program run from its build tree).
QStringList DocRoots();
// The document (a file, or the examples folder) under the first root that holds it; empty
// when none does. A package holds README.md, scripts.md and examples/; a source tree README.md,
// docs/scripts.md and examples/.
QString FindDoc(HelpDoc doc, const QStringList& roots);

// What the application above the device forms lends their menus; an empty one leaves its item
// disabled (About, System Info) or out (the simulated board's window).
struct AppLinks {
    std::function<void()> about;
    std::function<void()> systemInfo;
    std::function<void()> simulatedBoard;
};

// One File item of a form: its caption, what it does (the form's own handler) and a tool tip;
// an empty caption is a separator.
struct FormMenuItem {
    QString caption;
    std::function<void()> run;
    QString tip;
};

// What differs between the forms' File and View menus.
struct FormMenuItems {
    std::vector<FormMenuItem> file;
    std::function<bool()> compactView;  // whether the compact view is shown
    std::function<void()> toggleView;   // the form's view toggle
};

// What a device form saves and opens: its measurement record ("Browse" and "Write to Disk" of
// the record frame, the latter the form's own), what else it saves, the chart's picture and the
// board setup.
struct DeviceFiles {
    RecordFrame* record = nullptr;
    std::function<void()> writeToDisk;
    std::vector<FormMenuItem> more;
    StripChart* chart = nullptr;
    SetupMenu* setup = nullptr;
};
std::vector<FormMenuItem> DeviceFileItems(const DeviceFiles& files);

// "Help": the user guide, the script format and the example scripts, opened with the desktop's
// viewer, then About and the system report, which the application lends (an item without its
// link is not shown).
class HelpMenu : public QObject {
public:
    HelpMenu(Session& session, QMenuBar& bar);

    void SetAppLinks(std::function<void()> about, std::function<void()> systemInfo);
    // Opens a document; a missing one is one message saying where it was looked for.
    void OpenDoc(HelpDoc doc);

    // Opens a local file or folder with the desktop's viewer; tests record instead.
    std::function<bool(const QUrl&)> openUrl;
    QStringList docRoots;

    QMenu* mnuHelp = nullptr;
    QAction *mnuUserGuide = nullptr, *mnuScriptFormat = nullptr, *mnuExamples = nullptr;
    QAction *mnuAbout = nullptr, *mnuSystemInfo = nullptr;

private:
    Session& s_;
    std::function<void()> about_, systemInfo_;
};

// File, View and Help of a device form's menu bar, built from the form's data. File runs the
// form's own handlers; View switches between the compact and the full view with the form's
// toggle and brings back the simulated board's window.
class FormMenus : public QObject {
public:
    FormMenus(Session& session, QMenuBar& bar, FormMenuItems items);

    void SetAppLinks(AppLinks links);
    void mnuCompactView_Click();
    void mnuFullView_Click();

    QMenu *mnuFile = nullptr, *mnuView = nullptr;
    QAction *mnuCompactView = nullptr, *mnuFullView = nullptr, *mnuSimulatedBoard = nullptr;
    HelpMenu* help = nullptr;

private:
    void ShowViewState();

    Session& s_;
    FormMenuItems items_;
    AppLinks links_;
};

}  // namespace lxm
