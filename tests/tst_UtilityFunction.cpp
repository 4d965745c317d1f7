#include "Classes/Mode/Locale.h"
#include "Classes/Mode/UtilityFunction.h"
#include "Classes/Mode/Xml.h"
#include "tests/support/Fixtures.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TestCase.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <clocale>
#include <limits>

using Fixtures::get;
using Fixtures::put;

namespace
{

// The script escaping as six plain replacements, one after the other over the whole text.
QString modelForJS(QString text, QChar quote)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("<br/>"));
    text.replace(QStringLiteral("\r"), QStringLiteral("<br/>"));
    text.replace(QStringLiteral("\n"), QStringLiteral("<br/>"));
    text.replace(QStringLiteral("\\u"), QStringLiteral("${Unicode}"));
    text.replace(QStringLiteral("\\U"), QStringLiteral("${Unicode}"));
    text.replace(QStringLiteral("\\"), QStringLiteral("\\\\"));
    if (quote == u'\'')
        text.replace(QStringLiteral("'"), QStringLiteral("\\'"));
    else if (quote == u'"')
        text.replace(QStringLiteral("\""), QStringLiteral("\\\""));
    text.replace(QStringLiteral("${Unicode}"), QStringLiteral("\\u"));
    text.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    text.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    text.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return text;
}

QString awkwardText(QRandomGenerator &random)
{
    static const QStringList pieces{
        QStringLiteral("\r"),        QStringLiteral("\n"),         QStringLiteral("\\"),
        QStringLiteral("u"),         QStringLiteral("U"),          QStringLiteral("\""),
        QStringLiteral("'"),         QStringLiteral("&"),          QStringLiteral("l"),
        QStringLiteral("t"),         QStringLiteral("g"),          QStringLiteral(";"),
        QStringLiteral("a"),         QStringLiteral("m"),          QStringLiteral("p"),
        QStringLiteral("$"),         QStringLiteral("{"),          QStringLiteral("}"),
        QStringLiteral("Unicode"),   QStringLiteral("\U0001F600"), QStringLiteral("é"),
        QStringLiteral("<"),         QStringLiteral(">"),          QStringLiteral("${Unicode}"),
        QStringLiteral("${Unicode"), QStringLiteral("&lt;"),       QStringLiteral("&gt;"),
        QStringLiteral("&amp;"),     QStringLiteral("\\u"),        QStringLiteral("\\U"),
        QStringLiteral("<br/>"),     QStringLiteral("\r\n"),       QStringLiteral("\u2028"),
        QStringLiteral("\uFEFF"),    QString(QChar(u'\0'))};
    QString text;
    for (int i = random.bounded(14); i > 0; --i)
        text += pieces[random.bounded(int(pieces.size()))];
    return text;
}

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

pugi::xml_node rootOf(const Xml::ParseResult &result)
{
    return result.document->document_element();
}

} // namespace

class tst_UtilityFunction : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tempPathNamesProductTimeAndCounter();

    void xmlTextLosesLineBreaksAndAngleBrackets_data();
    void xmlTextLosesLineBreaksAndAngleBrackets();
    void scriptText_data();
    void scriptText();
    void scriptTextOfSaidQuote();
    void otherQuoteCharactersEscapeNoQuote();
    void scriptTextAgreesWithSixReplacements();
    void longScriptTextAgreesWithSixReplacements();

    void elementBecomesADictionary_data();
    void elementBecomesADictionary();
    void noElementGivesAnEmptyDictionary();
    void dictionaryBecomesAnElement();
    void dictionaryElementIsAppendedAndAnswered();
    void emptyDictionaryGivesAnEmptyElement();
    void nestedDictionaryTakesItsKeyAsName();
    void otherValuesAreWrittenAsTheirDescription();
    void dictionaryTextIsCleaned();
    void dictionaryKeysKeepAMark();
    void dictionariesComeBack();
    void typedElementHasOneAttributeAndItsText();
    void typedElementIsAppendedAfterTheOthers();
    void typedElementTextIsEscapedAndCleaned();

    void decimalField_data();
    void decimalField();
    void integerField_data();
    void integerField();
    void nilFieldGivesAnEmptyText();

    void colorsAreThoseOfTheCategory();
    void colorThatCannotBeConvertedIsBlack();

    void urlWithASchemeIsKept_data();
    void urlWithASchemeIsKept();
    void otherTextGetsAScheme_data();
    void otherTextGetsAScheme();
    void escapesWhatNoUrlMayHold_data();
    void escapesWhatNoUrlMayHold();
    void escapesExactlyTheCharactersOutsideTheUrlSet();
    void escapingTwiceChangesNothingMore();

    void writesTextBehindAByteOrderMark();
    void writesAnEmptyTextAsTheMarkAlone();
    void writingReplacesTheWholeFile();
    void writingToAMissingFolderFails();
    void fileIsKeptWhenWritingFails();

    void productIdOfTheDefaultBundle();
    void productIdInContentsResources();
    void productIdIsNotTrimmed();
    void productIdOfABundleWithoutTheFile();
    void productIdThatIsNotUtf8();
    void productIdWithoutABundle();
    void decimalCommaLocaleChangesNothing();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_UtilityFunction::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    resetLocaleForTesting();
}

