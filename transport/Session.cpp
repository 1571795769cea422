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

void Session::FormGone(ActiveForm* form) {
    if (activeForm == form) activeForm = nullptr;
}

}  // namespace lxm
