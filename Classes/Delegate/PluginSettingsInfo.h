#pragma once

#include "Classes/Delegate/PositionRect.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string_view>

// The forms that a leaf of the settings document can have in the player's configuration.
enum class PropertyType { Text = 0, Number = 1, Color = 2, Bool = 3, Border = 4, File = 5, None = 6 };

// The type that an element's attribute "type" tells; exact and case-sensitive.
PropertyType propertyTypeFromString(std::string_view text);

// A plug-in workspace: the folder with the player's page, its data, the settings document and the generated
// configuration. Made, told its three properties, used and dropped; it keeps no files open. Nothing is done,
// and false or nothing answered, when the workspace path is empty or relative.
class PluginSettingsInfo
{
public:
    QString identifier() const { return m_identifier; }
    // Names the settings document "ID.xml" and the movie "ID.swf"; "linklist" when it is empty at first use.
    void setIdentifier(const QString &identifier) { m_identifier = identifier; }
    QString bundlePath() const { return m_bundlePath; }
    // The plug-in's bundle; where there is none at that path, the main bundle's resources serve.
    void setBundlePath(const QString &bundlePath) { m_bundlePath = bundlePath; }
    QString workSpace() const { return m_workSpace; }
    void setWorkSpace(const QString &workSpace) { m_workSpace = workSpace; }

    // Deletes the workspace and makes it anew from the bundle's "html" and "data". True but for a path that
    // is refused; a file that cannot be copied is left out.
    bool resetWorkspace();

    // Makes the workspace, or adds to an existing one what the bundle has and it lacks, and never overwrites.
    // A workspace that is nil becomes the default one.
    bool loadWorkspace();

    // The settings document, parsed afresh; empty when it is missing, unreadable or not well-formed.
    std::unique_ptr<pugi::xml_document> getXMLFromWorkspace();

    // Replaces the destination folder by a copy of the workspace without the hidden entries at its top. False
    // without a workspace, and for a destination that is, holds or lies inside the workspace; then nothing is
    // touched.
    bool convertPluginToPath(const QString &toPath) const;

    // Writes "bookPlugin.js", scrambled, for a plug-in that lies in the relative folder of a book; with a nil
    // or empty folder "config.js", plain, for the preview. A text with a "\u" that is no escape, such as
    // "C:\users", is written so that a reader sees it as it was typed. False when there is no document or no
    // rectangle file, or when the file could not be written.
    bool generateJSConfig(const QString &relativePath);

    // The element as a member of a script's object, UTF-8, its texts by replaceStringForJS. Paths of files
    // are put into the relative folder.
    QByteArray jsonFromXml(const pugi::xml_node &element, const QString &relatePath) const;

    // The same for a whole document given as its file's bytes; nothing when they are none.
    std::optional<QByteArray> jsonFromDocument(QByteArrayView utf8, const QString &relatePath) const;

    // Copies what lies below a folder, without what is there already. Hidden entries are told by the first
    // character of the relative path alone, so those in sub-folders are copied. Nothing is written through a
    // link at the destination.
    static void copyFromPath(const QString &source, const QString &toPath, bool withHiddenFiles);

    // The folder that holds the workspaces of all plug-ins of the product, in the user's data folder.
    static QString getSavePluginPath();

private:
    QString resourcePath() const;
    QString documentName() const;
    std::optional<QByteArray> documentBytes();
    bool hasWorkspace() const;

    QString m_identifier;
    QString m_bundlePath;
    QString m_workSpace;
};
