#include "Classes/Delegate/EditView/PositionView.h"

#include "Classes/Delegate/EditView/OZEditView.h"
#include "Classes/Mode/Locale.h"
#include "platform/NotificationCenter.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace
{

constexpr double startMargin = 50;

} // namespace

PositionView::PositionView(QWidget *parent)
    : QWidget(parent)
    , m_objectView(new OZEditView)
{
    setObjectName(QStringLiteral("positionView"));
    setLayoutDirection(Qt::LeftToRight); // a page's left margin is on its left in every language
    setPositionRectWithLeft(startMargin, startMargin, startMargin, startMargin, 0, 0);
    m_objectView->setObjectName(QStringLiteral("objectView"));
    const QString name = QStringLiteral("Frame of the box on the page");
    m_objectView->setAccessibleName(loadAppString(name, name));

    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, EditViewChangeNotification,
                       [this](QObject *sender) { onChangeEditView(sender); });
    center.addObserver(this, EditViewDidChangedNotification,
                       [this](QObject *sender) { onDidChangedEditView(sender); });
}

PositionView::~PositionView()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    delete m_objectView;
}

void PositionView::setPositionRectWithLeft(double left, double Top, double Right, double Bottom,
                                           double Transparency, qint64 Layer)
{
    const PositionRect before = m_positionRect;
    m_positionRect.setLeft(left);
    m_positionRect.setTop(Top);
    m_positionRect.setRight(Right);
    m_positionRect.setBottom(Bottom);
    m_positionRect.setTransparency(Transparency);
    m_positionRect.setLayer(Layer);
    placeFrame();
    // Neither transparency nor layer can be seen here.
    PositionRect seen = before;
    seen.setTransparency(Transparency);
    seen.setLayer(Layer);
    if (seen != m_positionRect)
        update();
}

void PositionView::setPositionRect(const PositionRect &rect)
{
    setPositionRectWithLeft(rect.left(), rect.top(), rect.right(), rect.bottom(), rect.transparency(),
                            rect.layer());
}

QRectF PositionView::areaRect() const
{
    return PositionRect::getObjectFrameWith(m_positionRect, size());
}

// Margins from a damaged file may be beyond all numbers: that is no area either.
bool PositionView::hasArea() const
{
    const QRectF area = areaRect();
    return area.width() > 0 && area.height() > 0 && std::isfinite(area.x() + area.width())
        && std::isfinite(area.y() + area.height());
}

// Hidden by somebody, not just waiting for its first box.
bool PositionView::isFrameHidden() const
{
    return m_objectView->isHidden() && m_objectView->testAttribute(Qt::WA_WState_ExplicitShowHide);
}

// An empty box leaves the frame where it was, and so does a hidden one: the picture shows the box itself
// then.
void PositionView::placeFrame()
{
    if (!hasArea() || isFrameHidden())
        return;
    if (m_objectView->parentWidget() != this) {
        m_objectView->setParent(this);
        m_objectView->show();
    }
    m_objectView->setFrameRect(areaRect());
    m_objectView->forceRefreshLayout();
}

void PositionView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr double halfLine = 0.5;
    painter.setPen(m_outlineColor.isValid() ? m_outlineColor : QColor(Qt::gray));
    painter.setBrush(m_fillColor.isValid() ? m_fillColor : palette().base().color());
    painter.drawRect(QRectF(rect()).adjusted(halfLine, halfLine, -halfLine, -halfLine));
    if (!hasArea() || !isFrameHidden())
        return;
    const QRectF area = areaRect();
    painter.setPen(Qt::black);
    painter.setBrush(Qt::red);
    painter.drawRect(QRectF(area.x(), height() - area.y() - area.height(), area.width(), area.height()));
}

void PositionView::resizeEvent(QResizeEvent *)
{
    placeFrame();
}

void PositionView::onChangeEditView(QObject *sender)
{
    if (sender != m_objectView || size().isEmpty())
        return;
    const QRectF frame = m_objectView->frameRect();
    const auto side
        = [](double length, double page) { return std::min(std::max(length, EditFrame::minimumSize), page); };
    // Past the right and top edges the margins become negative.
    const QRectF clamped(std::max(frame.x(), 0.0), std::max(frame.y(), 0.0), side(frame.width(), width()),
                         side(frame.height(), height()));
    const PositionRect margins = PositionRect::convertObjectFrame(clamped, size());
    m_positionRect.setLeft(margins.left());
    m_positionRect.setTop(margins.top());
    m_positionRect.setRight(margins.right());
    m_positionRect.setBottom(margins.bottom());
    if (m_ower)
        m_ower->onChangePositionView();
}

void PositionView::onDidChangedEditView(QObject *sender)
{
    if (sender != m_objectView)
        return;
    const QPointer<PositionView> self(this);
    if (m_ower)
        m_ower->didChangedPositionView();
    if (self)
        placeFrame();
}
