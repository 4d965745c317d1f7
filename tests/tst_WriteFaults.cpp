#include "Classes/Delegate/PluginSettingsInfo.h"
#include "linklist/LinkListDocument.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Every write of the model on a full disk and in a folder that refuses it. The disk is a small one in memory,
// mounted for a child process alone; the folder is tried by a child process that is an ordinary user.

using Fixtures::get;
using Fixtures::tree;

namespace
{

using Tree = QMap<QString, QByteArray>;

constexpr char forbidden[] = "this system lets nobody here mount a disk: ";
constexpr uid_t nobody = 65534;
constexpr qint64 blockSize = 4096;

// Runs `work` in a forked child, which may give up its rights and its view of the disk, and answers what it
// answers: an empty text when all is well.
QByteArray inChild(const std::function<QByteArray()> &work)
{
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    const pid_t child = fork();
    if (child < 0)
        return "no child process";
    if (child == 0) {
        close(ends[0]);
        const QByteArray answer = work();
        const bool told = ::write(ends[1], answer.constData(), size_t(answer.size())) == answer.size();
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    QByteArray answer;
    char buffer[4096];
    for (ssize_t count; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, count);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "the child process ended with status " + QByteArray::number(status) + ' ' + answer;
    return answer;
}

bool putLine(const char *path, const QByteArray &line)
{
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool done = file >= 0 && ::write(file, line.constData(), size_t(line.size())) == line.size();
    close(file);
    return done;
}

// Why there is no disk: what the system forbids begins with `forbidden`, anything else is a failure.
QByteArray mountProblem(const char *what)
{
    const bool isForbidden = errno == EPERM || errno == EACCES || errno == ENOSYS || errno == ENOSPC;
    return QByteArray(isForbidden ? forbidden : "cannot mount a disk: ") + what + ", " + std::strerror(errno);
}

// A disk of that many KiB at the folder, for this process alone.
QByteArray mountDisk(const QString &folder, int kibibytes, int files)
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return mountProblem("namespace");
        if (!putLine("/proc/self/setgroups", "deny")
            || !putLine("/proc/self/uid_map", "0 " + QByteArray::number(user) + " 1")
            || !putLine("/proc/self/gid_map", "0 " + QByteArray::number(group) + " 1"))
            return mountProblem("user");
    }
    const QByteArray options
        = "mode=755,size=" + QByteArray::number(kibibytes) + "k,nr_inodes=" + QByteArray::number(files);
    // In a changed root "/" is no mount of its own and cannot be made private: the parent unmounts what it
    // sees.
    if ((mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 && errno != EINVAL)
        || mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, options.constData()) != 0)
        return mountProblem("mount");
    return QByteArray();
}

// Fills the disk that holds the folder but for that many blocks.
QByteArray fillDisk(const QString &folder, int blocksLeft)
{
    const QByteArray name = QFile::encodeName(folder + QStringLiteral("/filler"));
    const int file = open(name.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0)
        return QByteArray("no filler: ") + std::strerror(errno);
    const QByteArray block(blockSize, 'f');
    qint64 size = 0;
    while (::write(file, block.constData(), size_t(block.size())) == block.size())
        size += blockSize;
    const bool full = errno == ENOSPC && ftruncate(file, size - blocksLeft * blockSize) == 0;
    close(file);
    return full ? QByteArray() : QByteArray("the disk does not fill: ") + std::strerror(errno);
}

