#include "Classes/Mode/Log/Log.h"
#include "platform/File.h"
#include "tests/support/Fixtures.h"
#include "tests/support/FullDisk.h"
#include "tests/support/OrdinaryRights.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

// A format that is none is given on purpose.
#pragma GCC diagnostic ignored "-Wformat-security"

using Fixtures::get;
using Fixtures::put;

namespace
{
constexpr qint64 fullSize = 4'194'304;
const QByteArray entry = "2026-11-15 21:19:40{bundle}:";

// Null for the compiler, too, which knows that a null literal is no format.
const char *nil = nullptr;

// What a function writes to standard error.
QByteArray standardError(const std::function<void()> &write)
{
    std::FILE *file = std::tmpfile();
    std::fflush(stderr);
    const int before = dup(STDERR_FILENO);
    dup2(fileno(file), STDERR_FILENO);
    write();
    std::fflush(stderr);
    dup2(before, STDERR_FILENO);
    close(before);
    std::rewind(file);
    QByteArray written(1000, '\0');
    written.resize(qsizetype(std::fread(written.data(), 1, size_t(written.size()), file)));
    std::fclose(file);
    return written;
}

// The locale of C's functions, set back at the end.
class CLocale
{
public:
    explicit CLocale(const char *name)
        : m_isSet(std::setlocale(LC_ALL, name))
    {
    }
    ~CLocale() { std::setlocale(LC_ALL, "C.UTF-8"); }
    Q_DISABLE_COPY_MOVE(CLocale)

    bool isSet() const { return m_isSet; }

private:
    bool m_isSet;
};
} // namespace

class tst_Log : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void firstEntryHasNoLineFeedBeforeIt();
    void entriesAreSeparatedByOneLineFeed();
    void dateAndTimeAreLocalAndPadded();
    void messageMayHoldLineBreaks();
    void messageMayNameTheCallersError();
    void formatsAsPrintfDoesInEveryLocale();
    void messageIsUtf8WhateverItsPrecision();
    void messageThatCannotBeFormattedIsItsFormat();
    void longMessagesAreWhole();
    void nullFormatMakesTheFileOnly();
    void nullFormatTurnsTheFileOver();
    void missingFoldersAreMade();
    void fileOfFourMebibytesIsKept();
    void fileOfOneByteMoreIsTurnedOver();
    void lastEntryMayExceedTheLimit();
    void firstEntryAfterATurnOverHasNoLineFeedBeforeIt();
    void turnOverDropsTheOldestFromTheThirtyFirstOn_data();
    void turnOverDropsTheOldestFromTheThirtyFirstOn();
    void nameThatBeginsWithALetterGoesFirst();
    void namesAreComparedWithoutRegardToCase();
    void nestedBackupsCountByTheirRelativePath();
    void otherEndingsAndFoldersDoNotCount();
    void ageDoesNotCount();
    void backupThatCannotBeCopiedMeansNoTurnOver();
    void backupsFolderThatCannotBeMadeMeansNoTurnOver();
    void unreadableLogIsReplacedWithoutATurnOver();
    void fullDiskLeavesTheLogAsItWas();
    void fullDiskLeavesALogThatIsDueAsItWas();
    void twoProcessesLeaveWholeEntries();
    void bytesThatAreNoTextAreKept();
    void logSaveWritesBelowTheHomeFolder();
    void logErrorAndLogWarnWriteALineToStandardError();
    void logErrorAndLogWarnSayNilForANullFormat();
    void logErrorAndLogWarnLeaveTheLogAlone();
    void logDebugDoesNothing();

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }
    QString log() const { return at(QStringLiteral("Log.txt")); }
    QString backup(const QString &name) const { return at(QStringLiteral("backupLog/") + name); }
    QStringList backups() const { return File::subpaths(at(QStringLiteral("backupLog"))); }
    void putDatedBackups(int count) const;

    __attribute__((format(printf, 2, 3))) bool save(const char *format, ...);

    std::unique_ptr<QTemporaryDir> m_folder;
    QDateTime m_now;
};

