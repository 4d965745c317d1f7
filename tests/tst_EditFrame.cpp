#include "Classes/Delegate/EditView/EditFrame.h"
#include "tests/support/TestCase.h"

#include <QRandomGenerator>
#include <cmath>
#include <limits>
#include <numeric>
#include <set>

Q_DECLARE_METATYPE(EditFrame::MouseType)

namespace
{

using Type = EditFrame::MouseType;

constexpr QSizeF page(200, 100);

// QRectF compares with a tolerance; nothing here may be off by anything.
bool isSame(const QRectF &a, const QRectF &b)
{
    return a.x() == b.x() && a.y() == b.y() && a.width() == b.width() && a.height() == b.height();
}

QByteArray told(const QRectF &rect)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(rect.x(), 0, 'g', 17)
        .arg(rect.y(), 0, 'g', 17)
        .arg(rect.width(), 0, 'g', 17)
        .arg(rect.height(), 0, 'g', 17)
        .toLatin1();
}

#define COMPARE_RECT(actual, expected)                                                                       \
    QVERIFY2(isSame(actual, expected), told(actual) + " instead of " + told(expected))

EditFrame framed(const QRectF &rect)
{
    EditFrame frame;
    frame.setFrame(rect);
    frame.forceRefreshLayout();
    return frame;
}

// A second way to tell the same rules, by the four sides instead of origin and size: a size below 0 is a far
// side that lies before the near one.
struct Sides {
    double left, bottom, right, top;

    explicit Sides(const QRectF &rect)
        : left(rect.x())
        , bottom(rect.y())
        , right(rect.x() + rect.width())
        , top(rect.y() + rect.height())
    {
    }
    QRectF rect() const { return {left, bottom, right - left, top - bottom}; }

    void shiftLeftTo(double x)
    {
        right += x - left;
        left = x;
    }
    void shiftBottomTo(double y)
    {
        top += y - bottom;
        bottom = y;
    }

    void dragLeft(double dx, const QSizeF &bounds)
    {
        if (dx <= 0) {
            left = std::max(left + dx, 0.0);
            return;
        }
        left = std::min(left + dx, right);
        if (left > bounds.width() - 15)
            shiftLeftTo(bounds.width() - 15);
    }
    void dragRight(double dx, const QSizeF &frame)
    {
        right += dx;
        right = dx > 0 ? std::min(right, frame.width()) : std::max(right, left);
    }
    void dragTop(double dy, const QSizeF &frame, const QSizeF &bounds)
    {
        top += dy;
        if (dy <= 0) {
            top = std::max(top, bottom);
            return;
        }
        top = std::min(top, frame.height());
        if (bottom > bounds.height() - 15)
            shiftBottomTo(bounds.height() - 15);
    }
    void dragBottom(double dy, const QSizeF &bounds)
    {
        bottom += dy;
        if (dy <= 0) {
            if (bottom < 0)
                shiftBottomTo(0);
            return;
        }
        bottom = std::min(bottom, top);
        if (bottom > bounds.height() - 15)
            shiftBottomTo(bounds.height() - 15);
    }
    void move(double dx, double dy, const QSizeF &frame)
    {
        shiftLeftTo(left + dx);
        shiftBottomTo(bottom + dy);
        shiftLeftTo(std::max(left - std::max(right - frame.width(), 0.0), 0.0));
        shiftBottomTo(std::max(bottom - std::max(top - frame.height(), 0.0), 0.0));
    }
    void limit(const QSizeF &frame)
    {
        if (left < 0)
            shiftLeftTo(0);
        if (bottom < 0)
            shiftBottomTo(0);
        right = std::max(right, left + 15);
        top = std::max(top, bottom + 15);
        if (left > frame.width() - 15) {
            left = frame.width() - 15;
            right = frame.width();
        }
        if (bottom > frame.height()) {
            bottom = frame.height() - 15;
            top = frame.height();
        }
    }
};

QRectF secondModel(Type type, const QRectF &rect, const QPointF &delta, const QSizeF &frame,
                   const QSizeF &bounds)
{
    static const std::set<Type> lefts{Type::LeftEdge, Type::TopLeft, Type::BottomLeft};
    static const std::set<Type> rights{Type::RightEdge, Type::TopRight, Type::BottomRight};
    static const std::set<Type> tops{Type::TopEdge, Type::TopLeft, Type::TopRight};
    static const std::set<Type> bottoms{Type::BottomEdge, Type::BottomLeft, Type::BottomRight};
    Sides sides(rect);
    if (type == Type::Inside)
        sides.move(delta.x(), delta.y(), frame);
    if (lefts.count(type))
        sides.dragLeft(delta.x(), bounds);
    if (rights.count(type))
        sides.dragRight(delta.x(), frame);
    if (tops.count(type))
        sides.dragTop(delta.y(), frame, bounds);
    if (bottoms.count(type))
        sides.dragBottom(delta.y(), bounds);
    sides.limit(frame);
    return sides.rect();
}

} // namespace

