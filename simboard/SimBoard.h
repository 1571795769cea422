#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

#include "Lxm600Sensor.h"
#include "Photodiode.h"
#include "Sensor.h"

namespace lxm {
class Clock;
}

namespace lxm::sim {

// The light the simulated sensor sees and the bench around it. Steady by default; can vary
// with time so that a strip chart has something to follow. The default bench is an office:
// white LED light at 50 Hz, no cover glass, 25 °C, the chip's noise on.
struct LightScene {
    // Ramp: from the set light up to rampToLux in one period, geometrically (as many seconds for
    // each decade), and back down in the next, so that every range of a sensor gets its turn.
    enum class Kind { Steady, Sine, Steps, Noise, Ramp };
    Kind kind = Kind::Steady;
    double ambientLux = 300.0;     // as a reference lux meter reads it (IR lamp: its IR units)
    double infrared = 120.0;       // ideal chip only: ambient infrared, in the same lux-like units
    double objectDistanceMm = 60;  // reflecting object for proximity; <= 0 means none
    double reflectance = 0.5;      // 0..1
    double periodS = 4.0;          // sine period / step dwell
    double depth = 0.6;            // relative swing of sine, steps and noise (0..1)
    double rampToLux = 50000;      // the top of the ramp
    std::uint32_t seed = 1;
    Source source = Source::Led;
    int mainsHz = 50;            // 50 or 60; artificial light ripples at twice this
    double glassPercent = 100;   // cover glass transmission; 100: no glass
    double temperatureC = 25;
    // The noise-free chip: counts follow the light exactly, from `ambientLux` and `infrared`,
    // sampled at the end of each conversion.
    bool ideal = false;

    struct Sample {
        double lux;
        double ir;
        double distanceMm;
    };
    // What the sensor sees at a time (microseconds of the board clock). Deterministic for a
    // given scene and time, noise included.
    Sample At(std::int64_t micros) const;
    // The time variation alone: the light at a time over the light set.
    double Factor(std::int64_t micros) const;
};

// The family sensor at 7-bit address 0x44: command registers 0 and 1, data 2 and 3,
// thresholds 4..7, test register 8. Conversions take time according to the resolution and
// run once or continuously; the interrupt flag (register 0 bit 2) and the active-low line
// follow the thresholds and the persistence.
class FamilySensor final : public Sensor {
public:
    static constexpr int kRegisterCount = 9;
    // Reflected infrared, in the scene's lux-like units, of an object of reflectance 1 at 1 cm
    // with the LED at 100 mA; falls with the square of the distance.
    static constexpr double kProximityGain = 28800.0;

    FamilySensor(Clock& clock, const LightScene& scene, Rng& rng);

    std::uint8_t Read(std::uint8_t reg) override;
    void Write(std::uint8_t reg, std::uint8_t value) override;
    std::uint8_t Peek(std::uint8_t reg) override;
    bool InterruptLineHigh() override;
    void Reset() override;

    // Conversion time at a resolution in bits: about 100 ms at 16, 6 ms at 12, 0.4 ms at 8, 25 us at 4.
    static std::int64_t ConversionMicros(int bits);
    int ResolutionBits() const;
    int conversions() const { return conversions_; }

private:
    void Advance();
    void CompleteConversion(std::int64_t at);
    std::uint16_t Measure(int op, std::int64_t at);
    std::uint16_t MeasureIdeal(int op, std::int64_t at) const;

    Clock& clock_;
    const LightScene& scene_;
    Rng& rng_;
    std::array<std::uint8_t, kRegisterCount> regs_{};
    std::int64_t convStart_ = 0;  // start of the running conversion
    bool converting_ = false;
    int persistCount_ = 0;
    int conversions_ = 0;
};

enum class WireDir { Out, In };

struct WirePacket {
    WireDir dir;
    std::uint8_t endpoint;
    std::vector<std::uint8_t> bytes;  // for IN: what was delivered
    std::uint32_t status;             // UsbStatus of the transfer
};

// The packets the board saw, oldest first. A ring: past its capacity the oldest go.
using WireLog = std::deque<WirePacket>;

// The board's controller at the byte level: bulk OUT and bulk IN by endpoint, exactly as the
// USB host sees them. Both the simulated driver and an emulated USB bus sit on these two calls.
class BoardController {
public:
    BoardController(Clock& clock, Sensor& sensor);

