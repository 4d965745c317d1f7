#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/Locale.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cstdio>

using Fixtures::get;
using Fixtures::put;
using Fixtures::tree;

class tst_PluginSettingsInfo : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void savePathLiesInThePersonsDataFolder();
    void savePathTakesTheProductIdOfTheBundle_data();
    void savePathTakesTheProductIdOfTheBundle();
    void savePathWithoutAProductIdIsQuillnest();
    void savePathOfAMissingBundleComesFromTheMainBundle();

    void identifierBecomesLinklistAtFirstUse_data();
    void identifierBecomesLinklistAtFirstUse();
    void identifierThatIsSetStays();
    void nilWorkspaceBecomesTheDefaultOne();

    void resetMergesHtmlAndData();
    void resetLetsHtmlWinOverData();
    void resetDeletesWhatWasThere();
    void resetMakesMissingParents();
    void resetLeavesHiddenEntriesOutAtTheTopAlone();
    void resetCopiesTheMovie();
    void resetCopiesTheMovieOfTheIdentifier();
    void resetNeverReplacesABookOfTheTemplate();
    void resetWithoutTemplatesMakesAnEmptyWorkspace();
    void resetTakesTheMainBundleWhenThereIsNoBundle();
    void resetFindsResourcesInContents();
    void resetLeavesTheTargetsOfLinksAlone();

    void loadMakesAMissingWorkspace();
    void loadKeepsAChangedDocumentAndRestoresADeletedFile();
    void loadBringsHiddenEntriesBack();
    void loadRestoresFoldersAndEmptyOnes();
    void loadLeavesAFileWhereTheTemplateHasAFolder();
    void loadLeavesADanglingLinkInItsPlace();
    void loadWritesNothingThroughALink();
    void loadCopiesLinksAsLinks();
    void loadNeverRemakesTheMovie();
    void namesMayHoldAnything();

    void refusedWorkspaceIsLeftAlone_data();
    void refusedWorkspaceIsLeftAlone();
    void workspaceThatIsAFileIsLeftAlone();

    void documentIsParsedAfresh();
    void documentWithAMarkOrADeclarationIsRead();
    void noDocument_data();
    void noDocument();
    void documentThatIsAFolderIsNone();

    void convertCopiesTheWorkspaceWithoutHiddenEntriesAtTheTop();
    void convertReplacesTheDestination();
    void convertReplacesAFile();
    void convertReplacesALinkAndLeavesItsTarget();
    void convertWithoutAWorkspaceTouchesNothing();
    void convertCopiesLinksAsLinks();
    void convertIsNotFooledByASimilarName();
    void convertRefuses_data();
    void convertRefuses();

    void copyLeavesExistingFilesAlone();
    void copyLeavesHiddenEntriesOutByTheFirstCharacterAlone();
    void copyTakesHiddenEntriesWhenAsked();
    void copyOfAMissingFolderDoesNothing();
    void copyFollowsNoLink();
    void copyWritesNothingThroughALink();
    void copyGoesOnAfterWhatCannotBeCopied();
    void copyRefusesPathsThatMeanTheCurrentFolder();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    void putTemplates() const;
    PluginSettingsInfo info() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_PluginSettingsInfo::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    // Keeps the tests off the person's own files.
    qputenv("XDG_DATA_HOME", m_folder->filePath(QStringLiteral("share")).toUtf8());
    resetLocaleForTesting();
}

void tst_PluginSettingsInfo::cleanup()
{
    resetLocaleForTesting();
}

void tst_PluginSettingsInfo::putTemplates() const
{
    put(at("bundle/html/index.html"), "page");
    put(at("bundle/html/js/player.js"), "script");
    put(at("bundle/data/linklist.xml"), "<info/>");
    put(at("bundle/data/linklist.swf"), "movie");
    put(at("bundle/data/defaultsettings.dat"), "10\n26\n60\n26\n0\n1");
}

PluginSettingsInfo tst_PluginSettingsInfo::info() const
{
    PluginSettingsInfo result;
    result.setBundlePath(at("bundle"));
    result.setWorkSpace(at("ws"));
    return result;
}

void tst_PluginSettingsInfo::savePathLiesInThePersonsDataFolder()
{
    QCOMPARE(PluginSettingsInfo::getSavePluginPath(), at("share/Harborlight/quillnest_resource/Plugin/Save"));
    QVERIFY2(!File::exists(at("share")), "asking for the path makes no folder");
}

