#include "SimBoard.h"

namespace lxm::sim {

std::optional<Chip> ChipForType(std::string_view type) {
    if (type == "LXM410" || type == "LXM430" || type == "LXM450" || type == "LXM470") return Chip::Family;
    if (type == "LXM600") return Chip::Lxm600;
    return std::nullopt;
}

const char* ChipCaption(Chip chip) {
    return chip == Chip::Lxm600 ? "LXM600 multi-function" : "LXM410 / 430 / 450 / 470 family";
}

SimBoard::SimBoard(Clock& clock, Chip chip)
    : clock_(clock),
      family_(clock, scene_, rng_),
      lxm600_(clock, scene_, rng_),
      chip_(chip),
      controller_(clock, chip == Chip::Lxm600 ? static_cast<Sensor&>(lxm600_) : family_) {}

void SimBoard::Carry(Chip chip) {
    if (chip == chip_) return;
    chip_ = chip;
    Sensor& carried = chip == Chip::Lxm600 ? static_cast<Sensor&>(lxm600_) : family_;
    carried.Reset();
    controller_.SetSensor(carried);
}

bool SimBoard::CarryForType(std::string_view type) {
    const std::optional<Chip> chip = ChipForType(type);
    if (chip) Carry(*chip);
    return chip.has_value();
}

}  // namespace lxm::sim
