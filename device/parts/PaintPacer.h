#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace lxm {

// Paints a window at most once a frame. A collection at interval 0 changes the live values
// several hundred times a second, and Qt would repaint the window after every pass: that costs
// more than the pass itself and nobody sees the frames in between. What changed since the last
// paint is kept by Qt and shown at the next one, never more than a frame late.
//
// A frame is 40 ms: 25 a second keep the chart moving smoothly and a typed key or a moved
// window on screen within the 50 ms a user notices, while each frame costs the process a round
// trip to the display server whatever it paints. At the default interval, 60 frames a second
// took more of the processor than all the rest of the collection.
class PaintPacer : public QObject {
public:
    static constexpr int kFrameMs = 40;

    // Watches `window` (a top-level widget) from now on; the pacer belongs to it.
    explicit PaintPacer(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* window_;
    QElapsedTimer sinceLastPaint_;
    QTimer later_;
};

}  // namespace lxm