void tst_PluginSettingsInfo::savePathTakesTheProductIdOfTheBundle_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("productId");
    QTest::newRow("plain") << QStringLiteral("b/product.id") << QByteArray("flipper");
    QTest::newRow("in Contents/Resources")
        << QStringLiteral("b/Contents/Resources/product.id") << QByteArray("flipper");
    QTest::newRow("line feed at its end") << QStringLiteral("b/product.id") << QByteArray("flipper\n");
    QTest::newRow("Windows line end") << QStringLiteral("b/product.id") << QByteArray("flipper\r\n");
    QTest::newRow("blanks") << QStringLiteral("b/product.id") << QByteArray(" flip per ");
    QTest::newRow("other script") << QStringLiteral("b/product.id") << QByteArray("livre-é-本");
    QTest::newRow("place markers") << QStringLiteral("b/product.id") << QByteArray("%1%2%@%s");
    QTest::newRow("empty") << QStringLiteral("b/product.id") << QByteArray("");
}

void tst_PluginSettingsInfo::savePathTakesTheProductIdOfTheBundle()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, productId);
    put(m_folder->filePath(file), productId);
    setDefaultBundlePath(at("b"));
    QCOMPARE(PluginSettingsInfo::getSavePluginPath(),
             at("share/Harborlight/") + QString::fromUtf8(productId)
                 + QStringLiteral("_resource/Plugin/Save"));
}

void tst_PluginSettingsInfo::savePathWithoutAProductIdIsQuillnest()
{
    QVERIFY(QDir().mkpath(at("b")));
    setDefaultBundlePath(at("b"));
    QCOMPARE(PluginSettingsInfo::getSavePluginPath(), at("share/Harborlight/quillnest_resource/Plugin/Save"));
}

void tst_PluginSettingsInfo::savePathOfAMissingBundleComesFromTheMainBundle()
{
    const QString program = at("application/program");
    QVERIFY(QDir().mkpath(at("application")));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    put(at("application/product.id"), "host");
    QProcess process;
    process.start(program, {QStringLiteral("--print-save-path"), at("none")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             at("share/Harborlight/host_resource/Plugin/Save"));
}

void tst_PluginSettingsInfo::identifierBecomesLinklistAtFirstUse_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
}

void tst_PluginSettingsInfo::identifierBecomesLinklistAtFirstUse()
{
    QFETCH(QString, identifier);
    putTemplates();
    PluginSettingsInfo info = this->info();
    info.setIdentifier(identifier);
    QVERIFY(info.resetWorkspace());
    QCOMPARE(info.identifier(), QStringLiteral("linklist"));
    QCOMPARE(get(at("ws/book.swf")), QByteArray("movie"));

    PluginSettingsInfo reader = this->info();
    reader.setIdentifier(identifier);
    QVERIFY(reader.getXMLFromWorkspace());
    QCOMPARE(reader.identifier(), QStringLiteral("linklist"));
}

void tst_PluginSettingsInfo::identifierThatIsSetStays()
{
    putTemplates();
    put(at("bundle/data/other.xml"), "<other/>");
    PluginSettingsInfo info = this->info();
    info.setIdentifier(QStringLiteral("other"));
    QVERIFY(info.resetWorkspace());
    QCOMPARE(info.identifier(), QStringLiteral("other"));
    QCOMPARE(info.getXMLFromWorkspace()->document_element().name(), "other");
}

void tst_PluginSettingsInfo::nilWorkspaceBecomesTheDefaultOne()
{
    putTemplates();
    put(at("bundle/product.id"), "flipper");
    setDefaultBundlePath(at("bundle"));
    PluginSettingsInfo info = this->info();
    info.setWorkSpace(QString());
    QVERIFY(info.loadWorkspace());
    const QString expected = at("share/Harborlight/flipper_resource/Plugin/Save/linklist");
    QCOMPARE(info.workSpace(), expected);
    QCOMPARE(get(expected + QStringLiteral("/index.html")), QByteArray("page"));
}

void tst_PluginSettingsInfo::resetMergesHtmlAndData()
{
    putTemplates();
    put(at("bundle/html/assets/a"), "1");
    put(at("bundle/data/assets/b"), "2");
    put(at("bundle/other/c"), "no template");
    QVERIFY(info().resetWorkspace());
    const QMap<QString, QByteArray> expected{{QStringLiteral("assets"), "<folder>"},
                                             {QStringLiteral("assets/a"), "1"},
                                             {QStringLiteral("assets/b"), "2"},
                                             {QStringLiteral("book.swf"), "movie"},
                                             {QStringLiteral("defaultsettings.dat"), "10\n26\n60\n26\n0\n1"},
                                             {QStringLiteral("index.html"), "page"},
                                             {QStringLiteral("js"), "<folder>"},
                                             {QStringLiteral("js/player.js"), "script"},
                                             {QStringLiteral("linklist.swf"), "movie"},
                                             {QStringLiteral("linklist.xml"), "<info/>"}};
    QCOMPARE(tree(at("ws")), expected);
}

