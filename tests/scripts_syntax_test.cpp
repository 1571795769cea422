// Script files into grid rows, and grid rows into packets: every line form, and the bad input a
// user's file can hold.
#include <gtest/gtest.h>

#include <string>

#include "scripts/ScriptSyntax.h"

namespace lxm::scripts {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ScriptLoad, EveryLineFormFillsTheGridCells) {
    const struct {
        const char *line, *i2cAdr, *regAdr, *dataWr, *dataRd, *operation, *comment;
    } cases[] = {
        {"`A88", "88", "", "", "", "Cmd:Set I2C Adr", ""},
        {"`A8", "08", "", "", "", "Cmd:Set I2C Adr", ""},
        {"` A 9 a # blanks", "9A", "", "", "", "Cmd:Set I2C Adr", "# blanks"},
        {"`w", "", "", "", "", "Cmd: Delay Keypress", ""},
        {"`w250", "", "", "", "", "Cmd:Delay :250: mSec", ""},
        {"`wx", "", "", "", "", "Error Delay_Time", "Delay Error: Time not numeric"},
        {"`wx #why", "", "", "", "", "Error Delay_Time", "Delay Error: Time not numeric #why"},
        {"# only a comment", "", "", "", "", "NOP", "# only a comment"},
        {"02,1F", "", "02", "1F", "--", "1 Reg: W:1", ""},
        {"2,F", "", "02", "0F", "--", "1 Reg: W:1", ""},
        {"02,1f # set the range", "", "02", "1F", "--", "1 Reg: W:1", "# set the range"},
        {"02,,1F", "", "02", "", "1F", "1 Reg: R:1", ""},
        {"02,,F", "", "02", "", "0F", "1 Reg: R:1", ""},
        {"02,,ABC", "", "02", "", "0ABC", "1 Reg: R:2", ""},
        {"04,A55A,A55A", "", "04", "A55A", "A55A", "1 Reg: W:2 R:2", ""},
        {"0102,AABB", "", "0102", "AABB", "--", "2 Reg: W:2", ""},
        {",1F", "", "", "1F", "--", "W:1", "No Internal Register"},
        {",,1F #current", "", "", "", "1F", "R:1", "#current No Internal Register"},
        {"02", "", "02", "", "--", "1 Reg:", ""},
        {"02,,xx", "", "02", "", "XX", "1 Reg: R:1", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const ScriptRow r = ParseLine(c.line, 7);
        EXPECT_EQ(r.raw, c.line);
        // Line, address, register, write, read, actual read, operation, comment, decimal.
        EXPECT_EQ(Cells(r), (std::vector<std::string>{"7", c.i2cAdr, c.regAdr, c.dataWr, c.dataRd, "",
                                                      c.operation, c.comment, ""}));
    }
}

TEST(ScriptLoad, CommandsCarryWhatTheRunNeeds) {
    EXPECT_EQ(ParseLine("`w", 1).kind, RowKind::KeyPause);
    const ScriptRow delay = ParseLine("`w0250", 1);
    EXPECT_EQ(delay.kind, RowKind::Delay);
    EXPECT_EQ(delay.delayMs, 250u);
    EXPECT_EQ(ParseLine("`w3600000", 1).delayMs, 3'600'000u);
    const ScriptRow tooLong = ParseLine("`w3600001", 1);
    EXPECT_EQ(tooLong.kind, RowKind::Error);
    EXPECT_EQ(tooLong.operation, "Error Delay_Time");
    // Digits far past any integer are out of range, not an overflow.
    EXPECT_EQ(ParseLine("`w99999999999999999999999999", 1).kind, RowKind::Error);
    EXPECT_EQ(ParseLine("`w-5", 1).kind, RowKind::Error);
    EXPECT_EQ(ParseLine("`w1.5", 1).kind, RowKind::Error);
    // An address the loader cannot make sense of is kept as typed, for the run to refuse by name.
    EXPECT_EQ(ParseLine("`A", 1).i2cAdr, "");
    EXPECT_EQ(ParseLine("`A123", 1).i2cAdr, "123");
    EXPECT_EQ(ParseLine("`Azz", 1).i2cAdr, "ZZ");
}

TEST(ScriptLoad, BadRegisterLinesBecomeErrorRowsThatSendNothing) {
    const char* bad[] = {
        "123,45",          // odd register digits: a digit would be dropped
        "02,123",          // odd write digits
        "02,,12345",       // odd read digits after the "0" in front
        "02,GG",           // not hex
        "0x02,1F",         // a prefix is not hex either
        "02,1F,1F,1F",     // too many fields
        "02,,0102030405",  // a read of more than four bytes
        "0102030405,00",   // a register address of five bytes
        ",,",              // nothing to send
        "02,1F\x01",       // a control character
        "`Q",              // unknown command
        "`",               // a bare backquote
        "`W250",           // commands are case-sensitive
    };
    for (const char* line : bad) {
        SCOPED_TRACE(line);
        const ScriptRow r = ParseLine(line, 3);
        EXPECT_EQ(r.kind, RowKind::Error);
        EXPECT_FALSE(r.error.empty());
        EXPECT_NE(r.comment.find(r.error), std::string::npos) << "the grid must say what is wrong";
        EXPECT_TRUE(BuildPackets(r, 0x88).empty());
    }
    // 61 register and data bytes still fit one 64-byte packet; one more does not.
    EXPECT_EQ(ParseLine("02," + std::string(120, 'A'), 1).kind, RowKind::Register);
    EXPECT_EQ(ParseLine("02," + std::string(122, 'A'), 1).kind, RowKind::Error);
    // A very long line is refused whole, and its raw text kept short for the grid.
    const ScriptRow longLine = ParseLine(std::string(5000, '0'), 1);
    EXPECT_EQ(longLine.kind, RowKind::Error);
    EXPECT_LT(longLine.raw.size(), 100u);
}

TEST(ScriptLoad, FilesSplitIntoRowsWhateverTheirLineEnds) {
    const LoadResult lf = LoadScript("# a\n02,1F\n`w250\n");
    const LoadResult crlf = LoadScript("# a\r\n02,1F\r\n`w250\r\n");
    const LoadResult noEnd = LoadScript("# a\r\n02,1F\n`w250");
    const LoadResult bom = LoadScript("\xEF\xBB\xBF# a\r\n02,1F\r\n`w250\r\n");
    for (const LoadResult* r : {&lf, &crlf, &noEnd, &bom}) {
        ASSERT_EQ(r->problem, LoadProblem::None);
        ASSERT_EQ(r->rows.size(), 3u);
        EXPECT_FALSE(r->blankLine);
        EXPECT_EQ(r->rows[0].kind, RowKind::Nop);
        EXPECT_EQ(r->rows[1].dataWr, "1F");
        EXPECT_EQ(r->rows[2].delayMs, 250u);
        EXPECT_EQ(r->rows[2].line, 3);
    }
}

TEST(ScriptLoad, BlankLinesAreRowsAndFlaggedOnceAndEndFinishesTheScript) {
    const LoadResult r = LoadScript("02,1F\n\n   \n02,,1F\n");
    ASSERT_EQ(r.rows.size(), 4u);
    EXPECT_TRUE(r.blankLine);
    EXPECT_EQ(r.rows[1].kind, RowKind::Blank);
    EXPECT_EQ(r.rows[1].operation, "NOP");
    EXPECT_EQ(r.rows[2].kind, RowKind::Blank);
    EXPECT_EQ(r.rows[3].line, 4);

    // END finishes the script.
    const LoadResult ended = LoadScript("02,1F\n END \r\nthis is not read\n");
    ASSERT_EQ(ended.rows.size(), 1u);
    EXPECT_EQ(ended.errorRows, 0);
}

TEST(ScriptLoad, FilesThatAreNoScriptAreRefusedWhole) {
    EXPECT_EQ(LoadScript("").problem, LoadProblem::Empty);
    EXPECT_EQ(LoadScript("END\n").problem, LoadProblem::Empty);
    EXPECT_EQ(LoadScript(std::string_view("02,1F\n\0\x01\x02", 9)).problem, LoadProblem::Binary);
    EXPECT_EQ(LoadScript(std::string(kMaxFileBytes + 1, '#')).problem, LoadProblem::TooLarge);
    std::string many;
    for (std::size_t i = 0; i < kMaxRows + 5; ++i) many += "#\n";
    const LoadResult r = LoadScript(many);
    EXPECT_EQ(r.rows.size(), kMaxRows);
    EXPECT_TRUE(r.truncated);
}

TEST(ScriptPackets, RowsGoOutAsTheirCellsSay) {
    EXPECT_EQ(BuildPackets(ParseLine("02,1F", 1), 0x88).at(0).bytes, (Bytes{0, 0x88, 0x02, 0x1F}));
    EXPECT_EQ(BuildPackets(ParseLine("2,F", 1), 0x88).at(0).bytes, (Bytes{0, 0x88, 0x02, 0x0F}));
    EXPECT_EQ(BuildPackets(ParseLine("04,0A1B", 1), 0x88).at(0).bytes, (Bytes{0, 0x88, 0x04, 0x0A, 0x1B}));
    EXPECT_EQ(BuildPackets(ParseLine("0102,AA", 1), 0x90).at(0).bytes, (Bytes{0, 0x90, 0x01, 0x02, 0xAA}));
    EXPECT_EQ(BuildPackets(ParseLine(",1F", 1), 0x88).at(0).bytes, (Bytes{0, 0x88, 0x1F}));
    EXPECT_EQ(BuildPackets(ParseLine("02", 1), 0x88).at(0).bytes, (Bytes{0, 0x88, 0x02}));

    const auto read = BuildPackets(ParseLine("02,,0A1B", 1), 0x88);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].bytes, (Bytes{2, 0x89, 0x02}));
    EXPECT_GE(read[0].replyLength, 3);

    // Write, then read back what was written.
    const auto both = BuildPackets(ParseLine("04,5A,5A", 1), 0x88);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[0].bytes, (Bytes{0, 0x88, 0x04, 0x5A}));
    EXPECT_EQ(both[0].replyLength, 0);
    EXPECT_EQ(both[1].bytes, (Bytes{1, 0x89, 0x04}));

    for (const char* quiet : {"# comment", "`A90", "`w", "`w10", ""})
        EXPECT_TRUE(BuildPackets(ParseLine(quiet, 1), 0x88).empty()) << quiet;
}

