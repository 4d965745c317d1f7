#include "host/GeometryReport.h"

#include <QEvent>
#include <QFile>
#include <QTimer>
#include <QWidget>

GeometryReport::GeometryReport(QWidget *window, const QString &path)
    : QObject(window)
    , m_window(window)
    , m_path(path)
{
    window->installEventFilter(this);
    // A host knows the window's parts by their names alone.
    if (const QWidget *view = window->findChild<QWidget *>(QStringLiteral("iWebView")))
        connect(view, SIGNAL(loadFinished(bool)), this, SLOT(reportPreview()));
}

bool GeometryReport::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint && !m_isWritten) {
        m_isWritten = true;
        // After the first painting the window manager has placed the window.
        QTimer::singleShot(0, this, &GeometryReport::reportParts);
    }
    return QObject::eventFilter(watched, event);
}

void GeometryReport::reportParts()
{
    const QList<QWidget *> parts = m_window->findChildren<QWidget *>();
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