// Takes every file that the disk can still have.
QByteArray takeAllFiles(const QString &folder)
{
    for (int i = 0;; ++i) {
        const QByteArray name = QFile::encodeName(folder + QStringLiteral("/filler%1").arg(i));
        const int file = open(name.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (file < 0)
            return errno == ENOSPC ? QByteArray()
                                   : QByteArray("files do not run out: ") + std::strerror(errno);
        close(file);
    }
}

void freeDisk(const QString &folder)
{
    const QStringList fillers = QDir(folder).entryList({QStringLiteral("filler*")}, QDir::Files);
    for (const QString &filler : fillers)
        QFile::remove(folder + u'/' + filler);
}

// From root to a user without any rights.
QByteArray becomeNobody()
{
    if (geteuid() != 0)
        return QByteArray();
    if (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0 || geteuid() == 0)
        return QByteArray("still root: ") + std::strerror(errno);
    return QByteArray();
}

Tree withoutFillers(Tree entries)
{
    for (auto i = entries.begin(); i != entries.end();)
        i = i.key().contains(QLatin1String("filler")) ? entries.erase(i) : std::next(i);
    return entries;
}

QByteArray difference(const Tree &actual, const Tree &expected)
{
    QByteArray result;
    for (auto i = expected.begin(); i != expected.end(); ++i)
        if (!actual.contains(i.key()))
            result += "gone: " + i.key().toUtf8() + "; ";
        else if (actual[i.key()] != i.value())
            result += "changed: " + i.key().toUtf8() + " to " + QByteArray::number(actual[i.key()].size())
                + " bytes; ";
    for (auto i = actual.begin(); i != actual.end(); ++i)
        if (!expected.contains(i.key()))
            result += "left behind: " + i.key().toUtf8() + "; ";
    return result;
}

// Fine when each entry is whole as in `source`: nothing half copied and nothing of another name.
QByteArray halfCopies(const Tree &copy, const Tree &source)
{
    QByteArray result;
    for (auto i = copy.begin(); i != copy.end(); ++i)
        if (!source.contains(i.key()))
            result += "strange: " + i.key().toUtf8() + "; ";
        else if (source[i.key()] != i.value())
            result += "half: " + i.key().toUtf8() + ", " + QByteArray::number(i.value().size()) + " bytes; ";
    return result;
}

// The same as Fixtures::put, told instead of fatal: a child must answer.
QByteArray put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    const bool done = QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size() && file.flush();
    return done ? QByteArray() : "cannot prepare " + path.toUtf8();
}

QByteArray document(int items)
{
    QByteArray xml("<info><properties><extended><body><content>");
    for (int i = 0; i < items; ++i)
        xml += "<item><link type=\"text\">http://a.example/</link><title type=\"text\">title</title></item>";
    return xml + "</content></body></extended></properties></info>";
}

LinkListSettings manyLinks()
{
    LinkListSettings settings;
    for (int i = 0; i < 400; ++i)
        settings.items << LinkItem{QStringLiteral("new title"), QStringLiteral("http://b.example/")};
    return settings;
}

PluginSettingsInfo infoFor(const QString &workSpace, const QString &base)
{
    PluginSettingsInfo info;
    info.setWorkSpace(workSpace);
    info.setBundlePath(base + QStringLiteral("/bundle"));
    return info;
}

// One write that replaces a file in the workspace. `base` holds what lies outside the workspace.
struct Write {
    const char *name;
    std::function<bool(const QString &workSpace, const QString &base)> run;
};

const QList<Write> &writes()
{
    static const QList<Write> all{
        {"settings.dat",
         [](const QString &workSpace, const QString &) {
             PositionRect rect;
             rect.setLeft(12.5);
             return rect.saveToFile(workSpace + QStringLiteral("/settings.dat"));
         }},
        {"linklist.xml",
         [](const QString &workSpace, const QString &base) {
             return LinkListDocument::save(manyLinks(), workSpace + QStringLiteral("/linklist.xml"),
                                           base + QStringLiteral("/bundle/data/linklist.xml"))
                 == LinkListDocument::SaveResult::Saved;
         }},
        {"config.js",
         [](const QString &workSpace, const QString &base) {
             return infoFor(workSpace, base).generateJSConfig(QString());
         }},
        {"bookPlugin.js",
         [](const QString &workSpace, const QString &base) {
             return infoFor(workSpace, base).generateJSConfig(QStringLiteral("files/plugin"));
         }},
        {"a file copied into the workspace",
         [](const QString &workSpace, const QString &base) {
             return LinkListDocument::saveFile2Workspace(base + QStringLiteral("/outside/picture.png"),
                                                         workSpace);
         }},
    };
    return all;
}

