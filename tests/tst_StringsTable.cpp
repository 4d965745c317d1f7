#include "platform/StringsTable.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QRandomGenerator>
#include <QStringEncoder>

using Fixtures::put;
using Texts = QHash<QString, QString>;

class tst_StringsTable : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void resultStartsAsFailed();
    void readsEntries_data();
    void readsEntries();
    void emptyValueIsNotNull();
    void laterOfTwoEntriesCounts();
    void readsEveryEncoding_data();
    void readsEveryEncoding();
    void readsStringsOfAPropertyList();
    void passesOverOtherKindsOfValues();
    void propertyListKeepsBlanksEntitiesAndCData();
    void propertyListKeepsAMarkInItsTexts();
    void deepNestingCostsNoStack();
    void brokenTableTellsPlaceAndReason_data();
    void brokenTableTellsPlaceAndReason();
    void brokenPropertyListTellsPlaceAndReason_data();
    void brokenPropertyListTellsPlaceAndReason();
    void refusesWhatIsNoText_data();
    void refusesWhatIsNoText();
    void refusesATooLargeTable();
    void everyBeginningOfATableEndsWithAResult_data();
    void everyBeginningOfATableEndsWithAResult();
    void randomDamageEndsWithAResult();
    void readsAFile();
};

namespace
{
const QByteArray sampleTable = "/* The window */\n\"a\\n\\U00e9\" = \"caf\xC3\xA9\"; // end\nword;\n";
const QByteArray sampleList = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                              "  <key>a</key>\n  <string>caf\xC3\xA9 &amp; <![CDATA[<b>]]></string>\n"
                              "  <key>n</key><integer>3</integer>\n</dict>\n</plist>\n";

Texts one(const QString &key, const QString &value)
{
    return Texts{{key, value}};
}

// True for a whole result: either entries, or a failure with a reason and no entries.
bool isConsistent(const StringsTable::Result &result)
{
    return result.ok ? result.reason.isEmpty() && result.line == 0
                     : !result.reason.isEmpty() && result.entries.isEmpty();
}
} // namespace

void tst_StringsTable::resultStartsAsFailed()
{
    const StringsTable::Result result;
    QVERIFY(!result.ok);
    QVERIFY(result.entries.isEmpty());
}

