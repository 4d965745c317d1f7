#include "Classes/Delegate/EditView/EditFrame.h"

#include <algorithm>

namespace
{

constexpr double minimumSize = EditFrame::minimumSize;

// A frame on its way through the rules of one step.
struct Step {
    double x, y, w, h;
    double dx, dy;
    QSizeF parentFrame;
    QSizeF parentBounds;

    void move()
    {
        x += dx;
        y += dy;
        if (x + w > parentFrame.width())
            x = parentFrame.width() - w;
        if (y + h > parentFrame.height())
            y = parentFrame.height() - h;
        x = std::max(x, 0.0);
        y = std::max(y, 0.0);
    }

    void left()
    {
        if (dx > 0) {
            const double m = std::min(dx, w);
            w -= m;
            x = std::min(x + m, parentBounds.width() - minimumSize);
            return;
        }
        x += dx;
        w -= dx;
        if (x < 0) { // the right edge stays where it was
            w += x;
            x = 0;
        }
    }

    void right()
    {
        w += dx;
        if (dx <= 0)
            w = std::max(w, 0.0);
        else if (x + w > parentFrame.width())
            w = parentFrame.width() - x;
    }

    void top()
    {
        h += dy;
        if (dy <= 0) {
            h = std::max(h, 0.0);
            return;
        }
        if (y + h > parentFrame.height())
            h = parentFrame.height() - y;
        y = std::min(y, parentBounds.height() - minimumSize);
    }

    void bottom()
    {
        h -= dy;
        y += dy;
        if (dy <= 0) {
            y = std::max(y, 0.0); // the height keeps its growth: the frame grows at the top
            return;
        }
        if (h < 0) {
            y += h;
            h = 0;
        }
        y = std::min(y, parentBounds.height() - minimumSize);
    }

    void limit()
    {
        x = std::max(x, 0.0);
        y = std::max(y, 0.0);
        w = std::max(w, minimumSize);
        h = std::max(h, minimumSize);
        if (x > parentFrame.width() - minimumSize) {
            w = minimumSize;
            x = parentFrame.width() - minimumSize;
        }
        // Against the whole height: a frame may keep a strip of less than 15 points within the page.
        if (y > parentFrame.height()) {
            h = minimumSize;
            y = parentFrame.height() - minimumSize;
        }
    }
};

using Rule = void (Step::*)();
struct Rules {
    Rule horizontal;
    Rule vertical;
};

// By mouse type.
constexpr std::array<Rules, 10> rulesOfTypes = {{
    {nullptr, nullptr},
    {&Step::move, nullptr},
    {&Step::left, nullptr},
    {&Step::right, nullptr},
    {nullptr, &Step::top},
    {nullptr, &Step::bottom},
    {&Step::left, &Step::top},
    {&Step::right, &Step::top},
    {&Step::left, &Step::bottom},
    {&Step::right, &Step::bottom},
}};

} // namespace

EditFrame::EditFrame(const QRectF &frame)
    : m_frame(frame.x(), frame.y(), std::max(frame.width(), minimumSize),
              std::max(frame.height(), minimumSize))
{
    forceRefreshLayout();
}

void EditFrame::refreshArea(const QRectF &rect, double boxSize)
{
    const double s = boxSize;
    const double w = rect.width();
    const double h = rect.height();
    m_areas = {
        QRectF(s, s, w - 2 * s, h - 2 * s),
        QRectF(0, (h - s) * 0.5, s, s),
        QRectF(w - s, (h - s) * 0.5, s, s),
        QRectF((w - s) * 0.5, h - s, s, s),
        QRectF((w - s) * 0.5, 0, s, s),
        QRectF(0, h - s, s, s),
        QRectF(w - s, h - s, s, s),
        QRectF(0, 0, s, s),
        QRectF(w - s, 0, s, s),
    };
}

EditFrame::MouseType EditFrame::mouseTypeForArea(const QRectF &area) const
{
    const double x = area.x();
    const double y = area.y();
    if (x == trackBoxSize)
        return Inside;
    if (area.width() != trackBoxSize)
        return None;
    const bool isInUpperHalf = y >= m_frame.height() * 0.5;
    if (x == 0)
        return y == 0 ? BottomLeft : isInUpperHalf ? TopLeft : LeftEdge;
    if (x < m_frame.width() * 0.5)
        return y == 0 ? BottomEdge : TopEdge;
    return y == 0 ? BottomRight : isInUpperHalf ? TopRight : RightEdge;
}

bool EditFrame::contains(const QRectF &rect, const QPointF &point)
{
    return point.x() >= rect.x() && point.x() < rect.x() + rect.width() && point.y() >= rect.y()
        && point.y() < rect.y() + rect.height();
}

QRectF EditFrame::matchArea(const QPointF &point) const
{
    const auto area = std::find_if(m_areas.begin(), m_areas.end(),
                                   [&point](const QRectF &candidate) { return contains(candidate, point); });
    return area == m_areas.end() ? QRectF() : *area;
}

bool EditFrame::isMatchArea(const QPointF &point) const
{
    return std::any_of(m_areas.begin(), m_areas.end(),
                       [&point](const QRectF &candidate) { return contains(candidate, point); });
}

void EditFrame::drag(MouseType type, const QPointF &delta, const QSizeF &parentFrame,
                     const QSizeF &parentBounds)
{
    if (type == None)
        return;
    Step step{m_frame.x(), m_frame.y(), m_frame.width(), m_frame.height(),
              delta.x(),   delta.y(),   parentFrame,     parentBounds};
    const Rules &rules = rulesOfTypes[size_t(type)];
    if (rules.horizontal)
        (step.*rules.horizontal)();
    if (rules.vertical)
        (step.*rules.vertical)();
    step.limit();
    m_frame = QRectF(step.x, step.y, step.w, step.h);
    forceRefreshLayout();
}