QByteArray prepareOutside(const QString &base)
{
    QByteArray problem;
    problem += put(base + QStringLiteral("/bundle/html/index.html"), QByteArray(3 * blockSize + 100, 'p'));
    problem += put(base + QStringLiteral("/bundle/html/js/player.js"), QByteArray(5 * blockSize, 'j'));
    problem += put(base + QStringLiteral("/bundle/html/small"), "small");
    problem += put(base + QStringLiteral("/bundle/html/linklist.swf"), QByteArray(2 * blockSize, 'm'));
    problem += put(base + QStringLiteral("/bundle/data/linklist.xml"), document(1));
    problem += put(base + QStringLiteral("/bundle/data/defaultsettings.dat"), "1\n2\n3\n4\n5\n6");
    problem += put(base + QStringLiteral("/outside/picture.png"), QByteArray(6 * blockSize, 'n'));
    return problem;
}

QByteArray prepareWorkspace(const QString &workSpace, bool withOldFiles)
{
    QByteArray problem;
    problem += put(workSpace + QStringLiteral("/linklist.xml"), document(300));
    problem += put(workSpace + QStringLiteral("/defaultsettings.dat"), "10\n20\n30\n40\n25\n2");
    if (!withOldFiles)
        return problem;
    problem += put(workSpace + QStringLiteral("/settings.dat"), "10\n20\n30\n40\n25\n2");
    problem += put(workSpace + QStringLiteral("/config.js"), "old config");
    problem += put(workSpace + QStringLiteral("/bookPlugin.js"), "old published");
    problem += put(workSpace + QStringLiteral("/picture.png"), "old picture");
    return problem;
}

} // namespace

class tst_WriteFaults : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void theDiskIsReallyFull();
    void theFolderReallyRefuses();

    void fullDisk_data();
    void fullDisk();
    void copiesOntoAFullDiskAreWholeOrAbsent_data();
    void copiesOntoAFullDiskAreWholeOrAbsent();

    void readOnlyFolder_data();
    void readOnlyFolder();
    void readOnlyDestinationsTakeNothing();
    void unreadableFilesAreLeftOut();

    void whatAKilledProcessLeftIsNoData();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    // Runs `work` in a child that has a small disk of its own at "disk".
    QByteArray onSmallDisk(const std::function<QByteArray(const QString &disk)> &work, int kibibytes = 512,
                           int files = 100) const;
    // Makes everything in the test's folder belong to nobody, and lets nobody in.
    void giveToNobody() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

// Where the system forbids a disk of one's own even in a namespace of one's own, there is nothing to try.
#define VERIFY_CHILD(answer)                                                                                 \
    do {                                                                                                     \
        const QByteArray told = (answer);                                                                    \
        if (told.startsWith(forbidden))                                                                      \
            QSKIP(told.constData());                                                                         \
        QVERIFY2(told.isEmpty(), told.constData());                                                          \
    } while (false)

void tst_WriteFaults::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

QByteArray tst_WriteFaults::onSmallDisk(const std::function<QByteArray(const QString &)> &work, int kibibytes,
                                        int files) const
{
    const QString disk = at("disk");
    if (!QDir().mkpath(disk))
        return "no folder for the disk";
    const QByteArray answer = inChild([&] {
        const QByteArray problem = mountDisk(disk, kibibytes, files);
        return problem.isEmpty() ? work(disk) : problem;
    });
    umount2(QFile::encodeName(disk).constData(), MNT_DETACH); // nothing is there where the mount was private
    return answer;
}

