#pragma once

#include <QWidget>
#include <array>

#include "setup/ReadSetupFile.h"
#include "setup/WriteSetupFile.h"

class QLineEdit;
class QPushButton;
class QToolButton;

namespace lxm {

class Messages;
class FileDialogs;

// "Applications Board Setup": what a setup file records for the 32-channel applications
// board. The controls carry the object names the writer looks for.
class frmBoardSetup : public QWidget {
    Q_OBJECT

public:
    frmBoardSetup(Messages& messages, FileDialogs& files, QWidget* parent = nullptr);

    // Asks for a file name and writes this form's set-up to it.
    void cmdSave_Click();
    // Asks for a setup file and shows what it holds; a file that is not one changes nothing.
    void cmdLoad_Click();
    // The settings as the controls show them, and the controls set to settings.
    BoardSetup Setup() const;
    void Apply(const BoardSetup& setup);
    // Steps the channel's gain to the next value, after the highest back to the first.
    void tbGain_Click(int Index);

    std::array<QLineEdit*, kSetupChannels> txtIn4out{};
    std::array<QToolButton*, kSetupChannels> tbGain{};
    std::array<QToolButton*, kSetupChannels> tbOutenable{};
    QToolButton* tbPower = nullptr;
    QToolButton* tbOe = nullptr;
    QLineEdit* txtBroadcastchan = nullptr;
    QToolButton* tbBroadcast = nullptr;
    QToolButton* tbClamp = nullptr;
    QPushButton* cmdSave = nullptr;
    QPushButton* cmdLoad = nullptr;
    QPushButton* cmdClose = nullptr;

private:
    void BuildLayout();

    Messages& messages_;
    FileDialogs& files_;
};

}  // namespace lxm
