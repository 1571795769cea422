#pragma once

#include <functional>

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

namespace lxm {

// A picture with a persistent image: drawing goes into the image, and the widget only repaints
// what was marked dirty when Refresh is called. Everything is addressed in picture units, the
// picture's own fixed size; rows count from the top.
//
// The picture may be shown larger than that size. A pixel picture keeps one image pixel per
// unit and shows each as a block of device pixels without smoothing, so what the pixel routines
// draw stays exactly as drawn. A resolution picture keeps its image at the shown resolution and
// draws text into it at that resolution, so labels stay crisp; it is cleared when its scale
// changes and says so with Rescaled, for its owner to draw it again.
class PictureBox : public QWidget {
    Q_OBJECT

public:
    enum class Scaling { Pixels, Resolution };

    explicit PictureBox(QSize size, QWidget* parent = nullptr, Scaling scaling = Scaling::Pixels);

    // Drawing owed to the picture (a trace drawn once a frame); SettleDrawing does it, so that
    // whatever copies or saves the picture has it whole.
    std::function<void()> owedDrawing;
    void SettleDrawing() {
        if (owedDrawing) owedDrawing();
    }

    // Pixel pictures: one image pixel per unit, for block drawing; whoever writes through it
    // marks what changed. A resolution picture's image holds DisplayScale() pixels per unit.
    QImage& image() { return image_; }
    const QImage& image() const { return image_; }

    int ScaleWidth() const { return size_.width(); }
    int ScaleHeight() const { return size_.height(); }
    QSize PictureSize() const { return size_; }

    // Device pixels per picture unit as shown; 1 until the picture is scaled.
    double DisplayScale() const { return scale_; }
    // Shows the picture at this many device pixels per unit; a picture that does not fit its
    // widget to the layout takes exactly the size that needs.
    void SetDisplayScale(double deviceScale);
    // The picture takes whatever room the layout gives it and scales itself to the largest
    // step that fits (see FitScale), centred across the room and at its top.
    void SetFitToWidget(bool fit);
    // Where the picture is shown inside the widget, in widget coordinates.
    QRectF DisplayRect() const;
    // A rectangle of picture units in widget coordinates, rounded outwards.
    QRect ToWidget(const QRect& units) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

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

signals:
    // The display scale changed; a resolution picture has been cleared.
    void Rescaled();
    // A fitted picture was resized, so where it shows may have moved.
    void Resized();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // The screen's ratio as last looked up: Refresh runs on every collection pass, and the
    // lookup walks up to the window and its screen each time.
    double DevicePixelRatio() const { return dpr_; }
    void LookUpDevicePixelRatio();
    void ApplyScale(double deviceScale);

    QSize size_;
    Scaling scaling_;
    QImage image_;
    QRect dirty_;
    QRect requested_;  // asked to be repainted since the last paint
    double dpr_ = 1.0;
    double scale_ = 1.0;
    bool fit_ = false;
    QColor backColor_{Qt::white};
    QColor foreColor_{Qt::black};
    int currentX_ = 0;
    int currentY_ = 0;
};

// The scale a fitted picture takes: device pixels per picture unit, in steps of a half. Each unit
// becomes a block of whole device pixels, so nothing is smoothed: at whole steps every unit is
// equally wide, and at half steps units alternate between two widths with all even units alike,
// which is where the strip chart's grid lines lie. Room smaller than the picture shrinks it by
// whatever fraction fits.
double FitScale(QSize picture, QSizeF room, double devicePixelRatio);

}  // namespace lxm
