#include "Classes/Delegate/DragDrop/DragDeleteView.h"

#include "Classes/Delegate/DragDrop/DragDeleteSource.h"
#include "platform/NotificationCenter.h"

#include <QDragEnterEvent>
#include <QMainWindow>
#include <QMimeData>
#include <QPointer>
#include <QVBoxLayout>
#include <algorithm>

const QString DragDeleteViewDetectNotification = QStringLiteral("linklist.DragDeleteViewDetectNotification");

namespace
{

constexpr Qt::DropActions everyOperation = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

void fill(QWidget *outer, QWidget *inner)
{
    auto *layout = new QVBoxLayout(outer);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(inner);
}

// Moves the widgets that stand directly in the window, and its layout, into the content.
void moveContent(QWidget *window, QWidget *content, const QWidget *wrapper)
{
    const QList<QWidget *> children = window->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    if (QLayout *layout = window->layout()) {
        // Styles give a window wider margins than a part of it.
        const QMargins margins = layout->contentsMargins();
        content->setLayout(layout); // and the widgets in it
        layout->setContentsMargins(margins);
    }
    for (QWidget *child : children) {
        if (child == wrapper || child->isWindow() || child->parentWidget() != window)
            continue;
        const bool isHidden = child->isHidden();
        child->setParent(content);
        child->setHidden(isHidden);
    }
}

} // namespace

DragDeleteDetectView *DragDeleteDetectView::addDragDetectViewtoWindow(QWidget *window,
                                                                      const QStringList &dataTypes,
                                                                      QWidget *sender)
{
    if (!window)
        return nullptr;
    if (!window->layout() && !window->testAttribute(Qt::WA_Resized))
        window->adjustSize(); // while its parts still say how large it has to be
    const QPointer<QWidget> focused(window->focusWidget());
    auto *view = new DragDeleteDetectView(window->rect(), dataTypes, sender, window);
    if (auto *mainWindow = qobject_cast<QMainWindow *>(window)) {
        if (QWidget *content = mainWindow->takeCentralWidget())
            fill(view, content);
        mainWindow->setCentralWidget(view);
    } else {
        // Inside the window from the start: what changes windows loses its place in the tab order.
        auto *content = new QWidget(view);
        moveContent(window, content, view);
        fill(view, content);
        fill(window, view);
    }
    view->show();
    // What moves to another parent loses the focus.
    if (focused)
        focused->setFocus();
    return view;
}

DragDeleteDetectView::DragDeleteDetectView(const QRect &frame, const QStringList &dataTypes, QWidget *sender,
                                           QWidget *parent)
    : QWidget(parent)
    , m_except(sender)
{
    setGeometry(frame);
    setDataTypes(dataTypes);
}

void DragDeleteDetectView::setDataTypes(const QStringList &types)
{
    m_dataTypes = types;
    setAcceptDrops(!types.isEmpty());
}

void DragDeleteDetectView::addDataTypes(const QStringList &types)
{
    if (!types.isEmpty())
        setDataTypes(m_dataTypes + types);
}

Qt::DropActions DragDeleteDetectView::draggingEntered()
{
    return everyOperation;
}

Qt::DropActions DragDeleteDetectView::draggingUpdated(const QPointF &mouse)
{
    if (!m_except.contains(mouse))
        NotificationCenter::defaultCenter().post(DragDeleteViewDetectNotification, this);
    return everyOperation;
}

bool DragDeleteDetectView::performDragOperation(const QPointF &mouse)
{
    m_dropPoint = mouse;
    return true;
}

void DragDeleteDetectView::draggingEnded()
{
    NotificationCenter::defaultCenter().post(DragDeleteViewDetectNotification, this);
}

bool DragDeleteDetectView::accepts(const QDropEvent *event) const
{
    return DragDeleteSource::concerns(event, this)
        && std::any_of(m_dataTypes.begin(), m_dataTypes.end(),
                       [event](const QString &type) { return event->mimeData()->hasFormat(type); });
}

void DragDeleteDetectView::dragEnterEvent(QDragEnterEvent *event)
{
    if (accepts(event) && draggingEntered() & event->proposedAction())
        event->acceptProposedAction();
    else
        event->ignore();
}

void DragDeleteDetectView::dragMoveEvent(QDragMoveEvent *event)
{
    if (accepts(event) && draggingUpdated(mapToGlobal(event->position())) & event->proposedAction())
        event->acceptProposedAction();
    else
        event->ignore();
}

void DragDeleteDetectView::dragLeaveEvent(QDragLeaveEvent *)
{
    draggingExited();
}

void DragDeleteDetectView::dropEvent(QDropEvent *event)
{
    if (!accepts(event) || !prepareForDragOperation()
        || !performDragOperation(mapToGlobal(event->position()))) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    concludeDragOperation();
    draggingEnded();
}
