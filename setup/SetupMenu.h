#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <optional>

class QAction;
class QMenuBar;
class QWidget;

namespace lxm {

class Messages;
class FileDialogs;
class frmBoardSetup;

// Filter and default name of the save dialog.
inline constexpr const char* kSetupFilter = "All Files (*.*);;LXM200 Setup Files(*.lxm)";
inline constexpr const char* kSetupDefaultName = "LXM200.lxm";
inline constexpr const char* kSetupOpenFilter = "LXM200 Setup Files(*.lxm);;All Files (*.*)";

// The save operation: asks for the file name (a cancel does nothing) and writes the set-up
// held by `form`'s controls. Every failure ends in one message saying what happened and
// what to do. Returns the file written, also when it is short of a missing control.
// A name typed without an extension gets ".lxm".
std::optional<QString> SaveSetup(const QWidget& form, Messages& messages, FileDialogs& files);

// The load operation: asks for a setup file and shows its settings in `form`. A file that
// cannot be read, or is not a setup file, is one message naming it (and the line at fault)
// and leaves the form as it was. Returns the file loaded.
std::optional<QString> LoadSetup(frmBoardSetup& form, Messages& messages, FileDialogs& files);

// The board-setup items of a device form's menu bar ("Setup"). The setup form belongs to the
// device form: created hidden on first use, kept with its settings until the device form
// goes, and the one that "Save Setup..." writes.
class SetupMenu : public QObject {
    Q_OBJECT

public:
    SetupMenu(QMenuBar& menuBar, QWidget& deviceForm, Messages& messages, FileDialogs& files);

    void mnuBoardSetup_Click();
    void mnuSaveSetup_Click();
    void mnuLoadSetup_Click();
    frmBoardSetup& SetupForm();

    QAction* mnuBoardSetup = nullptr;
    QAction* mnuSaveSetup = nullptr;
    QAction* mnuLoadSetup = nullptr;

private:
    QWidget& deviceForm_;
    Messages& messages_;
    FileDialogs& files_;
    QPointer<frmBoardSetup> form_;
};

// What a device form calls once while building its menu bar.
SetupMenu* AddSetupMenu(QMenuBar& menuBar, QWidget& deviceForm, Messages& messages, FileDialogs& files);

}  // namespace lxm
