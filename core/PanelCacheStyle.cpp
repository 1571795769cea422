#include "core/PanelCacheStyle.h"

#include <QApplication>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

namespace lxm {

PanelCacheStyle::PanelCacheStyle() : QProxyStyle(QStyleFactory::create(QApplication::style()->name())) {}

void PanelCacheStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                    const QWidget* widget) const {
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    // A painter that scales (the window grabbed or printed larger) gets the panel drawn for
    // that scale.
    if (element != PE_PanelLineEdit || !frame || option->rect.isEmpty() ||
        painter->deviceTransform().type() > QTransform::TxTranslate) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    const qreal dpr = painter->device() ? painter->device()->devicePixelRatio() : 1.0;
    const Look look{option->rect.size(),         dpr, int(option->state), option->palette.cacheKey(),
                    frame->lineWidth, int(frame->features)};
    if (panel_.isNull() || !(look == look_)) {
        look_ = look;
        panel_ = QPixmap(option->rect.size() * dpr);
        panel_.setDevicePixelRatio(dpr);
        panel_.fill(Qt::transparent);
        QStyleOptionFrame atOrigin(*frame);
        atOrigin.rect.moveTo(0, 0);
        QPainter p(&panel_);
        QProxyStyle::drawPrimitive(element, &atOrigin, &p, widget);
    }
    painter->drawPixmap(option->rect.topLeft(), panel_);
}

void UsePanelCache(QWidget* box) {
    if (qobject_cast<PanelCacheStyle*>(box->style())) return;
    auto* style = new PanelCacheStyle;
    style->setParent(box);
    box->setStyle(style);
}

}  // namespace lxm
