#include "tests/support/TestCase.h"
#include "text/ColorButtonCell.h"

#include <QApplication>

class tst_ColorButtonCell : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void paintsItsColor();
    void withoutColorItIsAnEmptyField();
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

LINKLIST_GUI_TEST_MAIN(tst_ColorButtonCell)
#include "tst_ColorButtonCell.moc"