void tst_StringsTable::readsEntries_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Texts>("expected");
    const QString k = QStringLiteral("k");
    const QString v = QStringLiteral("v");
    QTest::newRow("nothing") << QByteArray() << Texts();
    QTest::newRow("blanks and comments alone") << QByteArray(" \r\n/* a; */ // b") << Texts();
    QTest::newRow("an entry") << QByteArray("\"k\" = \"v\";") << one(k, v);
    QTest::newRow("no blanks") << QByteArray("\"k\"=\"v\";") << one(k, v);
    QTest::newRow("two on a line") << QByteArray("\"k\"=\"v\";\"l\"=\"w\";")
                                   << Texts{{k, v}, {QStringLiteral("l"), QStringLiteral("w")}};
    QTest::newRow("comments everywhere")
        << QByteArray("/**/\"k\"/*;*/=//x\n\"v\"/* \"y\" */;//z\n") << one(k, v);
    QTest::newRow("comment of stars") << QByteArray("/***** a ****/k=v;/*/ b /*/") << one(k, v);
    QTest::newRow("comment signs in a text")
        << QByteArray("\"k\" = \"a // b /* c */\";") << one(k, QStringLiteral("a // b /* c */"));
    QTest::newRow("key alone means itself")
        << QByteArray("\"the key\" ;") << one(QStringLiteral("the key"), QStringLiteral("the key"));
    QTest::newRow("words") << QByteArray("My_key.1-$:x = a/b;")
                           << one(QStringLiteral("My_key.1-$:x"), QStringLiteral("a/b"));
    QTest::newRow("word before a comment") << QByteArray("k//x\n=v/**/;") << one(k, v);
    QTest::newRow("line feed in a text") << QByteArray("k = \"a\nb\";") << one(k, QStringLiteral("a\nb"));
    QTest::newRow("quotation mark and backslash")
        << QByteArray(R"("k" = "\"a\\b\"";)") << one(k, QStringLiteral("\"a\\b\""));
    QTest::newRow("control characters")
        << QByteArray(R"(k = "\a\b\f\n\r\t\v";)") << one(k, QStringLiteral("\a\b\f\n\r\t\v"));
    QTest::newRow("other escapes stand for themselves")
        << QByteArray(R"(k = "\'\q\%";)") << one(k, QStringLiteral("'q%"));
    QTest::newRow("escaped line feed") << QByteArray("k = \"a\\\nb\";") << one(k, QStringLiteral("a\nb"));
    QTest::newRow("four hexadecimal digits")
        << QByteArray(R"(k = "\U00e9\U65E5a";)") << one(k, QStringLiteral("é日a"));
    QTest::newRow("fewer hexadecimal digits")
        << QByteArray(R"(k = "\Ue9.";)") << one(k, QStringLiteral("é."));
    QTest::newRow("a surrogate pair") << QByteArray(R"(k = "\Ud83d\Ude00";)") << one(k, QStringLiteral("😀"));
    QTest::newRow("octal") << QByteArray(R"(k = "\101\60\3519";)") << one(k, QStringLiteral("A0é9"));
    QTest::newRow("octal ends where a byte is full")
        << QByteArray(R"(k = "\777\18";)") << one(k, QStringLiteral("?7\x01") + u'8');
    const QString marked = QStringLiteral("\uFEFFv");
    QTest::newRow("a mark in front of the text")
        << QByteArray("\xEF\xBB\xBF\"k\" = \"\xEF\xBB\xBFv\";") << one(k, marked);
    QTest::newRow("a text past the first plane")
        << QByteArray("k = \"\xF0\x9F\x98\x80\";") << one(k, QStringLiteral("😀"));
    QTest::newRow("placeholder") << QByteArray("\"%@ - %1\" = \"%1 %@\";")
                                 << one(QStringLiteral("%@ - %1"), QStringLiteral("%1 %@"));
}

void tst_StringsTable::readsEntries()
{
    QFETCH(QByteArray, content);
    QFETCH(Texts, expected);
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY2(result.ok, qPrintable(result.reason));
    QCOMPARE(result.entries, expected);
    QVERIFY(isConsistent(result));
}

void tst_StringsTable::emptyValueIsNotNull()
{
    for (const char *content : {"\"k\" = \"\";", "<plist><dict><key>k</key><string/></dict></plist>"}) {
        const StringsTable::Result result = StringsTable::read(content);
        QVERIFY(result.entries.contains(QStringLiteral("k")));
        const QString value = result.entries.value(QStringLiteral("k"));
        QVERIFY(value.isEmpty() && !value.isNull());
    }
}

void tst_StringsTable::laterOfTwoEntriesCounts()
{
    const Texts expected = one(QStringLiteral("k"), QStringLiteral("2"));
    QCOMPARE(StringsTable::read("k = 1; \"k\" = \"2\";").entries, expected);
    QCOMPARE(StringsTable::read(
                 "<plist><dict><key>k</key><string>1</string><key>k</key><string>2</string></dict></plist>")
                 .entries,
             expected);
}

void tst_StringsTable::readsEveryEncoding_data()
{
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("marked");
    QTest::newRow("UTF-8") << int(QStringConverter::Utf8) << false;
    QTest::newRow("UTF-8 with a mark") << int(QStringConverter::Utf8) << true;
    QTest::newRow("UTF-16, low byte first") << int(QStringConverter::Utf16LE) << false;
    QTest::newRow("UTF-16, low byte first, with a mark") << int(QStringConverter::Utf16LE) << true;
    QTest::newRow("UTF-16, high byte first") << int(QStringConverter::Utf16BE) << false;
    QTest::newRow("UTF-16, high byte first, with a mark") << int(QStringConverter::Utf16BE) << true;
}

