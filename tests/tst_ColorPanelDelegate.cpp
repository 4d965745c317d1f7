#include "Classes/Mode/Locale.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/WindowLevel.h"
#include "tests/support/TestCase.h"
#include "text/ColorPanelDelegate.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>
#include <functional>
#include <memory>

namespace
{

const Color red{1, 0, 0, 1};
const Color half{0.5, 0.25, 0.125, 1};
using Step = std::function<void(ColorPanelDelegate *)>;

QString hex(const std::optional<Color> &color)
{
    return color ? MyColorOper::colorToHexRGB(*color) : QStringLiteral("none");
}

template <typename T>
T *part(const ColorPanelDelegate *chooser, const char *name)
{
    return chooser->window()->findChild<T *>(QString::fromLatin1(name));
}

void type(const ColorPanelDelegate *chooser, const char *keys)
{
    auto *field = part<QLineEdit>(chooser, "txtColorValue");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QString::fromLatin1(keys));
}

void click(const ColorPanelDelegate *chooser, const char *button)
{
    QTest::mouseClick(part<QPushButton>(chooser, button), Qt::LeftButton);
}

QMessageBox *question(const ColorPanelDelegate *chooser)
{
    return chooser->window()->findChild<QMessageBox *>();
}

// A view that opens the chooser the way the link-list editor does.
class Opener : public QWidget
{
public:
    Opener() { swatch.setBackgroundColor(half); }

    // What the swatch shows afterwards; nothing where this view is gone by then.
    std::optional<Color> choose(const Step &step)
    {
        const QPointer<Opener> self(this);
        ColorPanelDelegate chooser;
        chooser.setOwer(this);
        chooser.setCell(&swatch);
        chooser.setBkColor(swatch.backgroundColor());
        chooser.setColor(swatch.backgroundColor());
        connect(&chooser, &ColorPanelDelegate::colorPanelDidChange, this,
                [this](ColorPanelDelegate *changed) {
                    if (changed->ower() == this && changed->color())
                        changed->cell()->setBackgroundColor(changed->color());
                });
        QTimer::singleShot(0, &chooser, [&chooser, step] { step(&chooser); });
        ModalSession session;
        session.begin(chooser.window());
        qint64 answer = ModalSession::continueCode;
        while (!chooser.isClosed()) {
            answer = session.run();
            if (answer == ModalLoop::abortCode)
                break;
            if (answer != ModalSession::continueCode && !chooser.isClosed()) {
                ++restarts;
                session.begin(chooser.window());
            }
        }
        session.end();
        if (!self)
            return {};
        const std::optional<Color> result = answer == 1 ? chooser.color() : chooser.bkColor();
        swatch.setBackgroundColor(result.value_or(Color()));
        return swatch.backgroundColor();
    }

    ColorButtonCell swatch{this};
    int restarts = 0;
};

} // namespace

class tst_ColorPanelDelegate : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void keepsHexadecimalDigitsOnly_data();
    void keepsHexadecimalDigitsOnly();
    void colorTextOfAnEntry_data();
    void colorTextOfAnEntry();

    void accessoryViewHasItsParts();
    void accessoryViewIsLaidOutInTwoRows();
    void chooseIsTheDefaultButton();
    void textsAreTranslatedAndFit();
    void typingShowsTheColorInThePanel_data();
    void typingShowsTheColorInThePanel();
    void typedSwatchColorLeavesTheFocusInTheField();
    void typedColorsComeBackExactly();
    void colorGivenComesBackExactly();
    void colorPickedInThePanelIsTaken();
    void nothingIsPutIntoAFieldOfAnotherWindow();
    void caretStaysWhereItWas();
    void nothingIsPutBackWhileComposing();

    void panelIsSharedAndUsedAgain();
    void openerIsThePanelsDelegateUntilItCloses();
    void alwaysFloatsAndAlwaysShowsAlpha();
    void titleIsThePanels();
    void settingNoColorLeavesThePanels();
    void withoutAPanelNothingHappens();

    void chooseTakesTheColor();
    void cancelTakesTheColorBefore();
    void cancelWithoutAColorBeforeIsBlack();
    void returnInTheFieldChooses();
    void returnOnCancelCancels();
    void escapeCancels();
    void rejectedByCodeCancels();
    void titleBarAsksAndTakesTheAnswer_data();
    void titleBarAsksAndTakesTheAnswer();
    void questionIsAskedLaterAndOnce();
    void questionLooksAsItShould();
    void closeIsAllowedOnceDecided();
    void swatchPreviewsWhileThePanelIsOpen();
    void secondOpeningStartsWithItsOwnColor();
    void codeOfSomebodyElseBeginsTheSessionAgain();
    void openerDeletedInTheLoopEndsIt_data();
    void openerDeletedInTheLoopEndsIt();
    void openerDeletedUnderTheQuestion();
    void anotherChooserTakesThePanel();
    void chooserDeletedWhileOpenLeavesThePanel();
    void attachedPanelEndsWithTheCloseMode();
    void standsAboveTheOpenersWindow();
    void hasItsSizeWhenItIsPlaced();
    void otherLoopsAreNotStopped();
};

