#include "Classes/Delegate/PositionRect.h"

#include "platform/File.h"
#include "platform/Number.h"

#include <array>

namespace
{

struct NumberLine {
    double (PositionRect::*value)() const;
    void (PositionRect::*setValue)(double);
};

// The lines of the file in their order; the layer follows as the sixth.
constexpr std::array<NumberLine, 5> numberLines = {{
    {&PositionRect::left, &PositionRect::setLeft},
    {&PositionRect::top, &PositionRect::setTop},
    {&PositionRect::right, &PositionRect::setRight},
    {&PositionRect::bottom, &PositionRect::setBottom},
    {&PositionRect::transparency, &PositionRect::setTransparency},
}};

} // namespace

QRectF PositionRect::getObjectFrameWithOutlineSize(const QSizeF &outlineSize) const
{
    return {m_left * outlineSize.width() / 100, m_bottom * outlineSize.height() / 100,
            ((100 - m_left) - m_right) * outlineSize.width() / 100,
            ((100 - m_top) - m_bottom) * outlineSize.height() / 100};
}

QRectF PositionRect::getObjectFrameWith(const PositionRect &rect, const QSizeF &outlineSize)
{
    return rect.getObjectFrameWithOutlineSize(outlineSize);
}

PositionRect PositionRect::convertObjectFrame(const QRectF &frame, const QSizeF &outlineSize)
{
    PositionRect rect;
    rect.m_left = frame.x() * 100 / outlineSize.width();
    rect.m_bottom = frame.y() * 100 / outlineSize.height();
    rect.m_right = 100 - (frame.x() + frame.width()) * 100 / outlineSize.width();
    rect.m_top = 100 - (frame.y() + frame.height()) * 100 / outlineSize.height();
    return rect;
}

bool PositionRect::saveToFile(const QString &path) const
{
    QByteArray text;
    for (const NumberLine &line : numberLines)
        text += Number::fixed((this->*line.value)(), 1) + '\n';
    return File::write(path, text + QByteArray::number(m_layer));
}

std::optional<PositionRect> PositionRect::readFromFile(const QString &path)
{
    const std::optional<QString> text = File::readText(path);
    if (!text)
        return std::nullopt;
    const QStringList lines = QString(*text).remove(u'\r').split(u'\n');
    if (lines.size() <= qsizetype(numberLines.size()))
        return std::nullopt;
    PositionRect rect;
    for (size_t i = 0; i < numberLines.size(); ++i)
        (rect.*numberLines[i].setValue)(Number::toSingle(lines[qsizetype(i)]));
    rect.m_layer = Number::toInteger(lines[qsizetype(numberLines.size())]);
    return rect;
}