class tst_EditFrame : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void frameSmallerThanFifteenIsEnlargedAtCreation_data();
    void frameSmallerThanFifteenIsEnlargedAtCreation();
    void setFrameTakesTheRectangleAndLeavesTheAreas();

    void nineAreas_data();
    void nineAreas();
    void areasIgnoreTheOriginAndTakeTheBoxSize();

    void mouseTypeForArea_data();
    void mouseTypeForArea();
    void everyAreaStandsForItsOwnType_data();
    void everyAreaStandsForItsOwnType();
    void onTwentyOnePointsWideTopAndBottomHandlesMove();
    void onTwentyOnePointsHighLeftAndRightHandlesKeepTheirTypes();
    void typesGoByTheLiteralSevenNotByTheBoxSize();

    void rectanglesAreHalfOpen_data();
    void rectanglesAreHalfOpen();
    void matchArea_data();
    void matchArea();
    void noMatchIsAnAllZeroRectangle();
    void onSmallFramesTheEarlierAreaWins_data();
    void onSmallFramesTheEarlierAreaWins();

    void dragStep_data();
    void dragStep();
    void eachRuleReadsTheParentSizeItNames_data();
    void eachRuleReadsTheParentSizeItNames();
    void dragOfNoneChangesNothing();
    void dragRebuildsTheAreas();
    void nothingIsRounded();

    void randomDragsStayInsideAndFollowTheSecondModel_data();
    void randomDragsStayInsideAndFollowTheSecondModel();
};

void tst_EditFrame::frameSmallerThanFifteenIsEnlargedAtCreation_data()
{
    QTest::addColumn<QRectF>("given");
    QTest::addColumn<QRectF>("expected");
    QTest::newRow("zero") << QRectF() << QRectF(0, 0, 15, 15);
    QTest::newRow("flat") << QRectF(3, 4, 20, 14.9) << QRectF(3, 4, 20, 15);
    QTest::newRow("narrow") << QRectF(3, 4, 14.9, 20) << QRectF(3, 4, 15, 20);
    QTest::newRow("exactly 15") << QRectF(3, 4, 15, 15) << QRectF(3, 4, 15, 15);
    QTest::newRow("negative") << QRectF(3, 4, -20, -30) << QRectF(3, 4, 15, 15);
    QTest::newRow("large enough") << QRectF(0.5, 0.25, 15.125, 99) << QRectF(0.5, 0.25, 15.125, 99);
}

void tst_EditFrame::frameSmallerThanFifteenIsEnlargedAtCreation()
{
    QFETCH(QRectF, given);
    QFETCH(QRectF, expected);
    const EditFrame frame(given);
    COMPARE_RECT(frame.frame(), expected);
    QCOMPARE(frame.areas(), framed(expected).areas());
}

void tst_EditFrame::setFrameTakesTheRectangleAndLeavesTheAreas()
{
    EditFrame frame(QRectF(0, 0, 50, 40));
    frame.forceRefreshLayout();
    const auto before = frame.areas();
    frame.setFrame(QRectF(-1, -2, 3, 4));
    COMPARE_RECT(frame.frame(), QRectF(-1, -2, 3, 4));
    QVERIFY(std::equal(before.begin(), before.end(), frame.areas().begin(), isSame));
}

void tst_EditFrame::nineAreas_data()
{
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<QList<QRectF>>("expected");
    QTest::newRow("100 x 60") << QSizeF(100, 60)
                              << QList<QRectF>{{7, 7, 86, 46},   {0, 26.5, 7, 7}, {93, 26.5, 7, 7},
                                               {46.5, 53, 7, 7}, {46.5, 0, 7, 7}, {0, 53, 7, 7},
                                               {93, 53, 7, 7},   {0, 0, 7, 7},    {93, 0, 7, 7}};
    QTest::newRow("21 x 21") << QSizeF(21, 21) << QList<QRectF>{{7, 7, 7, 7},   {0, 7, 7, 7}, {14, 7, 7, 7},
                                                                {7, 14, 7, 7},  {7, 0, 7, 7}, {0, 14, 7, 7},
                                                                {14, 14, 7, 7}, {0, 0, 7, 7}, {14, 0, 7, 7}};
    QTest::newRow("15 x 15") << QSizeF(15, 15) << QList<QRectF>{{7, 7, 1, 1}, {0, 4, 7, 7}, {8, 4, 7, 7},
                                                                {4, 8, 7, 7}, {4, 0, 7, 7}, {0, 8, 7, 7},
                                                                {8, 8, 7, 7}, {0, 0, 7, 7}, {8, 0, 7, 7}};
    QTest::newRow("fractional") << QSizeF(30.25, 16.5)
                                << QList<QRectF>{{7, 7, 16.25, 2.5},  {0, 4.75, 7, 7},   {23.25, 4.75, 7, 7},
                                                 {11.625, 9.5, 7, 7}, {11.625, 0, 7, 7}, {0, 9.5, 7, 7},
                                                 {23.25, 9.5, 7, 7},  {0, 0, 7, 7},      {23.25, 0, 7, 7}};
}

