#include "platform/File.h"

#include "platform/Number.h"
#include "platform/Utf8.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUuid>
#include <chrono>
#include <filesystem>

namespace fs = std::filesystem;

namespace File
{

namespace
{
fs::path native(const QString &path)
{
    return fs::path(QFile::encodeName(path).toStdString());
}

// Writes what `fill` gives it aside and puts it in place. A file that took every byte can still fail on a
// full disk, and commit() would then put an empty one in place: flush first, and look.
template <typename Fill>
bool replace(const QString &path, Fill fill)
{
    std::error_code error;
    const bool isLink = fs::is_symlink(native(path), error);
    const bool isAside = isLink || (QFileInfo(path).isFile() && !QFileInfo(path).isWritable());
    // QSaveFile writes through a link to its target, which may lie outside the workspace, and refuses a file
    // that may not be written, though it is the entry in its folder that is replaced.
    const QString aside = isAside ? path + u'.' + QUuid::createUuid().toString(QUuid::Id128) : path;
    QSaveFile file(aside);
    if (!file.open(QIODevice::WriteOnly) || !fill(file) || !file.flush()
        || file.error() != QFileDevice::NoError)
        return false;
    if (!file.commit())
        return false;
    if (!isAside)
        return true;
    fs::rename(native(aside), native(path), error);
    if (error)
        QFile::remove(aside);
    return !error;
}
} // namespace

std::optional<QByteArray> readBytes(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return content;
}

std::optional<QString> readText(const QString &path)
{
    const std::optional<QByteArray> bytes = readBytes(path);
    if (!bytes || !QUtf8StringView(*bytes).isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(*bytes); // which leaves the mark out
}

bool write(const QString &path, QByteArrayView content)
{
    return replace(path, [content](QSaveFile &file) {
        return file.write(content.data(), content.size()) == content.size();
    });
}

bool copy(const QString &source, const QString &destination)
{
    std::error_code error;
    const fs::file_status status = fs::symlink_status(native(source), error);
    if (exists(destination))
        return false;
    if (fs::is_symlink(status)) {
        fs::copy_symlink(native(source), native(destination), error);
        return !error;
    }
    QFile from(source);
    if (!fs::is_regular_file(status) || !from.open(QIODevice::ReadOnly))
        return false;
    return replace(destination, [&from](QSaveFile &to) {
        constexpr qint64 blockSize = 1 << 16;
        while (!from.atEnd()) {
            const QByteArray block = from.read(blockSize);
            if (block.isEmpty() || to.write(block) != block.size())
                return false;
        }
        to.setPermissions(from.permissions());
        return from.error() == QFileDevice::NoError;
    });
}

bool makeFolder(const QString &path)
{
    return isUsableFolderPath(path) && (isFolder(path) || QDir().mkpath(path));
}

bool removeAll(const QString &path)
{
    if (!isUsableFolderPath(path))
        return false;
    std::error_code error;
    fs::remove_all(native(QDir::cleanPath(path)), error);
    return !exists(path);
}

bool isFolder(const QString &path)
{
    return isUsableFolderPath(path) && QFileInfo(path).isDir();
}

bool isUsableFolderPath(const QString &path)
{
    return QDir::isAbsolutePath(path) && !path.startsWith(u':') && !QDir(QDir::cleanPath(path)).isRoot();
}

bool exists(const QString &path)
{
    std::error_code error;
    return !path.isEmpty() && fs::symlink_status(native(path), error).type() != fs::file_type::not_found;
}

QStringList subpaths(const QString &folder, bool *isWhole)
{
    QStringList result;
    if (!isFolder(folder))
        return result;
    const fs::path root = native(folder);
    std::error_code error;
    fs::recursive_directory_iterator entry(root, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        result.append(Utf8::decoded(entry->path().lexically_relative(root).string()));
    if (isWhole && error)
        *isWhole = false;
    return result;
}

bool isListable(const QString &folder)
{
    std::error_code error;
    const fs::directory_iterator entries(native(folder), error);
    return !error;
}

QString joined(const QString &base, const QString &component)
{
    if (base.isEmpty() || component.isEmpty())
        return base + component;
    const bool endsWith = base.endsWith(u'/');
    const bool startsWith = component.startsWith(u'/');
    if (endsWith && startsWith)
        return base + component.mid(1);
    return endsWith || startsWith ? base + component : base + u'/' + component;
}

QString timeStamp()
{
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return QString::fromLatin1(Number::fixed(double(now) / 1e6, 6));
}

} // namespace File
