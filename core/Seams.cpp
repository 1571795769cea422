#include "Seams.h"

#include <QFileDialog>
#include <QMessageBox>

namespace lxm {

void QtMessages::MsgBox(const QString& text, const QString& title) {
    QMessageBox::information(parent_, title.isEmpty() ? QString::fromLatin1(kAppTitle) : title, text);
}

bool QtMessages::Ask(const QString& text, const QString& title) {
    return QMessageBox::question(parent_, title.isEmpty() ? QString::fromLatin1(kAppTitle) : title, text) ==
           QMessageBox::Yes;
}

std::optional<QString> QtFileDialogs::OpenFile(const QString& title, const QString& dir,
                                               const QString& filter) {
    QString f = QFileDialog::getOpenFileName(nullptr, title, start_.For(dir), filter);
    if (f.isEmpty()) return std::nullopt;
    start_.Chosen(f);
    return f;
}

QStringList QtFileDialogs::OpenFiles(const QString& title, const QString& dir, const QString& filter) {
    const QStringList files = QFileDialog::getOpenFileNames(nullptr, title, start_.For(dir), filter);
    if (!files.isEmpty()) start_.Chosen(files.front());
    return files;
}

std::optional<QString> QtFileDialogs::SaveFile(const QString& title, const QString& dir,
                                               const QString& filter) {
    QString f = QFileDialog::getSaveFileName(nullptr, title, start_.For(dir), filter);
    if (f.isEmpty()) return std::nullopt;
    start_.Chosen(f);
    return f;
}

}  // namespace lxm
