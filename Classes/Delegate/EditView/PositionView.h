#pragma once

#include "Classes/Delegate/PositionRect.h"

#include <QColor>
#include <QPointer>
#include <QWidget>

class OZEditView;

// Who is told of the frame's moves. Not owned by the view; outlives it or is unset first.
class PostionViewDelete
{
public:
    virtual ~PostionViewDelete() = default;
    // The frame is moving: the margins have changed.
    virtual void onChangePositionView() = 0;
    // The person let go of the frame.
    virtual void didChangedPositionView() = 0;
};

// The small picture of a book page on which a person sees, moves and resizes the box. Its record is the
// truth: the frame is placed by it when it is set, when the view is resized and when the frame is released.
// Margins are in percent of the picture, which fills the view.
class PositionView : public QWidget
{
    Q_OBJECT

public:
    // Starts with all margins at 50: there is no box until a record is set.
    explicit PositionView(QWidget *parent = nullptr);
    ~PositionView() override;

    void setPositionRectWithLeft(double left, double Top, double Right, double Bottom, double Transparency,
                                 qint64 Layer);
    // Copies all six fields.
    void setPositionRect(const PositionRect &rect);
    PositionRect &getPositionRect() { return m_positionRect; }

    // A starting point, y-up in the view, for whoever needs one; the view itself makes nothing of it.
    QPointF initPoint() const { return m_initPoint; }
    void setInitPoint(const QPointF &point) { m_initPoint = point; }

    PostionViewDelete *ower() const { return m_ower; }
    void setOwer(PostionViewDelete *ower) { m_ower = ower; }

    // Colours of the page; invalid means the system's text background and grey. Setting one does not redraw.
    QColor fillColor() const { return m_fillColor; }
    void setFillColor(const QColor &color) { m_fillColor = color; }
    QColor outlineColor() const { return m_outlineColor; }
    void setOutlineColor(const QColor &color) { m_outlineColor = color; }

    // The frame; a child of this view from the first box that is not empty on.
    OZEditView *objectView() const { return m_objectView; }

    QSize sizeHint() const override { return {200, 140}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onChangeEditView(QObject *sender);
    void onDidChangedEditView(QObject *sender);
    QRectF areaRect() const;
    bool hasArea() const;
    bool isFrameHidden() const;
    void placeFrame();

    PositionRect m_positionRect;
    OZEditView *m_objectView;
    QPointF m_initPoint;
    PostionViewDelete *m_ower = nullptr;
    QColor m_fillColor;
    QColor m_outlineColor;
};
