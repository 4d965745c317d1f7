#include "Classes/Mode/ScriptBuffer.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace
{

constexpr std::array<bool, 256> makeSpecialBytes()
{
    std::array<bool, 256> special{};
    for (const char c : {'\r', '\n', '\\', '\'', '"', '$', '&'})
        special[uchar(c)] = true;
    return special;
}

// Bytes that may be written differently.
constexpr std::array<bool, 256> specialBytes = makeSpecialBytes();

// How many of the eight bytes surely stand before the first special one. It looks at all of them at once, and
// coarsely: but for the backslash the special bytes lie below "(", where only the blank is taken out.
constexpr int blockSize = 8;
int plainBytes(const char *block)
{
    constexpr quint64 ones = 0x0101010101010101;
    constexpr quint64 highs = 0x80 * ones;
    const auto holds = [](quint64 bytes, uchar byte) {
        const quint64 difference = bytes ^ (byte * ones); // zero where it is that byte
        return (difference - ones) & ~difference & highs;
    };
    const auto bytes = qFromLittleEndian<quint64>(block); // the first byte lowest
    const quint64 isLow = (bytes - '(' * ones) & ~bytes & highs;
    const quint64 found = (isLow & ~holds(bytes, ' ')) | holds(bytes, '\\');
    return std::countr_zero(found) / 8;
}

struct Replacement {
    std::string_view what;
    std::string_view with;
};

bool beginsWithFourDigits(std::string_view text)
{
    const std::string_view four = text.substr(0, 4);
    return four.size() == 4 && four.find_first_not_of("0123456789abcdefABCDEF") == four.npos;
}

// How the beginning of `rest`, a special byte, is written.
Replacement replacementFor(std::string_view rest, char quote, ScriptBuffer::BrokenEscapes broken)
{
    static constexpr auto table = std::to_array<Replacement>({{"\r\n", "<br/>"},
                                                              {"\r", "<br/>"},
                                                              {"\n", "<br/>"},
                                                              {"\\u", "\\u"},
                                                              {"\\U", "\\u"},
                                                              {"\\", "\\\\"},
                                                              {"${Unicode}", "\\u"},
                                                              {"&lt;", "<"},
                                                              {"&gt;", ">"},
                                                              {"&amp;", "&"}});
    const std::string_view byte = rest.substr(0, 1);
    if (byte == "\"" || byte == "'")
        return {byte, byte.front() != quote ? byte : quote == '"' ? "\\\"" : "\\'"};
    for (const Replacement &entry : table) {
        if (entry.what.front() != byte.front() || !rest.starts_with(entry.what))
            continue;
        const bool isBroken = entry.with == "\\u" && !beginsWithFourDigits(rest.substr(entry.what.size()));
        if (isBroken && broken == ScriptBuffer::BrokenEscapes::BecomeText)
            return {byte, byte == "$" ? "\\u0024" : "\\u005c"};
        return entry;
    }
    return {byte, byte};
}

} // namespace

void ScriptBuffer::appendEscaped(std::string_view utf8, char quote, BrokenEscapes broken)
{
    constexpr qsizetype slack = 64; // more than any replacement
    const char *at = utf8.data();
    const char *const end = at + utf8.size();
    reserve(qsizetype(utf8.size()) + slack);
    char *out = m_at;
    while (at != end) {
        while (end - at >= blockSize) {
            const int plain = plainBytes(at);
            std::memcpy(out, at, blockSize); // there is room for what does not count, too
            at += plain;
            out += plain;
            if (plain < blockSize)
                break;
        }
        while (at != end && !specialBytes[uchar(*at)])
            *out++ = *at++;
        if (at == end)
            break;
        const Replacement replacement = replacementFor({at, size_t(end - at)}, quote, broken);
        out = std::copy(replacement.with.begin(), replacement.with.end(), out);
        at += replacement.what.size();
        if (m_end - out < end - at + slack) { // always room for the rest as it is and for one replacement
            m_at = out;
            reserve(end - at + slack);
            out = m_at;
        }
    }
    m_at = out;
}

QByteArray ScriptBuffer::take()
{
    m_bytes.truncate(size());
    m_at = m_end = nullptr;
    return std::exchange(m_bytes, QByteArray());
}

void ScriptBuffer::grow(qsizetype more)
{
    const qsizetype used = size();
    const qsizetype size = std::max(used + more, m_bytes.size() + m_bytes.size() / 2);
    m_bytes.reserve(size); // resize() alone would take up to twice as much
    m_bytes.resize(size);
    m_at = m_bytes.data() + used;
    m_end = m_bytes.data() + m_bytes.size();
}
