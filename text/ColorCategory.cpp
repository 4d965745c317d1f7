#include "text/ColorCategory.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{

// The largest factor below 256 at single precision: full intensity truncates to 255.
constexpr double componentScale = 255.99998474121094;

int component(double value)
{
    return int(std::clamp(value, 0.0, 1.0) * componentScale);
}

int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    return u >= u'A' && u <= u'F' ? u - u'A' + 10 : -1;
}

quint32 scanHex(QStringView text)
{
    text = text.trimmed();
    if (text.startsWith(u"0x", Qt::CaseInsensitive))
        text = text.mid(2);
    constexpr quint64 largest = std::numeric_limits<quint32>::max();
    quint64 value = 0;
    for (const QChar c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            break;
        value = std::min(value * 16 + quint64(digit), largest);
    }
    return quint32(value);
}

} // namespace

bool Color::isConvertible() const
{
    return std::isfinite(red) && std::isfinite(green) && std::isfinite(blue) && std::isfinite(alpha);
}

namespace MyColorOper
{

QString colorToHexRGB(const Color &color)
{
    if (!color.isConvertible())
        return {};
    const int rgb = component(color.red) << 16 | component(color.green) << 8 | component(color.blue);
    return QStringLiteral("0x") + QString::number(rgb, 16).rightJustified(6, u'0').toUpper();
}

Color colorFromHexRGB(const QString &text)
{
    const quint32 rgb = scanHex(text);
    const auto byte = [rgb](int shift) { return double(float(rgb >> shift & 0xFF) / 255.0F); };
    return {byte(16), byte(8), byte(0), 1.0};
}

} // namespace MyColorOper
