#include "Classes/Mode/Xml.h"
#include "tests/support/Fixtures.h"
#include "tests/support/ProcessorTimer.h"
#include "tests/support/TestCase.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <clocale>

using Fixtures::put;

namespace
{

constexpr qint64 largestSize = qint64(256) << 20;

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

QByteArray nested(int levels)
{
    return QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
}

int depth(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    int now = 0;
    int most = 0;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement)
            most = std::max(most, ++now);
        else if (token == QXmlStreamReader::EndElement)
            --now;
    }
    return most;
}

// Another reader's view: nothing when it refuses the document, else its elements, attributes and texts, where
// neighbouring texts are one and blank ones do not count.
std::optional<QStringList> seenByAnotherReader(const QByteArray &xml)
{
    // It overlooks a character that is cut at the very end, and forbidden characters in attribute names.
    const auto isControl = [](char c) { return uchar(c) < 0x20 && c != '\t' && c != '\n' && c != '\r'; };
    if (!xml.isValidUtf8() || std::any_of(xml.begin(), xml.end(), isControl) || xml.contains("\xEF\xBF\xBF"))
        return {};
    // Its edition of XML has no U+FEFF in names yet. One in front is the mark.
    const QByteArray mark("\xEF\xBB\xBF");
    const qsizetype start = xml.startsWith(mark) ? mark.size() : 0;
    QXmlStreamReader reader(xml.first(start) + xml.sliced(start).replace(mark, "\xC3\xA9"));
    reader.setNamespaceProcessing(false);
    QStringList result;
    QString text;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::Characters)
            text += reader.text();
        if (token != QXmlStreamReader::StartElement && token != QXmlStreamReader::EndElement)
            continue;
        if (!text.trimmed().isEmpty())
            result << u("text ") + text;
        text.clear();
        if (token == QXmlStreamReader::EndElement) {
            result << u("end");
            continue;
        }
        QStringList attributes;
        const QXmlStreamAttributes list = reader.attributes();
        for (const QXmlStreamAttribute &attribute : list)
            attributes << attribute.qualifiedName().toString() + u'=' + attribute.value().toString();
        result << u("start ") + reader.qualifiedName().toString() + u'|' + attributes.join(u'|');
    }
    if (reader.hasError())
        return {};
    // A referenced carriage return may have become a line feed.
    return result.replaceInStrings(u("\r\n"), u("\n")).replaceInStrings(u("\r"), u("\n"));
}

QString randomText(QRandomGenerator &random)
{
    static const QString pieces
        = u("\r\n\t "
            "\x01\x0B\x1F\x7F\u0085\u2028&<>\"']]>]--?x;#\u00E9\uFFFD\uFFFE\uFFFF\uFEFF\U0001F600\U0010FFFE");
    QString text;
    for (int length = random.bounded(12); length > 0; --length)
        text += pieces[random.bounded(int(pieces.size()))];
    return text;
}

// The productions Name, NameStartChar and NameChar of XML 1.0, fifth edition.
bool isNameByXml(const QString &text)
{
    static const QString start = u(
        R"(:A-Z_a-z\x{C0}-\x{D6}\x{D8}-\x{F6}\x{F8}-\x{2FF}\x{370}-\x{37D}\x{37F}-\x{1FFF}\x{200C}-\x{200D})"
        R"(\x{2070}-\x{218F}\x{2C00}-\x{2FEF}\x{3001}-\x{D7FF}\x{F900}-\x{FDCF}\x{FDF0}-\x{FFFD})"
        R"(\x{10000}-\x{EFFFF})");
    static const QString rest = start + u(R"(\-.0-9\x{B7}\x{300}-\x{36F}\x{203F}-\x{2040})");
    static const QRegularExpression name(u("^[") + start + u("][") + rest + u("]*\\z"));
    return name.match(text).hasMatch();
}

pugi::xml_node rootOf(const Xml::ParseResult &result)
{
    return result.document->document_element();
}

} // namespace

class tst_Xml : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void resultStartsAsFailed();
    void acceptsDocuments_data();
    void acceptsDocuments();
    void refusesWhatIsNoDocument_data();
    void refusesWhatIsNoDocument();
    void everyCharacterIsInNamesAsXmlSays_data();
    void everyCharacterIsInNamesAsXmlSays();
    void randomNamesAreAsXmlSays();
    void twoHundredFiftySixLevelsAreTheMost();
    void depthCountsEmptyElementsAndNotSiblings();
    void twoHundredThousandLevelsAreRefusedQuickly();
    void manyCommentsAndSiblingsAreQuick();
    void manyAttributesAreQuick();
    void repeatedAttributeAmongManyIsFound();
    void bytesBeyondTheLargestSizeAreRefused();
    void fileBeyondTheLargestSizeIsRefusedUnread();
    void documentOfTheLargestSizeIsRead();
    void fileIsReadLikeItsBytes();
    void missingFileAndFolderAreFailures();
    void blankTextBetweenElementsIsIgnored();
    void blankTextThatIsTheOnlyContentIsKept();
    void textBesideElementsIsKeptWhole();
    void blankTextBesideCdataIsKept();
    void lineBreaksBecomeLineFeeds();
    void serializesTheElementAlone();
    void serializingIsStable_data();
    void serializingIsStable();
    void foreignElementsAndCommentsSurvive();
    void mutationsAgreeWithAnotherReader();
    void textHoldsEverythingBelow_data();
    void textHoldsEverythingBelow();
    void setTextReplacesTheContent();
    void setTextKeepsCommentsInstructionsAndAttributes();
    void setTextThatIsThereAlreadyChangesNothing();
    void setTextCleans();
    void setTextSurvivesWritingAndReading();
    void removeContentLeavesNothing();
    void textKeptInItsElementIsLikeTextInANode();
    void cleanedDropsWhatXmlForbids_data();
    void cleanedDropsWhatXmlForbids();
    void cleaningTwiceChangesNothingMore();
    void childrenAreFoundByName();
    void decimalCommaLocaleChangesNoByte();

