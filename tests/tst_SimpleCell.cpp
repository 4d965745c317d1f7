#include "Classes/Delegate/SimpleCell.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QEnterEvent>

class tst_SimpleCell : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void imageWithoutATitleFillsTheFrameButTwoPoints();
    void imageBesideATitleIsASquare();
    void withoutAnImageTheTitleHasTheFrame();
    void imagePositionDecidesWhatStandsWhere();
    void tinyFramesGiveNoNegativeSizes();
    void hoverFlagFollowsTheMouse();
    void restingOneHasOnlyItsOutline();
    void hoveredOneHasABlueRing();
    void disabledOneHasNoRing();
    void pressedOneIsShadedAndHasNoRing();
    void transparentOneShowsNothing();
    void imageIsDrawn();
    void titleIsReadableInLightAndDark_data();
    void titleIsReadableInLightAndDark();
    void keyboardFocusShows();
};

namespace
{

QIcon blueIcon()
{
    QPixmap pixmap(64, 64);
    pixmap.fill(Qt::blue);
    return QIcon(pixmap);
}

void hover(QWidget &widget)
{
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&widget, &enter);
}

QImage paint(QWidget &widget, const QColor &ground = Qt::white)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::Window, ground);
    widget.setPalette(palette);
    widget.resize(60, 30);
    return widget.grab().toImage();
}

bool isClose(const QColor &one, const QColor &other)
{
    return qAbs(one.red() - other.red()) <= 3 && qAbs(one.green() - other.green()) <= 3
        && qAbs(one.blue() - other.blue()) <= 3;
}

QString difference(const QImage &one, const QImage &other)
{
    return one == other ? QStringLiteral("none") : QStringLiteral("some");
}

} // namespace

void tst_SimpleCell::imageWithoutATitleFillsTheFrameButTwoPoints()
{
    SimpleCell cell;
    cell.setIcon(blueIcon());
    QCOMPARE(cell.imageRect(QRectF(10, 20, 60, 30)), QRectF(12, 22, 56, 26));
    QCOMPARE(cell.titleRect(QRectF(10, 20, 60, 30)), QRectF());
}

void tst_SimpleCell::imageBesideATitleIsASquare()
{
    SimpleCell cell;
    cell.setIcon(blueIcon());
    cell.setText(QStringLiteral("Add"));
    QCOMPARE(cell.imageRect(QRectF(10, 20, 60, 30)), QRectF(12, 22, 26, 26));
    QCOMPARE(cell.titleRect(QRectF(10, 20, 60, 30)), QRectF(38, 22, 28, 26));
    QCOMPARE(cell.imageRect(QRectF(0, 0, 20, 50)), QRectF(2, 2, 16, 16));
}

void tst_SimpleCell::withoutAnImageTheTitleHasTheFrame()
{
    SimpleCell cell;
    cell.setText(QStringLiteral("Add"));
    QCOMPARE(cell.imageRect(QRectF(10, 20, 60, 30)), QRectF());
    QCOMPARE(cell.titleRect(QRectF(10, 20, 60, 30)), QRectF(12, 22, 54, 26));
}

void tst_SimpleCell::imagePositionDecidesWhatStandsWhere()
{
    SimpleCell cell;
    cell.setIcon(blueIcon());
    cell.setText(QStringLiteral("Add"));
    const QRectF frame(0, 0, 60, 30);
    QCOMPARE(cell.imagePosition(), SimpleCell::ImageLeft);
    cell.setImagePosition(SimpleCell::NoImage);
    QCOMPARE(cell.imageRect(frame), QRectF());
    QCOMPARE(cell.titleRect(frame), QRectF(2, 2, 54, 26));
    cell.setImagePosition(SimpleCell::ImageOnly);
    QCOMPARE(cell.imageRect(frame), QRectF(2, 2, 26, 26));
    QCOMPARE(cell.titleRect(frame), QRectF());
    // By number, as an interface file may give it.
    QVERIFY(cell.setProperty("imagePosition", 2));
    QCOMPARE(cell.imagePosition(), SimpleCell::ImageLeft);
}

void tst_SimpleCell::tinyFramesGiveNoNegativeSizes()
{
    SimpleCell cell;
    cell.setIcon(blueIcon());
    cell.setText(QStringLiteral("Add"));
    for (const QRectF &frame : {QRectF(0, 0, 0, 0), QRectF(0, 0, 3, 1)}) {
        QVERIFY(cell.imageRect(frame).width() >= 0 && cell.imageRect(frame).height() >= 0);
        QVERIFY(cell.titleRect(frame).width() >= 0 && cell.titleRect(frame).height() >= 0);
    }
}

void tst_SimpleCell::hoverFlagFollowsTheMouse()
{
    SimpleCell cell;
    QVERIFY(!cell.mouseStatus());
    hover(cell);
    QVERIFY(cell.mouseStatus() && cell.isMouseInsize());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&cell, &leave);
    QVERIFY(!cell.mouseStatus());
    cell.show();
    hover(cell);
    cell.hide();
    QVERIFY(!cell.mouseStatus());
}