void tst_UtilityFunction::cleanup()
{
    resetLocaleForTesting();
    std::setlocale(LC_ALL, "C");
}

// Stands first, as the counter starts at 0 with the process.
void tst_UtilityFunction::tempPathNamesProductTimeAndCounter()
{
    put(at("product.id"), "acme");
    setDefaultBundlePath(m_folder->path());
    static const QRegularExpression form(QStringLiteral("^(\\d+\\.\\d{6})-(\\d+)$"));
    const QString folder = QDir::tempPath() + QStringLiteral("acme/");
    for (int counter = 0; counter < 3; ++counter) {
        if (counter == 2)
            std::setlocale(LC_ALL, "de_DE.UTF-8");
        const double before = double(QDateTime::currentMSecsSinceEpoch()) / 1000 - 0.01;
        const QString path = UtilityFunction::createTempPath();
        const double after = double(QDateTime::currentMSecsSinceEpoch()) / 1000 + 0.01;
        QVERIFY2(path.startsWith(folder), qPrintable(path));
        const auto match = form.match(path.mid(folder.size()));
        QVERIFY2(match.hasMatch(), qPrintable(path));
        QVERIFY(match.captured(1).toDouble() >= before && match.captured(1).toDouble() <= after);
        QCOMPARE(match.captured(2).toInt(), counter);
        QVERIFY(!QFileInfo::exists(path));
    }
    resetLocaleForTesting();
    QVERIFY(UtilityFunction::createTempPath().startsWith(QDir::tempPath() + QStringLiteral("quillnest/")));
}

void tst_UtilityFunction::xmlTextLosesLineBreaksAndAngleBrackets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    QTest::newRow("all together") << u("a<b>\r\nc & d") << u("a&lt;b&gt;c & d");
    QTest::newRow("carriage return") << u("a\rb") << u("ab");
    QTest::newRow("line feed") << u("a\nb") << u("ab");
    QTest::newRow("line feed before carriage return") << u("a\n\rb") << u("ab");
    QTest::newRow("many line breaks") << u("\r\n\r\n\r\n\n\n\r") << u("");
    QTest::newRow("ampersand is left alone") << u("&lt;&amp;&") << u("&lt;&amp;&");
    QTest::newRow("quotes are left alone") << u("\"'") << u("\"'");
    QTest::newRow("emoji") << u("<\U0001F600>") << u("&lt;\U0001F600&gt;");
    QTest::newRow("empty") << u("") << u("");
}

void tst_UtilityFunction::xmlTextLosesLineBreaksAndAngleBrackets()
{
    QFETCH(QString, text);
    QTEST(replaceStringForXML(text), "result");
}

