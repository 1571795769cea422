#pragma once

#include <cstdio>

#include "app/CommandLine.h"

namespace lxm {

class Clock;
class UsbDriver;

// Runs the --collect of the command line without a window: the device form for the sensor is
// built but never shown, set up through its own handlers (resolution, range, interval, the
// measurement) and its own collection loop runs with every sample logged to the output file.
// It ends after the samples or the duration asked for, or on Ctrl-C or SIGTERM, with the file
// complete. Errors and, when `progress`, a progress line go to `err`. Returns the exit status:
// 0 done, 1 the board went away during the run (the file keeps what was taken), 2 no board or
// a log that cannot be written. Needs a Qt application (the offscreen platform will do).
int RunCollectHeadless(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err, bool progress);

}  // namespace lxm
