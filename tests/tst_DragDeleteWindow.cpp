#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/DisappearingItem.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QMimeData>
#include <QScreen>
#include <functional>
#include <memory>
#include <vector>

namespace
{

const QString rowsType = QStringLiteral("application/x-test-rows");
const QString otherType = QStringLiteral("application/x-test-other");
constexpr Qt::DropActions everyOperation = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
constexpr int entryTime = int(DragDeleteWindow::entryTime.count());
constexpr QPoint onTheList(250, 190);
constexpr QPoint outside(500, 20);

// A window with a list that things are dragged from; it covers the global points (200, 150) to (300, 230).
struct Origin {
    Origin()
    {
        window.setGeometry(100, 50, 400, 300);
        list.setGeometry(100, 100, 100, 80);
        detector = DragDeleteDetectView::addDragDetectViewtoWindow(&window, {rowsType}, &list);
        window.show();
    }

    QWidget window;
    QLabel list{&window};
    DragDeleteDetectView *detector = nullptr;
};

// Who hears of ended drags, with the window's state at that moment.
class Listener : public QObject
{
public:
    Listener()
    {
        NotificationCenter::defaultCenter().addObserver(this, DragDeleteWindowNotification,
                                                        [this](QObject *sender) {
                                                            senders += sender;
                                                            if (whenHeard)
                                                                whenHeard();
                                                        });
    }
    int count() const { return int(senders.size()); }

