#include "Classes/Mode/LastDocument.h"
#include "Classes/Mode/Xml.h"
#include "linklist/LinkListDocument.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/ProcessorTimer.h"
#include "tests/support/TestCase.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QXmlStreamReader>

using Fixtures::get;
using Fixtures::put;
using Fixtures::tree;
using LinkListDocument::SaveResult;

namespace
{

const char *const full
    = "<info><properties><extended><title><content type=\"text\">Heading</content>"
      "<fontSize type=\"number\">16</fontSize><color type=\"color\">0xFF8000</color></title><body>"
      "<fontSize type=\"number\">12</fontSize><color type=\"color\">0x0000FF</color><content><item>"
      "<link type=\"text\">http://a.example</link><title type=\"text\">A</title></item><item>"
      "<link type=\"text\">http://b.example</link><title type=\"text\">B</title></item></content></body>"
      "</extended></properties></info>";

Color orange()
{
    return MyColorOper::colorFromHexRGB(QStringLiteral("0xFF8000"));
}

Color blue()
{
    return MyColorOper::colorFromHexRGB(QStringLiteral("0x0000FF"));
}

LinkListSettings fullSettings()
{
    LinkListSettings settings;
    settings.titleContent = QStringLiteral("Heading");
    settings.titleFontSize = QStringLiteral("16");
    settings.titleColor = orange();
    settings.bodyFontSize = QStringLiteral("12");
    settings.bodyColor = blue();
    settings.items = {{QStringLiteral("A"), QStringLiteral("http://a.example")},
                      {QStringLiteral("B"), QStringLiteral("http://b.example")}};
    return settings;
}

LinkListSettings someSettings()
{
    LinkListSettings settings = fullSettings();
    settings.titleContent = QStringLiteral("New");
    settings.titleFontSize = QStringLiteral("20");
    settings.bodyFontSize = QStringLiteral("9");
    settings.titleColor = blue();
    settings.bodyColor = orange();
    settings.items = {{QStringLiteral("T"), QStringLiteral("L")}};
    return settings;
}

// What the settings above are as elements.
const QByteArray newTitle("<title><content type=\"text\">New</content><fontSize type=\"number\">20</fontSize>"
                          "<color type=\"color\">0x0000FF</color></title>");
const QByteArray newItem("<item><link type=\"text\">L</link><title type=\"text\">T</title></item>");
const QByteArray newBody("<body><fontSize type=\"number\">9</fontSize><color type=\"color\">0xFF8000</color>"
                         "<content>"
                         + newItem + "</content></body>");

QByteArray extended(const QByteArray &inner)
{
    return "<info><properties><extended>" + inner + "</extended></properties></info>";
}

LinkListSettings read(const QByteArray &xml)
{
    const Xml::ParseResult parsed = Xml::parse(xml);
    if (!parsed)
        qFatal("the test's own document is none: %s", xml.constData());
    return LinkListDocument::read(parsed.document->document_element());
}

// The document after the settings were written into it, or "refused" where write() answers false.
QByteArray written(const QByteArray &xml, const LinkListSettings &settings = someSettings())
{
    const Xml::ParseResult parsed = Xml::parse(xml);
    if (!parsed)
        qFatal("the test's own document is none: %s", xml.constData());
    const bool done = LinkListDocument::write(parsed.document->document_element(), settings);
    return (done ? QByteArray() : QByteArray("refused "))
        + Xml::serialize(parsed.document->document_element());
}

// What XML lets through of a text, told separately from the code under test.
QString allowed(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u'\r') {
            if (i + 1 == text.size() || text[i + 1] != u'\n')
                result += u'\n';
        } else if (QChar::isHighSurrogate(c)) {
            if (i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                result += text[i];
                result += text[++i];
            }
        } else if (!QChar::isLowSurrogate(c) && (c >= 0x20 || c == u'\t' || c == u'\n') && c < 0xFFFE) {
            result += text[i];
        }
    }
    return result;
}

bool isUrlByte(char c)
{
    static const QByteArray others("-._~:/?#[]@!$&'()*+,;=");
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || others.contains(c);
}

bool isEscape(const QByteArray &bytes, qsizetype at)
{
    return bytes[at] == '%' && at + 2 < bytes.size() && isxdigit(uchar(bytes[at + 1]))
        && isxdigit(uchar(bytes[at + 2]));
}

QString normalised(const QString &link)
{
    QString text = link;
    if (!link.contains(QLatin1String("http:/")) && !link.contains(QLatin1String("https:/"))
        && !link.contains(QLatin1String("ftp:/")))
        text.prepend(QLatin1String("http://"));
    const QByteArray bytes = text.toUtf8();
    QByteArray result;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (isUrlByte(bytes[i]) || isEscape(bytes, i))
            result += bytes[i];
        else
            result += '%' + QByteArray(1, bytes[i]).toHex().toUpper();
    }
    return QString::fromLatin1(result);
}

} // namespace

class tst_LinkListDocument : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void fileNameIsThatOfTheIdentifier();

    void readsEverything();
    void readsNothingWithoutItsContainers_data();
    void readsNothingWithoutItsContainers();
    void rootMayHaveAnyName();
    void lastOfSeveralIsRead_data();
    void lastOfSeveralIsRead();
    void absentValuesAreAbsent_data();
    void absentValuesAreAbsent();
    void emptyValuesAreEmpty();
    void colourThatIsNoneIsBlack();
    void itemsAreReadInOrder();
    void itemValues_data();
    void itemValues();
    void commentsCountForNothingWhenReading();

    void writesEverythingInItsForm();
    void writeIsRefusedWithoutItsContainers_data();
    void writeIsRefusedWithoutItsContainers();
    void missingTitleIsAppendedWhole();
    void missingBodyIsAppendedWhole();
    void missingBothAreAppendedTitleFirst();
    void missingChildrenOfTheTitleAreNotAdded_data();
    void missingChildrenOfTheTitleAreNotAdded();
    void emptyBodyTakesNothing();
    void bodyWithoutContentTakesNoItems();
    void missingChildrenOfTheBodyAreNotAdded();
    void lastTitleAloneIsWritten();
    void lastBodyAndContentAloneAreWritten();
    void lastPropertiesAndExtendedAloneAreWritten();
    void missingValuesAreWrittenAsEmptyAndBlack();
    void sizesAreWrittenAsTheyStand();
    void colourThatCannotBeConvertedIsBlack();
    void contentIsEmptiedFirst();
    void nothingButTheItemsIsLeftInTheContent_data();
    void nothingButTheItemsIsLeftInTheContent();
    void textOfAnItemInItsElementAndInANodeIsReplaced();
    void itemsBeforeTheFirstChangeStayInTheTree();
    void noItemsLeaveNoItems();
    void foreignElementsAndCommentsSurvive();
    void attributesOfExistingElementsSurvive();
    void markupWithinATextIsReplaced_data();
    void markupWithinATextIsReplaced();
    void writingTwiceIsWritingOnce();

    void hostileTextsComeBack_data();
    void hostileTextsComeBack();
    void randomSettingsComeBack();
    void tenThousandItemsComeBack();

    void saveMergesIntoTheWorkspaceDocument();
    void saveStartsFromTheDefaultDocument_data();
    void saveStartsFromTheDefaultDocument();
    void saveWithoutAnyDocumentWritesNothing();
    void saveOfADocumentWithoutItsContainersKeepsIt();
    void saveWritesTheElementAlone();
    void saveSkipsAMark();
    void saveLeavesTheDefaultDocumentAlone();
    void saveIntoAMissingFolderFails();
    void savedFileIsReadAlikeByAnotherReader();
    void changeOfAnotherProgramBetweenSavesIsKept_data();
    void changeOfAnotherProgramBetweenSavesIsKept();
    void documentDeletedBetweenSavesStartsFromTheDefault();
    void documentReplacedByAFolderBetweenSavesStartsFromTheDefault();
    void failedWriteIsNotTakenForWritten();
    void twoWorkspacesTakeTurns();
    void savesOneAfterTheOtherWriteWhatFreshOnesWould();
    void blankTextBesideANewHeadingIsReadAlike();

    void copiesAFileIntoTheWorkspace();
    void fileInTheWorkspaceStays();
    void pathThatHoldsTheWorkspacePathCountsAsInside();
    void replacedFileStaysUnderATimeStamp();
    void replacedFolderStaysUnderATimeStamp();
    void everyReplacedFileStays();
    void fileOfTheWorkspaceToldThroughALinkIsNotLost();
    void failedCopyBringsTheOldFileBack();
    void refusedWorkspaces_data();
    void refusedWorkspaces();
    void pathsWithoutAFileNameHarmNothing_data();
    void pathsWithoutAFileNameHarmNothing();

    void linkNormalisation_data();
    void linkNormalisation();
    void randomLinksAreNormalisedOnce();
    void longLinksAreNormalisedQuickly();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    SaveResult save(const LinkListSettings &settings = someSettings()) const
    {
        return LinkListDocument::save(settings, at("ws/linklist.xml"), at("data/linklist.xml"));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_LinkListDocument::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(at("ws")));
}