void tst_UtilityFunction::scriptText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<char>("quote");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const char *text, char quote, const char *result) {
        QTest::newRow(name) << u(text) << quote << u(result);
    };
    row("Windows line break is one", "a\r\nb", '"', "a<br/>b");
    row("carriage return", "a\rb", '"', "a<br/>b");
    row("line feed", "a\nb", '"', "a<br/>b");
    row("line feed before carriage return is two", "a\n\rb", '"', "a<br/><br/>b");
    row("backslash is doubled", "a\\b", '"', "a\\\\b");
    row("two backslashes", "\\\\", '"', "\\\\\\\\");
    row("Unicode escape keeps its backslash", "\\u00e9", '"', "\\u00e9");
    row("upper-case escape comes back in lower case", "\\U00e9", '"', "\\u00e9");
    row("backslash before an escape", "\\\\u0041", '"', "\\\\\\u0041");
    row("written protection becomes an escape", "${Unicode}", '"', "\\u");
    row("unfinished protection stays", "${Unicode", '"', "${Unicode");
    row("double quote", "a\"b", '"', "a\\\"b");
    row("apostrophe stays between double quotes", "a'b", '"', "a'b");
    row("apostrophe", "a'b", '\'', "a\\'b");
    row("double quote stays between apostrophes", "a\"b", '\'', "a\"b");
    row("backslash and quote", "\\\"", '"', "\\\\\\\"");
    row("entities", "&lt;b&gt;&amp;", '"', "<b>&");
    row("ampersand entity comes last", "&amp;lt;", '"', "&lt;");
    row("doubly escaped ampersand", "&amp;amp;", '"', "&amp;");
    row("other entities stay", "&quot;&apos;&#65;&LT;", '"', "&quot;&apos;&#65;&LT;");
    row("quote as an entity stays one", "&quot;", '\'', "&quot;");
    row("line break inside an entity", "&l\nt;", '"', "&l<br/>t;");
    row("empty", "", '"', "");
    row("emoji", "\U0001F600", '"', "\U0001F600");
    // Not by u(), which would take the mark for a file's.
    const QString marked = QStringLiteral("\uFEFF\uFEFFa\uFEFF");
    QTest::newRow("byte-order marks stay") << marked << '"' << marked;
}

void tst_UtilityFunction::scriptText()
{
    QFETCH(QString, text);
    QFETCH(char, quote);
    QFETCH(QString, result);
    QCOMPARE(replaceStringForJS(text, QLatin1Char(quote)), result);
    QCOMPARE(modelForJS(text, QLatin1Char(quote)), result);
}

void tst_UtilityFunction::scriptTextOfSaidQuote()
{
    QCOMPARE(replaceStringForJS(u("say \"hi\"\n\\u00e9&lt;b&gt;"), u'"'), u("say \\\"hi\\\"<br/>\\u00e9<b>"));
}

void tst_UtilityFunction::otherQuoteCharactersEscapeNoQuote()
{
    // The last three share their low byte with the two quote characters.
    for (const QChar quote : {QChar(u'`'), QChar(u'\\'), QChar(u'u'), QChar(u'\0'), QChar(u'&'),
                              QChar(0x2027), QChar(0x2222), QChar(0x0127)})
        QCOMPARE(replaceStringForJS(u("\"'`\\"), quote), u("\"'`\\\\"));
}

void tst_UtilityFunction::scriptTextAgreesWithSixReplacements()
{
    QRandomGenerator random(1);
    for (int i = 0; i < 60000; ++i) {
        const QString text = awkwardText(random);
        for (const char quote : {'"', '\'', 'u', '|'}) {
            const QString expected = modelForJS(text, QLatin1Char(quote));
            QCOMPARE(replaceStringForJS(text, QLatin1Char(quote)), expected);
        }
    }
}