void tst_ColorPanelDelegate::keepsHexadecimalDigitsOnly_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    const auto row = [](const char *typed, const char *kept) {
        QTest::newRow(*typed ? typed : "nothing") << QString::fromUtf8(typed) << QString::fromUtf8(kept);
    };
    row("", "");
    row("12345678", "123456");
    row("0x12345678", "0x123456");
    row("0X12345678", "0X123456");
    row("1x2", "1x2");
    row("1x2345678", "1x234567");
    row("0xx1", "0x1");
    row("x12", "12");
    row("#FF0000", "FF000"); // the dropped character has used up a place
    row("#xFF0000", "xFF0000");
    row("gx12", "x12");
    row("aBcDeF", "aBcDeF");
    row("12 34 56", "1234");
    row("0x12 345678", "0x12345");
    row("xyz", "");
    row("٣１é😀f", "f");
}

void tst_ColorPanelDelegate::keepsHexadecimalDigitsOnly()
{
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QCOMPARE(ColorPanelDelegate::keptText(typed), kept);
}

void tst_ColorPanelDelegate::colorTextOfAnEntry_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("color");
    const auto row = [](const char *kept, const char *text, const char *color) {
        QTest::newRow(*kept ? kept : "nothing")
            << QString::fromLatin1(kept) << QString::fromLatin1(text) << QString::fromLatin1(color);
    };
    row("", "0x000000", "0x000000");
    row("f", "0xf00000", "0xF00000");
    row("0xF", "0xf00000", "0xF00000");
    row("0x", "0x000000", "0x000000");
    row("123456", "0x123456", "0x123456");
    row("0X12345F", "0x12345f", "0x12345F");
    row("1x2", "0x1x2000", "0x000001"); // the scan ends at the second "x"
    row("x12", "0xx12000", "0x000000");
}

void tst_ColorPanelDelegate::colorTextOfAnEntry()
{
    QFETCH(QString, kept);
    QFETCH(QString, text);
    QFETCH(QString, color);
    QCOMPARE(ColorPanelDelegate::colorText(kept), text);
    QCOMPARE(hex(MyColorOper::colorFromHexRGB(text)), color);
}

void tst_ColorPanelDelegate::accessoryViewHasItsParts()
{
    ColorPanelDelegate chooser;
    const auto *field = part<QLineEdit>(&chooser, "txtColorValue");
    QVERIFY(field);
    QCOMPARE(field->placeholderText(), QStringLiteral("0x??????"));
    QCOMPARE(field->toolTip(), QStringLiteral("input hexadecimal(0~9,A~F)"));
    QVERIFY(field->text().isEmpty());
    QCOMPARE(part<QPushButton>(&chooser, "btnColorChoose")->text(), QStringLiteral("Choose"));
    QCOMPARE(part<QPushButton>(&chooser, "btnColorCancel")->text(), QStringLiteral("Cancel"));
    const auto labels = field->parentWidget()->findChildren<QLabel *>();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels[0]->text(), QStringLiteral("Value:"));
    QVERIFY(labels[0]->alignment().testFlag(Qt::AlignRight));
    QCOMPARE(labels[0]->textInteractionFlags() & Qt::TextSelectableByMouse, Qt::NoTextInteraction);
    QCOMPARE(labels[0]->frameShape(), QFrame::NoFrame);
    // None of the platform's own buttons decides beside these two.
    const auto boxes = chooser.window()->findChildren<QDialogButtonBox *>();
    for (const QDialogButtonBox *box : boxes)
        QVERIFY(!box->isVisibleTo(chooser.window()));
}