void tst_PluginSettingsInfo::resetLetsHtmlWinOverData()
{
    put(at("bundle/html/same"), "html");
    put(at("bundle/data/same"), "data");
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("ws/same")), QByteArray("html"));
}

void tst_PluginSettingsInfo::resetDeletesWhatWasThere()
{
    putTemplates();
    put(at("ws/.hidden/deep/file"), "old");
    put(at("ws/linklist.xml"), "<mine/>");
    put(at("ws/settings.dat"), "old");
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("<info/>"));
    QVERIFY(!File::exists(at("ws/settings.dat")));
    QVERIFY(!File::exists(at("ws/.hidden")));
}

void tst_PluginSettingsInfo::resetMakesMissingParents()
{
    putTemplates();
    PluginSettingsInfo info = this->info();
    info.setWorkSpace(at("a/b c/é/ws"));
    QVERIFY(info.resetWorkspace());
    QCOMPARE(get(at("a/b c/é/ws/index.html")), QByteArray("page"));
}

void tst_PluginSettingsInfo::resetLeavesHiddenEntriesOutAtTheTopAlone()
{
    put(at("bundle/html/.hidden"), "x");
    put(at("bundle/html/.folder/file"), "x");
    put(at("bundle/html/sub/.hidden"), "kept");
    put(at("bundle/data/.DS_Store"), "x");
    put(at("bundle/data/sub/.folder/file"), "kept");
    QVERIFY(info().resetWorkspace());
    const QMap<QString, QByteArray> expected{{QStringLiteral("sub"), "<folder>"},
                                             {QStringLiteral("sub/.hidden"), "kept"},
                                             {QStringLiteral("sub/.folder"), "<folder>"},
                                             {QStringLiteral("sub/.folder/file"), "kept"}};
    QCOMPARE(tree(at("ws")), expected);
}

void tst_PluginSettingsInfo::resetCopiesTheMovie()
{
    putTemplates();
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("ws/book.swf")), QByteArray("movie"));
    QCOMPARE(get(at("ws/linklist.swf")), QByteArray("movie"));
}

void tst_PluginSettingsInfo::resetCopiesTheMovieOfTheIdentifier()
{
    putTemplates();
    put(at("bundle/html/other.swf"), "other movie");
    PluginSettingsInfo info = this->info();
    info.setIdentifier(QStringLiteral("other"));
    QVERIFY(info.resetWorkspace());
    QCOMPARE(get(at("ws/book.swf")), QByteArray("other movie"));
    info.setIdentifier(QStringLiteral("none"));
    QVERIFY(info.resetWorkspace());
    QVERIFY(!File::exists(at("ws/book.swf")));
}

void tst_PluginSettingsInfo::resetNeverReplacesABookOfTheTemplate()
{
    putTemplates();
    put(at("bundle/html/book.swf"), "the template's");
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("ws/book.swf")), QByteArray("the template's"));
}

void tst_PluginSettingsInfo::resetWithoutTemplatesMakesAnEmptyWorkspace()
{
    QVERIFY(QDir().mkpath(at("bundle")));
    QVERIFY(info().resetWorkspace());
    QVERIFY(QFileInfo(at("ws")).isDir());
    QVERIFY(tree(at("ws")).isEmpty());
}

void tst_PluginSettingsInfo::resetTakesTheMainBundleWhenThereIsNoBundle()
{
    const QString program = at("application/program");
    QVERIFY(QDir().mkpath(at("application")));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    put(at("application/html/index.html"), "the application's");
    QCOMPARE(QProcess::execute(program, {QStringLiteral("--reset"), at("none"), at("ws")}), 0);
    QCOMPARE(get(at("ws/index.html")), QByteArray("the application's"));
    putTemplates();
    QCOMPARE(QProcess::execute(program, {QStringLiteral("--reset"), at("bundle"), at("ws")}), 0);
    QCOMPARE(get(at("ws/index.html")), QByteArray("page"));
}

void tst_PluginSettingsInfo::resetFindsResourcesInContents()
{
    put(at("bundle/Contents/Resources/html/index.html"), "page");
    put(at("bundle/html/index.html"), "no resource");
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("ws/index.html")), QByteArray("page"));
}

