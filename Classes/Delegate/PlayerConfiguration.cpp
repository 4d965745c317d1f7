// The half of PluginSettingsInfo that turns the settings document and the rectangle file into the
// configuration that a book's player reads.
#include "Classes/Delegate/PluginSettingsInfo.h"

#include "Classes/Mode/LastDocument.h"
#include "Classes/Mode/ScriptBuffer.h"
#include "Classes/Mode/Xml.h"
#include "Classes/Mode/security.h"
#include "platform/File.h"
#include "platform/Number.h"
#include "platform/Utf8.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <map>

namespace
{

// Names are short: finding their length first would take longer than the comparison.
bool isSame(const char *text, std::string_view wanted)
{
    for (const char c : wanted) {
        if (*text++ != c)
            return false;
    }
    return *text == '\0';
}

bool isNamed(const pugi::xml_node &node, std::string_view name)
{
    return isSame(node.name(), name);
}

bool isElement(const pugi::xml_node &node)
{
    return node.type() == pugi::node_element;
}

bool hasElements(const pugi::xml_node &element)
{
    return std::any_of(element.begin(), element.end(), isElement);
}

// "true" and "false" in any case, else whether the number that the text begins with is not 0.
bool boolValue(const QString &text)
{
    const QString lower = text.toLower();
    if (lower == QLatin1String("true"))
        return true;
    return !lower.isEmpty() && lower.front() >= u'0' && lower.front() <= u'9'
        && Number::toInteger(lower) != 0;
}

// Texts that take the place of what is inside some of the upper elements.
using Overrides = std::map<pugi::xml_node, QString>;
constexpr int deepestOverride = 4; // levels: the root, properties, basic, left

// Writes elements as script text into one buffer, in one pass over a parsed document.
class JsonWriter
{
public:
    using BrokenEscapes = ScriptBuffer::BrokenEscapes;

    JsonWriter(const QString &workSpace, const QString &relatePath, Overrides overrides = {},
               BrokenEscapes brokenEscapes = BrokenEscapes::Stay)
        : m_workSpace(workSpace)
        , m_relatePath(relatePath)
        , m_overrides(std::move(overrides))
        , m_brokenEscapes(brokenEscapes)
    {
    }

    ScriptBuffer &out() { return m_out; }

    void write(const pugi::xml_node &element) { write(element, element.name()); }

    // Whether every element was met and is as in an ordinary document, so that a draft may be taken for one.
    bool isCertain() const { return m_isCertain; }

private:
    // False when the node is no element, which then leaves nothing. Only elements have attributes: asking for
    // the type of node, too, would cost every leaf a call.
    bool write(const pugi::xml_node &node, const char *name)
    {
        const pugi::xml_attribute first = node.first_attribute();
        const char *attribute = first.name();
        if (*attribute == '\0' && !isElement(node))
            return false;
        if (++m_level > Xml::deepestLevel)
            m_isCertain = false;
        else
            writeElement(node, name,
                         *attribute == '\0' ? PropertyType::None : typeOf(node, first, attribute));
        --m_level;
        return true;
    }

    // Also looks at the attributes: an ordinary element has none, or one that tells a type.
    PropertyType typeOf(const pugi::xml_node &element, const pugi::xml_attribute &first, const char *name)
    {
        if (!isSame(name, "type")) {
            m_isCertain = false;
            return propertyTypeFromString(element.attribute("type").value());
        }
        const char *value = first.value();
        const PropertyType type = isSame(value, "text") ? PropertyType::Text : propertyTypeFromString(value);
        m_isCertain = m_isCertain && type != PropertyType::None && !first.next_attribute();
        return type;
    }

    void writeElement(const pugi::xml_node &element, const char *name, PropertyType type)
    {
        if (isSame(name, "item") || isSame(name, "info")) {
            writeChildren(element.first_child(), false);
            return;
        }
        writeKey(name);
        const pugi::xml_node first = element.first_child();
        if (const QString *text = overrideOf(element)) {
            m_isCertain = m_isCertain && !hasElements(element); // which are not met
            writeValue(text->toStdString(), type);
        } else if (type == PropertyType::None || (first && Xml::firstChild(element, "item"))) {
            writeChildren(first, true);
        } else if (!first) {
            writeValue(element.value(), type);
        } else {
            m_isCertain = m_isCertain && !hasElements(element);
            writeValue(Xml::text(element).toStdString(), type);
        }
    }

