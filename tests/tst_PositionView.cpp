#include "Classes/Delegate/EditView/OZEditView.h"
#include "Classes/Delegate/EditView/PositionView.h"
#include "platform/NotificationCenter.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QPaintEvent>
#include <QWindow>
#include <cmath>
#include <limits>

namespace
{

struct Owner : PostionViewDelete {
    int changes = 0;
    int releases = 0;
    void onChangePositionView() override { ++changes; }
    void didChangedPositionView() override { ++releases; }
};

// What of a widget was painted since it was last up to date.
class Paints : public QObject
{
public:
    explicit Paints(QWidget *view)
        : m_view(view)
    {
        view->installEventFilter(this);
        clear();
    }

    void clear()
    {
        m_view->repaint();
        areas.clear();
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            areas += static_cast<QPaintEvent *>(event)->region().boundingRect();
        return false;
    }

    QList<QRect> areas;

private:
    QWidget *m_view;
};

void post(const QString &name, QObject *sender)
{
    NotificationCenter::defaultCenter().post(name, sender);
}

} // namespace

class tst_PositionView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startsWithoutABox();
    void copiesAllSixFields();
    void recordIsLive();
    void startingPointIsKeptAsGiven();

    void frameJoinsWithTheFirstBox();
    void frameFollowsTheRecordAndTheSize();
    void marginsWithoutAreaLeaveTheFrameWhereItWas_data();
    void marginsWithoutAreaLeaveTheFrameWhereItWas();
    void paintingNeverPlacesTheFrame();
    void releasePlacesTheFrameByTheRecord();

    void frameBecomesMargins_data();
    void frameBecomesMargins();
    void transparencyAndLayerStay();
    void strangersNotificationsAreIgnored();
    void viewsSideBySideHearTheirOwnFramesAlone();
    void withoutAnOwnerTheRecordFollowsAllTheSame();
    void ownerThatDropsTheViewAtTheReleaseIsSafe();

    void mouseDragMovesTheMarginsAndFinishesOnce();
    void draggingDownPastThePageRecordsAPageOfHeight();
    void arrowKeysMoveTheMargins();

    void changedMarginsRepaintThePicture();
    void transparencyAndLayerRepaintNothing();
    void paintsThePage_data();
    void paintsThePage();
    void paintsTheFrameOverTheBox();
    void hiddenFrameShowsARedBox();
    void withoutABoxOnlyThePageIsPainted();
    void keepsItsDirectionInRightToLeftWindows();

    void damagedMargins_data();
    void damagedMargins();
    void viewWithoutASizeIsHarmless();

private:
    // A point of the view, y-up.
    QPoint at(double x, double y) const
    {
        return m_view->mapTo(m_window.get(), QPoint(int(x), m_view->height() - int(y)));
    }
    void place(double left, double top, double right, double bottom)
    {
        m_view->setPositionRectWithLeft(left, top, right, bottom, 0, 0);
    }
    OZEditView *frame() const { return m_view->objectView(); }
    static QImage painted(QWidget *view);

    std::unique_ptr<QWidget> m_window;
    QPointer<PositionView> m_view;
    Owner m_owner;
};

