#include "Classes/Delegate/WorkspaceBackup.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/OrdinaryRights.h"
#include "tests/support/TestCase.h"

#include <QFileInfo>
#include <sys/stat.h>

using Fixtures::put;
using Fixtures::tree;

class tst_WorkspaceBackup : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void undoBringsBackEverything();
    void createEmptiesWhatIsThereAndClosesItToOthers();
    void saveWithoutAFolderCopiesNothing();
    void whatCouldNotBeCopiedStaysInTheWorkspace();
    void workspaceThatIsALinkKeepsItsTarget();
    void clearIfEmptyKeepsABackup();
    void undoWithoutBackupLeavesTheWorkspace();
    void undoIntoAFileLeavesTheFile();
    void unreadableFolderStaysInTheWorkspace();
    void backupInsideTheWorkspaceIsNone();
    void otherWorkspaceIsLeftAlone();
    void foldersKeepTheirPermissions();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    WorkspaceBackup backup() const
    {
        WorkspaceBackup result;
        result.setPath(at("backup"));
        return result;
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WorkspaceBackup::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    put(at("ws/a"), "one");
    put(at("ws/.hidden/b"), "two");
    put(at("ws/line\nfeed/caf\xC3\xA9"), "three");
    QVERIFY(QFile::link(QStringLiteral("/nowhere"), at("ws/link")));
}

void tst_WorkspaceBackup::undoBringsBackEverything()
{
    const auto before = tree(at("ws"));
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("ws")));
    QCOMPARE(tree(at("backup")), before);
    put(at("ws/a"), "changed");
    QVERIFY(File::removeAll(at("ws/.hidden")));
    put(at("ws/new/file"), "x");
    QVERIFY(QFile::remove(at("ws/link")));
    put(at("ws/link"), "a file now");
    QVERIFY(backup.undo(at("ws")));
    QCOMPARE(tree(at("ws")), before);
    QVERIFY(!File::exists(at("backup")));
}

void tst_WorkspaceBackup::createEmptiesWhatIsThereAndClosesItToOthers()
{
    put(at("backup/of another session"), "x");
    QVERIFY(backup().create());
    QVERIFY(tree(at("backup")).isEmpty());
    QCOMPARE(QFile::permissions(at("backup")) & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
             QFile::Permissions());
}

void tst_WorkspaceBackup::saveWithoutAFolderCopiesNothing()
{
    QVERIFY(!backup().save(at("ws")));
    QVERIFY(!File::exists(at("backup")));
}

void tst_WorkspaceBackup::whatCouldNotBeCopiedStaysInTheWorkspace()
{
    put(at("ws/folder/file"), "copied");
    QCOMPARE(mkfifo(qPrintable(at("ws/folder/pipe")), 0600), 0);
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(!backup.save(at("ws")));
    put(at("ws/folder/file"), "changed");
    put(at("ws/folder/new"), "x");
    QVERIFY(backup.undo(at("ws")));
    QVERIFY(File::exists(at("ws/folder/pipe")));
    QCOMPARE(Fixtures::get(at("ws/folder/file")), QByteArray("copied"));
    QVERIFY(!File::exists(at("ws/folder/new")));
    QVERIFY(QFile::remove(at("ws/folder/pipe")));
}

void tst_WorkspaceBackup::workspaceThatIsALinkKeepsItsTarget()
{
    QVERIFY(QFile::link(at("ws"), at("linked")));
    const auto before = tree(at("ws"));
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("linked")));
    put(at("ws/a"), "changed");
    QVERIFY(backup.undo(at("linked")));
    QVERIFY(QFileInfo(at("linked")).isSymLink());
    QCOMPARE(tree(at("ws")), before);
}

void tst_WorkspaceBackup::clearIfEmptyKeepsABackup()
{
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("ws")));
    backup.clearIfEmpty();
    QVERIFY(File::exists(at("backup/a")));
    QVERIFY(backup.clear());
    QVERIFY(backup.create());
    backup.clearIfEmpty();
    QVERIFY(!File::exists(at("backup")));
}

void tst_WorkspaceBackup::undoWithoutBackupLeavesTheWorkspace()
{
    const auto before = tree(at("ws"));
    QVERIFY(!backup().undo(at("ws")));
    QCOMPARE(tree(at("ws")), before);
}

void tst_WorkspaceBackup::undoIntoAFileLeavesTheFile()
{
    put(at("file"), "mine");
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("file")));
    QVERIFY(!backup.undo(at("file")));
    QCOMPARE(Fixtures::get(at("file")), QByteArray("mine"));
    QVERIFY(!File::exists(at("backup")));
}

void tst_WorkspaceBackup::unreadableFolderStaysInTheWorkspace()
{
    put(at("ws/closed/z"), "mine");
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    {
        const OrdinaryRights rights;
        QVERIFY(QFile::setPermissions(at("ws/closed"), QFile::Permissions()));
        QVERIFY(!backup.save(at("ws")));
    }
    QVERIFY(QFile::setPermissions(at("ws/closed"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    put(at("ws/a"), "changed");
    QVERIFY(backup.undo(at("ws")));
    QCOMPARE(Fixtures::get(at("ws/a")), QByteArray("one"));
    QCOMPARE(Fixtures::get(at("ws/closed/z")), QByteArray("mine"));
}

void tst_WorkspaceBackup::backupInsideTheWorkspaceIsNone()
{
    const auto before = tree(at("ws"));
    WorkspaceBackup backup;
    backup.setPath(at("ws/tmp"));
    QVERIFY(backup.create());
    QVERIFY(!backup.save(at("ws")));
    QVERIFY(!backup.undo(at("ws")));
    QCOMPARE(tree(at("ws")), before);
}

void tst_WorkspaceBackup::otherWorkspaceIsLeftAlone()
{
    put(at("other/mine"), "kept");
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("ws")));
    QVERIFY(!backup.undo(at("other")));
    QCOMPARE(Fixtures::get(at("other/mine")), QByteArray("kept"));
    QVERIFY(File::exists(at("backup/a")));
}

void tst_WorkspaceBackup::foldersKeepTheirPermissions()
{
    const auto closed = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QVERIFY(QFile::setPermissions(at("ws/.hidden"), closed));
    WorkspaceBackup backup = this->backup();
    QVERIFY(backup.create());
    QVERIFY(backup.save(at("ws")));
    QVERIFY(backup.undo(at("ws")));
    QCOMPARE(QFile::permissions(at("ws/.hidden")) & (QFile::ReadOther | QFile::ExeOther | QFile::ReadGroup),
             QFile::Permissions());
}

LINKLIST_TEST_MAIN(tst_WorkspaceBackup)
#include "tst_WorkspaceBackup.moc"