void tst_LinkListDocument::fileNameIsThatOfTheIdentifier()
{
    QCOMPARE(LinkListDocument::fileName(), QStringLiteral("linklist.xml"));
}

void tst_LinkListDocument::readsEverything()
{
    QCOMPARE(read(full), fullSettings());
}

void tst_LinkListDocument::readsNothingWithoutItsContainers_data()
{
    QTest::addColumn<QByteArray>("xml");
    const QByteArray title("<title><content>x</content></title>");
    QTest::newRow("empty root") << QByteArray("<info/>");
    QTest::newRow("no properties") << "<info><extended>" + title + "</extended></info>";
    QTest::newRow("no extended") << "<info><properties>" + title + "</properties></info>";
    QTest::newRow("extended elsewhere")
        << "<info><properties><basic><extended>" + title + "</extended></basic></properties></info>";
    QTest::newRow("last properties has none")
        << "<info><properties><extended>" + title + "</extended></properties><properties/></info>";
    QTest::newRow("other letters") << "<info><Properties><extended>" + title
            + "</extended></Properties></info>";
    QTest::newRow("empty extended") << QByteArray("<info><properties><extended/></properties></info>");
    QTest::newRow("empty title and body") << extended("<title/><body/>");
}

void tst_LinkListDocument::readsNothingWithoutItsContainers()
{
    QFETCH(QByteArray, xml);
    QCOMPARE(read(xml), LinkListSettings());
}

void tst_LinkListDocument::rootMayHaveAnyName()
{
    QByteArray xml(full);
    QCOMPARE(read(xml.replace("info>", "properties>")), fullSettings());
}

void tst_LinkListDocument::lastOfSeveralIsRead_data()
{
    QTest::addColumn<QByteArray>("xml");
    const QByteArray wrong("<title><content>wrong</content><fontSize>1</fontSize></title>");
    const QByteArray right("<title><content>right</content></title>");
    QTest::newRow("properties") << "<info><properties><extended>" + wrong
            + "</extended></properties><properties><extended>" + right + "</extended></properties></info>";
    QTest::newRow("extended") << "<info><properties><extended>" + wrong + "</extended><extended>" + right
            + "</extended></properties></info>";
    QTest::newRow("title") << extended(wrong + right);
    QTest::newRow("title with others between") << extended(wrong + "<x/>" + right + "<y/>");
    QTest::newRow("content of the title")
        << extended("<title><content>wrong</content><content>right</content></title>");
}

void tst_LinkListDocument::lastOfSeveralIsRead()
{
    QFETCH(QByteArray, xml);
    LinkListSettings expected;
    expected.titleContent = QStringLiteral("right");
    QCOMPARE(read(xml), expected);
}

void tst_LinkListDocument::absentValuesAreAbsent_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"title/content", "title/fontSize", "title/color", "body/fontSize", "body/color"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_LinkListDocument::absentValuesAreAbsent()
{
    QFETCH(QByteArray, name);
    const Xml::ParseResult parsed = Xml::parse(full);
    const QByteArray path = "properties/extended/" + name;
    pugi::xml_node leaf = parsed.document->document_element().first_element_by_path(path.constData());
    QVERIFY(leaf.parent().remove_child(leaf));
    LinkListSettings expected = fullSettings();
    if (name == "title/content")
        expected.titleContent.reset();
    else if (name == "title/fontSize")
        expected.titleFontSize.reset();
    else if (name == "title/color")
        expected.titleColor.reset();
    else if (name == "body/fontSize")
        expected.bodyFontSize.reset();
    else
        expected.bodyColor.reset();
    QCOMPARE(LinkListDocument::read(parsed.document->document_element()), expected);
}

void tst_LinkListDocument::emptyValuesAreEmpty()
{
    const LinkListSettings settings
        = read(extended("<title><content/><fontSize></fontSize></title><body><fontSize/><content/></body>"));
    QVERIFY(settings.titleContent && settings.titleContent->isEmpty());
    QVERIFY(settings.titleFontSize && settings.titleFontSize->isEmpty());
    QVERIFY(settings.bodyFontSize && settings.bodyFontSize->isEmpty());
    QVERIFY(!settings.titleColor && !settings.bodyColor);
    QVERIFY(settings.items.isEmpty());
}

void tst_LinkListDocument::colourThatIsNoneIsBlack()
{
    const LinkListSettings settings
        = read(extended("<title><color>#FF0000</color></title><body><color/></body>"));
    QCOMPARE(settings.titleColor, Color());
    QCOMPARE(settings.bodyColor, Color());
}

void tst_LinkListDocument::itemsAreReadInOrder()
{
    const LinkListSettings settings = read(extended(
        "<body><content><item><title>3</title></item></content><content><item><title>1</title></item>"
        "<other><title>x</title></other><item><title>2</title></item><item/></content></body>"));
    QCOMPARE(settings.items,
             (QList<LinkItem>{{QStringLiteral("1"), {}}, {QStringLiteral("2"), {}}, {QString(), QString()}}));
}

void tst_LinkListDocument::itemValues_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<LinkItem>("item");
    const auto row = [](const char *name, const char *xml, const char *title, const char *link) {
        QTest::newRow(name) << QByteArray(xml) << LinkItem{QString::fromUtf8(title), QString::fromUtf8(link)};
    };
    row("both", "<link>l</link><title>t</title>", "t", "l");
    row("the other way round", "<title>t</title><link>l</link>", "t", "l");
    row("no link", "<title>t</title>", "t", "");
    row("no title", "<link>l</link>", "", "l");
    row("empty ones", "<link/><title></title>", "", "");
    row("the last of a name", "<title>x</title><link>y</link><title>t</title><link>l</link>", "t", "l");
    row("others beside them", "<a>x</a><link>l</link><b/><title>t</title>", "t", "l");
    row("one element within the title", "<title><b>t</b></title><link>l</link>", "t", "l");
    row("without types", "<title type=\"number\">t</title><link x=\"y\">l</link>", "t", "l");
    row("CDATA", "<title><![CDATA[<t> & ]]>u</title><link>l</link>", "<t> & u", "l");
    row("comments", "<!--c--><title>t<!--c-->u</title><?p?><link>l</link>", "tu", "l");
    row("blank title", "<title>  </title><link>l</link>", "  ", "l");
    row("line break", "<title>t\nu</title><link>l</link>", "t\nu", "l");
}

void tst_LinkListDocument::itemValues()
{
    QFETCH(QByteArray, xml);
    QFETCH(LinkItem, item);
    const LinkListSettings settings
        = read(extended("<body><content><item>" + xml + "</item></content></body>"));
    QCOMPARE(settings.items, QList<LinkItem>{item});
}

