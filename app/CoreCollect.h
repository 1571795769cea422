#pragma once

#include <cstdio>

#include "app/CommandLine.h"

namespace lxm {

class Clock;
class UsbDriver;

// Runs the --collect of the command line on the measuring core, with no window object at all:
// the sensor set up as the device form's options set it (resolution, measurement, range), every
// sample logged to the output file as "Log every sample" logs it. It ends after the samples or
// the duration asked for, or on Ctrl-C or SIGTERM, with the file complete. Errors and, when
// `progress`, a progress line go to `err`. Returns the exit status: 0 done, 1 the board went away
// during the run (the file keeps what was taken), 2 no board or a log that cannot be written.
int RunCollectOnCore(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err, bool progress);

}  // namespace lxm
