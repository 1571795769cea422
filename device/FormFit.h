#pragma once

#include <QScrollArea>
#include <initializer_list>

class QGroupBox;

// What makes a device form fit a laptop screen, for every device form alike.
namespace lxm {

// The controls beside the strip chart: their full size is asked for, so they never scroll
// sideways, and they scroll up and down only on a screen too small for them.
class ControlsArea : public QScrollArea {
public:
    explicit ControlsArea(QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

// The window at its layout's natural size, as far as its screen has room, and wholly on the
// screen. A maximised window keeps its size.
void FitWindow(QWidget& window);
// Moves a window that reaches past its screen's edge back onto it, its title bar first.
void KeepOnScreen(QWidget& window);
constexpr int kSettleMs = 100;

// These keep their room while hidden, so that showing and hiding them moves nothing else.
void KeepRoomWhenHidden(std::initializer_list<QWidget*> widgets);

// Small margins inside every frame of the window but the ones named.
void TightFrames(QWidget& window, std::initializer_list<QGroupBox*> except = {});

}  // namespace lxm
