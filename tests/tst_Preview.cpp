// The preview half of PluginSettingsDelegate with a web view that records what it is told.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "Classes/Mode/Locale.h"
#include "platform/File.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/Nib.h"
#include "platform/ui/RunLoopTimer.h"
#include "platform/ui/WebView.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <limits>

using Controller = PluginSettingsDelegate;

namespace
{

const QString reloadCall = QStringLiteral("script location.reload(true);");

} // namespace

class RecordingWebView : public WebView
{
    Q_OBJECT

public:
    explicit RecordingWebView(QWidget *parent = nullptr)
        : WebView(parent)
        , focusable(new QWidget(this))
    {
        focusable->setFocusPolicy(Qt::StrongFocus);
    }

    void setVisible(bool visible) override
    {
        calls.append(visible ? QStringLiteral("show") : QStringLiteral("hide"));
        WebView::setVisible(visible);
    }
    void stopLoading() override { calls.append(QStringLiteral("stop")); }
    void loadHTMLString(const QString &html) override { calls.append(QStringLiteral("html ") + html); }
    void loadPage(const QUrl &url) override { calls.append(QStringLiteral("load ") + url.toString()); }
    void evaluateWebScript(const QString &script) override
    {
        calls.append(QStringLiteral("script ") + script);
    }
    bool isAvailable() const override { return isEngineThere; }
    WebView *createHiddenView() override
    {
        hiddenViews.push_back(std::make_unique<WebView>());
        return hiddenViews.back().get();
    }

    int count(const char *call) const { return int(calls.count(QString::fromUtf8(call))); }

    QStringList calls;
    bool isEngineThere = true;
    QWidget *focusable;
    std::vector<std::unique_ptr<WebView>> hiddenViews;
};

class tst_Preview : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Nib::registerClass<RecordingWebView>(); }
    void init();

    // The timer.
    void timerLooksThreeTimesASecondUntilTheClose();
    void firstTickLoadsThePreview();
    void tickWithoutAChangeDoesNothing();
    void burstOfEditsWithinOneTimerPeriodMakesASingleRefresh();
    void editDuringARefreshMakesOneMoreAtTheNextTick();
    void timerOfAModalSessionTicksWithinItsLoop();
    void closedWindowTicksNoMore();

    // The cycle.
    void refreshHidesStopsShowsBlanksAndOwesAReload();
    void mainPageIsLoadedInALaterPassAfterABlockingPause();
    void firstFinishedLoadPaysTheOwedReloadAndTheReloadNothing();
    void finishedLoadWithoutADebtPaysNothing();
    void secondRefreshBeforeTheFirstHasLoadedOwesOneReload();
    void unusableWorkspaceIsNoNavigation();
    void viewWithoutAnEngineIsToldAtOnce();
    void windowWithoutAPreviewLivesWithoutIt();
    void fieldKeepsTheFocusAndItsSelection();
    void previewGetsItsFocusBackAndNoFieldSeesIt();

    // Links and windows.
    void policy_data();
    void policy();
    void openerThatThrowsIsLoggedAndDecidesNothing();
    void newWindowGetsAHiddenViewWithTheSamePolicy();

    // The end.
    void closeInTheMiddleOfACycleLoadsNoMore_data();
    void closeInTheMiddleOfACycleLoadsNoMore();
    void sessionDeletedInTheMiddleOfACycleLoadsNoMore();
    void viewDeletedInTheMiddleOfACycleIsSafe();

private:
    std::unique_ptr<Controller> open(bool isModal = false);
    // Runs what is queued until the call has come that many times.
    static bool waitFor(const RecordingWebView &view, const QString &call, int times = 1)
    {
        return QTest::qWaitFor([&] { return view.calls.count(call) >= times; }, waitLimit);
    }
    QString loadCall() const
    {
        return QStringLiteral("load ") + QUrl::fromLocalFile(m_bundle->inWorkSpace("index.html")).toString();
    }

    std::unique_ptr<TestBundle> m_bundle;
    RecordingWebView *m_view = nullptr;
};

