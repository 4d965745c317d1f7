#pragma once

#include "text/ColorCategory.h"

#include <QList>
#include <QString>
#include <optional>
#include <pugixml.hpp>

// One link of the list: the text that a reader sees, and the address.
struct LinkItem {
    QString title;
    QString link;

    bool operator==(const LinkItem &) const = default;
};

// What the link-list editor shows of a settings document. When read, a value is there only if the document
// has an element for it; when written, a missing text is empty and a missing colour black. Font sizes are the
// texts of their fields, in points.
struct LinkListSettings {
    std::optional<QString> titleContent;
    std::optional<QString> titleFontSize;
    std::optional<Color> titleColor;
    std::optional<QString> bodyFontSize;
    std::optional<Color> bodyColor;
    QList<LinkItem> items;

    bool operator==(const LinkListSettings &) const = default;
};

// The link list within the settings document: below the root, properties/extended with the heading in "title"
// and font size, colour and items in "body". Where siblings share a name, the last one counts. What else the
// document holds passes through a save, except inside body/content.
namespace LinkListDocument
{

// "linklist.xml", the document's name in the workspace and among the bundle's data.
QString fileName();

LinkListSettings read(const pugi::xml_node &root);

// Merges the settings into a parsed document. Elements of an existing title or body are updated where they
// are and never added; a body without children takes nothing, not even the items. False, and nothing changed,
// when there is no properties/extended.
bool write(const pugi::xml_node &root, const LinkListSettings &settings);

enum class SaveResult { Saved, NoDocument, NotWritten };

// Reads the document at `path`, or the default one when there is none there that can be read, merges the
// settings in and writes it to `path`, even where it has no place for them.
SaveResult save(const LinkListSettings &settings, const QString &path, const QString &defaultPath);

// Copies a file into the workspace. A file of the same name that was there stays under the current time as
// its name; it comes back when the copy fails. True also for a file that lies in the workspace already. False
// for a workspace path that is empty or relative.
bool saveFile2Workspace(const QString &path, const QString &workSpace);

// "http://" in front of a link without "http:/", "https:/" or "ftp:/" anywhere in it, and every byte that no
// URL may hold percent-escaped. Doing it twice changes nothing more.
QString convertHttpFormat(const QString &link);

} // namespace LinkListDocument
