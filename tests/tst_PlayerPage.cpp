#include "Classes/Delegate/PluginSettingsInfo.h"
#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QWebEngineView>
#include <cmath>

// The player's page in the embedded view, as the settings window shows it: what it draws of a configuration,
// what it says about a damaged one, and what other people's texts cannot do on it. tests/js/page.test.mjs
// asks a browser the same.

using Fixtures::get;
using Fixtures::put;

namespace
{

constexpr int loadTimeout = 20'000;

const QString unconfigured = QStringLiteral("There is no configuration to show yet.");
const QString damaged = QStringLiteral("The link list’s configuration is damaged.");
const QString incomplete = QStringLiteral("Part of the configuration is damaged or missing.");
const QString noRoom = QStringLiteral("The margins leave no room for the box.");

QByteArray source(const char *path)
{
    return get(QStringLiteral(LINKLIST_SOURCE_DIR "/") + QString::fromUtf8(path));
}

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

// A configuration with that title, box and items.
QByteArray script(const QJsonValue &title, const QJsonArray &items, const QByteArray &basic,
                  double opacity = 1, int layer = 1)
{
    const QJsonObject extended{{QStringLiteral("title"), title},
                               {QStringLiteral("body"), QJsonObject{{QStringLiteral("content"), items}}}};
    const QJsonObject config{
        {QStringLiteral("opacity"), opacity},
        {QStringLiteral("layout"), layer},
        {QStringLiteral("properties"),
         QJsonObject{{QStringLiteral("basic"), object(basic)}, {QStringLiteral("extended"), extended}}}};
    return "var config=" + QJsonDocument(config).toJson(QJsonDocument::Compact) + ';';
}

const QByteArray anyPlace = R"({"left":"10.0%","top":"10.0%","width":"40.0%","height":"50.0%"})";

QJsonObject titled(const QString &content)
{
    return {{QStringLiteral("content"), content}};
}

QJsonObject item(const QString &title, const QString &link)
{
    return {{QStringLiteral("title"), title}, {QStringLiteral("link"), link}};
}

} // namespace

class tst_PlayerPage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void shippedPageShowsTheShippedConfiguration();
    void showsWhatTheGeneratorWrote();
    void pictureHasTheBoxAtItsPlace_data();
    void pictureHasTheBoxAtItsPlace();
    void boxWithoutRoomIsToldInOneLine();
    void hostileTextsStayTextAndReachNoNetwork();
    void scriptReachesNeitherNetworkNorFilesOutside();
    void backslashUWithoutDigitsIsShownAsTyped();
    void numberThatIsNoneIsToldInOneLine();
    void damagedConfigurationIsToldInOneLine_data();
    void damagedConfigurationIsToldInOneLine();
    void missingConfigurationIsToldInOneLine();
    void cutOffConfigurationIsToldInOneLine();
    void rightToLeftTitlesAlignAndOverridesEndWithTheirTitle();
    void longTextsWrapAndScrollInsideTheBox();
    void tenThousandLinksAreShown();
    void keyboardReachesBoxAndLinks();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    // Puts that text into config.js and loads the page; false when the load did not end well.
    bool show(const QByteArray &configuration);
    bool load();
    QVariant evaluate(const QByteArray &expression) const;
    QJsonObject facts() const;
    QImage grab();
    QWebEngineView *engineView() const { return m_view->findChild<QWebEngineView *>(); }

    std::unique_ptr<QTemporaryDir> m_folder; // the workspace is a folder in it
    std::unique_ptr<WebView> m_view;
    int m_marks = 0;
};

void tst_PlayerPage::init()
{
    TestCase::init();
    m_view.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    PluginSettingsInfo info;
    info.setWorkSpace(at("workspace"));
    info.setBundlePath(QStringLiteral(LINKLIST_BUNDLE_DIR));
    QVERIFY(info.resetWorkspace());
    m_view = std::make_unique<WebView>();
    m_view->resize(640, 480);
    m_view->show();
}

bool tst_PlayerPage::show(const QByteArray &configuration)
{
    put(at("workspace/config.js"), configuration);
    return load();
}