void tst_Log::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_now = QDateTime(QDate(2026, 11, 15), QTime(21, 19, 40));
}

bool tst_Log::save(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool done = Log(m_folder->path(), [this] { return m_now; }).save(format, arguments);
    va_end(arguments);
    return done;
}

// One for each hour from the first of January on: in the order of their names and of time.
void tst_Log::putDatedBackups(int count) const
{
    const QDateTime first(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);
    for (int i = 0; i < count; ++i)
        put(backup(first.addSecs(3600 * i).toString(QStringLiteral("yyyyMMdd_HHmmss'.txt'"))), "old");
}

void tst_Log::firstEntryHasNoLineFeedBeforeIt()
{
    QVERIFY(save("hello"));
    QCOMPARE(get(log()), entry + "hello");
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{QStringLiteral("Log.txt")});
}

void tst_Log::entriesAreSeparatedByOneLineFeed()
{
    QVERIFY(save("one"));
    m_now = m_now.addSecs(1);
    QVERIFY(save("%s", ""));
    QVERIFY(save("three"));
    QCOMPARE(get(log()), entry + "one\n2026-11-15 21:19:41{bundle}:\n2026-11-15 21:19:41{bundle}:three");
}

void tst_Log::dateAndTimeAreLocalAndPadded()
{
    qputenv("TZ", "UTC-5");
    tzset();
    m_now = QDateTime(QDate(987, 1, 1), QTime(22, 4, 5), Qt::UTC);
    const bool isSaved = save("x");
    qunsetenv("TZ");
    tzset();
    QVERIFY(isSaved);
    QCOMPARE(get(log()), QByteArray("0987-01-02 03:04:05{bundle}:x"));
}

void tst_Log::messageMayHoldLineBreaks()
{
    QVERIFY(save("%s", "a\nb\r\n"));
    QVERIFY(save("c"));
    QCOMPARE(get(log()), entry + "a\nb\r\n\n" + entry + "c");
}

// Looking for the log makes errors of its own.
void tst_Log::messageMayNameTheCallersError()
{
    errno = EACCES;
    QVERIFY(save("%m"));
    QCOMPARE(get(log()), entry + std::strerror(EACCES));
}

void tst_Log::formatsAsPrintfDoesInEveryLocale()
{
    const CLocale german("de_DE.UTF-8");
    QVERIFY(german.isSet());
    QCOMPARE(std::localeconv()->decimal_point[0], ',');
    QVERIFY(save("%.1f %5d|%-5s|%x %% %lld %c", 0.25, 42, "a", 255U, 1234567890123LL, 'z'));
    QCOMPARE(get(log()), entry + "0.2    42|a    |ff % 1234567890123 z");
    QCOMPARE(std::localeconv()->decimal_point[0], ',');
}

void tst_Log::messageIsUtf8WhateverItsPrecision()
{
    QVERIFY(save("%s", "\xE6\x97\xA5\xE6\x9C\xAC"));
    QCOMPARE(get(log()), entry + "日本");
    QVERIFY(save("%.4s", "\xE6\x97\xA5\xE6\x9C\xAC"));
    QCOMPARE(get(log()), entry + "日本\n" + entry + "日\uFFFD");
    QVERIFY(save("%.4s", "\xEF\xBB\xBF\xE6\x9C\xAC"));
    QVERIFY2(get(log()).endsWith(entry + "\uFEFF\uFFFD"), get(log()).toHex().constData());
}

void tst_Log::messageThatCannotBeFormattedIsItsFormat()
{
    QVERIFY(save("%ls", L"wide"));
    QVERIFY(save("wide: %ls", L"\u65E5"));
    QCOMPARE(get(log()), entry + "wide\n" + entry + "wide: %ls");
}