    QList<QObject *> senders;
    std::function<void()> whenHeard;
};

std::unique_ptr<QMimeData> dataOf(const QStringList &types)
{
    auto data = std::make_unique<QMimeData>();
    for (const QString &type : types)
        data->setData(type, "data of " + type.toUtf8());
    return data;
}

bool send(DragDeleteWindow &window, QEvent &event)
{
    event.ignore();
    QCoreApplication::sendEvent(&window, &event);
    return event.isAccepted();
}

bool enter(DragDeleteWindow &window, const QPoint &global, const QMimeData *data)
{
    QDragEnterEvent event(window.mapFromGlobal(global), Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
    return send(window, event);
}

bool move(DragDeleteWindow &window, const QPoint &global, const QMimeData *data)
{
    QDragMoveEvent event(window.mapFromGlobal(global), Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
    return send(window, event);
}

bool drop(DragDeleteWindow &window, const QPoint &global, const QMimeData *data)
{
    QDropEvent event(window.mapFromGlobal(global), Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
    return send(window, event);
}

void leave(DragDeleteWindow &window)
{
    QDragLeaveEvent event;
    send(window, event);
}

bool showsCloud(const DragDeleteWindow &window)
{
    return window.cursor().shape() == Qt::BitmapCursor
        && window.cursor().pixmap().toImage() == DisappearingItem::cursor().pixmap().toImage();
}

bool staysOnTop(const DragDeleteWindow &window)
{
    return window.flags().testFlag(Qt::WindowStaysOnTopHint);
}

// "raised" or "lowered", with everything that a person notices of it; else what does not fit together.
QString state(const DragDeleteWindow &window)
{
    const bool isArrow = window.cursor().shape() == Qt::ArrowCursor;
    if (window.isActive() && staysOnTop(window) && showsCloud(window))
        return QStringLiteral("raised");
    if (!window.isActive() && !staysOnTop(window) && isArrow)
        return QStringLiteral("lowered");
    return QStringLiteral("active %1, on top %2, cloud %3, arrow %4")
        .arg(window.isActive())
        .arg(staysOnTop(window))
        .arg(showsCloud(window))
        .arg(isArrow);
}

// Hears what a window is told from elsewhere, before the window does.
class Before : public QObject
{
public:
    Before(QObject *watched, QEvent::Type type, std::function<void()> action)
        : m_type(type)
        , m_action(std::move(action))
    {
        watched->installEventFilter(this);
    }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == m_type) {
            ++count;
            m_action();
        }
        return false;
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_action;
};

} // namespace

class tst_DragDeleteWindow : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void coversTheScreenOfItsSender();
    void hasNoFrameAndTakesNoFocus();
    void belongsToItsSendersWindow();
    void nothingHasHappenedAtFirst();
    void exceptedAreaIsWhereTheSenderStands();
    void withoutASenderNoAreaIsExcepted();
    void orderBehindShowsItLowered();
    void orderFrontRaisesOnce();
    void orderBackLowersOnce();
    void detectorOfTheSendersWindowRaises();
    void detectorOfAnotherWindowDoesNot();
    void detectorIsNotHeardAfterTheEnd();
    void everyOperationIsAllowed();
    void updatesAreWantedWhileThePointerRests();
    void dropIsPreparedAndKeepsItsPoint();
    void exitedDragIsNotEntered();
    void conclusionTakesTheTypesInTheirOrder();
    void conclusionForgetsTheResultBefore();
    void conclusionTakesNothingFromTheArea_data();
    void conclusionTakesNothingFromTheArea();
    void conclusionWithoutDataTakesNothing();
    void endIsToldOnceAfterEverythingElse();
    void timeOutGivesTheMouseBack();
    void timeOutSparesADragThatCameIn();
    void timeOutCountsADragThatLeftAgain();
    void severalTimeOutsRunAtOnce();
    void dragThatComesInAtTheLastMomentKeepsTheMouse();
    void windowMayGoWhileThreadsWait();
    void windowMayGoAsTheThreadsReturn();
    void dragOutAndBackAndOut();
    void dropOutsideTakesTheData();
    void dropOnTheSenderTakesNothing();
    void otherDataIsIgnored();
    void oneOfSeveralTypesIsEnough();
    void nothingIsAcceptedAfterTheEnd();
    void windowMayGoWhenItsEndIsHeard();
    void withoutItsSenderItStillEnds();
};

void tst_DragDeleteWindow::coversTheScreenOfItsSender()
{
    const Origin origin;
    const DragDeleteWindow window({rowsType}, origin.detector);
    QCOMPARE(window.screen(), origin.window.screen());
    QCOMPARE(window.geometry(), origin.window.screen()->geometry());
    const DragDeleteWindow withoutSender({rowsType}, nullptr);
    QCOMPARE(withoutSender.geometry(), QGuiApplication::primaryScreen()->geometry());
}

void tst_DragDeleteWindow::hasNoFrameAndTakesNoFocus()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const auto check = [&window] {
        QVERIFY(window.flags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(window.flags().testFlag(Qt::BypassWindowManagerHint));
        QVERIFY(window.flags().testFlag(Qt::WindowDoesNotAcceptFocus));
        QVERIFY(!window.ignoresMouseEvents());
        QCOMPARE(window.opacity(), 0.0);
    };
    check();
    QVERIFY(!staysOnTop(window));
    window.orderBehind();
    check();
    window.orderFront();
    check();
    window.orderBack();
    check();
}

// A modal window lets the mouse in only where it belongs to it.
void tst_DragDeleteWindow::belongsToItsSendersWindow()
{
    Origin origin;
    origin.window.hide();
    origin.window.setWindowModality(Qt::ApplicationModal);
    origin.window.show();
    DragDeleteWindow window({rowsType}, &origin.list);
    QCOMPARE(window.transientParent(), origin.window.windowHandle());
    window.orderBehind();
    int presses = 0;
    const Before press(&window, QEvent::MouseButtonPress, [&presses] { ++presses; });
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    QCOMPARE(presses, 1);
}

void tst_DragDeleteWindow::nothingHasHappenedAtFirst()
{
    Origin origin;
    const DragDeleteWindow window({rowsType, otherType}, &origin.list);
    QVERIFY(!window.isVisible());
    QVERIFY(!window.isActive());
    QVERIFY(!window.isEntered());
    QVERIFY(!window.hasEnded());
    QCOMPARE(window.dataTypes(), QStringList({rowsType, otherType}));
    QCOMPARE(window.sender(), &origin.list);
    QCOMPARE(window.dragResult(), QList<QByteArray>());
    QCOMPARE(window.dropPoint(), QPointF());
}

void tst_DragDeleteWindow::exceptedAreaIsWhereTheSenderStands()
{
    Origin origin;
    const DragDeleteWindow window({rowsType}, &origin.list);
    QCOMPARE(window.exceptScreenRect(), QRectF(200, 150, 100, 80));
    QVERIFY(window.isExcepted(QPointF(200, 230)));
    QVERIFY(!window.isExcepted(QPointF(300, 190)));
    QVERIFY(!window.isExcepted(QPointF(250, 150)));
}

void tst_DragDeleteWindow::withoutASenderNoAreaIsExcepted()
{
    DragDeleteWindow window({rowsType}, nullptr);
    QCOMPARE(window.sender(), nullptr);
    QCOMPARE(window.exceptScreenRect(), QRectF(0, 0, 0, 0));
    const auto data = dataOf({rowsType});
    QVERIFY(enter(window, QPoint(0, 0), data.get()));
    QVERIFY(move(window, QPoint(0, 0), data.get()));
    QCOMPARE(state(window), QStringLiteral("raised"));
}

void tst_DragDeleteWindow::orderBehindShowsItLowered()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    QVERIFY(window.isVisible());
    QCOMPARE(state(window), QStringLiteral("lowered"));
}

