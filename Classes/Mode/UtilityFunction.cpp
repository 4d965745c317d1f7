#include "Classes/Mode/UtilityFunction.h"

#include "Classes/Mode/Locale.h"
#include "Classes/Mode/ScriptBuffer.h"
#include "Classes/Mode/Xml.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/Utf8.h"

#include <QDir>
#include <QRegularExpression>
#include <QUrl>
#include <algorithm>
#include <cstring>

namespace
{

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

QString withoutLastCharacter(const QString &text)
{
    const bool isPair
        = text.size() > 1 && text.back().isLowSurrogate() && text[text.size() - 2].isHighSurrogate();
    return text.chopped(isPair ? 2 : 1);
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Unreserved and reserved characters of RFC 3986.
bool isUrlCharacter(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || (c != '\0' && std::strchr("-._~:/?#[]@!$&'()*+,;=", c));
}

bool isEscape(const QByteArray &utf8, qsizetype at)
{
    return utf8[at] == '%' && at + 2 < utf8.size() && isHexDigit(utf8[at + 1]) && isHexDigit(utf8[at + 2]);
}

bool hasScheme(const QByteArray &utf8)
{
    const qsizetype colon = utf8.indexOf(':');
    if (colon < 1 || !isLetter(utf8.front()))
        return false;
    return std::all_of(utf8.begin(), utf8.begin() + colon, [](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
}

} // namespace

QString replaceStringForXML(const QString &text)
{
    return QString(text)
        .remove(u'\r')
        .remove(u'\n')
        .replace(u'<', QStringLiteral("&lt;"))
        .replace(u'>', QStringLiteral("&gt;"));
}

QString replaceStringForJS(const QString &text, QChar quote)
{
    const QByteArray utf8 = text.toUtf8();
    ScriptBuffer out;
    out.appendEscaped({utf8.constData(), size_t(utf8.size())}, quote.toLatin1());
    return Utf8::decoded(out.take());
}

ElementDictionary xml2dict(const pugi::xml_node &element)
{
    // Child nodes as a reader sees them: elements, and each text however many pieces it is stored in.
    const auto hasSeveralNodes = [](const pugi::xml_node &node) {
        bool isInText = *node.value() != '\0'; // the text that it begins with
        int count = isInText ? 1 : 0;
        for (const pugi::xml_node &child : node.children()) {
            const bool isText = child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
            if (child.type() == pugi::node_element || (isText && !isInText))
                ++count;
            if (isText || child.type() == pugi::node_element)
                isInText = isText;
        }
        return count >= 2;
    };
    ElementDictionary dictionary;
    for (const pugi::xml_node &child : element.children()) {
        if (child.type() != pugi::node_element)
            continue;
        const QString name = Utf8::decoded(child.name());
        if (hasSeveralNodes(child))
            dictionary.insert(name, xml2dict(child));
        else
            dictionary.insert(name, Xml::text(child));
    }
    return dictionary;
}

pugi::xml_node dict2xml(pugi::xml_node parent, const ElementDictionary &dictionary, const QString &name)
{
    pugi::xml_node element = parent.append_child(name.toUtf8().constData());
    for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
        if (entry->userType() == QMetaType::QVariantMap)
            dict2xml(element, entry->toMap(), entry.key());
        else
            Xml::setText(element.append_child(entry.key().toUtf8().constData()), entry->toString());
    }
    return element;
}

pugi::xml_node generateXmlWithType(pugi::xml_node parent, const char *name, const QString &value,
                                   const char *type)
{
    pugi::xml_node element = parent.append_child(name);
    element.append_attribute("type").set_value(type);
    Xml::setText(element, value);
    return element;
}

QString productId()
{
    const Bundle bundle
        = File::exists(defaultBundlePath()) ? Bundle(defaultBundlePath()) : Bundle::mainBundle();
    return File::readText(bundle.pathForResource(QStringLiteral("product"), QStringLiteral("id")))
        .value_or(QStringLiteral("quillnest"));
}

QString UtilityFunction::checkFloatValueStringFrom(const QString &text)
{
    if (text.isEmpty())
        return QStringLiteral("");
    const bool isKept
        = isDigit(text.back()) || (text.back() == u'.' && text.indexOf(u'.') == text.size() - 1);
    return isKept ? text : withoutLastCharacter(text);
}

QString UtilityFunction::checkIntegerValueStringFrom(const QString &text)
{
    if (text.isEmpty())
        return QStringLiteral("");
    return isDigit(text.back()) ? text : withoutLastCharacter(text);
}

QString UtilityFunction::colorToHexRGB(const Color &color)
{
    const QString text = MyColorOper::colorToHexRGB(color);
    return text.isNull() ? QStringLiteral("0x000000") : text;
}

Color UtilityFunction::colorFromHexRGB(const QString &text)
{
    return MyColorOper::colorFromHexRGB(text);
}

QString UtilityFunction::checkUrlString(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    // QUrl lets brackets stand anywhere and a fragment hold a second "#".
    static const QRegularExpression outOfPlace(QStringLiteral("[][]|#.*#"));
    const bool isUrl = escapedUrlString(text) == text && hasScheme(text.toUtf8()) && url.isValid()
        && !url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority).contains(outOfPlace);
    return isUrl ? text : QStringLiteral("http://") + text;
}

QString UtilityFunction::escapedUrlString(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    QByteArray escaped;
    escaped.reserve(utf8.size());
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        if (isUrlCharacter(utf8[i]) || isEscape(utf8, i))
            escaped += utf8[i];
        else
            escaped += '%' + QByteArray(1, utf8[i]).toHex().toUpper();
    }
    return QString::fromLatin1(escaped);
}

bool UtilityFunction::writeString(QByteArrayView utf8, const QString &toUTF8File)
{
    QByteArray content("\xEF\xBB\xBF");
    content.reserve(content.size() + utf8.size());
    content.append(utf8.data(), utf8.size());
    return File::write(toUTF8File, content);
}

QString UtilityFunction::createTempPath()
{
    static int counter = 0;
    const QString name = File::timeStamp() + u'-' + QString::number(counter++);
    const QString path = File::joined(QDir::tempPath() + productId(), name);
    if (File::exists(path))
        File::makeFolder(path);
    return path;
}