private:
    QString at(const char *name) const { return m_folder->filePath(u(name)); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Xml::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_Xml::cleanup()
{
    std::setlocale(LC_ALL, "C");
}

void tst_Xml::resultStartsAsFailed()
{
    const Xml::ParseResult result;
    QVERIFY(!result);
    QVERIFY(!result.reason.isEmpty());
}

void tst_Xml::acceptsDocuments_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *name, const QByteArray &xml) { QTest::newRow(name) << xml; };
    row("empty element", "<r/>");
    row("open and closed", "<r></r>");
    row("text", "<r>x</r>");
    row("declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r/>");
    row("declaration in lower case", "<?xml version='1.0' encoding='utf-8' standalone='yes'?>\n<r/>");
    row("byte-order mark", "\xEF\xBB\xBF<r/>");
    row("byte-order mark and declaration", "\xEF\xBB\xBF<?xml version=\"1.0\"?><r/>");
    row("comments and instructions around", "<!--a--><?p q?>\n<r/>\n<!--b--><?p?>\n");
    row("blanks around", " \r\n\t<r/> \r\n\t");
    row("document type", "<!DOCTYPE r><r/>");
    row("document type with a system name", "<!DOCTYPE r SYSTEM \"r.dtd\"><r/>");
    row("document type with declarations", "<!DOCTYPE r [<!ELEMENT r ANY><!--c--><?p q?>]><r/>");
    row("CDATA", "<r><![CDATA[<&]]]]><![CDATA[>]]></r>");
    row("empty CDATA", "<r><![CDATA[]]></r>");
    row("comment", "<r><!-- a - b <c> & d --></r>");
    row("empty comment", "<r><!----></r>");
    row("instruction", "<r><?p a?b >?></r>");
    row("instruction whose name begins with xml", "<?xml-stylesheet href='x'?><r/>");
    row("attributes", "<r a='1' b=\"2\"\n\tc = '3'/>");
    row("attribute with the other quote", "<r a='\"' b=\"'\"/>");
    row("greater-than in an attribute", "<r a='>'/>");
    row("greater-than in text", "<r>a > b</r>");
    row("brackets in text", "<r>]] ]></r>");
    row("the five entities", "<r a='&lt;&gt;&amp;&quot;&apos;'>&lt;&gt;&amp;&quot;&apos;</r>");
    row("character references", "<r a='&#10;'>&#9;&#10;&#13;&#32;&#xE9;&#x1f600;&#x10FFFF;&#xFFFD;</r>");
    row("blank before the end of a closing tag", "<r ></r \n>");
    row("names beyond ascii", "<caf\xC3\xA9 \xC3\xA9='1'/>");
    row("names of the current edition", "<\xC4\xB2 \xF0\x90\x80\x80\xCC\x81='1'/>");
    row("names of the current edition beside a comment",
        "<\xC4\xB2><!--\xC3\x97--><?\xE2\x82\xAC\xE2\x86\x88?></\xC4\xB2>");
    row("names with colon, dash, dot and digits", "<a:b-c.1_2 _x:y='1'/>");
    row("text beyond ascii", "<r>\xF0\x9F\x98\x80\xE6\x97\xA5</r>");
    row("delete and C1 characters", "<r>\x7F\xC2\x80</r>");
    row("private and supplementary non-characters", "<r>\xEE\x80\x80\xF4\x8F\xBF\xBF</r>");
    row("mark inside text", "<r>\xEF\xBB\xBF</r>");
    row("256 levels", nested(256));
}

void tst_Xml::acceptsDocuments()
{
    QFETCH(QByteArray, xml);
    const auto result = Xml::parse(xml);
    QVERIFY2(result, qPrintable(result.reason));
    QVERIFY(result.reason.isEmpty());
    QVERIFY(!rootOf(result).empty());
    const auto again = Xml::parse(Xml::serialize(rootOf(result)));
    QVERIFY2(again, qPrintable(again.reason));
    QCOMPARE(Xml::text(rootOf(again)), Xml::text(rootOf(result)));
}

