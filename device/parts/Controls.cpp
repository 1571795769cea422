#include "device/parts/Controls.h"

#include <QGridLayout>
#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QStringList>
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

QString DescribeRegister(const RegisterName& r, int reg, std::uint8_t value, const QString& how) {
    QStringList lines{QStringLiteral("%1 (register %2), %3 %4")
                          .arg(r.name)
                          .arg(reg)
                          .arg(how, QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper())};
    std::vector<NamedField> fields = r.fields;
    std::stable_sort(fields.begin(), fields.end(),
                     [](const NamedField& a, const NamedField& b) { return a.field.mask > b.field.mask; });
    for (const NamedField& f : fields) {
        const int low = f.field.shift();
        int high = low;
        while (high < 7 && ((f.field.mask >> (high + 1)) & 1)) ++high;
        const QString bits = high == low ? QStringLiteral("bit %1").arg(low) : QStringLiteral("bits %1:%2").arg(high).arg(low);
        lines << QStringLiteral("%1 %2: %3").arg(bits, QLatin1String(f.name)).arg((value & f.field.mask) >> low);
    }
    return lines.join(QLatin1Char('\n'));
}

}  // namespace lxm
