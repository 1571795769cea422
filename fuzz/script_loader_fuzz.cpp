// Any bytes as a script file: the loader must never crash, and a row may only ever put on the
// wire the bytes its own cells show. The packets are checked against an independent decoding
// of the grid's cell texts, and every row that can run must load back the same from the line
// the program would write for it.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "scripts/ScriptSyntax.h"

using namespace lxm::scripts;

namespace {

[[noreturn]] void Fail(const char* what, const ScriptRow& row) {
    std::fprintf(stderr, "invariant broken: %s (line %d: \"%s\")\n", what, row.line, row.raw.c_str());
    std::abort();
}

void Check(bool ok, const char* what, const ScriptRow& row) {
    if (!ok) Fail(what, row);
}

int Nibble(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A cell of upper-case hex pairs, decoded without the loader's help; X digits count as 0.
bool DecodeCell(const std::string& text, std::vector<std::uint8_t>& out, bool allowX) {
    out.clear();
    if (text.size() % 2) return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        int v = 0;
        for (std::size_t j = i; j < i + 2; ++j) {
            int n = Nibble(text[j]);
            if (n < 0 && allowX && text[j] == 'X') n = 0;
            if (n < 0) return false;
            v = v * 16 + n;
        }
        out.push_back(std::uint8_t(v));
    }
    return true;
}

void CheckPackets(const ScriptRow& row, std::uint8_t address) {
    const std::vector<Packet> packets = BuildPackets(row, address);
    if (row.kind != RowKind::Register) {
        Check(packets.empty(), "a row that is not a register operation sends something", row);
        return;
    }
    std::vector<std::uint8_t> reg, wr, rd;
    Check(DecodeCell(row.regAdr, reg, false), "register cell is not hex pairs", row);
    Check(DecodeCell(row.dataWr, wr, false), "write cell is not hex pairs", row);
    if (row.dataRd != "--") Check(DecodeCell(row.dataRd, rd, true), "read cell is not hex pairs", row);
    Check(!packets.empty() && packets.size() <= 2, "register row sends no packet or too many", row);

    std::size_t next = 0;
    if (!wr.empty() || rd.empty()) {
        std::vector<std::uint8_t> expect{0, address};
        expect.insert(expect.end(), reg.begin(), reg.end());
        expect.insert(expect.end(), wr.begin(), wr.end());
        Check(packets[next].bytes == expect, "write packet differs from the row's cells", row);
        Check(packets[next].replyLength == 0, "a write asks for a reply", row);
        ++next;
    }
    if (!rd.empty()) {
        Check(next < packets.size(), "read packet missing", row);
        std::vector<std::uint8_t> expect{std::uint8_t(rd.size()), std::uint8_t(address | 1)};
        expect.insert(expect.end(), reg.begin(), reg.end());
        Check(packets[next].bytes == expect, "read packet differs from the row's cells", row);
        Check(rd.size() >= 1 && rd.size() <= std::size_t(kMaxReadBytes), "read count out of range", row);
        ++next;
    }
    Check(next == packets.size(), "more packets than the row says", row);
    for (const Packet& p : packets)
        Check(p.bytes.size() <= kMaxPacketBytes, "packet longer than one USB packet", row);
}

void CheckRoundTrip(const ScriptRow& row) {
    if (row.kind == RowKind::Error) return;
    const ScriptRow back = ParseLine(ScriptLine(row), row.line);
    const RowKind kind = row.kind == RowKind::Blank ? RowKind::Nop : row.kind;
    Check(back.kind == kind, "written line loads as another kind of row", row);
    Check(back.reg == row.reg && back.write == row.write && back.expect == row.expect &&
              back.mask == row.mask && back.readBytes == row.readBytes && back.delayMs == row.delayMs &&
              back.i2cAdr == row.i2cAdr,
          "written line loads as a different row", row);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const LoadResult result = LoadScript(bytes);
    if (result.problem != LoadProblem::None) {
        if (!result.rows.empty()) std::abort();
        return 0;
    }
    if (result.rows.size() > kMaxRows) std::abort();
    int line = 0;
    for (const ScriptRow& row : result.rows) {
        Check(row.line == ++line, "rows out of order", row);
        Check(!row.operation.empty(), "empty Operation cell", row);
        Check((row.kind == RowKind::Error) == !row.error.empty(), "error text and kind disagree", row);
        for (std::uint8_t address : {std::uint8_t(0x88), std::uint8_t(0x00), std::uint8_t(0xFE)})
            CheckPackets(row, address);
        CheckRoundTrip(row);
        // The remaining per-row work must not trip the sanitizers either.
        std::vector<std::uint8_t> reply(std::size_t(row.readBytes), 0xA5);
        (void)ReadPasses(row, row.readBytes, reply);
        (void)LittleEndianDecimal(reply);
        (void)CsvRow(Cells(row));
        if (auto a = ParseWriteAddress(row.i2cAdr); a && (*a & 1)) Fail("odd write address accepted", row);
    }
    return 0;
}
