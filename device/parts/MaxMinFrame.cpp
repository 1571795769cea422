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
        txtADMax[2 * r] = MakeBox(this, QString(), 70);
        txtADMax[2 * r + 1] = MakeBox(this, QString(), 56);
        mg->addWidget(txtADMax[2 * r], r, 1);
        mg->addWidget(txtADMax[2 * r + 1], r, 2);
    }
    txtADMax[6] = MakeBox(this, QString(), 70);
    txtADMax[7] = MakeBox(this, QString(), 56);
    txtADMax[6]->hide();
    txtADMax[7]->hide();
    Label37 = new QLabel(QStringLiteral("Max Min Count"), this);
    cmdClearHist = new QPushButton(QStringLiteral("Clear"), this);
    mg->addWidget(Label37, 3, 0, 1, 2);
    mg->addWidget(cmdClearHist, 3, 2);
}

void MaxMinFrame::Update(CollectionState& st, const QString& rawText, std::uint8_t low, std::uint8_t high) {
    st.maxMinPanel.Update(Val(rawText), rawText, low, high);
    st.CountMax = st.maxMinPanel.countMax();
    st.CountMin = st.maxMinPanel.countMin();
    st.MaxMinCounter = st.maxMinPanel.counter();
    const auto& texts = st.maxMinPanel.texts();
    for (int i = 0; i < kPanelTexts; ++i)
        if (txtADMax.at(i)->text() != texts[i]) txtADMax.at(i)->setText(texts[i]);
}

void MaxMinFrame::Clear(CollectionState& st) {
    st.maxMinPanel.Clear();
    st.CountMax = st.maxMinPanel.countMax();
    st.CountMin = st.maxMinPanel.countMin();
    Empty();
}

void MaxMinFrame::Empty() {
    for (int i = 0; i < kPanelTexts; ++i) txtADMax.at(i)->clear();
}

}  // namespace lxm
