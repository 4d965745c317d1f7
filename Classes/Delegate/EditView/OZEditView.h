#pragma once

#include "Classes/Delegate/EditView/EditFrame.h"

#include <QImage>
#include <QPointer>
#include <QWidget>

// Broadcast on the default notification centre with the frame as the sender: after every drag step, and at
// the release that ends a press.
extern const QString EditViewChangeNotification;
extern const QString EditViewDidChangedNotification;

// The frame that a person drags and resizes over the page picture with the mouse or, while it has the focus,
// with the arrow keys: they move it by one point, with Shift the right and top edges. Its place is fractional
// and y-up in its parent; the widget's own geometry is the whole-numbered rectangle around it. Points "in
// window coordinates" are y-up from the window's lower-left corner, points "in screen coordinates" those of
// the toolkit.
class OZEditView : public QWidget
{
    Q_OBJECT

public:
    explicit OZEditView(const QRectF &frame = QRectF(), QWidget *parent = nullptr);

    // In the parent's points. Setting it asks for no notification and leaves the hit areas.
    QRectF frameRect() const { return m_frame.frame(); }
    void setFrameRect(const QRectF &frame);

    // Set by the first drag step that changed the frame.
    bool isChange() const { return m_isChange; }
    void setIsChange(bool isChange) { m_isChange = isChange; }
    QString identifier() const { return m_identifier; }
    void setIdentifier(const QString &identifier) { m_identifier = identifier; }

    // Cursor pictures with their hot spot at (8, 8): for moving, for the top-left and bottom-right corners,
    // and for the other two. Where one is empty the arrow serves.
    QImage cur_drag() const { return m_cur_drag; }
    void setCur_drag(const QImage &image) { m_cur_drag = image; }
    QImage cur_left_top() const { return m_cur_left_top; }
    void setCur_left_top(const QImage &image) { m_cur_left_top = image; }
    QImage cur_right_top() const { return m_cur_right_top; }
    void setCur_right_top(const QImage &image) { m_cur_right_top = image; }

    EditFrame::MouseType mouseType() const { return m_mouseType; }
    bool isMouseDown() const { return m_isMouseDown; }

    void refreshArea(const QRectF &rect, double boxSize);
    void forceRefreshLayout();
    EditFrame::MouseType mouseTypeForArea(const QRectF &area) const { return m_frame.mouseTypeForArea(area); }
    bool isMatchArea(const QPointF &windowPoint) const;
    QRectF matchArea(const QPointF &windowPoint) const;

    // (0, 0) while the frame is in no window.
    QPointF convertScreen2Base(const QPointF &screenPoint) const;

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The pointer's rules, in window coordinates.
    void mouseEntered(const QPointF &point);
    void mouseExited();
    void cursorUpdate(const QPointF &point);
    void mouseDown(const QPointF &point);
    void mouseDragged(const QPointF &point);
    void mouseUp(const QPointF &point);

    void followPointer(const QPointF &point);
    void dragBy(EditFrame::MouseType type, const QPointF &delta);
    void endKeys();
    void placeWidget();
    void showCursor();
    QPointF inWindow(const QPointF &widgetPoint) const;
    QPointF inFrame(const QPointF &windowPoint) const;
    QRectF parentInWindow() const;

    EditFrame m_frame;
    EditFrame::MouseType m_mouseType = EditFrame::None;
    bool m_isMouseDown = false;
    bool m_areKeysDown = false;
    QPointF m_orgPoint;
    bool m_isChange = false;
    QString m_identifier;
    QImage m_cur_drag;
    QImage m_cur_left_top;
    QImage m_cur_right_top;
};
