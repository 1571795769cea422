// Running the loaded script, the key-press pause box, the CSV export and writing scripts.
#include <QCheckBox>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTableWidget>

#include "core/Colours.h"
#include "core/Seams.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "frmScriptOps.h"
#include "transport/Session.h"

namespace lxm {

namespace {
constexpr int kMaxLoops = 100000;
constexpr int kLightGreen = 10;
constexpr int kLightRed = 12;

QString Stamp() {
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale locale;
    return locale.toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(now.time(), QLocale::LongFormat);
}

QString WithDefaultSuffix(const QString& path, const QString& suffix) {
    if (QFileInfo(path).suffix().isEmpty() && !QFileInfo::exists(path)) return path + suffix;
    return path;
}
}  // namespace

void frmScriptOps::cmdExecAll_Click() {
    RunScript(1);
}

void frmScriptOps::cmdRunContinuous_Click() {
    bool ok = false;
    const int loops = txtLoopCount->text().trimmed().toInt(&ok);
    if (!ok || loops < 1 || loops > kMaxLoops) {
        s_.messages.MsgBox(QStringLiteral("Loop Count \"%1\" is not a whole number from 1 to %2.\n"
                                          "Enter the number of repetitions and press Loop Cont again.")
                               .arg(txtLoopCount->text())
                               .arg(kMaxLoops));
        return;
    }
    RunScript(loops);
}

void frmScriptOps::cmdAbort_Click() {
    runner_.Abort();
}

void frmScriptOps::SetRunning(bool running) {
    cmdExecAll->setEnabled(!running);
    cmdRunContinuous->setEnabled(!running);
    cmdReload2->setEnabled(!running);
    mnuScript_Read->setEnabled(!running);
    mnuScript_Write->setEnabled(!running);
    cmdStartRec->setEnabled(!running);
    cmdAbort->setEnabled(running);
    // "Reload" leaves Abort hidden; a run brings it back, for it is the way to end the run.
    if (running) cmdAbort->show();
}

void frmScriptOps::RunScript(int loops) {
    if (Running() || rows_.empty()) return;
    s_.activeForm = this;
    for (scripts::ScriptRow& r : rows_) r.actRd.clear(), r.adDecimal.clear();
    ShowRows();
    txttotReads->setText(QStringLiteral("0"));
    txtRdPass->setText(QStringLiteral("0"));
    txtRdFails->setText(QStringLiteral("0"));
    Shp_USB_Info_->setFillIndex(s_.DeviceInfoOK ? kLightGreen : kLightRed);
    SetRunning(true);
    const scripts::RunEnd end =
        runner_.Run(rows_, txtI2CAdr->text().trimmed().toUpper().toStdString(), loops, chkAOF->isChecked());
    SetRunning(false);
    const QString at = QString::number(runner_.LastLine());
    switch (end) {
        case scripts::RunEnd::Done:
            txtScriptLine1->setText(QStringLiteral("Done"));
            break;
        case scripts::RunEnd::StoppedOnFail:
            txtScriptLine1->setText(QStringLiteral("Stopped: read failed at line ") + at);
            break;
        case scripts::RunEnd::Aborted:
            txtScriptLine1->setText(QStringLiteral("Aborted at line ") + at);
            break;
        case scripts::RunEnd::Disconnected:
            txtScriptLine1->setText(QStringLiteral("Board disconnected at line ") + at);
            break;
        case scripts::RunEnd::PauseUnavailable:
        case scripts::RunEnd::Refused:
        case scripts::RunEnd::NotConnected:
            txtScriptLine1->setText(QStringLiteral("Not run"));
            break;
    }
}

void frmScriptOps::RowStarting(const scripts::ScriptRow& row) {
    txtScriptLine1->setText(QStringLiteral("Processing ") + QString::fromUtf8(row.raw));
    if (QTableWidgetItem* item = vbalGrid1->item(row.line - 1, 0)) vbalGrid1->scrollToItem(item);
}

void frmScriptOps::RowDone(const scripts::ScriptRow& row, const scripts::RowResult& result) {
    const int index = row.line - 1;
    if (index < 0 || index >= vbalGrid1->rowCount()) return;
    ShowRow(index);
    if (result.compared)
        vbalGrid1->item(index, scripts::kColActRd)
            ->setBackground(QBColor(result.passed ? kLightGreen : kLightRed));
    ShowCounts();
}

void frmScriptOps::ShowCounts() {
    const scripts::RunCounts& c = runner_.Counts();
    txttotReads->setText(QString::number(c.total));
    txtRdPass->setText(QString::number(c.pass));
    txtRdFails->setText(QString::number(c.fail));
}

// Not modal: "Abort" on the form stays usable while the question is up, and ends the run at once.
scripts::PauseAnswer frmScriptOps::KeyPause(const scripts::ScriptRow&, const QString& text,
                                            const std::function<bool()>& aborted) {
    QMessageBox box(QMessageBox::Question, QString::fromLatin1(kAppTitle), text,
                    QMessageBox::Ok | QMessageBox::Cancel, this);
    box.setWindowModality(Qt::NonModal);
    box.show();
    while (box.isVisible()) {
        if (aborted()) return scripts::PauseAnswer::Abort;
        DoEvents();
        s_.clock.Sleep(10);
    }
    return box.clickedButton() == box.button(QMessageBox::Ok) ? scripts::PauseAnswer::Continue
                                                              : scripts::PauseAnswer::Abort;
}

void frmScriptOps::cmdBrowse_Click() {
    std::optional<QString> name = s_.files.SaveFile(QStringLiteral("Select File For Update"),
                                                    txtFilePath->text(),
                                                    QStringLiteral("Comma Delimited (*.CSV *.csv)"));
    if (!name || name->isEmpty()) return;
    txtFilePath->setText(WithDefaultSuffix(*name, QStringLiteral(".csv")));
}

// Temp file beside the target, then a rename: a failed write leaves the old file as it was.
bool frmScriptOps::WriteWhole(const QString& path, const QByteArray& bytes) {
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size() || !f.commit()) {
        s_.messages.MsgBox(
            QStringLiteral("Cannot write %1: %2.\nChoose another file or folder and try again.")
                .arg(path, f.errorString()));
        return false;
    }
    return true;
}

