#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <memory>
#include <optional>
#include <pugixml.hpp>

// XML documents as this system reads and writes them: UTF-8, exactly one root element and no text outside it,
// at most 256 levels deep and 256 MiB long, well-formed by XML 1.0 and without entities of their own.
// Anything else is no document at all, so that nothing half-understood is ever written back.
namespace Xml
{

// The most levels of elements that a document has, its root being the first.
constexpr int deepestLevel = 256;

// Starts as failed; `reason` is empty only when there is a document. `offset` is a byte position in the
// input.
struct ParseResult {
    std::unique_ptr<pugi::xml_document> document;
    qsizetype offset = 0;
    QString reason = QStringLiteral("nothing was read");

    explicit operator bool() const { return document != nullptr; }
};

// Comments, processing instructions and CDATA are kept; blank text between elements is not. A leading
// byte-order mark is skipped. The text that an element begins with may be kept as the element's own value()
// in place of a child node, which saves nearly half of the nodes.
ParseResult parse(QByteArrayView utf8);

// parse() in two steps, for who is going to meet every element anyway. All of a draft is certain but its tags
// and its depth: it is a document when no element lies deeper than `deepestLevel`, has more than one
// attribute, a name beyond ASCII or a "<" in an attribute's value. Where one does, checked() decides.
struct Draft {
    ParseResult parsed;
    QByteArrayView unchecked = {}; // what it was made from, to be kept; null when nothing is left to check

    bool isChecked() const { return unchecked.isNull(); }
};
Draft draft(QByteArrayView utf8);
ParseResult checked(Draft draft);

// A file's bytes; nothing when it is missing, unreadable or longer than any document.
std::optional<QByteArray> readFile(const QString &path);

// What parse() answers for a file's bytes; a missing or unreadable file is a failure like any other.
ParseResult parseFile(const QString &path);

// The element alone: no declaration, no mark, no added indentation, no final line feed.
QByteArray serialize(const pugi::xml_node &element);

// All text inside the element, CDATA and text of descendants included, comments and instructions not.
QString text(const pugi::xml_node &element);

// Makes `text`, cleaned, all the text inside the element. Comments and instructions stay; when the text is
// the same already, everything does.
void setText(pugi::xml_node element, const QString &text);

// Leaves nothing inside the element.
void removeContent(pugi::xml_node element);

// The text without what XML forbids (control characters, lone surrogates, U+FFFE and U+FFFF), its line breaks
// as line feeds.
QString cleaned(const QString &text);

// The first child element of that name; a null node when there is none.
pugi::xml_node firstChild(const pugi::xml_node &parent, const char *name);

// The last child element of that name, which is the one that counts; a null node when there is none.
pugi::xml_node lastChild(const pugi::xml_node &parent, const char *name);

} // namespace Xml
