#include "tests/support/LoadedPlugin.h"

#include "tests/support/Fixtures.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLineEdit>
#include <QPluginLoader>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace LoadedPlugin
{

namespace
{

constexpr int loadTimeout = 20'000;

QPluginLoader &loader()
{
    static QPluginLoader theLoader(bundlePath() + QStringLiteral("/Contents/Linux/linklist.so"));
    return theLoader;
}

} // namespace

QString bundlePath()
{
    return QStringLiteral(LINKLIST_BUNDLE_DIR);
}

PluginSettingsInterface &plugin()
{
    auto *found = qobject_cast<PluginSettingsInterface *>(loader().instance());
    if (!found)
        qFatal("no module: %s", qPrintable(loader().errorString()));
    return *found;
}

QJsonObject metaData()
{
    return loader().metaData();
}

std::unique_ptr<PluginSettings> open(const QString &workSpace, const QString &bundle, bool isModal)
{
    auto session = plugin().initWithLanguageCode(QStringLiteral("en"), bundle);
    if (!session)
        qFatal("no session");
    session->setWorkSpace(workSpace);
    session->setModalMode(isModal);
    if (!session->window())
        qFatal("no window");
    return session;
}

QWidget *part(PluginSettings &session, const char *name)
{
    auto *found = session.window()->findChild<QWidget *>(QString::fromUtf8(name));
    if (!found)
        qFatal("the window has no %s", name);
    return found;
}

QLineEdit *field(PluginSettings &session, const char *name)
{
    auto *found = qobject_cast<QLineEdit *>(part(session, name));
    if (!found)
        qFatal("%s is no field", name);
    return found;
}

void type(PluginSettings &session, const char *name, const char *keys)
{
    QLineEdit *edit = field(session, name);
    edit->setFocus();
    QTest::keySequence(edit, QKeySequence::SelectAll);
    QTest::keyClicks(edit, QString::fromUtf8(keys));
}

void paste(PluginSettings &session, const char *name, const QString &text)
{
    QLineEdit *edit = field(session, name);
    QApplication::clipboard()->setText(text);
    edit->setFocus();
    QTest::keySequence(edit, QKeySequence::SelectAll);
    QTest::keySequence(edit, QKeySequence::Paste);
}

void click(PluginSettings &session, const char *button)
{
    QTest::mouseClick(part(session, button), Qt::LeftButton);
}

bool closeAndAnswer(PluginSettings &session, const char *button)
{
    bool wasAsked = false;
    QTimer::singleShot(0, session.window(), [button, &wasAsked] {
        const QWidget *question = QApplication::activeModalWidget();
        auto *choice = question ? question->findChild<QAbstractButton *>(QString::fromUtf8(button)) : nullptr;
        if (!choice)
            qFatal("no question with %s", button);
        wasAsked = true;
        QTest::mouseClick(choice, Qt::LeftButton);
    });
    session.window()->close();
    return wasAsked;
}

QByteArray evaluated(const QString &configurationFile)
{
    QProcess node;
    node.start(QStringLiteral("node"),
               {QStringLiteral(LINKLIST_SOURCE_DIR "/tests/js/evaluate.mjs"), configurationFile});
    if (!node.waitForFinished() || node.exitCode() != 0) {
        qWarning("no configuration: %s", node.readAllStandardError().constData());
        return {};
    }
    return node.readAllStandardOutput();
}

Surroundings::Surroundings()
{
    for (const char *name : {"tmp", "data", "runtime"}) {
        const QString folder = m_folder.filePath(QString::fromLatin1(name));
        if (!QDir().mkdir(folder)
            || !QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qFatal("cannot make %s", qPrintable(folder));
    }
    qputenv("TMPDIR", temporaryFolder().toLocal8Bit());
    qputenv("XDG_DATA_HOME", dataFolder().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", m_folder.filePath(QStringLiteral("runtime")).toLocal8Bit());
    if (!Fixtures::isOrdinaryUser())
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
}

QStringList Surroundings::backups() const
{
    static const QRegularExpression stamp(QStringLiteral("^\\d+\\.\\d{6}$"));
    return QDir(temporaryFolder()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot).filter(stamp);
}

QStringList Surroundings::removeBackups() const
{
    const QStringList names = backups();
    for (const QString &name : names)
        QDir(temporaryFolder() + u'/' + name).removeRecursively();
    return names;
}

bool startEngine()
{
    const QTemporaryDir folder;
    const auto session = open(folder.filePath(QStringLiteral("workspace")));
    const QSignalSpy finished(part(*session, "iWebView"), SIGNAL(loadFinished(bool)));
    session->showWindow();
    const bool isLoaded = QTest::qWaitFor([&finished] { return !finished.isEmpty(); }, loadTimeout);
    click(*session, "btnCancel");
    return isLoaded;
}

} // namespace LoadedPlugin
