#pragma once

#include "Classes/Delegate/DragDrop/ExceptedArea.h"

#include <QByteArray>
#include <QStringList>
#include <QWidget>

// Posted by a detect view for every step of a drag outside its excepted area, and when a drag ends over it.
extern const QString DragDeleteViewDetectNotification;

// Wraps a window's content and notices when a drag of the accepted types leaves the view that it came from.
// It takes drops nowhere else in the window wants, and does nothing with them.
class DragDeleteDetectView : public QWidget
{
    Q_OBJECT

public:
    // Makes a new detect view the content of the window, with what the window showed inside it. The window
    // owns it. Null without a window.
    static DragDeleteDetectView *addDragDetectViewtoWindow(QWidget *window, const QStringList &dataTypes,
                                                           QWidget *sender);

    DragDeleteDetectView(const QRect &frame, const QStringList &dataTypes, QWidget *sender,
                         QWidget *parent = nullptr);

    // Where a drop is no deletion, in global coordinates.
    QRectF exceptScreenRect() const { return m_except.rect(); }
    void setExceptScreenRect(const QRectF &rect) { m_except.setRect(rect); }
    // The view whose area that is; not owned. A new one counts from the next refresh().
    QWidget *layoutSender() const { return m_except.sender(); }
    void setLayoutSender(QWidget *sender) { m_except.setSender(sender); }
    void refresh() { m_except.refresh(); }

    QStringList dataTypes() const { return m_dataTypes; }
    void setDataTypes(const QStringList &types);
    // Accepts these as well, behind those that it accepts already; an empty list changes nothing.
    void addDataTypes(const QStringList &types);

    // Always empty: what is dropped here stays where it was.
    QList<QByteArray> dragResult() const { return {}; }
    // Where the last drop fell, in global coordinates.
    QPointF dropPoint() const { return m_dropPoint; }

    // The course of a drag; mouse positions in global coordinates.
    Qt::DropActions draggingEntered();
    Qt::DropActions draggingUpdated(const QPointF &mouse);
    void draggingExited() { }
    bool wantsPeriodicDraggingUpdates() const { return true; }
    bool prepareForDragOperation() { return true; }
    bool performDragOperation(const QPointF &mouse);
    void concludeDragOperation() { }
    void draggingEnded();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    bool accepts(const QDropEvent *event) const;

    ExceptedArea m_except;
    QStringList m_dataTypes;
    QPointF m_dropPoint;
};
