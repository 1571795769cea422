#include "Doco.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include "acquisition/Recording.h"
#include "device/parts/RecordFrame.h"

namespace lxm {

Doco::Doco(Session& session, QWidget* parent) : QWidget(parent, Qt::Window), s_(session) {
    setWindowTitle(QStringLiteral("I2C Trace Options"));
    auto* root = new QVBoxLayout(this);
    FrmDocoOptions = new QGroupBox(QStringLiteral("I2C Trace Options"), this);
    auto* opts = new QHBoxLayout(FrmDocoOptions);
    ChkTrace[0] = new QCheckBox(QStringLiteral("Show Reads"), FrmDocoOptions);
    ChkTrace[1] = new QCheckBox(QStringLiteral("Show Address"), FrmDocoOptions);
    cndTclear = new QPushButton(QStringLiteral("Clear"), FrmDocoOptions);
    opts->addWidget(ChkTrace[0]);
    opts->addWidget(ChkTrace[1]);
    opts->addStretch(1);
    opts->addWidget(cndTclear);
    root->addWidget(FrmDocoOptions);

    rtxt1 = new QTextEdit(this);
    rtxt1->setAcceptRichText(false);
    rtxt1->setMinimumSize(420, 240);
    root->addWidget(rtxt1, 1);

    RecordCaptions captions;
    captions.frameTitle = QStringLiteral("Save Trace to File");
    captions.filter = QStringLiteral("All Files (*.*)|*.*|LXM20x Trace Files(*.txt)|*.txt");
    captions.defaultFile = QStringLiteral("Trace.txt");
    frmDataRecord = new RecordFrame(s_, captions, this);
    root->addWidget(frmDataRecord);
    lblResult = new QLabel(this);
    lblResult->setWordWrap(true);
    root->addWidget(lblResult);

    connect(cndTclear, &QPushButton::clicked, this, [this] { cndTclear_Click(); });
    connect(frmDataRecord->cmdStartRec, &QPushButton::clicked, this, [this] { cmdStartRec_Click(); });
}

void Doco::Form_Load() {
    frmDataRecord->Form_Load();
}

void Doco::cndTclear_Click() {
    rtxt1->setPlainText(QString());
}

void Doco::cmdStartRec_Click() {
    const QString date = frmDataRecord->Date();
    const QString time = frmDataRecord->Time();
    const QString path = frmDataRecord->txtFilePath->text();
    const QString reason = frmDataRecord->Write(TraceBlock(rtxt1->toPlainText(), date, time));
    if (reason.isEmpty())
        lblResult->setText(QStringLiteral("Trace written: ") + date + QStringLiteral(" ") + time);
    else
        lblResult->setText(FileErrorMessage(path, reason, QStringLiteral("The trace text is kept.")));
}

}  // namespace lxm
