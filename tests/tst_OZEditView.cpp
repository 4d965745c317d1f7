#include "Classes/Delegate/EditView/OZEditView.h"
#include "Classes/Mode/Locale.h"
#include "platform/NotificationCenter.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QEnterEvent>
#include <QRandomGenerator>
#include <QWindow>
#include <cmath>

using Type = EditFrame::MouseType;

namespace
{

constexpr QRect pageInWindow(30, 20, 200, 100);

// What the frame says of itself, and to whom.
class Listener : public QObject
{
public:
    explicit Listener(OZEditView *view)
        : m_view(view)
    {
        NotificationCenter &center = NotificationCenter::defaultCenter();
        center.addObserver(this, EditViewChangeNotification,
                           [this](QObject *sender) { changes += isView(sender); });
        center.addObserver(this, EditViewDidChangedNotification,
                           [this](QObject *sender) { releases += isView(sender); });
    }

    int changes = 0;
    int releases = 0;
    int strangers = 0;

private:
    int isView(QObject *sender)
    {
        strangers += sender != m_view;
        return sender == m_view;
    }

    OZEditView *m_view;
};

// Counts the presses that no enter event interrupted, from what the toolkit delivers to the frame.
class Presses : public QObject
{
public:
    using QObject::QObject;

    int finished = 0;
    int interrupted = 0;

    bool eventFilter(QObject *, QEvent *event) override
    {
        const auto isLeft = [event] { return static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton; };
        if (event->type() == QEvent::MouseButtonPress && isLeft()) {
            m_isDown = true;
            m_isWhole = true;
        } else if (event->type() == QEvent::Enter) {
            m_isWhole = false;
        } else if (event->type() == QEvent::MouseButtonRelease && isLeft() && m_isDown) {
            ++(m_isWhole ? finished : interrupted);
            m_isDown = false;
        }
        return false;
    }

private:
    bool m_isDown = false;
    bool m_isWhole = false;
};

} // namespace

class tst_OZEditView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void widgetIsTheWholeNumberedRectangleAroundTheFrame();
    void frameSmallerThanFifteenIsEnlargedAtCreation();
    void pointerChoosesTypeAndCursor_data();
    void pointerChoosesTypeAndCursor();
    void enteringTakesThePartUnderThePointer_data() { pointerChoosesTypeAndCursor_data(); }
    void enteringTakesThePartUnderThePointer();
    void missingCursorImagesGiveTheArrow();
    void leavingTheFrameEndsItsType();

    void pressAloneChangesNothingAndReleasePostsOnce();
    void everyPartIsDragged_data();
    void everyPartIsDragged();
    void dragPostsAfterEveryStep();
    void dragOutsideTheParentIsIgnored();
    void parentsNearEdgesAreInsideItsFarEdgesOutside();
    void pressBetweenTheHandlesDragsNothingButIsReleased();
    void draggedPartStaysWhileThePointerCrossesOthers();
    void enterEventDuringAPressSwallowsTheRelease();
    void leaveDuringAPressKeepsTheTypeUnlessAnEnterCameBefore();
    void typeIsJudgedAnewAtTheRelease();
    void otherButtonsDoNothing();
    void doubleClickIsTwoPresses();
    void frameDeletedByAReleaseIsSafe();
    void randomPointerEventsPostOneReleasePerWholePress();

    void convertScreen2BaseMeasuresFromTheWindowsLowerLeftCorner();
    void matchesPointsOfTheWindow();
    void withoutAParentEveryDragIsIgnored();

    void arrowKeysMoveByOnePoint_data();
    void arrowKeysMoveByOnePoint();
    void heldKeyIsOneFinishedEdit();
    void keyHeldWhileTheFocusGoesIsFinished();
    void otherKeysAreLeftToTheWindow();

    void paintsTintOutlineAndHandles();
    void paintsFewerHandlesOnTwentyOnePoints_data();
    void paintsFewerHandlesOnTwentyOnePoints();
    void paintsFractionalFramesWhereTheyAre();
    void showsItsFocus();

