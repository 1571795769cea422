#include "frmScriptOps.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace lxm {

frmScriptOps::frmScriptOps(Session& session, QWidget* parent) : QWidget(parent, Qt::Window), s_(session) {
    setWindowTitle(QStringLiteral("Script Operations"));
    auto* root = new QVBoxLayout(this);
    grid = new QTableWidget(0, 5, this);
    grid->setHorizontalHeaderLabels({"Op", "Register", "Data", "Expected", "Result"});
    grid->horizontalHeader()->setStretchLastSection(true);
    root->addWidget(grid);
    root->addWidget(new QLabel(QStringLiteral("No script loaded."), this));
    resize(520, 360);
}

}  // namespace lxm
