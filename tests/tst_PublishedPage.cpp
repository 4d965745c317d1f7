#include "host/PublishedPage.h"
#include "tests/support/Fixtures.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QJsonArray>
#include <QJsonDocument>

using Fixtures::get;
using Fixtures::put;

class tst_PublishedPage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void stringCanStandInAnyScript_data();
    void stringCanStandInAnyScript();
    void folderGetsTextAndPageCode();
    void damagedConfigurationIsStillAString();
    void firstMissingFileIsNamed_data();
    void firstMissingFileIsNamed();
    void fullDiskKeepsTheOldFile();

private:
    QString folder() const { return m_bundle->workSpace(); }
    QString in(const char *name) const { return m_bundle->inWorkSpace(name); }

    std::unique_ptr<TestBundle> m_bundle;
};

void tst_PublishedPage::init()
{
    TestCase::init();
    m_bundle = std::make_unique<TestBundle>();
    put(in("bookPlugin.js"), "AQgw00000000_");
}

void tst_PublishedPage::stringCanStandInAnyScript_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("empty") << QString() << QByteArray(R"("")");
    QTest::newRow("plain") << QStringLiteral("AZaz09+/_ ~") << QByteArray(R"("AZaz09+/_ ~")");
    QTest::newRow("quote and backslash") << QStringLiteral("a\"b\\c'") << QByteArray(R"("a\u0022b\u005cc'")");
    QTest::newRow("line breaks") << QStringLiteral("\r\n\t") << QByteArray(R"("\u000d\u000a\u0009")");
    QTest::newRow("line breaks of scripts")
        << QStringLiteral("\u2028\u2029") << QByteArray(R"("\u2028\u2029")");
    QTest::newRow("end of the element")
        << QStringLiteral("</script><!--") << QByteArray(R"("\u003c/script>\u003c!--")");
    QTest::newRow("control characters")
        << QString(QChar(0)) + QChar(0x1b) + QChar(0x7f) << QByteArray(R"("\u0000\u001b\u007f")");
    QTest::newRow("beyond ASCII") << QStringLiteral("é日📖") << QByteArray(R"("\u00e9\u65e5\ud83d\udcd6")");
    QTest::newRow("half a pair") << QString(QChar(0xd83d)) << QByteArray(R"("\ud83d")");
    QTest::newRow("mark") << QString(QChar(0xfeff)) << QByteArray(R"("\ufeff")");
}

void tst_PublishedPage::stringCanStandInAnyScript()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    QCOMPARE(PublishedPage::scriptString(text), written);
    // Another reader gets the text back.
    if (!text.isEmpty() && !text.back().isHighSurrogate())
        QCOMPARE(QJsonDocument::fromJson('[' + written + ']').array().first().toString(), text);
}

void tst_PublishedPage::folderGetsTextAndPageCode()
{
    put(in("player.js"), "an old one");
    QCOMPARE(PublishedPage::writeInto(folder(), m_bundle->path()), QString());
    QCOMPARE(get(in("bookPlugin.text.js")), QByteArray("var bookPluginText=\"AQgw00000000_\";"));
    for (const char *name : {"player.css", "player.js", "unscramble.js"})
        QCOMPARE(get(in(name)), get(m_bundle->resource("html/") + QString::fromUtf8(name)));
    QCOMPARE(Fixtures::tree(folder()).size(), 5);
}

void tst_PublishedPage::damagedConfigurationIsStillAString()
{
    put(in("bookPlugin.js"), QByteArray("\";alert(1);//\xff\xc3\n</script>\0", 26));
    QCOMPARE(PublishedPage::writeInto(folder(), m_bundle->path()), QString());
    QCOMPARE(get(in("bookPlugin.text.js")),
             QByteArray(R"(var bookPluginText="\u0022;alert(1);//\ufffd\ufffd\u000a\u003c/script>\u0000";)"));
}

void tst_PublishedPage::firstMissingFileIsNamed_data()
{
    QTest::addColumn<QString>("missing");
    for (const char *name : {"bookPlugin.js", "player.css", "player.js", "unscramble.js"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_PublishedPage::firstMissingFileIsNamed()
{
    QFETCH(QString, missing);
    QVERIFY(QFile::remove(missing == QLatin1String("bookPlugin.js") ? in("bookPlugin.js")
                                                                    : m_bundle->resource("html/") + missing));
    QCOMPARE(PublishedPage::writeInto(folder(), m_bundle->path()), missing);
}

void tst_PublishedPage::fullDiskKeepsTheOldFile()
{
    put(in("bookPlugin.text.js"), "old");
    {
        const FullDisk full;
        QCOMPARE(PublishedPage::writeInto(folder(), m_bundle->path()), QStringLiteral("bookPlugin.text.js"));
    }
    QCOMPARE(get(in("bookPlugin.text.js")), QByteArray("old"));
    QCOMPARE(Fixtures::tree(folder()).size(), 2);
}

LINKLIST_TEST_MAIN(tst_PublishedPage)

#include "tst_PublishedPage.moc"