void tst_PluginSettingsInfo::resetLeavesTheTargetsOfLinksAlone()
{
    putTemplates();
    put(at("outside/file"), "kept");
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(QFile::link(at("outside"), at("ws/link")));
    QVERIFY(QFile::link(at("outside/file"), at("ws/index.html")));
    QVERIFY(QFile::link(at("outside"), at("bundle/html/link")));
    QVERIFY(info().resetWorkspace());
    QCOMPARE(get(at("outside/file")), QByteArray("kept"));
    QCOMPARE(tree(at("outside")).size(), 1);
    QCOMPARE(get(at("ws/index.html")), QByteArray("page"));
    QVERIFY(QFileInfo(at("ws/link")).isSymLink());

    QVERIFY(QFile::link(at("outside"), at("linked workspace")));
    PluginSettingsInfo linked = info();
    linked.setWorkSpace(at("linked workspace"));
    linked.resetWorkspace();
    QCOMPARE(get(at("outside/file")), QByteArray("kept"));
}

void tst_PluginSettingsInfo::loadMakesAMissingWorkspace()
{
    putTemplates();
    put(at("bundle/html/.hidden"), "x");
    QVERIFY(info().loadWorkspace());
    QCOMPARE(get(at("ws/index.html")), QByteArray("page"));
    QCOMPARE(get(at("ws/book.swf")), QByteArray("movie"));
    QVERIFY(!File::exists(at("ws/.hidden")));
}

