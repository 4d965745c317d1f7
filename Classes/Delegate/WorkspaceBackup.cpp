#include "Classes/Delegate/WorkspaceBackup.h"

#include "platform/File.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace
{

bool isOwnFolder(const QFileInfo &info)
{
    return info.isDir() && !info.isSymLink();
}

// A folder that cannot be listed is not copied: what it holds would look as if it were not there.
bool copyEntry(const QString &from, const QString &to)
{
    const QFileInfo info(from);
    if (!isOwnFolder(info))
        return File::copy(from, to);
    return File::isListable(from) && File::makeFolder(to);
}

// Folders get their permissions when they are filled; the owner's stay, or the copy could not be cleared.
void copyFolderPermissions(const QStringList &entries, const QString &from, const QString &to)
{
    constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    for (auto relative = entries.crbegin(); relative != entries.crend(); ++relative) {
        const QFileInfo info(File::joined(from, *relative));
        if (isOwnFolder(info) && isOwnFolder(QFileInfo(File::joined(to, *relative))))
            QFile::setPermissions(File::joined(to, *relative), info.permissions() | owner);
    }
}

} // namespace

bool WorkspaceBackup::create()
{
    return File::removeAll(m_path) && File::makeFolder(m_path)
        && QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool WorkspaceBackup::save(const QString &workSpace)
{
    m_notCopied.clear();
    m_workSpace.clear();
    if (!File::isFolder(m_path))
        return false;
    const QString inside = QFileInfo(workSpace).canonicalFilePath() + u'/';
    if (File::isFolder(workSpace) && (QFileInfo(m_path).canonicalFilePath() + u'/').startsWith(inside)) {
        clearIfEmpty();
        return false;
    }
    bool isWhole = true;
    const QStringList entries = File::subpaths(workSpace, &isWhole);
    for (const QString &relative : entries) {
        if (!copyEntry(File::joined(workSpace, relative), File::joined(m_path, relative)))
            m_notCopied.append(relative);
    }
    copyFolderPermissions(entries, workSpace, m_path);
    if (isWhole)
        m_workSpace = workSpace; // of a listing that broke off nothing could be told to be new
    return isWhole && m_notCopied.isEmpty();
}

// What was not copied, what lies in it, and the folders that lead to it.
bool WorkspaceBackup::isKept(const QString &relativePath) const
{
    return std::any_of(m_notCopied.begin(), m_notCopied.end(), [&relativePath](const QString &notCopied) {
        return notCopied == relativePath || notCopied.startsWith(relativePath + u'/')
            || relativePath.startsWith(notCopied + u'/');
    });
}

bool WorkspaceBackup::undo(const QString &workSpace)
{
    if (!File::isFolder(m_path))
        return false;
    if (!File::makeFolder(workSpace)) {
        clearIfEmpty(); // there was never a workspace to copy
        return false;
    }
    if (workSpace != m_workSpace)
        return false;
    // Children before their folders, so that a folder with something to keep is emptied and stays.
    QStringList present = File::subpaths(workSpace);
    std::reverse(present.begin(), present.end());
    for (const QString &relative : present) {
        if (!isKept(relative))
            File::removeAll(File::joined(workSpace, relative));
    }
    bool isComplete = true;
    const QStringList saved = File::subpaths(m_path, &isComplete);
    for (const QString &relative : saved) {
        if (!isKept(relative))
            isComplete
                = copyEntry(File::joined(m_path, relative), File::joined(workSpace, relative)) && isComplete;
    }
    copyFolderPermissions(saved, m_path, workSpace);
    return isComplete && clear();
}

bool WorkspaceBackup::clear()
{
    return File::removeAll(m_path);
}

void WorkspaceBackup::clearIfEmpty()
{
    if (File::isUsableFolderPath(m_path))
        QDir().rmdir(m_path);
}