void tst_DragDeleteWindow::orderFrontRaisesOnce()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    const Qt::WindowFlags flags = window.flags();
    window.orderFront();
    QCOMPARE(state(window), QStringLiteral("raised"));
    QCOMPARE(window.flags(), flags | Qt::WindowStaysOnTopHint);
    QVERIFY(window.isVisible());
    // The same again changes nothing, not even what somebody else changed meanwhile.
    window.setCursor(Qt::WaitCursor);
    window.setFlag(Qt::WindowStaysOnTopHint, false);
    window.orderFront();
    QCOMPARE(window.cursor().shape(), Qt::WaitCursor);
    QVERIFY(!staysOnTop(window));
    QVERIFY(window.isActive());
}

void tst_DragDeleteWindow::orderBackLowersOnce()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    window.setCursor(Qt::WaitCursor);
    window.orderBack();
    QCOMPARE(window.cursor().shape(), Qt::WaitCursor);
    window.orderFront();
    window.orderBack();
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(window.isVisible());
    window.setCursor(Qt::WaitCursor);
    window.orderBack();
    QCOMPARE(window.cursor().shape(), Qt::WaitCursor);
}

void tst_DragDeleteWindow::detectorOfTheSendersWindowRaises()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    origin.detector->draggingUpdated(onTheList);
    QCOMPARE(state(window), QStringLiteral("lowered"));
    origin.detector->draggingUpdated(outside);
    QCOMPARE(state(window), QStringLiteral("raised"));
    QVERIFY(!window.isEntered());
}

void tst_DragDeleteWindow::detectorOfAnotherWindowDoesNot()
{
    Origin origin;
    Origin other;
    DragDeleteWindow window({rowsType}, &origin.list);
    DragDeleteWindow otherWindow({rowsType}, &other.list);
    other.detector->draggingUpdated(outside);
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QCOMPARE(state(otherWindow), QStringLiteral("raised"));
    // Nor does it start the time-out: the other's comes, this one's does not.
    QTRY_VERIFY(otherWindow.ignoresMouseEvents());
    QVERIFY(!window.ignoresMouseEvents());
}

void tst_DragDeleteWindow::detectorIsNotHeardAfterTheEnd()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.draggingEnded();
    origin.detector->draggingUpdated(outside);
    origin.detector->draggingEnded();
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(window.ignoresMouseEvents());
}

void tst_DragDeleteWindow::everyOperationIsAllowed()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    QCOMPARE(window.draggingEntered(), everyOperation);
    QCOMPARE(window.draggingUpdated(onTheList), everyOperation);
    QCOMPARE(window.draggingUpdated(outside), everyOperation);
}

void tst_DragDeleteWindow::updatesAreWantedWhileThePointerRests()
{
    const DragDeleteWindow window({rowsType}, nullptr);
    QVERIFY(window.wantsPeriodicDraggingUpdates());
}

void tst_DragDeleteWindow::dropIsPreparedAndKeepsItsPoint()
{
    DragDeleteWindow window({rowsType}, nullptr);
    const Listener heard;
    QVERIFY(window.prepareForDragOperation());
    QVERIFY(window.performDragOperation(QPointF(12.5, 34.25)));
    QCOMPARE(window.dropPoint(), QPointF(12.5, 34.25));
    QCOMPARE(window.dragResult(), QList<QByteArray>());
    QCOMPARE(heard.count(), 0);
}

void tst_DragDeleteWindow::exitedDragIsNotEntered()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Listener heard;
    window.draggingEntered();
    QVERIFY(window.isEntered());
    QCOMPARE(state(window), QStringLiteral("raised"));
    window.draggingExited();
    QVERIFY(!window.isEntered());
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(!window.ignoresMouseEvents());
    QCOMPARE(heard.count(), 0);
}

