#include "text/SelectedCell.h"

#include <QPainter>

namespace
{
constexpr qreal cornerRadius = 2;

QColor shade(float red, float green, float blue, float alpha)
{
    return QColor::fromRgbF(red, green, blue, alpha);
}

QColor grey(float value, float alpha)
{
    return shade(value, value, value, alpha);
}
} // namespace

SelectedCell::SelectedCell(QWidget *parent)
    : ButtonCell(parent)
{
}

void SelectedCell::setIsSelected(bool selected)
{
    m_isSelected = selected;
    update();
}

ButtonCell::Gradient SelectedCell::ground() const
{
    if (isDown() && m_isSelected)
        return {grey(0.6F, 1.0F), grey(0.3F, 1.0F)};
    if (isDown())
        return {grey(0.9F, 0.5F), grey(0.3F, 0.5F)};
    if (m_isSelected)
        return {grey(0.7F, 1.0F), grey(0.4F, 1.0F)};
    if (isMouseInsize() && isEnabled())
        return {shade(0.86F, 0.86F, 0.95F, 1.0F), shade(0.5F, 0.5F, 0.54F, 1.0F)};
    return {grey(0.9F, 0.6F), grey(0.7F, 0.6F)};
}

void SelectedCell::paintEvent(QPaintEvent *)
{
    if (isTransparent())
        return;
    const QRectF frame(rect());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Gradient gradient = ground();
    fill(painter, frame, gradient);
    painter.setPen(QPen(grey(0.7F, 1.0F), 1));
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    drawContent(painter, frame,
                m_isSelected ? palette().color(QPalette::HighlightedText) : readableOn(gradient));
}
