#pragma once

#include <string>
#include <vector>

namespace lxm::usb {

// An evaluation board on the USB as the system sees it, and whether this user may open it.
struct AttachedBoard {
    int bus = 0;
    int port = 0;  // the device's address on its bus
    bool openable = false;
    std::string problem;  // why it cannot be opened, empty when it can
};

// The evaluation boards attached now, in bus and address order. Empty when libusb cannot
// start (no USB at all).
std::vector<AttachedBoard> ListBoards();

}  // namespace lxm::usb
