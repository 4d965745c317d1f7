#include "platform/ui/ModalLoop.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>
#include <functional>
#include <memory>

namespace
{

// What the toolkit does to a visible window that gets a part of another surface.
class Renewed : public QWidget
{
public:
    void makeAnew()
    {
        const bool wasVisible = isVisible();
        destroy();
        create();
        setVisible(wasVisible); // some versions hide it
    }
};

} // namespace

class tst_ModalLoop : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void answersTheCodeGiven();
    void stopWithoutALoopDoesNothing();
    void stopLeavesTheHostsLoopAlone();
    void loopsNest();
    void blocksOtherWindowsWhileItRuns_data();
    void blocksOtherWindowsWhileItRuns();
    void visibleWindowStaysShownAllTheTime();
    void focusOfABlockedWindowIsPassedOn();
    void modalityIsBackAfterwards();
    void staysModalWhenItsNativeWindowIsMadeAnew_data();
    void staysModalWhenItsNativeWindowIsMadeAnew();
    void standsAboveTheWindowThatWasActive();
    void windowBelowMayGoMeanwhile();
    void destroyedWindowAborts();
    void endOfTheApplicationAborts();
    void abortReachesTheDialogsOfAWindow();
    void sessionContinuesUntilStopped();
    void sessionWaitsForEvents();
    void sessionMayBeDeletedInItsOwnRun();
    void sessionNoticesTheEndOfTheApplication();
    void sessionWithoutWindowIsAborted();
    void sessionMayBeginAgain();

private:
    void later(std::function<void()> action) { QTimer::singleShot(0, this, std::move(action)); }
};

void tst_ModalLoop::answersTheCodeGiven()
{
    QWidget window;
    later([&] {
        QVERIFY(ModalLoop::isRunning());
        QVERIFY(window.isVisible());
        QCOMPARE(ModalLoop::modalWindow(), &window);
        window.close();
        ModalLoop::stopModalWithCode(Q_INT64_C(5000000000));
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), Q_INT64_C(5000000000));
    QVERIFY(!ModalLoop::isRunning());
    QCOMPARE(ModalLoop::modalWindow(), nullptr);
}

void tst_ModalLoop::stopWithoutALoopDoesNothing()
{
    ModalLoop::stopModalWithCode(1);
    QWidget window;
    later([] { ModalLoop::stopModalWithCode(2); });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 2);
}

void tst_ModalLoop::stopLeavesTheHostsLoopAlone()
{
    QEventLoop host;
    bool stillRunning = false;
    later([&] {
        ModalLoop::stopModalWithCode(1);
        later([&] {
            stillRunning = host.isRunning();
            host.exit(7);
        });
    });
    QCOMPARE(host.exec(), 7);
    QVERIFY(stillRunning);
}

void tst_ModalLoop::loopsNest()
{
    QWidget outer;
    QWidget inner;
    qint64 innerCode = 0;
    later([&] {
        later([] { ModalLoop::stopModalWithCode(11); });
        innerCode = ModalLoop::runModalForWindow(&inner);
        QVERIFY(ModalLoop::isRunning());
        QCOMPARE(ModalLoop::modalWindow(), &outer);
        ModalLoop::stopModalWithCode(22);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&outer), 22);
    QCOMPARE(innerCode, 11);
}

void tst_ModalLoop::blocksOtherWindowsWhileItRuns_data()
{
    QTest::addColumn<bool>("visibleBefore");
    QTest::newRow("hidden before") << false;
    QTest::newRow("visible before") << true;
}

