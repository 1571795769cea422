#include "device/parts/Controls.h"

#include <QGridLayout>
#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QToolTip>

#include "transport/Session.h"

namespace lxm {

namespace {
constexpr int kCaptionPadding = 16;
}

EllipsisButton::EllipsisButton(const QString& text, const QString& fitsWidth, QWidget* parent)
    : QPushButton(fitsWidth, parent) {
    // As wide as the style makes a button of that caption, to the pixel: the form is laid out
    // to the width of a laptop screen.
    width_ = QPushButton::sizeHint().width();
    setText(text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize EllipsisButton::sizeHint() const {
    return {width_, QPushButton::sizeHint().height()};
}

QRect EllipsisButton::TextRect() const {
    return rect().adjusted(kCaptionPadding / 2, 0, -kCaptionPadding / 2, 0);
}

void EllipsisButton::paintEvent(QPaintEvent*) {
    QStylePainter p(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    p.drawControl(QStyle::CE_PushButton, option);
    const QRect inside = TextRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, inside.width());
    p.drawItemText(inside, Qt::AlignCenter, palette(), isEnabled(), shown, QPalette::ButtonText);
}

bool EllipsisButton::event(QEvent* e) {
    // A shortened caption shows whole in the tool tip; otherwise the button's own tip.
    if (e->type() == QEvent::ToolTip && fontMetrics().horizontalAdvance(text()) > TextRect().width()) {
        QToolTip::showText(static_cast<QHelpEvent*>(e)->globalPos(), text(), this);
        return true;
    }
    return QPushButton::event(e);
}

QLineEdit* MakeBox(QWidget* parent, const QString& text, int width) {
    auto* e = new QLineEdit(text, parent);
    e->setFixedWidth(width);
    e->setAlignment(Qt::AlignCenter);
    return e;
}

QGridLayout* MakeOptionArray(QGroupBox* box, CtlArray<QRadioButton>& arr, const OptionItems& items,
                             int perRow) {
    auto* g = new QGridLayout(box);
    g->setVerticalSpacing(1);
    int n = 0;
    for (const auto& [index, caption] : items) {
        arr[index] = new QRadioButton(caption, box);
        g->addWidget(arr[index], n / perRow, n % perRow);
        ++n;
    }
    return g;
}

void WireArray(Session& session, const CtlArray<QRadioButton>& arr, QObject* context,
               const std::function<void(int)>& handler) {
    for (const auto& [index, button] : arr) {
        const int i = index;
        QObject::connect(button, &QRadioButton::clicked, context,
                         AsUserAction(session, [handler, i] { handler(i); }));
    }
}

int SelectedIndex(const CtlArray<QRadioButton>& arr, int fallback) {
    for (const auto& [index, button] : arr)
        if (button->isChecked()) return index;
    return fallback;
}

}  // namespace lxm
