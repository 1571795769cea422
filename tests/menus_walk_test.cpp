// The ways in from the menus: every item of both device forms' menus is there and enabled, and
// File, View and Help reach what they name; Help finds the documents of a package first.
#include <gtest/gtest.h>
#include <QAction>
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
    QStringList opened;
    int simulatedBoardShown = 0;

    // The form as the start-up window opens it, with the menus' seams recorded.
    template <class Form>
    Form& Open(const QString& sensor, Form* (frmStartup::*get)()) {
        startup = std::make_unique<frmStartup>(session, QString());
        startup->onExit = [] {};
        startup->showSimulatedBoard = [this] { ++simulatedBoardShown; };
        startup->show();
        startup->Form_Load();
        EXPECT_TRUE(startup->SelectSensor(sensor));
        Form& form = *((*startup).*get)();
        form.formMenus->help->openUrl = [this](const QUrl& u) { return opened << u.fileName(), true; };
        return form;
    }
    void TearDown() override { startup.reset(); }

    // Titles in order and every item enabled; Help's items all reach their target; then every
    // File item, with the dialogs cancelled, asks for its file (the count) or says why not.
    void Walk(QMenuBar& bar, FormMenus& m, const QStringList& file, int dialogs) {
        QStringList titles, captions;
        for (QAction* top : bar.actions()) {
            titles << top->text();
            for (QAction* a : top->menu()->actions()) {
                if (a->isSeparator() || !a->isVisible()) continue;
                EXPECT_TRUE(a->isEnabled()) << a->text().toStdString();
                if (top->menu() == m.mnuFile) captions << a->text();
            }
        }
        EXPECT_EQ(titles, QStringList({"File", "View", "Tools", "Setup", "Board", "Help"}));
        EXPECT_EQ(captions, file);
        for (QAction* a : {m.help->mnuUserGuide, m.help->mnuScriptFormat, m.help->mnuExamples,
                           m.help->mnuAbout, m.help->mnuSystemInfo, m.mnuSimulatedBoard})
            a->trigger();
        EXPECT_EQ(opened, QStringList({"README.md", "scripts.md", "examples"}));
        ASSERT_NE(startup->AboutForm(), nullptr);
        EXPECT_TRUE(startup->AboutForm()->isVisible() && startup->AboutForm()->frmSysInfo->isVisible());
        EXPECT_EQ(simulatedBoardShown, 1);
        messages.clear();
        for (QAction* a : m.mnuFile->actions()) a->trigger();
        EXPECT_EQ(files.titles.size(), dialogs) << files.titles.join('|').toStdString();
        EXPECT_EQ(messages.texts.size(), 1) << "\"Write to Disk\" says there are too few readings";
    }
};

TEST_F(MenuWalk, TheFamilyForm) {
    auto& form = Open<frmLXM410>("LXM410", &frmStartup::DeviceForm);
    // The start-up window's Help has the documents and the report, its bar "About".
    EXPECT_TRUE(startup->helpMenu->mnuExamples->isVisible() && startup->helpMenu->mnuSystemInfo->isVisible());
    EXPECT_FALSE(startup->helpMenu->mnuAbout->isVisible());
    FormMenus& m = *form.formMenus;
    // View runs the "USB COMM" toggle only towards the view asked for.
    m.mnuFullView->trigger();
    m.mnuFullView->trigger();
    EXPECT_TRUE(!form.CompactView && form.cmdRead_ADC->isVisibleTo(&form));
    m.mnuCompactView->trigger();
    EXPECT_TRUE(form.CompactView);

    form.mnuDoco_Click();
    form.DocoForm()->frmDataRecord->txtFilePath->setText(dir.filePath("trace.txt"));
    Walk(*form.menuBar, m,
         {"Open Run...", "Record File...", "Write to Disk", "Trace File...", "Save Trace", "Save Picture...",
          "Load Setup...", "Save Setup..."},
         6);
    EXPECT_TRUE(QFile::exists(dir.filePath("trace.txt")));
}

TEST_F(MenuWalk, TheMultiFunctionForm) {
    auto& form = Open<frmLXM600>("LXM600", &frmStartup::MultiFunctionForm);
    form.formMenus->mnuCompactView->trigger();
    EXPECT_FALSE(form.frmDataRecord->isVisibleTo(&form));
    form.formMenus->mnuFullView->trigger();
    EXPECT_TRUE(form.frmDataRecord->isVisibleTo(&form));
    Walk(*form.menuBar, *form.formMenus,
         {"Open Run...", "Record File...", "Write to Disk", "Save Picture...", "Load Setup...",
          "Save Setup..."},
         5);
}

TEST(HelpDocs, ThePackageFirstAndAMissingOneSaysWhereItWasLookedFor) {
    QTemporaryDir pkg, src;
    for (const QString& path : {pkg.filePath("README.md"), src.filePath("README.md")})
        QFile(path).open(QIODevice::WriteOnly);
    EXPECT_EQ(FindDoc(HelpDoc::UserGuide, {pkg.path(), src.path()}), pkg.filePath("README.md"));
    test::BoardFixture fx;
    QMenuBar bar;
    HelpMenu m(fx.session, bar);
    m.docRoots = {pkg.path(), src.path()};
    m.mnuExamples->trigger();
    EXPECT_TRUE(fx.messages.texts.size() == 1 && fx.messages.texts[0].contains(src.path()));
}

}  // namespace
}  // namespace lxm
