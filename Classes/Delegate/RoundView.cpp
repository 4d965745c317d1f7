#include "Classes/Delegate/RoundView.h"

#include <QPainter>
#include <QPainterPath>

namespace
{

constexpr double cornerRadius = 4;
constexpr double lineWidth = 1;
constexpr QColor systemGray(128, 128, 128);

} // namespace

RoundView::RoundView(QWidget *parent)
    : QWidget(parent)
{
}

// Filled between two rounded rectangles: unlike a stroke it leaves something of the smallest view, too.
void RoundView::drawOutline(QPainter &painter, const QRectF &bounds)
{
    QPainterPath outline;
    outline.addRoundedRect(bounds, cornerRadius, cornerRadius);
    const QRectF inner = bounds.adjusted(lineWidth, lineWidth, -lineWidth, -lineWidth);
    if (inner.width() > 0 && inner.height() > 0)
        outline.addRoundedRect(inner, cornerRadius - lineWidth, cornerRadius - lineWidth);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(outline, systemGray);
    painter.restore();
}

void RoundView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawOutline(painter, rect());
}