void tst_LinkListDocument::commentsCountForNothingWhenReading()
{
    QByteArray xml(full);
    xml.replace("><", "><!-- c --><?p i?><");
    QCOMPARE(read(xml), fullSettings());
    xml = full;
    QCOMPARE(read(xml.replace("><", ">\n    <")), fullSettings());
}

void tst_LinkListDocument::writesEverythingInItsForm()
{
    QCOMPARE(written(full), extended(newTitle + newBody));
}

void tst_LinkListDocument::writeIsRefusedWithoutItsContainers_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("no properties") << QByteArray("<info><extended>x</extended></info>");
    QTest::newRow("no extended") << QByteArray("<info><properties><title>x</title></properties></info>");
    QTest::newRow("last properties has none") << QByteArray(
        "<info><properties><extended>x</extended></properties><properties>y</properties></info>");
}

void tst_LinkListDocument::writeIsRefusedWithoutItsContainers()
{
    QFETCH(QByteArray, xml);
    QCOMPARE(written(xml), "refused " + xml);
}

void tst_LinkListDocument::missingTitleIsAppendedWhole()
{
    QCOMPARE(written(extended("<x>1</x><body><fontSize type=\"number\">1</fontSize></body><y>2</y>")),
             extended("<x>1</x><body><fontSize type=\"number\">9</fontSize></body><y>2</y>" + newTitle));
}

void tst_LinkListDocument::missingBodyIsAppendedWhole()
{
    QCOMPARE(written(extended("<title><content>x</content></title><y>2</y>")),
             extended("<title><content>New</content></title><y>2</y>" + newBody));
}

void tst_LinkListDocument::missingBothAreAppendedTitleFirst()
{
    QCOMPARE(written(extended("<x>1</x>")), extended("<x>1</x>" + newTitle + newBody));
    QCOMPARE(written("<info><properties><extended/></properties></info>"), extended(newTitle + newBody));
}

void tst_LinkListDocument::missingChildrenOfTheTitleAreNotAdded_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("without a colour") << QByteArray("<content>x</content><fontSize>1</fontSize>")
                                      << QByteArray("<content>New</content><fontSize>20</fontSize>");
    QTest::newRow("without a size") << QByteArray("<content>x</content><color>1</color>")
                                    << QByteArray("<content>New</content><color>0x0000FF</color>");
    QTest::newRow("without a text") << QByteArray("<color>1</color><fontSize>1</fontSize>")
                                    << QByteArray("<color>0x0000FF</color><fontSize>20</fontSize>");
    QTest::newRow("something else alone") << QByteArray("<x>1</x>") << QByteArray("<x>1</x>");
}

void tst_LinkListDocument::missingChildrenOfTheTitleAreNotAdded()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QCOMPARE(written(extended("<title>" + before + "</title><body><x>1</x></body>")),
             extended("<title>" + after + "</title><body><x>1</x></body>"));
}

void tst_LinkListDocument::emptyBodyTakesNothing()
{
    for (const char *body : {"<body/>", "<body></body>"}) {
        const QByteArray xml = extended(QByteArray("<title><content>x</content></title>") + body);
        const LinkListSettings after = read(written(xml));
        QCOMPARE(after.titleContent, QStringLiteral("New"));
        QVERIFY(!after.bodyFontSize && !after.bodyColor);
        QVERIFY(after.items.isEmpty());
        QVERIFY(!written(xml).contains("item"));
        QVERIFY(!written(xml).contains("0xFF8000"));
    }
    const QByteArray withTitle = written(extended("<body/>"));
    QVERIFY(withTitle.contains(newTitle));
    QVERIFY(!withTitle.contains("item"));
}

void tst_LinkListDocument::bodyWithoutContentTakesNoItems()
{
    QCOMPARE(written(extended("<title><x>1</x></title><body><color>1</color><fontSize>1</fontSize></body>")),
             extended("<title><x>1</x></title><body><color>0xFF8000</color><fontSize>9</fontSize></body>"));
}

void tst_LinkListDocument::missingChildrenOfTheBodyAreNotAdded()
{
    QCOMPARE(written(extended("<title><x>1</x></title><body><content/></body>")),
             extended("<title><x>1</x></title><body><content>" + newItem + "</content></body>"));
}

void tst_LinkListDocument::lastTitleAloneIsWritten()
{
    QCOMPARE(written(extended("<title><content>a</content><color>c</color></title>"
                              "<title><content>b</content></title><body><x>1</x></body>")),
             extended("<title><content>a</content><color>c</color></title>"
                      "<title><content>New</content></title><body><x>1</x></body>"));
}

void tst_LinkListDocument::lastBodyAndContentAloneAreWritten()
{
    const QByteArray first("<title><x>1</x></title><body><fontSize>1</fontSize><content>a</content></body>");
    QCOMPARE(written(extended(first + "<body><content>b</content><content>c</content></body>")),
             extended(first + "<body><content>b</content><content>" + newItem + "</content></body>"));
}

void tst_LinkListDocument::lastPropertiesAndExtendedAloneAreWritten()
{
    const QByteArray old("<title><content>a</content></title>");
    QCOMPARE(written("<info><properties><extended>" + old + "</extended></properties><properties><extended>"
                     + old + "</extended><extended>" + old + "</extended></properties></info>"),
             "<info><properties><extended>" + old + "</extended></properties><properties><extended>" + old
                 + "</extended><extended><title><content>New</content></title>" + newBody
                 + "</extended></properties></info>");
}

void tst_LinkListDocument::missingValuesAreWrittenAsEmptyAndBlack()
{
    LinkListSettings none;
    none.items = {{QString(), QString()}};
    const LinkListSettings after = read(written(extended("<x>1</x>"), none));
    LinkListSettings expected;
    expected.titleContent = expected.titleFontSize = expected.bodyFontSize = QStringLiteral("");
    expected.titleColor = expected.bodyColor = Color();
    expected.items = none.items;
    QCOMPARE(after, expected);
    QCOMPARE(written(extended("<x>1</x>"), none).count("<color type=\"color\">0x000000</color>"), 2);
    const LinkListSettings overwritten = read(written(full, none));
    QCOMPARE(overwritten, expected);
}

void tst_LinkListDocument::sizesAreWrittenAsTheyStand()
{
    LinkListSettings settings = someSettings();
    settings.titleFontSize = QStringLiteral(" 012x ");
    settings.bodyFontSize = QStringLiteral("%1");
    const QByteArray xml = written(full, settings);
    QVERIFY(xml.contains("<fontSize type=\"number\"> 012x </fontSize>"));
    QVERIFY(xml.contains("<fontSize type=\"number\">%1</fontSize>"));
}

void tst_LinkListDocument::colourThatCannotBeConvertedIsBlack()
{
    LinkListSettings settings = someSettings();
    settings.titleColor = Color{qQNaN(), 0, 0, 1};
    settings.bodyColor = Color{1, qInf(), 0, 1};
    QCOMPARE(written(full, settings).count("<color type=\"color\">0x000000</color>"), 2);
}

void tst_LinkListDocument::contentIsEmptiedFirst()
{
    QCOMPARE(
        written(extended("<title><x>1</x></title><body><content>text<item><title>old</title></item><!--c-->"
                         "<foreign/><?p i?><![CDATA[d]]></content></body>")),
        extended("<title><x>1</x></title><body><content>" + newItem + "</content></body>"));
}

