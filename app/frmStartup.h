#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/ActiveForm.h"
#include "device/BoardMenu.h"
#include "device/parts/CharacteriseDialog.h"

class QComboBox;
class QLabel;
class QMenuBar;
class QPushButton;
class QAction;
class QTimer;

namespace lxm {

class Session;
class frmLXM410;
class DeviceFormBase;
struct BoardSteps;
class frmLXM600;
class frmAbout2;
class HelpMenu;

// The start-up window: initialises the driver, waits for the board, shows the four USB
// lamps and lets the user pick the sensor type.
class frmStartup : public QWidget, public LampsOnlyForm, public StartupLamps {
public:
    // commandLine: the program's arguments after its own options ("/d" is the only one read).
    frmStartup(Session& session, QString commandLine, QWidget* parent = nullptr);
    ~frmStartup() override;

    void Form_Load();
    void Form_Activate();
    void cboTypeSelect_Click();
    // The menu's way to the multi-function sensor, which the type list does not hold.
    void mnuLXM600_Click();
    // Selects a sensor by name (LXM410, LXM430, LXM450, LXM470, LXM600) the way the user
    // would; false for a name the program does not know.
    bool SelectSensor(const QString& name);
    void Command1_Click();  // "Open USB"
    void Command2_Click();  // "Close USB"
    void Command3_Click();  // "Init Table"
    void mnuAbout_Click();
    // The about box's system report, without the about box.
    void mnuSystemInfo_Click();
    // Its three board steps, for the Board menu of the device forms.
    BoardSteps Steps();
    void Form_QueryUnload();
    // Shutdown of the board, a short pause, then the program ends.
    void ExitProgram();

    frmLXM410* DeviceForm() { return lxm410_.get(); }
    frmLXM600* MultiFunctionForm() { return lxm600_.get(); }
    // The about box, once "About" has opened it.
    frmAbout2* AboutForm() { return about_.get(); }
    // Told the selected type before its form loads (the simulated board fits its chip).
    std::function<void(const std::string&)> onTypeSelected;
    // Brings back the simulated board's window; empty on a real board.
    std::function<void()> showSimulatedBoard;
    // The light at the sensor of a form's board for "Characterise...", known on a simulated board.
    std::function<BenchLight(Session&)> benchLight;
    // The Board menu's choice among several attached boards (set by the program for a real USB).
    decltype(BoardSteps::listBoards) listBoards;
    decltype(BoardSteps::chooseBoard) chooseBoard;
    // "Board > New Window on Another Board": a session of its own on a board no form talks to
    // yet, made by the program; nullptr when there is none (the program has said why).
    std::function<Session*(const std::string& type)> anotherBoard;
    // Each device form as it is made, with its session and the steps of its Board menu, which
    // the program completes with the choice among the boards.
    std::function<void(DeviceFormBase&, Session&, BoardSteps&)> onFormMade;
    // A device form of type on another board, beside those already open.
    void OpenAnother(const std::string& type);
    const std::vector<std::unique_ptr<DeviceFormBase>>& OtherForms() const { return others_; }
    // Where ExitProgram ends the program; the application quits by default.
    std::function<void()> onExit;

    // StartupLamps
    Shape* Shp_USB_Init() override { return Shp_USB_Init_; }
    Shape* Shp_USB_Info() override { return Shp_USB_Info_; }

    QPushButton* Command1 = nullptr;
    QPushButton* Command2 = nullptr;
    QPushButton* Command3 = nullptr;
    QComboBox* CboVCC = nullptr;
    QComboBox* cboTypeSelect = nullptr;
    QLabel* Label1 = nullptr;
    QLabel* Label2[2] = {nullptr, nullptr};
    QMenuBar* menuBar = nullptr;
    QAction* mnuAbout = nullptr;
    // The documents and the system report; "About" stands in the bar itself.
    HelpMenu* helpMenu = nullptr;
    QAction* mnuLXM600 = nullptr;
    Shape* Shp_USB_Init_ = nullptr;
    Shape* Shp_USB_Info_ = nullptr;
    // One line under the lamps while no board is there, saying what to do about it.
    QLabel* lblNoBoard = nullptr;
    void ShowBoardHint();
    static constexpr int kHintRefreshMs = 500;
    // What a title bar holds besides the title: icon, buttons and margins.
    static constexpr int kTitleBarExtras = 140;

protected:
    void changeEvent(QEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

private:
    void BuildLayout();
    // The selection steps shared by the list and the menu; type "" selects nothing.
    void SelectType(const std::string& type);
    template <class Form>
    void ShowDeviceForm(std::unique_ptr<Form>& form, const std::string& type, Session& s);
    template <class Form>
    void ShowOtherForm(const std::string& type, Session& s);

    Session& s_;
    QString commandLine_;
    std::unique_ptr<frmLXM410> lxm410_;
    std::unique_ptr<frmLXM600> lxm600_;
    std::unique_ptr<frmAbout2> about_;
    // Forms on boards of their own, each on its own session; they outlive their closing (the
    // program's sessions go after them).
    std::vector<std::unique_ptr<DeviceFormBase>> others_;
    bool selecting_ = false;
    QTimer* hintTimer_ = nullptr;
};

}  // namespace lxm
