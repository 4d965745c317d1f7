#pragma once

#include <QStringList>
#include <QWidget>

class QMimeData;

// Broadcast on the default notification centre when a drop brought something, with the view as the sender.
// The module exports it under this name.
extern Q_DECL_EXPORT const QString DragReportNotification;

// A transparent view over an area of a window that takes files dropped there and draws a grey frame while
// some are above it. It grows and shrinks with its parent. Everything else passes through it to what lies
// beneath: clicks, wheel, hovering, and drags without files. The order of the calls of a drop is
// draggingEntered, prepareForDragOperation, performDragOperation, concludeDragOperation.
class DragFileImport : public QWidget
{
    Q_OBJECT

public:
    // The frame is in the parent's points.
    explicit DragFileImport(const QRect &frame = QRect(), QWidget *parent = nullptr);

    // Files are above the view.
    bool highlight() const { return m_highlight; }

    // Accepted endings without the dot, compared without regard to case; "*" accepts everything, an empty
    // list nothing.
    QStringList filters() const { return m_filters; }
    void setFilters(const QStringList &filters) { m_filters = filters; }
    // Folders are accepted even if no ending matches; at first they are not.
    bool allowDirectory() const { return m_allowDirectory; }
    void setAllowDirectory(bool allow) { m_allowDirectory = allow; }
    // The accepted paths of the last drop, in its order. Links are not followed.
    QStringList dragResult() const { return m_dragResult; }
    void setDragResult(const QStringList &paths) { m_dragResult = paths; }

    // Whether a path passes the filters. Its ending is what follows the last dot of its name, empty without
    // one.
    bool checkFilters(const QString &path) const;

    // Answers what is offered of what the source allows: a copy, or else a link; never a move, as the source
    // would delete its files.
    Qt::DropAction draggingEntered(Qt::DropActions allowed);
    void draggingExited();
    bool prepareForDragOperation();
    // Whether at least one of the paths passes.
    bool performDragOperation(const QMimeData &dragged) const;
    // Fills dragResult and, unless it is empty, tells the observers. One of them may delete the view.
    void concludeDragOperation(const QMimeData &dragged);

    // What takes a click at that point: never this view.
    QWidget *hitTest(const QPoint &point) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void letClicksThrough(bool through);
    void setHighlight(bool highlight);
    void followParent(const QSize &before, const QSize &after);

    QStringList m_filters;
    QStringList m_dragResult;
    bool m_allowDirectory = false;
    bool m_highlight = false;
    // The parent's size when this view was last placed in it, the size that it was given then, and the size
    // that it should have, which is negative in a parent that is smaller than the margins.
    QSize m_parentSize;
    QSize m_givenSize;
    QSize m_size;
};