// Each row is an item that reads like the new one and is not what a save would write.
void tst_LinkListDocument::nothingButTheItemsIsLeftInTheContent_data()
{
    QTest::addColumn<QByteArray>("item");
    const auto row = [](const char *name, const char *item) { QTest::newRow(name) << QByteArray(item); };
    QTest::newRow("as it is written") << newItem;
    row("none", "");
    row("text alone", "LT");
    row("blank CDATA", "<![CDATA[ ]]>");
    row("comment alone", "<!--c-->");
    row("instruction", "<?item <link type=\"text\">L</link>?>");
    row("another name", "<items><link type=\"text\">L</link><title type=\"text\">T</title></items>");
    row("attribute of the item",
        "<item a=\"1\"><link type=\"text\">L</link><title type=\"text\">T</title></item>");
    row("text in front", "<item>x<link type=\"text\">L</link><title type=\"text\">T</title></item>");
    row("text between", "<item><link type=\"text\">L</link>x<title type=\"text\">T</title></item>");
    row("text behind", "<item><link type=\"text\">L</link><title type=\"text\">T</title>x</item>");
    row("comment in front",
        "<item><!--c--><link type=\"text\">L</link><title type=\"text\">T</title></item>");
    row("comment between", "<item><link type=\"text\">L</link><!--c--><title type=\"text\">T</title></item>");
    row("comment behind", "<item><link type=\"text\">L</link><title type=\"text\">T</title><!--c--></item>");
    row("foreign child in front",
        "<item><x/><link type=\"text\">L</link><title type=\"text\">T</title></item>");
    row("foreign child behind",
        "<item><link type=\"text\">L</link><title type=\"text\">T</title><x>1</x></item>");
    row("title first", "<item><title type=\"text\">T</title><link type=\"text\">L</link></item>");
    row("text behind the item", "<item><link type=\"text\">L</link><title type=\"text\">T</title></item>x");
    row("empty item", "<item/>");
    const QByteArray type(" type=\"text\"");
    for (const bool isLink : {true, false}) {
        const QByteArray name = isLink ? "link" : "title";
        const QByteArray text = isLink ? "L" : "T";
        const auto element = [&name](const QByteArray &attributes, const QByteArray &inner) {
            return '<' + name + attributes + '>' + inner + "</" + name + '>';
        };
        const auto leaf = [&](const QByteArray &what, const QByteArray &xml) {
            const QByteArray item(isLink ? xml + "<title type=\"text\">T</title>"
                                         : "<link type=\"text\">L</link>" + xml);
            QTest::newRow((name + ": " + what).constData()) << "<item>" + item + "</item>";
        };
        leaf("none", "");
        leaf("empty", element(type, ""));
        leaf("two", element(type, text) + element(type, text));
        leaf("no type", element("", text));
        leaf("another type", element(" type=\"number\"", text));
        leaf("another attribute", element(" kind=\"text\"", text));
        leaf("an attribute more", element(type + " a=\"1\"", text));
        leaf("an attribute in front", element(" a=\"1\"" + type, text));
        leaf("CDATA", element(type, "<![CDATA[" + text + "]]>"));
        leaf("comment behind the text", element(type, text + "<!--c-->"));
        leaf("comment before the text", element(type, "<!--c-->" + text));
        leaf("comment that says the text", element(type, "<!--" + text + "-->"));
        leaf("element that holds the text", element(type, "<b>" + text + "</b>"));
        leaf("element behind the text", element(type, text + "<b/>"));
        leaf("element before the text", element(type, "<b/>" + text));
        leaf("another text", element(type, text + text));
        leaf("another name", "<other type=\"text\">" + text + "</other>");
    }
}

void tst_LinkListDocument::nothingButTheItemsIsLeftInTheContent()
{
    QFETCH(QByteArray, item);
    LinkListSettings settings = someSettings();
    settings.items = {{QStringLiteral("T"), QStringLiteral("L")}, {QStringLiteral("T"), QStringLiteral("L")}};
    const auto document = [](const QByteArray &content) {
        return extended(newTitle
                        + "<body><fontSize type=\"number\">9</fontSize><color type=\"color\">0xFF8000"
                          "</color><content>"
                        + content + "</content></body>");
    };
    const QByteArray expected = document(newItem + newItem);
    // A comment in front makes the parser build another tree of the same document.
    for (const char *before : {"", "<!--c-->"}) {
        for (const QByteArray &content : {item, item + newItem, newItem + item, newItem + item + newItem,
                                          newItem + newItem + item, item + item})
            QCOMPARE(written(before + document(content), settings), expected);
        put(at("linklist.xml"), before + document(newItem + item));
        for (int save = 0; save < 2; ++save) { // the document is read, and kept
            QCOMPARE(LinkListDocument::save(settings, at("linklist.xml"), QString()), SaveResult::Saved);
            QCOMPARE(get(at("linklist.xml")), expected);
        }
    }
}

// Of a tree that somebody changed by hand.
void tst_LinkListDocument::textOfAnItemInItsElementAndInANodeIsReplaced()
{
    for (const char *path : {"//item/link", "//item/title"}) {
        const Xml::ParseResult parsed = Xml::parse(written(full));
        const pugi::xml_node root = parsed.document->document_element();
        pugi::xml_node leaf = root.select_node(path).node();
        const QByteArray text = leaf.value();
        QVERIFY(!text.isEmpty()); // the element's own is where the parser keeps it
        QVERIFY(leaf.text().set("x"));
        leaf.append_child(pugi::node_pcdata).set_value(text.constData());
        QVERIFY(LinkListDocument::write(root, someSettings()));
        QCOMPARE(Xml::serialize(root), written(full));
    }
}

void tst_LinkListDocument::itemsBeforeTheFirstChangeStayInTheTree()
{
    const Xml::ParseResult parsed = Xml::parse(full);
    const pugi::xml_node root = parsed.document->document_element();
    const pugi::xml_node content = root.select_node("//body/content").node();
    const pugi::xml_node first = content.first_child();
    LinkListSettings settings = fullSettings();
    settings.items.last().title = QStringLiteral("changed");
    settings.items.append({QStringLiteral("T"), QStringLiteral("L")});
    QVERIFY(LinkListDocument::write(root, settings));
    QVERIFY(content.first_child() == first);
    QCOMPARE(LinkListDocument::read(root), settings);
    settings.items = settings.items.first(1);
    QVERIFY(LinkListDocument::write(root, settings));
    QVERIFY(content.first_child() == first);
    QCOMPARE(LinkListDocument::read(root), settings);
}

void tst_LinkListDocument::noItemsLeaveNoItems()
{
    LinkListSettings settings = fullSettings();
    settings.items.clear();
    QCOMPARE(read(written(full, settings)), settings);
}

void tst_LinkListDocument::foreignElementsAndCommentsSurvive()
{
    const QByteArray before(
        "<info a=\"1\"><!-- root --><opacity type=\"number\">1</opacity><properties b=\"2\">"
        "<?pi one?><basic><left type=\"text\">5%</left></basic><extended c=\"3\">"
        "<!-- in extended --><title d=\"4\"><!-- in title --><content type=\"text\">Heading"
        "</content><foreign>&lt;x&gt;</foreign></title><mine><item>x</item></mine>"
        "<body><?pi two?><fontSize type=\"number\">1</fontSize><foreign/><!-- in body -->"
        "<content e=\"5\"><!-- goes --></content></body></extended></properties>"
        "<unknown><![CDATA[a < b]]></unknown></info>");
    QByteArray after = before;
    after.replace("Heading", "New").replace(">1</fontSize>", ">9</fontSize>");
    after.replace("<!-- goes -->", newItem);
    const auto normal
        = [](const QByteArray &xml) { return Xml::serialize(Xml::parse(xml).document->document_element()); };
    QCOMPARE(written(before), normal(after));
    const QByteArray result = written(before);
    for (const char *kept : {"<!-- root -->", "<?pi one?>", "<!-- in extended -->", "<!-- in title -->",
                             "<foreign>&lt;x&gt;</foreign>", "<?pi two?>", "<!-- in body -->",
                             "<![CDATA[a < b]]>", "<mine><item>x</item></mine>"})
        QVERIFY2(result.contains(kept), kept);
    QVERIFY(!result.contains("goes"));
}

