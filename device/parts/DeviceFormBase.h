#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/ActiveForm.h"

class QLabel;
class QPushButton;

namespace lxm {

class RecordFrame;
class RegisterPanel;
class Session;
class StatusStrip;

// What every device form is besides its own controls: the form the transfer layer reports on
// (its lamps, "Fail" label, "Test Comm" and register rows live in the status strip and the
// register panel), a form that becomes the active one when it gets the focus, and one whose
// closing ends a running collection and then the program.
class DeviceFormBase : public QWidget, public ActiveForm {
public:
    ~DeviceFormBase() override;

    Shape* ShpAttach() override;
    Shape* Shp_USB_Transfer() override;
    ColorLabel* LblCommTest() override;
    QRadioButton* OptMode(int index) override;
    QLineEdit* txtRegRd(int reg) override;
    QLineEdit* txtRegHex(int reg) override;
    Shape* ShpIndrd(int reg) override;
    Shape* ShpIndwr(int reg) override;

    void Form_GotFocus();

    // The register panel's buttons and "Read All", and "Test Comm", as other handlers call them.
    void cmdRDReg_Click(int Index);
    void cmdWrtReg_Click(int Index);
    void cmdReadAllRegs_Click();
    void OptMode_Click(int Index);

    // Called once the form has closed (the program then ends).
    std::function<void()> onClosed;

protected:
    explicit DeviceFormBase(Session& session, QWidget* parent);
    // "Write to Disk": the readings of the last run into the frame's file, with registers 0 and
    // 1 and the interval in the header; Start stays out of reach while the file is written.
    void RecordRun(RecordFrame& frame, const std::int32_t& sampleCount, const std::vector<double>& samples,
                   QLineEdit* interval, QPushButton* collect, QLabel* result);
    // The form's own unload steps, run when it closes.
    virtual void Form_Unload() {}

    void changeEvent(QEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

    Session& s_;
    StatusStrip* strip_ = nullptr;
    RegisterPanel* panel_ = nullptr;
};

}  // namespace lxm