void tst_PluginSettingsInfo::loadKeepsAChangedDocumentAndRestoresADeletedFile()
{
    putTemplates();
    QVERIFY(info().resetWorkspace());
    put(at("ws/linklist.xml"), "<info>mine</info>");
    put(at("ws/added"), "mine");
    QVERIFY(QFile::remove(at("ws/js/player.js")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("<info>mine</info>"));
    QCOMPARE(get(at("ws/added")), QByteArray("mine"));
    QCOMPARE(get(at("ws/js/player.js")), QByteArray("script"));
}

void tst_PluginSettingsInfo::loadBringsHiddenEntriesBack()
{
    put(at("bundle/html/.hidden"), "x");
    put(at("bundle/data/.folder/.file"), "y");
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(get(at("ws/.hidden")), QByteArray("x"));
    QCOMPARE(get(at("ws/.folder/.file")), QByteArray("y"));
}

void tst_PluginSettingsInfo::loadRestoresFoldersAndEmptyOnes()
{
    putTemplates();
    QVERIFY(QDir().mkpath(at("bundle/html/empty/deeper")));
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(info().loadWorkspace());
    QVERIFY(QFileInfo(at("ws/empty/deeper")).isDir());
    QCOMPARE(get(at("ws/js/player.js")), QByteArray("script"));
}

void tst_PluginSettingsInfo::loadLeavesAFileWhereTheTemplateHasAFolder()
{
    putTemplates();
    put(at("ws/js"), "a file");
    QVERIFY(QDir().mkpath(at("ws/index.html")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(get(at("ws/js")), QByteArray("a file"));
    QVERIFY(QFileInfo(at("ws/index.html")).isDir());
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("<info/>"));
}

void tst_PluginSettingsInfo::loadLeavesADanglingLinkInItsPlace()
{
    putTemplates();
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(QFile::link(at("nowhere"), at("ws/index.html")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(QFileInfo(at("ws/index.html")).symLinkTarget(), at("nowhere"));
    QVERIFY(!File::exists(at("nowhere")));
}

void tst_PluginSettingsInfo::loadWritesNothingThroughALink()
{
    putTemplates();
    put(at("outside/file"), "kept");
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(QFile::link(at("outside"), at("ws/js")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(tree(at("outside")), (QMap<QString, QByteArray>{{QStringLiteral("file"), "kept"}}));
    QVERIFY(QFileInfo(at("ws/js")).isSymLink());
}

void tst_PluginSettingsInfo::loadCopiesLinksAsLinks()
{
    put(at("outside/secret"), "x");
    put(at("bundle/html/file"), "1");
    QVERIFY(QFile::link(at("outside"), at("bundle/html/folder link")));
    QVERIFY(QFile::link(at("nowhere"), at("bundle/html/dangling")));
    QVERIFY(QDir().mkpath(at("ws")));
    QVERIFY(info().loadWorkspace());
    QCOMPARE(tree(at("ws")), tree(at("bundle/html")));
    QCOMPARE(tree(at("ws")).size(), 3);
}

void tst_PluginSettingsInfo::loadNeverRemakesTheMovie()
{
    putTemplates();
    QVERIFY(info().resetWorkspace());
    QVERIFY(QFile::remove(at("ws/book.swf")));
    QVERIFY(info().loadWorkspace());
    QVERIFY(!File::exists(at("ws/book.swf")));
}

void tst_PluginSettingsInfo::namesMayHoldAnything()
{
    const QStringList names{
        QStringLiteral("line\nfeed"),  QStringLiteral("é 本 😀"),     QStringLiteral("e\u0301 combined"),
        QStringLiteral("%1 %2"),       QStringLiteral(" blank "),    QStringLiteral("quote\"'"),
        QStringLiteral("back\\slash"), QStringLiteral("*?[a]"),      QStringLiteral("~"),
        QStringLiteral("a:b"),         QStringLiteral("#frag?query")};
    for (const QString &name : names)
        put(at("bundle/html/") + name + u'/' + name, name.toUtf8());
    PluginSettingsInfo info = this->info();
    info.setWorkSpace(at("w\ns é %1"));
    QVERIFY(info.resetWorkspace());
    for (const QString &name : names)
        QCOMPARE(get(at("w\ns é %1/") + name + u'/' + name), name.toUtf8());
    const auto whole = tree(at("w\ns é %1"));
    QVERIFY(QFile::remove(at("w\ns é %1/") + names[0] + u'/' + names[0]));
    QVERIFY(info.loadWorkspace());
    QCOMPARE(tree(at("w\ns é %1")), whole);
    QVERIFY(info.convertPluginToPath(at("b\nook/é")));
    QCOMPARE(tree(at("b\nook/é")), whole);
}

void tst_PluginSettingsInfo::refusedWorkspaceIsLeftAlone_data()
{
    QTest::addColumn<QString>("workSpace");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("dot") << QStringLiteral(".");
    QTest::newRow("relative") << QStringLiteral("ws");
    QTest::newRow("parent") << QStringLiteral("..");
}

void tst_PluginSettingsInfo::refusedWorkspaceIsLeftAlone()
{
    QFETCH(QString, workSpace);
    putTemplates();
    put(at("here/ws/linklist.xml"), "<mine/>");
    put(at("here/linklist.xml"), "<mine/>");
    put(at("linklist.xml"), "<mine/>");
    const auto before = tree(m_folder->path());
    const QString home = QDir::currentPath();
    QVERIFY(QDir::setCurrent(at("here")));
    PluginSettingsInfo info = this->info();
    info.setWorkSpace(workSpace);
    const bool reset = info.resetWorkspace();
    const bool converted = info.convertPluginToPath(at("book"));
    const bool read = info.getXMLFromWorkspace() != nullptr;
    const bool loaded = !workSpace.isNull() && info.loadWorkspace();
    QVERIFY(QDir::setCurrent(home));
    QVERIFY(!reset);
    QVERIFY(!converted);
    QVERIFY(!read);
    QVERIFY(!loaded);
    QCOMPARE(tree(m_folder->path()), before);
}

void tst_PluginSettingsInfo::workspaceThatIsAFileIsLeftAlone()
{
    putTemplates();
    put(at("ws"), "a person's file");
    QVERIFY(!info().convertPluginToPath(at("book")));
    QVERIFY(!info().getXMLFromWorkspace());
    const bool loaded = info().loadWorkspace();
    QCOMPARE(get(at("ws")), QByteArray("a person's file"));
    QVERIFY(!loaded);
    const bool reset = info().resetWorkspace();
    QCOMPARE(get(at("ws")), QByteArray("a person's file"));
    QVERIFY(!reset);
    QVERIFY(!File::exists(at("book")));
}

void tst_PluginSettingsInfo::documentIsParsedAfresh()
{
    put(at("ws/linklist.xml"), "<info><a type=\"text\">é</a></info>");
    PluginSettingsInfo info = this->info();
    const auto first = info.getXMLFromWorkspace();
    QVERIFY(first);
    QCOMPARE(first->document_element().child("a").text().get(), "é");
    first->document_element().remove_children();
    QVERIFY(info.getXMLFromWorkspace()->document_element().child("a"));
    put(at("ws/linklist.xml"), "<other/>");
    QCOMPARE(info.getXMLFromWorkspace()->document_element().name(), "other");
    QCOMPARE(get(at("ws/linklist.xml")), QByteArray("<other/>"));
}

void tst_PluginSettingsInfo::documentWithAMarkOrADeclarationIsRead()
{
    put(at("ws/linklist.xml"),
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- mine -->\r\n<info/>\r\n");
    const auto document = info().getXMLFromWorkspace();
    QVERIFY(document);
    QCOMPARE(document->document_element().name(), "info");
}

void tst_PluginSettingsInfo::noDocument_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("blank") << QByteArray(" \n ");
    QTest::newRow("text") << QByteArray("hello");
    QTest::newRow("declaration alone") << QByteArray("<?xml version=\"1.0\"?>");
    QTest::newRow("cut off") << QByteArray("<info><a type=\"text\">x</a>");
    QTest::newRow("wrong end") << QByteArray("<info></inf>");
    QTest::newRow("two roots") << QByteArray("<info/><info/>");
    QTest::newRow("text after the root") << QByteArray("<info/>x");
    QTest::newRow("text before the root") << QByteArray("x<info/>");
    QTest::newRow("not UTF-8") << QByteArray("<info>\xC3\x28</info>");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE<\0i\0/\0>\0", 10);
    QTest::newRow("unknown entity") << QByteArray("<info>&nbsp;</info>");
    QTest::newRow("attribute twice") << QByteArray("<info a=\"1\" a=\"2\"/>");
    QTest::newRow("bare ampersand") << QByteArray("<info>a & b</info>");
    QTest::newRow("forbidden character") << QByteArray("<info>\x01</info>");
    QTest::newRow("257 levels") << QByteArray("<a>").repeated(257) + QByteArray("</a>").repeated(257);
}

void tst_PluginSettingsInfo::noDocument()
{
    QFETCH(QByteArray, content);
    QVERIFY(QDir().mkpath(at("ws")));
    if (!content.isNull())
        put(at("ws/linklist.xml"), content);
    QVERIFY(!info().getXMLFromWorkspace());
    put(at("ws/linklist.xml"), QByteArray("<a>").repeated(256) + QByteArray("</a>").repeated(256));
    QVERIFY(info().getXMLFromWorkspace());
}

void tst_PluginSettingsInfo::documentThatIsAFolderIsNone()
{
    QVERIFY(QDir().mkpath(at("ws/linklist.xml")));
    QVERIFY(!info().getXMLFromWorkspace());
}

void tst_PluginSettingsInfo::convertCopiesTheWorkspaceWithoutHiddenEntriesAtTheTop()
{
    put(at("ws/a"), "1");
    put(at("ws/sub/.b"), "2");
    put(at("ws/.hidden"), "x");
    put(at("ws/.folder/c"), "x");
    QVERIFY(QDir().mkpath(at("ws/empty")));
    QVERIFY(info().convertPluginToPath(at("books/new/plugin")));
    const QMap<QString, QByteArray> expected{{QStringLiteral("a"), "1"},
                                             {QStringLiteral("sub"), "<folder>"},
                                             {QStringLiteral("sub/.b"), "2"},
                                             {QStringLiteral("empty"), "<folder>"}};
    QCOMPARE(tree(at("books/new/plugin")), expected);
    QVERIFY(File::exists(at("ws/.hidden")));
}

void tst_PluginSettingsInfo::convertReplacesTheDestination()
{
    put(at("ws/a"), "new");
    put(at("book/a"), "old");
    put(at("book/gone/.deep"), "old");
    QVERIFY(info().convertPluginToPath(at("book")));
    QCOMPARE(tree(at("book")), (QMap<QString, QByteArray>{{QStringLiteral("a"), "new"}}));
}

void tst_PluginSettingsInfo::convertReplacesAFile()
{
    put(at("ws/a"), "new");
    put(at("book"), "a file");
    QVERIFY(info().convertPluginToPath(at("book")));
    QCOMPARE(get(at("book/a")), QByteArray("new"));
}

void tst_PluginSettingsInfo::convertReplacesALinkAndLeavesItsTarget()
{
    put(at("ws/a"), "new");
    put(at("outside/file"), "kept");
    QVERIFY(QFile::link(at("outside"), at("book")));
    QVERIFY(info().convertPluginToPath(at("book")));
    QCOMPARE(tree(at("outside")), (QMap<QString, QByteArray>{{QStringLiteral("file"), "kept"}}));
    QVERIFY(!QFileInfo(at("book")).isSymLink());
    QCOMPARE(get(at("book/a")), QByteArray("new"));
}

void tst_PluginSettingsInfo::convertWithoutAWorkspaceTouchesNothing()
{
    put(at("book/a"), "old");
    QVERIFY(!info().convertPluginToPath(at("book")));
    QVERIFY(!info().convertPluginToPath(at("other")));
    QCOMPARE(tree(m_folder->path()).size(), 2);
}

void tst_PluginSettingsInfo::convertCopiesLinksAsLinks()
{
    put(at("outside/secret"), "x");
    put(at("ws/a"), "1");
    QVERIFY(QFile::link(at("outside"), at("ws/folder link")));
    QVERIFY(QFile::link(at("outside/secret"), at("ws/file link")));
    QVERIFY(QFile::link(at("nowhere"), at("ws/dangling")));
    QVERIFY(QFile::link(at("ws"), at("ws/loop")));
    QVERIFY(info().convertPluginToPath(at("book")));
    QCOMPARE(tree(at("book")), tree(at("ws")));
    QCOMPARE(tree(at("book")).size(), 5);
}

void tst_PluginSettingsInfo::convertIsNotFooledByASimilarName()
{
    put(at("ws/a"), "1");
    QVERIFY(info().convertPluginToPath(at("ws2")));
    QVERIFY(info().convertPluginToPath(at("w")));
    QVERIFY(info().convertPluginToPath(at("ws/../ws3")));
    QCOMPARE(get(at("ws2/a")), QByteArray("1"));
    QCOMPARE(get(at("w/a")), QByteArray("1"));
    QCOMPARE(get(at("ws3/a")), QByteArray("1"));
}

// Each path is told from the test's folder, which holds "ws" inside "parent" and links to all of them.
void tst_PluginSettingsInfo::convertRefuses_data()
{
    QTest::addColumn<QString>("destination");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("relative") << QStringLiteral("book");
    QTest::newRow("current folder") << QStringLiteral(".");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("the workspace") << QStringLiteral("%/parent/ws");
    QTest::newRow("the workspace, with a separator") << QStringLiteral("%/parent/ws/");
    QTest::newRow("the workspace, doubled separators") << QStringLiteral("%/parent//ws//");
    QTest::newRow("the workspace told otherwise") << QStringLiteral("%/parent/ws/sub/..");
    QTest::newRow("the workspace with a dot") << QStringLiteral("%/parent/./ws/.");
    QTest::newRow("holds it") << QStringLiteral("%/parent");
    QTest::newRow("holds it further up") << QStringLiteral("%");
    QTest::newRow("holds it, told otherwise") << QStringLiteral("%/parent/ws/..");
    QTest::newRow("inside it") << QStringLiteral("%/parent/ws/book");
    QTest::newRow("inside it, existing") << QStringLiteral("%/parent/ws/sub");
    QTest::newRow("deep inside it, missing") << QStringLiteral("%/parent/ws/new/deeper/book");
    QTest::newRow("link to the workspace") << QStringLiteral("%/to workspace");
    QTest::newRow("through a link to the workspace") << QStringLiteral("%/to workspace/sub");
    QTest::newRow("through a link, missing") << QStringLiteral("%/to workspace/new/deeper");
    QTest::newRow("workspace through a link to its parent") << QStringLiteral("%/to parent/ws");
    QTest::newRow("inside through a link to its parent") << QStringLiteral("%/to parent/ws/new");
    QTest::newRow("link to its parent") << QStringLiteral("%/to parent");
    QTest::newRow("link to what lies inside") << QStringLiteral("%/to sub");
    QTest::newRow("link to a link") << QStringLiteral("%/to link/new");
}

void tst_PluginSettingsInfo::convertRefuses()
{
    QFETCH(QString, destination);
    put(at("parent/ws/a"), "1");
    put(at("parent/ws/sub/b"), "2");
    put(at("parent/other"), "3");
    QVERIFY(QFile::link(at("parent/ws"), at("to workspace")));
    QVERIFY(QFile::link(at("parent"), at("to parent")));
    QVERIFY(QFile::link(at("parent/ws/sub"), at("to sub")));
    QVERIFY(QFile::link(at("to workspace"), at("to link")));
    const auto before = tree(m_folder->path());
    destination.replace(u'%', m_folder->path());
    const QString home = QDir::currentPath();
    QVERIFY(QDir::setCurrent(at("parent")));
    QList<bool> results;
    for (const char *workSpace : {"parent/ws", "parent/ws/", "to workspace", "to parent/ws", "to link"}) {
        PluginSettingsInfo info;
        info.setWorkSpace(at(workSpace));
        results << info.convertPluginToPath(destination);
    }
    QVERIFY(QDir::setCurrent(home));
    QCOMPARE(tree(m_folder->path()), before);
    QCOMPARE(results, QList<bool>(5, false));
}

void tst_PluginSettingsInfo::copyLeavesExistingFilesAlone()
{
    put(at("from/a"), "new");
    put(at("from/sub/b"), "new");
    put(at("from/sub/c"), "new");
    put(at("to/a"), "old");
    put(at("to/sub/b"), "old");
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), false);
    QCOMPARE(get(at("to/a")), QByteArray("old"));
    QCOMPARE(get(at("to/sub/b")), QByteArray("old"));
    QCOMPARE(get(at("to/sub/c")), QByteArray("new"));
}

void tst_PluginSettingsInfo::copyLeavesHiddenEntriesOutByTheFirstCharacterAlone()
{
    put(at("from/.a"), "x");
    put(at("from/.sub/b"), "x");
    put(at("from/sub/.c"), "kept");
    put(at("from/sub/.d/.e"), "kept");
    put(at("from/f."), "kept");
    QVERIFY(QDir().mkpath(at("to")));
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), false);
    QCOMPARE(tree(at("to")).keys(),
             (QStringList{QStringLiteral("f."), QStringLiteral("sub"), QStringLiteral("sub/.c"),
                          QStringLiteral("sub/.d"), QStringLiteral("sub/.d/.e")}));
}

void tst_PluginSettingsInfo::copyTakesHiddenEntriesWhenAsked()
{
    put(at("from/.a"), "1");
    put(at("from/.sub/b"), "2");
    QVERIFY(QDir().mkpath(at("to")));
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), true);
    QCOMPARE(tree(at("to")), tree(at("from")));
    QCOMPARE(tree(at("to")).size(), 3);
}

