#include "device/parts/Controls.h"

#include <QGridLayout>

#include "transport/Session.h"

namespace lxm {

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
