#pragma once

#include <cstdio>

#include "app/CommandLine.h"

namespace lxm {

class Clock;
class UsbDriver;

// Whether a collection of the command line runs on the measuring core, with no window object at
// all: the family sensors' single and continuous types. The dual mode and the multi-function
// chip still run their device form unseen.
bool CollectsOnCore(const CommandLine& cl);

// Collects as RunCollectHeadless does (the same log, messages and exit status) on the core.
int RunCollectOnCore(const CommandLine& cl, UsbDriver& driver, Clock& clock, std::FILE* err, bool progress);

}  // namespace lxm
