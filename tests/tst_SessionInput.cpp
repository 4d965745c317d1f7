#include "tests/support/Fixtures.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/OrdinaryRights.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QSignalSpy>

// Whole sessions on what a session should never find: workspaces that are none, files that are broken. The
// window opens all the same, the session ends as it is told, and nothing outside the workspace is touched.

using Fixtures::get;
using Fixtures::put;
using Fixtures::tree;
using namespace LoadedPlugin;

namespace
{

constexpr int loadTimeout = 20'000;
constexpr qint64 applied = 1;
constexpr qint64 reverted = 0;

// The document that an editor without anything in it makes of the bundle's.
const char *const emptyList
    = "<info><opacity type=\"number\">1.000000</opacity><layout type=\"number\">1</layout><properties><basic>"
      "<left type=\"text\">10.0%</left><top type=\"text\">26.0%</top><width type=\"text\">30.0%</width>"
      "<height type=\"text\">48.0%</height></basic><extended><title><content type=\"text\"/>"
      "<fontSize type=\"number\">1</fontSize><color type=\"color\">0x000000</color></title><body>"
      "<fontSize type=\"number\">1</fontSize><color "
      "type=\"color\">0x000000</color><content/></body></extended>"
      "</properties></info>";

QByteArray nested(int levels)
{
    QByteArray text;
    for (int i = 0; i < levels; ++i)
        text += "<a>";
    for (int i = 0; i < levels; ++i)
        text += "</a>";
    return text;
}

} // namespace

class tst_SessionInput : public TestCase
{
    Q_OBJECT

public:
    explicit tst_SessionInput(const Surroundings &surroundings)
        : m_surroundings(surroundings)
    {
    }

private Q_SLOTS:
    void init();
    void cleanup();

    void unusableWorkspaces_data();
    void unusableWorkspaces();
    void unusualWorkspaces_data();
    void unusualWorkspaces();
    void readOnlyWorkspaceStaysAsItIs();
    void unreadableDocumentSurvivesCancel();
    void settingsFiles_data();
    void settingsFiles();
    void brokenDocuments_data();
    void brokenDocuments();
    void hugeDocumentIsNone();
    void folderInPlaceOfTheDocumentStays();
    void documentWithoutAPlaceForTheListStaysAsItIs();
    void bundleWithoutLanguageFoldersShowsTheTextsOfItsInterfaceFiles();
    void bundleWithoutInterfaceFilesGivesNoSession();
    void bundleWithABrokenInterfaceFileGivesNoWindow();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QString workSpace() const { return path("workspace"); }
    QString inWorkSpace(const char *name) const { return workSpace() + u'/' + QString::fromUtf8(name); }
    QMap<QString, QByteArray> outside() const;
    // Changes something on both sides of the window.
    static void edit(PluginSettings &session);

    const Surroundings &m_surroundings;
    std::unique_ptr<QTemporaryDir> m_folder; // holds the workspace and a neighbour
    QMap<QString, QByteArray> m_outsideBefore;
};

void tst_SessionInput::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    put(path("neighbour/linklist.xml"), "mine");
    put(path("settings.dat"), "mine");
    m_outsideBefore = outside();
}

void tst_SessionInput::cleanup()
{
    QCOMPARE(outside(), m_outsideBefore);
    QCOMPARE(tree(m_surroundings.dataFolder()).keys(), QStringList());
    QCOMPARE(m_surroundings.removeBackups(), QStringList());
    QVERIFY(!QApplication::activeModalWidget());
}

QMap<QString, QByteArray> tst_SessionInput::outside() const
{
    auto result = tree(path("neighbour"));
    result[QStringLiteral("settings.dat")] = get(path("settings.dat"));
    return result;
}

void tst_SessionInput::edit(PluginSettings &session)
{
    type(session, "txtLeft", "7");
    type(session, "txtTitleContent", "typed");
    click(session, "btnDefault");
}

void tst_SessionInput::unusableWorkspaces_data()
{
    QTest::addColumn<QString>("workSpace");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("relative") << QStringLiteral("some/where");
    QTest::newRow("current folder") << QStringLiteral(".");
    QTest::newRow("relative and there") << QStringLiteral("neighbour");
    QTest::newRow("file") << QStringLiteral("ROOT/settings.dat");
    QTest::newRow("below a file") << QStringLiteral("ROOT/settings.dat/below");
    QTest::newRow("where nothing can be made") << QStringLiteral("/proc/nothing/here");
}