bool tst_PlayerPage::load()
{
    QSignalSpy finished(m_view.get(), &WebView::loadFinished);
    m_view->loadPage(QUrl::fromLocalFile(at("workspace/index.html")));
    return (!finished.isEmpty() || finished.wait(loadTimeout)) && finished.first().first().toBool();
}

QVariant tst_PlayerPage::evaluate(const QByteArray &expression) const
{
    auto answer = std::make_shared<std::optional<QVariant>>();
    engineView()->page()->runJavaScript(QString::fromUtf8(expression),
                                        [answer](const QVariant &value) { *answer = value; });
    return QTest::qWaitFor([&] { return answer->has_value(); }, loadTimeout) ? **answer : QVariant();
}

QJsonObject tst_PlayerPage::facts() const
{
    return QJsonObject::fromVariantMap(evaluate(source("tests/js/pageFacts.js")).toMap());
}

// The picture that shows the page as it now is. Pictures come in order but some time after the page was
// painted: the one to wait for has a mark in its corner, in a colour of its own, which is then painted over.
QImage tst_PlayerPage::grab()
{
    const QColor color(0, 255, ++m_marks);
    evaluate("mark = document.body.appendChild(document.createElement('i')); mark.style = 'position: fixed;"
             "right: 0; bottom: 0; width: 4px; height: 4px; z-index: 9; background: "
             + color.name().toUtf8() + "'");
    QImage image;
    (void)QTest::qWaitFor(
        [&] {
            image = m_view->grab().toImage();
            return image.pixelColor(image.width() - 2, image.height() - 2) == color;
        },
        loadTimeout);
    evaluate("mark.remove()");
    QPainter(&image).fillRect(image.width() - 4, image.height() - 4, 4, 4, Qt::black);
    return image;
}

void tst_PlayerPage::shippedPageShowsTheShippedConfiguration()
{
    QVERIFY(load());
    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("notice")].toString(), QString());
    QCOMPARE(seen[QLatin1String("heading")].toString(), QStringLiteral("Further reading"));
    QCOMPARE(seen[QLatin1String("items")].toArray().size(), 3);
    QCOMPARE(seen[QLatin1String("left")].toDouble(), 10.0);
    QCOMPARE(seen[QLatin1String("height")].toDouble(), 48.0);
    // The style sheets are let through by the page's own content policy.
    QCOMPARE(evaluate("getComputedStyle(box).position").toString(), QStringLiteral("absolute"));
    QCOMPARE(evaluate("getComputedStyle(document.getElementById('page')).position").toString(),
             QStringLiteral("fixed"));
}

void tst_PlayerPage::showsWhatTheGeneratorWrote()
{
    put(at("workspace/linklist.xml"),
        "<info><opacity type=\"number\">0</opacity><layout type=\"number\">0</layout><properties><basic>"
        "<left type=\"text\"/><top type=\"text\"/><width type=\"text\"/><height type=\"text\"/></basic>"
        "<extended><title><content type=\"text\">a &amp; \"b\"\nc</content><fontSize "
        "type=\"number\">20</fontSize>"
        "<color type=\"color\">0xFF0000</color></title><body><fontSize type=\"number\">10</fontSize>"
        "<color type=\"color\">0x0000FF</color><content><item><link type=\"text\">page2.html</link>"
        "<title type=\"text\">C:\\new &lt;b&gt;</title></item></content></body></extended></properties></"
        "info>");
    put(at("workspace/settings.dat"), "10\n20\n30\n40\n25\n0");
    PluginSettingsInfo info;
    info.setWorkSpace(at("workspace"));
    info.generateJSConfig(QString());
    QVERIFY(load());
    QJsonObject seen = facts();
    seen.remove(QStringLiteral("noticeLines"));
    const QJsonObject expected
        = object("{\"notice\":\"\",\"isBoxShown\":true,\"left\":10,\"top\":20,\"width\":60,\"height\":40,"
                 "\"opacity\":0.75,\"isAbove\":false,\"heading\":\"a & \\\"b\\\"\\nc\",\"headingPoints\":20,"
                 "\"headingColor\":\"rgb(255, 0, 0)\",\"bodyPoints\":10,\"bodyColor\":\"rgb(0, 0, 255)\","
                 "\"items\":[{\"text\":\"C:\\\\new <b>\",\"href\":\"page2.html\",\"direction\":\"ltr\"}],"
                 "\"strangers\":[],\"isScriptRun\":false}");
    QCOMPARE(seen, expected);
}

