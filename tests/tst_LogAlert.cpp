#include "Classes/Mode/Log/LogAlert.h"
#include "platform/ui/ModalLoop.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <functional>

using Answer = std::function<void(QMessageBox *)>;
Q_DECLARE_METATYPE(Answer)

class tst_LogAlert : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void keysOfYesAndNoDoNotFollowTheFocus_data();
    void keysOfYesAndNoDoNotFollowTheFocus();
    void returnPressesAFocusedCancel();
    void buttonsStandInTheOrderGiven();
    void noticeHasOneButton();
    void textsAreShownAsTheyAre();
    void standsAboveTheWindowInUse();
    void aloneWithoutAWindow();
    void parentDeletedWhileOpenIsNotASecondButton();
    void runsInsideAModalWindow();

private:
    // Acts on the next question as soon as it is there.
    void whenAsked(const Answer &action)
    {
        QTimer::singleShot(0, this, [this, action] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box && box->isVisible())
                action(box);
            else
                whenAsked(action);
        });
    }
    static QPushButton *button(const QMessageBox *box, const char *name)
    {
        return box->findChild<QPushButton *>(QString::fromLatin1(name));
    }
};

void tst_LogAlert::answers_data()
{
    QTest::addColumn<Answer>("act");
    QTest::addColumn<bool>("expected");
    const Answer first
        = [](QMessageBox *box) { QTest::mouseClick(button(box, "btnAlertFirst"), Qt::LeftButton); };
    const Answer second
        = [](QMessageBox *box) { QTest::mouseClick(button(box, "btnAlertSecond"), Qt::LeftButton); };
    const Answer enter = [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Return); };
    const Answer escape = [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); };
    const Answer close = [](QMessageBox *box) { box->close(); };
    const Answer stop = [](QMessageBox *) { ModalLoop::stopModalWithCode(1001); };
    QTest::newRow("first") << first << true;
    QTest::newRow("second") << second << false;
    QTest::newRow("Return") << enter << true;
    QTest::newRow("Escape") << escape << false;
    QTest::newRow("title bar") << close << false;
    QTest::newRow("ended from outside") << stop << true;
}

void tst_LogAlert::answers()
{
    QFETCH(Answer, act);
    QFETCH(bool, expected);
    const QString question = QStringLiteral("Do you want to apply the settings?");
    whenAsked(act);
    QCOMPARE(LogAlert::AlertYesNoWithMessage(question, QString()), expected);
    whenAsked(act);
    QCOMPARE(LogAlert::AlertOKCancelWithMessage(question, QString()), expected);
    QVERIFY(!ModalLoop::isRunning());
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_LogAlert::keysOfYesAndNoDoNotFollowTheFocus_data()
{
    QTest::addColumn<QString>("focused");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("expected");
    const QString yes = QStringLiteral("btnAlertFirst");
    const QString no = QStringLiteral("btnAlertSecond");
    QTest::newRow("Return on YES") << yes << Qt::Key_Return << true;
    QTest::newRow("Return on NO") << no << Qt::Key_Return << true;
    QTest::newRow("Enter on NO") << no << Qt::Key_Enter << true;
    QTest::newRow("Escape on YES") << yes << Qt::Key_Escape << false;
    QTest::newRow("Escape on NO") << no << Qt::Key_Escape << false;
    QTest::newRow("Space on YES") << yes << Qt::Key_Space << true;
    QTest::newRow("Space on NO") << no << Qt::Key_Space << false;
}

void tst_LogAlert::keysOfYesAndNoDoNotFollowTheFocus()
{
    QFETCH(QString, focused);
    QFETCH(Qt::Key, key);
    QFETCH(bool, expected);
    whenAsked([&](QMessageBox *box) {
        auto *chosen = box->findChild<QPushButton *>(focused);
        chosen->setFocus();
        QCOMPARE(box->focusWidget(), chosen);
        QTest::keyClick(chosen, key);
    });
    QCOMPARE(LogAlert::AlertYesNoWithMessage(QStringLiteral("?"), QString()), expected);
}

void tst_LogAlert::returnPressesAFocusedCancel()
{
    whenAsked([](QMessageBox *box) {
        button(box, "btnAlertSecond")->setFocus();
        QTest::keyClick(button(box, "btnAlertSecond"), Qt::Key_Return);
    });
    QVERIFY(!LogAlert::AlertOKCancelWithMessage(QStringLiteral("?"), QString()));
}

void tst_LogAlert::buttonsStandInTheOrderGiven()
{
    const auto look = [this](const QString &firstTitle, const QString &secondTitle) {
        whenAsked([=](QMessageBox *box) {
            const QPushButton *first = button(box, "btnAlertFirst");
            const QPushButton *second = button(box, "btnAlertSecond");
            QCOMPARE(first->text(), firstTitle);
            QCOMPARE(second->text(), secondTitle);
            QVERIFY(first->geometry().right() < second->geometry().left());
            QVERIFY(first->isDefault() && !second->isDefault());
            QCOMPARE(box->buttons().size(), 2);
            box->close();
        });
    };
    look(QStringLiteral("YES"), QStringLiteral("NO"));
    QVERIFY(!LogAlert::AlertYesNoWithMessage(QStringLiteral("?"), QString()));
    look(QStringLiteral("OK"), QStringLiteral("Cancel"));
    QVERIFY(!LogAlert::AlertOKCancelWithMessage(QStringLiteral("?"), QString()));
}

void tst_LogAlert::noticeHasOneButton()
{
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        bool seen = false;
        whenAsked([&](QMessageBox *box) {
            QCOMPARE(box->buttons().size(), 1);
            QCOMPARE(button(box, "btnAlertFirst")->text(), QStringLiteral("OK"));
            seen = true;
            QTest::keyClick(box, key);
        });
        LogAlert::AlertOKWithMessage(QStringLiteral("Done"), QString());
        QVERIFY(seen);
    }
}