void tst_ColorPanelDelegate::accessoryViewIsLaidOutInTwoRows()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    const auto *field = part<QLineEdit>(&chooser, "txtColorValue");
    const auto *choose = part<QPushButton>(&chooser, "btnColorChoose");
    const auto *cancel = part<QPushButton>(&chooser, "btnColorCancel");
    const auto *label = field->parentWidget()->findChild<QLabel *>();
    const QSize size = field->parentWidget()->size();
    QVERIFY2(size.width() >= 160 && size.height() >= 56, qPrintable(QString::number(size.width())));
    QVERIFY(label->geometry().right() < field->geometry().left());
    QVERIFY(qAbs(label->geometry().center().y() - field->geometry().center().y()) <= 1);
    QVERIFY(field->geometry().bottom() < choose->geometry().top());
    QCOMPARE(cancel->geometry().top(), choose->geometry().top());
    QCOMPARE(cancel->height(), choose->height());
    QVERIFY(qAbs(cancel->width() - choose->width()) <= 1);
    QVERIFY(cancel->geometry().right() < choose->geometry().left());
    QCOMPARE(field->geometry().right(), choose->geometry().right());
    for (const QWidget *widget :
         {static_cast<const QWidget *>(field), static_cast<const QWidget *>(choose),
          static_cast<const QWidget *>(cancel), static_cast<const QWidget *>(label)}) {
        QVERIFY(widget->isVisible());
        QVERIFY(widget->width() >= widget->minimumSizeHint().width());
        QVERIFY(widget->height() >= widget->minimumSizeHint().height());
    }
}

void tst_ColorPanelDelegate::chooseIsTheDefaultButton()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    const auto buttons = chooser.window()->findChildren<QPushButton *>();
    QVERIFY(buttons.size() > 2);
    for (const QPushButton *button : buttons)
        QCOMPARE(button->isDefault(), button->objectName() == QLatin1String("btnColorChoose"));
    QTRY_VERIFY(chooser.window()->isActiveWindow());
    QCOMPARE(QApplication::focusWidget(), part<QLineEdit>(&chooser, "txtColorValue"));
}

void tst_ColorPanelDelegate::textsAreTranslatedAndFit()
{
    const auto forget = [] {
        resetLocaleForTesting();
        delete ColorPanelDelegate().colorPanel();
    };
    forget();
    setDefaultLanguageCode(QStringLiteral("de"));
    setDefaultBundlePath(QStringLiteral(LINKLIST_BUNDLE_DIR));
    {
        ColorPanelDelegate chooser;
        chooser.window()->show();
        QCOMPARE(chooser.title(), QStringLiteral("Farbe"));
        QCOMPARE(part<QPushButton>(&chooser, "btnColorChoose")->text(), QStringLiteral("Auswählen"));
        QCOMPARE(part<QPushButton>(&chooser, "btnColorCancel")->text(), QStringLiteral("Abbrechen"));
        QStringList texts;
        const auto widgets = chooser.window()->findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            const bool isText
                = qobject_cast<const QLabel *>(widget) || qobject_cast<const QPushButton *>(widget);
            if (!isText || !widget->isVisible())
                continue;
            texts += widget->property("text").toString();
            QVERIFY2(widget->width() >= widget->minimumSizeHint().width(), qPrintable(texts.last()));
        }
        QVERIFY(texts.contains(QStringLiteral("&Grundfarben")));
        QVERIFY(texts.contains(QStringLiteral("Farbe vom Bildschirm &wählen")));
        QVERIFY2(texts.filter(QStringLiteral("olor")).isEmpty(), qPrintable(texts.join(u'|')));
    }
    forget();
}

void tst_ColorPanelDelegate::typingShowsTheColorInThePanel_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("color");
    const auto row = [](const char *typed, const char *kept, const char *color) {
        QTest::newRow(typed) << QString::fromLatin1(typed) << QString::fromLatin1(kept)
                             << QString::fromLatin1(color);
    };
    row("12345678", "123456", "0x123456");
    row("0x12345678", "0x123456", "0x123456");
    row("1x2", "1x2", "0x000001");
    row("f", "f", "0xF00000");
    row("c0ffee", "c0ffee", "0xC0FFEE");
}

void tst_ColorPanelDelegate::typingShowsTheColorInThePanel()
{
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QFETCH(QString, color);
    ColorPanelDelegate chooser;
    chooser.window()->show();
    QSignalSpy changed(&chooser, &ColorPanelDelegate::colorPanelDidChange);
    type(&chooser, typed.toLatin1().constData());
    QCOMPARE(part<QLineEdit>(&chooser, "txtColorValue")->text(), kept);
    QCOMPARE(hex(chooser.color()), color);
    QCOMPARE(chooser.colorPanel()->currentColor().name().toUpper(), u'#' + color.mid(2));
    QVERIFY(changed.count() > 0);
    chooser.onOK();
    QCOMPARE(hex(chooser.color()), color);
}

