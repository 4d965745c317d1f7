#include "tests/support/Fixtures.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLineEdit>
#include <QLocale>
#include <QProcess>
#include <QSignalSpy>
#include <QTimer>
#include <clocale>
#include <utility>

// Whole sessions from the loaded module's first call to the published configuration, as a host and a person
// see them.

using Fixtures::get;
using Fixtures::put;
using Fixtures::tree;
using namespace LoadedPlugin;

namespace
{

constexpr int loadTimeout = 20'000;
constexpr qint64 applied = 1;
constexpr qint64 reverted = 0;
constexpr qint64 aborted = -1001;
const char *const sessionSwitch = "--one-session";
const char *const languagesSwitch = "--languages";

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

bool hasSeveralColors(const QImage &image)
{
    QImage plain(image.size(), image.format());
    plain.fill(image.pixelColor(0, 0));
    return image != plain;
}

// What this program prints in another of its lives; a null text unless that ends with status 0.
QByteArray runChild(const QStringList &arguments, const QString &locale = QStringLiteral("C.UTF-8"))
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), locale);
    QProcess child;
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    return child.waitForFinished() && child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0
        ? child.readAllStandardOutput()
        : QByteArray();
}

} // namespace

class tst_Session : public TestCase
{
    Q_OBJECT

public:
    explicit tst_Session(const Surroundings &surroundings)
        : m_surroundings(surroundings)
    {
    }

private Q_SLOTS:
    void init();
    void cleanup();

    void typedMarginsAndOkPublishTheConfiguration();
    void typedTextSurvivesEveryEscape();
    void cancelLeavesEveryFileAsItWas();
    void closeBoxWithOkKeepsEditsUnpublished();
    void closeBoxWithCancelReverts();
    void modalSessionAnswersItsCode_data();
    void modalSessionAnswersItsCode();
    void closeBoxOfAModalSessionAsksWithinIt();
    void previewIsLoadedAndFollowsAnEdit();
    void previewOfAModalSessionIsLoadedWhileItRuns();
    void secondSessionGoesOnFromTheFirst();
    void twoSessionsAtOnceKeepApart();
    void sessionDeletedInItsModalLoopEndsIt();
    void sessionWithoutAWindowLeavesNothing();
    void firstLanguageStaysTheProcesses_data();
    void firstLanguageStaysTheProcesses();
    void decimalCommaChangesNoFile_data();
    void decimalCommaChangesNoFile();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QString workSpace() const { return path("workspace"); }
    QString inWorkSpace(const char *name) const { return workSpace() + u'/' + QString::fromUtf8(name); }
    // A workspace as earlier sessions leave it, with files of the person's own beside.
    void makeUsedWorkspace() const;

    const Surroundings &m_surroundings;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Session::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_Session::cleanup()
{
    QCOMPARE(m_surroundings.removeBackups(), QStringList());
    QVERIFY(!QApplication::activeModalWidget());
}

void tst_Session::makeUsedWorkspace() const
{
    const auto session = open(workSpace());
    type(*session, "txtLeft", "5");
    QVERIFY(closeAndAnswer(*session, "btnAlertFirst"));
    put(inWorkSpace("settings.dat"), "1.0\r\n2.0\r\n3.0\r\n4.0\r\n5.0\r\n0\r\nmore");
    put(inWorkSpace("defaultsettings.dat"), "9\n9\n9\n9\n9\n1");
    put(inWorkSpace(".hidden"), "h");
    put(inWorkSpace("images/deep/.note"), QByteArray("\0\xFF", 2));
    put(inWorkSpace("images/a.png"), "png");
    QVERIFY(QDir().mkpath(inWorkSpace("empty/.folder")));
    QVERIFY(QFile::link(QStringLiteral("/nowhere"), inWorkSpace("link")));
}

void tst_Session::typedMarginsAndOkPublishTheConfiguration()
{
    const auto session = open(workSpace());
    QCOMPARE(session->workSpace(), workSpace());
    session->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(session->window()));
    QVERIFY(!session->isCloseBundle());
    type(*session, "txtLeft", "12.5");
    type(*session, "txtTop", "20");
    type(*session, "txtRight", "30");
    type(*session, "txtBottom", "40");
    type(*session, "txtTransparency", "25");
    type(*session, "txtTitleContent", "Seen");
    type(*session, "txtTitleFontSize", "24");
    QCOMPARE(get(inWorkSpace("settings.dat")), QByteArray("12.5\n20.0\n30.0\n40.0\n25.0\n1"));
    const QByteArray plain = evaluated(inWorkSpace("config.js"));
    click(*session, "btnOK");

