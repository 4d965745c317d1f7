// What a person sees of a web view while its page is loaded again: no flicker, no jump, and no end to it when
// the engine dies.
#include "platform/ui/WebPage.h"
#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"
#include "tests/support/WebTest.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineView>
#include <csignal>

using Fixtures::put;
using namespace WebTest;

namespace
{

class Delegate final : public WebViewDelegate
{
public:
    explicit Delegate(WebView &view)
        : m_view(view)
    {
        view.setFrameLoadDelegate(this);
    }

    void didFinishLoadForFrame() override
    {
        ++finished;
        if (std::exchange(isReloadOwed, false))
            m_view.evaluateWebScript(QStringLiteral("location.reload(true);"));
    }
    WebPolicy decidePolicyForNavigationAction(const QUrl &) override { return WebPolicy::Use; }

    // A refresh as the settings window does it, with a pause that blocks; or with one in which the engine has
    // time to paint the blank page.
    void refresh(const QUrl &url, bool isBlocking = true)
    {
        m_view.hide();
        m_view.stopLoading();
        m_view.show();
        m_view.loadHTMLString(QString());
        isReloadOwed = true;
        if (!isBlocking) {
            QTimer::singleShot(200, &m_view, [this, url] { m_view.loadPage(url); });
            return;
        }
        QMetaObject::invokeMethod(
            &m_view,
            [this, url] {
                QThread::msleep(100);
                m_view.loadPage(url);
            },
            Qt::QueuedConnection);
    }

    int finished = 0;
    bool isReloadOwed = false;

private:
    WebView &m_view;
};

} // namespace

class tst_WebViewRefresh : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void lastPictureLiesOverTheViewUntilTheNewPageIsPainted_data();
    void lastPictureLiesOverTheViewUntilTheNewPageIsPainted();
    void firstPageHasNothingToLieOverIt();
    void pictureFollowsTheViewsSize();
    void pictureIsTakenAwayWhenTheLoadFails();
    void pictureIsTakenAwayWhenALinkIsRefused();
    void pictureIsTakenAwayInTime();
    void pictureIsTakenAwayWhenTheEngineDies();
    void killedEngineComesBackWithTheNextLoad();
    void pageComesBackScrolled();
    void otherPageStartsAtItsTop();
    void blankPageIsNoFinishedLoad();
    void failedLoadIsNoFinishedLoad();
    void refreshFinishesTwice();

private:
    QUrl at(const char *name) const
    {
        return QUrl::fromLocalFile(m_folder->filePath(QString::fromUtf8(name)));
    }
    void putPage(const char *name, const QByteArray &color, const QByteArray &body = {}) const
    {
        put(at(name).toLocalFile(),
            "<body style='background: " + color + "'>" + body + "<title>" + color + "</title>");
    }
    QColor shown() const { return m_view->grab().toImage().pixelColor(5, 5); }
    bool isCovered() const { return m_view->isCovered(); }
    // The page is there, painted, and nothing lies over it.
    bool waitForPainted(const QColor &color) const
    {
        return waitFor([&] { return !isCovered() && shown() == color; });
    }
    void showPage()
    {
        putPage("index.html", "red");
        m_view->loadPage(at("index.html"));
        const auto *page = qobject_cast<WebPage *>(engineView(*m_view)->page());
        const QSignalSpy painted(page, &WebPage::painted);
        QTRY_VERIFY(!painted.isEmpty());
        QVERIFY(waitForPainted(Qt::red));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<WebView> m_view;
    std::unique_ptr<Delegate> m_delegate;
};

void tst_WebViewRefresh::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_view = std::make_unique<WebView>();
    m_delegate = std::make_unique<Delegate>(*m_view);
    m_view->resize(300, 200);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void tst_WebViewRefresh::cleanup()
{
    m_view.reset();
}

void tst_WebViewRefresh::lastPictureLiesOverTheViewUntilTheNewPageIsPainted_data()
{
    QTest::addColumn<bool>("isBlocking");
    QTest::newRow("blocking pause") << true;
    QTest::newRow("blank page painted") << false;
}