void tst_ColorPanelDelegate::typedSwatchColorLeavesTheFocusInTheField()
{
    ColorPanelDelegate chooser;
    chooser.setColor(Color{0.3, 0.2, 0.1, 1});
    chooser.window()->show();
    auto *value = chooser.window()->findChild<QLineEdit *>(QStringLiteral("txtColorValue"));
    value->setFocus();
    // Black, the first of the panel's own swatches, and then red.
    QTest::keyClicks(value, QStringLiteral("000000"));
    QCOMPARE(chooser.window()->focusWidget(), value);
    value->setText(QStringLiteral("ff0000"));
    QCOMPARE(chooser.window()->focusWidget(), value);
}

void tst_ColorPanelDelegate::typedColorsComeBackExactly()
{
    ColorPanelDelegate chooser;
    auto *field = part<QLineEdit>(&chooser, "txtColorValue");
    for (int byte = 0; byte <= 0xFF; ++byte) {
        const QString text = QStringLiteral("0x%1").arg(byte * 0x010101, 6, 16, QLatin1Char('0'));
        field->setText(text);
        QCOMPARE(hex(chooser.color()).toLower(), text);
        QCOMPARE(*chooser.color(), MyColorOper::colorFromHexRGB(text));
    }
    chooser.onOK();
    QCOMPARE(*chooser.color(), MyColorOper::colorFromHexRGB(QStringLiteral("0xffffff")));
}

void tst_ColorPanelDelegate::colorGivenComesBackExactly()
{
    ColorPanelDelegate chooser;
    chooser.setColor(half);
    QCOMPARE(chooser.colorPanel()->currentColor().name(), QStringLiteral("#7f3f1f"));
    // The same place on the screen, and still another colour.
    part<QLineEdit>(&chooser, "txtColorValue")->setText(QStringLiteral("7f3f1f"));
    QCOMPARE(*chooser.color(), MyColorOper::colorFromHexRGB(QStringLiteral("0x7f3f1f")));
    chooser.setColor(half);
    chooser.onOK();
    QCOMPARE(*chooser.color(), half);
}

void tst_ColorPanelDelegate::colorPickedInThePanelIsTaken()
{
    ColorPanelDelegate chooser;
    chooser.setColor(half);
    QSignalSpy changed(&chooser, &ColorPanelDelegate::colorPanelDidChange);
    for (int byte = 0; byte <= 0xFF; ++byte) {
        chooser.colorPanel()->setCurrentColor(QColor(byte, 255 - byte, 7));
        QCOMPARE(hex(chooser.color()).mid(2, 2).toInt(nullptr, 16), byte);
        QCOMPARE(hex(chooser.color()).mid(6), QStringLiteral("07"));
    }
    QCOMPARE(changed.count(), 256);
    chooser.onOK();
    QCOMPARE(hex(chooser.color()), QStringLiteral("0xFF0007"));
}

void tst_ColorPanelDelegate::nothingIsPutIntoAFieldOfAnotherWindow()
{
    ColorPanelDelegate chooser;
    chooser.setColor(red);
    QLineEdit other(QStringLiteral("xyz"));
    chooser.controlTextDidChange(&other);
    chooser.controlTextDidChange(nullptr);
    QCOMPARE(other.text(), QStringLiteral("xyz"));
    QCOMPARE(*chooser.color(), red);
}

void tst_ColorPanelDelegate::caretStaysWhereItWas()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    auto *field = part<QLineEdit>(&chooser, "txtColorValue");
    type(&chooser, "1234");
    field->setCursorPosition(2);
    QTest::keyClicks(field, QStringLiteral("g"));
    QCOMPARE(field->text(), QStringLiteral("1234"));
    QCOMPARE(field->cursorPosition(), 2);
    QTest::keyClicks(field, QStringLiteral("a"));
    QCOMPARE(field->text(), QStringLiteral("12a34"));
    QCOMPARE(field->cursorPosition(), 3);
    QTest::keyClicks(field, QStringLiteral("bc"));
    QCOMPARE(field->text(), QStringLiteral("12abc3"));
    QCOMPARE(field->cursorPosition(), 5);
}

