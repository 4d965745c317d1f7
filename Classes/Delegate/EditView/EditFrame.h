#pragma once

#include <QRectF>
#include <array>

// The geometry of the draggable frame: its nine hit areas and what one drag step does to it. In points, the
// origin at the lower-left corner and y growing upward; areas in the frame's own coordinates, the frame in
// its parent's. Rectangles are half open: their near edges belong to them, their far edges do not. Nothing is
// rounded.
class EditFrame
{
public:
    // The part of the frame that the pointer is on or drags.
    enum MouseType : qint64 {
        None,
        Inside,
        LeftEdge,
        RightEdge,
        TopEdge,
        BottomEdge,
        TopLeft,
        TopRight,
        BottomLeft,
        BottomRight,
    };

    static constexpr double trackBoxSize = 7;
    static constexpr double minimumSize = 15;

    // A frame that is too small grows to 15 points.
    explicit EditFrame(const QRectF &frame = QRectF());

    const QRectF &frame() const { return m_frame; }
    // Takes the rectangle as it is; the areas stay until refreshArea().
    void setFrame(const QRectF &frame) { m_frame = frame; }

    // The hit areas of types 1 to 9 in that order, made for the rectangle's size; its origin does not matter.
    void refreshArea(const QRectF &rect, double boxSize);
    void forceRefreshLayout() { refreshArea(m_frame, trackBoxSize); }
    const std::array<QRectF, 9> &areas() const { return m_areas; }

    // The type that a hit area stands for, told by its rectangle and this frame's size alone. So on a frame
    // exactly 21 points wide the handles in the middle of its top and bottom count as its inside.
    MouseType mouseTypeForArea(const QRectF &area) const;

    // The first area that holds the point; an all-zero rectangle when none does.
    QRectF matchArea(const QPointF &point) const;
    bool isMatchArea(const QPointF &point) const;

    // One step of a drag that has hold of that part, with the sizes of the parent's frame and bounds;
    // rebuilds the areas. Nothing happens for None.
    void drag(MouseType type, const QPointF &delta, const QSizeF &parentFrame, const QSizeF &parentBounds);

    static bool contains(const QRectF &rect, const QPointF &point);

private:
    QRectF m_frame;
    std::array<QRectF, 9> m_areas;
};
