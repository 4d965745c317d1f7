#pragma once

#include <QTableView>

// A table whose rows a person drags: it tells its owner that a drag begins instead of running it, and shows
// with a line where dragged rows would land.
class LinkTableView : public QTableView
{
    Q_OBJECT

public:
    explicit LinkTableView(QWidget *parent = nullptr);

    // Before which row something dropped at that point of the viewport lands; the number of rows for behind
    // the last. Where the last row leaves no empty area below it, its lower edge stands for that.
    int landingRow(const QPoint &position) const;

Q_SIGNALS:
    // The person drags these rows away, ascending; the button is still down.
    void dragStarted(const QList<int> &rows);

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool canDrop(const QDropEvent *event) const;
    void showLine(int row);

    int m_line = -1; // the row above which the line stands; -1 for no line
    QPoint m_dragPosition;
    bool m_isDragStarted = false; // until the button comes up
};
