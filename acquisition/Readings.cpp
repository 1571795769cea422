#include "acquisition/Readings.h"

#include "acquisition/SensorFields.h"

namespace lxm {

SampleStatus FamilyCountStatus(bool readOk, std::int32_t value, bool signedCount, int bits, bool early) {
    const std::int64_t count = signedCount ? 0 : (std::int64_t(value) & TopCount(bits));
    return Classify(readOk, count, bits, early);
}

DualModeReading TakeDualModeReading(std::uint8_t reg0, int proxScheme, AmbientIrMode mode, double delayMs,
                                    int bits, std::int32_t fullScaleCounts, const DualModeReading& previous,
                                    const DualModeBus& bus) {
    DualModeReading r;
    r.irBefore = previous.irBefore;
    r.irAfter = previous.irAfter;
    const std::uint8_t base = reg0 & 0x1E;
    const std::uint8_t irCommand = base | 0x40;
    const std::uint8_t proxCommand = std::uint8_t(base | 0x60 | (proxScheme == 1 ? 0x01 : 0x00));
    auto convert = [&](std::uint8_t command, int reads) {
        bus.writeCommand(command);
        const std::int64_t startUs = bus.micros();
        if (delayMs > 0) bus.pause(delayMs);
        DataBytes d;
        for (int i = 0; i < reads; ++i) {
            d = bus.readData();
            r.readsOk = r.readsOk && d.ok;
        }
        r.early = r.early || bus.micros() - startUs < ConversionMicros(bits);
        return d;
    };
    if (mode != AmbientIrMode::After) {
        const DataBytes d = convert(irCommand, 1);
        r.irMsb = d.high;
        r.irLsb = d.low;
        r.irBefore = Signed16(d.high, d.low);
    }
    const DataBytes p = convert(proxCommand, 1);
    r.proxMsb = p.high;
    r.proxLsb = p.low;
    r.proxCountSigned = Signed16(p.high, p.low);
    // The first read after switching back to IR can still return the proximity result, so it
    // is read twice and the second one kept.
    if (mode != AmbientIrMode::Before) {
        const DataBytes d = convert(irCommand, 2);
        r.irMsb = d.high;
        r.irLsb = d.low;
        r.irAfter = Signed16(d.high, d.low);
    }
    r.ambientIr = AmbientIr(int(mode), r.irBefore, r.irAfter);
    r.proxCount = r.proxMsb * 256 + r.proxLsb;
    r.difference = ProxMinusIr(r.proxCount, r.ambientIr, fullScaleCounts);
    return r;
}

Lxm600Reading TakeLxm600Reading(bool readOk, std::uint8_t prox, std::uint8_t alsIrLow, std::uint8_t alsIrHigh,
                                bool proximity, std::int64_t sinceConfigUs) {
    Lxm600Reading r;
    r.raw = proximity ? prox : alsIrLow + alsIrHigh * 256;
    const bool early = !proximity && sinceConfigUs < kLxm600ConversionUs;
    r.status = Classify(readOk, r.raw, proximity ? kLxm600ProxBits : kLxm600AlsIrBits, early);
    return r;
}

}  // namespace lxm
