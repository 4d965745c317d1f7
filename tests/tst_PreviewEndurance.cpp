// Two hundred refreshes of the preview, and what they leave behind in memory.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"
#include "tests/support/WebTest.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <unistd.h>

using namespace WebTest;

namespace
{

QByteArray statusLine(const QString &process, const char *name)
{
    const QByteArrayList lines = Fixtures::get(QStringLiteral("/proc/%1/status").arg(process)).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name))
            return line.mid(qstrlen(name) + 1).simplified();
    }
    return {};
}

// Resident memory of the process and of all that descend from it, in MiB.
int residentMemory(const QString &process)
{
    int sum = statusLine(process, "VmRSS").split(' ').first().toInt() / 1024;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &other : processes) {
        if (statusLine(other, "PPid") == process.toLatin1())
            sum += residentMemory(other);
    }
    return sum;
}

} // namespace

class tst_PreviewEndurance : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void refreshesLeaveNothingBehind();
};

void tst_PreviewEndurance::refreshesLeaveNothingBehind()
{
    constexpr int refreshes = 200;
    constexpr int allowed = 40; // MiB; two hundred pages that stay would be several times as much
    const QTemporaryDir folder;
    const auto controller = PluginSettingsDelegate::initWithLanguageCode(QStringLiteral("en"),
                                                                         QStringLiteral(LINKLIST_BUNDLE_DIR));
    controller->setWorkSpace(folder.filePath(QStringLiteral("workspace")));
    QVERIFY(controller->window());
    controller->showWindow();
    auto *view = controller->outlet<WebView>("iWebView");
    const auto refresh = [&](int times) {
        for (int i = 0; i < times; ++i) {
            const QSignalSpy finished(view, &WebView::loadFinished);
            controller->saveGlobalSettings();
            controller->timerRepeat();
            if (!waitFor([&] { return finished.count() >= 2 && !view->isCovered(); }))
                return false;
        }
        return true;
    };
    // The engine's stores fill first.
    QVERIFY(refresh(20));
    const QString self = QString::number(::getpid());
    const int before = residentMemory(self);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(refresh(refreshes));
    const qint64 each = timer.elapsed() / refreshes;
    const int after = residentMemory(self);
    qInfo("%d MiB before and %d MiB after %d refreshes of %lld ms each, painted", before, after, refreshes,
          each);
    QVERIFY2(after - before <= allowed, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
    controller->onCancel();
}

LINKLIST_WEB_TEST_MAIN(tst_PreviewEndurance)
#include "tst_PreviewEndurance.moc"
