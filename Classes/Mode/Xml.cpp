#include "Classes/Mode/Xml.h"

#include "platform/File.h"
#include "platform/Utf8.h"

#include <QFileInfo>
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

// Whether the condition holds for any place in the block where that byte stands.
template <typename Condition>
bool any(std::string_view block, char byte, Condition holds)
{
    const char *const end = block.data() + block.size();
    for (const char *at = block.data(); at != end; ++at) {
        at = static_cast<const char *>(std::memchr(at, byte, size_t(end - at)));
        if (!at)
            return false;
        if (holds(at))
            return true;
    }
    return false;
}

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

// What an ordinary document does not hold. Each question is one that a machine answers for many bytes at
// once: a sum over all of them, or a search for a byte that is rare. All are put to one block after the
// other, which stays in the processor's cache meanwhile.
struct Bytes {
    bool isUtf8 = true;
    bool hasControls = false;
    bool hasNonCharacters = false; // U+FFFE and U+FFFF
    bool hasUnusualReferences = false; // to nothing that XML knows
    bool hasCharacterReferences = false;
    // "<!" or "<?": comments, CDATA, instructions and declarations. Also the end of a CDATA section by
    // itself.
    bool hasSpecialMarkup = false;

    explicit Bytes(std::string_view text)
    {
        constexpr size_t blockSize = 1 << 15;
        bool isAscii = true;
        for (size_t at = 0; at < text.size(); at += blockSize)
            isAscii = look(text.substr(at, blockSize), text) && isAscii;
        if (!isAscii)
            isUtf8 = QUtf8StringView(text.data(), qsizetype(text.size())).isValidUtf8();
    }

private:
    // Answers whether the block is ASCII. What begins in it may go on behind it.
    bool look(std::string_view block, std::string_view text)
    {
        const auto from = [text](const char *at) { return text.substr(size_t(at - text.data())); };
        const auto isAfterAngle = [text](const char *at) { return at != text.data() && at[-1] == '<'; };
        uchar low = 0;
        uchar all = 0;
        for (const char c : block) {
            low |= uchar(uchar(c) < 0x20);
            all |= uchar(c);
        }
        if (low != 0 && !hasControls)
            hasControls = std::any_of(block.begin(), block.end(), [](char c) {
                return uchar(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
            });
        hasSpecialMarkup = hasSpecialMarkup || any(block, '!', isAfterAngle) || any(block, '?', isAfterAngle)
            || any(block, ']', [from](const char *at) { return from(at).starts_with("]]>"); });
        hasUnusualReferences = hasUnusualReferences || any(block, '&', [this, from](const char *at) {
                                   hasCharacterReferences
                                       = hasCharacterReferences || from(at).starts_with("&#");
                                   return !isPlainReference(from(at));
                               });
        if (all < 0x80)
            return true;
        hasNonCharacters
            = hasNonCharacters || any(block, '\xEF', [from](const char *at) {
                  return from(at).starts_with("\xEF\xBF\xBE") || from(at).starts_with("\xEF\xBF\xBF");
              });
        return false;
    }
};

struct Range {
    uint first;
    uint last;
};

// What a name may begin with by XML 1.0, and what else it may hold further on.
constexpr auto nameStarts = std::to_array<Range>({{':', ':'},
                                                  {'A', 'Z'},
                                                  {'_', '_'},
                                                  {'a', 'z'},
                                                  {0xC0, 0xD6},
                                                  {0xD8, 0xF6},
                                                  {0xF8, 0x2FF},
                                                  {0x370, 0x37D},
                                                  {0x37F, 0x1FFF},
                                                  {0x200C, 0x200D},
                                                  {0x2070, 0x218F},
                                                  {0x2C00, 0x2FEF},
                                                  {0x3001, 0xD7FF},
                                                  {0xF900, 0xFDCF},
                                                  {0xFDF0, 0xFFFD},
                                                  {0x10000, 0xEFFFF}});
constexpr auto nameContinuations
    = std::to_array<Range>({{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}});

template <size_t size>
bool isIn(const std::array<Range, size> &ranges, uint code)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [code](const Range &range) { return code >= range.first && code <= range.last; });
}

