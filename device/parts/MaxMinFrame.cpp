#include "device/parts/MaxMinFrame.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "core/VbText.h"

namespace lxm {

MaxMinFrame::MaxMinFrame(QWidget* parent) : QGroupBox(QStringLiteral("Max / Min"), parent) {
    auto* mg = new QGridLayout(this);
    static const char* kMaxCaps[3] = {"Max", "Min", "Now"};
    for (int r = 0; r < 3; ++r) {
        mg->addWidget(new QLabel(QString::fromLatin1(kMaxCaps[r]), this), r, 0);
        txtADMax[2 * r] = MakeBox(this, QString(), 62);
        txtADMax[2 * r + 1] = MakeBox(this, QString(), 48);
        mg->addWidget(txtADMax[2 * r], r, 1);
        mg->addWidget(txtADMax[2 * r + 1], r, 2);
    }
    txtADMax[6] = MakeBox(this, QString(), 70);
    txtADMax[7] = MakeBox(this, QString(), 56);
    txtADMax[6]->hide();
    txtADMax[7]->hide();
    // The statistics in a column of their own beside the extremes, the window being shorter
    // than it is wide.
    static const char* kStatCaps[3] = {"N", "Mean", "SD"};
    for (int r = 0; r < 3; ++r) {
        mg->addWidget(new QLabel(QString::fromLatin1(kStatCaps[r]), this), r, 3);
        txtStats[r] = MakeBox(this, QString(), 62);
        txtStats[r]->setReadOnly(true);
        mg->addWidget(txtStats[r], r, 4);
    }
    txtStats[0]->setToolTip(QStringLiteral("Readings since Start or \"Clear\""));
    txtStats[1]->setToolTip(QStringLiteral("Mean of the readings since Start or \"Clear\""));
    txtStats[2]->setToolTip(QStringLiteral("Standard deviation of the readings since Start or \"Clear\""));
    Label37 = new QLabel(QStringLiteral("Max Min Count"), this);
    cmdClearHist = new QPushButton(QStringLiteral("Clear"), this);
    mg->addWidget(Label37, 3, 0, 1, 3);
    mg->addWidget(cmdClearHist, 3, 3, 1, 2);
    // The boxes change while a run goes on; each repaints alone, not the frame behind it.
    for (const auto& [i, box] : txtADMax) MakeLiveValue(box);
    for (const auto& [i, box] : txtStats) MakeLiveValue(box);
}

std::array<QString, 3> StatsTexts(const RunningStats& stats) {
    std::array<QString, 3> t;
    t[0] = QString::number(stats.Count());
    if (stats.Count() >= 1) t[1] = QString::number(stats.Mean(), 'g', 6);
    if (stats.Count() >= 2) t[2] = QString::number(stats.StdDev(), 'g', 6);
    return t;
}

void MaxMinFrame::Update(CollectionState& st, const QString& rawText, std::uint8_t low, std::uint8_t high) {
    st.maxMinPanel.Update(Val(rawText), rawText, low, high);
    Keep(st);
}

void MaxMinFrame::UpdateCount(CollectionState& st, std::int32_t count, std::uint8_t low, std::uint8_t high) {
    st.maxMinPanel.UpdateCount(count, low, high);
    Keep(st);
}

void MaxMinFrame::Keep(CollectionState& st) {
    st.CountMax = st.maxMinPanel.countMax();
    st.CountMin = st.maxMinPanel.countMin();
    st.MaxMinCounter = st.maxMinPanel.counter();
    st.stats.Add(st.LatestReading);
}

void MaxMinFrame::ShowTexts(const CollectionState& st) {
    const auto& texts = st.maxMinPanel.texts();
    for (int i = 0; i < kPanelTexts; ++i)
        if (txtADMax.at(i)->text() != texts[i]) txtADMax.at(i)->setText(texts[i]);
    const auto stats = StatsTexts(st.stats);
    for (int i = 0; i < 3; ++i)
        if (txtStats.at(i)->text() != stats[std::size_t(i)]) txtStats.at(i)->setText(stats[std::size_t(i)]);
}

void MaxMinFrame::Clear(CollectionState& st) {
    st.maxMinPanel.Clear();
    st.CountMax = st.maxMinPanel.countMax();
    st.CountMin = st.maxMinPanel.countMin();
    st.stats.Reset();
    Empty();
}

void MaxMinFrame::Empty() {
    for (int i = 0; i < kPanelTexts; ++i) txtADMax.at(i)->clear();
    for (int i = 0; i < 3; ++i) txtStats.at(i)->clear();
}

}  // namespace lxm
