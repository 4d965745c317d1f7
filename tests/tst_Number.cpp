#include "platform/Number.h"
#include "tests/support/TestCase.h"

#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>

class tst_Number : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void fixedRoundsAsPrintfDoes_data();
    void fixedRoundsAsPrintfDoes();
    void fixedAgreesWithPrintfOnManyValues();
    void notFiniteIsWrittenAsZero();
    void readsTheLongestPrefix_data();
    void readsTheLongestPrefix();
    void singlePrecisionIsWidened();
    void integers_data();
    void integers();
    void decimalCommaLocaleChangesNothing();
};

void tst_Number::fixedRoundsAsPrintfDoes_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("tie to even, down") << 0.25 << 1 << QByteArray("0.2");
    QTest::newRow("tie to even, up") << 0.75 << 1 << QByteArray("0.8");
    QTest::newRow("37.25") << 37.25 << 1 << QByteArray("37.2");
    QTest::newRow("below the tie in binary") << 0.05 << 1 << QByteArray("0.1");
    QTest::newRow("negative zero") << -0.04 << 1 << QByteArray("-0.0");
    QTest::newRow("negative") << -2.5 << 1 << QByteArray("-2.5");
    QTest::newRow("six decimals") << 0.75 << 6 << QByteArray("0.750000");
    QTest::newRow("whole") << 10.0 << 1 << QByteArray("10.0");
    QTest::newRow("largest float") << double(std::numeric_limits<float>::max()) << 1
                                   << QByteArray("340282346638528859811704183484516925440.0");
}

void tst_Number::fixedRoundsAsPrintfDoes()
{
    QFETCH(double, value);
    QFETCH(int, decimals);
    QTEST(Number::fixed(value, decimals), "text");
}

void tst_Number::fixedAgreesWithPrintfOnManyValues()
{
    for (int i = -20000; i <= 20000; ++i) {
        const double value = i / 160.0;
        char expected[32];
        std::snprintf(expected, sizeof expected, "%.1f", value);
        QCOMPARE(Number::fixed(value, 1), QByteArray(expected));
    }
    QCOMPARE(Number::fixed(std::numeric_limits<double>::max(), 1).size(), 311);
}

void tst_Number::notFiniteIsWrittenAsZero()
{
    QCOMPARE(Number::fixed(std::nan(""), 1), QByteArray("0.0"));
    QCOMPARE(Number::fixed(INFINITY, 1), QByteArray("0.0"));
    QCOMPARE(Number::fixed(-INFINITY, 1), QByteArray("0.0"));
}

void tst_Number::readsTheLongestPrefix_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    const double huge = std::numeric_limits<double>::max();
    const auto row
        = [](const char *text, double value) { QTest::newRow(text) << QString::fromUtf8(text) << value; };
    row("12.5abc", 12.5);
    row("abc", 0);
    row("", 0);
    row("  7.5", 7.5);
    row("\t7", 7);
    row("+5", 5);
    row("-5", -5);
    row("+-5", 0);
    row("-", 0);
    row(".", 0);
    row(".5", 0.5);
    row("5.", 5);
    row("1.2.3", 1.2);
    row("1e2", 100);
    row("1e", 1);
    row("1e+", 1);
    row("1E-2x", 0.01);
    row("nan", 0);
    row("inf", 0);
    row("-infinity", 0);
    row("0x10", 0);
    row("1e400", huge);
    row("-1e400", -huge);
    row("1e-400", 0);
    row("1e99999999999999999999", huge);
    row("1e-99999999999999999999", 0);
    row("1,5", 1);
    row("\xD9\xA3", 0); // an Arabic-Indic digit
    row("\xEF\xBC\x95", 0); // a full-width digit
    QTest::newRow("many digits") << QString(400, u'9') << huge;
    QTest::newRow("many zeros") << QString(QStringLiteral("0.") + QString(5000, u'0') + u'1') << 0.0;
    QTest::newRow("many zeros brought back")
        << QString(QStringLiteral("0.") + QString(500, u'0') + QStringLiteral("1e502")) << 10.0;
}

void tst_Number::readsTheLongestPrefix()
{
    QFETCH(QString, text);
    QTEST(Number::toDouble(text), "value");
}

void tst_Number::singlePrecisionIsWidened()
{
    QCOMPARE(Number::toSingle(u"33.3"), 33.299999237060546875);
    QCOMPARE(Number::toSingle(u"1e400"), double(std::numeric_limits<float>::max()));
    QCOMPARE(Number::toSingle(u"-1e39"), -double(std::numeric_limits<float>::max()));
    QCOMPARE(Number::toSingle(u"1e-60"), 0.0);
}

void tst_Number::integers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("value");
    const auto row
        = [](const char *text, qint64 value) { QTest::newRow(text) << QString::fromUtf8(text) << value; };
    row("12abc", 12);
    row(" -3", -3);
    row("+4", 4);
    row("abc", 0);
    row("", 0);
    row("-", 0);
    row("2.9", 2);
    row("0x10", 0);
    row("9223372036854775807", std::numeric_limits<qint64>::max());
    row("99999999999999999999", std::numeric_limits<qint64>::max());
    row("-99999999999999999999", std::numeric_limits<qint64>::min());
}

void tst_Number::integers()
{
    QFETCH(QString, text);
    QTEST(Number::toInteger(text), "value");
}

void tst_Number::decimalCommaLocaleChangesNothing()
{
    const char *locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    QVERIFY2(locale, "the locale de_DE.UTF-8 is not installed");
    QCOMPARE(std::localeconv()->decimal_point[0], ',');
    QCOMPARE(Number::fixed(1.5, 1), QByteArray("1.5"));
    QCOMPARE(Number::toDouble(u"1.5"), 1.5);
    QCOMPARE(Number::toDouble(u"1,5"), 1.0);
    std::setlocale(LC_ALL, "C");
}

LINKLIST_TEST_MAIN(tst_Number)
#include "tst_Number.moc"
