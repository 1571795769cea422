// A reading is the same number in the window as on the command line and in Python: the form's
// collection and the measuring core, set up alike on one scene, end on the same reading.
#include <gtest/gtest.h>
#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>

#include "acquisition/SensorFields.h"
#include "app/CommandLine.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "measure/SimulatedBoard.h"
#include "support/DeviceFixture.h"

namespace lxm::test {
namespace {

struct Case { const char *sensor, *measure; int bits, rangeLux; double lux, infrared, distanceMm; };  // 0: as it starts

// A reading as the user sees it: what is not ok is no number (the form keeps a count for it).
using Seen = std::tuple<SampleStatus, double, std::optional<std::int32_t>, std::optional<std::int32_t>>;
Seen SeenOf(SampleStatus status, double value, std::optional<std::int32_t> ir, std::optional<std::int32_t> prox) {
    return {status, status == SampleStatus::Ok ? value : 0.0, ir, prox};
}

// Set up as the user would, clicking the form's options; five passes 120 ms apart (enough for
// a 16-bit conversion), the light settled a second before the last two.
Seen FormReading(const Case& c, BoardFixture& f) {
    f.OpenSession();
    f.session.SelectedType = c.sensor;
    std::unique_ptr<DeviceFormBase> base;
    const std::string m = c.measure;
    if (std::string(c.sensor) == "LXM600") {
        auto form = std::make_unique<frmLXM600>(f.session);
        form->Form_Load();
        form->OptALSRange.at(*IndexOf(kLxm600RangesLux, c.rangeLux))->click();
        form->OptMMode.at(m.starts_with("ir") ? 1 : 0)->click();
        (m.starts_with("prox") ? form->ChkPEnable : form->chkALSEnable)->click();
        form->OptGraph.at(m.starts_with("prox") ? 0 : 1)->click();
        form->txtInterval->setText(QStringLiteral("120"));
        base = std::move(form);
    } else {
        auto form = std::make_unique<frmLXM410>(f.session);
        form->Form_Load();
        if (c.bits) form->OptITime.at(*IndexOf(std::array{16, 12, 8, 4}, c.bits))->click();
        form->OptMeasure.at(FindCollectType(m)->optMeasure)->click();
        if (c.rangeLux) form->OptGain.at(*IndexOf(kFamilyRangesLux, c.rangeLux))->click();
        form->txtInterval->setText(QStringLiteral("120"));
        form->txtInterval_LostFocus();
        base = std::move(form);
    }
    CollectionState& run = base->collection();
    int passes = 0;
    run.onPass = [&] {
        if (++passes == 3) f.clock.AdvanceMs(1000);
        if (passes == 5) base->cmdStopData_Click();
    };
    base->cmdCollectData_Click();
    auto* dual = dynamic_cast<frmLXM410*>(base.get());
    if (dual && !dual->MeasureProxIrDual) dual = nullptr;
    return SeenOf(run.PassStatus, run.LatestReading, dual ? std::optional(dual->AmbientIr) : std::nullopt,
                  dual ? std::optional(dual->ProxCount) : std::nullopt);
}

TEST(SameReading, TheFormAndTheCoreReadTheSameNumberFromTheSameScene) {
    const Case cases[] = {
        {"LXM410", "als", 0, 0, 300, 120, 60},          {"LXM430", "als-cont", 16, 4000, 300, 120, 60},
        {"LXM410", "ir", 0, 0, 300, 120, 60},           {"LXM450", "ir-cont", 8, 0, 300, 120, 60},
        {"LXM410", "prox", 0, 0, 300, 120, 60},         {"LXM470", "prox-cont", 16, 0, 300, 300, 0},
        {"LXM410", "prox-ir", 0, 0, 300, 120, 60},      {"LXM430", "prox-ir", 12, 0, 300, 4000, 60},
        {"LXM600", "als", 0, 2000, 300, 120, 60},       {"LXM600", "als-cont", 0, 125, 100, 120, 60},
        {"LXM600", "ir-cont", 0, 125, 300, 60, 60},     {"LXM600", "prox", 0, 2000, 300, 120, 60},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.sensor) + " " + c.measure);
        BoardFixture f;
        FakeClock clock;
        measure::SimulatedBoard sim(clock, c.sensor, 0);
        if (std::string(c.sensor) == "LXM600") f.board.Carry(sim::Chip::Lxm600);
        sim.scene() = {.ambientLux = c.lux, .infrared = c.infrared, .objectDistanceMm = c.distanceMm, .ideal = true};
        f.board.scene() = sim.scene();
        const Seen form = FormReading(c, f);
        measure::Board& b = sim.board();
        if (c.bits) b.SetResolution(c.bits);
        b.SetMeasure(c.measure);
        if (c.rangeLux) b.SetRange(c.rangeLux);
        b.SetOneShotDelayMs(120);
        b.TakeReading();
        clock.AdvanceMs(1000);
        const measure::Reading core = b.TakeReading();
        EXPECT_EQ(SeenOf(core.status, core.value, core.ir, core.prox), form);
    }
}

}  // namespace
}  // namespace lxm::test
