#include "BoardMenu.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

#include "core/ActiveForm.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "transport/Session.h"
#include "transport/frmGPIO.h"
#include "transport/generic_usb_lib.h"
#include "core/MenuBar.h"

namespace lxm {

BoardMenu::BoardMenu(Session& session, QMenuBar& bar, BoardRegisters registers)
    : QObject(&bar), s_(session), registers_(std::move(registers)) {
    mnuBoard = MenuNamed(bar, QStringLiteral("Board"));
    mnuInitTable = mnuBoard->addAction(QStringLiteral("Init Table"));
    mnuOpenUsb = mnuBoard->addAction(QStringLiteral("Open USB"));
    mnuCloseUsb = mnuBoard->addAction(QStringLiteral("Close USB"));
    mnuBoard->addSeparator();
    mnuReconnect = mnuBoard->addAction(QStringLiteral("Reconnect"));
    mnuReconnect->setToolTip(QStringLiteral(
        "After the board was unplugged: Init Table, Open USB, then write the registers again"));
    mnuBoard->setToolTipsVisible(true);
    connect(mnuInitTable, &QAction::triggered, this, [this] { mnuInitTable_Click(); });
    connect(mnuOpenUsb, &QAction::triggered, this, [this] { mnuOpenUsb_Click(); });
    connect(mnuCloseUsb, &QAction::triggered, this, [this] { mnuCloseUsb_Click(); });
    connect(mnuReconnect, &QAction::triggered, this, [this] { mnuReconnect_Click(); });
    mnuChooseBoard = mnuBoard->addMenu(QStringLiteral("Choose Board"));
    mnuChooseBoard->setToolTipsVisible(true);
    connect(mnuChooseBoard, &QMenu::aboutToShow, this, [this] { ListBoards(); });
    mnuAnotherBoard = mnuBoard->addMenu(QStringLiteral("New Window on Another Board"));
    connect(mnuAnotherBoard, &QMenu::aboutToShow, this, [this] { ListTypes(); });
}

void BoardMenu::ListTypes() {
    mnuAnotherBoard->clear();
    for (const std::string& type : steps_.anotherTypes) {
        QAction* a = mnuAnotherBoard->addAction(QString::fromStdString(type));
        a->setEnabled(steps_.openAnother != nullptr);
        connect(a, &QAction::triggered, this, [this, type] {
            if (steps_.openAnother) steps_.openAnother(type);
        });
    }
    if (steps_.anotherTypes.empty())
        mnuAnotherBoard->addAction(QStringLiteral("No other board"))->setEnabled(false);
}

// Filled each time it opens: boards come and go.
void BoardMenu::ListBoards() {
    mnuChooseBoard->clear();
    const auto boards = steps_.listBoards ? steps_.listBoards() : decltype(steps_.listBoards()){};
    if (boards.empty()) mnuChooseBoard->addAction(QStringLiteral("No board attached"))->setEnabled(false);
    const UsbDeviceInfo* now = s_.UsbConnected ? s_.usb().deviceInfoPtr : nullptr;
    for (const auto& [where, problem] : boards) {
        const BoardPlace place = where;
        QAction* a = mnuChooseBoard->addAction(QStringLiteral("Bus %1, port %2").arg(place.bus).arg(place.port));
        a->setCheckable(true);
        a->setChecked(now && IsAt(*now, place));
        a->setEnabled(problem.isEmpty() && steps_.chooseBoard != nullptr);
        if (!problem.isEmpty()) a->setToolTip(problem);
        connect(a, &QAction::triggered, this, [this, place] { mnuChooseBoard_Click(place); });
    }
}

void BoardMenu::mnuChooseBoard_Click(const BoardPlace& place) {
    if (!steps_.chooseBoard) return;
    steps_.chooseBoard(place);
    mnuReconnect_Click();
}

void BoardMenu::InitDriver() {
    s_.usb().InitDriver();
}
void BoardMenu::OpenDevice() {
    s_.usb().OpenDevice();
}
void BoardMenu::CloseDevice() {
    s_.usb().CloseDevice();
}

void BoardMenu::Run(const std::function<void()>& step, void (BoardMenu::*fallback)()) {
    // The lamps of the steps belong to the form the user is working in.
    if (registers_.form) s_.activeForm = registers_.form;
    if (step)
        step();
    else
        (this->*fallback)();
    if (registers_.form) s_.activeForm = registers_.form;
}

void BoardMenu::mnuInitTable_Click() {
    Run(steps_.initTable, &BoardMenu::InitDriver);
}
void BoardMenu::mnuOpenUsb_Click() {
    Run(steps_.openUsb, &BoardMenu::OpenDevice);
}
void BoardMenu::mnuCloseUsb_Click() {
    Run(steps_.closeUsb, &BoardMenu::CloseDevice);
}

void BoardMenu::mnuReconnect_Click() {
    s_.Collecting = false;
    mnuInitTable_Click();
    mnuOpenUsb_Click();
    if (!s_.UsbConnected || !s_.DeviceInfoOK) {
        s_.messages.MsgBox(QStringLiteral(
            "The evaluation board did not come back. Plug it in and choose Board > Reconnect again."));
        return;
    }
    // The image, not the entry boxes, is what the chip held: show it and send it.
    ActiveForm* f = registers_.form;
    for (int r : registers_.rewrite) {
        if (QLineEdit* hex = f ? f->txtRegHex(r) : nullptr)
            hex->setText(Hex2(s_.RegWriteMirror[std::size_t(r)]));
        if (registers_.write) registers_.write(r);
        if (!s_.UsbConnected) return;  // gone again: the transfer layer has said so
    }
    // The port lines came back at their defaults too.
    if (s_.HasGpioForm()) s_.GpioForm().cmdGPIO_Write_Click();
    if (registers_.read)
        for (int r : registers_.rewrite) registers_.read(r);
    if (f) s_.activeForm = f;
    DoEvents();
}

}  // namespace lxm
