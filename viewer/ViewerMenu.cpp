#include "ViewerMenu.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "core/MenuBar.h"
#include "core/Seams.h"
#include "viewer/RunViewer.h"

namespace lxm {

void AddOpenRunMenu(QMenuBar& menuBar, QWidget& owner, Messages& messages, FileDialogs& files) {
    QAction* open = MenuNamed(menuBar, QStringLiteral("File"))->addAction(QStringLiteral("Open Run..."));
    open->setToolTip(QStringLiteral("Look back at a logged run: zoom, overlay other runs, export a picture"));
    QObject::connect(open, &QAction::triggered, &owner, [&owner, &messages, &files] {
        // Several runs picked together open overlaid in one viewer.
        const QStringList paths = files.OpenFiles(QStringLiteral("Open Run"), QString(),
                                                  QStringLiteral("Logs (*.csv *.txt);;All Files (*)"));
        if (paths.isEmpty()) return;
        // A window of its own that goes with the program, not with a form that is hidden.
        auto* viewer = new viewer::RunViewer(messages, files, owner.window());
        viewer->setWindowFlag(Qt::Window);
        viewer->show();
        viewer->OpenFiles(paths);
    });
}

}  // namespace lxm
