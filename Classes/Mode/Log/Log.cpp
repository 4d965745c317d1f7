#include "Classes/Mode/Log/Log.h"

#include "platform/File.h"
#include "platform/Utf8.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <locale.h>
#if __has_include(<xlocale.h>)
#include <xlocale.h> // where macOS has newlocale
#endif

namespace
{
// For as long as one lives, this thread formats as in C's own locale: numbers have a decimal point.
class PointLocale
{
public:
    PointLocale()
        : m_locale(newlocale(LC_ALL_MASK, "C", nullptr))
        , m_previous(uselocale(m_locale))
    {
    }
    ~PointLocale()
    {
        uselocale(m_previous);
        freelocale(m_locale);
    }
    Q_DISABLE_COPY_MOVE(PointLocale)

private:
    locale_t m_locale;
    locale_t m_previous;
};

__attribute__((format(printf, 1, 0))) QByteArray formatted(const char *format, va_list arguments)
{
    const PointLocale point;
    va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (size < 0)
        return format; // wide text beyond ASCII: better a message without it than none
    if (size == 0)
        return QByteArray();
    QByteArray bytes(size, Qt::Uninitialized);
    // The terminator has its place behind a byte array's end.
    std::vsnprintf(bytes.data(), size_t(size) + 1, format, arguments);
    // A precision may cut a character in two; the log stays UTF-8.
    return QUtf8StringView(bytes).isValidUtf8() ? bytes : Utf8::decoded(bytes).toUtf8();
}

__attribute__((format(printf, 2, 0))) void writeLine(const char *prefix, const char *format,
                                                     va_list arguments)
{
    const QByteArray line = prefix + (format ? formatted(format, arguments) : QByteArray("nil")) + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

bool isText(const QString &path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("txt"), Qt::CaseInsensitive) == 0
        && QFileInfo(path).isFile();
}

// By name without regard to case. Digits come after all else, so that a file that is no dated backup goes
// before any that is.
bool goesBefore(const QString &left, const QString &right)
{
    const auto isBefore = [](QChar a, QChar b) {
        const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
        return isDigit(a) == isDigit(b) ? a < b : isDigit(b);
    };
    const QString a = left.toCaseFolded();
    const QString b = right.toCaseFolded();
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), isBefore);
}
} // namespace

Log::Log(const QString &folder, Clock clock)
    : m_folder(folder)
    , m_clock(std::move(clock))
{
}

QString Log::defaultFolder()
{
    return File::joined(QDir::homePath(), QStringLiteral("Library/Application Support/Harborlight/bundle"));
}

QString Log::path() const
{
    return File::joined(m_folder, QStringLiteral("Log.txt"));
}

QString Log::backupFolder() const
{
    return File::joined(m_folder, QStringLiteral("backupLog"));
}

bool Log::save(const char *format, va_list arguments)
{
    const int error = errno; // of the caller's failure, which the format may ask for
    const QDateTime now = m_clock().toLocalTime();
    QByteArray contents = currentContents(now);
    if (!format)
        return true;
    if (!contents.isEmpty())
        contents += '\n';
    errno = error;
    contents += now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toUtf8()
        + "{bundle}:" + formatted(format, arguments);
    return File::write(path(), contents);
}

// What the next entry is appended to. A log that cannot be read counts as empty and is replaced. Where an
// empty one cannot be made, writing the entry fails, too, and says so.
QByteArray Log::currentContents(const QDateTime &now)
{
    if (!File::exists(path())) {
        if (File::makeFolder(m_folder))
            File::write(path(), QByteArray());
        return QByteArray();
    }
    const QByteArray contents = File::readBytes(path()).value_or(QByteArray());
    return contents.size() > mostBytes && turnOver(now) ? QByteArray() : contents;
}

// False when there is no copy, or no empty log in the place of the old one: the log then goes on as it is.
bool Log::turnOver(const QDateTime &now)
{
    const QString name = now.toString(QStringLiteral("yyyyMMdd_HHmmss")) + QStringLiteral(".txt");
    const QString backup = File::joined(backupFolder(), name);
    if (!File::makeFolder(backupFolder()) || !File::copy(path(), backup))
        return false;
    if (!File::write(path(), QByteArray())) {
        // The log goes on, and so does without a copy of what is still in it.
        File::removeAll(backup);
        return false;
    }
    dropOldestBackup();
    return true;
}

// One that cannot be deleted stays: the next turn-over tries again.
void Log::dropOldestBackup()
{
    QStringList backups = File::subpaths(backupFolder());
    backups.removeIf([this](const QString &name) { return !isText(File::joined(backupFolder(), name)); });
    if (backups.size() > mostBackups)
        File::removeAll(
            File::joined(backupFolder(), *std::min_element(backups.begin(), backups.end(), goesBefore)));
}

void logSave(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Log().save(format, arguments);
    va_end(arguments);
}

void logDebug(const char *, ...) { }

void logError(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine("Error:", format, arguments);
    va_end(arguments);
}

void logWarn(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine("Warn:", format, arguments);
    va_end(arguments);
}