void tst_StringsTable::readsEveryEncoding()
{
    QFETCH(int, encoding);
    QFETCH(bool, marked);
    for (const QByteArray &sample : {sampleTable, sampleList}) {
        QStringEncoder encoder(static_cast<QStringConverter::Encoding>(encoding),
                               marked ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
        const QByteArray content = encoder.encode(QString::fromUtf8(sample));
        const StringsTable::Result result = StringsTable::read(content);
        QVERIFY2(result.ok, qPrintable(result.reason));
        QCOMPARE(result.entries, StringsTable::read(sample).entries);
        QVERIFY(!result.entries.isEmpty());
    }
}

void tst_StringsTable::readsStringsOfAPropertyList()
{
    const QByteArray content
        = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://example.org/p.dtd\">\n"
          "<!-- texts -->\n<plist version=\"1.0\"><dict>\n"
          "<key>k</key><string>v</string>\n<!-- more -->\n"
          "<key>l</key>\n<string>w</string></dict></plist>\n";
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY2(result.ok, qPrintable(result.reason));
    QCOMPARE(result.entries,
             (Texts{{QStringLiteral("k"), QStringLiteral("v")}, {QStringLiteral("l"), QStringLiteral("w")}}));
    QVERIFY(StringsTable::read("<plist><dict/></plist>").ok);
}

void tst_StringsTable::passesOverOtherKindsOfValues()
{
    const QByteArray content = "<plist><dict><key>i</key><integer>1</integer><key>t</key><true/>"
                               "<key>d</key><dict><key>k</key><string>inner</string></dict>"
                               "<key>a</key><array><string>x</string></array>"
                               "<key>k</key><string>v</string></dict></plist>";
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY2(result.ok, qPrintable(result.reason));
    QCOMPARE(result.entries, one(QStringLiteral("k"), QStringLiteral("v")));
}

void tst_StringsTable::propertyListKeepsBlanksEntitiesAndCData()
{
    const QByteArray content
        = "<plist><dict><key> </key><string> a &lt;<!-- x --><![CDATA[&b>]]>&#233; </string>"
          "</dict></plist>";
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY2(result.ok, qPrintable(result.reason));
    QCOMPARE(result.entries, one(QStringLiteral(" "), QStringLiteral(" a <&b>é ")));
}

void tst_StringsTable::propertyListKeepsAMarkInItsTexts()
{
    const StringsTable::Result result
        = StringsTable::read("\xEF\xBB\xBF<plist><dict><key>\xEF\xBB\xBFk</key>"
                             "<string>\xEF\xBB\xBFv<!-- x -->\xEF\xBB\xBFw</string></dict></plist>");
    QVERIFY2(result.ok, qPrintable(result.reason));
    QCOMPARE(result.entries, one(QStringLiteral("\uFEFFk"), QStringLiteral("\uFEFFv\uFEFFw")));
}

void tst_StringsTable::deepNestingCostsNoStack()
{
    constexpr int depth = 200'000;
    const QByteArray nested = QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
    const StringsTable::Result result
        = StringsTable::read("<plist><dict><key>k</key>" + nested + "</dict></plist>");
    QVERIFY2(result.ok, qPrintable(result.reason));
    QVERIFY(!StringsTable::read(QByteArray("<plist><dict>").repeated(depth)).ok);
}

void tst_StringsTable::brokenTableTellsPlaceAndReason_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("reason");
    const QString semicolon = QStringLiteral("a semicolon is missing");
    const QString text = QStringLiteral("a text is expected here");
    const QString quote = QStringLiteral("the text has no closing quotation mark");
    const QString comment = QStringLiteral("the comment has no end");
    const QString pair = QStringLiteral("an escape gives half a surrogate pair");
    QTest::newRow("no semicolon at the end") << QByteArray("a = b;\n\nk = v") << 3 << semicolon;
    QTest::newRow("no semicolon between") << QByteArray("\"k\" = \"v\"\n\"l\" = \"w\";") << 2 << semicolon;
    QTest::newRow("no value") << QByteArray("a = b;\r\nk = ;") << 2 << text;
    QTest::newRow("no key") << QByteArray("\n= v;") << 2 << text;
    QTest::newRow("ends after the equals sign") << QByteArray("k =") << 1 << text;
    QTest::newRow("semicolon alone") << QByteArray(";") << 1 << text;
    QTest::newRow("a value of another kind") << QByteArray("k = ( a, b );") << 1 << text;
    QTest::newRow("a letter outside ASCII without quotation marks")
        << QByteArray("\xC3\xA9 = v;") << 1 << text;
    QTest::newRow("two marks") << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBFk = v;") << 1 << text;
    QTest::newRow("two marks in UTF-16") << QByteArray("\xFF\xFE\xFF\xFEk\0=\0v\0;\0", 12) << 1 << text;
    QTest::newRow("open value") << QByteArray("a = b;\nk = \"v;\n\n") << 2 << quote;
    QTest::newRow("open key") << QByteArray("\"") << 1 << quote;
    QTest::newRow("ends after a backslash") << QByteArray("k = \"v\\") << 1 << quote;
    QTest::newRow("ends after an escaped quotation mark") << QByteArray("k = \"v\\\"") << 1 << quote;
    QTest::newRow("open comment") << QByteArray("a = b;\n/* k = v;\n\n") << 2 << comment;
    QTest::newRow("open comment within an entry") << QByteArray("k /* = v;") << 1 << comment;
    QTest::newRow("too short a comment") << QByteArray("/*/") << 1 << comment;
    QTest::newRow("no hexadecimal digits")
        << QByteArray("k =\n\"\\Uxyz\";") << 2 << QStringLiteral("\\U needs hexadecimal digits");
    QTest::newRow("half a pair") << QByteArray(R"(k = "\Ud83d";)") << 1 << pair;
    QTest::newRow("a pair the wrong way round") << QByteArray(R"(k = "\Ude00\Ud83d";)") << 1 << pair;
}

