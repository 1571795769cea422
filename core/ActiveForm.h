#pragma once

class QLineEdit;
class QRadioButton;

namespace lxm {

class Shape;
class ColorLabel;

// What the transfer layer and the attach/detach handlers touch on whichever form is
// active. Every form that can become active carries these controls; a form without
// register rows returns nullptr for them and the transfer layer leaves them alone.
class ActiveForm {
public:
    virtual ~ActiveForm() = default;

    virtual Shape* ShpAttach() = 0;
    virtual Shape* Shp_USB_Transfer() = 0;
    virtual ColorLabel* LblCommTest() = 0;
    virtual QRadioButton* OptMode(int index) = 0;

    virtual QLineEdit* txtRegRd(int reg) = 0;
    virtual QLineEdit* txtRegHex(int reg) = 0;
    virtual Shape* ShpIndrd(int reg) = 0;
    virtual Shape* ShpIndwr(int reg) = 0;
};

// A form that can become active but has only the two transfer lamps: the transfer layer lights
// them and leaves everything else alone. The form creates the lamps.
class LampsOnlyForm : public ActiveForm {
public:
    Shape* ShpAttach() override { return ShpAttach_; }
    Shape* Shp_USB_Transfer() override { return Shp_USB_Transfer_; }
    ColorLabel* LblCommTest() override { return nullptr; }
    QRadioButton* OptMode(int) override { return nullptr; }
    QLineEdit* txtRegRd(int) override { return nullptr; }
    QLineEdit* txtRegHex(int) override { return nullptr; }
    Shape* ShpIndrd(int) override { return nullptr; }
    Shape* ShpIndwr(int) override { return nullptr; }

protected:
    Shape* ShpAttach_ = nullptr;
    Shape* Shp_USB_Transfer_ = nullptr;
};

// The two lamps that always live on the start-up window, whichever form is active.
class StartupLamps {
public:
    virtual ~StartupLamps() = default;
    virtual Shape* Shp_USB_Init() = 0;
    virtual Shape* Shp_USB_Info() = 0;
};

}  // namespace lxm
