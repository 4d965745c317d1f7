#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/LastDocument.h"
#include "Classes/Mode/Xml.h"
#include "linklist/LinkListDocument.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <array>
#include <cstdio>

using Fixtures::get;
using Fixtures::put;

namespace
{

const QByteArray mark("\xEF\xBB\xBF");

// The document of a link list with two links, as the editor writes it.
const char *const linkList
    = "<info><opacity type=\"number\">1</opacity><layout type=\"number\">1</layout><properties><basic>"
      "<left type=\"text\">0%</left><top type=\"text\">0%</top><width type=\"text\">0%</width>"
      "<height type=\"text\">0%</height></basic><extended><title><content type=\"text\">Links</content>"
      "<fontSize type=\"number\">14</fontSize><color type=\"color\">0x000000</color></title><body>"
      "<fontSize type=\"number\">12</fontSize><color type=\"color\">0xFF0000</color><content><item>"
      "<link type=\"text\">page1.html</link><title type=\"text\">A</title></item><item>"
      "<link type=\"text\">page2.html</link><title type=\"text\">B \"quoted\"</title></item></content></body>"
      "</extended></properties></info>";
const char *const linkListScript
    = "{\"opacity\":0.750000,\"layout\":2,\"properties\":{\"basic\":{\"left\":\"10.0%\",\"top\":\"20.0%\","
      "\"width\":\"60.0%\",\"height\":\"40.0%\"},\"extended\":{\"title\":{\"content\":\"Links\","
      "\"fontSize\":14,\"color\":\"#000000\"},\"body\":{\"fontSize\":12,\"color\":\"#FF0000\",\"content\":["
      "{\"link\":\"page1.html\",\"title\":\"A\"},{\"link\":\"page2.html\",\"title\":\"B "
      "\\\"quoted\\\"\"}]}}}}";

// A document whose generated values are all that it holds.
const char *const bare
    = "<info><opacity type=\"number\"/><layout type=\"number\"/><properties><basic><left type=\"text\"/>"
      "<top type=\"text\"/><width type=\"text\"/><height type=\"text\"/></basic></properties></info>";

QByteArray bareScript(const char *opacity, const char *layout, const char *left, const char *top,
                      const char *width, const char *height)
{
    return QByteArray("var config={\"opacity\":") + opacity + ",\"layout\":" + layout
        + ",\"properties\":{\"basic\":{\"left\":\"" + left + "\",\"top\":\"" + top + "\",\"width\":\"" + width
        + "\",\"height\":\"" + height + "\"}}};";
}

QByteArray printed(const char *format, double value)
{
    std::array<char, 512> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), format, value);
    return QByteArray(buffer.data(), length);
}

// What a book's player does with the published file: the key from the end, the characters to bytes, RC4.
QByteArray unscrambled(QByteArray text)
{
    static const QByteArray alphabet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    if (!text.endsWith('_') || text.size() < 9 || text.size() % 2 == 0)
        return "not scrambled";
    text.chop(1);
    const QByteArray key = text.right(8);
    text.chop(8);
    std::array<int, 256> state;
    for (int i = 0; i < 256; ++i)
        state[size_t(i)] = i;
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + state[size_t(i)] + uchar(key[i % 8])) % 256;
        std::swap(state[size_t(i)], state[size_t(j)]);
    }
    QByteArray result;
    int x = 0;
    int y = 0;
    for (qsizetype p = 0; p * 2 < text.size(); ++p) {
        const int base = 16 * int(p % 3);
        const int high = int(alphabet.indexOf(text[p * 2])) - base;
        const int low = int(alphabet.indexOf(text[p * 2 + 1])) - base;
        if (high < 0 || high > 15 || low < 0 || low > 15)
            return "not scrambled";
        x = (x + 1) % 256;
        y = (y + state[size_t(x)]) % 256;
        std::swap(state[size_t(x)], state[size_t(y)]);
        result += char((high * 16 + low) ^ state[size_t((state[size_t(x)] + state[size_t(y)]) % 256)]);
    }
    return result;
}

