#include "ColorLabel.h"

#include "Colours.h"

namespace lxm {

ColorLabel::ColorLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setAlignment(Qt::AlignCenter);
    setAutoFillBackground(true);
    restyle();
}

void ColorLabel::setBackColor(long bgr) {
    back_ = bgr;
    restyle();
}

void ColorLabel::setForeColor(long bgr) {
    fore_ = bgr;
    restyle();
}

void ColorLabel::restyle() {
    QPalette pal = palette();
    pal.setColor(QPalette::Window, ColorFromLong(back_));
    pal.setColor(QPalette::WindowText, ColorFromLong(fore_));
    setPalette(pal);
}

}  // namespace lxm
