#include "platform/ui/Field.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QInputMethodEvent>

class tst_Field : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void putTextIsSilentAndKeepsTheCaret();
    void everyOtherChangeIsTold();
    void composingIsNoChange();
    void lengthHasNoLimit();
    void missingFieldIsHarmless();
};

void tst_Field::putTextIsSilentAndKeepsTheCaret()
{
    QLineEdit field;
    int changes = 0;
    Field::onTextChange(&field, &field, [&changes](QLineEdit *) { ++changes; });
    Field::putText(&field, QStringLiteral("abcdef"));
    field.setCursorPosition(4);
    Field::putText(&field, QStringLiteral("ABCDEF"));
    QCOMPARE(field.cursorPosition(), 4);
    Field::putText(&field, QStringLiteral("ab"));
    QCOMPARE(field.cursorPosition(), 2);
    QCOMPARE(changes, 0);
}

void tst_Field::everyOtherChangeIsTold()
{
    QLineEdit field;
    QStringList told;
    Field::onTextChange(&field, &field, [&told](QLineEdit *changed) { told += changed->text(); });
    QTest::keyClicks(&field, QStringLiteral("ab"));
    field.setText(QStringLiteral("set"));
    field.undo();
    QCOMPARE(told.first(), QStringLiteral("a"));
    QVERIFY(told.contains(QStringLiteral("set")));
    QVERIFY(told.size() >= 3);
}

void tst_Field::composingIsNoChange()
{
    QLineEdit field;
    int changes = 0;
    Field::onTextChange(&field, &field, [&changes](QLineEdit *) { ++changes; });
    QInputMethodEvent composing(QStringLiteral("に"), {});
    QApplication::sendEvent(&field, &composing);
    QCOMPARE(changes, 0);
    QInputMethodEvent done;
    done.setCommitString(QStringLiteral("日"));
    QApplication::sendEvent(&field, &done);
    QCOMPARE(changes, 1);
    QCOMPARE(field.text(), QStringLiteral("日"));
}

void tst_Field::lengthHasNoLimit()
{
    QLineEdit field;
    Field::onTextChange(&field, &field, [](QLineEdit *) {});
    const QString text(100'000, u'x');
    field.setText(text);
    QCOMPARE(field.text().size(), text.size());
    // A text that is shown before anybody listens is not cut either: the next save would lose its end.
    QLineEdit early;
    Field::putText(&early, text);
    QCOMPARE(early.text().size(), text.size());
}

void tst_Field::missingFieldIsHarmless()
{
    Field::putText(nullptr, QStringLiteral("x"));
    Field::onTextChange(nullptr, this, [](QLineEdit *) {});
}

LINKLIST_GUI_TEST_MAIN(tst_Field)
#include "tst_Field.moc"