private:
    // Points of the page, y-up, as the window's whole, y-down points.
    static QPoint at(double x, double y)
    {
        return pageInWindow.topLeft() + QPoint(int(x), pageInWindow.height() - int(y));
    }
    QWindow *handle() const { return m_window->windowHandle(); }
    void press(double x, double y) { QTest::mousePress(handle(), Qt::LeftButton, {}, at(x, y)); }
    void moveTo(double x, double y) { QTest::mouseMove(handle(), at(x, y)); }
    void release(double x, double y) { QTest::mouseRelease(handle(), Qt::LeftButton, {}, at(x, y)); }
    void enter(double x, double y) const;
    QImage painted() const;
    QColor background() const { return {0, 160, 0}; }

    std::unique_ptr<QWidget> m_window;
    QWidget *m_page = nullptr;
    QPointer<OZEditView> m_frame;
    std::unique_ptr<Listener> m_listener;
};

void tst_OZEditView::init()
{
    TestCase::init();
    setDefaultBundlePath(QStringLiteral(LINKLIST_BUNDLE_DIR));
    m_window = std::make_unique<QWidget>();
    m_window->resize(300, 200);
    m_window->setFocusPolicy(Qt::StrongFocus);
    m_window->setFocus(); // an active window would give it to the frame
    m_page = new QWidget(m_window.get());
    m_page->setGeometry(pageInWindow);
    m_frame = new OZEditView(QRectF(), m_page);
    m_frame->setFrameRect(QRectF(50, 30, 100, 40));
    m_frame->forceRefreshLayout();
    m_listener = std::make_unique<Listener>(m_frame);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTest::mouseMove(handle(), QPoint(1, 1));
}

void tst_OZEditView::cleanup()
{
    QCOMPARE(m_listener->strangers, 0);
    m_listener.reset();
    m_window.reset();
    resetLocaleForTesting();
}

void tst_OZEditView::enter(double x, double y) const
{
    const QPointF global = handle()->mapToGlobal(at(x, y));
    QEnterEvent event(m_frame->mapFromGlobal(global), at(x, y), global);
    QCoreApplication::sendEvent(m_frame, &event);
}