void tst_Preview::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_bundle = std::make_unique<TestBundle>();
    m_bundle->editNib("PluginSettingsDelegate", "class=\"QFrame\" name=\"iWebView\"",
                      "class=\"RecordingWebView\" name=\"iWebView\"");
}

std::unique_ptr<Controller> tst_Preview::open(bool isModal)
{
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    controller->setWorkSpace(m_bundle->workSpace());
    controller->setModalMode(isModal);
    if (!controller->window())
        qFatal("no window: %s", qPrintable(controller->loadError()));
    m_view = controller->outlet<RecordingWebView>("iWebView");
    if (!m_view)
        qFatal("no recording view");
    m_view->calls.clear();
    return controller;
}

void tst_Preview::timerLooksThreeTimesASecondUntilTheClose()
{
    for (const bool isModal : {false, true}) {
        const auto controller = open(isModal);
        const RunLoopTimer *timer = controller->repeatTimer();
        QVERIFY(timer);
        QVERIFY(timer->isValid());
        QCOMPARE(timer->interval(), 330);
        QCOMPARE(timer->mode(), isModal ? RunLoopTimer::Mode::ModalPanel : RunLoopTimer::Mode::Default);
        controller->onCancel();
        QVERIFY(!controller->repeatTimer());
    }
}

void tst_Preview::firstTickLoadsThePreview()
{
    QElapsedTimer timer;
    timer.start(); // before the controller's own can have begun
    const auto controller = open();
    QVERIFY(controller->isChange());
    QVERIFY(!controller->isNeedReload());
    QVERIFY(waitFor(*m_view, loadCall()));
    QVERIFY2(timer.elapsed() >= 400, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!controller->isChange());
    controller->onCancel();
}

void tst_Preview::tickWithoutAChangeDoesNothing()
{
    const auto controller = open();
    controller->timerRepeat();
    QVERIFY(!controller->isChange());
    m_view->calls.clear();
    controller->timerRepeat();
    QCOMPARE(m_view->calls, QStringList());
    controller->onCancel();
}

void tst_Preview::burstOfEditsWithinOneTimerPeriodMakesASingleRefresh()
{
    const auto controller = open();
    QVERIFY(waitFor(*m_view, loadCall()));
    m_view->calls.clear();
    for (int i = 0; i < 20; ++i)
        QTest::keyClick(controller->outlet<QLineEdit>("txtLeft"), Qt::Key_1);
    QVERIFY(controller->isChange());
    QVERIFY(waitFor(*m_view, loadCall()));
    // Three more ticks find nothing to do.
    for (int i = 0; i < 3; ++i)
        controller->timerRepeat();
    QCOMPARE(m_view->count("hide"), 1);
    QCOMPARE(m_view->calls.count(loadCall()), 1);
    controller->onCancel();
}

void tst_Preview::editDuringARefreshMakesOneMoreAtTheNextTick()
{
    const auto controller = open();
    controller->timerRepeat();
    controller->saveGlobalSettings(); // the page is not loaded yet
    QVERIFY(controller->isChange());
    QCOMPARE(m_view->count("hide"), 1);
    QVERIFY(waitFor(*m_view, loadCall(), 2));
    QCOMPARE(m_view->count("hide"), 2);
    QVERIFY(!controller->isChange());
    controller->onCancel();
}

void tst_Preview::timerOfAModalSessionTicksWithinItsLoop()
{
    const auto controller = open(true);
    controller->showWindow();
    m_view->calls.clear();
    QTimer outside;
    outside.setSingleShot(true);
    outside.start(700); // two periods
    QTRY_VERIFY(!outside.isActive());
    QCOMPARE(m_view->calls, QStringList());
    QTimer::singleShot(0, controller.get(), [&] {
        QVERIFY(waitFor(*m_view, loadCall()));
        controller->onCancel();
    });
    QCOMPARE(controller->runModal(), 0);
    QCOMPARE(m_view->calls.count(loadCall()), 1);
}