void tst_EditFrame::nineAreas()
{
    QFETCH(QSizeF, size);
    QFETCH(QList<QRectF>, expected);
    const EditFrame frame = framed(QRectF(QPointF(12, 34), size));
    QCOMPARE(expected.size(), qsizetype(frame.areas().size()));
    for (qsizetype i = 0; i < expected.size(); ++i)
        COMPARE_RECT(frame.areas()[size_t(i)], expected[i]);
}

void tst_EditFrame::areasIgnoreTheOriginAndTakeTheBoxSize()
{
    EditFrame frame(QRectF(0, 0, 90, 90));
    frame.refreshArea(QRectF(-1000, 500, 40, 30), 4);
    COMPARE_RECT(frame.areas()[0], QRectF(4, 4, 32, 22));
    COMPARE_RECT(frame.areas()[1], QRectF(0, 13, 4, 4));
    COMPARE_RECT(frame.areas()[6], QRectF(36, 26, 4, 4));
    COMPARE_RECT(frame.frame(), QRectF(0, 0, 90, 90));
}

void tst_EditFrame::mouseTypeForArea_data()
{
    QTest::addColumn<QRectF>("area");
    QTest::addColumn<Type>("expected");
    // In a frame of 100 x 60.
    QTest::newRow("x is 7: inside") << QRectF(7, 7, 86, 46) << Type::Inside;
    QTest::newRow("x is 7: inside whatever the rest is") << QRectF(7, -3, 1, 0) << Type::Inside;
    QTest::newRow("all zero") << QRectF() << Type::None;
    QTest::newRow("width a little more than 7") << QRectF(0, 0, 7.001, 7) << Type::None;
    QTest::newRow("width a little less than 7") << QRectF(0, 0, 6.999, 7) << Type::None;
    QTest::newRow("height does not matter") << QRectF(0, 0, 7, 1) << Type::BottomLeft;
    QTest::newRow("x a little more than 7") << QRectF(7.001, 7, 7, 7) << Type::TopEdge;
    QTest::newRow("x 0, y 0") << QRectF(0, 0, 7, 7) << Type::BottomLeft;
    QTest::newRow("x 0, y just below half") << QRectF(0, 29.999, 7, 7) << Type::LeftEdge;
    QTest::newRow("x 0, y half") << QRectF(0, 30, 7, 7) << Type::TopLeft;
    QTest::newRow("x 0, y just above 0") << QRectF(0, 0.001, 7, 7) << Type::LeftEdge;
    QTest::newRow("x below half, y 0") << QRectF(49.999, 0, 7, 7) << Type::BottomEdge;
    QTest::newRow("x below half, y not 0") << QRectF(49.999, 1, 7, 7) << Type::TopEdge;
    QTest::newRow("x below 0, y 0") << QRectF(-1, 0, 7, 7) << Type::BottomEdge;
    QTest::newRow("x half, y 0") << QRectF(50, 0, 7, 7) << Type::BottomRight;
    QTest::newRow("x half, y below half") << QRectF(50, 29.999, 7, 7) << Type::RightEdge;
    QTest::newRow("x half, y half") << QRectF(50, 30, 7, 7) << Type::TopRight;
}

void tst_EditFrame::mouseTypeForArea()
{
    QFETCH(QRectF, area);
    QFETCH(Type, expected);
    QCOMPARE(framed(QRectF(5, 5, 100, 60)).mouseTypeForArea(area), expected);
}

void tst_EditFrame::everyAreaStandsForItsOwnType_data()
{
    QTest::addColumn<QSizeF>("size");
    const double sides[] = {15, 15.5, 20, 20.999, 21.001, 22, 28, 100, 1234.567};
    for (const double width : sides) {
        for (const double height : sides)
            QTest::addRow("%g x %g", width, height) << QSizeF(width, height);
    }
}

void tst_EditFrame::everyAreaStandsForItsOwnType()
{
    QFETCH(QSizeF, size);
    const EditFrame frame = framed(QRectF(QPointF(3, 4), size));
    for (size_t i = 0; i < frame.areas().size(); ++i)
        QCOMPARE(qint64(frame.mouseTypeForArea(frame.areas()[i])), qint64(i + 1));
}

void tst_EditFrame::onTwentyOnePointsWideTopAndBottomHandlesMove()
{
    const EditFrame frame = framed(QRectF(0, 0, 21, 40));
    const Type expected[] = {Type::Inside,  Type::LeftEdge, Type::RightEdge,  Type::Inside,     Type::Inside,
                             Type::TopLeft, Type::TopRight, Type::BottomLeft, Type::BottomRight};
    for (size_t i = 0; i < frame.areas().size(); ++i)
        QCOMPARE(frame.mouseTypeForArea(frame.areas()[i]), expected[i]);
}

