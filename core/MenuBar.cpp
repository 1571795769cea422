#include "core/MenuBar.h"

#include <QMenu>
#include <QMenuBar>
#include <QStringList>

namespace lxm {

namespace {

// Titles without their mnemonic ampersands, so "&File" and "File" are the same menu.
QString Plain(QString title) {
    return title.remove(QLatin1Char('&'));
}

int Rank(const QString& title) {
    static const QStringList order{QStringLiteral("File"),  QStringLiteral("View"),
                                   QStringLiteral("Tools"), QStringLiteral("Setup"),
                                   QStringLiteral("Board"), QStringLiteral("Simulator")};
    const QString plain = Plain(title);
    if (plain == QStringLiteral("Help")) return 1000;
    const int i = int(order.indexOf(plain));
    return i >= 0 ? i : 500;  // unknown menus between the known ones and Help
}

}  // namespace

QMenu* MenuNamed(QMenuBar& bar, const QString& title) {
    const int rank = Rank(title);
    QAction* before = nullptr;
    for (QAction* a : bar.actions()) {
        QMenu* m = a->menu();
        if (!m) continue;
        if (Plain(a->text()) == Plain(title)) return m;
        if (!before && Rank(a->text()) > rank) before = a;
    }
    auto* menu = new QMenu(title, &bar);
    bar.insertMenu(before, menu);
    return menu;
}

}  // namespace lxm
