#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

// What a page of a book needs to show the published configuration when a browser opens it from disk. A script
// may not read a file there, only load one as a script: so the scrambled text is written once more, as a
// script that declares it, beside the bundle's own page code.
namespace PublishedPage
{

// The text as a script's string in double quotes, in ASCII: quotes, backslashes, "<" and all that is not
// printable are written as \uXXXX, so that it can stand in any script and cannot end it.
QByteArray scriptString(QStringView text);

// Writes bookPlugin.text.js from the folder's bookPlugin.js and copies player.css, player.js and
// unscramble.js from the bundle's html folder into that folder. Answers the name of the first file that could
// not be read or written, an empty text when all are in place.
QString writeInto(const QString &folder, const QString &bundle);

} // namespace PublishedPage
