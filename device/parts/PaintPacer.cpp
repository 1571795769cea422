#include "device/parts/PaintPacer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

namespace lxm {

PaintPacer::PaintPacer(QWidget* window) : QObject(window), window_(window) {
    later_.setSingleShot(true);
    // The request held back is sent again once the frame is over; Qt has gathered everything
    // that changed meanwhile.
    connect(&later_, &QTimer::timeout, this, [this] {
        QCoreApplication::postEvent(window_, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
    });
    window_->installEventFilter(this);
}

bool PaintPacer::eventFilter(QObject* watched, QEvent* event) {
    if (watched != window_ || event->type() != QEvent::UpdateRequest) return false;
    if (sinceLastPaint_.isValid() && sinceLastPaint_.elapsed() < kFrameMs) {
        if (!later_.isActive()) later_.start(int(kFrameMs - sinceLastPaint_.elapsed()));
        return true;
    }
    later_.stop();
    sinceLastPaint_.start();
    return false;
}

}  // namespace lxm
