#pragma once

#include <QLabel>

#include "acquisition/SampleStatus.h"

namespace lxm {

// The mark beside a live value: "saturated", "failed" or "early" in red while the reading it
// stands beside is one, nothing while it is ok. It keeps the room of its longest word, so the
// form never moves when it appears.
class ReadingFlag : public QLabel {
public:
    explicit ReadingFlag(QWidget* parent);
    void Show(SampleStatus status);

private:
    SampleStatus shown_ = SampleStatus::Ok;
};

}  // namespace lxm
