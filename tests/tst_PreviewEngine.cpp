// The settings window's preview with the real web engine: what a person sees, types and clicks, and what
// other programs do to the files meanwhile.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "Classes/Mode/Locale.h"
#include "platform/File.h"
#include "platform/ui/WebPage.h"
#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"
#include "tests/support/WebTest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebEngineView>
#include <algorithm>
#include <csignal>
#include <utility>

using Fixtures::get;
using Fixtures::put;
using Controller = PluginSettingsDelegate;
using namespace WebTest;

namespace
{

// Every refresh hides the view once.
class HideCounter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Hide;
        return false;
    }
    int count = 0;
};

} // namespace

class tst_PreviewEngine : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void previewFollowsAnEdit();
    void clickedWebLinkOpensTheBrowserAndLeavesThePreview_data();
    void clickedWebLinkOpensTheBrowserAndLeavesThePreview();
    void clickedOtherLinkOpensNothing_data();
    void clickedOtherLinkOpensNothing();
    void linkForANewWindowOpensTheBrowser();
    void typingLosesNoCharacterAndNoFocusThroughRefreshes();
    void previewKeepsTheFocusThroughRefreshes();
    void refreshesShowNoBlankPicture();
    void cutOffConfigurationHealsWithTheNextEdit();
    void deletedPageComesBackWithTheNextEdit();
    void killedEngineComesBackWithTheNextEdit();
    void modalSessionSurvivesAKilledEngine();
    void closedAtAnyMomentOfACycle_data();
    void closedAtAnyMomentOfACycle();
    void deletedAtAnyMomentOfACycle_data();
    void deletedAtAnyMomentOfACycle();

private:
    void open(bool isModal = false);
    QLineEdit *field(const char *name) const { return m_controller->outlet<QLineEdit>(name); }
    void type(const char *name, const QString &text) const
    {
        field(name)->setFocus();
        field(name)->selectAll();
        QTest::keyClicks(field(name), text);
    }
    QString inWorkSpace(const char *name) const
    {
        return m_folder->filePath(QStringLiteral("workspace/") + QString::fromUtf8(name));
    }
    QString heading() const
    {
        return evaluate(*m_view, QStringLiteral("document.querySelector('#heading')?.innerText ?? ''"))
            .toString();
    }
    // Nothing is stale, owed, under way or covered any more.
    bool isIdle() const
    {
        return !m_controller->isChange() && !m_controller->isNeedReload() && !m_view->isCovered();
    }
    bool waitForIdle() const
    {
        return waitFor([this] { return isIdle(); });
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Controller> m_controller;
    QPointer<WebView> m_view;
    QList<QUrl> m_opened;
};

void tst_PreviewEngine::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_folder = std::make_unique<QTemporaryDir>();
    m_opened.clear();
}

void tst_PreviewEngine::cleanup()
{
    if (m_controller && m_controller->window() && !m_controller->isCloseBundle())
        m_controller->onCancel();
    m_controller.reset();
    m_folder.reset();
}

void tst_PreviewEngine::open(bool isModal)
{
    m_controller
        = Controller::initWithLanguageCode(QStringLiteral("en"), QStringLiteral(LINKLIST_BUNDLE_DIR));
    m_controller->setWorkSpace(m_folder->filePath(QStringLiteral("workspace")));
    m_controller->setModalMode(isModal);
    m_controller->setUrlOpener([this](const QUrl &url) { m_opened.append(url); });
    QVERIFY(m_controller->window());
    m_view = m_controller->outlet<WebView>("iWebView");
    QVERIFY(m_view);
    if (isModal)
        return;
    m_controller->showWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_controller->window()));
    QSignalSpy finished(m_view, &WebView::loadFinished);
    QVERIFY(waitFor([&] { return finished.count() == 2; }));
    const QSignalSpy painted(qobject_cast<WebPage *>(engineView(*m_view)->page()), &WebPage::painted);
    QVERIFY(waitFor([&] { return !painted.isEmpty() && isIdle(); }));
}

void tst_PreviewEngine::previewFollowsAnEdit()
{
    open();
    QSignalSpy finished(m_view, &WebView::loadFinished);
    type("txtTitleContent", QStringLiteral("Seen"));
    QVERIFY(waitForIdle());
    QCOMPARE(heading(), QStringLiteral("Seen"));
    // One refresh for all four letters, and each loads twice: the page and its reload.
    QCOMPARE(finished.count(), 2);
}

void tst_PreviewEngine::clickedWebLinkOpensTheBrowserAndLeavesThePreview_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::newRow("http") << QStringLiteral("http");
    QTest::newRow("https") << QStringLiteral("https");
}

void tst_PreviewEngine::clickedWebLinkOpensTheBrowserAndLeavesThePreview()
{
    QFETCH(QString, scheme);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QUrl url(scheme + QStringLiteral("://127.0.0.1:%1/a?b=1").arg(server.serverPort()));
    open();
    evaluate(
        *m_view,
        QStringLiteral("const a = document.querySelector('li a'); a.href = '%1'; 1").arg(url.toString()));
    const QString page = evaluate(*m_view, QStringLiteral("location.href")).toString();
    QVERIFY(click(*m_view, QStringLiteral("li a")));
    QVERIFY(waitFor([this] { return !m_opened.isEmpty(); }));
    QCOMPARE(m_opened, QList<QUrl>{url});
    QCOMPARE(evaluate(*m_view, QStringLiteral("location.href")).toString(), page);
    QVERIFY(!server.hasPendingConnections());
}

