#pragma once

#include <QColor>
#include <QWidget>

namespace lxm {

// A lamp: a small filled shape whose fill colour is the whole of its state.
class Shape : public QWidget {
public:
    explicit Shape(QWidget* parent = nullptr, QColor fill = Qt::black);

    QColor FillColor() const { return fill_; }
    void setFillColor(const QColor& c);
    // Palette-indexed variant, the common case for indicator lamps.
    void setFillIndex(int paletteIndex);
    bool hasFillIndex(int paletteIndex) const;

    QSize sizeHint() const override { return {18, 14}; }

protected:
    void paintEvent(QPaintEvent*) override;

private:
    QColor fill_;
};

}  // namespace lxm
