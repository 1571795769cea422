// Board setup files: the exact bytes of a saved file, with the setup form and without its
// controls, the save dialog, and the failures a user sees.
#include <gtest/gtest.h>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include "core/MenuBar.h"
#include "device/frmLXM410.h"
#include "setup/SetupMenu.h"
#include "setup/WriteSetupFile.h"
#include "setup/frmBoardSetup.h"
#include "support/DeviceFixture.h"
#include "support/Files.h"

namespace lxm {
namespace {

const QByteArray kHeader =
    "; LXM90X/3 Applications Board setup file\r\n"
    "; Note: semicolon denotes a comment.\r\n"
    "; type In-Out: i out_chan in_chan gain enable\r\n";

// A file dialog that remembers what it was asked and answers with a fixed name.
class SaveDialog final : public FileDialogs {
public:
    std::optional<QString> OpenFile(const QString&, const QString&, const QString&) override { return {}; }
    std::optional<QString> SaveFile(const QString&, const QString& dir, const QString& filter) override {
        ++asked;
        askedDir = dir;
        askedFilter = filter;
        return answer;
    }
    std::optional<QString> answer;
    int asked = 0;
    QString askedDir, askedFilter;
};

struct SetupFile : ::testing::Test {
    QTemporaryDir dir;
    test::RecordingMessages messages;
    SaveDialog dialog;
    frmBoardSetup form{messages, dialog};

    QString Path(const char* name) const { return dir.filePath(QLatin1String(name)); }
};

TEST_F(SetupFile, TheFormsSettingsAreWrittenByteForByte) {
    // Channel 5 routed from input 3 at the second gain and enabled; the gain of channel 31
    // stepped all the way round and on to "2" again.
    form.txtIn4out[5]->setText("3");
    form.tbGain[5]->click();
    form.tbOutenable[5]->click();
    for (int i = 0; i < 5; ++i) form.tbGain[31]->click();
    form.tbPower->click();
    form.txtBroadcastchan->setText("17");
    form.tbClamp->click();

    QByteArray expected = kHeader;
    for (int k = 0; k < kSetupChannels; ++k) {
        if (k == 5)
            expected += "i 5 3 2 1\r\n";
        else if (k == 31)
            expected += "i 31 31 2 0\r\n";
        else
            expected += QStringLiteral("i %1 %1 1 0\r\n").arg(k).toLatin1();
    }
    expected +=
        "; type Power: p on\r\np 1\r\n"
        "; type Common OE: o enable\r\no 0\r\n"
        "; type Broadcast in: b chan\r\nb 17\r\n"
        "; type Broadcast Enable: e enable\r\ne 0\r\n"
        "; type Clamp Enable: c enable\r\nc 1\r\n";

    const QString path = Path("board.lxm");
    EXPECT_EQ(WriteSetupFile(path, form), std::nullopt);
    EXPECT_EQ(test::ReadFile(path), expected);
}

TEST_F(SetupFile, ChannelBoxesTakeOnlyChannelNumbersAndNeverStayEmpty) {
    form.show();
    QApplication::setActiveWindow(&form);
    QLineEdit* box = form.txtIn4out[2];
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "x-459");
    EXPECT_EQ(box->text(), "4");  // 45 and 49 are no channel of the board
    QTest::keyClick(box, Qt::Key_Backspace);
    EXPECT_EQ(box->text(), "");
    form.txtBroadcastchan->setFocus();
    EXPECT_EQ(box->text(), "0");
    // The toggle's caption follows its state, the file follows the state.
    form.tbOutenable[2]->click();
    EXPECT_EQ(form.tbOutenable[2]->text(), "On");
    EXPECT_EQ(WriteSetupFile(Path("b.lxm"), form), std::nullopt);
    EXPECT_TRUE(test::ReadFile(Path("b.lxm")).contains("\r\ni 2 0 1 1\r\n"));
}

TEST_F(SetupFile, AllReleasedAndAnExistingLongerFileReplacedWhole) {
    const QString path = Path("old.lxm");
    ASSERT_TRUE(test::WriteFile(path, QByteArray(20000, 'x')));
    for (int k = 0; k < kSetupChannels; ++k) form.tbOutenable[k]->setChecked(false);
    EXPECT_EQ(WriteSetupFile(path, form), std::nullopt);
    const QByteArray bytes = test::ReadFile(path);
    EXPECT_FALSE(bytes.contains('x'));
    EXPECT_EQ(bytes.count("\r\n"), 3 + kSetupChannels + 10) << "every line ends in CR LF";
    EXPECT_EQ(bytes.count('\n'), 3 + kSetupChannels + 10);
    for (const char* off : {"\ni 0 0 1 0\r", "\ni 31 31 1 0\r", "\np 0\r", "\no 0\r", "\ne 0\r", "\nc 0\r"})
        EXPECT_TRUE(bytes.contains(off)) << off;
}

TEST_F(SetupFile, AFormWithoutTheControlsGivesTheHeaderAlone) {
    QWidget bare;
    new QLineEdit(&bare);  // unnamed controls do not count
    const QString path = Path("bare.lxm");
    const auto error = WriteSetupFile(path, bare);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, SetupFileError::Kind::MissingControl);
    EXPECT_EQ(error->detail, "txtIn4out(0)");
    EXPECT_EQ(test::ReadFile(path), kHeader);

