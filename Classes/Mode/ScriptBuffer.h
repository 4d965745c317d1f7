#pragma once

#include <QByteArray>
#include <algorithm>
#include <string_view>

// The text of a script in the making: UTF-8 bytes, each put in its place once. It takes little more memory
// than the text is long, however much of it must be escaped.
class ScriptBuffer
{
public:
    ScriptBuffer() = default;
    ScriptBuffer(const ScriptBuffer &) = delete;
    ScriptBuffer &operator=(const ScriptBuffer &) = delete;

    // Makes sure that so many bytes more have room.
    void reserve(qsizetype more)
    {
        if (m_end - m_at < more)
            grow(more);
    }

    void append(char byte)
    {
        reserve(1);
        Q_ASSERT(m_at);
        *m_at++ = byte;
    }

    void append(std::string_view text)
    {
        reserve(qsizetype(text.size()));
        m_at = std::copy(text.begin(), text.end(), m_at);
    }

    qsizetype size() const { return m_at ? m_at - m_bytes.constData() : 0; }

    // Puts another byte in the place of one that is there.
    void replace(qsizetype at, char byte) { *(m_at - (size() - at)) = byte; }

    // The name of an object's member as it stands, in double quotes, and the colon. Names are short: a loop
    // is quicker than a call.
    void appendKey(std::string_view name)
    {
        reserve(qsizetype(name.size()) + 3);
        char *at = m_at;
        *at++ = '"';
        for (const char c : name)
            *at++ = c;
        *at++ = '"';
        *at++ = ':';
        m_at = at;
    }

    // Where four hexadecimal digits do not follow, "\u", "\U" and "${Unicode}" are escapes of nothing, which
    // no script may hold.
    enum class BrokenEscapes {
        Stay, // as replaceStringForJS has them
        BecomeText, // so that the script's reader gets these very characters
    };

    // The text as it must stand between two `quote` characters, by the rules of replaceStringForJS.
    void appendEscaped(std::string_view utf8, char quote, BrokenEscapes broken = BrokenEscapes::Stay);

    // Hands the text out; the buffer is empty afterwards.
    QByteArray take();

private:
    void grow(qsizetype more);

    QByteArray m_bytes;
    char *m_at = nullptr;
    char *m_end = nullptr;
};
