// Where a page in the web view may go, what it may read, and that nothing of it leaves the machine.
#include "platform/ui/WebPage.h"
#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"
#include "tests/support/WebTest.h"

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QSignalSpy>
#include <QTcpServer>
#include <QUdpSocket>
#include <QVersionNumber>
#include <QWebEngineView>

using Fixtures::put;
using namespace WebTest;

namespace
{

// Answers as the settings window does, and keeps what it was asked.
class Delegate final : public WebViewDelegate
{
public:
    explicit Delegate(WebView &view)
        : m_view(view)
    {
        view.setPolicyDelegate(this);
        view.setUIDelegate(this);
        view.setFrameLoadDelegate(this);
    }

    void didFinishLoadForFrame() override { ++finished; }
    WebPolicy decidePolicyForNavigationAction(const QUrl &request) override
    {
        asked.append(request);
        return policy.value_or(request.isLocalFile() ? WebPolicy::Use : WebPolicy::Ignore);
    }
    WebView *createWebViewWithRequest(const QUrl &) override
    {
        WebView *view = isOpening ? m_view.createHiddenView() : nullptr;
        if (view) {
            view->setPolicyDelegate(this);
            QObject::connect(view, &WebView::loadFinished, view, [this] { ++finishedHidden; });
        }
        opened.append(view);
        return view;
    }

    int finished = 0;
    int finishedHidden = 0;
    QList<QUrl> asked;
    std::optional<WebPolicy> policy;
    bool isOpening = true;
    QList<QPointer<WebView>> opened;

private:
    WebView &m_view;
};

// Hears who would reach the machine's own network.
class Listener
{
public:
    Listener()
    {
        m_isListening = m_server.listen(QHostAddress::LocalHost)
            && m_datagrams.bind(QHostAddress::LocalHost, m_server.serverPort());
    }

    bool isListening() const { return m_isListening; }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort()); }
    bool hasHeard() const { return m_server.hasPendingConnections() || m_datagrams.hasPendingDatagrams(); }

private:
    QTcpServer m_server;
    QUdpSocket m_datagrams;
    bool m_isListening = false;
};

} // namespace

class tst_WebPage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void clickedLinks_data();
    void clickedLinks();
    void undecidedNavigationStaysWhereItIs();
    void frameIsAskedLikeThePage();
    void newWindowIsHiddenAskedAndDropped_data();
    void newWindowIsHiddenAskedAndDropped();
    void windowOfAScriptIsHiddenAskedAndDropped();
    void windowsWithoutEndAreLimited();
    void viewDeletedWithAHiddenViewOpenIsSafe();

    void readsOwnFolderThroughALinkToIt();
    void readsNoFilesOutside_data();
    void readsNoFilesOutside();
    void pageElsewhereReadsNothingBesideIt();
    void newWindowReadsNoFilesOutside();
    void newWindowOpensNoFileOutside_data();
    void newWindowOpensNoFileOutside();
    void hiddenViewsFollowThePolicyDelegate();
    void reachesNoNetwork();
    void connectsNowhereAhead();
    void showsNoDialogs();
    void scriptOfThePageCannotSpeakForTheView();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QUrl at(const char *name) const { return QUrl::fromLocalFile(path(name)); }
    void show(WebView &view)
    {
        view.resize(300, 200);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(load(view, at("book/index.html")), 1);
        QTRY_VERIFY(engineView(view)->focusProxy());
    }
    // Lets the engine do everything that was asked of it before.
    static void settle(const WebView &view) { QCOMPARE(evaluate(view, QStringLiteral("1")).toInt(), 1); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WebPage::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    put(path("book/index.html"), "<title>page</title>");
}

