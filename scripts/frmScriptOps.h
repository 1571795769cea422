#pragma once

#include <QWidget>

class QTableWidget;

namespace lxm {

class Session;

// Register scripts: a grid of register operations and commands run against the sensor.
class frmScriptOps : public QWidget {
public:
    explicit frmScriptOps(Session& session, QWidget* parent = nullptr);

    QTableWidget* grid = nullptr;

private:
    Session& s_;
};

}  // namespace lxm
