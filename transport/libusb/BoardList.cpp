#include "transport/libusb/BoardList.h"

#include <libusb.h>

#include <algorithm>

#include "transport/UsbDriver.h"

namespace lxm::usb {

std::vector<AttachedBoard> ListBoards() {
    std::vector<AttachedBoard> boards;
    libusb_context* ctx = nullptr;
    if (libusb_init(&ctx) != 0) return boards;
    libusb_device** list = nullptr;
    const ssize_t n = libusb_get_device_list(ctx, &list);
    for (ssize_t i = 0; i < n; ++i) {
        libusb_device_descriptor d{};
        if (libusb_get_device_descriptor(list[i], &d) != 0) continue;
        if (d.idVendor != kBoardVendorId || d.idProduct != kBoardProductId) continue;
        AttachedBoard b;
        b.bus = libusb_get_bus_number(list[i]);
        b.port = libusb_get_device_address(list[i]);
        // Opening is the only sure test of the permission; the board is closed again at once
        // and not claimed, so a program using it is not disturbed.
        libusb_device_handle* h = nullptr;
        const int rc = libusb_open(list[i], &h);
        b.openable = rc == 0;
        if (h) libusb_close(h);
        if (rc == LIBUSB_ERROR_ACCESS)
            b.problem = "no permission to open it: install the package's udev rule and re-plug the board";
        else if (rc != 0)
            b.problem = libusb_strerror(libusb_error(rc));
        boards.push_back(b);
    }
    if (n >= 0) libusb_free_device_list(list, 1);
    libusb_exit(ctx);
    std::sort(boards.begin(), boards.end(),
              [](const AttachedBoard& a, const AttachedBoard& b) { return a.bus != b.bus ? a.bus < b.bus : a.port < b.port; });
    return boards;
}

}  // namespace lxm::usb
