#include "linklist/LinkTableView.h"

#include <QDragEnterEvent>
#include <QPainter>
#include <algorithm>

LinkTableView::LinkTableView(QWidget *parent)
    : QTableView(parent)
{
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false); // it would frame a cell
    setDragDropOverwriteMode(false);
}

int LinkTableView::landingRow(const QPoint &position) const
{
    const QModelIndex index = indexAt(position);
    if (!index.isValid())
        return model() ? model()->rowCount() : 0;
    const QRect cell = visualRect(index);
    const int strip = std::clamp(cell.height() / 5, 2, 12);
    const bool isLast = index.row() == model()->rowCount() - 1;
    const bool isRoomBelow = cell.bottom() + strip < viewport()->height();
    return isLast && !isRoomBelow && position.y() > std::min(cell.bottom(), viewport()->height()) - strip
        ? index.row() + 1
        : index.row();
}

void LinkTableView::startDrag(Qt::DropActions)
{
    QList<int> rows;
    const QModelIndexList selected = selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    m_isDragStarted = true;
    Q_EMIT dragStarted(rows);
}

void LinkTableView::mousePressEvent(QMouseEvent *event)
{
    m_isDragStarted = false;
    QTableView::mousePressEvent(event);
}

// Moves that come before the drag runs would select more rows than the person took.
void LinkTableView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_isDragStarted)
        QTableView::mouseMoveEvent(event);
}

void LinkTableView::mouseReleaseEvent(QMouseEvent *event)
{
    m_isDragStarted = false;
    QTableView::mouseReleaseEvent(event);
}

// The rows move below a pointer that stands still.
void LinkTableView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    if (m_line < 0)
        return;
    m_line = landingRow(m_dragPosition);
    viewport()->update();
}

bool LinkTableView::canDrop(const QDropEvent *event) const
{
    return model() && model()->canDropMimeData(event->mimeData(), event->dropAction(), 0, 0, {});
}

void LinkTableView::dragEnterEvent(QDragEnterEvent *event)
{
    QTableView::dragEnterEvent(event);
    event->setAccepted(canDrop(event));
}

// Rows may be dropped on rows that are dragged, too: scattered ones gather there.
void LinkTableView::dragMoveEvent(QDragMoveEvent *event)
{
    QTableView::dragMoveEvent(event);
    event->setAccepted(canDrop(event));
    m_dragPosition = event->position().toPoint();
    showLine(event->isAccepted() ? landingRow(m_dragPosition) : -1);
}

void LinkTableView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTableView::dragLeaveEvent(event);
    showLine(-1);
}

void LinkTableView::dropEvent(QDropEvent *event)
{
    QDragLeaveEvent leave;
    dragLeaveEvent(&leave); // ends scrolling by itself
    event->setAccepted(canDrop(event));
    if (!event->isAccepted())
        return;
    // A selection of many pieces would be carried along through every single move.
    if (selectionModel())
        selectionModel()->clearSelection();
    const int row = landingRow(event->position().toPoint());
    event->setAccepted(model()->dropMimeData(event->mimeData(), event->dropAction(), row, 0, {}));
}

void LinkTableView::showLine(int row)
{
    if (m_line == row)
        return;
    m_line = row;
    // At once: a window that catches the drag may cover the table before a later repaint.
    viewport()->repaint();
}

void LinkTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (m_line < 0 || !model())
        return;
    constexpr qreal lineWidth = 2;
    constexpr qreal knob = 3;
    const int count = model()->rowCount();
    const int below = m_line < count ? rowViewportPosition(m_line)
        : count > 0                  ? rowViewportPosition(count - 1) + rowHeight(count - 1)
                                     : 0;
    // The whole line stays in sight above the first row and below the last one that fits.
    const qreal y = std::clamp<qreal>(below, knob + 1, viewport()->height() - knob - 1);
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), lineWidth));
    painter.setBrush(palette().color(QPalette::Base));
    const qreal width = viewport()->width();
    const qreal start = isRightToLeft() ? width - knob - 1 : knob + 1;
    painter.drawLine(QPointF(isRightToLeft() ? 1 : 2 * knob + 1, y),
                     QPointF(isRightToLeft() ? width - 2 * knob - 1 : width - 1, y));
    painter.drawEllipse(QPointF(start, y), knob, knob);
}