void tst_Preview::closedWindowTicksNoMore()
{
    const auto controller = open();
    controller->onCancel();
    m_view->calls.clear();
    QTimer wait;
    wait.setSingleShot(true);
    wait.start(700); // two periods
    QTRY_VERIFY(!wait.isActive());
    QCOMPARE(m_view->calls, QStringList());
    QVERIFY(controller->isChange());
}

void tst_Preview::refreshHidesStopsShowsBlanksAndOwesAReload()
{
    const auto controller = open(true); // whose timer waits for a loop of its own
    controller->refreshPreview();
    QCOMPARE(m_view->calls,
             (QStringList{QStringLiteral("hide"), QStringLiteral("stop"), QStringLiteral("show"),
                          QStringLiteral("html ")}));
    QVERIFY(controller->isNeedReload());
    QVERIFY(controller->isChange()); // a refresh by itself leaves the mark alone
    QVERIFY(waitFor(*m_view, loadCall()));
    QCOMPARE(m_view->calls.size(), 5);
    QVERIFY(controller->isNeedReload());
    controller->onCancel();
}

void tst_Preview::mainPageIsLoadedInALaterPassAfterABlockingPause()
{
    const auto controller = open();
    controller->refreshPreview();
    QVERIFY(!m_view->calls.contains(loadCall()));
    bool hasTicked = false;
    QTimer other;
    connect(&other, &QTimer::timeout, &other, [&] { hasTicked = true; });
    other.start(20);
    QElapsedTimer timer;
    timer.start();
    QCoreApplication::sendPostedEvents(controller.get(), QEvent::MetaCall);
    QVERIFY(m_view->calls.contains(loadCall()));
    QVERIFY2(timer.elapsed() >= 100, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!hasTicked);
    controller->onCancel();
}

void tst_Preview::firstFinishedLoadPaysTheOwedReloadAndTheReloadNothing()
{
    const auto controller = open();
    controller->timerRepeat();
    QVERIFY(waitFor(*m_view, loadCall()));
    m_view->calls.clear();
    controller->didFinishLoadForFrame();
    QCOMPARE(m_view->calls, QStringList{reloadCall});
    QVERIFY(!controller->isNeedReload());
    controller->didFinishLoadForFrame();
    controller->delayReloadData();
    QCOMPARE(m_view->calls, QStringList{reloadCall});
    controller->onCancel();
}

void tst_Preview::finishedLoadWithoutADebtPaysNothing()
{
    const auto controller = open();
    controller->didFinishLoadForFrame();
    controller->delayReloadData();
    QCOMPARE(m_view->calls, QStringList());
    controller->onCancel();
}

void tst_Preview::secondRefreshBeforeTheFirstHasLoadedOwesOneReload()
{
    const auto controller = open();
    controller->refreshPreview();
    controller->refreshPreview();
    QVERIFY(waitFor(*m_view, loadCall(), 2));
    controller->didFinishLoadForFrame();
    controller->didFinishLoadForFrame();
    QCOMPARE(m_view->calls.count(reloadCall), 1);
    controller->onCancel();
}

void tst_Preview::unusableWorkspaceIsNoNavigation()
{
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    controller->setWorkSpace(QStringLiteral("relative/folder"));
    QVERIFY(controller->window());
    m_view = controller->outlet<RecordingWebView>("iWebView");
    m_view->calls.clear();
    controller->refreshPreview();
    QVERIFY(waitFor(*m_view, QStringLiteral("load ")));
    controller->onCancel();
}

void tst_Preview::viewWithoutAnEngineIsToldAtOnce()
{
    const auto controller = open();
    m_view->isEngineThere = false;
    // A pause would be in each of them, whatever else the machine does.
    qint64 quickest = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 20; ++i) {
        m_view->calls.clear();
        QElapsedTimer timer;
        timer.start();
        controller->loadMainPage();
        quickest = std::min(quickest, timer.elapsed());
        QCOMPARE(m_view->calls, QStringList{loadCall()});
    }
    QVERIFY2(quickest < 100, qPrintable(QString::number(quickest)));
    controller->onCancel();
}

