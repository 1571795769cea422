// This file replaces open() for the whole test program; the checked build's fortified wrappers
// would clash with that definition.
#undef _FORTIFY_SOURCE

#include "DenyOpen.h"

#include <dlfcn.h>
#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

std::atomic<bool> denying{false};
char deniedPath[256];

bool Denied(const char* path) {
    return denying.load(std::memory_order_acquire) && path && std::strcmp(path, deniedPath) == 0;
}

}  // namespace

namespace lxm::test::usb {

void DenyOpen(const std::string& path) {
    denying.store(false, std::memory_order_release);
    std::snprintf(deniedPath, sizeof deniedPath, "%s", path.c_str());
    denying.store(!path.empty(), std::memory_order_release);
}

}  // namespace lxm::test::usb

// libusb opens device nodes with open(), or __open_2() where its flags are not constant. Every
// other path goes on to the next definition: umockdev's, which redirects into the testbed.
extern "C" int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE) {
        va_list ap;
        va_start(ap, flags);
        mode = va_arg(ap, mode_t);
        va_end(ap);
    }
    if (Denied(path)) {
        errno = EACCES;
        return -1;
    }
    using Fn = int (*)(const char*, int, ...);
    static const auto next = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "open"));
    return next(path, flags, mode);
}

extern "C" int __open_2(const char* path, int flags) {
    if (Denied(path)) {
        errno = EACCES;
        return -1;
    }
    using Fn = int (*)(const char*, int);
    static const auto next = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "__open_2"));
    return next(path, flags);
}