void tst_EditFrame::onTwentyOnePointsHighLeftAndRightHandlesKeepTheirTypes()
{
    const EditFrame frame = framed(QRectF(0, 0, 40, 21));
    for (size_t i = 0; i < frame.areas().size(); ++i)
        QCOMPARE(qint64(frame.mouseTypeForArea(frame.areas()[i])), qint64(i + 1));
    COMPARE_RECT(frame.areas()[1], QRectF(0, 7, 7, 7));
}

void tst_EditFrame::typesGoByTheLiteralSevenNotByTheBoxSize()
{
    EditFrame frame(QRectF(0, 0, 60, 40));
    frame.refreshArea(frame.frame(), 5);
    for (const QRectF &area : frame.areas())
        QCOMPARE(frame.mouseTypeForArea(area), Type::None);
    // Its inside is 7 points wide and begins in the left half.
    EditFrame narrow(QRectF(0, 0, 17, 40));
    narrow.refreshArea(narrow.frame(), 5);
    QCOMPARE(narrow.mouseTypeForArea(narrow.areas()[0]), Type::TopEdge);
}

void tst_EditFrame::rectanglesAreHalfOpen_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<bool>("expected");
    const QRectF rect(10, 20, 7, 5);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("middle") << rect << QPointF(12, 22) << true;
    QTest::newRow("near corner") << rect << QPointF(10, 20) << true;
    QTest::newRow("before the near x") << rect << QPointF(std::nextafter(10.0, 0.0), 20) << false;
    QTest::newRow("before the near y") << rect << QPointF(10, std::nextafter(20.0, 0.0)) << false;
    QTest::newRow("far x") << rect << QPointF(17, 22) << false;
    QTest::newRow("far y") << rect << QPointF(12, 25) << false;
    QTest::newRow("just inside the far corner")
        << rect << QPointF(std::nextafter(17.0, 0.0), std::nextafter(25.0, 0.0)) << true;
    QTest::newRow("empty holds nothing") << QRectF(1, 1, 0, 0) << QPointF(1, 1) << false;
    QTest::newRow("without width holds nothing") << QRectF(1, 1, 0, 5) << QPointF(1, 2) << false;
    QTest::newRow("negative holds nothing") << QRectF(5, 5, -5, -5) << QPointF(3, 3) << false;
    QTest::newRow("no number is nowhere") << rect << QPointF(nan, 22) << false;
    QTest::newRow("no number holds nothing") << QRectF(nan, 20, 7, 5) << QPointF(12, 22) << false;
}

void tst_EditFrame::rectanglesAreHalfOpen()
{
    QFETCH(QRectF, rect);
    QFETCH(QPointF, point);
    QFETCH(bool, expected);
    QCOMPARE(EditFrame::contains(rect, point), expected);
}

void tst_EditFrame::matchArea_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<int>("area"); // 1 to 9, 0 for none
    // In a frame of 100 x 60.
    QTest::newRow("inside") << QPointF(50, 30) << 1;
    QTest::newRow("inside's near corner") << QPointF(7, 7) << 1;
    QTest::newRow("inside's far x") << QPointF(93, 20) << 0;
    QTest::newRow("left") << QPointF(3, 30) << 2;
    QTest::newRow("left's near y") << QPointF(0, 26.5) << 2;
    QTest::newRow("left's far y") << QPointF(0, 33.5) << 0;
    QTest::newRow("left's far x is the inside's near x") << QPointF(7, 30) << 1;
    QTest::newRow("right") << QPointF(93, 26.5) << 3;
    QTest::newRow("right's far x") << QPointF(100, 30) << 0;
    QTest::newRow("top") << QPointF(50, 53) << 4;
    QTest::newRow("top's far y") << QPointF(50, 60) << 0;
    QTest::newRow("bottom") << QPointF(50, 0) << 5;
    QTest::newRow("top-left") << QPointF(0, 53) << 6;
    QTest::newRow("top-right") << QPointF(99.999, 59.999) << 7;
    QTest::newRow("bottom-left") << QPointF(0, 0) << 8;
    QTest::newRow("bottom-right") << QPointF(93, 6.999) << 9;
    QTest::newRow("the border between two handles") << QPointF(20, 3) << 0;
    QTest::newRow("the border at the left") << QPointF(3, 20) << 0;
    QTest::newRow("outside to the left") << QPointF(-0.001, 30) << 0;
    QTest::newRow("outside below") << QPointF(50, -0.001) << 0;
}

void tst_EditFrame::matchArea()
{
    QFETCH(QPointF, point);
    QFETCH(int, area);
    const EditFrame frame = framed(QRectF(1000, 2000, 100, 60));
    COMPARE_RECT(frame.matchArea(point), area == 0 ? QRectF() : frame.areas()[size_t(area - 1)]);
    QCOMPARE(frame.isMatchArea(point), area != 0);
}

void tst_EditFrame::noMatchIsAnAllZeroRectangle()
{
    const EditFrame frame = framed(QRectF(0, 0, 100, 60));
    COMPARE_RECT(frame.matchArea(QPointF(-5, -5)), QRectF(0, 0, 0, 0));
    QCOMPARE(frame.mouseTypeForArea(frame.matchArea(QPointF(-5, -5))), Type::None);
}