// The configuration as a script engine sees it.
QJsonDocument evaluated(const QString &file, QByteArray *problem)
{
    QProcess node;
    node.start(QStringLiteral("node"), {QStringLiteral(LINKLIST_SOURCE_DIR "/tests/js/evaluate.mjs"), file});
    if (!node.waitForFinished(30'000) || node.exitStatus() != QProcess::NormalExit || node.exitCode() != 0)
        *problem = "node: " + node.errorString().toUtf8() + ' ' + node.readAllStandardError();
    QJsonParseError error;
    // Qt's reader drops a mark that a string begins with.
    const QByteArray output = node.readAllStandardOutput().replace("\xEF\xBB\xBF", "\\uFEFF");
    const QJsonDocument result = QJsonDocument::fromJson(output, &error);
    if (error.error != QJsonParseError::NoError)
        *problem += "no JSON: " + output;
    return result;
}

// A second telling of the rules, over a tree of this test's own, for the comparison with random documents.
struct Element {
    QString name;
    QString type; // nil for none
    QString text; // of a leaf
    QList<Element> children;
    bool isLeaf = false;
};

QString escapedForScript(QString text)
{
    for (const char *lineBreak : {"\r\n", "\r", "\n"})
        text.replace(QLatin1String(lineBreak), QLatin1String("<br/>"));
    for (const char *escape : {"\\u", "\\U"})
        text.replace(QLatin1String(escape), QLatin1String("${Unicode}"));
    text.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    text.replace(QLatin1String("\""), QLatin1String("\\\""));
    text.replace(QLatin1String("${Unicode}"), QLatin1String("\\u"));
    text.replace(QLatin1String("&lt;"), QLatin1String("<"));
    text.replace(QLatin1String("&gt;"), QLatin1String(">"));
    return text.replace(QLatin1String("&amp;"), QLatin1String("&"));
}

// What a reader of the script gets of a text that was typed: the text itself, but for line ends, whole
// escapes and the three entities.
QString asRead(const QString &typed)
{
    static const QRegularExpression other(
        QStringLiteral("\r\n|\r|\n|(?:\\\\[uU]|\\$\\{Unicode\\})([0-9A-Fa-f]{4})|&(?:lt|gt|amp);"));
    QString result;
    qsizetype at = 0;
    for (auto match = other.globalMatch(typed); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        result += typed.mid(at, found.capturedStart() - at);
        at = found.capturedEnd();
        const QString text = found.captured();
        if (found.hasCaptured(1))
            result += QChar(found.captured(1).toUShort(nullptr, 16));
        else if (text == QLatin1String("&lt;"))
            result += u'<';
        else if (text == QLatin1String("&gt;"))
            result += u'>';
        else
            result += QLatin1String(text == QLatin1String("&amp;") ? "&" : "<br/>");
    }
    return result + typed.mid(at);
}

QString expectedBool(const QString &text)
{
    const QString lower = text.toLower();
    if (lower == QLatin1String("true") || lower == QLatin1String("false"))
        return lower;
    for (const QChar c : lower) {
        if (c < u'0' || c > u'9')
            break;
        if (c != u'0')
            return QStringLiteral("true");
    }
    return QStringLiteral("false");
}

QString expectedJson(const Element &element)
{
    const QString key = u'"' + element.name + QLatin1String("\":");
    QStringList parts;
    bool holdsItems = false;
    for (const Element &child : element.children) {
        parts << expectedJson(child);
        holdsItems = holdsItems || child.name == QLatin1String("item");
    }
    const QString inner = parts.join(u',');
    if (element.name == QLatin1String("info") || element.name == QLatin1String("item"))
        return u'{' + inner + u'}';
    if (holdsItems)
        return key + u'[' + inner + u']';
    const QString &type = element.type;
    const QString quote = QStringLiteral("\"");
    if (type == QLatin1String("text"))
        return key + quote + escapedForScript(element.text) + quote;
    if (type == QLatin1String("number"))
        return key + element.text;
    if (type == QLatin1String("color") || type == QLatin1String("border")) {
        QString text = element.text;
        text.replace(QLatin1String("0x"), QLatin1String("#"));
        return key + quote + text.replace(QLatin1String("0X"), QLatin1String("#")) + quote;
    }
    if (type == QLatin1String("bool"))
        return key + expectedBool(element.text);
    if (type == QLatin1String("file"))
        return key + quote + element.text + quote;
    return key + u'{' + inner + u'}';
}

class RandomDocument
{
public:
    explicit RandomDocument(quint32 seed)
        : m_random(seed)
    {
    }

    Element element(int depth)
    {
        static const QStringList names{
            QStringLiteral("info"),    QStringLiteral("item"),    QStringLiteral("title"),
            QStringLiteral("content"), QStringLiteral("opacity"), QStringLiteral("a"),
            QStringLiteral("b-c.d_1"), QStringLiteral("items"),   QStringLiteral("Größe"),
            QStringLiteral("Item"),    QStringLiteral("x"),       QStringLiteral("y")};
        static const QStringList types{QStringLiteral("text"),   QStringLiteral("number"),
                                       QStringLiteral("color"),  QStringLiteral("bool"),
                                       QStringLiteral("border"), QStringLiteral("file"),
                                       QStringLiteral("Text"),   QStringLiteral("other")};
        Element result;
        result.name = names[below(int(names.size()))];
        const bool container = result.name == QLatin1String("info") || result.name == QLatin1String("item");
        result.isLeaf = !container && (depth == 0 || below(3) == 0);
        if (result.isLeaf) {
            result.type = types[below(6)];
            result.text = leafText(result.type);
            return result;
        }
        if (below(3) == 0)
            result.type = below(2) == 0 ? types[6] : types[7];
        const int count = depth == 0 ? 0 : below(5);
        for (int i = 0; i < count; ++i)
            result.children << element(depth - 1);
        return result;
    }

    // With comments, instructions, blanks, CDATA and references where they make no difference.
    QString xml(const Element &element)
    {
        QString result = u'<' + element.name;
        if (!element.type.isNull())
            result += QLatin1String(below(2) ? " type=\"%1\"" : "\n other='1' type='%1' ").arg(element.type);
        if (below(4) == 0 && element.children.isEmpty() && element.text.isEmpty())
            return result + QLatin1String("/>");
        result += u'>';
        if (element.isLeaf)
            result += leafXml(element.text);
        for (const Element &child : element.children)
            result += noise(true) + xml(child);
        if (!element.isLeaf)
            result += noise(!element.children.isEmpty());
        return result + QLatin1String("</") + element.name + u'>';
    }

private:
    int below(int bound) { return m_random.bounded(bound); }

    QString leafText(const QString &type)
    {
        static const QStringList pieces{
            QStringLiteral("a"),        QStringLiteral("\""),         QStringLiteral("'"),
            QStringLiteral("\\"),       QStringLiteral("\\u0041"),    QStringLiteral("\\U"),
            QStringLiteral("u"),        QStringLiteral("&"),          QStringLiteral("&lt;"),
            QStringLiteral("&gt;"),     QStringLiteral("<"),          QStringLiteral(">"),
            QStringLiteral("&amp;"),    QStringLiteral("amp;"),       QStringLiteral("\n"),
            QStringLiteral("%1"),       QStringLiteral("${Unicode}"), QStringLiteral("${"),
            QStringLiteral("<br/>"),    QStringLiteral("é"),          QStringLiteral("שלום"),
            QStringLiteral("😀"),        QStringLiteral("]]>"),        QStringLiteral("\t"),
            QStringLiteral("Unicode}"), QStringLiteral("  "),         QStringLiteral("\r\n"),
            QStringLiteral("\r")};
        static const QStringList bools{
            QStringLiteral("TRUE"), QStringLiteral("False"), QStringLiteral("yes"), QStringLiteral("0"),
            QStringLiteral("007"),  QStringLiteral("-1"),    QStringLiteral("2x"),  QString()};
        static const QStringList colors{QStringLiteral("0x"), QStringLiteral("0X"), QStringLiteral("0"),
                                        QStringLiteral("x"),  QStringLiteral("X"),  QStringLiteral("#"),
                                        QStringLiteral("fF"), QStringLiteral("1 ")};
        if (type == QLatin1String("bool"))
            return bools[below(int(bools.size()))];
        if (type == QLatin1String("number"))
            return QString::number(m_random.bounded(100'000)) + QLatin1String(below(2) ? ".50" : "");
        const QStringList &from = type == QLatin1String("text") ? pieces : colors;
        QString result;
        for (int i = below(8); i > 0; --i)
            result += from[below(int(from.size()))];
        if (type == QLatin1String("file"))
            result.prepend(QLatin1String("none/"));
        return result;
    }

    QString leafXml(const QString &text)
    {
        // Each stretch begins and ends with ink, so that no blank stands alone between comments.
        if (text.isEmpty() || text.trimmed() != text)
            return references(text);
        const qsizetype cut = below(int(text.size()) + 1);
        const QString head = text.left(cut);
        const QString tail = text.mid(cut);
        if (head.isEmpty() || tail.isEmpty() || head.trimmed() != head || tail.trimmed() != tail
            || head.back().isHighSurrogate() || below(2))
            return references(text);
        const bool plain = !tail.contains(QLatin1String("]]>")) && !tail.contains(u'\r');
        const QString second = plain && below(2) ? QLatin1String("<![CDATA[") + tail + QLatin1String("]]>")
                                                 : noise(false) + references(tail);
        return references(head) + second;
    }

    QString references(const QString &text)
    {
        QString result;
        for (const QChar c : text) {
            if (c == u'\r')
                result += QLatin1String("&#13;");
            else if (c == u'<' || c == u'>' || c == u'&')
                result += c == u'<' ? QLatin1String("&lt;")
                    : c == u'>'     ? QLatin1String("&gt;")
                                    : QLatin1String("&amp;");
            else if (c.unicode() < 128 && below(8) == 0)
                result += QStringLiteral("&#%1;").arg(int(c.unicode()));
            else if (c == u'"')
                result += QLatin1String("&quot;");
            else
                result += c;
        }
        return result;
    }

    QString noise(bool blanks)
    {
        static const QStringList all{QStringLiteral("<!-- a \"comment\" -->"),
                                     QStringLiteral("<?target data?>"), QStringLiteral("<!---->"), QString()};
        const QString blank = blanks && below(2) ? QStringLiteral("\n  ") : QString();
        return blank + all[below(int(all.size()))] + blank;
    }

    QRandomGenerator m_random;
};

} // namespace

class tst_PlayerConfiguration : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void typeFromString_data();
    void typeFromString();
    void leafValues_data();
    void leafValues();
    void containers_data();
    void containers();
    void blankTextBesideCdataBelongsToIt();
    void blankTextBetweenCommentsInsideATextStays();
    void fileInTheWorkspaceGoesIntoTheRelativeFolder_data();
    void fileInTheWorkspaceGoesIntoTheRelativeFolder();
    void fileThatExistsAsItStandsGoesIntoTheRelativeFolder();
    void fileThatDoesNotExistStaysAsItIs();
    void manyRandomDocumentsFollowTheRules();

    void writesTheWorkedExample();
    void configHasTheMarkAndBookPluginHasNone();
    void previewLeavesThePublishedFileAlone();
    void publishingLeavesThePreviewFileAlone();
    void nilFolderMeansPreview();
    void publishedFileIsDifferentEveryTimeAndTellsTheSame();
    void documentOnDiskIsNotChanged();
    void identifierNamesTheDocument();
    void rootOfAnotherNameIsWrittenWithItsKey();

    void whatIsNoDocumentIsToldWhileWriting_data();
    void whatIsNoDocumentIsToldWhileWriting();
    void configurationFollowsTheDocument();
    void configurationOfTheKeptDocumentIsThatOfItsFile();

    void rectangle_data();
    void rectangle();
    void randomRectanglesArePrintedAsCPrintsThem();
    void defaultSettingsServeWhenThereAreNoSettings();
    void settingsInASubfolderDoNotCount();
    void settingsThatAreNotUtf8KeepTheGeneratorsDefaults();
    void everyOpacityLayoutAndPropertiesIsFilledIn();
    void lastBasicOfEachPropertiesIsFilledIn();
    void onlyTheRootsOwnChildrenAreFilledIn();
    void otherChildrenOfBasicStay();

    void withoutADocumentNothingIsWritten_data();
    void withoutADocumentNothingIsWritten();
    void withoutARectangleFileNothingIsWritten();
    void refusedWorkspaceWritesNothing_data();
    void refusedWorkspaceWritesNothing();

    void brokenEscapesBecomeText_data();
    void brokenEscapesBecomeText();
    void brokenEscapesOfOtherTypesStay();

    void scriptEngineReadsTheWorkedExample();
    void scriptEngineReadsHostileTextsAsTheyAre();
    void scriptEngineReadsRandomTextsAsTheyWereTyped();
    void scriptEngineReadsThePublishedFileLikeThePreview();
    void tenThousandLinksAreGeneratedWhole();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    PluginSettingsInfo info() const;
    bool generate(const QString &relativePath = QStringLiteral(""))
    {
        return info().generateJSConfig(relativePath);
    }
    QByteArray json(const QByteArray &xml, const QString &relatePath = QStringLiteral("")) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_PlayerConfiguration::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

PluginSettingsInfo tst_PlayerConfiguration::info() const
{
    PluginSettingsInfo result;
    result.setWorkSpace(m_folder->path());
    return result;
}

QByteArray tst_PlayerConfiguration::json(const QByteArray &xml, const QString &relatePath) const
{
    const Xml::ParseResult parsed = Xml::parse(xml);
    if (!parsed)
        return "no document: " + parsed.reason.toUtf8() + " in " + xml;
    return info().jsonFromXml(parsed.document->document_element(), relatePath);
}

void tst_PlayerConfiguration::typeFromString_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("type");
    QTest::newRow("text") << QByteArray("text") << 0;
    QTest::newRow("number") << QByteArray("number") << 1;
    QTest::newRow("color") << QByteArray("color") << 2;
    QTest::newRow("bool") << QByteArray("bool") << 3;
    QTest::newRow("border") << QByteArray("border") << 4;
    QTest::newRow("file") << QByteArray("file") << 5;
    QTest::newRow("empty") << QByteArray("") << 6;
    QTest::newRow("other") << QByteArray("colour") << 6;
    QTest::newRow("upper-case") << QByteArray("Text") << 6;
    QTest::newRow("blank after it") << QByteArray("text ") << 6;
    QTest::newRow("blank before it") << QByteArray(" text") << 6;
    QTest::newRow("beginning only") << QByteArray("tex") << 6;
    QTest::newRow("longer") << QByteArray("texts") << 6;
    QTest::newRow("zero byte after it") << QByteArray("text\0", 5) << 6;
}

void tst_PlayerConfiguration::typeFromString()
{
    QFETCH(QByteArray, text);
    QFETCH(int, type);
    QCOMPARE(int(propertyTypeFromString(std::string_view(text.constData(), size_t(text.size())))), type);
}

void tst_PlayerConfiguration::leafValues_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *xml, const char *expected) {
        QTest::newRow(name) << QByteArray(xml) << QByteArray(expected);
    };
    row("text", R"(<a type="text">x y</a>)", R"("a":"x y")");
    row("empty text", R"(<a type="text"></a>)", R"("a":"")");
    row("empty text, short form", R"(<a type="text"/>)", R"("a":"")");
    row("blank text that is the only content", "<a type=\"text\"> \t </a>", "\"a\":\" \t \"");
    row("text with blanks around", R"(<a type="text"> x </a>)", R"("a":" x ")");
    row("text with a line feed", "<a type=\"text\">x\ny</a>", R"("a":"x<br/>y")");
    row("text with a Windows line end", "<a type=\"text\">x\r\ny</a>", R"("a":"x<br/>y")");
    row("text with referenced carriage returns", "<a type=\"text\">x&#13;&#10;y&#13;z</a>",
        R"("a":"x<br/>y<br/>z")");
    row("text with a double quote", R"(<a type="text">x "y"</a>)", R"("a":"x \"y\"")");
    row("text with an apostrophe", R"(<a type="text">it's</a>)", R"("a":"it's")");
    row("text with a backslash", R"(<a type="text">C:\dir</a>)", R"("a":"C:\\dir")");
    row("text with a Unicode escape", R"(<a type="text">\u00e9</a>)", R"("a":"\u00e9")");
    row("text with an upper-case Unicode escape", R"(<a type="text">\U00e9</a>)", R"("a":"\u00e9")");
    row("text with angle brackets", R"(<a type="text">&lt;b&gt;</a>)", R"("a":"<b>")");
    row("text with entities told as text", R"(<a type="text">&amp;lt;&amp;gt;&amp;amp;</a>)", R"("a":"<>&")");
    row("text with a twice escaped entity", R"(<a type="text">&amp;amp;lt;</a>)", R"("a":"&lt;")");
    row("text with a place marker", R"(<a type="text">%1 %@ %s</a>)", R"("a":"%1 %@ %s")");
    row("text in other scripts", R"(<a type="text">é שלום 😀</a>)", R"("a":"é שלום 😀")");
    row("text with marks", "<a type=\"text\">\xEF\xBB\xBF\xEF\xBB\xBFx</a>",
        "\"a\":\"\xEF\xBB\xBF\xEF\xBB\xBFx\"");
    row("text in CDATA", R"(<a type="text"><![CDATA[<x> & "y"]]></a>)", R"("a":"<x> & \"y\"")");
    row("text and CDATA are one", R"(<a type="text">x<![CDATA[y]]>z</a>)", R"("a":"xyz")");
    row("comment in text", R"(<a type="text">x<!-- no -->y</a>)", R"("a":"xy")");
    row("instruction in text", R"(<a type="text">x<?no no?>y</a>)", R"("a":"xy")");
    row("line break across text and CDATA", "<a type=\"text\">x&#13;<![CDATA[\ny]]></a>", R"("a":"x<br/>y")");
    row("escape across text and CDATA", "<a type=\"text\">x\\<![CDATA[u0041]]></a>", R"("a":"x\u0041")");
    row("text of descendants", R"(<a type="text">x<b>y<c>z</c></b></a>)", R"("a":"xyz")");

    row("number", R"(<a type="number">12</a>)", R"("a":12)");
    row("number verbatim", R"(<a type="number"> 007.50e0 </a>)", R"("a": 007.50e0 )");
    row("number that is none", R"(<a type="number">x"y</a>)", R"("a":x"y)");
    row("negative number", R"(<a type="number">-0.5</a>)", R"("a":-0.5)");
    row("empty number", R"(<a type="number"/>)", R"("a":)");

    row("colour", R"(<a type="color">0xff8000</a>)", R"("a":"#ff8000")");
    row("colour in page notation", R"(<a type="color">#ff8000</a>)", R"("a":"#ff8000")");
    row("colour with an upper-case prefix", R"(<a type="color">0XFF8000</a>)", R"("a":"#FF8000")");
    row("several colours", R"(<a type="color">0x000000,0X111111,0x222222</a>)",
        R"("a":"#000000,#111111,#222222")");
    row("colour with a zero before the prefix", R"(<a type="color">00xx0XX</a>)", R"("a":"0#x#X")");
    row("colour is not escaped", R"(<a type="color">"\</a>)", R"("a":""\")");
    row("empty colour", R"(<a type="color"/>)", R"("a":"")");
    row("border", R"(<a type="border">1px 0xFF0000 0X00FF00</a>)", R"("a":"1px #FF0000 #00FF00")");
    row("border is not escaped", "<a type=\"border\">\"\n\\</a>", "\"a\":\"\"\n\\\"");

    row("bool true", R"(<a type="bool">true</a>)", R"("a":true)");
    row("bool false", R"(<a type="bool">false</a>)", R"("a":false)");
    row("bool TRUE", R"(<a type="bool">TRUE</a>)", R"("a":true)");
    row("bool FaLsE", R"(<a type="bool">FaLsE</a>)", R"("a":false)");
    row("bool Yes", R"(<a type="bool">Yes</a>)", R"("a":false)");
    row("bool 2", R"(<a type="bool">2</a>)", R"("a":true)");
    row("bool 0", R"(<a type="bool">0</a>)", R"("a":false)");
    row("bool 000", R"(<a type="bool">000</a>)", R"("a":false)");
    row("bool 001", R"(<a type="bool">001</a>)", R"("a":true)");
    row("bool 1x", R"(<a type="bool">1x</a>)", R"("a":true)");
    row("bool x1", R"(<a type="bool">x1</a>)", R"("a":false)");
    row("bool -1", R"(<a type="bool">-1</a>)", R"("a":false)");
    row("bool +1", R"(<a type="bool">+1</a>)", R"("a":false)");
    row("bool 0.5", R"(<a type="bool">0.5</a>)", R"("a":false)");
    row("bool empty", R"(<a type="bool"/>)", R"("a":false)");
    row("bool with a blank after it", R"(<a type="bool">true </a>)", R"("a":false)");
    row("bool with foreign digits", R"(<a type="bool">٣</a>)", R"("a":false)");
    row("bool past 64 bits", R"(<a type="bool">18446744073709551616</a>)", R"("a":true)");
    row("bool past 32 bits", R"(<a type="bool">4294967296</a>)", R"("a":true)");

    row("bool with a mark", "<a type=\"bool\">\xEF\xBB\xBFtrue</a>", R"("a":false)");
    row("bool with a mark and a digit",
        "<a type=\"bool\">\xEF\xBB\xBF"
        "1</a>",
        R"("a":false)");

    row("file that is not there", R"(<a type="file">images/none.png</a>)", R"("a":"images/none.png")");
    row("file with a mark", "<a type=\"file\">\xEF\xBB\xBFnone.png</a>", "\"a\":\"\xEF\xBB\xBFnone.png\"");
    row("file is not escaped", R"(<a type="file">no"ne\</a>)", R"("a":"no"ne\")");

    row("key is never escaped", R"(<b-c.d_1 type="text">x</b-c.d_1>)", R"("b-c.d_1":"x")");
    row("key in another script", R"(<größe type="number">1</größe>)", R"("größe":1)");
    row("key with a prefix", R"(<p:a type="number">1</p:a>)", R"("p:a":1)");
    row("other attributes count for nothing", R"(<a x="1" type="number" y="2">1</a>)", R"("a":1)");
    row("attribute in other letters is none", R"(<a Type="text"/>)", R"("a":{})");
}

void tst_PlayerConfiguration::leafValues()
{
    QFETCH(QByteArray, xml);
    QFETCH(QByteArray, expected);
    QCOMPARE(json(xml), expected);
}

void tst_PlayerConfiguration::containers_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *xml, const char *expected) {
        QTest::newRow(name) << QByteArray(xml) << QByteArray(expected);
    };
    row("info has no key", R"(<info><a type="number">1</a></info>)", R"({"a":1})");
    row("item has no key", R"(<item><a type="number">1</a></item>)", R"({"a":1})");
    row("empty info", R"(<info/>)", "{}");
    row("empty item", R"(<item></item>)", "{}");
    row("info with a type", R"(<info type="text"><a type="number">1</a></info>)", R"({"a":1})");
    row("item with a type", R"(<item type="number"><a type="number">1</a></item>)", R"({"a":1})");
    row("info with items is no list", R"(<info><item/><item/></info>)", "{{},{}}");
    row("item within an item", R"(<item><item><a type="number">1</a></item></item>)", R"({{"a":1}})");
    row("info within a container", R"(<a><info><b type="number">1</b></info></a>)", R"("a":{{"b":1}})");
    row("Info is an ordinary name", R"(<Info/>)", R"("Info":{})");
    row("container", R"(<a><b type="number">1</b><c type="text">x</c></a>)", R"("a":{"b":1,"c":"x"})");
    row("empty container", R"(<a/>)", R"("a":{})");
    row("blank container", "<a>\n  </a>", R"("a":{})");
    row("container of an unknown type", R"(<a type="list"><b type="number">1</b></a>)", R"("a":{"b":1})");
    row("container of a type in other letters", R"(<a type="Text"><b type="number">1</b></a>)",
        R"("a":{"b":1})");
    row("container with an empty type", R"(<a type=""><b type="number">1</b></a>)", R"("a":{"b":1})");
    row("repeated names all stay", R"(<a><b type="number">1</b><b type="number">2</b></a>)",
        R"("a":{"b":1,"b":2})");
    row("one item makes a list", R"(<a><item/></a>)", R"("a":[{}])");
    row("several items", R"(<a><item><b type="number">1</b></item><item><b type="number">2</b></item></a>)",
        R"("a":[{"b":1},{"b":2}])");
    row("items with others beside them", R"(<a><b type="number">1</b><item/><c type="text">x</c></a>)",
        R"("a":["b":1,{},"c":"x"])");
    row("list within a list", R"(<a><item><b><item/></b></item></a>)", R"("a":[{"b":[{}]}])");
    row("item further down makes no list", R"(<a><b><item/></b></a>)", R"("a":{"b":[{}]})");
    row("Item is no item", R"(<a><Item/></a>)", R"("a":{"Item":{}})");
    row("items win over a type", R"(<a type="text"><item><b type="number">1</b></item></a>)",
        R"("a":[{"b":1}])");
    row("items win over a number", R"(<a type="number"><item/><item/></a>)", R"("a":[{},{}])");
    row("comments count for nothing", R"(<a><!--x--><b type="number">1</b><!--y--><!--z--></a>)",
        R"("a":{"b":1})");
    row("instructions count for nothing", R"(<a><?x y?><b type="number">1</b><?z?></a>)", R"("a":{"b":1})");
    row("comments in a list count for nothing", R"(<a><!--x--><item/><!--y--><item/><!--z--></a>)",
        R"("a":[{},{}])");
    row("container with a comment alone", R"(<a><!--x--></a>)", R"("a":{})");
    row("blanks between elements count for nothing",
        "<a>\n <b type=\"number\">1</b>\r\n\t<c type=\"number\">2</c>\n</a>", R"("a":{"b":1,"c":2})");
}

void tst_PlayerConfiguration::containers()
{
    QFETCH(QByteArray, xml);
    QFETCH(QByteArray, expected);
    QCOMPARE(json(xml), expected);
}

void tst_PlayerConfiguration::blankTextBesideCdataBelongsToIt()
{
    QCOMPARE(json("<a type=\"text\"><![CDATA[x]]> </a>"), QByteArray("\"a\":\"x \""));
    QCOMPARE(json("<a type=\"text\"> <![CDATA[x]]></a>"), QByteArray("\"a\":\" x\""));
    QCOMPARE(json("<a type=\"text\"><![CDATA[x]]> <![CDATA[y]]></a>"), QByteArray("\"a\":\"x y\""));
}

void tst_PlayerConfiguration::blankTextBetweenCommentsInsideATextStays()
{
    QCOMPARE(json("<a type=\"text\">x<!--c--> <!--d-->y</a>"), QByteArray("\"a\":\"x y\""));
}

void tst_PlayerConfiguration::fileInTheWorkspaceGoesIntoTheRelativeFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("published") << QStringLiteral("files/plugin")
                               << QByteArray("\"a\":\"files/plugin/images/a.png\"");
    QTest::newRow("separator at the end")
        << QStringLiteral("files/plugin/") << QByteArray("\"a\":\"files/plugin/images/a.png\"");
    QTest::newRow("preview") << QStringLiteral("") << QByteArray("\"a\":\"images/a.png\"");
    QTest::newRow("nil") << QString() << QByteArray("\"a\":\"images/a.png\"");
    QTest::newRow("place marker") << QStringLiteral("%1") << QByteArray("\"a\":\"%1/images/a.png\"");
    QTest::newRow("other script") << QStringLiteral("página") << QByteArray("\"a\":\"página/images/a.png\"");
}

void tst_PlayerConfiguration::fileInTheWorkspaceGoesIntoTheRelativeFolder()
{
    QFETCH(QString, folder);
    QFETCH(QByteArray, expected);
    put(at("images/a.png"), "picture");
    QCOMPARE(json("<a type=\"file\">images/a.png</a>", folder), expected);
    QCOMPARE(json("<a type=\"file\">images/<!--c--><![CDATA[a.png]]></a>", folder), expected);
}

void tst_PlayerConfiguration::fileThatExistsAsItStandsGoesIntoTheRelativeFolder()
{
    QTemporaryDir elsewhere;
    const QString path = elsewhere.filePath(QStringLiteral("é.png"));
    put(path, "picture");
    const QByteArray xml = "<a type=\"file\">" + path.toUtf8() + "</a>";
    QCOMPARE(json(xml, QStringLiteral("files/plugin")), "\"a\":\"files/plugin" + path.toUtf8() + '"');
    QCOMPARE(json(xml), "\"a\":\"" + path.toUtf8() + '"');
    QCOMPARE(json("<a type=\"file\">images</a>", QStringLiteral("f")), QByteArray("\"a\":\"images\""));
    put(at("images/a.png"), "picture");
    QCOMPARE(json("<a type=\"file\">images</a>", QStringLiteral("f")), QByteArray("\"a\":\"f/images\""));
}

void tst_PlayerConfiguration::fileThatDoesNotExistStaysAsItIs()
{
    put(at("marked.png"), "picture of another name");
    QCOMPARE(json("<a type=\"file\">\xEF\xBB\xBFmarked.png</a>", QStringLiteral("files/plugin")),
             QByteArray("\"a\":\"\xEF\xBB\xBFmarked.png\""));
    QCOMPARE(json("<a type=\"file\">images/a.png</a>", QStringLiteral("files/plugin")),
             QByteArray("\"a\":\"images/a.png\""));
    QCOMPARE(json("<a type=\"file\">/none/a.png</a>", QStringLiteral("files/plugin")),
             QByteArray("\"a\":\"/none/a.png\""));
}

void tst_PlayerConfiguration::manyRandomDocumentsFollowTheRules()
{
    qsizetype written = 0;
    for (quint32 seed = 0; seed < 6000; ++seed) {
        RandomDocument random(seed);
        const Element root = random.element(5);
        const QByteArray xml = random.xml(root).toUtf8();
        const QByteArray actual = json(xml, QStringLiteral("files/plugin"));
        const QByteArray expected = expectedJson(root).toUtf8();
        if (actual != expected)
            QFAIL(QByteArray("seed " + QByteArray::number(seed) + "\n" + xml + "\ngives\n" + actual
                             + "\nand should give\n" + expected)
                      .constData());
        written += actual.size();
    }
    QVERIFY(written > 500'000);
}

void tst_PlayerConfiguration::writesTheWorkedExample()
{
    put(at("linklist.xml"), linkList);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + "var config=" + linkListScript + ';');
    QVERIFY(generate(QStringLiteral("files/plugin")));
    QCOMPARE(unscrambled(get(at("bookPlugin.js"))), QByteArray("var bookPlugin=") + linkListScript + ';');
}

void tst_PlayerConfiguration::configHasTheMarkAndBookPluginHasNone()
{
    put(at("linklist.xml"), "<info/>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + "var config={};");
    QVERIFY(generate(QStringLiteral("files/plugin")));
    const QByteArray published = get(at("bookPlugin.js"));
    QCOMPARE(published.size(), qsizetype(2 * strlen("var bookPlugin={};") + 9));
    for (const char byte : published)
        QVERIFY(isalnum(uchar(byte)) || byte == '_');
    QCOMPARE(unscrambled(published), QByteArray("var bookPlugin={};"));
}

void tst_PlayerConfiguration::previewLeavesThePublishedFileAlone()
{
    put(at("linklist.xml"), "<info/>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    put(at("bookPlugin.js"), "published");
    QVERIFY(generate());
    QCOMPARE(get(at("bookPlugin.js")), QByteArray("published"));
}

void tst_PlayerConfiguration::publishingLeavesThePreviewFileAlone()
{
    put(at("linklist.xml"), "<info/>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    QVERIFY(generate(QStringLiteral("files/plugin")));
    QVERIFY(!File::exists(at("config.js")));
    put(at("config.js"), "preview");
    QVERIFY(generate(QStringLiteral("files/plugin")));
    QCOMPARE(get(at("config.js")), QByteArray("preview"));
}

void tst_PlayerConfiguration::nilFolderMeansPreview()
{
    put(at("linklist.xml"), "<info/>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    QVERIFY(generate(QString()));
    QCOMPARE(get(at("config.js")), mark + "var config={};");
    QVERIFY(!File::exists(at("bookPlugin.js")));
}

void tst_PlayerConfiguration::publishedFileIsDifferentEveryTimeAndTellsTheSame()
{
    put(at("linklist.xml"), linkList);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QSet<QByteArray> files;
    for (int i = 0; i < 20; ++i) {
        QVERIFY(generate(QStringLiteral("files/plugin")));
        files << get(at("bookPlugin.js"));
        QCOMPARE(unscrambled(get(at("bookPlugin.js"))), QByteArray("var bookPlugin=") + linkListScript + ';');
    }
    QCOMPARE(files.size(), 20);
}

void tst_PlayerConfiguration::documentOnDiskIsNotChanged()
{
    const QByteArray document = QByteArray("<!-- mine -->\n") + linkList + "\n";
    put(at("linklist.xml"), document);
    put(at("settings.dat"), "10\r\n20\r\n30\r\n40\r\n25\r\n2\r\n");
    QVERIFY(generate());
    QVERIFY(generate(QStringLiteral("files/plugin")));
    QCOMPARE(get(at("linklist.xml")), document);
    QCOMPARE(get(at("settings.dat")), QByteArray("10\r\n20\r\n30\r\n40\r\n25\r\n2\r\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden).size(),
             4);
}

void tst_PlayerConfiguration::identifierNamesTheDocument()
{
    put(at("linklist.xml"), "<info/>");
    put(at("other.xml"), "<info><a type=\"number\">1</a></info>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    PluginSettingsInfo other = info();
    other.setIdentifier(QStringLiteral("other"));
    QVERIFY(other.generateJSConfig(QString()));
    QCOMPARE(get(at("config.js")), mark + "var config={\"a\":1};");
}

void tst_PlayerConfiguration::rootOfAnotherNameIsWrittenWithItsKey()
{
    put(at("linklist.xml"), "<root><opacity type=\"number\"/></root>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + "var config=\"root\":{\"opacity\":1.000000};");
}

void tst_PlayerConfiguration::whatIsNoDocumentIsToldWhileWriting_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *name, const QByteArray &xml) { QTest::newRow(name) << xml; };
    const auto nested
        = [](int levels) { return QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels); };
    row("ordinary", linkList);
    row("256 levels", nested(256));
    row("257 levels", nested(257));
    row("200,000 levels", nested(200'000));
    row("257 levels in a leaf", "<info><x type='text'>" + nested(255) + "</x></info>");
    row("256 levels in a leaf", "<info><x type='text'>" + nested(254) + "</x></info>");
    row("two attributes", "<info><a type='text' b='1'>x</a></info>");
    row("repeated attribute", "<info><a type='text' type='text'>x</a></info>");
    row("repeated attribute of an item", "<info><item a='1' a='1'/></info>");
    row("repeated attribute of the root", "<info a='1' a='1'/>");
    row("repeated attribute in a leaf", "<info><a type='text'>x<b c='1' c='2'/></a></info>");
    row("repeated attribute in an overridden leaf",
        "<info><opacity type='text'><b c='1' c='2'/></opacity></info>");
    row("less-than in an attribute", "<info><a type='<'>x</a></info>");
    row("less-than in another attribute", "<info><a b='<'>x</a></info>");
    row("less-than in an item's attribute", "<info><item b='<'/></info>");
    row("another attribute", "<info><a b='1'>x</a></info>");
    row("unknown type", "<info><a type='other'>x</a></info>");
    row("names beyond ascii", "<info><caf\xC3\xA9 type='text'>x</caf\xC3\xA9></info>");
    row("name that is none", "<info><a\xC3\x97 type='text'>x</a\xC3\x97></info>");
    row("attribute name that is none", "<info><a \xC3\x97='text'>x</a></info>");
    row("name that is none in a leaf", "<info><a type='text'><b\xC3\x97/></a></info>");
    row("comments and instructions", "<info><!--c--><item/><?item p?></info>");
    row("instruction alone", "<info><x><?item p?></x></info>");
    row("broken", "<info>");
}

void tst_PlayerConfiguration::whatIsNoDocumentIsToldWhileWriting()
{
    QFETCH(QByteArray, xml);
    const Xml::ParseResult parsed = Xml::parse(xml);
    const std::optional<QByteArray> text = info().jsonFromDocument(xml, QString());
    QCOMPARE(text.has_value(), bool(parsed));
    if (parsed)
        QCOMPARE(*text, info().jsonFromXml(parsed.document->document_element(), QString()));
    put(at("linklist.xml"), xml);
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(generate(), bool(parsed));
        QCOMPARE(File::exists(at("config.js")), bool(parsed));
    }
}

void tst_PlayerConfiguration::configurationFollowsTheDocument()
{
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    for (int i = 0; i < 20; ++i) {
        const QByteArray number = QByteArray::number(i % 10);
        put(at("linklist.xml"), "<info><a type=\"number\">" + number + "</a></info>");
        QVERIFY(generate());
        QCOMPARE(get(at("config.js")), mark + "var config={\"a\":" + number + "};");
    }
    QVERIFY(QFile::remove(at("linklist.xml")));
    QVERIFY(!generate());
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("linklist.xml")));
    QVERIFY(!generate());
}

void tst_PlayerConfiguration::configurationOfTheKeptDocumentIsThatOfItsFile()
{
    put(at("linklist.xml"), linkList);
    for (int i = 0; i < 20; ++i) {
        put(at("settings.dat"), QByteArray::number(i) + "\n20\n30\n40\n" + QByteArray::number(5 * i) + "\n2");
        QVERIFY(generate());
        const QByteArray kept = get(at("config.js"));
        LastDocument::forget();
        QVERIFY(generate());
        QCOMPARE(kept, get(at("config.js")));
    }
    // Nothing of the rectangle went into the document itself.
    const Xml::Draft draft = LastDocument::take(linkList);
    QCOMPARE(Xml::serialize(draft.parsed.document->document_element()),
             Xml::serialize(Xml::parse(linkList).document->document_element()));
}

void tst_PlayerConfiguration::rectangle_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray defaults = bareScript("1.000000", "1", "10.0%", "26.0%", "30.0%", "48.0%");
    const QByteArray example = bareScript("0.750000", "2", "10.0%", "20.0%", "60.0%", "40.0%");
    QTest::newRow("ordinary") << QByteArray("10.0\n20.0\n30.0\n40.0\n25.0\n2") << example;
    QTest::newRow("Windows line ends") << QByteArray("10\r\n20\r\n30\r\n40\r\n25\r\n2\r\n") << example;
    QTest::newRow("carriage return within a number") << QByteArray("1\r0\n20\n30\n40\n25\n2\r") << example;
    QTest::newRow("byte-order mark") << mark + "10\n20\n30\n40\n25\n2" << example;
    QTest::newRow("lines past the sixth") << QByteArray("10\n20\n30\n40\n25\n2\n77\nabc") << example;
    QTest::newRow("text after the numbers") << QByteArray("10abc\n20 %\n30,5\n40x\n25%\n2.9") << example;
    QTest::newRow("blanks and signs") << QByteArray(" +10\n 20\n\t30\n4e1\n2.5e1\n +2") << example;
    QTest::newRow("missing numbers are 0") << QByteArray("abc\n\nnan\ninf\n0x10\n")
                                           << bareScript("1.000000", "0", "0.0%", "0.0%", "100.0%", "100.0%");
    QTest::newRow("five lines") << QByteArray("1\n2\n3\n4\n5") << defaults;
    QTest::newRow("five lines and a line feed are six parts")
        << QByteArray("1\n2\n3\n4\n5\n") << bareScript("0.950000", "0", "1.0%", "2.0%", "96.0%", "94.0%");
    QTest::newRow("empty") << QByteArray("") << defaults;
    QTest::newRow("carriage returns alone make one line") << QByteArray("1\r2\r3\r4\r5\r6") << defaults;
    QTest::newRow("transparency 150") << QByteArray("0\n0\n0\n0\n150\n0")
                                      << bareScript("0.000000", "0", "0.0%", "0.0%", "100.0%", "100.0%");
    QTest::newRow("transparency 100") << QByteArray("0\n0\n0\n0\n100\n0")
                                      << bareScript("0.000000", "0", "0.0%", "0.0%", "100.0%", "100.0%");
    QTest::newRow("transparency below 0") << QByteArray("0\n0\n0\n0\n-50\n0")
                                          << bareScript("1.500000", "0", "0.0%", "0.0%", "100.0%", "100.0%");
    QTest::newRow("margins that overlap")
        << QByteArray("70\n80\n90\n60\n0\n0")
        << bareScript("1.000000", "0", "70.0%", "80.0%", "-60.0%", "-40.0%");
    QTest::newRow("negative margins") << QByteArray("-2.5\n-0.04\n0\n0\n0\n0")
                                      << bareScript("1.000000", "0", "-2.5%", "-0.0%", "102.5%", "100.0%");
    QTest::newRow("halves go to the even digit")
        << QByteArray("0.25\n37.25\n0\n0\n0\n0")
        << bareScript("1.000000", "0", "0.2%", "37.2%", "99.8%", "62.8%");
    QTest::newRow("single precision")
        << QByteArray("16777217\n0\n0\n0\n-16777217\n0")
        << bareScript("167773.160000", "0", "16777216.0%", "0.0%", "-16777116.0%", "100.0%");
    QTest::newRow("layer of 64 bits")
        << QByteArray("0\n0\n0\n0\n0\n9223372036854775807")
        << bareScript("1.000000", "9223372036854775807", "0.0%", "0.0%", "100.0%", "100.0%");
    QTest::newRow("layer past 64 bits")
        << QByteArray("0\n0\n0\n0\n0\n-99999999999999999999")
        << bareScript("1.000000", "-9223372036854775808", "0.0%", "0.0%", "100.0%", "100.0%");
}

void tst_PlayerConfiguration::rectangle()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, expected);
    put(at("linklist.xml"), bare);
    put(at("settings.dat"), file);
    put(at("defaultsettings.dat"), "1\n1\n1\n1\n1\n1");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + expected);
    put(at("defaultsettings.dat"), file);
    QVERIFY(QFile::remove(at("settings.dat")));
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + expected);
}

void tst_PlayerConfiguration::randomRectanglesArePrintedAsCPrintsThem()
{
    QRandomGenerator random(7);
    put(at("linklist.xml"), bare);
    for (int i = 0; i < 300; ++i) {
        std::array<double, 5> value;
        QByteArray file;
        for (double &number : value) {
            const double drawn = (random.bounded(40'000) - 10'000) / 80.0;
            number = double(float(drawn));
            file += QByteArray::number(drawn, 'f', 6) + '\n';
        }
        put(at("settings.dat"), file + '3');
        QVERIFY(generate());
        const double opacity = 1 - qMin(1.0, value[4] / 100);
        QCOMPARE(get(at("config.js")),
                 mark
                     + bareScript(printed("%f", opacity), "3", printed("%.1f%%", value[0]),
                                  printed("%.1f%%", value[1]), printed("%.1f%%", 100 - value[2] - value[0]),
                                  printed("%.1f%%", 100 - value[1] - value[3])));
    }
}

void tst_PlayerConfiguration::defaultSettingsServeWhenThereAreNoSettings()
{
    put(at("linklist.xml"), bare);
    put(at("defaultsettings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + bareScript("0.750000", "2", "10.0%", "20.0%", "60.0%", "40.0%"));
}

void tst_PlayerConfiguration::settingsInASubfolderDoNotCount()
{
    put(at("linklist.xml"), bare);
    put(at("sub/settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(!generate());
    put(at("defaultsettings.dat"), "1\n2\n3\n4\n5\n6");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + bareScript("0.950000", "6", "1.0%", "2.0%", "96.0%", "94.0%"));
}

void tst_PlayerConfiguration::settingsThatAreNotUtf8KeepTheGeneratorsDefaults()
{
    put(at("linklist.xml"), bare);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2\n\xFF");
    put(at("defaultsettings.dat"), "1\n2\n3\n4\n5\n6");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + bareScript("1.000000", "1", "10.0%", "26.0%", "30.0%", "48.0%"));
}

void tst_PlayerConfiguration::everyOpacityLayoutAndPropertiesIsFilledIn()
{
    put(at("linklist.xml"),
        "<info><opacity type=\"number\">9</opacity><layout type=\"number\">9</layout>"
        "<properties><basic><left type=\"text\">9</left></basic></properties>"
        "<opacity type=\"number\"/><layout type=\"number\"><!--c-->9</layout>"
        "<properties><basic><left type=\"text\"/></basic></properties></info>");
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(
        get(at("config.js")),
        mark
            + "var config={\"opacity\":0.750000,\"layout\":2,\"properties\":{\"basic\":{\"left\":\"10.0%\"}},"
              "\"opacity\":0.750000,\"layout\":2,\"properties\":{\"basic\":{\"left\":\"10.0%\"}}};");
}

void tst_PlayerConfiguration::lastBasicOfEachPropertiesIsFilledIn()
{
    put(at("linklist.xml"),
        "<info><properties><basic><top type=\"text\">a</top></basic><basic><top type=\"text\">b</top></basic>"
        "<extended/></properties></info>");
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")),
             mark
                 + "var config={\"properties\":{\"basic\":{\"top\":\"a\"},\"basic\":{\"top\":\"20.0%\"},"
                   "\"extended\":{}}};");
}

void tst_PlayerConfiguration::onlyTheRootsOwnChildrenAreFilledIn()
{
    put(at("linklist.xml"),
        "<info><a><opacity type=\"number\">9</opacity></a><basic><left type=\"text\">l</left></basic>"
        "<properties><opacity type=\"number\">8</opacity><extended><basic><left "
        "type=\"text\">m</left></basic>"
        "</extended><basic><b><left type=\"text\">n</left></b></basic></properties></info>");
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(
        get(at("config.js")),
        mark
            + "var config={\"a\":{\"opacity\":9},\"basic\":{\"left\":\"l\"},\"properties\":{\"opacity\":8,"
              "\"extended\":{\"basic\":{\"left\":\"m\"}},\"basic\":{\"b\":{\"left\":\"n\"}}}};");
}

void tst_PlayerConfiguration::otherChildrenOfBasicStay()
{
    put(at("linklist.xml"),
        "<info><properties><basic><right type=\"text\">r</right><left type=\"text\">0xl</left>"
        "<bottom type=\"number\">1</bottom></basic></properties></info>");
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(
        get(at("config.js")),
        mark + "var config={\"properties\":{\"basic\":{\"right\":\"r\",\"left\":\"10.0%\",\"bottom\":1}}};");
}

void tst_PlayerConfiguration::withoutADocumentNothingIsWritten_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("not closed") << QByteArray("<info><a></info>");
    QTest::newRow("two roots") << QByteArray("<info/><info/>");
    QTest::newRow("text outside") << QByteArray("<info/>x");
    QTest::newRow("not UTF-8") << QByteArray("<info><a type=\"text\">\xFF</a></info>");
    QTest::newRow("attribute twice") << QByteArray("<info type=\"text\" type=\"text\"/>");
    QTest::newRow("nested too deeply") << QByteArray("<info>") + QByteArray("<a>").repeated(300)
            + QByteArray("</a>").repeated(300) + "</info>";
}

void tst_PlayerConfiguration::withoutADocumentNothingIsWritten()
{
    QFETCH(QByteArray, document);
    if (!document.isNull())
        put(at("linklist.xml"), document);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    put(at("config.js"), "old");
    const auto before = Fixtures::tree(m_folder->path());
    QVERIFY(!generate());
    QVERIFY(!generate(QStringLiteral("files/plugin")));
    QCOMPARE(Fixtures::tree(m_folder->path()), before);
}

void tst_PlayerConfiguration::withoutARectangleFileNothingIsWritten()
{
    put(at("linklist.xml"), linkList);
    put(at("config.js"), "old");
    QVERIFY(!generate());
    QVERIFY(!generate(QStringLiteral("files/plugin")));
    QCOMPARE(get(at("config.js")), QByteArray("old"));
    QVERIFY(!File::exists(at("bookPlugin.js")));
}

void tst_PlayerConfiguration::refusedWorkspaceWritesNothing_data()
{
    QTest::addColumn<QString>("workSpace");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("relative") << QStringLiteral(".");
}

void tst_PlayerConfiguration::refusedWorkspaceWritesNothing()
{
    QFETCH(QString, workSpace);
    put(at("linklist.xml"), linkList);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    const QString home = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    PluginSettingsInfo info;
    info.setWorkSpace(workSpace);
    const bool preview = info.generateJSConfig(QString());
    const bool published = info.generateJSConfig(QStringLiteral("files/plugin"));
    QVERIFY(QDir::setCurrent(home));
    QVERIFY(!preview);
    QVERIFY(!published);
    QCOMPARE(File::subpaths(m_folder->path()).size(), 2);
}

void tst_PlayerConfiguration::brokenEscapesBecomeText_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QByteArray>("written"); // into the files
    QTest::addColumn<QByteArray>("escaped"); // by replaceStringForJS
    const auto row = [](const char *name, const char *xml, const char *inFiles, const char *escaped) {
        QTest::newRow(name) << QByteArray(xml) << QByteArray(inFiles) << QByteArray(escaped);
    };
    row("folder", R"(C:\users)", R"(C:\u005cusers)", R"(C:\users)");
    row("folder in upper case", R"(C:\Users)", R"(C:\u005cUsers)", R"(C:\users)");
    row("whole escape", R"(\u00e9\U00E9\uD83D\uDE00)", R"(\u00e9\u00E9\uD83D\uDE00)",
        R"(\u00e9\u00E9\uD83D\uDE00)");
    row("whole escape before digits and letters", R"(\u00e9a\u00e9u)", R"(\u00e9a\u00e9u)",
        R"(\u00e9a\u00e9u)");
    row("two backslashes", R"(\\users)", R"(\\\u005cusers)", R"(\\\users)");
    row("three backslashes", R"(\\\users)", R"(\\\\\u005cusers)", R"(\\\\\users)");
    row("two backslashes before a whole escape", R"(\\u00e9)", R"(\\\u00e9)", R"(\\\u00e9)");
    row("one after the other", R"(\u\U\u)", R"(\u005cu\u005cU\u005cu)", R"(\u\u\u)");
    row("before a whole escape", R"(\u\u00e9)", R"(\u005cu\u00e9)", R"(\u\u00e9)");
    row("no digit", R"(\u)", R"(\u005cu)", R"(\u)");
    row("three digits", R"(\u00e)", R"(\u005cu00e)", R"(\u00e)");
    row("three digits and a letter", R"(\u00eg)", R"(\u005cu00eg)", R"(\u00eg)");
    row("three digits and a blank", R"(\u00e 9)", R"(\u005cu00e 9)", R"(\u00e 9)");
    row("digits of another script", R"(\u００e９)", R"(\u005cu００e９)", R"(\u００e９)");
    row("digits in braces", R"(\u{1F600})", R"(\u005cu{1F600})", R"(\u{1F600})");
    row("line feed among the digits", "\\u00\ne9", R"(\u005cu00<br/>e9)", R"(\u00<br/>e9)");
    row("entity among the digits", R"(\u00&amp;lt;e9)", R"(\u005cu00<e9)", R"(\u00<e9)");
    row("quote behind it", R"(\u")", R"(\u005cu\")", R"(\u\")");
    row("quote and backslash before it", R"("\"\u)", R"(\"\\\"\u005cu)", R"(\"\\\"\u)");
    row("protection", R"(${Unicode})", R"(\u0024{Unicode})", R"(\u)");
    row("protection with digits", R"(${Unicode}00e9)", R"(\u00e9)", R"(\u00e9)");
    row("protection with three digits", R"(${Unicode}00e!)", R"(\u0024{Unicode}00e!)", R"(\u00e!)");
    row("backslash before a protection", R"(\${Unicode})", R"(\\\u0024{Unicode})", R"(\\\u)");
    row("backslash before a protection with digits", R"(\${Unicode}00e9)", R"(\\\u00e9)", R"(\\\u00e9)");
    row("dollar sign before a protection", R"($${Unicode})", R"($\u0024{Unicode})", R"($\u)");
    row("protection before an escape", R"(${Unicode}\u00e9)", R"(\u0024{Unicode}\u00e9)", R"(\u\u00e9)");
    row("escape before a protection with digits", R"(\u${Unicode}0041)", R"(\u005cu\u0041)", R"(\u\u0041)");
    row("protection in other letters", R"(${unicode} ${Unicode)", R"(${unicode} ${Unicode)",
        R"(${unicode} ${Unicode)");
    row("whole escape in pieces", R"(\<!--c-->u00<![CDATA[e]]>&#57;)", R"(\u00e9)", R"(\u00e9)");
    row("broken escape in pieces", R"(&#92;<![CDATA[u]]>sers)", R"(\u005cusers)", R"(\users)");
    row("backslashes alone", R"(\n\x\)", R"(\\n\\x\\)", R"(\\n\\x\\)");
}

void tst_PlayerConfiguration::brokenEscapesBecomeText()
{
    QFETCH(QByteArray, xml);
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, escaped);
    const QByteArray document = "<info><a type=\"text\">" + xml + "</a></info>";
    put(at("linklist.xml"), document);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    const QByteArray object = "{\"a\":\"" + written + "\"}";
    for (int i = 0; i < 2; ++i) { // read afresh, and kept
        QVERIFY(generate());
        QCOMPARE(get(at("config.js")), mark + "var config=" + object + ';');
        QVERIFY(generate(QStringLiteral("files/plugin")));
        QCOMPARE(unscrambled(get(at("bookPlugin.js"))), "var bookPlugin=" + object + ';');
    }
    QCOMPARE(get(at("linklist.xml")), document);
    // The object alone has the escapes as they stand.
    QCOMPARE(json(document), "{\"a\":\"" + escaped + "\"}");
    QCOMPARE(info().jsonFromDocument(document, QString()), "{\"a\":\"" + escaped + "\"}");
}