void tst_SimpleCell::restingOneHasOnlyItsOutline()
{
    SimpleCell cell;
    const QImage image = paint(cell);
    QVERIFY(isClose(image.pixelColor(30, 0), Qt::gray));
    QVERIFY(isClose(image.pixelColor(0, 15), Qt::gray));
    QVERIFY(isClose(image.pixelColor(59, 15), Qt::gray));
    QVERIFY(isClose(image.pixelColor(30, 29), Qt::gray));
    QVERIFY(isClose(image.pixelColor(30, 1), Qt::white));
    QVERIFY(isClose(image.pixelColor(30, 15), Qt::white));
}

void tst_SimpleCell::hoveredOneHasABlueRing()
{
    SimpleCell cell;
    hover(cell);
    const QImage image = paint(cell);
    const QColor ring = QColor::fromRgbF(0.6F, 0.8F, 1.0F);
    QVERIFY(isClose(image.pixelColor(30, 0), Qt::gray));
    QVERIFY(isClose(image.pixelColor(30, 1), ring));
    QVERIFY(isClose(image.pixelColor(1, 15), ring));
    QVERIFY(isClose(image.pixelColor(30, 15), Qt::white));
}

void tst_SimpleCell::disabledOneHasNoRing()
{
    SimpleCell cell;
    cell.setEnabled(false);
    const QImage resting = paint(cell);
    hover(cell);
    QVERIFY(cell.mouseStatus());
    QCOMPARE(difference(paint(cell), resting), QStringLiteral("none"));
}

void tst_SimpleCell::pressedOneIsShadedAndHasNoRing()
{
    SimpleCell cell;
    hover(cell);
    cell.setDown(true);
    const QImage image = paint(cell);
    const auto over = [](float grey) {
        return QColor::fromRgbF(0.5F * grey + 0.5F, 0.5F * grey + 0.5F, 0.5F * grey + 0.5F);
    };
    QVERIFY(isClose(image.pixelColor(30, 27), over(0.88F)));
    QVERIFY(isClose(image.pixelColor(30, 15), over(0.75F)));
    QVERIFY(isClose(image.pixelColor(30, 2), over(0.62F)));
    QVERIFY(isClose(image.pixelColor(1, 15), over(0.75F)));
}

void tst_SimpleCell::transparentOneShowsNothing()
{
    SimpleCell cell(nullptr);
    cell.setText(QStringLiteral("Add"));
    cell.setIcon(blueIcon());
    cell.setTransparent(true);
    cell.setDown(true);
    const QImage image = paint(cell);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            QCOMPARE(image.pixelColor(x, y), QColor(Qt::white));
    }
}

void tst_SimpleCell::imageIsDrawn()
{
    SimpleCell cell;
    cell.setIcon(blueIcon());
    const QImage alone = paint(cell);
    QCOMPARE(alone.pixelColor(3, 15), QColor(Qt::blue));
    QCOMPARE(alone.pixelColor(56, 15), QColor(Qt::blue));
    QCOMPARE(alone.pixelColor(30, 3), QColor(Qt::blue));
    cell.setText(QStringLiteral("x"));
    const QImage beside = paint(cell);
    QCOMPARE(beside.pixelColor(26, 26), QColor(Qt::blue));
    QCOMPARE(beside.pixelColor(56, 15), QColor(Qt::white));
    cell.setImagePosition(SimpleCell::NoImage);
    QCOMPARE(paint(cell).pixelColor(5, 15), QColor(Qt::white));
}

void tst_SimpleCell::titleIsReadableInLightAndDark_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QColor>("text");
    QTest::addColumn<bool>("pressed");
    for (const bool pressed : {false, true}) {
        QTest::addRow("light %d", pressed) << QColor(Qt::white) << QColor(Qt::black) << pressed;
        QTest::addRow("dark %d", pressed) << QColor(40, 40, 40) << QColor(Qt::white) << pressed;
    }
}

void tst_SimpleCell::titleIsReadableInLightAndDark()
{
    QFETCH(QColor, ground);
    QFETCH(QColor, text);
    QFETCH(bool, pressed);
    SimpleCell cell;
    QPalette palette = cell.palette();
    palette.setColor(QPalette::WindowText, text);
    cell.setPalette(palette);
    cell.setDown(pressed);
    const QImage empty = paint(cell, ground);
    cell.setText(QStringLiteral("█"));
    const QImage titled = paint(cell, ground);
    int strongest = 0;
    for (int y = 4; y < 26; ++y) {
        for (int x = 4; x < 56; ++x)
            strongest
                = std::max(strongest, qAbs(empty.pixelColor(x, y).green() - titled.pixelColor(x, y).green()));
    }
    QVERIFY2(strongest > 110, qPrintable(QString::number(strongest)));
}

void tst_SimpleCell::keyboardFocusShows()
{
    QWidget window;
    new SimpleCell(&window);
    auto *cell = new SimpleCell(&window);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    const QImage without = paint(*cell);
    for (int presses = 0; presses < 3 && !cell->hasFocus(); ++presses)
        QTest::keyClick(&window, Qt::Key_Tab);
    QVERIFY(cell->hasFocus());
    QCOMPARE(difference(paint(*cell), without), QStringLiteral("some"));
}

LINKLIST_GUI_TEST_MAIN(tst_SimpleCell)
#include "tst_SimpleCell.moc"