void tst_EditFrame::onSmallFramesTheEarlierAreaWins_data()
{
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<int>("area");
    const QSizeF least(15, 15);
    QTest::newRow("the one inside point") << least << QPointF(7.5, 7.5) << 1;
    QTest::newRow("left before top-left") << least << QPointF(1, 10) << 2;
    QTest::newRow("left before bottom-left") << least << QPointF(1, 4) << 2;
    QTest::newRow("left before top and corner") << least << QPointF(5, 9) << 2;
    QTest::newRow("right before top-right") << least << QPointF(14, 10.999) << 3;
    QTest::newRow("right before bottom-right") << least << QPointF(14, 6) << 3;
    QTest::newRow("top before top-left") << least << QPointF(5, 11) << 4;
    QTest::newRow("top before top-right") << least << QPointF(10, 12) << 4;
    QTest::newRow("bottom before bottom-left") << least << QPointF(4, 1) << 5;
    QTest::newRow("bottom before bottom-right") << least << QPointF(10.999, 3) << 5;
    QTest::newRow("top-left's rest") << least << QPointF(3.999, 11) << 6;
    QTest::newRow("top-right's rest") << least << QPointF(11, 11) << 7;
    QTest::newRow("bottom-left's rest") << least << QPointF(3.999, 3.999) << 8;
    QTest::newRow("bottom-right's rest") << least << QPointF(11, 3.999) << 9;
    QTest::newRow("no overlap at 21 points high: corner") << QSizeF(60, 21) << QPointF(1, 14) << 6;
    QTest::newRow("no overlap at 21 points high: edge") << QSizeF(60, 21) << QPointF(1, 13.999) << 2;
    QTest::newRow("overlap just below 21 points") << QSizeF(60, 20.5) << QPointF(1, 13.6) << 2;
}

void tst_EditFrame::onSmallFramesTheEarlierAreaWins()
{
    QFETCH(QSizeF, size);
    QFETCH(QPointF, point);
    QFETCH(int, area);
    const EditFrame frame = framed(QRectF(QPointF(0, 0), size));
    COMPARE_RECT(frame.matchArea(point), frame.areas()[size_t(area - 1)]);
}

