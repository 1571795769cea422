#pragma once

#include <cstdint>

namespace lxm::sim {

// A sensor chip on the board's I2C bus, as the board's controller sees it: registers by
// address and the open-drain interrupt line. The controller walks the register address
// itself for multi-byte transfers, so a chip only ever sees one register at a time.
class Sensor {
public:
    // Every chip this board carries answers at the same 7-bit address.
    static constexpr std::uint8_t kAddress7 = 0x44;

    virtual ~Sensor() = default;

    // Registers beyond the chip's last read 0 and ignore writes.
    virtual std::uint8_t Read(std::uint8_t reg) = 0;
    virtual void Write(std::uint8_t reg, std::uint8_t value) = 0;
    // Register content without side effects (for tests and the simulator panel).
    virtual std::uint8_t Peek(std::uint8_t reg) = 0;
    virtual bool InterruptLineHigh() = 0;  // active low: false while the interrupt is asserted
    virtual void Reset() = 0;              // power-on state
};

}  // namespace lxm::sim