void tst_PreviewEngine::clickedOtherLinkOpensNothing_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("mailto") << QStringLiteral("mailto:me@example.com");
    QTest::newRow("ftp") << QStringLiteral("ftp://127.0.0.1:9/");
    QTest::newRow("tel") << QStringLiteral("tel:123");
}

void tst_PreviewEngine::clickedOtherLinkOpensNothing()
{
    QFETCH(QString, link);
    open();
    evaluate(*m_view, QStringLiteral("const a = document.querySelector('li a'); a.href = '%1'; 1").arg(link));
    const QString page = evaluate(*m_view, QStringLiteral("location.href")).toString();
    QSignalSpy finished(m_view, &WebView::loadFinished);
    QVERIFY(click(*m_view, QStringLiteral("li a")));
    QVERIFY(waitFor([&] { return finished.count() == 1; }));
    QCOMPARE(finished.first().first().toBool(), false);
    QCOMPARE(m_opened, QList<QUrl>());
    QCOMPARE(evaluate(*m_view, QStringLiteral("location.href")).toString(), page);
}

void tst_PreviewEngine::linkForANewWindowOpensTheBrowser()
{
    open();
    evaluate(*m_view,
             QStringLiteral("const a = document.querySelector('li a'); a.href = 'http://127.0.0.1:9/new';"
                            " a.target = '_blank'; 1"));
    QVERIFY(click(*m_view, QStringLiteral("li a")));
    QVERIFY(waitFor([this] { return !m_opened.isEmpty(); }));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("http://127.0.0.1:9/new"))});
}

void tst_PreviewEngine::typingLosesNoCharacterAndNoFocusThroughRefreshes()
{
    constexpr int wanted = 50;
    open();
    QLineEdit *edit = field("txtTitleContent");
    edit->clear();
    edit->setFocus();
    QTRY_VERIFY(edit->hasFocus());
    QStringList visited;
    QObject context; // what follows refers to this function's variables
    HideCounter refreshes;
    m_view->installEventFilter(&refreshes);
    connect(qApp, &QApplication::focusChanged, &context, [&](const QWidget *, const QWidget *now) {
        visited.append(now ? now->objectName() : QStringLiteral("nothing"));
    });
    // A key every 40 ms, to whoever has the focus.
    QString typed;
    QTimer typist;
    connect(&typist, &QTimer::timeout, &context, [&] {
        const QChar letter(char16_t(u'a' + typed.size() % 26));
        QWidget *focused = QApplication::focusWidget();
        if (!focused)
            return;
        QTest::keyClick(focused, letter.toLatin1());
        typed.append(letter);
    });
    typist.start(40);
    QVERIFY(waitForAtMost(240'000, [&] { return refreshes.count >= wanted; }));
    typist.stop();
    QVERIFY2(visited.isEmpty(), qPrintable(visited.join(u' ')));
    QCOMPARE(edit->text(), typed);
    QVERIFY(waitForIdle());
    QCOMPARE(heading().remove(u'\n'), typed);
    QVERIFY(get(inWorkSpace("linklist.xml")).contains('>' + typed.toUtf8() + '<'));
    qInfo("%d letters typed through %d refreshes", int(typed.size()), refreshes.count);
}

void tst_PreviewEngine::previewKeepsTheFocusThroughRefreshes()
{
    open();
    engineView(*m_view)->setFocus();
    QTRY_VERIFY(m_view->isAncestorOf(QApplication::focusWidget()));
    for (int round = 0; round < 5; ++round) {
        QSignalSpy finished(m_view, &WebView::loadFinished);
        m_controller->saveGlobalSettings();
        QVERIFY(waitFor([&] { return finished.count() == 2 && isIdle(); }));
        QVERIFY(m_view->isAncestorOf(QApplication::focusWidget()));
    }
}

void tst_PreviewEngine::refreshesShowNoBlankPicture()
{
    open();
    const auto isBlank = [](const QImage &picture) {
        QImage plain(picture.size(), picture.format());
        plain.fill(picture.pixelColor(picture.width() / 2, picture.height() / 2));
        return picture == plain;
    };
    int pictures = 0;
    QList<qint64> times;
    type("txtLeft", QStringLiteral("1"));
    QVERIFY(waitForIdle());
    for (int round = 0; round < 20; ++round) {
        QImage before;
        QVERIFY(waitFor([&] {
            const QImage picture = m_view->grab().toImage();
            return std::exchange(before, picture) == picture;
        }));
        QElapsedTimer timer;
        timer.start();
        // 1 becomes 15 and 1 again.
        QTest::keyClick(field("txtLeft"), round % 2 == 0 ? Qt::Key_5 : Qt::Key_Backspace);
        qint64 changed = 0;
        // The window is looked at whenever it could be painted.
        QVERIFY(waitFor([&] {
            const QImage picture = m_view->grab().toImage();
            ++pictures;
            if (isBlank(picture))
                return true;
            if (changed == 0 && picture != before)
                changed = timer.elapsed();
            return changed != 0 && isIdle();
        }));
        QVERIFY2(!isBlank(m_view->grab().toImage()), qPrintable(QString::number(round)));
        QVERIFY(changed > 0);
        times.append(changed);
    }
    std::sort(times.begin(), times.end());
    qInfo("%d pictures of 20 refreshes, none blank; from the key to new pixels %lld to %lld ms, median %lld",
          pictures, times.first(), times.last(), times[times.size() / 2]);
}

void tst_PreviewEngine::cutOffConfigurationHealsWithTheNextEdit()
{
    open();
    const QByteArray whole = get(inWorkSpace("config.js"));
    put(inWorkSpace("config.js"), whole.left(whole.size() / 2));
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("Uncaught SyntaxError")));
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("Uncaught SyntaxError")));
    QSignalSpy finished(m_view, &WebView::loadFinished);
    m_controller->refreshPreview();
    QVERIFY(waitFor([&] { return finished.count() == 2 && isIdle(); }));
    QCOMPARE(heading(), QString());
    type("txtTitleContent", QStringLiteral("Healed"));
    QVERIFY(waitForIdle());
    QCOMPARE(heading(), QStringLiteral("Healed"));
}

