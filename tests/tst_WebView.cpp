#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QWebEngineView>

using Fixtures::put;

namespace
{
constexpr int loadTimeout = 20'000;
const char *const childSwitch = "--without-sandbox-switch";

QWebEngineView *engineView(const WebView &view)
{
    return view.findChild<QWebEngineView *>();
}
} // namespace

class tst_WebView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void startsNoEngineBeforeTheFirstLoad();
    void emptyAddressIsNoNavigation();
    void loadsAPageAndTheScriptBesideIt();
    void readsLocalFilesOfItsOwnFolderOnly();
    void missingPageIsAFailedLoad();
    void stoppedLoadIsAFailedOne();
    void letsTheViewBlankItself();
    void refusesToLeaveForTheWeb();
    void opensNoWindow();
    void acceptsNoDrops();
    void loadTakesNoFocus();
    void asRootInsideTheSandboxItSaysWhyAndLives();

private:
    QUrl at(const char *name) const
    {
        return QUrl::fromLocalFile(m_folder->filePath(QString::fromLatin1(name)));
    }
    // Loads the page and waits for its end; -1 stands for no end at all.
    static int load(WebView &view, const QUrl &url);
    static QVariant evaluate(const WebView &view, const char *script);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WebView::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

int tst_WebView::load(WebView &view, const QUrl &url)
{
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.loadPage(url);
    if (finished.isEmpty() && !finished.wait(loadTimeout))
        return -1;
    return finished.first().first().toBool() ? 1 : 0;
}

QVariant tst_WebView::evaluate(const WebView &view, const char *script)
{
    auto answer = std::make_shared<std::optional<QVariant>>();
    engineView(view)->page()->runJavaScript(QString::fromUtf8(script),
                                            [answer](const QVariant &value) { *answer = value; });
    return QTest::qWaitFor([&] { return answer->has_value(); }, loadTimeout) ? **answer : QVariant();
}

void tst_WebView::startsNoEngineBeforeTheFirstLoad()
{
    WebView view;
    view.stopLoading();
    QVERIFY(view.isAvailable());
    QCOMPARE(view.unavailableReason(), QString());
    QVERIFY(!engineView(view));
}

void tst_WebView::emptyAddressIsNoNavigation()
{
    WebView view;
    view.loadPage(QUrl());
    QVERIFY(!engineView(view));
}

void tst_WebView::loadsAPageAndTheScriptBesideIt()
{
    put(at("config.js").toLocalFile(), "\xEF\xBB\xBFvar config={\"name\":\"caf\xC3\xA9\"};");
    put(at("index.html").toLocalFile(),
        "<meta charset=utf-8><script src=config.js></script><script>document.title = config.name</script>");
    WebView view;
    QCOMPARE(load(view, at("index.html")), 1);
    QTRY_COMPARE(engineView(view)->title(), QStringLiteral("café"));
    QCOMPARE(engineView(view)->contextMenuPolicy(), Qt::NoContextMenu);

    put(at("config.js").toLocalFile(), "\xEF\xBB\xBFvar config={\"name\":\"second\"};");
    QCOMPARE(load(view, at("index.html")), 1);
    QTRY_COMPARE(engineView(view)->title(), QStringLiteral("second"));
}

void tst_WebView::readsLocalFilesOfItsOwnFolderOnly()
{
    put(at("secret.js").toLocalFile(), "document.title += ' outside'");
    put(at("book/below/own.js").toLocalFile(), "document.title += ' own'");
    put(at("book/index.html").toLocalFile(),
        "<title>read:</title><script src='../secret.js'></script><script src='..%2Fsecret.js'></script>"
        "<script src='below/own.js'></script><iframe src='../secret.js'></iframe>");
    WebView view;
    QCOMPARE(load(view, at("book/index.html")), 1);
    QTRY_COMPARE(engineView(view)->title(), QStringLiteral("read: own"));
    QCOMPARE(
        evaluate(view,
                 "(() => { try { return frames[0].document.body.innerText } catch (e) { return '' } })()")
            .toString()
            .contains(QLatin1String("outside")),
        false);
}

void tst_WebView::missingPageIsAFailedLoad()
{
    WebView view;
    QCOMPARE(load(view, at("none.html")), 0);
}

void tst_WebView::stoppedLoadIsAFailedOne()
{
    put(at("one.html").toLocalFile(), "<title>one</title>");
    put(at("two.html").toLocalFile(), "<title>two</title>");
    WebView view;
    QCOMPARE(load(view, at("one.html")), 1);
    connect(engineView(view)->page(), &QWebEnginePage::loadStarted, &view, [&view] { view.stopLoading(); });
    QCOMPARE(load(view, at("two.html")), 0);
}