void tst_Preview::windowWithoutAPreviewLivesWithoutIt()
{
    m_bundle = std::make_unique<TestBundle>();
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    controller->setWorkSpace(m_bundle->workSpace());
    QVERIFY(controller->window());
    controller->timerRepeat();
    QVERIFY(!controller->isChange());
    controller->refreshPreview();
    controller->loadMainPage();
    controller->didFinishLoadForFrame();
    controller->delayReloadData();
    QVERIFY(!controller->createWebViewWithRequest(QUrl(QStringLiteral("file:///a"))));
    QCOMPARE(controller->decidePolicyForNavigationAction(QUrl(QStringLiteral("file:///a"))), WebPolicy::Use);
    controller->onOK();
    QCOMPARE(controller->closeMode(), 1);
}

void tst_Preview::fieldKeepsTheFocusAndItsSelection()
{
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowActive(controller->window()));
    auto *field = controller->outlet<QLineEdit>("txtTitleContent");
    field->setText(QStringLiteral("heading"));
    field->setFocus();
    QTRY_VERIFY(field->hasFocus());
    field->setSelection(1, 3);
    const int before = int(m_view->calls.size());
    controller->refreshPreview();
    QVERIFY(m_view->calls.size() > before);
    QVERIFY(field->hasFocus());
    QCOMPARE(field->selectedText(), QStringLiteral("ead"));
    controller->onCancel();
}

void tst_Preview::previewGetsItsFocusBackAndNoFieldSeesIt()
{
    const auto controller = open();
    m_view->setFocusProxy(m_view->focusable);
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowActive(controller->window()));
    m_view->focusable->setFocus();
    QTRY_VERIFY(m_view->focusable->hasFocus());
    QStringList visited;
    connect(qApp, &QApplication::focusChanged, controller.get(), [&](const QWidget *, const QWidget *now) {
        if (now && now != m_view->focusable)
            visited.append(now->objectName());
    });
    controller->refreshPreview();
    QVERIFY(m_view->focusable->hasFocus());
    QCOMPARE(visited, QStringList());
    controller->onCancel();
}

void tst_Preview::policy_data()
{
    QTest::addColumn<QUrl>("request");
    QTest::addColumn<int>("policy");
    QTest::addColumn<bool>("isOpened");
    const auto row = [](const char *address, WebPolicy policy, bool isOpened) {
        QTest::newRow(address) << QUrl(QString::fromUtf8(address)) << int(policy) << isOpened;
    };
    row("file:///tmp/other.html", WebPolicy::Use, false);
    row("FILE:///tmp/other.html", WebPolicy::Use, false);
    row("http://example.com/?a=1&b=%20c#d", WebPolicy::Ignore, true);
    row("HTTPS://example.com/", WebPolicy::Ignore, true);
    row("mailto:me@example.com", WebPolicy::Ignore, false);
    row("javascript:alert(1)", WebPolicy::Ignore, false);
    row("data:text/html,x", WebPolicy::Ignore, false);
    row("about:blank", WebPolicy::Ignore, false);
    row("ftp://example.com/", WebPolicy::Ignore, false);
    row("tel:123", WebPolicy::Ignore, false);
    row("qrc:/page.html", WebPolicy::Ignore, false);
    row("page2.html", WebPolicy::Ignore, false);
    QTest::newRow("nil") << QUrl() << int(WebPolicy::Undecided) << false;
    row("", WebPolicy::Undecided, false);
    row("http://[", WebPolicy::Undecided, false);
}

void tst_Preview::policy()
{
    QFETCH(QUrl, request);
    QFETCH(int, policy);
    QFETCH(bool, isOpened);
    const auto controller = open();
    QList<QUrl> opened;
    controller->setUrlOpener([&](const QUrl &url) { opened.append(url); });
    QCOMPARE(int(controller->decidePolicyForNavigationAction(request)), policy);
    QCOMPARE(opened, isOpened ? QList<QUrl>{request} : QList<QUrl>{});
    QCOMPARE(m_view->calls, QStringList());
    controller->onCancel();
}