void tst_EditFrame::dragStep_data()
{
    QTest::addColumn<Type>("type");
    QTest::addColumn<QRectF>("from");
    QTest::addColumn<QPointF>("delta");
    QTest::addColumn<QRectF>("to");
    const auto row = [](const char *name, Type type, const QRectF &from, double dx, double dy,
                        const QRectF &to) { QTest::newRow(name) << type << from << QPointF(dx, dy) << to; };
    const QRectF box(50, 30, 40, 20); // in a page of 200 x 100
    const QRectF wide(100, 30, 200, 20); // sticks out at the right
    const QRectF tall(50, 60, 40, 80); // sticks out at the top

    row("move: anywhere", Type::Inside, box, 10, -5, {60, 25, 40, 20});
    row("move: by fractions", Type::Inside, box, 0.25, 0.125, {50.25, 30.125, 40, 20});
    row("move: by nothing", Type::Inside, box, 0, 0, box);
    row("move: past the right stops flush", Type::Inside, box, 500, 0, {160, 30, 40, 20});
    row("move: exactly flush with the right", Type::Inside, box, 110, 0, {160, 30, 40, 20});
    row("move: past the top stops flush", Type::Inside, box, 0, 500, {50, 80, 40, 20});
    row("move: past the left stops at 0", Type::Inside, box, -500, 0, {0, 30, 40, 20});
    row("move: past the bottom stops at 0", Type::Inside, box, 0, -500, {50, 0, 40, 20});
    row("move: into the far corner", Type::Inside, box, 500, 500, {160, 80, 40, 20});
    row("move: into the near corner", Type::Inside, box, -500, -500, {0, 0, 40, 20});
    row("move: larger than the page keeps the lower-left corner", Type::Inside, {0, 0, 300, 150}, 10, 10,
        {0, 0, 300, 150});
    row("move: a frame that sticks out is pushed back", Type::Inside, wide, 0, 0, {0, 30, 200, 20});
    row("move: the least frame reaches the right", Type::Inside, {50, 30, 15, 15}, 500, 0, {185, 30, 15, 15});

    row("left: inward", Type::LeftEdge, box, 10, 0, {60, 30, 30, 20});
    row("left: outward", Type::LeftEdge, box, -10, 0, {40, 30, 50, 20});
    row("left: by nothing", Type::LeftEdge, box, 0, 0, box);
    row("left: dy does not matter", Type::LeftEdge, box, 10, 77, {60, 30, 30, 20});
    row("left: under the least width pushes the right side on", Type::LeftEdge, box, 30, 0, {80, 30, 15, 20});
    row("left: by exactly the width", Type::LeftEdge, box, 40, 0, {90, 30, 15, 20});
    row("left: by more than the width moves x by the full width", Type::LeftEdge, box, 100, 0,
        {90, 30, 15, 20});
    row("left: to 0", Type::LeftEdge, box, -50, 0, {0, 30, 90, 20});
    row("left: past the left keeps the right side", Type::LeftEdge, box, -1000, 0, {0, 30, 90, 20});
    row("left: stops 15 points before the right", Type::LeftEdge, {150, 30, 50, 20}, 40, 0,
        {185, 30, 15, 20});
    row("left: stopped so, the width stays shrunk", Type::LeftEdge, wide, 90, 0, {185, 30, 110, 20});
    row("left: the least frame at the right", Type::LeftEdge, {185, 30, 15, 20}, 5, 0, {185, 30, 15, 20});

    row("right: outward", Type::RightEdge, box, 10, 0, {50, 30, 50, 20});
    row("right: inward", Type::RightEdge, box, -10, 0, {50, 30, 30, 20});
    row("right: by nothing", Type::RightEdge, box, 0, 0, box);
    row("right: dy does not matter", Type::RightEdge, box, 10, -77, {50, 30, 50, 20});
    row("right: under the least width", Type::RightEdge, box, -30, 0, {50, 30, 15, 20});
    row("right: past the left side", Type::RightEdge, box, -1000, 0, {50, 30, 15, 20});
    row("right: past the right stops the width there", Type::RightEdge, box, 1000, 0, {50, 30, 150, 20});
    row("right: exactly to the right", Type::RightEdge, box, 110, 0, {50, 30, 150, 20});
    row("right: sticking out and outward comes back", Type::RightEdge, wide, 1, 0, {100, 30, 100, 20});
    row("right: sticking out and inward stays out", Type::RightEdge, wide, -1, 0, {100, 30, 199, 20});
    row("right: sticking out and not moved stays out", Type::RightEdge, wide, 0, 0, wide);
    row("right: begun past the page", Type::RightEdge, {250, 30, 15, 20}, 5, 0, {185, 30, 15, 20});

    row("top: outward", Type::TopEdge, box, 0, 10, {50, 30, 40, 30});
    row("top: inward", Type::TopEdge, box, 0, -3, {50, 30, 40, 17});
    row("top: by nothing", Type::TopEdge, box, 0, 0, box);
    row("top: dx does not matter", Type::TopEdge, box, 77, 10, {50, 30, 40, 30});
    row("top: under the least height", Type::TopEdge, box, 0, -10, {50, 30, 40, 15});
    row("top: past the bottom side", Type::TopEdge, box, 0, -1000, {50, 30, 40, 15});
    row("top: past the top stops the height there", Type::TopEdge, box, 0, 1000, {50, 30, 40, 70});
    row("top: sticking out and upward comes back", Type::TopEdge, tall, 0, 1, {50, 60, 40, 40});
    row("top: sticking out and downward stays out", Type::TopEdge, tall, 0, -1, {50, 60, 40, 79});
    row("top: sticking out and not moved stays out", Type::TopEdge, tall, 0, 0, tall);
    row("top: upward with y in the last 15 points moves y down", Type::TopEdge, {50, 90, 40, 20}, 0, 1,
        {50, 85, 40, 15});
    row("top: downward with y in the last 15 points leaves y", Type::TopEdge, {50, 90, 40, 20}, 0, -1,
        {50, 90, 40, 19});

    row("bottom: inward", Type::BottomEdge, box, 0, 3, {50, 33, 40, 17});
    row("bottom: outward", Type::BottomEdge, box, 0, -10, {50, 20, 40, 30});
    row("bottom: by nothing", Type::BottomEdge, box, 0, 0, box);
    row("bottom: dx does not matter", Type::BottomEdge, box, -77, -10, {50, 20, 40, 30});
    row("bottom: under the least height pushes the top on", Type::BottomEdge, box, 0, 10, {50, 40, 40, 15});
    row("bottom: by exactly the height", Type::BottomEdge, box, 0, 20, {50, 50, 40, 15});
    row("bottom: by more than the height stops at the top", Type::BottomEdge, box, 0, 1000, {50, 50, 40, 15});
    row("bottom: stops 15 points before the top", Type::BottomEdge, {50, 60, 40, 40}, 0, 30,
        {50, 85, 40, 15});
    row("bottom: stopped so, the height stays shrunk", Type::BottomEdge, tall, 0, 30, {50, 85, 40, 50});
    row("bottom: exactly to 0", Type::BottomEdge, box, 0, -30, {50, 0, 40, 50});
    row("bottom: past the bottom grows by the whole movement", Type::BottomEdge, box, 0, -50,
        {50, 0, 40, 70});
    row("bottom: the overshoot may grow it past the top", Type::BottomEdge, box, 0, -1000, {50, 0, 40, 1020});

    row("top-left: inward", Type::TopLeft, box, 10, -3, {60, 30, 30, 17});
    row("top-left: outward", Type::TopLeft, box, -10, 5, {40, 30, 50, 25});
    row("top-left: far in", Type::TopLeft, box, 1000, -1000, {90, 30, 15, 15});
    row("top-left: far out", Type::TopLeft, box, -1000, 1000, {0, 30, 90, 70});
    row("top-right: outward", Type::TopRight, box, 10, 5, {50, 30, 50, 25});
    row("top-right: inward", Type::TopRight, box, -10, -3, {50, 30, 30, 17});
    row("top-right: far in", Type::TopRight, box, -1000, -1000, {50, 30, 15, 15});
    row("top-right: far out", Type::TopRight, box, 1000, 1000, {50, 30, 150, 70});
    row("bottom-left: inward", Type::BottomLeft, box, 10, 3, {60, 33, 30, 17});
    row("bottom-left: outward", Type::BottomLeft, box, -10, -5, {40, 25, 50, 25});
    row("bottom-left: far in", Type::BottomLeft, box, 1000, 1000, {90, 50, 15, 15});
    row("bottom-left: far out", Type::BottomLeft, box, -1000, -1000, {0, 0, 90, 1020});
    row("bottom-right: outward", Type::BottomRight, box, 10, -5, {50, 25, 50, 25});
    row("bottom-right: inward", Type::BottomRight, box, -10, 3, {50, 33, 30, 17});
    row("bottom-right: far in", Type::BottomRight, box, -1000, 1000, {50, 50, 15, 15});
    row("bottom-right: far out", Type::BottomRight, box, 1000, -1000, {50, 0, 150, 1020});

    row("limits: x below 0 keeps the width", Type::RightEdge, {-5, 30, 40, 20}, 0, 0, {0, 30, 40, 20});
    row("limits: y below 0 keeps the height", Type::TopEdge, {50, -5, 40, 20}, 0, 0, {50, 0, 40, 20});
    row("limits: width below 15", Type::TopEdge, {50, 30, 3, 20}, 0, 0, {50, 30, 15, 20});
    row("limits: height below 15", Type::RightEdge, {50, 30, 40, 3}, 0, 0, {50, 30, 40, 15});
    row("limits: x past width - 15 gives width 15", Type::TopEdge, {185.5, 30, 40, 20}, 0, 0,
        {185, 30, 15, 20});
    row("limits: x at width - 15 stays", Type::TopEdge, {185, 30, 40, 20}, 0, 0, {185, 30, 40, 20});
    row("limits: y past the full height gives height 15", Type::RightEdge, {50, 100.5, 40, 20}, 0, 0,
        {50, 85, 40, 15});
    row("limits: y at the full height stays", Type::RightEdge, {50, 100, 40, 20}, 0, 0, {50, 100, 40, 20});
    row("limits: y between height - 15 and height stays", Type::RightEdge, {50, 90, 40, 20}, 0, 0,
        {50, 90, 40, 20});
}

