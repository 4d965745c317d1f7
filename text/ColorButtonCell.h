#pragma once

#include "text/ColorCategory.h"

#include <QPushButton>
#include <optional>

// A swatch button: a rounded field of its background colour, and its title, when it has one, on top.
class ColorButtonCell : public QPushButton
{
    Q_OBJECT

public:
    explicit ColorButtonCell(QWidget *parent = nullptr);

    // The colour that the swatch shows; none looks like an empty field.
    const std::optional<Color> &backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const std::optional<Color> &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::optional<Color> m_backgroundColor;
};
