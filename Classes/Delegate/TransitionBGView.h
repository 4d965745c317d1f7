#pragma once

#include <QWidget>

// The background of a panel: a gradient from half-transparent white at the top to half-transparent light grey
// at the bottom, within a rounded grey outline. It always draws its whole bounds. As it lightens a dark
// window, the texts on it take black or white where the window's own text colour could not be read.
class TransitionBGView : public QWidget
{
    Q_OBJECT

public:
    explicit TransitionBGView(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;

private:
    void chooseTextColor();

    bool m_isChoosing = false;
};
