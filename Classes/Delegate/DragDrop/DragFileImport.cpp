#include "Classes/Delegate/DragDrop/DragFileImport.h"

#include "platform/NotificationCenter.h"

#include <QCoreApplication>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QSysInfo>
#include <QUrl>
#include <QWindow>
#include <algorithm>

const QString DragReportNotification
    = QStringLiteral("DragReportNotification.{54df09e9-fd31-4b16-8bf2-86632d01aa70}");

namespace
{
constexpr QColor frameGray(128, 128, 128);
constexpr double frameWidth = 5;

// The path that a URL names on this machine; null for another one's.
QString localPath(const QUrl &url)
{
    const QString host = url.host();
    const bool isHere = host.isEmpty() || host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0
        || host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
    if (!url.isLocalFile() || !isHere)
        return QString();
    QUrl plain = url.adjusted(QUrl::StripTrailingSlash);
    plain.setHost(QString());
    return plain.toLocalFile();
}

QStringList pathsOf(const QMimeData &data)
{
    QStringList paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        // No file has a NUL in its name; one would end the path early and hide its real ending.
        const QString path = localPath(url);
        if (!path.isEmpty() && !path.contains(QChar::Null))
            paths.append(path);
    }
    return paths;
}

Qt::DropAction offered(Qt::DropActions allowed)
{
    if (allowed & Qt::CopyAction)
        return Qt::CopyAction;
    return allowed & Qt::LinkAction ? Qt::LinkAction : Qt::IgnoreAction;
}

bool isForUs(const QDropEvent &event)
{
    return offered(event.possibleActions()) != Qt::IgnoreAction && !pathsOf(*event.mimeData()).isEmpty();
}

QString endingOf(const QString &path)
{
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot < 0 ? QString() : name.mid(dot + 1);
}
} // namespace

// Drops and clicks have one switch in the toolkit: a view that lets clicks through is passed over by drags,
// too. So clicks pass by default, and the view takes part only from the moment a drag with files comes to its
// window until the drag leaves or ends; no click can happen in between.
DragFileImport::DragFileImport(const QRect &frame, QWidget *parent)
    : QWidget(parent)
{
    setGeometry(frame);
    setAcceptDrops(true);
    letClicksThrough(true);
    QCoreApplication::instance()->installEventFilter(this);
    if (parent)
        m_parentSize = parent->size();
    m_givenSize = m_size = size();
}

void DragFileImport::letClicksThrough(bool through)
{
    setAttribute(Qt::WA_TransparentForMouseEvents, through);
}

QWidget *DragFileImport::hitTest(const QPoint &) const
{
    return nullptr;
}

bool DragFileImport::checkFilters(const QString &path) const
{
    const QString ending = endingOf(path).toUpper();
    const auto matches = [&ending](const QString &filter) {
        return filter == QLatin1String("*") || filter.toUpper() == ending;
    };
    return std::any_of(m_filters.begin(), m_filters.end(), matches)
        || (m_allowDirectory && QFileInfo(path).isDir());
}

Qt::DropAction DragFileImport::draggingEntered(Qt::DropActions allowed)
{
    setHighlight(true);
    return offered(allowed);
}

void DragFileImport::draggingExited()
{
    setHighlight(false);
}

bool DragFileImport::prepareForDragOperation()
{
    setHighlight(false);
    return true;
}

bool DragFileImport::performDragOperation(const QMimeData &dragged) const
{
    const QStringList paths = pathsOf(dragged);
    return std::any_of(paths.begin(), paths.end(),
                       [this](const QString &path) { return checkFilters(path); });
}

void DragFileImport::concludeDragOperation(const QMimeData &dragged)
{
    m_dragResult = pathsOf(dragged);
    m_dragResult.removeIf([this](const QString &path) { return !checkFilters(path); });
    if (!m_dragResult.isEmpty())
        NotificationCenter::defaultCenter().post(DragReportNotification, this);
}

void DragFileImport::setHighlight(bool highlight)
{
    m_highlight = highlight;
    update();
}

// Of all events of the application: those of drags to the window that shows this view, and the parent's new
// sizes.
bool DragFileImport::eventFilter(QObject *watched, QEvent *event)
{
    const auto isOurWindow = [&] { return watched->isWindowType() && watched == window()->windowHandle(); };
    switch (event->type()) {
    case QEvent::DragEnter:
        if (isOurWindow())
            letClicksThrough(!isEnabled() || !isForUs(*static_cast<QDropEvent *>(event)));
        break;
    case QEvent::DragLeave:
    case QEvent::Drop:
        if (isOurWindow())
            letClicksThrough(true);
        break;
    case QEvent::Resize:
        if (watched == parentWidget()) {
            const auto *resize = static_cast<QResizeEvent *>(event);
            followParent(resize->oldSize(), resize->size());
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

// Keeps the distances to the parent's four edges. A parent that had no window yet has no size before.
void DragFileImport::followParent(const QSize &before, const QSize &after)
{
    const bool isPlacedAnew = size() != m_givenSize;
    if (isPlacedAnew)
        m_size = size();
    m_size += after - (before.isValid() ? before : isPlacedAnew ? after : m_parentSize);
    m_parentSize = after;
    m_givenSize = m_size.expandedTo(QSize(0, 0));
    resize(m_givenSize);
}

bool DragFileImport::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ParentChange:
        if (parentWidget())
            m_parentSize = parentWidget()->size();
        break;
    // The drag is over, and nobody said so.
    case QEvent::Enter:
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
        letClicksThrough(true);
        setHighlight(false);
        event->ignore();
        return false;
    default:
        break;
    }
    return QWidget::event(event);
}

void DragFileImport::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    if (!m_highlight)
        return;
    QPainter painter(this);
    painter.setPen(QPen(frameGray, frameWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.drawRect(QRectF(rect()));
}

void DragFileImport::dragEnterEvent(QDragEnterEvent *event)
{
    if (!isForUs(*event)) {
        event->ignore();
        return;
    }
    event->setDropAction(draggingEntered(event->possibleActions()));
    event->accept();
}

void DragFileImport::dragMoveEvent(QDragMoveEvent *event)
{
    // Comes only after an accepted enter. Looking at the paths again would ask the program that they come
    // from.
    event->setDropAction(offered(event->possibleActions()));
    event->accept();
}

void DragFileImport::dragLeaveEvent(QDragLeaveEvent *)
{
    draggingExited();
}

void DragFileImport::dropEvent(QDropEvent *event)
{
    if (!prepareForDragOperation() || offered(event->possibleActions()) == Qt::IgnoreAction
        || !performDragOperation(*event->mimeData())) {
        event->setDropAction(Qt::IgnoreAction);
        event->ignore();
        return;
    }
    event->setDropAction(offered(event->possibleActions()));
    event->accept();
    // Last, as this view may be gone afterwards.
    concludeDragOperation(*event->mimeData());
}
