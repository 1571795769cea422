#pragma once

#include <QWidget>
#include <functional>
#include <initializer_list>
#include <vector>

class QGroupBox;
class QHBoxLayout;
class QLabel;
class QRadioButton;

namespace lxm {

class ColorLabel;
class Session;
class Shape;

// The strip along the top of a device form: "USB COMM" (double-click: the view toggle), the
// attach and transfer lamps, the form's status lamp and the "Test Comm" frame with its "Fail"
// label. The form adds its own controls to row().
class StatusStrip : public QWidget {
public:
    StatusStrip(Session& session, QWidget* parent);

    QLabel* Label13() const { return label13_; }
    Shape* ShpAttach() const { return attach_; }
    Shape* Shp_USB_Transfer() const { return transfer_; }
    Shape* ShpStatus() const { return status_; }
    QGroupBox* frmMode() const { return frmMode_; }
    QRadioButton* OptMode(int index) const { return index == 2 ? testComm_ : nullptr; }
    ColorLabel* LblCommTest() const { return commTest_; }
    QHBoxLayout* row() const { return row_; }

    // Which board the form talks to ("board 1:5", "simulated 1:2"), beside "USB COMM"; empty
    // hides it. Only worth the room when several boards could be mistaken for each other.
    void ShowBoard(const QString& where);
    QLabel* lblBoard() const { return board_; }

    // Double-click on "USB COMM".
    std::function<void()> onLabel13DblClick;

    // "Test Comm": refuses with a message when the board is absent or was pulled, otherwise
    // toggles two port lines, reads register 0 through the form (readRegister0) and shows
    // "Good" or "Fail" by the reply's status.
    void OptMode_Click(int index, const std::function<void()>& readRegister0);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Fail();

    Session& s_;
    QHBoxLayout* row_ = nullptr;
    QLabel* label13_ = nullptr;
    QLabel* board_ = nullptr;  // made when first shown
    Shape* attach_ = nullptr;
    Shape* transfer_ = nullptr;
    Shape* status_ = nullptr;
    QGroupBox* frmMode_ = nullptr;
    QRadioButton* testComm_ = nullptr;
    ColorLabel* commTest_ = nullptr;
};

// The compact/full view toggle. Going compact hides hideOnCompact; going full shows
// showOnFull and then hides keepHiddenOnFull (controls the full view does not bring back).
// Returns the new state of the flag.
struct ViewSets {
    std::vector<QWidget*> hideOnCompact;
    std::vector<QWidget*> showOnFull;
    std::vector<QWidget*> keepHiddenOnFull;
};
bool ToggleView(bool compactView, const ViewSets& sets);

}  // namespace lxm
