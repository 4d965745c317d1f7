#include "platform/StringsTable.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QSet>
#include <pugixml.hpp>

// Every text that the system shows has its place in every language's table.

namespace
{

const QString root = QStringLiteral(LINKLIST_SOURCE_DIR);

QStringList filesBelow(const QString &folder, const QStringList &patterns)
{
    QStringList files;
    for (QDirIterator it(root + u'/' + folder, patterns, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();)
        files.append(it.next());
    files.sort();
    return files;
}

bool isTranslatable(const pugi::xml_node &string)
{
    const QLatin1String property(string.parent().attribute("name").value());
    return !string.attribute("notr").as_bool() && !string.parent().attribute("notr").as_bool()
        && property != QLatin1String("objectName") && property != QLatin1String("styleSheet")
        && *string.child_value() != '\0';
}

QSet<QString> interfaceTexts(const QString &file)
{
    pugi::xml_document document;
    if (!document.load_file(qUtf8Printable(file)))
        qFatal("%s is no interface file", qPrintable(file));
    QSet<QString> texts;
    for (const pugi::xpath_node &found : document.select_nodes("//string")) {
        if (isTranslatable(found.node()))
            texts.insert(QString::fromUtf8(found.node().child_value()));
    }
    return texts;
}

QStringList literalsOf(const QString &code)
{
    static const QRegularExpression literal(QString::fromLatin1("\"((?:[^\"\\\\]|\\\\.)*)\""));
    QStringList found;
    for (auto it = literal.globalMatch(code); it.hasNext();)
        found.append(it.next().captured(1));
    return found;
}

// The keys of one call: its literal, or those of the variable that it names, declared above it.
QStringList keysOf(const QString &argument, const QString &codeAbove)
{
    const QStringList literals = literalsOf(argument);
    if (!literals.isEmpty())
        return literals;
    const QRegularExpression declaration(QString::fromLatin1("QString\\s+%1\\s*=([^;]*);")
                                             .arg(QRegularExpression::escape(argument.trimmed())));
    QString nearest;
    for (auto it = declaration.globalMatch(codeAbove); it.hasNext();)
        nearest = it.next().captured(1);
    return literalsOf(nearest);
}

StringsTable::Result table(const QString &language)
{
    return StringsTable::readFile(root + QStringLiteral("/Resources/") + language
                                  + QStringLiteral(".lproj/PluginLocale.strings"));
}

} // namespace

class tst_Translations : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyInterfaceTextIsAKey_data();
    void everyInterfaceTextIsAKey();
    void everyTextOfTheSourcesIsAKey_data() { languages(); }
    void everyTextOfTheSourcesIsAKey();
    void tablesHaveTheSameKeysAndPlaceholders_data() { languages(); }
    void tablesHaveTheSameKeysAndPlaceholders();

private:
    static void languages();
};

void tst_Translations::languages()
{
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "de", "ja"})
        QTest::newRow(language) << QString::fromLatin1(language);
}

void tst_Translations::everyInterfaceTextIsAKey_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("language");
    const QStringList files = filesBelow(QStringLiteral("Resources"), {QStringLiteral("*.ui")});
    for (const QString &file : files) {
        for (const char *language : {"en", "de", "ja"})
            QTest::addRow("%s in %s", qPrintable(QFileInfo(file).fileName()), language)
                << file << QString::fromLatin1(language);
    }
}

void tst_Translations::everyInterfaceTextIsAKey()
{
    QFETCH(QString, file);
    QFETCH(QString, language);
    const StringsTable::Result strings = table(language);
    QVERIFY2(strings.ok, qPrintable(strings.reason));
    const QSet<QString> texts = interfaceTexts(file);
    QVERIFY(!texts.isEmpty());
    QStringList missing;
    for (const QString &text : texts) {
        if (!strings.entries.contains(text))
            missing.append(text);
    }
    QCOMPARE(missing.join(u'\n'), QString());
}

void tst_Translations::everyTextOfTheSourcesIsAKey()
{
    QFETCH(QString, language);
    const StringsTable::Result strings = table(language);
    static const QRegularExpression call(
        QString::fromLatin1("\\bloadAppString\\(((?:\"(?:[^\"\\\\]|\\\\.)*\"|[^,\"])*),"));
    // One defines the call, the other passes on the texts of interface files.
    const QStringList withoutTexts = {QStringLiteral("Locale.cpp"), QStringLiteral("Nib.cpp")};
    QStringList missing;
    int found = 0;
    for (const char *folder : {"Classes", "linklist", "platform", "text"}) {
        const QStringList files = filesBelow(QLatin1String(folder), {QStringLiteral("*.cpp")});
        for (const QString &file : files) {
            if (withoutTexts.contains(QFileInfo(file).fileName()))
                continue;
            const QString code = QString::fromUtf8(Fixtures::get(file));
            for (auto it = call.globalMatch(code); it.hasNext();) {
                const QRegularExpressionMatch match = it.next();
                const QStringList keys = keysOf(match.captured(1), code.left(match.capturedStart()));
                QVERIFY2(!keys.isEmpty(), qPrintable(file + u' ' + match.captured()));
                found += int(keys.size());
                for (const QString &key : keys) {
                    if (!strings.entries.contains(key))
                        missing.append(key);
                }
            }
        }
    }
    QCOMPARE(missing.join(u'\n'), QString());
    QVERIFY2(found >= 5, "the sources' texts are no longer found");
}

void tst_Translations::tablesHaveTheSameKeysAndPlaceholders()
{
    QFETCH(QString, language);
    const QHash<QString, QString> english = table(QStringLiteral("en")).entries;
    const QHash<QString, QString> translated = table(language).entries;
    const auto sorted = [](QStringList keys) {
        keys.sort();
        return keys;
    };
    QCOMPARE(sorted(translated.keys()), sorted(english.keys()));
    const QString placeholder = QStringLiteral("%@");
    for (auto it = translated.begin(); it != translated.end(); ++it) {
        QVERIFY2(!it->trimmed().isEmpty(), qPrintable(it.key()));
        QVERIFY2(it->count(placeholder) == it.key().count(placeholder), qPrintable(it.key()));
    }
}

LINKLIST_TEST_MAIN(tst_Translations)

#include "tst_Translations.moc"
