#include "tests/support/TestCase.h"
#include "text/SelectedCell.h"

#include <QApplication>
#include <QEnterEvent>

class tst_SelectedCell : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void fillOfEachState_data();
    void fillOfEachState();
    void outlineIsLightGrey();
    void rectanglesAreThoseOfTheSimpleOne();
    void transparentOneShowsNothing();
    void selectedTitleHasTheColorOfSelectedText();
    void titleOfTheOtherStatesIsReadable_data();
    void titleOfTheOtherStatesIsReadable();
    void canBeSelectedInAnInterfaceFile();
};

namespace
{

QImage paint(SelectedCell &cell, const QColor &ground)
{
    QPalette palette = cell.palette();
    palette.setColor(QPalette::Window, ground);
    cell.setPalette(palette);
    cell.resize(60, 102);
    return cell.grab().toImage();
}

void hover(QWidget &widget)
{
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&widget, &enter);
}

struct Shade {
    float red, green, blue, alpha;
};

// That colour over black.
bool shows(const QColor &pixel, const Shade &shade)
{
    const auto isClose
        = [&shade](float seen, float value) { return qAbs(seen - value * shade.alpha) < 0.015F; };
    return isClose(pixel.redF(), shade.red) && isClose(pixel.greenF(), shade.green)
        && isClose(pixel.blueF(), shade.blue);
}

} // namespace

Q_DECLARE_METATYPE(Shade)

void tst_SelectedCell::fillOfEachState_data()
{
    QTest::addColumn<bool>("pressed");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("hovered");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<Shade>("bottom");
    QTest::addColumn<Shade>("top");
    const Shade pressedSelected[2] = {{0.6F, 0.6F, 0.6F, 1}, {0.3F, 0.3F, 0.3F, 1}};
    const Shade pressed[2] = {{0.9F, 0.9F, 0.9F, 0.5F}, {0.3F, 0.3F, 0.3F, 0.5F}};
    const Shade selected[2] = {{0.7F, 0.7F, 0.7F, 1}, {0.4F, 0.4F, 0.4F, 1}};
    const Shade hovered[2] = {{0.86F, 0.86F, 0.95F, 1}, {0.5F, 0.5F, 0.54F, 1}};
    const Shade resting[2] = {{0.9F, 0.9F, 0.9F, 0.6F}, {0.7F, 0.7F, 0.7F, 0.6F}};
    const auto row = [](const char *name, bool isPressed, bool isSelected, bool isHovered, bool isEnabled,
                        const Shade(&ends)[2]) {
        QTest::newRow(name) << isPressed << isSelected << isHovered << isEnabled << ends[0] << ends[1];
    };
    row("pressed and selected", true, true, false, true, pressedSelected);
    row("pressed, selected and hovered", true, true, true, true, pressedSelected);
    row("pressed", true, false, false, true, pressed);
    row("pressed and hovered", true, false, true, true, pressed);
    row("selected", false, true, false, true, selected);
    row("selected and hovered is selected", false, true, true, true, selected);
    row("hovered", false, false, true, true, hovered);
    row("hovered but disabled", false, false, true, false, resting);
    row("resting", false, false, false, true, resting);
}

void tst_SelectedCell::fillOfEachState()
{
    QFETCH(bool, pressed);
    QFETCH(bool, selected);
    QFETCH(bool, hovered);
    QFETCH(bool, enabled);
    QFETCH(Shade, bottom);
    QFETCH(Shade, top);
    SelectedCell cell;
    cell.setEnabled(enabled);
    cell.setDown(pressed);
    cell.setIsSelected(selected);
    if (hovered)
        hover(cell);
    QCOMPARE(cell.isMouseInsize(), hovered);
    const QImage image = paint(cell, Qt::black);
    QVERIFY(shows(image.pixelColor(30, 100), bottom));
    QVERIFY(shows(image.pixelColor(30, 1), top));
    const Shade middle{(bottom.red + top.red) / 2, (bottom.green + top.green) / 2,
                       (bottom.blue + top.blue) / 2, bottom.alpha};
    QVERIFY(shows(image.pixelColor(30, 51), middle));
}

