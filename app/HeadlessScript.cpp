#include "HeadlessScript.h"

#include <unistd.h>
#include <QFile>
#include <iostream>

#include "core/Seams.h"
#include "measure/ScriptRun.h"
#include "scripts/ScriptRunner.h"
#include "transport/Session.h"
#include "transport/UsbDriver.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

constexpr int kExitPassed = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUnusable = 2;

class HeadlessObserver final : public scripts::RunObserver {
public:
    HeadlessObserver(Terminal& terminal, std::FILE* out, std::FILE* err, int loops, int firstLine)
        : terminal_(terminal), out_(out), err_(err), loops_(loops), firstLine_(firstLine) {}

    void RowStarting(const scripts::ScriptRow& row) override {
        if (loops_ > 1 && row.line == firstLine_)
            Print(err_, QStringLiteral("Loop %1 of %2\n").arg(++loop_).arg(loops_));
    }

    // Row, operation, packets sent, expected, read, verdict; tab-separated.
    void RowDone(const scripts::ScriptRow& row, const scripts::RowResult& result) override {
        std::string sent;
        for (const auto& p : result.sent) sent += (sent.empty() ? "" : " / ") + scripts::HexSpaced(p);
        const bool reads = row.kind == scripts::RowKind::Register && row.readBytes > 0;
        const std::string line = std::to_string(row.line) + "\t" + row.operation + "\t" +
                                 (sent.empty() ? "--" : sent) + "\t" + (reads ? row.dataRd : "--") + "\t" +
                                 (result.read ? row.actRd : "--") + "\t" +
                                 (result.compared ? (result.passed ? "pass" : "fail") : "-") + "\n";
        std::fputs(line.c_str(), out_);
        std::fflush(out_);
    }

    scripts::PauseAnswer KeyPause(const scripts::ScriptRow& row, const QString& text,
                                  const std::function<bool()>&) override {
        if (!terminal_.Interactive()) {
            Print(err_,
                  QStringLiteral("lxmeval: line %1 is a key-press pause (`w), but there is no terminal to "
                                 "answer it. Run from a terminal, or use a delay (`w and milliseconds) "
                                 "instead.\n")
                      .arg(row.line));
            return scripts::PauseAnswer::Unavailable;
        }
        Print(err_, text + QStringLiteral(" [Enter = OK, c = Cancel]: "));
        std::optional<std::string> answer = terminal_.ReadLine();
        if (!answer) return scripts::PauseAnswer::Abort;
        const QString a = QString::fromStdString(*answer).trimmed().toLower();
        return a == QStringLiteral("c") || a == QStringLiteral("cancel") ? scripts::PauseAnswer::Abort
                                                                         : scripts::PauseAnswer::Continue;
    }

private:
    Terminal& terminal_;
    std::FILE* out_;
    std::FILE* err_;
    int loops_;
    int firstLine_;
    int loop_ = 0;
};

// Reads and checks the script; prints why and returns nothing when it cannot be run.
std::optional<scripts::LoadResult> LoadChecked(const QString& path, std::FILE* err) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        Print(err,
              QStringLiteral("lxmeval: cannot open the script file %1: %2\n").arg(path, f.errorString()));
        return std::nullopt;
    }
    const QByteArray bytes = f.read(qint64(scripts::kMaxFileBytes) + 1);
    if (f.error() != QFileDevice::NoError) {
        Print(err,
              QStringLiteral("lxmeval: cannot read the script file %1: %2\n").arg(path, f.errorString()));
        return std::nullopt;
    }
    scripts::LoadResult loaded =
        scripts::LoadScript(std::string_view(bytes.constData(), std::size_t(bytes.size())));
    QString problem;
    switch (loaded.problem) {
        case scripts::LoadProblem::Empty:
            problem = QStringLiteral("is empty");
            break;
        case scripts::LoadProblem::TooLarge:
            problem = QStringLiteral("is larger than %1 KB and not a script file")
                          .arg(scripts::kMaxFileBytes / 1024);
            break;
        case scripts::LoadProblem::Binary:
            problem = QStringLiteral("holds binary data and is not a script file");
            break;
        case scripts::LoadProblem::None:
            break;
    }
    if (!problem.isEmpty()) {
        Print(err, QStringLiteral("lxmeval: the script file %1 %2\n").arg(path, problem));
        return std::nullopt;
    }
    if (loaded.truncated) {
        Print(err, QStringLiteral("lxmeval: the script file %1 has more than %2 lines\n")
                       .arg(path)
                       .arg(scripts::kMaxRows));
        return std::nullopt;
    }
    // Every row error at once, in the form compilers use, so that an editor can jump to them.
    for (const scripts::ScriptRow& r : loaded.rows)
        if (r.kind == scripts::RowKind::Error)
            Print(err,
                  QStringLiteral("%1:%2: %3\n").arg(path).arg(r.line).arg(QString::fromStdString(r.error)));
    if (loaded.errorRows > 0) return std::nullopt;
    if (loaded.blankLine) Print(err, QStringLiteral("lxmeval: %1: Script File has a blank line\n").arg(path));
    return loaded;
}

}  // namespace

