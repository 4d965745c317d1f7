#pragma once

#include "platform/ui/ButtonCell.h"

// A flat button: a grey outline, a light blue ring inside it while the mouse is over it, and a light shade
// while it is pressed.
class SimpleCell : public ButtonCell
{
    Q_OBJECT

public:
    explicit SimpleCell(QWidget *parent = nullptr);

    // The hover flag.
    bool mouseStatus() const { return isMouseInsize(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};
