#include "tests/support/TestCase.h"
#include "text/ColorButtonCell.h"

#include <QApplication>
#include <QDateTime>
#include <QPainter>
#include <cmath>

class tst_ColorButtonCell : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void paintsItsColor();
    void withoutColorItIsAnEmptyField();
    void colorThatIsNoNumberIsHarmless();
    void outlineIsLightGreyAndRound();
    void titleHasTheTextColor();
    void titleWithoutTextColorIsReadable();
    void imageOnlyShowsNoTitle();
    void isNewWithoutTitleAndWithItsOwnIdentifier();
    void archiveHoldsTheTextColor();
    void textColorDoesNotComeBackFromAnArchive();
};

static QColor middleOf(ColorButtonCell &cell)
{
    cell.resize(40, 24);
    return QColor(cell.grab().toImage().pixel(10, 6));
}

void tst_ColorButtonCell::paintsItsColor()
{
    ColorButtonCell cell;
    cell.setBackgroundColor(Color{1, 0.5, 0, 1});
    const QColor shown = middleOf(cell);
    QCOMPARE(shown.red(), 255);
    QVERIFY(qAbs(shown.green() - 127) <= 1);
    QCOMPARE(shown.blue(), 0);
    QCOMPARE(cell.accessibleDescription(), QStringLiteral("0xFF7F00"));
}

void tst_ColorButtonCell::withoutColorItIsAnEmptyField()
{
    ColorButtonCell cell;
    QVERIFY(!cell.backgroundColor());
    QCOMPARE(middleOf(cell).rgb(), cell.palette().window().color().rgb());
}

static int pixelsOf(ColorButtonCell &cell, const QColor &color)
{
    cell.resize(40, 24);
    const QImage image = cell.grab().toImage();
    int count = 0;
    for (int y = 3; y < 21; ++y) {
        for (int x = 3; x < 37; ++x)
            count += image.pixelColor(x, y) == color ? 1 : 0;
    }
    return count;
}

void tst_ColorButtonCell::colorThatIsNoNumberIsHarmless()
{
    ColorButtonCell cell;
    cell.setBackgroundColor(Color{std::nan(""), 2, -1, 1});
    QCOMPARE(middleOf(cell), QColor(0, 255, 0));
    QCOMPARE(cell.accessibleDescription(), QString());
}

void tst_ColorButtonCell::outlineIsLightGreyAndRound()
{
    ColorButtonCell cell;
    cell.setBackgroundColor(Color{0, 0, 1, 1});
    cell.resize(40, 24);
    const QImage image = cell.grab().toImage();
    for (const QPoint point : {QPoint(20, 0), QPoint(20, 1), QPoint(0, 12), QPoint(39, 12), QPoint(20, 23)})
        QCOMPARE(image.pixelColor(point), QColor(Qt::lightGray));
    QCOMPARE(image.pixelColor(20, 2), QColor(Qt::blue));
    QVERIFY(image.pixelColor(0, 0) != QColor(Qt::lightGray));

    QWidget ground;
    ground.resize(cell.size());
    QPixmap expected = ground.grab();
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::lightGray, 2));
    painter.setBrush(Qt::blue);
    painter.drawRoundedRect(QRectF(1, 1, 38, 22), 2, 2);
    painter.end();
    QCOMPARE(image, expected.toImage());
}

void tst_ColorButtonCell::titleHasTheTextColor()
{
    ColorButtonCell cell;
    cell.setBackgroundColor(Color{0, 0, 1, 1});
    cell.setTextColor(Color{1, 0, 0, 1});
    QCOMPARE(pixelsOf(cell, Qt::red), 0);
    cell.setText(QStringLiteral("█"));
    QVERIFY(pixelsOf(cell, Qt::red) > 0);
    QCOMPARE(cell.textColor(), std::optional(Color{1, 0, 0, 1}));
}

void tst_ColorButtonCell::titleWithoutTextColorIsReadable()
{
    ColorButtonCell cell;
    cell.setText(QStringLiteral("█"));
    cell.setBackgroundColor(Color{1, 1, 1, 1});
    QVERIFY(pixelsOf(cell, cell.palette().windowText().color()) > 0);
    cell.setBackgroundColor(Color{0, 0, 0, 1});
    QVERIFY(pixelsOf(cell, Qt::white) > 0);
}

void tst_ColorButtonCell::imageOnlyShowsNoTitle()
{
    ColorButtonCell cell;
    cell.setText(QStringLiteral("█"));
    cell.setTextColor(Color{1, 0, 0, 1});
    cell.setImagePosition(ColorButtonCell::ImageOnly);
    QCOMPARE(pixelsOf(cell, Qt::red), 0);
}

void tst_ColorButtonCell::isNewWithoutTitleAndWithItsOwnIdentifier()
{
    const qint32 before = ColorButtonCell::indexOfCell();
    const ColorButtonCell one;
    const ColorButtonCell other(QVariantMap{});
    QCOMPARE(ColorButtonCell::indexOfCell(), before + 2);
    QVERIFY(one.text().isEmpty() && other.text().isEmpty());
    // Seconds with six decimals and the number of the swatch.
    QVERIFY(one.identifier().endsWith(QString::number(before)));
    QVERIFY(other.identifier().endsWith(QString::number(before + 1)));
    const QString seconds = one.identifier().chopped(QString::number(before).size());
    QCOMPARE(seconds.section(u'.', 1).size(), 6);
    QVERIFY(qAbs(seconds.toDouble() - double(QDateTime::currentSecsSinceEpoch())) < 60);
    QVERIFY(one.identifier() != other.identifier());
    ColorButtonCell named;
    named.setIdentifier(QStringLiteral("heading"));
    QCOMPARE(named.identifier(), QStringLiteral("heading"));
}

void tst_ColorButtonCell::archiveHoldsTheTextColor()
{
    ColorButtonCell cell;
    const QVariantMap empty = cell.encodeWithCoder();
    QCOMPARE(empty.keys(), QStringList{QStringLiteral("textColor")});
    QVERIFY(!empty.first().isValid());
    cell.setTextColor(Color{0.5, 0.25, 0.125, 0.75});
    QCOMPARE(cell.encodeWithCoder().first().toList(), (QVariantList{0.5, 0.25, 0.125, 0.75}));
}

void tst_ColorButtonCell::textColorDoesNotComeBackFromAnArchive()
{
    ColorButtonCell cell;
    cell.setText(QStringLiteral("title"));
    cell.setTextColor(Color{1, 0, 0, 1});
    const ColorButtonCell again(cell.encodeWithCoder());
    QVERIFY(!again.textColor());
    QVERIFY(again.text().isEmpty());
    QVERIFY(again.identifier() != cell.identifier());
}

LINKLIST_GUI_TEST_MAIN(tst_ColorButtonCell)
#include "tst_ColorButtonCell.moc"
