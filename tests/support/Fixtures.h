#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

// Files for tests: a folder of the test's own, and shorthands to fill and read it.
namespace Fixtures
{

// Writes a file, making its folders; ends the test program when that fails, as nothing after it would mean a
// thing.
void put(const QString &path, const QByteArray &content);

// The file's bytes; a null array when there is none.
QByteArray get(const QString &path);

// Relative path to content for every entry below the folder, hidden ones included; a folder's content is
// "<folder>", a link's "-> target".
QMap<QString, QByteArray> tree(const QString &folder);

// True when this process is an ordinary user: only then does a read-only folder refuse a write.
bool isOrdinaryUser();

} // namespace Fixtures