void tst_PositionView::init()
{
    TestCase::init();
    m_owner = Owner();
    m_window = std::make_unique<QWidget>();
    m_window->resize(300, 200);
    m_window->setFocusPolicy(Qt::StrongFocus);
    m_window->setFocus(); // an active window would give it to the frame
    m_view = new PositionView(m_window.get());
    m_view->setGeometry(20, 10, 200, 100);
    m_view->setOwer(&m_owner);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void tst_PositionView::cleanup()
{
    m_window.reset();
    QVERIFY(!m_view);
}

QImage tst_PositionView::painted(QWidget *view)
{
    QImage image(view->size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    view->render(&image);
    return image;
}

void tst_PositionView::startsWithoutABox()
{
    const PositionRect &rect = m_view->getPositionRect();
    for (const double margin : {rect.left(), rect.top(), rect.right(), rect.bottom()})
        QCOMPARE(margin, 50.0);
    QCOMPARE(rect.transparency(), 0.0);
    QCOMPARE(rect.layer(), 0);
    QVERIFY(frame());
    QVERIFY(!frame()->parentWidget());
    QCOMPARE(painted(m_view).pixelColor(100, 50), m_view->palette().base().color());
    QVERIFY(!frame()->parentWidget());
    QVERIFY(!frame()->isVisible());
    QCOMPARE(m_owner.changes + m_owner.releases, 0);
}

void tst_PositionView::copiesAllSixFields()
{
    PositionRect rect;
    rect.setLeft(1.25);
    rect.setTop(2);
    rect.setRight(3);
    rect.setBottom(4);
    rect.setTransparency(5);
    rect.setLayer(std::numeric_limits<qint64>::max());
    m_view->setPositionRect(rect);
    QVERIFY(m_view->getPositionRect() == rect);
    rect.setLeft(77);
    QCOMPARE(m_view->getPositionRect().left(), 1.25);
    m_view->setPositionRectWithLeft(10, 20, 30, 40, 50, -6);
    const PositionRect &now = m_view->getPositionRect();
    QVERIFY(now.left() == 10 && now.top() == 20 && now.right() == 30 && now.bottom() == 40);
    QVERIFY(now.transparency() == 50 && now.layer() == -6);
    QCOMPARE(m_owner.changes + m_owner.releases, 0);
}

void tst_PositionView::recordIsLive()
{
    PositionRect &record = m_view->getPositionRect();
    place(10, 20, 30, 40);
    QCOMPARE(record.left(), 10.0);
    record.setLeft(11);
    QCOMPARE(m_view->getPositionRect().left(), 11.0);
}

void tst_PositionView::startingPointIsKeptAsGiven()
{
    QCOMPARE(m_view->initPoint(), QPointF(0, 0));
    place(10, 20, 30, 40);
    const PositionRect before = m_view->getPositionRect();
    m_view->setInitPoint({0.1, -1e9});
    QVERIFY(m_view->initPoint().x() == 0.1 && m_view->initPoint().y() == -1e9);
    QVERIFY(m_view->getPositionRect() == before);
    QCOMPARE(frame()->frameRect(), QRectF(20, 40, 120, 40));
}

void tst_PositionView::frameJoinsWithTheFirstBox()
{
    place(60, 10, 40, 10);
    QVERIFY(!frame()->parentWidget());
    place(10, 20, 30, 40);
    QCOMPARE(frame()->parentWidget(), m_view.data());
    QVERIFY(frame()->isVisible());
    QCOMPARE(frame()->frameRect(), QRectF(20, 40, 120, 40));
    QCOMPARE(frame()->geometry(), QRect(20, 20, 120, 40));
    // It stays a child from then on.
    place(60, 10, 40, 10);
    QCOMPARE(frame()->parentWidget(), m_view.data());
}

void tst_PositionView::frameFollowsTheRecordAndTheSize()
{
    place(10, 20, 30, 40);
    m_view->resize(100, 50);
    QCOMPARE(frame()->frameRect(), QRectF(10, 20, 60, 20));
    QCOMPARE(m_view->getPositionRect().left(), 10.0);
    place(33.3, 0, 33.3, 0);
    QCOMPARE(frame()->frameRect(), PositionRect::getObjectFrameWith(m_view->getPositionRect(), {100, 50}));
    QCOMPARE(frame()->frameRect().x(), 33.3 * 100 / 100);
    // Its hit areas, too: the far corner is where it now is.
    QVERIFY(frame()->matchArea(QPointF(20 + 66, 190 - 1)).isValid());
    QCOMPARE(m_owner.changes, 0);
}

void tst_PositionView::marginsWithoutAreaLeaveTheFrameWhereItWas_data()
{
    QTest::addColumn<QList<double>>("margins");
    QTest::newRow("no width") << QList<double>{60, 10, 40, 10};
    QTest::newRow("negative width") << QList<double>{80, 10, 40, 10};
    QTest::newRow("no height") << QList<double>{10, 50, 10, 50};
    QTest::newRow("negative height") << QList<double>{10, 500, 10, 50};
    QTest::newRow("neither") << QList<double>{50, 50, 50, 50};
}

void tst_PositionView::marginsWithoutAreaLeaveTheFrameWhereItWas()
{
    QFETCH(QList<double>, margins);
    place(10, 20, 30, 40);
    place(margins[0], margins[1], margins[2], margins[3]);
    QCOMPARE(frame()->frameRect(), QRectF(20, 40, 120, 40));
    m_view->resize(150, 150);
    painted(m_view);
    QCOMPARE(frame()->frameRect(), QRectF(20, 40, 120, 40));
    QCOMPARE(m_view->getPositionRect().left(), margins[0]);
}

void tst_PositionView::paintingNeverPlacesTheFrame()
{
    place(10, 20, 30, 40);
    frame()->setFrameRect(QRectF(1, 2, 30, 40));
    m_view->repaint();
    painted(m_view);
    painted(m_window.get());
    QCOMPARE(frame()->frameRect(), QRectF(1, 2, 30, 40));
    // Neither does a step of a drag.
    post(EditViewChangeNotification, frame());
    QCOMPARE(frame()->frameRect(), QRectF(1, 2, 30, 40));
    QCOMPARE(m_owner.changes, 1);
}

void tst_PositionView::releasePlacesTheFrameByTheRecord()
{
    place(10, 20, 30, 40);
    frame()->setFrameRect(QRectF(-5, 30, 120, 40));
    post(EditViewChangeNotification, frame());
    QCOMPARE(m_view->getPositionRect().left(), 0.0);
    post(EditViewDidChangedNotification, frame());
    QCOMPARE(frame()->frameRect(), QRectF(0, 30, 120, 40));
    QCOMPARE(m_owner.releases, 1);
}

void tst_PositionView::frameBecomesMargins_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QList<double>>("margins"); // left, top, right, bottom of a page of 200 x 100
    QTest::newRow("within") << QRectF(20, 40, 120, 40) << QList<double>{10, 20, 30, 40};
    QTest::newRow("whole page") << QRectF(0, 0, 200, 100) << QList<double>{0, 0, 0, 0};
    QTest::newRow("past the left is 0") << QRectF(-30, 40, 120, 40) << QList<double>{0, 20, 40, 40};
    QTest::newRow("past the bottom is 0") << QRectF(20, -30, 120, 40) << QList<double>{10, 60, 30, 0};
    QTest::newRow("past the right is negative") << QRectF(100, 40, 120, 40) << QList<double>{50, 20, -10, 40};
    QTest::newRow("past the top is negative") << QRectF(20, 80, 120, 40) << QList<double>{10, -20, 30, 80};
    QTest::newRow("narrower than 15 is 15") << QRectF(20, 40, 3, 40) << QList<double>{10, 20, 82.5, 40};
    QTest::newRow("lower than 15 is 15") << QRectF(20, 40, 120, -3) << QList<double>{10, 45, 30, 40};
    QTest::newRow("wider than the page is the page's width")
        << QRectF(20, 40, 500, 40) << QList<double>{10, 20, -10, 40};
    QTest::newRow("higher than the page is the page's height")
        << QRectF(20, 10, 120, 500) << QList<double>{10, -10, 30, 10};
    QTest::newRow("fractional") << QRectF(0.5, 0.25, 100.5, 50.25) << QList<double>{0.25, 49.5, 49.5, 0.25};
}

void tst_PositionView::frameBecomesMargins()
{
    QFETCH(QRectF, rect);
    QFETCH(QList<double>, margins);
    place(10, 20, 30, 40);
    frame()->setFrameRect(rect);
    post(EditViewChangeNotification, frame());
    const PositionRect &now = m_view->getPositionRect();
    QCOMPARE(now.left(), margins[0]);
    QCOMPARE(now.top(), margins[1]);
    QCOMPARE(now.right(), margins[2]);
    QCOMPARE(now.bottom(), margins[3]);
    QCOMPARE(frame()->frameRect(), rect); // the clamping is the record's alone
    QCOMPARE(m_owner.changes, 1);
    QCOMPARE(m_owner.releases, 0);
}

void tst_PositionView::transparencyAndLayerStay()
{
    m_view->setPositionRectWithLeft(10, 20, 30, 40, 37.25, 9);
    frame()->setFrameRect(QRectF(0, 0, 50, 50));
    post(EditViewChangeNotification, frame());
    post(EditViewDidChangedNotification, frame());
    QCOMPARE(m_view->getPositionRect().transparency(), 37.25);
    QCOMPARE(m_view->getPositionRect().layer(), 9);
}

void tst_PositionView::strangersNotificationsAreIgnored()
{
    place(10, 20, 30, 40);
    OZEditView stranger(QRectF(0, 0, 50, 50));
    for (QObject *sender : {static_cast<QObject *>(&stranger), static_cast<QObject *>(m_view),
                            static_cast<QObject *>(nullptr)}) {
        post(EditViewChangeNotification, sender);
        post(EditViewDidChangedNotification, sender);
    }
    QCOMPARE(m_owner.changes + m_owner.releases, 0);
    QCOMPARE(m_view->getPositionRect().left(), 10.0);
}

void tst_PositionView::viewsSideBySideHearTheirOwnFramesAlone()
{
    place(10, 20, 30, 40);
    Owner neighbour;
    PositionView other;
    other.resize(200, 100);
    other.setOwer(&neighbour);
    other.setPositionRectWithLeft(0, 0, 0, 0, 0, 0);
    QTest::keyClick(frame(), Qt::Key_Left);
    QCOMPARE(m_owner.changes, 1);
    QCOMPARE(m_owner.releases, 1);
    QCOMPARE(neighbour.changes + neighbour.releases, 0);
    QCOMPARE(other.getPositionRect().left(), 0.0);
    QTest::keyClick(other.objectView(), Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(neighbour.changes, 1);
    QCOMPARE(other.getPositionRect().right(), 0.5);
    QCOMPARE(m_owner.changes, 1);
}

void tst_PositionView::withoutAnOwnerTheRecordFollowsAllTheSame()
{
    m_view->setOwer(nullptr);
    place(10, 20, 30, 40);
    QTest::keyClick(frame(), Qt::Key_Left);
    QCOMPARE(m_view->getPositionRect().left(), 9.5);
    QCOMPARE(m_owner.changes + m_owner.releases, 0);
}

void tst_PositionView::ownerThatDropsTheViewAtTheReleaseIsSafe()
{
    struct Dropper : PostionViewDelete {
        PositionView *view = nullptr;
        void onChangePositionView() override { }
        void didChangedPositionView() override { delete view; }
    } dropper;
    dropper.view = m_view;
    m_view->setOwer(&dropper);
    place(10, 20, 30, 40);
    QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, at(80, 60));
    QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, at(80, 60));
    QVERIFY(!m_view);
}