void tst_UtilityFunction::longScriptTextAgreesWithSixReplacements()
{
    QRandomGenerator random(2);
    for (int i = 0; i < 200; ++i) {
        QString text;
        while (text.size() < 20'000)
            text += awkwardText(random) + QString(random.bounded(40), u'x');
        for (const char quote : {'"', '\''})
            QCOMPARE(replaceStringForJS(text, QLatin1Char(quote)), modelForJS(text, QLatin1Char(quote)));
    }
}

void tst_UtilityFunction::elementBecomesADictionary_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QVariantMap>("dictionary");
    const auto row = [](const char *name, const char *xml, const QVariantMap &dictionary) {
        QTest::newRow(name) << QByteArray(xml) << dictionary;
    };
    const QVariantMap ax{{u("a"), u("x")}};
    const QVariantMap nested{{u("a"), QVariantMap{{u("b"), u("1")}, {u("c"), u("2")}}}};
    row("no children", "<r/>", {});
    row("text alone", "<r>x</r>", {});
    row("one text", "<r><a>x</a></r>", ax);
    row("empty child", "<r><a/></r>", {{u("a"), u("")}});
    row("only child element collapses into its text", "<r><a><b>x</b></a></r>", ax);
    row("deep only children collapse", "<r><a><b><c>x</c></b></a></r>", ax);
    row("only child with several children collapses too", "<r><a><b><c>x</c><d>y</d></b></a></r>",
        {{u("a"), u("xy")}});
    row("two children are nested", "<r><a><b>1</b><c>2</c></a></r>", nested);
    row("collapse inside a nested one", "<r><a><b><q>1</q></b><c>2</c></a></r>", nested);
    row("the last of a name wins", "<r><a>1</a><b>2</b><a>x</a></r>", {{u("a"), u("x")}, {u("b"), u("2")}});
    row("text after nested of the same name", "<r><a><b>1</b><c>2</c></a><a>x</a></r>", ax);
    row("attributes are dropped", "<r k='v'><a type='text'>x</a></r>", ax);
    row("line breaks between elements", "<r>\n  <a>\n    <b>1</b>\n    <c>2</c>\n  </a>\n</r>", nested);
    row("line breaks around an only child", "<r>\n <a>\n <b>x</b>\n </a>\n</r>", ax);
    row("blank text alone is kept", "<r><a>  </a></r>", {{u("a"), u("  ")}});
    row("comments count for nothing", "<r><!--c--><a><!--c-->x</a><!--c--></r>", ax);
    row("comment beside an only child", "<r><a><!--c--><b>x</b></a></r>", ax);
    row("instructions count for nothing", "<r><?p q?><a>x<?p q?></a></r>", ax);
    row("comment alone", "<r><a><!--c--></a></r>", {{u("a"), u("")}});
    row("text and CDATA are one text", "<r><a>x<![CDATA[<y>]]>z</a></r>", {{u("a"), u("x<y>z")}});
    row("CDATA alone", "<r><a><![CDATA[x]]></a></r>", ax);
    row("text around a comment is one text", "<r><a>x<!--c-->y</a></r>", {{u("a"), u("xy")}});
    row("text beside an element makes two", "<r><a>tail<b>1</b></a></r>",
        {{u("a"), QVariantMap{{u("b"), u("1")}}}});
    row("two comments beside an only child", "<r><a><!--1--><b>x</b><!--2--></a></r>", ax);
    row("entities", "<r><a>&lt;&amp;&#233;</a></r>", {{u("a"), u("<&é")}});
    row("names beyond ascii", "<r><caf\xC3\xA9>x</caf\xC3\xA9></r>", {{u("café"), u("x")}});
}

void tst_UtilityFunction::elementBecomesADictionary()
{
    QFETCH(QByteArray, xml);
    QFETCH(QVariantMap, dictionary);
    const auto parsed = Xml::parse(xml);
    QVERIFY2(parsed, qPrintable(parsed.reason));
    QCOMPARE(xml2dict(rootOf(parsed)), dictionary);
}

void tst_UtilityFunction::noElementGivesAnEmptyDictionary()
{
    QVERIFY(xml2dict(pugi::xml_node()).isEmpty());
}

void tst_UtilityFunction::dictionaryBecomesAnElement()
{
    pugi::xml_document document;
    const auto root = document.append_child("r");
    const pugi::xml_node node
        = dict2xml(root, {{u("a"), u("x")}, {u("b"), u("")}, {u("café"), u("<&>\"'")}}, u("name"));
    QCOMPARE(node.name(), "name");
    QVERIFY(node.first_attribute().empty());
    QCOMPARE(std::distance(node.begin(), node.end()), 3);
    QCOMPARE(Xml::text(node.child("a")), u("x"));
    QVERIFY(!node.child("b").empty());
    QCOMPARE(Xml::text(node.child("b")), u(""));
    QCOMPARE(Xml::text(node.child("caf\xC3\xA9")), u("<&>\"'"));
}

void tst_UtilityFunction::dictionaryElementIsAppendedAndAnswered()
{
    auto parsed = Xml::parse("<r><first/></r>");
    const pugi::xml_node node = dict2xml(rootOf(parsed), {{u("a"), u("x")}}, u("café"));
    QVERIFY(node == rootOf(parsed).last_child());
    QCOMPARE(rootOf(parsed).first_child().name(), "first");
    QCOMPARE(QString::fromUtf8(node.name()), u("café"));
}

void tst_UtilityFunction::emptyDictionaryGivesAnEmptyElement()
{
    pugi::xml_document document;
    const pugi::xml_node node = dict2xml(document, {}, u("empty"));
    QCOMPARE(node.name(), "empty");
    QVERIFY(node.first_child().empty());
    QVERIFY(node.first_attribute().empty());
}

