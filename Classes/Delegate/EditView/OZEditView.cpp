#include "Classes/Delegate/EditView/OZEditView.h"

#include "Classes/Mode/Locale.h"
#include "platform/Bundle.h"
#include "platform/NotificationCenter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

const QString EditViewChangeNotification = QStringLiteral("linklist.EditViewChangeNotification");
const QString EditViewDidChangedNotification = QStringLiteral("linklist.EditViewDidChangedNotification");

namespace
{

constexpr int hotSpot = 8;
constexpr double widgetEdge = 1 << 14; // widgets cannot be larger; a record's margins can

QImage cursorImage(const char *name)
{
    const QString path
        = Bundle(defaultBundlePath()).pathForResource(QLatin1String(name), QStringLiteral("png"));
    return path.isNull() ? QImage() : QImage(path);
}

QCursor cursorOf(const QImage &image)
{
    return image.isNull() ? QCursor(Qt::ArrowCursor) : QCursor(QPixmap::fromImage(image), hotSpot, hotSpot);
}

} // namespace

OZEditView::OZEditView(const QRectF &frame, QWidget *parent)
    : QWidget(parent)
    , m_frame(frame)
    , m_cur_drag(cursorImage("cur_drag"))
    , m_cur_left_top(cursorImage("cur_res1"))
    , m_cur_right_top(cursorImage("cur_res2"))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    placeWidget();
}

void OZEditView::setFrameRect(const QRectF &frame)
{
    m_frame.setFrame(frame);
    placeWidget();
}

void OZEditView::refreshArea(const QRectF &rect, double boxSize)
{
    m_frame.refreshArea(rect, boxSize);
    update();
}

void OZEditView::forceRefreshLayout()
{
    m_frame.forceRefreshLayout();
    update();
}

// The widget is the smallest one of whole points around the frame, measured from the parent's top.
void OZEditView::placeWidget()
{
    const auto edge = [](double value) { return std::clamp(value, -widgetEdge, widgetEdge); };
    const QRectF frame = m_frame.frame();
    const double parentHeight = parentWidget() ? parentWidget()->height() : 0;
    const int left = int(std::floor(edge(frame.x())));
    const int right = int(std::ceil(edge(frame.x() + frame.width())));
    const int top = int(std::floor(edge(parentHeight - frame.y() - frame.height())));
    const int bottom = int(std::ceil(edge(parentHeight - frame.y())));
    setGeometry(left, top, right - left, bottom - top);
    update();
}

QPointF OZEditView::inWindow(const QPointF &widgetPoint) const
{
    const QPointF down = mapTo(window(), widgetPoint);
    return {down.x(), window()->height() - down.y()};
}

QRectF OZEditView::parentInWindow() const
{
    const QWidget *parent = parentWidget();
    if (!parent)
        return {};
    const QPointF topLeft = parent->mapTo(window(), QPointF(0, 0));
    return {topLeft.x(), window()->height() - topLeft.y() - parent->height(), double(parent->width()),
            double(parent->height())};
}

QPointF OZEditView::inFrame(const QPointF &windowPoint) const
{
    return windowPoint - parentInWindow().topLeft() - m_frame.frame().topLeft();
}

QPointF OZEditView::convertScreen2Base(const QPointF &screenPoint) const
{
    if (!parentWidget())
        return {};
    const QPointF down = window()->mapFromGlobal(screenPoint);
    return {down.x(), window()->height() - down.y()};
}

bool OZEditView::isMatchArea(const QPointF &windowPoint) const
{
    return m_frame.isMatchArea(inFrame(windowPoint));
}

QRectF OZEditView::matchArea(const QPointF &windowPoint) const
{
    return m_frame.matchArea(inFrame(windowPoint));
}

void OZEditView::mouseEntered(const QPointF &point)
{
    m_isMouseDown = false;
    if (isMatchArea(point))
        m_mouseType = mouseTypeForArea(matchArea(point));
    showCursor();
}

void OZEditView::mouseExited()
{
    if (!m_isMouseDown)
        m_mouseType = EditFrame::None;
    showCursor();
}

void OZEditView::cursorUpdate(const QPointF &point)
{
    const QPointF at = m_isMouseDown ? m_orgPoint : point;
    if (isMatchArea(at))
        m_mouseType = mouseTypeForArea(matchArea(at));
    showCursor();
}

// There is no area tracking in the toolkit: a pointer without a pressed button is on the area that it is
// over, and on none between the handles.
void OZEditView::followPointer(const QPointF &point)
{
    if (isMatchArea(point))
        cursorUpdate(point);
    else
        mouseExited();
}

void OZEditView::mouseDown(const QPointF &point)
{
    m_isMouseDown = true;
    m_orgPoint = point;
}

void OZEditView::mouseDragged(const QPointF &point)
{
    if (!EditFrame::contains(parentInWindow(), point))
        return; // the next step inside measures from the last point inside
    const QPointF delta = point - m_orgPoint;
    m_orgPoint = point;
    dragBy(m_mouseType, delta);
}