void tst_LinkListDocument::attributesOfExistingElementsSurvive()
{
    QCOMPARE(
        written(extended("<title><content id=\"1\" type=\"html\">x</content></title><body><x>1</x></body>")),
        extended("<title><content id=\"1\" type=\"html\">New</content></title><body><x>1</x></body>"));
}

void tst_LinkListDocument::markupWithinATextIsReplaced_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("element") << QByteArray("<b>old</b>");
    QTest::newRow("mixed") << QByteArray("a<b>old</b>c");
    QTest::newRow("CDATA") << QByteArray("<![CDATA[old]]>");
    QTest::newRow("text and CDATA") << QByteArray("a<![CDATA[old]]>b");
    QTest::newRow("comment") << QByteArray("old<!-- kept -->old");
    QTest::newRow("the same in an element") << QByteArray("<b>New</b>");
    QTest::newRow("the same in pieces") << QByteArray("N<!-- kept -->e<![CDATA[w]]>");
    QTest::newRow("blank") << QByteArray("  ");
}

void tst_LinkListDocument::markupWithinATextIsReplaced()
{
    QFETCH(QByteArray, content);
    const QByteArray after = written(
        extended("<title><content type=\"text\">" + content + "</content></title><body><x>1</x></body>"));
    QCOMPARE(read(after).titleContent, QStringLiteral("New"));
    QVERIFY(!after.contains("old"));
    QCOMPARE(after.contains("<!-- kept -->"), content.contains("<!-- kept -->"));
}

void tst_LinkListDocument::writingTwiceIsWritingOnce()
{
    const QByteArray once = written(full);
    QCOMPARE(written(once), once);
    const QByteArray made = written(extended("<x>1</x>"));
    QCOMPARE(written(made), made);
}

void tst_LinkListDocument::hostileTextsComeBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes") << QStringLiteral("\"double\" 'single' `back`");
    QTest::newRow("markup") << QStringLiteral("</title><item/> <b> a > b");
    QTest::newRow("ampersands") << QStringLiteral("a & b &amp; c &lt; &#13; &nbsp;");
    QTest::newRow("end of CDATA") << QStringLiteral("<![CDATA[ ]]> ]]>");
    QTest::newRow("comment") << QStringLiteral("<!-- -- --> <?pi ?>");
    QTest::newRow("line feeds") << QStringLiteral("a\nb\n\nc\n");
    QTest::newRow("Windows line ends") << QStringLiteral("a\r\nb\rc\n\rd\r");
    QTest::newRow("blanks around") << QStringLiteral("  a\t ");
    QTest::newRow("blank alone") << QStringLiteral("   ");
    QTest::newRow("line feed alone") << QStringLiteral("\n");
    QTest::newRow("tab alone") << QStringLiteral("\t");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("right to left") << QStringLiteral("שלום \u202Eمرحبا\u202C \u200F");
    QTest::newRow("emoji") << QStringLiteral("😀👩‍👩‍👧‍👦🏳️‍🌈");
    QTest::newRow("combining") << QStringLiteral("e\u0301 \u1100\u1161");
    QTest::newRow("control characters") << QStringLiteral("a\u0001b\u0008c\u000bd\u001fe\u007f\u0085");
    QTest::newRow("zero") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
    QTest::newRow("no characters") << QString(QStringLiteral("a") + QChar(0xFFFE) + QChar(0xFFFF) + u'b');
    QTest::newRow("lone high surrogate") << QString(QStringLiteral("a") + QChar(0xD83D) + u'b');
    QTest::newRow("lone low surrogate") << QString(QStringLiteral("a") + QChar(0xDE00) + u'b');
    QTest::newRow("surrogate at the end") << QString(QStringLiteral("a") + QChar(0xD83D));
    QTest::newRow("line separators") << QStringLiteral("a\u2028b\u2029c\uFEFFd");
    QTest::newRow("place markers") << QStringLiteral("%1 %2 %@ %s %n");
    QTest::newRow("backslashes") << QStringLiteral("C:\\users \\u0041");
    QTest::newRow("a MiB") << QStringLiteral("x<&\"é😀\n").repeated(131'072);
    QTest::newRow("script address") << QStringLiteral("javascript:alert('1')");
    QTest::newRow("100 KiB address") << QStringLiteral("http://a/") + QString(102'400, u'b');
}

void tst_LinkListDocument::hostileTextsComeBack()
{
    QFETCH(QString, text);
    put(at("ws/linklist.xml"), full);
    LinkListSettings settings = fullSettings();
    settings.titleContent = text;
    settings.items = {{text, text}, {QStringLiteral("last"), text}};
    QCOMPARE(save(settings), SaveResult::Saved);
    LinkListSettings expected = settings;
    expected.titleContent = allowed(text);
    expected.items = {{allowed(text), allowed(text)}, {QStringLiteral("last"), allowed(text)}};
    const QByteArray content = get(at("ws/linklist.xml"));
    QVERIFY2(read(content) == expected, content.left(1000).constData());
    QCOMPARE(save(read(content)), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), content);
}

void tst_LinkListDocument::randomSettingsComeBack()
{
    QRandomGenerator random(11);
    const auto text = [&random] {
        QString result;
        for (int i = random.bounded(12); i > 0; --i) {
            switch (random.bounded(4)) {
            case 0:
                result += QChar(char16_t(random.bounded(0x80)));
                break;
            case 1:
                result += QChar(char16_t(random.bounded(0x10000)));
                break;
            case 2:
                result += u"<>&\"' \n\r]"[random.bounded(9)];
                break;
            default:
                result += QStringLiteral("😀");
            }
        }
        return result;
    };
    const QList<QByteArray> documents{full, extended("<x>1</x>"), extended("<body><content/></body>")};
    for (int i = 0; i < 3000; ++i) {
        LinkListSettings settings = fullSettings();
        settings.titleContent = text();
        settings.items.clear();
        for (int n = random.bounded(5); n > 0; --n)
            settings.items << LinkItem{text(), text()};
        LinkListSettings expected = settings;
        expected.titleContent = allowed(*settings.titleContent);
        for (LinkItem &item : expected.items)
            item = {allowed(item.title), allowed(item.link)};
        LinkListSettings actual = read(written(documents[i % 3], settings));
        if (i % 3 == 2) {
            actual.bodyFontSize = expected.bodyFontSize;
            actual.bodyColor = expected.bodyColor;
        }
        QVERIFY2(actual == expected, written(documents[i % 3], settings).constData());
    }
}

void tst_LinkListDocument::tenThousandItemsComeBack()
{
    LinkListSettings settings = fullSettings();
    for (int i = 0; i < 10'000; ++i)
        settings.items << LinkItem{QString::number(i), QStringLiteral("http://a/") + QString::number(i)};
    put(at("ws/linklist.xml"), full);
    QCOMPARE(save(settings), SaveResult::Saved);
    QVERIFY(read(get(at("ws/linklist.xml"))) == settings);
}

void tst_LinkListDocument::saveMergesIntoTheWorkspaceDocument()
{
    put(at("ws/linklist.xml"), extended("<mine>1</mine>"));
    put(at("data/linklist.xml"), extended("<default>1</default>"));
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), extended("<mine>1</mine>" + newTitle + newBody));
}

void tst_LinkListDocument::saveStartsFromTheDefaultDocument_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("cut off") << QByteArray("<info><properties><extended>");
    QTest::newRow("not UTF-8") << extended("<mine>\xFF</mine>");
    QTest::newRow("text outside the root") << extended("<mine>1</mine>") + "x";
    QTest::newRow("two roots") << extended("<mine>1</mine>") + "<info/>";
}

