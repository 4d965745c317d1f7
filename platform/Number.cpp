#include "platform/Number.h"

#include <QString>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fast_float/fast_float.h> // libc++ before 20 reads no fractions
#include <limits>
#include <string>

namespace Number
{

namespace
{
bool isBlank(QChar c)
{
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

qsizetype skipDigits(QStringView text, qsizetype at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

// Leading blanks and a "+" removed; from_chars takes neither.
QStringView trimmedStart(QStringView text)
{
    qsizetype at = 0;
    while (at < text.size() && isBlank(text[at]))
        ++at;
    text = text.mid(at);
    if (text.startsWith(u'+') && text.size() > 1 && text[1] != u'-')
        text = text.mid(1);
    return text;
}

// The decimal number that the text begins with, as ASCII; empty if it begins with none.
std::string decimalPrefix(QStringView text)
{
    text = trimmedStart(text);
    const qsizetype first = text.startsWith(u'-') ? 1 : 0;
    if (text.size() > first + 1 && text[first] == u'0'
        && (text[first + 1] == u'x' || text[first + 1] == u'X'))
        return {};
    qsizetype end = skipDigits(text, first);
    qsizetype digits = end - first;
    if (end < text.size() && text[end] == u'.') {
        const qsizetype fractionEnd = skipDigits(text, end + 1);
        digits += fractionEnd - end - 1;
        end = fractionEnd;
    }
    if (digits == 0)
        return {};
    if (end < text.size() && (text[end] == u'e' || text[end] == u'E')) {
        qsizetype exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == u'+' || text[exponent] == u'-'))
            ++exponent;
        if (exponent < text.size() && isDigit(text[exponent]))
            end = skipDigits(text, exponent);
    }
    return text.first(end).toLatin1().toStdString();
}

// What does not fit comes as an infinity or as 0.
template <typename Float>
Float parse(QStringView text)
{
    const std::string number = decimalPrefix(text);
    Float value = 0;
    fast_float::from_chars(number.data(), number.data() + number.size(), value);
    constexpr Float most = std::numeric_limits<Float>::max();
    return std::clamp(value, -most, most);
}
} // namespace

QByteArray fixed(double value, int decimals)
{
    if (!std::isfinite(value))
        value = 0;
    std::array<char, 512> buffer; // 309 digits before the point at most
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            std::chars_format::fixed, std::min(decimals, 100));
    Q_ASSERT(error == std::errc());
    Q_UNUSED(error);
    return QByteArray(buffer.data(), end - buffer.data());
}

double toDouble(QStringView text)
{
    return parse<double>(text);
}

double toSingle(QStringView text)
{
    return double(parse<float>(text));
}

qint64 toInteger(QStringView text)
{
    text = trimmedStart(text);
    const bool isNegative = text.startsWith(u'-');
    const qsizetype first = isNegative ? 1 : 0;
    if (text.size() > first + 1 && text[first] == u'0'
        && (text[first + 1] == u'x' || text[first + 1] == u'X'))
        return 0;
    const std::string digits = text.first(skipDigits(text, first)).toLatin1().toStdString();
    qint64 value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range)
        return isNegative ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    return value;
}

} // namespace Number
