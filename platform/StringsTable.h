#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

// Tables of texts by key, in either of two forms: an XML property list whose dictionary holds keys and
// strings, or entries such as "key" = "value"; with comments and escapes. Both may be UTF-8 or UTF-16, with
// or without a byte-order mark. The later of two entries with one key counts. Whatever the input, reading
// ends with a whole table or with a place and a reason; nothing is printed.
namespace StringsTable
{

// What reading gave. It starts as failed, and a failed one has no entries.
struct Result {
    QHash<QString, QString> entries; // an empty value is an empty text, never a null one
    bool ok = false;
    qsizetype line = 0; // where it failed, counted from 1; 0 when no single line is at fault
    QString reason; // why it failed, in English, for developers
};

// No table is larger than this many bytes: a larger one is refused unread.
constexpr qsizetype maximumSize = 4 * 1024 * 1024;

Result read(const QByteArray &content);

// The same for a file; one that is missing or unreadable is a failure without a line.
Result readFile(const QString &path);

} // namespace StringsTable
