#include "SimBoard.h"

namespace lxm::sim {

SimBoard::SimBoard(Clock& clock) : clock_(clock), sensor_(clock, scene_), controller_(clock, sensor_) {}

}  // namespace lxm::sim
