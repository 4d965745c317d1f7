#include "host/PublishedPage.h"

#include <QFile>
#include <QSaveFile>

namespace PublishedPage
{

namespace
{

// Aside and then into place; a full disk shows at the flush.
bool write(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush()
        && file.error() == QFileDevice::NoError && file.commit();
}

} // namespace

QByteArray scriptString(QStringView text)
{
    QByteArray result;
    result.reserve(text.size() + 2);
    result += '"';
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit >= u' ' && unit <= u'~' && unit != u'"' && unit != u'\\' && unit != u'<')
            result += char(unit);
        else
            result += "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
    }
    return result + '"';
}

QString writeInto(const QString &folder, const QString &bundle)
{
    const QString published = QStringLiteral("bookPlugin.js");
    const QString asScript = QStringLiteral("bookPlugin.text.js");
    QFile configuration(folder + u'/' + published);
    if (!configuration.open(QIODevice::ReadOnly))
        return published;
    const QString text = QString::fromUtf8(configuration.readAll());
    if (!write(folder + u'/' + asScript, "var bookPluginText=" + scriptString(text) + ';'))
        return asScript;
    for (const QString &name :
         {QStringLiteral("player.css"), QStringLiteral("player.js"), QStringLiteral("unscramble.js")}) {
        QFile source(bundle + QStringLiteral("/Contents/Resources/html/") + name);
        if (!source.open(QIODevice::ReadOnly) || !write(folder + u'/' + name, source.readAll()))
            return name;
    }
    return QString();
}

} // namespace PublishedPage
