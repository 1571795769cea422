#include "Session.h"

#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

Session::Session(UsbDriver& d, Messages& m, FileDialogs& f, Clock& c)
    : driver(d),
      messages(m),
      files(f),
      clock(c),
      usb_(std::make_unique<generic_usb_lib::UsbLib>(*this)),
      comm_(std::make_unique<USB_Comm::Comm>(*this)) {}

Session::~Session() {
    UnloadGpioForm();
    activeForm = nullptr;
    startupLamps = nullptr;
}

frmGPIO& Session::GpioForm() {
    if (!gpio_) {
        gpio_ = std::make_unique<frmGPIO>(*this);
        gpio_->Form_Load();
    }
    return *gpio_;
}

void Session::UnloadGpioForm() {
    if (!gpio_) return;
    FormGone(gpio_.get());
    gpio_.reset();
}

bool Session::NotConnectedMessageDue() {
    if (!inAction_) return true;
    if (notConnectedShown_) return false;
    notConnectedShown_ = true;
    return true;
}

UserAction::UserAction(Session& session)
    : s_(session), outerInAction_(session.inAction_), outerShown_(session.notConnectedShown_) {
    s_.inAction_ = true;
    s_.notConnectedShown_ = false;
}

UserAction::~UserAction() {
    s_.inAction_ = outerInAction_;
    s_.notConnectedShown_ = outerShown_;
}

void Session::FormGone(ActiveForm* form) {
    if (activeForm == form) activeForm = nullptr;
}

}  // namespace lxm
