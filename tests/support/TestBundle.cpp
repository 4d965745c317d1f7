#include "tests/support/TestBundle.h"

#include "Classes/Delegate/PluginSettingsInfo.h"
#include "tests/support/Fixtures.h"

#include <QDir>

TestBundle::TestBundle()
{
    const QString resources = QStringLiteral("Contents/Resources");
    QDir(m_folder.path()).mkpath(QStringLiteral("linklist.bundle/") + resources);
    PluginSettingsInfo::copyFromPath(QStringLiteral(LINKLIST_BUNDLE_DIR "/") + resources,
                                     path() + u'/' + resources, true);
    editNib("PluginSettingsDelegate", "class=\"WebView\"", "class=\"QFrame\"");
}

QString TestBundle::resource(const char *name) const
{
    return path() + QStringLiteral("/Contents/Resources/") + QString::fromUtf8(name);
}

void TestBundle::editNib(const char *name, const QByteArray &before, const QByteArray &after) const
{
    const QString file = resource("en.lproj/") + QString::fromUtf8(name) + QStringLiteral(".nib");
    QByteArray content = Fixtures::get(file);
    if (!content.contains(before))
        qFatal("%s holds no %s", qPrintable(file), before.constData());
    Fixtures::put(file, content.replace(before, after));
}