bool isName(const char *utf8)
{
    const QList<uint> codes = Utf8::decoded(utf8).toUcs4();
    return !codes.isEmpty() && isIn(nameStarts, codes.first())
        && std::all_of(codes.begin() + 1, codes.end(),
                       [](uint code) { return isIn(nameStarts, code) || isIn(nameContinuations, code); });
}

bool isAscii(const char *name)
{
    for (; *name != '\0'; ++name) {
        if (uchar(*name) >= 0x80)
            return false;
    }
    return true;
}

bool holdsAngle(const char *value)
{
    while (*value != '\0' && *value != '<')
        ++value;
    return *value == '<';
}

bool repeatsAttribute(const pugi::xml_node &element)
{
    std::set<std::string_view> names;
    for (const pugi::xml_attribute &attribute : element.attributes()) {
        if (!names.insert(attribute.name()).second)
            return true;
    }
    return false;
}

// What the parser lets through. Of names it takes ASCII as XML does, and anything beyond.
// The parser's own walk is several times faster than one from node to node through its interface.
struct Shape : pugi::xml_tree_walker {
    bool isTooDeep = false;
    bool hasRepeatedAttribute = false;
    bool hasForeignName = false; // one beyond ASCII
    bool hasWrongName = false;
    bool hasAngle = false; // in an attribute's value, which is allowed by reference alone

    explicit Shape(pugi::xml_document &document) { document.traverse(*this); }

    bool for_each(pugi::xml_node &node) override
    {
        const char *name = node.name();
        if (*name == '\0') // text
            return true;
        isTooDeep = depth() >= deepestLevel && node.type() == pugi::node_element;
        look(name);
        int attributes = 0;
        for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
            look(attribute.name());
            hasAngle = hasAngle || holdsAngle(attribute.value());
            ++attributes;
        }
        hasRepeatedAttribute = hasRepeatedAttribute || (attributes > 1 && repeatsAttribute(node));
        return !isTooDeep;
    }

private:
    void look(const char *name)
    {
        if (isAscii(name))
            return;
        hasForeignName = true;
        hasWrongName = hasWrongName || !isName(name);
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

// The same document to a reader of markup, in letters that every edition of XML has in names: the strict
// reader knows the names of an earlier one. Each byte beyond ASCII becomes a letter of its own, so that
// different names stay different.
QByteArray inOldLetters(QByteArrayView utf8)
{
    constexpr uint letters = 0x4E00; // ideographs
    QString text;
    text.reserve(utf8.size());
    for (const char byte : utf8) {
        const uint code = uchar(byte);
        text += QChar(code < 0x80 ? code : letters + code);
    }
    return text.toUtf8();
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

bool isEmpty(const pugi::xml_node &element)
{
    return !element.first_child() && *element.value() == '\0';
}

// Where an element begins with text, the parser keeps that text as the element's own value.
void removeOwnText(const pugi::xml_node &element)
{
    if (*element.value() != '\0')
        element.text().set("");
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
        const pugi::xml_node_type type = node.type();
        const bool isText = type == pugi::node_cdata || (type == pugi::node_pcdata && !isBlank(node.value()));
        const bool isMisplaced = type == pugi::node_doctype && (roots > 0 || ++types > 1);
        if (isText || isMisplaced)
            return false;
        roots += type == pugi::node_element;
    }
    return roots == 1;
}

// The whole check of the elements; without suspicion the strict reader comes in only where one of them asks
// for it.
ParseResult checkedElements(std::unique_ptr<pugi::xml_document> document, QByteArrayView utf8,
                            bool isSuspicious)
{
    const Shape shape(*document);
    if (shape.isTooDeep)
        return failure(QStringLiteral("the document is nested deeper than 256 levels"));
    if (shape.hasRepeatedAttribute)
        return failure(QStringLiteral("an attribute is repeated"));
    if (shape.hasWrongName)
        return failure(QStringLiteral("a name holds a character that no name may hold there"));
    if (isSuspicious || shape.hasAngle) {
        const QByteArray letters = shape.hasForeignName ? inOldLetters(utf8) : QByteArray();
        qsizetype offset = 0;
        if (const QString error = strictError(letters.isNull() ? utf8 : letters, offset); !error.isEmpty())
            return failure(error, offset);
    }
    return {std::move(document), 0, QString()};
}

} // namespace

