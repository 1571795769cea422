#pragma once

#include <QWidget>
#include <initializer_list>

class QGroupBox;

// What makes a device form fit a laptop screen, for every device form alike.
namespace lxm {

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
