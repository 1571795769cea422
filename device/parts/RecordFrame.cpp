#include "RecordFrame.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QTimer>

#include "acquisition/SampleLog.h"
#include "core/FileFolders.h"
#include "transport/Session.h"

namespace lxm {

namespace {
// How often the check box's count of rows is brought up to date while a run logs.
constexpr int kLogStateMs = 500;
}  // namespace

RecordFrame::RecordFrame(Session& session, RecordCaptions captions, QWidget* parent)
    : QGroupBox(captions.frameTitle, parent), s_(session), captions_(std::move(captions)) {
    auto* g = new QGridLayout(this);
    txtFilePath = new QLineEdit(this);
    txtFilePath->setMinimumWidth(120);
    cmdBrowse = new QPushButton(QStringLiteral("Browse"), this);
    cmdBrowse->setToolTip(QStringLiteral("Use this to select file where measurement data will be written."));
    chkAppend = new QCheckBox(QStringLiteral("Append"), this);
    chkAppend->setToolTip(QStringLiteral(
        "If check, data is appended to end of Measurement file, if uncheck file is overwritten "
        "with present data only."));
    cmdStartRec = new QPushButton(QStringLiteral("Write to Disk"), this);
    cmdStartRec->setToolTip(QStringLiteral("Click here to save measurement to disk file."));
    // "Browse" beside the path frees a cell under it for the sample log: the measurement
    // column has no row to spare.
    g->addWidget(txtFilePath, 0, 0, 1, 2);
    g->addWidget(cmdBrowse, 0, 2);
    g->addWidget(chkAppend, 1, 0);
    g->addWidget(cmdStartRec, 1, 1);
    connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });

    chkLogAll = new QCheckBox(QStringLiteral("Log every sample"), this);
    chkLogAll->setFixedWidth(chkLogAll->sizeHint().width());
    g->addWidget(chkLogAll, 1, 2);
    grid_ = g;
    SetLogFile(QString());
    // Turning the log on asks for its file; the last one is offered again.
    // Turned off, it no longer names the last run's file.
    connect(chkLogAll, &QCheckBox::clicked, this, [this](bool on) {
        if (on)
            chkLogAll_Click();
        else
            chkLogAll->setText(QStringLiteral("Log every sample"));
    });
}

// The user's documents folder stands for the program's folder: an installed program's folder
// is no place for the user's data.
void RecordFrame::Form_Load() {
    const QDir documents(DocumentsFolder());
    txtFilePath->setText(documents.filePath(captions_.defaultFile));
    SetLogFile(documents.filePath(QStringLiteral("samples.csv")), false);
}

void RecordFrame::cmdBrowse_Click() {
    const auto chosen =
        s_.files.SaveFile(captions_.dialogTitle, txtFilePath->text(), DialogFilter(captions_.filter));
    if (!chosen || chosen->isEmpty()) return;
    txtFilePath->setText(WithDefaultExtension(*chosen, captions_.defaultExtension));
}

void RecordFrame::chkLogAll_Click() {
    const auto chosen =
        s_.files.SaveFile(QStringLiteral("Select File For Sample Log"), logPath_,
                          DialogFilter(QStringLiteral("CSV Files (*.csv)|*.csv|All Files (*.*)|*.*")));
    if (!chosen || chosen->isEmpty()) {
        chkLogAll->setChecked(false);
        return;
    }
    SetLogFile(WithDefaultExtension(*chosen, QStringLiteral("*.csv")));
    chkLogAll->setText(QStringLiteral("Log every sample"));
}

void RecordFrame::SetLogFile(const QString& path, bool chosen) {
    logPath_ = path;
    logChosen_ = chosen;
    logFresh_ = true;
    chkLogAll->setToolTip(
        path.isEmpty() ? QStringLiteral("If checked, every sample of the next collection is written to a CSV "
                                        "file as it is taken; you choose the file when you check this.")
                       : QStringLiteral("Every sample of a collection is written to ") + path +
                             QStringLiteral(" as it is taken. Uncheck and check again for another file."));
}

