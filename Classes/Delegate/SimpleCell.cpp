#include "Classes/Delegate/SimpleCell.h"

#include <QPainter>

namespace
{
constexpr qreal cornerRadius = 4;
constexpr qreal ringWidth = 4;
} // namespace

SimpleCell::SimpleCell(QWidget *parent)
    : ButtonCell(parent)
{
}

void SimpleCell::paintEvent(QPaintEvent *)
{
    if (isTransparent())
        return;
    const QRectF frame(rect());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    std::optional<Gradient> ground;
    if (isDown()) {
        ground = Gradient{QColor::fromRgbF(0.9F, 0.9F, 0.9F, 0.5F), QColor::fromRgbF(0.6F, 0.6F, 0.6F, 0.5F)};
        fill(painter, frame, *ground);
    } else if (isMouseInsize() && isEnabled()) {
        // Drawn along the edge: its inner half shows.
        painter.setPen(QPen(QColor::fromRgbF(0.6F, 0.8F, 1.0F), ringWidth));
        painter.drawRoundedRect(frame, cornerRadius, cornerRadius);
    }
    painter.setPen(QPen(Qt::gray, 1));
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    drawContent(painter, frame, readableOn(ground));
}
