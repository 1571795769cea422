#include "frmScriptOps.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "core/Colours.h"
#include "core/Shape.h"
#include "transport/Session.h"

namespace lxm {

frmScriptOps::frmScriptOps(Session& session, QWidget* parent)
    : QWidget(parent, Qt::Window), s_(session), runner_(session, *this) {
    BuildLayout();
    Form_Load();
}

frmScriptOps::~frmScriptOps() {
    runner_.Abort();
    s_.FormGone(this);
}

void frmScriptOps::BuildLayout() {
    setWindowTitle(QStringLiteral("Setup - Script IC Send/Receive"));
    auto* root = new QVBoxLayout(this);

    menuBar = new QMenuBar(this);
    QMenu* file = menuBar->addMenu(QStringLiteral("File"));
    mnuScript_Read = file->addAction(QStringLiteral("Open Script File"));
    mnuScript_Write = file->addAction(QStringLiteral("Save Script File"));
    root->setMenuBar(menuBar);

    lblTitle = new QLabel(QStringLiteral("IC - Script Load / Execute"), this);
    lblTitle->setAlignment(Qt::AlignCenter);
    lblTitle->setStyleSheet(QStringLiteral("font-weight: bold; padding: 4px;"));
    root->addWidget(lblTitle);

    // File, default address and the lamps.
    auto* top = new QHBoxLayout;
    Label4 = new QLabel(QStringLiteral("Last Load"), this);
    txtRunning = new QLineEdit(this);
    txtRunning->setReadOnly(true);
    txtTotLines = new QLineEdit(this);
    txtTotLines->setReadOnly(true);
    txtTotLines->setMaximumWidth(60);
    Label5 = new QLabel(QStringLiteral("Default I2C Adr"), this);
    txtI2CAdr = new QLineEdit(QStringLiteral("88"), this);
    txtI2CAdr->setMaxLength(2);
    txtI2CAdr->setMaximumWidth(40);
    top->addWidget(Label4);
    top->addWidget(txtRunning, 1);
    top->addWidget(txtTotLines);
    top->addSpacing(12);
    top->addWidget(Label5);
    top->addWidget(txtI2CAdr);
    ShpAttach_ = new Shape(this);
    Shp_USB_Info_ = new Shape(this);
    Shp_USB_Transfer_ = new Shape(this);
    top->addSpacing(12);
    top->addWidget(ShpAttach_);
    top->addWidget(Shp_USB_Info_);
    top->addWidget(Shp_USB_Transfer_);
    root->addLayout(top);

    vbalGrid1 = new QTableWidget(0, scripts::kColumnCount, this);
    vbalGrid1->setShowGrid(true);
    vbalGrid1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vbalGrid1->setSelectionBehavior(QAbstractItemView::SelectRows);
    vbalGrid1->verticalHeader()->setVisible(false);
    vbalGrid1->horizontalHeader()->setStretchLastSection(false);
    root->addWidget(vbalGrid1, 1);

    frmScriptExec = new QGroupBox(QStringLiteral("Script Control"), this);
    auto* exec = new QGridLayout(frmScriptExec);
    cmdExecAll = new QPushButton(QStringLiteral("Run All Steps"), frmScriptExec);
    cmdRunContinuous = new QPushButton(QStringLiteral("Loop Cont"), frmScriptExec);
    cmdAbort = new QPushButton(QStringLiteral("Abort"), frmScriptExec);
    cmdReload2 = new QPushButton(QStringLiteral("Reload"), frmScriptExec);
    chkAOF = new QCheckBox(QStringLiteral("Abort On fail"), frmScriptExec);
    Label6 = new QLabel(QStringLiteral("Loop Count"), frmScriptExec);
    txtLoopCount = new QLineEdit(QStringLiteral("1"), frmScriptExec);
    txtLoopCount->setMaximumWidth(70);
    txtScriptLine1 = new QLineEdit(frmScriptExec);
    txtScriptLine1->setReadOnly(true);
    Label3 = new QLabel(QStringLiteral("Read Operations"), frmScriptExec);
    Label2 = new QLabel(QStringLiteral("Total       Pass        Fail"), frmScriptExec);
    txttotReads = new QLineEdit(frmScriptExec);
    txtRdPass = new QLineEdit(frmScriptExec);
    txtRdFails = new QLineEdit(frmScriptExec);
    for (QLineEdit* e : {txttotReads, txtRdPass, txtRdFails}) {
        e->setReadOnly(true);
        e->setMaximumWidth(60);
    }
    exec->addWidget(cmdExecAll, 0, 0);
    exec->addWidget(cmdRunContinuous, 0, 1);
    exec->addWidget(Label6, 0, 2);
    exec->addWidget(txtLoopCount, 0, 3);
    exec->addWidget(chkAOF, 0, 4);
    exec->addWidget(cmdAbort, 0, 5);
    exec->addWidget(cmdReload2, 0, 6);
    exec->addWidget(txtScriptLine1, 1, 0, 1, 7);
    // The column captions sit over the three count boxes.
    auto* counts = new QGridLayout;
    counts->addWidget(Label2, 0, 1, 1, 3);
    counts->addWidget(Label3, 1, 0);
    counts->addWidget(txttotReads, 1, 1);
    counts->addWidget(txtRdPass, 1, 2);
    counts->addWidget(txtRdFails, 1, 3);
    counts->setColumnStretch(4, 1);
    exec->addLayout(counts, 2, 0, 1, 7);
    root->addWidget(frmScriptExec);

    frmDataRecord = new QGroupBox(QStringLiteral("Save Table Data to CSV file"), this);
    auto* rec = new QHBoxLayout(frmDataRecord);
    txtFilePath = new QLineEdit(frmDataRecord);
    cmdBrowse = new QPushButton(QStringLiteral("Browse"), frmDataRecord);
    chkAppend = new QCheckBox(QStringLiteral("Append"), frmDataRecord);
    cmdStartRec = new QPushButton(QStringLiteral("Write to Disk"), frmDataRecord);
    Label18 = new QLabel(frmDataRecord);
    rec->addWidget(txtFilePath, 2);
    rec->addWidget(cmdBrowse);
    rec->addWidget(chkAppend);
    rec->addWidget(cmdStartRec);
    rec->addWidget(Label18, 1);
    root->addWidget(frmDataRecord);

    connect(mnuScript_Read, &QAction::triggered, this, [this] { mnuScript_Read_Click(); });
    connect(mnuScript_Write, &QAction::triggered, this, [this] { mnuScript_Write_Click(); });
    connect(cmdReload2, &QPushButton::clicked, this, [this] { cmdReload2_Click(); });
    connect(cmdExecAll, &QPushButton::clicked, this, [this] { cmdExecAll_Click(); });
    connect(cmdRunContinuous, &QPushButton::clicked, this, [this] { cmdRunContinuous_Click(); });
    connect(cmdAbort, &QPushButton::clicked, this, [this] { cmdAbort_Click(); });
    connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
    connect(cmdStartRec, &QPushButton::clicked, this, [this] { cmdStartRec_Click(); });

    resize(1000, 620);
}

void frmScriptOps::Form_Load() {
    frmScriptExec->hide();
    cmdReload2->hide();
    txtRunning->setText(QStringLiteral("No Script File Selected"));
    QStringList headers;
    for (const char* h : scripts::kColumnHeaders) headers << QString::fromLatin1(h);
    vbalGrid1->setHorizontalHeaderLabels(headers);
    SetRunning(false);
}

void frmScriptOps::mnuScript_Read_Click() {
    if (Running()) return;
    std::optional<QString> name =
        s_.files.OpenFile(QStringLiteral("Select Script File to Open"), path_,
                          QStringLiteral("Velmarin Script Files (*.txt);;All Files (*)"));
    if (!name || name->isEmpty()) return;
    QString path = *name;
    // The default extension, for a name typed without one that does not exist as typed.
    if (QFileInfo(path).suffix().isEmpty() && !QFileInfo::exists(path)) path += QStringLiteral(".txt");
    if (LoadFile(path)) cmdReload2->show();
}

void frmScriptOps::cmdReload2_Click() {
    if (Running() || path_.isEmpty()) return;
    cmdExecAll->hide();
    cmdRunContinuous->hide();
    cmdAbort->hide();
    txtRdFails->clear();
    txtRdPass->clear();
    LoadFile(path_);
    cmdExecAll->show();
    cmdRunContinuous->show();
}

bool frmScriptOps::LoadFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        s_.messages.MsgBox(
            QStringLiteral("Cannot open the script file %1: %2.\nChoose a readable script file.")
                .arg(path, f.errorString()));
        return false;
    }
    // One byte more than allowed is enough to know the file is too large.
    const QByteArray bytes = f.read(qint64(scripts::kMaxFileBytes) + 1);
    if (f.error() != QFileDevice::NoError) {
        s_.messages.MsgBox(
            QStringLiteral("Cannot read the script file %1: %2.\nChoose a readable script file.")
                .arg(path, f.errorString()));
        return false;
    }
    scripts::LoadResult loaded =
        scripts::LoadScript(std::string_view(bytes.constData(), std::size_t(bytes.size())));
    switch (loaded.problem) {
        case scripts::LoadProblem::Empty:
            s_.messages.MsgBox(
                QStringLiteral("The script file %1 is empty.\nA script file holds one register "
                               "operation or command per line; choose another file.")
                    .arg(path));
            return false;
        case scripts::LoadProblem::TooLarge:
            s_.messages.MsgBox(QStringLiteral("The file %1 is larger than %2 KB and is not a script file.\n"
                                              "Choose a script file.")
                                   .arg(path)
                                   .arg(scripts::kMaxFileBytes / 1024));
            return false;
        case scripts::LoadProblem::Binary:
            s_.messages.MsgBox(QStringLiteral("The file %1 holds binary data and is not a script file.\n"
                                              "Choose a text file of script lines.")
                                   .arg(path));
            return false;
        case scripts::LoadProblem::None:
            break;
    }
    rows_ = std::move(loaded.rows);
    path_ = path;
    ShowRows();
    frmScriptExec->show();
    txtTotLines->setText(QString::number(rows_.size()));
    txtRunning->setText(path);
    setWindowTitle(QStringLiteral("[ ") + QFileInfo(path).fileName() +
                   QStringLiteral(" ]    Script IC Send / Receive"));
    txtScriptLine1->clear();
    // One message per empty line, as the loader meets them.
    for (int i = 0; i < loaded.blankLines; ++i) s_.messages.MsgBox(QStringLiteral("Script File has a blank line"));
    if (loaded.truncated)
        s_.messages.MsgBox(QStringLiteral("The script file %1 has more than %2 lines; only the first %2 were "
                                          "loaded. Split it into smaller scripts.")
                               .arg(path)
                               .arg(scripts::kMaxRows));
    return true;
}