QString RecordFrame::LogPath() const {
    return chkLogAll->isChecked() ? logPath_ : QString();
}

QString RecordFrame::RunLogPath() {
    if (!chkLogAll->isChecked()) return QString();
    const bool asChosen = logFresh_ && (logChosen_ || !QFileInfo::exists(logPath_));
    logFresh_ = false;
    runLogPath_ = asChosen ? logPath_ : NextFreeLogPath(logPath_);
    if (logTimer_) logTimer_->start();
    return runLogPath_;
}

void RecordFrame::WatchLog(std::function<const SampleLog&()> log) {
    watchedLog_ = std::move(log);
    if (!logTimer_) {
        logTimer_ = new QTimer(this);
        logTimer_->setInterval(kLogStateMs);
        connect(logTimer_, &QTimer::timeout, this, [this] { ShowLogState(); });
    }
}

// The check box keeps the width of its own caption: the file's name and the rows are fitted
// into it, whole in the tool tip, so a long name never widens the form.
void RecordFrame::ShowLogState() {
    const SampleLog& log = watchedLog_();
    const bool open = log.IsOpen();
    if (!open) logTimer_->stop();
    const QString name = QFileInfo(runLogPath_).fileName();
    const QString rows = QString::number(log.Rows()) + QStringLiteral(" rows");
    const QString text = (open ? QStringLiteral("Logging: ") : QStringLiteral("Logged: ")) + name +
                         QStringLiteral(", ") + rows;
    const int room = chkLogAll->width() - chkLogAll->iconSize().width() - 12;
    const QString shown =
        chkLogAll->fontMetrics().elidedText(name, Qt::ElideMiddle,
                                            room - chkLogAll->fontMetrics().horizontalAdvance(QStringLiteral(", ") + rows)) +
        QStringLiteral(", ") + rows;
    chkLogAll->setText(shown);
    chkLogAll->setToolTip(text + QStringLiteral(" (") + runLogPath_ +
                          QStringLiteral("). Every Start logs to a new file; uncheck and check again for "
                                         "another name."));
}

QString RecordFrame::Write(const QByteArray& block) {
    return WriteFileWhole(txtFilePath->text(), block, chkAppend->isChecked());
}

QString RecordFrame::Date() const {
    return RecordDate(s_.clock.Now().date());
}

QString RecordFrame::Time() const {
    return RecordTime(s_.clock.Now().time());
}

// A line written into a label of the form: shortened to the room the label has, whole in its
// tool tip, so that a long line never widens the form.
void ShowWithin(QLabel& label, const QString& text) {
    label.setToolTip(text);
    label.setText(label.fontMetrics().elidedText(text, Qt::ElideRight, label.width()));
}

void WriteMeasurements(Session& s, RecordFrame& frame, const MeasurementSource& source) {
    const int count = source.sampleCount();
    if (count < kRecordMinSamples) {
        s.messages.MsgBox(QStringLiteral("Save More Measurements"));
        return;
    }
    // A click during a run must not leave "Start" enabled behind it.
    const bool collectWasEnabled = source.collectButton && source.collectButton->isEnabled();
    if (source.collectButton) source.collectButton->setEnabled(false);

    MeasurementHeader h = source.header();
    h.date = frame.Date();
    h.time = frame.Time();
    const QString path = frame.txtFilePath->text();
    const QString reason = frame.Write(MeasurementBlock(h, source.samples(), count));
    if (reason.isEmpty()) {
        if (source.result) ShowWithin(*source.result, RecordedCaption(count, h.date, h.time));
    } else {
        s.messages.MsgBox(FileErrorMessage(path, reason, QStringLiteral("The measurements are kept.")));
    }
    if (source.collectButton) source.collectButton->setEnabled(collectWasEnabled);
}

void RecordFrame::LogOnItsOwnRow() {
    grid_->removeWidget(chkLogAll);
    grid_->addWidget(chkLogAll, 2, 0, 1, 3);
}

}  // namespace lxm