void tst_PositionView::mouseDragMovesTheMarginsAndFinishesOnce()
{
    place(10, 20, 30, 40);
    QWindow *window = m_window->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, {}, at(80, 60));
    for (int step = 1; step <= 50; ++step) {
        QTest::mouseMove(window, at(80 + step, 60 - step % 7));
        QCOMPARE(m_owner.changes, step);
        QCOMPARE(m_view->getPositionRect().left(), 10 + 0.5 * step);
        m_view->repaint();
    }
    QCOMPARE(m_owner.releases, 0);
    QTest::mouseRelease(window, Qt::LeftButton, {}, at(130, 59));
    QCOMPARE(m_owner.releases, 1);
    QCOMPARE(m_view->getPositionRect().left(), 35.0);
    QCOMPARE(m_view->getPositionRect().right(), 5.0);
    QCOMPARE(m_view->getPositionRect().bottom(), 39.0);
    QCOMPARE(frame()->frameRect(), QRectF(70, 39, 120, 40));
}

void tst_PositionView::draggingDownPastThePageRecordsAPageOfHeight()
{
    place(10, 20, 30, 0);
    QWindow *window = m_window->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, {}, at(80, 3));
    // To the page's bottom and back into the handle, over and over: each way down grows the top.
    QTest::mouseMove(window, at(80, 1));
    QCOMPARE(frame()->frameRect(), QRectF(20, 0, 120, 82));
    QCOMPARE(m_view->getPositionRect().top(), 18.0);
    QTest::mouseRelease(window, Qt::LeftButton, {}, at(80, 1));
    frame()->setFrameRect(QRectF(20, 0, 120, 130));
    post(EditViewChangeNotification, frame());
    QCOMPARE(frame()->frameRect().height(), 130.0);
    QCOMPARE(m_view->getPositionRect().top(), 0.0);
    post(EditViewDidChangedNotification, frame());
    QCOMPARE(frame()->frameRect().height(), 100.0);
}

