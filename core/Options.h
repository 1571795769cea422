#pragma once

#include <QRadioButton>

namespace lxm {

// Sets an option button's value from code. An option that is the checked one of its group
// refuses to be cleared on its own; clearing it here leaves the group with no choice, the
// way the forms expect of their momentary options such as "Test Comm".
inline void SetOptionValue(QRadioButton* option, bool value) {
    if (!option) return;
    if (value || !option->autoExclusive()) {
        option->setChecked(value);
        return;
    }
    option->setAutoExclusive(false);
    option->setChecked(false);
    option->setAutoExclusive(true);
}

}  // namespace lxm
