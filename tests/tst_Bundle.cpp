#include "platform/Bundle.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QCoreApplication>
#include <QDir>

using Fixtures::put;

namespace
{
// What the main bundle was before there was an application object, and what Qt had to say about it.
struct Early {
    bool hadPath = true;
    int messages = 0;
};
Early early;
} // namespace

class tst_Bundle : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void bundleWithoutAPathFindsNothing_data();
    void bundleWithoutAPathFindsNothing();
    void resourcesAreInContentsOrInTheFolderItself();
    void fileInThePlaceOfTheResourceFolderIsNone();
    void findsAResourceInItsLanguageFolderFirst();
    void nullLocalizationLooksInTheResourceFolderAtOnce();
    void resourceMayBeAFolderOrHaveNoType();
    void trailingSeparatorChangesNothing();
    void localizationThatIsNoPlainNameFindsNothing_data();
    void localizationThatIsNoPlainNameFindsNothing();
    void languageNamesGoFromExactToGeneral_data();
    void languageNamesGoFromExactToGeneral();
    void textFollowsThePersonsLanguages();
    void textIsFoundUnderEverySpellingOfALanguage_data();
    void textIsFoundUnderEverySpellingOfALanguage();
    void textFallsBackToEnglishAndThenToTheTableOfNoLanguage();
    void missingKeyGivesTheValueOrTheKey();
    void brokenTableIsPassedOver();
    void emptyTextIsAText();
    void nullTableIsTheCommonOne();
    void mainBundleIsTheExecutablesFolder();
    void mainBundleOfAnApplicationBundle_data();
    void mainBundleOfAnApplicationBundle();
    void mainBundleWithoutAnApplicationFindsNothingAndIsSilent();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    Bundle bundle() const { return Bundle(m_folder->path()); }
    QString find(const QString &localization) const
    {
        return bundle().pathForResource(QStringLiteral("Table"), QStringLiteral("strings"), localization);
    }
    QString text(const QString &key, const QString &value = QStringLiteral("value")) const
    {
        return bundle().localizedStringForKey(key, value, QStringLiteral("Table"));
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Bundle::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_Bundle::bundleWithoutAPathFindsNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
}

void tst_Bundle::bundleWithoutAPathFindsNothing()
{
    QFETCH(QString, path);
    put(at("a.txt"), "");
    put(at("en.lproj/Table.strings"), "k = v;");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const Bundle none(path);
    const QString found = none.pathForResource(QStringLiteral("a"), QStringLiteral("txt"));
    const QString foundInRoot = none.pathForResource(QStringLiteral("tmp"), QString());
    const QString translated
        = none.localizedStringForKey(QStringLiteral("k"), QStringLiteral("value"), QStringLiteral("Table"));
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(none.resourcePath().isNull());
    QVERIFY(found.isNull());
    QVERIFY(foundInRoot.isNull());
    QCOMPARE(translated, QStringLiteral("value"));
}

void tst_Bundle::resourcesAreInContentsOrInTheFolderItself()
{
    QCOMPARE(bundle().path(), m_folder->path());
    QCOMPARE(bundle().resourcePath(), m_folder->path());
    put(at("Contents/Resources/a.txt"), "");
    QCOMPARE(bundle().resourcePath(), at("Contents/Resources"));
    QCOMPARE(bundle().pathForResource(QStringLiteral("a"), QStringLiteral("txt")),
             at("Contents/Resources/a.txt"));
}

void tst_Bundle::fileInThePlaceOfTheResourceFolderIsNone()
{
    put(at("Contents/Resources"), "");
    QCOMPARE(bundle().resourcePath(), m_folder->path());
}

void tst_Bundle::findsAResourceInItsLanguageFolderFirst()
{
    QVERIFY(find(QStringLiteral("de")).isNull());
    put(at("Table.strings"), "");
    QCOMPARE(find(QStringLiteral("de")), at("Table.strings"));
    put(at("de.lproj/Table.strings"), "");
    QCOMPARE(find(QStringLiteral("de")), at("de.lproj/Table.strings"));
    QCOMPARE(find(QStringLiteral("fr")), at("Table.strings"));
}

