#include "tests/support/TestCase.h"
#include "text/ColorCategory.h"

#include <QRegularExpression>
#include <cmath>
#include <limits>

class tst_ColorCategory : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void newColorIsOpaqueBlack();
    void writesSixUpperCaseDigits_data();
    void writesSixUpperCaseDigits();
    void alphaIsIgnored();
    void componentsAreTruncatedNotRounded();
    void colorWithoutAPlaceInRgbIsNil_data();
    void colorWithoutAPlaceInRgbIsNil();
    void componentOutOfRangeStillGivesSixDigits();
    void scansAHexadecimalNumber_data();
    void scansAHexadecimalNumber();
    void numberSignIsNotScanned();
    void componentsAreSinglePrecisionFractions();
    void everyLevelComesBack();
};

void tst_ColorCategory::newColorIsOpaqueBlack()
{
    const Color color;
    QCOMPARE(color.alpha, 1.0);
    QVERIFY(color.isConvertible());
    QCOMPARE(MyColorOper::colorToHexRGB(color), QStringLiteral("0x000000"));
}

void tst_ColorCategory::writesSixUpperCaseDigits_data()
{
    QTest::addColumn<double>("red");
    QTest::addColumn<double>("green");
    QTest::addColumn<double>("blue");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, double red, double green, double blue, const char *text) {
        QTest::newRow(name) << red << green << blue << QString::fromLatin1(text);
    };
    row("half truncates to 127", 1, 0.5, 0, "0xFF7F00");
    row("white", 1, 1, 1, "0xFFFFFF");
    row("red", 1, 0, 0, "0xFF0000");
    row("green", 0, 1, 0, "0x00FF00");
    row("blue", 0, 0, 1, "0x0000FF");
    row("small levels keep two digits", 1.5 / 256, 10.5 / 256, 15.5 / 256, "0x010A0F");
    row("letters are upper-case", 0xAB / 255.0, 0xCD / 255.0, 0xEF / 255.0, "0xABCDEF");
    row("a quarter", 0.25, 0.75, 0.125, "0x3FBF1F");
    row("negative zero", -0.0, -0.0, -0.0, "0x000000");
}

void tst_ColorCategory::writesSixUpperCaseDigits()
{
    QFETCH(double, red);
    QFETCH(double, green);
    QFETCH(double, blue);
    QTEST(MyColorOper::colorToHexRGB({red, green, blue, 1}), "text");
}

void tst_ColorCategory::alphaIsIgnored()
{
    for (const double alpha : {0.0, 0.3, 1.0})
        QCOMPARE(MyColorOper::colorToHexRGB({1, 0.5, 0, alpha}), QStringLiteral("0xFF7F00"));
}

void tst_ColorCategory::componentsAreTruncatedNotRounded()
{
    for (int i = 0; i <= 10000; ++i) {
        const double level = i / 10000.0;
        const int value = static_cast<int>(std::floor(level * 255.99998474121094));
        const QString digits = QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper();
        QCOMPARE(MyColorOper::colorToHexRGB({level, 0, level, 1}),
                 QStringLiteral("0x") + digits + QStringLiteral("00") + digits);
    }
}

void tst_ColorCategory::colorWithoutAPlaceInRgbIsNil_data()
{
    QTest::addColumn<double>("component");
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("negative infinite") << -std::numeric_limits<double>::infinity();
}

void tst_ColorCategory::colorWithoutAPlaceInRgbIsNil()
{
    QFETCH(double, component);
    for (const Color &color :
         {Color{component, 0, 0, 1}, Color{0, component, 0, 1}, Color{0, 0, component, 1}}) {
        QVERIFY(!color.isConvertible());
        QVERIFY(MyColorOper::colorToHexRGB(color).isNull());
    }
}

