#include "platform/Bundle.h"

#include "platform/File.h"
#include "platform/StringsTable.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <utility>

namespace
{
// NAME.TYPE in that folder, or null.
QString fileIn(const QString &folder, const QString &name, const QString &type)
{
    if (folder.isEmpty() || name.isEmpty())
        return QString();
    const QString path = File::joined(folder, type.isEmpty() ? name : name + u'.' + type);
    return QFileInfo::exists(path) ? path : QString();
}

QString languageFolder(const QString &resources, const QString &language)
{
    return File::joined(resources, language + QLatin1String(".lproj"));
}

bool isPlainName(const QString &localization)
{
    return !localization.contains(u'/') && !localization.contains(QLatin1String(".."))
        && !localization.contains(QChar::Null);
}
} // namespace

Bundle Bundle::mainBundle()
{
    // Without an application object Qt warns and does not know the folder.
    if (!QCoreApplication::instance())
        return Bundle();
    return Bundle(pathForExecutableFolder(QCoreApplication::applicationDirPath()));
}

QString Bundle::pathForExecutableFolder(const QString &folder)
{
    const QLatin1String inside("/Contents/MacOS");
    const QString outside = folder.chopped(qMin(folder.size(), inside.size()));
    return folder.endsWith(inside) && outside.endsWith(QLatin1String(".app")) ? outside : folder;
}

QStringList Bundle::languageNames(const QStringList &uiLanguages)
{
    QStringList names;
    for (const QString &language : uiLanguages) {
        QString dashed = QString(language).replace(u'_', u'-');
        while (!dashed.isEmpty()) {
            names << dashed << QString(dashed).replace(u'-', u'_');
            dashed.truncate(qMax(qsizetype(0), dashed.lastIndexOf(u'-')));
        }
    }
    names << QStringLiteral("en");
    names.removeDuplicates();
    return names;
}

QString Bundle::resourcePath() const
{
    if (m_path.isEmpty())
        return QString();
    const QString inside = File::joined(m_path, QStringLiteral("Contents/Resources"));
    return QFileInfo(inside).isDir() ? inside : m_path;
}

QString Bundle::pathForResource(const QString &name, const QString &type, const QString &localization) const
{
    const QString resources = resourcePath();
    if (resources.isEmpty() || !isPlainName(localization))
        return QString();
    if (!localization.isEmpty()) {
        const QString localized = fileIn(languageFolder(resources, localization), name, type);
        if (!localized.isNull())
            return localized;
    }
    return fileIn(resources, name, type);
}

QString Bundle::localizedStringForKey(const QString &key, const QString &value, const QString &table) const
{
    const QString resources = resourcePath();
    if (!key.isNull() && !resources.isEmpty()) {
        QStringList folders;
        const QStringList languages = languageNames(QLocale::system().uiLanguages());
        for (const QString &language : languages) {
            if (isPlainName(language))
                folders << languageFolder(resources, language);
        }
        folders << resources;
        const QString name = table.isEmpty() ? QStringLiteral("Localizable") : table;
        for (const QString &folder : std::as_const(folders)) {
            const QString file = fileIn(folder, name, QStringLiteral("strings"));
            if (file.isNull())
                continue;
            const StringsTable::Result texts = StringsTable::readFile(file);
            const auto found = texts.entries.constFind(key);
            if (found != texts.entries.constEnd())
                return *found;
        }
    }
    return value.isEmpty() ? key : value;
}
