#pragma once

#include <QObject>
#include <QPixmap>
#include <QPointF>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <optional>

class DragDeleteDetectView;
class DragDeleteWindow;
class QDrag;
class QDropEvent;
class QMimeData;

// Runs one drag of things that vanish when they are dropped outside the view they come from, and tells how it
// ended. Lives on the stack of whoever starts the drag; the parts that it watches may go while it runs.
class DragDeleteSource : public QObject
{
    Q_OBJECT

public:
    // The view that is dragged from, its window's detector and the window that catches the drop; the latter
    // two may be null where only drops on the view itself are wanted.
    DragDeleteSource(QWidget *view, DragDeleteDetectView *detector, DragDeleteWindow *catcher);

    // Returns when the drag is over, however it ended; the catching window has been told by then, a release
    // that no window heard of included. Takes the data.
    void run(std::unique_ptr<QMimeData> data, const QPixmap &picture);

    // Whether the drag of that event may concern the widget: one of this process concerns the window that it
    // comes from alone.
    static bool concerns(const QDropEvent *event, const QWidget *widget);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();
    void repeatMove(const QPoint &mouse) const;
    void dropOnView(const QMimeData &data) const;
    void showCursor();

    QPointer<QWidget> m_view;
    QPointer<DragDeleteDetectView> m_detector;
    QPointer<DragDeleteWindow> m_catcher;
    QPointer<QDrag> m_drag;
    QTimer m_updates;
    bool m_isCancelled = false;
    bool m_wasActive = false;
    QPixmap m_picture;
    std::optional<QPointF> m_released;
};