Draft draft(QByteArrayView utf8)
{
    if (utf8.startsWith("\xEF\xBB\xBF"))
        utf8 = utf8.sliced(3);
    if (utf8.size() > largestDocument)
        return {failure(QStringLiteral("the document is longer than 256 MiB"))};
    if (utf8.startsWith("\xEF\xBB\xBF"))
        return {failure(QStringLiteral("the document begins with two byte-order marks"))};
    const Bytes bytes({utf8.data(), size_t(utf8.size())});
    if (!bytes.isUtf8)
        return {failure(QStringLiteral("the document is not UTF-8"))};
    if (bytes.hasControls)
        return {failure(QStringLiteral("the document holds control characters"))};
    if (bytes.hasNonCharacters)
        return {failure(QStringLiteral("the document holds U+FFFE or U+FFFF"))};
    if (bytes.hasUnusualReferences && !bytes.hasSpecialMarkup)
        return {failure(QStringLiteral("the document holds a reference to nothing"))};

    // Ordinary documents take the quick way through; what may hide something is read twice, the second time
    // strictly.
    const bool isSpecial = bytes.hasSpecialMarkup || bytes.hasCharacterReferences;
    auto document = std::make_unique<pugi::xml_document>();
    const uint options = pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_fragment
        | (isSpecial ? pugi::parse_ws_pcdata | pugi::parse_doctype
                     : pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata);
    const pugi::xml_parse_result parsed
        = document->load_buffer(utf8.data(), size_t(utf8.size()), options, pugi::encoding_utf8);
    if (!parsed)
        return {failure(QString::fromLatin1(parsed.description()), qsizetype(parsed.offset))};
    if (!hasOneRoot(*document))
        return {failure(QStringLiteral("the document is not one element"))};
    if (!isSpecial)
        return {{std::move(document), 0, QString()}, utf8};
    Draft result{checkedElements(std::move(document), utf8, true)};
    if (result.parsed)
        removeBlankText(result.parsed.document->document_element());
    return result;
}

ParseResult checked(Draft draft)
{
    return draft.isChecked() ? std::move(draft.parsed)
                             : checkedElements(std::move(draft.parsed.document), draft.unchecked, false);
}

ParseResult parse(QByteArrayView utf8)
{
    return checked(draft(utf8));
}

std::optional<QByteArray> readFile(const QString &path)
{
    return QFileInfo(path).size() > largestDocument + 3 ? std::nullopt : File::readBytes(path);
}

ParseResult parseFile(const QString &path)
{
    const std::optional<QByteArray> bytes = readFile(path);
    return bytes ? parse(*bytes)
                 : failure(QStringLiteral("the file cannot be read or is longer than 256 MiB"));
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

QString text(const pugi::xml_node &element)
{
    QByteArray result;
    int depth = 1;
    for (pugi::xml_node node = element; node; node = next(node, element, depth)) {
        if (isText(node) || node.type() == pugi::node_element)
            result += node.value();
    }
    return Utf8::decoded(result);
}

void setText(pugi::xml_node element, const QString &text)
{
    const QString wanted = cleaned(text);
    if (!isEmpty(element) && Xml::text(element) == wanted)
        return;
    removeOwnText(element);
    for (pugi::xml_node child = element.first_child(); child;) {
        const pugi::xml_node after = child.next_sibling();
        if (isText(child) || child.type() == pugi::node_element)
            element.remove_child(child);
        child = after;
    }
    if (!wanted.isEmpty())
        element.prepend_child(pugi::node_pcdata).set_value(wanted.toUtf8().constData());
}

void removeContent(pugi::xml_node element)
{
    element.remove_children();
    removeOwnText(element);
}

QString cleaned(const QString &text)
{
    const bool isClean = std::none_of(text.begin(), text.end(), [](QChar c) {
        return (c < u' ' && c != u'\t' && c != u'\n') || c.isSurrogate() || c >= QChar(0xFFFE);
    });
    if (isClean)
        return text.isNull() ? QStringLiteral("") : text;
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
