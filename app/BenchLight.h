#pragma once

#include "device/parts/CharacteriseDialog.h"

namespace lxm::sim {
struct LightScene;
}

namespace lxm {

// What the simulated board's scene offers a characterisation: its light as a lux meter beside
// the sensor reads it (none for an infrared lamp, which such a meter does not see) and the scene
// in words for the report.
BenchLight SimulatedBench(const sim::LightScene& scene);

}  // namespace lxm
