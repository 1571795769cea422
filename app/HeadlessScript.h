#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "app/CommandLine.h"
#include "core/Seams.h"

namespace lxm {

class Clock;
class UsbDriver;

// Where a key-press pause of a script run without a window is answered.
class Terminal {
public:
    virtual ~Terminal() = default;
    // Someone can answer: standard input is a terminal.
    virtual bool Interactive() = 0;
    // One line typed by the user; nothing at end of input.
    virtual std::optional<std::string> ReadLine() = 0;
};

// Standard input, when it is a terminal.
class StdinTerminal final : public Terminal {
public:
    bool Interactive() override;
    std::optional<std::string> ReadLine() override;
};

// Messages of a run without a window (a disconnect, a log that stopped) go to the error
// stream; a question is answered No, as nobody is there to answer it.
class StreamMessages final : public Messages {
public:
    explicit StreamMessages(std::FILE* err) : err_(err) {}
    void MsgBox(const QString& text, const QString& title = {}) override;
    bool Ask(const QString& text, const QString& title = {}) override;

private:
    std::FILE* err_;
};

class NoFileDialogs final : public FileDialogs {
public:
    std::optional<QString> OpenFile(const QString&, const QString&, const QString&) override { return {}; }
    std::optional<QString> SaveFile(const QString&, const QString&, const QString&) override { return {}; }
};

class Session;

// Writes text to a stream in the locale's encoding and flushes it, so that progress and errors
// appear at once even when the stream is a pipe.
void Print(std::FILE* f, const QString& text);

// The line for a board that cannot be opened, with what to do.
QString NotConnectedText();

// Opens the board for a run without a window, as a type selection of `type` does (the session
// holds it open, the sensor at 0x88/0x89). False, with the reason on `err` and the driver shut
// down, when no board can be opened.
bool OpenBoardHeadless(Session& session, const std::string& type, std::FILE* err);

// Runs the script of the command line without any window, on the measuring core (the chip is
// taken as it is: nothing is written before the script's own rows), prints one line per row and the summary to `out`, progress and errors to `err`, and
// returns the exit status (0 all compared reads passed, 1 a read failed or the run was
// cancelled, 2 the file cannot be loaded or run, or no board). Needs a Qt core application
// for the driver's notifications, and no display.
int RunScriptHeadless(const CommandLine& cl, UsbDriver& driver, Clock& clock, Terminal& terminal,
                      std::FILE* out, std::FILE* err);

}  // namespace lxm