void tst_Xml::refusesWhatIsNoDocument_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *name, const QByteArray &xml) { QTest::newRow(name) << xml; };
    row("nothing", "");
    row("mark alone", "\xEF\xBB\xBF");
    row("blanks alone", " \n\t");
    row("text alone", "x");
    row("declaration alone", "<?xml version='1.0'?>");
    row("comment alone", "<!--c-->");
    row("two roots", "<a/><b/>");
    row("two roots apart", "<a></a>\n<a></a>");
    row("text before", "x<r/>");
    row("text after", "<r/>x");
    row("text between comments", "<r/><!--a-->x<!--b-->");
    row("CDATA outside", "<r/><![CDATA[x]]>");
    row("blank CDATA outside", "<![CDATA[ ]]><r/>");
    row("reference outside", "<r/>&#32;");
    row("reference to a carriage return before", "&#13;<r/>");
    row("second mark", "\xEF\xBB\xBF\xEF\xBB\xBF<r/>");
    row("mark at the end", "<r/>\xEF\xBB\xBF");
    row("zero byte at the end", QByteArray("<r/>\0", 5));
    row("zero byte inside", QByteArray("<r>a\0b</r>", 10));
    row("zero byte hides a rest", QByteArray("<r/>\0<r/>", 9));
    row("unclosed", "<r>");
    row("unclosed inside", "<r><a></r>");
    row("crossed", "<a><b></a></b>");
    row("closing tag alone", "</r>");
    row("cut in a tag", "<r");
    row("cut in an attribute", "<r a='");
    row("cut in a closing tag", "<r></r");
    row("other case in the closing tag", "<r></R>");
    row("attribute in a closing tag", "<r></r a='1'>");
    row("blank before the name", "< r/>");
    row("blank before the slash's end", "<r/ >");
    row("name begins with a digit", "<1/>");
    row("name begins with a dash", "<-a/>");
    row("name holds a sign", "<a$/>");
    row("name holds a line separator", "<a\xE2\x80\xA8/>");
    row("name holds a next line", "<a\xC2\x85></a\xC2\x85>");
    row("name begins with a combining character",
        "<\xCC\x81"
        "a/>");
    row("attribute name holds a line separator", "<r a\xE2\x80\xA8='1'/>");
    row("attribute name holds U+FFFE", "<r a\xEF\xBF\xBE='1'/>");
    row("attribute name is a next line", "<r \xC2\x85='1'/>");
    row("instruction's name holds a line separator", "<r><?p\xE2\x80\xA8 q?></r>");
    row("no name", "<></>");
    row("attribute without a value", "<r a/>");
    row("attribute without quotes", "<r a=1/>");
    row("attributes without a blank between", "<r a='1'b='2'/>");
    row("attribute name begins with a digit", "<r 1='a'/>");
    row("less-than in an attribute", "<r a='<'/>");
    row("repeated attribute", "<r a='1' a='1'/>");
    row("repeated attribute among others", "<r a='1' b='2' c='3' b='4'/>");
    row("repeated attribute in an inner element", "<r><s a='1' a='2'/></r>");
    row("lone ampersand", "<r>a & b</r>");
    row("ampersand at the end", "<r>&</r>");
    row("unfinished entity", "<r>&lt</r>");
    row("unknown entity", "<r>&nbsp;</r>");
    row("unknown entity in an attribute", "<r a='&nbsp;'/>");
    row("entity in the wrong case", "<r>&LT;</r>");
    row("empty reference", "<r>&#;</r>");
    row("empty hexadecimal reference", "<r>&#x;</r>");
    row("reference with an upper-case X", "<r>&#X41;</r>");
    row("reference with other characters", "<r>&#4g;</r>");
    row("line feed in a reference", "<r>&#x\n41;</r>");
    row("line feed in a reference in an attribute", "<r a='&#x\n41;'/>");
    row("blank in a reference", "<r>&# 65;</r>");
    row("blank in a reference in an attribute", "<r a='&# 65;'/>");
    row("blank before a reference's end", "<r>&#65 ;</r>");
    row("blank in an entity", "<r>&lt ;</r>");
    row("blank in an entity in an attribute", "<r a='& lt;'/>");
    row("plus in a reference", "<r a='&#+65;'>&#x+41;</r>");
    row("negative reference", "<r>&#-65;</r>");
    row("reference to zero", "<r>&#0;</r>");
    row("reference to a control character", "<r>&#1;</r>");
    row("reference to a surrogate", "<r>&#xD800;</r>");
    row("reference to U+FFFE", "<r>&#xFFFE;</r>");
    row("reference to U+FFFF", "<r>&#65535;</r>");
    row("reference past the last character", "<r>&#x110000;</r>");
    row("reference past 32 bits", "<r>&#4294967361;</r>");
    row("reference past 64 bits", "<r>&#x10000000000000041;</r>");
    row("reference to a control character in an attribute", "<r a='&#1;'/>");
    row("end of CDATA in text", "<r>a]]>b</r>");
    row("unfinished CDATA", "<r><![CDATA[x</r>");
    row("CDATA in the wrong case", "<r><![cdata[x]]></r>");
    row("two dashes in a comment", "<r><!-- a -- b --></r>");
    row("three dashes at a comment's end", "<r><!-- a ---></r>");
    row("unfinished comment", "<r><!-- a</r>");
    row("too short a comment", "<r><!--></r>");
    row("unfinished instruction", "<r><?p q</r>");
    row("instruction without a name", "<r><? p?></r>");
    row("instruction called xml", "<r><?xml version='1.0'?></r>");
    row("instruction called XML", "<?XML q?><r/>");
    row("blank before the declaration", " <?xml version='1.0'?><r/>");
    row("comment before the declaration", "<!--c--><?xml version='1.0'?><r/>");
    row("two declarations", "<?xml version='1.0'?><?xml version='1.0'?><r/>");
    row("declaration without a version", "<?xml encoding='UTF-8'?><r/>");
    row("declaration with another word", "<?xml version='1.0' colour='red'?><r/>");
    row("document type behind the root", "<r/><!DOCTYPE r>");
    row("document type inside", "<r><!DOCTYPE r></r>");
    row("two document types", "<!DOCTYPE r><!DOCTYPE r><r/>");
    row("unfinished document type", "<!DOCTYPE r [<r/>");
    row("own entity", "<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>");
    row("own entity, unused", "<!DOCTYPE r [<!ENTITY e 'x'>]><r/>");
    row("own entities in many layers",
        "<!DOCTYPE r [<!ENTITY a 'xx'><!ENTITY b '&a;&a;'><!ENTITY c '&b;&b;'>]><r>&c;</r>");
    row("outside entity", "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><r>&e;</r>");
    row("control character in text", "<r>\x01</r>");
    row("control character in an attribute", "<r a='\x1F'/>");
    row("control character in a comment", "<r><!--\x02--></r>");
    row("control character in CDATA", "<r><![CDATA[\x0B]]></r>");
    row("control character in an instruction", "<r><?p \x0C?></r>");
    row("control character outside", "\x0C<r/>");
    row("U+FFFE", "<r>\xEF\xBF\xBE</r>");
    row("U+FFFF", "<r>\xEF\xBF\xBF</r>");
    row("not UTF-8", "<r>\xFF</r>");
    row("Latin-1", "<r>caf\xE9</r>");
    row("Latin-1 that says so", "<?xml version='1.0' encoding='ISO-8859-1'?><r>caf\xE9</r>");
    row("not UTF-8 in a comment", "<r><!--\xFF--></r>");
    row("not UTF-8 in an attribute", "<r a='\xC3'/>");
    row("not UTF-8 in a name", "<caf\xE9/>");
    row("cut UTF-8", "<r>\xF0\x9F\x98</r>");
    row("overlong UTF-8", "<r>\xC0\xAF</r>");
    row("encoded surrogate", "<r>\xED\xA0\x80</r>");
    row("past the last character", "<r>\xF4\x90\x80\x80</r>");
    row("UTF-16", QByteArray("\xFF\xFE<\0r\0/\0>\0", 10));
    row("UTF-16, big-endian, without a mark", QByteArray("\0<\0r\0/\0>", 8));
    row("257 levels", nested(257));
}

