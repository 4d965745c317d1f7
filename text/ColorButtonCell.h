#pragma once

#include "platform/ui/ButtonCell.h"
#include "text/ColorCategory.h"

#include <QVariantMap>
#include <optional>

// A swatch button: a rounded field of its background colour, and its title, when it has one, on top.
class ColorButtonCell : public ButtonCell
{
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier WRITE setIdentifier)

public:
    // Has no title and an identifier that no other swatch of this process has.
    explicit ColorButtonCell(QWidget *parent = nullptr);
    // Made from an archive, and just as new: neither title, identifier nor text colour come back from one.
    explicit ColorButtonCell(const QVariantMap &initWithCoder, QWidget *parent = nullptr);

    // An archive: under "textColor" the red, green, blue and alpha components, an invalid value for none.
    QVariantMap encodeWithCoder() const;

    // The colour that the swatch shows; none looks like an empty field.
    const std::optional<Color> &backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const std::optional<Color> &color);

    // The colour of the title; none is the palette's.
    const std::optional<Color> &textColor() const { return m_textColor; }
    void setTextColor(const std::optional<Color> &color);

    QString identifier() const { return m_identifier; }
    void setIdentifier(const QString &identifier) { m_identifier = identifier; }

    // How many swatches this process has made.
    static qint32 indexOfCell() { return s_indexOfCell; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    static qint32 s_indexOfCell;

    std::optional<Color> m_backgroundColor;
    std::optional<Color> m_textColor;
    QString m_identifier;
};
