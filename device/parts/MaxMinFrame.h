#pragma once

#include <QGroupBox>
#include <QString>
#include <array>
#include <cstdint>

#include "device/parts/Collection.h"
#include "device/parts/Controls.h"

class QLabel;
class QPushButton;

namespace lxm {

// The maximum/minimum panel beside the live reading: the largest and smallest raw count with
// their bytes, and a snapshot of the current count. Boxes 6 and 7 are kept hidden for the
// form's statistics.
// The running statistics as the panel shows them: count, mean and standard deviation, six
// significant digits; no mean before the first reading and no deviation before the second.
std::array<QString, 3> StatsTexts(const RunningStats& stats);
// The readings the statistics flag: saturated ones (in the mean) and failed ones (left out).
QString FlaggedText(const RunningStats& stats);

class MaxMinFrame : public QGroupBox {
public:
    static constexpr int kPanelTexts = 6;

    explicit MaxMinFrame(QWidget* parent);

    CtlArray<QLineEdit> txtADMax;
    // Count, mean and standard deviation of the readings since Start or "Clear".
    CtlArray<QLineEdit> txtStats;
    QLabel* Label37 = nullptr;
    std::array<QLabel*, 3> statCaps{};  // "N", "Mean", "SD"
    // The count of flagged readings since Start or "Clear", beside the pass count.
    QLabel* lblFlagged = nullptr;
    // "lux" or "counts", as the run's readings are.
    void SetUnit(const QString& unit);
    QPushButton* cmdClearHist = nullptr;

    // One pass: the raw count text of the pass and the data bytes it came from; the reading of
    // the pass (st.LatestReading) goes to the statistics.
    void Update(CollectionState& st, const QString& rawText, std::uint8_t low, std::uint8_t high);
    // The same for a pass that read a whole count.
    void UpdateCount(CollectionState& st, std::int32_t count, std::uint8_t low, std::uint8_t high);
    // "Clear": forgets the extremes and the statistics; the pass counter keeps running.
    void Clear(CollectionState& st);
    void ShowStats(const RunningStats& stats);
    // Empties the boxes (a new run).
    void Empty();

private:
    void Show(CollectionState& st);
};

}  // namespace lxm
