#include "Classes/Delegate/DragDrop/DragDeleteSource.h"
#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/DisappearingItem.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QTimer>
#include <QWindow>
#include <functional>
#include <memory>
#include <vector>

namespace
{

const QString rowsType = QStringLiteral("application/x-test-rows");
// The screen is 240 points wide and 320 high.
constexpr QPoint onTheList(120, 190);
constexpr QPoint besideTheList(40, 280);
constexpr QPoint outside(120, 40);
constexpr QPoint offTheScreen(-50, -40);

using Step = std::function<void()>;

// A window with a list that is dragged from; the list covers the global points (70, 150) to (170, 230).
struct Origin {
    explicit Origin(const QPoint &at = QPoint(20, 100))
    {
        window.setGeometry(QRect(at, QSize(200, 200)));
        list->setGeometry(50, 50, 100, 80);
        detector = DragDeleteDetectView::addDragDetectViewtoWindow(&window, {rowsType}, list);
        window.show();
        detector->refresh();
        NotificationCenter::defaultCenter().addObserver(
            detector, DragDeleteViewDetectNotification, [this](QObject *) { ++detections; }, detector);
    }

    QWidget window;
    QLabel *list = new QLabel(&window);
    DragDeleteDetectView *detector = nullptr;
    int detections = 0;
};

// Takes what is dropped on the list, as a table does.
class Taker : public QObject
{
public:
    explicit Taker(QWidget *list)
    {
        list->setAcceptDrops(true);
        list->installEventFilter(this);
    }

    QList<QByteArray> taken;
    QPointF at;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove
            && event->type() != QEvent::Drop)
            return false;
        auto *drag = static_cast<QDropEvent *>(event);
        drag->acceptProposedAction();
        if (event->type() == QEvent::Drop) {
            taken.append(drag->mimeData()->data(rowsType));
            at = static_cast<QWidget *>(watched)->mapToGlobal(drag->position());
        }
        return true;
    }
};

// One drag with the mouse, from the list. Wherever windows overlap, this platform gives the one that was made
// last what happens: the catching window, unless it is hidden.
class Drag
{
public:
    explicit Drag(Origin &origin)
        : catcher(new DragDeleteWindow({rowsType}, origin.list))
        , source(new DragDeleteSource(origin.list, origin.detector, catcher))
    {
        m_desk.setGeometry(-500, -500, 3000, 3000);
        m_desk.create();
        catcher->orderBehind();
        NotificationCenter::defaultCenter().addObserver(
            &m_context, DragDeleteWindowNotification, [this](QObject *) { ++ends; }, catcher);
    }
    ~Drag() { delete catcher; }

    // Takes the steps one after the other while the drag runs; the last one has to end it.
    void run(const std::vector<Step> &steps)
    {
        QTest::mousePress(&m_desk, Qt::LeftButton, {}, m_desk.mapFromGlobal(onTheList));
        takeFrom(steps, 0);
        auto data = std::make_unique<QMimeData>();
        data->setData(rowsType, "[0]");
        dragged = data.get();
        source->run(std::move(data), picture);
    }

    Step move(const QPoint &global)
    {
        return [this, global] { QTest::mouseMove(&m_desk, m_desk.mapFromGlobal(global)); };
    }
    Step press(Qt::MouseButton button, const QPoint &global)
    {
        return [=, this] { QTest::mousePress(&m_desk, button, {}, m_desk.mapFromGlobal(global)); };
    }
    Step release(const QPoint &global) { return release(Qt::LeftButton, global); }
    Step release(Qt::MouseButton button, const QPoint &global)
    {
        return [=, this] { QTest::mouseRelease(&m_desk, button, {}, m_desk.mapFromGlobal(global)); };
    }
    Step press(Qt::Key key)
    {
        return [this, key] { QTest::keyClick(&m_desk, key); };
    }

    QPixmap cursor() const { return source->findChild<QDrag *>()->dragCursor(Qt::MoveAction); }

private:
    void takeFrom(const std::vector<Step> &steps, size_t next)
    {
        if (next == steps.size())
            return;
        QTimer::singleShot(0, &m_context, [this, steps, next] {
            steps[next]();
            takeFrom(steps, next + 1);
        });
    }

    QObject m_context;
    QWindow m_desk; // not shown: the mouse is anywhere on the screen or beside it

public:
    QPointer<DragDeleteWindow> catcher;
    std::unique_ptr<DragDeleteSource> source;
    QPointer<QMimeData> dragged;
    QPixmap picture;
    int ends = 0;
};

