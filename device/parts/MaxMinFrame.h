#pragma once

#include <QGroupBox>
#include <cstdint>

#include "device/parts/Collection.h"
#include "device/parts/Controls.h"

class QLabel;
class QPushButton;

namespace lxm {

// The maximum/minimum panel beside the live reading: the largest and smallest raw count with
// their bytes, and a snapshot of the current count. Boxes 6 and 7 are kept hidden for the
// form's statistics.
class MaxMinFrame : public QGroupBox {
public:
    static constexpr int kPanelTexts = 6;

    explicit MaxMinFrame(QWidget* parent);

    CtlArray<QLineEdit> txtADMax;
    QLabel* Label37 = nullptr;
    QPushButton* cmdClearHist = nullptr;

    // One pass: the raw count text of the pass and the data bytes it came from.
    void Update(CollectionState& st, const QString& rawText, std::uint8_t low, std::uint8_t high);
    // "Clear": forgets the extremes; the pass counter keeps running.
    void Clear(CollectionState& st);
    // Empties the boxes (a new run).
    void Empty();
};

}  // namespace lxm
