#pragma once

namespace lxm {

// The program's only way of letting the user interface (and the USB driver's attach and
// detach notifications) run in the middle of a long operation.
void DoEvents();

}  // namespace lxm
