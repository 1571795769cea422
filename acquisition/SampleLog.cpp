#include "SampleLog.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>

namespace lxm {

namespace {

constexpr std::size_t kBufferBytes = 64 * 1024;
// Longer than any row can get: time, seconds, five 20-digit numbers, a double, the unit.
constexpr std::size_t kMaxRowBytes = 256;
constexpr std::int64_t kFlushEveryUs = 1'000'000;

QString Reason(int err) {
    return QString::fromLocal8Bit(std::strerror(err));
}

bool WriteAll(int fd, const char* p, std::size_t left) {
    while (left > 0) {
        const ssize_t n = ::write(fd, p, left);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        p += n;
        left -= std::size_t(n);
    }
    return true;
}

mode_t NewFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

void Put(char*& p, const char* s, std::size_t n) {
    std::memcpy(p, s, n);
    p += n;
}

void PutInt(char*& p, std::int64_t v) {
    p = std::to_chars(p, p + 24, v).ptr;
}

// Zero-padded to the given width, for the fields of a date.
void PutPadded(char*& p, unsigned v, int width) {
    for (int i = width - 1; i >= 0; --i, v /= 10) p[i] = char('0' + v % 10);
    p += width;
}

// The "# key: value" lines of the settings, all of them, or those that differ from before.
QString SettingLines(const SampleLogHeader& h, const SampleLogHeader* before) {
    auto hex = [](std::uint8_t v) { return QString::asprintf("%02X", v); };
    QString t;
    auto line = [&](bool changed, const char* key, const QString& value) {
        if (before && !changed) return;
        t += QStringLiteral("# ") + QLatin1String(key) + QStringLiteral(": ") + value + QStringLiteral("\r\n");
    };
    if (!h.measurement.isEmpty() || before)
        line(!before || before->measurement != h.measurement, "measurement", h.measurement);
    line(!before || before->reg0 != h.reg0, "register 0", hex(h.reg0));
    line(!before || before->reg1 != h.reg1, "register 1", hex(h.reg1));
    line(!before || before->intervalMs != h.intervalMs, "interval",
         QString::number(h.intervalMs) + QStringLiteral(" ms"));
    line(!before || before->rangeLux != h.rangeLux, "range",
         QString::number(h.rangeLux, 'f', QLocale::FloatingPointShortest) + QStringLiteral(" lux"));
    if (h.resolutionBits > 0)
        line(!before || before->resolutionBits != h.resolutionBits, "resolution",
             QString::number(h.resolutionBits) + QStringLiteral(" bits"));
    return t;
}

QByteArray HeaderText(const SampleLogHeader& h, const QDateTime& started) {
    QString t = QStringLiteral("# lxmeval sample log\r\n# sensor: ") + h.sensor + QStringLiteral("\r\n");
    t += SettingLines(h, nullptr);
    // With its offset from UTC, so that a log over a change of summer time stays readable.
    t += QStringLiteral("# started: ") +
         started.toOffsetFromUtc(started.offsetFromUtc()).toString(Qt::ISODateWithMs) +
         QStringLiteral("\r\n");
    t += QStringLiteral("time,seconds,sample,raw,value,unit,status");
    if (h.dual) t += QStringLiteral(",ir,prox");
    return (t + QStringLiteral("\r\n")).toUtf8();
}

}  // namespace

SampleLog::SampleLog(Clock& clock, ErrorHandler onError)
    : clock_(clock), onError_(std::move(onError)), buffer_(new char[kBufferBytes]) {}

SampleLog::~SampleLog() {
    Close();
}

bool SampleLog::Open(const QString& path, const SampleLogHeader& header) {
    Close();
    path_ = path;
    lux_ = header.lux;
    dual_ = header.dual;
    recorded_ = header;
    used_ = 0;
    rows_ = 0;
    cachedSecond_ = INT64_MIN;

    // The row times count on from one reading of the wall clock with the steady clock, so
    // rows never go back when the system's time is corrected during a night's run, and the
    // time column agrees with the seconds column.
    const QDateTime started = clock_.Now();
    startWallMs_ = started.toMSecsSinceEpoch();
    startUs_ = lastFlushUs_ = lastRowUs_ = clock_.Micros();
    const QByteArray text = HeaderText(header, started);

    if (path.isEmpty()) {
        Fail(ENOENT);
        return false;
    }
    const QFileInfo given(path);
    const QFileInfo info(given.isSymLink() ? given.symLinkTarget() : path);
    const QByteArray target = QFile::encodeName(info.filePath());
    struct stat st {};
    const bool exists = ::stat(target.constData(), &st) == 0;
    if (exists && S_ISDIR(st.st_mode)) {
        Fail(EISDIR);
        return false;
    }
    regularFile_ = !exists || S_ISREG(st.st_mode);
    if (!regularFile_) {
        // A device or a pipe is written where it is; there is nothing to replace.
        fd_ = ::open(target.constData(), O_WRONLY | O_CLOEXEC);
        if (fd_ < 0) {
            Fail(errno);
            return false;
        }
        if (!WriteAll(fd_, text.constData(), std::size_t(text.size()))) {
            Fail(errno);
            return false;
        }
        return true;
    }

    QByteArray temp = QFile::encodeName(info.absolutePath() + QStringLiteral("/.") + info.fileName()) +
                      QByteArrayLiteral(".XXXXXX");
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) {
        Fail(errno);
        return false;
    }
    int err = 0;
    if (::fchmod(fd, exists ? (st.st_mode & 07777) : NewFileMode()) != 0 ||
        !WriteAll(fd, text.constData(), std::size_t(text.size())) ||
        ::rename(temp.constData(), target.constData()) != 0)
        err = errno;
    if (err != 0) {
        ::close(fd);
        ::unlink(temp.constData());
        Fail(err);
        return false;
    }
    fd_ = fd;
    return true;
}

