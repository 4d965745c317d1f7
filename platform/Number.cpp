#include "platform/Number.h"

#include <QString>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
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

// Whether a number that does not fit is too large rather than too small: the place of its first digit that
// counts, from the decimal point, tells.
bool isHuge(const std::string &number)
{
    const size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
    const size_t point = std::min(number.find('.'), exponentAt);
    const size_t first = std::min(number.find_first_of("123456789"), exponentAt);
    const qint64 order = qint64(point) - qint64(first);
    if (exponentAt == number.size())
        return order > 0;
    const QString exponent = QString::fromStdString(number.substr(exponentAt + 1));
    return order + std::clamp<qint64>(toInteger(exponent), -1'000'000'000, 1'000'000'000) > 0;
}

template <typename Float>
Float parse(QStringView text)
{
    const std::string number = decimalPrefix(text);
    Float value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc::result_out_of_range)
        return value;
    const Float limit = isHuge(number) ? std::numeric_limits<Float>::max() : Float(0);
    return number.front() == '-' ? -limit : limit;
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
