#include "Recording.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace lxm {

namespace {

const QByteArray kEol = QByteArrayLiteral("\r\n");

QString Reason(int err) {
    return QString::fromLocal8Bit(std::strerror(err));
}

// Writes all of data to fd, riding out short writes; false with errno set on failure.
bool WriteAll(int fd, const QByteArray& data) {
    const char* p = data.constData();
    qsizetype left = data.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, std::size_t(left));
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        p += n;
        left -= n;
    }
    return true;
}

bool ReadAll(const QByteArray& path, QByteArray& out, int& err) {
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        err = errno;
        return false;
    }
    char buf[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n == 0) break;
        if (n < 0) {
            if (errno == EINTR) continue;
            err = errno;
            ::close(fd);
            return false;
        }
        out.append(buf, n);
    }
    ::close(fd);
    return true;
}

mode_t NewFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

QString NumberText(double v) {
    if (v == 0) v = 0;  // no "-0"
    const QString digits = QString::number(v, 'f', QLocale::FloatingPointShortest);
    return v < 0 ? digits : QStringLiteral(" ") + digits;
}

QString RecordDate(const QDate& d, const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (!format.contains(QStringLiteral("yyyy")))
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return locale.toString(d, format);
}

QString RecordTime(const QTime& t, const QLocale& locale) {
    QString format = locale.timeFormat(QLocale::LongFormat);
    format.remove(QLatin1Char('t'));
    return locale.toString(t, format.trimmed());
}

QByteArray MeasurementBlock(const MeasurementHeader& h, const std::vector<double>& samples, int sampleCount) {
    QByteArray out;
    const QString header = QStringLiteral("Collect Reg0:&h") + h.reg0 + QStringLiteral(" :Reg1 &h") + h.reg1 +
                           QStringLiteral(",Interval ") + h.interval + QStringLiteral(", ") + h.date +
                           QStringLiteral(",") + h.time + QStringLiteral(", Qty") +
                           NumberText(sampleCount - kRecordFirstSample);
    out += header.toUtf8() + kEol;
    for (int i = kRecordFirstSample; i < sampleCount && std::size_t(i) < samples.size(); ++i)
        out +=
            (NumberText(i - kRecordFirstSample) + QStringLiteral(",") + NumberText(samples[std::size_t(i)]))
                .toUtf8() +
            kEol;
    out += QByteArrayLiteral("END") + kEol;
    return out;
}

QString RecordedCaption(int sampleCount, const QString& date, const QString& time) {
    return NumberText(sampleCount - (kRecordFirstSample - 1)) +
           QStringLiteral(" Measurement set(s) written: ") + date + QStringLiteral(" ") + time;
}

QByteArray TraceBlock(const QString& text, const QString& date, const QString& time) {
    return (QStringLiteral("Trace File") + date + QStringLiteral(" ") + time).toUtf8() + kEol +
           text.toUtf8() + kEol + QByteArrayLiteral("END") + kEol;
}

QString WriteFileWhole(const QString& path, const QByteArray& content, bool append) {
    if (path.isEmpty()) return Reason(ENOENT);
    // Through a link the file it names is replaced, not the link.
    const QFileInfo given(path);
    const QFileInfo info(given.isSymLink() ? given.symLinkTarget() : path);
    const QByteArray target = QFile::encodeName(info.filePath());
    struct stat st {};
    const bool exists = ::stat(target.constData(), &st) == 0;
    if (exists && S_ISDIR(st.st_mode)) return Reason(EISDIR);

    QByteArray data;
    if (append && exists) {
        int err = 0;
        if (!ReadAll(target, data, err)) return Reason(err);
    }
    data += content;

    QByteArray temp = QFile::encodeName(info.absolutePath() + QStringLiteral("/.") + info.fileName()) +
                      QByteArrayLiteral(".XXXXXX");
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return Reason(errno);
    int err = 0;
    if (!WriteAll(fd, data) || ::fsync(fd) != 0 ||
        ::fchmod(fd, exists ? (st.st_mode & 07777) : NewFileMode()) != 0)
        err = errno;
    if (::close(fd) != 0 && err == 0) err = errno;
    if (err == 0 && ::rename(temp.constData(), target.constData()) != 0) err = errno;
    if (err != 0) {
        ::unlink(temp.constData());
        return Reason(err);
    }
    return {};
}

QString FileErrorMessage(const QString& path, const QString& reason, const QString& whatIsKept) {
    return QStringLiteral("Could not write \"") + path + QStringLiteral("\": ") + reason +
           QStringLiteral(". ") + whatIsKept +
           QStringLiteral(" Choose another file with \"Browse\" and write again.");
}

QString DialogFilter(const QString& pairs) {
    const QStringList parts = pairs.split(QLatin1Char('|'));
    QStringList filters;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        const QString name = parts[i].trimmed();
        const QString pattern = parts[i + 1].trimmed();
        filters << (name.contains(QStringLiteral("(") + pattern + QStringLiteral(")"))
                        ? name
                        : name + QStringLiteral(" (") + pattern + QStringLiteral(")"));
    }
    return filters.join(QStringLiteral(";;"));
}

QString WithDefaultExtension(const QString& path, const QString& defaultExtension) {
    QString ext = defaultExtension;
    if (ext.startsWith(QLatin1Char('*'))) ext.remove(0, 1);
    if (ext.isEmpty() || ext == QStringLiteral(".*")) return path;
    if (!ext.startsWith(QLatin1Char('.'))) ext.prepend(QLatin1Char('.'));
    if (!QFileInfo(path).suffix().isEmpty()) return path;
    return path + ext;
}

}  // namespace lxm