QImage tst_OZEditView::painted() const
{
    QImage image(m_frame->size(), QImage::Format_RGB32);
    image.fill(background());
    m_frame->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

void tst_OZEditView::widgetIsTheWholeNumberedRectangleAroundTheFrame()
{
    QCOMPARE(m_frame->geometry(), QRect(50, 30, 100, 40));
    m_frame->setFrameRect(QRectF(50.25, 10.5, 20.5, 30.25));
    QCOMPARE(m_frame->geometry(), QRect(50, 59, 21, 31));
    QCOMPARE(m_frame->frameRect().width(), 20.5);
    QCOMPARE(m_listener->changes, 0);
}

void tst_OZEditView::frameSmallerThanFifteenIsEnlargedAtCreation()
{
    const OZEditView small(QRectF(3, 4, 5, 6));
    QCOMPARE(small.frameRect(), QRectF(3, 4, 15, 15));
    QCOMPARE(small.mouseType(), Type::None);
    QVERIFY(!small.isChange() && !small.isMouseDown() && small.identifier().isNull());
}

void tst_OZEditView::pointerChoosesTypeAndCursor_data()
{
    QTest::addColumn<QPoint>("point"); // in the frame of 100 x 40
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("shape");
    QTest::addColumn<QString>("image");
    const QString none;
    const QString drag = QStringLiteral("cur_drag");
    const QString falling = QStringLiteral("cur_res1");
    const QString rising = QStringLiteral("cur_res2");
    QTest::newRow("inside") << QPoint(50, 20) << 1 << int(Qt::BitmapCursor) << drag;
    QTest::newRow("left") << QPoint(3, 20) << 2 << int(Qt::SizeHorCursor) << none;
    QTest::newRow("right") << QPoint(96, 20) << 3 << int(Qt::SizeHorCursor) << none;
    QTest::newRow("top") << QPoint(50, 36) << 4 << int(Qt::SizeVerCursor) << none;
    QTest::newRow("bottom") << QPoint(50, 3) << 5 << int(Qt::SizeVerCursor) << none;
    QTest::newRow("top-left") << QPoint(3, 36) << 6 << int(Qt::BitmapCursor) << falling;
    QTest::newRow("top-right") << QPoint(96, 36) << 7 << int(Qt::BitmapCursor) << rising;
    QTest::newRow("bottom-left") << QPoint(3, 3) << 8 << int(Qt::BitmapCursor) << rising;
    QTest::newRow("bottom-right") << QPoint(96, 3) << 9 << int(Qt::BitmapCursor) << falling;
    QTest::newRow("between two handles") << QPoint(25, 3) << 0 << int(Qt::ArrowCursor) << none;
}

void tst_OZEditView::pointerChoosesTypeAndCursor()
{
    QFETCH(QPoint, point);
    QFETCH(int, type);
    QFETCH(int, shape);
    QFETCH(QString, image);
    moveTo(100, 50);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
    moveTo(50 + point.x(), 30 + point.y());
    QCOMPARE(int(m_frame->mouseType()), type);
    const QCursor cursor = m_frame->cursor();
    QCOMPARE(int(cursor.shape()), shape);
    if (!image.isNull()) {
        const QString file = QStringLiteral(LINKLIST_BUNDLE_DIR "/Contents/Resources/%1.png").arg(image);
        const QImage expected(file);
        QVERIFY(!expected.isNull());
        QCOMPARE(cursor.hotSpot(), QPoint(8, 8));
        QCOMPARE(cursor.pixmap().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied),
                 expected.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    QCOMPARE(m_listener->changes + m_listener->releases, 0);
}

void tst_OZEditView::enteringTakesThePartUnderThePointer()
{
    QFETCH(QPoint, point);
    QFETCH(int, type);
    QFETCH(int, shape);
    // Between the handles the part before stays.
    const bool isOnAPart = type != Type::None;
    moveTo(146, 50);
    press(146, 50);
    QVERIFY(m_frame->isMouseDown());
    QCOMPARE(m_frame->mouseType(), Type::RightEdge);
    enter(50 + point.x(), 30 + point.y());
    QCOMPARE(int(m_frame->mouseType()), isOnAPart ? type : int(Type::RightEdge));
    QCOMPARE(int(m_frame->cursor().shape()), isOnAPart ? shape : int(Qt::SizeHorCursor));
    QVERIFY(!m_frame->isMouseDown());
    release(146, 50);
    QCOMPARE(m_listener->changes + m_listener->releases, 0);
}

void tst_OZEditView::missingCursorImagesGiveTheArrow()
{
    setDefaultBundlePath(QStringLiteral("/nowhere"));
    OZEditView frame(QRectF(0, 0, 100, 40), m_page);
    QVERIFY(frame.cur_drag().isNull() && frame.cur_left_top().isNull() && frame.cur_right_top().isNull());
    m_frame->setCur_drag(frame.cur_drag());
    m_frame->setCur_left_top(QImage());
    for (const QPoint inFrame : {QPoint(50, 20), QPoint(3, 36), QPoint(96, 3)}) {
        moveTo(50 + inFrame.x(), 30 + inFrame.y());
        QVERIFY(m_frame->mouseType() != Type::None);
        QCOMPARE(m_frame->cursor().shape(), Qt::ArrowCursor);
    }
    moveTo(53, 33);
    QCOMPARE(m_frame->cursor().shape(), Qt::BitmapCursor); // its image is there
}

void tst_OZEditView::leavingTheFrameEndsItsType()
{
    moveTo(100, 50);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
    moveTo(5, 5);
    QCOMPARE(m_frame->mouseType(), Type::None);
}

void tst_OZEditView::pressAloneChangesNothingAndReleasePostsOnce()
{
    moveTo(100, 50);
    press(100, 50);
    QVERIFY(m_frame->isMouseDown());
    QVERIFY(!m_frame->isChange());
    QCOMPARE(m_listener->changes + m_listener->releases, 0);
    release(100, 50);
    QVERIFY(!m_frame->isMouseDown());
    QCOMPARE(m_listener->changes, 0);
    QCOMPARE(m_listener->releases, 1);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 100, 40));
}