void tst_SelectedCell::outlineIsLightGrey()
{
    SelectedCell cell;
    cell.setIsSelected(true);
    const QImage image = paint(cell, Qt::black);
    const Shade outline{0.7F, 0.7F, 0.7F, 1};
    QVERIFY(shows(image.pixelColor(30, 0), outline));
    QVERIFY(shows(image.pixelColor(0, 51), outline));
    QVERIFY(shows(image.pixelColor(59, 51), outline));
    QVERIFY(!shows(image.pixelColor(1, 51), outline));
    // The fill is a plain rectangle: it shows outside the round corner.
    QVERIFY(image.pixelColor(0, 0) != QColor(Qt::black));
}

void tst_SelectedCell::rectanglesAreThoseOfTheSimpleOne()
{
    SelectedCell cell;
    QPixmap pixmap(8, 8);
    pixmap.fill(Qt::blue);
    cell.setIcon(QIcon(pixmap));
    QCOMPARE(cell.imageRect(QRectF(0, 0, 60, 30)), QRectF(2, 2, 56, 26));
    cell.setText(QStringLiteral("Page"));
    QCOMPARE(cell.imageRect(QRectF(0, 0, 60, 30)), QRectF(2, 2, 26, 26));
    QCOMPARE(cell.titleRect(QRectF(0, 0, 60, 30)), QRectF(28, 2, 28, 26));
}

void tst_SelectedCell::transparentOneShowsNothing()
{
    SelectedCell cell;
    cell.setText(QStringLiteral("Page"));
    cell.setTransparent(true);
    cell.setIsSelected(true);
    const QImage image = paint(cell, Qt::black);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            QCOMPARE(image.pixelColor(x, y), QColor(Qt::black));
    }
}

static bool hasPixel(const QImage &image, const QColor &color)
{
    for (int y = 2; y < image.height() - 2; ++y) {
        for (int x = 2; x < image.width() - 2; ++x) {
            if (image.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

void tst_SelectedCell::selectedTitleHasTheColorOfSelectedText()
{
    SelectedCell cell;
    QPalette palette = cell.palette();
    palette.setColor(QPalette::HighlightedText, QColor(255, 0, 255));
    cell.setPalette(palette);
    cell.setText(QStringLiteral("█"));
    QVERIFY(!hasPixel(paint(cell, Qt::white), QColor(255, 0, 255)));
    cell.setIsSelected(true);
    QVERIFY(hasPixel(paint(cell, Qt::white), QColor(255, 0, 255)));
}

void tst_SelectedCell::titleOfTheOtherStatesIsReadable_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QColor>("text");
    QTest::newRow("light") << QColor(Qt::white) << QColor(Qt::black);
    QTest::newRow("dark") << QColor(40, 40, 40) << QColor(Qt::white);
}

void tst_SelectedCell::titleOfTheOtherStatesIsReadable()
{
    QFETCH(QColor, ground);
    QFETCH(QColor, text);
    SelectedCell cell;
    QPalette palette = cell.palette();
    palette.setColor(QPalette::WindowText, text);
    cell.setPalette(palette);
    cell.setText(QStringLiteral("█"));
    // On these greys black is what can be read, whatever the palette says.
    QVERIFY(hasPixel(paint(cell, ground), Qt::black));
    hover(cell);
    QVERIFY(hasPixel(paint(cell, ground), Qt::black));
}

void tst_SelectedCell::canBeSelectedInAnInterfaceFile()
{
    SelectedCell cell;
    QVERIFY(cell.setProperty("isSelected", true));
    QVERIFY(cell.isSelected());
}

LINKLIST_GUI_TEST_MAIN(tst_SelectedCell)
#include "tst_SelectedCell.moc"
