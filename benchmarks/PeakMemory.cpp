#include "benchmarks/PeakMemory.h"

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <cstdio>
#include <malloc.h>

namespace PeakMemory
{

namespace
{
const QByteArray ourPeak = "--peak-of-ours";
const QByteArray yardstickPeak = "--peak-of-yardstick";

// A line of the process's status such as "VmHWM:  1234 kB", in bytes.
qint64 statusValue(const QByteArray &key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

// Makes the highest mark of memory in use the current amount.
void resetPeak()
{
    malloc_trim(0);
    QFile marks(QStringLiteral("/proc/self/clear_refs"));
    if (marks.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        marks.write("5");
}

qint64 ofRun(const Side &side)
{
    if (side.prepare)
        side.prepare();
    resetPeak();
    const qint64 before = statusValue("VmRSS");
    side.run();
    return statusValue("VmHWM") - before;
}
} // namespace

qint64 ofChild(const Comparison &comparison, bool isOurs)
{
    QProcess child;
    child.start(
        QFile::symLinkTarget(QStringLiteral("/proc/self/exe")),
        {QString::fromLatin1(isOurs ? ourPeak : yardstickPeak), QString::fromStdString(comparison.title())});
    constexpr int longestRun = 60'000; // milliseconds
    return child.waitForFinished(longestRun) ? child.readAllStandardOutput().trimmed().toLongLong() : 0;
}

std::optional<int> runAsChild(int argc, char **argv, const std::vector<Comparison> &comparisons)
{
    const QByteArray option = argc == 3 ? argv[1] : "";
    if (option != ourPeak && option != yardstickPeak)
        return std::nullopt;
    for (const Comparison &comparison : comparisons) {
        if (comparison.title() != argv[2])
            continue;
        const Sides sides = comparison.make();
        std::printf("%lld\n", ofRun(option == ourPeak ? sides.ours : sides.yardstick));
        return EXIT_SUCCESS;
    }
    return EXIT_FAILURE;
}

} // namespace PeakMemory
