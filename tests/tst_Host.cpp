#include "tests/support/Fixtures.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QProcess>

// linklist-host as a process: what it says, how it ends, and what it leaves behind.

namespace
{

enum Status { Applied = 0, Failed = 1, BadArguments = 2 };

const QString builtModules = QStringLiteral(LINKLIST_BUNDLE_DIR "/Contents/Linux");

struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

} // namespace

class tst_Host : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void helpTellsTheExitStatuses();
    void wrongArgumentsEndWithTwo_data();
    void wrongArgumentsEndWithTwo();
    void whatCannotBeLoadedIsNamedInOneLine_data();
    void whatCannotBeLoadedIsNamedInOneLine();
    void nothingIsTouchedWhenNothingCanBeLoaded();
    void smokeTestPassesAndLeavesNothingBehind();
    void smokeTestTakesAWorkspace();
    void smokeTestRunsInEveryLanguage_data();
    void smokeTestRunsInEveryLanguage();
    void publishPutsAPageIntoTheBook_data();
    void publishPutsAPageIntoTheBook();
    void publishNamesMissingPageCode();

private:
    Outcome run(const QStringList &arguments) const;
    QString path(const char *name) const { return m_folder->filePath(QString::fromLatin1(name)); }

    std::unique_ptr<QTemporaryDir> m_folder; // holds the process's temporary, runtime and data folders
    std::unique_ptr<TestBundle> m_bundle;
};

void tst_Host::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_bundle = std::make_unique<TestBundle>();
    for (const char *name : {"tmp", "runtime", "data"}) {
        QVERIFY(QDir().mkdir(path(name)));
        QVERIFY(QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
}

Outcome tst_Host::run(const QStringList &arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("TMPDIR"), path("tmp"));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), path("runtime"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), path("data"));
    if (!Fixtures::isOrdinaryUser())
        environment.insert(QStringLiteral("QTWEBENGINE_DISABLE_SANDBOX"), QStringLiteral("1"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_folder->path());
    process.start(QStringLiteral(LINKLIST_BUNDLE_DIR "/../linklist-host"), arguments);
    Outcome outcome;
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    outcome.output = process.readAllStandardOutput();
    outcome.errors = process.readAllStandardError();
    return outcome;
}

void tst_Host::helpTellsTheExitStatuses()
{
    for (const char *argument : {"--help", "-h"}) {
        const Outcome outcome = run({QString::fromLatin1(argument)});
        QCOMPARE(outcome.status, int(Applied));
        QCOMPARE(outcome.errors, QByteArray());
        QVERIFY(outcome.output.contains("Exit status: 0"));
        QVERIFY(outcome.output.contains("3 they were reverted"));
        for (const char *option : {"--workspace", "--language", "--bundle", "--modal", "--book", "--publish",
                                   "--smoke-test", "--help"})
            QVERIFY2(outcome.output.contains(option), option);
    }
}

void tst_Host::wrongArgumentsEndWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("named");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--colour")} << QByteArray("colour");
    QTest::newRow("no option at all") << QStringList{QStringLiteral("folder")} << QByteArray("folder");
    QTest::newRow("option without its value")
        << QStringList{QStringLiteral("--workspace")} << QByteArray("workspace");
    QTest::newRow("value for a switch")
        << QStringList{QStringLiteral("--smoke-test=yes")} << QByteArray("smoke-test");
}

void tst_Host::wrongArgumentsEndWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, named);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.status, int(BadArguments));
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(outcome.errors.count('\n'), 1);
    QVERIFY2(outcome.errors.startsWith("linklist-host: ") && outcome.errors.contains(named), outcome.errors);
}

void tst_Host::whatCannotBeLoadedIsNamedInOneLine_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QByteArray>("named");
    QTest::newRow("missing bundle") << QStringLiteral("bundle") << QByteArray("there is no bundle");
    QTest::newRow("bundle without module")
        << QStringLiteral("module") << QByteArray("cannot load the plug-in");
    QTest::newRow("module that is none") << QStringLiteral("text") << QByteArray("cannot load the plug-in");
    QTest::newRow("bundle without interface files")
        << QStringLiteral("en.lproj") << QByteArray("has no interface file");
    QTest::newRow("bundle without resources")
        << QStringLiteral("resources") << QByteArray("has no interface file");
    QTest::newRow("broken interface file")
        << QStringLiteral("nib") << QByteArray("interface file cannot be loaded");
}

void tst_Host::whatCannotBeLoadedIsNamedInOneLine()
{
    QFETCH(QString, damage);
    QFETCH(QByteArray, named);
    const QString modules = m_bundle->path() + QStringLiteral("/Contents/Linux");
    if (damage == QLatin1String("bundle"))
        QVERIFY(QDir(m_bundle->path()).removeRecursively());
    else if (damage == QLatin1String("text"))
        Fixtures::put(modules + QStringLiteral("/linklist.so"), "no module");
    else if (damage != QLatin1String("module"))
        QVERIFY(QFile::link(builtModules, modules));
    if (damage == QLatin1String("en.lproj"))
        QVERIFY(QDir(m_bundle->resource("en.lproj")).removeRecursively());
    if (damage == QLatin1String("resources"))
        QVERIFY(QDir(m_bundle->resource("")).removeRecursively());
    if (damage == QLatin1String("nib"))
        Fixtures::put(m_bundle->resource("en.lproj/PluginSettingsDelegate.nib"), "<ui><widget");

    const Outcome outcome = run({QStringLiteral("--bundle"), m_bundle->path(), QStringLiteral("--workspace"),
                                 m_bundle->workSpace(), QStringLiteral("--smoke-test")});
    QCOMPARE(outcome.status, int(Failed));
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(outcome.errors.count('\n'), 1);
    QVERIFY2(outcome.errors.startsWith("linklist-host: "), outcome.errors);
    QVERIFY2(outcome.errors.contains(named), outcome.errors);
    QVERIFY2(outcome.errors.contains(m_bundle->path().toUtf8()), outcome.errors);
    QVERIFY(!QFileInfo::exists(m_bundle->workSpace()));
    QCOMPARE(Fixtures::tree(path("tmp")).keys(), QStringList());
    QCOMPARE(Fixtures::tree(path("data")).keys(), QStringList());
}