void tst_OZEditView::everyPartIsDragged_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<QRectF>("expected"); // after a drag by (5, 3)
    QTest::newRow("inside") << QPoint(50, 20) << QRectF(55, 33, 100, 40);
    QTest::newRow("left") << QPoint(3, 20) << QRectF(55, 30, 95, 40);
    QTest::newRow("right") << QPoint(96, 20) << QRectF(50, 30, 105, 40);
    QTest::newRow("top") << QPoint(50, 36) << QRectF(50, 30, 100, 43);
    QTest::newRow("bottom") << QPoint(50, 3) << QRectF(50, 33, 100, 37);
    QTest::newRow("top-left") << QPoint(3, 36) << QRectF(55, 30, 95, 43);
    QTest::newRow("top-right") << QPoint(96, 36) << QRectF(50, 30, 105, 43);
    QTest::newRow("bottom-left") << QPoint(3, 3) << QRectF(55, 33, 95, 37);
    QTest::newRow("bottom-right") << QPoint(96, 3) << QRectF(50, 33, 105, 37);
}

void tst_OZEditView::everyPartIsDragged()
{
    QFETCH(QPoint, point);
    QFETCH(QRectF, expected);
    const double x = 50 + point.x();
    const double y = 30 + point.y();
    // A tap presses where no motion was told.
    press(x, y);
    moveTo(x + 4, y + 1);
    moveTo(x + 5, y + 3);
    release(x + 5, y + 3);
    QCOMPARE(m_frame->frameRect(), expected);
    QCOMPARE(m_listener->changes, 2);
    QCOMPARE(m_listener->releases, 1);
    QVERIFY(m_frame->isChange());
}

void tst_OZEditView::dragPostsAfterEveryStep()
{
    QRectF seen;
    NotificationCenter::defaultCenter().addObserver(m_listener.get(), EditViewChangeNotification,
                                                    [&](QObject *) { seen = m_frame->frameRect(); });
    moveTo(100, 50);
    press(100, 50);
    for (int step = 1; step <= 20; ++step) {
        moveTo(100 + step, 50);
        QCOMPARE(m_listener->changes, step);
        QCOMPARE(seen, QRectF(50 + step, 30, 100, 40));
        QCOMPARE(m_frame->geometry(), QRect(50 + step, 30, 100, 40));
        QCOMPARE(m_listener->releases, 0);
    }
    release(120, 50);
    QCOMPARE(m_listener->releases, 1);
}

void tst_OZEditView::dragOutsideTheParentIsIgnored()
{
    moveTo(100, 50);
    press(100, 50);
    moveTo(-10, 50);
    moveTo(100, 110);
    moveTo(-10, -10);
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 100, 40));
    QCOMPARE(m_listener->changes, 0);
    QVERIFY(!m_frame->isChange());
    // Back inside, the step is measured from the last point inside.
    moveTo(90, 45);
    QCOMPARE(m_frame->frameRect(), QRectF(40, 25, 100, 40));
    release(-10, 45);
    QCOMPARE(m_listener->changes, 1);
    QCOMPARE(m_listener->releases, 1);
    QCOMPARE(m_frame->mouseType(), Type::None);
}

void tst_OZEditView::parentsNearEdgesAreInsideItsFarEdgesOutside()
{
    moveTo(100, 50);
    press(100, 50);
    moveTo(200, 50);
    moveTo(100, 100);
    QCOMPARE(m_listener->changes, 0);
    moveTo(199, 99);
    QCOMPARE(m_listener->changes, 1);
    moveTo(0, 0);
    QCOMPARE(m_listener->changes, 2);
    release(0, 0);
}

void tst_OZEditView::pressBetweenTheHandlesDragsNothingButIsReleased()
{
    moveTo(75, 33);
    press(75, 33);
    moveTo(85, 43);
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 100, 40));
    QVERIFY(!m_frame->isChange());
    release(85, 43);
    QCOMPARE(m_listener->changes, 0);
    QCOMPARE(m_listener->releases, 1);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
}