void tst_PluginSettingsInfo::copyOfAMissingFolderDoesNothing()
{
    put(at("to/a"), "old");
    PluginSettingsInfo::copyFromPath(at("none"), at("to"), true);
    PluginSettingsInfo::copyFromPath(at("to/a"), at("to"), true);
    QCOMPARE(tree(m_folder->path()).size(), 2);
}

void tst_PluginSettingsInfo::copyFollowsNoLink()
{
    put(at("outside/secret"), "x");
    QVERIFY(QDir().mkpath(at("from")));
    QVERIFY(QDir().mkpath(at("to")));
    QVERIFY(QFile::link(at("outside"), at("from/folder")));
    QVERIFY(QFile::link(at("outside/secret"), at("from/file")));
    QVERIFY(QFile::link(at("from"), at("from/loop")));
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), false);
    QCOMPARE(tree(at("to")), tree(at("from")));
    QVERIFY(QFileInfo(at("to/folder")).isSymLink());
}

void tst_PluginSettingsInfo::copyWritesNothingThroughALink()
{
    put(at("from/sub/a"), "new");
    put(at("from/file"), "new");
    put(at("outside/kept"), "kept");
    QVERIFY(QDir().mkpath(at("to")));
    QVERIFY(QFile::link(at("outside"), at("to/sub")));
    QVERIFY(QFile::link(at("outside/kept"), at("to/file")));
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), false);
    QCOMPARE(tree(at("outside")), (QMap<QString, QByteArray>{{QStringLiteral("kept"), "kept"}}));
}

