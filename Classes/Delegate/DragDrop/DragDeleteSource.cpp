#include "Classes/Delegate/DragDrop/DragDeleteSource.h"

#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"
#include "platform/ui/DisappearingItem.h"

#include <QCursor>
#include <QDrag>
#include <QDropEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QScreen>

namespace
{
constexpr std::chrono::milliseconds updateInterval(40);

// Under X11 the pointer itself carries the picture: a window that followed it would leave its traces on the
// catching window, which nothing paints over.
bool isPictureOnPointer()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}
} // namespace

DragDeleteSource::DragDeleteSource(QWidget *view, DragDeleteDetectView *detector, DragDeleteWindow *catcher)
    : m_view(view)
    , m_detector(detector)
    , m_catcher(catcher)
{
    m_updates.setInterval(updateInterval);
    connect(&m_updates, &QTimer::timeout, this, &DragDeleteSource::update);
}

bool DragDeleteSource::concerns(const QDropEvent *event, const QWidget *widget)
{
    const auto *source = qobject_cast<DragDeleteSource *>(event->source());
    return !source || (source->m_view && source->m_view->window() == widget->window());
}

void DragDeleteSource::run(std::unique_ptr<QMimeData> data, const QPixmap &picture)
{
    // A child of this object and of no widget: those may go while it runs.
    m_drag = new QDrag(this);
    const QPointer<QMimeData> dragged(data.get());
    m_drag->setMimeData(data.release());
    m_picture = picture;
    if (isPictureOnPointer()) {
        QPixmap nothing(1, 1);
        nothing.fill(Qt::transparent);
        m_drag->setPixmap(nothing);
    } else {
        m_drag->setPixmap(picture);
        m_drag->setHotSpot(QPoint(-16, -16)); // beside the pointer, so that what lies below it can be seen
    }
    showCursor();
    // Once the drag has begun: filters that are installed later hear first, and the drag's own ends it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            QCoreApplication::instance()->installEventFilter(this);
            m_updates.start();
        },
        Qt::QueuedConnection);
    m_drag->exec(Qt::MoveAction);
    QCoreApplication::instance()->removeEventFilter(this);
    m_updates.stop();

    if (!m_catcher || m_isCancelled)
        m_released.reset();
    if (!m_catcher)
        return;
    if (m_catcher->hasEnded()) {
        // Thrown back and let go at once: the drop came before the window could make way.
        if (m_released && m_catcher->isExcepted(*m_released) && dragged)
            dropOnView(*dragged);
        return;
    }
    // A release right where the drag leaves the view, or on another screen, may reach no window.
    if (m_released && m_catcher->isVisible()) {
        m_catcher->performDragOperation(*m_released);
        m_catcher->concludeDragOperation(dragged, *m_released);
    }
    m_catcher->draggingEnded();
}

void DragDeleteSource::dropOnView(const QMimeData &data) const
{
    QWindow *window = m_view ? m_view->window()->windowHandle() : nullptr;
    if (!window)
        return;
    const QPointF at = window->mapFromGlobal(*m_released);
    QDragEnterEvent enter(at.toPoint(), Qt::MoveAction, &data, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    QDragMoveEvent move(at.toPoint(), Qt::MoveAction, &data, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &move);
    QDropEvent drop(at, Qt::MoveAction, &data, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &drop);
}

bool DragDeleteSource::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
            m_isCancelled = true;
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        // Another button ends the drag as Escape does; left to the window system its release would be a drop.
        if (mouse->button() != Qt::LeftButton) {
            m_isCancelled = true;
            QDrag::cancel();
            return true;
        }
        // Whoever ended the catching window before the release has cancelled the drag. The toolkit tells of
        // the release once more when the drop is over, and that has ended the window, too.
        if (!m_released && m_catcher && m_catcher->hasEnded())
            m_isCancelled = true;
        if (event->type() == QEvent::MouseButtonRelease && !m_released)
            m_released = mouse->globalPosition();
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

// The window system tells of a drag only when the pointer moves. These updates let the catching window rise
// where the pointer has jumped over the detect view, and come in below a pointer that stands still.
void DragDeleteSource::update()
{
    if (!m_catcher || m_catcher->hasEnded())
        return;
    const QPoint mouse = QCursor::pos();
    if (!m_catcher->isEntered()) {
        if (m_catcher->isExcepted(mouse))
            m_catcher->orderBack();
        else if (m_detector)
            m_detector->draggingUpdated(mouse);
    }
    if (m_catcher->isActive() == m_wasActive)
        return;
    m_wasActive = m_catcher->isActive();
    showCursor();
    repeatMove(mouse);
}

// The same place twice is no move: the drag is told of a neighbouring point on the same side of the area's
// edge.
void DragDeleteSource::repeatMove(const QPoint &mouse) const
{
    QWindow *window = m_view ? m_view->window()->windowHandle() : nullptr;
    if (!window)
        return;
    for (const QPoint &step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
        const QPoint point = mouse + step;
        if (m_catcher->isExcepted(point) != m_catcher->isExcepted(mouse)
            || !window->screen()->virtualGeometry().contains(point))
            continue;
        QMouseEvent move(QEvent::MouseMove, window->mapFromGlobal(point), point, Qt::NoButton,
                         QGuiApplication::mouseButtons(), QGuiApplication::keyboardModifiers());
        QCoreApplication::sendEvent(window, &move);
        return;
    }
}

void DragDeleteSource::showCursor()
{
    if (!m_drag)
        return;
    const QPixmap cursor
        = DisappearingItem::pointer(m_wasActive, isPictureOnPointer() ? m_picture : QPixmap());
    m_drag->setDragCursor(cursor, Qt::MoveAction);
    m_drag->setDragCursor(cursor, Qt::IgnoreAction);
}
