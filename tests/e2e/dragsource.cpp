// dragsource URL...
// A window from which the mouse drags those URLs, as a file browser's does, for dropfiles.sh. It writes to
// standard output, line by line: "window X Y WIDTH HEIGHT" in the screen's points, and after each drag
// "copy", "link", "move" or "refused".
#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>
#include <cstdio>

namespace
{
class Source : public QLabel
{
public:
    explicit Source(const QList<QList<QUrl>> &drags)
        : QLabel(QStringLiteral("Drag from here"))
        , m_drags(drags)
    {
    }

    void sayWhere()
    {
        const QRect place(mapToGlobal(QPoint(0, 0)), size());
        if (place != m_place)
            std::printf("window %d %d %d %d\n", place.x(), place.y(), place.width(), place.height());
        std::fflush(stdout);
        m_place = place;
    }

protected:
    void mousePressEvent(QMouseEvent *event) override { m_pressed = event->position(); }
    void mouseMoveEvent(QMouseEvent *event) override
    {
        if ((event->position() - m_pressed).manhattanLength() < QApplication::startDragDistance()
            || m_drags.isEmpty())
            return;
        auto *drag = new QDrag(this);
        auto *files = new QMimeData;
        files->setUrls(m_drags.takeFirst());
        drag->setMimeData(files);
        const Qt::DropAction action
            = drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::MoveAction);
        std::puts(action == Qt::CopyAction       ? "copy"
                      : action == Qt::LinkAction ? "link"
                      : action == Qt::MoveAction ? "move"
                                                 : "refused");
        std::fflush(stdout);
    }

private:
    QList<QList<QUrl>> m_drags;
    QRect m_place;
    QPointF m_pressed;
};
} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QList<QList<QUrl>> drags{{}};
    for (int i = 1; i < argc; ++i) {
        if (QByteArray(argv[i]) == "+")
            drags.append(QList<QUrl>());
        else
            drags.last().append(QUrl::fromEncoded(argv[i]));
    }
    Source source(drags);
    source.setWindowTitle(QStringLiteral("dragsource"));
    source.setGeometry(100, 100, 200, 150);
    source.show();
    QTimer timer;
    timer.callOnTimeout(&source, [&source] { source.sayWhere(); });
    timer.start(100);
    return QApplication::exec();
}
