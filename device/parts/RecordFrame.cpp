#include "RecordFrame.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "transport/Session.h"

namespace lxm {

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
    g->addWidget(chkLogAll, 1, 2);
    grid_ = g;
    SetLogFile(QString());
    // Turning the log on asks for its file; the last one is offered again.
    connect(chkLogAll, &QCheckBox::clicked, this, [this](bool on) {
        if (on) chkLogAll_Click();
    });
}

void RecordFrame::Form_Load() {
    txtFilePath->setText(QCoreApplication::applicationDirPath() + QStringLiteral("/") +
                         captions_.defaultFile);
    SetLogFile(QCoreApplication::applicationDirPath() + QStringLiteral("/samples.csv"));
}

void RecordFrame::cmdBrowse_Click() {
    const auto chosen = s_.files.SaveFile(captions_.dialogTitle, QString(), DialogFilter(captions_.filter));
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
}

void RecordFrame::SetLogFile(const QString& path) {
    logPath_ = path;
    chkLogAll->setToolTip(
        path.isEmpty() ? QStringLiteral("If checked, every sample of the next collection is written to a CSV "
                                        "file as it is taken; you choose the file when you check this.")
                       : QStringLiteral("Every sample of a collection is written to ") + path +
                             QStringLiteral(" as it is taken. Uncheck and check again for another file."));
}

QString RecordFrame::LogPath() const {
    return chkLogAll->isChecked() ? logPath_ : QString();
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
        if (source.result) source.result->setText(RecordedCaption(count, h.date, h.time));
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
