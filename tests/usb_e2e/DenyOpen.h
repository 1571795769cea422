#pragma once

#include <string>

namespace lxm::test::usb {

// Makes opening exactly this path fail with EACCES, as it does for a user without permission on
// a device node. The tests run as root, where file modes stop nobody, so the refusal is made in
// open() itself. An empty path lifts it.
void DenyOpen(const std::string& path);

}  // namespace lxm::test::usb
