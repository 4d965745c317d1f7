#pragma once

#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"

#include <QObject>

// A window controller that wants to hear when a drag out of its window has ended implements this.
class DragDeleteReceiver
{
public:
    virtual ~DragDeleteReceiver() = default;
    virtual void DeleteWindowDragEnd(DragDeleteWindow *window) = 0;
};

// Owns the window that catches one drag and passes the drag's end on to the controller of the sender's
// window, where that is a DragDeleteReceiver.
class DragDeleteDelegate : public QObject
{
    Q_OBJECT

public:
    // The sender, which is not owned, is the view that is dragged from.
    DragDeleteDelegate(const QStringList &dataTypes, QWidget *sender, QObject *parent = nullptr);
    ~DragDeleteDelegate() override;

    DragDeleteWindow *window() const { return m_window; }
    QWidget *sender() const { return m_sender; }

    // Drags of other windows do not count.
    void DeleteWindowDragEnd(QObject *window);

private:
    QPointer<QWidget> m_sender;
    QPointer<DragDeleteWindow> m_window;
};
