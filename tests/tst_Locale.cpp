#include "Classes/Mode/Locale.h"
#include "platform/StringsTable.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QCoreApplication>

using Fixtures::put;

class tst_Locale : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void languageAndBundleStartAsNil();
    void settersAnswerTheStoredCopy();
    void storedTextOutlivesTheCallersCharacters();
    void translatesFromTheTableOfTheLanguage();
    void missingEntryGivesTheDefault();
    void entryEqualToItsKeyGivesTheDefault();
    void emptyEntryIsATranslation();
    void propertyListIsATableToo();
    void tableMayLieDirectlyInTheResourceFolder();
    void laterLanguageStillShowsTheFirstTable();
    void laterBundleStillShowsTheFirstTable();
    void loadedTableIsNeverReadAgain();
    void withoutATableTheNextCallLooksAgain();
    void brokenTableCountsAsNoneAndIsTriedAgain();
    void withoutATableTheBundleAnswersInThePersonsLanguage();
    void nilLanguageLooksInTheResourceFolderThenAsksTheBundle();
    void nilBundlePathGivesDefaults();
    void missingBundleGivesDefaults();
    void nullKeyAndNullDefaultAreTaken();
    void directionFollowsTheLoadedTable_data();
    void directionFollowsTheLoadedTable();
    void directionIsLeftToRightWithoutATable();
    void directionStaysWithTheFirstTable();
    void directionOfATableOutsideTheLanguageFoldersIsLeftToRight();
    void shippedTablesHoldTheSameKeys();
    void shippedTablesKeepPlaceholders_data();
    void shippedTablesKeepPlaceholders();
    void englishTableShowsTheChoosersTextsWithoutTheirPrefix();
    void shippedTablesTranslateTheWindow();

private:
    void putTable(const char *name, const QByteArray &content)
    {
        put(m_bundle->filePath(QString::fromUtf8(name)), content);
    }
    std::unique_ptr<QTemporaryDir> m_bundle;
};

namespace
{
const QString hello = QStringLiteral("Hello");
const QString fallback = QStringLiteral("default");

QString shippedBundle()
{
    return QStringLiteral(LINKLIST_SOURCE_DIR "/Resources");
}

StringsTable::Result shippedTable(const char *language)
{
    return StringsTable::readFile(shippedBundle() + u'/' + QLatin1String(language)
                                  + QStringLiteral(".lproj/PluginLocale.strings"));
}
} // namespace

void tst_Locale::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_bundle = std::make_unique<QTemporaryDir>();
    setDefaultBundlePath(m_bundle->path());
    setDefaultLanguageCode(QStringLiteral("fr"));
}

void tst_Locale::cleanup()
{
    resetLocaleForTesting();
}

void tst_Locale::languageAndBundleStartAsNil()
{
    resetLocaleForTesting();
    QVERIFY(defaultLanguageCode().isNull());
    QVERIFY(defaultBundlePath().isNull());
    QCOMPARE(loadAppString(hello, fallback), fallback);
}

void tst_Locale::settersAnswerTheStoredCopy()
{
    QCOMPARE(setDefaultLanguageCode(QStringLiteral("de")), QStringLiteral("de"));
    QCOMPARE(defaultLanguageCode(), QStringLiteral("de"));
    QCOMPARE(setDefaultBundlePath(QStringLiteral("/x")), QStringLiteral("/x"));
    QCOMPARE(defaultBundlePath(), QStringLiteral("/x"));
    QCOMPARE(setDefaultLanguageCode(QStringLiteral("ja")), QStringLiteral("ja"));
    QCOMPARE(defaultLanguageCode(), QStringLiteral("ja"));
    QVERIFY(setDefaultLanguageCode(QString()).isNull());
    QVERIFY(defaultLanguageCode().isNull());
    QVERIFY(setDefaultBundlePath(QString()).isNull());
    QVERIFY(defaultBundlePath().isNull());
    const QString empty = setDefaultLanguageCode(QStringLiteral(""));
    QVERIFY(empty.isEmpty() && !empty.isNull());
}

void tst_Locale::storedTextOutlivesTheCallersCharacters()
{
    QChar characters[] = {u'd', u'e'};
    setDefaultLanguageCode(QString::fromRawData(characters, 2));
    setDefaultBundlePath(QString::fromRawData(characters, 2));
    characters[0] = u'x';
    QCOMPARE(defaultLanguageCode(), QStringLiteral("de"));
    QCOMPARE(defaultBundlePath(), QStringLiteral("de"));
}

