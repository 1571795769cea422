#pragma once

#include <QColor>

namespace lxm {

// The 16-colour palette the indicator lamps are specified in (0 black ... 15 bright white).
QColor QBColor(int index);

// A colour given as a Windows-style RGB long (0x00BBGGRR), as the "Fail" label uses them.
QColor ColorFromLong(long bgr);
long LongFromColor(const QColor& c);

// The indicator colour table. Held as floating-point numbers and turned into a palette
// index at each use; InitColours assigns every entry but ColOff, which therefore stays 0.
struct ColourTable {
    double ColOff = 0;
    double ColLightBlue = 0;
    double ColOK = 0;
    double ColFail = 0;
    double ColAlt = 0;
    double ColWhite = 0;
    double ColGrey = 0;
};

void InitColours(ColourTable& t);

// Palette index of a table entry (rounded the way an implicit numeric conversion rounds).
int PaletteIndex(double colour);

constexpr long kRgbRed = 255;         // pure red background of the "Fail" label
constexpr long kRgbWhite = 0xFFFFFF;  // its text
constexpr long kRgbGreen = 32768;     // background of "Good"

}  // namespace lxm
