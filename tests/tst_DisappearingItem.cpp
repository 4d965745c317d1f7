#include "platform/ui/DisappearingItem.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QSignalSpy>
#include <QVariantAnimation>
#include <QWidget>
#include <QWindow>
#include <memory>

namespace
{

constexpr QSize usual(48, 48);

QWidget *puff()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->objectName() == QStringLiteral("disappearingItem"))
            return window;
    }
    return nullptr;
}

template <typename Condition>
QRegion pointsWhere(const QImage &image, Condition condition)
{
    QRegion result;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (condition(image.pixelColor(x, y)))
                result += QRect(x, y, 1, 1);
        }
    }
    return result;
}

// The points that are painted with more than a trace.
QRegion painted(const QImage &image)
{
    return pointsWhere(image, [](const QColor &color) { return color.alpha() > 16; });
}

int area(const QRegion &region)
{
    int result = 0;
    for (const QRect &rect : region)
        result += rect.width() * rect.height();
    return result;
}

QPixmap carriedPicture(qreal ratio)
{
    QPixmap picture(QSize(60, 20) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::red);
    return picture;
}

// What a window paints on a clear ground.
QRegion pictureOf(QWidget *window)
{
    QImage image(window->size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    window->render(&image, QPoint(), QRegion(), QWidget::IgnoreMask);
    return painted(image);
}

} // namespace

class tst_DisappearingItem : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void standsAroundItsPoint_data();
    void standsAroundItsPoint();
    void takesNeitherFocusNorClicks();
    void goesByItselfInLessThanHalfASecond();
    void callsBackOnceWhenItHasGone();
    void callsNobodyBackWhoHasGone();
    void nobodyNeedsToBeCalledBack();
    void ownerMayGoWhenCalledBack();
    void severalMayBeSeenAtOnce();
    void doesNotEndTheApplication();
    void cloudIsPaintedAndNothingElse();
    void cloudChangesUntilItHasGone();
    void cursorPointsWithItsMiddle();
    void cloudTellsTheTwoPointersApart();
    void tipOfThePointerIsInTheMiddle();
    void pointerCarriesAPicture_data();
    void pointerCarriesAPicture();
};

void tst_DisappearingItem::cleanup()
{
    while (QWidget *window = puff())
        delete window;
}

void tst_DisappearingItem::standsAroundItsPoint_data()
{
    QTest::addColumn<QPointF>("center");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRect>("geometry");
    QTest::newRow("whole point") << QPointF(300, 200) << usual << QRect(276, 176, 48, 48);
    QTest::newRow("fractional point") << QPointF(300.4, 200.6) << usual << QRect(276, 177, 48, 48);
    QTest::newRow("another size") << QPointF(300, 200) << QSize(100, 20) << QRect(250, 190, 100, 20);
    QTest::newRow("corner of the screen") << QPointF(0, 0) << usual << QRect(-24, -24, 48, 48);
}

void tst_DisappearingItem::standsAroundItsPoint()
{
    QFETCH(QPointF, center);
    QFETCH(QSize, size);
    QFETCH(QRect, geometry);
    DisappearingItem::showAnimation(center, size, nullptr, {});
    QVERIFY(puff());
    QVERIFY(puff()->isVisible());
    QCOMPARE(puff()->geometry(), geometry);
}

void tst_DisappearingItem::takesNeitherFocusNorClicks()
{
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, {});
    const QWidget *window = puff();
    QVERIFY(window->testAttribute(Qt::WA_ShowWithoutActivating));
    const Qt::WindowFlags flags = window->windowHandle()->flags();
    QVERIFY(flags.testFlag(Qt::WindowDoesNotAcceptFocus));
    QVERIFY(flags.testFlag(Qt::WindowTransparentForInput));
    QVERIFY(flags.testFlag(Qt::FramelessWindowHint));
    QVERIFY(flags.testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(flags.testFlag(Qt::BypassWindowManagerHint));
}

void tst_DisappearingItem::goesByItselfInLessThanHalfASecond()
{
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, {});
    const QPointer<QWidget> window(puff());
    QVERIFY(window);
    const auto *animation = window->findChild<QVariantAnimation *>();
    QVERIFY(animation->duration() > 200);
    QVERIFY(animation->duration() < 500);
    QTRY_VERIFY(!window);
}

void tst_DisappearingItem::callsBackOnceWhenItHasGone()
{
    QObject owner;
    int calls = 0;
    bool isSeen = true;
    DisappearingItem::showAnimation(QPointF(300, 200), usual, &owner, [&] {
        ++calls;
        isSeen = puff() && puff()->isVisible();
    });
    QCOMPARE(calls, 0);
    QTRY_COMPARE(calls, 1);
    QVERIFY(!isSeen);
    QTRY_VERIFY(!puff());
    QCOMPARE(calls, 1);
}

void tst_DisappearingItem::callsNobodyBackWhoHasGone()
{
    bool isCalled = false;
    auto owner = std::make_unique<QObject>();
    DisappearingItem::showAnimation(QPointF(300, 200), usual, owner.get(), [&] { isCalled = true; });
    owner.reset();
    QTRY_VERIFY(!puff());
    QVERIFY(!isCalled);
}

void tst_DisappearingItem::nobodyNeedsToBeCalledBack()
{
    QObject owner;
    DisappearingItem::showAnimation(QPointF(300, 200), usual, &owner, {});
    const QPointer<QWidget> window(puff());
    QVERIFY(window);
    QTRY_VERIFY(!window);
    bool isCalled = false;
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, [&] { isCalled = true; });
    QTRY_VERIFY(!puff());
    QVERIFY(!isCalled);
}

