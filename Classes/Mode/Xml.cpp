#include "Classes/Mode/Xml.h"

#include "platform/File.h"

#include <QFileInfo>
#include <QStringDecoder>
#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <set>
#include <string_view>

namespace Xml
{

namespace
{
constexpr qsizetype largestDocument = qsizetype(256) << 20;
constexpr int deepestLevel = 256;

struct Bounds {
    const char *at;
    const char *end;

    // The next such byte at or after `at`, or null.
    const char *find(char byte) const
    {
        return static_cast<const char *>(std::memchr(at, byte, size_t(end - at)));
    }
};

bool isXmlCharacter(quint32 code)
{
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xD800)
        || (code >= 0xE000 && code < 0xFFFE) || (code > 0xFFFF && code <= 0x10FFFF);
}

// True for one of the five predefined entities or a reference to a character that XML allows.
bool isPlainReference(std::string_view text)
{
    static constexpr std::array<std::string_view, 5> entities = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
    if (!text.starts_with("&#"))
        return std::any_of(entities.begin(), entities.end(),
                           [text](std::string_view entity) { return text.starts_with(entity); });
    const bool isHex = text.substr(2).starts_with('x');
    text.remove_prefix(isHex ? 3 : 2);
    const size_t end = text.find_first_not_of(isHex ? "0123456789abcdefABCDEF" : "0123456789");
    if (end == 0 || end == text.npos || text[end] != ';')
        return false;
    quint32 code = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + end, code, isHex ? 16 : 10);
    return parsed.ec == std::errc() && isXmlCharacter(code);
}

bool hasControlBytes(Bounds bytes)
{
    // No early exit: the loop runs over many bytes at once.
    uint forbidden = 0;
    for (; bytes.at != bytes.end; ++bytes.at) {
        const auto byte = uchar(*bytes.at);
        forbidden |= uint(byte < 0x20) & uint(byte != '\t') & uint(byte != '\n') & uint(byte != '\r');
    }
    return forbidden != 0;
}

bool hasNonCharacters(Bounds bytes) // U+FFFE and U+FFFF
{
    while (const char *found = bytes.find('\xEF')) {
        if (bytes.end - found > 2 && found[1] == '\xBF' && uchar(found[2]) >= 0xBE)
            return true;
        bytes.at = found + 1;
    }
    return false;
}

bool hasUnusualReferences(Bounds bytes)
{
    while (const char *found = bytes.find('&')) {
        if (!isPlainReference({found, size_t(bytes.end - found)}))
            return true;
        bytes.at = found + 1;
    }
    return false;
}

// "<!" or "<?": comments, CDATA, instructions and declarations. Also the end of a CDATA section by itself.
bool hasSpecialMarkup(std::string_view text)
{
    return text.find("<!") != text.npos || text.find("<?") != text.npos || text.find("]]>") != text.npos;
}

bool isAscii(const char *name)
{
    for (; *name != '\0'; ++name) {
        if (uchar(*name) >= 0x80)
            return false;
    }
    return true;
}

// What the parser lets through: `isPlain` is false where only a strict reader can tell whether it is allowed.
struct Shape {
    bool isTooDeep = false;
    bool hasRepeatedAttribute = false;
    bool isPlain = true;

    void look(const pugi::xml_node &element)
    {
        isPlain = isPlain && isAscii(element.name());
        std::set<std::string_view> names; // nearly always of none or one
        for (const pugi::xml_attribute &attribute : element.attributes()) {
            const bool isOnly = names.empty() && !attribute.next_attribute();
            if (!isOnly && !names.insert(attribute.name()).second)
                hasRepeatedAttribute = true;
            isPlain = isPlain && isAscii(attribute.name()) && !std::strchr(attribute.value(), '<');
        }
    }
};

// The next node in document order below `root`; `depth` is its number of element levels, the root's being 1.
pugi::xml_node next(pugi::xml_node node, const pugi::xml_node &root, int &depth)
{
    if (pugi::xml_node child = node.first_child()) {
        ++depth;
        return child;
    }
    while (node != root) {
        if (pugi::xml_node sibling = node.next_sibling())
            return sibling;
        node = node.parent();
        --depth;
    }
    return {};
}

