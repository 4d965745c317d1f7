#pragma once

#include <QString>

// A colour of the model: calibrated RGB with alpha, each component from 0 to 1. Four floating components,
// because half intensity has to become 0x7F and an integer colour would already have made it 0x80.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    // False for a colour that has no place in calibrated RGB: a component is not a finite number.
    bool isConvertible() const;

    bool operator==(const Color &) const = default;
};

namespace MyColorOper
{

// "0x" and six upper-case hexadecimal digits RRGGBB; nil for a colour that cannot be converted. Alpha is
// ignored.
QString colorToHexRGB(const Color &color);

// The colour that a hexadecimal number tells, with or without "0x": leading blanks are skipped, the scan
// stops at the first character that is no digit, and more than 32 bits saturate. Anything else, "#" included,
// is opaque black.
Color colorFromHexRGB(const QString &text);

} // namespace MyColorOper