void tst_Preview::openerThatThrowsIsLoggedAndDecidesNothing()
{
    const auto controller = open();
    const QUrl web(QStringLiteral("http://example.com/"));
    controller->setUrlOpener([](const QUrl &) { throw std::runtime_error("no browser"); });
    QTest::ignoreMessage(QtWarningMsg, "Web action exception: no browser");
    QCOMPARE(controller->decidePolicyForNavigationAction(web), WebPolicy::Undecided);
    controller->setUrlOpener([](const QUrl &) { throw 7; });
    QTest::ignoreMessage(QtWarningMsg, "Web action exception: unknown");
    QCOMPARE(controller->decidePolicyForNavigationAction(web), WebPolicy::Undecided);
    controller->setUrlOpener(nullptr);
    QTest::ignoreMessage(QtWarningMsg, "Web action exception: bad_function_call");
    QCOMPARE(controller->decidePolicyForNavigationAction(web), WebPolicy::Undecided);
    controller->onCancel();
}

void tst_Preview::newWindowGetsAHiddenViewWithTheSamePolicy()
{
    const auto controller = open();
    WebView *hidden = controller->createWebViewWithRequest(QUrl(QStringLiteral("http://example.com/")));
    QVERIFY(hidden);
    QVERIFY(hidden != m_view);
    QVERIFY(!hidden->isVisible());
    QVERIFY(!hidden->parentWidget());
    QCOMPARE(hidden->policyDelegate(), static_cast<WebViewDelegate *>(controller.get()));
    QVERIFY(!hidden->frameLoadDelegate());
    QVERIFY(!hidden->uiDelegate());
    QCOMPARE(m_view->policyDelegate(), hidden->policyDelegate());
    QCOMPARE(m_view->frameLoadDelegate(), hidden->policyDelegate());
    QCOMPARE(m_view->uiDelegate(), hidden->policyDelegate());
    controller->onCancel();
}

void tst_Preview::closeInTheMiddleOfACycleLoadsNoMore_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("OK") << QByteArray("btnOK");
    QTest::newRow("Cancel") << QByteArray("btnCancel");
}

void tst_Preview::closeInTheMiddleOfACycleLoadsNoMore()
{
    QFETCH(QByteArray, button);
    const auto controller = open();
    controller->timerRepeat();
    m_view->calls.clear();
    controller->outlet<QAbstractButton>(button.constData())->click();
    QVERIFY(controller->isCloseBundle());
    QVERIFY(m_view->calls.contains(QStringLiteral("stop")));
    m_view->calls.clear();
    QCoreApplication::processEvents();
    QCOMPARE(m_view->calls, QStringList());
}

void tst_Preview::sessionDeletedInTheMiddleOfACycleLoadsNoMore()
{
    auto controller = open();
    controller->showWindow();
    controller->timerRepeat();
    const QString backup = controller->backupSettingPath();
    const QPointer<RecordingWebView> view = m_view;
    QStringList calls;
    // Inside an event the window outlives its controller for a moment.
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        controller.reset();
        QVERIFY(view);
        QVERIFY(view->calls.contains(QStringLiteral("stop")));
        QVERIFY(!view->policyDelegate() && !view->frameLoadDelegate() && !view->uiDelegate());
        connect(view, &QObject::destroyed, &loop, &QEventLoop::quit);
        view->calls.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        QCOMPARE(view->calls, QStringList());
    });
    loop.exec();
    QVERIFY(!view);
    QVERIFY(File::removeAll(backup));
}

void tst_Preview::viewDeletedInTheMiddleOfACycleIsSafe()
{
    const auto controller = open();
    controller->timerRepeat();
    delete m_view;
    QCoreApplication::processEvents();
    controller->didFinishLoadForFrame();
    QVERIFY(!controller->isNeedReload());
    controller->saveGlobalSettings();
    controller->timerRepeat();
    controller->onCancel();
    QVERIFY(controller->isCloseBundle());
}

LINKLIST_GUI_TEST_MAIN(tst_Preview)
#include "tst_Preview.moc"
