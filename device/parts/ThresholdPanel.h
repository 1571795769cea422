#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "acquisition/Thresholds.h"

class QLineEdit;

namespace lxm {

class Session;

// How a form's register panel is reached by the parts that program registers through it:
// the row's hex entry box and its write and read buttons.
struct RegisterRows {
    std::function<QLineEdit*(int)> entry;
    std::function<void(int)> write;
    std::function<void(int)> read;
};

// One low/high window the user types. The hex boxes are optional.
struct ThresholdBoxes {
    QLineEdit* low = nullptr;
    QLineEdit* high = nullptr;
    QLineEdit* lowHex = nullptr;
    QLineEdit* highHex = nullptr;
};

// The entry bounds and number format of one window at the moment of a click.
struct ThresholdFormat {
    int bits = 12;
    bool singlePolarity = true;
    std::int32_t min = 0;
    std::int32_t max = 4095;
};

struct ThresholdWindow {
    ThresholdEntry low, high;
};

// What differs between the device forms: the windows, where their bytes go and how they are
// encoded and read back.
struct ThresholdScheme {
    std::vector<ThresholdBoxes> windows;
    // The format of every window, asked for at each click (the option controls change it).
    std::function<std::vector<ThresholdFormat>()> formats;
    // The register bytes for the typed windows, in the order they are to be written.
    std::function<RegisterBytes(const std::vector<ThresholdWindow>&, const std::vector<ThresholdFormat>&)>
        encode;
    // The hex box text of one threshold (empty: leave the box alone).
    std::function<QString(const ThresholdEntry&, const ThresholdFormat&)> hexText;
    // Registers read back, in order, and the windows decoded from their bytes.
    std::vector<int> readRegisters;
    std::function<std::vector<std::pair<std::int32_t, std::int32_t>>(const std::map<int, std::uint8_t>&,
                                                                     const std::vector<ThresholdFormat>&)>
        decode;
};

// The family sensor's single window in registers 4..7.
ThresholdScheme FamilyThresholdScheme(ThresholdBoxes boxes, std::function<ThresholdFormat()> format);

// The interrupt-threshold entry of a device form: checks and writes the typed windows through
// the register panel and reads them back into the boxes.
class ThresholdPanel {
public:
    ThresholdPanel(Session& session, RegisterRows rows, ThresholdScheme scheme);

    // Out-of-range entries are reported and written all the same; an entry too large to be a
    // number at all is reported and stops the write before any byte goes out.
    void Write();
    // While a collection holds the board the read is remembered for the loop's register
    // refresh, which calls Read again.
    void Read();
    bool readPending() const { return readPending_; }

private:
    Session& s_;
    RegisterRows rows_;
    ThresholdScheme scheme_;
    bool readPending_ = false;
};

}  // namespace lxm