Shape shapeOf(const pugi::xml_node &root)
{
    Shape shape;
    int depth = 1;
    for (pugi::xml_node node = root; node; node = next(node, root, depth)) {
        if (node.type() != pugi::node_element)
            continue;
        if (depth > deepestLevel) {
            shape.isTooDeep = true;
            return shape;
        }
        shape.look(node);
    }
    return shape;
}

// The full check, an order of magnitude slower than parsing: only for documents that hold something unusual.
QString strictError(QByteArrayView utf8, qsizetype &offset)
{
    QXmlStreamReader reader(QByteArray::fromRawData(utf8.data(), utf8.size()));
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::DTD && !reader.entityDeclarations().isEmpty())
            return QStringLiteral("the document declares entities of its own");
        if (reader.tokenType() == QXmlStreamReader::EntityReference)
            return QStringLiteral("unknown entity");
    }
    offset = reader.characterOffset();
    return reader.hasError() ? reader.errorString() : QString();
}

bool isText(const pugi::xml_node &node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

bool isBlank(const char *text)
{
    return text[std::strspn(text, " \t\r\n")] == '\0';
}

// Removes blank text between elements. Text goes on through comments, instructions and CDATA: a blank part of
// a longer text stays.
void removeBlankText(const pugi::xml_node &root)
{
    int depth = 1;
    for (pugi::xml_node node = root; node; node = next(node, root, depth)) {
        bool hasElements = false;
        for (const pugi::xml_node &child : node.children())
            hasElements = hasElements || child.type() == pugi::node_element;
        if (!hasElements)
            continue;
        for (pugi::xml_node child = node.first_child(); child;) {
            bool isBlankRun = true;
            pugi::xml_node end = child;
            for (; end && end.type() != pugi::node_element; end = end.next_sibling())
                isBlankRun = isBlankRun
                    && (!isText(end) || (end.type() == pugi::node_pcdata && isBlank(end.value())));
            while (child != end) {
                const pugi::xml_node after = child.next_sibling();
                if (isBlankRun && child.type() == pugi::node_pcdata)
                    node.remove_child(child);
                child = after;
            }
            child = end ? end.next_sibling() : end;
        }
    }
}

ParseResult failure(const QString &reason, qsizetype offset = 0)
{
    return {nullptr, offset, reason};
}

// One element and no text beside it; at most one document type, and that before the element.
bool hasOneRoot(const pugi::xml_document &document)
{
    int roots = 0;
    int types = 0;
    for (const pugi::xml_node &node : document.children()) {
        if (node.type() == pugi::node_element)
            ++roots;
        else if (node.type() == pugi::node_cdata
                 || (node.type() == pugi::node_pcdata && !isBlank(node.value())))
            return false;
        else if (node.type() == pugi::node_doctype && (roots > 0 || ++types > 1))
            return false;
    }
    return roots == 1;
}

} // namespace

