#include "text/ColorButtonCell.h"

#include "platform/File.h"

#include <QPainter>
#include <algorithm>

namespace
{

constexpr qreal cornerRadius = 2;
constexpr qreal lineWidth = 2;

QColor painted(const Color &color)
{
    // What is not a number is painted as nothing of that component.
    const auto component = [](double value) { return value > 0 ? float(std::min(value, 1.0)) : 0.0F; };
    return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue),
                            component(color.alpha));
}

} // namespace

qint32 ColorButtonCell::s_indexOfCell = 0;

ColorButtonCell::ColorButtonCell(QWidget *parent)
    : ButtonCell(parent)
    , m_identifier(File::timeStamp() + QString::number(s_indexOfCell++))
{
}

ColorButtonCell::ColorButtonCell(const QVariantMap &, QWidget *parent)
    : ColorButtonCell(parent)
{
}

QVariantMap ColorButtonCell::encodeWithCoder() const
{
    QVariant color;
    if (m_textColor)
        color = QVariantList{m_textColor->red, m_textColor->green, m_textColor->blue, m_textColor->alpha};
    return {{QStringLiteral("textColor"), color}};
}

void ColorButtonCell::setBackgroundColor(const std::optional<Color> &color)
{
    m_backgroundColor = color;
    setAccessibleDescription(color ? MyColorOper::colorToHexRGB(*color) : QString());
    update();
}

void ColorButtonCell::setTextColor(const std::optional<Color> &color)
{
    m_textColor = color;
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
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                            cornerRadius);
    std::optional<Gradient> ground;
    if (m_backgroundColor)
        ground = Gradient{painted(*m_backgroundColor), painted(*m_backgroundColor)};
    painter.setBrush(Qt::NoBrush);
    drawContent(painter, rect(), m_textColor ? painted(*m_textColor) : readableOn(ground));
}
