#include "app/FormBoards.h"

#include <QTimer>

#include "app/frmStartup.h"
#include "core/Colours.h"
#include "device/BoardMenu.h"
#include "device/parts/DeviceFormBase.h"
#include "device/parts/StatusStrip.h"
#include "simboard/SimBus.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

struct FormBoards::Link {
    std::shared_ptr<void> keep;        // goes after the session, which talks through it
    std::unique_ptr<Session> session;  // empty for the start-up window's, which is lent
    Session* s = nullptr;
    OneBoardDriver* only = nullptr;
    DeviceFormBase* form = nullptr;
    bool closed = false;
};

FormBoards::FormBoards(Session& first, OneBoardDriver* firstOnly, std::function<BoardList()> list, Maker make,
                       QString kind)
    : list_(std::move(list)), make_(std::move(make)), kind_(std::move(kind)) {
    auto link = std::make_unique<Link>();
    link->s = &first;
    link->only = firstOnly;
    links_.push_back(std::move(link));
    refresh_ = new QTimer(this);
    refresh_->setInterval(kRefreshMs);
    connect(refresh_, &QTimer::timeout, this, [this] {
        // Listing the boards opens each of them: not in the middle of anyone's collection.
        for (const auto& l : links_)
            if (l->s->Collecting) return;
        Refresh();
    });
}

FormBoards::~FormBoards() = default;

FormBoards::Made FormBoards::TakeAlone(UsbDriver& all, std::optional<BoardPlace> place) {
    if (!place) return {};
    auto only = std::make_shared<OneBoardDriver>(all, place);
    return {only.get(), only.get(), only};
}

FormBoards::BoardList FormBoards::OnBus(const sim::SimBus& bus) {
    BoardList boards;
    for (const sim::SimDriver* d : bus.boards())
        if (d->IsPlugged())
            boards.emplace_back(BoardPlace{d->info().busNumber, d->info().deviceAddress}, QString());
    return boards;
}

void FormBoards::Serve(frmStartup& startup) {
    startup.anotherBoard = [this](const std::string& type) { return Open(type); };
    startup.onFormMade = [this](DeviceFormBase& form, Session& s, BoardSteps& steps) {
        FormMade(form, s, steps);
    };
}

FormBoards::Link* FormBoards::LinkOf(const Session& s) {
    for (auto& l : links_)
        if (l->s == &s) return l.get();
    return nullptr;
}

// The board a form talks to is the one it opened; before that, the one it was told to take.
std::optional<BoardPlace> FormBoards::Holds(const Link& link) const {
    Session& s = *link.s;
    const UsbDeviceInfo* info = s.usb().deviceInfoPtr;
    if (s.UsbConnected && s.DeviceInfoOK && info) return BoardPlace{info->busNumber, info->deviceAddress};
    if (link.only && link.only->place()) return link.only->place();
    return std::nullopt;
}

bool FormBoards::Held(const BoardPlace& place, const Link* except) const {
    for (const auto& l : links_) {
        if (l.get() == except || l->closed) continue;
        const auto held = Holds(*l);
        if (held && held->bus == place.bus && held->port == place.port) return true;
    }
    return false;
}

// A board another open form talks to cannot be chosen: two forms on one board would take
// each other's replies.
FormBoards::BoardList FormBoards::ListFor(const Link& link) {
    BoardList boards = list_ ? list_() : BoardList{};
    for (auto& [place, problem] : boards)
        if (problem.isEmpty() && Held(place, &link))
            problem = QStringLiteral("Another window talks to this board");
    return boards;
}

Session* FormBoards::Open(const std::string& type) {
    Session& first = *links_.front()->s;
    std::optional<BoardPlace> place;
    for (const auto& [where, problem] : list_ ? list_() : BoardList{})
        if (problem.isEmpty() && !Held(where, nullptr)) {
            place = where;
            break;
        }
    const Made made = make_(place, type);
    if (!made.driver) {
        first.messages.MsgBox(
            QStringLiteral("Every attached board has a window of its own. Plug in another board, then choose "
                           "Board > New Window on Another Board again."));
        return nullptr;
    }
    auto link = std::make_unique<Link>();
    link->keep = made.keep;
    link->only = made.only;
    link->session = std::make_unique<Session>(*made.driver, first.messages, first.files, first.clock);
    link->s = link->session.get();
    Session& s = *link->s;
    InitColours(s.colours);
    s.usb().openWaitYields = first.usb().openWaitYields;
    s.usb().InitDriver();
    s.usb().OpenDevice();
    if (!s.UsbConnected || !s.DeviceInfoOK) {
        // The open step has already explained a board that may not be opened.
        if (s.driver.LastOpenProblem().empty())
            first.messages.MsgBox(
                QStringLiteral("Evaluation Board is not connected, or another application is using it."));
        if (s.usb().driverHandle > 0) s.driver.Uninit(s.usb().driverHandle);
        return nullptr;
    }
    links_.push_back(std::move(link));
    return &s;
}

void FormBoards::FormMade(DeviceFormBase& form, Session& session, BoardSteps& steps) {
    Link* link = LinkOf(session);
    if (!link) return;
    link->form = &form;
    if (list_) {
        steps.listBoards = [this, link] { return ListFor(*link); };
        if (link->only) steps.chooseBoard = [link](const BoardPlace& place) { link->only->Take(place); };
    }
    if (link != links_.front().get()) {
        // The first form's closing ends the program; another's lets its board go.
        form.onClosed = [this, link] {
            link->closed = true;
            link->s->Collecting = false;
            link->s->usb().CloseDevice();
            Refresh();
        };
    }
    Refresh();
    refresh_->start();
}

void FormBoards::Refresh() {
    int open = 0;
    for (const auto& l : links_) open += l->form && !l->closed;
    const bool several = open > 1 || (list_ && list_().size() > 1);
    for (const auto& l : links_) {
        if (!l->form || l->closed) continue;
        QString where;
        if (several) {
            const auto held = Holds(*l);
            where = held ? kind_ + QLatin1Char(' ') + QString::fromStdString(held->Text())
                         : QStringLiteral("no board");
        }
        l->form->statusStrip().ShowBoard(where);
    }
}

}  // namespace lxm
