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
    txtFilePath->setMinimumWidth(180);
    cmdBrowse = new QPushButton(QStringLiteral("Browse"), this);
    cmdBrowse->setToolTip(QStringLiteral("Use this to select file where measurement data will be written."));
    chkAppend = new QCheckBox(QStringLiteral("Append"), this);
    chkAppend->setToolTip(QStringLiteral(
        "If check, data is appended to end of Measurement file, if uncheck file is overwritten "
        "with present data only."));
    cmdStartRec = new QPushButton(QStringLiteral("Write to Disk"), this);
    cmdStartRec->setToolTip(QStringLiteral("Click here to save measurement to disk file."));
    g->addWidget(txtFilePath, 0, 0, 1, 3);
    g->addWidget(cmdBrowse, 1, 0);
    g->addWidget(chkAppend, 1, 1);
    g->addWidget(cmdStartRec, 1, 2);
    connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
}

void RecordFrame::Form_Load() {
    txtFilePath->setText(QCoreApplication::applicationDirPath() + QStringLiteral("/") +
                         captions_.defaultFile);
}

void RecordFrame::cmdBrowse_Click() {
    const auto chosen = s_.files.SaveFile(captions_.dialogTitle, QString(), DialogFilter(captions_.filter));
    if (!chosen || chosen->isEmpty()) return;
    txtFilePath->setText(WithDefaultExtension(*chosen, captions_.defaultExtension));
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

}  // namespace lxm
