#include "PictureBox.h"

#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>

namespace lxm {

PictureBox::PictureBox(QSize size, QWidget* parent) : QWidget(parent), image_(size, QImage::Format_RGB32) {
    setFixedSize(size);
    // The image covers the whole widget, so nothing underneath needs painting first.
    setAttribute(Qt::WA_OpaquePaintEvent);
    image_.fill(backColor_);
}

QColor PictureBox::Pixel(int x, int y) const {
    if (!image_.valid(x, y)) return {};
    return QColor(image_.pixel(x, y));
}

void PictureBox::SetPixel(int x, int y, const QColor& colour) {
    if (!image_.valid(x, y)) return;
    reinterpret_cast<QRgb*>(image_.scanLine(y))[x] = colour.rgb();
    MarkDirty(QRect(x, y, 1, 1));
}

void PictureBox::MarkDirty(const QRect& rect) {
    dirty_ |= rect.intersected(image_.rect());
}

void PictureBox::Refresh() {
    if (dirty_.isEmpty()) return;
    update(dirty_);
    dirty_ = QRect();
}

void PictureBox::Cls() {
    image_.fill(backColor_);
    currentX_ = 0;
    currentY_ = 0;
    MarkDirty(image_.rect());
}

void PictureBox::Print(const QString& text) {
    const QFontMetrics metrics(font());
    {
        QPainter painter(&image_);
        painter.setFont(font());
        painter.setPen(foreColor_);
        painter.drawText(currentX_, currentY_ + metrics.ascent(), text);
    }
    MarkDirty(QRect(currentX_, currentY_, metrics.horizontalAdvance(text) + 1, metrics.height()));
    currentX_ = 0;
    currentY_ += metrics.height();
}

void PictureBox::PrintAt(int x, int y, const QString& text) {
    currentX_ = x;
    currentY_ = y;
    Print(text);
}

int PictureBox::TextWidth(const QString& text) const {
    return QFontMetrics(font()).horizontalAdvance(text);
}

int PictureBox::TextHeight(const QString&) const {
    return QFontMetrics(font()).height();
}

void PictureBox::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRect r = event->rect();
    painter.drawImage(r, image_, r);
}

}  // namespace lxm