const QList<QByteArray> nothing;
const QList<QByteArray> theRows = {"[0]"};

} // namespace

class tst_DragDeleteSource : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void dropOutsideIsCaught();
    void dropBackOnTheListIsNot();
    void rowsThrownBackAndLetGoAtOnceAreDroppedOnTheList();
    void releaseThatReachesNoWindowIsCaught();
    void releaseThatReachesNoWindowIsNotWithoutAVisibleCatcher();
    void escapeCatchesNothing();
    void releaseAfterEscapeCatchesNothing();
    void otherKeysDoNotCancel();
    void anotherButtonCancels_data();
    void anotherButtonCancels();
    void releaseAfterTheCatchersEndDoesNothing_data();
    void releaseAfterTheCatchersEndDoesNothing();
    void dataGoesWithTheDrag();
    void restingPointerRaisesTheCatcher();
    void pointerRestingOnTheListDoesNot();
    void risenCatcherIsEnteredBelowARestingPointer();
    void cursorTellsWhetherItWouldVanish();
    void pictureIsCarriedBesideThePointer();
    void detectorOfTheWindowHearsItsDrag();
    void anotherWindowsDetectorDoesNot();
    void anotherWindowsCatcherDoesNot();
    void dragsOfOthersMayConcernAnyWindow();
    void dragWithoutDetectorAndCatcher();
    void detectorAndCatcherMayGoMeanwhile();
    void viewMayGoMeanwhile();
};