void tst_PlayerPage::pictureHasTheBoxAtItsPlace_data()
{
    QTest::addColumn<double>("opacity");
    QTest::addColumn<int>("layer");
    QTest::newRow("above") << 1.0 << 1;
    QTest::newRow("below") << 1.0 << 0;
    QTest::newRow("half transparent") << 0.5 << 1;
    QTest::newRow("invisible") << 0.0 << 1;
}

void tst_PlayerPage::pictureHasTheBoxAtItsPlace()
{
    QFETCH(double, opacity);
    QFETCH(int, layer);
    // A heading of blocks paints the whole box.
    const QJsonObject blocks{{QStringLiteral("content"), QString(6000, QChar(0x2588))},
                             {QStringLiteral("color"), QStringLiteral("#FF0000")},
                             {QStringLiteral("fontSize"), 12}};
    QVERIFY(show(
        script(blocks, {}, R"({"left":"30%","top":"20%","width":"45%","height":"35%"})", opacity, layer)));
    const QImage image = grab();
    QCOMPARE(image.size(), m_view->size());

    // Red over the sheet's near white: the other channels show what shines through; ink is the lines of
    // print.
    const double paper = 252 * (1 - opacity);
    QRect red;
    int redCount = 0;
    int inkCount = 0;
    const QRectF page(14, 14, 640 - 28, 480 - 28);
    const QRectF box(page.x() + 0.3 * page.width(), page.y() + 0.2 * page.height(), 0.45 * page.width(),
                     0.35 * page.height());
    const QRectF inside
        = box.adjusted(2, 2, -2, -2); // without the border, which may blend to the same colour
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.red() > 240 && std::abs(color.green() - paper) < 6
                && std::abs(color.blue() - paper) < 8) {
                red |= QRect(x, y, 1, 1);
                ++redCount;
            }
            inkCount += inside.contains(x, y) && color == QColor(0xeb, 0xe6, 0xdc);
        }
    }
    if (opacity > 0) {
        QVERIFY2(box.contains(QRectF(red)), "outside of its place");
        // Blocks begin after border and padding and end before the scroll bar.
        QVERIFY(red.left() - box.left() < 30 && red.top() - box.top() < 30);
        QVERIFY(box.right() - red.right() < 30 && box.bottom() - red.bottom() < 30);
        QVERIFY(redCount > 0.5 * box.width() * box.height());
    }
    QCOMPARE(inkCount > 0, layer == 0 || opacity == 0);
}

void tst_PlayerPage::boxWithoutRoomIsToldInOneLine()
{
    for (const char *place : {R"({"left":"60%","top":"10%","width":"-20%","height":"50%"})",
                              R"({"left":"10%","top":"10%","width":"20%","height":"0%"})",
                              R"({"left":"100%","top":"10%","width":"20%","height":"50%"})",
                              R"({"left":"10%","top":"-60%","width":"20%","height":"50%"})"}) {
        QVERIFY(show(script(titled(QStringLiteral("T")), {}, place)));
        const QJsonObject seen = facts();
        QCOMPARE(seen[QLatin1String("notice")].toString(), noRoom);
        QCOMPARE(seen[QLatin1String("noticeLines")].toInt(), 1);
        QCOMPARE(seen[QLatin1String("isBoxShown")].toBool(), false);
    }
}