    // Returns a UsbStatus. OUT 0x02: I2C command packets; OUT 0x01: port-line packets.
    std::uint32_t BulkOut(std::uint8_t endpoint, const std::uint8_t* data, std::size_t len);
    // IN 0x82: reply to the last I2C read; IN 0x81: port-line reply (25 bytes). An IN with no
    // reply pending times out (kUsbTimeout). The reply is padded with zeros to len.
    std::uint32_t BulkIn(std::uint8_t endpoint, std::uint8_t* data, std::size_t len, std::size_t* actual);
    // True when an IN on that endpoint would be answered now.
    bool ReplyPending(std::uint8_t endpoint) const;
    // Power-on state: no replies pending, every port line an input at level 0. Fault
    // injection settings are left as they are.
    void Reset();

    // Port lines: B enables/levels, C enables/levels as last written.
    std::uint8_t portBEnables() const { return pbEn_; }
    std::uint8_t portCEnables() const { return pcEn_; }
    std::uint8_t portBLevels() const { return pbLvl_; }
    std::uint8_t portCLevels() const { return pcLvl_; }
    // Board LEDs as the port lines drive them.
    bool ExternalLedOn() const;  // PB6, on while an output driven high
    bool GreenLedOn() const;     // PC4, active low
    bool RedLedOn() const;       // PC5, active low

    // Fault injection.
    void SetSensorPresent(bool present) { sensorPresent_ = present; }  // false: every address NACKs
    void NackNext(int count) { nackNext_ = count; }                    // next I2C transactions NACK
    void DropNextReplies(int count) { dropReplies_ = count; }          // board stays silent on IN
    void DelayNextReply(int count) {
        delayReplies_ = count;
    }  // reply withheld until the next IN after a time-out

    // The wire log is for tests: it keeps the last kWireLogCapacity packets (a few MB at most)
    // unless told otherwise; 0 keeps none, as the program does, which collects for hours.
    static constexpr std::size_t kWireLogCapacity = 16384;
    WireLog& wireLog() { return log_; }
    void SetWireLogCapacity(std::size_t packets);
    std::size_t wireLogCapacity() const { return logCapacity_; }
    Sensor& sensor() { return *sensor_; }
    // The chip on the I2C bus from now on.
    void SetSensor(Sensor& sensor) { sensor_ = &sensor; }

private:
    // A reply the board has ready for the host. A late one makes the first IN that reaches it
    // time out; it is delivered to the IN after that.
    struct Reply {
        std::vector<std::uint8_t> bytes;
        bool late = false;
    };

    std::uint32_t I2cPacket(const std::uint8_t* data, std::size_t len);
    std::uint32_t GpioPacket(const std::uint8_t* data, std::size_t len);
    void Queue(std::deque<Reply>& queue, std::vector<std::uint8_t> bytes);
    void Log(WireDir dir, std::uint8_t ep, const std::uint8_t* data, std::size_t len, std::uint32_t status);

    Clock& clock_;
    Sensor* sensor_;
    std::deque<Reply> i2cReplies_;
    std::deque<Reply> gpioReplies_;
    std::uint8_t pbEn_ = 0, pcEn_ = 0, pbLvl_ = 0, pcLvl_ = 0;
    bool sensorPresent_ = true;
    int nackNext_ = 0;
    int dropReplies_ = 0;
    int delayReplies_ = 0;
    WireLog log_;
    std::size_t logCapacity_ = kWireLogCapacity;
};

// The chips a simulated board can carry: the four-member family shares one.
enum class Chip { Family, Lxm600 };

// The chip for a sensor type name as the start-up window gives it ("LXM410" .. "LXM470",
// "LXM600"); nothing for a name the board has no chip for.
std::optional<Chip> ChipForType(std::string_view type);
// A short caption for the simulator panel.
const char* ChipCaption(Chip chip);

// Scene, sensor and controller together: one simulated evaluation board. It carries one chip
// at a time; both are driven by the same scene.
class SimBoard {
public:
    explicit SimBoard(Clock& clock, Chip chip = Chip::Family);
    LightScene& scene() { return scene_; }
    // The same seed gives the same readings for the same sequence of transfers.
    void Seed(std::uint32_t seed) {
        scene_.seed = seed;
        rng_.Seed(seed);
    }
    // The chip on the board now.
    Sensor& sensor() { return controller_.sensor(); }
    Chip chip() const { return chip_; }
    // Puts another chip on the board. The new chip starts from power-on, as after a swap;
    // choosing the chip already carried changes nothing.
    void Carry(Chip chip);
    // Carries the chip of a sensor type name; false (and no change) for an unknown name.
    bool CarryForType(std::string_view type);
    FamilySensor& family() { return family_; }
    Lxm600Sensor& lxm600() { return lxm600_; }
    BoardController& controller() { return controller_; }
    Clock& clock() { return clock_; }

private:
    Clock& clock_;
    LightScene scene_;
    Rng rng_{scene_.seed};
    FamilySensor family_;
    Lxm600Sensor lxm600_;
    Chip chip_;
    BoardController controller_;
};

}  // namespace lxm::sim