void tst_WriteFaults::giveToNobody() const
{
    if (Fixtures::isOrdinaryUser())
        return;
    QStringList paths = File::subpaths(m_folder->path());
    for (QString &path : paths)
        path.prepend(m_folder->path() + u'/');
    paths << m_folder->path();
    for (const QString &path : std::as_const(paths))
        QCOMPARE(lchown(QFile::encodeName(path).constData(), nobody, nobody), 0);
}

void tst_WriteFaults::theDiskIsReallyFull()
{
    VERIFY_CHILD(onSmallDisk([](const QString &disk) -> QByteArray {
        if (const QByteArray problem = fillDisk(disk, 0); !problem.isEmpty())
            return problem;
        if (put(disk + QStringLiteral("/a"), "x").isEmpty())
            return "a byte still fits";
        freeDisk(disk);
        if (const QByteArray problem = put(disk + QStringLiteral("/a"), "x"); !problem.isEmpty())
            return problem;
        if (const QByteArray problem = fillDisk(disk, 1); !problem.isEmpty())
            return problem;
        if (const QByteArray problem = put(disk + QStringLiteral("/b"), "x"); !problem.isEmpty())
            return problem;
        return put(disk + QStringLiteral("/c"), "x").isEmpty() ? "a second file still fits" : "";
    }));
    QVERIFY2(tree(at("disk")).isEmpty(), "the disk was not the child's alone");
}