void tst_Log::longMessagesAreWhole()
{
    const QByteArray message(100'000, 'm');
    QVERIFY(save("%s!", message.constData()));
    QCOMPARE(get(log()), entry + message + '!');
}

void tst_Log::nullFormatMakesTheFileOnly()
{
    QVERIFY(save(nil));
    QVERIFY(QFile::exists(log()));
    QCOMPARE(get(log()), QByteArray());
    QVERIFY(save("one"));
    QVERIFY(save(nil));
    QCOMPARE(get(log()), entry + "one");
}

void tst_Log::nullFormatTurnsTheFileOver()
{
    const QByteArray old(fullSize + 1, 'x');
    put(log(), old);
    QVERIFY(save(nil));
    QVERIFY(QFile::exists(log()));
    QCOMPARE(get(log()), QByteArray());
    QCOMPARE(get(backup(QStringLiteral("20261115_211940.txt"))), old);
}

void tst_Log::missingFoldersAreMade()
{
    const Log deep(at(QStringLiteral("a/b/c")));
    QCOMPARE(deep.path(), at(QStringLiteral("a/b/c/Log.txt")));
    QCOMPARE(deep.backupFolder(), at(QStringLiteral("a/b/c/backupLog")));
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("home")));
    qputenv("HOME", at(QStringLiteral("home")).toUtf8());
    logSave("hello");
    QVERIFY(get(Log().path()).endsWith("{bundle}:hello"));
}

void tst_Log::fileOfFourMebibytesIsKept()
{
    const QByteArray old(fullSize, 'x');
    put(log(), old);
    QVERIFY(save("more"));
    QCOMPARE(get(log()), old + '\n' + entry + "more");
    QVERIFY(backups().isEmpty());
}

void tst_Log::fileOfOneByteMoreIsTurnedOver()
{
    const QByteArray old(fullSize + 1, 'x');
    put(log(), old);
    QVERIFY(save("more"));
    QCOMPARE(get(log()), entry + "more");
    QCOMPARE(backups(), QStringList{QStringLiteral("20261115_211940.txt")});
    QCOMPARE(get(backup(backups().constFirst())), old);
}

void tst_Log::lastEntryMayExceedTheLimit()
{
    put(log(), QByteArray(fullSize - 1, 'x'));
    QVERIFY(save("more"));
    QVERIFY(backups().isEmpty());
    const QByteArray old = get(log());
    QCOMPARE(old.size(), fullSize - 1 + 1 + entry.size() + 4);
    QVERIFY(save("next"));
    QCOMPARE(get(log()), entry + "next");
    QCOMPARE(get(backup(QStringLiteral("20261115_211940.txt"))), old);
}

void tst_Log::firstEntryAfterATurnOverHasNoLineFeedBeforeIt()
{
    put(log(), QByteArray(fullSize + 1, '\n'));
    QVERIFY(save("one"));
    QVERIFY(save("two"));
    QCOMPARE(get(log()), entry + "one\n" + entry + "two");
}

void tst_Log::turnOverDropsTheOldestFromTheThirtyFirstOn_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("none") << 0 << 1;
    QTest::newRow("29") << 29 << 30;
    QTest::newRow("30") << 30 << 30;
    QTest::newRow("31") << 31 << 31;
    QTest::newRow("40") << 40 << 40;
}

void tst_Log::turnOverDropsTheOldestFromTheThirtyFirstOn()
{
    QFETCH(int, before);
    QFETCH(int, after);
    putDatedBackups(before);
    QStringList expected = backups();
    expected.sort();
    expected.append(QStringLiteral("20261115_211940.txt"));
    if (expected.size() > after)
        expected.removeFirst();
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QStringList found = backups();
    found.sort();
    QCOMPARE(found.size(), after);
    QCOMPARE(found, expected);
}

void tst_Log::nameThatBeginsWithALetterGoesFirst()
{
    putDatedBackups(29);
    put(backup(QStringLiteral("Old copy.TXT")), "old");
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QVERIFY(!QFile::exists(backup(QStringLiteral("Old copy.TXT"))));
    QVERIFY(QFile::exists(backup(QStringLiteral("20260101_000000.txt"))));
    QCOMPARE(backups().size(), 30);
}

