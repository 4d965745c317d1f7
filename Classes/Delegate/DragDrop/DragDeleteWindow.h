#pragma once

#include "Classes/Delegate/DragDrop/ExceptedArea.h"

#include <QByteArray>
#include <QList>
#include <QStringList>
#include <QWindow>
#include <chrono>
#include <memory>

class QMimeData;

// Posted by a drag-delete window when its drag has ended.
extern const QString DragDeleteWindowNotification;

// An invisible window over the whole screen that its sender stands on. It waits behind the other windows
// until a detect view of the sender's window tells that a drag has left the sender; from then on it stands
// above everything and catches the drop, except where the sender is. Nothing is ever painted on it, so that
// it is invisible with and without a compositor; it never takes the focus. For one drag.
class DragDeleteWindow : public QWindow
{
    Q_OBJECT

public:
    // How long a drag that has left the sender may take to come in.
    static constexpr std::chrono::milliseconds entryTime{300};

    // The sender is not owned; without one there is no excepted area.
    DragDeleteWindow(const QStringList &dataTypes, QWidget *sender);
    ~DragDeleteWindow() override;

    QWidget *sender() const { return m_except.sender(); }
    QStringList dataTypes() const { return m_dataTypes; }
    // Where a drop is no deletion, in global coordinates.
    QRectF exceptScreenRect() const { return m_except.rect(); }
    bool isExcepted(const QPointF &mouse) const { return m_except.contains(mouse); }

    // What was dropped outside the excepted area: the data of each accepted type, in the types' order.
    QList<QByteArray> dragResult() const { return m_dragResult; }
    // Where the drop fell, in global coordinates.
    QPointF dropPoint() const { return m_dropPoint; }

    // Raised above everything and showing the disappearing-item cursor.
    bool isActive() const { return m_isActive; }
    bool isEntered() const;
    // The drag is over: the window hears of no other.
    bool hasEnded() const { return m_hasEnded; }
    bool ignoresMouseEvents() const { return flags().testFlag(Qt::WindowTransparentForInput); }

    // Shows the window behind all others.
    void orderBehind();
    // Nothing happens in the state that it leads to.
    void orderFront();
    void orderBack();

    // A detect view told that the drag is outside. Others than the sender's window's do not count.
    void DeleteViewDragEnd(QObject *detector);
    // Gives the mouse back to what lies below when no drag has come in.
    void checkDragTimerOut();

    // The course of a drag; mouse positions in global coordinates.
    Qt::DropActions draggingEntered();
    Qt::DropActions draggingUpdated(const QPointF &mouse);
    void draggingExited();
    bool wantsPeriodicDraggingUpdates() const { return true; }
    bool prepareForDragOperation() { return true; }
    bool performDragOperation(const QPointF &mouse);
    void concludeDragOperation(const QMimeData *pasteboard, const QPointF &mouse);
    // Once; the window may be gone afterwards.
    void draggingEnded();

protected:
    bool event(QEvent *event) override;

private:
    struct TimeOut;

    bool accepts(const QDropEvent *event) const;
    void startTimeOut();
    void setEntered(bool isEntered);

    ExceptedArea m_except;
    QStringList m_dataTypes;
    QList<QByteArray> m_dragResult;
    QPointF m_dropPoint;
    bool m_isActive = false;
    bool m_hasEnded = false;
    std::shared_ptr<TimeOut> m_timeOut;
};