void frmScriptOps::cmdStartRec_Click() {
    const QString path = txtFilePath->text().trimmed();
    if (rows_.empty()) {
        s_.messages.MsgBox(
            QStringLiteral("The table is empty: load a script file first, then Write to Disk."));
        return;
    }
    if (path.isEmpty()) {
        s_.messages.MsgBox(
            QStringLiteral("No file is given: press Browse to choose the CSV file, then Write to Disk."));
        return;
    }
    QByteArray out;
    if (chkAppend->isChecked() && QFileInfo::exists(path)) {
        QFile old(path);
        if (!old.open(QIODevice::ReadOnly)) {
            s_.messages.MsgBox(QStringLiteral("Cannot read %1 to append to it: %2.\nChoose another file, or "
                                              "clear Append to replace it.")
                                   .arg(path, old.errorString()));
            return;
        }
        out = old.readAll();
    }
    if (out.isEmpty()) out += QByteArray::fromStdString(scripts::CsvHeader());
    for (const scripts::ScriptRow& r : rows_)
        out += QByteArray::fromStdString(scripts::CsvRow(scripts::Cells(r)));
    if (!WriteWhole(path, out)) return;
    Label18->setText(Str(double(rows_.size())) + QStringLiteral(" Row(s) written: ") + Stamp());
}

void frmScriptOps::mnuScript_Write_Click() {
    if (Running()) return;
    if (rows_.empty()) {
        s_.messages.MsgBox(QStringLiteral("The table is empty: load a script file first, then save it."));
        return;
    }
    std::optional<QString> name =
        s_.files.SaveFile(QStringLiteral("Select Script File to Save"), path_,
                          QStringLiteral("Velmarin Script Files (*.txt);;All Files (*)"));
    if (!name || name->isEmpty()) return;
    const QString path = WithDefaultSuffix(*name, QStringLiteral(".txt"));
    QByteArray out;
    for (const scripts::ScriptRow& r : rows_)
        out += QByteArray::fromStdString(scripts::ScriptLine(r) + "\r\n");
    out += "END\r\n";
    if (!WriteWhole(path, out)) return;
    txtScriptLine1->setText(QFileInfo(path).fileName() + QStringLiteral(" Script written: ") + Stamp());
}

}  // namespace lxm
