#pragma once

#include <gtest/gtest.h>
#include <QLineEdit>
#include <QRadioButton>

#include <functional>
#include <memory>
#include <vector>

#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "support/DeviceFixture.h"

namespace lxm::test {

// A session on the simulated board with the family form loaded, as after choosing a type at
// start-up. The board's clock moves only when the program sleeps or a test advances it.
struct FormFixture : ::testing::Test, BoardFixture {
    std::unique_ptr<frmLXM410> form;

    explicit FormFixture(const char* type = "LXM410") {
        OpenSession();
        session.SelectedType = type;
        form = std::make_unique<frmLXM410>(session);
        form->Form_Load();
        // On screen, as type selection leaves it: a form nobody sees skips its live boxes.
        form->show();
    }

    // The option clicks as the user makes them: the button becomes selected, then its handler runs.
    void Measure(int index) {
        form->OptMeasure.at(index)->setChecked(true);
        form->OptMeasure_Click(index);
    }
    void Resolution(int index) {
        form->OptITime.at(index)->setChecked(true);
        form->OptITime_Click(index);
    }
    void ProxOption(int index) {
        form->OptProxE.at(index)->setChecked(true);
        form->OptProxE_Click(index);
    }
    sim::LightScene& scene() { return board.scene(); }
    // Long enough for a conversion at any resolution to finish.
    void Settle() { clock.AdvanceMs(250); }

    // Bytes written to a sensor register (I2C write packets) since a point in the wire log.
    std::vector<std::uint8_t> WritesTo(int reg, std::size_t from = 0) {
        std::vector<std::uint8_t> values;
        for (std::size_t i = from; i < wire().size(); ++i) {
            const auto& p = wire()[i];
            if (p.dir == sim::WireDir::Out && p.endpoint == 0x02 && p.bytes.size() >= 4 && p.bytes[0] == 0 &&
                p.bytes[2] == reg)
                values.push_back(p.bytes[3]);
        }
        return values;
    }
    // Two-byte reads of the data registers since a point in the wire log.
    int DataReads(std::size_t from = 0) {
        int n = 0;
        for (std::size_t i = from; i < wire().size(); ++i) {
            const auto& p = wire()[i];
            if (p.dir == sim::WireDir::Out && p.endpoint == 0x02 && p.bytes.size() == 3 && p.bytes[0] == 2 &&
                p.bytes[2] == 2)
                ++n;
        }
        return n;
    }

    // Runs a collection; perPass sees the pass number (1 based) and stops the run by returning
    // false. Returns the number of passes taken.
    int Collect(const std::function<bool(int)>& perPass) {
        int passes = 0;
        form->onPass = [&] {
            if (!perPass(++passes)) form->cmdStopData_Click();
        };
        form->cmdCollectData_Click();
        form->onPass = nullptr;
        return passes;
    }
    int Collect(int passes) {
        return Collect([passes](int n) { return n < passes; });
    }
};

// The same for the multi-function form, on a board carrying its chip; the wire log starts
// empty after the form's load.
struct Lxm600FormFixture : ::testing::Test, BoardFixture {
    std::unique_ptr<frmLXM600> form;

    Lxm600FormFixture() {
        board.Carry(sim::Chip::Lxm600);
        OpenSession();
        session.SelectedType = "LXM600";
        form = std::make_unique<frmLXM600>(session);
        form->Form_Load();
        form->show();
        wire().clear();
    }
};

}  // namespace lxm::test