void tst_StringsTable::brokenTableTellsPlaceAndReason()
{
    QFETCH(QByteArray, content);
    QFETCH(int, line);
    QFETCH(QString, reason);
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY(!result.ok);
    QVERIFY(isConsistent(result));
    QCOMPARE(result.reason, reason);
    QCOMPARE(result.line, line);
}

void tst_StringsTable::brokenPropertyListTellsPlaceAndReason_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("reason");
    const QString noList = QStringLiteral("this is no property list of a dictionary");
    const QString noValue = QStringLiteral("the key before this one has no value");
    QTest::newRow("another root") << QByteArray("<html/>") << 1 << noList;
    QTest::newRow("a list of an array") << QByteArray("<plist>\n<array/></plist>") << 2 << noList;
    QTest::newRow("an empty list") << QByteArray("\n<plist/>") << 2 << noList;
    QTest::newRow("two roots") << QByteArray("<plist><dict/></plist>\n<plist/>") << 2
                               << QStringLiteral("there is a second root element");
    QTest::newRow("two keys") << QByteArray(
        "<plist><dict>\n<key>a</key>\n<key>b</key><string/></dict></plist>")
                              << 3 << noValue;
    QTest::newRow("a value without a key") << QByteArray("<plist><dict>\n<string>a</string></dict></plist>")
                                           << 2 << QStringLiteral("the value has no key");
    QTest::newRow("a last key without a value") << QByteArray("<plist>\n<dict>\n<key>a</key></dict></plist>")
                                                << 2 << QStringLiteral("the last key has no value");
    QTest::newRow("elements in a string")
        << QByteArray("<plist><dict><key>a</key>\n<string>a<b/></string></dict></plist>") << 2
        << QStringLiteral("a key or a string holds elements");
}