void tst_SessionInput::unusableWorkspaces()
{
    QFETCH(QString, workSpace);
    workSpace.replace(QStringLiteral("ROOT"), m_folder->path());
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const auto before = tree(m_folder->path());
    for (const bool isApplied : {true, false}) {
        const auto session = open(workSpace);
        session->showWindow();
        edit(*session);
        click(*session, isApplied ? "btnOK" : "btnCancel");
        QVERIFY(session->isCloseBundle());
        QCOMPARE(session->closeMode(), isApplied ? applied : reverted);
        QCOMPARE(m_surroundings.backups(), QStringList());
        QVERIFY(!plugin().convertPluginToPath(workSpace, bundlePath(), path("book")));
    }
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(tree(m_folder->path()), before);
}

void tst_SessionInput::unusualWorkspaces_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing with its parents") << QStringLiteral("a/b/c");
    QTest::newRow("line feed") << QStringLiteral("two\nlines");
    QTest::newRow("non-ASCII") << QStringLiteral("本 é 😀");
    QTest::newRow("signs of addresses") << QStringLiteral("a b%20#c?d&\"e'");
    QTest::newRow("hidden") << QStringLiteral(".book");
    QTest::newRow("slash at the end") << QStringLiteral("folder/");
    QTest::newRow("longest name") << QString(255, u'n');
    QTest::newRow("link to a folder") << QStringLiteral("link");
}

void tst_SessionInput::unusualWorkspaces()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkpath(path("elsewhere")));
    QVERIFY(QFile::link(path("elsewhere"), path("link")));
    const QString folder = m_folder->filePath(name);
    {
        const auto session = open(folder);
        const auto before = tree(folder);
        QVERIFY(before.contains(QStringLiteral("index.html")));
        const QSignalSpy finished(part(*session, "iWebView"), SIGNAL(loadFinished(bool)));
        session->showWindow();
        QTRY_VERIFY_WITH_TIMEOUT(!finished.isEmpty(), loadTimeout);
        QCOMPARE(finished.first().first().toBool(), true);
        edit(*session);
        QVERIFY(tree(folder) != before);
        click(*session, "btnCancel");
        QCOMPARE(tree(folder), before);
    }
    const auto session = open(folder);
    type(*session, "txtLeft", "12.5");
    click(*session, "btnOK");
    QVERIFY(evaluated(QDir(folder).filePath(QStringLiteral("bookPlugin.js"))).contains("\"12.5%\""));
    QCOMPARE(tree(folder).size(), 5);
    QVERIFY(plugin().convertPluginToPath(folder, bundlePath(), path("book")));
    QCOMPARE(tree(path("book")), tree(folder));
    QVERIFY(QFileInfo(path("link")).isSymLink());
}

void tst_SessionInput::readOnlyWorkspaceStaysAsItIs()
{
    {
        const auto session = open(workSpace());
        type(*session, "txtLeft", "3");
        put(inWorkSpace("images/a.png"), "png");
        QVERIFY(closeAndAnswer(*session, "btnAlertFirst"));
    }
    const auto before = tree(workSpace());
    constexpr auto readOnly = QFile::ReadOwner | QFile::ExeOwner;
    const QStringList folders = {inWorkSpace("images"), workSpace()};
    for (const QString &folder : folders)
        QVERIFY(QFile::setPermissions(folder, readOnly));
    for (const bool isApplied : {true, false}) {
        const OrdinaryRights rights;
        QVERIFY(rights.isActive());
        QVERIFY(!QFile(inWorkSpace("probe")).open(QIODevice::WriteOnly));
        const auto session = open(workSpace());
        session->showWindow();
        QCOMPARE(field(*session, "txtLeft")->text(), QStringLiteral("3.0"));
        edit(*session);
        click(*session, isApplied ? "btnOK" : "btnCancel");
        QVERIFY(session->isCloseBundle());
        QCOMPARE(session->closeMode(), isApplied ? applied : reverted);
        QCOMPARE(tree(workSpace()), before);
    }
    for (const QString &folder : folders)
        QVERIFY(QFile::setPermissions(folder, readOnly | QFile::WriteOwner));
    // A backup that could not be put back is kept.
    const QStringList kept = m_surroundings.backups();
    QCOMPARE(kept.size(), 1);
    QDir backup(m_surroundings.temporaryFolder() + u'/' + kept.first());
    QCOMPARE(tree(backup.path()).value(QStringLiteral("settings.dat")),
             before.value(QStringLiteral("settings.dat")));
    QVERIFY(backup.removeRecursively());
}

void tst_SessionInput::unreadableDocumentSurvivesCancel()
{
    put(inWorkSpace("linklist.xml"), "<info><mine/></info>");
    QVERIFY(QFile::setPermissions(inWorkSpace("linklist.xml"), QFile::Permissions()));
    {
        const OrdinaryRights rights;
        QVERIFY(rights.isActive());
        const auto session = open(workSpace());
        type(*session, "txtLeft", "7");
        click(*session, "btnCancel");
    }
    QVERIFY(QFile::setPermissions(inWorkSpace("linklist.xml"), QFile::ReadOwner));
    QCOMPARE(get(inWorkSpace("linklist.xml")), QByteArray("<info><mine/></info>"));
    QVERIFY(!QFileInfo::exists(inWorkSpace("settings.dat")));
}

