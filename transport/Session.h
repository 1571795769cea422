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

private:
    std::unique_ptr<generic_usb_lib::UsbLib> usb_;
    std::unique_ptr<USB_Comm::Comm> comm_;
    std::unique_ptr<frmGPIO> gpio_;
};

}  // namespace lxm