void tst_LinkListDocument::saveStartsFromTheDefaultDocument()
{
    QFETCH(QByteArray, document);
    if (!document.isNull())
        put(at("ws/linklist.xml"), document);
    put(at("data/linklist.xml"), extended("<default>1</default>"));
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), extended("<default>1</default>" + newTitle + newBody));
    QCOMPARE(tree(at("ws")).size(), 1);
}

void tst_LinkListDocument::saveWithoutAnyDocumentWritesNothing()
{
    QCOMPARE(save(), SaveResult::NoDocument);
    QVERIFY(!File::exists(at("ws/linklist.xml")));
    put(at("ws/linklist.xml"), "broken");
    put(at("data/linklist.xml"), "broken too");
    QCOMPARE(save(), SaveResult::NoDocument);
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("broken"));
}

void tst_LinkListDocument::saveOfADocumentWithoutItsContainersKeepsIt()
{
    put(at("ws/linklist.xml"), "<info><other>1</other></info>\n");
    put(at("data/linklist.xml"), full);
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("<info><other>1</other></info>"));
}

void tst_LinkListDocument::saveWritesTheElementAlone()
{
    put(at("ws/linklist.xml"),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- before -->\r\n<info>\r\n  <properties>\r\n    "
        "<extended>\r\n      <mine>1</mine>\r\n    </extended>\r\n  </properties>\r\n</info>\r\n<!-- after "
        "-->\r\n");
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), extended("<mine>1</mine>" + newTitle + newBody));
}

void tst_LinkListDocument::saveSkipsAMark()
{
    put(at("ws/linklist.xml"), "\xEF\xBB\xBF" + extended("<mine>1</mine>"));
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), extended("<mine>1</mine>" + newTitle + newBody));
}

void tst_LinkListDocument::saveLeavesTheDefaultDocumentAlone()
{
    put(at("data/linklist.xml"), full);
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("data/linklist.xml")), QByteArray(full));
    QCOMPARE(read(get(at("ws/linklist.xml"))), someSettings());
}

void tst_LinkListDocument::saveIntoAMissingFolderFails()
{
    put(at("data/linklist.xml"), full);
    QCOMPARE(LinkListDocument::save(someSettings(), at("none/linklist.xml"), at("data/linklist.xml")),
             SaveResult::NotWritten);
    QCOMPARE(LinkListDocument::save(someSettings(), QString(), at("data/linklist.xml")),
             SaveResult::NotWritten);
    QVERIFY(!File::exists(at("none")));
}

void tst_LinkListDocument::savedFileIsReadAlikeByAnotherReader()
{
    put(at("ws/linklist.xml"), full);
    LinkListSettings settings = fullSettings();
    const QString title = QStringLiteral(" <b>\"x\" & 'y'</b> ]]> é 😀\n\t&amp; ");
    settings.items = {{title, QStringLiteral("http://a/?b=1&c=<2>")}};
    QCOMPARE(save(settings), SaveResult::Saved);
    QXmlStreamReader reader(get(at("ws/linklist.xml")));
    QStringList names;
    QStringList texts;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            names << reader.name().toString();
            const QString type = reader.attributes().value(QLatin1String("type")).toString();
            if (!type.isEmpty())
                texts << type + u'=' + reader.readElementText();
        }
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(
        names.join(u' '),
        QStringLiteral("info properties extended title content fontSize color body fontSize color content "
                       "item link title"));
    QCOMPARE(texts,
             (QStringList{QStringLiteral("text=Heading"), QStringLiteral("number=16"),
                          QStringLiteral("color=0xFF8000"), QStringLiteral("number=12"),
                          QStringLiteral("color=0x0000FF"), QStringLiteral("text=http://a/?b=1&c=<2>"),
                          QStringLiteral("text=") + title}));
}

void tst_LinkListDocument::changeOfAnotherProgramBetweenSavesIsKept_data()
{
    QTest::addColumn<QByteArray>("mine");
    QTest::newRow("same size") << QByteArray("<mine>2</mine>");
    QTest::newRow("other size") << QByteArray("<mine>another</mine>");
}

void tst_LinkListDocument::changeOfAnotherProgramBetweenSavesIsKept()
{
    QFETCH(QByteArray, mine);
    put(at("ws/linklist.xml"), extended("<mine>1</mine>" + newTitle + newBody));
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(save(), SaveResult::Saved);
        QFile file(at("ws/linklist.xml")); // in place, so that not even the file is another one
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray changed = file.readAll().replace("<mine>1</mine>", mine);
        QVERIFY(file.seek(0) && file.write(changed) == changed.size());
        file.close();
        QCOMPARE(save(), SaveResult::Saved);
        QCOMPARE(get(at("ws/linklist.xml")), extended(mine + newTitle + newBody));
        put(at("ws/linklist.xml"), extended("<mine>1</mine>" + newTitle + newBody));
    }
}

void tst_LinkListDocument::documentDeletedBetweenSavesStartsFromTheDefault()
{
    put(at("ws/linklist.xml"), extended("<mine>1</mine>" + newTitle + newBody));
    put(at("data/linklist.xml"), extended("<default>1</default>"));
    QCOMPARE(save(), SaveResult::Saved);
    QVERIFY(QFile::remove(at("ws/linklist.xml")));
    QCOMPARE(save(), SaveResult::Saved);
    QCOMPARE(get(at("ws/linklist.xml")), extended("<default>1</default>" + newTitle + newBody));
    QVERIFY(QFile::remove(at("ws/linklist.xml")));
    QVERIFY(QFile::remove(at("data/linklist.xml")));
    QCOMPARE(save(), SaveResult::NoDocument);
    QVERIFY(!File::exists(at("ws/linklist.xml")));
}

void tst_LinkListDocument::documentReplacedByAFolderBetweenSavesStartsFromTheDefault()
{
    put(at("ws/linklist.xml"), extended("<mine>1</mine>" + newTitle + newBody));
    QCOMPARE(save(), SaveResult::Saved);
    QVERIFY(QFile::remove(at("ws/linklist.xml")));
    put(at("ws/linklist.xml/file"), "x");
    QCOMPARE(save(), SaveResult::NoDocument);
    put(at("data/linklist.xml"), extended("<default>1</default>"));
    QCOMPARE(save(), SaveResult::NotWritten);
    QCOMPARE(get(at("ws/linklist.xml/file")), QByteArray("x"));
}

void tst_LinkListDocument::failedWriteIsNotTakenForWritten()
{
    const QByteArray before = extended("<mine>1</mine>" + newTitle + newBody);
    put(at("ws/linklist.xml"), before);
    QCOMPARE(save(), SaveResult::Saved);
    LinkListSettings changed = someSettings();
    changed.titleContent = QStringLiteral("Not written");
    // Read from the workspace's document, written to where nothing can be written.
    QCOMPARE(LinkListDocument::save(changed, at("none/linklist.xml"), at("ws/linklist.xml")),
             SaveResult::NotWritten);
    QCOMPARE(get(at("ws/linklist.xml")), before);
    changed = someSettings();
    changed.items.clear();
    QCOMPARE(save(changed), SaveResult::Saved);
    QCOMPARE(
        get(at("ws/linklist.xml")),
        QByteArray(before).replace(newItem, "").replace("<content></content></body>", "<content/></body>"));
}

void tst_LinkListDocument::twoWorkspacesTakeTurns()
{
    put(at("a/linklist.xml"), extended("<mine>a</mine>" + newTitle + newBody));
    put(at("b/linklist.xml"), extended("<mine>b</mine>" + newTitle + newBody));
    LinkListSettings settings = someSettings();
    for (int i = 0; i < 10; ++i) {
        for (const char *name : {"a", "b"}) {
            settings.titleContent = QString::fromLatin1(name) + QString::number(i);
            QCOMPARE(LinkListDocument::save(
                         settings, m_folder->filePath(QLatin1String(name)) + QStringLiteral("/linklist.xml"),
                         QString()),
                     SaveResult::Saved);
        }
    }
    QCOMPARE(get(at("a/linklist.xml")),
             extended("<mine>a</mine>" + QByteArray(newTitle).replace("New", "a9") + newBody));
    QCOMPARE(get(at("b/linklist.xml")),
             extended("<mine>b</mine>" + QByteArray(newTitle).replace("New", "b9") + newBody));
}

