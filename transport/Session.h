#pragma once

#include <memory>

#include "core/Seams.h"
#include "core/SessionState.h"
#include "transport/UsbDriver.h"

namespace lxm {

class frmGPIO;
namespace generic_usb_lib {
class UsbLib;
}
namespace USB_Comm {
class Comm;
}

// One program session: the shared state, the seams to the user and the clock, the driver,
// and the transport modules built on it. The program makes one; each test makes its own.
class Session : public SessionState {
public:
    Session(UsbDriver& driver, Messages& messages, FileDialogs& files, Clock& clock);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    UsbDriver& driver;
    Messages& messages;
    FileDialogs& files;
    Clock& clock;

    generic_usb_lib::UsbLib& usb() { return *usb_; }
    USB_Comm::Comm& comm() { return *comm_; }

    // The port-line panel: one instance, created on first use and reused.
    frmGPIO& GpioForm();
    bool HasGpioForm() const { return gpio_ != nullptr; }
    void UnloadGpioForm();

    // Forms unregister themselves here when they go, so no dangling active form remains.
    void FormGone(ActiveForm* form);

    // Whether the "USB is not Connected" message is to be shown now: once per user action,
    // and every time outside of one (a read or write the program makes on its own).
    bool NotConnectedMessageDue();

private:
    friend class UserAction;
    std::unique_ptr<generic_usb_lib::UsbLib> usb_;
    std::unique_ptr<USB_Comm::Comm> comm_;
    std::unique_ptr<frmGPIO> gpio_;
    bool inAction_ = false;
    bool notConnectedShown_ = false;
};

// One user action (a click, an Enter) from its start to its end. A choice of measurement or
// range writes several registers, each of which finds the board gone; the user clicked once
// and is told once. An action that starts inside another one's yields (a click during a
// collection run) is an action of its own and may tell the user again.
class UserAction {
public:
    explicit UserAction(Session& session);
    ~UserAction();
    UserAction(const UserAction&) = delete;
    UserAction& operator=(const UserAction&) = delete;

private:
    Session& s_;
    bool outerInAction_;
    bool outerShown_;
};

// A handler to connect to a control's signal, run as one user action.
template <class F>
auto AsUserAction(Session& session, F handler) {
    return [&session, handler](auto&&...) {
        UserAction action(session);
        handler();
    };
}

}  // namespace lxm