void OZEditView::dragBy(EditFrame::MouseType type, const QPointF &delta)
{
    if (type == EditFrame::None || !parentWidget())
        return;
    m_isChange = true;
    m_frame.drag(type, delta, parentWidget()->size(), parentWidget()->size());
    placeWidget();
    NotificationCenter::defaultCenter().post(EditViewChangeNotification, this);
}

void OZEditView::mouseUp(const QPointF &point)
{
    const QPointer<OZEditView> self(this);
    if (m_isMouseDown)
        NotificationCenter::defaultCenter().post(EditViewDidChangedNotification, this);
    if (!self)
        return;
    m_isMouseDown = false;
    const EditFrame::MouseType type
        = isMatchArea(point) ? mouseTypeForArea(matchArea(point)) : EditFrame::None;
    if (type == EditFrame::None || type != m_mouseType) {
        m_mouseType = type;
        cursorUpdate(point);
    }
}

void OZEditView::enterEvent(QEnterEvent *event)
{
    mouseEntered(convertScreen2Base(event->globalPosition()));
}

void OZEditView::leaveEvent(QEvent *)
{
    mouseExited();
}

void OZEditView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const QPointF point = inWindow(event->position());
    followPointer(point); // a tap or a quick hand presses where no motion was told
    mouseDown(point);
}

void OZEditView::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF point = inWindow(event->position());
    if (event->buttons() & Qt::LeftButton)
        mouseDragged(point);
    else
        followPointer(point);
}

void OZEditView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        mouseUp(convertScreen2Base(event->globalPosition()));
    else
        QWidget::mouseReleaseEvent(event);
}

void OZEditView::keyPressEvent(QKeyEvent *event)
{
    QPointF delta;
    switch (event->key()) {
    case Qt::Key_Left:
        delta = {-1, 0};
        break;
    case Qt::Key_Right:
        delta = {1, 0};
        break;
    case Qt::Key_Up:
        delta = {0, 1};
        break;
    case Qt::Key_Down:
        delta = {0, -1};
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    EditFrame::MouseType type = EditFrame::Inside;
    if (event->modifiers() & Qt::ShiftModifier)
        type = delta.x() != 0 ? EditFrame::RightEdge : EditFrame::TopEdge;
    m_areKeysDown = true;
    dragBy(type, delta);
}

// One press, however long it repeats, is one finished edit.
void OZEditView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->isAutoRepeat())
        return;
    if (m_areKeysDown)
        endKeys();
    else
        QWidget::keyReleaseEvent(event);
}

void OZEditView::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    update();
    if (m_areKeysDown)
        endKeys(); // may end this view's life
}

void OZEditView::endKeys()
{
    m_areKeysDown = false;
    NotificationCenter::defaultCenter().post(EditViewDidChangedNotification, this);
}

void OZEditView::showCursor()
{
    switch (m_mouseType) {
    case EditFrame::Inside:
        setCursor(cursorOf(m_cur_drag));
        break;
    case EditFrame::LeftEdge:
    case EditFrame::RightEdge:
        setCursor(Qt::SizeHorCursor);
        break;
    case EditFrame::TopEdge:
    case EditFrame::BottomEdge:
        setCursor(Qt::SizeVerCursor);
        break;
    case EditFrame::TopLeft:
    case EditFrame::BottomRight:
        setCursor(cursorOf(m_cur_left_top));
        break;
    case EditFrame::TopRight:
    case EditFrame::BottomLeft:
        setCursor(cursorOf(m_cur_right_top));
        break;
    default:
        setCursor(Qt::ArrowCursor);
    }
}

void OZEditView::paintEvent(QPaintEvent *)
{
    const QRectF frame = m_frame.frame();
    const double parentHeight = parentWidget() ? parentWidget()->height() : frame.y() + frame.height();
    // The frame's lower-left corner in the widget, and from there y-down.
    const QPointF origin(frame.x() - x(), parentHeight - frame.y() - y());
    const auto painted = [&origin](const QRectF &area) {
        return QRectF(origin.x() + area.x(), origin.y() - area.y() - area.height(), area.width(),
                      area.height());
    };
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::red, hasFocus() ? 2 : 1));
    painter.setBrush(QColor::fromRgbF(0.5F, 0.5F, 0.6F, 0.3F));
    constexpr double inset = EditFrame::trackBoxSize / 2;
    painter.drawRect(
        painted(QRectF(0, 0, frame.width(), frame.height()).adjusted(inset, inset, -inset, -inset)));
    painter.setPen(Qt::red);
    painter.setBrush(Qt::white);
    constexpr double halfLine = 0.5; // a circle's line would be cut off at the widget's edges
    for (const QRectF &area : m_frame.areas()) {
        // The inside, and on a frame 21 points wide or high the handles that count as it.
        if (area.x() != EditFrame::trackBoxSize && area.y() != EditFrame::trackBoxSize)
            painter.drawEllipse(painted(area).adjusted(halfLine, halfLine, -halfLine, -halfLine));
    }
}
