#include "linklist/LinkListModel.h"

#include "Classes/Mode/Locale.h"
#include "Classes/Mode/Xml.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <algorithm>
#include <iterator>
#include <numeric>

namespace
{

// How many rows from `at` on stand directly one below the other.
int runLength(const QList<int> &rows, qsizetype at)
{
    qsizetype end = at + 1;
    while (end < rows.size() && rows[end] == rows[end - 1] + 1)
        ++end;
    return int(end - at);
}

QList<int> rowsFrom(int first, qsizetype count)
{
    QList<int> rows(count);
    std::iota(rows.begin(), rows.end(), first);
    return rows;
}

} // namespace

LinkListModel::LinkListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
    const auto countChange = [this] { ++m_revision; };
    connect(this, &QAbstractItemModel::rowsInserted, this, countChange);
    connect(this, &QAbstractItemModel::rowsRemoved, this, countChange);
    connect(this, &QAbstractItemModel::rowsMoved, this, countChange);
}

QList<int> LinkListModel::held(const QList<int> &rows) const
{
    QList<int> result;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(result),
                 [this](int row) { return holds(row); });
    return result;
}

void LinkListModel::append(const QList<LinkItem> &items)
{
    if (items.isEmpty())
        return;
    beginInsertRows({}, int(m_items.size()), int(m_items.size() + items.size()) - 1);
    m_items += items;
    endInsertRows();
}

void LinkListModel::remove(const QList<int> &rows)
{
    const QList<int> present = held(rows);
    // From the last run to the first, so that the rows still to go keep their numbers.
    for (qsizetype end = present.size(); end > 0;) {
        qsizetype begin = end - 1;
        while (begin > 0 && present[begin - 1] == present[begin] - 1)
            --begin;
        beginRemoveRows({}, present[begin], present[end - 1]);
        m_items.remove(present[begin], end - begin);
        endRemoveRows();
        end = begin;
    }
}

void LinkListModel::clear()
{
    if (m_items.isEmpty())
        return;
    beginRemoveRows({}, 0, int(m_items.size()) - 1);
    m_items.clear();
    endRemoveRows();
}

// Moves `count` rows so that they stand before what is row `destination` now.
void LinkListModel::moveBlock(int first, int count, int destination)
{
    if (!beginMoveRows({}, first, first + count - 1, {}, destination))
        return; // it stands there already
    const auto block = m_items.begin() + first;
    if (destination < first)
        std::rotate(m_items.begin() + destination, block, block + count);
    else
        std::rotate(block, block + count, m_items.begin() + destination);
    endMoveRows();
}

QList<int> LinkListModel::moveUp(const QList<int> &rows)
{
    const QList<int> present = held(rows);
    if (present.isEmpty() || present.first() == 0)
        return {};
    const int first = present.first() - 1;
    // Runs already gathered stand above the next one and leave its numbers alone.
    for (qsizetype at = 0; at < present.size();) {
        const int count = runLength(present, at);
        moveBlock(present[at], count, first + int(at));
        at += count;
    }
    return rowsFrom(first, present.size());
}

QList<int> LinkListModel::moveDown(const QList<int> &rows)
{
    const QList<int> present = held(rows);
    if (present.isEmpty() || present.last() >= m_items.size() - 1)
        return {};
    // From the last run to the first: what is gathered grows upward from below the last row.
    int destination = present.last() + 2;
    for (qsizetype end = present.size(); end > 0;) {
        qsizetype begin = end - 1;
        while (begin > 0 && present[begin - 1] == present[begin] - 1)
            --begin;
        const int count = int(end - begin);
        moveBlock(present[begin], count, destination);
        destination -= count;
        end = begin;
    }
    return rowsFrom(destination, present.size());
}

