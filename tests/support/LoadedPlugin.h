#pragma once

#include "plugin/PluginSettingsInterface.h"

#include <QJsonObject>
#include <QTemporaryDir>

class QAbstractButton;
class QLineEdit;

// The built bundle's module as a host has it: loaded with QPluginLoader, driven through the public header and
// the names of the window's parts alone.
namespace LoadedPlugin
{

QString bundlePath(); // of the built bundle
PluginSettingsInterface &plugin(); // the module stays loaded; a test program without it ends
QJsonObject metaData();

// A session on that workspace with its window loaded, in English and with the built bundle unless told
// otherwise.
std::unique_ptr<PluginSettings> open(const QString &workSpace, const QString &bundle = bundlePath(),
                                     bool isModal = false);

// A part of the window; ends the test program when there is none of that name.
QWidget *part(PluginSettings &session, const char *name);
QLineEdit *field(PluginSettings &session, const char *name);

// What a person does: puts the keys in place of a field's text, pastes a text there, clicks a button.
void type(PluginSettings &session, const char *field, const char *keys);
void paste(PluginSettings &session, const char *field, const QString &text);
void click(PluginSettings &session, const char *button);

// Closes the window by its close box and answers the question by the button of that name; false when no
// question came.
bool closeAndAnswer(PluginSettings &session, const char *button);

// What a player's script reads from a configuration file, plain or scrambled, as JSON; empty, with a warning,
// when it reads nothing.
QByteArray evaluated(const QString &configurationFile);

// Folders of the process's own for temporary files, user data and the desktop's runtime, and the engine's
// sandbox switch for root. Made before the application object.
class Surroundings
{
public:
    Surroundings();

    QString temporaryFolder() const { return m_folder.filePath(QStringLiteral("tmp")); }
    QString dataFolder() const { return m_folder.filePath(QStringLiteral("data")); }
    // The backups of sessions that are in the temporary folder.
    QStringList backups() const;
    // Deletes them and answers their names: what a test that failed has left fails no other one.
    QStringList removeBackups() const;

private:
    QTemporaryDir m_folder;
};

// Runs a first session until its preview is there: the engine says once per process which graphics it does
// without, and that is no test's business.
bool startEngine();

} // namespace LoadedPlugin