void Print(std::FILE* f, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), f);
    std::fflush(f);
}

QString NotConnectedText() {
    return QStringLiteral("lxmeval: Evaluation Board is not connected, or another application is using it. "
                          "Connect the board (or use --simulate) and run again.\n");
}

bool OpenBoardHeadless(Session& session, const std::string& type, std::FILE* err) {
    session.usb().InitDriver();
    session.usb().OpenDevice();
    if (!session.UsbConnected || !session.DeviceOpen) {
        Print(err, NotConnectedText());
        session.usb().ShutdownUsb();
        return false;
    }
    session.SessionOpen = true;
    session.SelectedType = type;
    session.I2cWriteAddr = 0x88;
    session.I2cReadAddr = 0x89;
    return true;
}

bool StdinTerminal::Interactive() {
    return ::isatty(STDIN_FILENO) == 1;
}

std::optional<std::string> StdinTerminal::ReadLine() {
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    return line;
}

void StreamMessages::MsgBox(const QString& text, const QString&) {
    Print(err_, QStringLiteral("lxmeval: ") + text + QLatin1Char('\n'));
}

bool StreamMessages::Ask(const QString& text, const QString& title) {
    MsgBox(text, title);
    return false;
}

int RunScriptHeadless(const CommandLine& cl, UsbDriver& driver, Clock& clock, Terminal& terminal,
                      std::FILE* out, std::FILE* err) {
    const QString path = QString::fromLocal8Bit(cl.script.value_or(std::string()).c_str());
    std::optional<scripts::LoadResult> loaded = LoadChecked(path, err);
    if (!loaded) return kExitUnusable;
    std::vector<scripts::ScriptRow>& rows = loaded->rows;

    // The type selection's address, as the start-up window sets it for every type.
    const std::string defaultAddress = "88";
    const QString refusal = scripts::ScriptRunner::Refusal(rows, defaultAddress);
    if (!refusal.isEmpty()) {
        Print(err, QStringLiteral("lxmeval: ") + refusal + QLatin1Char('\n'));
        return kExitUnusable;
    }

    // The measuring core: no session and no window object.
    std::unique_ptr<measure::Board> board;
    try {
        board = std::make_unique<measure::Board>(driver, clock);
    } catch (const measure::Error&) {
        Print(err, NotConnectedText());
        return kExitUnusable;
    }
    measure::BoardScriptPort port(*board, [err](const QString& text) {
        Print(err, QStringLiteral("lxmeval: ") + text + QLatin1Char('\n'));
    });
    HeadlessObserver observer(terminal, out, err, cl.loops, rows.front().line);
    scripts::ScriptRunner runner(port, observer);
    const scripts::RunEnd end = runner.Run(rows, defaultAddress, cl.loops, cl.abortOnFail);
    const scripts::RunCounts& c = runner.Counts();
    std::fprintf(out, "%d passed, %d failed\n", c.pass, c.fail);
    std::fflush(out);

    switch (end) {
        case scripts::RunEnd::Done:
            return c.fail > 0 ? kExitFailed : kExitPassed;
        case scripts::RunEnd::StoppedOnFail:
            Print(err, QStringLiteral("lxmeval: stopped at line %1: the read did not match\n")
                           .arg(runner.LastLine()));
            return kExitFailed;
        case scripts::RunEnd::Aborted:
            Print(err, QStringLiteral("lxmeval: cancelled at line %1\n").arg(runner.LastLine()));
            return kExitFailed;
        case scripts::RunEnd::Disconnected:
            Print(err, QStringLiteral("lxmeval: the board went away at line %1\n").arg(runner.LastLine()));
            return kExitUnusable;
        case scripts::RunEnd::PauseUnavailable:
        case scripts::RunEnd::Refused:
        case scripts::RunEnd::NotConnected:
            break;
    }
    return kExitUnusable;
}

}  // namespace lxm