void tst_PlayerPage::hostileTextsStayTextAndReachNoNetwork()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QByteArray attacks
        = source("tests/data/player/attacks.json").replace("PORT", QByteArray::number(server.serverPort()));
    const QJsonArray items = QJsonDocument::fromJson(attacks).array();
    QVERIFY(items.size() > 40);
    const QString heading = QStringLiteral("</script><script>window.pwned=1</script>");
    QVERIFY(show(script(titled(heading), items, anyPlace)));
    evaluate("for (const part of document.querySelectorAll('#links li, #links a, #links span'))"
             "for (const type of ['mouseover', 'focus', 'load', 'error'])"
             "part.dispatchEvent(new Event(type, { bubbles: true }))");
    grab();

    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("notice")].toString(), QString());
    QCOMPARE(seen[QLatin1String("heading")].toString(), heading);
    QCOMPARE(seen[QLatin1String("strangers")].toArray(), QJsonArray());
    QCOMPARE(seen[QLatin1String("isScriptRun")].toBool(), false);
    const QJsonArray lines = seen[QLatin1String("items")].toArray();
    qsizetype line = 0;
    for (const auto &attack : items) {
        const QString title = attack[QLatin1String("title")].toString();
        if ((title + attack[QLatin1String("link")].toString()).trimmed().isEmpty())
            continue;
        QCOMPARE(lines[line][QLatin1String("text")].toString(),
                 attack[QLatin1String("shown")].toString(title));
        QCOMPARE(lines[line][QLatin1String("href")], attack[QLatin1String("href")]);
        ++line;
    }
    QCOMPARE(lines.size(), line);
    QVERIFY(!server.hasPendingConnections());
    // The listener would have heard.
    QTcpSocket control;
    control.connectToHost(server.serverAddress(), server.serverPort());
    QTRY_VERIFY(server.hasPendingConnections());
    QCOMPARE(QApplication::topLevelWidgets().count(), 1); // no dialog
}

// Were a text to run as a script after all, or a document to carry one as a number.
void tst_PlayerPage::scriptReachesNeitherNetworkNorFilesOutside()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    put(at("secret.js"), "window.pwned = 1");
    QVERIFY(load());
    const QByteArray base = "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/";
    // The engine reports each refusal by the page's content policy, and a refused fetch twice.
    for (int refusal = 0; refusal < 8; ++refusal)
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("^Refused to ")));
    evaluate("window.results = [];"
             "const base = '"
             + base
             + "';"
               "const add = (name, attributes, text = '') => {"
               "  const element = Object.assign(document.createElement(name), attributes);"
               "  element.onload = () => results.push('loaded ' + name);"
               "  element.onerror = () => results.push('refused');"
               "  element.append(text);"
               "  document.body.append(element); };"
               "add('script', {}, 'window.pwned = 1');"
               "add('script', { src: base + 'script.js' });"
               "add('script', { src: '../secret.js' });"
               "add('script', { src: '..%2Fsecret.js' });"
               "add('link', { rel: 'stylesheet', href: base + 'style.css' });"
               "add('img', { src: base + 'image.png' });"
               "fetch(base + 'fetch').then(() => results.push('read'), () => results.push('refused'));"
               "fetch('../secret.js').then(() => results.push('read'), () => results.push('refused'));");
    QTRY_COMPARE(evaluate("results.filter((result) => result === 'refused').length").toInt(), 7);
    QCOMPARE(evaluate("results.length").toInt(), 7);
    QCOMPARE(evaluate("'pwned' in window").toBool(), false);
    QVERIFY(!server.hasPendingConnections());
}

void tst_PlayerPage::backslashUWithoutDigitsIsShownAsTyped()
{
    const QByteArray heading = R"(C:\users\Ulla \\u12 ${Unicode} \u{1F600} \u)";
    put(at("workspace/linklist.xml"), get(at("workspace/linklist.xml")).replace("Further reading", heading));
    PluginSettingsInfo info;
    info.setWorkSpace(at("workspace"));
    info.generateJSConfig(QString());
    QVERIFY(load());
    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("notice")].toString(), QString());
    QCOMPARE(seen[QLatin1String("heading")].toString(), QString::fromUtf8(heading));
}