void tst_LinkListDocument::savesOneAfterTheOtherWriteWhatFreshOnesWould()
{
    static const QList<QByteArray> documents{
        extended(newTitle + newBody),
        extended("<!--c-->x" + newTitle + "<?p q?>" + newBody + "<![CDATA[y]]>"),
        extended("<title>a<b>c</b><content>x<!--c--><b>y</b></content></title> " + newBody),
        extended("<title/><body>x<content> <item> </item>" + newItem + newItem + "y</content></body>"),
        extended(newTitle + "<body><content>x" + newItem + "</content></body>"),
        extended(newTitle + "<body><content><item a=\"1\"/>" + newItem + "</content></body>"),
        extended(" "),
        extended("&#13;<mine>&#13;&#10; &#9;</mine>"),
    };
    static const QStringList texts{QString(),
                                   QStringLiteral(" "),
                                   QStringLiteral("T"),
                                   QStringLiteral("L"),
                                   QStringLiteral("a\rb\r\n"),
                                   QStringLiteral("<&>]]>\""),
                                   QStringLiteral("é\U0001F600\x01"),
                                   QString(QChar(0xD800)) + QChar(0xFFFD)};
    QRandomGenerator random(3);
    const auto text = [&random] { return texts[random.bounded(int(texts.size()))]; };
    for (const QByteArray &document : documents) {
        put(at("ws/linklist.xml"), document);
        put(at("fresh/linklist.xml"), document);
        LinkListSettings settings = someSettings();
        for (int i = 0; i < 15; ++i) {
            if (random.bounded(3) == 0)
                settings.titleContent = text();
            if (random.bounded(3) == 0)
                settings.items.insert(random.bounded(int(settings.items.size()) + 1), {text(), text()});
            if (random.bounded(4) == 0 && !settings.items.isEmpty())
                settings.items.removeAt(random.bounded(int(settings.items.size())));
            if (random.bounded(3) == 0 && !settings.items.isEmpty())
                settings.items[random.bounded(int(settings.items.size()))].link = text();
            QCOMPARE(save(settings), SaveResult::Saved);
            Xml::Draft kept = LastDocument::take(get(at("ws/linklist.xml")));
            const Xml::ParseResult read = Xml::parse(get(at("ws/linklist.xml")));
            QVERIFY(kept.parsed && read);
            QCOMPARE(LinkListDocument::read(kept.parsed.document->document_element()),
                     LinkListDocument::read(read.document->document_element()));
            QCOMPARE(Xml::text(kept.parsed.document->document_element()),
                     Xml::text(read.document->document_element()));
            LastDocument::forget();
            QCOMPARE(LinkListDocument::save(settings, at("fresh/linklist.xml"), QString()),
                     SaveResult::Saved);
            QCOMPARE(get(at("ws/linklist.xml")), get(at("fresh/linklist.xml")));
            LastDocument::keep(get(at("ws/linklist.xml")), std::move(kept.parsed.document));
        }
    }
}

void tst_LinkListDocument::blankTextBesideANewHeadingIsReadAlike()
{
    put(at("ws/linklist.xml"), extended(" "));
    QCOMPARE(save(), SaveResult::Saved);
    const QByteArray once = get(at("ws/linklist.xml"));
    const Xml::Draft draft = LastDocument::take(once);
    QCOMPARE(Xml::text(draft.parsed.document->document_element()),
             Xml::text(Xml::parse(once).document->document_element()));
}

void tst_LinkListDocument::copiesAFileIntoTheWorkspace()
{
    put(at("outside/é %1.png"), "picture");
    QVERIFY(LinkListDocument::saveFile2Workspace(at("outside/é %1.png"), at("ws")));
    QCOMPARE(tree(at("ws")), (QMap<QString, QByteArray>{{QStringLiteral("é %1.png"), "picture"}}));
    QCOMPARE(get(at("outside/é %1.png")), QByteArray("picture"));
    put(at("outside/b"), "b");
    QVERIFY(LinkListDocument::saveFile2Workspace(at("outside/b"), at("ws/")));
    QCOMPARE(get(at("ws/b")), QByteArray("b"));
}

void tst_LinkListDocument::fileInTheWorkspaceStays()
{
    put(at("ws/a.png"), "a");
    put(at("ws/sub/b.png"), "b");
    const auto before = tree(at("ws"));
    QVERIFY(LinkListDocument::saveFile2Workspace(at("ws/a.png"), at("ws")));
    QVERIFY(LinkListDocument::saveFile2Workspace(at("ws/sub/b.png"), at("ws")));
    QVERIFY(LinkListDocument::saveFile2Workspace(at("ws/none.png"), at("ws")));
    QCOMPARE(tree(at("ws")), before);
}

void tst_LinkListDocument::pathThatHoldsTheWorkspacePathCountsAsInside()
{
    put(at("ws-other/a.png"), "a");
    QVERIFY(LinkListDocument::saveFile2Workspace(at("ws-other/a.png"), at("ws")));
    QVERIFY(tree(at("ws")).isEmpty());
}

void tst_LinkListDocument::replacedFileStaysUnderATimeStamp()
{
    put(at("outside/a.png"), "new");
    put(at("ws/a.png"), "old");
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    QVERIFY(LinkListDocument::saveFile2Workspace(at("outside/a.png"), at("ws")));
    const qint64 after = QDateTime::currentSecsSinceEpoch();
    auto files = tree(at("ws"));
    QCOMPARE(files.size(), 2);
    QCOMPARE(files.take(QStringLiteral("a.png")), QByteArray("new"));
    QCOMPARE(files.first(), QByteArray("old"));
    const QString name = files.firstKey();
    QVERIFY2(QRegularExpression(QStringLiteral("^[0-9]+\\.[0-9]{6}$")).match(name).hasMatch(),
             qPrintable(name));
    const qint64 seconds = name.section(u'.', 0, 0).toLongLong();
    QVERIFY(before <= seconds && seconds <= after);
}

void tst_LinkListDocument::replacedFolderStaysUnderATimeStamp()
{
    put(at("outside/a"), "new");
    put(at("ws/a/inside"), "old");
    QVERIFY(LinkListDocument::saveFile2Workspace(at("outside/a"), at("ws")));
    QCOMPARE(get(at("ws/a")), QByteArray("new"));
    QVERIFY(tree(at("ws")).values().contains("old"));
    QCOMPARE(tree(at("ws")).size(), 3);
}

void tst_LinkListDocument::fileOfTheWorkspaceToldThroughALinkIsNotLost()
{
    put(at("ws/a"), "mine");
    QVERIFY(QFile::link(at("ws"), at("link")));
    LinkListDocument::saveFile2Workspace(at("link/a"), at("ws"));
    QCOMPARE(get(at("ws/a")), QByteArray("mine"));
}

