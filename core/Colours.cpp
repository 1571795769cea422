#include "Colours.h"

#include <cmath>

namespace lxm {

QColor QBColor(int index) {
    static const QRgb kPalette[16] = {
        qRgb(0, 0, 0),       qRgb(0, 0, 128),   qRgb(0, 128, 0),   qRgb(0, 128, 128),
        qRgb(128, 0, 0),     qRgb(128, 0, 128), qRgb(128, 128, 0), qRgb(192, 192, 192),
        qRgb(128, 128, 128), qRgb(0, 0, 255),   qRgb(0, 255, 0),   qRgb(0, 255, 255),
        qRgb(255, 0, 0),     qRgb(255, 0, 255), qRgb(255, 255, 0), qRgb(255, 255, 255),
    };
    return QColor(kPalette[index & 15]);
}

QColor ColorFromLong(long bgr) {
    return QColor(int(bgr & 0xFF), int((bgr >> 8) & 0xFF), int((bgr >> 16) & 0xFF));
}

long LongFromColor(const QColor& c) {
    return long(c.red()) | (long(c.green()) << 8) | (long(c.blue()) << 16);
}

void InitColours(ColourTable& t) {
    t.ColLightBlue = 9;
    t.ColOK = 10;
    t.ColFail = 12;
    t.ColAlt = 2;
    t.ColWhite = 15;
    t.ColGrey = 8;
}

int PaletteIndex(double colour) {
    return int(std::nearbyint(colour));
}

}  // namespace lxm
