#pragma once

#include <QScrollArea>
#include <vector>

class QHBoxLayout;
class QVBoxLayout;
class QWidget;

namespace lxm {

// The body of a device form: a row along the top and columns of frames below it. The columns
// sit in a scroll area that asks for their whole size but never for more than the screen
// offers, so that on a small screen every frame stays reachable.
class FormColumns {
public:
    explicit FormColumns(QWidget* form, int columns = 4);
    QVBoxLayout* top() const { return top_; }
    QVBoxLayout* column(int i) const { return columns_[std::size_t(i)]; }
    // This column takes the room a larger window has, across and down: the strip chart's.
    void Grow(int i);

private:
    QVBoxLayout* top_ = nullptr;
    std::vector<QVBoxLayout*> columns_;
    QHBoxLayout* row_ = nullptr;
};

class FittingScrollArea : public QScrollArea {
public:
    using QScrollArea::QScrollArea;
    QSize sizeHint() const override;
};

}  // namespace lxm
