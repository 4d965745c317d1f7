#pragma once

#include <QString>
#include <QStringList>

// A folder of resources, as the plug-in's and the application's bundles are. It looks at the disk whenever it
// is asked and keeps nothing but its path, so that it may be made, copied and dropped freely. A bundle
// without a path finds nothing: every path that it answers is null, every text is the one given.
class Bundle
{
public:
    Bundle() = default;
    explicit Bundle(const QString &path)
        : m_path(path)
    {
    }

    // The application's bundle, or the folder of its executable. Without an application object it has no
    // path.
    static Bundle mainBundle();

    // The bundle that an executable in that folder belongs to: /x/Name.app for /x/Name.app/Contents/MacOS,
    // and the folder itself elsewhere.
    static QString pathForExecutableFolder(const QString &folder);

    // The names under which those languages' folders are looked for, best first and "en" last: "de-DE" gives
    // "de-DE", "de_DE" and "de".
    static QStringList languageNames(const QStringList &uiLanguages);

    QString path() const { return m_path; }

    // Contents/Resources where there is such a folder, else the bundle's own folder.
    QString resourcePath() const;

    // The file or folder NAME.TYPE (NAME alone without a type) in LOCALIZATION.lproj, else directly among the
    // resources, where a null localization looks at once. A localization is a plain name: one with "/" or
    // ".." in it finds nothing at all. Null when there is none.
    QString pathForResource(const QString &name, const QString &type,
                            const QString &localization = QString()) const;

    // The key's text in the person's own languages, then in English, then in the table that belongs to no
    // language: the first one that has the key counts, so that an incomplete translation falls back text by
    // text. Where none has it, the value, or the key when the value is empty. A null table is "Localizable".
    QString localizedStringForKey(const QString &key, const QString &value, const QString &table) const;

private:
    QString m_path;
};
