#include "SimulatorPanel.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

#include "app/WindowPlacement.h"
#include "core/Seams.h"
#include "core/Shape.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "core/MenuBar.h"

namespace lxm {

namespace {

using Kind = sim::LightScene::Kind;

// Light levels span five decades; a logarithmic slider gives each decade the same travel.
constexpr double kMaxLight = 64000;
constexpr int kLogSteps = 1000;

int LightToSlider(double v) {
    return int(std::lround(std::log10(1.0 + std::max(0.0, v)) / std::log10(1.0 + kMaxLight) * kLogSteps));
}
double SliderToLight(int pos) {
    return std::round(std::pow(10.0, double(pos) / kLogSteps * std::log10(1.0 + kMaxLight)) - 1.0);
}

QDoubleSpinBox* Spin(QWidget* parent, double max, int decimals, const QString& suffix) {
    auto* s = new QDoubleSpinBox(parent);
    s->setRange(0, max);
    s->setDecimals(decimals);
    s->setSuffix(suffix);
    s->setKeyboardTracking(false);
    s->setMinimumWidth(96);
    return s;
}

QSlider* Slider(QWidget* parent, int max) {
    auto* s = new QSlider(Qt::Horizontal, parent);
    s->setRange(0, max);
    s->setMinimumWidth(160);
    return s;
}

// Lamps in the colours of the LEDs they stand for, dark grey when off.
const QColor kLedOff(70, 70, 70);

}  // namespace

SimulatorPanel::SimulatorPanel(sim::SimDriver& driver, QWidget* parent) : QWidget(parent), driver_(driver) {
    setWindowTitle(QStringLiteral("Simulated Board"));
    // Closing the panel only hides it; the program ends with its own windows.
    setAttribute(Qt::WA_QuitOnClose, false);
    Build();
    LoadScene();
    Wire();
    RefreshFromBoard();
    refresh_ = new QTimer(this);
    refresh_->setInterval(kRefreshMs);
    connect(refresh_, &QTimer::timeout, this, [this] { RefreshFromBoard(); });
    refresh_->start();
}

void SimulatorPanel::Build() {
    auto* root = new QVBoxLayout(this);

    auto* light = new QGroupBox(QStringLiteral("Light at the sensor"), this);
    auto* lg = new QGridLayout(light);
    auto row = [lg, light](int r, const QString& caption, QDoubleSpinBox* spin, QSlider* slider) {
        lg->addWidget(new QLabel(caption, light), r, 0);
        lg->addWidget(slider, r, 1);
        lg->addWidget(spin, r, 2);
    };
    spnLux = Spin(light, kMaxLight, 0, QStringLiteral(" lux"));
    sldLux = Slider(light, kLogSteps);
    spnIr = Spin(light, kMaxLight, 0, QString());
    sldIr = Slider(light, kLogSteps);
    spnDistance = Spin(light, 500, 0, QStringLiteral(" mm"));
    spnDistance->setSpecialValueText(QStringLiteral("none"));
    sldDistance = Slider(light, 500);
    spnReflectance = Spin(light, 1, 2, QString());
    spnReflectance->setSingleStep(0.05);
    sldReflectance = Slider(light, 100);
    row(0, QStringLiteral("Ambient light"), spnLux, sldLux);
    row(1, QStringLiteral("Infrared"), spnIr, sldIr);
    row(2, QStringLiteral("Object distance"), spnDistance, sldDistance);
    row(3, QStringLiteral("Reflectance"), spnReflectance, sldReflectance);
    root->addWidget(light);

    auto* variation = new QGroupBox(QStringLiteral("Variation over time"), this);
    auto* vf = new QFormLayout(variation);
    cboScene = new QComboBox(variation);
    cboScene->addItem(QStringLiteral("Steady"), int(Kind::Steady));
    cboScene->addItem(QStringLiteral("Sine"), int(Kind::Sine));
    cboScene->addItem(QStringLiteral("Steps"), int(Kind::Steps));
    cboScene->addItem(QStringLiteral("Noise"), int(Kind::Noise));
    cboScene->addItem(QStringLiteral("Ramp to 50000 lux"), int(Kind::Ramp));
    spnPeriod = Spin(variation, 600, 1, QStringLiteral(" s"));
    spnPeriod->setMinimum(0.1);
    spnPeriod->setSingleStep(0.5);
    spnDepth = Spin(variation, 100, 0, QStringLiteral(" %"));
    spnDepth->setSingleStep(5);
    lblNow = new QLabel(variation);
    vf->addRow(QStringLiteral("Scene"), cboScene);
    vf->addRow(QStringLiteral("Period / dwell"), spnPeriod);
    vf->addRow(QStringLiteral("Depth"), spnDepth);
    vf->addRow(QStringLiteral("Now"), lblNow);
    root->addWidget(variation);
    BuildPhysics(root);

    auto* board = new QGroupBox(QStringLiteral("Board"), this);
    auto* bg = new QGridLayout(board);
    cboChip = new QComboBox(board);
    for (const sim::Chip chip : {sim::Chip::Family, sim::Chip::Lxm600})
        cboChip->addItem(QString::fromLatin1(sim::ChipCaption(chip)), int(chip));
    bg->addWidget(new QLabel(QStringLiteral("Chip"), board), 0, 0);
    bg->addWidget(cboChip, 0, 1, 1, 5);
    cmdUnplug = new QPushButton(QStringLiteral("Unplug"), board);
    cmdPlug = new QPushButton(QStringLiteral("Plug In"), board);
    lblCable = new QLabel(board);
    bg->addWidget(cmdUnplug, 1, 0);
    bg->addWidget(cmdPlug, 1, 1);
    bg->addWidget(lblCable, 1, 2, 1, 4);
    lampExternal = new Shape(board, kLedOff);
    lampGreen = new Shape(board, kLedOff);
    lampRed = new Shape(board, kLedOff);
    bg->addWidget(lampExternal, 2, 0, Qt::AlignRight);
    bg->addWidget(new QLabel(QStringLiteral("External LED"), board), 2, 1);
    bg->addWidget(lampGreen, 2, 2, Qt::AlignRight);
    bg->addWidget(new QLabel(QStringLiteral("Green"), board), 2, 3);
    bg->addWidget(lampRed, 2, 4, Qt::AlignRight);
    bg->addWidget(new QLabel(QStringLiteral("Red"), board), 2, 5);
    root->addWidget(board);
    root->addStretch(1);
}

void SimulatorPanel::BuildPhysics(QVBoxLayout* root) {
    auto* physics = new QGroupBox(QStringLiteral("Sensor physics"), this);
    auto* pg = new QGridLayout(physics);
    cboSource = new QComboBox(physics);
    for (const sim::SourceInfo& s : sim::Sources())
        cboSource->addItem(QString::fromLatin1(s.caption), int(s.source));
    cboSource->setToolTip(
        QStringLiteral("Each source has its own infrared and flicker (incandescent and halogen; fluorescent "
                       "on a magnetic ballast); for the IR lamp the light is its infrared, which a lux "
                       "meter does not see"));
    cboMains = new QComboBox(physics);
    cboMains->addItem(QStringLiteral("50 Hz"), 50);
    cboMains->addItem(QStringLiteral("60 Hz"), 60);
    cboMains->setToolTip(QStringLiteral("Mains frequency: artificial light ripples at twice it"));
    spnGlass = Spin(physics, 100, 0, QStringLiteral(" %"));
    spnGlass->setMinimum(1);
    spnGlass->setToolTip(QStringLiteral("Transmission of a cover glass in front of the sensor; 100 %: no glass"));
    spnGlass->setMinimumWidth(0);
    spnTemperature = Spin(physics, 85, 0, QStringLiteral(" °C"));
    spnTemperature->setMinimumWidth(0);
    spnTemperature->setMinimum(-40);
    chkIdeal = new QCheckBox(QStringLiteral("Ideal chip (no noise, dark counts or flicker)"), physics);
    pg->addWidget(new QLabel(QStringLiteral("Source"), physics), 0, 0);
    pg->addWidget(cboSource, 0, 1);
    pg->addWidget(new QLabel(QStringLiteral("Mains"), physics), 0, 2);
    pg->addWidget(cboMains, 0, 3);
    pg->addWidget(new QLabel(QStringLiteral("Cover glass"), physics), 1, 0);
    pg->addWidget(spnGlass, 1, 1);
    pg->addWidget(new QLabel(QStringLiteral("Temperature"), physics), 1, 2);
    pg->addWidget(spnTemperature, 1, 3);
    pg->addWidget(chkIdeal, 2, 0, 1, 4);
    root->addWidget(physics);
}

void SimulatorPanel::LoadScene() {
    const sim::LightScene& s = driver_.board().scene();
    loading_ = true;
    spnLux->setValue(s.ambientLux);
    sldLux->setValue(LightToSlider(s.ambientLux));
    spnIr->setValue(s.infrared);
    sldIr->setValue(LightToSlider(s.infrared));
    spnDistance->setValue(std::max(0.0, s.objectDistanceMm));
    sldDistance->setValue(int(std::lround(std::max(0.0, s.objectDistanceMm))));
    spnReflectance->setValue(s.reflectance);
    sldReflectance->setValue(int(std::lround(s.reflectance * 100)));
    cboScene->setCurrentIndex(cboScene->findData(int(s.kind)));
    spnPeriod->setValue(s.periodS);
    spnDepth->setValue(s.depth * 100);
    cboSource->setCurrentIndex(cboSource->findData(int(s.source)));
    cboMains->setCurrentIndex(cboMains->findData(s.mainsHz));
    spnGlass->setValue(s.glassPercent);
    spnTemperature->setValue(s.temperatureC);
    chkIdeal->setChecked(s.ideal);
    loading_ = false;
}

void SimulatorPanel::ApplyScene() {
    if (loading_) return;
    sim::LightScene& s = driver_.board().scene();
    s.ambientLux = spnLux->value();
    s.infrared = spnIr->value();
    s.objectDistanceMm = spnDistance->value();
    s.reflectance = spnReflectance->value();
    s.kind = Kind(cboScene->currentData().toInt());
    s.periodS = spnPeriod->value();
    s.depth = spnDepth->value() / 100.0;
    s.source = sim::Source(cboSource->currentData().toInt());
    s.mainsHz = cboMains->currentData().toInt();
    s.glassPercent = spnGlass->value();
    s.temperatureC = spnTemperature->value();
    s.ideal = chkIdeal->isChecked();
    // Only the ideal chip takes the infrared as it is set; the real one gets it from the source.
    spnIr->setEnabled(s.ideal);
    sldIr->setEnabled(s.ideal);
    // Period and depth mean nothing to a steady light.
    const bool varies = s.kind != Kind::Steady;
    spnPeriod->setEnabled(varies && s.kind != Kind::Noise);
    spnDepth->setEnabled(varies && s.kind != Kind::Ramp);
}

void SimulatorPanel::Wire() {
    // Spin box and slider follow each other; either one changes the scene.
    auto pair = [this](QDoubleSpinBox* spin, QSlider* slider, auto toSlider, auto fromSlider) {
        connect(spin, &QDoubleSpinBox::valueChanged, this, [this, slider, toSlider](double v) {
            if (loading_) return;
            loading_ = true;
            slider->setValue(toSlider(v));
            loading_ = false;
            ApplyScene();
        });
        connect(slider, &QSlider::valueChanged, this, [this, spin, fromSlider](int pos) {
            if (loading_) return;
            loading_ = true;
            spin->setValue(fromSlider(pos));
            loading_ = false;
            ApplyScene();
        });
    };
    pair(spnLux, sldLux, LightToSlider, SliderToLight);
    pair(spnIr, sldIr, LightToSlider, SliderToLight);
    pair(
        spnDistance, sldDistance, [](double v) { return int(std::lround(v)); },
        [](int p) { return double(p); });
    pair(
        spnReflectance, sldReflectance, [](double v) { return int(std::lround(v * 100)); },
        [](int p) { return p / 100.0; });
    connect(cboScene, &QComboBox::currentIndexChanged, this, [this] { ApplyScene(); });
    connect(spnPeriod, &QDoubleSpinBox::valueChanged, this, [this] { ApplyScene(); });
    connect(spnDepth, &QDoubleSpinBox::valueChanged, this, [this] { ApplyScene(); });
    for (QComboBox* box : {cboSource, cboMains})
        connect(box, &QComboBox::currentIndexChanged, this, [this] { ApplyScene(); });
    for (QDoubleSpinBox* spin : {spnGlass, spnTemperature})
        connect(spin, &QDoubleSpinBox::valueChanged, this, [this] { ApplyScene(); });
    connect(chkIdeal, &QCheckBox::toggled, this, [this] { ApplyScene(); });
    connect(cboChip, &QComboBox::currentIndexChanged, this,
            [this] { driver_.board().Carry(sim::Chip(cboChip->currentData().toInt())); });
    connect(cmdUnplug, &QPushButton::clicked, this, [this] {
        driver_.Unplug();
        RefreshFromBoard();
    });
    connect(cmdPlug, &QPushButton::clicked, this, [this] {
        driver_.Plug();
        RefreshFromBoard();
    });
    ApplyScene();
}

void SimulatorPanel::RefreshFromBoard() {
    sim::SimBoard& board = driver_.board();
    const sim::BoardController& c = board.controller();
    lampExternal->setFillColor(c.ExternalLedOn() ? QColor(255, 220, 60) : kLedOff);
    lampGreen->setFillColor(c.GreenLedOn() ? QColor(0, 220, 0) : kLedOff);
    lampRed->setFillColor(c.RedLedOn() ? QColor(240, 0, 0) : kLedOff);

    const bool plugged = driver_.IsPlugged();
    cmdUnplug->setEnabled(plugged);
    cmdPlug->setEnabled(!plugged);
    lblCable->setText(plugged ? QStringLiteral("Plugged in") : QStringLiteral("Unplugged"));

    // The chip can change from outside the panel (a type chosen at start-up).
    const int chipIndex = cboChip->findData(int(board.chip()));
    if (cboChip->currentIndex() != chipIndex) {
        const QSignalBlocker quiet(cboChip);
        cboChip->setCurrentIndex(chipIndex);
    }

    const sim::LightScene& scene = board.scene();
    const sim::LightScene::Sample now = scene.At(board.clock().Micros());
    // The real chip's infrared comes with the source.
    const double ir = scene.ideal ? now.ir : now.lux * sim::InfoOf(scene.source).irPerLux;
    const double lux = now.lux * (scene.ideal ? 1.0 : sim::InfoOf(scene.source).visible);
    QString text = QStringLiteral("%1 lux, IR %2").arg(lux, 0, 'f', 0).arg(ir, 0, 'f', 0);
    if (now.distanceMm > 0) text += QStringLiteral(", object at %1 mm").arg(now.distanceMm, 0, 'f', 0);
    if (lblNow->text() != text) lblNow->setText(text);
}

void SimulatorPanel::CarryForType(const std::string& type) {
    driver_.board().CarryForType(type);
    RefreshFromBoard();
}

void SimulatorPanel::Reopen() {
    RefreshFromBoard();
    show();
    raise();
    activateWindow();
}

bool SimulatorMenu::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* window = static_cast<QWidget*>(watched);
        if (window->isWindow() && window != &panel_) {
            QMenuBar* bar = window->findChild<QMenuBar*>();
            if (bar && !bar->findChild<QAction*>(QStringLiteral("mnuSimulator"))) {
                QMenu* menu = MenuNamed(*bar, QStringLiteral("Simulator"));
                QAction* show = menu->addAction(QStringLiteral("Simulated Board..."));
                show->setObjectName(QStringLiteral("mnuSimulator"));
                QObject::connect(show, &QAction::triggered, &panel_, [this] { panel_.Reopen(); });
            }
            if (bar) {
                // The panel must not sit on the window that has just come up.
                QTimer::singleShot(kPlaceDelayMs, &panel_, [this] { PlacePanel(); });
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

void SimulatorMenu::PlacePanel() {
    if (!panel_.isVisible()) return;
    QList<QWidget*> others;
    bool covers = false;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w == &panel_ || !w->isVisible() || w->windowType() != Qt::Window) continue;
        others << w;
        covers = covers || w->frameGeometry().intersects(panel_.frameGeometry());
    }
    const QScreen* screen = panel_.screen();
    const bool onScreen = !screen || screen->availableGeometry().contains(panel_.frameGeometry());
    if (covers || !onScreen) MoveBeside(panel_, others);
}

}  // namespace lxm
