#include "measure/SimulatedBoard.h"

namespace lxm::measure {

namespace {
sim::Chip ChipOf(std::string_view sensor) {
    return sim::ChipForType(sensor).value_or(sim::Chip::Family);
}
}  // namespace

SimulatedBoard::SimulatedBoard(Clock& clock, std::string_view sensor, std::int64_t latencyUs)
    : sim_(clock, ChipOf(sensor)), driver_(sim_) {
    // Nobody reads the packet log here, and a long collection would only fill it.
    sim_.controller().SetWireLogCapacity(0);
    driver_.SetLatencyMicros(latencyUs);
    board_ = std::make_unique<Board>(driver_, clock);
    board_->SelectSensor(sensor);
}

void SimulatedBoard::Unplug() {
    driver_.Unplug();
}

void SimulatedBoard::Plug() {
    if (!driver_.IsPlugged()) driver_.Plug();
    board_->Reconnect();
}

}  // namespace lxm::measure