void tst_WebPage::clickedLinks_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<bool>("isAsked");
    QTest::addColumn<QString>("title");
    QTest::newRow("file") << QStringLiteral("next.html") << true << QStringLiteral("next");
    QTest::newRow("http") << QStringLiteral("http://%1/") << true << QStringLiteral("page");
    QTest::newRow("https") << QStringLiteral("https://%1/") << true << QStringLiteral("page");
    QTest::newRow("ftp") << QStringLiteral("ftp://%1/") << true << QStringLiteral("page");
    QTest::newRow("mailto") << QStringLiteral("mailto:me@example.com") << true << QStringLiteral("page");
    // The engine itself goes to no data: address, and blanks the page and runs scripts without asking.
    QTest::newRow("about") << QStringLiteral("about:blank") << false << QString();
    QTest::newRow("data") << QStringLiteral("data:text/html,<title>data</title>") << false
                          << QStringLiteral("page");
    QTest::newRow("javascript") << QStringLiteral("javascript:void(document.title = \"script\")") << false
                                << QStringLiteral("script");
    QTest::newRow("place in the page") << QStringLiteral("#place") << false << QStringLiteral("page");
}

void tst_WebPage::clickedLinks()
{
    QFETCH(QString, link);
    QFETCH(bool, isAsked);
    QFETCH(QString, title);
    const Listener listener;
    QVERIFY(listener.isListening());
    const QString address = link.contains(QLatin1String("%1")) ? link.arg(listener.address()) : link;
    put(path("book/next.html"), "<title>next</title>");
    put(path("book/index.html"),
        "<title>page</title><a style='font-size: 60px' href='" + address.toUtf8() + "'>away</a>");
    if (link.startsWith(QLatin1String("data")))
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("Not allowed to navigate")));
    WebView view;
    Delegate delegate(view);
    show(view);
    delegate.asked.clear();
    QVERIFY(click(view, QStringLiteral("a")));
    if (isAsked)
        QTRY_COMPARE(delegate.asked, QList<QUrl>{at("book/index.html").resolved(QUrl(address))});
    QTRY_VERIFY(evaluate(view, QStringLiteral("document.title")).toString() == title);
    settle(view);
    QCOMPARE(delegate.asked.size(), int(isAsked));
    QVERIFY(!listener.hasHeard());
}

void tst_WebPage::undecidedNavigationStaysWhereItIs()
{
    put(path("book/next.html"), "<title>next</title>");
    WebView view;
    Delegate delegate(view);
    show(view);
    delegate.policy = WebPolicy::Undecided;
    QSignalSpy finished(&view, &WebView::loadFinished);
    evaluate(view, QStringLiteral("location.href = 'next.html'"));
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toBool(), false);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("page"));
}

void tst_WebPage::frameIsAskedLikeThePage()
{
    put(path("book/index.html"),
        "<iframe src='inner.html'></iframe><iframe src='http://127.0.0.1:9/frame'></iframe>"
        "<iframe src='data:text/html,x'></iframe>");
    put(path("book/inner.html"), "inner");
    WebView view;
    Delegate delegate(view);
    show(view);
    for (const char *address : {"http://127.0.0.1:9/frame", "data:text/html,x"})
        QVERIFY2(delegate.asked.contains(QUrl(QString::fromUtf8(address))), address);
    QVERIFY(delegate.asked.contains(at("book/inner.html")));
    QCOMPARE(delegate.finished, 1);
}

void tst_WebPage::newWindowIsHiddenAskedAndDropped_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("file") << QStringLiteral("next.html");
    QTest::newRow("missing file") << QStringLiteral("none.html");
    QTest::newRow("web") << QStringLiteral("http://%1/");
    QTest::newRow("mail") << QStringLiteral("mailto:me@example.com");
}