void tst_Bundle::nullLocalizationLooksInTheResourceFolderAtOnce()
{
    put(at("en.lproj/Table.strings"), "");
    put(at(".lproj/Table.strings"), "");
    QVERIFY(find(QString()).isNull());
    put(at("Table.strings"), "");
    QCOMPARE(find(QString()), at("Table.strings"));
}

void tst_Bundle::resourceMayBeAFolderOrHaveNoType()
{
    put(at("en.lproj/Window.nib/keyed"), "");
    QCOMPARE(bundle().pathForResource(QStringLiteral("Window"), QStringLiteral("nib"), QStringLiteral("en")),
             at("en.lproj/Window.nib"));
    put(at("product.id"), "");
    QCOMPARE(bundle().pathForResource(QStringLiteral("product.id"), QString()), at("product.id"));
    QVERIFY(bundle().pathForResource(QString(), QStringLiteral("id")).isNull());
}

void tst_Bundle::trailingSeparatorChangesNothing()
{
    put(at("Contents/Resources/a.txt"), "");
    QCOMPARE(Bundle(m_folder->path() + u'/').resourcePath(), at("Contents/Resources"));
}

void tst_Bundle::localizationThatIsNoPlainNameFindsNothing_data()
{
    QTest::addColumn<QString>("localization");
    QTest::newRow("parent") << QStringLiteral("..");
    QTest::newRow("out of the bundle") << QStringLiteral("../outside");
    QTest::newRow("into a folder") << QStringLiteral("inside/de");
    QTest::newRow("absolute") << QStringLiteral("/de");
    QTest::newRow("zero character") << QStringLiteral("de") + QChar(QChar::Null);
}

void tst_Bundle::localizationThatIsNoPlainNameFindsNothing()
{
    QFETCH(QString, localization);
    put(at("bundle/Table.strings"), "");
    put(at("bundle/inside/de.lproj/Table.strings"), "");
    put(at("outside.lproj/Table.strings"), "");
    const Bundle bundle(at("bundle"));
    QVERIFY(!bundle.pathForResource(QStringLiteral("Table"), QStringLiteral("strings")).isNull());
    QVERIFY(
        bundle.pathForResource(QStringLiteral("Table"), QStringLiteral("strings"), localization).isNull());
}

void tst_Bundle::languageNamesGoFromExactToGeneral_data()
{
    QTest::addColumn<QStringList>("languages");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QStringList() << "en";
    QTest::newRow("with a country") << QStringList{QStringLiteral("de-DE")} << "de-DE de_DE de en";
    QTest::newRow("spelled with a low line") << QStringList{QStringLiteral("de_DE")} << "de-DE de_DE de en";
    QTest::newRow("with a script") << QStringList{QStringLiteral("zh-Hans-CN")}
                                   << "zh-Hans-CN zh_Hans_CN zh-Hans zh_Hans zh en";
    QTest::newRow("English first") << QStringList{QStringLiteral("en-GB"), QStringLiteral("ja")}
                                   << "en-GB en_GB en ja";
    QTest::newRow("broken ones") << QStringList{QString(), QStringLiteral("-"), QStringLiteral("-x")}
                                 << "- _ -x _x en";
}

void tst_Bundle::languageNamesGoFromExactToGeneral()
{
    QFETCH(QStringList, languages);
    QFETCH(QString, expected);
    QCOMPARE(Bundle::languageNames(languages).join(u' '), expected);
}

void tst_Bundle::textFollowsThePersonsLanguages()
{
    put(at("Table.strings"), "k = none;");
    put(at("en.lproj/Table.strings"), "k = English;");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral("English"));
    put(at("ja.lproj/Table.strings"), "k = \"日本語\";");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral("日本語"));
    put(at("de.lproj/Table.strings"), "k = Deutsch;");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral("Deutsch"));
}

