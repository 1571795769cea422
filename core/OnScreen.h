#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

class QWidget;

namespace lxm {

// Where a window frame `outer` goes to lie wholly inside `room`, moved as little as it can; a
// frame larger than the room keeps its top-left corner, and so its title bar, on it.
QPoint OnScreenCorner(const QRect& outer, const QRect& room);

// The client size for a window that wants `want` (at least `minimum`) with a frame of `frame`
// around it, so that the whole frame fits `room`.
QSize FittedSize(const QSize& want, const QSize& minimum, const QSize& room, const QSize& frame);

// Once the window manager has framed and placed a window just shown (its frame is not known
// before), moves it wholly onto its screen's free area. Its size is left alone: the forms size
// themselves to the screen when they load.
void KeepOnScreenWhenFramed(QWidget& window);
inline constexpr int kFrameSettleMs = 150;

}  // namespace lxm
