#include "device/parts/Controls.h"

#include <QGridLayout>
#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QToolTip>

#include <algorithm>

#include "transport/Session.h"

namespace lxm {

EllipsisButton::EllipsisButton(const QString& text, const QString& fitsWidth, QWidget* parent)
    : QPushButton(text, parent), fits_(fitsWidth) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

// As the style sizes a button with the caption it is made to fit, to the pixel and in the font
// it has once shown: the form is laid out to the width of a laptop screen.
QSize EllipsisButton::sizeHint() const {
    ensurePolished();
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text = fits_;
    const QSize text = fontMetrics().size(Qt::TextShowMnemonic, fits_);
    const QSize contents(text.width(), std::max(text.height(), 14));
    option.rect.setSize(contents);
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, contents, this);
}

// Where the style puts a push button's caption.
QRect EllipsisButton::TextRect() const {
    QStyleOptionButton option;
    initStyleOption(&option);
    return style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
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
