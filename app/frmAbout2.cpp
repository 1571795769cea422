#include "frmAbout2.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/SystemReport.h"

namespace lxm {

frmAbout2::frmAbout2(QWidget* parent) : QDialog(parent), probe_(std::make_unique<SystemProbe>()) {
    setWindowTitle(QStringLiteral("About"));
    auto* root = new QVBoxLayout(this);
    lblTitle = new QLabel(QStringLiteral("Velmarin ALS / Proximity Evaluation Software"), this);
    QFont big = lblTitle->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.2);
    lblTitle->setFont(big);
    lblVersion = new QLabel(
        QStringLiteral("%1 version %2").arg(QStringLiteral(LXMEVAL_NAME), QStringLiteral(LXMEVAL_VERSION)),
        this);
    lblDisclaimer = new QLabel(
        QStringLiteral("This is evaluation software for the sensors on their evaluation board. It is "
                       "provided as is, without warranty of any kind; you use it at your own risk."),
        this);
    lblDisclaimer->setWordWrap(true);
    lblDisclaimer->setMinimumWidth(360);
    for (QLabel* l : {lblTitle, lblVersion, lblDisclaimer}) {
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        root->addWidget(l);
    }
    root->addSpacing(8);

    auto* buttons = new QHBoxLayout;
    cmdSysInfo = new QPushButton(QStringLiteral("System Info..."), this);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setDefault(true);
    buttons->addWidget(cmdSysInfo);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    root->addLayout(buttons);

    connect(cmdSysInfo, &QPushButton::clicked, this, [this] { cmdSysInfo_Click(); });
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
}

frmAbout2::~frmAbout2() = default;

void frmAbout2::SetProbe(const SystemProbe& probe) {
    *probe_ = probe;
}

void frmAbout2::BuildReportWindow() {
    frmSysInfo = new QDialog(this);
    frmSysInfo->setWindowTitle(QStringLiteral("System Info"));
    auto* root = new QVBoxLayout(frmSysInfo);
    txtReport = new QPlainTextEdit(frmSysInfo);
    txtReport->setReadOnly(true);
    txtReport->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtReport->setMinimumSize(560, 240);
    root->addWidget(txtReport);
    auto* box = new QDialogButtonBox(frmSysInfo);
    cmdCopy = box->addButton(QStringLiteral("Copy"), QDialogButtonBox::ActionRole);
    QPushButton* close = box->addButton(QDialogButtonBox::Close);
    root->addWidget(box);
    connect(cmdCopy, &QPushButton::clicked, frmSysInfo, [this] { cmdCopy_Click(); });
    connect(close, &QPushButton::clicked, frmSysInfo, &QDialog::accept);
}

void frmAbout2::cmdSysInfo_Click() {
    if (!frmSysInfo) BuildReportWindow();
    // Gathered afresh each time: the board may have been plugged in since.
    txtReport->setPlainText(FormatSystemReport(GatherSystemFacts(*probe_)));
    frmSysInfo->show();
    frmSysInfo->raise();
}

void frmAbout2::cmdCopy_Click() {
    QApplication::clipboard()->setText(txtReport->toPlainText());
}

}  // namespace lxm
