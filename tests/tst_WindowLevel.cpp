#include "platform/ui/WindowLevel.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QWindow>

using Level = WindowLevel::Level;
Q_DECLARE_METATYPE(Level)

class tst_WindowLevel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void levelsAboveNormalStayOnTop_data();
    void levelsAboveNormalStayOnTop();
    void changesLiveWithoutHidingOrMakingTheWindowAgain();
    void setBeforeTheFirstShowItCounts();
    void keepsTheOtherFlags();
    void aPartOfTheWindowMeansTheWindow();
    void aWindowOnTopByItselfCountsAsFloating();
    void allWorkspacesAreAskedForUnderX11Only();
    void missingWindowIsHarmless();
};

void tst_WindowLevel::levelsAboveNormalStayOnTop_data()
{
    QTest::addColumn<Level>("level");
    QTest::addColumn<bool>("onTop");
    QTest::newRow("normal") << Level::Normal << false;
    QTest::newRow("floating") << Level::Floating << true;
    QTest::newRow("modal panel") << Level::ModalPanel << true;
    QTest::newRow("above the main menu") << Level::AboveMainMenu << true;
}

void tst_WindowLevel::levelsAboveNormalStayOnTop()
{
    QFETCH(Level, level);
    QFETCH(bool, onTop);
    QWidget window;
    QCOMPARE(WindowLevel::of(&window), Level::Normal);
    window.show();
    for (const Level before : {Level::Normal, Level::AboveMainMenu}) {
        WindowLevel::set(&window, before);
        WindowLevel::set(&window, level);
        QCOMPARE(WindowLevel::of(&window), level);
        QCOMPARE(window.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint), onTop);
        QCOMPARE(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint), onTop);
    }
}

void tst_WindowLevel::changesLiveWithoutHidingOrMakingTheWindowAgain()
{
    QWidget window;
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QWindow *handle = window.windowHandle();
    const WId id = window.winId();
    const QRect geometry = window.geometry();
    QSignalSpy visibility(window.windowHandle(), &QWindow::visibleChanged);
    for (const Level level : {Level::ModalPanel, Level::Floating, Level::AboveMainMenu, Level::Normal}) {
        WindowLevel::set(&window, level);
        QVERIFY(window.isVisible() && handle->isVisible());
    }
    QCoreApplication::processEvents();
    QCOMPARE(visibility.count(), 0);
    QCOMPARE(window.windowHandle(), handle);
    QCOMPARE(window.winId(), id);
    QCOMPARE(window.geometry(), geometry);
}

void tst_WindowLevel::setBeforeTheFirstShowItCounts()
{
    QWidget window;
    window.move(70, 60);
    WindowLevel::set(&window, Level::ModalPanel);
    QVERIFY(!window.isVisible());
    QVERIFY(!window.windowHandle());
    window.show();
    QVERIFY(window.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    window.hide();
    WindowLevel::set(&window, Level::Normal);
    window.show();
    QVERIFY(!window.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(window.pos(), QPoint(70, 60));
}

void tst_WindowLevel::keepsTheOtherFlags()
{
    QWidget window(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
    window.show();
    WindowLevel::set(&window, Level::Floating);
    const Qt::WindowFlags flags = window.windowHandle()->flags();
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Dialog);
    QVERIFY(flags.testFlag(Qt::FramelessWindowHint));
}

void tst_WindowLevel::aPartOfTheWindowMeansTheWindow()
{
    QWidget window;
    auto *part = new QLabel(&window);
    WindowLevel::set(part, Level::Floating);
    QCOMPARE(WindowLevel::of(&window), Level::Floating);
    QCOMPARE(WindowLevel::of(part), Level::Floating);
    QVERIFY(!part->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

void tst_WindowLevel::aWindowOnTopByItselfCountsAsFloating()
{
    QWidget window(nullptr, Qt::WindowStaysOnTopHint);
    QCOMPARE(WindowLevel::of(&window), Level::Floating);
    WindowLevel::set(&window, Level::Normal);
    QCOMPARE(WindowLevel::of(&window), Level::Normal);
}

// There are no workspaces here: the window is shown as any other, and nothing is said.
void tst_WindowLevel::allWorkspacesAreAskedForUnderX11Only()
{
    QWidget window;
    WindowLevel::set(&window, Level::Floating);
    WindowLevel::setOnAllWorkspaces(&window);
    for (int i = 0; i < 2; ++i) {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(WindowLevel::of(&window), Level::Floating);
        window.hide();
    }
}

void tst_WindowLevel::missingWindowIsHarmless()
{
    WindowLevel::setOnAllWorkspaces(nullptr);
    WindowLevel::set(nullptr, Level::Floating);
    QCOMPARE(WindowLevel::of(nullptr), Level::Normal);
}

LINKLIST_GUI_TEST_MAIN(tst_WindowLevel)
#include "tst_WindowLevel.moc"
