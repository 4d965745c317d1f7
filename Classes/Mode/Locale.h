#pragma once

#include <QString>
#include <Qt>

// The language and the bundle that the host gave, for the whole process, and the translation of interface
// texts from the table "PluginLocale" of that language. Nil is a null string. For the main thread only;
// nothing here reports an error, as a text that cannot be translated is shown as it is.

// The name of a language folder without its ".lproj" ending. Setting answers the copy that is kept.
QString setDefaultLanguageCode(const QString &languageCode);
QString defaultLanguageCode();

// The plug-in's bundle folder. Setting answers the copy that is kept.
QString setDefaultBundlePath(const QString &bundlePath);
QString defaultBundlePath();

// The text for that key, or the default text where the table has no such key or gives the key itself.
//
// The table is loaded by the first call that finds it and then kept: one process shows one language, even
// when a later session sets another. Until then each call looks again, and meanwhile asks the bundle, which
// follows the person's own languages.
QString loadAppString(const QString &key, const QString &defaultText);

// The direction in which the loaded table's language is written, for the layout of the window that shows its
// texts. Left to right while no table is loaded, and for a table that lies outside the language folders.
Qt::LayoutDirection loadedTableDirection();

// Back to the state at the start of the process: no language, no bundle, no table. For tests alone.
void resetLocaleForTesting();