void tst_DragDeleteWindow::conclusionTakesTheTypesInTheirOrder()
{
    const QString third = QStringLiteral("application/x-test-third");
    Origin origin;
    DragDeleteWindow window({third, rowsType, otherType, rowsType}, &origin.list);
    const auto data = dataOf({rowsType, third, QStringLiteral("text/plain")});
    window.concludeDragOperation(data.get(), outside);
    const QByteArray ofThird = "data of application/x-test-third";
    const QByteArray ofRows = "data of application/x-test-rows";
    QCOMPARE(window.dragResult(), QList<QByteArray>({ofThird, ofRows, ofRows}));
}

void tst_DragDeleteWindow::conclusionForgetsTheResultBefore()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const auto data = dataOf({rowsType});
    window.concludeDragOperation(data.get(), outside);
    window.concludeDragOperation(data.get(), outside);
    QCOMPARE(window.dragResult().size(), 1);
    window.concludeDragOperation(data.get(), onTheList);
    QCOMPARE(window.dragResult(), QList<QByteArray>());
}

void tst_DragDeleteWindow::conclusionTakesNothingFromTheArea_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("middle") << QPointF(250, 190) << false;
    QTest::newRow("left edge") << QPointF(200, 190) << false;
    QTest::newRow("right edge") << QPointF(300, 190) << true;
    QTest::newRow("lower edge") << QPointF(250, 230) << false;
    QTest::newRow("upper edge") << QPointF(250, 150) << true;
    QTest::newRow("elsewhere in the window") << QPointF(120, 300) << true;
}

void tst_DragDeleteWindow::conclusionTakesNothingFromTheArea()
{
    QFETCH(QPointF, point);
    QFETCH(bool, isTaken);
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const auto data = dataOf({rowsType});
    window.concludeDragOperation(data.get(), point);
    QCOMPARE(window.dragResult().size(), isTaken ? 1 : 0);
}

void tst_DragDeleteWindow::conclusionWithoutDataTakesNothing()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const auto data = dataOf({rowsType});
    window.concludeDragOperation(data.get(), outside);
    window.concludeDragOperation(nullptr, outside);
    QCOMPARE(window.dragResult(), QList<QByteArray>());
}

void tst_DragDeleteWindow::endIsToldOnceAfterEverythingElse()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    window.orderFront();
    Listener heard;
    QString then;
    heard.whenHeard = [&] {
        then = state(window) + (window.ignoresMouseEvents() ? QStringLiteral(", deaf") : QString());
        QVERIFY(window.hasEnded());
        window.draggingEnded();
    };
    window.draggingEnded();
    window.draggingEnded();
    QCOMPARE(heard.senders, QList<QObject *>{&window});
    QCOMPARE(then, QStringLiteral("lowered, deaf"));
    QVERIFY(window.isVisible());
}

void tst_DragDeleteWindow::timeOutGivesTheMouseBack()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.orderBehind();
    QCOMPARE(entryTime, 300);
    QElapsedTimer time;
    time.start();
    origin.detector->draggingUpdated(outside);
    QVERIFY(!window.ignoresMouseEvents());
    QTRY_VERIFY_WITH_TIMEOUT(window.ignoresMouseEvents(), 10 * entryTime);
    QVERIFY(time.elapsed() >= entryTime);
    QVERIFY(window.isActive());
    QVERIFY(!window.hasEnded());
}

void tst_DragDeleteWindow::timeOutSparesADragThatCameIn()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    // Starts its time-out after the one that is looked at.
    DragDeleteWindow later({rowsType}, &origin.list);
    const Before call(&window, QEvent::MetaCall, [] {});
    window.DeleteViewDragEnd(origin.detector);
    window.draggingEntered();
    later.DeleteViewDragEnd(origin.detector);
    QTRY_VERIFY(later.ignoresMouseEvents());
    QVERIFY(!window.ignoresMouseEvents());
    QCOMPARE(call.count, 0);
    window.checkDragTimerOut();
    QVERIFY(!window.ignoresMouseEvents());
}

void tst_DragDeleteWindow::timeOutCountsADragThatLeftAgain()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    window.DeleteViewDragEnd(origin.detector);
    window.draggingEntered();
    window.draggingExited();
    QTRY_VERIFY(window.ignoresMouseEvents());
}