void tst_SessionInput::settingsFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QByteArray>("saved");
    const QString zero = QStringLiteral("0.0");
    const QByteArray zeros = "0.0\n0.0\n0.0\n0.0\n0.0\n0";
    QTest::newRow("Windows line ends") << QByteArray("12\r\n1\r\n2\r\n3\r\n5\r\n1\r\n")
                                       << QStringLiteral("12.0") << QByteArray("12.0\n1.0\n2.0\n3.0\n5.0\n1");
    QTest::newRow("five lines") << QByteArray("12\n1\n2\n3\n5") << zero << zeros;
    QTest::newRow("empty") << QByteArray("") << zero << zeros;
    QTest::newRow("no digits") << QByteArray("abc\n.\n-\n+\ne5\nx") << zero << zeros;
    QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF"
                                        "12\n1\n2\n3\n5\n1")
                          << QStringLiteral("12.0") << QByteArray("12.0\n1.0\n2.0\n3.0\n5.0\n1");
    QTest::newRow("binary") << QByteArray("12\n\xFF\xFE\n1\n1\n5\n1") << zero << zeros;
    QTest::newRow("zero bytes") << QByteArray("12\0004\n1\n2\n3\n5\n1", 15) << QStringLiteral("12.0")
                                << QByteArray("12.0\n1.0\n2.0\n3.0\n5.0\n1");
    QTest::newRow("nan and inf") << QByteArray("nan\ninf\n-inf\nNaN\ninfinity\n1") << zero
                                 << QByteArray("0.0\n0.0\n0.0\n0.0\n0.0\n1");
    QTest::newRow("1e400") << QByteArray("1e400\n1\n2\n-1e400\n1e400\n1")
                           << QStringLiteral("340282346638528859811704183484516925440.0")
                           << QByteArray("340282346638528859811704183484516925440.0\n1.0\n2.0\n"
                                         "-340282346638528859811704183484516925440.0\n"
                                         "340282346638528859811704183484516925440.0\n1");
    QTest::newRow("decimal comma and hexadecimal")
        << QByteArray("12,5\n0x10\n1e-400\n-5\n+5\n1") << QStringLiteral("12.0")
        << QByteArray("12.0\n0.0\n0.0\n-5.0\n5.0\n1");
    QTest::newRow("layer of another system")
        << QByteArray("12\n1\n2\n3\n5\n99999999999999999999") << QStringLiteral("12.0")
        << QByteArray("12.0\n1.0\n2.0\n3.0\n5.0\n9223372036854775807");
}

void tst_SessionInput::settingsFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, saved);
    put(inWorkSpace("settings.dat"), content);
    {
        const auto session = open(workSpace());
        session->showWindow();
        QTEST(field(*session, "txtLeft")->text(), "left");
        type(*session, "txtTop", "99");
        click(*session, "btnCancel");
        QCOMPARE(get(inWorkSpace("settings.dat")), content);
    }
    const auto session = open(workSpace());
    click(*session, "btnOK");
    QCOMPARE(get(inWorkSpace("settings.dat")), saved);
    QVERIFY(evaluated(inWorkSpace("bookPlugin.js")).contains("Further reading"));
}

void tst_SessionInput::brokenDocuments_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray whole = get(bundlePath() + QStringLiteral("/Contents/Resources/data/linklist.xml"));
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("truncated") << whole.chopped(1);
    QTest::newRow("half") << whole.first(whole.size() / 2);
    QTest::newRow("no XML") << QByteArray("{\"title\": 1}");
    QTest::newRow("binary") << QByteArray("\x7F"
                                          "ELF\0\0\xFF\xFE",
                                          8);
    QTest::newRow("not UTF-8") << QByteArray("<info>\xE9</info>");
    QTest::newRow("two roots") << whole + whole;
    QTest::newRow("text outside the root") << whole + "x";
    QTest::newRow("nested 300 deep") << nested(300);
    QTest::newRow("nested 200,000 deep") << nested(200'000);
    QTest::newRow("entities of its own")
        << QByteArray("<!DOCTYPE info [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><info>&a;</info>");
}

