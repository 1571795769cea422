#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace lxm::test {

// A file's bytes; "<missing>" when it cannot be read, so that a comparison says which.
inline QByteArray ReadFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// Whether the whole of bytes went to path.
[[nodiscard]] inline bool WriteFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

}  // namespace lxm::test
