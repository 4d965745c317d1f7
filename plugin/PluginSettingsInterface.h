#pragma once

#include <QObject>
#include <QString>
#include <QWidget>
#include <memory>

// What a host that loads the Link List plug-in needs; Qt alone is behind it.
//
// Before its application object a host sets, in this order of importance:
//   QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
// so that the preview's web engine may use the graphics hardware; without it the preview draws in software. A
// host that runs as root sets QTWEBENGINE_DISABLE_SANDBOX=1 in its environment, else the window opens without
// a preview.
//
// The module lies in the bundle at Contents/Linux/linklist.so (Contents/MacOS/linklist on macOS) and is
// loaded with QPluginLoader; qobject_cast<PluginSettingsInterface *>(loader.instance()) gives the interface.
// All calls belong on the main thread. Sessions are deleted before the application object goes.
// docs/plugin-contract.md tells the rest.

// One settings session: a window on one plug-in workspace. The caller owns it and may delete it at any time,
// also from inside a modal loop.
class PluginSettings
{
public:
    virtual ~PluginSettings() = default;

    // The plug-in's folder, an absolute path, before the window is first asked for. Never set, it is the
    // default folder in the user's data; an empty or relative path is never touched and nothing is saved.
    // Later calls are ignored.
    virtual void setWorkSpace(const QString &workSpace) = 0;
    virtual QString workSpace() const = 0;

    // Whether the session will run modally; before the window is first asked for. The preview of a modal
    // session follows edits only while runModal() runs, that of another one only while no modal loop of the
    // plug-in does.
    virtual void setModalMode(bool modal) = 0;

    // The window, loaded on the first call; null where its interface file could not be loaded. Owned by the
    // session.
    virtual QWidget *window() = 0;
    virtual void showWindow() = 0;

    // Shows the window modally and answers, after it closed, the code with which the modal loop stopped:
    // closeMode(). A negative code tells that the window never opened, was destroyed, or that the application
    // is quitting.
    virtual qint64 runModal() = 0;

    // How the session ended: 1 applied, 0 reverted.
    virtual qint64 closeMode() const = 0;
    virtual void setCloseMode(qint64 mode) = 0;

    // True once the window has closed.
    virtual bool isCloseBundle() const = 0;
};

class PluginSettingsInterface
{
public:
    virtual ~PluginSettingsInterface() = default;

    // A new session; empty when the bundle has no interface file for the window. The language code names a
    // language folder of the bundle ("en", "de", …); the first session's language stays that of the process.
    // A null or empty bundle path stands for the application's own bundle.
    virtual std::unique_ptr<PluginSettings> initWithLanguageCode(const QString &languageCode,
                                                                 const QString &bundlePath)
        = 0;

    // The folder that holds the default workspaces of the product's plug-ins.
    virtual QString getSavePluginPath() const = 0;

    // Replaces the destination folder, such as a book's "files/plugin", by a copy of a finished workspace
    // without its hidden entries. False, and nothing is touched, without a workspace, or for a destination
    // that is empty or relative or that is, holds or lies inside the workspace.
    virtual bool convertPluginToPath(const QString &workSpace, const QString &bundlePath,
                                     const QString &destination) const = 0;
};

#define PluginSettingsInterface_iid "linklist.PluginSettingsInterface/1.0"
Q_DECLARE_INTERFACE(PluginSettingsInterface, PluginSettingsInterface_iid)
