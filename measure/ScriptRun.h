#pragma once

#include <string>

#include "measure/Board.h"

namespace lxm::measure {

struct ScriptOutcome {
    int passed = 0;  // compared reads that matched
    int failed = 0;
    int rows = 0;    // rows run, over all loops
};

// Runs a register script file on the board `loops` times, each pass from the default address
// 0x88. A file that cannot be loaded, a row that cannot run and a key-press pause (nobody is
// there to press a key) are errors; a board that goes away ends the run with its error.
ScriptOutcome RunScriptFile(Board& board, const std::string& path, int loops = 1, bool abortOnFail = false);

}  // namespace lxm::measure
