// A characterisation sweep through a device form's own handlers, and the form put back as it was.
#include "device/parts/FormSweepTarget.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <limits>

#include "core/ServedWait.h"
#include "transport/Session.h"

namespace lxm {

measure::Reading FormReading(SampleStatus status, std::int32_t raw, double value, bool lux) {
    static constexpr unsigned kFlags[] = {0, measure::kFailed, measure::kSaturated, measure::kEarly};
    measure::Reading r;
    r.status = status;
    r.flags = kFlags[std::size_t(status)];
    r.lux = lux;
    r.raw = status == SampleStatus::Failed ? 0 : raw;
    r.value = status == SampleStatus::Failed ? std::numeric_limits<double>::quiet_NaN() : value;
    return r;
}

void Choose(const CtlArray<QRadioButton>& options, int index, const std::function<void(int)>& handler) {
    options.at(index)->setChecked(true);
    handler(index);
}

ControlsSnapshot::Control ControlsSnapshot::Capture(QWidget* w) {
    Control c{w, w->isHidden(), w->testAttribute(Qt::WA_ForceDisabled), false, {}};
    if (auto* b = qobject_cast<QAbstractButton*>(w)) {
        c.checked = b->isChecked();
        c.text = b->text();
    } else if (auto* e = qobject_cast<QLineEdit*>(w)) {
        c.text = e->text();
    } else if (auto* l = qobject_cast<QLabel*>(w)) {
        c.text = l->text();
    } else if (auto* g = qobject_cast<QGroupBox*>(w)) {
        c.text = g->title();
    }
    return c;
}

// Only the form's own window: a dialog or menu it owns keeps its own state.
ControlsSnapshot::ControlsSnapshot(QWidget& form) {
    for (QWidget* w : form.findChildren<QWidget*>())
        if (w->window() == &form) controls_.push_back(Capture(w));
}

// Nothing here may run a handler: a handler would write the chip and derive state anew.
// Buttons are checked before any is cleared, so that an exclusive group never passes through
// a state with two marks, and a mark that must go from an exclusive group goes with the group's
// exclusion lifted for the moment.
void ControlsSnapshot::Restore() const {
    for (const Control& c : controls_) {
        QWidget* w = c.widget;
        if (!w) continue;
        const QSignalBlocker quiet(w);
        if (w->isHidden() != c.hidden) w->setHidden(c.hidden);
        if (w->testAttribute(Qt::WA_ForceDisabled) != c.forceDisabled) w->setEnabled(!c.forceDisabled);
        if (auto* b = qobject_cast<QAbstractButton*>(w)) {
            if (c.checked && !b->isChecked()) b->setChecked(true);
            if (b->text() != c.text) b->setText(c.text);
        } else if (auto* e = qobject_cast<QLineEdit*>(w)) {
            if (e->text() != c.text) e->setText(c.text);
        } else if (auto* l = qobject_cast<QLabel*>(w)) {
            if (l->text() != c.text) l->setText(c.text);
        } else if (auto* g = qobject_cast<QGroupBox*>(w)) {
            if (g->title() != c.text) g->setTitle(c.text);
        }
    }
    for (const Control& c : controls_) {
        auto* b = qobject_cast<QAbstractButton*>(c.widget.data());
        if (!b || c.checked || !b->isChecked()) continue;
        const QSignalBlocker quiet(b);
        const bool exclusive = b->autoExclusive();
        b->setAutoExclusive(false);
        b->setChecked(false);
        b->setAutoExclusive(exclusive);
    }
}

QString ControlsSnapshot::FirstDifference() const {
    for (const Control& c : controls_) {
        if (!c.widget) return QStringLiteral("a control was deleted");
        const Control now = Capture(c.widget);
        if (now.hidden != c.hidden || now.forceDisabled != c.forceDisabled || now.checked != c.checked ||
            now.text != c.text)
            return QStringLiteral("%1 \"%2\": hidden %3, disabled %4, checked %5 (was \"%6\": %7, %8, %9)")
                .arg(QLatin1String(c.widget->metaObject()->className()), now.text)
                .arg(now.hidden)
                .arg(now.forceDisabled)
                .arg(now.checked)
                .arg(c.text)
                .arg(c.hidden)
                .arg(c.forceDisabled)
                .arg(c.checked);
    }
    return {};
}

FormSweepTarget::FormSweepTarget(Session& session, SweepForm form)
    : s_(session),
      form_(std::move(form)),
      image_(s_.RegWriteMirror),
      controls_(*form_.form),
      putDerivedBack_(form_.keepDerived()) {}

// The board's going away has been told by the detach handler; the sweep ends without another
// message, and without the writes that would each find the board missing.
void FormSweepTarget::RequireBoard() const {
    if (!s_.UsbConnected)
        throw measure::Error(measure::Error::Kind::BoardGone,
                             QStringLiteral("The board went away. Plug it back in and choose \"Board > "
                                            "Reconnect\", then start the characterisation again."));
    if (s_.ReopenNeeded)
        throw measure::Error(measure::Error::Kind::BoardGone,
                             QStringLiteral("The board is not open. Choose \"Board > Reconnect\", then "
                                            "start the characterisation again."));
}

void FormSweepTarget::Apply(const characterise::Setting& s, std::string_view measure) {
    RequireBoard();
    form_.apply(s, measure);
    RequireBoard();
}

measure::Reading FormSweepTarget::Read() {
    RequireBoard();
    const std::int64_t due = form_.trigger();
    // A wait cut short by Cancel still reads: the form marks that reading early, which it is.
    ServedWait(s_, s_.clock, due, [this] { return s_.UsbConnected && (!keepWaiting || keepWaiting()); });
    RequireBoard();
    return form_.fetch();
}

std::array<std::uint8_t, 256> FormSweepTarget::Image() const {
    return s_.RegWriteMirror;
}

// The chip's registers are written from the restored entry boxes, as a click on each row's
// write would; the image is then what it was, whatever the boxes held.
void FormSweepTarget::Restore() {
    controls_.Restore();
    s_.RegWriteMirror = image_;
    if (s_.UsbConnected && !s_.ReopenNeeded) {
        s_.TransferBusy = false;
        for (int reg : form_.configRegisters) form_.writeRegister(reg);
    }
    s_.RegWriteMirror = image_;
    putDerivedBack_();
    if (form_.redraw) form_.redraw();
    controls_.Restore();
}

}  // namespace lxm