void tst_PositionView::arrowKeysMoveTheMargins()
{
    place(10, 20, 30, 40);
    QTest::keyClick(frame(), Qt::Key_Right);
    QTest::keyClick(frame(), Qt::Key_Up, Qt::ShiftModifier);
    const PositionRect &now = m_view->getPositionRect();
    QCOMPARE(now.left(), 10.5);
    QCOMPARE(now.right(), 29.5);
    QCOMPARE(now.top(), 19.0);
    QCOMPARE(now.bottom(), 40.0);
    QCOMPARE(m_owner.changes, 2);
    QCOMPARE(m_owner.releases, 2);
}

void tst_PositionView::changedMarginsRepaintThePicture()
{
    place(10, 20, 30, 40);
    frame()->hide(); // the picture itself shows the box, and no moved frame uncovers it
    Paints paints(m_view);
    const double changed[][4] = {{11, 20, 30, 40}, {11, 21, 30, 40}, {11, 21, 31, 40}, {11, 21, 31, 41}};
    for (const auto &margins : changed) {
        place(margins[0], margins[1], margins[2], margins[3]);
        QTRY_COMPARE(paints.areas, QList<QRect>{m_view->rect()});
        paints.clear();
    }
    PositionRect rect;
    m_view->setPositionRect(rect);
    QTRY_COMPARE(paints.areas, QList<QRect>{m_view->rect()});
}

