#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "acquisition/AutoRange.h"
#include "acquisition/SampleStatus.h"
#include "device/parts/Controls.h"

class QCheckBox;

namespace lxm {

// "Auto Range" beside a form's range options: while it is checked, a collection of lux readings
// steps the range through the form's own option handler, as a click on the option would, so
// the register, the derived state and the scale boxes follow.
class AutoRangeBox {
public:
    struct Reading {
        std::int64_t count;
        std::int64_t fullScale;
        SampleStatus status;
    };
    struct Form {
        std::span<const std::int32_t> rangesLux;  // the range options' full scales, by index
        const CtlArray<QRadioButton>* options;    // in a group box
        std::function<void(int)> handler;         // the options' click handler
        // The reading of the pass under way; none while the measurement is not in lux.
        std::function<std::optional<Reading>()> reading;
    };

    // The check box goes in the options' group box; the form lays it out.
    explicit AutoRangeBox(Form form);

    QCheckBox* chkAutoRange = nullptr;

    // A new run.
    void Start();
    // After the pass's row is logged: steps the range when the reading calls for it; true then.
    bool Pass();
    // The range option a reading of the pass is converted at. With the box checked it is the
    // selected one, or, for an early reading (its conversion began before the latest step),
    // the one before the step; unchecked, `otherwise`.
    int ConvertingRange(SampleStatus status, int otherwise) const;

private:
    int Selected() const;

    Form form_;
    AutoRange decide_;
    std::optional<int> before_;  // the range before a step, until a conversion ends under the new one
};

}  // namespace lxm