void frmScriptOps::ShowRows() {
    vbalGrid1->setRowCount(0);
    vbalGrid1->setRowCount(int(rows_.size()));
    for (int i = 0; i < int(rows_.size()); ++i) ShowRow(i);
    vbalGrid1->resizeColumnsToContents();
}

void frmScriptOps::ShowRow(int index) {
    const scripts::ScriptRow& row = rows_[std::size_t(index)];
    const std::vector<std::string> cells = scripts::Cells(row);
    for (int c = 0; c < scripts::kColumnCount; ++c) {
        QTableWidgetItem* item = vbalGrid1->item(index, c);
        if (!item) {
            item = new QTableWidgetItem;
            vbalGrid1->setItem(index, c, item);
        }
        item->setText(QString::fromUtf8(cells[std::size_t(c)]));
    }
    if (row.kind == scripts::RowKind::Error)
        vbalGrid1->item(index, scripts::kColOperation)->setBackground(QBColor(12));
}

void frmScriptOps::changeEvent(QEvent* e) {
    if (e->type() == QEvent::ActivationChange && isActiveWindow()) s_.activeForm = this;
    QWidget::changeEvent(e);
}

void frmScriptOps::closeEvent(QCloseEvent* e) {
    runner_.Abort();
    // The lamps of a hidden form are of no use to the transfer layer.
    if (s_.activeForm == this && parentWidget()) s_.activeForm = dynamic_cast<ActiveForm*>(parentWidget());
    e->accept();
}

}  // namespace lxm
