#include "text/ColorButtonCell.h"

#include <QPainter>
#include <QStyleOptionFocusRect>
#include <algorithm>

namespace
{

constexpr qreal cornerRadius = 2;
constexpr qreal lineWidth = 2;

QColor painted(const Color &color)
{
    const auto component = [](double value) { return float(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue),
                            component(color.alpha));
}

} // namespace

ColorButtonCell::ColorButtonCell(QWidget *parent)
    : QPushButton(parent)
{
}

void ColorButtonCell::setBackgroundColor(const std::optional<Color> &color)
{
    m_backgroundColor = color;
    setAccessibleDescription(color ? MyColorOper::colorToHexRGB(*color) : QString());
    update();
}

void ColorButtonCell::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.4);
    if (m_backgroundColor)
        painter.setBrush(painted(*m_backgroundColor));
    painter.setPen(QPen(Qt::lightGray, lineWidth));
    constexpr qreal inset = lineWidth / 2;
    const QRectF frame = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    painter.drawRoundedRect(frame, cornerRadius, cornerRadius);
    if (!text().isEmpty()) {
        painter.setPen(palette().buttonText().color());
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = rect().adjusted(3, 3, -3, -3);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}
