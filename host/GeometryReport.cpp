#include "host/GeometryReport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QTimer>
#include <QWidget>

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
    if (event->type() == QEvent::Show) {
        m_shown.insert(watched);
    } else if (event->type() == QEvent::Paint && m_shown.remove(watched)) {
        // After the first painting the window manager has placed the window.
        const QPointer<QWidget> window(qobject_cast<QWidget *>(watched));
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
        const QPoint at = part->mapToGlobal(QPoint(0, 0));
        const QStringList place = {QString::number(at.x()), QString::number(at.y()),
                                   QString::number(part->width()), QString::number(part->height())};
        append(part->objectName() + u' ' + place.join(u' '));
    }
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
