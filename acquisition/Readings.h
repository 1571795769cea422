#pragma once

#include <cstdint>
#include <functional>

#include "acquisition/Conversion.h"
#include "acquisition/SampleStatus.h"

// Readings as both the device forms and the measuring core take them, from the bytes on the wire
// to the value and what it is worth: a reading is the same number in the window, on the command
// line and in Python because it is computed here once.
namespace lxm {

// A family count's status. A signed proximity count (scheme 1) has no top of scale to be stuck
// at, so only the unsigned ones can be saturated.
SampleStatus FamilyCountStatus(bool readOk, std::int32_t value, bool signedCount, int bits, bool early);

// The bus as the dual-mode sequence uses it: the command register written, a pause, the two
// data bytes read (the form's read also lights its lamps), and the clock in microseconds.
struct DataBytes {
    std::uint8_t low = 0, high = 0;
    bool ok = false;
};
struct DualModeBus {
    std::function<void(std::uint8_t command)> writeCommand;
    std::function<void(double ms)> pause;  // 0 or less: none
    std::function<DataBytes()> readData;
    std::function<std::int64_t()> micros;
};

// One proximity-minus-IR reading: the IR taken before and/or after the proximity conversion,
// subtracted from it.
struct DualModeReading {
    // An IR reading the mode does not take keeps the value it came in with.
    std::int32_t irBefore = 0, irAfter = 0;
    std::uint8_t irMsb = 0, irLsb = 0, proxMsb = 0, proxLsb = 0;
    std::int32_t proxCountSigned = 0;
    std::int32_t ambientIr = 0;
    std::int32_t proxCount = 0;  // unsigned
    ProxMinusIrResult difference;
    bool readsOk = true;  // every read of the sequence answered
    bool early = false;   // a part was read before its conversion could end

    // Failed when any read failed (its bytes are not a reading); a saturated part leaves no
    // difference.
    SampleStatus status() const {
        return !readsOk                ? SampleStatus::Failed
               : early                 ? SampleStatus::Early
               : difference.available() ? SampleStatus::Ok
                                        : SampleStatus::Saturated;
    }
};

// reg0: the command register as the image holds it (its bits 4..1 are kept); delayMs: the wait
// between each command and its read; bits: the resolution; previous: the IR readings of the last
// sequence.
DualModeReading TakeDualModeReading(std::uint8_t reg0, int proxScheme, AmbientIrMode mode, double delayMs,
                                    int bits, std::int32_t fullScaleCounts, const DualModeReading& previous,
                                    const DualModeBus& bus);

// The multi-function chip's count from one read of its registers 8 (proximity), 9 and 10
// (ALS/IR low and high), and what it is worth: an ALS/IR result is early until one conversion
// after its settings (register 1) were written.
struct Lxm600Reading {
    std::int32_t raw = 0;
    SampleStatus status = SampleStatus::Ok;
};
inline constexpr int kLxm600ProxBits = 8;
inline constexpr int kLxm600AlsIrBits = 12;
Lxm600Reading TakeLxm600Reading(bool readOk, std::uint8_t prox, std::uint8_t alsIrLow, std::uint8_t alsIrHigh,
                                bool proximity, std::int64_t sinceConfigUs);

}  // namespace lxm
