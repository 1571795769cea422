// The ways in from the menus: every item of File, View and Help of both device forms is there,
// enabled and reaches what it names; Help finds the documents of a package or a source tree.
#include <gtest/gtest.h>
#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>

#include "app/frmAbout2.h"
#include "app/frmStartup.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/Doco.h"
#include "device/parts/FormMenus.h"
#include "device/parts/RecordFrame.h"
#include "support/DeviceFixture.h"

namespace lxm {
namespace {

struct MenuWalk : ::testing::Test, test::BoardFixture {
    QTemporaryDir dir;
    std::unique_ptr<frmStartup> startup;
    QList<QUrl> opened;
    int simulatedBoardShown = 0;

    template <class Form>
    Form& Open(const QString& sensor, Form* (frmStartup::*get)()) {
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->showSimulatedBoard = [this] { ++simulatedBoardShown; };
        startup->show();
        startup->Form_Load();
        EXPECT_TRUE(startup->SelectSensor(sensor));
        Form& form = *((*startup).*get)();
        form.formMenus->openUrl = [this](const QUrl& u) {
            opened << u;
            return true;
        };
        return form;
    }
    void TearDown() override { startup.reset(); }

    // Every item of every menu is enabled; returns the titles in order.
    static QStringList WalkBar(QMenuBar& bar) {
        QStringList titles;
        for (QAction* top : bar.actions()) {
            titles << top->text();
            for (QAction* a : top->menu()->actions()) {
                if (a->isSeparator() || !a->isVisible()) continue;
                EXPECT_TRUE(a->isEnabled()) << a->text().toStdString();
            }
        }
        return titles;
    }

    // Help: the three documents open from the source tree, About and the report show.
    void WalkHelp(FormMenus& m) {
        for (QAction* a : {m.mnuUserGuide, m.mnuScriptFormat, m.mnuExamples}) a->trigger();
        ASSERT_EQ(opened.size(), 3);
        EXPECT_TRUE(opened[0].toLocalFile().endsWith("/README.md"));
        EXPECT_TRUE(opened[1].toLocalFile().endsWith("/scripts.md"));
        EXPECT_TRUE(opened[2].toLocalFile().endsWith("/examples"));
        m.mnuAbout->trigger();
        ASSERT_NE(startup->AboutForm(), nullptr);
        EXPECT_TRUE(startup->AboutForm()->isVisible());
        m.mnuSystemInfo->trigger();
        EXPECT_TRUE(startup->AboutForm()->frmSysInfo->isVisible());
        m.mnuSimulatedBoard->trigger();
        EXPECT_EQ(simulatedBoardShown, 1);
    }

    // File: every item reaches its handler; with the dialogs cancelled each asks for its file.
    static QStringList FileCaptions(FormMenus& m) {
        QStringList captions;
        for (QAction* a : m.mnuFile->actions())
            if (!a->isSeparator()) captions << a->text();
        return captions;
    }
};

TEST_F(MenuWalk, TheFamilyFormsMenusReachEveryWindowAndFile) {
    auto& form = Open<frmLXM410>("LXM410", &frmStartup::DeviceForm);
    FormMenus& m = *form.formMenus;
    EXPECT_EQ(WalkBar(*form.menuBar), QStringList({"File", "View", "Tools", "Setup", "Board", "Help"}));
    EXPECT_EQ(FileCaptions(m), QStringList({"Record File...", "Write to Disk", "Trace File...", "Save Trace",
                                            "Save Picture...", "Load Setup...", "Save Setup..."}));

    // View runs the "USB COMM" toggle only towards the view asked for.
    EXPECT_TRUE(form.CompactView);
    m.mnuFullView->trigger();
    EXPECT_FALSE(form.CompactView);
    EXPECT_TRUE(form.cmdRead_ADC->isVisibleTo(&form));
    m.mnuFullView->trigger();
    EXPECT_FALSE(form.CompactView);
    m.mnuCompactView->trigger();
    EXPECT_TRUE(form.CompactView);

    WalkHelp(m);

    form.mnuDoco_Click();
    form.DocoForm()->frmDataRecord->txtFilePath->setText(dir.filePath("trace.txt"));
    messages.clear();
    for (QAction* a : m.mnuFile->actions()) a->trigger();
    EXPECT_EQ(files.titles.size(), 5) << files.titles.join('|').toStdString();  // record, trace, picture, setup x2
    EXPECT_EQ(messages.texts.size(), 1) << messages.texts.join('|').toStdString();  // too few readings
    EXPECT_TRUE(QFile::exists(dir.filePath("trace.txt")));
}

TEST_F(MenuWalk, TheMultiFunctionFormsMenusReachEveryWindowAndFile) {
    auto& form = Open<frmLXM600>("LXM600", &frmStartup::MultiFunctionForm);
    FormMenus& m = *form.formMenus;
    EXPECT_EQ(WalkBar(*form.menuBar), QStringList({"File", "View", "Tools", "Setup", "Board", "Help"}));
    EXPECT_EQ(FileCaptions(m), QStringList({"Record File...", "Write to Disk", "Save Picture...", "Load Setup...",
                                            "Save Setup..."}));
    EXPECT_FALSE(form.CompactView);
    m.mnuCompactView->trigger();
    EXPECT_TRUE(form.CompactView);
    EXPECT_FALSE(form.frmDataRecord->isVisibleTo(&form));
    m.mnuFullView->trigger();
    EXPECT_TRUE(form.frmDataRecord->isVisibleTo(&form));

    WalkHelp(m);
    for (QAction* a : m.mnuFile->actions()) a->trigger();
    EXPECT_EQ(files.titles.size(), 4) << files.titles.join('|').toStdString();
}

TEST(HelpDocs, FoundInThePackageFirstThenTheSourceTree) {
    QTemporaryDir pkg, src;
    auto touch = [](const QString& path) {
        QDir().mkpath(QFileInfo(path).path());
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    };
    touch(pkg.filePath("README.md"));
    touch(pkg.filePath("scripts.md"));
    touch(src.filePath("README.md"));
    touch(src.filePath("docs/scripts.md"));
    touch(src.filePath("examples/a.txt"));
    const QStringList both{pkg.path(), src.path()};
    EXPECT_EQ(FindDoc(HelpDoc::UserGuide, both), pkg.filePath("README.md"));
    EXPECT_EQ(FindDoc(HelpDoc::ScriptFormat, {src.path()}), src.filePath("docs/scripts.md"));
    EXPECT_EQ(FindDoc(HelpDoc::Examples, both), src.filePath("examples"));
    EXPECT_EQ(FindDoc(HelpDoc::Examples, {pkg.path()}), QString());

    // A document nowhere is one message naming where it was looked for.
    test::BoardFixture fx;
    QMenuBar bar;
    FormMenus m(fx.session, bar, {});
    m.docRoots = {pkg.path()};
    m.openUrl = [](const QUrl&) { return true; };
    m.mnuExamples->trigger();
    ASSERT_EQ(fx.messages.texts.size(), 1);
    EXPECT_TRUE(fx.messages.texts[0].contains(pkg.path()));
}

}  // namespace
}  // namespace lxm