void tst_WebPage::newWindowIsHiddenAskedAndDropped()
{
    QFETCH(QString, link);
    const Listener listener;
    QVERIFY(listener.isListening());
    const QString address = link.contains(QLatin1String("%1")) ? link.arg(listener.address()) : link;
    put(path("book/next.html"), "<title>next</title>");
    put(path("book/index.html"),
        "<title>page</title><a style='font-size: 60px' target=_blank href='" + address.toUtf8()
            + "'>away</a>");
    WebView view;
    Delegate delegate(view);
    show(view);
    delegate.asked.clear();
    delegate.finished = 0;
    const auto windows = QApplication::topLevelWindows().count();
    QVERIFY(click(view, QStringLiteral("a")));
    QTRY_COMPARE(delegate.opened.size(), 1);
    // It goes with its load, and not by the limit that comes later.
    QTRY_COMPARE(delegate.finishedHidden, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    QVERIFY(!delegate.opened.first());
    QCOMPARE(delegate.asked, QList<QUrl>{at("book/index.html").resolved(QUrl(address))});
    QCOMPARE(delegate.finished, 0);
    QTRY_COMPARE(QApplication::topLevelWindows().count(), windows); // the engine ends its part of it later
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("page"));
    QVERIFY(!listener.hasHeard());
}

void tst_WebPage::windowOfAScriptIsHiddenAskedAndDropped()
{
    const Listener listener;
    QVERIFY(listener.isListening());
    WebView view;
    Delegate delegate(view);
    show(view);
    delegate.asked.clear();
    evaluate(view, QStringLiteral("void window.open('http://%1/')").arg(listener.address()));
    QTRY_COMPARE(delegate.opened.size(), 1);
    QTRY_VERIFY(!delegate.opened.first());
    QCOMPARE(delegate.asked, QList<QUrl>{QUrl(QStringLiteral("http://%1/").arg(listener.address()))});
    QVERIFY(!listener.hasHeard());
}

void tst_WebPage::windowsWithoutEndAreLimited()
{
    WebView view;
    Delegate delegate(view);
    show(view);
    evaluate(view, QStringLiteral("for (let i = 0; i < 40; ++i) window.open('index.html'); 1"));
    QTRY_COMPARE(delegate.opened.size(), 40);
    QVERIFY(delegate.opened.contains(nullptr));
    for (const auto &opened : std::as_const(delegate.opened))
        QTRY_VERIFY(!opened);
}

void tst_WebPage::viewDeletedWithAHiddenViewOpenIsSafe()
{
    auto view = std::make_unique<WebView>();
    Delegate delegate(*view);
    show(*view);
    const QPointer<WebView> hidden = view->createHiddenView();
    QVERIFY(hidden);
    engineView(*hidden)->page()->load(at("book/index.html"));
    view.reset();
    QVERIFY(!hidden);
}

void tst_WebPage::readsOwnFolderThroughALinkToIt()
{
    put(path("book/own.js"), "document.title = 'own'");
    put(path("book/index.html"), "<title>page</title><script src=own.js></script>");
    QVERIFY(QFile::link(path("book"), path("alias")));
    WebView view;
    QCOMPARE(load(view, at("alias/index.html")), 1);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("own"));
}

void tst_WebPage::readsNoFilesOutside_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("parent") << QByteArray("../secret.js");
    QTest::newRow("escaped") << QByteArray("%2e%2e/secret.js");
    QTest::newRow("escaped slash") << QByteArray("..%2Fsecret.js");
    QTest::newRow("absolute") << QByteArray("file://%1/secret.js");
    QTest::newRow("sibling with the same beginning") << QByteArray("../bookish/secret.js");
    QTest::newRow("link to a file") << QByteArray("link.js");
    QTest::newRow("file in a linked folder") << QByteArray("linked/secret.js");
}

void tst_WebPage::readsNoFilesOutside()
{
    QFETCH(QByteArray, source);
    const QByteArray script = "document.title = parent.document.title = 'secret'";
    put(path("secret.js"), script);
    put(path("bookish/secret.js"), script);
    put(path("elsewhere/secret.js"), script);
    QVERIFY(QFile::link(path("secret.js"), path("book/link.js")));
    QVERIFY(QFile::link(path("elsewhere"), path("book/linked")));
    source.replace("%1", m_folder->path().toUtf8());
    put(path("book/frame.html"), "<script src='" + source + "'></script>");
    put(path("book/index.html"),
        "<title>page</title><script src='" + source
            + "'></script><iframe src='frame.html'></iframe><iframe src='" + source
            + "'></iframe><script>fetch('" + source
            + "').then(() => document.title = 'secret', () => document.title += ' refused')</script>");
    WebView view;
    QCOMPARE(load(view, at("book/index.html")), 1);
    QTRY_COMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("page refused"));
    // The frame's text, where the page could see it.
    QVERIFY(!evaluate(view,
                      QStringLiteral("(() => { try { return frames[1].document.body.innerText } catch (e) {"
                                     " return '' } })()"))
                 .toString()
                 .contains(QLatin1String("secret")));
}

