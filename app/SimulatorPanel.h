#pragma once

#include <QObject>
#include <QWidget>
#include <string>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QSlider;
class QTimer;
class QVBoxLayout;

namespace lxm {

class Shape;

namespace sim {
class SimDriver;
}

// A small control window for the simulated board: the light the sensor sees (ambient lux,
// infrared, a reflecting object and how it varies over time), the chip on the board, the USB
// cable, and the board's three LEDs as lamps.
class SimulatorPanel : public QWidget {
public:
    explicit SimulatorPanel(sim::SimDriver& driver, QWidget* parent = nullptr);

    // Brings the panel to the front, opening it again after it was closed.
    void Reopen();
    // Lamps, cable state, the chip and the light seen right now, from the board.
    void RefreshFromBoard();
    // Puts the chip of a sensor type name on the board (the start-up window's choice);
    // a name without a chip leaves the board as it is.
    void CarryForType(const std::string& type);

    // Scene: each value has a spin box for typing and a slider for sweeping.
    QDoubleSpinBox* spnLux = nullptr;
    QSlider* sldLux = nullptr;
    QDoubleSpinBox* spnIr = nullptr;
    QSlider* sldIr = nullptr;
    QDoubleSpinBox* spnDistance = nullptr;  // 0: nothing in front of the sensor
    QSlider* sldDistance = nullptr;
    QDoubleSpinBox* spnReflectance = nullptr;
    QSlider* sldReflectance = nullptr;
    QComboBox* cboScene = nullptr;  // steady, sine, steps, noise
    QDoubleSpinBox* spnPeriod = nullptr;
    QDoubleSpinBox* spnDepth = nullptr;
    QLabel* lblNow = nullptr;
    // The chip's physics: the light's source, the mains, a cover glass, the temperature, and
    // the noise-free chip (which alone takes "Infrared" from its own box).
    QComboBox* cboSource = nullptr;
    QComboBox* cboMains = nullptr;  // 50 or 60 Hz
    QDoubleSpinBox* spnGlass = nullptr;
    QDoubleSpinBox* spnTemperature = nullptr;
    QCheckBox* chkIdeal = nullptr;
    QComboBox* cboChip = nullptr;  // the chip on the board
    // Cable
    QPushButton* cmdUnplug = nullptr;
    QPushButton* cmdPlug = nullptr;
    QLabel* lblCable = nullptr;
    // Board LEDs
    Shape* lampExternal = nullptr;
    Shape* lampGreen = nullptr;
    Shape* lampRed = nullptr;

    static constexpr int kRefreshMs = 100;

private:
    void Build();
    void BuildPhysics(QVBoxLayout* root);
    void Wire();
    void ApplyScene();
    void LoadScene();

    sim::SimDriver& driver_;
    QTimer* refresh_ = nullptr;
    bool loading_ = false;
};

// Adds a "Simulator" menu with "Simulated Board..." to each window that has a menu bar, as it
// is first shown, so the panel can be brought back from the start-up window and the device
// forms alike. Install on the application.
class SimulatorMenu : public QObject {
public:
    SimulatorMenu(SimulatorPanel& panel, QObject* parent = nullptr) : QObject(parent), panel_(panel) {}

    // Moves the panel beside the program's other windows when it covers one of them or is not
    // wholly on the screen.
    void PlacePanel();
    // How long after a window shows the panel looks at where it is: the window manager needs a
    // moment to frame and place the new window.
    static constexpr int kPlaceDelayMs = 150;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    SimulatorPanel& panel_;
};

}  // namespace lxm
