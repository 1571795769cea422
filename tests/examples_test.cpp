// The example scripts the package installs load without a fault, so Help never points at a
// script the program refuses.
#include <gtest/gtest.h>
#include <QDir>
#include <QFile>

#include "scripts/ScriptSyntax.h"

namespace lxm {
namespace {

TEST(ExampleScripts, EachLoadsWithoutAFaultyLine) {
    const QDir dir(QStringLiteral(LXM_SOURCE_DIR "/examples"));
    const QStringList names = dir.entryList({QStringLiteral("*.txt")}, QDir::Files);
    EXPECT_GE(names.size(), 3);
    bool pauses = false, delays = false, compares = false;
    for (const QString& name : names) {
        QFile f(dir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::ReadOnly)) << name.toStdString();
        const scripts::LoadResult r = scripts::LoadScript(f.readAll().toStdString());
        EXPECT_EQ(r.problem, scripts::LoadProblem::None) << name.toStdString();
        EXPECT_FALSE(r.blankLine) << name.toStdString();
        EXPECT_EQ(r.errorRows, 0) << name.toStdString() << ": "
                                  << (r.FirstError() ? r.FirstError()->raw : "");
        for (const scripts::ScriptRow& row : r.rows) {
            pauses = pauses || row.kind == scripts::RowKind::KeyPause;
            delays = delays || row.kind == scripts::RowKind::Delay;
            compares = compares || row.compares();
        }
    }
    EXPECT_TRUE(pauses && delays && compares);
}

}  // namespace
}  // namespace lxm
