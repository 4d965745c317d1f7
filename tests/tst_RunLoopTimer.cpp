#include "platform/ui/ModalLoop.h"
#include "platform/ui/RunLoopTimer.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QSignalSpy>

using Mode = RunLoopTimer::Mode;

class tst_RunLoopTimer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void defaultModeRestsInAModalLoop();
    void modalPanelModeFiresOnlyInAModalLoop();
    void invalidatedTimerNeverFiresAgain();
    void mayBeDeletedByItsReceiver();
};

void tst_RunLoopTimer::defaultModeRestsInAModalLoop()
{
    RunLoopTimer timer(Mode::Default, 5);
    QCOMPARE(timer.interval(), 5);
    QSignalSpy fired(&timer, &RunLoopTimer::fired);
    timer.start();
    QTRY_VERIFY(fired.count() >= 2);
    QWidget window;
    QTimer::singleShot(100, this, [] { ModalLoop::stopModalWithCode(0); });
    const auto before = fired.count();
    ModalLoop::runModalForWindow(&window);
    QCOMPARE(fired.count(), before);
    QTRY_VERIFY(fired.count() > before);
}

void tst_RunLoopTimer::modalPanelModeFiresOnlyInAModalLoop()
{
    RunLoopTimer timer(Mode::ModalPanel, 5);
    QSignalSpy fired(&timer, &RunLoopTimer::fired);
    timer.start();
    QTest::qWait(100);
    QCOMPARE(fired.count(), 0);
    QWidget window;
    connect(&timer, &RunLoopTimer::fired, &window, [&] {
        if (fired.count() == 3)
            ModalLoop::stopModalWithCode(1);
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 1);
    QVERIFY(fired.count() >= 3);
}

void tst_RunLoopTimer::invalidatedTimerNeverFiresAgain()
{
    RunLoopTimer timer(Mode::Default, 1);
    QSignalSpy fired(&timer, &RunLoopTimer::fired);
    connect(&timer, &RunLoopTimer::fired, &timer, &RunLoopTimer::invalidate);
    QVERIFY(timer.isValid());
    timer.start();
    QTRY_VERIFY(!timer.isValid());
    timer.start();
    QTest::qWait(50);
    QCOMPARE(fired.count(), 1);
}

void tst_RunLoopTimer::mayBeDeletedByItsReceiver()
{
    QPointer<RunLoopTimer> timer(new RunLoopTimer(Mode::Default, 1));
    connect(timer, &RunLoopTimer::fired, this, [&] { delete timer; });
    timer->start();
    QTRY_VERIFY(!timer);
}

LINKLIST_GUI_TEST_MAIN(tst_RunLoopTimer)
#include "tst_RunLoopTimer.moc"