void tst_Locale::translatesFromTheTableOfTheLanguage()
{
    putTable("Contents/Resources/fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    putTable("Contents/Resources/en.lproj/PluginLocale.strings", "Hello = Hi;");
    putTable("Contents/Resources/PluginLocale.strings", "Hello = none;");
    QCOMPARE(loadAppString(hello, hello), QStringLiteral("Bonjour"));
}

void tst_Locale::missingEntryGivesTheDefault()
{
    putTable("fr.lproj/PluginLocale.strings", "Other = Autre;");
    putTable("en.lproj/PluginLocale.strings", "Hello = Hi;");
    QCOMPARE(loadAppString(hello, fallback), fallback);
    QCOMPARE(loadAppString(hello, hello), hello);
}

void tst_Locale::entryEqualToItsKeyGivesTheDefault()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Hello;");
    QCOMPARE(loadAppString(hello, fallback), fallback);
    QCOMPARE(loadAppString(hello, hello), hello);
}

void tst_Locale::emptyEntryIsATranslation()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = \"\";");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral(""));
}

void tst_Locale::propertyListIsATableToo()
{
    putTable("fr.lproj/PluginLocale.strings",
             "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Hello</key><string>Bonjour</string>"
             "</dict></plist>");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::tableMayLieDirectlyInTheResourceFolder()
{
    putTable("PluginLocale.strings", "Hello = none;");
    putTable("en.lproj/PluginLocale.strings", "Hello = Hi;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("none"));
}

void tst_Locale::laterLanguageStillShowsTheFirstTable()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    putTable("de.lproj/PluginLocale.strings", "Hello = Hallo; Bye = Tschau;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
    setDefaultLanguageCode(QStringLiteral("de"));
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
    QCOMPARE(loadAppString(QStringLiteral("Bye"), fallback), fallback);
}

void tst_Locale::laterBundleStillShowsTheFirstTable()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
    setDefaultBundlePath(QString());
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::loadedTableIsNeverReadAgain()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
    putTable("fr.lproj/PluginLocale.strings", "Hello = Salut;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::withoutATableTheNextCallLooksAgain()
{
    QCOMPARE(loadAppString(hello, fallback), fallback);
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::brokenTableCountsAsNoneAndIsTriedAgain()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour");
    putTable("en.lproj/PluginLocale.strings", "Hello = Hi;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Hi"));
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::withoutATableTheBundleAnswersInThePersonsLanguage()
{
    putTable("en.lproj/PluginLocale.strings", "Hello = Hi; Same = Same;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Hi"));
    putTable("ja.lproj/PluginLocale.strings", "Hello = \"こんにちは\";");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("こんにちは"));
    QCOMPARE(loadAppString(QStringLiteral("Missing"), fallback), fallback);
    QCOMPARE(loadAppString(QStringLiteral("Same"), fallback), fallback);
}

void tst_Locale::nilLanguageLooksInTheResourceFolderThenAsksTheBundle()
{
    setDefaultLanguageCode(QString());
    putTable("en.lproj/PluginLocale.strings", "Hello = Hi;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Hi"));
    putTable("PluginLocale.strings", "Hello = none;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("none"));
}

void tst_Locale::nilBundlePathGivesDefaults()
{
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    setDefaultBundlePath(QString());
    QCOMPARE(loadAppString(hello, fallback), fallback);
    QCOMPARE(loadAppString(hello, hello), hello);
    setDefaultBundlePath(m_bundle->path());
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Bonjour"));
}

void tst_Locale::missingBundleGivesDefaults()
{
    setDefaultBundlePath(m_bundle->filePath(QStringLiteral("none.bundle")));
    QCOMPARE(loadAppString(hello, fallback), fallback);
}

void tst_Locale::nullKeyAndNullDefaultAreTaken()
{
    QCOMPARE(loadAppString(QString(), fallback), fallback);
    QVERIFY(loadAppString(hello, QString()).isNull());
    QVERIFY(loadAppString(QString(), QString()).isNull());
    putTable("fr.lproj/PluginLocale.strings", "\"\" = empty; Hello = Bonjour;");
    QCOMPARE(loadAppString(hello, QString()), QStringLiteral("Bonjour"));
    QCOMPARE(loadAppString(QString(), fallback), fallback);
    QVERIFY(loadAppString(QStringLiteral("Missing"), QString()).isNull());
}

void tst_Locale::directionFollowsTheLoadedTable_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<Qt::LayoutDirection>("expected");
    QTest::newRow("French") << QStringLiteral("fr") << Qt::LeftToRight;
    QTest::newRow("Arabic") << QStringLiteral("ar") << Qt::RightToLeft;
    QTest::newRow("Hebrew") << QStringLiteral("he") << Qt::RightToLeft;
    QTest::newRow("Persian of Iran") << QStringLiteral("fa-IR") << Qt::RightToLeft;
    QTest::newRow("a language of two scripts") << QStringLiteral("az-Arab") << Qt::RightToLeft;
    QTest::newRow("no language") << QStringLiteral("something") << Qt::LeftToRight;
}

