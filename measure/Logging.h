#pragma once

#include "acquisition/SampleLog.h"
#include "measure/Board.h"

namespace lxm::measure {

// The per-sample log of a collection on the core: the "#" lines of the board's settings, and a
// sample as its row. The window's "Log every sample" writes the same file.
SampleLogHeader LogHeader(const Board& board, int intervalMs);
LoggedSample LogRow(const Sample& sample);

}  // namespace lxm::measure