void tst_OZEditView::draggedPartStaysWhileThePointerCrossesOthers()
{
    moveTo(146, 50);
    press(146, 50);
    for (int x = 145; x >= 20; x -= 5) {
        moveTo(x, 50);
        QCOMPARE(m_frame->mouseType(), Type::RightEdge);
        QCOMPARE(m_frame->frameRect().x(), 50.0);
        QCOMPARE(m_frame->cursor().shape(), Qt::SizeHorCursor);
    }
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 15, 40));
    release(20, 50);
    QCOMPARE(m_listener->releases, 1);
}

void tst_OZEditView::enterEventDuringAPressSwallowsTheRelease()
{
    moveTo(100, 50);
    press(100, 50);
    moveTo(110, 50);
    enter(110, 50);
    QVERIFY(!m_frame->isMouseDown());
    // The drag goes on all the same.
    moveTo(115, 50);
    QCOMPARE(m_frame->frameRect(), QRectF(65, 30, 100, 40));
    QCOMPARE(m_listener->changes, 2);
    release(115, 50);
    QCOMPARE(m_listener->releases, 0);
    // The next press is whole again.
    press(115, 50);
    release(115, 50);
    QCOMPARE(m_listener->releases, 1);
}

void tst_OZEditView::leaveDuringAPressKeepsTheTypeUnlessAnEnterCameBefore()
{
    QEvent leave(QEvent::Leave);
    moveTo(100, 50);
    press(100, 50);
    QCoreApplication::sendEvent(m_frame, &leave);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
    enter(100, 50);
    QCoreApplication::sendEvent(m_frame, &leave);
    QCOMPARE(m_frame->mouseType(), Type::None);
    moveTo(110, 50);
    QCOMPARE(m_listener->changes, 0);
    release(110, 50);
    QCOMPARE(m_listener->releases, 0);
}

void tst_OZEditView::typeIsJudgedAnewAtTheRelease()
{
    moveTo(146, 50);
    press(146, 50);
    moveTo(58, 50); // the frame is 15 points wide now, and the pointer is on its inside
    release(58, 50);
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 15, 40));
    QCOMPARE(m_frame->mouseType(), Type::RightEdge);
    press(58, 50);
    moveTo(57, 50);
    release(57, 50);
    QCOMPARE(m_frame->mouseType(), Type::Inside);
    QCOMPARE(m_frame->cursor().shape(), Qt::BitmapCursor);
}

void tst_OZEditView::otherButtonsDoNothing()
{
    moveTo(100, 50);
    QTest::mousePress(handle(), Qt::RightButton, {}, at(100, 50));
    moveTo(110, 60);
    QTest::mouseRelease(handle(), Qt::RightButton, {}, at(110, 60));
    QCOMPARE(m_listener->changes + m_listener->releases, 0);
    press(110, 60);
    QTest::mousePress(handle(), Qt::RightButton, {}, at(110, 60));
    QTest::mouseRelease(handle(), Qt::RightButton, {}, at(110, 60));
    QCOMPARE(m_listener->releases, 0);
    QVERIFY(m_frame->isMouseDown());
    release(110, 60);
    QCOMPARE(m_listener->releases, 1);
}

void tst_OZEditView::doubleClickIsTwoPresses()
{
    QTest::mouseDClick(handle(), Qt::LeftButton, {}, at(100, 50));
    QCOMPARE(m_listener->releases, 2);
    QCOMPARE(m_frame->frameRect(), QRectF(50, 30, 100, 40));
}

void tst_OZEditView::frameDeletedByAReleaseIsSafe()
{
    NotificationCenter::defaultCenter().addObserver(m_listener.get(), EditViewDidChangedNotification,
                                                    [&](QObject *) { delete m_frame; });
    press(100, 50);
    release(100, 50);
    QVERIFY(!m_frame);
}