void tst_PreviewEngine::deletedPageComesBackWithTheNextEdit()
{
    open();
    QVERIFY(QFile::remove(inWorkSpace("index.html")));
    QSignalSpy finished(m_view, &WebView::loadFinished);
    m_controller->refreshPreview();
    QVERIFY(waitFor([&] { return finished.count() == 1 && !m_view->isCovered(); }));
    QCOMPARE(finished.first().first().toBool(), false);
    QVERIFY(m_controller->isNeedReload());
    type("txtTitleContent", QStringLiteral("Back"));
    QVERIFY(waitForIdle());
    QCOMPARE(heading(), QStringLiteral("Back"));
}

void tst_PreviewEngine::killedEngineComesBackWithTheNextEdit()
{
    open();
    for (const char *text : {"First", "Second", "Third"}) {
        QSignalSpy died(engineView(*m_view)->page(), &QWebEnginePage::renderProcessTerminated);
        ::kill(pid_t(engineView(*m_view)->page()->renderProcessPid()), SIGKILL);
        QVERIFY(waitFor([&] { return !died.isEmpty(); }));
        QVERIFY(!m_view->isCovered());
        type("txtTitleContent", QString::fromUtf8(text));
        QVERIFY(waitForIdle());
        QCOMPARE(heading(), QString::fromUtf8(text));
    }
}

void tst_PreviewEngine::modalSessionSurvivesAKilledEngine()
{
    open(true);
    QTimer::singleShot(0, m_controller.get(), [&] {
        QSignalSpy finished(m_view, &WebView::loadFinished);
        QVERIFY(waitFor([&] { return finished.count() == 2; }));
        QSignalSpy died(engineView(*m_view)->page(), &QWebEnginePage::renderProcessTerminated);
        ::kill(pid_t(engineView(*m_view)->page()->renderProcessPid()), SIGKILL);
        QVERIFY(waitFor([&] { return !died.isEmpty(); }));
        type("txtTitleContent", QStringLiteral("Modal"));
        QVERIFY(waitForIdle());
        QCOMPARE(heading(), QStringLiteral("Modal"));
        m_controller->onOK();
    });
    QCOMPARE(m_controller->runModal(), 1);
}

static void moments()
{
    QTest::addColumn<int>("delay"); // milliseconds after the refresh began
    for (const int delay : {0, 50, 105, 115, 130, 160})
        QTest::addRow("%d ms", delay) << delay;
}

void tst_PreviewEngine::closedAtAnyMomentOfACycle_data()
{
    moments();
}

void tst_PreviewEngine::closedAtAnyMomentOfACycle()
{
    QFETCH(int, delay);
    open();
    m_controller->refreshPreview();
    QTimer::singleShot(delay, m_controller.get(), [this] { m_controller->onOK(); });
    QVERIFY(waitFor([this] { return m_controller->isCloseBundle(); }));
    QVERIFY(File::exists(inWorkSpace("bookPlugin.js")));
    QVERIFY(!File::exists(inWorkSpace("config.js")));
}

void tst_PreviewEngine::deletedAtAnyMomentOfACycle_data()
{
    moments();
}

void tst_PreviewEngine::deletedAtAnyMomentOfACycle()
{
    QFETCH(int, delay);
    open();
    m_controller->refreshPreview();
    const QString backup = m_controller->backupSettingPath();
    QTimer::singleShot(delay, this, [this] { m_controller.reset(); });
    QVERIFY(waitFor([this] { return !m_controller && !m_view; }));
    QVERIFY(File::removeAll(backup));
}

LINKLIST_WEB_TEST_MAIN(tst_PreviewEngine)
#include "tst_PreviewEngine.moc"
