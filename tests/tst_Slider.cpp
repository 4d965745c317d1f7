#include "platform/ui/Slider.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QSignalSpy>
#include <cmath>

class tst_Slider : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void keepsAFractionalValueExactly();
    void setByCodeIsSilent();
    void keysMoveByOneUnitAndTell();
    void valueStaysInRange();
    void rangeNeedNotStartAtZero();
};

void tst_Slider::keepsAFractionalValueExactly()
{
    Slider slider;
    slider.setDoubleValue(37.256789);
    QCOMPARE(slider.doubleValue(), 37.256789);
    QCOMPARE(slider.value(), 3726);
}

void tst_Slider::setByCodeIsSilent()
{
    Slider slider;
    QSignalSpy moved(&slider, &Slider::moved);
    slider.setDoubleValue(50);
    QCOMPARE(moved.count(), 0);
}

void tst_Slider::keysMoveByOneUnitAndTell()
{
    Slider slider;
    slider.setDoubleValue(50.5);
    QSignalSpy moved(&slider, &Slider::moved);
    QTest::keyClick(&slider, Qt::Key_Right);
    QCOMPARE(moved.count(), 1);
    QCOMPARE(slider.doubleValue(), 51.5);
}

void tst_Slider::valueStaysInRange()
{
    Slider slider;
    slider.setDoubleValue(1e300);
    QCOMPARE(slider.doubleValue(), 100.0);
    slider.setDoubleValue(-3);
    QCOMPARE(slider.doubleValue(), 0.0);
    slider.setDoubleValue(std::nan(""));
    QCOMPARE(slider.doubleValue(), 0.0);
}

void tst_Slider::rangeNeedNotStartAtZero()
{
    Slider slider;
    slider.setMinimumValue(-1);
    slider.setMaximumValue(1);
    slider.setDoubleValue(-0.5);
    QCOMPARE(slider.doubleValue(), -0.5);
    QCOMPARE(slider.value(), 50);
    slider.setValue(150);
    QCOMPARE(slider.doubleValue(), 0.5);
}

LINKLIST_GUI_TEST_MAIN(tst_Slider)
#include "tst_Slider.moc"