void SampleLog::FormatTime(std::int64_t elapsedUs, char*& p) {
    const std::int64_t wallMs = startWallMs_ + elapsedUs / 1000;
    std::int64_t second = wallMs / 1000;
    int ms = int(wallMs % 1000);
    if (ms < 0) ms += 1000, --second;
    if (second != cachedSecond_) {
        cachedSecond_ = second;
        const std::time_t t = std::time_t(second);
        std::tm tm{};
        ::localtime_r(&t, &tm);
        char* c = cachedTime_;
        PutPadded(c, unsigned(tm.tm_year + 1900), 4);
        *c++ = '-';
        PutPadded(c, unsigned(tm.tm_mon + 1), 2);
        *c++ = '-';
        PutPadded(c, unsigned(tm.tm_mday), 2);
        *c++ = 'T';
        PutPadded(c, unsigned(tm.tm_hour), 2);
        *c++ = ':';
        PutPadded(c, unsigned(tm.tm_min), 2);
        *c++ = ':';
        PutPadded(c, unsigned(tm.tm_sec), 2);
    }
    Put(p, cachedTime_, 19);
    *p++ = '.';
    PutPadded(p, unsigned(ms), 3);
}

void SampleLog::Append(const LoggedSample& s) {
    if (fd_ < 0) return;
    if (kBufferBytes - used_ < kMaxRowBytes && !Flush()) return;

    const std::int64_t now = clock_.Micros();
    const std::int64_t elapsed = now - startUs_;
    char* p = buffer_.get() + used_;
    FormatTime(elapsed, p);
    *p++ = ',';
    PutInt(p, elapsed / 1'000'000);
    *p++ = '.';
    PutPadded(p, unsigned(elapsed % 1'000'000), 6);
    *p++ = ',';
    PutInt(p, std::int64_t(++rows_));
    *p++ = ',';
    const bool failed = s.status == SampleStatus::Failed;
    if (s.raw && !failed) PutInt(p, *s.raw);
    *p++ = ',';
    if (std::isfinite(s.value) && !failed) p = std::to_chars(p, p + 32, s.value == 0 ? 0.0 : s.value).ptr;
    if (lux_)
        Put(p, ",lux,", 5);
    else
        Put(p, ",counts,", 8);
    const char* word = StatusWord(s.status);
    Put(p, word, std::strlen(word));
    if (dual_) {
        *p++ = ',';
        if (s.ir) PutInt(p, *s.ir);
        *p++ = ',';
        if (s.prox) PutInt(p, *s.prox);
    }
    Put(p, "\r\n", 2);
    used_ = std::size_t(p - buffer_.get());

    // Written now when the next row, at the pace so far, would come later than a second
    // after the last write; so slow runs write every row and fast ones once a second.
    if ((now - lastFlushUs_) + (now - lastRowUs_) >= kFlushEveryUs) Flush();
    lastRowUs_ = now;
}