void tst_Log::namesAreComparedWithoutRegardToCase()
{
    putDatedBackups(28);
    put(backup(QStringLiteral("Beta.txt")), "old");
    put(backup(QStringLiteral("alpha.txt")), "old");
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QVERIFY(!QFile::exists(backup(QStringLiteral("alpha.txt"))));
    QVERIFY(QFile::exists(backup(QStringLiteral("Beta.txt"))));
}

void tst_Log::nestedBackupsCountByTheirRelativePath()
{
    putDatedBackups(29);
    put(backup(QStringLiteral("2025/kept/20990101_000000.Txt")), "old");
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QVERIFY(!QFile::exists(backup(QStringLiteral("2025/kept/20990101_000000.Txt"))));
    QVERIFY(QDir(backup(QStringLiteral("2025/kept"))).exists());
    QVERIFY(QFile::exists(backup(QStringLiteral("20260101_000000.txt"))));
}

void tst_Log::otherEndingsAndFoldersDoNotCount()
{
    putDatedBackups(29);
    put(backup(QStringLiteral("a.log")), "kept");
    put(backup(QStringLiteral("atxt")), "kept");
    put(backup(QStringLiteral("a.txt.gz")), "kept");
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("backupLog/a.txt")));
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QCOMPARE(backups().size(), 34);
}

void tst_Log::ageDoesNotCount()
{
    putDatedBackups(30);
    const QStringList names = backups();
    for (const QString &name : names) {
        QFile file(backup(name));
        QVERIFY(file.open(QFile::ReadWrite));
        const int year = name.startsWith(QLatin1String("20260101_000000")) ? 2030 : 2001;
        QVERIFY(file.setFileTime(QDateTime(QDate(year, 1, 1), QTime()), QFile::FileModificationTime));
    }
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(save("more"));
    QVERIFY(!QFile::exists(backup(QStringLiteral("20260101_000000.txt"))));
    QCOMPARE(backups().size(), 30);
}

void tst_Log::backupThatCannotBeCopiedMeansNoTurnOver()
{
    const QByteArray old(fullSize + 1, 'x');
    putDatedBackups(40);
    put(log(), old);
    // Somebody turned the log over within the same second.
    put(backup(QStringLiteral("20261115_211940.txt")), "theirs");
    QVERIFY(save("more"));
    QCOMPARE(get(log()), old + '\n' + entry + "more");
    QCOMPARE(get(backup(QStringLiteral("20261115_211940.txt"))), QByteArray("theirs"));
    QCOMPARE(backups().size(), 41);
    m_now = m_now.addSecs(1);
    QVERIFY(save("next"));
    QCOMPARE(get(log()), QByteArray("2026-11-15 21:19:41{bundle}:next"));
}

void tst_Log::backupsFolderThatCannotBeMadeMeansNoTurnOver()
{
    const QByteArray old(fullSize + 1, 'x');
    put(log(), old);
    put(at(QStringLiteral("backupLog")), "a file");
    QVERIFY(save("more"));
    QCOMPARE(get(log()), old + '\n' + entry + "more");
    QCOMPARE(get(at(QStringLiteral("backupLog"))), QByteArray("a file"));
}

void tst_Log::unreadableLogIsReplacedWithoutATurnOver()
{
    put(log(), QByteArray(fullSize + 1, 'x'));
    QVERIFY(QFile::setPermissions(log(), QFile::Permissions()));
    const OrdinaryRights rights;
    QVERIFY(!QFile(log()).open(QFile::ReadOnly));
    QVERIFY(save("alone"));
    QVERIFY(backups().isEmpty());
    QVERIFY(QFile::setPermissions(log(), QFile::ReadOwner));
    QCOMPARE(get(log()), entry + "alone");
}

void tst_Log::fullDiskLeavesTheLogAsItWas()
{
    QVERIFY(save("one"));
    bool isSaved = true;
    {
        const FullDisk disk;
        isSaved = save("two");
    }
    QVERIFY(!isSaved);
    QCOMPARE(get(log()), entry + "one");
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{QStringLiteral("Log.txt")});
}

