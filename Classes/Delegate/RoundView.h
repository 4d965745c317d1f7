#pragma once

#include <QWidget>

class QPainter;

// A rounded grey outline around a panel; what lies behind shows through. It always draws its whole bounds,
// with corners of 4 points or, when it is smaller than 8, of half its side.
class RoundView : public QWidget
{
    Q_OBJECT

public:
    explicit RoundView(QWidget *parent = nullptr);

    // The outline, a line of one point along the inner side of the bounds.
    static void drawOutline(QPainter &painter, const QRectF &bounds);

protected:
    void paintEvent(QPaintEvent *event) override;
};