    QVERIFY(session->isCloseBundle());
    QCOMPARE(session->closeMode(), applied);
    QVERIFY(!session->window()->isVisible());
    QCOMPARE(tree(workSpace()).keys(),
             (QStringList{QStringLiteral("bookPlugin.js"), QStringLiteral("defaultsettings.dat"),
                          QStringLiteral("files"), QStringLiteral("linklist.xml"),
                          QStringLiteral("settings.dat")}));
    QCOMPARE(get(inWorkSpace("files")), QByteArray(""));
    QVERIFY(!get(inWorkSpace("bookPlugin.js")).contains("bookPlugin"));
    const QByteArray published = evaluated(inWorkSpace("bookPlugin.js"));
    QCOMPARE(published, plain);

    const QJsonObject config = object(published);
    QCOMPARE(config.value(QLatin1String("opacity")).toDouble(), 0.75);
    QCOMPARE(config.value(QLatin1String("layout")).toInt(), 1);
    const QJsonObject properties = config.value(QLatin1String("properties")).toObject();
    QCOMPARE(properties.value(QLatin1String("basic")).toObject(),
             object(R"({"left":"12.5%","top":"20.0%","width":"57.5%","height":"40.0%"})"));
    const QJsonObject extended = properties.value(QLatin1String("extended")).toObject();
    const QJsonObject title = extended.value(QLatin1String("title")).toObject();
    QCOMPARE(title.value(QLatin1String("content")).toString(), QStringLiteral("Seen"));
    QCOMPARE(title.value(QLatin1String("fontSize")).toInt(), 24);
    QCOMPARE(
        extended.value(QLatin1String("body")).toObject().value(QLatin1String("content")).toArray().size(), 3);
}

void tst_Session::typedTextSurvivesEveryEscape()
{
    const QString text = QStringLiteral("\"<&>' \\ %1 %@ 日本語 é 😀 ]]>");
    const auto session = open(workSpace());
    paste(*session, "txtTitleContent", text);
    QCOMPARE(field(*session, "txtTitleContent")->text(), text);
    click(*session, "btnOK");
    const QJsonObject config = object(evaluated(inWorkSpace("bookPlugin.js")));
    QCOMPARE(config[QLatin1String("properties")][QLatin1String("extended")][QLatin1String("title")]
                   [QLatin1String("content")]
                       .toString(),
             text);
    const auto again = open(workSpace());
    QCOMPARE(field(*again, "txtTitleContent")->text(), text);
    click(*again, "btnCancel");
}

void tst_Session::cancelLeavesEveryFileAsItWas()
{
    makeUsedWorkspace();
    const auto before = tree(workSpace());
    QVERIFY(before.contains(QStringLiteral("images/deep/.note")));
    const auto session = open(workSpace());
    session->showWindow();
    QCOMPARE(field(*session, "txtLeft")->text(), QStringLiteral("1.0"));
    type(*session, "txtLeft", "33");
    type(*session, "txtTitleContent", "Changed");
    click(*session, "btnDefault");
    put(inWorkSpace("added/.by"), "the session");
    QVERIFY(QDir(inWorkSpace("images")).removeRecursively());
    QVERIFY(tree(workSpace()) != before);
    click(*session, "btnCancel");
    QVERIFY(session->isCloseBundle());
    QCOMPARE(session->closeMode(), reverted);
    QCOMPARE(tree(workSpace()), before);
}

void tst_Session::closeBoxWithOkKeepsEditsUnpublished()
{
    makeUsedWorkspace();
    const auto before = tree(workSpace());
    const auto session = open(workSpace());
    session->showWindow();
    type(*session, "txtLeft", "44");
    QVERIFY(closeAndAnswer(*session, "btnAlertFirst"));
    QVERIFY(session->isCloseBundle());
    QCOMPARE(session->closeMode(), applied);
    const auto after = tree(workSpace());
    QCOMPARE(after.keys(), before.keys());
    QVERIFY(after[QStringLiteral("settings.dat")].startsWith("44.0\n"));
    QVERIFY(after[QStringLiteral("config.js")].contains("\"left\":\"44.0%\""));
    QVERIFY(!after.contains(QStringLiteral("bookPlugin.js")));
    QVERIFY(!after.contains(QStringLiteral("files")));
}