void tst_Xml::refusesWhatIsNoDocument()
{
    QFETCH(QByteArray, xml);
    const auto result = Xml::parse(xml);
    QVERIFY(!result);
    QVERIFY(!result.document);
    QVERIFY(!result.reason.isEmpty());
    QVERIFY(result.offset >= 0 && result.offset <= xml.size());
}

void tst_Xml::everyCharacterIsInNamesAsXmlSays_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *name, const char *before, const char *after) {
        QTest::newRow(name) << u(before) << u(after);
    };
    row("element", "<", "/>");
    row("element beside a comment", "<!--c--><", "/>");
    row("attribute", "<r ", "=''/>");
    row("attribute beside a comment", "<!--c--><r ", "=''/>");
    row("instruction", "<r/><?", " x?>");
}

void tst_Xml::everyCharacterIsInNamesAsXmlSays()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    const bool isStrict = before.contains(u'!') || before.contains(u'?');
    // Every one where the alphabets are; further on those beside the ends of rows, where the ranges end, too.
    const auto next = [](char32_t code) {
        if (code < 0x3100)
            return code + 1;
        const char32_t row = code < 0x10020 ? 0xF : 0xFFF;
        return (code & row) == 0 ? code + row - 2 : code + 1;
    };
    for (char32_t code = 1; code <= 0x10FFFF; code = next(code)) {
        if (QChar::isSurrogate(code))
            continue;
        QString character;
        character += QChar::fromUcs4(code);
        if (isStrict && code == ':')
            continue; // which the strict reader wants inside a name only
        for (const QString &name : {character, u'p' + character}) {
            const auto result = Xml::parse((before + name + after).toUtf8());
            bool isTaken = false; // as that name, where a document may have another meaning
            if (result) {
                const pugi::xml_node root = rootOf(result);
                for (const QByteArray &found :
                     {QByteArray(root.name()), QByteArray(root.first_attribute().name()),
                      QByteArray(root.next_sibling().name())})
                    isTaken = isTaken || found == name.toUtf8();
            }
            QVERIFY2(isTaken == isNameByXml(name),
                     qPrintable(QStringLiteral("U+%1 in %2").arg(code, 4, 16).arg(before + name + after)));
        }
    }
}

void tst_Xml::randomNamesAreAsXmlSays()
{
    const QString pieces
        = u("abxyABXY_-.09é\u00B7\u00D7\u0085\u00A0\u0132\u0301\u036F\u2028\u203F\u2190\u3000\u3001"
            "\uD7A3\uE000\uFDD0\uFFFD\uFFFE\U00010000\U000EFFFF\U000F0000\u4E69\u4E03");
    const QList<uint> codes = pieces.toUcs4();
    QRandomGenerator random(3);
    const auto randomName = [&] {
        QString name;
        for (int length = 1 + random.bounded(3); length > 0; --length)
            name += QChar::fromUcs4(codes[random.bounded(int(codes.size()))]);
        return name;
    };
    int accepted = 0;
    for (int i = 0; i < 60'000; ++i) {
        const QString element = randomName();
        const QString first = randomName();
        const QString second = randomName();
        QString xml = u'<' + element + u' ' + first + u("='1' ") + second + u("='2'>") + first + u("</")
            + element + u'>';
        bool isDocument
            = isNameByXml(element) && isNameByXml(first) && isNameByXml(second) && first != second;
        if (random.bounded(2) == 0) {
            const QString target = randomName();
            xml += u("<?") + target + u("?><!--") + second + u("-->");
            isDocument = isDocument && isNameByXml(target) && !second.contains(QChar(0xFFFE))
                && !second.contains(u("--")) && !second.endsWith(u'-');
        }
        const auto result = Xml::parse(xml.toUtf8());
        QVERIFY2(bool(result) == isDocument, qPrintable(xml + u' ' + result.reason));
        if (!result)
            continue;
        ++accepted;
        QCOMPARE(u(rootOf(result).name()), element);
        QCOMPARE(u(rootOf(result).last_attribute().name()), second);
        QCOMPARE(Xml::text(rootOf(result)), first);
    }
    QVERIFY2(accepted > 1000, qPrintable(QString::number(accepted)));
}

void tst_Xml::twoHundredFiftySixLevelsAreTheMost()
{
    for (int levels = 250; levels <= 260; ++levels) {
        QCOMPARE(bool(Xml::parse(nested(levels))), levels <= 256);
        QCOMPARE(bool(Xml::parse("<?xml version='1.0'?>\n<!--c-->" + nested(levels))), levels <= 256);
    }
}

void tst_Xml::depthCountsEmptyElementsAndNotSiblings()
{
    const auto around = [](int levels, const QByteArray &inside) {
        return QByteArray("<a>").repeated(levels) + inside + QByteArray("</a>").repeated(levels);
    };
    QVERIFY(Xml::parse(around(255, "<b/>")));
    QVERIFY(!Xml::parse(around(256, "<b/>")));
    QVERIFY(Xml::parse(around(256, "x")));
    QVERIFY(Xml::parse(around(256, "<!--<b>--><![CDATA[<b>]]><?p <b>?>")));
    QVERIFY(Xml::parse(around(255, QByteArray("<b/>").repeated(1000))));
    QVERIFY(Xml::parse(around(255, QByteArray("<b></b>").repeated(1000))));
    QVERIFY(Xml::parse(around(255, QByteArray("<b x='/>'></b>").repeated(1000))));
    QVERIFY(!Xml::parse(around(255, QByteArray("<b/>").repeated(1000) + "<b><c/></b>")));
}