TEST(ScriptPackets, WriteAddressesAreEvenOneOrTwoHexDigits) {
    EXPECT_EQ(ParseWriteAddress("88"), 0x88);
    EXPECT_EQ(ParseWriteAddress("08"), 0x08);
    EXPECT_EQ(ParseWriteAddress("8"), 0x08);
    EXPECT_EQ(ParseWriteAddress("fe"), 0xFE);
    for (const char* bad : {"89", "", "100", "G0", "-2", " 8"}) EXPECT_FALSE(ParseWriteAddress(bad)) << bad;
}

TEST(ScriptPackets, ReadVerdictsHonourStatusAndDontCareDigits) {
    const ScriptRow exact = ParseLine("02,,0A1B", 1);
    EXPECT_TRUE(exact.compares());
    EXPECT_TRUE(ReadPasses(exact, 2, {0x0A, 0x1B}));
    EXPECT_FALSE(ReadPasses(exact, 2, {0x0A, 0x1C}));
    EXPECT_FALSE(ReadPasses(exact, 0, {0x0A, 0x1B})) << "a NACK is a failure even if the zeros matched";
    EXPECT_FALSE(ReadPasses(exact, 2, {0x0A})) << "short data";

    const ScriptRow nibble = ParseLine("02,,1X", 1);
    EXPECT_TRUE(ReadPasses(nibble, 1, {0x1F}));
    EXPECT_FALSE(ReadPasses(nibble, 1, {0x2F}));

    EXPECT_FALSE(ParseLine("02,,XXXX", 1).compares())
        << "a read of nothing but don't-care digits is not counted";
    EXPECT_FALSE(ParseLine("02,1F", 1).compares());
}

