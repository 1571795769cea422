#include "WriteSetupFile.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QSaveFile>
#include <QWidget>

namespace lxm {

QString SetupControlName(const char* array, int index) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(index);
}

namespace {

// Reads the controls in file order; the first one missing ends the reading.
class ControlReader {
public:
    explicit ControlReader(const QWidget& form) : form_(form) {}

    std::optional<QString> Text(const QString& name) {
        if (const auto* e = form_.findChild<const QLineEdit*>(name)) return e->text();
        missing_ = name;
        return std::nullopt;
    }
    std::optional<QString> Caption(const QString& name) {
        if (const auto* b = form_.findChild<const QAbstractButton*>(name)) return b->text();
        missing_ = name;
        return std::nullopt;
    }
    // A pressed toggle is "1", a released one "0".
    std::optional<QString> Flag(const QString& name) {
        if (const auto* b = form_.findChild<const QAbstractButton*>(name))
            return b->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
        missing_ = name;
        return std::nullopt;
    }
    const QString& missing() const { return missing_; }

private:
    const QWidget& form_;
    QString missing_;
};

// The lines of the file up to the first missing control.
QStringList SetupLines(const QWidget& form, QString& missing) {
    QStringList lines{QStringLiteral("; LXM90X/3 Applications Board setup file"),
                      QStringLiteral("; Note: semicolon denotes a comment."),
                      QStringLiteral("; type In-Out: i out_chan in_chan gain enable")};
    ControlReader read(form);
    auto done = [&] {
        missing = read.missing();
        return lines;
    };
    for (int k = 0; k < kSetupChannels; ++k) {
        const auto in = read.Text(SetupControlName("txtIn4out", k));
        if (!in) return done();
        const auto gain = read.Caption(SetupControlName("tbGain", k));
        if (!gain) return done();
        const auto enable = read.Flag(SetupControlName("tbOutenable", k));
        if (!enable) return done();
        lines << QStringLiteral("i %1 %2 %3 %4").arg(k).arg(*in, *gain, *enable);
    }
    struct Item {
        const char* comment;
        const char* tag;
        const char* control;
        bool text;
    };
    static constexpr Item kItems[] = {
        {"; type Power: p on", "p ", "tbPower", false},
        {"; type Common OE: o enable", "o ", "tbOe", false},
        {"; type Broadcast in: b chan", "b ", "txtBroadcastchan", true},
        {"; type Broadcast Enable: e enable", "e ", "tbBroadcast", false},
        {"; type Clamp Enable: c enable", "c ", "tbClamp", false},
    };
    for (const Item& item : kItems) {
        lines << QLatin1String(item.comment);
        const QString name = QLatin1String(item.control);
        const auto value = item.text ? read.Text(name) : read.Flag(name);
        if (!value) return done();
        lines << QLatin1String(item.tag) + *value;
    }
    return done();
}

}  // namespace

std::optional<SetupFileError> WriteSetupFile(const QString& fileName, const QWidget& form) {
    QString missing;
    const QStringList lines = SetupLines(form, missing);
    QByteArray bytes;
    for (const QString& l : lines) bytes += l.toUtf8() + "\r\n";

    // Written beside the target and renamed over it, so a failed save never leaves a
    // damaged file where a good one was; a folder that allows no new files but holds a
    // writable file of that name is still written in place.
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return SetupFileError{SetupFileError::Kind::NotWritten, fileName, reason};
    }
    if (!missing.isEmpty()) return SetupFileError{SetupFileError::Kind::MissingControl, fileName, missing};
    return std::nullopt;
}

}  // namespace lxm
