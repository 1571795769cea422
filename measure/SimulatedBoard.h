#pragma once

#include <memory>
#include <string_view>

#include "measure/Board.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"

namespace lxm::measure {

// A simulated evaluation board of its own, with the measuring core on it: its own scene,
// sensor, bus and cable, so that several of them run side by side in one process (one per
// thread) and bench scripts and their tests need no hardware. Every transfer costs latencyUs,
// one USB frame by default, as on a real board.
class SimulatedBoard {
public:
    SimulatedBoard(Clock& clock, std::string_view sensor, std::int64_t latencyUs = 1000);

    Board& board() { return *board_; }
    sim::SimBoard& sim() { return sim_; }
    sim::LightScene& scene() { return sim_.scene(); }
    sim::SimDriver& driver() { return driver_; }

    // The cable. Unplugged, every operation of the board says it went away; plugged in again,
    // the board is taken once more and its operating registers written back.
    void Unplug();
    void Plug();

private:
    sim::SimBoard sim_;
    sim::SimDriver driver_;
    std::unique_ptr<Board> board_;
};

}  // namespace lxm::measure