void tst_SessionInput::brokenDocuments()
{
    QFETCH(QByteArray, content);
    put(inWorkSpace("linklist.xml"), content);
    // Once where opening saves nothing, once where it saves at once.
    for (const bool hasSettings : {false, true}) {
        if (hasSettings)
            put(inWorkSpace("settings.dat"), "1.0\n2.0\n3.0\n4.0\n5.0\n1");
        const auto session = open(workSpace());
        session->showWindow();
        QCOMPARE(field(*session, "txtTitleContent")->text(), QString());
        edit(*session);
        click(*session, "btnCancel");
        QCOMPARE(get(inWorkSpace("linklist.xml")), content);
    }
    // Applied, the list is the empty one that the person saw.
    const auto session = open(workSpace());
    click(*session, "btnOK");
    QCOMPARE(session->closeMode(), applied);
    QCOMPARE(get(inWorkSpace("linklist.xml")), QByteArray(emptyList));
    QVERIFY(!evaluated(inWorkSpace("bookPlugin.js")).isEmpty());
}

void tst_SessionInput::hugeDocumentIsNone()
{
    constexpr qint64 size = qint64(257) * 1024 * 1024;
    put(inWorkSpace("linklist.xml"), "<info/>");
    QVERIFY(QFile::resize(inWorkSpace("linklist.xml"), size));
    {
        const auto session = open(workSpace());
        session->showWindow();
        QCOMPARE(field(*session, "txtTitleContent")->text(), QString());
        type(*session, "txtTitleContent", "x");
        QVERIFY(QFileInfo(inWorkSpace("linklist.xml")).size() < size);
        click(*session, "btnCancel");
        QCOMPARE(QFileInfo(inWorkSpace("linklist.xml")).size(), size);
    }
    const auto session = open(workSpace());
    click(*session, "btnOK");
    QCOMPARE(get(inWorkSpace("linklist.xml")), QByteArray(emptyList));
}

void tst_SessionInput::folderInPlaceOfTheDocumentStays()
{
    put(inWorkSpace("linklist.xml/mine"), "kept");
    for (const char *button : {"btnCancel", "btnOK"}) {
        const auto session = open(workSpace());
        edit(*session);
        click(*session, button);
        QVERIFY(session->isCloseBundle());
        QCOMPARE(get(inWorkSpace("linklist.xml/mine")), QByteArray("kept"));
    }
}

void tst_SessionInput::documentWithoutAPlaceForTheListStaysAsItIs()
{
    put(inWorkSpace("linklist.xml"), "<info><!-- mine --><other/></info>");
    const auto session = open(workSpace());
    edit(*session);
    click(*session, "btnOK");
    QCOMPARE(get(inWorkSpace("linklist.xml")), QByteArray("<info><!-- mine --><other/></info>"));
    QCOMPARE(evaluated(inWorkSpace("bookPlugin.js")), QByteArray("{\"other\":{}}\n"));
}

void tst_SessionInput::bundleWithoutLanguageFoldersShowsTheTextsOfItsInterfaceFiles()
{
    const TestBundle bundle;
    for (const char *name : {"PluginSettingsDelegate.nib", "PrivateView.nib"})
        QVERIFY(QFile::rename(bundle.resource("en.lproj/") + QLatin1String(name), bundle.resource(name)));
    for (const char *language : {"en.lproj", "de.lproj", "ja.lproj"})
        QVERIFY(QDir(bundle.resource(language)).removeRecursively());
    const auto session = open(workSpace(), bundle.path());
    session->showWindow();
    QVERIFY(session->window()->windowTitle().contains(QLatin1String("Link List Plugin")));
    type(*session, "txtLeft", "4");
    click(*session, "btnOK");
    QVERIFY(evaluated(inWorkSpace("bookPlugin.js")).contains("\"4.0%\""));
}

void tst_SessionInput::bundleWithoutInterfaceFilesGivesNoSession()
{
    const TestBundle bundle;
    QVERIFY(QDir(bundle.resource("en.lproj")).removeRecursively());
    QVERIFY(!plugin().initWithLanguageCode(QStringLiteral("en"), bundle.path()));
    QVERIFY(!plugin().initWithLanguageCode(QStringLiteral("en"), path("no.bundle")));
}

void tst_SessionInput::bundleWithABrokenInterfaceFileGivesNoWindow()
{
    const TestBundle bundle;
    put(bundle.resource("en.lproj/PluginSettingsDelegate.nib"), "<ui><widget");
    const auto session = plugin().initWithLanguageCode(QStringLiteral("en"), bundle.path());
    QVERIFY(session);
    session->setWorkSpace(workSpace());
    QVERIFY(!session->window());
    session->showWindow();
    QVERIFY(session->runModal() < 0);
    QVERIFY(!session->isCloseBundle());
    QVERIFY(!QFileInfo::exists(workSpace()));
}

int main(int argc, char **argv)
{
    const Surroundings surroundings;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    if (!startEngine())
        qWarning("The web engine did not answer its first load");
    tst_SessionInput test(surroundings);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_SessionInput.moc"
