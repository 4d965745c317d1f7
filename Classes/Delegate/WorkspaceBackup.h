#pragma once

#include <QString>
#include <QStringList>

// The full copy of a workspace that a session takes when its window opens and goes back to on Cancel. What
// could not be copied is remembered and left alone in the workspace, and a backup that could not be put back
// completely is kept: there is always one whole copy of what the person had.
class WorkspaceBackup
{
public:
    QString path() const { return m_path; }
    void setPath(const QString &path) { m_path = path; }

    // Makes the folder anew, readable for this user alone. False when that failed.
    bool create();

    // Copies everything in the workspace; false when something could not be copied. A folder inside the
    // workspace is no place for its backup: nothing is copied then.
    bool save(const QString &workSpace);

    // Makes the workspace what it was at save() and then clears. Without a backup folder, or for another
    // workspace than the one that was saved, nothing is touched. False when something could not be put back;
    // the backup stays then.
    bool undo(const QString &workSpace);

    // Deletes the folder; true when it is gone.
    bool clear();

    // Deletes the folder if nothing was copied into it.
    void clearIfEmpty();

private:
    bool isKept(const QString &relativePath) const;

    QString m_path;
    QString m_workSpace;
    QStringList m_notCopied;
};
