#pragma once

#include "text/ColorCategory.h"

#include <QString>
#include <QVariantMap>
#include <pugixml.hpp>

// Text escaping, the dictionary form of XML elements, and the checks for typed numbers and addresses. None
// keeps state but the counter of createTempPath.

// The dictionary form of an element: a child's name to its text (QString) or to a nested ElementDictionary.
// Readers look entries up by name; the order of children in the element is not kept.
using ElementDictionary = QVariantMap;

// Drops line breaks and replaces the two angle brackets by their entities. The ampersand stays as it is.
QString replaceStringForXML(const QString &text);

// Makes the text fit between two `quote` characters of a script: line breaks become "<br/>", backslashes are
// doubled but for Unicode escapes, the quote character (' or ") gets a backslash, and the entities &lt; &gt;
// &amp; become the characters they stand for.
QString replaceStringForJS(const QString &text, QChar quote);

// One entry for each child element, the last of a name winning. A child with fewer than two child nodes
// becomes its text, so a child that holds exactly one element collapses into that element's text.
ElementDictionary xml2dict(const pugi::xml_node &element);

// Appends an element of that name to `parent` with one child for each key: texts as text, nested dictionaries
// as elements, anything else as its description. Answers the new element.
pugi::xml_node dict2xml(pugi::xml_node parent, const ElementDictionary &dictionary, const QString &name);

// Appends a typed leaf: an element with the one attribute "type" and the value as its text. Answers it.
pugi::xml_node generateXmlWithType(pugi::xml_node parent, const char *name, const QString &value,
                                   const char *type);

// The content of the file "product.id" in the resources of the bundle at the default bundle path when that
// bundle exists, else of the main bundle, exactly as it stands; "quillnest" when it cannot be read.
QString productId();

class UtilityFunction
{
public:
    // Filters of a number field after every keystroke. They look at the last character (code point) alone and
    // remove it when it is no digit 0-9; a decimal field also keeps its first ".".
    static QString checkFloatValueStringFrom(const QString &text);
    static QString checkIntegerValueStringFrom(const QString &text);

    // As in MyColorOper, but "0x000000" for a colour that cannot be converted.
    static QString colorToHexRGB(const Color &color);
    static Color colorFromHexRGB(const QString &text);

    // The text itself when it is a URL with a scheme by RFC 3986, else with "http://" in front.
    static QString checkUrlString(const QString &text);

    // The text with every byte that no URL may hold as %XX of its UTF-8 form. What is escaped already stays,
    // so doing it twice changes nothing more.
    static QString escapedUrlString(const QString &text);

    // Writes the byte-order mark and the text in UTF-8 in one step; true when they are on disk.
    static bool writeString(QByteArrayView utf8, const QString &toUTF8File);

    // A path for a temporary folder that nobody used yet in this process; the caller makes the folder. The
    // product id follows the system's temporary folder without a separator.
    static QString createTempPath();
};