void tst_ColorPanelDelegate::nothingIsPutBackWhileComposing()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    auto *field = part<QLineEdit>(&chooser, "txtColorValue");
    type(&chooser, "0x12");
    // Composing in place of the first character leaves a text that would be put right at once.
    field->setSelection(0, 1);
    QInputMethodEvent composing(QStringLiteral("に"), {});
    QApplication::sendEvent(field, &composing);
    QCOMPARE(field->text(), QStringLiteral("x12"));
    QCOMPARE(hex(chooser.color()), QStringLiteral("0x120000"));
    QInputMethodEvent given(QString(), {});
    given.setCommitString(QString());
    QApplication::sendEvent(field, &given);
    QTRY_COMPARE(field->text(), QStringLiteral("12"));
    QInputMethodEvent again(QStringLiteral("に"), {});
    QApplication::sendEvent(field, &again);
    QInputMethodEvent done;
    done.setCommitString(QStringLiteral("日f"));
    QApplication::sendEvent(field, &done);
    QTRY_COMPARE(field->text(), QStringLiteral("f12"));
}

void tst_ColorPanelDelegate::panelIsSharedAndUsedAgain()
{
    const QColorDialog *panel = nullptr;
    for (int round = 0; round < 3; ++round) {
        ColorPanelDelegate chooser;
        QVERIFY(!panel || chooser.colorPanel() == panel);
        panel = chooser.colorPanel();
        QCOMPARE(chooser.window(), panel);
        QCOMPARE(panel->findChildren<QLineEdit *>(QStringLiteral("txtColorValue")).size(), 1);
        chooser.window()->show();
        chooser.onCancel();
        QVERIFY(!panel->isVisible());
        QCOMPARE(panel->findChildren<QLineEdit *>(QStringLiteral("txtColorValue")).size(), 0);
        QCOMPARE(panel->findChildren<QPushButton *>(QStringLiteral("btnColorChoose")).size(), 0);
    }
}

void tst_ColorPanelDelegate::openerIsThePanelsDelegateUntilItCloses()
{
    QCOMPARE(ColorPanelDelegate::delegate(), nullptr);
    ColorPanelDelegate chooser;
    QCOMPARE(ColorPanelDelegate::delegate(), &chooser);
    chooser.setColor(red);
    chooser.onOK();
    QCOMPARE(ColorPanelDelegate::delegate(), nullptr);
    QVERIFY(chooser.isClosed());
    QSignalSpy changed(&chooser, &ColorPanelDelegate::colorPanelDidChange);
    chooser.colorPanel()->setCurrentColor(Qt::cyan);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(*chooser.color(), red);
    // What has been decided stays so.
    chooser.onCancel();
    chooser.endAlertProcess(0);
    QCOMPARE(chooser.closeMode(), 1);
}

void tst_ColorPanelDelegate::alwaysFloatsAndAlwaysShowsAlpha()
{
    ColorPanelDelegate chooser;
    chooser.setFloatingPanel(false);
    QVERIFY(chooser.isFloatingPanel());
    QCOMPARE(WindowLevel::of(chooser.window()), WindowLevel::Level::Floating);
    QVERIFY(!chooser.showsAlpha());
    chooser.setShowsAlpha(false);
    QVERIFY(chooser.showsAlpha());
    chooser.setColor(Color{0.5, 0.5, 0.5, 0.5});
    chooser.onOK();
    QCOMPARE(*chooser.color(), (Color{0.5, 0.5, 0.5, 0.5}));
    chooser.colorPanel()->setOption(QColorDialog::ShowAlphaChannel, false);
}

void tst_ColorPanelDelegate::titleIsThePanels()
{
    ColorPanelDelegate chooser;
    QCOMPARE(chooser.title(), QStringLiteral("Color"));
    chooser.setTitle(QStringLiteral("Heading"));
    QCOMPARE(chooser.title(), QStringLiteral("Heading"));
    QCOMPARE(chooser.window()->windowTitle(), QStringLiteral("Heading"));
    chooser.setTitle(QStringLiteral("Color"));
}

void tst_ColorPanelDelegate::settingNoColorLeavesThePanels()
{
    ColorPanelDelegate chooser;
    chooser.setColor(red);
    chooser.setColor({});
    QVERIFY(!chooser.color());
    QCOMPARE(chooser.colorPanel()->currentColor(), QColor(Qt::red));
    chooser.onOK();
    QCOMPARE(*chooser.color(), red);
}

