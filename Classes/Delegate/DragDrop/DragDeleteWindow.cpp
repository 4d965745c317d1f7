#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"

#include "Classes/Delegate/DragDrop/DragDeleteSource.h"
#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/DisappearingItem.h"

#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

const QString DragDeleteWindowNotification = QStringLiteral("linklist.DragDeleteWindowNotification");

namespace
{
constexpr Qt::DropActions everyOperation = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}

// What the window shares with the threads that wait for the drag to come in. It outlives both.
struct DragDeleteWindow::TimeOut {
    std::mutex mutex;
    std::condition_variable windowGone;
    DragDeleteWindow *window = nullptr; // null once it is gone
    bool isEntered = false;
};

DragDeleteWindow::DragDeleteWindow(const QStringList &dataTypes, QWidget *sender)
    : m_except(sender)
    , m_dataTypes(dataTypes)
    , m_timeOut(std::make_shared<TimeOut>())
{
    m_timeOut->window = this;
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus);
    setOpacity(0);
    if (sender) {
        setScreen(sender->screen());
        // Windows of a modal session let in only what belongs to them.
        setTransientParent(sender->window()->windowHandle());
    }
    if (screen())
        setGeometry(screen()->geometry());
    NotificationCenter::defaultCenter().addObserver(
        this, DragDeleteViewDetectNotification, [this](QObject *detector) { DeleteViewDragEnd(detector); });
}

DragDeleteWindow::~DragDeleteWindow()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    const std::lock_guard lock(m_timeOut->mutex);
    m_timeOut->window = nullptr;
    m_timeOut->windowGone.notify_all();
}

bool DragDeleteWindow::isEntered() const
{
    const std::lock_guard lock(m_timeOut->mutex);
    return m_timeOut->isEntered;
}

void DragDeleteWindow::setEntered(bool isEntered)
{
    const std::lock_guard lock(m_timeOut->mutex);
    m_timeOut->isEntered = isEntered;
}

void DragDeleteWindow::orderBehind()
{
    create();
    lower();
    show();
}

void DragDeleteWindow::orderFront()
{
    // A drag that was out for a moment and is out again finds the window waiting for it.
    if (!m_hasEnded && ignoresMouseEvents())
        setFlag(Qt::WindowTransparentForInput, false);
    if (m_isActive)
        return;
    m_isActive = true;
    setFlag(Qt::WindowStaysOnTopHint, true);
    raise();
    setCursor(DisappearingItem::cursor());
}

void DragDeleteWindow::orderBack()
{
    if (!m_isActive)
        return;
    m_isActive = false;
    setFlag(Qt::WindowStaysOnTopHint, false);
    lower();
    setCursor(Qt::ArrowCursor);
}

void DragDeleteWindow::DeleteViewDragEnd(QObject *detector)
{
    const auto *view = qobject_cast<QWidget *>(detector);
    if (m_hasEnded || (sender() && (!view || view->window() != sender()->window())))
        return;
    orderFront();
    startTimeOut();
}

// On a thread of its own, and ended early when the window goes.
void DragDeleteWindow::startTimeOut()
{
    const auto wait = [timeOut = m_timeOut] {
        std::unique_lock lock(timeOut->mutex);
        timeOut->windowGone.wait_for(lock, entryTime, [&timeOut] { return !timeOut->window; });
        if (!timeOut->window || timeOut->isEntered)
            return;
        // The window cannot go while this thread has the lock; the call is dropped when it goes before it.
        QMetaObject::invokeMethod(timeOut->window, &DragDeleteWindow::checkDragTimerOut,
                                  Qt::QueuedConnection);
    };
    try {
        std::thread(wait).detach();
    } catch (const std::exception &) {
        // No more threads or memory: the drag's end gives the mouse back.
    }
}

void DragDeleteWindow::checkDragTimerOut()
{
    if (!isEntered())
        setFlag(Qt::WindowTransparentForInput, true);
}

Qt::DropActions DragDeleteWindow::draggingEntered()
{
    setEntered(true);
    orderFront();
    return everyOperation;
}

Qt::DropActions DragDeleteWindow::draggingUpdated(const QPointF &mouse)
{
    if (m_except.contains(mouse))
        orderBack();
    else
        orderFront();
    return everyOperation;
}

void DragDeleteWindow::draggingExited()
{
    setEntered(false);
    orderBack();
}

bool DragDeleteWindow::performDragOperation(const QPointF &mouse)
{
    m_dropPoint = mouse;
    return true;
}

void DragDeleteWindow::concludeDragOperation(const QMimeData *pasteboard, const QPointF &mouse)
{
    m_dragResult.clear();
    for (const QString &type : std::as_const(m_dataTypes)) {
        if (pasteboard && pasteboard->hasFormat(type) && !m_except.contains(mouse))
            m_dragResult.append(pasteboard->data(type));
    }
}

void DragDeleteWindow::draggingEnded()
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    orderBack();
    setFlag(Qt::WindowTransparentForInput, true);
    NotificationCenter::defaultCenter().post(DragDeleteWindowNotification, this);
}

bool DragDeleteWindow::accepts(const QDropEvent *event) const
{
    return !m_hasEnded && (!sender() || DragDeleteSource::concerns(event, sender()))
        && std::any_of(m_dataTypes.begin(), m_dataTypes.end(),
                       [event](const QString &type) { return event->mimeData()->hasFormat(type); });
}

bool DragDeleteWindow::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragLeave:
        draggingExited();
        return true;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        break;
    default:
        return QWindow::event(event);
    }

    auto *drag = static_cast<QDropEvent *>(event);
    if (!accepts(drag)) {
        drag->ignore();
        return true;
    }
    drag->acceptProposedAction();
    const QPointF mouse = mapToGlobal(drag->position());
    if (event->type() == QEvent::DragEnter) {
        draggingEntered();
    } else if (event->type() == QEvent::DragMove) {
        draggingUpdated(mouse);
    } else if (prepareForDragOperation() && performDragOperation(mouse)) {
        concludeDragOperation(drag->mimeData(), mouse);
        draggingEnded();
    }
    return true;
}
