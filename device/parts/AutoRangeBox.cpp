#include "device/parts/AutoRangeBox.h"

#include <QCheckBox>
#include <QRadioButton>

namespace lxm {

AutoRangeBox::AutoRangeBox(Form form) : form_(std::move(form)), decide_(form_.rangesLux) {
    chkAutoRange =
        new QCheckBox(QStringLiteral("Auto Range"), form_.options->begin()->second->parentWidget());
    chkAutoRange->setToolTip(QStringLiteral(
        "During a run of lux readings the range follows the light: one step less sensitive when a "
        "reading reaches 90 % of the scale, one more sensitive after three readings under 5 %.\n"
        "Each step is marked on the graph, logged and counted beside \"Max Min Count\"."));
}

int AutoRangeBox::Selected() const {
    return SelectedIndex(*form_.options);
}

void AutoRangeBox::Start() {
    decide_.Reset();
    before_.reset();
}

bool AutoRangeBox::Pass() {
    if (!chkAutoRange->isChecked()) {
        before_.reset();
        return false;
    }
    const std::optional<Reading> r = form_.reading();
    if (!r) return false;
    if (r->status != SampleStatus::Early && r->status != SampleStatus::Failed) before_.reset();
    const int here = Selected();
    const std::optional<int> to = decide_.Next(r->count, r->fullScale, r->status, here);
    if (!to) return false;
    before_ = here;
    // As a click: the option is selected, then its handler runs.
    form_.options->at(*to)->setChecked(true);
    form_.handler(*to);
    return true;
}

int AutoRangeBox::ConvertingRange(SampleStatus status, int otherwise) const {
    if (!chkAutoRange->isChecked()) return otherwise;
    return before_ && status == SampleStatus::Early ? *before_ : Selected();
}

}  // namespace lxm
