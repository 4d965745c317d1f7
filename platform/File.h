#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <optional>

// Files and folders as the whole system reads and writes them. Every write goes aside and is then put in
// place in one step, so that a reader sees the old file or the new one and a full disk costs nothing.
// Symbolic links are copied and replaced as links and never followed. Failures are results; nothing is
// printed.
namespace File
{

// The whole content, or nothing when the file is missing, a folder or unreadable.
std::optional<QByteArray> readBytes(const QString &path);

// The content as text without a leading byte-order mark, or nothing when it is not UTF-8.
std::optional<QString> readText(const QString &path);

// Replaces the file's content; true only when every byte is in place.
bool write(const QString &path, QByteArrayView content);

// Copies one file with its permissions, or one link as a link. False when something is at the destination
// already, and for what is neither file nor link.
bool copy(const QString &source, const QString &destination);

// Makes a folder with its missing parents; true when it exists afterwards.
bool makeFolder(const QString &path);

// Deletes a file, a link or a folder with all it holds; true when nothing is left.
bool removeAll(const QString &path);

// True when there is a folder at that path that may be worked in: an absolute path, never the current folder,
// which is what an empty path would be.
bool isFolder(const QString &path);

// An absolute path that is not the root. Anything else is no place to list, copy to or delete.
bool isUsableFolderPath(const QString &path);

// True when there is anything at all at that path, a dangling link included.
bool exists(const QString &path);

// Every entry below the folder as a relative path, hidden ones included, parents before children. Links are
// listed and not entered.
// Folders that may not be read are not entered either; `isWhole` becomes false when the listing broke off.
QStringList subpaths(const QString &folder, bool *isWhole = nullptr);

// True when what the folder holds can be told.
bool isListable(const QString &folder);

// Two paths joined with exactly one separator; either may be empty.
QString joined(const QString &base, const QString &component);

// The current time in seconds since 1970 with six decimals: the name of a backup or a temporary folder,
// another one each microsecond.
QString timeStamp();

} // namespace File