void tst_EditFrame::dragStep()
{
    QFETCH(Type, type);
    QFETCH(QRectF, from);
    QFETCH(QPointF, delta);
    QFETCH(QRectF, to);
    EditFrame frame = framed(from);
    frame.drag(type, delta, page, page);
    COMPARE_RECT(frame.frame(), to);
    COMPARE_RECT(secondModel(type, from, delta, page, page), to);
}

void tst_EditFrame::eachRuleReadsTheParentSizeItNames_data()
{
    QTest::addColumn<Type>("type");
    QTest::addColumn<QRectF>("from");
    QTest::addColumn<QPointF>("delta");
    QTest::addColumn<QSizeF>("frame");
    QTest::addColumn<QSizeF>("bounds");
    QTest::addColumn<QRectF>("to");
    const QSizeF large(2000, 1000);
    const QRectF wide(100, 30, 200, 20);
    const QRectF tall(50, 60, 40, 80);
    QTest::newRow("left stops by the bounds")
        << Type::LeftEdge << wide << QPointF(90, 0) << large << page << QRectF(185, 30, 110, 20);
    QTest::newRow("right stops by the frame") << Type::RightEdge << QRectF(50, 30, 40, 20) << QPointF(500, 0)
                                              << page << large << QRectF(50, 30, 150, 20);
    QTest::newRow("top's height stops by the frame")
        << Type::TopEdge << QRectF(50, 30, 40, 20) << QPointF(0, 500) << page << large
        << QRectF(50, 30, 40, 70);
    QTest::newRow("top's y stops by the bounds") << Type::TopEdge << QRectF(50, 90, 40, 20) << QPointF(0, 1)
                                                 << large << page << QRectF(50, 85, 40, 21);
    QTest::newRow("bottom stops by the bounds")
        << Type::BottomEdge << tall << QPointF(0, 30) << large << page << QRectF(50, 85, 40, 50);
    QTest::newRow("a move stops by the frame") << Type::Inside << QRectF(50, 30, 40, 20) << QPointF(500, 500)
                                               << page << large << QRectF(160, 80, 40, 20);
    QTest::newRow("x is limited by the frame") << Type::TopEdge << QRectF(190, 30, 40, 20) << QPointF(0, 0)
                                               << page << large << QRectF(185, 30, 15, 20);
    QTest::newRow("y is limited by the frame") << Type::RightEdge << QRectF(50, 101, 40, 20) << QPointF(0, 0)
                                               << page << large << QRectF(50, 85, 40, 15);
}

