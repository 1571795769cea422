#include "core/OnScreen.h"

#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <algorithm>

namespace lxm {

QPoint OnScreenCorner(const QRect& outer, const QRect& room) {
    QPoint corner = outer.topLeft();
    corner.setX(std::max(room.left(), std::min(corner.x(), room.right() + 1 - outer.width())));
    corner.setY(std::max(room.top(), std::min(corner.y(), room.bottom() + 1 - outer.height())));
    return corner;
}

QSize FittedSize(const QSize& want, const QSize& minimum, const QSize& room, const QSize& frame) {
    return want.boundedTo(room - frame).expandedTo(minimum);
}

void KeepOnScreenWhenFramed(QWidget& window) {
    QPointer<QWidget> guard(&window);
    QTimer::singleShot(kFrameSettleMs, &window, [guard] {
        if (!guard || !guard->isVisible() || guard->isMaximized() || guard->isFullScreen()) return;
        const QScreen* screen = guard->screen();
        if (!screen) return;
        const QRect outer = guard->frameGeometry();
        const QPoint corner = OnScreenCorner(outer, screen->availableGeometry());
        if (corner != outer.topLeft()) guard->move(corner);
    });
}

}  // namespace lxm
