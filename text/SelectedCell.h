#pragma once

#include "platform/ui/ButtonCell.h"

// A flat, shaded button that its owner can show as the chosen one.
class SelectedCell : public ButtonCell
{
    Q_OBJECT
    Q_PROPERTY(bool isSelected READ isSelected WRITE setIsSelected)

public:
    explicit SelectedCell(QWidget *parent = nullptr);

    bool isSelected() const { return m_isSelected; }
    void setIsSelected(bool selected);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Gradient ground() const;

    bool m_isSelected = false;
};