void tst_Session::closeBoxWithCancelReverts()
{
    makeUsedWorkspace();
    const auto before = tree(workSpace());
    const auto session = open(workSpace());
    session->showWindow();
    type(*session, "txtLeft", "44");
    QVERIFY(closeAndAnswer(*session, "btnAlertSecond"));
    QVERIFY(session->isCloseBundle());
    QCOMPARE(session->closeMode(), reverted);
    QCOMPARE(tree(workSpace()), before);
}

void tst_Session::modalSessionAnswersItsCode_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<qint64>("code");
    QTest::newRow("OK") << QByteArray("btnOK") << applied;
    QTest::newRow("Cancel") << QByteArray("btnCancel") << reverted;
}

void tst_Session::modalSessionAnswersItsCode()
{
    QFETCH(QByteArray, button);
    QFETCH(qint64, code);
    const auto session = open(workSpace(), bundlePath(), true);
    bool wasModal = false;
    QTimer::singleShot(0, session->window(), [&] {
        wasModal = QApplication::activeModalWidget() == session->window();
        type(*session, "txtLeft", "8");
        click(*session, button.constData());
    });
    QCOMPARE(session->runModal(), code);
    QVERIFY(wasModal);
    QCOMPARE(session->closeMode(), code);
    QVERIFY(session->isCloseBundle());
    QVERIFY(!session->window()->isVisible());
    QCOMPARE(QFileInfo::exists(inWorkSpace("bookPlugin.js")), code == applied);
    QCOMPARE(get(inWorkSpace("settings.dat")).startsWith("8.0\n"), code == applied);
}

void tst_Session::closeBoxOfAModalSessionAsksWithinIt()
{
    for (const bool isApplied : {true, false}) {
        const auto session = open(workSpace(), bundlePath(), true);
        bool wasAsked = false;
        QTimer::singleShot(0, session->window(), [&] {
            type(*session, "txtLeft", isApplied ? "6" : "7");
            wasAsked = closeAndAnswer(*session, isApplied ? "btnAlertFirst" : "btnAlertSecond");
        });
        QCOMPARE(session->runModal(), isApplied ? applied : reverted);
        QVERIFY(wasAsked);
        QVERIFY(session->isCloseBundle());
        QVERIFY(get(inWorkSpace("settings.dat")).startsWith("6.0\n"));
    }
}

