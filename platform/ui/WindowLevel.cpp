#include "platform/ui/WindowLevel.h"

#include <QEvent>
#include <QGuiApplication>
#include <QVariant>
#include <QWindow>

#if defined(LINKLIST_X11) && QT_CONFIG(xcb)
#define HAS_X11
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>
#endif

namespace
{
constexpr const char *levelProperty = "_linklist_windowLevel";

#ifdef HAS_X11
// Writes the wish for all workspaces on the window each time before it is shown: the window manager wipes it
// off when the window is hidden. A message to the manager would do for a window on show, but some managers
// take the windows that it belongs to along.
class OnAllWorkspaces : public QObject
{
public:
    OnAllWorkspaces(QWidget *window, xcb_connection_t *connection)
        : QObject(window)
        , m_connection(connection)
    {
        window->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && !event->spontaneous())
            wishFor(xcb_window_t(static_cast<QWidget *>(watched)->winId()));
        return QObject::eventFilter(watched, event);
    }

private:
    void wishFor(xcb_window_t window) const
    {
        const QByteArray name = QByteArrayLiteral("_NET_WM_DESKTOP");
        const auto cookie = xcb_intern_atom(m_connection, false, uint16_t(name.size()), name.constData());
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
            xcb_intern_atom_reply(m_connection, cookie, nullptr), &std::free);
        constexpr uint32_t allWorkspaces = 0xFFFFFFFF;
        if (atom)
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL,
                                32, 1, &allWorkspaces);
    }

    xcb_connection_t *m_connection;
};
#endif
} // namespace

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

void setOnAllWorkspaces(QWidget *widget)
{
#ifdef HAS_X11
    // The offscreen platform says that it is X11's, too, without a connection.
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (widget && x11 && x11->connection())
        new OnAllWorkspaces(widget->window(), x11->connection());
#else
    Q_UNUSED(widget)
#endif
}

} // namespace WindowLevel
