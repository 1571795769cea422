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

namespace lxm {

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
    void SetLogFile(const QString& path);
    // The file to log the next collection to; empty when logging is off.
    QString LogPath() const;

    QCheckBox* chkLogAll = nullptr;
    // For a narrow column: "Log every sample" on a row of its own under the others.
    void LogOnItsOwnRow();

private:
    Session& s_;
    QGridLayout* grid_ = nullptr;
    RecordCaptions captions_;
    QString logPath_;
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

// "Write to Disk" of a device form: one block of the readings taken, or a message when there
// are too few. A file that cannot be written is reported with its path and the system's
// reason; the readings stay in memory for another try.
void WriteMeasurements(Session& session, RecordFrame& frame, const MeasurementSource& source);

}  // namespace lxm