// A link leads out of the folder: the page is shown, and what lies beside it stays unread.
void tst_WebPage::pageElsewhereReadsNothingBesideIt()
{
    put(path("other/index.html"), "<title>other</title><script src=beside.js></script>");
    put(path("other/beside.js"), "document.title = 'beside'");
    WebView view;
    Delegate delegate(view);
    show(view);
    QSignalSpy finished(&view, &WebView::loadFinished);
    evaluate(view, QStringLiteral("location.href = '../other/index.html'"));
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("other"));
    // Told to load it, the view lets it read there.
    QCOMPARE(load(view, at("other/index.html")), 1);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("beside"));
}

void tst_WebPage::newWindowReadsNoFilesOutside()
{
    put(path("secret.js"), "opener.document.title = 'secret'");
    put(path("book/own.js"), "opener.document.title += ' own'");
    put(path("book/next.html"), "<script src=../secret.js></script><script src=own.js></script>");
    WebView view;
    Delegate delegate(view);
    show(view);
    evaluate(view, QStringLiteral("void window.open('next.html')"));
    QTRY_COMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("page own"));
}

void tst_WebPage::newWindowOpensNoFileOutside_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("text") << QStringLiteral("../secret.txt");
    QTest::newRow("page") << QStringLiteral("../secret.html");
    QTest::newRow("symbolic link") << QStringLiteral("link.txt");
    QTest::newRow("by way of the folder") << QStringLiteral("own/../../secret.txt");
}

// All local pages are of one origin: what a new window shows, its opener reads.
void tst_WebPage::newWindowOpensNoFileOutside()
{
    QFETCH(QString, address);
    put(path("secret.txt"), "secret");
    put(path("secret.html"), "secret");
    put(path("book/allowed.txt"), "allowed");
    QVERIFY(QFile::link(path("secret.txt"), path("book/link.txt")));
    WebView view;
    Delegate delegate(view);
    show(view);
    const QString watch
        = QStringLiteral("window.seen = window.seen || ''; void (w => setInterval(() => {"
                         "  try { window.seen += w.document.body.innerText; } catch (error) { }"
                         "}, 1))(window.open('%1'))");
    evaluate(view, watch.arg(address));
    // The window is asked about, and one that may be opened would be seen.
    QTRY_VERIFY(!delegate.asked.isEmpty());
    evaluate(view, watch.arg(QStringLiteral("allowed.txt")));
    QTRY_VERIFY(evaluate(view, QStringLiteral("window.seen")).toString().contains(QLatin1String("allowed")));
    QVERIFY(!evaluate(view, QStringLiteral("window.seen")).toString().contains(QLatin1String("secret")));
}

void tst_WebPage::hiddenViewsFollowThePolicyDelegate()
{
    WebView view;
    Delegate delegate(view);
    show(view);
    const WebView *hidden = view.createHiddenView();
    QVERIFY(hidden);
    Delegate another(view);
    view.setPolicyDelegate(&another);
    QCOMPARE(hidden->policyDelegate(), &another);
    view.setPolicyDelegate(nullptr);
    QCOMPARE(hidden->policyDelegate(), nullptr);
}