void tst_WebView::letsTheViewBlankItself()
{
    put(at("index.html").toLocalFile(), "<title>page</title>");
    WebView view;
    QCOMPARE(load(view, at("index.html")), 1);
    QSignalSpy finished(&view, &WebView::loadFinished);
    engineView(view)->setHtml(QString());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toBool(), true);
    QCOMPARE(evaluate(view, "document.title").toString(), QString());
}

void tst_WebView::refusesToLeaveForTheWeb()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/";
    put(at("index.html").toLocalFile(), "<title>page</title><a href='" + address + "'>away</a>");
    put(at("next.html").toLocalFile(), "<title>next</title>");
    WebView view;
    QCOMPARE(load(view, at("index.html")), 1);

    // The answer to a refused navigation is a load that failed.
    QSignalSpy finished(&view, &WebView::loadFinished);
    evaluate(view, "document.querySelector('a').click()");
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toBool(), false);
    QCOMPARE(evaluate(view, "document.title").toString(), QStringLiteral("page"));

    finished.clear();
    evaluate(view, "location.href = 'next.html'");
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(evaluate(view, "document.title").toString(), QStringLiteral("next"));
    QVERIFY(!server.hasPendingConnections());
}

void tst_WebView::opensNoWindow()
{
    put(at("index.html").toLocalFile(), "<title>page</title>");
    WebView view;
    QCOMPARE(load(view, at("index.html")), 1);
    evaluate(view, "void window.open('index.html')");
    QCOMPARE(QApplication::topLevelWidgets().count(), 1);
}

void tst_WebView::acceptsNoDrops()
{
    put(at("index.html").toLocalFile(), "<title>page</title>");
    WebView view;
    view.resize(300, 200);
    view.show();
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(load(view, at("index.html")), 1);
        QTRY_VERIFY(engineView(view)->focusProxy());
        QVERIFY(!view.acceptDrops());
        const QList<QWidget *> parts = view.findChildren<QWidget *>();
        QVERIFY(parts.contains(engineView(view)->focusProxy()));
        for (const QWidget *part : parts)
            QVERIFY2(!part->acceptDrops(), part->metaObject()->className());
    }
}

void tst_WebView::loadTakesNoFocus()
{
    put(at("index.html").toLocalFile(), "<input autofocus>");
    QWidget window;
    QWidget field(&window);
    field.setFocusPolicy(Qt::StrongFocus);
    WebView view(&window);
    window.show();
    window.activateWindow();
    field.setFocus();
    QTRY_VERIFY(field.hasFocus());
    QCOMPARE(load(view, at("index.html")), 1);
    QVERIFY(field.hasFocus());
}

void tst_WebView::asRootInsideTheSandboxItSaysWhyAndLives()
{
    if (Fixtures::isOrdinaryUser())
        QSKIP("Only root is refused its sandbox");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QTWEBENGINE_DISABLE_SANDBOX"));
    QProcess child;
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {QLatin1String(childSwitch)});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    QCOMPARE(
        child.readAllStandardOutput(),
        QByteArray("the web engine cannot run as root with its sandbox on\n"
                   "No preview is available here: the web engine cannot run as root with its sandbox on\n"));
}

// The engine says once per process which graphics it does without; that is no test's business.
static bool startEngine()
{
    WebView view;
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.loadPage(QUrl(QStringLiteral("data:text/html,")));
    return !finished.isEmpty() || finished.wait(loadTimeout);
}

// What a process does that root started without the sandbox switch: this program's other life.
static int runWithoutSwitch()
{
    WebView view;
    view.loadPage(QUrl::fromLocalFile(QStringLiteral("/tmp/index.html")));
    const auto *label = view.findChild<QLabel *>();
    if (view.isAvailable() || engineView(view) || !label)
        return 1;
    printf("%s\n%s\n", qPrintable(view.unavailableReason()), qPrintable(label->text()));
    return 0;
}

int main(int argc, char **argv)
{
    const bool isChild = argc > 1 && qstrcmp(argv[1], childSwitch) == 0;
    const QTemporaryDir runtimeFolder; // made with mode 0700, as the engine wants it
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toLocal8Bit());
    if (!isChild && !Fixtures::isOrdinaryUser())
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QApplication application(argc, argv);
    if (isChild)
        return runWithoutSwitch();
    if (!startEngine())
        qWarning("The web engine did not answer its first load");
    tst_WebView test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_WebView.moc"