void tst_Locale::directionFollowsTheLoadedTable()
{
    QFETCH(QString, language);
    QFETCH(Qt::LayoutDirection, expected);
    setDefaultLanguageCode(language);
    put(m_bundle->filePath(language + QStringLiteral(".lproj/PluginLocale.strings")), "Hello = x;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("x"));
    QCOMPARE(loadedTableDirection(), expected);
}

void tst_Locale::directionIsLeftToRightWithoutATable()
{
    setDefaultLanguageCode(QStringLiteral("ar"));
    QCOMPARE(loadedTableDirection(), Qt::LeftToRight);
    QCOMPARE(loadAppString(hello, fallback), fallback);
    QCOMPARE(loadedTableDirection(), Qt::LeftToRight);
}

void tst_Locale::directionStaysWithTheFirstTable()
{
    putTable("ar.lproj/PluginLocale.strings", "Hello = x;");
    putTable("fr.lproj/PluginLocale.strings", "Hello = Bonjour;");
    setDefaultLanguageCode(QStringLiteral("ar"));
    loadAppString(hello, fallback);
    setDefaultLanguageCode(QStringLiteral("fr"));
    loadAppString(hello, fallback);
    QCOMPARE(loadedTableDirection(), Qt::RightToLeft);
}

void tst_Locale::directionOfATableOutsideTheLanguageFoldersIsLeftToRight()
{
    setDefaultLanguageCode(QStringLiteral("ar"));
    putTable("PluginLocale.strings", "Hello = Hi;");
    QCOMPARE(loadAppString(hello, fallback), QStringLiteral("Hi"));
    QCOMPARE(loadedTableDirection(), Qt::LeftToRight);
}

void tst_Locale::shippedTablesHoldTheSameKeys()
{
    const StringsTable::Result english = shippedTable("en");
    QVERIFY2(english.ok, qPrintable(english.reason));
    const QList<QString> keys = english.entries.keys();
    QVERIFY(!keys.isEmpty());
    for (const char *language : {"de", "ja"}) {
        const StringsTable::Result table = shippedTable(language);
        QVERIFY2(table.ok, qPrintable(QStringLiteral("line %1: ").arg(table.line) + table.reason));
        const QList<QString> others = table.entries.keys();
        QCOMPARE(QSet<QString>(others.begin(), others.end()), QSet<QString>(keys.begin(), keys.end()));
    }
}

void tst_Locale::shippedTablesKeepPlaceholders_data()
{
    QTest::addColumn<QByteArray>("language");
    for (const char *language : {"en", "de", "ja"})
        QTest::newRow(language) << QByteArray(language);
}

void tst_Locale::shippedTablesKeepPlaceholders()
{
    QFETCH(QByteArray, language);
    const QHash<QString, QString> entries = shippedTable(language.constData()).entries;
    QVERIFY(!entries.isEmpty());
    const QString placeholder = QStringLiteral("%@");
    int withPlaceholder = 0;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        QVERIFY2(!entry.value().isEmpty(), qPrintable(entry.key()));
        QVERIFY2(entry.key().count(placeholder) == entry.value().count(placeholder), qPrintable(entry.key()));
        QCOMPARE(entry.value().count(u'%'), entry.value().count(placeholder));
        withPlaceholder += entry.key().contains(placeholder);
    }
    QCOMPARE(withPlaceholder, 2);
}

void tst_Locale::englishTableShowsTheChoosersTextsWithoutTheirPrefix()
{
    const QString prefix = QStringLiteral("ColorPanelC-");
    const QHash<QString, QString> entries = shippedTable("en").entries;
    int prefixed = 0;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const bool isPrefixed = entry.key().startsWith(prefix);
        QCOMPARE(entry.value(), isPrefixed ? entry.key().mid(prefix.size()) : entry.key());
        prefixed += isPrefixed;
    }
    QCOMPARE(prefixed, 7);
}

void tst_Locale::shippedTablesTranslateTheWindow()
{
    setDefaultBundlePath(shippedBundle());
    setDefaultLanguageCode(QStringLiteral("de"));
    const QString title = QStringLiteral("Plugin Settings - %@");
    QCOMPARE(loadAppString(title, title), QStringLiteral("Plug-in-Einstellungen – %@"));
    resetLocaleForTesting();
    setDefaultBundlePath(shippedBundle());
    setDefaultLanguageCode(QStringLiteral("ja"));
    QCOMPARE(loadAppString(title, title), QStringLiteral("プラグイン設定 - %@"));
}

int main(int argc, char **argv)
{
    // A person who reads Japanese, told before Qt first looks, so that the bundle's own lookup has a
    // language.
    qputenv("LANGUAGE", "ja");
    QCoreApplication application(argc, argv);
    tst_Locale test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Locale.moc"