void tst_ColorCategory::componentOutOfRangeStillGivesSixDigits()
{
    static const QRegularExpression form(QStringLiteral("^0x[0-9A-F]{6}$"));
    for (const double level : {1.01, 1.5, 2.0, 300.0, 1e300, -0.001, -0.5, -1.0, -1e300})
        QVERIFY(form.match(MyColorOper::colorToHexRGB({level, level, level, 1})).hasMatch());
}

void tst_ColorCategory::scansAHexadecimalNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("color");
    const auto row = [](const char *name, const QString &text, const char *color) {
        QTest::newRow(name) << text << QString::fromLatin1(color);
    };
    row("prefix", QStringLiteral("0xFF7F00"), "0xFF7F00");
    row("upper-case prefix", QStringLiteral("0XFF7F00"), "0xFF7F00");
    row("no prefix", QStringLiteral("FF7F00"), "0xFF7F00");
    row("lower-case digits", QStringLiteral("0xabcdef"), "0xABCDEF");
    row("short", QStringLiteral("f"), "0x00000F");
    row("leading blanks", QStringLiteral("  0x123456"), "0x123456");
    row("leading tab and line feed", QStringLiteral("\t\n123456"), "0x123456");
    row("stops at the first other character", QStringLiteral("FF00zz"), "0x00FF00");
    row("stops at a blank", QStringLiteral("12 3456"), "0x000012");
    row("number sign", QStringLiteral("#FF0000"), "0x000000");
    row("nil", QString(), "0x000000");
    row("empty", QStringLiteral(""), "0x000000");
    row("only blanks", QStringLiteral("   "), "0x000000");
    row("no digits", QStringLiteral("xyz"), "0x000000");
    row("prefix alone", QStringLiteral("0x"), "0x000000");
    row("prefix and no digit", QStringLiteral("0xg12345"), "0x000000");
    row("negative", QStringLiteral("-FF0000"), "0x000000");
    row("digits above 24 bits are cut", QStringLiteral("0x1234567"), "0x234567");
    row("eight digits", QStringLiteral("12345678"), "0x345678");
    row("nine digits saturate", QStringLiteral("123456789"), "0xFFFFFF");
    row("many digits saturate", QString(1000, u'1'), "0xFFFFFF");
    row("nine digits with prefix saturate", QStringLiteral("0x100000000"), "0xFFFFFF");
    row("full-width digits", QStringLiteral("\uFF11\uFF12"), "0x000000");
    row("Arabic-Indic digits", QStringLiteral("\u0663"), "0x000000");
}

void tst_ColorCategory::scansAHexadecimalNumber()
{
    QFETCH(QString, text);
    const Color color = MyColorOper::colorFromHexRGB(text);
    QCOMPARE(color.alpha, 1.0);
    QTEST(MyColorOper::colorToHexRGB(color), "color");
}

void tst_ColorCategory::numberSignIsNotScanned()
{
    QCOMPARE(MyColorOper::colorFromHexRGB(QStringLiteral("#FF0000")), (Color{0, 0, 0, 1}));
}

void tst_ColorCategory::componentsAreSinglePrecisionFractions()
{
    const Color color = MyColorOper::colorFromHexRGB(QStringLiteral("0x7F0133"));
    QVERIFY(color.red == double(127 / 255.0F));
    QVERIFY(color.green == double(1 / 255.0F));
    QVERIFY(color.blue == double(51 / 255.0F));
}

void tst_ColorCategory::everyLevelComesBack()
{
    for (int level = 0; level < 256; ++level) {
        const int value = level << 16 | (255 - level) << 8 | (level ^ 0x55);
        const QString text
            = QStringLiteral("0x") + QStringLiteral("%1").arg(value, 6, 16, QLatin1Char('0')).toUpper();
        QCOMPARE(MyColorOper::colorToHexRGB(MyColorOper::colorFromHexRGB(text)), text);
    }
}

LINKLIST_TEST_MAIN(tst_ColorCategory)
#include "tst_ColorCategory.moc"
