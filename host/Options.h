#pragma once

#include <QString>
#include <QStringList>

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

    // Runs the session with the options told, or answers --help and mistakes by itself; the exit status.
    static int parse(const QStringList &arguments, int (*run)(const Options &));
};
