#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

class QWidget;

namespace lxm {

// Where a window of the given frame size goes so that it is fully inside the screen's free
// area and covers the other windows as little as it can: beside them (right, left, below,
// above, the first window first), else in a corner of the screen. Returns the frame's top-left.
QPoint PlaceBeside(const QRect& screen, const QSize& frame, const QList<QRect>& others);

// Moves a top-level window next to the visible top-level windows among `others`, on the screen
// of the first of them. The frame is estimated from theirs until the window has been shown.
void MoveBeside(QWidget& window, const QList<QWidget*>& others);

}  // namespace lxm
