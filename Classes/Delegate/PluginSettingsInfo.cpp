#include "Classes/Delegate/PluginSettingsInfo.h"

#include "Classes/Mode/UtilityFunction.h"
#include "Classes/Mode/Xml.h"
#include "platform/Bundle.h"
#include "platform/File.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>

namespace
{

const QString defaultIdentifier = QStringLiteral("linklist");

// A path in its one true form, also when its last parts do not exist yet.
QString canonical(const QString &path)
{
    QString existing = QDir::cleanPath(path);
    QString rest;
    while (!QFileInfo::exists(existing) && !QDir(existing).isRoot()) {
        rest = File::joined(QFileInfo(existing).fileName(), rest);
        existing = QFileInfo(existing).path();
    }
    return File::joined(QFileInfo(existing).canonicalFilePath(), rest);
}

bool isSameOrInside(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(File::joined(folder, QStringLiteral("/")));
}

} // namespace

QString PluginSettingsInfo::documentName() const
{
    return (m_identifier.isEmpty() ? defaultIdentifier : m_identifier) + QStringLiteral(".xml");
}

QString PluginSettingsInfo::resourcePath() const
{
    return (File::exists(m_bundlePath) ? Bundle(m_bundlePath) : Bundle::mainBundle()).resourcePath();
}

bool PluginSettingsInfo::hasWorkspace() const
{
    return File::isFolder(m_workSpace);
}

bool PluginSettingsInfo::resetWorkspace()
{
    if (m_identifier.isEmpty())
        m_identifier = defaultIdentifier;
    if (!File::isUsableFolderPath(m_workSpace) || (File::exists(m_workSpace) && !hasWorkspace()))
        return false;
    File::removeAll(m_workSpace);
    File::makeFolder(m_workSpace);
    const QString resources = resourcePath();
    copyFromPath(File::joined(resources, QStringLiteral("html")), m_workSpace, false);
    copyFromPath(File::joined(resources, QStringLiteral("data")), m_workSpace, false);
    File::copy(File::joined(m_workSpace, m_identifier + QStringLiteral(".swf")),
               File::joined(m_workSpace, QStringLiteral("book.swf")));
    return true;
}

bool PluginSettingsInfo::loadWorkspace()
{
    if (m_workSpace.isNull())
        m_workSpace = File::joined(getSavePluginPath(), defaultIdentifier);
    if (!File::isUsableFolderPath(m_workSpace))
        return false;
    if (!File::exists(m_workSpace))
        return resetWorkspace();
    if (!hasWorkspace())
        return false;
    const QString resources = resourcePath();
    copyFromPath(File::joined(resources, QStringLiteral("html")), m_workSpace, true);
    copyFromPath(File::joined(resources, QStringLiteral("data")), m_workSpace, true);
    return true;
}

std::unique_ptr<pugi::xml_document> PluginSettingsInfo::getXMLFromWorkspace()
{
    const std::optional<QByteArray> bytes = documentBytes();
    return bytes ? Xml::parse(*bytes).document : nullptr;
}

std::optional<QByteArray> PluginSettingsInfo::documentBytes()
{
    if (m_identifier.isEmpty())
        m_identifier = defaultIdentifier;
    if (!File::isUsableFolderPath(m_workSpace))
        return std::nullopt;
    return Xml::readFile(File::joined(m_workSpace, documentName()));
}

bool PluginSettingsInfo::convertPluginToPath(const QString &toPath) const
{
    const QString destination = QDir::cleanPath(toPath);
    if (!hasWorkspace() || !File::isUsableFolderPath(destination))
        return false;
    const QString from = canonical(m_workSpace);
    const QString to = canonical(destination);
    if (isSameOrInside(to, from) || isSameOrInside(from, to))
        return false;
    if (!File::removeAll(destination) || !File::makeFolder(destination))
        return false;
    copyFromPath(m_workSpace, destination, false);
    return true;
}

void PluginSettingsInfo::copyFromPath(const QString &source, const QString &toPath, bool withHiddenFiles)
{
    QStringList closed; // folders of the source that are no folders of the destination's own
    const QStringList entries = File::subpaths(source);
    for (const QString &relative : entries) {
        const bool isClosed = std::any_of(closed.begin(), closed.end(), [&relative](const QString &folder) {
            return relative.startsWith(folder + u'/');
        });
        if (isClosed || (!withHiddenFiles && relative.startsWith(u'.')))
            continue;
        const QString from = File::joined(source, relative);
        const QString to = File::joined(toPath, relative);
        const QFileInfo info(from);
        // What is there already stays, and one entry that cannot be copied does not keep the others back.
        if (!info.isDir() || info.isSymLink())
            File::copy(from, to);
        else if (!File::makeFolder(to) || QFileInfo(to).isSymLink())
            closed.append(relative);
    }
}

QString PluginSettingsInfo::getSavePluginPath()
{
    QString support = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (support.isEmpty())
        support = File::joined(QDir::homePath(), QStringLiteral("Library/Application Support"));
    const QString folder
        = QStringLiteral("Harborlight/") + productId() + QStringLiteral("_resource/Plugin/Save");
    return File::joined(QDir::cleanPath(support), folder);
}