void tst_UtilityFunction::nestedDictionaryTakesItsKeyAsName()
{
    pugi::xml_document document;
    const QVariantMap deep{{u("c"), u("x")}};
    const pugi::xml_node node = dict2xml(document, {{u("a"), QVariantMap{{u("b"), deep}}}}, u("r"));
    QCOMPARE(Xml::text(node.child("a").child("b").child("c")), u("x"));
    QVERIFY(node.child("a").child("b").child("c").next_sibling().empty());
}

void tst_UtilityFunction::otherValuesAreWrittenAsTheirDescription()
{
    pugi::xml_document document;
    const pugi::xml_node node = dict2xml(
        document, {{u("i"), 42}, {u("d"), 1.5}, {u("l"), std::numeric_limits<qint64>::min()}}, u("r"));
    QCOMPARE(Xml::text(node.child("i")), u("42"));
    QCOMPARE(Xml::text(node.child("d")), u("1.5"));
    QCOMPARE(Xml::text(node.child("l")), u("-9223372036854775808"));
}

void tst_UtilityFunction::dictionaryTextIsCleaned()
{
    pugi::xml_document document;
    const pugi::xml_node node = dict2xml(document, {{u("a"), u("x\x01y\r\nz\r")}}, u("r"));
    QCOMPARE(Xml::text(node.child("a")), u("xy\nz\n"));
    const auto again = Xml::parse(Xml::serialize(node));
    QVERIFY2(again, qPrintable(again.reason));
    QCOMPARE(Xml::text(rootOf(again)), u("xy\nz\n"));
}

void tst_UtilityFunction::dictionaryKeysKeepAMark()
{
    const QVariantMap map{{QStringLiteral("\uFEFFa"), QStringLiteral("\uFEFFx")}, {u("a"), u("y")}};
    pugi::xml_document document;
    QCOMPARE(xml2dict(dict2xml(document, map, u("r"))), map);
}

void tst_UtilityFunction::dictionariesComeBack()
{
    QRandomGenerator random(2);
    // Nested dictionaries have two entries or more: one alone collapses.
    const std::function<QVariantMap(int)> make = [&](int depth) {
        QVariantMap map;
        for (int i = 2 + random.bounded(3); i > 0; --i) {
            const QString key = QStringLiteral("k%1").arg(i);
            if (depth < 3 && random.bounded(3) == 0)
                map[key] = make(depth + 1);
            else
                map[key] = Xml::cleaned(awkwardText(random));
        }
        return map;
    };
    for (int i = 0; i < 300; ++i) {
        const QVariantMap map = make(0);
        pugi::xml_document document;
        const pugi::xml_node node = dict2xml(document, map, u("r"));
        QCOMPARE(xml2dict(node), map);
        const auto again = Xml::parse(Xml::serialize(node));
        QVERIFY2(again, qPrintable(again.reason));
        QCOMPARE(xml2dict(rootOf(again)), map);
    }
}

void tst_UtilityFunction::typedElementHasOneAttributeAndItsText()
{
    pugi::xml_document document;
    for (const char *type : {"text", "number", "color", "bool", "border", "file"}) {
        const pugi::xml_node node = generateXmlWithType(document, "leaf", u("0x00FF00"), type);
        QCOMPARE(node.name(), "leaf");
        QCOMPARE(std::distance(node.attributes_begin(), node.attributes_end()), 1);
        QCOMPARE(node.attribute("type").value(), type);
        QCOMPARE(Xml::text(node), u("0x00FF00"));
        QVERIFY(Xml::firstChild(node, "leaf").empty());
    }
    QCOMPARE(Xml::text(generateXmlWithType(document, "leaf", QString(), "text")), u(""));
    QCOMPARE(Xml::serialize(generateXmlWithType(document, "link", u("a"), "text")),
             QByteArray("<link type=\"text\">a</link>"));
}

void tst_UtilityFunction::typedElementIsAppendedAfterTheOthers()
{
    auto parsed = Xml::parse("<r><a/><!--c--></r>");
    const pugi::xml_node node = generateXmlWithType(rootOf(parsed), "a", u("x"), "text");
    QVERIFY(node == rootOf(parsed).last_child());
    QVERIFY(node != rootOf(parsed).first_child());
}

void tst_UtilityFunction::typedElementTextIsEscapedAndCleaned()
{
    pugi::xml_document document;
    const QString text = u("a<b>&amp;\"'\r\n]]>\x02\t\U0001F600");
    const pugi::xml_node node = generateXmlWithType(document, "leaf", text, "text");
    const auto again = Xml::parse(Xml::serialize(node));
    QVERIFY2(again, qPrintable(again.reason));
    QCOMPARE(Xml::text(rootOf(again)), u("a<b>&amp;\"'\n]]>\t\U0001F600"));
}

