#include "platform/ui/Stepper.h"
#include "tests/support/TestCase.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QWheelEvent>
#include <limits>

class tst_Stepper : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void setByCodeIsSilentAndLimited();
    void propertiesAreSettableByName();
    void keysStepAndTell();
    void arrowsStepAndRepeat();
    void wheelSteps();
    void neverWrapsAround();
    void stepsFarBeyondTheRangeStopAtItsEnd();
    void typingChangesNothing();
    void isJustTheArrows();
    void assistiveToolsReadValueAndRange();
};

void tst_Stepper::setByCodeIsSilentAndLimited()
{
    Stepper stepper;
    stepper.setMinValue(1);
    stepper.setMaxValue(99);
    QSignalSpy stepped(&stepper, &Stepper::stepped);
    stepper.setIntegerValue(12);
    QCOMPARE(stepper.integerValue(), 12);
    stepper.setIntegerValue(std::numeric_limits<qint64>::max());
    QCOMPARE(stepper.integerValue(), 99);
    stepper.setIntegerValue(-5);
    QCOMPARE(stepper.integerValue(), 1);
    stepper.setMinValue(3);
    QCOMPARE(stepper.integerValue(), 3);
    QCOMPARE(stepped.count(), 0);
}

void tst_Stepper::propertiesAreSettableByName()
{
    Stepper stepper;
    QVERIFY(stepper.setProperty("minValue", 5));
    QVERIFY(stepper.setProperty("maxValue", 200));
    QVERIFY(stepper.setProperty("increment", 3));
    QVERIFY(stepper.setProperty("value", 150));
    QCOMPARE(stepper.minValue(), 5);
    QCOMPARE(stepper.maxValue(), 200);
    QCOMPARE(stepper.increment(), 3);
    QCOMPARE(stepper.integerValue(), 150);
    stepper.setIncrement(-1);
    QCOMPARE(stepper.increment(), 0);
}

void tst_Stepper::keysStepAndTell()
{
    Stepper stepper;
    stepper.setIncrement(2);
    stepper.setIntegerValue(50);
    QSignalSpy stepped(&stepper, &Stepper::stepped);
    QTest::keyClick(&stepper, Qt::Key_Up);
    QCOMPARE(stepper.integerValue(), 52);
    QTest::keyClick(&stepper, Qt::Key_Down);
    QTest::keyClick(&stepper, Qt::Key_Down);
    QCOMPARE(stepper.integerValue(), 48);
    QCOMPARE(stepped.count(), 3);
}

void tst_Stepper::arrowsStepAndRepeat()
{
    Stepper stepper;
    stepper.setIntegerValue(50);
    stepper.show();
    QSignalSpy stepped(&stepper, &Stepper::stepped);
    const QPoint up(stepper.width() / 2, stepper.height() / 4);
    const QPoint down(stepper.width() / 2, stepper.height() * 3 / 4);
    QTest::mouseClick(&stepper, Qt::LeftButton, {}, up);
    QCOMPARE(stepper.integerValue(), 51);
    QTest::mouseClick(&stepper, Qt::LeftButton, {}, down);
    QCOMPARE(stepper.integerValue(), 50);
    QTest::mousePress(&stepper, Qt::LeftButton, {}, up);
    QTRY_VERIFY(stepper.integerValue() >= 53);
    QTest::mouseRelease(&stepper, Qt::LeftButton, {}, up);
    QVERIFY(stepped.count() >= 5);
}

void tst_Stepper::wheelSteps()
{
    Stepper stepper;
    stepper.setIntegerValue(50);
    stepper.show();
    QSignalSpy stepped(&stepper, &Stepper::stepped);
    const QPointF center = QRectF(stepper.rect()).center();
    QWheelEvent wheel(center, stepper.mapToGlobal(center), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&stepper, &wheel);
    QCOMPARE(stepper.integerValue(), 51);
    QCOMPARE(stepped.count(), 1);
}

void tst_Stepper::neverWrapsAround()
{
    Stepper stepper;
    QSignalSpy stepped(&stepper, &Stepper::stepped);
    QTest::keyClick(&stepper, Qt::Key_Down);
    QCOMPARE(stepper.integerValue(), 0);
    stepper.setIntegerValue(100);
    QTest::keyClick(&stepper, Qt::Key_Up);
    QCOMPARE(stepper.integerValue(), 100);
    QCOMPARE(stepped.count(), 0);
}

void tst_Stepper::stepsFarBeyondTheRangeStopAtItsEnd()
{
    Stepper stepper;
    stepper.setMinValue(std::numeric_limits<int>::min());
    stepper.setMaxValue(std::numeric_limits<int>::max());
    stepper.setIncrement(std::numeric_limits<int>::max());
    stepper.stepBy(std::numeric_limits<int>::max());
    QCOMPARE(stepper.integerValue(), std::numeric_limits<int>::max());
    stepper.stepBy(std::numeric_limits<int>::min());
    QCOMPARE(stepper.integerValue(), std::numeric_limits<int>::min());
}

void tst_Stepper::typingChangesNothing()
{
    Stepper stepper;
    stepper.setIntegerValue(12);
    stepper.show();
    QTest::keyClicks(&stepper, QStringLiteral("99"));
    QTest::keyClick(&stepper, Qt::Key_Backspace);
    QTest::keyClick(&stepper, Qt::Key_Return);
    QCOMPARE(stepper.integerValue(), 12);
    QCOMPARE(stepper.text(), QStringLiteral("12"));
}

void tst_Stepper::isJustTheArrows()
{
    Stepper stepper;
    stepper.show();
    const auto *edit = stepper.findChild<QLineEdit *>();
    QVERIFY(!edit || !edit->isVisible());
    const QSpinBox whole;
    QVERIFY(stepper.sizeHint().width() > 8);
    QVERIFY(stepper.sizeHint().width() < whole.sizeHint().width());
    QCOMPARE(stepper.width(), stepper.sizeHint().width());
    QCOMPARE(stepper.minimumSizeHint(), stepper.sizeHint());
}

void tst_Stepper::assistiveToolsReadValueAndRange()
{
    Stepper stepper;
    stepper.setAccessibleName(QStringLiteral("Title size"));
    stepper.setMaxValue(72);
    stepper.setIntegerValue(24);
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&stepper);
    QVERIFY(interface && interface->valueInterface());
    QCOMPARE(interface->role(), QAccessible::SpinBox);
    QCOMPARE(interface->text(QAccessible::Name), QStringLiteral("Title size"));
    QCOMPARE(interface->text(QAccessible::Value), QStringLiteral("24"));
    QCOMPARE(interface->valueInterface()->currentValue().toInt(), 24);
    QCOMPARE(interface->valueInterface()->maximumValue().toInt(), 72);
}

LINKLIST_GUI_TEST_MAIN(tst_Stepper)
#include "tst_Stepper.moc"
