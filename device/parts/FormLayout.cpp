#include "device/parts/FormLayout.h"

#include <QHBoxLayout>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>

namespace lxm {

FormColumns::FormColumns(QWidget* form, int columns) {
    auto* root = new QVBoxLayout(form);
    root->setContentsMargins(6, 4, 6, 6);
    root->setSpacing(4);
    top_ = new QVBoxLayout;
    root->addLayout(top_);
    auto* scroll = new FittingScrollArea(form);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    auto* body = new QWidget(scroll);
    auto* row = row_ = new QHBoxLayout(body);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    for (int i = 0; i < columns; ++i) {
        auto* col = new QVBoxLayout;
        row->addLayout(col);
        columns_.push_back(col);
    }
    row->addStretch(1);
    scroll->setWidget(body);
    root->addWidget(scroll, 1);
}

void FormColumns::Grow(int i) {
    // The trailing stretch gives way to the column.
    const int last = row_->count() - 1;
    if (last >= 0 && row_->itemAt(last)->spacerItem()) delete row_->takeAt(last);
    row_->setStretch(i, 1);
}

QSize FittingScrollArea::sizeHint() const {
    QSize s = widget() ? widget()->sizeHint() : QScrollArea::sizeHint();
    s += QSize(2 * frameWidth() + verticalScrollBar()->sizeHint().width(), 2 * frameWidth());
    if (const QScreen* sc = screen()) {
        // Room for the window frame, the form's own strip and the desktop's panels.
        const QSize avail = sc->availableGeometry().size() - QSize(24, 96);
        s = s.boundedTo(avail);
    }
    return s;
}

}  // namespace lxm
