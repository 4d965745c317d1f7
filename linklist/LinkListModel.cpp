#include "linklist/LinkListModel.h"

#include "Classes/Mode/Locale.h"

LinkListModel::LinkListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

void LinkListModel::append(const QList<LinkItem> &items)
{
    if (items.isEmpty())
        return;
    beginInsertRows({}, int(m_items.size()), int(m_items.size() + items.size()) - 1);
    m_items += items;
    endInsertRows();
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
    if (!index.isValid() || index.row() >= m_items.size()
        || (role != Qt::DisplayRole && role != Qt::EditRole))
        return {};
    const LinkItem &item = m_items[index.row()];
    return index.column() == TitleColumn ? item.title : item.link;
}

QVariant LinkListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= ColumnCount)
        return {};
    const QString title = section == TitleColumn ? QStringLiteral("Title") : QStringLiteral("Link");
    return loadAppString(title, title);
}
