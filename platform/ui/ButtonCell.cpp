#include "platform/ui/ButtonCell.h"

#include <QPainter>
#include <QStyleOptionFocusRect>
#include <algorithm>
#include <cmath>

namespace
{
constexpr qreal margin = 2;
// What people with weak sight need at least.
constexpr double readableContrast = 4.5;

double luminance(const QColor &color)
{
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor middle(const QColor &one, const QColor &other, double share)
{
    const auto mix = [share](double a, double b) { return float(a + (b - a) * share); };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()), mix(one.alphaF(), other.alphaF()));
}
} // namespace

ButtonCell::ButtonCell(QWidget *parent)
    : QPushButton(parent)
{
}

ButtonCell::ImagePosition ButtonCell::imagePosition() const
{
    if (m_imagePosition)
        return *m_imagePosition;
    if (icon().isNull())
        return NoImage;
    return text().isEmpty() ? ImageOnly : ImageLeft;
}

void ButtonCell::setImagePosition(ImagePosition position)
{
    m_imagePosition = position;
    update();
}

void ButtonCell::setTransparent(bool transparent)
{
    m_isTransparent = transparent;
    update();
}

QRectF ButtonCell::imageRect(const QRectF &frame) const
{
    if (imagePosition() == NoImage)
        return {};
    QSizeF size(std::max(0.0, frame.width() - 2 * margin), std::max(0.0, frame.height() - 2 * margin));
    if (!text().isEmpty()) {
        const qreal side = std::min(size.width(), size.height());
        size = {side, side};
    }
    return {frame.topLeft() + QPointF(margin, margin), size};
}

QRectF ButtonCell::titleRect(const QRectF &frame) const
{
    if (imagePosition() == ImageOnly || text().isEmpty())
        return {};
    const qreal imageWidth = imageRect(frame).width();
    return {frame.x() + imageWidth + margin, frame.y() + margin,
            std::max(0.0, frame.width() - imageWidth - 3 * margin),
            std::max(0.0, frame.height() - 2 * margin)};
}

void ButtonCell::setMouseInsize(bool inside)
{
    m_isMouseInsize = inside;
    update();
}

void ButtonCell::enterEvent(QEnterEvent *event)
{
    QPushButton::enterEvent(event);
    setMouseInsize(true);
}

void ButtonCell::leaveEvent(QEvent *event)
{
    QPushButton::leaveEvent(event);
    setMouseInsize(false);
}

void ButtonCell::hideEvent(QHideEvent *event)
{
    QPushButton::hideEvent(event);
    // Nobody leaves what is no longer there.
    setMouseInsize(false);
}

void ButtonCell::fill(QPainter &painter, const QRectF &frame, const Gradient &gradient)
{
    QLinearGradient vertical(frame.bottomLeft(), frame.topLeft());
    vertical.setColorAt(0, gradient.first);
    vertical.setColorAt(1, gradient.last);
    painter.fillRect(frame, vertical);
}

void ButtonCell::drawContent(QPainter &painter, const QRectF &frame, const QColor &titleColor) const
{
    drawImage(painter, frame);
    if (const QRectF title = titleRect(frame); !title.isEmpty()) {
        painter.setPen(titleColor);
        painter.drawText(title, Qt::AlignCenter | Qt::TextShowMnemonic, text());
    }
    drawFocus(painter);
}

void ButtonCell::drawImage(QPainter &painter, const QRectF &frame) const
{
    const QRectF image = imageRect(frame);
    if (image.isEmpty() || icon().isNull())
        return;
    const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    const QPixmap pixmap = icon().pixmap(image.size().toSize(), devicePixelRatioF(), mode,
                                         isChecked() ? QIcon::On : QIcon::Off);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(image, pixmap, QRectF(pixmap.rect()));
}

void ButtonCell::drawFocus(QPainter &painter) const
{
    if (!hasFocus())
        return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect().adjusted(3, 3, -3, -3);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

QColor ButtonCell::readableOn(const std::optional<Gradient> &gradient) const
{
    const QColor text = palette().color(QPalette::WindowText);
    // A disabled button is meant to recede.
    if (!gradient || !isEnabled())
        return text;
    const QColor shade = middle(gradient->first, gradient->last, 0.5);
    QColor opaque = shade;
    opaque.setAlpha(255);
    const QColor ground = middle(palette().color(QPalette::Window), opaque, shade.alphaF());
    if (contrast(text, ground) >= readableContrast)
        return text;
    return contrast(Qt::black, ground) >= contrast(Qt::white, ground) ? Qt::black : Qt::white;
}
