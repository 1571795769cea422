#include "PictureBox.h"

#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace lxm {

double FitScale(QSize picture, QSizeF room, double devicePixelRatio) {
    if (picture.isEmpty() || room.isEmpty()) return 1.0;
    const double fit = std::min(room.width() * devicePixelRatio / picture.width(),
                                room.height() * devicePixelRatio / picture.height());
    // A hair of slack: a room computed from a step must give that step back.
    return fit >= 1.0 ? std::floor(fit * 2 + 1e-9) / 2 : fit;
}

namespace {
// Picture units scaled to widget (logical) units, rounded up.
QSize Scaled(QSize size, double factor) {
    return QSize(int(std::ceil(size.width() * factor - 1e-9)), int(std::ceil(size.height() * factor - 1e-9)));
}
}  // namespace

PictureBox::PictureBox(QSize size, QWidget* parent, Scaling scaling)
    : QWidget(parent), size_(size), scaling_(scaling), image_(size, QImage::Format_RGB32) {
    setFixedSize(size);
    // The widget paints all of itself, so nothing underneath needs painting first.
    setAttribute(Qt::WA_OpaquePaintEvent);
    image_.fill(backColor_);
    LookUpDevicePixelRatio();
}

void PictureBox::LookUpDevicePixelRatio() {
    dpr_ = std::max(1.0, devicePixelRatioF());
}

// A move to another screen, or a screen whose ratio changed, is announced to every widget and
// followed by a repaint; a resize, a new parent and showing look the ratio up too.
bool PictureBox::event(QEvent* event) {
    const QEvent::Type t = event->type();
    if (t == QEvent::ScreenChangeInternal || t == QEvent::ParentChange || t == QEvent::Show) LookUpDevicePixelRatio();
    return QWidget::event(event);
}

void PictureBox::SetFitToWidget(bool fit) {
    LookUpDevicePixelRatio();
    fit_ = fit;
    if (fit) {
        setMinimumSize(minimumSizeHint());
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        ApplyScale(FitScale(size_, QSizeF(width(), height()), DevicePixelRatio()));
    } else {
        setFixedSize(Scaled(size_, scale_ / DevicePixelRatio()));
    }
}

void PictureBox::SetDisplayScale(double deviceScale) {
    LookUpDevicePixelRatio();
    ApplyScale(deviceScale);
    if (!fit_) setFixedSize(Scaled(size_, scale_ / DevicePixelRatio()));
}

void PictureBox::ApplyScale(double deviceScale) {
    if (deviceScale <= 0 || deviceScale == scale_) return;
    scale_ = deviceScale;
    if (scaling_ == Scaling::Resolution) {
        image_ = QImage(Scaled(size_, scale_), QImage::Format_RGB32);
        Cls();
        dirty_ = QRect();
    }
    update();
    emit Rescaled();
}

QSize PictureBox::sizeHint() const {
    return fit_ ? minimumSizeHint() : QWidget::sizeHint();
}

QSize PictureBox::minimumSizeHint() const {
    if (!fit_) return QWidget::minimumSizeHint();
    // The smallest whole scale on this screen: one image pixel per device pixel on a plain
    // screen, two on a doubled one.
    const double dpr = std::max(1.0, devicePixelRatioF());
    return Scaled(size_, std::floor(dpr) / dpr);
}

void PictureBox::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    LookUpDevicePixelRatio();
    if (!fit_) return;
    ApplyScale(FitScale(size_, QSizeF(width(), height()), DevicePixelRatio()));
    emit Resized();
}

QRectF PictureBox::DisplayRect() const {
    const double f = scale_ / DevicePixelRatio();
    const QSizeF shown(size_.width() * f, size_.height() * f);
    if (!fit_) return QRectF(QPointF(0, 0), shown);
    // Centred across and at the top, where the eye looks first; whole logical pixels for the
    // corner, so that whole device scales land on device pixels.
    const QPointF corner(std::floor(std::max(0.0, (width() - shown.width()) / 2)), 0.0);
    return QRectF(corner, shown);
}

QRect PictureBox::ToWidget(const QRect& units) const {
    const QRectF shown = DisplayRect();
    const double f = scale_ / DevicePixelRatio();
    const QRectF r(shown.left() + units.left() * f, shown.top() + units.top() * f, units.width() * f,
                   units.height() * f);
    return r.toAlignedRect();
}

QColor PictureBox::Pixel(int x, int y) const {
    if (!QRect(QPoint(0, 0), size_).contains(x, y)) return {};
    if (scaling_ == Scaling::Pixels) return QColor(image_.pixel(x, y));
    const QPoint at(int(x * scale_), int(y * scale_));
    return image_.valid(at) ? QColor(image_.pixel(at)) : QColor();
}

void PictureBox::SetPixel(int x, int y, const QColor& colour) {
    if (!QRect(QPoint(0, 0), size_).contains(x, y)) return;
    if (scaling_ == Scaling::Pixels) {
        reinterpret_cast<QRgb*>(image_.scanLine(y))[x] = colour.rgb();
    } else {
        QPainter painter(&image_);
        painter.fillRect(QRectF(x * scale_, y * scale_, scale_, scale_), colour);
    }
    MarkDirty(QRect(x, y, 1, 1));
}

void PictureBox::MarkDirty(const QRect& rect) {
    dirty_ |= rect.intersected(QRect(QPoint(0, 0), size_));
}

void PictureBox::Refresh() {
    if (dirty_.isEmpty()) return;
    // A trace step a pass, painted once a frame: the steps between two paints mostly touch
    // what the first of them asked for already, and asking again costs the window's repaint
    // bookkeeping for nothing.
    if (!requested_.contains(dirty_)) {
        requested_ |= dirty_;
        update(ToWidget(requested_));
    }
    dirty_ = QRect();
}

void PictureBox::Cls() {
    image_.fill(backColor_);
    currentX_ = 0;
    currentY_ = 0;
    MarkDirty(QRect(QPoint(0, 0), size_));
}

void PictureBox::Print(const QString& text) {
    const QFontMetrics metrics(font());
    {
        QPainter painter(&image_);
        painter.setRenderHint(QPainter::TextAntialiasing);
        if (scaling_ == Scaling::Resolution) painter.scale(scale_, scale_);
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
    requested_ = QRect();
    LookUpDevicePixelRatio();
    QPainter painter(this);
    const QRectF shown = DisplayRect();
    // Room around a fitted picture takes its back colour.
    const QRegion margin = QRegion(rect()) - QRegion(shown.toAlignedRect());
    for (const QRect& r : margin.intersected(event->region())) painter.fillRect(r, backColor_);

    // No smoothing: a pixel picture shows each pixel as a sharp block, and a resolution
    // picture's image is already at the shown resolution. The whole image is drawn, clipped to
    // what needs repainting, so that every repaint maps units to device pixels alike.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(shown, image_, QRectF(image_.rect()));
}

}  // namespace lxm
