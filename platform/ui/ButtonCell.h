#pragma once

#include <QPushButton>
#include <optional>

class QPainter;

// What the system's own flat buttons share: where image and title stand, the hover flag, and readable text on
// any ground. A subclass paints ground and border. Measures are points, from the upper left corner.
class ButtonCell : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(ImagePosition imagePosition READ imagePosition WRITE setImagePosition)
    Q_PROPERTY(bool transparent READ isTransparent WRITE setTransparent)

public:
    enum ImagePosition { NoImage = 0, ImageOnly = 1, ImageLeft = 2 };
    Q_ENUM(ImagePosition)

    explicit ButtonCell(QWidget *parent = nullptr);

    // Until it is set it follows what there is: an icon and a title, an icon alone, or no icon.
    ImagePosition imagePosition() const;
    void setImagePosition(ImagePosition position);

    // A transparent button reacts and shows nothing.
    bool isTransparent() const { return m_isTransparent; }
    void setTransparent(bool transparent);

    // Whether the mouse is over the button; true for a disabled one too.
    bool isMouseInsize() const { return m_isMouseInsize; }

    // Within the frame: a square beside a title, or else all but a margin of 2 points; empty without an
    // image.
    QRectF imageRect(const QRectF &frame) const;
    // What the image leaves; empty without a title.
    QRectF titleRect(const QRectF &frame) const;

protected:
    struct Gradient {
        QColor first;
        QColor last;
    };

    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    // Fills the plain rectangle, the first colour at its bottom.
    static void fill(QPainter &painter, const QRectF &frame, const Gradient &gradient);
    // Image, title and, where the keyboard is, the mark of it.
    void drawContent(QPainter &painter, const QRectF &frame, const QColor &titleColor) const;
    // The palette's text colour, or black or white where that could not be read on the gradient as it shows
    // through on the window.
    QColor readableOn(const std::optional<Gradient> &gradient) const;

private:
    void drawImage(QPainter &painter, const QRectF &frame) const;
    void drawFocus(QPainter &painter) const;
    void setMouseInsize(bool inside);

    std::optional<ImagePosition> m_imagePosition;
    bool m_isTransparent = false;
    bool m_isMouseInsize = false;
};
