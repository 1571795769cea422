#pragma once

#include <QLineEdit>
#include <QRadioButton>
#include <QWidget>
#include <array>

#include "core/ActiveForm.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"

namespace lxm::test {

// The smallest form the transfer layer can report on: lamps, the "Fail" label, "Test Comm"
// and nine register rows.
class TestForm : public QWidget, public ActiveForm, public StartupLamps {
public:
    static constexpr int kRows = 9;
    TestForm() {
        for (int i = 0; i < kRows; ++i) {
            rd[i] = new QLineEdit(this);
            hex[i] = new QLineEdit(this);
            indRd[i] = new Shape(this);
            indWr[i] = new Shape(this);
        }
    }
    Shape* ShpAttach() override { return &attach; }
    Shape* Shp_USB_Transfer() override { return &transfer; }
    ColorLabel* LblCommTest() override { return &commTest; }
    QRadioButton* OptMode(int i) override { return i == 2 ? &testComm : nullptr; }
    QLineEdit* txtRegRd(int r) override { return r >= 0 && r < kRows ? rd[r] : nullptr; }
    QLineEdit* txtRegHex(int r) override { return r >= 0 && r < kRows ? hex[r] : nullptr; }
    Shape* ShpIndrd(int r) override { return r >= 0 && r < kRows ? indRd[r] : nullptr; }
    Shape* ShpIndwr(int r) override { return r >= 0 && r < kRows ? indWr[r] : nullptr; }
    Shape* Shp_USB_Init() override { return &init; }
    Shape* Shp_USB_Info() override { return &info; }

    Shape attach, transfer, init, info;
    ColorLabel commTest;
    QRadioButton testComm;
    std::array<QLineEdit*, kRows> rd{}, hex{};
    std::array<Shape*, kRows> indRd{}, indWr{};
};

}  // namespace lxm::test
