#include "host/GeometryReport.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QTimer>
#include <QWidget>

namespace
{

QString placeLine(const QString &name, const QRect &place)
{
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(name)
        .arg(place.x())
        .arg(place.y())
        .arg(place.width())
        .arg(place.height());
}

// Where on the screen each row in sight is, as far as it is in sight.
QMap<int, QRect> rowsInSight(const QAbstractItemView &view)
{
    QMap<int, QRect> rows;
    const QAbstractItemModel *model = view.model();
    const QModelIndex root = view.rootIndex();
    const int rowCount = model ? model->rowCount(root) : 0;
    const int columnCount = model ? model->columnCount(root) : 0;
    for (int row = 0; row < rowCount; ++row) {
        QRect place;
        for (int column = 0; column < columnCount; ++column)
            place |= view.visualRect(model->index(row, column, root));
        place &= view.viewport()->rect();
        if (!place.isEmpty())
            rows.insert(row, place.translated(view.viewport()->mapToGlobal(QPoint(0, 0))));
    }
    return rows;
}

} // namespace

GeometryReport::GeometryReport(QWidget *window, const QString &path)
    : QObject(window)
    , m_path(path)
{
    QCoreApplication::instance()->installEventFilter(this);
    // A host knows the window's parts by their names alone.
    if (const QWidget *view = window->findChild<QWidget *>(QStringLiteral("iWebView")))
        connect(view, SIGNAL(loadFinished(bool)), this, SLOT(reportPreview()));
}

bool GeometryReport::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::Resize) {
        m_shown.insert(watched);
    } else if (event->type() == QEvent::Paint) {
        // The rows of a view are where they belong once it paints them.
        const QPointer<QAbstractItemView> view(qobject_cast<QAbstractItemView *>(watched->parent()));
        if (view && view->viewport() == watched && !view->objectName().isEmpty())
            QTimer::singleShot(0, this, [this, view] {
                if (view)
                    reportRows(view);
            });
        // After the first painting the window manager has placed the window.
        const QPointer<QWidget> window(m_shown.remove(watched) ? qobject_cast<QWidget *>(watched) : nullptr);
        if (window && window->isWindow())
            QTimer::singleShot(0, window, [this, window] { reportParts(window); });
    }
    return QObject::eventFilter(watched, event);
}

void GeometryReport::reportParts(const QWidget *window)
{
    const QList<QWidget *> parts = window->findChildren<QWidget *>();
    for (const QWidget *part : parts) {
        if (part->objectName().isEmpty() || !part->isVisible())
            continue;
        append(placeLine(part->objectName(), QRect(part->mapToGlobal(QPoint(0, 0)), part->size())));
    }
}

void GeometryReport::reportRows(const QAbstractItemView *view)
{
    const auto name
        = [view](int row) { return QStringLiteral("%1[%2]").arg(view->objectName(), QString::number(row)); };
    const QMap<int, QRect> rows = rowsInSight(*view);
    QMap<int, QRect> &before = m_rows[view->objectName()];
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (!rows.contains(it.key()))
            append(name(it.key()));
    }
    for (auto it = rows.cbegin(); it != rows.cend(); ++it) {
        if (before.value(it.key()) != it.value())
            append(placeLine(name(it.key()), it.value()));
    }
    before = rows;
}

void GeometryReport::reportPreview()
{
    append(QStringLiteral("preview loaded"));
}

void GeometryReport::append(const QString &line)
{
    QFile file(m_path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(line.toUtf8() + '\n');
}
