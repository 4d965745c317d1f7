// The part of PrivateView that lets a person drag rows: to another place in the table, or out of it to delete
// them.
#include "linklist/PrivateView.h"

#include "Classes/Delegate/DragDrop/DragDeleteDelegate.h"
#include "Classes/Delegate/DragDrop/DragDeleteSource.h"
#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "linklist/LinkCellDelegate.h"
#include "linklist/LinkListModel.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/DisappearingItem.h"

#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTableView>
#include <algorithm>

namespace
{
constexpr QSize puffSize(48, 48);
}

PrivateView::~PrivateView()
{
    endEditing();
    NotificationCenter::defaultCenter().removeObserver(this);
    delete m_dragDeleteCtrl;
}

void PrivateView::endEditing()
{
    m_isEditable = false;
    cancelDrag();
}

void PrivateView::cancelDrag()
{
    if (m_isDragging)
        QDrag::cancel();
    if (m_dragDeleteCtrl && m_dragDeleteCtrl->window())
        m_dragDeleteCtrl->window()->draggingEnded();
    onDeleteWindowDismiss();
}

void PrivateView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    addDragDetection();
}

void PrivateView::addDragDetection()
{
    // Wrapping the window shows this view anew and so comes here again.
    if (m_isAddingDetection || isWindow() || !m_tableView
        || (m_dragDeleteView && m_dragDeleteView->window() == window()))
        return;
    const QScopedValueRollback adding(m_isAddingDetection, true);
    const QStringList types = {LinkListModel::dragType()};
    const QList<DragDeleteDetectView *> present = window()->findChildren<DragDeleteDetectView *>();
    const auto own = std::find_if(present.begin(), present.end(), [this](const DragDeleteDetectView *view) {
        return view->window() == window(); // and not a dialog's below it
    });
    if (own != present.end()) {
        m_dragDeleteView = *own;
        m_dragDeleteView->addDataTypes(types);
    } else {
        m_dragDeleteView = DragDeleteDetectView::addDragDetectViewtoWindow(window(), types, m_tableView);
    }
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.removeObserver(this);
    center.addObserver(this, DragDeleteWindowNotification,
                       [this](QObject *ended) { DeleteWindowDragEndA(ended); });
}

DragDeleteDetectView *PrivateView::dragDeleteView() const
{
    return m_dragDeleteView;
}

DragDeleteDelegate *PrivateView::DragDeleteCtrl() const
{
    return m_dragDeleteCtrl;
}

bool PrivateView::writeRowsWithIndexes(QTableView *table, const QList<int> &rows, QMimeData *pasteboard)
{
    if (!table || table != m_tableView || !pasteboard || rows.isEmpty() || !m_isEditable)
        return false;
    m_model->writeRowsWithIndexes(rows, pasteboard);
    if (m_dragDeleteView) {
        m_dragDeleteView->setLayoutSender(m_tableView);
        m_dragDeleteView->refresh();
    }
    delete m_dragDeleteCtrl;
    m_dragDeleteCtrl = new DragDeleteDelegate({LinkListModel::dragType()}, m_tableView, this);
    m_dragDeleteCtrl->window()->orderBehind();
    return true;
}

Qt::DropActions PrivateView::validateDrop(const QTableView *table, const QMimeData *pasteboard) const
{
    return table && table == m_tableView ? m_model->validateDrop(pasteboard) : Qt::IgnoreAction;
}

bool PrivateView::acceptDrop(const QTableView *table, const QMimeData *pasteboard, int row)
{
    return table && table == m_tableView && m_model->dropMimeData(pasteboard, Qt::MoveAction, row, 0, {});
}

void PrivateView::showDroppedRows(const QList<int> &rows)
{
    onDeleteWindowDismiss();
    QList<int> present = rows;
    while (!present.isEmpty() && present.last() >= m_model->items().size())
        present.removeLast();
    if (m_tableView)
        m_tableView->clearSelection();
    selectRows(present);
    if (m_isEditable)
        onSave();
}

void PrivateView::onDeleteWindowDismiss(QObject *)
{
    if (m_dragDeleteCtrl && m_dragDeleteCtrl->window() && m_dragDeleteCtrl->window()->isVisible())
        m_dragDeleteCtrl->window()->hide();
}

void PrivateView::DeleteWindowDragEndA(QObject *window)
{
    if (!m_dragDeleteCtrl || window != m_dragDeleteCtrl->window())
        return;
    bool isDeleted = false;
    const QList<QByteArray> dropped = m_dragDeleteCtrl->window()->dragResult();
    for (const QByteArray &block : dropped) {
        const std::optional<QList<int>> rows = m_model->readRows(block);
        if (!rows || !m_isEditable)
            continue;
        m_model->remove(*rows);
        isDeleted = true;
    }
    const QPointF at = m_dragDeleteCtrl->window()->dropPoint();
    onDeleteWindowDismiss();
    if (!isDeleted)
        return;
    DisappearingItem::showAnimation(at, puffSize, this, [this] { deleteAnimationEnd(nullptr); });
    onSave();
}

void PrivateView::deleteAnimationEnd(void *) { }

void PrivateView::dragRows(const QList<int> &rows)
{
    // The button may have come up since, and a drag would then hang on the pointer.
    if (m_isDragging || !QGuiApplication::mouseButtons().testFlag(Qt::LeftButton))
        return;
    m_cells->commitEditor();
    auto pasteboard = std::make_unique<QMimeData>();
    if (!writeRowsWithIndexes(m_tableView, rows, pasteboard.get()))
        return;
    m_isDragging = true;
    const QPointer<PrivateView> self(this);
    DragDeleteSource source(m_tableView, m_dragDeleteView, m_dragDeleteCtrl->window());
    source.run(std::move(pasteboard), pictureOfRows(rows));
    if (self)
        m_isDragging = false;
}

// A sheet with the first title, and the number of rows where there are more.
QPixmap PrivateView::pictureOfRows(const QList<int> &rows) const
{
    constexpr int margin = 8;
    constexpr int maximumWidth = 160;
    const QFontMetrics metrics(m_tableView->font());
    const QString number = rows.size() > 1 ? QString::number(rows.size()) : QString();
    const int numberWidth = number.isEmpty() ? 0 : metrics.horizontalAdvance(number) + 2 * margin;
    const QString line = m_cells->displayText(m_model->items()[rows.first()].title, locale());
    const QString title = metrics.elidedText(line, Qt::ElideRight, maximumWidth - 2 * margin - numberWidth);
    const QSize size(metrics.horizontalAdvance(title) + 2 * margin + numberWidth, metrics.height() + margin);

    QPixmap picture(size * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(palette().color(QPalette::Highlight));
    QPainter painter(&picture);
    painter.setFont(m_tableView->font());
    painter.setPen(palette().color(QPalette::HighlightedText));
    const auto draw = [&](const QRect &place, const QString &text) {
        painter.drawText(QStyle::visualRect(layoutDirection(), QRect(QPoint(), size), place),
                         Qt::AlignCenter | Qt::TextSingleLine, text);
    };
    draw(QRect(0, 0, size.width() - numberWidth, size.height()), title);
    draw(QRect(size.width() - numberWidth, 0, numberWidth, size.height()), number);
    return picture;
}
