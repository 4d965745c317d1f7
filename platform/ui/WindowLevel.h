#pragma once

#include <QWidget>

// How high a window stands among all windows of the desktop. Setting a level neither hides nor re-creates the
// window, so that it may change at any time, in the middle of a drag too; set before the window is first
// shown, it counts from then on. Window systems here know two heights only: every level but Normal stands
// above ordinary windows, and those above stack in the order in which they were raised.
namespace WindowLevel
{

// From the lowest to the highest.
enum class Level { Normal, Floating, ModalPanel, AboveMainMenu };

// Sets the level of the window that the widget stands in; nothing happens for a null widget.
void set(QWidget *widget, Level level);

// The level last set, Normal when none was. A window that is on top without a level of its own counts as
// Floating.
Level of(const QWidget *widget);

// Whenever the window that the widget stands in is shown from now on, it is shown on every workspace of the
// desktop. Only X11 lets a window ask for that: elsewhere nothing happens, nor for a null widget.
void setOnAllWorkspaces(QWidget *widget);

} // namespace WindowLevel
