// Loading a board setup file back: what the writer saves reads back the same, a file that is
// not one names its line and changes nothing, and a name without extension is saved as *.lxm.
#include <gtest/gtest.h>
#include <QTemporaryDir>

#include "setup/ReadSetupFile.h"
#include "setup/SetupMenu.h"
#include "setup/frmBoardSetup.h"
#include "support/Files.h"
#include "support/RecordingSeams.h"

namespace lxm {
namespace {

BoardSetup Mixed(bool allOn) {
    BoardSetup s;
    for (int k = 0; k < kSetupChannels; ++k)
        s.channels[std::size_t(k)] = {allOn ? 31 : (k * 7) % kSetupChannels, allOn ? 8 : 1 << (k % 4),
                                      allOn || k % 3 == 0};
    s.power = s.clamp = true;
    s.commonOe = s.broadcast = allOn;
    s.broadcastChannel = 31;
    return s;
}

struct SetupLoad : ::testing::Test {
    QTemporaryDir dir;
    test::RecordingMessages messages;
    test::ScriptedFileDialogs files;
    frmBoardSetup form{messages, files};
};

TEST_F(SetupLoad, WhatTheWindowSavesLoadsBackIntoAnotherWindow) {
    for (const BoardSetup& settings : {BoardSetup{}, Mixed(false), Mixed(true)}) {
        form.Apply(settings);
        files.answers.push_back(dir.filePath("round"));
        form.cmdSave_Click();
        frmBoardSetup other(messages, files);
        files.answers.push_back(dir.filePath("round.lxm"));
        other.cmdLoad_Click();
        EXPECT_EQ(other.Setup(), settings);
    }
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();
}

TEST(SetupParse, ANonSetupTextNamesItsLine) {
    const struct {
        const char* text;
        int line;
        const char* says;
    } cases[] = {
        {"; only comments\r\n", 1, "no setup lines"},
        {"; c\r\ni 0 1 2 1\r\nx 1\r\n", 3, "not a setup item"},
        {"i 32 0 1 1\n", 1, "0 to 31"},
        {"i 0 0 1\n", 1, "i out in gain enable"},
        {"p 1\n\no on\n", 3, "\"o\" is 0 or 1"},
    };
    for (const auto& c : cases) {
        const auto r = ParseSetupFile(QString::fromLatin1(c.text));
        const auto* e = std::get_if<SetupParseError>(&r);
        ASSERT_NE(e, nullptr) << c.text;
        EXPECT_EQ(e->line, c.line) << c.text;
        EXPECT_TRUE(e->reason.contains(QLatin1String(c.says))) << c.text << " -> " << e->reason.toStdString();
    }
    // Items left out keep what the window held.
    BoardSetup start = Mixed(true);
    const auto r = ParseSetupFile(QStringLiteral("p 0\n"), start);
    start.power = false;
    EXPECT_EQ(std::get<BoardSetup>(r), start);
}

TEST_F(SetupLoad, AFileThatIsNotOneIsOneMessageAndChangesNothing) {
    form.Apply(Mixed(false));
    const QString path = dir.filePath("notes.txt");
    ASSERT_TRUE(test::WriteFile(path, "i 0 1 1 1\r\nhello\r\n"));
    files.answers = {path, dir.filePath("missing.lxm")};
    form.cmdLoad_Click();
    form.cmdLoad_Click();
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_TRUE(messages.texts[0].contains(path) && messages.texts[0].contains("line 2"));
    EXPECT_TRUE(messages.texts[1].contains("missing.lxm"));
    EXPECT_EQ(form.Setup(), Mixed(false));
}

}  // namespace
}  // namespace lxm
