#include "Classes/Mode/SelectedLanguage.h"

#include "Classes/Mode/Locale.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/ui/Nib.h"

#include <QFileInfo>
#include <QLocale>

namespace SelectedLanguage
{

namespace
{
// The first language whose folder has the file, at last the folder of all languages.
QString find(const QString &name, const Bundle &bundle, const QStringList &languages)
{
    const QString resources = bundle.resourcePath();
    if (resources.isEmpty() || name.isEmpty())
        return {};
    const QString file = name + QStringLiteral(".nib");
    QStringList candidates;
    for (const QString &language : languages) {
        if (language.contains(u'/'))
            continue; // no name of a folder here
        candidates << File::joined(resources, language + QStringLiteral(".lproj/") + file);
    }
    candidates << File::joined(resources, file);
    for (const QString &candidate : std::as_const(candidates)) {
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return {};
}

QStringList hostLanguages()
{
    const QString english = QStringLiteral("en");
    const QString language = defaultLanguageCode();
    return {language.isNull() ? english : language, english};
}

QString findByName(const QString &name, const Bundle &bundle)
{
    return find(name, bundle, Bundle::languageNames(QLocale::system().uiLanguages()));
}
} // namespace

QString windowNibPath(const QString &name)
{
    const QString path = find(name, Bundle(defaultBundlePath()), hostLanguages());
    return path.isEmpty() ? findByName(name, Bundle::mainBundle()) : path;
}

std::unique_ptr<Nib> initWithResourceNibName(const QString &name, const QString &bundlePath)
{
    const Bundle bundle = bundlePath.isNull() ? Bundle::mainBundle() : Bundle(bundlePath);
    QString path = find(name, bundle, hostLanguages());
    if (path.isEmpty())
        path = findByName(name, bundle);
    const QFileInfo file(path);
    if (!file.isFile() || !file.isReadable())
        return nullptr;
    return std::make_unique<Nib>(Nib::fromFile(path));
}

} // namespace SelectedLanguage
