#include "tests/support/Fixtures.h"

#include "platform/File.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <unistd.h>

namespace Fixtures
{

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray get(const QString &path)
{
    return File::readBytes(path).value_or(QByteArray());
}

QMap<QString, QByteArray> tree(const QString &folder)
{
    QMap<QString, QByteArray> result;
    const QStringList entries = File::subpaths(folder);
    for (const QString &relative : entries) {
        const QFileInfo info(folder + u'/' + relative);
        if (info.isSymLink())
            result[relative] = "-> " + info.symLinkTarget().toUtf8();
        else
            result[relative] = info.isDir() ? QByteArray("<folder>") : get(info.filePath());
    }
    return result;
}

bool isOrdinaryUser()
{
    return geteuid() != 0;
}

} // namespace Fixtures
