#pragma once

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "acquisition/SensorFields.h"

class QGridLayout;

namespace lxm {
class Session;
}

// Building blocks every device form is made of: control arrays, small entry boxes, option
// arrays and the bit-field arithmetic behind them.
namespace lxm {

// A control array: the index is the one the handlers receive; arrays may have gaps.
template <class T>
using CtlArray = std::map<int, T*>;

using OptionItems = std::vector<std::pair<int, QString>>;

// A centred entry box of a fixed width.
QLineEdit* MakeBox(QWidget* parent, const QString& text = {}, int width = 44);

// A push button as wide as `fitsWidth` needs, whose longer captions are shortened with an
// ellipsis (the whole caption in its tool tip) rather than widening it: for a caption that
// changes with the state of the form, which would otherwise move everything beside it.
class EllipsisButton : public QPushButton {
public:
    EllipsisButton(const QString& text, const QString& fitsWidth, QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QRect TextRect() const;
    QString fits_;
};

// Fills a group box with one option button per item, perRow to a row, into arr; returns the
// grid so that the caller can add the group's other controls below.
QGridLayout* MakeOptionArray(QGroupBox* box, CtlArray<QRadioButton>& arr, const OptionItems& items,
                             int perRow);

// One handler per array: a click on member i calls handler(i), as one user action of the session
// (which tells of a missing board once).
void WireArray(Session& session, const CtlArray<QRadioButton>& arr, QObject* context,
               const std::function<void(int)>& handler);

// The member of an option array that is selected, or fallback when none is.
int SelectedIndex(const CtlArray<QRadioButton>& arr, int fallback = 0);

template <class Image>
void SetField(Image& image, const BitField& field, std::uint8_t value) {
    SetField(image[std::size_t(field.reg)], field.mask, value);
}

// What the register panel says of a register beside its row: its name and the bit fields the
// form's controls set in it.
struct NamedField {
    const char* name;
    BitField field;
};
struct RegisterName {
    QString name;
    QString shortName;  // beside the row
    std::vector<NamedField> fields;
};

// The tool tip of a register's name: the name, the register and its value, then one line per
// field, highest bits first ("bits 3:2 resolution: 1").
QString DescribeRegister(const RegisterName& r, int reg, std::uint8_t value, const QString& how);

}  // namespace lxm