void tst_DragDeleteWindow::severalTimeOutsRunAtOnce()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Before call(&window, QEvent::MetaCall, [] {});
    constexpr int count = 20;
    for (int i = 0; i < count; ++i)
        origin.detector->draggingUpdated(outside);
    // One after the other they would need twice as long.
    QTRY_COMPARE_WITH_TIMEOUT(call.count, count, count * entryTime / 2);
    QVERIFY(window.ignoresMouseEvents());
}

// Between the thread's look and the answer to it on the main thread.
void tst_DragDeleteWindow::dragThatComesInAtTheLastMomentKeepsTheMouse()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Before call(&window, QEvent::MetaCall, [&] { window.draggingEntered(); });
    window.DeleteViewDragEnd(origin.detector);
    QTRY_COMPARE(call.count, 1);
    QVERIFY(!window.ignoresMouseEvents());
    QCOMPARE(state(window), QStringLiteral("raised"));
}

void tst_DragDeleteWindow::windowMayGoWhileThreadsWait()
{
    Origin origin;
    for (int round = 0; round < 100; ++round) {
        DragDeleteWindow window({rowsType}, &origin.list);
        for (int i = 0; i <= round % 4; ++i)
            origin.detector->draggingUpdated(outside);
        if (round % 3 == 0)
            QCoreApplication::processEvents();
    }
    // A window of later is told by its own threads alone.
    DragDeleteWindow window({rowsType}, &origin.list);
    const Before call(&window, QEvent::MetaCall, [] {});
    origin.detector->draggingUpdated(outside);
    QTRY_VERIFY(window.ignoresMouseEvents());
    QCOMPARE(call.count, 1);
}

// Each window goes a little sooner or later than its threads come back: before their look, between it and the
// answer, and after both.
void tst_DragDeleteWindow::windowMayGoAsTheThreadsReturn()
{
    Origin origin;
    std::vector<std::unique_ptr<DragDeleteWindow>> windows;
    for (int i = 0; i < 60; ++i) {
        windows.push_back(std::make_unique<DragDeleteWindow>(QStringList(rowsType), &origin.list));
        windows.back()->DeleteViewDragEnd(origin.detector);
        windows.back()->DeleteViewDragEnd(origin.detector);
    }
    DragDeleteWindow last({rowsType}, &origin.list);
    last.DeleteViewDragEnd(origin.detector);
    QElapsedTimer time;
    time.start();
    QTRY_VERIFY(time.elapsed() >= entryTime - 20);
    // Without looking at events in between, so that calls are still under way to some.
    while (!windows.empty()) {
        if (time.nsecsElapsed() / 1'000 >= (entryTime - 20) * 1'000 + 600 * qint64(60 - windows.size()))
            windows.pop_back();
    }
    QTRY_VERIFY(last.ignoresMouseEvents());
}

void tst_DragDeleteWindow::dragOutAndBackAndOut()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Listener heard;
    const auto data = dataOf({rowsType});
    window.orderBehind();
    QVERIFY(enter(window, outside, data.get()));
    QVERIFY(window.isEntered());
    QCOMPARE(state(window), QStringLiteral("raised"));
    QVERIFY(move(window, outside, data.get()));
    QCOMPARE(state(window), QStringLiteral("raised"));
    QVERIFY(move(window, onTheList, data.get()));
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(window.isEntered());
    QVERIFY(move(window, QPoint(300, 190), data.get()));
    QCOMPARE(state(window), QStringLiteral("raised"));
    QVERIFY(move(window, QPoint(299, 190), data.get()));
    QCOMPARE(state(window), QStringLiteral("lowered"));
    leave(window);
    QVERIFY(!window.isEntered());
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(enter(window, outside, data.get()));
    QVERIFY(window.isEntered());
    leave(window);
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QCOMPARE(heard.count(), 0);
    QVERIFY(!window.hasEnded());
    QCOMPARE(window.dragResult(), QList<QByteArray>());
}

void tst_DragDeleteWindow::dropOutsideTakesTheData()
{
    Origin origin;
    DragDeleteWindow window({otherType, rowsType}, &origin.list);
    Listener heard;
    const auto data = dataOf({QStringLiteral("text/plain"), rowsType, otherType});
    window.orderBehind();
    enter(window, outside, data.get());
    QList<QByteArray> whenHeard;
    heard.whenHeard = [&] {
        whenHeard = window.dragResult();
        QCOMPARE(window.dropPoint(), QPointF(outside));
    };
    QVERIFY(drop(window, outside, data.get()));
    QCOMPARE(heard.senders, QList<QObject *>{&window});
    const QList<QByteArray> expected
        = {"data of application/x-test-other", "data of application/x-test-rows"};
    QCOMPARE(whenHeard, expected);
    QCOMPARE(window.dragResult(), expected);
    QVERIFY(window.hasEnded());
    QVERIFY(window.ignoresMouseEvents());
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(window.isVisible());
}