void tst_Host::nothingIsTouchedWhenNothingCanBeLoaded()
{
    Fixtures::put(m_bundle->inWorkSpace("linklist.xml"), "mine");
    const auto before = Fixtures::tree(m_bundle->workSpace());
    QCOMPARE(run({QStringLiteral("--bundle"), m_bundle->path(), QStringLiteral("--workspace"),
                  m_bundle->workSpace()})
                 .status,
             int(Failed));
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
}

void tst_Host::smokeTestPassesAndLeavesNothingBehind()
{
    const Outcome outcome = run({QStringLiteral("--smoke-test")});
    QCOMPARE(outcome.status, int(Applied));
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(Fixtures::tree(path("tmp")).keys(), QStringList());
    QCOMPARE(Fixtures::tree(path("data")).keys(), QStringList());
}

void tst_Host::smokeTestTakesAWorkspace()
{
    Fixtures::put(m_bundle->inWorkSpace("settings.dat"), "1.0\r\n2.0\r\n3.0\r\n4.0\r\n5.0\r\n1");
    Fixtures::put(m_bundle->inWorkSpace("sub/.note"), "mine");
    const auto before = Fixtures::tree(m_bundle->workSpace());
    // A relative path counts from where the host was started.
    for (const QString &workspace :
         {m_bundle->workSpace(), QDir(m_folder->path()).relativeFilePath(m_bundle->workSpace())}) {
        QCOMPARE(run({QStringLiteral("--smoke-test"), QStringLiteral("--workspace"), workspace}).status,
                 int(Applied));
        auto after = Fixtures::tree(m_bundle->workSpace());
        QVERIFY(after.contains(QStringLiteral("linklist.xml")));
        for (auto it = before.begin(); it != before.end(); ++it)
            QVERIFY2(after[it.key()] == it.value(), qPrintable(it.key()));
        QCOMPARE(Fixtures::tree(path("tmp")).keys(), QStringList());
    }
}

void tst_Host::smokeTestRunsInEveryLanguage_data()
{
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "de", "ja", "xx"})
        QTest::newRow(language) << QString::fromLatin1(language);
}

void tst_Host::smokeTestRunsInEveryLanguage()
{
    QFETCH(QString, language);
    QCOMPARE(run({QStringLiteral("--smoke-test"), QStringLiteral("--language"), language}).status,
             int(Applied));
}

void tst_Host::publishPutsAPageIntoTheBook_data()
{
    QTest::addColumn<bool>("isModal");
    QTest::newRow("window") << false;
    QTest::newRow("modal") << true;
}

void tst_Host::publishPutsAPageIntoTheBook()
{
    QFETCH(bool, isModal);
    Fixtures::put(path("book/files/plugin/old"), "gone with the next publication");
    QStringList arguments{QStringLiteral("--publish"), QStringLiteral("--workspace"), path("workspace"),
                          QStringLiteral("--book"), path("book")};
    if (isModal)
        arguments.append(QStringLiteral("--modal"));
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.status, int(Applied));
    QVERIFY2(outcome.output.contains("closeMode: 1\n"), outcome.output);
    QCOMPARE(
        Fixtures::tree(path("book/files/plugin")).keys().join(u' '),
        QStringLiteral("bookPlugin.js bookPlugin.text.js defaultsettings.dat files linklist.xml player.css "
                       "player.js settings.dat unscramble.js"));
    QCOMPARE(Fixtures::get(path("book/files/plugin/bookPlugin.text.js")),
             "var bookPluginText=\"" + Fixtures::get(path("book/files/plugin/bookPlugin.js")) + "\";");
    // What the session leaves in the workspace is the book's own, without the page.
    QVERIFY(!QFileInfo::exists(path("workspace/bookPlugin.text.js")));
}

void tst_Host::publishNamesMissingPageCode()
{
    QVERIFY(QFile::link(builtModules, m_bundle->path() + QStringLiteral("/Contents/Linux")));
    QVERIFY(QFile::remove(m_bundle->resource("html/unscramble.js")));
    const Outcome outcome
        = run({QStringLiteral("--publish"), QStringLiteral("--bundle"), m_bundle->path(),
               QStringLiteral("--workspace"), m_bundle->workSpace(), QStringLiteral("--book"), path("book")});
    QCOMPARE(outcome.status, int(Failed));
    QVERIFY2(outcome.errors.contains("the book cannot show its links: there is no unscramble.js"),
             outcome.errors);
    // The publication itself is whole.
    QVERIFY(QFileInfo::exists(path("book/files/plugin/bookPlugin.js")));
}

LINKLIST_TEST_MAIN(tst_Host)

#include "tst_Host.moc"
