#include "FileFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace lxm {

QString DocumentsFolder() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty()) folder = QDir::homePath();
    QDir().mkpath(folder);
    return folder;
}

QString DialogStart::For(const QString& asked) const {
    const QFileInfo info(asked);
    const bool namesFolder = asked.isEmpty() || info.isDir();
    const QString name = namesFolder ? QString() : info.fileName();
    QString folder = last_;
    if (folder.isEmpty()) {
        const QString given = namesFolder ? asked : info.path();
        const QFileInfo dir(given);
        const bool usable = !given.isEmpty() && given != QStringLiteral(".") && dir.isAbsolute() && dir.isDir() &&
                            dir.canonicalFilePath() != QFileInfo(QCoreApplication::applicationDirPath()).canonicalFilePath();
        folder = usable ? dir.absoluteFilePath() : DocumentsFolder();
    }
    return name.isEmpty() ? folder : QDir(folder).filePath(name);
}

void DialogStart::Chosen(const QString& file) {
    if (!file.isEmpty()) last_ = QFileInfo(file).absolutePath();
}

}  // namespace lxm
