#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "scripts/ScriptPort.h"
#include "scripts/ScriptSyntax.h"

namespace lxm {
class Session;
}

namespace lxm::scripts {

enum class PauseAnswer {
    Continue,
    Abort,
    Unavailable,  // nobody can answer (no terminal): the run ends instead of waiting for ever
};

// What one row did on the wire.
struct RowResult {
    std::vector<std::vector<std::uint8_t>> sent;  // the packets, in order
    bool read = false;
    std::vector<std::uint8_t> data;  // the bytes read
    bool compared = false;
    bool passed = false;
};

// Whoever shows a run: the script form or the command line.
class RunObserver {
public:
    virtual ~RunObserver() = default;
    virtual void RowStarting(const ScriptRow& /*row*/) {}
    virtual void RowDone(const ScriptRow& /*row*/, const RowResult& /*result*/) {}
    // A key-press pause. While it waits it must keep asking `aborted` and give up at once when
    // that turns true.
    virtual PauseAnswer KeyPause(const ScriptRow& row, const QString& text,
                                 const std::function<bool()>& aborted) = 0;
    // Lets the user interface and the driver's notifications run: between rows and during delays.
    virtual void Yield();
};

struct RunCounts {
    int total = 0;
    int pass = 0;
    int fail = 0;
};

enum class RunEnd {
    Done,
    StoppedOnFail,
    Aborted,
    PauseUnavailable,
    Refused,       // a row cannot run; nothing was sent
    NotConnected,  // no board at the start; nothing was sent
    Disconnected,  // the board went away during the run
};

// The text of a key-press pause and of a refused address, as the user sees them.
QString PauseText(int line);
QString IllegalAddressText(int line, const std::string& value);

// Runs the rows of a loaded script against the sensor through the session's transport.
class ScriptRunner {
public:
    ScriptRunner(ScriptPort& port, RunObserver& observer);
    // On the window's session (defined with the session's port, in the scripts library).
    ScriptRunner(Session& session, RunObserver& observer);
    ~ScriptRunner();

    // Runs every row `loops` times; each pass starts at the default address. Before anything
    // is sent every row is checked: a row that cannot run, or an address that is not a write
    // address, refuses the whole run with one message; so do a running collection and a bus
    // held by another transfer. Fills in the rows' read cells.
    RunEnd Run(std::vector<ScriptRow>& rows, const std::string& defaultAddress, int loops, bool abortOnFail);

    // Ends the run at the next yield: between rows, in a delay or in a pause.
    void Abort() { abort_ = true; }
    bool Running() const { return running_; }
    const RunCounts& Counts() const { return counts_; }
    // The row at which the last run ended (0 before any).
    int LastLine() const { return lastLine_; }

    // The refusal message for a script, empty when every row can run.
    static QString Refusal(const std::vector<ScriptRow>& rows, const std::string& defaultAddress);

private:
    RunEnd RunRow(ScriptRow& row, std::uint8_t& address, bool abortOnFail);
    RunEnd SendRegisterRow(ScriptRow& row, std::uint8_t address, RowResult& result);
    RunEnd Delay(std::uint32_t ms);
    RunEnd Interrupted();

    std::unique_ptr<ScriptPort> owned_;
    ScriptPort& port_;
    RunObserver& obs_;
    RunCounts counts_;
    bool abort_ = false;
    bool running_ = false;
    int lastLine_ = 0;
};

}  // namespace lxm::scripts
