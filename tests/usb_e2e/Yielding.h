#pragma once

#include <libusb.h>
#include <poll.h>

#include <QCoreApplication>
#include <chrono>
#include <thread>
#include <vector>

namespace lxm::test::usb {

// Yields to the event loop, as the program does, until done() or the deadline.
template <class Pred>
bool YieldUntil(Pred done, int ms = 3000) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!done()) {
        if (std::chrono::steady_clock::now() > until) return false;
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// Blocks without yielding until libusb has something for the event loop, such as a board's
// arrival taken in by its hot-plug thread. With no device handle open, only libusb's own
// descriptors are watched, so this does not return early.
inline bool WaitForLibusb(libusb_context* ctx, int ms = 3000) {
    std::vector<pollfd> fds;
    if (const libusb_pollfd** list = libusb_get_pollfds(ctx)) {
        for (const libusb_pollfd** p = list; *p; ++p) fds.push_back({(*p)->fd, (*p)->events, 0});
        libusb_free_pollfds(list);
    }
    return ::poll(fds.data(), nfds_t(fds.size()), ms) > 0;
}

inline double MillisSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
}

}  // namespace lxm::test::usb