TEST(ScriptText, NumbersAndCsv) {
    EXPECT_EQ(LittleEndianDecimal({0x34, 0x12}), "4660");
    EXPECT_EQ(LittleEndianDecimal({0xFF, 0xFF, 0xFF, 0xFF}), "4294967295");
    EXPECT_EQ(LittleEndianDecimal({}), "");
    EXPECT_EQ(HexSpaced({0, 0x88, 0x0A}), "00 88 0A");
    EXPECT_EQ(CsvRow({"a,b", "say \"hi\"", ""}), "\"a,b\",\"say \"\"hi\"\"\",\"\"\r\n");
}

TEST(ScriptText, WrittenScriptsLoadBackIntoTheSameGrid) {
    const char* text = "# set-up\n`A 8\n2,F # range\n\n04,A55A,a55a\n,,1F\n`w\n`w0250 #settle\n02,,xX\n";
    const LoadResult first = LoadScript(text);
    std::string written;
    for (const ScriptRow& r : first.rows) written += ScriptLine(r) + "\r\n";
    written += "END\r\n";
    const LoadResult again = LoadScript(written);
    EXPECT_FALSE(again.blankLine) << "an empty row is written as an empty comment";
    ASSERT_EQ(again.rows.size(), first.rows.size());
    for (std::size_t i = 0; i < first.rows.size(); ++i) {
        SCOPED_TRACE(first.rows[i].raw);
        if (first.rows[i].kind == RowKind::Blank) continue;
        EXPECT_EQ(Cells(again.rows[i]), Cells(first.rows[i]));
    }
}

}  // namespace
}  // namespace lxm::scripts