    void writeKey(const char *name)
    {
        uchar all = 0;
        const char *end = name;
        for (; *end != '\0'; ++end)
            all |= uchar(*end);
        m_isCertain = m_isCertain && all < 0x80;
        m_out.appendKey({name, size_t(end - name)});
    }

    const QString *overrideOf(const pugi::xml_node &element) const
    {
        if (m_level > deepestOverride)
            return nullptr;
        const auto found = m_overrides.find(element);
        return found == m_overrides.end() ? nullptr : &found->second;
    }

    // The elements from `first` on in brackets: the square ones when there is an item and they may be an
    // array.
    void writeChildren(const pugi::xml_node &first, bool mayBeArray)
    {
        const qsizetype opening = m_out.size();
        m_out.append('{');
        bool isArray = false;
        bool isEmpty = true;
        for (pugi::xml_node child = first;; child = child.next_sibling()) {
            const char *name = child.name();
            if (*name == '\0') { // text, or none any more
                if (!child)
                    break;
            } else if (write(child, name)) {
                m_out.append(',');
                isArray = isArray || (mayBeArray && isSame(name, "item"));
                isEmpty = false;
            }
        }
        if (isEmpty)
            m_out.append('}');
        else
            m_out.replace(m_out.size() - 1, isArray ? ']' : '}');
        if (isArray)
            m_out.replace(opening, '[');
    }

    void writeValue(std::string_view text, PropertyType type)
    {
        const QByteArrayView utf8(text.data(), qsizetype(text.size()));
        switch (type) {
        case PropertyType::Text:
            m_out.append('"');
            m_out.appendEscaped(text, '"', m_brokenEscapes);
            m_out.append('"');
            break;
        case PropertyType::Number:
            m_out.append(text);
            break;
        case PropertyType::Bool:
            m_out.append(boolValue(Utf8::decoded(utf8)) ? "true" : "false");
            break;
        case PropertyType::File:
            m_out.append('"');
            m_out.append(pathInBook(Utf8::decoded(utf8)).toStdString());
            m_out.append('"');
            break;
        case PropertyType::Color:
        case PropertyType::Border:
            writeColor(text);
            break;
        case PropertyType::None:
            m_out.append("{}");
            break;
        }
    }

    // "#" wherever there is "0x" or "0X".
    void writeColor(std::string_view text)
    {
        m_out.append('"');
        for (size_t at = 0; at < text.size(); ++at) {
            const std::string_view two = text.substr(at, 2);
            const bool isPrefix = two == "0x" || two == "0X";
            m_out.append(isPrefix ? '#' : text[at]);
            at += isPrefix ? 1 : 0;
        }
        m_out.append('"');
    }

    // A file of the settings lies beside the configuration in the published book; any other path stays as it
    // is.
    QString pathInBook(const QString &path) const
    {
        if (path.isEmpty() || m_relatePath.isEmpty())
            return path;
        const bool isThere = QFileInfo::exists(path) || QFileInfo::exists(File::joined(m_workSpace, path));
        return isThere ? File::joined(m_relatePath, path) : path;
    }