QList<int> LinkListModel::acceptDrop(const QList<int> &rows, int row)
{
    QList<int> result;
    for (const int from : rows) {
        const int count = int(m_items.size());
        if (from >= count)
            break;
        if (from >= row) {
            moveBlock(from, 1, row);
            result.append(row++);
        } else {
            moveBlock(from, 1, std::min(row, count));
            result.append(row >= count ? count : row - 1);
        }
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

QString LinkListModel::dragType()
{
    return QStringLiteral("LinkListDragType");
}

void LinkListModel::writeRowsWithIndexes(const QList<int> &rows, QMimeData *pasteboard) const
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << m_id << m_revision;
    for (const int row : rows)
        stream << qint32(row);
    pasteboard->setData(dragType(), data);
}

std::optional<QList<int>> LinkListModel::readRows(const QByteArray &data) const
{
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_6_0);
    QUuid id;
    quint32 revision = 0;
    stream >> id >> revision;
    if (stream.status() != QDataStream::Ok || id != m_id || revision != m_revision)
        return {};
    QList<int> rows;
    while (!stream.atEnd()) {
        qint32 row = 0;
        stream >> row;
        if (stream.status() != QDataStream::Ok || row <= (rows.isEmpty() ? -1 : rows.last()))
            return {};
        rows.append(row);
    }
    return rows;
}

Qt::DropActions LinkListModel::validateDrop(const QMimeData *pasteboard) const
{
    return pasteboard && readRows(pasteboard->data(dragType())) ? supportedDropActions() : Qt::IgnoreAction;
}

void LinkListModel::setTitle(int row, const QString &title)
{
    if (!holds(row))
        return;
    m_items[row].title = Xml::cleaned(title);
    Q_EMIT dataChanged(index(row, TitleColumn), index(row, TitleColumn));
}

void LinkListModel::setLink(int row, const QString &link)
{
    if (!holds(row))
        return;
    m_items[row].link = Xml::cleaned(link);
    Q_EMIT dataChanged(index(row, LinkColumn), index(row, LinkColumn));
}

QString LinkListModel::identifier(int column)
{
    switch (column) {
    case TitleColumn:
        return QStringLiteral("title");
    case LinkColumn:
        return QStringLiteral("link");
    default:
        return {};
    }
}

int LinkListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

int LinkListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant LinkListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !holds(index.row()))
        return {};
    const LinkItem &item = m_items[index.row()];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return index.column() == TitleColumn ? item.title : item.link;
    case Qt::TextAlignmentRole:
        return int(Qt::AlignJustify | Qt::AlignVCenter);
    default:
        return {};
    }
}

bool LinkListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || !holds(index.row()) || role != Qt::EditRole)
        return false;
    if (index.column() == TitleColumn)
        setTitle(index.row(), value.toString());
    else
        setLink(index.row(), LinkListDocument::convertHttpFormat(Xml::cleaned(value.toString())));
    return true;
}

Qt::ItemFlags LinkListModel::flags(const QModelIndex &index) const
{
    constexpr Qt::ItemFlags ofRows = Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    return QAbstractTableModel::flags(index) | (index.isValid() ? ofRows : Qt::ItemIsDropEnabled);
}

QVariant LinkListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= ColumnCount)
        return {};
    const QString title = section == TitleColumn ? QStringLiteral("Title") : QStringLiteral("Link");
    return loadAppString(title, title);
}

QStringList LinkListModel::mimeTypes() const
{
    return {dragType()};
}

QMimeData *LinkListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    if (rows.isEmpty())
        return nullptr;
    auto data = std::make_unique<QMimeData>();
    writeRowsWithIndexes(rows, data.get());
    return data.release();
}

Qt::DropActions LinkListModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}

Qt::DropActions LinkListModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

bool LinkListModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                    const QModelIndex &) const
{
    return validateDrop(data) != Qt::IgnoreAction;
}

bool LinkListModel::dropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                 const QModelIndex &parent)
{
    const std::optional<QList<int>> rows = data ? readRows(data->data(dragType())) : std::nullopt;
    if (!rows)
        return false;
    const int behindLast = int(m_items.size());
    Q_EMIT dropped(acceptDrop(*rows, parent.isValid() ? parent.row() : row < 0 ? behindLast : row));
    return true;
}