void tst_OZEditView::randomPointerEventsPostOneReleasePerWholePress()
{
    QRandomGenerator random(3);
    Presses presses;
    m_frame->installEventFilter(&presses);
    bool isDown = false;
    QPointF point(100, 50);
    for (int i = 0; i < 4000; ++i) {
        // Mostly near the frame, sometimes far away and outside the page.
        const QRectF near = m_frame->frameRect();
        point = random.bounded(4) == 0 ? QPointF(random.bounded(-25, 230), random.bounded(-50, 110))
                                       : QPointF(std::round(near.x() + random.bounded(near.width())),
                                                 std::round(near.y() + random.bounded(near.height())));
        switch (random.bounded(6)) {
        case 0:
            if (!isDown)
                press(point.x(), point.y());
            else
                release(point.x(), point.y());
            isDown = !isDown;
            break;
        case 1:
            if (random.bounded(8) == 0)
                enter(point.x(), point.y());
            break;
        default:
            moveTo(point.x(), point.y());
        }
        QCOMPARE(m_listener->releases, presses.finished);
        const QRectF frame = m_frame->frameRect();
        QVERIFY(frame.x() >= 0 && frame.y() >= 0 && frame.width() >= 15 && frame.height() >= 15);
        if (frame.height() > 90 || frame.y() > 85) { // nothing left to get hold of
            m_frame->setFrameRect(QRectF(50, 30, 100, 40));
            m_frame->forceRefreshLayout();
        }
    }
    QVERIFY2(presses.finished > 100, qPrintable(QString::number(presses.finished)));
    QVERIFY2(presses.interrupted > 5, qPrintable(QString::number(presses.interrupted)));
    QVERIFY(m_listener->changes > 500);
    if (isDown)
        release(point.x(), point.y());
}

void tst_OZEditView::convertScreen2BaseMeasuresFromTheWindowsLowerLeftCorner()
{
    const QPoint corner = m_window->mapToGlobal(QPoint(0, 0));
    QCOMPARE(m_frame->convertScreen2Base(corner), QPointF(0, 200));
    QCOMPARE(m_frame->convertScreen2Base(corner + QPointF(12.25, 150.5)), QPointF(12.25, 49.5));
    const OZEditView alone;
    QCOMPARE(alone.convertScreen2Base(QPointF(5, 6)), QPointF(0, 0));
}

void tst_OZEditView::matchesPointsOfTheWindow()
{
    // The page's lower-left corner is at (30, 80), the frame's at (80, 110).
    QVERIFY(m_frame->isMatchArea(QPointF(80, 110)));
    QCOMPARE(m_frame->matchArea(QPointF(80, 110)), QRectF(0, 0, 7, 7));
    QVERIFY(!m_frame->isMatchArea(QPointF(79.999, 110)));
    QCOMPARE(m_frame->matchArea(QPointF(79.999, 110)), QRectF());
    QVERIFY(!m_frame->isMatchArea(QPointF(100, 112)));
    QCOMPARE(m_frame->matchArea(QPointF(130, 130)), QRectF(7, 7, 86, 26));
    m_frame->setFrameRect(QRectF(50.5, 30.25, 100, 40));
    QVERIFY(!m_frame->isMatchArea(QPointF(80.4, 110.5)));
    QVERIFY(m_frame->isMatchArea(QPointF(80.5, 110.25)));
}

void tst_OZEditView::withoutAParentEveryDragIsIgnored()
{
    OZEditView alone(QRectF(0, 0, 60, 40));
    Listener listener(&alone);
    alone.show();
    QVERIFY(QTest::qWaitForWindowExposed(&alone));
    QTest::mousePress(&alone, Qt::LeftButton, {}, QPoint(30, 20));
    QTest::mouseMove(&alone, QPoint(35, 25));
    QTest::mouseRelease(&alone, Qt::LeftButton, {}, QPoint(35, 25));
    QTest::keyClick(&alone, Qt::Key_Left);
    QCOMPARE(listener.changes, 0);
    QVERIFY(!alone.isChange());
    QCOMPARE(alone.frameRect(), QRectF(0, 0, 60, 40));
    m_listener->strangers = 0; // the other frame's releases
}

