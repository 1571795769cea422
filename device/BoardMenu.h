#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

#include "transport/BoardPlace.h"

class QAction;
class QMenu;
class QMenuBar;

namespace lxm {

class ActiveForm;
class Session;

// The start-up window's three board steps. The device forms run the very handlers of the
// start-up window, which lives above them, so they are handed in; a step left empty runs the
// driver step alone.
struct BoardSteps {
    std::function<void()> initTable;  // "Init Table"
    std::function<void()> openUsb;    // "Open USB"
    std::function<void()> closeUsb;   // "Close USB"
    // The attached boards (their places, and why one cannot be opened: empty when it can) and
    // the choice of one; without them the menu offers no choice.
    std::function<std::vector<std::pair<BoardPlace, QString>>()> listBoards = {};
    std::function<void(const BoardPlace&)> chooseBoard = {};
    // A new device form of one of these sensor types on a board no other form talks to; without
    // it the menu offers none.
    std::vector<std::string> anotherTypes = {};
    std::function<void(const std::string&)> openAnother = {};
};

// What a device form tells the menu about itself: the form (its lamps show the steps), the
// registers of its image that are written back, in order, and its own write and read buttons.
struct BoardRegisters {
    ActiveForm* form = nullptr;
    std::vector<int> rewrite;
    std::function<void(int)> write;
    std::function<void(int)> read;
};

// "Board": Init Table, Open USB, Close USB and Reconnect, for any device form's menu bar. After
// an unplug the board comes back powered up with its registers at their defaults; Reconnect
// registers with the driver again, opens the board and writes the register image back, so the
// chip is as the form shows it.
class BoardMenu : public QObject {
public:
    BoardMenu(Session& session, QMenuBar& bar, BoardRegisters registers);

    void SetSteps(BoardSteps steps) { steps_ = std::move(steps); }

    void mnuInitTable_Click();
    void mnuOpenUsb_Click();
    void mnuCloseUsb_Click();
    void mnuReconnect_Click();
    // "Choose Board": takes the board at place and reconnects to it.
    void mnuChooseBoard_Click(const BoardPlace& place);

    QMenu* mnuBoard = nullptr;
    QAction* mnuInitTable = nullptr;
    QAction* mnuOpenUsb = nullptr;
    QAction* mnuCloseUsb = nullptr;
    QAction* mnuReconnect = nullptr;
    QMenu* mnuChooseBoard = nullptr;
    // "New Window on Another Board": one item per sensor type.
    QMenu* mnuAnotherBoard = nullptr;

private:
    void Run(const std::function<void()>& step, void (BoardMenu::*fallback)());
    void InitDriver();
    void OpenDevice();
    void CloseDevice();
    void ListBoards();
    void ListTypes();

    Session& s_;
    BoardRegisters registers_;
    BoardSteps steps_;
};

}  // namespace lxm
