#pragma once

#include <QWidget>
#include <map>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QTextEdit;

namespace lxm {

class Session;
class RecordFrame;

// "I2C Trace Options": an editable trace text and the frame that saves it to a file.
class Doco : public QWidget {
public:
    explicit Doco(Session& session, QWidget* parent = nullptr);

    void Form_Load();
    void cndTclear_Click();
    void cmdStartRec_Click();

    QGroupBox* FrmDocoOptions = nullptr;
    std::map<int, QCheckBox*> ChkTrace;  // "Show Reads", "Show Address"
    QPushButton* cndTclear = nullptr;
    QTextEdit* rtxt1 = nullptr;
    RecordFrame* frmDataRecord = nullptr;
    // A trace that could not be saved is told here rather than in a message box: saving the
    // trace is a side task the user should not have to click away.
    QLabel* lblResult = nullptr;

private:
    Session& s_;
};

}  // namespace lxm
