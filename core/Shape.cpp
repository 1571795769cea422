#include "Shape.h"

#include <QPainter>

#include "Colours.h"

namespace lxm {

Shape::Shape(QWidget* parent, QColor fill) : QWidget(parent), fill_(fill) {
    setMinimumSize(14, 10);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Shape::setFillColor(const QColor& c) {
    if (c == fill_) return;
    fill_ = c;
    update();
}

void Shape::setFillIndex(int paletteIndex) {
    setFillColor(QBColor(paletteIndex));
}

bool Shape::hasFillIndex(int paletteIndex) const {
    return fill_ == QBColor(paletteIndex);
}

void Shape::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(60, 60, 60), 1));
    p.setBrush(fill_);
    p.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
}

}  // namespace lxm
