#include "measure/ScriptRun.h"

#include <QFile>

#include "scripts/ScriptSyntax.h"

namespace lxm::measure {

namespace {
[[noreturn]] void Refuse(const QString& text) {
    throw Error(Error::Kind::BadValue, text);
}
}  // namespace

ScriptOutcome RunScriptFile(Board& board, const std::string& path, int loops, bool abortOnFail) {
    const QString name = QString::fromStdString(path);
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        Refuse(QStringLiteral("Cannot read the script %1: %2").arg(name, file.errorString()));
    const QByteArray bytes = file.read(qint64(scripts::kMaxFileBytes) + 1);
    const scripts::LoadResult load = scripts::LoadScript(std::string_view(bytes.constData(), std::size_t(bytes.size())));
    if (load.problem != scripts::LoadProblem::None)
        Refuse(QStringLiteral("%1 is not a register script (empty, too large or not text)").arg(name));
    if (const scripts::ScriptRow* bad = load.FirstError())
        Refuse(QStringLiteral("%1 line %2: %3").arg(name).arg(bad->line).arg(QString::fromStdString(bad->error)));
    if (loops < 1 || loops > 100000) Refuse(QStringLiteral("loops must be 1 to 100000"));

    ScriptOutcome out;
    for (int pass = 0; pass < loops; ++pass) {
        std::uint8_t address = 0x88;
        for (const scripts::ScriptRow& row : load.rows) {
            ++out.rows;
            if (row.kind == scripts::RowKind::SetAddress) {
                const auto a = scripts::ParseWriteAddress(row.i2cAdr);
                if (!a) Refuse(QStringLiteral("%1 line %2: not a write address").arg(name).arg(row.line));
                address = *a;
            } else if (row.kind == scripts::RowKind::Delay) {
                board.Pause(row.delayMs);
            } else if (row.kind == scripts::RowKind::KeyPause) {
                Refuse(QStringLiteral("%1 line %2 waits for a key press, which nobody can give here: take the "
                                      "pause out or use a delay")
                           .arg(name)
                           .arg(row.line));
            } else if (row.kind == scripts::RowKind::Register) {
                int status = 0;
                std::vector<std::uint8_t> data;
                for (const scripts::Packet& p : scripts::BuildPackets(row, address)) {
                    const auto reply = board.Exchange(p.bytes, p.replyLength);
                    if (p.replyLength > 0 && !reply.empty()) {
                        status = reply[0];
                        data.assign(reply.begin() + 1, reply.begin() + 1 + std::min<std::ptrdiff_t>(
                                                                             row.readBytes, std::ptrdiff_t(reply.size()) - 1));
                    }
                }
                if (!row.compares()) continue;
                const bool ok = scripts::ReadPasses(row, status, data);
                ++(ok ? out.passed : out.failed);
                if (!ok && abortOnFail) return out;
            }
        }
    }
    return out;
}

}  // namespace lxm::measure
