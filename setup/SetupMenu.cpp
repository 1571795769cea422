#include "SetupMenu.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <exception>

#include "core/Seams.h"
#include "setup/WriteSetupFile.h"
#include "setup/frmBoardSetup.h"
#include "core/MenuBar.h"

namespace lxm {

std::optional<QString> SaveSetup(const QWidget& form, Messages& messages, FileDialogs& files) {
    try {
        auto name = files.SaveFile(QStringLiteral("Save Board Setup"), QLatin1String(kSetupDefaultName),
                                   QLatin1String(kSetupFilter));
        if (!name || name->isEmpty()) return std::nullopt;
        if (QFileInfo(*name).suffix().isEmpty()) *name += QStringLiteral(".lxm");
        const auto error = WriteSetupFile(*name, form);
        if (!error) return name;
        const QString path = QDir::toNativeSeparators(error->path);
        if (error->kind == SetupFileError::Kind::NotWritten) {
            messages.MsgBox(QStringLiteral("The board setup could not be saved to %1: %2.\n"
                                           "Choose a folder you may write to and save again.")
                                .arg(path, error->detail));
            return std::nullopt;
        }
        messages.MsgBox(QStringLiteral("The board setup file %1 is incomplete: this window has no control "
                                       "%2.\nSave from the Applications Board Setup window instead.")
                            .arg(path, error->detail));
        return name;
    } catch (const std::exception& e) {
        messages.MsgBox(
            QStringLiteral("The board setup could not be saved: %1.").arg(QString::fromLocal8Bit(e.what())));
    }
    return std::nullopt;
}

std::optional<QString> LoadSetup(frmBoardSetup& form, Messages& messages, FileDialogs& files) {
    const auto name = files.OpenFile(QStringLiteral("Load Board Setup"), QString(), QLatin1String(kSetupOpenFilter));
    if (!name || name->isEmpty()) return std::nullopt;
    const QString path = QDir::toNativeSeparators(*name);
    QFile file(*name);
    if (!file.open(QIODevice::ReadOnly)) {
        messages.MsgBox(QStringLiteral("The board setup %1 could not be read: %2.\nChoose another file.")
                            .arg(path, file.errorString()));
        return std::nullopt;
    }
    const auto parsed = ParseSetupFile(QString::fromUtf8(file.readAll()), form.Setup());
    if (const auto* error = std::get_if<SetupParseError>(&parsed)) {
        messages.MsgBox(QStringLiteral("%1 is not a board setup file: line %2: %3.\n"
                                       "Choose a file written by \"Save Setup...\".")
                            .arg(path)
                            .arg(error->line)
                            .arg(error->reason));
        return std::nullopt;
    }
    form.Apply(std::get<BoardSetup>(parsed));
    return name;
}

SetupMenu::SetupMenu(QMenuBar& menuBar, QWidget& deviceForm, Messages& messages, FileDialogs& files)
    : QObject(&deviceForm), deviceForm_(deviceForm), messages_(messages), files_(files) {
    QMenu* menu = MenuNamed(menuBar, QStringLiteral("Setup"));
    mnuBoardSetup = menu->addAction(QStringLiteral("Applications Board Setup..."));
    mnuSaveSetup = menu->addAction(QStringLiteral("Save Setup..."));
    mnuLoadSetup = menu->addAction(QStringLiteral("Load Setup..."));
    connect(mnuBoardSetup, &QAction::triggered, this, [this] { mnuBoardSetup_Click(); });
    connect(mnuSaveSetup, &QAction::triggered, this, [this] { mnuSaveSetup_Click(); });
    connect(mnuLoadSetup, &QAction::triggered, this, [this] { mnuLoadSetup_Click(); });
}

frmBoardSetup& SetupMenu::SetupForm() {
    if (!form_) form_ = new frmBoardSetup(messages_, files_, &deviceForm_);
    return *form_;
}

void SetupMenu::mnuBoardSetup_Click() {
    frmBoardSetup& f = SetupForm();
    f.show();
    f.raise();
    f.activateWindow();
}

void SetupMenu::mnuSaveSetup_Click() {
    SaveSetup(SetupForm(), messages_, files_);
}

// The loaded settings show in the setup window, which comes up so the user sees them.
void SetupMenu::mnuLoadSetup_Click() {
    if (LoadSetup(SetupForm(), messages_, files_)) mnuBoardSetup_Click();
}

SetupMenu* AddSetupMenu(QMenuBar& menuBar, QWidget& deviceForm, Messages& messages, FileDialogs& files) {
    return new SetupMenu(menuBar, deviceForm, messages, files);
}

}  // namespace lxm
