#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// The command line of linklist-host.
struct Options {
    // Exit statuses.
    enum Status { Applied = 0, Failed = 1, BadArguments = 2, Reverted = 3 };

    QString workspace; // absolute; empty for the plug-in's default
    QString language; // null for the process's
    QString bundle;
    QString book; // empty: nothing is copied
    QString geometryFile;
    bool isModal = false;
    bool isSmokeTest = false;
    bool isPublishing = false;

    // Takes what the arguments tell; an exit status where that was all: --help, or a mistake. Needs an
    // application object, without a display.
    std::optional<int> read(const QStringList &arguments);
};
