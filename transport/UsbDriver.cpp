#include "UsbDriver.h"

namespace lxm {

const char* UsbStatusText(std::uint32_t status) {
    switch (status) {
        case kUsbOk:
            return "ok";
        case kUsbTimeout:
            return "time-out";
        case kUsbNoDevice:
            return "no device";
        case kUsbIoError:
            return "I/O error";
        case kUsbAccessDenied:
            return "access denied";
        case kUsbNotFound:
            return "not found";
        case kUsbInvalidArg:
            return "invalid argument";
        case kUsbOverflow:
            return "overflow";
        case kUsbBusy:
            return "busy";
        case kUsbNotInitialised:
            return "not initialised";
        default:
            return "unknown";
    }
}

}  // namespace lxm
