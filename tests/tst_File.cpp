#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/OrdinaryRights.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QFileInfo>
#include <sys/stat.h>

using Fixtures::get;
using Fixtures::put;

class tst_File : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsTextWithoutItsMark();
    void textThatIsNotUtf8IsUnreadable();
    void folderIsNoFile();
    void writeReplacesTheWholeFile();
    void writeToAMissingFolderFails();
    void writeReplacesALinkAndLeavesItsTarget();
    void writeReplacesAFileThatMayNotBeWritten();
    void copyKeepsPermissionsAndNeverReplaces();
    void copiesALinkAsALink();
    void copyRefusesWhatIsNoFile();
    void removesAFolderButNotWhatItsLinksPointTo();
    void refusesPathsThatMeanTheCurrentFolder_data();
    void refusesPathsThatMeanTheCurrentFolder();
    void subpathsNameAFileWhoseNameBeginsWithAMark();
    void subpathsListHiddenEntriesAndParentsFirst();
    void joinedHasOneSeparator();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_File::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_File::readsTextWithoutItsMark()
{
    put(at("a"),
        "\xEF\xBB\xBF"
        "caf\xC3\xA9");
    QCOMPARE(File::readText(at("a")), QStringLiteral("café"));
    QCOMPARE(File::readText(at("none")), std::nullopt);
}

void tst_File::textThatIsNotUtf8IsUnreadable()
{
    put(at("a"), "1\n\xFF\xFE\n");
    QCOMPARE(File::readText(at("a")), std::nullopt);
    QCOMPARE(File::readBytes(at("a")), QByteArray("1\n\xFF\xFE\n"));
}

void tst_File::folderIsNoFile()
{
    QCOMPARE(File::readBytes(m_folder->path()), std::nullopt);
    QVERIFY(!File::write(m_folder->path(), "x"));
    QVERIFY(QFileInfo(m_folder->path()).isDir());
}

void tst_File::writeReplacesTheWholeFile()
{
    put(at("a"), "a long old content");
    QVERIFY(File::write(at("a"), "new"));
    QCOMPARE(get(at("a")), QByteArray("new"));
    QVERIFY(File::write(at("a"), ""));
    QCOMPARE(get(at("a")).size(), 0);
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{QStringLiteral("a")});
}

void tst_File::writeToAMissingFolderFails()
{
    QVERIFY(!File::write(at("none/a"), "x"));
    QVERIFY(!File::write(QString(), "x"));
}

void tst_File::writeReplacesALinkAndLeavesItsTarget()
{
    put(at("outside"), "outside");
    QVERIFY(QFile::link(at("outside"), at("link")));
    QVERIFY(File::write(at("link"), "mine"));
    QVERIFY(!QFileInfo(at("link")).isSymLink());
    QCOMPARE(get(at("link")), QByteArray("mine"));
    QCOMPARE(get(at("outside")), QByteArray("outside"));
    QCOMPARE(File::subpaths(m_folder->path()).size(), 2);
}

void tst_File::writeReplacesAFileThatMayNotBeWritten()
{
    put(at("a"), "old");
    QVERIFY(QFile::setPermissions(at("a"), QFile::ReadOwner));
    const OrdinaryRights rights;
    QVERIFY(File::write(at("a"), "new"));
    QCOMPARE(get(at("a")), QByteArray("new"));
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{QStringLiteral("a")});
}