void tst_OZEditView::arrowKeysMoveByOnePoint_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("isShift");
    QTest::addColumn<QRectF>("expected");
    QTest::newRow("left") << int(Qt::Key_Left) << false << QRectF(49, 30, 100, 40);
    QTest::newRow("right") << int(Qt::Key_Right) << false << QRectF(51, 30, 100, 40);
    QTest::newRow("up") << int(Qt::Key_Up) << false << QRectF(50, 31, 100, 40);
    QTest::newRow("down") << int(Qt::Key_Down) << false << QRectF(50, 29, 100, 40);
    QTest::newRow("narrower") << int(Qt::Key_Left) << true << QRectF(50, 30, 99, 40);
    QTest::newRow("wider") << int(Qt::Key_Right) << true << QRectF(50, 30, 101, 40);
    QTest::newRow("higher") << int(Qt::Key_Up) << true << QRectF(50, 30, 100, 41);
    QTest::newRow("lower") << int(Qt::Key_Down) << true << QRectF(50, 30, 100, 39);
}

void tst_OZEditView::arrowKeysMoveByOnePoint()
{
    QFETCH(int, key);
    QFETCH(bool, isShift);
    QFETCH(QRectF, expected);
    QTest::keyClick(m_frame, Qt::Key(key), isShift ? Qt::ShiftModifier : Qt::NoModifier);
    QCOMPARE(m_frame->frameRect(), expected);
    QCOMPARE(m_listener->changes, 1);
    QCOMPARE(m_listener->releases, 1);
    for (int i = 0; i < 300; ++i)
        QTest::keyClick(m_frame, Qt::Key(key), isShift ? Qt::ShiftModifier : Qt::NoModifier);
    const QRectF frame = m_frame->frameRect();
    QVERIFY(QRectF(0, 0, 200, 100).contains(frame));
    QVERIFY(frame.width() >= 15 && frame.height() >= 15);
    QCOMPARE(m_listener->releases, 301);
}

void tst_OZEditView::heldKeyIsOneFinishedEdit()
{
    const auto key = [this](QEvent::Type type, bool isAuto) {
        QKeyEvent event(type, Qt::Key_Right, Qt::NoModifier, QString(), isAuto);
        QCoreApplication::sendEvent(m_frame, &event);
    };
    key(QEvent::KeyPress, false);
    for (int i = 0; i < 9; ++i) {
        key(QEvent::KeyRelease, true);
        key(QEvent::KeyPress, true);
    }
    QCOMPARE(m_listener->changes, 10);
    QCOMPARE(m_listener->releases, 0);
    key(QEvent::KeyRelease, false);
    QCOMPARE(m_listener->releases, 1);
    QCOMPARE(m_frame->frameRect(), QRectF(60, 30, 100, 40));
}

void tst_OZEditView::keyHeldWhileTheFocusGoesIsFinished()
{
    m_window->activateWindow();
    m_frame->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QTRY_VERIFY(m_frame->hasFocus());
    QTest::keyPress(m_frame, Qt::Key_Up);
    m_frame->clearFocus();
    QCOMPARE(m_listener->releases, 1);
    QTest::keyRelease(m_frame, Qt::Key_Up);
    QCOMPARE(m_listener->releases, 1);
}

void tst_OZEditView::otherKeysAreLeftToTheWindow()
{
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_Escape, Qt::Key_Return, Qt::Key_Space}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        static_cast<QObject *>(m_frame)->event(&event);
        QVERIFY(!event.isAccepted());
    }
    QTest::keyClick(m_frame, Qt::Key_A);
    QCOMPARE(m_listener->changes + m_listener->releases, 0);
    QCOMPARE(m_frame->focusPolicy(), Qt::StrongFocus);
}

