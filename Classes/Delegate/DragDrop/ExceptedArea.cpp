#include "Classes/Delegate/DragDrop/ExceptedArea.h"

ExceptedArea::ExceptedArea(QWidget *sender)
    : m_sender(sender)
{
    refresh();
}

void ExceptedArea::refresh()
{
    m_rect = m_sender ? QRectF(m_sender->mapToGlobal(QPointF()), QSizeF(m_sender->size())) : QRectF();
}

bool ExceptedArea::contains(const QPointF &point) const
{
    return point.x() >= m_rect.left() && point.x() < m_rect.right() && point.y() > m_rect.top()
        && point.y() <= m_rect.bottom();
}
