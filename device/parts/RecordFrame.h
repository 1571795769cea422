#pragma once

#include <QByteArray>
#include <QGroupBox>
#include <QString>
#include <functional>
#include <vector>

#include "acquisition/Recording.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace lxm {

class SampleLog;
class Session;

// What a recording frame says and offers in its file dialog.
struct RecordCaptions {
    QString frameTitle;
    QString dialogTitle = QStringLiteral("Select File For Recording");
    QString filter;  // common-dialog pairs, "Name|pattern|..."
    QString defaultExtension = QStringLiteral("*.txt");
    QString defaultFile;  // put in the program's folder at load
};

// A file path, "Browse", "Append" and "Write to Disk": the frame every form that records to a
// text file carries. What "Write to Disk" writes is the owner's; the frame writes it whole.
class RecordFrame : public QGroupBox {
public:
    RecordFrame(Session& session, RecordCaptions captions, QWidget* parent = nullptr);

    void Form_Load();
    void cmdBrowse_Click();
    // Writes a block to the file named in the path box, after what is there when "Append" is
    // checked. The system's reason on failure, empty on success.
    QString Write(const QByteArray& block);
    // The date and time a record is stamped with.
    QString Date() const;
    QString Time() const;

    QLineEdit* txtFilePath = nullptr;
    QPushButton* cmdBrowse = nullptr;
    QCheckBox* chkAppend = nullptr;
    QPushButton* cmdStartRec = nullptr;

    // "Log every sample": each sample of a collection goes to its own CSV file as it is taken,
    // apart from the block "Write to Disk" writes after the run. Checking it asks for the file.
    void chkLogAll_Click();
    // The file the user chose (explicitly: the first run may replace it, as the save dialog
    // asked) or that the form offers (chosen false: an existing file is never replaced).
    void SetLogFile(const QString& path, bool chosen = true);
    // The file to log the next collection to; empty when logging is off.
    QString LogPath() const;
    // The file of the run that starts now: the chosen one for the first run after choosing
    // it, then a new one beside it per run, so no run replaces an earlier one.
    QString RunLogPath();
    // While a run logs, the check box names its file and the rows written, from this log.
    void WatchLog(std::function<const SampleLog&()> log);

    QCheckBox* chkLogAll = nullptr;
    // For a narrow column: "Log every sample" on a row of its own under the others.
    void LogOnItsOwnRow();

private:
    Session& s_;
    QGridLayout* grid_ = nullptr;
    RecordCaptions captions_;
    QString logPath_;
    bool logChosen_ = false;
    bool logFresh_ = false;  // no run has used logPath_ yet
    void ShowLogState();
    std::function<const SampleLog&()> watchedLog_;
    QTimer* logTimer_ = nullptr;
    QString runLogPath_;
};

// What a device form records: its readings and the texts of its header.
struct MeasurementSource {
    std::function<int()> sampleCount;
    std::function<const std::vector<double>&()> samples;
    // Registers and interval as shown; the date and time are the frame's.
    std::function<MeasurementHeader()> header;
    QPushButton* collectButton = nullptr;  // kept from starting a run while the file is written
    QLabel* result = nullptr;              // the result line
};

// Text in a label, shortened to the room it has and whole in its tool tip.
void ShowWithin(QLabel& label, const QString& text);

// "Write to Disk" of a device form: one block of the readings taken, or a message when there
// are too few. A file that cannot be written is reported with its path and the system's
// reason; the readings stay in memory for another try.
void WriteMeasurements(Session& session, RecordFrame& frame, const MeasurementSource& source);

}  // namespace lxm
