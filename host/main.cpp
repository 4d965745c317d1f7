// A small host: loads the bundle's module, runs one settings session and puts the result into a book. It
// shows how a host uses plugin/PluginSettingsInterface.h, on which alone it depends.
#include "host/GeometryReport.h"
#include "host/Options.h"
#include "host/PublishedPage.h"
#include "plugin/PluginSettingsInterface.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <cstdio>

namespace
{

constexpr qint64 applied = 1;

int failed(const QString &what)
{
    std::fprintf(stderr, "linklist-host: %s\n", qPrintable(what));
    return Options::Failed;
}

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QString modulePath(const QString &bundle)
{
#ifdef Q_OS_MACOS
    return bundle + QStringLiteral("/Contents/MacOS/linklist");
#else
    return bundle + QStringLiteral("/Contents/Linux/linklist.so");
#endif
}

// Presses a button of the window as soon as it is open, as a person would; false when there is none.
bool pressSoon(const QWidget *window, const QString &name)
{
    auto *button = window->findChild<QAbstractButton *>(name);
    if (button)
        QTimer::singleShot(0, button, [button] { button->click(); });
    else
        failed(QStringLiteral("the window has no button \"%1\"").arg(name));
    return button;
}

// Opens the window and cancels it.
int smokeTest(PluginSettings &session, const QWidget *window)
{
    session.showWindow();
    if (!pressSoon(window, QStringLiteral("btnCancel")))
        return Options::Failed;
    QApplication::exec();
    return session.isCloseBundle() && session.closeMode() != applied
        ? Options::Applied
        : failed(QStringLiteral("the window did not close"));
}

int copyIntoBook(const PluginSettingsInterface &plugin, const PluginSettings &session, const Options &options)
{
    const QString destination = QDir(options.book).filePath(QStringLiteral("files/plugin"));
    if (!plugin.convertPluginToPath(session.workSpace(), options.bundle, destination))
        return failed(QStringLiteral("cannot copy the workspace into ") + destination);
    say(QStringLiteral("copied to: ") + destination);
    // Applied by the close box, or on a disk that took no more.
    if (!QFileInfo::exists(destination + QStringLiteral("/bookPlugin.js"))) {
        std::fprintf(stderr, "linklist-host: nothing was published: there is no bookPlugin.js\n");
        return Options::Applied;
    }
    const QString missing = PublishedPage::writeInto(destination, options.bundle);
    if (!missing.isEmpty())
        return failed(
            QStringLiteral("the book cannot show its links: there is no %1 in %2").arg(missing, destination));
    return Options::Applied;
}

int runSession(const Options &options)
{
    if (!QFileInfo(options.bundle).isDir())
        return failed(QStringLiteral("there is no bundle at ") + options.bundle);
    QPluginLoader loader(modulePath(options.bundle));
    auto *plugin = qobject_cast<PluginSettingsInterface *>(loader.instance());
    if (!plugin)
        return failed(QStringLiteral("cannot load the plug-in ") + modulePath(options.bundle)
                      + QStringLiteral(": ") + loader.errorString());

    const std::unique_ptr<PluginSettings> session
        = plugin->initWithLanguageCode(options.language, options.bundle);
    if (!session)
        return failed(QStringLiteral("the bundle has no interface file for the settings window: ")
                      + options.bundle);
    QTemporaryDir smokeWorkspace;
    if (!options.workspace.isEmpty())
        session->setWorkSpace(options.workspace);
    else if (options.isSmokeTest)
        session->setWorkSpace(smokeWorkspace.filePath(QStringLiteral("linklist")));
    session->setModalMode(options.isModal);
    QWidget *window = session->window();
    if (!window)
        return failed(QStringLiteral("the settings window's interface file cannot be loaded: ")
                      + options.bundle);
    if (!options.geometryFile.isEmpty())
        new GeometryReport(window, options.geometryFile);
    if (options.isSmokeTest)
        return smokeTest(*session, window);

    say(QStringLiteral("workspace: ") + session->workSpace());
    if (options.isPublishing && !pressSoon(window, QStringLiteral("btnOK")))
        return Options::Failed;
    if (options.isModal) {
        say(QStringLiteral("modal loop's code: %1").arg(session->runModal()));
    } else {
        session->showWindow();
        QApplication::exec();
    }
    say(QStringLiteral("closeMode: %1").arg(session->closeMode()));
    say(QStringLiteral("isCloseBundle: ")
        + (session->isCloseBundle() ? QStringLiteral("yes") : QStringLiteral("no")));
    if (!session->isCloseBundle())
        return failed(QStringLiteral("the session ended without its window being closed"));
    if (session->closeMode() != applied)
        return Options::Reverted;
    return options.book.isEmpty() ? Options::Applied : copyIntoBook(*plugin, *session, options);
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    {
        // Help and mistakes need no display.
        const QCoreApplication arguments(argc, argv);
        if (const std::optional<int> status = options.read(QCoreApplication::arguments()))
            return *status;
    }
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    // The session ends inside, before the application object goes.
    return runSession(options);
}
