#pragma once

#include <QLabel>

namespace lxm {

// A label whose back and fore colours are set as RGB longs (0x00BBGGRR), the way the
// status labels of the forms are coloured.
class ColorLabel : public QLabel {
public:
    explicit ColorLabel(const QString& text = {}, QWidget* parent = nullptr);

    long BackColor() const { return back_; }
    long ForeColor() const { return fore_; }
    void setBackColor(long bgr);
    void setForeColor(long bgr);

private:
    void restyle();
    long back_ = 0xFFFFFF;
    long fore_ = 0;
};

}  // namespace lxm
