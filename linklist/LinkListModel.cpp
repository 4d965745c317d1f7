#include "linklist/LinkListModel.h"

#include "Classes/Mode/Locale.h"
#include "Classes/Mode/Xml.h"

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
    return QAbstractTableModel::flags(index) | (index.isValid() ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

QVariant LinkListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= ColumnCount)
        return {};
    const QString title = section == TitleColumn ? QStringLiteral("Title") : QStringLiteral("Link");
    return loadAppString(title, title);
}
