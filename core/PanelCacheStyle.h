#pragma once

#include <QPixmap>
#include <QProxyStyle>

namespace lxm {

// The window's own style with the sunken panel of a line edit drawn once per size, state and
// palette and copied after that. The panel's rounded, smoothed frame costs three times what
// the text inside it does, and a box that shows a live value repaints with every frame.
// Everything else, the text's margins included, is the window's style's.
class PanelCacheStyle : public QProxyStyle {
    Q_OBJECT

public:
    // The style of the application as it is now.
    PanelCacheStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;

private:
    // Everything the panel's look depends on. One box per style, so one panel is enough.
    struct Look {
        QSize size;
        qreal dpr = 0;
        int state = 0;
        qint64 palette = 0;
        int lineWidth = 0;
        int features = 0;
        bool operator==(const Look&) const = default;
    };
    mutable Look look_;
    mutable QPixmap panel_;
};

// Gives the box its own PanelCacheStyle, which goes with it; a box that has one keeps it.
void UsePanelCache(QWidget* box);

}  // namespace lxm