void tst_DragDeleteSource::dropOutsideIsCaught()
{
    Origin origin;
    Drag drag(origin);
    drag.run({drag.move(besideTheList), drag.move(outside), drag.release(outside)});
    QVERIFY(drag.catcher->hasEnded());
    QCOMPARE(drag.catcher->dragResult(), theRows);
    QCOMPARE(drag.catcher->dropPoint(), QPointF(outside));
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::dropBackOnTheListIsNot()
{
    Origin origin;
    Drag drag(origin);
    drag.run({drag.move(outside), drag.move(onTheList), drag.release(onTheList)});
    QVERIFY(drag.catcher->hasEnded());
    QCOMPARE(drag.catcher->dragResult(), nothing);
    QCOMPARE(drag.ends, 1);
}

// The catching window is still in front when the button comes up.
void tst_DragDeleteSource::rowsThrownBackAndLetGoAtOnceAreDroppedOnTheList()
{
    Origin origin;
    const Taker list(origin.list);
    Drag drag(origin);
    drag.run({drag.move(outside), drag.release(onTheList)});
    QCOMPARE(list.taken, theRows);
    QCOMPARE(list.at, QPointF(onTheList));
    QCOMPARE(drag.catcher->dragResult(), nothing);
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::releaseThatReachesNoWindowIsCaught()
{
    Origin origin;
    Drag drag(origin);
    drag.run({drag.move(outside), drag.move(offTheScreen), drag.release(offTheScreen)});
    QVERIFY(drag.catcher->hasEnded());
    QCOMPARE(drag.catcher->dragResult(), theRows);
    QCOMPARE(drag.catcher->dropPoint(), QPointF(offTheScreen));
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::releaseThatReachesNoWindowIsNotWithoutAVisibleCatcher()
{
    Origin origin;
    Drag drag(origin);
    drag.run({[&] { drag.catcher->hide(); }, drag.move(offTheScreen), drag.release(offTheScreen)});
    QCOMPARE(drag.catcher->dragResult(), nothing);
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::escapeCatchesNothing()
{
    for (const QPoint &point : {outside, offTheScreen}) {
        Origin origin;
        Drag drag(origin);
        drag.run({drag.move(outside), drag.move(point), drag.press(Qt::Key_Escape), drag.release(point)});
        QVERIFY(drag.catcher->hasEnded());
        QCOMPARE(drag.catcher->dragResult(), nothing);
        QCOMPARE(drag.ends, 1);
    }
}

// As where the window system goes on until the button comes up.
void tst_DragDeleteSource::releaseAfterEscapeCatchesNothing()
{
    Origin origin;
    Drag drag(origin);
    const auto hearEscape = [&] {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        drag.source->eventFilter(&origin.window, &escape);
    };
    drag.run({drag.move(offTheScreen), hearEscape, drag.release(offTheScreen)});
    QVERIFY(drag.catcher->hasEnded());
    QCOMPARE(drag.catcher->dragResult(), nothing);
}

void tst_DragDeleteSource::otherKeysDoNotCancel()
{
    Origin origin;
    Drag drag(origin);
    drag.run({drag.move(offTheScreen), drag.press(Qt::Key_Shift), drag.release(offTheScreen)});
    QCOMPARE(drag.catcher->dragResult(), theRows);
}

void tst_DragDeleteSource::anotherButtonCancels_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<QPoint>("point");
    QTest::newRow("right, outside") << Qt::RightButton << outside;
    QTest::newRow("middle, outside") << Qt::MiddleButton << outside;
    QTest::newRow("right, where no window is") << Qt::RightButton << offTheScreen;
    QTest::newRow("right, on the list") << Qt::RightButton << onTheList;
}

void tst_DragDeleteSource::anotherButtonCancels()
{
    QFETCH(const Qt::MouseButton, button);
    QFETCH(const QPoint, point);
    Origin origin;
    const Taker list(origin.list);
    Drag drag(origin);
    bool isOver = true;
    drag.run({drag.move(outside), drag.move(point), drag.press(button, point), [&] { isOver = false; },
              drag.release(button, point), drag.release(point)});
    // The press has ended the drag; what follows is no part of it.
    QVERIFY(isOver);
    drag.release(button, point)();
    drag.release(point)();
    QVERIFY(drag.catcher->hasEnded());
    QCOMPARE(drag.catcher->dragResult(), nothing);
    QCOMPARE(list.taken, nothing);
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::releaseAfterTheCatchersEndDoesNothing_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::newRow("outside") << outside;
    QTest::newRow("where no window is") << offTheScreen;
    QTest::newRow("on the list") << onTheList;
}

// As when the window closes while the button is still down.
void tst_DragDeleteSource::releaseAfterTheCatchersEndDoesNothing()
{
    QFETCH(const QPoint, point);
    Origin origin;
    const Taker list(origin.list);
    Drag drag(origin);
    drag.run({drag.move(outside), [&] { drag.catcher->draggingEnded(); }, drag.release(point)});
    QCOMPARE(drag.catcher->dragResult(), nothing);
    QCOMPARE(drag.catcher->dropPoint(), QPointF());
    QCOMPARE(list.taken, nothing);
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::dataGoesWithTheDrag()
{
    Origin origin;
    Drag drag(origin);
    drag.run({drag.move(outside), [&] { QVERIFY(drag.dragged); }, drag.release(outside)});
    drag.source.reset();
    QVERIFY(!drag.dragged);
}

// Nothing else tells where a pointer is that has jumped over the window's edge and rests.
void tst_DragDeleteSource::restingPointerRaisesTheCatcher()
{
    Origin origin;
    Drag drag(origin);
    bool isRaised = false;
    drag.run({drag.move(offTheScreen),
              [&] { isRaised = QTest::qWaitFor([&] { return drag.catcher->isActive(); }); },
              drag.press(Qt::Key_Escape)});
    QVERIFY(isRaised);
    QVERIFY(origin.detections > 0);
}

void tst_DragDeleteSource::pointerRestingOnTheListDoesNot()
{
    Origin origin;
    Drag drag(origin);
    drag.catcher->hide();
    int updates = 0;
    QTimer other;
    other.setInterval(50);
    connect(&other, &QTimer::timeout, this, [&updates] { ++updates; });
    other.start();
    int detections = -1;
    drag.run({drag.move(onTheList), [&] { QTRY_VERIFY(updates > 2); },
              [&] { detections = origin.detections; }, drag.release(onTheList)});
    QCOMPARE(detections, 0);
    QVERIFY(!drag.catcher->isActive());
}

// The window system tells a window of a drag when the pointer moves, and so it seems to move a little.
void tst_DragDeleteSource::risenCatcherIsEnteredBelowARestingPointer()
{
    Origin origin;
    Drag drag(origin);
    drag.catcher->hide();
    const QPoint wanted = besideTheList + QPoint(1, 0);
    bool isTold = false;
    drag.run({drag.move(besideTheList),
              [&] {
                  drag.catcher->setVisible(true);
                  isTold = QTest::qWaitFor([&] { return drag.catcher->isEntered(); });
              },
              drag.release(wanted)});
    QVERIFY(isTold);
    QCOMPARE(drag.catcher->dropPoint(), QPointF(wanted));
}

void tst_DragDeleteSource::cursorTellsWhetherItWouldVanish()
{
    Origin origin;
    Drag drag(origin);
    const QImage plain = DisappearingItem::pointer(false).toImage();
    const QImage vanishing = DisappearingItem::pointer(true).toImage();
    drag.run({[&] { QCOMPARE(drag.cursor().toImage(), plain); }, drag.move(outside),
              [&] { QTRY_COMPARE(drag.cursor().toImage(), vanishing); }, drag.move(onTheList),
              [&] { QTRY_COMPARE(drag.cursor().toImage(), plain); }, drag.release(onTheList)});
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::pictureIsCarriedBesideThePointer()
{
    Origin origin;
    Drag drag(origin);
    drag.picture = QPixmap(60, 20);
    drag.picture.fill(Qt::red);
    bool isSeen = false;
    drag.run({[&] {
                  const auto *running = drag.source->findChild<QDrag *>();
                  QCOMPARE(running->pixmap().toImage(), drag.picture.toImage());
                  const QRect place(-running->hotSpot(), drag.picture.size());
                  QVERIFY(place.left() > 0 && place.top() > 0);
                  isSeen = true;
              },
              drag.release(onTheList)});
    QVERIFY(isSeen);
}

void tst_DragDeleteSource::detectorOfTheWindowHearsItsDrag()
{
    Origin origin;
    Drag drag(origin);
    drag.catcher->hide();
    int detections = 0;
    drag.run(
        {drag.move(besideTheList), [&] { detections = origin.detections; }, drag.release(besideTheList)});
    QVERIFY(detections > 0);
    QCOMPARE(origin.detector->dropPoint(), QPointF(besideTheList));
}

void tst_DragDeleteSource::anotherWindowsDetectorDoesNot()
{
    Origin origin;
    Origin other(QPoint(20, -150));
    Drag drag(origin);
    drag.catcher->hide();
    const QPoint overTheOther(40, 30);
    drag.run({drag.move(besideTheList), drag.move(overTheOther), drag.release(overTheOther)});
    QCOMPARE(other.detections, 0);
    QCOMPARE(other.detector->dropPoint(), QPointF());
    QVERIFY(origin.detections > 0);
}

void tst_DragDeleteSource::anotherWindowsCatcherDoesNot()
{
    Origin origin;
    Origin other(QPoint(20, -150));
    Drag drag(origin);
    Drag idle(other); // on top of all
    drag.run({drag.move(outside), drag.release(outside)});
    QVERIFY(!idle.catcher->isEntered());
    QVERIFY(!idle.catcher->isActive());
    QVERIFY(!idle.catcher->hasEnded());
    // The release was lost to it, and counts all the same.
    QCOMPARE(drag.catcher->dragResult(), theRows);
    QCOMPARE(drag.ends, 1);
}

void tst_DragDeleteSource::dragsOfOthersMayConcernAnyWindow()
{
    QMimeData data;
    const QWidget widget;
    const QDropEvent event(QPointF(), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QVERIFY(DragDeleteSource::concerns(&event, &widget));
}

void tst_DragDeleteSource::dragWithoutDetectorAndCatcher()
{
    Origin origin;
    Drag drag(origin);
    drag.source = std::make_unique<DragDeleteSource>(origin.list, nullptr, nullptr);
    drag.catcher->hide();
    drag.run({drag.move(besideTheList), drag.release(offTheScreen)});
    QCOMPARE(drag.ends, 0);
    QVERIFY(!drag.catcher->hasEnded());
}

void tst_DragDeleteSource::detectorAndCatcherMayGoMeanwhile()
{
    Origin origin;
    Drag drag(origin);
    drag.catcher->hide(); // this platform's drags do not survive the window below the pointer
    drag.run({drag.move(besideTheList),
              [&] {
                  delete drag.catcher;
                  delete origin.detector;
              },
              drag.move(outside), drag.release(outside)});
    QVERIFY(!drag.catcher);
    QCOMPARE(drag.ends, 0);
}

void tst_DragDeleteSource::viewMayGoMeanwhile()
{
    Origin origin;
    auto list = std::make_unique<QLabel>(&origin.window);
    Drag drag(origin);
    drag.source = std::make_unique<DragDeleteSource>(list.get(), origin.detector, drag.catcher);
    drag.run(
        {drag.move(outside), [&] { list.reset(); }, drag.move(offTheScreen), drag.release(offTheScreen)});
    QVERIFY(!list);
    QVERIFY(drag.catcher->hasEnded());
}

// Drags run to their end on the platform "minimal"; on "offscreen" they are over at once.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    QApplication application(argc, argv);
    tst_DragDeleteSource test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_DragDeleteSource.moc"
