#include "FormFit.h"

#include <QEvent>

#include "core/OnScreen.h"
#include <QGroupBox>
#include <QLayout>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>
#include <algorithm>

namespace lxm {

void FitWindow(QWidget& window) {
    // The view has just changed: settle the sizes now, not at the next event.
    for (QScrollArea* area : window.findChildren<QScrollArea*>()) {
        if (area->widget() && area->widget()->layout()) area->widget()->layout()->activate();
        area->updateGeometry();
    }
    if (window.layout()) window.layout()->activate();
    if (window.isMaximized() || window.isFullScreen()) return;
    QSize want = window.sizeHint();
    const QScreen* screen = window.screen();
    if (!screen) {
        window.resize(want);
        return;
    }
    const QRect room = screen->availableGeometry();
    const QSize frame = window.isVisible() ? window.frameGeometry().size() - window.size() : QSize(0, 0);
    want = FittedSize(want, window.minimumSizeHint(), room.size(), frame);
    window.resize(want);
    if (!window.isVisible()) return;
    // The window manager frames the new size in its own time; look where the window is then.
    QPointer<QWidget> guard(&window);
    QTimer::singleShot(kSettleMs, &window, [guard] {
        if (guard) KeepOnScreen(*guard);
    });
}

void KeepOnScreen(QWidget& window) {
    const QScreen* screen = window.screen();
    if (!screen || window.isMaximized() || window.isFullScreen()) return;
    const QRect outer = window.frameGeometry();
    const QPoint corner = OnScreenCorner(outer, screen->availableGeometry());
    if (corner != outer.topLeft()) window.move(corner);
}

void KeepRoomWhenHidden(std::initializer_list<QWidget*> widgets) {
    for (QWidget* w : widgets) {
        QSizePolicy policy = w->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        w->setSizePolicy(policy);
    }
}

void TightFrames(QWidget& window, std::initializer_list<QGroupBox*> except) {
    for (QGroupBox* box : window.findChildren<QGroupBox*>())
        if (box->layout() && std::find(except.begin(), except.end(), box) == except.end())
            box->layout()->setContentsMargins(6, 3, 6, 4);
}

}  // namespace lxm
