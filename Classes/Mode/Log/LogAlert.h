#pragma once

#include <QString>

class QWidget;

// Small modal questions above the window given, or else above the one in use. The texts come translated and
// are shown as plain text; the buttons are English, stand in the order given, and the first is the default.
// Escape and the title bar's close mean the second button where there is one. The answer is true unless the
// second button was chosen, also when the question ended in another way. The buttons are named btnAlertFirst
// and btnAlertSecond.
class LogAlert
{
public:
    // "OK"
    static void AlertOKWithMessage(const QString &message, const QString &Text, QWidget *above = nullptr);
    // "YES" and "NO". Return is YES and Escape NO, whichever button has the focus; Space presses that one.
    static bool AlertYesNoWithMessage(const QString &message, const QString &Text, QWidget *above = nullptr);
    // "OK" and "Cancel"
    static bool AlertOKCancelWithMessage(const QString &message, const QString &Text,
                                         QWidget *above = nullptr);
};