    // A control of the wrong kind under the right name is missing too, and writing stops at
    // the first one missing, after the lines before it.
    delete form.tbClamp;
    const auto partial = WriteSetupFile(path, form);
    ASSERT_TRUE(partial);
    EXPECT_EQ(partial->detail, "tbClamp");
    const QByteArray bytes = test::ReadFile(path);
    EXPECT_TRUE(bytes.endsWith("e 0\r\n; type Clamp Enable: c enable\r\n")) << bytes.right(60).toStdString();
}

TEST_F(SetupFile, SaveAsksWithTheFilterAndDefaultNameAndCancelDoesNothing) {
    EXPECT_EQ(SaveSetup(form, messages, dialog), std::nullopt);
    EXPECT_EQ(dialog.asked, 1);
    EXPECT_EQ(dialog.askedDir, "LXM200.lxm");
    EXPECT_EQ(dialog.askedFilter, "All Files (*.*);;LXM200 Setup Files(*.lxm)");
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_TRUE(QDir(dir.path()).isEmpty());

    dialog.answer = Path("saved.lxm");
    form.cmdSave->click();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();
    EXPECT_TRUE(test::ReadFile(Path("saved.lxm")).endsWith("c 0\r\n"));
}

TEST_F(SetupFile, AFileThatCannotBeCreatedIsReportedOnceWithPathAndReason) {
    // A folder that does not exist, and a name that is a folder: neither can be created,
    // whoever runs the test.
    const QString inMissing = Path("no-such-folder/board.lxm");
    const QString isFolder = Path("folder.lxm");
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder.lxm"));
    for (const QString& path : {inMissing, isFolder}) {
        messages.clear();
        dialog.answer = path;
        EXPECT_EQ(SaveSetup(form, messages, dialog), std::nullopt);
        ASSERT_EQ(messages.texts.size(), 1) << path.toStdString();
        const QString& text = messages.texts[0];
        EXPECT_TRUE(text.contains(QDir::toNativeSeparators(path))) << text.toStdString();
        // The system's reason follows the path.
        EXPECT_GT(text.indexOf(':', text.indexOf(path) + path.size()), 0) << text.toStdString();
        EXPECT_FALSE(text.endsWith(": .")) << text.toStdString();
    }
    EXPECT_TRUE(QFileInfo(isFolder).isDir());

    // Saving from a window without the controls keeps the header and says what to do.
    QWidget bare;
    messages.clear();
    dialog.answer = Path("bare.lxm");
    EXPECT_EQ(SaveSetup(bare, messages, dialog), Path("bare.lxm"));
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains("Applications Board Setup")) << messages.texts[0].toStdString();
    EXPECT_EQ(test::ReadFile(Path("bare.lxm")), kHeader);
}

// The family form's menu: the setup window, and a save that writes its settings whole.
struct DeviceFormSetup : ::testing::Test, test::BoardFixture {
    QTemporaryDir dir;
};

TEST_F(DeviceFormSetup, TheMenuOpensOneSetupWindowAndSavesItsSettings) {
    OpenSession();
    session.SelectedType = "LXM410";
    frmLXM410 form(session);
    form.Form_Load();
    form.show();

    QMenu* menu = MenuNamed(*form.menuBar, "Setup");
    ASSERT_EQ(menu->actions().size(), 3);
    QAction* open = menu->actions()[0];
    QAction* save = menu->actions()[1];

    open->trigger();
    auto* setup = form.findChild<frmBoardSetup*>();
    ASSERT_NE(setup, nullptr);
    EXPECT_TRUE(setup->isVisible());
    setup->tbOe->click();
    setup->close();
    open->trigger();
    EXPECT_EQ(form.findChildren<frmBoardSetup*>().size(), 1);

    const QString path = dir.filePath("from-menu.lxm");
    files.answers.push_back(path);
    save->trigger();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();
    const QByteArray bytes = test::ReadFile(path);
    EXPECT_EQ(bytes.count('\n'), 3 + kSetupChannels + 10);
    EXPECT_TRUE(bytes.contains("\r\no 1\r\n"));
}

}  // namespace
}  // namespace lxm
