#pragma once

// The multi-function ALS/IR + proximity chip (LXM600), 7-bit address 0x44, sixteen registers.
// Register map as this model implements it:
//
//   0      ID, read-only: 0xA0 ("Read ID" shows "A0"; writes are ignored)
//   1      configuration            bit 0    ALS/IR measurement: 0 ALS, 1 IR
//                                   bit 1    ALS range: 1 = 2000 lux, 0 = 125 lux full scale
//                                   bit 2    ALS/IR enable (converts continuously while set)
//                                   bit 3    IR LED drive: 0 = 100 mA, 1 = 200 mA
//                                   bits 6:4 proximity sleep: 800, 400, 200, 100, 75, 50,
//                                            12.5 ms, 7 = continuous
//                                   bit 7    proximity enable
//          Changing the ALS bits (2:0) restarts the ALS conversion, changing the proximity
//          bits (7:3) restarts the proximity cycle; rewriting the same value changes nothing.
//   2      interrupt                bit 0    pin function: 0 Or, 1 And (of the two flags)
//                                   bits 2:1 ALS persistence 1, 4, 8, 16 conversions
//                                   bit 3    ALS flag (chip-owned)
//                                   bit 4    plain storage
//                                   bits 6:5 proximity persistence 1, 4, 8, 16
//                                   bit 7    proximity flag (chip-owned)
//          A flag is set when that many consecutive conversions fall outside the threshold
//          window, and stays set. Writing 0 to a flag bit clears it, writing 1 keeps it as
//          it is; so a write of the register image (flag bits 0) clears both flags, and a
//          write with bit 7 set clears only the ALS flag.
//   3      proximity low threshold (8-bit)        power-on 0x00
//   4      proximity high threshold (8-bit)       power-on 0xFF
//   5      ALS low threshold bits 7..0            power-on 0x00
//   6      bits 7..4 ALS high threshold 11..8, bits 3..0 ALS low threshold 11..8; power-on 0xF0
//   7      ALS high threshold bits 7..0           power-on 0xFF
//          A reading outside means below low or above high (equal to either is inside).
//   8      proximity reading, 8-bit, read-only
//   9, 10  ALS/IR reading, 12-bit: 9 = bits 7..0, 10 = bits 11..8 in the low nibble; read-only
//   11..15 plain storage
//
// Counts of the ideal chip: ALS (or IR) = floor(light × 4096 / full scale), 0..4095; proximity =
// floor(drive/100 mA × reflectance × kProximityGain / cm²), 0..255, 0 with nothing in front.
// Otherwise the photodiode front end of Photodiode.h converts them, with its noise, dark
// counts, the glass and the source's infrared; proximity sees a little of the ambient infrared.
// The interrupt line (active low) is asserted while either flag (Or) or both flags (And) are set.
// Reading has no side effects: a three-byte read from 8 gives proximity, ALS low and ALS
// high of the latest conversions.

#include <array>
#include <cstdint>

#include "Sensor.h"

namespace lxm {
class Clock;
}

namespace lxm::sim {

struct LightScene;
class Rng;

class Lxm600Sensor final : public Sensor {
public:
    static constexpr int kRegisterCount = 16;
    static constexpr std::uint8_t kId = 0xA0;
    // One ALS/IR conversion; short enough that a 50 ms collection sees every change.
    static constexpr std::int64_t kAlsConversionMicros = 25'000;
    // One proximity measurement; the sleep time of register 1 follows each.
    static constexpr std::int64_t kProxMeasureMicros = 500;
    // Counts of an object of reflectance 1 at 1 cm with the LED at 100 mA.
    static constexpr double kProximityGain = 7200.0;

    // Proximity: charge per count, and how much of the ambient infrared the LED-off sample
    // fails to cancel, in counts per IR unit.
    static constexpr double kProxElectronsPerCount = 40;
    static constexpr double kProxAmbientLeak = 0.001;

    Lxm600Sensor(Clock& clock, const LightScene& scene, Rng& rng);

    std::uint8_t Read(std::uint8_t reg) override;
    void Write(std::uint8_t reg, std::uint8_t value) override;
    std::uint8_t Peek(std::uint8_t reg) override;
    bool InterruptLineHigh() override;
    void Reset() override;

    // From one proximity reading to the next at the present sleep setting.
    std::int64_t ProxPeriodMicros() const;
    int alsConversions() const { return alsConversions_; }
    int proxConversions() const { return proxConversions_; }

private:
    // A conversion that repeats while its enable bit is set.
    struct Cycle {
        bool running = false;
        std::int64_t next = 0;  // when the next result lands
    };

    void Advance();
    void CompleteAls(std::int64_t at);
    void CompleteProx(std::int64_t at);

    int AlsCounts(std::int64_t at);
    int ProxCounts(std::int64_t at);

    Clock& clock_;
    const LightScene& scene_;
    Rng& rng_;
    std::array<std::uint8_t, kRegisterCount> regs_{};
    Cycle als_, prox_;
    int alsOutside_ = 0;  // consecutive conversions outside the window, up to 16
    int proxOutside_ = 0;
    int alsConversions_ = 0;
    int proxConversions_ = 0;
};

}  // namespace lxm::sim