void tst_UtilityFunction::decimalField_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const char *text, const char *result) {
        QTest::newRow(name) << u(text) << u(result);
    };
    row("empty", "", "");
    row("digit", "7", "7");
    row("zero", "0", "0");
    row("nine", "9", "9");
    row("first point", "12.", "12.");
    row("second point", "12.5.", "12.5");
    row("point after point", "12..", "12.");
    row("point alone", ".", ".");
    row("letter", "12a", "12");
    row("letter alone", "a", "");
    row("minus", "-", "");
    row("comma", "12,", "12");
    row("blank", "12 ", "12");
    row("line feed", "12\n", "12");
    row("slash, before 0", "1/", "1");
    row("colon, behind 9", "1:", "1");
    row("only the last character is looked at", "a-b.c.1", "a-b.c.1");
    row("digit after two points", "1.2.3", "1.2.3");
    row("Arabic-Indic digit", "1\u0663", "1");
    row("full-width digit", "1\uFF15", "1");
    row("superscript digit", "1\u00B2", "1");
    row("emoji goes whole", "12\U0001F600", "12");
    row("mathematical digit goes whole", "1\U0001D7D9", "1");
    row("emoji in front stays", "\U0001F6001", "\U0001F6001");
    row("combining mark goes alone", "12a\u0301", "12a");
    QTest::newRow("half a pair") << QString(u("12") + QChar(0xDE00)) << u("12");
}

void tst_UtilityFunction::decimalField()
{
    QFETCH(QString, text);
    QTEST(UtilityFunction::checkFloatValueStringFrom(text), "result");
}

void tst_UtilityFunction::integerField_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const char *text, const char *result) {
        QTest::newRow(name) << u(text) << u(result);
    };
    row("empty", "", "");
    row("digits", "1290", "1290");
    row("point", "12.", "12");
    row("point alone", ".", "");
    row("letter", "12a", "12");
    row("minus", "-", "");
    row("plus", "1+", "1");
    row("slash, before 0", "1/", "1");
    row("colon, behind 9", "1:", "1");
    row("only the last character is looked at", "1.a2", "1.a2");
    row("only one character is removed", "12ab", "12a");
    row("Arabic-Indic digit", "1\u0663", "1");
    row("full-width digit", "1\uFF15", "1");
    row("emoji goes whole", "12\U0001F600", "12");
}

void tst_UtilityFunction::integerField()
{
    QFETCH(QString, text);
    QTEST(UtilityFunction::checkIntegerValueStringFrom(text), "result");
}

void tst_UtilityFunction::nilFieldGivesAnEmptyText()
{
    for (const QString &text : {QString(), QStringLiteral("")}) {
        const QString decimal = UtilityFunction::checkFloatValueStringFrom(text);
        const QString integer = UtilityFunction::checkIntegerValueStringFrom(text);
        QVERIFY(decimal.isEmpty() && !decimal.isNull());
        QVERIFY(integer.isEmpty() && !integer.isNull());
    }
}

void tst_UtilityFunction::colorsAreThoseOfTheCategory()
{
    QCOMPARE(UtilityFunction::colorToHexRGB({1, 0.5, 0, 0.2}), u("0xFF7F00"));
    QCOMPARE(UtilityFunction::colorFromHexRGB(u("0xFF7F00")), MyColorOper::colorFromHexRGB(u("0xFF7F00")));
    QCOMPARE(UtilityFunction::colorFromHexRGB(u("#FF0000")), (Color{0, 0, 0, 1}));
    QCOMPARE(UtilityFunction::colorFromHexRGB(QString()), (Color{0, 0, 0, 1}));
}

void tst_UtilityFunction::colorThatCannotBeConvertedIsBlack()
{
    const Color color{std::numeric_limits<double>::quiet_NaN(), 1, 1, 1};
    QCOMPARE(UtilityFunction::colorToHexRGB(color), u("0x000000"));
}

