#pragma once

#include <QGroupBox>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "device/parts/Controls.h"

class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace lxm {

class ColorLabel;
class Session;
class Shape;

// The raw register panel of a device form: one row per sensor register (entry box, write
// button and lamp, read-back box, read button and lamp), "Read All" and the sensor's I2C
// address. What differs between the forms is data: the number of rows, the read-back tool
// tips, which rows are data registers, which bits light flag lamps, where busy texts go, and
// the form's own Enter and lost-focus rules.
class RegisterPanel : public QGroupBox {
public:
    struct FlagLamp {
        int reg;
        std::uint8_t mask;
        Shape* lamp;
    };
    struct Rules {
        // Data registers change with every conversion: their lamp shows activity, never a
        // mismatch with the entry box.
        std::vector<int> activityRows;
        // A bit of a register read that lights a lamp (light red set, black clear).
        std::vector<FlagLamp> flagLamps;
        // The "Fail" label of the form.
        ColorLabel* commTest = nullptr;
        // Where a read or write refused because the bus is busy says so; none: silent.
        QLabel* busyStatus = nullptr;
        // A read that completes also ends any deferral the loop would still serve.
        bool clearDeferredAfterRead = false;
    };

    // readTips: the read-back box tool tip of each row (rows beyond it get the last one).
    RegisterPanel(Session& session, int rows, const std::vector<QString>& readTips, QWidget* parent);

    int rows() const { return rows_; }
    QLineEdit* txtRegHex(int reg) const;
    QLineEdit* txtRegRd(int reg) const;
    QPushButton* cmdRDReg(int reg) const;
    QPushButton* cmdWrtReg(int reg) const;
    Shape* ShpIndrd(int reg) const;
    Shape* ShpIndwr(int reg) const;
    QPushButton* cmdReadAllRegs() const { return readAll_; }
    QLineEdit* txtI2CADR() const { return address_; }
    // A row below the address entry for the form's own lamps.
    QGridLayout* footer() const { return footer_; }
    Rules& rules() { return rules_; }

    // The form's handlers: the buttons call onRead / onWrite (cmdRDReg_Click, cmdWrtReg_Click),
    // Enter in an entry onEnter, leaving one onLostFocus.
    std::function<void(int)> onRead, onWrite, onEnter, onLostFocus;

    // Load-time tool tips of the rows; the buttons' texts are followed by the row number with
    // its sign blank, so two blanks stand before it.
    void SetRowToolTips(const QString& hexTip, const QString& readTip);
    // The registers' names beside their rows, their bit fields in the names' tool tips with the
    // value last written or read.
    void SetRegisterNames(std::vector<RegisterName> names);
    QLabel* lblRegName(int reg) const;
    // A byte of the register image into its entry box.
    void ShowRegister(int reg);

    // The read of one row with the panel's side effects.
    void Read(int reg);
    // The write of one row from its entry box.
    void Write(int reg);
    // Every row in order, stopping at the first when the board is not there.
    void ReadAll();
    // The I2C address entry: an address of 256 or more becomes "88".
    void AddressEntered();
    // A single read of count consecutive registers into their read-back boxes, their lamps
    // flipping. While another transfer holds the bus it is left to the collection loop's
    // register refresh and nothing is returned; busyText then goes to the busy label.
    std::optional<std::vector<std::uint8_t>> ReadRows(int first, int count, const QString& busyText = {});

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ShowBusy(const QString& text);
    void DescribeRow(int reg, std::uint8_t value, const QString& how);

    Session& s_;
    int rows_;
    std::vector<QLineEdit*> hex_, rd_;
    std::vector<QPushButton*> rdButton_, wrButton_;
    std::vector<Shape*> indRd_, indWr_;
    std::vector<QLabel*> name_;
    std::vector<RegisterName> names_;
    QPushButton* readAll_ = nullptr;
    QLineEdit* address_ = nullptr;
    QGridLayout* footer_ = nullptr;
    Rules rules_;
};

// "Device Selection": the sensor list and the 7-bit and read addresses it shows.
class DeviceSelection : public QGroupBox {
public:
    explicit DeviceSelection(QWidget* parent);
    QListWidget* LstDeviceSel = nullptr;
    QLineEdit* txtI2CAddr = nullptr;
    QLineEdit* txtI2cXmitAdr = nullptr;
    QLabel* Label20 = nullptr;
    QLabel* Label10 = nullptr;
};

// The text of an entry box made ready to send: upper case (cut to its first two characters
// when cut is set), "00" when its value does not fit a byte.
QString CheckedHexByte(const QString& text, bool cut);

}  // namespace lxm