void tst_PlayerPage::numberThatIsNoneIsToldInOneLine()
{
    const QByteArray before = get(at("workspace/linklist.xml"));
    put(at("workspace/linklist.xml"), QByteArray(before).replace("</fontSize>", "\\users</fontSize>"));
    PluginSettingsInfo info;
    info.setWorkSpace(at("workspace"));
    info.generateJSConfig(QString());
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("SyntaxError")));
    QVERIFY(load());
    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("notice")].toString(), damaged);
    QCOMPARE(seen[QLatin1String("noticeLines")].toInt(), 1);
    QCOMPARE(seen[QLatin1String("isBoxShown")].toBool(), false);

    // The next edit mends it.
    put(at("workspace/linklist.xml"), before);
    info.generateJSConfig(QString());
    QVERIFY(load());
    QCOMPARE(facts()[QLatin1String("heading")].toString(), QStringLiteral("Further reading"));
}

void tst_PlayerPage::damagedConfigurationIsToldInOneLine_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("notice");
    const auto row = [](const char *configuration, const QString &notice) {
        QTest::newRow(configuration) << QByteArray(configuration) << notice;
    };
    row("", unconfigured);
    row("var other={};", unconfigured);
    row("var config=null;", damaged);
    row("var config=5;", damaged);
    row("var config='text';", damaged);
    row("var config=[];", damaged);
    row("var config={};", damaged);
    row("var config={properties:null};", damaged);
    row("var config={properties:{extended:[]}};", damaged);
    row("var config={};config.properties=config;", damaged);
    row("var config=new Proxy({},{get(){throw 1}});", damaged);
    row("var config={properties:{extended:{}}};", incomplete);
    row("var config={opacity:'x',layout:{},properties:{basic:5,extended:{title:[],body:7}}};", incomplete);
    row("var config={properties:{basic:{left:1,top:'1',width:{},height:'1%;x'},extended:{}}};", incomplete);
    row("var config={properties:{basic:{},extended:{title:{content:{},fontSize:-1,color:'red'},"
        "body:{fontSize:1e999,color:5,content:[null,5,'x',[],{link:{},title:{}}]}}}};",
        incomplete);
}

void tst_PlayerPage::damagedConfigurationIsToldInOneLine()
{
    QFETCH(QByteArray, configuration);
    QFETCH(QString, notice);
    QVERIFY(show(configuration));
    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("notice")].toString(), notice);
    QCOMPARE(seen[QLatin1String("noticeLines")].toInt(), 1);
    QCOMPARE(seen[QLatin1String("isBoxShown")].toBool(), notice == incomplete);
    // The smallest preview has room for the line, too.
    m_view->resize(400, 300);
    QTRY_COMPARE(evaluate("innerWidth").toInt(), 400);
    QCOMPARE(facts()[QLatin1String("noticeLines")].toInt(), 1);
}

void tst_PlayerPage::missingConfigurationIsToldInOneLine()
{
    QVERIFY(QFile::remove(at("workspace/config.js")));
    QVERIFY(load());
    QCOMPARE(facts()[QLatin1String("notice")].toString(), unconfigured);
}

void tst_PlayerPage::cutOffConfigurationIsToldInOneLine()
{
    const QByteArray whole = get(at("workspace/config.js"));
    for (const qsizetype length : {20, 100, 200, int(whole.size()) - 2}) {
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("SyntaxError")));
        QVERIFY(show(whole.first(length)));
        QCOMPARE(facts()[QLatin1String("notice")].toString(), damaged);
    }
    // Without its last character it is still a script.
    QVERIFY(show(whole.chopped(1)));
    QCOMPARE(facts()[QLatin1String("notice")].toString(), QString());
}

void tst_PlayerPage::rightToLeftTitlesAlignAndOverridesEndWithTheirTitle()
{
    const QString link = QStringLiteral("#");
    QVERIFY(
        show(script(titled(QStringLiteral("עברית")),
                    {item(QStringLiteral("\u202eturned round"), link), item(QStringLiteral("plain"), link),
                     item(QStringLiteral("שלום world"), link), item(QStringLiteral("last"), link)},
                    anyPlace)));
    // For each title: whether it stands at the left, at the right, and runs forward.
    QCOMPARE(
        evaluate(
            "[...document.querySelectorAll('#heading, #links li')].map((line) => {"
            "const node = document.createTreeWalker(line, NodeFilter.SHOW_TEXT).nextNode();"
            "const at = (from, to) => { const range = document.createRange(); range.setStart(node, from);"
            "range.setEnd(node, to); return range.getBoundingClientRect(); };"
            "const length = node.data.length; const all = at(0, length);"
            "const outer = line.getBoundingClientRect();"
            "return (all.left - outer.left < 2 ? 'L' : '') + (outer.right - all.right < 2 ? 'R' : '')"
            "+ (at(length - 1, length).left > at(1, 2).left ? '+' : '-'); }).join(' ')")
            .toString(),
        QStringLiteral("R- L- L+ R- L+"));
}