void tst_StringsTable::brokenPropertyListTellsPlaceAndReason()
{
    brokenTableTellsPlaceAndReason();
}

void tst_StringsTable::refusesWhatIsNoText_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("invalid UTF-8") << QByteArray("k = \"\xFF\xC3\";");
    QTest::newRow("a zero character") << QByteArray("k = \"a\0b\";", 10);
    QTest::newRow("half a UTF-16 character") << QByteArray("\xFF\xFEk\0=", 5);
    QTest::newRow("half a surrogate pair") << QByteArray("\xFF\xFEk\0=\0\"\0\x3D\xD8\"\0;\0", 14);
    QTest::newRow("UTF-32") << QByteArray("\xFF\xFE\0\0k\0\0\0;\0\0\0", 12);
    QTest::newRow("zero bytes") << QByteArray(64, '\0');
    QTest::newRow("binary property list") << QByteArray("bplist00\xD1\x01\x02", 11);
    QTest::newRow("a lone byte of a mark") << QByteArray("\xFF");
    QTest::newRow("cut off XML") << QByteArray("<plist><dict><key>a</k");
    QTest::newRow("less-than sign alone") << QByteArray("<");
}

void tst_StringsTable::refusesWhatIsNoText()
{
    QFETCH(QByteArray, content);
    const StringsTable::Result result = StringsTable::read(content);
    QVERIFY(!result.ok);
    QVERIFY(isConsistent(result));
}

void tst_StringsTable::refusesATooLargeTable()
{
    const QByteArray entry = "k = v;";
    const QByteArray largest = entry + QByteArray(StringsTable::maximumSize - entry.size(), ' ');
    QVERIFY(StringsTable::read(largest).ok);
    const StringsTable::Result result = StringsTable::read(largest + ' ');
    QVERIFY(!result.ok);
    QCOMPARE(result.reason, QStringLiteral("the table is too large"));
}

void tst_StringsTable::everyBeginningOfATableEndsWithAResult_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("entries") << sampleTable;
    QTest::newRow("property list") << sampleList;
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    QTest::newRow("UTF-16") << QByteArray(encoder.encode(QString::fromUtf8(sampleTable)));
}

void tst_StringsTable::everyBeginningOfATableEndsWithAResult()
{
    QFETCH(QByteArray, content);
    QVERIFY(StringsTable::read(content).ok);
    for (qsizetype size = 0; size < content.size(); ++size)
        QVERIFY2(isConsistent(StringsTable::read(content.first(size))), qPrintable(QString::number(size)));
}

void tst_StringsTable::randomDamageEndsWithAResult()
{
    QRandomGenerator random(1);
    const QByteArray marks = QByteArray("\"\\/*=;<>&U\xFF\0\n", 13);
    for (int round = 0; round < 4000; ++round) {
        QByteArray content = round % 2 == 0 ? sampleTable : sampleList;
        for (int damage = 0; damage < 3; ++damage)
            content[random.bounded(content.size())] = marks[random.bounded(marks.size())];
        QVERIFY2(isConsistent(StringsTable::read(content)), content.toHex().constData());
    }
}

void tst_StringsTable::readsAFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.strings"));
    QCOMPARE(StringsTable::readFile(path).reason, QStringLiteral("the file cannot be read"));
    QVERIFY(!StringsTable::readFile(folder.path()).ok);
    QVERIFY(!StringsTable::readFile(QString()).ok);
    put(path, "k = v;");
    QCOMPARE(StringsTable::readFile(path).entries, one(QStringLiteral("k"), QStringLiteral("v")));
}

LINKLIST_TEST_MAIN(tst_StringsTable)
#include "tst_StringsTable.moc"
