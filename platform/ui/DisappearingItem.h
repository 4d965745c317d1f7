#pragma once

#include <QCursor>
#include <QObject>
#include <QPixmap>
#include <QPointF>
#include <QSize>
#include <functional>

// What a person sees when something is dragged out of its place and vanishes: the pointer with a small cloud
// while it would, and a puff of smoke when it does.
namespace DisappearingItem
{

QCursor cursor();

// The pointer as a picture, its tip in the middle, with what it carries beside it; with the cloud or without.
QPixmap pointer(bool isVanishing, const QPixmap &carried = QPixmap());

// Shows the puff around a point of the screen (global coordinates) in a small window of its own that takes
// neither focus nor clicks and goes by itself after less than half a second. Then `ended` is called, unless
// its owner has gone; it may be empty.
void showAnimation(const QPointF &center, const QSize &size, QObject *owner, std::function<void()> ended);

} // namespace DisappearingItem