void tst_Session::previewIsLoadedAndFollowsAnEdit()
{
    const auto session = open(workSpace());
    QWidget *preview = part(*session, "iWebView");
    QSignalSpy finished(preview, SIGNAL(loadFinished(bool)));
    QVERIFY(finished.isValid());
    session->showWindow();
    // A refresh that the next one overtakes ends as a failed load.
    const auto isLoaded = [&finished] { return !finished.isEmpty() && finished.last().first().toBool(); };
    QTRY_VERIFY_WITH_TIMEOUT(isLoaded(), loadTimeout);
    const auto picture = [preview] { return preview->grab().toImage(); };
    // The page is painted some time after it is loaded; then it stands still.
    QImage before;
    QTRY_VERIFY_WITH_TIMEOUT(hasSeveralColors(picture()) && std::exchange(before, picture()) == picture(),
                             loadTimeout);

    finished.clear();
    type(*session, "txtLeft", "0");
    paste(*session, "txtTitleContent", QStringLiteral("MMMMMMMM"));
    type(*session, "txtTitleFontSize", "99");
    QTRY_VERIFY_WITH_TIMEOUT(isLoaded(), loadTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(picture() != before, loadTimeout);
    click(*session, "btnCancel");
}

void tst_Session::previewOfAModalSessionIsLoadedWhileItRuns()
{
    constexpr int severalTicks = 1'000;
    const auto session = open(workSpace(), bundlePath(), true);
    QSignalSpy finished(part(*session, "iWebView"), SIGNAL(loadFinished(bool)));
    session->showWindow();
    QVERIFY(!finished.wait(severalTicks));
    connect(part(*session, "iWebView"), SIGNAL(loadFinished(bool)), part(*session, "btnCancel"),
            SLOT(click()));
    QCOMPARE(session->runModal(), reverted);
    QVERIFY(!finished.isEmpty());
}

void tst_Session::secondSessionGoesOnFromTheFirst()
{
    {
        const auto first = open(workSpace());
        type(*first, "txtLeft", "11");
        type(*first, "txtTitleContent", "First");
        click(*first, "btnOK");
    }
    const auto published = tree(workSpace());
    {
        const auto second = open(workSpace());
        QCOMPARE(field(*second, "txtLeft")->text(), QStringLiteral("11.0"));
        QCOMPARE(field(*second, "txtTitleContent")->text(), QStringLiteral("First"));
        // What the first took away is there again for the preview.
        QVERIFY(QFileInfo::exists(inWorkSpace("index.html")));
        type(*second, "txtLeft", "22");
        click(*second, "btnCancel");
    }
    auto after = tree(workSpace());
    for (auto it = published.begin(); it != published.end(); ++it)
        QVERIFY2(after[it.key()] == it.value(), qPrintable(it.key()));
    const auto third = open(workSpace());
    type(*third, "txtLeft", "33");
    click(*third, "btnOK");
    QCOMPARE(tree(workSpace()).keys(), published.keys());
    QVERIFY(get(inWorkSpace("settings.dat")).startsWith("33.0\n"));
}

void tst_Session::twoSessionsAtOnceKeepApart()
{
    const auto one = open(path("one"));
    const auto two = open(path("two"));
    one->showWindow();
    two->showWindow();
    QVERIFY(one->window() != two->window());
    QCOMPARE(m_surroundings.backups().size(), 2);
    type(*one, "txtLeft", "1");
    type(*two, "txtLeft", "2");
    type(*one, "txtTitleContent", "One");
    type(*two, "txtTitleContent", "Two");
    QCOMPARE(get(path("one/settings.dat")).split('\n').first(), QByteArray("1.0"));
    QCOMPARE(get(path("two/settings.dat")).split('\n').first(), QByteArray("2.0"));
    click(*one, "btnOK");
    QVERIFY(one->isCloseBundle());
    QVERIFY(!two->isCloseBundle());
    QVERIFY(two->window()->isVisible());
    QVERIFY(get(path("two/linklist.xml")).contains("Two"));
    click(*two, "btnCancel");
    QCOMPARE(two->closeMode(), reverted);
    QCOMPARE(one->closeMode(), applied);
    QVERIFY(get(path("one/linklist.xml")).contains("One"));
    QVERIFY(!get(path("two/linklist.xml")).contains("Two"));
    QVERIFY(!QFileInfo::exists(path("two/settings.dat")));
}

void tst_Session::sessionDeletedInItsModalLoopEndsIt()
{
    auto session = open(workSpace(), bundlePath(), true);
    const QPointer<QWidget> window(session->window());
    QTimer::singleShot(0, window, [&session] {
        type(*session, "txtLeft", "3");
        session.reset();
    });
    QCOMPARE(session->runModal(), aborted);
    QVERIFY(!session);
    QTRY_VERIFY(!window);
    // The edits stay, and so does the backup, the last way back.
    QVERIFY(get(inWorkSpace("settings.dat")).startsWith("3.0\n"));
    QCOMPARE(m_surroundings.backups().size(), 1);
    QVERIFY(QDir(m_surroundings.temporaryFolder() + u'/' + m_surroundings.backups().constFirst())
                .removeRecursively());
}

void tst_Session::sessionWithoutAWindowLeavesNothing()
{
    auto session = plugin().initWithLanguageCode(QStringLiteral("en"), bundlePath());
    session->setWorkSpace(workSpace());
    QCOMPARE(m_surroundings.backups().size(), 1);
    session.reset();
    QVERIFY(!QFileInfo::exists(workSpace()));
}

void tst_Session::firstLanguageStaysTheProcesses_data()
{
    QTest::addColumn<QStringList>("languages");
    QTest::addColumn<QByteArray>("title");
    QTest::addColumn<QByteArray>("cancel");
    QTest::newRow("German") << QStringList{QStringLiteral("de"), QStringLiteral("ja")}
                            << QByteArray("Plug-in-Einstellungen – Link List Plugin")
                            << QByteArray("Abbrechen");
    QTest::newRow("Japanese") << QStringList{QStringLiteral("ja"), QStringLiteral("de")}
                              << QByteArray("プラグイン設定 - Link List Plugin") << QByteArray("キャンセル");
    QTest::newRow("English") << QStringList{QStringLiteral("en"), QStringLiteral("de")}
                             << QByteArray("Plugin Settings - Link List Plugin") << QByteArray("Cancel");
}

void tst_Session::firstLanguageStaysTheProcesses()
{
    QFETCH(QStringList, languages);
    QFETCH(QByteArray, title);
    QFETCH(QByteArray, cancel);
    const QByteArray line = title + " | " + cancel + '\n';
    QCOMPARE(runChild(QStringList{QLatin1String(languagesSwitch), workSpace()} + languages), line + line);
}

void tst_Session::decimalCommaChangesNoFile_data()
{
    QTest::addColumn<QString>("ending");
    QTest::addColumn<QString>("changing"); // the one file with a fresh key
    QTest::newRow("OK") << QStringLiteral("btnOK") << QStringLiteral("bookPlugin.js");
    QTest::newRow("close box with OK") << QStringLiteral("btnAlertFirst") << QString();
}

void tst_Session::decimalCommaChangesNoFile()
{
    QFETCH(QString, ending);
    QFETCH(QString, changing);
    const QString first = QLatin1String(sessionSwitch);
    QCOMPARE(runChild({first, path("point"), ending}), QByteArray(". .\n"));
    QCOMPARE(runChild({first, path("comma"), ending}, QStringLiteral("de_DE.UTF-8")), QByteArray(", ,\n"));
    auto point = tree(path("point"));
    auto comma = tree(path("comma"));
    QVERIFY(point.value(QStringLiteral("settings.dat")).startsWith("12.5\n33.3\n"));
    if (!changing.isEmpty()) {
        QVERIFY(point.remove(changing) == 1 && comma.remove(changing) == 1);
        const QByteArray published = evaluated(path("point/") + changing);
        QVERIFY(published.contains("\"left\":\"12.5%\""));
        QCOMPARE(evaluated(path("comma/") + changing), published);
    }
    QCOMPARE(comma, point);
}

// This program's other lives, each in a process of its own.

static int runSession(const QString &workSpace, const QByteArray &ending)
{
    std::printf("%s %s\n", std::localeconv()->decimal_point, qPrintable(QLocale().decimalPoint()));
    const auto session = open(workSpace);
    type(*session, "txtLeft", "12.5");
    type(*session, "txtTop", "33.3");
    type(*session, "txtTransparency", "37.25");
    type(*session, "txtTitleFontSize", "1234");
    type(*session, "txtTitleContent", "1,5 and 1.5");
    if (ending == "btnOK")
        click(*session, "btnOK");
    else if (!closeAndAnswer(*session, ending.constData()))
        return 1;
    return session->isCloseBundle() && session->closeMode() == applied ? 0 : 1;
}

static int runLanguages(const QString &workSpace, const QStringList &languages)
{
    for (const QString &language : languages) {
        const auto session = plugin().initWithLanguageCode(language, bundlePath());
        session->setWorkSpace(workSpace);
        if (!session->window())
            return 1;
        const auto *cancel = qobject_cast<QAbstractButton *>(part(*session, "btnCancel"));
        std::printf("%s | %s\n", qUtf8Printable(session->window()->windowTitle()),
                    qUtf8Printable(cancel->text()));
        click(*session, "btnCancel");
    }
    return 0;
}

int main(int argc, char **argv)
{
    const Surroundings surroundings;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    std::setlocale(LC_ALL, "");
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String(sessionSwitch))
        return runSession(arguments.value(2), arguments.value(3).toUtf8());
    if (arguments.value(1) == QLatin1String(languagesSwitch))
        return runLanguages(arguments.value(2), arguments.mid(3));
    if (!startEngine())
        qWarning("The web engine did not answer its first load");
    tst_Session test(surroundings);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Session.moc"
