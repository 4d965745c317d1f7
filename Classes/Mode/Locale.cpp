#include "Classes/Mode/Locale.h"

#include "platform/Bundle.h"
#include "platform/StringsTable.h"

#include <QHash>
#include <QLocale>
#include <optional>

namespace
{
using Table = QHash<QString, QString>;

struct State {
    QString defaultLanguageCode;
    QString defaultBundlePath;
    std::optional<Table> appLocaleTableDict;
    Qt::LayoutDirection tableDirection = Qt::LeftToRight;
};

State &state()
{
    static State theState;
    return theState;
}

// Characters of one's own: the caller's may lie in a module that is unloaded before this one.
QString ownedCopy(const QString &text)
{
    return text.isNull() ? QString() : QString(text.constData(), text.size());
}

std::optional<QString> entry(const Table &table, const QString &key)
{
    const auto found = key.isNull() ? table.constEnd() : table.constFind(key);
    return found == table.constEnd() ? std::nullopt : std::optional(*found);
}

void loadTable(const Bundle &bundle)
{
    const QString name = QStringLiteral("PluginLocale");
    const QString type = QStringLiteral("strings");
    const QString language = state().defaultLanguageCode;
    const QString path = bundle.pathForResource(name, type, language);
    // A table that is missing or broken leaves the state as it is: the next call tries again.
    StringsTable::Result result = StringsTable::readFile(path);
    if (!result.ok)
        return;
    state().appLocaleTableDict = std::move(result.entries);
    const bool isOfLanguage = path != bundle.pathForResource(name, type);
    state().tableDirection = isOfLanguage ? QLocale(language).textDirection() : Qt::LeftToRight;
}
} // namespace

QString setDefaultLanguageCode(const QString &languageCode)
{
    return state().defaultLanguageCode = ownedCopy(languageCode);
}

QString defaultLanguageCode()
{
    return state().defaultLanguageCode;
}

QString setDefaultBundlePath(const QString &bundlePath)
{
    return state().defaultBundlePath = ownedCopy(bundlePath);
}

QString defaultBundlePath()
{
    return state().defaultBundlePath;
}

QString loadAppString(const QString &key, const QString &defaultText)
{
    const Bundle bundle(state().defaultBundlePath);
    if (!state().appLocaleTableDict)
        loadTable(bundle);
    const std::optional<QString> text = state().appLocaleTableDict
        ? entry(*state().appLocaleTableDict, key)
        : bundle.localizedStringForKey(key, defaultText, QStringLiteral("PluginLocale"));
    return !text || text == key ? defaultText : *text;
}

Qt::LayoutDirection loadedTableDirection()
{
    return state().tableDirection;
}

void resetLocaleForTesting()
{
    state() = State();
}
