#include "Classes/Delegate/DragDrop/DragDeleteDelegate.h"

#include "platform/NotificationCenter.h"
#include "platform/ui/WindowController.h"

#include <QThread>

DragDeleteDelegate::DragDeleteDelegate(const QStringList &dataTypes, QWidget *sender, QObject *parent)
    : QObject(parent)
    , m_sender(sender)
    , m_window(new DragDeleteWindow(dataTypes, sender))
{
    NotificationCenter::defaultCenter().addObserver(this, DragDeleteWindowNotification,
                                                    [this](QObject *window) { DeleteWindowDragEnd(window); });
}

DragDeleteDelegate::~DragDeleteDelegate()
{
    if (!m_window)
        return;
    m_window->hide();
    // It may be in the middle of an event of its own.
    if (QThread::currentThread()->loopLevel() > 0)
        m_window->deleteLater();
    else
        delete m_window;
}

void DragDeleteDelegate::DeleteWindowDragEnd(QObject *window)
{
    if (!m_window || window != m_window || !m_sender)
        return;
    auto *controller = WindowController::ofWindow(m_sender->window());
    if (auto *receiver = dynamic_cast<DragDeleteReceiver *>(controller))
        receiver->DeleteWindowDragEnd(m_window);
}
