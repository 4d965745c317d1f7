#pragma once

#include <QRectF>
#include <QString>
#include <optional>

// Where the box sits on a book page and how it is shown: four margins in percent of the page, each measured
// from its own edge, a transparency in percent and a layer. A value; it enforces no range. The box's width in
// percent is 100 - left - right, its height 100 - top - bottom. Rectangles are in page points with the origin
// at the page's lower-left corner and y growing upward.
class PositionRect
{
public:
    double left() const { return m_left; }
    void setLeft(double left) { m_left = left; }
    double top() const { return m_top; }
    void setTop(double top) { m_top = top; }
    double right() const { return m_right; }
    void setRight(double right) { m_right = right; }
    double bottom() const { return m_bottom; }
    void setBottom(double bottom) { m_bottom = bottom; }
    double transparency() const { return m_transparency; }
    void setTransparency(double transparency) { m_transparency = transparency; }
    qint64 layer() const { return m_layer; }
    void setLayer(qint64 layer) { m_layer = layer; }

    bool operator==(const PositionRect &) const = default;

    // The box in points on a page of the given size in points.
    QRectF getObjectFrameWithOutlineSize(const QSizeF &outlineSize) const;
    static QRectF getObjectFrameWith(const PositionRect &rect, const QSizeF &outlineSize);

    // The margins of a box on a page; transparency and layer are 0. A page of size 0 gives margins that are
    // no numbers.
    static PositionRect convertObjectFrame(const QRectF &frame, const QSizeF &outlineSize);

    // Writes the six lines left, top, right, bottom, transparency ("%.1f") and layer; true when they are on
    // disk.
    bool saveToFile(const QString &path) const;

    // Reads the six lines, the numbers at single precision; nothing when the file is missing, is not UTF-8 or
    // has fewer than six lines. A line that begins with no number is 0.
    static std::optional<PositionRect> readFromFile(const QString &path);

private:
    double m_left = 0;
    double m_top = 0;
    double m_right = 0;
    double m_bottom = 0;
    double m_transparency = 0;
    qint64 m_layer = 0;
};