void tst_WebPage::reachesNoNetwork()
{
    const Listener listener;
    QVERIFY(listener.isListening());
    QByteArray page = R"html(<title>page</title>
        <link rel=dns-prefetch href=http://%1>
        <link rel=prefetch href=http://%1/prefetch><link rel=stylesheet href=http://%1/style>
        <img src=http://%1/image><video src=http://%1/video></video><object data=http://%1/object></object>
        <iframe srcdoc='<img src=http://%1/inner>'></iframe>
        <script src=http://%1/script></script>
        <script type=module>
        const tries = [];
        const attempt = f => tries.push((async () => f())().catch(() => 0));
        attempt(() => fetch('http://%1/fetch'));
        attempt(() => fetch('http://%1/mode', { mode: 'no-cors' }));
        attempt(() => new Promise(done => { const s = new WebSocket('ws://%1/socket'); s.onerror = s.onopen = done }));
        attempt(() => new Promise(done => { const s = new EventSource('http://%1/events'); s.onerror = s.onopen = done }));
        attempt(() => navigator.sendBeacon('http://%1/beacon', 'x'));
        attempt(() => new Promise(done => {
            const code = "fetch('http://%1/worker').finally(() => postMessage(1))";
            new Worker(URL.createObjectURL(new Blob([code]))).onmessage = done }));
        attempt(() => new WebTransport('https://%1/transport').ready);
        attempt(async () => {
            const peers = new RTCPeerConnection({ iceServers: [{ urls: ['turn:%1?transport=tcp', 'turn:%1'], username: 'u',
                credential: 'c' }, { urls: 'stun:%1' }] });
            peers.createDataChannel('x');
            await peers.setLocalDescription(await peers.createOffer());
            document.title = 'peers';
            await new Promise(done => peers.onicecandidate = event => event.candidate || done());
        });
        Promise.all(tries).then(() => document.title += ' tried ' + tries.length);
        </script>)html";
    put(path("book/index.html"), page.replace("%1", listener.address().toUtf8()));
    WebView view;
    Delegate delegate(view);
    // What the engine says about each refusal is of no interest.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const int loaded = load(view, at("book/index.html"));
    const bool isOver = waitFor([&] { return engineView(view)->title().contains(QLatin1String("tried")); });
    qInstallMessageHandler(nullptr);
    QCOMPARE(loaded, 1);
    QVERIFY(isOver);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("page tried 8"));
    QVERIFY(!listener.hasHeard());
}

// The engine asks no interceptor before it connects ahead, and has no setting for it.
void tst_WebPage::connectsNowhereAhead()
{
    const Listener listener;
    QVERIFY(listener.isListening());
    put(path("book/index.html"),
        "<title>page</title><link rel=preconnect href=http://" + listener.address().toUtf8() + '>');
    WebView view;
    QCOMPARE(load(view, at("book/index.html")), 1);
    const bool isExpected = QLibraryInfo::version() >= QVersionNumber(6, 8);
    if (isExpected)
        QEXPECT_FAIL("", "the engine opens the connection, and sends nothing", Continue);
    QVERIFY(!waitForAtMost(isExpected ? loadTimeout : 1'000, [&] { return listener.hasHeard(); }));
}

void tst_WebPage::showsNoDialogs()
{
    put(path("book/index.html"),
        "<script>alert(1); document.title = [confirm(2), prompt(3)].join()</script>");
    WebView view;
    QCOMPARE(load(view, at("book/index.html")), 1);
    QCOMPARE(evaluate(view, QStringLiteral("document.title")).toString(), QStringLiteral("false,"));
    QVERIFY(!QApplication::activeModalWidget());
}

void tst_WebPage::scriptOfThePageCannotSpeakForTheView()
{
    WebView view;
    show(view);
    auto *page = qobject_cast<WebPage *>(engineView(view)->page());
    QVERIFY(page);
    const QSignalSpy painted(page, &WebPage::painted);
    QTRY_VERIFY(!painted.isEmpty());
    const auto before = painted.size();
    evaluate(view, QStringLiteral("console.info('[1]'); console.info('[\"\",0,5]'); 1"));
    settle(view);
    QCOMPARE(painted.size(), before);
}

LINKLIST_WEB_TEST_MAIN(tst_WebPage)
#include "tst_WebPage.moc"