void tst_PositionView::transparencyAndLayerRepaintNothing()
{
    place(10, 20, 30, 40);
    frame()->hide();
    Paints paints(m_view);
    m_view->setPositionRectWithLeft(10, 20, 30, 40, 50, 1);
    // Had the view been due, it would be painted with this corner.
    const QRect corner(0, 0, 1, 1);
    m_view->update(corner);
    QTRY_COMPARE(paints.areas, QList<QRect>{corner});
}

void tst_PositionView::paintsThePage_data()
{
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QColor>("outline");
    QTest::newRow("the system's") << QColor() << QColor();
    QTest::newRow("chosen") << QColor(10, 200, 30) << QColor(0, 0, 250);
}

void tst_PositionView::paintsThePage()
{
    QFETCH(QColor, fill);
    QFETCH(QColor, outline);
    m_view->setFillColor(fill);
    m_view->setOutlineColor(outline);
    QCOMPARE(m_view->fillColor(), fill);
    QCOMPARE(m_view->outlineColor(), outline);
    const QImage image = painted(m_view);
    const QColor line = outline.isValid() ? outline : QColor(Qt::gray);
    const QColor page = fill.isValid() ? fill : m_view->palette().base().color();
    for (const QPoint edge : {QPoint(0, 50), QPoint(199, 50), QPoint(100, 0), QPoint(100, 99)})
        QCOMPARE(image.pixelColor(edge), line);
    for (const QPoint inner : {QPoint(1, 50), QPoint(198, 50), QPoint(100, 1), QPoint(100, 98)})
        QCOMPARE(image.pixelColor(inner), page);
}

void tst_PositionView::paintsTheFrameOverTheBox()
{
    m_view->setFillColor(QColor(0, 160, 0));
    place(10, 20, 30, 40);
    const QImage image = painted(m_view);
    QVERIFY(image.pixelColor(60, 30).blue() > 30); // tinted
    QCOMPARE(image.pixelColor(23, 23), QColor(Qt::white)); // the top-left handle
    QCOMPARE(image.pixelColor(136, 56), QColor(Qt::white)); // the bottom-right one
    QCOMPARE(image.pixelColor(15, 30), QColor(0, 160, 0));
    QCOMPARE(image.pixelColor(145, 30), QColor(0, 160, 0));
}

void tst_PositionView::hiddenFrameShowsARedBox()
{
    place(10, 20, 30, 40);
    frame()->hide();
    QImage image = painted(m_view);
    const auto isLine = [&image](int x, int y) { return image.pixelColor(x, y).red() < 160; };
    QCOMPARE(image.pixelColor(80, 40), QColor(Qt::red));
    QCOMPARE(image.pixelColor(22, 22), QColor(Qt::red));
    QVERIFY(isLine(20, 40) && isLine(140, 40) && isLine(80, 20) && isLine(80, 60));
    QCOMPARE(image.pixelColor(17, 40), m_view->palette().base().color());
    // A changed record moves the red box and leaves the hidden frame.
    place(50, 0, 0, 0);
    image = painted(m_view);
    QCOMPARE(image.pixelColor(150, 50), QColor(Qt::red));
    QCOMPARE(frame()->frameRect(), QRectF(20, 40, 120, 40));
    QVERIFY(frame()->isHidden());
}