void tst_ColorPanelDelegate::withoutAPanelNothingHappens()
{
    ColorPanelDelegate chooser;
    delete chooser.colorPanel();
    QCOMPARE(chooser.window(), nullptr);
    chooser.setTitle(QStringLiteral("Heading"));
    QCOMPARE(chooser.title(), QString());
    chooser.setFloatingPanel(true);
    chooser.setShowsAlpha(true);
    QVERIFY(!chooser.isFloatingPanel());
    QVERIFY(!chooser.showsAlpha());
    chooser.setOwer(this);
    chooser.setColor(red);
    chooser.alert2Save();
    chooser.onOK();
    QCOMPARE(*chooser.color(), red);
    QCOMPARE(chooser.closeMode(), 1);
    // The next one has a panel again.
    const ColorPanelDelegate next;
    QVERIFY(next.colorPanel());
}

void tst_ColorPanelDelegate::chooseTakesTheColor()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        QVERIFY(chooser->window()->isVisible());
        QVERIFY(ModalLoop::isRunning());
        type(chooser, "0x7F8081");
        click(chooser, "btnColorChoose");
        QCOMPARE(chooser->closeMode(), 1);
    });
    QCOMPARE(hex(result), QStringLiteral("0x7F8081"));
    QVERIFY(!ModalLoop::isRunning());
    QCOMPARE(opener.restarts, 0);
}

void tst_ColorPanelDelegate::cancelTakesTheColorBefore()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        click(chooser, "btnColorCancel");
        QCOMPARE(chooser->closeMode(), 0);
    });
    QCOMPARE(*result, half);
}

void tst_ColorPanelDelegate::cancelWithoutAColorBeforeIsBlack()
{
    Opener opener;
    opener.swatch.setBackgroundColor({});
    const auto result = opener.choose([](ColorPanelDelegate *chooser) { click(chooser, "btnColorCancel"); });
    QCOMPARE(*result, (Color{0, 0, 0, 1}));
}

void tst_ColorPanelDelegate::returnInTheFieldChooses()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        QTest::keyClick(part<QLineEdit>(chooser, "txtColorValue"), Qt::Key_Return);
    });
    QCOMPARE(hex(result), QStringLiteral("0x00FF00"));
}

void tst_ColorPanelDelegate::returnOnCancelCancels()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        auto *cancel = part<QPushButton>(chooser, "btnColorCancel");
        cancel->setFocus(Qt::TabFocusReason);
        QTest::keyClick(cancel, Qt::Key_Return);
    });
    QCOMPARE(*result, half);
}

void tst_ColorPanelDelegate::escapeCancels()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        QTest::keyClick(part<QLineEdit>(chooser, "txtColorValue"), Qt::Key_Escape);
        QVERIFY(chooser->isClosed());
        QVERIFY(!question(chooser));
    });
    QCOMPARE(*result, half);
}

void tst_ColorPanelDelegate::rejectedByCodeCancels()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        chooser->colorPanel()->reject();
        QVERIFY(chooser->isClosed());
    });
    QCOMPARE(*result, half);
}

void tst_ColorPanelDelegate::titleBarAsksAndTakesTheAnswer_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("result");
    QTest::newRow("OK") << QStringLiteral("btnAlertFirst") << QStringLiteral("0x00FF00");
    QTest::newRow("Cancel") << QStringLiteral("btnAlertSecond") << QStringLiteral("0x7F3F1F");
    QTest::newRow("Escape") << QStringLiteral("Escape") << QStringLiteral("0x7F3F1F");
    QTest::newRow("Return") << QStringLiteral("Return") << QStringLiteral("0x00FF00");
    QTest::newRow("title bar") << QStringLiteral("close") << QStringLiteral("0x7F3F1F");
}

void tst_ColorPanelDelegate::titleBarAsksAndTakesTheAnswer()
{
    QFETCH(QString, answer);
    QFETCH(QString, result);
    Opener opener;
    const auto chosen = opener.choose([answer](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        QVERIFY(!chooser->window()->close());
        QTRY_VERIFY(question(chooser) && question(chooser)->isVisible());
        QVERIFY(chooser->window()->isVisible() && !chooser->isClosed());
        QMessageBox *box = question(chooser);
        if (answer == QLatin1String("Escape"))
            QTest::keyClick(box, Qt::Key_Escape);
        else if (answer == QLatin1String("Return"))
            QTest::keyClick(box, Qt::Key_Return);
        else if (answer == QLatin1String("close"))
            box->close();
        else
            QTest::mouseClick(box->findChild<QPushButton *>(answer), Qt::LeftButton);
        // The answer is worked on after its event.
        QVERIFY(!chooser->isClosed());
    });
    QCOMPARE(hex(chosen), result);
    QVERIFY(!ColorPanelDelegate::delegate());
}

