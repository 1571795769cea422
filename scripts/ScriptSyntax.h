#pragma once

// Script files of register operations: the line syntax, the rows of the script grid, and the
// packets a row puts on the wire. Plain C++ without Qt, so that the form, the command-line
// runner and the fuzz target all use the same code.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lxm::scripts {

// Limits that keep a hostile or mistaken file from taking the program down with it.
constexpr std::size_t kMaxFileBytes = 1 << 20;
constexpr std::size_t kMaxRows = 10000;
constexpr std::size_t kMaxLineChars = 1000;
constexpr std::size_t kMaxPacketBytes = 64;  // one full-speed bulk packet
constexpr int kMaxRegisterBytes = 4;
constexpr int kMaxReadBytes = 4;  // what the board reads in one transaction
constexpr std::uint32_t kMaxDelayMs = 3'600'000;

enum class RowKind {
    Nop,         // comment or empty row: nothing happens
    Blank,       // an empty line
    SetAddress,  // `A: the I2C address of the following rows
    KeyPause,    // `w: wait for the user
    Delay,       // `wN: wait N milliseconds
    Register,    // register write and/or read
    Error,       // cannot run; `error` says why
};

// The nine columns of the grid, in order.
enum Column {
    kColLine,
    kColI2cAdr,
    kColRegAdr,
    kColDataWr,
    kColDataRd,
    kColActRd,
    kColOperation,
    kColComment,
    kColAdDecimal,
    kColumnCount
};
extern const char* const kColumnHeaders[kColumnCount];

struct ScriptRow {
    int line = 0;     // 1-based; also the row's number in the grid
    std::string raw;  // the line as read, without its line end (cut short when very long)
    RowKind kind = RowKind::Nop;

    // Cell texts of the grid.
    std::string i2cAdr, regAdr, dataWr, dataRd, actRd, operation = "NOP", comment, adDecimal;

    // The file's own comment from "#" on, kept apart from the notes the loader adds to the
    // comment cell, so that the row can be written back as it was meant.
    std::string note;
    std::string command;  // a command without blanks, "`A88", "`w250"

    std::vector<std::uint8_t> reg;    // register address bytes
    std::vector<std::uint8_t> write;  // data bytes to write
    int readBytes = 0;
    std::vector<std::uint8_t> expect;  // expected read bytes
    std::vector<std::uint8_t> mask;    // per expected byte: the bits that are compared ("X" digits are not)
    std::uint32_t delayMs = 0;
    std::string error;  // why the row cannot run; empty when it can

    bool compares() const;
};

enum class LoadProblem { None, Empty, TooLarge, Binary };

struct LoadResult {
    std::vector<ScriptRow> rows;
    LoadProblem problem = LoadProblem::None;
    bool blankLine = false;  // at least one row is an empty line
    int blankLines = 0;      // how many
    bool truncated = false;  // more rows than kMaxRows; the rest was not loaded
    int errorRows = 0;
    const ScriptRow* FirstError() const;
};

// One line of a script file (no line end) into a grid row.
ScriptRow ParseLine(std::string_view line, int lineNumber);

// A whole file's bytes. Lines end in LF or CR LF; a last line without a line end counts; a
// line "END" ends the script.
LoadResult LoadScript(std::string_view bytes);

// Hex text of an I2C address as typed ("88", "8") to an 8-bit write address; nothing when the
// text is not one or two hex digits or the address is odd (a read address).
std::optional<std::uint8_t> ParseWriteAddress(std::string_view text);

// One packet of a row and the length of the reply the host asks for (0 for none).
struct Packet {
    std::vector<std::uint8_t> bytes;
    int replyLength = 0;
};

// The packets a row sends with the given write address: a write (byte 0 = 0, the write
// address, the register bytes, the data bytes) unless the row only reads, then a read
// (byte 0 = the byte count, the read address, the register bytes). Rows that send nothing give
// none.
std::vector<Packet> BuildPackets(const ScriptRow& row, std::uint8_t writeAddress);

// A read's verdict: the reply's status byte must be the byte count, and every compared bit must
// match.
bool ReadPasses(const ScriptRow& row, int status, const std::vector<std::uint8_t>& data);

// The read bytes as a little-endian number in decimal ("AD Decimal"), as a data register pair
// low byte first is read.
std::string LittleEndianDecimal(const std::vector<std::uint8_t>& data);

// Upper-case hex, two digits per byte, no separators ("0A1B").
std::string HexBytes(const std::vector<std::uint8_t>& data);
// The same with a blank between bytes, for showing packets ("00 88 02 1F").
std::string HexSpaced(const std::vector<std::uint8_t>& data);

// The row's nine cell texts in column order.
std::vector<std::string> Cells(const ScriptRow& row);

// Texts of the exported grid: one CSV record per row with the headers first, every field
// quoted; lines end in CR LF.
std::string CsvHeader();
std::string CsvRow(const std::vector<std::string>& cells);

// A row as a script line that loads back into the same row. Empty lines are written as an
// empty comment so that the file loads without the blank-line message.
std::string ScriptLine(const ScriptRow& row);

}  // namespace lxm::scripts
