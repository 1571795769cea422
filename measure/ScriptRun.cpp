#include "measure/ScriptRun.h"

#include <QFile>

#include "scripts/ScriptRunner.h"
#include "scripts/ScriptSyntax.h"

namespace lxm::measure {

namespace {
[[noreturn]] void Refuse(const QString& text) {
    throw Error(Error::Kind::BadValue, text);
}

class Counting final : public scripts::RunObserver {
public:
    void RowDone(const scripts::ScriptRow&, const scripts::RowResult&) override { ++rows; }
    scripts::PauseAnswer KeyPause(const scripts::ScriptRow&, const QString&, const std::function<bool()>&) override {
        return scripts::PauseAnswer::Unavailable;
    }
    // Nothing to serve between rows: no window.
    void Yield() override {}
    int rows = 0;
};
}  // namespace

std::vector<std::uint8_t> BoardScriptPort::Exchange(const std::vector<std::uint8_t>& packet, int replyLength,
                                                    bool& failed) {
    try {
        bool ok = true;
        auto reply = board_.Exchange(packet, replyLength, &ok);
        failed = failed || !ok;
        return reply;
    } catch (const Error&) {
        failed = true;
        return std::vector<std::uint8_t>(std::size_t(std::max(replyLength, 0)), 0);
    }
}

ScriptOutcome RunScriptFile(Board& board, const std::string& path, int loops, bool abortOnFail) {
    const QString name = QString::fromStdString(path);
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        Refuse(QStringLiteral("Cannot read the script %1: %2").arg(name, file.errorString()));
    const QByteArray bytes = file.read(qint64(scripts::kMaxFileBytes) + 1);
    scripts::LoadResult load = scripts::LoadScript(std::string_view(bytes.constData(), std::size_t(bytes.size())));
    if (load.problem != scripts::LoadProblem::None || load.truncated)
        Refuse(QStringLiteral("%1 is not a register script (empty, too large or not text)").arg(name));
    if (loops < 1 || loops > 100000) Refuse(QStringLiteral("loops must be 1 to 100000"));

    QString told;
    BoardScriptPort port(board, [&](const QString& text) { told = text; });
    Counting counting;
    scripts::ScriptRunner runner(port, counting);
    const scripts::RunEnd end = runner.Run(load.rows, "88", loops, abortOnFail);
    switch (end) {
        case scripts::RunEnd::Done:
        case scripts::RunEnd::StoppedOnFail:
        case scripts::RunEnd::Aborted:
            break;
        case scripts::RunEnd::PauseUnavailable:
            Refuse(QStringLiteral("%1 line %2 waits for a key press, which nobody can give here: take the "
                                  "pause out or use a delay")
                       .arg(name)
                       .arg(runner.LastLine()));
        case scripts::RunEnd::Refused:
            Refuse(told);
        case scripts::RunEnd::NotConnected:
        case scripts::RunEnd::Disconnected:
            throw Error(Error::Kind::BoardGone,
                        QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers"));
    }
    return ScriptOutcome{runner.Counts().pass, runner.Counts().fail, counting.rows};
}

}  // namespace lxm::measure
