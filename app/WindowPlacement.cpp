#include "WindowPlacement.h"

#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <limits>

namespace lxm {

namespace {

constexpr int kGap = 8;

qint64 Area(const QRect& r) {
    return r.isEmpty() ? 0 : qint64(r.width()) * r.height();
}

QPoint Clamp(const QRect& screen, const QSize& frame, QPoint p) {
    // A window larger than the screen keeps its top-left corner (and so its title bar) on it.
    p.setX(std::max(screen.left(), std::min(p.x(), screen.right() + 1 - frame.width())));
    p.setY(std::max(screen.top(), std::min(p.y(), screen.bottom() + 1 - frame.height())));
    return p;
}

}  // namespace

QPoint PlaceBeside(const QRect& screen, const QSize& frame, const QList<QRect>& others) {
    QList<QPoint> candidates;
    for (const QRect& r : others) {
        candidates << QPoint(r.right() + 1 + kGap, r.top())
                   << QPoint(r.left() - kGap - frame.width(), r.top())
                   << QPoint(r.left(), r.bottom() + 1 + kGap)
                   << QPoint(r.left(), r.top() - kGap - frame.height());
    }
    candidates << QPoint(screen.right() + 1 - frame.width(), screen.top())
               << QPoint(screen.right() + 1 - frame.width(), screen.bottom() + 1 - frame.height())
               << QPoint(screen.left(), screen.bottom() + 1 - frame.height()) << screen.topLeft();

    QPoint best = Clamp(screen, frame, candidates.front());
    qint64 bestCover = std::numeric_limits<qint64>::max();
    for (const QPoint& c : candidates) {
        const QPoint p = Clamp(screen, frame, c);
        const QRect placed(p, frame);
        qint64 cover = 0;
        for (const QRect& r : others) cover += Area(placed.intersected(r));
        if (cover < bestCover) {
            bestCover = cover;
            best = p;
        }
    }
    return best;
}

void MoveBeside(QWidget& window, const QList<QWidget*>& others) {
    QList<QRect> frames;
    QSize margins;
    QScreen* screen = nullptr;
    for (QWidget* w : others) {
        if (!w || !w->isVisible() || w == &window) continue;
        frames << w->frameGeometry();
        if (margins.isEmpty()) margins = w->frameGeometry().size() - w->geometry().size();
        if (!screen) screen = w->screen();
    }
    if (!screen) screen = window.screen();
    if (!screen) return;
    QSize frame = window.frameGeometry().size();
    if (!window.isVisible()) {
        window.adjustSize();
        frame = window.size() + margins.expandedTo(QSize(0, 0));
    }
    window.move(PlaceBeside(screen->availableGeometry(), frame, frames));
}

}  // namespace lxm