void tst_ColorPanelDelegate::questionIsAskedLaterAndOnce()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    QVERIFY(!chooser.windowShouldClose());
    QVERIFY(!question(&chooser));
    QVERIFY(!chooser.windowShouldClose());
    QTRY_VERIFY(question(&chooser));
    QCoreApplication::processEvents();
    QCOMPARE(chooser.window()->findChildren<QMessageBox *>().size(), 1);
    chooser.onCancel();
    QTRY_VERIFY(!question(&chooser));
}

void tst_ColorPanelDelegate::questionLooksAsItShould()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    chooser.alert2Save();
    const QMessageBox *box = question(&chooser);
    QVERIFY(box);
    QCOMPARE(box->text(), QStringLiteral("Change the color?"));
    QCOMPARE(box->informativeText(), QStringLiteral("Press OK to change now,otherwise not!"));
    QCOMPARE(box->icon(), QMessageBox::Warning);
    QCOMPARE(box->parentWidget(), chooser.window());
    QCOMPARE(box->windowModality(), Qt::WindowModal);
    QCOMPARE(box->buttons().size(), 2);
    const auto *first = box->findChild<QPushButton *>(QStringLiteral("btnAlertFirst"));
    const auto *second = box->findChild<QPushButton *>(QStringLiteral("btnAlertSecond"));
    QCOMPARE(first->text(), QStringLiteral("OK"));
    QCOMPARE(second->text(), QStringLiteral("Cancel"));
    QVERIFY(first->geometry().right() < second->geometry().left());
    QVERIFY(first->isDefault());
}

void tst_ColorPanelDelegate::closeIsAllowedOnceDecided()
{
    ColorPanelDelegate chooser;
    chooser.window()->show();
    chooser.onOK();
    QVERIFY(chooser.windowShouldClose());
    chooser.alert2Save();
    QVERIFY(!question(&chooser));
}

void tst_ColorPanelDelegate::swatchPreviewsWhileThePanelIsOpen()
{
    Opener opener;
    const ColorButtonCell *swatch = &opener.swatch;
    const auto result = opener.choose([swatch](ColorPanelDelegate *chooser) {
        QCOMPARE(*swatch->backgroundColor(), half);
        type(chooser, "00ff00");
        QCOMPARE(hex(swatch->backgroundColor()), QStringLiteral("0x00FF00"));
        chooser->colorPanel()->setCurrentColor(QColor(1, 2, 3));
        QCOMPARE(hex(swatch->backgroundColor()), QStringLiteral("0x010203"));
        chooser->onCancel();
    });
    QCOMPARE(*result, half);
}

void tst_ColorPanelDelegate::secondOpeningStartsWithItsOwnColor()
{
    Opener opener;
    for (const char *typed : {"112233", "445566"}) {
        const QString before = hex(opener.swatch.backgroundColor());
        const auto result = opener.choose([typed, before](ColorPanelDelegate *chooser) {
            QVERIFY(part<QLineEdit>(chooser, "txtColorValue")->text().isEmpty());
            QCOMPARE(chooser->colorPanel()->currentColor().name().mid(1).toUpper(), before.mid(2));
            type(chooser, typed);
            click(chooser, "btnColorChoose");
        });
        QCOMPARE(hex(result), QStringLiteral("0x") + QString::fromLatin1(typed));
    }
}

void tst_ColorPanelDelegate::codeOfSomebodyElseBeginsTheSessionAgain()
{
    Opener opener;
    const auto result = opener.choose([](ColorPanelDelegate *chooser) {
        ModalLoop::stopModalWithCode(77);
        QTimer::singleShot(0, chooser, [chooser] {
            QVERIFY(chooser->window()->isVisible());
            QCOMPARE(ModalLoop::modalWindow(), chooser->window());
            type(chooser, "00ff00");
            click(chooser, "btnColorChoose");
        });
    });
    QCOMPARE(hex(result), QStringLiteral("0x00FF00"));
    QCOMPARE(opener.restarts, 1);
}

void tst_ColorPanelDelegate::openerDeletedInTheLoopEndsIt_data()
{
    QTest::addColumn<bool>("later");
    QTest::newRow("at once") << false;
    QTest::newRow("later") << true;
}

void tst_ColorPanelDelegate::openerDeletedInTheLoopEndsIt()
{
    QFETCH(bool, later);
    auto *opener = new Opener;
    QVERIFY(!opener->choose([opener, later](ColorPanelDelegate *) {
        if (later)
            opener->deleteLater();
        else
            delete opener;
    }));
    QVERIFY(!ModalLoop::isRunning());
    QVERIFY(!ColorPanelDelegate::delegate());
    Opener next;
    QCOMPARE(hex(next.choose([](ColorPanelDelegate *chooser) {
                 type(chooser, "abcdef");
                 click(chooser, "btnColorChoose");
             })),
             QStringLiteral("0xABCDEF"));
}

