#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <pugixml.hpp>

// XML documents as this system reads and writes them: UTF-8, exactly one root element and no text outside it,
// at most 256 levels deep and 256 MiB long, well-formed by XML 1.0 and without entities of their own.
// Anything else is no document at all, so that nothing half-understood is ever written back.
namespace Xml
{

// Starts as failed; `reason` is empty only when there is a document. `offset` is a byte position in the
// input.
struct ParseResult {
    std::unique_ptr<pugi::xml_document> document;
    qsizetype offset = 0;
    QString reason = QStringLiteral("nothing was read");

    explicit operator bool() const { return document != nullptr; }
};

// Comments, processing instructions and CDATA are kept; blank text between elements is not. A leading
// byte-order mark is skipped.
ParseResult parse(QByteArrayView utf8);

// The same for a file; a missing or unreadable one is a failure like any other.
ParseResult parseFile(const QString &path);

// The element alone: no declaration, no mark, no added indentation, no final line feed.
QByteArray serialize(const pugi::xml_node &element);

// UTF-8 as text, a mark at its beginning being part of it: there it is a character like any other.
QString decoded(QByteArrayView utf8);

// All text inside the element, CDATA and text of descendants included, comments and instructions not.
QString text(const pugi::xml_node &element);

// Makes `text`, cleaned, all the text inside the element. Comments and instructions stay; when the text is
// the same already, everything does.
void setText(pugi::xml_node element, const QString &text);

// The text without what XML forbids (control characters, lone surrogates, U+FFFE and U+FFFF), its line breaks
// as line feeds.
QString cleaned(const QString &text);

// The first child element of that name; a null node when there is none.
pugi::xml_node firstChild(const pugi::xml_node &parent, const char *name);

// The last child element of that name, which is the one that counts; a null node when there is none.
pugi::xml_node lastChild(const pugi::xml_node &parent, const char *name);

} // namespace Xml
