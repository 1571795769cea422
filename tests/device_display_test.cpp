// The live boxes of a running collection are refreshed at most ten times a second, from
// values that are kept exact on every pass, and end the run showing its last pass.
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>

#include "acquisition/Conversion.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/Collection.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

TEST_F(FormFixture, LiveBoxesChangeTenTimesASecondAndEndOnTheLastPass) {
    for (const int measure : {5, 6}) {  // ALS in lux, IR in counts
        SCOPED_TRACE(measure);
        Measure(measure);
        scene().kind = sim::LightScene::Kind::Noise;
        Settle();
        QLineEdit* count = form->FrmMeasureDetails->txtStats.at(0);
        QSignalSpy countChanges(count, &QLineEdit::textChanged);
        QSignalSpy rawChanges(form->txtADCRaw, &QLineEdit::textChanged);
        const std::int64_t start = clock.Micros();
        const int passes = Collect(60);
        const std::int64_t readouts = (clock.Micros() - start) / (PacedCollection::kReadoutMs * 1000);

        // The count of readings changes on every pass; its box at most once a readout.
        EXPECT_LT(countChanges.count(), passes);
        EXPECT_LE(countChanges.count(), readouts + 2);
        EXPECT_LE(rawChanges.count(), readouts + 2);
        EXPECT_GE(countChanges.count(), 2) << "the boxes follow the run while it goes";

        EXPECT_EQ(count->text(), QString::number(passes));
        EXPECT_EQ(form->stats.Count(), std::size_t(passes));
        EXPECT_EQ(form->txtADCRaw->text(), QString::number(form->PassCount));
        EXPECT_EQ(form->txtReading->text(), FormatReading(form->LatestReading, form->ShowLux, 2));
        const auto& panel = form->maxMinPanel.texts();
        for (int i = 0; i < MaxMinFrame::kPanelTexts; ++i) EXPECT_EQ(form->txtADMax.at(i)->text(), panel[i]) << i;
        EXPECT_EQ(form->lblLoop_Count->text(), QString::number(passes - 10));
    }
}

}  // namespace
}  // namespace lxm::test