void tst_DisappearingItem::ownerMayGoWhenCalledBack()
{
    auto owner = std::make_unique<QObject>();
    DisappearingItem::showAnimation(QPointF(300, 200), usual, owner.get(), [&] { owner.reset(); });
    QTRY_VERIFY(!owner);
    QTRY_VERIFY(!puff());
}

void tst_DisappearingItem::severalMayBeSeenAtOnce()
{
    QObject owner;
    int calls = 0;
    for (const QPointF &center : {QPointF(100, 100), QPointF(300, 200), QPointF(300, 200)})
        DisappearingItem::showAnimation(center, usual, &owner, [&] { ++calls; });
    QTRY_COMPARE(calls, 3);
}

void tst_DisappearingItem::doesNotEndTheApplication()
{
    const QSignalSpy ended(qGuiApp, &QGuiApplication::lastWindowClosed);
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, {});
    QVERIFY(!puff()->testAttribute(Qt::WA_QuitOnClose));
    QTRY_VERIFY(!puff());
    QCOMPARE(ended.count(), 0);
}

void tst_DisappearingItem::cloudIsPaintedAndNothingElse()
{
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, {});
    QVERIFY(puff()->testAttribute(Qt::WA_TranslucentBackground));
    const QRegion cloud = pictureOf(puff());
    QVERIFY(area(cloud) > 200);
    QVERIFY(cloud.contains(QPoint(24, 24)));
    for (const QPoint &corner : {QPoint(0, 0), QPoint(47, 0), QPoint(0, 47), QPoint(47, 47)})
        QVERIFY(!cloud.contains(corner));
}

void tst_DisappearingItem::cloudChangesUntilItHasGone()
{
    DisappearingItem::showAnimation(QPointF(300, 200), usual, nullptr, {});
    const QPointer<QWidget> window(puff());
    const int first = area(pictureOf(window));
    // It ends with less than it began with.
    int last = first;
    QTRY_VERIFY((last = window ? area(pictureOf(window)) : last, !window));
    QVERIFY2(last < first, qPrintable(QStringLiteral("%1 of %2").arg(last).arg(first)));
}

void tst_DisappearingItem::cursorPointsWithItsMiddle()
{
    const QCursor cursor = DisappearingItem::cursor();
    QCOMPARE(cursor.shape(), Qt::BitmapCursor);
    const QPixmap pixmap = cursor.pixmap();
    QVERIFY(!pixmap.isNull());
    QCOMPARE(cursor.hotSpot(), QPoint(pixmap.width() / 2, pixmap.height() / 2));
    QCOMPARE(pixmap.toImage(), DisappearingItem::pointer(true).toImage());
    QVERIFY(area(painted(pixmap.toImage())) > 100);
}

void tst_DisappearingItem::cloudTellsTheTwoPointersApart()
{
    const QImage vanishing = DisappearingItem::pointer(true).toImage();
    const QImage plain = DisappearingItem::pointer(false).toImage();
    QCOMPARE(vanishing.size(), plain.size());
    QVERIFY(vanishing != plain);
    QVERIFY(area(painted(vanishing)) > area(painted(plain)) + 200);
    QVERIFY(!painted(plain).isEmpty());
}

void tst_DisappearingItem::tipOfThePointerIsInTheMiddle()
{
    const QImage plain = DisappearingItem::pointer(false).toImage();
    const QRect arrow = painted(plain).boundingRect();
    const QPoint middle(plain.width() / 2, plain.height() / 2);
    QVERIFY((arrow.topLeft() - middle).manhattanLength() <= 2);
    QVERIFY(arrow.width() >= 8 && arrow.height() >= 12);
}

void tst_DisappearingItem::pointerCarriesAPicture_data()
{
    QTest::addColumn<int>("ratio");
    QTest::newRow("plain screen") << 1;
    QTest::newRow("fine screen") << 2;
}

void tst_DisappearingItem::pointerCarriesAPicture()
{
    QFETCH(int, ratio);
    for (const bool isVanishing : {false, true}) {
        const QPixmap pixmap = DisappearingItem::pointer(isVanishing, carriedPicture(ratio));
        // A cursor's tip is told in pixels: on a fine screen, too, it stands in the middle of them.
        const QSize size = pixmap.size();
        QCOMPARE(pixmap.devicePixelRatio(), 1.0);
        // Whole, beside and below the tip in the middle.
        const QImage image = pixmap.toImage();
        const QRect carried
            = pointsWhere(image, [](const QColor &color) { return color == QColor(Qt::red); }).boundingRect();
        QCOMPARE(carried.size(), QSize(60, 20) * ratio);
        QVERIFY(carried.left() > size.width() / 2);
        QVERIFY(carried.top() > size.height() / 2);
        QVERIFY(image.rect().contains(carried));
        // No larger on a fine screen to the eye.
        QCOMPARE(size, DisappearingItem::pointer(isVanishing, carriedPicture(1)).size() * ratio);
        QCOMPARE(QCursor(pixmap).hotSpot(), QPoint(size.width() / 2, size.height() / 2));
    }
    const QImage vanishing = DisappearingItem::pointer(true, carriedPicture(ratio)).toImage();
    QVERIFY(vanishing != DisappearingItem::pointer(false, carriedPicture(ratio)).toImage());
}

LINKLIST_GUI_TEST_MAIN(tst_DisappearingItem)
#include "tst_DisappearingItem.moc"