void tst_ColorPanelDelegate::openerDeletedUnderTheQuestion()
{
    auto *opener = new Opener;
    QVERIFY(!opener->choose([opener](ColorPanelDelegate *chooser) {
        chooser->alert2Save();
        delete opener;
        QVERIFY(chooser->isClosed());
        QVERIFY(!chooser->window()->isVisible());
    }));
    Opener next;
    QCOMPARE(*next.choose([](ColorPanelDelegate *chooser) {
        QVERIFY(!question(chooser) || !question(chooser)->isVisible());
        click(chooser, "btnColorCancel");
    }),
             half);
}

void tst_ColorPanelDelegate::anotherChooserTakesThePanel()
{
    Opener opener;
    std::unique_ptr<ColorPanelDelegate> other;
    const auto result = opener.choose([&other](ColorPanelDelegate *chooser) {
        type(chooser, "00ff00");
        other = std::make_unique<ColorPanelDelegate>();
        QVERIFY(chooser->isClosed());
    });
    QCOMPARE(*result, half);
    QCOMPARE(ColorPanelDelegate::delegate(), other.get());
    QVERIFY(part<QLineEdit>(other.get(), "txtColorValue"));
}

void tst_ColorPanelDelegate::chooserDeletedWhileOpenLeavesThePanel()
{
    auto chooser = std::make_unique<ColorPanelDelegate>();
    const QPointer<QColorDialog> panel = chooser->colorPanel();
    panel->show();
    chooser->windowShouldClose();
    chooser.reset();
    QVERIFY(panel);
    QVERIFY(!panel->isVisible());
    QVERIFY(!panel->findChild<QLineEdit *>(QStringLiteral("txtColorValue")));
    QCoreApplication::processEvents();
    QVERIFY(!panel->findChild<QMessageBox *>());
    QVERIFY(!ColorPanelDelegate::delegate());
}

void tst_ColorPanelDelegate::attachedPanelEndsWithTheCloseMode()
{
    QWidget window;
    window.show();
    for (const qint64 mode : {0, 1}) {
        ColorPanelDelegate chooser;
        QSignalSpy finished(chooser.colorPanel(), &QDialog::finished);
        static_cast<QDialog *>(chooser.colorPanel())->open();
        mode == 1 ? chooser.onOK() : chooser.onCancel();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished[0][0].toInt(), int(mode));
        QCOMPARE(chooser.closeMode(), mode);
        QVERIFY(!chooser.window()->isVisible());
        QCOMPARE(chooser.window()->windowModality(), Qt::NonModal);
    }
}

void tst_ColorPanelDelegate::standsAboveTheOpenersWindow()
{
    Opener opener;
    opener.resize(200, 100);
    opener.show();
    WindowLevel::set(&opener, WindowLevel::Level::ModalPanel);
    const QWindow *below = opener.windowHandle();
    opener.choose([below](ColorPanelDelegate *chooser) {
        const QWindow *panel = chooser->window()->windowHandle();
        QCOMPARE(panel->transientParent(), below);
        QVERIFY(panel->flags().testFlag(Qt::WindowStaysOnTopHint));
        chooser->onCancel();
        QCOMPARE(panel->transientParent(), nullptr);
    });
}

void tst_ColorPanelDelegate::hasItsSizeWhenItIsPlaced()
{
    delete ColorPanelDelegate().colorPanel();
    Opener opener;
    opener.show();
    ColorPanelDelegate chooser;
    chooser.setOwer(&opener);
    const QSize size = chooser.window()->size();
    chooser.window()->show();
    QCOMPARE(chooser.window()->size(), size);
}

void tst_ColorPanelDelegate::otherLoopsAreNotStopped()
{
    QWidget window;
    QTimer::singleShot(0, this, [] {
        ColorPanelDelegate chooser;
        chooser.window()->show();
        chooser.onOK();
        QTimer::singleShot(0, qApp, [] { ModalLoop::stopModalWithCode(5); });
    });
    QCOMPARE(ModalLoop::runModalForWindow(&window), 5);
}

LINKLIST_GUI_TEST_MAIN(tst_ColorPanelDelegate)
#include "tst_ColorPanelDelegate.moc"
