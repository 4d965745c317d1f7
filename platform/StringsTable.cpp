#include "platform/StringsTable.h"

#include "platform/File.h"
#include "platform/Utf8.h"

#include <QStringDecoder>
#include <QUtf8StringView>
#include <optional>
#include <pugixml.hpp>
#include <string_view>

namespace StringsTable
{

namespace
{
Result failure(qsizetype line, const char *reason)
{
    Result result;
    result.line = line;
    result.reason = QString::fromLatin1(reason);
    return result;
}

// Both forms begin with an ASCII character, so that the first two bytes tell UTF-16 even without a mark.
std::optional<QString> decoded(const QByteArray &content)
{
    const auto byteAt = [&content](qsizetype i) {
        return i < content.size() ? static_cast<unsigned char>(content[i]) : 0xFFU;
    };
    const bool littleEndian = content.startsWith("\xFF\xFE") || (byteAt(0) != 0 && byteAt(1) == 0);
    const bool bigEndian = content.startsWith("\xFE\xFF") || (byteAt(0) == 0 && byteAt(1) != 0);
    QString text;
    if (littleEndian || bigEndian) {
        if (content.size() % 2 != 0)
            return std::nullopt;
        QStringDecoder decoder(littleEndian ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE,
                               QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        text = decoder.decode(content);
    } else {
        if (!QUtf8StringView(content).isValidUtf8())
            return std::nullopt;
        text = Utf8::decoded(content);
    }
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    if (text.contains(QChar::Null) || !text.isValidUtf16())
        return std::nullopt;
    return text;
}

// The entries of a "key" = "value"; table.
class EntryParser
{
public:
    explicit EntryParser(QStringView text)
        : m_text(text)
    {
    }

    Result parse();

private:
    bool atEnd() const { return m_at >= m_text.size(); }
    QChar current() const { return atEnd() ? QChar() : m_text[m_at]; }
    bool accept(char16_t character);
    bool skipBlanks();
    bool parseEntry();
    bool parseText(QString &text);
    bool parseQuoted(QString &text);
    bool parseWord(QString &text);
    bool parseEscape(QString &text);
    ushort parseDigits(int base, int most);
    bool fail(qsizetype at, const char *reason);

    QStringView m_text;
    qsizetype m_at = 0;
    Result m_result;
};

Result EntryParser::parse()
{
    while (skipBlanks() && !atEnd() && parseEntry()) { }
    if (!m_result.reason.isEmpty())
        m_result.entries.clear();
    m_result.ok = m_result.reason.isEmpty();
    return m_result;
}

bool EntryParser::fail(qsizetype at, const char *reason)
{
    m_result.line = 1 + m_text.first(at).count(u'\n');
    m_result.reason = QString::fromLatin1(reason);
    return false;
}

bool EntryParser::accept(char16_t character)
{
    if (current() != character)
        return false;
    ++m_at;
    return true;
}

// Skips blanks and comments; false for a comment without an end.
bool EntryParser::skipBlanks()
{
    while (!atEnd()) {
        const QStringView rest = m_text.sliced(m_at);
        if (rest.front().isSpace()) {
            ++m_at;
        } else if (rest.startsWith(QLatin1String("//"))) {
            const qsizetype end = rest.indexOf(u'\n');
            m_at = end < 0 ? m_text.size() : m_at + end + 1;
        } else if (rest.startsWith(QLatin1String("/*"))) {
            const qsizetype end = rest.indexOf(QLatin1String("*/"), 2);
            if (end < 0)
                return fail(m_at, "the comment has no end");
            m_at += end + 2;
        } else {
            break;
        }
    }
    return true;
}

bool EntryParser::parseEntry()
{
    QString key;
    if (!parseText(key) || !skipBlanks())
        return false;
    QString value = key;
    if (accept(u'=') && (!skipBlanks() || !parseText(value) || !skipBlanks()))
        return false;
    if (!accept(u';'))
        return fail(m_at, "a semicolon is missing");
    m_result.entries.insert(key, value);
    return true;
}

bool EntryParser::parseText(QString &text)
{
    text = QLatin1String("");
    const qsizetype start = m_at;
    if (accept(u'"') ? !parseQuoted(text) : !parseWord(text))
        return false;
    return text.isValidUtf16() || fail(start, "an escape gives half a surrogate pair");
}

bool EntryParser::parseQuoted(QString &text)
{
    const qsizetype start = m_at - 1;
    while (!atEnd()) {
        if (accept(u'"'))
            return true;
        if (accept(u'\\')) {
            if (!parseEscape(text))
                return false;
        } else {
            text.append(m_text[m_at++]);
        }
    }
    return fail(start, "the text has no closing quotation mark");
}

bool EntryParser::parseWord(QString &text)
{
    const auto isPart = [this] {
        const char16_t c = current().unicode();
        if (c == u'/')
            return !m_text.sliced(m_at).startsWith(QLatin1String("//"))
                && !m_text.sliced(m_at).startsWith(QLatin1String("/*"));
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9')
            || (c != 0 && QStringView(u"_$:.-").contains(QChar(c)));
    };
    while (!atEnd() && isPart())
        text.append(m_text[m_at++]);
    return !text.isEmpty() || fail(m_at, "a text is expected here");
}

// What follows a backslash. A character without a meaning of its own stands for itself.
bool EntryParser::parseEscape(QString &text)
{
    if (atEnd())
        return true; // the text has no end either, and that is what gets reported
    const char16_t c = m_text[m_at].unicode();
    if (c >= u'0' && c <= u'7') {
        text.append(QChar(parseDigits(8, 3)));
        return true;
    }
    ++m_at;
    if (c == u'U') {
        const qsizetype start = m_at;
        text.append(QChar(parseDigits(16, 4)));
        return m_at > start || fail(start, "\\U needs hexadecimal digits");
    }
    constexpr QStringView letters = u"abfnrtv";
    constexpr QStringView meanings = u"\a\b\f\n\r\t\v";
    const qsizetype index = letters.indexOf(QChar(c));
    text.append(index < 0 ? QChar(c) : meanings[index]);
    return true;
}

// As many digits of that base as there are, up to `most`; octal ones end where a byte is full.
ushort EntryParser::parseDigits(int base, int most)
{
    int value = 0;
    for (int count = 0; count < most && !atEnd(); ++count) {
        const char16_t c = current().unicode();
        int digit = -1;
        if (c >= u'0' && c <= u'9')
            digit = c - u'0';
        else if (c >= u'a' && c <= u'f')
            digit = c - u'a' + 10;
        else if (c >= u'A' && c <= u'F')
            digit = c - u'A' + 10;
        if (digit < 0 || digit >= base || (base == 8 && value * base + digit > 0xFF))
            break;
        value = value * base + digit;
        ++m_at;
    }
    return static_cast<ushort>(value);
}

// The text of an element, which may come in pieces around comments and CDATA; nothing when it has elements.
std::optional<QString> textOf(pugi::xml_node element)
{
    QString text = QLatin1String("");
    for (const pugi::xml_node piece : element) {
        if (piece.type() == pugi::node_element)
            return std::nullopt;
        text += Utf8::decoded(piece.value());
    }
    return text;
}

bool isNamed(pugi::xml_node node, const char *name)
{
    return std::string_view(node.name()) == name;
}

// The strings of the dictionary; values of other kinds are passed over. No recursion: nesting costs no stack.
Result readPropertyList(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto lineAt = [&bytes](qsizetype offset) {
        return 1 + bytes.first(qBound(qsizetype(0), offset, bytes.size())).count('\n');
    };
    const auto lineOf = [&lineAt](pugi::xml_node node) { return lineAt(node.offset_debug()); };

    pugi::xml_document document;
    const pugi::xml_parse_result parsed
        = document.load_buffer(bytes.constData(), static_cast<size_t>(bytes.size()),
                               pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
    if (!parsed)
        return failure(lineAt(parsed.offset), parsed.description());

    const pugi::xml_node root = document.document_element();
    for (pugi::xml_node other = root.next_sibling(); other; other = other.next_sibling()) {
        if (other.type() == pugi::node_element)
            return failure(lineOf(other), "there is a second root element");
    }
    const pugi::xml_node dictionary = root.find_child([](pugi::xml_node node) { return *node.name() != 0; });
    if (!isNamed(root, "plist") || !isNamed(dictionary, "dict"))
        return failure(lineOf(dictionary ? dictionary : root), "this is no property list of a dictionary");

    Result result;
    std::optional<QString> key;
    for (const pugi::xml_node node : dictionary) {
        if (node.type() != pugi::node_element)
            continue;
        const bool isKey = isNamed(node, "key");
        if (isKey == key.has_value())
            return failure(lineOf(node),
                           isKey ? "the key before this one has no value" : "the value has no key");
        if (!isKey && !isNamed(node, "string")) {
            key.reset();
            continue;
        }
        const std::optional<QString> content = textOf(node);
        if (!content)
            return failure(lineOf(node), "a key or a string holds elements");
        if (isKey) {
            key = content;
        } else {
            result.entries.insert(*key, *content);
            key.reset();
        }
    }
    if (key)
        return failure(lineOf(dictionary), "the last key has no value");
    result.ok = true;
    return result;
}
} // namespace

Result read(const QByteArray &content)
{
    if (content.size() > maximumSize)
        return failure(0, "the table is too large");
    if (content.startsWith("bplist"))
        return failure(0, "a binary property list is not read");
    const std::optional<QString> text = decoded(content);
    if (!text)
        return failure(0, "the table is neither UTF-8 nor UTF-16");
    if (QStringView(*text).trimmed().startsWith(u'<'))
        return readPropertyList(*text);
    return EntryParser(*text).parse();
}

Result readFile(const QString &path)
{
    const std::optional<QByteArray> content = File::readBytes(path);
    return content ? read(*content) : failure(0, "the file cannot be read");
}

} // namespace StringsTable
