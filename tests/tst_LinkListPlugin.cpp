#include "tests/support/Fixtures.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDir>
#include <QJsonArray>
#include <QLibrary>

// What the loaded module answers a host around its sessions.

using Fixtures::put;
using Fixtures::tree;
using namespace LoadedPlugin;

class tst_LinkListPlugin : public TestCase
{
    Q_OBJECT

public:
    explicit tst_LinkListPlugin(const Surroundings &surroundings)
        : m_surroundings(surroundings)
    {
    }

private Q_SLOTS:
    void init();
    void metaDataNamesThePlugIn();
    void nameOfTheDropNotificationIsExported();
    void savePathLiesInTheUsersData();
    void workspaceNeverSetLiesInTheSavePath();
    void convertCopiesAFinishedWorkspaceWithoutHiddenEntries();
    void convertRefuses_data();
    void convertRefuses();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QString workSpace() const { return path("workspace"); }
    QString inWorkSpace(const char *name) const { return workSpace() + u'/' + QString::fromUtf8(name); }

    const Surroundings &m_surroundings;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_LinkListPlugin::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_LinkListPlugin::metaDataNamesThePlugIn()
{
    QCOMPARE(metaData().value(QLatin1String("IID")).toString(),
             QStringLiteral("linklist.PluginSettingsInterface/1.0"));
    const QJsonObject data = metaData().value(QLatin1String("MetaData")).toObject();
    QCOMPARE(data.value(QLatin1String("id")).toString(), QStringLiteral("linklist"));
    QCOMPARE(data.value(QLatin1String("title")).toString(), QStringLiteral("Link List Plugin"));
    QCOMPARE(data.value(QLatin1String("version")).toString(), QStringLiteral("1.0.0"));
    QCOMPARE(data.value(QLatin1String("languages")).toArray(),
             (QJsonArray{QStringLiteral("en"), QStringLiteral("de"), QStringLiteral("ja")}));
    for (const auto &language : data.value(QLatin1String("languages")).toArray())
        QVERIFY(QFileInfo::exists(bundlePath() + QStringLiteral("/Contents/Resources/") + language.toString()
                                  + QStringLiteral(".lproj/PluginLocale.strings")));
}

void tst_LinkListPlugin::nameOfTheDropNotificationIsExported()
{
    QVERIFY(!metaData().isEmpty());
#ifdef Q_OS_MACOS
    const QString module = QStringLiteral("/Contents/MacOS/linklist");
#else
    const QString module = QStringLiteral("/Contents/Linux/linklist.so");
#endif
    const auto *name = reinterpret_cast<const QString *>(
        QLibrary::resolve(bundlePath() + module, "DragReportNotification"));
    QVERIFY(name);
    QCOMPARE(name->size(), 61);
    QVERIFY(name->startsWith(QLatin1String("DragReportNotification")));
}

void tst_LinkListPlugin::savePathLiesInTheUsersData()
{
    QVERIFY(plugin().initWithLanguageCode(QStringLiteral("en"), bundlePath()));
    QCOMPARE(plugin().getSavePluginPath(),
             m_surroundings.dataFolder() + QStringLiteral("/Harborlight/quillnest_resource/Plugin/Save"));
}

void tst_LinkListPlugin::workspaceNeverSetLiesInTheSavePath()
{
    const auto session = plugin().initWithLanguageCode(QStringLiteral("en"), bundlePath());
    QVERIFY(session->window());
    QCOMPARE(session->workSpace(), plugin().getSavePluginPath() + QStringLiteral("/linklist"));
    QVERIFY(QFileInfo::exists(session->workSpace() + QStringLiteral("/linklist.xml")));
    click(*session, "btnCancel");
}

void tst_LinkListPlugin::convertCopiesAFinishedWorkspaceWithoutHiddenEntries()
{
    const auto session = open(workSpace());
    click(*session, "btnOK");
    put(inWorkSpace(".hidden"), "x");
    put(inWorkSpace(".folder/file"), "x");
    put(inWorkSpace("images/.kept"), "x");
    put(path("book/files/plugin/old.js"), "x");
    put(path("book/files/cover.png"), "x");
    QVERIFY(plugin().convertPluginToPath(workSpace(), bundlePath(), path("book/files/plugin")));
    auto expected = tree(workSpace());
    for (const char *name : {".hidden", ".folder", ".folder/file"})
        QCOMPARE(expected.remove(QString::fromLatin1(name)), 1);
    QCOMPARE(tree(path("book/files/plugin")), expected);
    QVERIFY(expected.contains(QStringLiteral("images/.kept")));
    QVERIFY(QFileInfo::exists(path("book/files/cover.png")));
    QVERIFY(plugin().convertPluginToPath(workSpace(), QString(), path("book/new/plugin")));
    QCOMPARE(tree(path("book/new/plugin")), expected);
}

void tst_LinkListPlugin::convertRefuses_data()
{
    QTest::addColumn<QString>("workSpace");
    QTest::addColumn<QString>("destination");
    const QString ours = QStringLiteral("ROOT/workspace");
    const QString other = QStringLiteral("ROOT/book");
    QTest::newRow("missing workspace") << QStringLiteral("ROOT/nothing") << other;
    QTest::newRow("workspace that is a file") << QStringLiteral("ROOT/workspace/file") << other;
    QTest::newRow("empty workspace") << QStringLiteral("") << other;
    QTest::newRow("relative workspace") << QStringLiteral("workspace") << other;
    QTest::newRow("empty destination") << ours << QStringLiteral("");
    QTest::newRow("relative destination") << ours << QStringLiteral("book");
    QTest::newRow("destination is the workspace") << ours << ours;
    QTest::newRow("destination is the workspace, written otherwise")
        << ours << QStringLiteral("ROOT/book/../workspace/");
    QTest::newRow("destination in the workspace") << ours << QStringLiteral("ROOT/workspace/sub/plugin");
    QTest::newRow("destination holds the workspace") << ours << QStringLiteral("ROOT");
    QTest::newRow("destination in the workspace by a link") << ours << QStringLiteral("ROOT/link/plugin");
}

void tst_LinkListPlugin::convertRefuses()
{
    QFETCH(QString, workSpace);
    QFETCH(QString, destination);
    put(inWorkSpace("file"), "mine");
    put(path("book/old"), "old");
    QVERIFY(QFile::link(this->workSpace(), path("link")));
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const auto before = tree(m_folder->path());
    const QString root = QStringLiteral("ROOT");
    QVERIFY(!plugin().convertPluginToPath(workSpace.replace(root, m_folder->path()), bundlePath(),
                                          destination.replace(root, m_folder->path())));
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(tree(m_folder->path()), before);
}

int main(int argc, char **argv)
{
    const Surroundings surroundings;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    tst_LinkListPlugin test(surroundings);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LinkListPlugin.moc"