void tst_UtilityFunction::urlWithASchemeIsKept_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"http://example.com",
                             "HTTPS://EXAMPLE.COM/",
                             "mailto:a@b.c",
                             "file:///tmp/x",
                             "javascript:alert(1)",
                             "a+b-c.1:x",
                             "localhost:8080",
                             "http:",
                             "x://",
                             "x:/",
                             "x:?q",
                             "x:#f",
                             "http://u:p@h:80/p;a=1?q=/?&r#f/?",
                             "http://h:",
                             "http://h/%41%c3%A9",
                             "http://[::1]:8080/",
                             "http://[2001:db8::1.2.3.4]/",
                             "http://[v1.a:b]/",
                             "http://256.1.1.1/",
                             "urn:isbn:0451450523",
                             "tel:+1-816-555-1212",
                             "http://h/!$&'()*+,;=:@-._~"})
        QTest::newRow(text) << u(text);
}

void tst_UtilityFunction::urlWithASchemeIsKept()
{
    QFETCH(QString, text);
    QCOMPARE(UtilityFunction::checkUrlString(text), text);
}

void tst_UtilityFunction::otherTextGetsAScheme_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"",
                             "www.example.com",
                             "example.com/a:b",
                             "//example.com",
                             "/path",
                             "?q",
                             "#f",
                             ":x",
                             "1a:b",
                             "a_b:c",
                             "+a:b",
                             "é:x",
                             "a b",
                             "http://a b",
                             " http://a",
                             "http://a ",
                             "\nhttp://a",
                             "http://a\"b",
                             "http://a<b>",
                             "http://a\\b",
                             "http://a^b",
                             "http://a`b",
                             "http://a{b}",
                             "http://a|b",
                             "http://h/%",
                             "http://h/%4",
                             "http://h/%zz",
                             "http://é/",
                             "http://h/é",
                             "http://a#b#c",
                             "http://h/[x]",
                             "http://[::1",
                             "http://[1::2::3]/",
                             "http://[::12345]/",
                             "http://h:port/",
                             "http://u@v@h/"})
        QTest::newRow(*text ? text : "empty") << u(text);
    QTest::newRow("nil") << QString();
    QTest::newRow("zero character") << QString(u("http://a") + QChar(u'\0'));
}

void tst_UtilityFunction::otherTextGetsAScheme()
{
    QFETCH(QString, text);
    QCOMPARE(UtilityFunction::checkUrlString(text), u("http://") + text);
}

void tst_UtilityFunction::escapesWhatNoUrlMayHold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    const auto row
        = [](const char *text, const char *result) { QTest::newRow(text) << u(text) << u(result); };
    row("http://a b", "http://a%20b");
    row("http://a%20b", "http://a%20b");
    row("http://h/é", "http://h/%C3%A9");
    row("http://h/%c3%A9", "http://h/%c3%A9");
    row("100%", "100%25");
    row("a%2", "a%252");
    row("a%zz", "a%25zz");
    row("%%20", "%25%20");
    row("%2%20", "%252%20");
    row("\U0001F600", "%F0%9F%98%80");
    row("\"<>\\^`{|}", "%22%3C%3E%5C%5E%60%7B%7C%7D");
    row("\r\n\t", "%0D%0A%09");
    QTest::newRow("empty") << u("") << u("");
    QTest::newRow("zero character") << QString(QChar(u'\0')) << u("%00");
    QTest::newRow("full-width digits behind a percent sign") << u("%２０") << u("%25%EF%BC%92%EF%BC%90");
}

void tst_UtilityFunction::escapesWhatNoUrlMayHold()
{
    QFETCH(QString, text);
    QTEST(UtilityFunction::escapedUrlString(text), "result");
}

void tst_UtilityFunction::escapesExactlyTheCharactersOutsideTheUrlSet()
{
    const QByteArray set(
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=");
    for (int c = 0; c < 128; ++c) {
        const QChar character{ushort(c)};
        const QByteArray escape = '%' + QByteArray(1, char(c)).toHex().toUpper();
        QCOMPARE(UtilityFunction::escapedUrlString(QString(character)),
                 set.contains(char(c)) ? QString(character) : QString::fromLatin1(escape));
    }
}

void tst_UtilityFunction::escapingTwiceChangesNothingMore()
{
    QRandomGenerator random(3);
    const QString pieces = u("%%%2025afFGé #?[]/:\\\"\U0001F600");
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (int length = random.bounded(10); length > 0; --length)
            text += pieces[random.bounded(int(pieces.size()))];
        const QString once = UtilityFunction::escapedUrlString(text);
        QCOMPARE(UtilityFunction::escapedUrlString(once), once);
        for (const QChar c : once)
            QVERIFY(c.unicode() > 32 && c.unicode() < 127);
    }
}

