#pragma once

#include <QDateTime>
#include <QString>
#include <cstdarg>
#include <functional>

// The log that the application and its plug-ins share, for rare messages: every entry rewrites the whole
// file. Formats are printf's, in UTF-8 and with a decimal point in every locale; the compiler checks their
// arguments. A null format is nil. Nothing is reported to the person, and the functions are meant for the
// main thread.

// Appends an entry to the log file. A null format only makes the file or turns it over.
void logSave(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Does nothing: debug messages are switched off.
void logDebug(const char *format, ...) __attribute__((format(printf, 1, 2)));

// One line on standard error, "Error:" or "Warn:" and the message, which is "nil" for a null format.
void logError(const char *format, ...) __attribute__((format(printf, 1, 2)));
void logWarn(const char *format, ...) __attribute__((format(printf, 1, 2)));

// The log file's rules, on a folder and a clock of the caller's choice. The folder is made when it is
// missing.
class Log
{
public:
    using Clock = std::function<QDateTime()>;

    // A file that has grown past this many bytes is turned over by the next entry.
    static constexpr qint64 mostBytes = 4 * 1024 * 1024;
    // When a turn-over leaves more old logs than this, the first by name goes.
    static constexpr qsizetype mostBackups = 30;

    explicit Log(
        const QString &folder = defaultFolder(), Clock clock = [] { return QDateTime::currentDateTime(); });

    // Where logSave writes, below the person's home folder on every system.
    static QString defaultFolder();

    QString path() const;
    QString backupFolder() const;

    // Makes the file or turns it over, then appends the message with the local time in front of it; false
    // when the entry is not on disk, and the file is as it was. A null format appends nothing and answers
    // true.
    bool save(const char *format, va_list arguments) __attribute__((format(printf, 2, 0)));

private:
    QByteArray currentContents(const QDateTime &now);
    bool turnOver(const QDateTime &now);
    void dropOldestBackup();

    QString m_folder;
    Clock m_clock;
};