ParseResult parse(QByteArrayView utf8)
{
    if (utf8.startsWith("\xEF\xBB\xBF"))
        utf8 = utf8.sliced(3);
    if (utf8.size() > largestDocument)
        return failure(QStringLiteral("the document is longer than 256 MiB"));
    if (!QUtf8StringView(utf8).isValidUtf8())
        return failure(QStringLiteral("the document is not UTF-8"));

    if (utf8.startsWith("\xEF\xBB\xBF"))
        return failure(QStringLiteral("the document begins with two byte-order marks"));
    const Bounds bytes{utf8.data(), utf8.data() + utf8.size()};
    const std::string_view all(utf8.data(), size_t(utf8.size()));
    if (hasControlBytes(bytes))
        return failure(QStringLiteral("the document holds control characters"));

    // Ordinary documents take the quick way through; what may hide something is read twice, the second time
    // strictly.
    const bool hasMarkup = hasSpecialMarkup(all);
    const bool hasUnusual = hasUnusualReferences(bytes);
    if (hasUnusual && !hasMarkup)
        return failure(QStringLiteral("the document holds a reference to nothing"));
    const bool isSpecial = hasMarkup || all.find("&#") != all.npos;
    auto document = std::make_unique<pugi::xml_document>();
    const uint options = pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_fragment
        | (isSpecial ? pugi::parse_ws_pcdata | pugi::parse_doctype : pugi::parse_ws_pcdata_single);
    const pugi::xml_parse_result parsed
        = document->load_buffer(utf8.data(), size_t(utf8.size()), options, pugi::encoding_utf8);
    if (!parsed)
        return failure(QString::fromLatin1(parsed.description()), qsizetype(parsed.offset));
    if (!hasOneRoot(*document))
        return failure(QStringLiteral("the document is not one element"));

    const Shape shape = shapeOf(document->document_element());
    if (shape.isTooDeep)
        return failure(QStringLiteral("the document is nested deeper than 256 levels"));
    if (shape.hasRepeatedAttribute)
        return failure(QStringLiteral("an attribute is repeated"));
    if (isSpecial || !shape.isPlain || hasNonCharacters(bytes)) {
        qsizetype offset = 0;
        if (const QString error = strictError(utf8, offset); !error.isEmpty())
            return failure(error, offset);
    }
    if (isSpecial)
        removeBlankText(document->document_element());
    return {std::move(document), 0, QString()};
}

ParseResult parseFile(const QString &path)
{
    if (QFileInfo(path).size() > largestDocument + 3)
        return failure(QStringLiteral("the document is longer than 256 MiB"));
    const std::optional<QByteArray> bytes = File::readBytes(path);
    return bytes ? parse(*bytes) : failure(QStringLiteral("the file cannot be read"));
}

QByteArray serialize(const pugi::xml_node &element)
{
    struct Writer : pugi::xml_writer {
        QByteArray bytes;
        void write(const void *data, size_t size) override
        {
            bytes.append(static_cast<const char *>(data), qsizetype(size));
        }
    } writer;
    element.print(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    // A carriage return stands by itself only as a reference; read back as it is, it would be a line feed.
    return writer.bytes.contains('\r') ? writer.bytes.replace('\r', "&#13;") : writer.bytes;
}

QString decoded(QByteArrayView utf8)
{
    return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
}

QString text(const pugi::xml_node &element)
{
    QByteArray result;
    int depth = 1;
    for (pugi::xml_node node = element; node; node = next(node, element, depth)) {
        if (isText(node))
            result += node.value();
    }
    return decoded(result);
}

void setText(pugi::xml_node element, const QString &text)
{
    const QString wanted = cleaned(text);
    if (element.first_child() && Xml::text(element) == wanted)
        return;
    for (pugi::xml_node child = element.first_child(); child;) {
        const pugi::xml_node after = child.next_sibling();
        if (isText(child) || child.type() == pugi::node_element)
            element.remove_child(child);
        child = after;
    }
    if (!wanted.isEmpty())
        element.prepend_child(pugi::node_pcdata).set_value(wanted.toUtf8().constData());
}

QString cleaned(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            result += c;
            result += text[++i];
        } else if (c == u'\r') {
            if (i + 1 == text.size() || text[i + 1] != u'\n')
                result += u'\n';
        } else if (c == u'\t' || c == u'\n' || (c >= u' ' && !c.isSurrogate() && c < QChar(0xFFFE))) {
            result += c;
        }
    }
    return result;
}

pugi::xml_node firstChild(const pugi::xml_node &parent, const char *name)
{
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element && std::strcmp(child.name(), name) == 0)
            return child;
    }
    return {};
}

pugi::xml_node lastChild(const pugi::xml_node &parent, const char *name)
{
    for (pugi::xml_node child = parent.last_child(); child; child = child.previous_sibling()) {
        if (child.type() == pugi::node_element && std::strcmp(child.name(), name) == 0)
            return child;
    }
    return {};
}

} // namespace Xml