void tst_UtilityFunction::writesTextBehindAByteOrderMark()
{
    QVERIFY(UtilityFunction::writeString(u("var config=é\U0001F600;\n").toUtf8(), at("config.js")));
    QCOMPARE(get(at("config.js")), QByteArray("\xEF\xBB\xBFvar config=\xC3\xA9\xF0\x9F\x98\x80;\n"));
}

void tst_UtilityFunction::writesAnEmptyTextAsTheMarkAlone()
{
    QVERIFY(UtilityFunction::writeString("", at("config.js")));
    QCOMPARE(get(at("config.js")), QByteArray("\xEF\xBB\xBF"));
}

void tst_UtilityFunction::writingReplacesTheWholeFile()
{
    put(at("config.js"), QByteArray(100000, 'x'));
    QVERIFY(UtilityFunction::writeString("new", at("config.js")));
    QCOMPARE(get(at("config.js")), QByteArray("\xEF\xBB\xBFnew"));
    const QByteArray large(3 << 20, 'y');
    QVERIFY(UtilityFunction::writeString(large, at("config.js")));
    QCOMPARE(get(at("config.js")), "\xEF\xBB\xBF" + large);
    QCOMPARE(Fixtures::tree(m_folder->path()).size(), 1);
}

void tst_UtilityFunction::writingToAMissingFolderFails()
{
    QVERIFY(!UtilityFunction::writeString("x", at("none/config.js")));
    QVERIFY(!UtilityFunction::writeString("x", QString()));
    QVERIFY(!UtilityFunction::writeString("x", m_folder->path()));
    QVERIFY(!QFileInfo::exists(at("none")));
}

void tst_UtilityFunction::fileIsKeptWhenWritingFails()
{
    put(at("config.js"), "the old content");
    bool ok = true;
    {
        const FullDisk disk;
        ok = UtilityFunction::writeString("new", at("config.js"));
    }
    QVERIFY(!ok);
    QCOMPARE(get(at("config.js")), QByteArray("the old content"));
    QCOMPARE(Fixtures::tree(m_folder->path()).size(), 1);
}

void tst_UtilityFunction::productIdOfTheDefaultBundle()
{
    put(at("product.id"), "acme");
    setDefaultBundlePath(m_folder->path());
    QCOMPARE(productId(), u("acme"));
}

void tst_UtilityFunction::productIdInContentsResources()
{
    put(at("x.bundle/Contents/Resources/product.id"), "caf\xC3\xA9");
    setDefaultBundlePath(at("x.bundle"));
    QCOMPARE(productId(), u("café"));
}

void tst_UtilityFunction::productIdIsNotTrimmed()
{
    put(at("product.id"), " acme\n");
    setDefaultBundlePath(m_folder->path());
    QCOMPARE(productId(), u(" acme\n"));
}

void tst_UtilityFunction::productIdOfABundleWithoutTheFile()
{
    setDefaultBundlePath(m_folder->path());
    QCOMPARE(productId(), u("quillnest"));
}

void tst_UtilityFunction::productIdThatIsNotUtf8()
{
    put(at("product.id"), "ac\xFFme");
    setDefaultBundlePath(m_folder->path());
    QCOMPARE(productId(), u("quillnest"));
}

void tst_UtilityFunction::productIdWithoutABundle()
{
    QCOMPARE(productId(), u("quillnest"));
    setDefaultBundlePath(at("none"));
    QCOMPARE(productId(), u("quillnest"));
}

void tst_UtilityFunction::decimalCommaLocaleChangesNothing()
{
    QVERIFY2(std::setlocale(LC_ALL, "de_DE.UTF-8"), "the locale de_DE.UTF-8 is not installed");
    QCOMPARE(UtilityFunction::colorToHexRGB({1, 0.5, 0, 1}), u("0xFF7F00"));
    QCOMPARE(UtilityFunction::checkFloatValueStringFrom(u("12,")), u("12"));
    QCOMPARE(UtilityFunction::checkFloatValueStringFrom(u("12.")), u("12."));
    pugi::xml_document document;
    const pugi::xml_node node = dict2xml(document, {{u("d"), 1234.5}}, u("r"));
    QCOMPARE(Xml::text(node), u("1234.5"));
}

LINKLIST_TEST_MAIN(tst_UtilityFunction)
#include "tst_UtilityFunction.moc"