void tst_LinkListDocument::everyReplacedFileStays()
{
    QList<QByteArray> expected;
    for (int i = 0; i < 50; ++i) {
        const QByteArray content = QByteArray::number(i);
        put(at("outside/a"), content);
        QVERIFY(LinkListDocument::saveFile2Workspace(at("outside/a"), at("ws")));
        expected << content;
    }
    QList<QByteArray> actual = tree(at("ws")).values();
    std::sort(actual.begin(), actual.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(actual, expected);
    QCOMPARE(get(at("ws/a")), QByteArray("49"));
}

void tst_LinkListDocument::failedCopyBringsTheOldFileBack()
{
    put(at("ws/a.png"), "old");
    QVERIFY(!LinkListDocument::saveFile2Workspace(at("outside/a.png"), at("ws")));
    QCOMPARE(tree(at("ws")), (QMap<QString, QByteArray>{{QStringLiteral("a.png"), "old"}}));
    QVERIFY(!LinkListDocument::saveFile2Workspace(at("outside/b.png"), at("ws")));
    QCOMPARE(tree(at("ws")).size(), 1);
}

void tst_LinkListDocument::refusedWorkspaces_data()
{
    QTest::addColumn<QString>("workSpace");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("dot") << QStringLiteral(".");
    QTest::newRow("relative") << QStringLiteral("ws");
}

void tst_LinkListDocument::refusedWorkspaces()
{
    QFETCH(QString, workSpace);
    put(at("outside/a"), "new");
    put(at("a"), "old");
    put(at("ws/a"), "old");
    const auto before = tree(m_folder->path());
    const QString home = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const bool copied = LinkListDocument::saveFile2Workspace(at("outside/a"), workSpace);
    QVERIFY(QDir::setCurrent(home));
    QVERIFY(!copied);
    QCOMPARE(tree(m_folder->path()), before);
}

void tst_LinkListDocument::pathsWithoutAFileNameHarmNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("separator at the end") << QStringLiteral("%/outside/");
    QTest::newRow("dot") << QStringLiteral("%/outside/.");
    QTest::newRow("parent") << QStringLiteral("%/outside/..");
    QTest::newRow("dot alone") << QStringLiteral(".");
    QTest::newRow("parent alone") << QStringLiteral("..");
    QTest::newRow("missing file in a missing folder") << QStringLiteral("%/none/b");
}

void tst_LinkListDocument::pathsWithoutAFileNameHarmNothing()
{
    QFETCH(QString, path);
    path.replace(u'%', m_folder->path());
    put(at("outside/a"), "1");
    put(at("ws/a"), "2");
    const auto before = tree(m_folder->path());
    QVERIFY(!LinkListDocument::saveFile2Workspace(path, at("ws")));
    QCOMPARE(tree(m_folder->path()), before);
}

void tst_LinkListDocument::linkNormalisation_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *link, const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(link) << QString::fromUtf8(expected);
    };
    row("bare word", "abc", "http://abc");
    row("empty", "", "http://");
    row("blank inside", "a b", "http://a%20b");
    row("blanks around", " a ", "http://%20a%20");
    row("upper-case scheme", "HTTP://abc", "http://HTTP://abc");
    row("http", "http://abc/d?e=f&g#h", "http://abc/d?e=f&g#h");
    row("https", "https://abc", "https://abc");
    row("ftp", "ftp://abc", "ftp://abc");
    row("one slash", "http:/abc", "http:/abc");
    row("ftp with one slash", "ftp:/abc", "ftp:/abc");
    row("https with one slash", "https:/abc", "https:/abc");
    row("no slash", "http:abc", "http://http:abc");
    row("prefix inside", "see http://abc", "see%20http://abc");
    row("prefix inside, no blank", "see?http://abc", "see?http://abc");
    row("prefix at the end", "abc-ftp:/", "abc-ftp:/");
    row("mail", "mailto:a@b.c", "http://mailto:a@b.c");
    row("script", "javascript:alert(1)", "http://javascript:alert(1)");
    row("script with quotes", "javascript:alert(\"x\")", "http://javascript:alert(%22x%22)");
    row("file", "file:///etc/passwd", "http://file:///etc/passwd");
    row("non-ASCII", "http://é.example/ü?ñ", "http://%C3%A9.example/%C3%BC?%C3%B1");
    row("emoji", "😀", "http://%F0%9F%98%80");
    row("right to left", "שלום", "http://%D7%A9%D7%9C%D7%95%D7%9D");
    row("escaped already", "http://a/%20b", "http://a/%20b");
    row("escaped and not", "http://a/%20b c", "http://a/%20b%20c");
    row("lower-case escape stays", "http://a/%c3%a9 ", "http://a/%c3%a9%20");
    row("lone percent", "http://a/100%", "http://a/100%25");
    row("percent before no digits", "http://a/%zz%4", "http://a/%25zz%254");
    row("place marker", "%1 %2", "http://%251%20%252");
    row("line feed", "http://a\nb", "http://a%0Ab");
    row("tab and zero-width", "http://a\t\u200Bb", "http://a%09%E2%80%8Bb");
    row("characters that no URL holds", "http://a/\"<>\\^`{|}", "http://a/%22%3C%3E%5C%5E%60%7B%7C%7D");
    row("characters that URLs hold", "http://a/-._~:/?#@!$&'()*+,;=", "http://a/-._~:/?#@!$&'()*+,;=");
}

void tst_LinkListDocument::linkNormalisation()
{
    QFETCH(QString, link);
    QFETCH(QString, expected);
    const QString once = LinkListDocument::convertHttpFormat(link);
    QCOMPARE(once, expected);
    QCOMPARE(LinkListDocument::convertHttpFormat(once), once);
}

void tst_LinkListDocument::randomLinksAreNormalisedOnce()
{
    static const QStringList pieces{
        QStringLiteral("http:/"),  QStringLiteral("https://"), QStringLiteral("ftp:/"),
        QStringLiteral("HTTP://"), QStringLiteral("%"),        QStringLiteral("%20"),
        QStringLiteral("%é"),      QStringLiteral("2"),        QStringLiteral("a"),
        QStringLiteral("F"),       QStringLiteral("/"),        QStringLiteral(":"),
        QStringLiteral(" "),       QStringLiteral("?"),        QStringLiteral("#"),
        QStringLiteral("@"),       QStringLiteral("é"),        QStringLiteral("😀"),
        QStringLiteral("\\"),      QStringLiteral("\""),       QStringLiteral("\n"),
        QStringLiteral(":99"),     QStringLiteral("<"),        QStringLiteral("&")};
    QRandomGenerator random(3);
    for (int i = 0; i < 20'000; ++i) {
        QString link;
        for (int n = random.bounded(10); n > 0; --n)
            link += pieces[random.bounded(int(pieces.size()))];
        const QString once = LinkListDocument::convertHttpFormat(link);
        QVERIFY2(once == normalised(link), qPrintable(link + QLatin1String(" gives ") + once));
        QVERIFY2(LinkListDocument::convertHttpFormat(once) == once, qPrintable(link));
    }
    for (int i = 0; i < 5000; ++i) {
        QString link;
        for (int n = random.bounded(20); n > 0; --n)
            link += QChar(char16_t(random.bounded(random.bounded(2) ? 0x80 : 0x10000)));
        const QString once = LinkListDocument::convertHttpFormat(link);
        QVERIFY2(LinkListDocument::convertHttpFormat(once) == once, qPrintable(link));
        const QByteArray bytes = once.toUtf8();
        for (qsizetype b = 0; b < bytes.size(); ++b)
            QVERIFY2(isUrlByte(bytes[b]) || isEscape(bytes, b), qPrintable(link));
    }
}

void tst_LinkListDocument::longLinksAreNormalisedQuickly()
{
    ProcessorTimer clock;
    clock.start();
    const QString plain = QStringLiteral("http://a/") + QString(102'400, u'b');
    QCOMPARE(LinkListDocument::convertHttpFormat(plain), plain);
    const QString blanks(102'400, u' ');
    QCOMPARE(LinkListDocument::convertHttpFormat(blanks),
             QStringLiteral("http://") + QStringLiteral("%20").repeated(102'400));
    const QString percents(102'400, u'%');
    QCOMPARE(LinkListDocument::convertHttpFormat(percents),
             QStringLiteral("http://") + QStringLiteral("%25").repeated(102'400));
    QVERIFY2(clock.elapsed() < 5000, "seconds for what a person types");
}

LINKLIST_TEST_MAIN(tst_LinkListDocument)
#include "tst_LinkListDocument.moc"
