#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

#include "core/FileFolders.h"

class QWidget;

namespace lxm {

// Modal messages. The program shows them in message boxes; tests record the text.
class Messages {
public:
    virtual ~Messages() = default;
    // Informational box with an OK button; returns when the user has answered it.
    virtual void MsgBox(const QString& text, const QString& title = {}) = 0;
    // Yes/No question; true for Yes.
    virtual bool Ask(const QString& text, const QString& title = {}) = 0;
};

// The common file dialog. An empty result means the user cancelled.
class FileDialogs {
public:
    virtual ~FileDialogs() = default;
    virtual std::optional<QString> OpenFile(const QString& title, const QString& dir,
                                            const QString& filter) = 0;
    virtual std::optional<QString> SaveFile(const QString& title, const QString& dir,
                                            const QString& filter) = 0;
    // Several files picked at once; a dialog that picks one at a time gives that one.
    virtual QStringList OpenFiles(const QString& title, const QString& dir, const QString& filter) {
        const auto one = OpenFile(title, dir, filter);
        return one && !one->isEmpty() ? QStringList{*one} : QStringList{};
    }
};

// The millisecond clock and the short pauses of the program. Tests substitute a clock
// whose time moves only when they (or a Sleep) move it.
class Clock {
public:
    virtual ~Clock() = default;
    // Milliseconds since an arbitrary start, wrapping like a 32-bit system tick counter.
    virtual std::uint32_t timeGetTime() = 0;
    // Microseconds since the same start; finer time for the simulated sensor.
    virtual std::int64_t Micros() = 0;
    virtual void Sleep(std::uint32_t ms) = 0;
    // A pause as fine as the system's timer allows, for pacing that has to land within a
    // millisecond; a clock without finer pauses takes the nearest whole millisecond.
    virtual void SleepMicros(std::int64_t us) {
        if (us > 0) Sleep(std::uint32_t((us + 500) / 1000));
    }
    // The local date and time, for what the user records in files.
    virtual QDateTime Now() = 0;
};

class SteadyClock final : public Clock {
public:
    SteadyClock();
    std::uint32_t timeGetTime() override;
    std::int64_t Micros() override;
    void Sleep(std::uint32_t ms) override;
    void SleepMicros(std::int64_t us) override;
    QDateTime Now() override;

private:
    std::int64_t start_;
};

class QtMessages final : public Messages {
public:
    explicit QtMessages(QWidget* parent = nullptr) : parent_(parent) {}
    void MsgBox(const QString& text, const QString& title) override;
    bool Ask(const QString& text, const QString& title) override;

private:
    QWidget* parent_;
};

// Every dialog starts where the user last saved or opened a file, the documents folder at first.
class QtFileDialogs final : public FileDialogs {
public:
    std::optional<QString> OpenFile(const QString& title, const QString& dir, const QString& filter) override;
    std::optional<QString> SaveFile(const QString& title, const QString& dir, const QString& filter) override;
    QStringList OpenFiles(const QString& title, const QString& dir, const QString& filter) override;

private:
    DialogStart start_;
};

// The application title shown on message boxes.
inline const char* kAppTitle = "Velmarin ALS - I2C Sensors";

}  // namespace lxm
