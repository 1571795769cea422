#include <cmath>

#include "acquisition/SensorFields.h"
#include "characterise/Sweep.h"

namespace lxm::characterise {

BoardTarget::BoardTarget(measure::Board& board)
    : board_(board), image_(board.image()), range_(board.rangeLux()), bits_(board.resolutionBits()),
      measure_(board.measure()) {}

std::string BoardTarget::Sensor() const {
    return board_.sensor();
}

std::vector<Setting> BoardTarget::Settings() const {
    std::vector<Setting> out;
    if (board_.sensor() == "LXM600") {
        for (int lux : kLxm600RangesLux) out.push_back({lux, 0});
        return out;
    }
    for (int lux : kFamilyRangesLux)
        for (const Resolution& r : kFamilyResolutions) out.push_back({lux, r.bits});
    return out;
}

void BoardTarget::Apply(const Setting& s, std::string_view measure) {
    // The resolution first and the range last, as the form's options set them.
    if (s.resolutionBits != 0) board_.SetResolution(s.resolutionBits);
    board_.SetMeasure(measure);
    board_.SetRange(s.rangeLux);
}

measure::Reading BoardTarget::Read() {
    // A chip that converts on its own is read once per conversion, or the same result would be
    // counted twice and its noise look smaller than it is. The LXM600's proximity waits out its
    // sleep too.
    if (board_.continuous()) {
        std::int64_t us = std::llround(
            NominalConversionMs(board_.sensor(), {board_.rangeLux(), board_.resolutionBits()}, board_.measure()) *
            1000.0);
        if (board_.sensor() == "LXM600" && board_.measure() == "prox")
            us += kLxm600ProxSleepUs[std::size_t((board_.image()[1] & kLxm600Sleep.mask) >> kLxm600Sleep.shift())];
        board_.clock().SleepMicros(us);
    }
    return board_.TakeReading();
}

std::array<std::uint8_t, 256> BoardTarget::Image() const {
    return board_.image();
}

void BoardTarget::Restore() {
    if (board_.sensor() != "LXM600") board_.SetResolution(bits_);
    board_.SetMeasure(measure_);
    board_.SetRange(range_);
    // Whatever the fields' setters do not cover (persistence, drive, scheme) goes back byte by
    // byte.
    const auto& now = board_.image();
    for (int reg : board_.sensor() == "LXM600" ? std::vector<int>{1, 2} : std::vector<int>{1, 0})
        if (now[std::size_t(reg)] != image_[std::size_t(reg)]) board_.Write(reg, image_[std::size_t(reg)]);
}

}  // namespace lxm::characterise