    ScriptBuffer m_out;
    int m_level = 0;
    bool m_isCertain = true;
    const QString &m_workSpace;
    const QString &m_relatePath;
    const Overrides m_overrides;
    const BrokenEscapes m_brokenEscapes;
};

// What the player takes when the rectangle file is damaged: a box that can be seen, in the page's left part.
PositionRect playerDefaults()
{
    PositionRect rect;
    rect.setLeft(10);
    rect.setTop(26);
    rect.setRight(60);
    rect.setBottom(26);
    rect.setLayer(1);
    return rect;
}

QString percent(double value)
{
    return QString::fromLatin1(Number::fixed(value, 1) + '%');
}

// The rectangle's values in the document's own elements for them; elements that are not there are not made.
Overrides overridesOf(const pugi::xml_node &root, const PositionRect &rect)
{
    Overrides overrides;
    // An element whose text is the same already stays as it is, whatever that text is made of.
    const auto put = [&overrides](const pugi::xml_node &element, const QString &text) {
        if (isElement(element) && Xml::text(element) != text)
            overrides.emplace(element, text);
    };
    for (const pugi::xml_node &child : root.children()) {
        if (isNamed(child, "opacity")) {
            const double opacity = 1 - std::min(1.0, rect.transparency() / 100);
            put(child, QString::fromLatin1(Number::fixed(opacity, 6)));
        } else if (isNamed(child, "layout")) {
            put(child, QString::number(rect.layer()));
        } else if (isNamed(child, "properties")) {
            for (const pugi::xml_node &place : Xml::lastChild(child, "basic").children()) {
                if (isNamed(place, "left"))
                    put(place, percent(rect.left()));
                else if (isNamed(place, "top"))
                    put(place, percent(rect.top()));
                else if (isNamed(place, "width"))
                    put(place, percent(100 - rect.right() - rect.left()));
                else if (isNamed(place, "height"))
                    put(place, percent(100 - rect.top() - rect.bottom()));
            }
        }
    }
    return overrides;
}

// Whether the draft, written out, is a document. Where the writer met something unusual, the full check
// decides, and the draft becomes what that answers.
bool isDocument(Xml::Draft &draft, const JsonWriter &written)
{
    draft = {written.isCertain() ? std::move(draft.parsed) : Xml::checked(std::move(draft))};
    return bool(draft.parsed);
}

} // namespace

PropertyType propertyTypeFromString(std::string_view text)
{
    static constexpr std::array<std::string_view, 6> names
        = {"text", "number", "color", "bool", "border", "file"};
    return PropertyType(std::find(names.begin(), names.end(), text) - names.begin());
}

QByteArray PluginSettingsInfo::jsonFromXml(const pugi::xml_node &element, const QString &relatePath) const
{
    JsonWriter json(m_workSpace, relatePath);
    json.write(element);
    return json.out().take();
}

std::optional<QByteArray> PluginSettingsInfo::jsonFromDocument(QByteArrayView utf8,
                                                               const QString &relatePath) const
{
    Xml::Draft draft = Xml::draft(utf8);
    if (!draft.parsed)
        return std::nullopt;
    JsonWriter json(m_workSpace, relatePath);
    json.out().reserve(utf8.size() + 1); // the text is about as long
    json.write(draft.parsed.document->document_element());
    return isDocument(draft, json) ? std::optional(json.out().take()) : std::nullopt;
}

bool PluginSettingsInfo::generateJSConfig(const QString &relativePath)
{
    const std::optional<QByteArray> bytes = documentBytes();
    Xml::Draft draft = bytes ? LastDocument::take(*bytes) : Xml::Draft();
    if (!draft.parsed)
        return false;
    const auto inWorkspace
        = [this](const char *name) { return File::joined(m_workSpace, QLatin1String(name)); };
    QString rectFile = inWorkspace("settings.dat");
    if (!File::exists(rectFile))
        rectFile = inWorkspace("defaultsettings.dat");
    if (!File::exists(rectFile))
        return false;
    const PositionRect rect = PositionRect::readFromFile(rectFile).value_or(playerDefaults());

    const bool isPublished = !relativePath.isEmpty();
    const pugi::xml_node root = draft.parsed.document->document_element();
    JsonWriter json(m_workSpace, relativePath, overridesOf(root, rect),
                    JsonWriter::BrokenEscapes::BecomeText);
    json.out().reserve(bytes->size() + 64); // the text is about as long, and growing would copy it
    json.out().append(isPublished ? "var bookPlugin=" : "\xEF\xBB\xBFvar config=");
    json.write(root);
    json.out().append(';');
    if (!isDocument(draft, json))
        return false;
    LastDocument::keep(*bytes, std::move(draft.parsed.document));
    const QByteArray text = json.out().take();
    return isPublished ? File::write(inWorkspace("bookPlugin.js"), RC4C_EncodeString(text))
                       : File::write(inWorkspace("config.js"), text);
}
