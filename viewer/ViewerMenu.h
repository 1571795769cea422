#pragma once

class QMenuBar;
class QWidget;

namespace lxm {

class Messages;
class FileDialogs;

// "File > Open Run...": asks for a logged run and shows it in a new run viewer. Every window
// with a menu bar calls this once while building it.
void AddOpenRunMenu(QMenuBar& menuBar, QWidget& owner, Messages& messages, FileDialogs& files);

}  // namespace lxm