void tst_WebViewRefresh::lastPictureLiesOverTheViewUntilTheNewPageIsPainted()
{
    QFETCH(bool, isBlocking);
    showPage();
    const QByteArrayList names = {"green", "blue", "magenta", "red"};
    QColor before = Qt::red;
    int pictures = 0;
    for (int round = 0; round < 12; ++round) {
        const QByteArray &name = names[round % names.size()];
        const QColor after(QString::fromUtf8(name));
        putPage("index.html", name);
        m_delegate->refresh(at("index.html"), isBlocking);
        QList<QColor> seen;
        // The window is looked at whenever it could be painted.
        QVERIFY(waitFor([&] {
            seen.append(shown());
            return seen.last() == after && !isCovered() && !m_delegate->isReloadOwed;
        }));
        for (const QColor &color : std::as_const(seen))
            QVERIFY2(color == before || color == after, qPrintable(color.name()));
        QCOMPARE(seen.first(), before);
        pictures += int(seen.size());
        before = after;
    }
    qInfo("%d pictures of 12 refreshes, none of them blank", pictures);
}

void tst_WebViewRefresh::firstPageHasNothingToLieOverIt()
{
    putPage("index.html", "red");
    m_delegate->refresh(at("index.html"));
    QVERIFY(!isCovered());
    QTRY_COMPARE(m_delegate->finished, 2);
    QVERIFY(waitForPainted(Qt::red));
}

void tst_WebViewRefresh::pictureFollowsTheViewsSize()
{
    showPage();
    m_view->hide();
    m_view->show();
    const auto *picture = m_view->findChild<QLabel *>();
    QVERIFY(picture);
    m_view->resize(400, 300);
    QCOMPARE(picture->geometry(), m_view->rect());
    QVERIFY(picture->testAttribute(Qt::WA_TransparentForMouseEvents));
    QVERIFY(!picture->acceptDrops());
}

void tst_WebViewRefresh::pictureIsTakenAwayWhenTheLoadFails()
{
    showPage();
    const QSignalSpy painted(qobject_cast<WebPage *>(engineView(*m_view)->page()), &WebPage::painted);
    m_delegate->refresh(at("none.html"));
    QVERIFY(isCovered());
    // By the error page that is painted, and not by the limit that comes later.
    QTRY_VERIFY(!painted.isEmpty());
    QVERIFY(!isCovered());
    QVERIFY(m_delegate->isReloadOwed);
}

void tst_WebViewRefresh::pictureIsTakenAwayWhenALinkIsRefused()
{
    showPage();
    m_view->setPolicyDelegate(nullptr); // local files only
    QSignalSpy finished(m_view.get(), &WebView::loadFinished);
    evaluate(*m_view, QStringLiteral("location.href = 'http://127.0.0.1:9/'"));
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!isCovered());
    // A place in the page is no other page.
    evaluate(*m_view, QStringLiteral("location.href = '#place'"));
    QCOMPARE(evaluate(*m_view, QStringLiteral("location.hash")).toString(), QStringLiteral("#place"));
    QVERIFY(!isCovered());
}

void tst_WebViewRefresh::pictureIsTakenAwayInTime()
{
    showPage();
    QElapsedTimer timer;
    timer.start();
    m_view->hide();
    m_view->show();
    QVERIFY(isCovered());
    QTRY_VERIFY(!isCovered());
    QVERIFY2(timer.elapsed() >= WebView::coverLimit - 200, qPrintable(QString::number(timer.elapsed())));
}

void tst_WebViewRefresh::pictureIsTakenAwayWhenTheEngineDies()
{
    showPage();
    const QSignalSpy died(engineView(*m_view)->page(), &QWebEnginePage::renderProcessTerminated);
    m_view->hide();
    m_view->show();
    QVERIFY(isCovered());
    ::kill(pid_t(engineView(*m_view)->page()->renderProcessPid()), SIGKILL);
    QTRY_VERIFY(!died.isEmpty());
    QVERIFY(!isCovered());
}

void tst_WebViewRefresh::killedEngineComesBackWithTheNextLoad()
{
    showPage();
    for (const int delay : {0, 20, 50, 110, 130}) {
        putPage("index.html", "green");
        m_delegate->refresh(at("index.html"));
        QTimer::singleShot(delay, this, [this] {
            if (const auto process = pid_t(engineView(*m_view)->page()->renderProcessPid()); process > 0)
                ::kill(process, SIGKILL);
        });
        QSignalSpy died(engineView(*m_view)->page(), &QWebEnginePage::renderProcessTerminated);
        QTRY_COMPARE(died.count(), 1);
        QTRY_VERIFY(!isCovered());
        putPage("index.html", "blue");
        m_delegate->refresh(at("index.html"));
        QVERIFY2(waitForPainted(Qt::blue), qPrintable(QString::number(delay)));
    }
}

