#pragma once

#include <QPointer>
#include <QRectF>
#include <QWidget>

// The area of the screen where a drop is no deletion: the view that the dragged rows come from, as it stood
// when the area was last refreshed. In global coordinates, y growing downward. Without a view it is empty.
class ExceptedArea
{
public:
    explicit ExceptedArea(QWidget *sender = nullptr);

    QWidget *sender() const { return m_sender; }
    void setSender(QWidget *sender) { m_sender = sender; }

    const QRectF &rect() const { return m_rect; }
    void setRect(const QRectF &rect) { m_rect = rect; }
    // Takes the view's present place; the empty rectangle at the origin once the view is gone.
    void refresh();

    // Half open as every rectangle that is counted from the lower-left corner: the left and lower edges
    // belong to it, the right and upper ones do not.
    bool contains(const QPointF &point) const;

private:
    QPointer<QWidget> m_sender;
    QRectF m_rect;
};