void tst_EditFrame::eachRuleReadsTheParentSizeItNames()
{
    QFETCH(Type, type);
    QFETCH(QRectF, from);
    QFETCH(QPointF, delta);
    QFETCH(QSizeF, frame);
    QFETCH(QSizeF, bounds);
    QFETCH(QRectF, to);
    EditFrame dragged = framed(from);
    dragged.drag(type, delta, frame, bounds);
    COMPARE_RECT(dragged.frame(), to);
    COMPARE_RECT(secondModel(type, from, delta, frame, bounds), to);
}

void tst_EditFrame::dragOfNoneChangesNothing()
{
    EditFrame frame;
    frame.setFrame(QRectF(-50, -50, 3, 4)); // every limit would change it
    const auto areas = frame.areas();
    frame.drag(Type::None, QPointF(10, 10), page, page);
    COMPARE_RECT(frame.frame(), QRectF(-50, -50, 3, 4));
    QVERIFY(std::equal(areas.begin(), areas.end(), frame.areas().begin(), isSame));
}

void tst_EditFrame::dragRebuildsTheAreas()
{
    EditFrame frame = framed(QRectF(50, 30, 40, 20));
    frame.drag(Type::TopRight, QPointF(11, 13), page, page);
    const EditFrame fresh = framed(QRectF(50, 30, 51, 33));
    QVERIFY(std::equal(fresh.areas().begin(), fresh.areas().end(), frame.areas().begin(), isSame));
}

void tst_EditFrame::nothingIsRounded()
{
    EditFrame frame = framed(QRectF(50.1, 30.2, 40.3, 20.4));
    frame.drag(Type::BottomLeft, QPointF(-0.01, -0.02), page, page);
    COMPARE_RECT(frame.frame(), QRectF(50.1 - 0.01, 30.2 - 0.02, 40.3 + 0.01, 20.4 + 0.02));
}

void tst_EditFrame::randomDragsStayInsideAndFollowTheSecondModel_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<bool>("isExact");
    // Multiples of 1/64 add up without rounding, so that both models must agree to the last bit.
    QTest::newRow("multiples of 1/64") << 1U << true;
    QTest::newRow("any fractions") << 2U << false;
}

void tst_EditFrame::randomDragsStayInsideAndFollowTheSecondModel()
{
    QFETCH(quint32, seed);
    QFETCH(bool, isExact);
    QRandomGenerator random(seed);
    const auto between = [&](double from, double to) {
        const double value = from + random.generateDouble() * (to - from);
        return isExact ? std::round(value * 64) / 64 : value;
    };
    constexpr int parents = 3000;
    constexpr int steps = 50;
    int limited = 0;
    QMap<qint64, int> tried;
    for (int i = 0; i < parents; ++i) {
        // Every fourth page is about as small as the frame itself.
        const double most = i % 4 == 0 ? 40 : 800;
        const QSizeF size(between(15, most), between(15, most));
        EditFrame frame(QRectF(between(-20, size.width() + 20), between(-20, size.height() + 20),
                               between(0, size.width() * 1.5), between(0, size.height() * 1.5)));
        auto type = Type(random.bounded(1, 10));
        for (int step = 0; step < steps; ++step) {
            if (random.bounded(5) == 0)
                type = Type(random.bounded(1, 10));
            const double reach = random.bounded(3) == 0 ? 2 * most : 12;
            const QPointF delta(random.bounded(8) == 0 ? 0 : between(-reach, reach),
                                random.bounded(8) == 0 ? 0 : between(-reach, reach));
            const QRectF from = frame.frame();
            frame.drag(type, delta, size, size);
            const QRectF to = frame.frame();
            const QRectF expected = secondModel(type, from, delta, size, size);
            ++tried[type];
            limited += to.width() == 15 || to.height() == 15 || to.x() == 0 || to.y() == 0;

            const bool isInside = to.width() >= 15 && to.height() >= 15 && to.x() >= 0 && to.y() >= 0;
            const double off = std::max({std::abs(to.x() - expected.x()), std::abs(to.y() - expected.y()),
                                         std::abs(to.width() - expected.width()),
                                         std::abs(to.height() - expected.height())});
            if (!isInside || !(isExact ? isSame(to, expected) : off < 1e-9)) {
                QFAIL(QByteArray::number(type) + " from " + told(from) + " by " + told(QRectF(delta, size))
                      + " to " + told(to) + " instead of " + told(expected));
            }
        }
    }
    QCOMPARE(tried.size(), 9);
    QCOMPARE(std::accumulate(tried.begin(), tried.end(), 0), parents * steps);
    for (const int count : std::as_const(tried))
        QVERIFY(count > 10'000);
    QVERIFY(limited > 10'000);
}

LINKLIST_TEST_MAIN(tst_EditFrame)
#include "tst_EditFrame.moc"