void tst_LogAlert::textsAreShownAsTheyAre()
{
    const QString message = QStringLiteral("<b>bold</b>?");
    const QString text = QStringLiteral("<a href=\"x\">x</a>");
    whenAsked([&](QMessageBox *box) {
        int shown = 0;
        const auto labels = box->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->text() != message && label->text() != text)
                continue;
            ++shown;
            QCOMPARE(label->textFormat(), Qt::PlainText);
        }
        QCOMPARE(shown, 2);
        box->close();
    });
    LogAlert::AlertOKWithMessage(message, text);
}

void tst_LogAlert::standsAboveTheWindowInUse()
{
    QWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    whenAsked([&](QMessageBox *box) {
        QCOMPARE(box->parentWidget(), &window);
        QCOMPARE(box->windowModality(), Qt::ApplicationModal);
        box->close();
    });
    LogAlert::AlertOKWithMessage(QStringLiteral("Done"), QString());
}

void tst_LogAlert::aloneWithoutAWindow()
{
    whenAsked([](QMessageBox *box) {
        QCOMPARE(box->parentWidget(), nullptr);
        box->close();
    });
    QVERIFY(!LogAlert::AlertOKCancelWithMessage(QStringLiteral("?"), QString()));
}

void tst_LogAlert::parentDeletedWhileOpenIsNotASecondButton()
{
    auto *window = new QWidget;
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window));
    whenAsked([=](QMessageBox *) { delete window; });
    QVERIFY(LogAlert::AlertOKCancelWithMessage(QStringLiteral("?"), QString()));
    QVERIFY(!ModalLoop::isRunning());
}

void tst_LogAlert::runsInsideAModalWindow()
{
    for (const bool visibleBefore : {false, true}) {
        QWidget window;
        window.setVisible(visibleBefore);
        bool answer = true;
        QTimer::singleShot(0, this, [&] {
            whenAsked([&](QMessageBox *box) {
                QCOMPARE(box->parentWidget(), &window);
                QTest::keyClick(box, Qt::Key_Escape);
            });
            answer = LogAlert::AlertYesNoWithMessage(QStringLiteral("?"), QString());
            QVERIFY(ModalLoop::isRunning());
            ModalLoop::stopModalWithCode(5);
        });
        QCOMPARE(ModalLoop::runModalForWindow(&window), 5);
        QVERIFY(!answer);
    }
}

LINKLIST_GUI_TEST_MAIN(tst_LogAlert)
#include "tst_LogAlert.moc"
