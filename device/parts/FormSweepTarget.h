#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "acquisition/SampleStatus.h"
#include "characterise/Sweep.h"
#include "device/parts/Controls.h"


namespace lxm {

class Session;

// A reading as the sweep takes it: a failed one has no count and no value.
measure::Reading FormReading(SampleStatus status, std::int32_t raw, double value, bool lux);

// An option chosen as the user chooses it: the button becomes selected, then its handler runs.
void Choose(const CtlArray<QRadioButton>& options, int index, const std::function<void(int)>& handler);

// What a device form lends a characterisation: its settings and the handlers that set and read
// them, as the form's own option clicks and single measurement do.
struct SweepForm {
    QWidget* form = nullptr;  // whose controls are kept and put back
    std::string sensor;
    std::vector<characterise::Setting> settings;
    // The measurements the sensor has: "als", "ir", "prox".
    std::vector<std::string> measures{"als", "ir", "prox"};
    // The option clicks that select a setting and a measurement ("als", "ir", "prox").
    std::function<void(const characterise::Setting&, std::string_view measure)> apply;
    // One reading as the form's single measurement takes it: trigger starts (or awaits) a
    // conversion and says when, on the session clock in microseconds, its result is due; fetch
    // reads it, marked failed, saturated or early as the form marks its readings.
    std::function<std::int64_t()> trigger;
    std::function<measure::Reading()> fetch;
    // Copies what the form derives from its options; the call returned puts the copy back.
    std::function<std::function<void()>()> keepDerived;
    // The registers the options write, in the order the chip takes them back.
    std::vector<int> configRegisters;
    std::function<void(int reg)> writeRegister;
    // Draws the chart again from its (restored) plot state.
    std::function<void()> redraw;
};

// The state of a form's own controls: check marks, entry texts, captions, and whether each is
// shown and enabled. Captured for every control of the form's window, and put back without
// running a handler.
class ControlsSnapshot {
public:
    explicit ControlsSnapshot(QWidget& form);
    void Restore() const;
    // The first control whose state differs from the one kept, described; empty when none does.
    QString FirstDifference() const;

private:
    struct Control {
        QPointer<QWidget> widget;  // a control gone since is left out
        bool hidden, forceDisabled, checked;
        QString text;
    };
    static Control Capture(QWidget* w);
    std::vector<Control> controls_;
};

// A sweep driven through a device form. Everything the sweep changes is captured when it is
// made (register image, controls, derived state) and put back by Restore; with the board gone
// the chip is left to "Board > Reconnect", which writes the image back.
class FormSweepTarget final : public characterise::SweepTarget {
public:
    FormSweepTarget(Session& session, SweepForm form);

    std::string Sensor() const override { return form_.sensor; }
    std::vector<characterise::Setting> Settings() const override { return form_.settings; }
    void Apply(const characterise::Setting& s, std::string_view measure) override;
    measure::Reading Read() override;
    std::array<std::uint8_t, 256> Image() const override;
    void Restore() override;

    // Asked during every wait of a reading; a no ends the wait (Cancel).
    std::function<bool()> keepWaiting;

private:
    // Throws when the board is not there to be driven.
    void RequireBoard() const;

    Session& s_;
    SweepForm form_;
    std::array<std::uint8_t, 256> image_;
    ControlsSnapshot controls_;
    std::function<void()> putDerivedBack_;
};

}  // namespace lxm