void tst_Bundle::textIsFoundUnderEverySpellingOfALanguage_data()
{
    QTest::addColumn<QString>("folder");
    for (const char *name : {"de", "de_DE", "de-DE"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Bundle::textIsFoundUnderEverySpellingOfALanguage()
{
    QFETCH(QString, folder);
    put(at("en.lproj/Table.strings"), "k = English;");
    put(m_folder->filePath(folder + QStringLiteral(".lproj/Table.strings")), "k = Deutsch;");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral("Deutsch"));
}

void tst_Bundle::textFallsBackToEnglishAndThenToTheTableOfNoLanguage()
{
    put(at("de.lproj/Table.strings"), "a = Deutsch;");
    put(at("en.lproj/Table.strings"), "a = English; b = English;");
    put(at("Table.strings"), "a = none; b = none; c = none;");
    put(at("fr.lproj/Table.strings"), "d = autre;");
    QCOMPARE(text(QStringLiteral("a")), QStringLiteral("Deutsch"));
    QCOMPARE(text(QStringLiteral("b")), QStringLiteral("English"));
    QCOMPARE(text(QStringLiteral("c")), QStringLiteral("none"));
    QCOMPARE(text(QStringLiteral("d")), QStringLiteral("value"));
}

void tst_Bundle::missingKeyGivesTheValueOrTheKey()
{
    put(at("en.lproj/Table.strings"), "k = v; \"\" = none;");
    QCOMPARE(text(QStringLiteral("other"), QStringLiteral("value")), QStringLiteral("value"));
    QCOMPARE(text(QStringLiteral("other"), QString()), QStringLiteral("other"));
    QCOMPARE(text(QStringLiteral("other"), QStringLiteral("")), QStringLiteral("other"));
    QCOMPARE(text(QString(), QStringLiteral("value")), QStringLiteral("value"));
    QVERIFY(text(QString(), QString()).isNull());
}

void tst_Bundle::brokenTableIsPassedOver()
{
    put(at("de.lproj/Table.strings"), "k = Deutsch");
    put(at("en.lproj/Table.strings"), "k = English;");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral("English"));
}

void tst_Bundle::emptyTextIsAText()
{
    put(at("de.lproj/Table.strings"), "k = \"\";");
    put(at("en.lproj/Table.strings"), "k = English;");
    QCOMPARE(text(QStringLiteral("k")), QStringLiteral(""));
}

void tst_Bundle::nullTableIsTheCommonOne()
{
    put(at("de.lproj/Localizable.strings"), "k = Deutsch;");
    QCOMPARE(bundle().localizedStringForKey(QStringLiteral("k"), QString(), QString()),
             QStringLiteral("Deutsch"));
}

void tst_Bundle::mainBundleIsTheExecutablesFolder()
{
    QCOMPARE(Bundle::mainBundle().path(), QCoreApplication::applicationDirPath());
}

void tst_Bundle::mainBundleOfAnApplicationBundle_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("expected");
    QTest::newRow("application bundle") << "/x/Name.app/Contents/MacOS"
                                        << "/x/Name.app";
    QTest::newRow("another bundle") << "/x/Name.plugin/Contents/MacOS"
                                    << "/x/Name.plugin/Contents/MacOS";
    QTest::newRow("deeper inside") << "/x/Name.app/Contents/MacOS/tools"
                                   << "/x/Name.app/Contents/MacOS/tools";
    QTest::newRow("plain folder") << "/usr/bin"
                                  << "/usr/bin";
    QTest::newRow("short folder") << "/"
                                  << "/";
}

void tst_Bundle::mainBundleOfAnApplicationBundle()
{
    QFETCH(QString, folder);
    QFETCH(QString, expected);
    QCOMPARE(Bundle::pathForExecutableFolder(folder), expected);
}

void tst_Bundle::mainBundleWithoutAnApplicationFindsNothingAndIsSilent()
{
    QVERIFY(!early.hadPath);
    QCOMPARE(early.messages, 0);
}

int main(int argc, char **argv)
{
    // A person who reads German and else Japanese. Qt reads this once, at the first use of a locale.
    qputenv("LANGUAGE", "de_DE:ja");
    const auto previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &) { ++early.messages; });
    early.hadPath = !Bundle::mainBundle().path().isNull();
    qInstallMessageHandler(previous);

    QCoreApplication application(argc, argv);
    tst_Bundle test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Bundle.moc"
