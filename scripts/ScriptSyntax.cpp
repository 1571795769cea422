#include "ScriptSyntax.h"

#include <algorithm>

namespace lxm::scripts {

const char* const kColumnHeaders[kColumnCount] = {"Line",   "I2C Adr",   "Reg Adr", "Data_Wr",   "Data_Rd",
                                                  "Act_Rd", "Operation", "Comment", "AD Decimal"};

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::string Upper(std::string s) {
    for (char& c : s)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return s;
}

std::string WithoutBlanks(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    for (char c : s)
        if (!IsBlank(c)) out += c;
    return out;
}

std::string_view Trimmed(std::string_view s) {
    while (!s.empty() && (IsBlank(s.front()) || s.front() == '\r')) s.remove_prefix(1);
    while (!s.empty() && (IsBlank(s.back()) || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

std::string Join(const std::string& a, const std::string& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    return a + " " + b;
}

// A hex field of a register line. Pairs of digits make bytes, first pair first. An odd count
// is refused rather than guessed at: a dropped or shifted digit would put a byte on the wire
// that nobody wrote.
struct HexField {
    std::string text;
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> mask;
    std::string error;
};

HexField ParseHexField(std::string s, const char* what, bool padThree, bool dontCare) {
    HexField f;
    if (s.size() == 1 || (padThree && s.size() == 3)) s = "0" + s;
    f.text = Upper(s);
    if (f.text.size() % 2 != 0) {
        f.error = std::string(what) + " \"" + f.text + "\" has an odd number of hex digits";
        return f;
    }
    for (std::size_t i = 0; i < f.text.size(); i += 2) {
        std::uint8_t value = 0, mask = 0;
        for (std::size_t j = i; j < i + 2; ++j) {
            const char c = f.text[j];
            value = std::uint8_t(value << 4);
            mask = std::uint8_t(mask << 4);
            const int d = HexDigit(c);
            if (d >= 0) {
                value = std::uint8_t(value | d);
                mask = std::uint8_t(mask | 0xF);
            } else if (!(dontCare && c == 'X')) {
                f.error = std::string(what) + " \"" + f.text + "\" holds a character that is not a hex digit";
                return f;
            }
        }
        f.bytes.push_back(value);
        f.mask.push_back(mask);
    }
    return f;
}

void MakeError(ScriptRow& r, std::string operation, std::string why) {
    r.kind = RowKind::Error;
    r.operation = std::move(operation);
    r.error = why;
    r.comment = Join(why, r.note);
}

void ParseCommand(ScriptRow& r, const std::string& cmd) {
    r.command = cmd;
    r.comment = r.note;
    if (cmd.size() >= 2 && cmd[1] == 'A') {
        r.kind = RowKind::SetAddress;
        r.operation = "Cmd:Set I2C Adr";
        // One digit gets a "0" in front. Anything but one or two characters is kept as typed,
        // so that the run refuses it by name instead of guessing at a digit.
        const std::string rest = cmd.substr(2);
        r.i2cAdr = rest.size() == 1 ? "0" + Upper(rest) : Upper(rest);
        return;
    }
    if (cmd == "`w") {
        r.kind = RowKind::KeyPause;
        r.operation = "Cmd: Delay Keypress";
        return;
    }
    if (cmd.size() > 2 && cmd[1] == 'w') {
        const std::string digits = cmd.substr(2);
        const bool numeric =
            std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!numeric) {
            r.kind = RowKind::Error;
            r.operation = "Error Delay_Time";
            r.error = "Delay time is not numeric";
            r.comment = "Delay Error: Time not numeric" + (r.note.empty() ? "" : " " + r.note);
            return;
        }
        std::uint64_t ms = 0;
        for (char c : digits) {
            ms = ms * 10 + std::uint64_t(c - '0');
            if (ms > kMaxDelayMs) break;
        }
        if (ms > kMaxDelayMs) {
            r.kind = RowKind::Error;
            r.operation = "Error Delay_Time";
            r.error = "Delay time is more than " + std::to_string(kMaxDelayMs) + " mSec";
            r.comment = "Delay Error: Time out of range" + (r.note.empty() ? "" : " " + r.note);
            return;
        }
        r.kind = RowKind::Delay;
        r.delayMs = std::uint32_t(ms);
        r.operation = "Cmd:Delay :" + digits + ": mSec";
        return;
    }
    MakeError(r, "Cmd:Unknown",
              "Unknown command \"" + cmd + "\" (use `A with an address, `w, or `w with milliseconds)");
}

void ParseRegisterLine(ScriptRow& r, const std::string& code) {
    std::vector<std::string> fields(1);
    for (char c : code) {
        if (c == ',')
            fields.emplace_back();
        else
            fields.back() += c;
    }
    r.comment = r.note;
    if (fields.size() > 3) {
        MakeError(r, "Error", "Too many fields: a register line is register, write data, read data");
        return;
    }
    fields.resize(3);

    HexField reg = ParseHexField(fields[0], "Register address", false, false);
    HexField wr = ParseHexField(fields[1], "Write data", false, false);
    HexField rd = ParseHexField(fields[2], "Read data", true, true);
    r.regAdr = reg.text;
    r.dataWr = wr.text;
    r.dataRd = rd.text.empty() ? "--" : rd.text;
    for (const HexField* f : {&reg, &wr, &rd}) {
        if (!f->error.empty()) {
            MakeError(r, "Error", f->error);
            return;
        }
    }
    if (reg.bytes.size() > std::size_t(kMaxRegisterBytes)) {
        MakeError(r, "Error",
                  "Register address is longer than " + std::to_string(kMaxRegisterBytes) + " bytes");
        return;
    }
    if (rd.bytes.size() > std::size_t(kMaxReadBytes)) {
        MakeError(r, "Error", "A read is 1 to " + std::to_string(kMaxReadBytes) + " bytes");
        return;
    }
    if (3 + reg.bytes.size() + wr.bytes.size() > kMaxPacketBytes) {
        MakeError(r, "Error",
                  "Too much data for one packet: at most " + std::to_string(kMaxPacketBytes - 3) +
                      " register and data bytes");
        return;
    }
    if (reg.bytes.empty() && wr.bytes.empty() && rd.bytes.empty()) {
        MakeError(r, "Error", "No register, write data or read data on this line");
        return;
    }

    r.kind = RowKind::Register;
    r.reg = std::move(reg.bytes);
    r.write = std::move(wr.bytes);
    r.expect = std::move(rd.bytes);
    r.mask = std::move(rd.mask);
    r.readBytes = int(r.expect.size());

    std::string op;
    if (!r.reg.empty())
        op = std::to_string(r.reg.size()) + " Reg:";
    else
        r.comment = Join(r.comment, "No Internal Register");
    if (!r.write.empty()) op = Join(op, "W:" + std::to_string(r.write.size()));
    if (r.readBytes > 0) op = Join(op, "R:" + std::to_string(r.readBytes));
    r.operation = op.empty() ? "NOP" : op;
}

}  // namespace

bool ScriptRow::compares() const {
    return kind == RowKind::Register && readBytes > 0 &&
           std::any_of(mask.begin(), mask.end(), [](std::uint8_t m) { return m != 0; });
}

const ScriptRow* LoadResult::FirstError() const {
    for (const ScriptRow& r : rows)
        if (r.kind == RowKind::Error) return &r;
    return nullptr;
}

ScriptRow ParseLine(std::string_view line, int lineNumber) {
    ScriptRow r;
    r.line = lineNumber;
    if (line.size() > kMaxLineChars) {
        r.raw = std::string(line.substr(0, 60)) + "...";
        MakeError(r, "Error", "Line is longer than " + std::to_string(kMaxLineChars) + " characters");
        return r;
    }
    r.raw = std::string(line);

    const std::size_t hash = line.find('#');
    std::string_view code = line.substr(0, hash);
    if (hash != std::string_view::npos) r.note = std::string(line.substr(hash));
    const std::string stripped = WithoutBlanks(code);

    if (stripped.empty()) {
        r.kind = r.note.empty() ? RowKind::Blank : RowKind::Nop;
        r.comment = r.note;
        return r;
    }
    if (stripped[0] == '`')
        ParseCommand(r, stripped);
    else
        ParseRegisterLine(r, stripped);
    return r;
}

LoadResult LoadScript(std::string_view bytes) {
    LoadResult result;
    if (bytes.size() > kMaxFileBytes) {
        result.problem = LoadProblem::TooLarge;
        return result;
    }
    if (bytes.find('\0') != std::string_view::npos) {
        result.problem = LoadProblem::Binary;
        return result;
    }
    // Editors on some systems put a byte-order mark in front of a text file; it is no part of
    // the first line.
    std::size_t start = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        if (end == std::string_view::npos) end = bytes.size();
        std::string_view line = bytes.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (Trimmed(line) == "END") break;
        if (result.rows.size() == kMaxRows) {
            result.truncated = true;
            break;
        }
        result.rows.push_back(ParseLine(line, int(result.rows.size()) + 1));
        const ScriptRow& r = result.rows.back();
        if (r.kind == RowKind::Blank) result.blankLine = true, ++result.blankLines;
        if (r.kind == RowKind::Error) ++result.errorRows;
    }
    if (result.rows.empty()) result.problem = LoadProblem::Empty;
    return result;
}

std::optional<std::uint8_t> ParseWriteAddress(std::string_view text) {
    if (text.empty() || text.size() > 2) return std::nullopt;
    int value = 0;
    for (char c : text) {
        const int d = HexDigit(c);
        if (d < 0) return std::nullopt;
        value = value * 16 + d;
    }
    if (value & 1) return std::nullopt;
    return std::uint8_t(value);
}

std::vector<Packet> BuildPackets(const ScriptRow& row, std::uint8_t writeAddress) {
    std::vector<Packet> out;
    if (row.kind != RowKind::Register || !row.error.empty()) return out;
    if (!row.write.empty() || row.readBytes == 0) {
        Packet p;
        p.bytes = {0, writeAddress};
        p.bytes.insert(p.bytes.end(), row.reg.begin(), row.reg.end());
        p.bytes.insert(p.bytes.end(), row.write.begin(), row.write.end());
        out.push_back(std::move(p));
    }
    if (row.readBytes > 0) {
        Packet p;
        p.bytes = {std::uint8_t(row.readBytes), std::uint8_t(writeAddress | 1)};
        p.bytes.insert(p.bytes.end(), row.reg.begin(), row.reg.end());
        // As the single-register read asks: the board answers status + count and pads the rest.
        p.replyLength = row.readBytes + 5;
        out.push_back(std::move(p));
    }
    return out;
}

bool ReadPasses(const ScriptRow& row, int status, const std::vector<std::uint8_t>& data) {
    if (status != row.readBytes || data.size() < std::size_t(row.readBytes)) return false;
    for (int i = 0; i < row.readBytes; ++i)
        if ((data[std::size_t(i)] & row.mask[std::size_t(i)]) !=
            (row.expect[std::size_t(i)] & row.mask[std::size_t(i)]))
            return false;
    return true;
}

std::string LittleEndianDecimal(const std::vector<std::uint8_t>& data) {
    if (data.empty()) return {};
    std::uint64_t v = 0;
    for (std::size_t i = std::min<std::size_t>(data.size(), 8); i-- > 0;) v = (v << 8) | data[i];
    return std::to_string(v);
}

std::string HexBytes(const std::vector<std::uint8_t>& data) {
    static const char* digits = "0123456789ABCDEF";
    std::string s;
    for (std::uint8_t b : data) {
        s += digits[b >> 4];
        s += digits[b & 0xF];
    }
    return s;
}

std::string HexSpaced(const std::vector<std::uint8_t>& data) {
    std::string s;
    for (std::uint8_t b : data) s = Join(s, HexBytes({b}));
    return s;
}

std::vector<std::string> Cells(const ScriptRow& r) {
    return {std::to_string(r.line),
            r.i2cAdr,
            r.regAdr,
            r.dataWr,
            r.dataRd,
            r.actRd,
            r.operation,
            r.comment,
            r.adDecimal};
}

std::string CsvRow(const std::vector<std::string>& cells) {
    std::string s;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i) s += ',';
        s += '"';
        for (char c : cells[i]) {
            if (c == '"') s += '"';
            s += c;
        }
        s += '"';
    }
    return s + "\r\n";
}

std::string CsvHeader() {
    return CsvRow(std::vector<std::string>(std::begin(kColumnHeaders), std::end(kColumnHeaders)));
}

std::string ScriptLine(const ScriptRow& row) {
    auto withNote = [&](std::string code) { return Join(code, row.note); };
    switch (row.kind) {
        case RowKind::Blank:
            return "#";
        case RowKind::Nop:
            return row.note.empty() ? "#" : row.note;
        case RowKind::SetAddress:
            return withNote("`A" + row.i2cAdr);
        case RowKind::KeyPause:
        case RowKind::Delay:
            return withNote(row.command);
        case RowKind::Register: {
            std::string code = row.regAdr;
            if (!row.write.empty() || row.readBytes > 0) code += "," + row.dataWr;
            if (row.readBytes > 0) code += "," + row.dataRd;
            return withNote(code);
        }
        case RowKind::Error:
            break;
    }
    return row.raw;
}

}  // namespace lxm::scripts
