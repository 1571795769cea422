#pragma once

#include <QDialog>
#include <memory>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace lxm {

struct SystemProbe;

// The about box: program name and version, the disclaimer, and "System Info...", which shows
// a report of the system the user can copy into a problem report.
class frmAbout2 : public QDialog {
public:
    explicit frmAbout2(QWidget* parent = nullptr);
    ~frmAbout2() override;

    void cmdSysInfo_Click();
    void cmdCopy_Click();
    // Where the report looks for the board; tests substitute their own tree.
    void SetProbe(const SystemProbe& probe);

    QLabel* lblTitle = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblDisclaimer = nullptr;
    QPushButton* cmdSysInfo = nullptr;
    QPushButton* cmdOK = nullptr;
    // The system report, created by the first "System Info...".
    QDialog* frmSysInfo = nullptr;
    QPlainTextEdit* txtReport = nullptr;
    QPushButton* cmdCopy = nullptr;

private:
    void BuildReportWindow();

    std::unique_ptr<SystemProbe> probe_;
};

}  // namespace lxm
