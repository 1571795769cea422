#pragma once

#include <QString>

class QMenu;
class QMenuBar;

namespace lxm {

// The top-level menu of that title, created where it belongs when the bar has none yet, so
// that every window that composes its menus from separate parts shows them in one order:
// File, View, Tools, Setup, Board, Simulator, then any other, and Help last.
QMenu* MenuNamed(QMenuBar& bar, const QString& title);

}  // namespace lxm