void tst_WriteFaults::theFolderReallyRefuses()
{
    QCOMPARE(put(at("ws/a"), "old"), QByteArray());
    giveToNobody();
    QVERIFY(QFile::setPermissions(at("ws"), QFile::ReadOwner | QFile::ExeOwner));
    VERIFY_CHILD(inChild([this]() -> QByteArray {
        if (const QByteArray problem = becomeNobody(); !problem.isEmpty())
            return problem;
        if (get(at("ws/a")) != "old")
            return "the folder cannot even be read";
        return put(at("ws/b"), "x").isEmpty() ? "the folder takes a file" : "";
    }));
    QFile::setPermissions(at("ws"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void tst_WriteFaults::fullDisk_data()
{
    QTest::addColumn<int>("write");
    QTest::addColumn<bool>("oldFiles");
    QTest::addColumn<int>("blocksLeft"); // -1: room enough, but no further file
    for (int i = 0; i < writes().size(); ++i) {
        for (const bool old : {true, false}) {
            // The six lines fit into one block: there only nothing at all is too little.
            for (const int left : {0, 1, -1}) {
                if (i == 0 && left == 1)
                    continue;
                QTest::addRow("%s, %s, %s", writes()[i].name, old ? "replaced" : "new",
                              left < 0        ? "no further file"
                                  : left == 0 ? "no room"
                                              : "room for a part")
                    << i << old << left;
            }
        }
    }
}

void tst_WriteFaults::fullDisk()
{
    QFETCH(int, write);
    QFETCH(bool, oldFiles);
    QFETCH(int, blocksLeft);
    const QString base = m_folder->path();
    QCOMPARE(prepareOutside(base), QByteArray());
    VERIFY_CHILD(onSmallDisk([&](const QString &disk) -> QByteArray {
        const QString workSpace = disk + QStringLiteral("/ws");
        QByteArray problem = prepareWorkspace(workSpace, oldFiles);
        if (!problem.isEmpty())
            return problem;
        const Tree before = tree(disk);
        problem = blocksLeft < 0 ? takeAllFiles(disk) : fillDisk(disk, blocksLeft);
        if (!problem.isEmpty())
            return problem;
        if (writes()[write].run(workSpace, base))
            return "the write says that it succeeded";
        problem = difference(withoutFillers(tree(disk)), before);
        if (!problem.isEmpty())
            return problem;
        freeDisk(disk);
        if (!writes()[write].run(workSpace, base))
            return "the write fails although there is room again";
        return tree(disk) == before ? "the write wrote nothing" : "";
    }));
}

void tst_WriteFaults::copiesOntoAFullDiskAreWholeOrAbsent_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("blocksLeft");
    for (const char *operation : {"reset", "load", "load new", "convert", "copy"})
        for (const int left : {-1, 0, 1, 2, 4, 7})
            QTest::addRow("%s, %d blocks left", operation, left) << QString::fromLatin1(operation) << left;
}

void tst_WriteFaults::copiesOntoAFullDiskAreWholeOrAbsent()
{
    QFETCH(QString, operation);
    QFETCH(int, blocksLeft);
    const QString base = m_folder->path();
    QCOMPARE(prepareOutside(base), QByteArray());
    QCOMPARE(prepareWorkspace(at("ws"), true), QByteArray());
    Tree source = tree(at("bundle/html"));
    source.insert(tree(at("bundle/data")));
    source.insert(QStringLiteral("book.swf"), get(at("bundle/html/linklist.swf")));
    const Tree workSpace = tree(at("ws"));
    if (operation == QLatin1String("convert"))
        source = workSpace;
    VERIFY_CHILD(onSmallDisk([&](const QString &disk) -> QByteArray {
        const QString place = disk + QStringLiteral("/place");
        const auto run = [&] {
            if (operation == QLatin1String("convert"))
                infoFor(at("ws"), base).convertPluginToPath(place);
            else if (operation == QLatin1String("reset"))
                infoFor(place, base).resetWorkspace();
            else if (operation == QLatin1String("copy"))
                PluginSettingsInfo::copyFromPath(at("bundle/html"), place, true);
            else
                infoFor(place, base).loadWorkspace();
        };
        if ((operation == QLatin1String("load") || operation == QLatin1String("copy"))
            && !QDir().mkpath(place))
            return "no folder";
        QByteArray problem = blocksLeft < 0 ? takeAllFiles(disk) : fillDisk(disk, blocksLeft);
        if (!problem.isEmpty())
            return problem;
        run();
        const Tree copied = tree(place);
        problem = halfCopies(copied, source);
        if (!problem.isEmpty())
            return problem;
        if (copied.size() == source.size())
            return "everything fitted";
        freeDisk(disk);
        run();
        Tree expected = source;
        if (operation == QLatin1String("copy"))
            expected = tree(at("bundle/html"));
        // What the refilling brings back are the templates; the movie's copy is made by a reset alone.
        if (operation.startsWith(QLatin1String("load")) && !tree(place).contains(QStringLiteral("book.swf")))
            expected.remove(QStringLiteral("book.swf"));
        return difference(tree(place), expected);
    }));
    QCOMPARE(difference(tree(at("ws")), workSpace), QByteArray());
}

void tst_WriteFaults::readOnlyFolder_data()
{
    QTest::addColumn<int>("write");
    QTest::addColumn<bool>("oldFiles");
    for (int i = 0; i < writes().size(); ++i)
        for (const bool old : {true, false})
            QTest::addRow("%s, %s", writes()[i].name, old ? "replaced" : "new") << i << old;
}

void tst_WriteFaults::readOnlyFolder()
{
    QFETCH(int, write);
    QFETCH(bool, oldFiles);
    const QString base = m_folder->path();
    QCOMPARE(prepareOutside(base), QByteArray());
    QCOMPARE(prepareWorkspace(at("ws"), oldFiles), QByteArray());
    giveToNobody();
    const Tree before = tree(base);
    QVERIFY(QFile::setPermissions(at("ws"), QFile::ReadOwner | QFile::ExeOwner));
    VERIFY_CHILD(inChild([&]() -> QByteArray {
        if (const QByteArray problem = becomeNobody(); !problem.isEmpty())
            return problem;
        if (writes()[write].run(at("ws"), base))
            return "the write says that it succeeded";
        return difference(tree(base), before);
    }));
    QVERIFY(QFile::setPermissions(at("ws"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    VERIFY_CHILD(inChild([&]() -> QByteArray {
        if (const QByteArray problem = becomeNobody(); !problem.isEmpty())
            return problem;
        return writes()[write].run(at("ws"), base) ? ""
                                                   : "the write fails although the folder takes it again";
    }));
}

void tst_WriteFaults::readOnlyDestinationsTakeNothing()
{
    const QString base = m_folder->path();
    QCOMPARE(prepareOutside(base), QByteArray());
    QCOMPARE(prepareWorkspace(at("ws"), true), QByteArray());
    QVERIFY(QDir().mkpath(at("locked")));
    giveToNobody();
    const Tree before = tree(base);
    QVERIFY(QFile::setPermissions(at("locked"), QFile::ReadOwner | QFile::ExeOwner));
    VERIFY_CHILD(inChild([&]() -> QByteArray {
        if (const QByteArray problem = becomeNobody(); !problem.isEmpty())
            return problem;
        infoFor(at("ws"), base).convertPluginToPath(at("locked/book"));
        infoFor(at("ws"), base).convertPluginToPath(at("locked/new/book"));
        PluginSettingsInfo::copyFromPath(at("bundle/html"), at("locked"), true);
        infoFor(at("locked"), base).loadWorkspace();
        infoFor(at("locked/ws"), base).resetWorkspace();
        return difference(tree(base), before);
    }));
    QFile::setPermissions(at("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void tst_WriteFaults::unreadableFilesAreLeftOut()
{
    const QString base = m_folder->path();
    QCOMPARE(prepareOutside(base), QByteArray());
    QCOMPARE(put(at("bundle/html/locked/inside"), "x"), QByteArray());
    giveToNobody();
    Tree expected = tree(at("bundle/html"));
    expected.insert(tree(at("bundle/data")));
    expected.insert(QStringLiteral("book.swf"), get(at("bundle/html/linklist.swf")));
    expected.remove(QStringLiteral("index.html"));
    expected.remove(QStringLiteral("locked/inside"));
    QVERIFY(QFile::setPermissions(at("bundle/html/index.html"), {}));
    QVERIFY(QFile::setPermissions(at("bundle/html/locked"), {}));
    VERIFY_CHILD(inChild([&]() -> QByteArray {
        if (const QByteArray problem = becomeNobody(); !problem.isEmpty())
            return problem;
        if (!infoFor(at("ws"), base).resetWorkspace())
            return "the workspace is refused";
        return difference(tree(at("ws")), expected);
    }));
    QFile::setPermissions(at("bundle/html/locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void tst_WriteFaults::whatAKilledProcessLeftIsNoData()
{
    QCOMPARE(put(at("ws/linklist.xml.AbCdEf"), document(1)), QByteArray());
    QCOMPARE(put(at("ws/settings.dat.AbCdEf"), "10\n20\n30\n40\n25\n2"), QByteArray());
    PluginSettingsInfo info = infoFor(at("ws"), m_folder->path());
    QVERIFY(!info.getXMLFromWorkspace());
    QVERIFY(!info.generateJSConfig(QString()));
    QCOMPARE(put(at("ws/linklist.xml"), "<info><layout type=\"number\"/></info>"), QByteArray());
    QVERIFY(!info.generateJSConfig(QString()));
    QCOMPARE(put(at("ws/defaultsettings.dat"), "0\n0\n0\n0\n0\n7"), QByteArray());
    QVERIFY(info.generateJSConfig(QString()));
    QCOMPARE(get(at("ws/config.js")), QByteArray("\xEF\xBB\xBFvar config={\"layout\":7};"));
    QCOMPARE(get(at("ws/settings.dat.AbCdEf")), QByteArray("10\n20\n30\n40\n25\n2"));
}

LINKLIST_TEST_MAIN(tst_WriteFaults)
#include "tst_WriteFaults.moc"
