#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <optional>

// The sensors' register fields as data: which bits of which register an operating setting
// occupies, and what follows from a resolution. The device forms' controls and the measuring
// core both set the chip through these, so a setting means the same bits everywhere.
namespace lxm {

// Replaces the bits of mask in reg with those of value.
constexpr std::uint8_t WithField(std::uint8_t reg, std::uint8_t mask, std::uint8_t value) {
    return std::uint8_t((reg & ~mask) | (value & mask));
}
inline void SetField(std::uint8_t& reg, std::uint8_t mask, std::uint8_t value) {
    reg = WithField(reg, mask, value);
}

// The value an option array or check box puts into its field, already shifted into place.
// A field is one of three kinds: the clicked index itself (multi-bit fields), a single bit
// set while one named member is selected, or a single bit set while a box is checked.
struct BitField {
    enum class Kind { Index, Member, Check };
    int reg;
    std::uint8_t mask;
    Kind kind;
    int member = 0;  // Kind::Member: the member whose selection sets the bit

    constexpr int shift() const {
        int s = 0;
        while (s < 8 && !((mask >> s) & 1)) ++s;
        return s;
    }
    // index: the clicked member (Index); selected: whether the member / box is on.
    constexpr std::uint8_t Value(int index, bool selected) const {
        if (kind == Kind::Index) return std::uint8_t((index << shift()) & mask);
        return selected ? mask : 0;
    }
    void Apply(std::uint8_t* image, int index, bool selected = true) const {
        SetField(image[reg], mask, Value(index, selected));
    }
};

// What a resolution of the family sensor decides. Deliberate values: 4 bits has a full scale
// of 16 (not 15) and a half scale of 16; the 16-bit count mask is all ones, which as a signed
// number is -1. intervalMs is the collection interval the resolution suggests.
struct Resolution {
    int bits;
    const char* caption;
    std::int32_t halfScale, countMax, fullScale;
    std::int32_t unsignedMax, signedMax, signedMin;
    double intervalMs;
};
inline constexpr std::array<Resolution, 4> kFamilyResolutions{{
    {16, "16 Bits", 32768, -1, 65535, 65535, 32768, -100, 118},
    {12, "12 Bits", 2048, 4095, 4095, 4095, 2048, -100, 8},
    {8, "8 Bits", 128, 255, 255, 255, 128, -10, 0},
    {4, "4 Bits", 16, 15, 16, 15, 8, -2, 0},
}};
inline constexpr std::array<std::int32_t, 4> kFamilyRangesLux{1000, 4000, 16000, 64000};

// Family fields: register 0 (command I) and register 1 (command II).
inline constexpr BitField kFamilyOperation{0, 0xE0, BitField::Kind::Index};
inline constexpr BitField kFamilyExtTime{0, 0x10, BitField::Kind::Member, 1};
inline constexpr BitField kFamilyMeasMode{0, 0x08, BitField::Kind::Member, 1};
inline constexpr BitField kFamilyIntFlag{0, 0x04, BitField::Kind::Check};
inline constexpr BitField kFamilyPersistence{0, 0x03, BitField::Kind::Index};
inline constexpr BitField kFamilyScheme{1, 0x80, BitField::Kind::Member, 1};
inline constexpr BitField kFamilyRange{1, 0x03, BitField::Kind::Index};
inline constexpr BitField kFamilyResolution{1, 0x0C, BitField::Kind::Index};
inline constexpr BitField kFamilyModulation{1, 0x40, BitField::Kind::Member, 3};
// The drive's code runs the other way from the options: the highest code is the strongest drive.
inline constexpr BitField kFamilyDrive{1, 0x30, BitField::Kind::Index};
inline constexpr std::uint8_t kFamilyDriveMask = kFamilyDrive.mask;
// The drive options run from 100 mA (index 0, the highest code) down to 12.5 mA.
inline constexpr std::array<double, 4> kFamilyDriveMa{100, 50, 25, 12.5};
constexpr std::uint8_t FamilyDriveBits(int index) {
    return std::uint8_t(((3 - index) << 4) & kFamilyDriveMask);
}

// The measurement choices of the family sensor, in the order of the form's option array, and
// the operation each writes into bits 7..5 of register 0 (the dual mode converts proximity).
inline constexpr std::array<std::uint8_t, 8> kFamilyOperations{0, 1, 2, 3, 3, 5, 6, 7};
inline constexpr std::array<const char*, 8> kFamilyMeasureCaptions{
    "Power Down", "ALS Once", "IR Once", "Prox. Once", "Prox-IR External Calculated",
    "ALS Cont.",  "IR Cont",  "Prox. Cont"};
constexpr std::uint8_t FamilyCommand(std::uint8_t reg0, int measureIndex) {
    return std::uint8_t((reg0 & 0x1E) | (kFamilyOperations[std::size_t(measureIndex)] << 5));
}

// The multi-function LXM600: register 1 holds the ALS/IR and proximity settings, register 2 the
// interrupt ones; proximity data in register 8, the 12-bit ALS/IR result in 9 (low) and 10.
inline constexpr BitField kLxm600IrMode{1, 0x01, BitField::Kind::Member, 1};
inline constexpr BitField kLxm600Range{1, 0x02, BitField::Kind::Member, 0};
inline constexpr BitField kLxm600AlsEnable{1, 0x04, BitField::Kind::Check};
inline constexpr BitField kLxm600Drive{1, 0x08, BitField::Kind::Member, 1};
inline constexpr BitField kLxm600Sleep{1, 0x70, BitField::Kind::Index};
inline constexpr BitField kLxm600ProxEnable{1, 0x80, BitField::Kind::Check};
inline constexpr BitField kLxm600PinFunction{2, 0x01, BitField::Kind::Member, 1};
inline constexpr BitField kLxm600AlsPersistence{2, 0x06, BitField::Kind::Index};
inline constexpr BitField kLxm600ProxPersistence{2, 0x60, BitField::Kind::Index};
inline constexpr BitField kLxm600AlsFlag{2, 0x08, BitField::Kind::Check};
inline constexpr BitField kLxm600ProxFlag{2, 0x80, BitField::Kind::Check};
inline constexpr std::array<std::int32_t, 2> kLxm600RangesLux{2000, 125};
inline constexpr std::int32_t kLxm600FullScale = 4095;
inline constexpr std::int64_t kLxm600ConversionUs = 25'000;
// A proximity measurement of the LXM600: its LED pulse and the 8-bit conversion.
inline constexpr std::int64_t kLxm600ProxConversionUs = 500;
inline constexpr std::int32_t kLxm600ProxFullScale = 255;
// The LXM600 sleeps between proximity measurements as its sleep field says (index 0 first).
inline constexpr std::array<std::int64_t, 8> kLxm600ProxSleepUs{800'000, 400'000, 200'000, 100'000,
                                                                75'000,  50'000,  12'500,  0};
inline constexpr std::array<std::uint8_t, 16> kLxm600Image{0xA0, 0x00, 0x00, 0x00, 0xFF, 0x00, 0xF0, 0xFF,
                                                           0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

// Index of a value in a table, if it is there.
template <class Table, class V>
std::optional<int> IndexOf(const Table& table, const V& value) {
    for (std::size_t i = 0; i < std::size(table); ++i)
        if (table[i] == value) return int(i);
    return std::nullopt;
}

// Pacing of a collection pass against its deadline, in clock microseconds: a pass is let go once
// it is within the release margin of its deadline; before that it sleeps until the sleep margin,
// so its transfers overlap the last milliseconds of the wait.
inline constexpr std::int64_t kPaceReleaseMarginUs = 4000;
inline constexpr std::int64_t kPaceSleepMarginUs = 3000;
constexpr std::optional<std::int64_t> PaceSleepUntil(std::int64_t nowUs, std::int64_t deadlineUs) {
    if (nowUs >= deadlineUs - kPaceReleaseMarginUs) return std::nullopt;
    return deadlineUs - kPaceSleepMarginUs;
}

}  // namespace lxm