void tst_WebViewRefresh::pageComesBackScrolled()
{
    const QByteArray body
        // The first element is found by the last one's place, where that is not counted from the root.
        = "<div><b></b><u><b></b><b></b><b></b><s><i></i><i></i></s></u></div>"
          "<div style='height: 3000px'>tall</div><div id=box style='overflow: auto; width: 150px; height: "
          "50px;"
          " position: fixed; top: 50px'><p style='height: 900px; width: 2000px'>inner</p></div>"
          "<section><i></i><div style='overflow: auto; height: 50px; position: fixed; top: 120px'>"
          "<p style='height: 700px'>nameless</p></div></section>";
    showPage();
    putPage("index.html", "red", body);
    m_delegate->refresh(at("index.html"));
    QTRY_VERIFY(!m_delegate->isReloadOwed && !isCovered());
    const QString scrolled = QStringLiteral("[scrollY, box.scrollTop, box.scrollLeft,"
                                            " document.querySelector('section div').scrollTop].join()");
    evaluate(*m_view,
             QStringLiteral("location.hash = 'somewhere'; scrollTo(0, 400); box.scrollTo(30, 123);"
                            " document.querySelector('section div').scrollTop = 77; 1"));
    QCOMPARE(evaluate(*m_view, scrolled).toString(), QStringLiteral("400,123,30,77"));
    // The view hears of it with the next picture that is painted.
    evaluate(*m_view,
             QStringLiteral(
                 "requestAnimationFrame(() => requestAnimationFrame(() => document.title = 'heard')); 1"));
    QTRY_COMPARE(engineView(*m_view)->title(), QStringLiteral("heard"));
    for (int round = 0; round < 3; ++round) {
        putPage("index.html", round % 2 ? "red" : "green", body);
        m_delegate->refresh(at("index.html"));
        QVERIFY(waitForPainted(round % 2 ? Qt::red : QColor(QStringLiteral("green"))));
        QCOMPARE(evaluate(*m_view, scrolled).toString(), QStringLiteral("400,123,30,77"));
    }
    // What is not there any more is passed over, what is shorter is scrolled as far as it goes.
    putPage("index.html", "blue", "<div style='height: 300px'>short</div>");
    m_delegate->refresh(at("index.html"));
    QVERIFY(waitForPainted(Qt::blue));
    QVERIFY(evaluate(*m_view, QStringLiteral("scrollY")).toInt() < 200);
}

void tst_WebViewRefresh::otherPageStartsAtItsTop()
{
    const QByteArray body = "<div style='height: 3000px'>tall</div>";
    showPage();
    putPage("index.html", "green", body);
    putPage("other.html", "blue", body);
    m_view->loadPage(at("index.html"));
    QVERIFY(waitForPainted(QColor(QStringLiteral("green"))));
    evaluate(*m_view,
             QStringLiteral("scrollTo(0, 400); requestAnimationFrame(() => requestAnimationFrame(()"
                            " => document.title = 'heard')); 1"));
    QTRY_COMPARE(engineView(*m_view)->title(), QStringLiteral("heard"));
    m_view->loadPage(at("other.html"));
    QVERIFY(waitForPainted(Qt::blue));
    QCOMPARE(evaluate(*m_view, QStringLiteral("scrollY")).toInt(), 0);
}

void tst_WebViewRefresh::blankPageIsNoFinishedLoad()
{
    showPage();
    m_delegate->finished = 0;
    QSignalSpy finished(m_view.get(), &WebView::loadFinished);
    m_view->loadHTMLString(QString());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(evaluate(*m_view, QStringLiteral("document.body.innerHTML")).toString(), QString());
    QCOMPARE(m_delegate->finished, 0);
}

void tst_WebViewRefresh::failedLoadIsNoFinishedLoad()
{
    QCOMPARE(load(*m_view, at("none.html")), 0);
    QCOMPARE(evaluate(*m_view, QStringLiteral("1")).toInt(), 1);
    QCOMPARE(m_delegate->finished, 0);
}

void tst_WebViewRefresh::refreshFinishesTwice()
{
    showPage();
    for (int round = 0; round < 10; ++round) {
        m_delegate->finished = 0;
        QSignalSpy finished(m_view.get(), &WebView::loadFinished);
        putPage("index.html", round % 2 ? "red" : "green");
        m_delegate->refresh(at("index.html"));
        QVERIFY(waitForPainted(round % 2 ? Qt::red : QColor(QStringLiteral("green"))));
        QCOMPARE(m_delegate->finished, 2);
        QCOMPARE(finished.count(), 2);
    }
}

LINKLIST_WEB_TEST_MAIN(tst_WebViewRefresh)
#include "tst_WebViewRefresh.moc"