void tst_DragDeleteWindow::dropOnTheSenderTakesNothing()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Listener heard;
    const auto data = dataOf({rowsType});
    enter(window, outside, data.get());
    QVERIFY(drop(window, onTheList, data.get()));
    QCOMPARE(heard.senders, QList<QObject *>{&window});
    QCOMPARE(window.dragResult(), QList<QByteArray>());
    QCOMPARE(window.dropPoint(), QPointF(onTheList));
    QVERIFY(window.hasEnded());
}

void tst_DragDeleteWindow::otherDataIsIgnored()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Listener heard;
    const auto data = dataOf({otherType, QStringLiteral("text/plain")});
    QVERIFY(!enter(window, outside, data.get()));
    QVERIFY(!move(window, outside, data.get()));
    QVERIFY(!drop(window, outside, data.get()));
    // The toolkit accepts a move beforehand where the last one was accepted.
    QDragMoveEvent accepted(QPoint(), Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    accepted.accept();
    QCoreApplication::sendEvent(&window, &accepted);
    QVERIFY(!accepted.isAccepted());
    QVERIFY(!window.isEntered());
    QVERIFY(!window.hasEnded());
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QCOMPARE(window.dropPoint(), QPointF());
    QCOMPARE(heard.count(), 0);
}

void tst_DragDeleteWindow::oneOfSeveralTypesIsEnough()
{
    Origin origin;
    DragDeleteWindow window({rowsType, otherType}, &origin.list);
    const auto data = dataOf({otherType});
    QVERIFY(enter(window, outside, data.get()));
    QVERIFY(drop(window, outside, data.get()));
    QCOMPARE(window.dragResult(), QList<QByteArray>{"data of application/x-test-other"});
    DragDeleteWindow none({}, &origin.list);
    QVERIFY(!enter(none, outside, data.get()));
}

void tst_DragDeleteWindow::nothingIsAcceptedAfterTheEnd()
{
    Origin origin;
    DragDeleteWindow window({rowsType}, &origin.list);
    const Listener heard;
    const auto data = dataOf({rowsType});
    enter(window, outside, data.get());
    drop(window, outside, data.get());
    QVERIFY(!enter(window, onTheList, data.get()));
    QVERIFY(!move(window, onTheList, data.get()));
    QVERIFY(!drop(window, onTheList, data.get()));
    QCOMPARE(window.dropPoint(), QPointF(outside));
    QCOMPARE(window.dragResult().size(), 1);
    QCOMPARE(heard.count(), 1);
    QCOMPARE(state(window), QStringLiteral("lowered"));
}

void tst_DragDeleteWindow::windowMayGoWhenItsEndIsHeard()
{
    Origin origin;
    const auto data = dataOf({rowsType});
    auto *window = new DragDeleteWindow({rowsType}, &origin.list);
    const QPointer<DragDeleteWindow> guard(window);
    Listener heard;
    heard.whenHeard = [&] { delete window; };
    window->orderBehind();
    origin.detector->draggingUpdated(outside);
    enter(*window, outside, data.get());
    drop(*window, outside, data.get());
    QVERIFY(!guard);
    QCOMPARE(heard.count(), 1);
}

void tst_DragDeleteWindow::withoutItsSenderItStillEnds()
{
    auto origin = std::make_unique<Origin>();
    DragDeleteWindow window({rowsType}, &origin->list);
    const Listener heard;
    const auto data = dataOf({rowsType});
    enter(window, outside, data.get());
    origin.reset();
    QCOMPARE(window.sender(), nullptr);
    QVERIFY(move(window, onTheList, data.get()));
    QCOMPARE(state(window), QStringLiteral("lowered"));
    QVERIFY(drop(window, outside, data.get()));
    QCOMPARE(window.dragResult().size(), 1);
    QCOMPARE(heard.count(), 1);
}

LINKLIST_GUI_TEST_MAIN(tst_DragDeleteWindow)
#include "tst_DragDeleteWindow.moc"