void tst_File::copyKeepsPermissionsAndNeverReplaces()
{
    const QByteArray large(200'001, 'x');
    put(at("a"), large);
    QVERIFY(QFile::setPermissions(at("a"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(File::copy(at("a"), at("b")));
    QCOMPARE(get(at("b")), large);
    QVERIFY(QFileInfo(at("b")).isExecutable());
    put(at("c"), "kept");
    QVERIFY(!File::copy(at("a"), at("c")));
    QCOMPARE(get(at("c")), QByteArray("kept"));
}

void tst_File::copiesALinkAsALink()
{
    QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all"), at("dangling")));
    QVERIFY(File::exists(at("dangling")));
    QVERIFY(File::copy(at("dangling"), at("copy")));
    QCOMPARE(QFileInfo(at("copy")).symLinkTarget(), QStringLiteral("/nowhere/at/all"));
}

void tst_File::copyRefusesWhatIsNoFile()
{
    QCOMPARE(mkfifo(qPrintable(at("pipe")), 0600), 0);
    QVERIFY(!File::copy(at("pipe"), at("copy")));
    QVERIFY(!File::copy(m_folder->path(), at("copy")));
    QVERIFY(!File::copy(at("none"), at("copy")));
    QVERIFY(!File::exists(at("copy")));
}

void tst_File::removesAFolderButNotWhatItsLinksPointTo()
{
    put(at("outside/file"), "kept");
    put(at("inside/.hidden/file"), "x");
    QVERIFY(QFile::link(at("outside"), at("inside/link")));
    QVERIFY(File::removeAll(at("inside")));
    QVERIFY(!File::exists(at("inside")));
    QCOMPARE(get(at("outside/file")), QByteArray("kept"));
    QVERIFY(File::removeAll(at("inside")));
}

void tst_File::refusesPathsThatMeanTheCurrentFolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("dot") << QStringLiteral(".");
    QTest::newRow("relative") << QStringLiteral("some/folder");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("root told otherwise") << QStringLiteral("/tmp/..");
    QTest::newRow("resource") << QStringLiteral(":/qt");
}

void tst_File::refusesPathsThatMeanTheCurrentFolder()
{
    QFETCH(QString, path);
    QVERIFY(!File::isUsableFolderPath(path));
    QVERIFY(!File::isFolder(path));
    QVERIFY(!File::makeFolder(path));
    QVERIFY(!File::removeAll(path));
    QVERIFY(File::subpaths(path).isEmpty());
}

void tst_File::subpathsNameAFileWhoseNameBeginsWithAMark()
{
    const QString name = QStringLiteral("\uFEFFa");
    put(m_folder->filePath(name), "x");
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{name});
    QVERIFY(File::exists(m_folder->filePath(name)));
}

void tst_File::subpathsListHiddenEntriesAndParentsFirst()
{
    put(at("a/.b/c"), "");
    put(at(".d"), "");
    put(at("name with\na line feed and \xC3\xA9"), "");
    QVERIFY(QFile::link(m_folder->path(), at("a/loop")));
    const QStringList paths = File::subpaths(m_folder->path());
    QCOMPARE(QSet<QString>(paths.begin(), paths.end()),
             (QSet<QString>{QStringLiteral("a"), QStringLiteral("a/.b"), QStringLiteral("a/.b/c"),
                            QStringLiteral(".d"), QStringLiteral("a/loop"),
                            QStringLiteral("name with\na line feed and é")}));
    QVERIFY(paths.indexOf(QStringLiteral("a")) < paths.indexOf(QStringLiteral("a/.b")));
    QVERIFY(paths.indexOf(QStringLiteral("a/.b")) < paths.indexOf(QStringLiteral("a/.b/c")));
}

void tst_File::joinedHasOneSeparator()
{
    const QString expected = QStringLiteral("a/b");
    QCOMPARE(File::joined(QStringLiteral("a"), QStringLiteral("b")), expected);
    QCOMPARE(File::joined(QStringLiteral("a/"), QStringLiteral("b")), expected);
    QCOMPARE(File::joined(QStringLiteral("a"), QStringLiteral("/b")), expected);
    QCOMPARE(File::joined(QStringLiteral("a/"), QStringLiteral("/b")), expected);
    QCOMPARE(File::joined(QString(), QStringLiteral("b")), QStringLiteral("b"));
    QCOMPARE(File::joined(QStringLiteral("a"), QString()), QStringLiteral("a"));
}

LINKLIST_TEST_MAIN(tst_File)
#include "tst_File.moc"