void tst_PlayerConfiguration::brokenEscapesOfOtherTypesStay()
{
    put(at("linklist.xml"),
        R"(<info><a type="number">\u</a><b type="color">\u${Unicode}</b><c type="border">\U</c>)"
        R"(<d type="file">\users</d></info>)");
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QCOMPARE(get(at("config.js")), mark + R"(var config={"a":\u,"b":"\u${Unicode}","c":"\U","d":"\users"};)");
}

void tst_PlayerConfiguration::scriptEngineReadsTheWorkedExample()
{
    put(at("linklist.xml"), linkList);
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QByteArray problem;
    const QJsonDocument read = evaluated(at("config.js"), &problem);
    QVERIFY2(problem.isEmpty(), problem.constData());
    QCOMPARE(read, QJsonDocument::fromJson(linkListScript));
    QCOMPARE(read[QLatin1String("properties")][QLatin1String("basic")][QLatin1String("left")].toString(),
             QStringLiteral("10.0%"));
}

void tst_PlayerConfiguration::scriptEngineReadsHostileTextsAsTheyAre()
{
    const QStringList texts{QStringLiteral("say \"hi\" it's"),
                            QStringLiteral("\\ \\n \\\" \\\\ \\x \\"),
                            QStringLiteral("</script><script>alert(1)</script>"),
                            QStringLiteral("a & b && c"),
                            QStringLiteral("\u2028 \u2029 \u00a0 \u200f"),
                            QStringLiteral("שלום עולם مرحبا"),
                            QStringLiteral("😀👩‍👩‍👧 \t tab"),
                            QStringLiteral("${name} `tick` %1 %s /* */ // ;"),
                            QStringLiteral("  blanks  "),
                            QStringLiteral(" "),
                            QString(100'000, u'"')};
    pugi::xml_document document;
    pugi::xml_node list = document.append_child("info").append_child("list");
    QJsonArray expected;
    for (const QString &text : texts) {
        pugi::xml_node leaf = list.append_child("item").append_child("title");
        leaf.append_attribute("type") = "text";
        leaf.text() = text.toUtf8().constData();
        expected << QJsonObject{{QStringLiteral("title"), text}};
    }
    put(at("linklist.xml"), Xml::serialize(document.document_element()));
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    QVERIFY(generate());
    QByteArray problem;
    const QJsonDocument read = evaluated(at("config.js"), &problem);
    QVERIFY2(problem.isEmpty(), problem.constData());
    QCOMPARE(read[QLatin1String("list")].toArray(), expected);
}

void tst_PlayerConfiguration::scriptEngineReadsRandomTextsAsTheyWereTyped()
{
    const QStringList pieces{
        QStringLiteral("\\"),         QStringLiteral("\\"),     QStringLiteral("\\u"),
        QStringLiteral("\\U"),        QStringLiteral("u"),      QStringLiteral("U"),
        QStringLiteral("0"),          QStringLiteral("00"),     QStringLiteral("4"),
        QStringLiteral("e9"),         QStringLiteral("D8"),     QStringLiteral("fF"),
        QStringLiteral("g"),          QStringLiteral("\""),     QStringLiteral("'"),
        QStringLiteral("${Unicode}"), QStringLiteral("$"),      QStringLiteral("{"),
        QStringLiteral("Unicode}"),   QStringLiteral("}"),      QStringLiteral("\n"),
        QStringLiteral("\r\n"),       QStringLiteral("&lt;"),   QStringLiteral("&gt;"),
        QStringLiteral("&amp;"),      QStringLiteral("&"),      QStringLiteral("</script>"),
        QStringLiteral("<!--"),       QStringLiteral("\u2028"), QStringLiteral("\uFEFF"),
        QStringLiteral("😀"),          QStringLiteral("日"),     QStringLiteral("users"),
        QStringLiteral(" "),          QStringLiteral("\t"),     QStringLiteral("`")};
    constexpr quint32 seed = 45;
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const auto text = [&pieces, &random] {
        QString result;
        for (int i = random.bounded(12); i > 0; --i)
            result += pieces[random.bounded(int(pieces.size()))];
        return result;
    };
    put(at("settings.dat"), "10\n20\n30\n40\n25\n2");
    for (int round = 0; round < 4; ++round) {
        LinkListSettings settings;
        settings.titleContent = text();
        settings.titleFontSize = settings.bodyFontSize = QStringLiteral("12");
        for (int i = 0; i < 1000; ++i)
            settings.items.append({text(), text()});
        QCOMPARE(LinkListDocument::save(settings, at("linklist.xml"),
                                        QStringLiteral(LINKLIST_SOURCE_DIR "/Resources/data/linklist.xml")),
                 LinkListDocument::SaveResult::Saved);
        const QByteArray document = get(at("linklist.xml"));
        QVERIFY(generate());
        QVERIFY(generate(QStringLiteral("files/plugin")));
        QCOMPARE(get(at("linklist.xml")), document);

        for (const char *file : {"config.js", "bookPlugin.js"}) {
            QByteArray problem;
            const QJsonDocument read = evaluated(at(file), &problem);
            QVERIFY2(problem.isEmpty(), problem.constData());
            const QJsonValue extended = read[QLatin1String("properties")][QLatin1String("extended")];
            QCOMPARE(extended[QLatin1String("title")][QLatin1String("content")].toString(),
                     asRead(*settings.titleContent));
            const QJsonArray items = extended[QLatin1String("body")][QLatin1String("content")].toArray();
            QCOMPARE(items.size(), settings.items.size());
            for (qsizetype i = 0; i < items.size(); ++i) {
                QCOMPARE(items[i][QLatin1String("title")].toString(), asRead(settings.items[i].title));
                QCOMPARE(items[i][QLatin1String("link")].toString(), asRead(settings.items[i].link));
            }
        }
        // A book's page reads it as data, which has no tabs in texts.
        const QByteArray object
            = get(at("config.js")).mid(mark.size() + qsizetype(strlen("var config="))).chopped(1);
        QJsonParseError error;
        QJsonDocument::fromJson(QByteArray(object).replace('\t', ' '), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
    }
}

void tst_PlayerConfiguration::scriptEngineReadsThePublishedFileLikeThePreview()
{
    put(at("linklist.xml"), linkList);
    put(at("settings.dat"), "12.5\n0\n37.25\n3\n33.3\n-1");
    QVERIFY(generate());
    QVERIFY(generate(QStringLiteral("files/plugin")));
    QByteArray problem;
    const QJsonDocument preview = evaluated(at("config.js"), &problem);
    const QJsonDocument published = evaluated(at("bookPlugin.js"), &problem);
    QVERIFY2(problem.isEmpty(), problem.constData());
    QVERIFY(!preview.isEmpty());
    QCOMPARE(published, preview);
    QCOMPARE(unscrambled(get(at("bookPlugin.js"))).mid(qsizetype(strlen("var bookPlugin"))),
             get(at("config.js")).mid(mark.size() + qsizetype(strlen("var config"))));
}

void tst_PlayerConfiguration::tenThousandLinksAreGeneratedWhole()
{
    QByteArray xml = "<info><content>";
    QByteArray expected = "var config={\"content\":[";
    for (int i = 0; i < 10'000; ++i) {
        const QByteArray number = QByteArray::number(i);
        xml += "<item><link type=\"text\">http://a/" + number + "</link><title type=\"text\">t" + number
            + "\n</title></item>";
        expected += QByteArray(i ? "," : "") + "{\"link\":\"http://a/" + number + "\",\"title\":\"t" + number
            + "<br/>\"}";
    }
    put(at("linklist.xml"), xml + "</content></info>");
    put(at("settings.dat"), "0\n0\n0\n0\n0\n0");
    QVERIFY(generate());
    QVERIFY(get(at("config.js")) == mark + expected + "]};");
}

LINKLIST_TEST_MAIN(tst_PlayerConfiguration)
#include "tst_PlayerConfiguration.moc"
