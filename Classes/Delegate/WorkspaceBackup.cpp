#include "Classes/Delegate/WorkspaceBackup.h"

#include "platform/File.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace
{

bool copyEntry(const QString &from, const QString &to)
{
    const QFileInfo info(from);
    return info.isDir() && !info.isSymLink() ? File::makeFolder(to) : File::copy(from, to);
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
    if (!File::isFolder(m_path))
        return false;
    const QStringList entries = File::subpaths(workSpace);
    for (const QString &relative : entries) {
        if (!copyEntry(File::joined(workSpace, relative), File::joined(m_path, relative)))
            m_notCopied.append(relative);
    }
    return m_notCopied.isEmpty();
}

// What was not copied, and the folders that lead to it.
bool WorkspaceBackup::isKept(const QString &relativePath) const
{
    return std::any_of(m_notCopied.begin(), m_notCopied.end(), [&relativePath](const QString &notCopied) {
        return notCopied == relativePath || notCopied.startsWith(relativePath + u'/');
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
    // Children before their folders, so that a folder with something to keep is emptied and stays.
    QStringList present = File::subpaths(workSpace);
    std::reverse(present.begin(), present.end());
    for (const QString &relative : present) {
        if (!isKept(relative))
            File::removeAll(File::joined(workSpace, relative));
    }
    bool isComplete = true;
    const QStringList saved = File::subpaths(m_path);
    for (const QString &relative : saved) {
        if (!isKept(relative))
            isComplete
                = copyEntry(File::joined(m_path, relative), File::joined(workSpace, relative)) && isComplete;
    }
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
