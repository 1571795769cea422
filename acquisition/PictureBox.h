#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

namespace lxm {

// A fixed-size picture with a persistent image: drawing goes into the image, and the widget
// only repaints what was marked dirty when Refresh is called. Pixel rows count from the top.
class PictureBox : public QWidget {
    Q_OBJECT

public:
    explicit PictureBox(QSize size, QWidget* parent = nullptr);

    // Direct access for block drawing; whoever writes through it marks what changed.
    QImage& image() { return image_; }
    const QImage& image() const { return image_; }

    int ScaleWidth() const { return image_.width(); }
    int ScaleHeight() const { return image_.height(); }

    // An invalid colour outside the picture.
    QColor Pixel(int x, int y) const;
    // Pixels outside the picture are ignored.
    void SetPixel(int x, int y, const QColor& colour);

    void MarkDirty(const QRect& rect);
    QRect DirtyRect() const { return dirty_; }
    // Schedules a repaint of what changed since the last refresh.
    void Refresh();

    QColor BackColor() const { return backColor_; }
    void SetBackColor(const QColor& colour) { backColor_ = colour; }
    QColor ForeColor() const { return foreColor_; }
    void SetForeColor(const QColor& colour) { foreColor_ = colour; }

    // Fills the image with the back colour and puts the print position at the top left.
    void Cls();

    // Text printed into the image with the widget's font in the fore colour. The text's top
    // edge sits at the print position; afterwards the position moves to the start of the
    // next line.
    int CurrentX() const { return currentX_; }
    int CurrentY() const { return currentY_; }
    void SetCurrentX(int x) { currentX_ = x; }
    void SetCurrentY(int y) { currentY_ = y; }
    void Print(const QString& text);
    void PrintAt(int x, int y, const QString& text);
    int TextWidth(const QString& text) const;
    int TextHeight(const QString& text) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage image_;
    QRect dirty_;
    QColor backColor_{Qt::white};
    QColor foreColor_{Qt::black};
    int currentX_ = 0;
    int currentY_ = 0;
};

}  // namespace lxm
