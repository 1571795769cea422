#include "device/parts/MaxMinFrame.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QPushButton>

#include "core/VbText.h"

namespace lxm {

MaxMinFrame::MaxMinFrame(QWidget* parent) : QGroupBox(parent) {
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
        statCaps[std::size_t(r)] = new QLabel(QString::fromLatin1(kStatCaps[r]), this);
        mg->addWidget(statCaps[std::size_t(r)], r, 3);
        txtStats[r] = MakeBox(this, QString(), 62);
        txtStats[r]->setReadOnly(true);
        mg->addWidget(txtStats[r], r, 4);
    }
    SetUnit(QStringLiteral("counts"));
    // Red, and empty while nothing is flagged: a mark that appears only when it means something.
    // It takes the room the caption beside it leaves and never asks for more, so a count that
    // grows cannot widen the form; the whole text is its tool tip.
    lblFlagged = new QLabel(this);
    lblFlagged->setStyleSheet(QStringLiteral("color: #c00000;"));
    lblFlagged->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    txtStats[0]->setToolTip(QStringLiteral("Readings since Start or \"Clear\""));
    txtStats[1]->setToolTip(QStringLiteral("Mean of the readings since Start or \"Clear\""));
    txtStats[2]->setToolTip(QStringLiteral("Standard deviation of the readings since Start or \"Clear\""));
    Label37 = new QLabel(QStringLiteral("Max Min Count"), this);
    cmdClearHist = new QPushButton(QStringLiteral("Clear"), this);
    auto* countRow = new QHBoxLayout;
    countRow->addWidget(Label37);
    countRow->addWidget(lblFlagged, 1);
    mg->addLayout(countRow, 3, 0, 1, 3);
    mg->addWidget(cmdClearHist, 3, 3, 1, 2);
    // The boxes change while a run goes on; each repaints alone, not the frame behind it.
    for (const auto& [i, box] : txtADMax) MakeLiveValue(box);
    for (const auto& [i, box] : txtStats) MakeLiveValue(box);
}

// The units in the title, which is shorter than the panel whichever unit it names, so a
// change of unit at Start moves nothing; the panel has no column to spare on a laptop screen.
void MaxMinFrame::SetUnit(const QString& unit) {
    setTitle(QStringLiteral("Max / Min: counts    Mean, SD: ") + unit);
}

QString FlaggedText(const RunningStats& stats) {
    QStringList parts;
    if (stats.Saturated() > 0) parts << QString::number(stats.Saturated()) + QStringLiteral(" sat.");
    if (stats.Failed() > 0) parts << QString::number(stats.Failed()) + QStringLiteral(" failed");
    return parts.join(QLatin1Char(' '));
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
    st.stats.Add(st.LatestReading, st.PassStatus);
}

void MaxMinFrame::ShowTexts(const CollectionState& st) {
    const auto& texts = st.maxMinPanel.texts();
    for (int i = 0; i < kPanelTexts; ++i)
        if (txtADMax.at(i)->text() != texts[i]) txtADMax.at(i)->setText(texts[i]);
    const auto stats = StatsTexts(st.stats);
    for (int i = 0; i < 3; ++i)
        if (txtStats.at(i)->text() != stats[std::size_t(i)]) txtStats.at(i)->setText(stats[std::size_t(i)]);
    QString flagged = FlaggedText(st.stats);
    if (st.RangeSteps > 0)
        flagged += (flagged.isEmpty() ? QString() : QStringLiteral(" ")) + QString::number(st.RangeSteps) +
                   (st.RangeSteps == 1 ? QStringLiteral(" range step") : QStringLiteral(" range steps"));
    if (lblFlagged->text() != flagged) lblFlagged->setText(flagged);
}

void MaxMinFrame::Clear(CollectionState& st) {
    st.maxMinPanel.Clear();
    st.CountMax = st.maxMinPanel.countMax();
    st.CountMin = st.maxMinPanel.countMin();
    st.stats.Reset();
    st.RangeSteps = 0;
    Empty();
}

void MaxMinFrame::Empty() {
    for (int i = 0; i < kPanelTexts; ++i) txtADMax.at(i)->clear();
    for (int i = 0; i < 3; ++i) txtStats.at(i)->clear();
    lblFlagged->clear();
    lblFlagged->setToolTip(QString());
}

}  // namespace lxm
