#include "platform/ui/WindowLevel.h"

#include <QVariant>
#include <QWindow>

namespace
{
constexpr const char *levelProperty = "_linklist_windowLevel";
}

namespace WindowLevel
{

void set(QWidget *widget, Level level)
{
    if (!widget)
        return;
    QWidget *window = widget->window();
    window->setProperty(levelProperty, int(level));
    const bool isOnTop = level != Level::Normal;
    // The widget's own flags, by which its window will be made, or made again; told without making it now.
    Qt::WindowFlags flags = window->windowFlags();
    flags.setFlag(Qt::WindowStaysOnTopHint, isOnTop);
    flags.setFlag(Qt::WindowStaysOnBottomHint, false);
    window->overrideWindowFlags(flags);
    if (QWindow *handle = window->windowHandle())
        handle->setFlag(Qt::WindowStaysOnTopHint, isOnTop);
}

Level of(const QWidget *widget)
{
    if (!widget)
        return Level::Normal;
    const QVariant level = widget->window()->property(levelProperty);
    const bool isOnTop = widget->window()->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
    if (!level.isValid())
        return isOnTop ? Level::Floating : Level::Normal;
    return Level(level.toInt());
}

} // namespace WindowLevel