void tst_Xml::twoHundredThousandLevelsAreRefusedQuickly()
{
    ProcessorTimer timer;
    timer.start();
    QVERIFY(!Xml::parse(nested(200'000)));
    QVERIFY(!Xml::parse(QByteArray("<a>").repeated(200'000)));
    QVERIFY(!Xml::parse(QByteArray("<a>").repeated(200'000) + "<a/>" + QByteArray("</a>").repeated(200'000)));
    QVERIFY(timer.elapsed() < 5000);
}

void tst_Xml::manyCommentsAndSiblingsAreQuick()
{
    ProcessorTimer timer;
    timer.start();
    QVERIFY(
        Xml::parse("<r>" + QByteArray("<a>&lt;</a> <!--c--><?p?><![CDATA[x]]>").repeated(200'000) + "</r>"));
    QVERIFY(!Xml::parse("<r>" + QByteArray("<!-").repeated(200'000)));
    QVERIFY(!Xml::parse(QByteArray("<!DOCTYPE r [").repeated(100'000)));
    QVERIFY(timer.elapsed() < 10000);
}

void tst_Xml::manyAttributesAreQuick()
{
    QByteArray xml("<r");
    for (int i = 0; i < 100'000; ++i)
        xml += " a" + QByteArray::number(i) + "=''";
    ProcessorTimer timer;
    timer.start();
    const auto result = Xml::parse(xml + "/>");
    QVERIFY2(result, qPrintable(result.reason));
    QVERIFY(timer.elapsed() < 5000);
    const auto root = rootOf(result);
    QCOMPARE(std::distance(root.attributes_begin(), root.attributes_end()), 100'000);
}

void tst_Xml::repeatedAttributeAmongManyIsFound()
{
    QByteArray xml("<r");
    for (int i = 0; i < 100'000; ++i)
        xml += " a" + QByteArray::number(i) + "=''";
    ProcessorTimer timer;
    timer.start();
    QVERIFY(!Xml::parse(xml + " a50000=''/>"));
    QVERIFY(timer.elapsed() < 5000);
}

void tst_Xml::bytesBeyondTheLargestSizeAreRefused()
{
    const QByteArray xml = "<r/>" + QByteArray(largestSize - 3, ' ');
    QCOMPARE(xml.size(), largestSize + 1);
    ProcessorTimer timer;
    timer.start();
    QVERIFY(!Xml::parse(xml));
    QVERIFY(timer.elapsed() < 1000);
}

void tst_Xml::fileBeyondTheLargestSizeIsRefusedUnread()
{
    for (const qint64 size : {largestSize + 1, qint64(64) << 30}) {
        put(at("large.xml"), "<r/>");
        QFile file(at("large.xml"));
        QVERIFY(file.resize(size));
        ProcessorTimer timer;
        timer.start();
        const auto result = Xml::parseFile(at("large.xml"));
        QVERIFY(!result);
        QVERIFY(!result.reason.isEmpty());
        QVERIFY(timer.elapsed() < 2000);
    }
}

void tst_Xml::documentOfTheLargestSizeIsRead()
{
    const auto result = Xml::parse("<r/>" + QByteArray(largestSize - 4, ' '));
    QVERIFY2(result, qPrintable(result.reason));
    QCOMPARE(rootOf(result).name(), "r");
}

void tst_Xml::fileIsReadLikeItsBytes()
{
    put(at("a.xml"), "\xEF\xBB\xBF<r>caf\xC3\xA9</r>\n");
    const auto result = Xml::parseFile(at("a.xml"));
    QVERIFY2(result, qPrintable(result.reason));
    QCOMPARE(Xml::text(rootOf(result)), u("café"));
    put(at("b.xml"), "<r>caf\xE9</r>");
    QVERIFY(!Xml::parseFile(at("b.xml")));
    put(at("c.xml"), "");
    const auto empty = Xml::parseFile(at("c.xml"));
    QVERIFY(!empty);
    QVERIFY(!empty.reason.isEmpty());
}

void tst_Xml::missingFileAndFolderAreFailures()
{
    for (const QString &path : {at("none.xml"), m_folder->path(), QString()}) {
        const auto result = Xml::parseFile(path);
        QVERIFY(!result);
        QVERIFY(!result.reason.isEmpty());
    }
}

void tst_Xml::blankTextBetweenElementsIsIgnored()
{
    const auto result = Xml::parse("<r>\n  <a/>\r\n\t<b> <c/> </b>\n</r>");
    QVERIFY(result);
    const pugi::xml_node root = rootOf(result);
    QCOMPARE(std::distance(root.begin(), root.end()), 2);
    QCOMPARE(std::distance(root.child("b").begin(), root.child("b").end()), 1);
    QCOMPARE(Xml::text(root), u(""));
}

void tst_Xml::blankTextThatIsTheOnlyContentIsKept()
{
    const auto result = Xml::parse("<r><a> \t\n </a><b>&#32;</b></r>");
    QVERIFY(result);
    QCOMPARE(Xml::text(rootOf(result).child("a")), u(" \t\n "));
    QCOMPARE(Xml::text(rootOf(result).child("b")), u(" "));
    const auto again = Xml::parse(Xml::serialize(rootOf(result)));
    QVERIFY(again);
    QCOMPARE(Xml::text(rootOf(again).child("a")), u(" \t\n "));
    QCOMPARE(Xml::text(rootOf(again).child("b")), u(" "));
}

void tst_Xml::textBesideElementsIsKeptWhole()
{
    const auto result = Xml::parse("<r> a <b/> c\n</r>");
    QVERIFY(result);
    QCOMPARE(Xml::text(rootOf(result)), u(" a  c\n"));
}

void tst_Xml::blankTextBesideCdataIsKept()
{
    for (const char *xml : {"<r> <![CDATA[x]]> </r>", "<r> <![CDATA[x]]><![CDATA[ ]]></r>",
                            "<r><![CDATA[ ]]><![CDATA[x]]> </r>"}) {
        const auto result = Xml::parse(xml);
        QVERIFY(result);
        QCOMPARE(Xml::text(rootOf(result)), u(" x "));
        const auto again = Xml::parse(Xml::serialize(rootOf(result)));
        QCOMPARE(Xml::text(rootOf(again)), u(" x "));
    }
}

void tst_Xml::lineBreaksBecomeLineFeeds()
{
    const auto result = Xml::parse("<r a='x\r\ny'>1\r\n2\r3\n4<![CDATA[\r\n]]></r>");
    QVERIFY(result);
    QCOMPARE(Xml::text(rootOf(result)), u("1\n2\n3\n4\n"));
    QCOMPARE(rootOf(result).attribute("a").value(), "x y");
}

void tst_Xml::serializesTheElementAlone()
{
    const auto result = Xml::parse("\xEF\xBB\xBF<?xml version='1.0'?>\n<!--before-->\n<r>\n <a "
                                   "b='1'>caf\xC3\xA9 &lt; &amp;</a>\n</r>\n<!--after-->\n");
    QVERIFY(result);
    QCOMPARE(Xml::serialize(rootOf(result)), QByteArray("<r><a b=\"1\">caf\xC3\xA9 &lt; &amp;</a></r>"));
    QCOMPARE(Xml::serialize(rootOf(result).child("a")), QByteArray("<a b=\"1\">caf\xC3\xA9 &lt; &amp;</a>"));
    QCOMPARE(Xml::serialize(pugi::xml_node()), QByteArray());
}

void tst_Xml::serializingIsStable_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *name, const QByteArray &xml) { QTest::newRow(name) << xml; };
    row("nested", "<r>\n <a>\n  <b/>\n </a>\n</r>");
    row("mixed", "<r> a <b> </b> c <!-- d --> e <?f g?> </r>");
    row("CDATA", "<r><![CDATA[ <&> ]]></r>");
    row("referenced carriage return", "<r>a&#13;b&#13;&#10;c</r>");
    row("referenced carriage return in an attribute", "<r a='&#13;&#10;&#9; x'/>");
    row("line breaks in an attribute", "<r a='x\ny\tz'/>");
    row("end of CDATA as text", "<r>]]&gt;</r>");
    row("quotes", "<r a='\"' b=\"'\">\"'</r>");
    row("referenced blanks", "<r><a>&#32;</a>&#32;<b>&#10;</b></r>");
    row("C1 and delete", "<r>\xC2\x85\x7F\xE2\x80\xA8</r>");
    row("comments beside blank text", "<r> <!--c--> </r>");
    row("line breaks in comments", "<r><!--a\r\nb--><?p a\r\nb?></r>");
}

void tst_Xml::serializingIsStable()
{
    QFETCH(QByteArray, xml);
    const auto result = Xml::parse(xml);
    QVERIFY2(result, qPrintable(result.reason));
    const QByteArray once = Xml::serialize(rootOf(result));
    const auto again = Xml::parse(once);
    QVERIFY2(again, qPrintable(again.reason));
    QCOMPARE(Xml::serialize(rootOf(again)), once);
    QCOMPARE(Xml::text(rootOf(again)), Xml::text(rootOf(result)));
    QCOMPARE(seenByAnotherReader(once), seenByAnotherReader(xml));
}

void tst_Xml::foreignElementsAndCommentsSurvive()
{
    const QByteArray xml(
        "<r x:y=\"1\"><!-- mine --><foreign a=\"&lt;\">one<two/></foreign><?keep this?>"
        "<content>old</content><x:z xmlns:x=\"urn:x\"><![CDATA[<raw>]]></x:z><!--end--></r>");
    const auto result = Xml::parse(xml);
    QVERIFY2(result, qPrintable(result.reason));
    Xml::setText(rootOf(result).child("content"), u("new"));
    QByteArray expected = xml;
    expected.replace("old", "new");
    const QByteArray actual = Xml::serialize(rootOf(result));
    QCOMPARE(seenByAnotherReader(actual), seenByAnotherReader(expected));
    for (const char *part : {"<!-- mine -->", "<?keep this?>", "<![CDATA[<raw>]]>", "<!--end-->"})
        QVERIFY2(actual.contains(part), part);
}

void tst_Xml::mutationsAgreeWithAnotherReader()
{
    // Without colons in names, which the other reader wants inside a name only.
    const QByteArrayList seeds{
        "<r><a b='1' c=\"2\">x &lt; y</a><!-- c --><?p q?><![CDATA[z]]></r>",
        "<?xml version='1.0'?>\n<r>\n <a>&#233;&#x41;</a>\n <b/>\n</r>\n<!--end-->\n",
        "<properties><extended><title type=\"text\">caf\xC3\xA9</title></extended></properties>",
        "<b y='&quot;' z='>'>]] &amp; <c></c >\xF0\x9F\x98\x80</b>",
        "<!DOCTYPE r [<!ELEMENT r ANY><!--c-->]><r>x<s/></r>",
    };
    const QByteArrayList pieces{
        "<",      ">",        "/",         "&",           ";",    "'",        "\"",    "=",
        "!",      "-",        "?",         "]",           "[",    "x",        "1",     " ",
        "\n",     "\r",       "\t",        "#",           ".",    "&lt;",     "&#13;", "&#0;",
        "&#x20;", "]]>",      "-->",       "<!--",        "<?p",  "?>",       "<a>",   "</a>",
        "<b/>",   "</r>",     "<![CDATA[", "\x01",        "\xC3", "\xC3\xA9", "\xFF",  "\xEF\xBF\xBF",
        " a='1'", " a=\"2\"", "&nbsp;",    "\xEF\xBB\xBF"};
    QRandomGenerator random(1);
    int accepted = 0;
    int refused = 0;
    for (int i = 0; i < 100'000; ++i) {
        QByteArray xml = seeds[random.bounded(int(seeds.size()))];
        for (int changes = 1 + random.bounded(3); changes > 0; --changes) {
            const qsizetype place = random.bounded(int(xml.size()) + 1);
            const qsizetype length = random.bounded(3) == 0 ? 1 + random.bounded(4) : 0;
            if (random.bounded(3) == 0)
                xml.remove(place, 1 + random.bounded(5));
            else
                xml.replace(place, length, pieces[random.bounded(int(pieces.size()))]);
        }
        const auto other = seenByAnotherReader(xml);
        const auto result = Xml::parse(xml);
        QVERIFY2(bool(result) == other.has_value(),
                 (xml.toPercentEncoding(" <>/='\"&;!?-[]#:") + " -> " + result.reason.toUtf8()).constData());
        if (!result) {
            ++refused;
            continue;
        }
        ++accepted;
        const QByteArray once = Xml::serialize(rootOf(result));
        QVERIFY2(seenByAnotherReader(once) == other, (xml + " -> " + once).constData());
        const auto again = Xml::parse(once);
        QVERIFY2(again, (xml + " -> " + once).constData());
        QCOMPARE(Xml::serialize(rootOf(again)), once);
        QVERIFY(depth(once) <= 256);
    }
    QVERIFY2(accepted > 5000 && refused > 5000, qPrintable(QString::number(accepted)));
}

void tst_Xml::textHoldsEverythingBelow_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *xml, const char *text) {
        QTest::newRow(name) << QByteArray(xml) << u(text);
    };
    row("none", "<r/>", "");
    row("text", "<r>x</r>", "x");
    row("CDATA", "<r><![CDATA[<x>]]></r>", "<x>");
    row("text and CDATA", "<r>a<![CDATA[b]]>c</r>", "abc");
    row("descendants in order", "<r>a<s>b<t>c</t>d</s>e</r>", "abcde");
    row("comments and instructions count for nothing", "<r>a<!--b-->c<?d e?>f</r>", "acf");
    row("attributes do not count", "<r a='b'>c</r>", "c");
    row("entities", "<r>&lt;&amp;&gt;</r>", "<&>");
}

void tst_Xml::textHoldsEverythingBelow()
{
    QFETCH(QByteArray, xml);
    const auto result = Xml::parse(xml);
    QVERIFY2(result, qPrintable(result.reason));
    QTEST(Xml::text(rootOf(result)), "text");
    QCOMPARE(Xml::text(pugi::xml_node()), QString());
}

void tst_Xml::setTextReplacesTheContent()
{
    for (const char *xml : {"<r/>", "<r>old</r>", "<r><![CDATA[old]]></r>", "<r>a<b>c</b>d</r>", "<r> </r>",
                            "<r>a<![CDATA[b]]>c</r>"}) {
        const auto result = Xml::parse(xml);
        QVERIFY(result);
        Xml::setText(rootOf(result), u("new <&> \U0001F600"));
        QCOMPARE(Xml::text(rootOf(result)), u("new <&> \U0001F600"));
        Xml::setText(rootOf(result), QString());
        QCOMPARE(Xml::text(rootOf(result)), u(""));
    }
}

void tst_Xml::setTextKeepsCommentsInstructionsAndAttributes()
{
    const auto result = Xml::parse("<r a=\"1\"><!--one-->x<?two three?><b>y</b><!--four--></r>");
    QVERIFY(result);
    Xml::setText(rootOf(result), u("z"));
    QCOMPARE(Xml::text(rootOf(result)), u("z"));
    const QByteArray xml = Xml::serialize(rootOf(result));
    QVERIFY2(xml.startsWith("<r a=\"1\">"), xml.constData());
    QVERIFY(xml.contains("<!--one-->") && xml.contains("<?two three?>") && xml.contains("<!--four-->"));
    QVERIFY(rootOf(result).child("b").empty());
}

void tst_Xml::setTextThatIsThereAlreadyChangesNothing()
{
    for (const char *xml : {"<r>a<b>c</b><!--d--><![CDATA[e]]></r>", "<r><b>ace</b></r>",
                            "<r><![CDATA[ace]]></r>", "<r>a<?p q?>ce</r>"}) {
        const auto result = Xml::parse(xml);
        QVERIFY(result);
        const QString text = Xml::text(rootOf(result));
        QCOMPARE(text, u("ace"));
        Xml::setText(rootOf(result), text);
        QCOMPARE(Xml::serialize(rootOf(result)), QByteArray(xml));
        Xml::setText(rootOf(result), u("a\x01") + u("ce"));
        QCOMPARE(Xml::serialize(rootOf(result)), QByteArray(xml));
    }
}

void tst_Xml::setTextCleans()
{
    const auto result = Xml::parse("<r/>");
    Xml::setText(rootOf(result), u("a\r\nb\rc\x01\x1F\t") + QChar(0xD800) + QChar(0xFFFE) + u("d"));
    QCOMPARE(Xml::text(rootOf(result)), u("a\nb\nc\td"));
}

void tst_Xml::setTextSurvivesWritingAndReading()
{
    QRandomGenerator random(2);
    for (int i = 0; i < 20'000; ++i) {
        const QString text = randomText(random);
        const auto result = Xml::parse("<r><!--c--><a/></r>");
        Xml::setText(rootOf(result).child("a"), text);
        const QByteArray xml = Xml::serialize(rootOf(result));
        QVERIFY2(seenByAnotherReader(xml), xml.constData());
        const auto again = Xml::parse(xml);
        QVERIFY2(again, (xml + " -> " + again.reason.toUtf8()).constData());
        QCOMPARE(Xml::text(rootOf(again).child("a")), Xml::cleaned(text));
    }
}

void tst_Xml::removeContentLeavesNothing()
{
    for (const char *xml : {"<r a=\"1\"/>", "<r a=\"1\">x</r>", "<r a=\"1\">x<b>y</b>z</r>",
                            "<r a=\"1\"> </r>", "<r a=\"1\"><!--c-->x<?p q?><![CDATA[y]]></r>"}) {
        const auto result = Xml::parse(xml);
        QVERIFY(result);
        Xml::removeContent(rootOf(result));
        QCOMPARE(Xml::serialize(rootOf(result)), QByteArray("<r a=\"1\"/>"));
        Xml::setText(rootOf(result), u("new"));
        QCOMPARE(Xml::serialize(rootOf(result)), QByteArray("<r a=\"1\">new</r>"));
    }
}

// A comment beside an element makes the parser keep texts in nodes of their own.
void tst_Xml::textKeptInItsElementIsLikeTextInANode()
{
    for (const char *inner :
         {"x", " ", "x<b>y</b>z", "<b>y</b>z", "x<b/>", "x &amp; y<b>\n</b>\n<c/>\n", "", "<b> </b>"}) {
        const QByteArray xml = QByteArray("<r>") + inner + "</r>";
        const auto embedded = Xml::parse(xml);
        const auto apart = Xml::parse("<!--c-->" + xml);
        QVERIFY(embedded && apart);
        QCOMPARE(Xml::text(rootOf(embedded)), Xml::text(rootOf(apart)));
        QCOMPARE(Xml::serialize(rootOf(embedded)), Xml::serialize(rootOf(apart)));
        Xml::setText(rootOf(embedded), u("n"));
        Xml::setText(rootOf(apart), u("n"));
        QCOMPARE(Xml::serialize(rootOf(embedded)), Xml::serialize(rootOf(apart)));
    }
}

void tst_Xml::cleanedDropsWhatXmlForbids_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const QString &text, const QString &result) {
        QTest::newRow(name) << text << result;
    };
    row("empty", u(""), u(""));
    row("plain", u("caf\u00E9 \U0001F600"), u("caf\u00E9 \U0001F600"));
    row("tab and line feed stay", u("a\tb\nc"), u("a\tb\nc"));
    row("carriage return and line feed", u("a\r\nb"), u("a\nb"));
    row("carriage return", u("a\rb\r"), u("a\nb\n"));
    row("two carriage returns", u("a\r\r\nb"), u("a\n\nb"));
    row("line feed before carriage return", u("a\n\rb"), u("a\n\nb"));
    row("zero character", u("a") + QChar(u'\0') + u("b"), u("ab"));
    row("control characters", u("\x01\x08\x0B\x0C\x0E\x1F") + u("x"), u("x"));
    row("delete and C1 stay", u("\x7F\u0080\u0085\u009F"), u("\x7F\u0080\u0085\u009F"));
    row("line and paragraph separators stay", u("\u2028\u2029"), u("\u2028\u2029"));
    row("lone high surrogate", u("a") + QChar(0xD83D) + u("b"), u("ab"));
    row("lone low surrogate", u("a") + QChar(0xDE00) + u("b"), u("ab"));
    row("high surrogate at the end", u("a") + QChar(0xD83D), u("a"));
    row("pair the wrong way round", u("a") + QChar(0xDE00) + QChar(0xD83D) + u("b"), u("ab"));
    row("two high surrogates and a low one", QString(QChar(0xD83D)) + u("\U0001F600"), u("\U0001F600"));
    row("U+FFFE and U+FFFF", u("a\uFFFE\uFFFFb"), u("ab"));
    row("U+FFFD stays", u("\uFFFD"), u("\uFFFD"));
    row("mark stays", u("a\uFEFFb"), u("a\uFEFFb"));
    row("supplementary non-characters stay", u("\U0001FFFE\U0010FFFF"), u("\U0001FFFE\U0010FFFF"));
}

void tst_Xml::cleanedDropsWhatXmlForbids()
{
    QFETCH(QString, text);
    QTEST(Xml::cleaned(text), "result");
}

void tst_Xml::cleaningTwiceChangesNothingMore()
{
    QRandomGenerator random(3);
    for (int i = 0; i < 20'000; ++i) {
        const QString once = Xml::cleaned(randomText(random));
        QCOMPARE(Xml::cleaned(once), once);
        QVERIFY(!once.contains(u'\r'));
    }
}

void tst_Xml::childrenAreFoundByName()
{
    const auto result = Xml::parse("<r><?a p?><!--a--><b><a n='0'/></b><a n='1'/>a<a n='2'/><?a q?><c/></r>");
    QVERIFY(result);
    const pugi::xml_node root = rootOf(result);
    QCOMPARE(Xml::firstChild(root, "a").attribute("n").value(), "1");
    QCOMPARE(Xml::lastChild(root, "a").attribute("n").value(), "2");
    QVERIFY(Xml::firstChild(root, "c") == Xml::lastChild(root, "c"));
    QVERIFY(Xml::firstChild(root, "A").empty());
    QVERIFY(Xml::lastChild(root, "A").empty());
    QVERIFY(Xml::firstChild(root, "").empty());
    QVERIFY(Xml::lastChild(root, "").empty());
    QVERIFY(Xml::firstChild(pugi::xml_node(), "a").empty());
    QVERIFY(Xml::lastChild(pugi::xml_node(), "a").empty());
}

void tst_Xml::decimalCommaLocaleChangesNoByte()
{
    QVERIFY2(std::setlocale(LC_ALL, "de_DE.UTF-8"), "the locale de_DE.UTF-8 is not installed");
    const auto result = Xml::parse("<?xml version='1.0'?><r a=\"1.5\">&#233; 1,5</r>");
    QVERIFY2(result, qPrintable(result.reason));
    QCOMPARE(Xml::serialize(rootOf(result)), QByteArray("<r a=\"1.5\">\xC3\xA9 1,5</r>"));
}

LINKLIST_TEST_MAIN(tst_Xml)
#include "tst_Xml.moc"
