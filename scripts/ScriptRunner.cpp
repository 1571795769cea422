#include "ScriptRunner.h"

#include <algorithm>

#include "core/Seams.h"
#include "core/VbText.h"
#include "core/Yield.h"

namespace lxm::scripts {

namespace {
// Delays are slept in slices this long, so that Abort and the window are served throughout.
constexpr std::int64_t kDelaySliceUs = 10'000;
}  // namespace

void RunObserver::Yield() {
    DoEvents();
}

QString PauseText(int line) {
    return QStringLiteral("Script Pause Line :") + QString::number(line) +
           QStringLiteral(" Click OK to Continue, Cancel to Abort");
}

QString IllegalAddressText(int line, const std::string& value) {
    return QStringLiteral("Illegal I2C address Script Row ") + QString::number(line) +
           QStringLiteral(" Value = ") + QString::fromStdString(value) +
           QStringLiteral(
               "\nAn I2C write address is an even hex number of one or two digits (the read "
               "address is the next one); correct it and run again.");
}

ScriptRunner::ScriptRunner(ScriptPort& port, RunObserver& observer) : port_(port), obs_(observer) {}

ScriptRunner::~ScriptRunner() = default;

QString ScriptRunner::Refusal(const std::vector<ScriptRow>& rows, const std::string& defaultAddress) {
    std::string current = defaultAddress;
    bool valid = ParseWriteAddress(current).has_value();
    for (const ScriptRow& r : rows) {
        switch (r.kind) {
            case RowKind::Error:
                return QStringLiteral("Script Row ") + QString::number(r.line) + QStringLiteral(": ") +
                       QString::fromStdString(r.error) +
                       QStringLiteral(".\nCorrect the script file and load it again; nothing was sent.");
            case RowKind::SetAddress:
                current = r.i2cAdr;
                valid = ParseWriteAddress(current).has_value();
                if (!valid) return IllegalAddressText(r.line, current);
                break;
            case RowKind::Register:
                if (!valid) return IllegalAddressText(r.line, current);
                break;
            default:
                break;
        }
    }
    return {};
}

RunEnd ScriptRunner::Run(std::vector<ScriptRow>& rows, const std::string& defaultAddress, int loops,
                         bool abortOnFail) {
    if (running_) return RunEnd::Refused;
    counts_ = {};
    abort_ = false;
    lastLine_ = 0;
    const QString refusal = Refusal(rows, defaultAddress);
    if (!refusal.isEmpty()) {
        port_.Tell(refusal);
        return RunEnd::Refused;
    }
    if (const auto start = port_.StartRun(); start != ScriptPort::Start::Ready)
        return start == ScriptPort::Start::NoBoard ? RunEnd::NotConnected : RunEnd::Refused;
    running_ = true;

    RunEnd end = RunEnd::Done;
    for (int loop = 0; loop < loops && end == RunEnd::Done; ++loop) {
        // Valid whenever a row uses it: checked above.
        std::uint8_t address = ParseWriteAddress(defaultAddress).value_or(0);
        for (ScriptRow& row : rows) {
            lastLine_ = row.line;
            end = RunRow(row, address, abortOnFail);
            if (end != RunEnd::Done) break;
            obs_.Yield();
            end = Interrupted();
            if (end != RunEnd::Done) break;
        }
    }
    port_.EndRun();
    running_ = false;
    return end;
}

RunEnd ScriptRunner::Interrupted() {
    if (abort_) return RunEnd::Aborted;
    if (!port_.Connected()) return RunEnd::Disconnected;
    return RunEnd::Done;
}

RunEnd ScriptRunner::RunRow(ScriptRow& row, std::uint8_t& address, bool abortOnFail) {
    obs_.RowStarting(row);
    RowResult result;
    switch (row.kind) {
        case RowKind::SetAddress:
            // Checked before the run started.
            address = ParseWriteAddress(row.i2cAdr).value_or(address);
            break;
        case RowKind::Delay: {
            const RunEnd e = Delay(row.delayMs);
            if (e != RunEnd::Done) return e;
            break;
        }
        case RowKind::KeyPause: {
            const PauseAnswer a = obs_.KeyPause(row, PauseText(row.line), [this] { return abort_; });
            if (a == PauseAnswer::Unavailable) return RunEnd::PauseUnavailable;
            if (a == PauseAnswer::Abort || abort_) return RunEnd::Aborted;
            break;
        }
        case RowKind::Register: {
            const RunEnd e = SendRegisterRow(row, address, result);
            if (e != RunEnd::Done) return e;
            break;
        }
        default:
            break;
    }
    obs_.RowDone(row, result);
    if (result.compared && !result.passed && abortOnFail) return RunEnd::StoppedOnFail;
    return RunEnd::Done;
}

RunEnd ScriptRunner::SendRegisterRow(ScriptRow& row, std::uint8_t address, RowResult& result) {
    if (!port_.StartRow()) return RunEnd::Refused;
    row.i2cAdr = Hex2(address).toStdString();
    bool transferFailed = false;
    int status = 0;
    for (const Packet& p : BuildPackets(row, address)) {
        std::vector<std::uint8_t> reply = port_.Exchange(p.bytes, p.replyLength, transferFailed);
        result.sent.push_back(p.bytes);
        if (p.replyLength > 0) {
            result.read = true;
            status = reply.empty() ? 0 : reply[0];
            result.data.assign(std::size_t(row.readBytes), 0);
            for (std::size_t i = 0; i < result.data.size() && i + 1 < reply.size(); ++i)
                result.data[i] = reply[i + 1];
        }
    }
    port_.EndRow();
    if (transferFailed) {
        // A board pulled out mid-row: let its detach arrive, and end without counting a read
        // that never had a chance.
        obs_.Yield();
        if (!port_.Connected()) return RunEnd::Disconnected;
    }
    if (result.read) {
        row.actRd = HexBytes(result.data);
        row.adDecimal = LittleEndianDecimal(result.data);
        if (row.compares()) {
            result.compared = true;
            result.passed = ReadPasses(row, status, result.data);
            ++counts_.total;
            ++(result.passed ? counts_.pass : counts_.fail);
        }
    }
    return RunEnd::Done;
}

RunEnd ScriptRunner::Delay(std::uint32_t ms) {
    Clock& clock = port_.clock();
    const std::int64_t end = clock.Micros() + std::int64_t(ms) * 1000;
    for (;;) {
        obs_.Yield();
        const RunEnd e = Interrupted();
        if (e != RunEnd::Done) return e;
        const std::int64_t left = end - clock.Micros();
        if (left <= 0) return RunEnd::Done;
        // Never less than a millisecond: a clock with only whole milliseconds would not move.
        clock.SleepMicros(std::clamp(left, std::int64_t(1000), kDelaySliceUs));
    }
}

}  // namespace lxm::scripts
