// "Characterise..." on both device forms: however a sweep ends, the chip and the form are back
// in the settings they had; "Apply Best" leaves the form in the marked setting.
#include <QImage>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <tuple>

#include "device/parts/CharacteriseDialog.h"
#include "device/parts/FormSweepTarget.h"
#include "device_form_fixture.h"
#include "support/Files.h"
#include "transport/Session.h"

namespace lxm::test {
namespace {

enum class End { Whole, Cancel, Unplug };

// What the test keeps of the form before a sweep; derived is the form's state as the test
// lists it, apart from the list the sweep keeps.
template <class Derived>
struct Kept {
    std::array<std::uint8_t, kMaxRegisters> image;
    std::vector<std::uint8_t> chip;
    std::unique_ptr<ControlsSnapshot> controls;
    Derived derived;
};

template <class Fixture, class DerivedOf>
void SweepEndsAsItBegan(Fixture& fx, End end, const std::vector<int>& chipRegs, DerivedOf derivedOf) {
    CharacteriseDialog& dlg = fx.form->characterise->dialog();
    dlg.Prepare();
    dlg.spnReadings->setValue(3);
    Kept<decltype(derivedOf())> before{fx.session.RegWriteMirror, {}, std::make_unique<ControlsSnapshot>(*fx.form),
                                       derivedOf()};
    for (int r : chipRegs) before.chip.push_back(fx.chip(r));
    fx.messages.clear();
    // Cancel is clicked in the middle of a wait, and must act within 50 ms of it.
    std::optional<std::int64_t> cancelledUs;
    dlg.onProgress = [&](int done) {
        EXPECT_FALSE(fx.form->isEnabled());
        // A setting's row is in the table as soon as its three readings are.
        EXPECT_EQ(dlg.tblResults->rowCount(), (done - 1) / 3) << done;
        if (done < 2) return;
        if (end == End::Cancel)
            fx.clock.onSleep = [&] {
                if (!cancelledUs) dlg.cmdCancel_Click(), cancelledUs = fx.clock.Micros();
            };
        if (end == End::Unplug && fx.session.UsbConnected) fx.driver.Unplug();
    };
    dlg.cmdStart_Click();
    dlg.onProgress = nullptr;
    fx.clock.onSleep = nullptr;
    if (end == End::Cancel) {
        ASSERT_TRUE(cancelledUs);
        EXPECT_LT(fx.clock.Micros() - *cancelledUs, 50'000);
    }

    ASSERT_TRUE(dlg.result());
    EXPECT_EQ(dlg.result()->cancelled, end == End::Cancel);
    EXPECT_EQ(dlg.result()->error.isEmpty(), end != End::Unplug) << dlg.result()->error.toStdString();
    if (end == End::Whole) {
        EXPECT_EQ(dlg.result()->rows.size(), fx.form->SweepParts().settings.size());
    }
    // The detach is told once; the sweep adds no message of its own.
    EXPECT_LE(fx.messages.texts.size(), end == End::Unplug ? 1 : 0) << fx.messages.texts.join('|').toStdString();
    EXPECT_EQ(fx.session.RegWriteMirror, before.image);
    EXPECT_EQ(before.controls->FirstDifference().toStdString(), "");
    EXPECT_TRUE(derivedOf() == before.derived);
    EXPECT_TRUE(fx.form->isEnabled());
    for (std::size_t i = 0; i < chipRegs.size() && end != End::Unplug; ++i)
        EXPECT_EQ(fx.chip(chipRegs[i]), before.chip[i]) << "register " << chipRegs[i];
}

// Away from the form's load defaults, so that a sweep that leaves its last setting behind shows.
struct FamilySweep : FormFixture {
    FamilySweep() {
        Measure(6);
        Resolution(0);
        form->OptGain.at(2)->setChecked(true);
        form->OptGain_Click(2);
    }
    auto Derived() {
        auto& f = *form;
        return std::make_tuple(f.RangeIndex, f.AdcBits, f.FullScaleCounts, f.ShowLux, f.MeasureIndex,
                               f.MeasureSingleShot, f.ProxScheme, f.SampleDelayMs, f.IntLimitMax, f.plot.ScaleMax,
                               f.plot.ScaleMin, f.plot.ScaleLabels2, f.plot.AxisCaption, f.ConvertToLux(1000));
    }
};

TEST_F(FamilySweep, EveryEndLeavesChipAndFormAsTheyWere) {
    for (End end : {End::Whole, End::Cancel, End::Unplug}) {
        SCOPED_TRACE(int(end));
        SweepEndsAsItBegan(*this, end, {0, 1}, [this] { return Derived(); });
    }
}

TEST_F(FamilySweep, ApplyBestLeavesTheFormInTheQuietestUnsaturatedSetting) {
    scene().ambientLux = 3000;  // saturates the 1000 lux range
    form->characterise->bench = [] { return BenchLight{3000, QStringLiteral("the bench's lamp")}; };
    CharacteriseDialog& dlg = form->characterise->dialog();
    dlg.Prepare();
    dlg.spnReadings->setValue(3);
    dlg.cmdStart_Click();
    ASSERT_TRUE(dlg.result() && dlg.result()->best);
    const characterise::Row& best = dlg.result()->rows[*dlg.result()->best];
    EXPECT_NE(best.setting.rangeLux, 1000);
    EXPECT_EQ(best.saturated, 0);
    // Exports through the file dialog: a name without extension gets the kind's.
    QTemporaryDir dir;
    files.answers = {dir.filePath("sweep"), dir.filePath("sweep"), dir.filePath("sweep")};
    for (auto what : {CharacteriseDialog::Export::Csv, CharacteriseDialog::Export::Plot, CharacteriseDialog::Export::Report})
        dlg.Save(what);
    EXPECT_FALSE(QImage(dir.filePath("sweep.png")).isNull());
    EXPECT_TRUE(ReadFile(dir.filePath("sweep.csv")).contains("16000"));
    EXPECT_TRUE(ReadFile(dir.filePath("sweep.md")).contains("the bench's lamp"));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();
    // A file that cannot be written: one message naming it and the system's reason.
    const QString lost = dir.filePath("gone/sweep.csv");
    files.answers = {lost};
    dlg.Save(CharacteriseDialog::Export::Csv);
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains(lost)) << messages.texts[0].toStdString();
    messages.texts.clear();

    dlg.cmdApplyBest_Click();
    EXPECT_EQ(form->RangeTable[std::size_t(form->RangeIndex)], best.setting.rangeLux);
    EXPECT_EQ(form->AdcBits, best.setting.resolutionBits);
    EXPECT_TRUE(form->ShowLux);
    EXPECT_EQ(chip(1), session.RegWriteMirror[1]);
    // The form keeps it: a reading of its own is taken at that setting.
    FormSweepTarget again(session, form->SweepParts());
    const measure::Reading r = again.Read();
    EXPECT_EQ(r.status, SampleStatus::Ok);
    EXPECT_NEAR(r.value, 3000, best.luxPerCount * 2);
}

struct MultiSweep : Lxm600FormFixture {
    MultiSweep() {
        form->OptALSRange.at(0)->setChecked(true);
        form->OptALSRange_Click(0);
    }
    auto Derived() {
        auto& f = *form;
        return std::make_tuple(f.RangeIndex, f.ShowLux, f.TraceEnable1, f.TraceEnable2, f.plot().ScaleMax,
                               f.plot().AxisCaption2, f.ConvertToLux(1000));
    }
};

TEST_F(MultiSweep, EveryEndLeavesChipAndFormAsTheyWere) {
    for (End end : {End::Whole, End::Cancel, End::Unplug}) {
        SCOPED_TRACE(int(end));
        SweepEndsAsItBegan(*this, end, {1}, [this] { return Derived(); });
    }
}

}  // namespace
}  // namespace lxm::test
