#pragma once

#include <cstdint>

namespace lxm {

// What a reading is worth. Only an ok reading is a plain number; the others are kept, marked,
// because a user who sees 1999.5 lux or 0 lux without a mark takes it for the light.
enum class SampleStatus : std::uint8_t {
    Ok,
    Failed,     // the read itself failed: its bytes are not a reading
    Saturated,  // the count is at the top of the resolution's scale: the light may be higher
    Early,      // read before its conversion could end: an earlier result, or none
};

// The word of the log's status column, and of the marks beside the live value.
const char* StatusWord(SampleStatus status);

// The largest count a resolution gives (4095 at 12 bits).
constexpr std::int64_t TopCount(int bits) {
    return bits <= 0 ? 0 : bits >= 62 ? INT64_MAX : (std::int64_t(1) << bits) - 1;
}

// How long the family chip takes to convert at a resolution: 100 ms at 16 bits (a whole number
// of mains ripple periods), halved with every bit less: 6.25 ms at 12, 390 us at 8, 24 us at 4.
// A one-shot read that waits less than the chip converts finds the previous result, so this is
// the chip's own figure, not a rounder one.
constexpr std::int64_t ConversionMicros(int bits) {
    return bits <= 0 ? 0 : bits >= 16 ? std::int64_t(100'000) << (bits > 30 ? 14 : bits - 16) : 100'000 >> (16 - bits);
}

// A read takes two bulk transfers of at least one USB frame each: a one-shot read that waits
// this much less than the conversion still finds it done.
constexpr std::int64_t kReadMicros = 2000;

// The status of one read: a failed read is failed whatever its bytes say; then a count read
// before the conversion could end is early; then a count at the top of the scale (the
// unsigned count, before any sign is taken) is saturated.
constexpr SampleStatus Classify(bool readOk, std::int64_t unsignedCount, int bits, bool early) {
    if (!readOk) return SampleStatus::Failed;
    if (early) return SampleStatus::Early;
    if (unsignedCount >= TopCount(bits)) return SampleStatus::Saturated;
    return SampleStatus::Ok;
}

}  // namespace lxm
