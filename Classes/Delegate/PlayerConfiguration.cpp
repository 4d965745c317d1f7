// The half of PluginSettingsInfo that turns the settings document and the rectangle file into the
// configuration that a book's player reads.
#include "Classes/Delegate/PluginSettingsInfo.h"

#include "Classes/Mode/UtilityFunction.h"
#include "Classes/Mode/Xml.h"
#include "Classes/Mode/security.h"
#include "platform/File.h"
#include "platform/Number.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cstring>

namespace
{

bool isNamed(const pugi::xml_node &node, const char *name)
{
    return std::strcmp(node.name(), name) == 0;
}

bool isElement(const pugi::xml_node &node)
{
    return node.type() == pugi::node_element;
}

bool isText(const pugi::xml_node &node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

QByteArrayView bytesOf(const char *text)
{
    return QByteArrayView(text, qsizetype(std::strlen(text)));
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

// Writes elements as script text into one buffer, in one pass over a parsed document.
class JsonWriter
{
public:
    JsonWriter(const QString &workSpace, const QString &relatePath)
        : m_workSpace(workSpace)
        , m_relatePath(relatePath)
    {
    }

    void reserve(qsizetype size) { m_out.reserve(size); }
    void append(const char *text) { m_out.append(text); }
    QByteArray take() { return std::move(m_out); }

    void write(const pugi::xml_node &element)
    {
        if (isNamed(element, "info") || isNamed(element, "item")) {
            writeChildren(element, '{', '}');
            return;
        }
        writeKey(element);
        if (Xml::firstChild(element, "item"))
            writeChildren(element, '[', ']');
        else if (const PropertyType type = typeOf(element); type != PropertyType::None)
            writeValue(element, type);
        else
            writeChildren(element, '{', '}');
    }

private:
    static PropertyType typeOf(const pugi::xml_node &element)
    {
        const pugi::xml_attribute type = element.attribute("type");
        return type ? propertyTypeFromString(type.value()) : PropertyType::None;
    }

    void writeKey(const pugi::xml_node &element)
    {
        m_out += '"';
        m_out += element.name();
        m_out += "\":";
    }

    void writeChildren(const pugi::xml_node &element, char open, char close)
    {
        m_out += open;
        bool isFirst = true;
        for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
            if (!isElement(child))
                continue;
            if (!isFirst)
                m_out += ',';
            isFirst = false;
            write(child);
        }
        m_out += close;
    }

    void writeValue(const pugi::xml_node &element, PropertyType type)
    {
        // Nearly every leaf holds its text in one piece; only the others are put together first.
        const pugi::xml_node only = element.first_child();
        QByteArray joined;
        QByteArrayView text;
        if (only && isText(only) && !only.next_sibling()) {
            text = bytesOf(only.value());
        } else if (only) {
            joined = Xml::text(element).toUtf8();
            text = joined;
        }
        switch (type) {
        case PropertyType::Number:
            m_out.append(text.data(), text.size());
            return;
        case PropertyType::Bool:
            m_out += boolValue(QString::fromUtf8(text)) ? "true" : "false";
            return;
        default:
            break;
        }
        m_out += '"';
        if (type == PropertyType::Text)
            appendStringForJS(m_out, text, '"');
        else if (type == PropertyType::File)
            m_out += pathInBook(QString::fromUtf8(text)).toUtf8();
        else
            m_out += text.toByteArray().replace("0x", "#").replace("0X", "#");
        m_out += '"';
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

    QByteArray m_out;
    QString m_workSpace;
    QString m_relatePath;
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

// Puts the rectangle's values into the document's own elements for them; elements that are not there are not
// made.
void applyRect(const pugi::xml_node &root, const PositionRect &rect)
{
    for (const pugi::xml_node &child : root.children()) {
        if (isNamed(child, "opacity")) {
            const double opacity = 1 - std::min(1.0, rect.transparency() / 100);
            Xml::setText(child, QString::fromLatin1(Number::fixed(opacity, 6)));
        } else if (isNamed(child, "layout")) {
            Xml::setText(child, QString::number(rect.layer()));
        } else if (isNamed(child, "properties")) {
            for (const pugi::xml_node &place : Xml::lastChild(child, "basic").children()) {
                if (isNamed(place, "left"))
                    Xml::setText(place, percent(rect.left()));
                else if (isNamed(place, "top"))
                    Xml::setText(place, percent(rect.top()));
                else if (isNamed(place, "width"))
                    Xml::setText(place, percent(100 - rect.right() - rect.left()));
                else if (isNamed(place, "height"))
                    Xml::setText(place, percent(100 - rect.top() - rect.bottom()));
            }
        }
    }
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
    return json.take();
}

bool PluginSettingsInfo::generateJSConfig(const QString &relativePath)
{
    const std::unique_ptr<pugi::xml_document> document = getXMLFromWorkspace();
    if (!document)
        return false;
    const auto inWorkspace
        = [this](const char *name) { return File::joined(m_workSpace, QLatin1String(name)); };
    QString rectFile = inWorkspace("settings.dat");
    if (!File::exists(rectFile))
        rectFile = inWorkspace("defaultsettings.dat");
    if (!File::exists(rectFile))
        return false;
    applyRect(document->document_element(), PositionRect::readFromFile(rectFile).value_or(playerDefaults()));

    const bool isPublished = !relativePath.isEmpty();
    JsonWriter json(m_workSpace, relativePath);
    // The text is about as long as its document, and growing it would copy it.
    json.reserve(QFileInfo(File::joined(m_workSpace, documentName())).size());
    json.append(isPublished ? "var bookPlugin=" : "var config=");
    json.write(document->document_element());
    json.append(";");
    if (isPublished)
        return File::write(inWorkspace("bookPlugin.js"), RC4C_EncodeString(json.take()));
    return UtilityFunction::writeString(json.take(), inWorkspace("config.js"));
}
