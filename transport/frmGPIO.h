#pragma once

#include <QWidget>
#include <array>
#include <map>

#include "core/ActiveForm.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace lxm {

class Session;

// "GPIO Control": direction and level of the board's port lines, sent in one packet.
class frmGPIO : public QWidget, public ActiveForm {
public:
    explicit frmGPIO(Session& session, QWidget* parent = nullptr);
    ~frmGPIO() override;

    void Form_Load();
    void Form_GotFocus();
    // Public: the device forms call it after changing the port-line image.
    void cmdGPIO_Write_Click();
    void cmdReadGPIO_Click() {}

    void chkOutEn_Click(int Index);
    void chkOutEnc_Click(int Index);
    void ChLed1_Click(int Index);
    void ChkBData_Click(int Index);
    void ChkCData_Click(int Index);
    void ChKLedData_Click(int Index);

    // The write columns and the check boxes from the port-line image, as it stands now.
    void ShowImage();
    // The USB COMM lamps from the session's link state. The transfer layer lights the lamps of
    // the active form only, so while another form is active this window catches up here.
    void ShowLinkState();

    // ActiveForm
    Shape* ShpAttach() override { return ShpAttach_; }
    Shape* Shp_USB_Transfer() override { return Shp_USB_Transfer_; }
    ColorLabel* LblCommTest() override { return LblCommTest_; }
    QRadioButton* OptMode(int) override { return nullptr; }
    QLineEdit* txtRegRd(int) override { return nullptr; }
    QLineEdit* txtRegHex(int) override { return nullptr; }
    Shape* ShpIndrd(int) override { return nullptr; }
    Shape* ShpIndwr(int) override { return nullptr; }

    // Controls, indexed as the bit or column they stand for.
    std::map<int, QCheckBox*> chkOutEn, chkOutEnc, ChLed1, ChkBData, ChkCData, ChKLedData;
    std::array<QLineEdit*, 4> txtPCHex{};
    std::array<QLineEdit*, 4> txtPCHexData{};
    std::map<int, Shape*> shpGpioWr;
    std::map<int, QLineEdit*> txtGPIOUserName;
    QGroupBox* Frame_GPIOOUTEN = nullptr;
    QGroupBox* frame_GPIOData = nullptr;
    QGroupBox* FrGPIOIo = nullptr;
    QGroupBox* FrOutEn = nullptr;
    QGroupBox* frameGPIO_Data = nullptr;
    QGroupBox* Frame1 = nullptr;
    QPushButton* cmdReadGPIO = nullptr;
    QPushButton* cmdGPIO_Write = nullptr;
    ColorLabel* LblCommTest_ = nullptr;
    Shape* Shp_USB_Transfer_ = nullptr;
    Shape* Shp_USB_Info = nullptr;
    Shape* ShpAttach_ = nullptr;
    QLabel* Label13 = nullptr;

    static constexpr int kLinkRefreshMs = 250;

protected:
    void changeEvent(QEvent* e) override;
    void showEvent(QShowEvent* e) override;
    void hideEvent(QHideEvent* e) override;

private:
    void BuildLayout();
    // A click in one of the six groups: set or clear bit n of one image byte and show it.
    void ToggleBit(QCheckBox* box, int n, int imageByte, QLineEdit* column);
    void SyncLamps();

    Session& s_;
    QTimer* linkTimer_ = nullptr;
};

}  // namespace lxm