void tst_OZEditView::paintsTintOutlineAndHandles()
{
    const QImage image = painted();
    QCOMPARE(image.size(), QSize(100, 40));
    // Red 0.5, green 0.5, blue 0.6 at alpha 0.3 over the background.
    const QColor tint = image.pixelColor(30, 20);
    QVERIFY2(std::abs(tint.red() - 38) <= 2 && std::abs(tint.green() - 150) <= 2
                 && std::abs(tint.blue() - 46) <= 2,
             qPrintable(tint.name()));
    // The outline, 3.5 points inside.
    for (const QPoint line : {QPoint(25, 3), QPoint(25, 36), QPoint(3, 12), QPoint(96, 12)})
        QCOMPARE(image.pixelColor(line), QColor(Qt::red));
    // Outside of it, between the handles, there is nothing.
    for (const QPoint border : {QPoint(25, 1), QPoint(25, 38), QPoint(1, 12), QPoint(98, 12)})
        QCOMPARE(image.pixelColor(border), background());
    for (const int x : {3, 50, 96}) {
        for (const int y : {3, 20, 36}) {
            if (x == 50 && y == 20)
                continue;
            QCOMPARE(image.pixelColor(x, y), QColor(Qt::white));
        }
    }
    // Circles: their boxes' corners show what is behind.
    QCOMPARE(image.pixelColor(99, 39), background());
    const QColor rim = image.pixelColor(3, 0);
    QVERIFY2(rim.red() > rim.green() && rim.red() > 100, qPrintable(rim.name()));
    // The inside has no handle.
    QCOMPARE(image.pixelColor(50, 20), tint);
}

void tst_OZEditView::paintsFewerHandlesOnTwentyOnePoints_data()
{
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<bool>("isTopDrawn");
    QTest::addColumn<bool>("isLeftDrawn");
    QTest::newRow("60 x 40") << QSizeF(60, 40) << true << true;
    QTest::newRow("21 wide") << QSizeF(21, 40) << false << true;
    QTest::newRow("21 high") << QSizeF(60, 21) << true << false;
    QTest::newRow("21 x 21") << QSizeF(21, 21) << false << false;
    QTest::newRow("23 x 23") << QSizeF(23, 23) << true << true;
}

void tst_OZEditView::paintsFewerHandlesOnTwentyOnePoints()
{
    QFETCH(QSizeF, size);
    QFETCH(bool, isTopDrawn);
    QFETCH(bool, isLeftDrawn);
    m_frame->setFrameRect(QRectF(QPointF(50, 30), size));
    m_frame->forceRefreshLayout();
    const QImage image = painted();
    const int right = image.width() - 4;
    const int bottom = image.height() - 4;
    const int x = image.width() / 2;
    const int y = image.height() / 2;
    const QColor white(Qt::white);
    QCOMPARE(image.pixelColor(x, 3) == white, isTopDrawn);
    QCOMPARE(image.pixelColor(x, bottom) == white, isTopDrawn);
    QCOMPARE(image.pixelColor(3, y) == white, isLeftDrawn);
    QCOMPARE(image.pixelColor(right, y) == white, isLeftDrawn);
    for (const QPoint corner : {QPoint(3, 3), QPoint(right, 3), QPoint(3, bottom), QPoint(right, bottom)})
        QCOMPARE(image.pixelColor(corner), white);
}

void tst_OZEditView::paintsFractionalFramesWhereTheyAre()
{
    m_frame->setFrameRect(QRectF(50.5, 30, 60, 40));
    m_frame->forceRefreshLayout();
    const QImage image = painted();
    QCOMPARE(image.width(), 61);
    // The outline at 3.5 points is at 4.0 in the widget: half of each pixel beside it.
    const QColor before = image.pixelColor(3, 12);
    const QColor after = image.pixelColor(4, 12);
    QVERIFY(before.red() > 80 && before.red() < 200);
    QVERIFY(after.red() > 80 && after.red() < 200);
}

void tst_OZEditView::showsItsFocus()
{
    const QImage without = painted();
    m_window->activateWindow();
    m_frame->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QTRY_VERIFY(m_frame->hasFocus());
    QVERIFY(painted() != without);
}

LINKLIST_GUI_TEST_MAIN(tst_OZEditView)
#include "tst_OZEditView.moc"