void tst_PluginSettingsInfo::copyGoesOnAfterWhatCannotBeCopied()
{
    put(at("from/a/b"), "x");
    put(at("from/z"), "kept");
    put(at("to/a"), "a file in the folder's place");
    PluginSettingsInfo::copyFromPath(at("from"), at("to"), false);
    QCOMPARE(get(at("to/a")), QByteArray("a file in the folder's place"));
    QCOMPARE(get(at("to/z")), QByteArray("kept"));
}

void tst_PluginSettingsInfo::copyRefusesPathsThatMeanTheCurrentFolder()
{
    put(at("here/a"), "1");
    QVERIFY(QDir().mkpath(at("to")));
    const QString home = QDir::currentPath();
    QVERIFY(QDir::setCurrent(at("here")));
    const QStringList refused{QString(), QStringLiteral(""), QStringLiteral(".")};
    for (const QString &path : refused) {
        PluginSettingsInfo::copyFromPath(path, at("to"), true);
        PluginSettingsInfo::copyFromPath(at("to"), path, true);
    }
    QVERIFY(QDir::setCurrent(home));
    QVERIFY(tree(at("to")).isEmpty());
    QCOMPARE(tree(at("here")).size(), 1);
}

// A copy of this program stands for a host's application: its own folder is the main bundle.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--print-save-path")) {
        setDefaultBundlePath(arguments.value(2));
        std::fputs(PluginSettingsInfo::getSavePluginPath().toUtf8().constData(), stdout);
        return 0;
    }
    if (arguments.value(1) == QLatin1String("--reset")) {
        PluginSettingsInfo info;
        info.setBundlePath(arguments.value(2));
        info.setWorkSpace(arguments.value(3));
        return info.resetWorkspace() ? 0 : 1;
    }
    tst_PluginSettingsInfo test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_PluginSettingsInfo.moc"