void tst_PositionView::withoutABoxOnlyThePageIsPainted()
{
    place(10, 20, 30, 40);
    frame()->hide();
    place(60, 20, 40, 40);
    const QImage image = painted(m_view);
    for (int x = 2; x < 198; ++x)
        QCOMPARE(image.pixelColor(x, 40), m_view->palette().base().color());
}

void tst_PositionView::keepsItsDirectionInRightToLeftWindows()
{
    m_window->setLayoutDirection(Qt::RightToLeft);
    place(10, 20, 30, 40);
    QCOMPARE(frame()->geometry().x(), 20);
    QCOMPARE(m_view->layoutDirection(), Qt::LeftToRight);
}

void tst_PositionView::damagedMargins_data()
{
    QTest::addColumn<QList<double>>("margins");
    QTest::addColumn<bool>("isPlaced");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const double most = std::numeric_limits<double>::max();
    QTest::newRow("no numbers") << QList<double>{nan, nan, nan, nan} << false;
    QTest::newRow("one no number") << QList<double>{10, nan, 10, 10} << false;
    QTest::newRow("left endless") << QList<double>{inf, 0, 0, 0} << false;
    QTest::newRow("left endless to the left") << QList<double>{-inf, 0, 0, 0} << false;
    QTest::newRow("all endless outward") << QList<double>{-inf, -inf, -inf, -inf} << false;
    QTest::newRow("huge") << QList<double>{most, most, most, most} << false;
    QTest::newRow("huge outward") << QList<double>{-most, -most, -most, -most} << false;
    QTest::newRow("the largest of a file") << QList<double>{3.4e38, 0, -3.4e38, 0} << false;
    QTest::newRow("the largest of a file, outward")
        << QList<double>{-3.4e38, -3.4e38, -3.4e38, -3.4e38} << true;
    QTest::newRow("a box far off") << QList<double>{1e9, 0, -2e9, 0} << true;
    QTest::newRow("a very large box") << QList<double>{-1e6, -1e6, -1e6, -1e6} << true;
}

void tst_PositionView::damagedMargins()
{
    QFETCH(QList<double>, margins);
    QFETCH(bool, isPlaced);
    place(10, 20, 30, 40);
    const QRectF before = frame()->frameRect();
    place(margins[0], margins[1], margins[2], margins[3]);
    QCOMPARE(frame()->frameRect() != before, isPlaced);
    QCOMPARE(painted(m_view).size(), QSize(200, 100));
    frame()->hide();
    QCOMPARE(painted(m_view).size(), QSize(200, 100));
    frame()->show();
    m_view->resize(150, 80);
    painted(m_view);
    // A person can still take the frame and bring it back.
    QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, at(80, 40));
    QTest::mouseMove(m_window->windowHandle(), at(85, 45));
    QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, at(85, 45));
    QTest::keyClick(frame(), Qt::Key_Left);
    const PositionRect &now = m_view->getPositionRect();
    for (const double margin : {now.left(), now.top(), now.right(), now.bottom()})
        QVERIFY2(std::isfinite(margin) && margin <= 100, qPrintable(QString::number(margin)));
}

void tst_PositionView::viewWithoutASizeIsHarmless()
{
    auto *empty = new PositionView(m_window.get());
    empty->setOwer(&m_owner);
    empty->show();
    for (const QSize size : {QSize(0, 0), QSize(0, 100), QSize(200, 0)}) {
        empty->resize(size);
        empty->setPositionRectWithLeft(10, 20, 30, 40, 0, 0);
        painted(m_window.get());
        QVERIFY(!empty->objectView()->parentWidget());
        post(EditViewChangeNotification, empty->objectView());
        QCOMPARE(empty->getPositionRect().left(), 10.0);
    }
    QCOMPARE(m_owner.changes, 0);
    empty->resize(200, 100);
    QVERIFY(empty->objectView()->parentWidget());
    QCOMPARE(empty->objectView()->frameRect(), QRectF(20, 40, 120, 40));
}

LINKLIST_GUI_TEST_MAIN(tst_PositionView)
#include "tst_PositionView.moc"
