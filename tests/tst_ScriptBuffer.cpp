#include "Classes/Mode/ScriptBuffer.h"
#include "tests/support/TestCase.h"

class tst_ScriptBuffer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void nothingAppendedIsEmpty();
    void textIsAppendedAsItIs();
    void keyStandsInQuotesWithAColon();
    void byteIsReplaced();
    void takenBufferStartsAnew();
    void growingKeepsWhatIsThere();
    void specialBytesAreFoundAtEveryPlace_data();
    void specialBytesAreFoundAtEveryPlace();
    void sequencesDoNotCrossWhatIsAppended();
    void hugePlainTextTakesLittleMoreThanItsLength();
    void hugeTextOfReplacementsIsWhole();
};

namespace
{

QByteArray escaped(const QByteArray &text, char quote = '"')
{
    ScriptBuffer buffer;
    buffer.appendEscaped({text.constData(), size_t(text.size())}, quote);
    return buffer.take();
}

} // namespace

void tst_ScriptBuffer::nothingAppendedIsEmpty()
{
    ScriptBuffer buffer;
    QCOMPARE(buffer.size(), 0);
    buffer.append("");
    buffer.append(std::string_view());
    buffer.appendEscaped(std::string_view(), '"');
    QCOMPARE(buffer.take(), QByteArray(""));
    QCOMPARE(buffer.take(), QByteArray(""));
}

void tst_ScriptBuffer::textIsAppendedAsItIs()
{
    ScriptBuffer buffer;
    buffer.append('{');
    buffer.append("a\"\\\n");
    buffer.append(std::string_view("\0\xFF", 2));
    QCOMPARE(buffer.size(), 7);
    QCOMPARE(buffer.take(), QByteArray("{a\"\\\n\0\xFF", 7));
}

void tst_ScriptBuffer::keyStandsInQuotesWithAColon()
{
    ScriptBuffer buffer;
    buffer.appendKey("title");
    buffer.appendKey("é");
    buffer.appendKey("");
    QCOMPARE(buffer.take(), QByteArray("\"title\":\"é\":\"\":"));
}

void tst_ScriptBuffer::byteIsReplaced()
{
    ScriptBuffer buffer;
    buffer.append("abc");
    buffer.replace(0, 'x');
    buffer.replace(2, 'z');
    QCOMPARE(buffer.take(), QByteArray("xbz"));
}

void tst_ScriptBuffer::takenBufferStartsAnew()
{
    ScriptBuffer buffer;
    buffer.append("first");
    const QByteArray first = buffer.take();
    QCOMPARE(buffer.size(), 0);
    buffer.append("second");
    QCOMPARE(first, QByteArray("first"));
    QCOMPARE(buffer.take(), QByteArray("second"));
}

void tst_ScriptBuffer::growingKeepsWhatIsThere()
{
    ScriptBuffer buffer;
    QByteArray expected;
    for (int i = 0; i < 5000; ++i) {
        const QByteArray number = QByteArray::number(i);
        buffer.append(std::string_view(number.constData(), size_t(number.size())));
        buffer.append(',');
        buffer.appendEscaped("a\"b", '"');
        expected += number + ",a\\\"b";
    }
    QCOMPARE(buffer.take(), expected);
}

void tst_ScriptBuffer::specialBytesAreFoundAtEveryPlace_data()
{
    QTest::addColumn<QByteArray>("special");
    QTest::addColumn<QByteArray>("replacement");
    const auto row = [](const char *name, const char *special, const char *replacement) {
        QTest::newRow(name) << QByteArray(special) << QByteArray(replacement);
    };
    row("carriage return and line feed", "\r\n", "<br/>");
    row("line feed", "\n", "<br/>");
    row("carriage return", "\r", "<br/>");
    row("backslash", "\\", "\\\\");
    row("escape", "\\U", "\\u");
    row("protected escape", "${Unicode}", "\\u");
    row("double quote", "\"", "\\\"");
    row("apostrophe", "'", "'");
    row("entity", "&amp;", "&");
    row("ampersand", "&", "&");
    row("dollar sign", "$", "$");
    row("other low characters", "\t !#%(*~\x7F", "\t !#%(*~\x7F");
    row("beyond ascii", "é\xE2\x80\xA8😀", "é\xE2\x80\xA8😀");
}

void tst_ScriptBuffer::specialBytesAreFoundAtEveryPlace()
{
    QFETCH(QByteArray, special);
    QFETCH(QByteArray, replacement);
    for (const char filling : {'x', ' ', '\xFF'}) {
        for (int before = 0; before < 20; ++before) {
            for (int after = 0; after < 20; ++after)
                QCOMPARE(escaped(QByteArray(before, filling) + special + QByteArray(after, filling)),
                         QByteArray(before, filling) + replacement + QByteArray(after, filling));
        }
    }
}

void tst_ScriptBuffer::sequencesDoNotCrossWhatIsAppended()
{
    ScriptBuffer buffer;
    for (const char *part : {"$", "{Unicode}\"", "&l", "t;", "\\", "u", "\r", "\n"})
        buffer.appendEscaped(part, '"');
    QCOMPARE(buffer.take(), QByteArray("${Unicode}\\\"&lt;\\\\u<br/><br/>"));
}

void tst_ScriptBuffer::hugePlainTextTakesLittleMoreThanItsLength()
{
    const QByteArray text(20'000'000, 'x');
    const QByteArray result = escaped(text);
    QCOMPARE(result, text);
    QVERIFY2(result.capacity() < text.size() + 4096, qPrintable(QString::number(result.capacity())));
}

void tst_ScriptBuffer::hugeTextOfReplacementsIsWhole()
{
    constexpr int count = 2'000'000;
    const QByteArray result = escaped(QByteArray(count, '\n'));
    QCOMPARE(result.size(), 5 * count);
    QCOMPARE(result, QByteArray("<br/>").repeated(count));
    QVERIFY2(result.capacity() < 2 * result.size(), qPrintable(QString::number(result.capacity())));
}

LINKLIST_TEST_MAIN(tst_ScriptBuffer)
#include "tst_ScriptBuffer.moc"
