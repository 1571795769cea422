#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

#include "core/ActiveForm.h"
#include "scripts/ScriptRunner.h"
#include "scripts/ScriptSyntax.h"

class QAction;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenuBar;
class QPushButton;
class QTableWidget;

namespace lxm {

class Session;
class Shape;

// "Setup - Script IC Send/Receive": loads a script file into the grid, runs it against the
// sensor, exports the grid as CSV and writes it back as a script. The parsing and the per-row
// work live in ScriptSyntax and ScriptRunner; this form shows them.
//   frmScriptOps.cpp      layout, loading
//   frmScriptOps_run.cpp  running, the pause box, export and writing scripts
class frmScriptOps : public QWidget, public LampsOnlyForm, private scripts::RunObserver {
public:
    explicit frmScriptOps(Session& session, QWidget* parent = nullptr);
    ~frmScriptOps() override;

    void Form_Load();
    void mnuScript_Read_Click();
    void mnuScript_Write_Click();
    void cmdReload2_Click();
    void cmdExecAll_Click();
    void cmdRunContinuous_Click();
    void cmdAbort_Click();
    void cmdBrowse_Click();
    void cmdStartRec_Click();

    // Loads a script file into the grid; false (after saying why) when it cannot be loaded.
    bool LoadFile(const QString& path);
    const std::vector<scripts::ScriptRow>& Rows() const { return rows_; }
    bool Running() const { return runner_.Running(); }

    QLabel* lblTitle = nullptr;
    QTableWidget* vbalGrid1 = nullptr;
    QLineEdit* txtI2CAdr = nullptr;
    QLabel* Label5 = nullptr;
    QGroupBox* frmScriptExec = nullptr;
    QCheckBox* chkAOF = nullptr;
    QLineEdit* txtLoopCount = nullptr;
    QLabel* Label6 = nullptr;
    QPushButton* cmdExecAll = nullptr;
    QPushButton* cmdRunContinuous = nullptr;
    QPushButton* cmdAbort = nullptr;
    QPushButton* cmdReload2 = nullptr;
    QLineEdit* txtScriptLine1 = nullptr;
    QLineEdit* txttotReads = nullptr;
    QLineEdit* txtRdPass = nullptr;
    QLineEdit* txtRdFails = nullptr;
    QLabel* Label2 = nullptr;
    QLabel* Label3 = nullptr;
    QLineEdit* txtRunning = nullptr;
    QLabel* Label4 = nullptr;
    QLineEdit* txtTotLines = nullptr;
    QGroupBox* frmDataRecord = nullptr;
    QLineEdit* txtFilePath = nullptr;
    QPushButton* cmdBrowse = nullptr;
    QCheckBox* chkAppend = nullptr;
    QPushButton* cmdStartRec = nullptr;
    QLabel* Label18 = nullptr;
    QMenuBar* menuBar = nullptr;
    QAction* mnuScript_Read = nullptr;
    QAction* mnuScript_Write = nullptr;
    Shape* Shp_USB_Info_ = nullptr;

protected:
    void changeEvent(QEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

private:
    void BuildLayout();
    void ShowRows();
    void ShowRow(int index);
    void ShowCounts();
    void RunScript(int loops);
    void SetRunning(bool running);
    bool WriteWhole(const QString& path, const QByteArray& bytes);

    // RunObserver
    void RowStarting(const scripts::ScriptRow& row) override;
    void RowDone(const scripts::ScriptRow& row, const scripts::RowResult& result) override;
    scripts::PauseAnswer KeyPause(const scripts::ScriptRow& row, const QString& text,
                                  const std::function<bool()>& aborted) override;

    Session& s_;
    scripts::ScriptRunner runner_;
    std::vector<scripts::ScriptRow> rows_;
    QString path_;
};

}  // namespace lxm