void tst_ModalLoop::blocksOtherWindowsWhileItRuns()
{
    QFETCH(bool, visibleBefore);
    QPushButton other;
    QPushButton window;
    other.show();
    window.setVisible(visibleBefore);
    QSignalSpy otherClicked(&other, &QPushButton::clicked);
    QSignalSpy windowClicked(&window, &QPushButton::clicked);
    const auto clickBoth = [&] {
        // Through the window system's queue, as a person's clicks come: only there is blocking decided.
        QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, other.rect().center());
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, window.rect().center());
    };
    later([&] {
        clickBoth();
        QCOMPARE(otherClicked.count(), 0);
        QCOMPARE(windowClicked.count(), 1);
        ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
    clickBoth();
    QCOMPARE(otherClicked.count(), 1);
    QCOMPARE(windowClicked.count(), 2);
}

void tst_ModalLoop::visibleWindowStaysShownAllTheTime()
{
    struct Counter : QObject {
        bool eventFilter(QObject *, QEvent *event) override
        {
            hides += event->type() == QEvent::Hide || event->type() == QEvent::WinIdChange;
            return false;
        }
        int hides = 0;
    } counter;
    QWidget window;
    window.show();
    window.installEventFilter(&counter);
    QWindow *handle = window.windowHandle();
    later([] { ModalLoop::stopModalWithCode(1); });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
    QCOMPARE(counter.hides, 0);
    QCOMPARE(window.windowHandle(), handle);
    QCOMPARE(handle->transientParent(), nullptr);
    QVERIFY(window.isVisible());
}

void tst_ModalLoop::focusOfABlockedWindowIsPassedOn()
{
    QWidget window;
    window.show();
    later([&] {
        QWindow *blocker = window.windowHandle()->transientParent();
        QVERIFY(blocker);
        blocker->requestActivate();
        QTRY_COMPARE(QGuiApplication::focusWindow(), window.windowHandle());
        ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
}

void tst_ModalLoop::modalityIsBackAfterwards()
{
    for (const bool closes : {true, false}) {
        QWidget window;
        later([&] {
            QCOMPARE(window.windowModality(), Qt::ApplicationModal);
            window.setVisible(!closes);
            ModalLoop::stopModalWithCode(1);
        });
        QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
        QCOMPARE(window.windowModality(), Qt::NonModal);
        QVERIFY(!window.testAttribute(Qt::WA_SetWindowModality));
        QCOMPARE(window.isVisible(), !closes);
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }
    QWidget parent;
    QWidget sheet(&parent, Qt::Window);
    sheet.setWindowModality(Qt::WindowModal);
    later([] { ModalLoop::stopModalWithCode(1); });
    QCOMPARE(ModalLoop::runModalForWindow(&sheet), 1);
    QCOMPARE(sheet.windowModality(), Qt::WindowModal);

    QWidget modal;
    modal.setWindowModality(Qt::ApplicationModal);
    modal.setAttribute(Qt::WA_SetWindowModality, false);
    later([] { ModalLoop::stopModalWithCode(1); });
    QCOMPARE(ModalLoop::runModalForWindow(&modal), 1);
    QVERIFY(!modal.testAttribute(Qt::WA_SetWindowModality));
}

void tst_ModalLoop::staysModalWhenItsNativeWindowIsMadeAnew_data()
{
    QTest::addColumn<bool>("wasVisible");
    QTest::newRow("shown by the loop") << false;
    QTest::newRow("shown before") << true;
}

void tst_ModalLoop::staysModalWhenItsNativeWindowIsMadeAnew()
{
    QFETCH(bool, wasVisible);
    QWidget other;
    other.show();
    Renewed window;
    window.setVisible(wasVisible);
    bool wasMadeAnew = false;
    later([&] {
        const QPointer<QWindow> handle(window.windowHandle());
        const QPointer<QWindow> below(handle->transientParent());
        QVERIFY(QGuiApplication::modalWindow());
        window.makeAnew();
        QVERIFY(!handle && window.isVisible());
        wasMadeAnew = true;
        QVERIFY(QGuiApplication::modalWindow());
        QCOMPARE(window.windowHandle()->transientParent(), below.data());
        QPushButton button(&other);
        button.show();
        const QSignalSpy pressed(&button, &QPushButton::clicked);
        QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(pressed.size(), 0);
        QPushButton own(&window);
        own.show();
        const QSignalSpy pressedOwn(&own, &QPushButton::clicked);
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(pressedOwn.size(), 1);
        ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
    QVERIFY(wasMadeAnew);
    QVERIFY(!window.windowHandle()->transientParent());
    window.hide();
    QVERIFY(!QGuiApplication::modalWindow());
}

void tst_ModalLoop::standsAboveTheWindowThatWasActive()
{
    QWidget host;
    host.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));
    QWidget window;
    QWidget dialog(&host, Qt::Dialog);
    later([&] {
        QCOMPARE(window.windowHandle()->transientParent(), host.windowHandle());
        later([&] {
            // One that belongs to a window already stays with it.
            QCOMPARE(dialog.windowHandle()->transientParent(), host.windowHandle());
            ModalLoop::stopModalWithCode(2);
        });
        QCOMPARE(ModalLoop::runModalForWindow(&dialog), 2);
        dialog.hide();
        ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
    QVERIFY(!window.windowHandle()->transientParent());
}

void tst_ModalLoop::windowBelowMayGoMeanwhile()
{
    auto host = std::make_unique<QWidget>();
    host->show();
    host->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(host.get()));
    Renewed window;
    later([&] {
        host.reset();
        QVERIFY(!window.windowHandle()->transientParent());
        window.makeAnew();
        QVERIFY(!window.windowHandle()->transientParent());
        ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
}

void tst_ModalLoop::destroyedWindowAborts()
{
    QCOMPARE(ModalLoop::abortCode, -1001);
    for (const bool visible : {false, true}) {
        auto *window = new QWidget;
        window->setVisible(visible);
        later([=] { delete window; });
        QCOMPARE(ModalLoop::runModalForWindow(window), ModalLoop::abortCode);
        QVERIFY(!ModalLoop::isRunning());
    }
    QCOMPARE(ModalLoop::runModalForWindow(nullptr), ModalLoop::abortCode);
}

void tst_ModalLoop::endOfTheApplicationAborts()
{
    QWidget window;
    qint64 code = 0;
    later([&] {
        later([] { QCoreApplication::exit(3); });
        code = ModalLoop::runModalForWindow(&window);
    });
    QCOMPARE(QCoreApplication::exec(), 3);
    QCOMPARE(code, ModalLoop::abortCode);
}

void tst_ModalLoop::abortReachesTheDialogsOfAWindow()
{
    QWidget window;
    QWidget dialog(&window, Qt::Dialog);
    QWidget foreign;
    qint64 dialogCode = 0;
    later([&] {
        later([&] {
            QVERIFY(!ModalLoop::abortLoopsOf(&foreign));
            QVERIFY(ModalLoop::abortLoopsOf(&window));
            // Too late for another code.
            ModalLoop::stopModalWithCode(9);
        });
        dialogCode = ModalLoop::runModalForWindow(&dialog);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), ModalLoop::abortCode);
    QCOMPARE(dialogCode, ModalLoop::abortCode);
}

void tst_ModalLoop::sessionContinuesUntilStopped()
{
    QCOMPARE(ModalSession::continueCode, -1002);
    QWidget window;
    ModalSession session;
    session.begin(&window);
    QVERIFY(window.isVisible());
    QVERIFY(ModalLoop::isRunning());
    bool reached = false;
    later([&] {
        later([&] {
            reached = true;
            ModalLoop::stopModalWithCode(1);
        });
    });
    int continued = 0;
    qint64 code = 0;
    while ((code = session.run()) == ModalSession::continueCode)
        ++continued;
    QVERIFY(reached);
    QCOMPARE(code, 1);
    QVERIFY(continued > 0);
    QCOMPARE(session.run(), 1);
    session.end();
    QVERIFY(!ModalLoop::isRunning());
    QVERIFY(window.isVisible());
    QCOMPARE(window.windowModality(), Qt::NonModal);
}

void tst_ModalLoop::sessionWaitsForEvents()
{
    QWidget window;
    ModalSession session;
    session.begin(&window);
    QTimer::singleShot(300, this, [] { ModalLoop::stopModalWithCode(1); });
    int runs = 0;
    while (session.run() == ModalSession::continueCode)
        ++runs;
    // A spinning session would have been asked many thousand times.
    QVERIFY2(runs < 100, qPrintable(QString::number(runs)));
}

void tst_ModalLoop::sessionMayBeDeletedInItsOwnRun()
{
    QWidget window;
    auto session = std::make_unique<ModalSession>();
    session->begin(&window);
    bool deleted = false;
    later([&] {
        session.reset();
        deleted = true;
    });
    ModalSession *running = session.get();
    while (!deleted)
        QCOMPARE(running->run(), ModalSession::continueCode);
    QVERIFY(!ModalLoop::isRunning());
}

void tst_ModalLoop::sessionNoticesTheEndOfTheApplication()
{
    QWidget window;
    qint64 code = 0;
    later([&] {
        ModalSession session;
        session.begin(&window);
        later([] { QCoreApplication::exit(3); });
        while ((code = session.run()) == ModalSession::continueCode) { }
    });
    QCOMPARE(QCoreApplication::exec(), 3);
    QCOMPARE(code, ModalLoop::abortCode);
}

void tst_ModalLoop::sessionWithoutWindowIsAborted()
{
    ModalSession session;
    QCOMPARE(session.run(), ModalLoop::abortCode);
    auto *window = new QWidget;
    session.begin(window);
    delete window;
    QCOMPARE(session.run(), ModalLoop::abortCode);
}

void tst_ModalLoop::sessionMayBeginAgain()
{
    QWidget window;
    ModalSession session;
    session.begin(&window);
    ModalLoop::stopModalWithCode(4);
    QCOMPARE(session.run(), 4);
    session.begin(&window);
    later([] {});
    QCOMPARE(session.run(), ModalSession::continueCode);
    ModalLoop::stopModalWithCode(5);
    QCOMPARE(session.run(), 5);
}

LINKLIST_GUI_TEST_MAIN(tst_ModalLoop)
#include "tst_ModalLoop.moc"