void SampleLog::NoteSettings(const SampleLogHeader& now) {
    if (fd_ < 0) return;
    const QByteArray lines = SettingLines(now, &recorded_).toUtf8();
    recorded_ = now;
    lux_ = now.lux;
    if (lines.isEmpty()) return;
    if (kBufferBytes - used_ < std::size_t(lines.size()) + kMaxRowBytes && !Flush()) return;
    // A measurement's name is short; a longer text would not be a setting.
    const std::size_t n = std::min<std::size_t>(std::size_t(lines.size()), kBufferBytes - kMaxRowBytes - used_);
    std::memcpy(buffer_.get() + used_, lines.constData(), n);
    used_ += n;
}

void SampleLog::FlushIfDue() {
    if (fd_ >= 0 && used_ > 0 && clock_.Micros() - lastFlushUs_ >= kFlushEveryUs) Flush();
}

bool SampleLog::Flush() {
    lastFlushUs_ = clock_.Micros();
    if (used_ == 0) return true;
    if (!WriteAll(fd_, buffer_.get(), used_)) {
        Fail(errno);
        return false;
    }
    used_ = 0;
    return true;
}

void SampleLog::Close() {
    if (fd_ < 0) return;
    if (!Flush()) return;
    // On the disk, not just handed to the system, before the user takes the file away. A
    // device that cannot be synchronised has nothing to lose.
    int err = 0;
    if (regularFile_ && ::fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) err = errno;
    if (::close(fd_) != 0 && err == 0 && errno != EINTR) err = errno;
    fd_ = -1;
    if (err != 0) Fail(err);
}

void SampleLog::Fail(int err) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    used_ = 0;
    if (onError_) onError_(path_, Reason(err));
}

QString LogCreationProblem(const QString& path) {
    if (path.isEmpty()) return Reason(ENOENT);
    const QFileInfo given(path);
    const QFileInfo info(given.isSymLink() ? given.symLinkTarget() : path);
    struct stat st {};
    if (::stat(QFile::encodeName(info.filePath()).constData(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) return Reason(EISDIR);
        if (!S_ISREG(st.st_mode)) return QString();  // a device or pipe is opened as it is
    }
    // The log is written beside its file first, so the folder is what must take a new file.
    QByteArray temp = QFile::encodeName(info.absolutePath() + QStringLiteral("/.") + info.fileName()) +
                      QByteArrayLiteral(".XXXXXX");
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return Reason(errno);
    ::close(fd);
    ::unlink(temp.constData());
    return QString();
}

QString NextFreeLogPath(const QString& path) {
    const QFileInfo info(path);
    const QString suffix = info.suffix();
    QString stem = path;
    if (!suffix.isEmpty()) stem.chop(suffix.size() + 1);
    for (int n = 2;; ++n) {
        const QString candidate =
            stem + QLatin1Char('-') + QString::number(n) + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
        if (!QFileInfo::exists(candidate)) return candidate;
    }
}

QString SampleLogErrorMessage(const QString& path, const QString& reason) {
    return QStringLiteral("Logging to \"") + path + QStringLiteral("\" stopped: ") + reason +
           QStringLiteral(
               ". The rows written before are kept in the file and the collection goes on. "
               "Free some space or choose another file, then log again.");
}

}  // namespace lxm