void tst_Log::fullDiskLeavesALogThatIsDueAsItWas()
{
    const QByteArray old(fullSize + 1, 'x');
    putDatedBackups(31);
    put(log(), old);
    bool isSaved = true;
    {
        const FullDisk disk;
        isSaved = save("more");
    }
    QVERIFY(!isSaved);
    QCOMPARE(get(log()), old);
    QCOMPARE(backups().size(), 31);
}

void tst_Log::twoProcessesLeaveWholeEntries()
{
    constexpr int entriesEach = 200;
    QList<pid_t> children;
    for (const char name : {'a', 'b'}) {
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            bool isSaved = true;
            for (int i = 0; i < entriesEach; ++i)
                isSaved = save("%c%03d", name, i) && isSaved;
            _exit(isSaved ? 0 : 1);
        }
        children.append(child);
    }
    // A reader meanwhile never meets half an entry.
    static const QRegularExpression whole(
        QString::fromUtf8("^(2026-11-15 21:19:40\\{bundle\\}:[ab]\\d{3}(\\n(?!$)|$))*$"));
    QVERIFY(whole.isValid());
    int running = int(children.size());
    QByteArray seen;
    while (running > 0) {
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            --running;
            QCOMPARE(status, 0);
        }
        seen = get(log());
        QVERIFY2(whole.match(QString::fromUtf8(seen)).hasMatch(), seen.right(100).constData());
    }
    // Entries of one may be lost to the other, the very last one of all is there.
    QVERIFY2(seen.endsWith("a199") || seen.endsWith("b199"), seen.right(100).constData());
    QCOMPARE(File::subpaths(m_folder->path()), QStringList{QStringLiteral("Log.txt")});
}

void tst_Log::bytesThatAreNoTextAreKept()
{
    put(log(), QByteArray("\xFF\xFE\0host", 7));
    QVERIFY(save("more"));
    QCOMPARE(get(log()), QByteArray("\xFF\xFE\0host\n", 8) + entry + "more");
}

void tst_Log::logSaveWritesBelowTheHomeFolder()
{
    qputenv("HOME", m_folder->path().toUtf8());
    QCOMPARE(Log::defaultFolder(), at(QStringLiteral("Library/Application Support/Harborlight/bundle")));
    const QString before = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    logSave("%s %d", "hello", 7);
    const QString after = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QByteArray written
        = get(at(QStringLiteral("Library/Application Support/Harborlight/bundle/Log.txt")));
    QCOMPARE(written.mid(19), QByteArray("{bundle}:hello 7"));
    const QString stamp = QString::fromUtf8(written.left(19));
    QVERIFY2(before <= stamp && stamp <= after, written.constData());
    logSave(nil);
    QCOMPARE(get(Log().path()), written);
}

void tst_Log::logErrorAndLogWarnWriteALineToStandardError()
{
    QCOMPARE(standardError([] { logError("%s failed: %.2f", "copy", 0.5); }),
             QByteArray("Error:copy failed: 0.50\n"));
    QCOMPARE(standardError([] { logWarn("%d%% left", 3); }), QByteArray("Warn:3% left\n"));
    QCOMPARE(standardError([] { logError("%s", "50%s"); }), QByteArray("Error:50%s\n"));
}

void tst_Log::logErrorAndLogWarnSayNilForANullFormat()
{
    QCOMPARE(standardError([] { logError(nil); }), QByteArray("Error:nil\n"));
    QCOMPARE(standardError([] { logWarn(nil); }), QByteArray("Warn:nil\n"));
}

void tst_Log::logErrorAndLogWarnLeaveTheLogAlone()
{
    qputenv("HOME", m_folder->path().toUtf8());
    standardError([] {
        logError("an error");
        logWarn("a warning");
    });
    QVERIFY(File::subpaths(m_folder->path()).isEmpty());
}

void tst_Log::logDebugDoesNothing()
{
    qputenv("HOME", m_folder->path().toUtf8());
    QCOMPARE(standardError([] {
                 logDebug("%s", "quiet");
                 logDebug(nil);
             }),
             QByteArray());
    QVERIFY(File::subpaths(m_folder->path()).isEmpty());
}

LINKLIST_TEST_MAIN(tst_Log)
#include "tst_Log.moc"