void tst_PlayerPage::longTextsWrapAndScrollInsideTheBox()
{
    const int length = 100 * 1024;
    QVERIFY(show(
        script(titled(QString(length, u'W')),
               {item(QString(length, u'x'), QStringLiteral("http://example.com/") + QString(length, u'y')),
                item(QStringLiteral("<br/>").repeated(20'000), QStringLiteral("#"))},
               anyPlace)));
    const QJsonObject seen = facts();
    QCOMPARE(seen[QLatin1String("heading")].toString().size(), length);
    QCOMPARE(seen[QLatin1String("items")].toArray().size(), 1); // line breaks alone are no title
    QCOMPARE(seen[QLatin1String("width")].toDouble(), 40.0);
    QVERIFY(evaluate("box.scrollWidth <= box.clientWidth && box.scrollHeight > 10000").toBool());
}

void tst_PlayerPage::tenThousandLinksAreShown()
{
    QJsonArray items;
    for (int i = 0; i < 10'000; ++i)
        items.append(
            item(QStringLiteral("Link number %1").arg(i), QStringLiteral("http://example.com/%1").arg(i)));
    const QByteArray configuration = script(titled(QStringLiteral("Many")), items, anyPlace);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(show(configuration));
    grab();
    qInfo("10,000 links loaded and painted after %lld ms", timer.elapsed());
    QCOMPARE(evaluate("document.querySelectorAll('#links li a[href]').length").toInt(), 10'000);
}

void tst_PlayerPage::keyboardReachesBoxAndLinks()
{
    QJsonArray items;
    for (int i = 0; i < 40; ++i)
        items.append(item(QStringLiteral("Link %1").arg(i), QStringLiteral("#%1").arg(i)));
    QVERIFY(show(script(titled(QStringLiteral("Many")), items, anyPlace)));
    m_view->activateWindow();
    QTRY_VERIFY(engineView()->focusProxy());
    engineView()->setFocus();
    QTRY_VERIFY(evaluate("document.hasFocus()").toBool());
    const auto press = [this](Qt::Key key) { QTest::keyClick(engineView()->focusProxy(), key); };
    const QImage calm = grab();
    press(Qt::Key_Tab);
    QTRY_COMPARE(evaluate("document.activeElement.id").toString(), QStringLiteral("box"));
    QVERIFY(grab() != calm);
    press(Qt::Key_PageDown);
    QTRY_VERIFY(evaluate("box.scrollTop > 0").toBool());
    press(Qt::Key_Tab);
    QTRY_COMPARE(evaluate("document.activeElement.textContent").toString(), QStringLiteral("Link 0"));
    QCOMPARE(evaluate("getComputedStyle(document.activeElement).outlineStyle").toString(),
             QStringLiteral("solid"));
    press(Qt::Key_Return);
    QTRY_COMPARE(evaluate("location.hash").toString(), QStringLiteral("#0"));
}

// The engine says once per process which graphics it does without; that is no test's business.
static bool startEngine()
{
    WebView view;
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.loadPage(QUrl(QStringLiteral("data:text/html,")));
    return !finished.isEmpty() || finished.wait(loadTimeout);
}

int main(int argc, char **argv)
{
    const QTemporaryDir runtimeFolder; // made with mode 0700, as the engine wants it
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toLocal8Bit());
    if (!Fixtures::isOrdinaryUser())
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    if (!startEngine())
        qWarning("The web engine did not answer its first load");
    tst_PlayerPage test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_PlayerPage.moc"
