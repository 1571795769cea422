#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "transport/BoardPlace.h"

class QTimer;

namespace lxm {

class DeviceFormBase;
class frmStartup;
namespace sim {
class SimBus;
}
class OneBoardDriver;
class Session;
struct BoardSteps;

// Each device form talks to a board of its own, through a session of its own: its lamps, its
// register image, its detach and its choice of board are its own, and a reply of one board
// never reaches another form. The first form keeps the start-up window's session; every other
// form gets one here, on a board no open form talks to.
class FormBoards : public QObject {
public:
    using BoardList = std::vector<std::pair<BoardPlace, QString>>;
    // A driver for one more form that takes the board at place alone, or without a place one
    // the maker adds (a simulated board); no driver when there is none to take. keep owns it.
    struct Made {
        UsbDriver* driver = nullptr;
        OneBoardDriver* only = nullptr;  // real USB: the board taken, changed by Choose Board
        std::shared_ptr<void> keep;
    };
    using Maker = std::function<Made(std::optional<BoardPlace> place, const std::string& type)>;
    // The board at place alone, of those all offers; nothing without a place.
    static Made TakeAlone(UsbDriver& all, std::optional<BoardPlace> place);
    // The boards plugged into a simulated bus.
    static BoardList OnBus(const sim::SimBus& bus);

    // first: the start-up window's session and the driver that takes its board. list: the
    // attached boards (as the Board menu shows them). kind names a board beside its place in
    // the forms' status strips ("board", "simulated").
    FormBoards(Session& first, OneBoardDriver* firstOnly, std::function<BoardList()> list, Maker make,
               QString kind);
    ~FormBoards() override;

    // A session, open and held, on a board no open form talks to; nullptr after one message
    // saying why not.
    Session* Open(const std::string& type);
    // The start-up window opens further forms through here.
    void Serve(frmStartup& startup);
    // A form has been made on session: its Board menu chooses among the boards for that
    // session alone, its status strip names its board, and closing one other than the first
    // lets its board go.
    void FormMade(DeviceFormBase& form, Session& session, BoardSteps& steps);
    // The status strips again: the boards named when several could be mistaken for each other.
    void Refresh();

    // How often the strips look at the boards again: boards come and go by hand.
    static constexpr int kRefreshMs = 2000;

private:
    struct Link;
    Link* LinkOf(const Session& s);
    std::optional<BoardPlace> Holds(const Link& link) const;
    // Whether an open form other than except talks to the board at place.
    bool Held(const BoardPlace& place, const Link* except) const;
    BoardList ListFor(const Link& link);

    std::vector<std::unique_ptr<Link>> links_;  // the first is the start-up window's
    std::function<BoardList()> list_;
    Maker make_;
    QString kind_;
    QTimer* refresh_ = nullptr;
};

}  // namespace lxm
