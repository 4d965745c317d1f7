#include "Classes/Delegate/TableViewProtocol.h"

#include "Classes/Mode/Xml.h"
#include "platform/Number.h"
#include "platform/Utf8.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <algorithm>

namespace
{
// The names and values of a row, in document order. Comments, instructions and text between children are
// none.
QList<std::pair<QString, QString>> fieldsOf(const pugi::xml_node &element, int type)
{
    QList<std::pair<QString, QString>> fields;
    if (type == TableViewProtocol::Attributes) {
        for (const pugi::xml_attribute &attribute : element.attributes())
            fields.append({Utf8::decoded(attribute.name()), Utf8::decoded(attribute.value())});
    } else if (type == TableViewProtocol::Children) {
        for (const pugi::xml_node &child : element.children()) {
            if (child.type() == pugi::node_element)
                fields.append({Utf8::decoded(child.name()), Xml::text(child)});
        }
    }
    return fields;
}
} // namespace

TableViewProtocol::TableViewProtocol(QObject *parent)
    : QAbstractTableModel(parent)
{
}

TableViewProtocol::TableViewProtocol(const pugi::xml_node &element, int type, QObject *ower, QObject *parent)
    : QAbstractTableModel(parent)
{
    listFromElement(element, type);
    setOwer(ower);
}

TableRow TableViewProtocol::itemFromElement(const pugi::xml_node &element, int type)
{
    if (!m_keys.isEmpty())
        return readItem(element, type);
    beginResetModel();
    const TableRow row = readItem(element, type);
    endResetModel();
    return row;
}

void TableViewProtocol::listFromElement(const pugi::xml_node &element, int type)
{
    beginResetModel();
    m_list.clear();
    for (const pugi::xml_node &child : element.children()) {
        if (child.type() == pugi::node_element)
            m_list.append(readItem(child, type));
    }
    endResetModel();
}

TableRow TableViewProtocol::readItem(const pugi::xml_node &element, int type)
{
    const bool isFilling = m_keys.isEmpty();
    if (isFilling)
        m_titles.clear();
    TableRow row;
    const auto fields = fieldsOf(element, type);
    for (const auto &[key, value] : fields) {
        row.insert(key, value);
        if (isFilling) {
            m_keys.append(key);
            m_titles.insert(key, key);
        }
    }
    return row;
}

void TableViewProtocol::setKeys(const QStringList &keys)
{
    beginResetModel();
    m_keys = keys;
    endResetModel();
}

void TableViewProtocol::setTitles(const QMap<QString, QString> &titles)
{
    m_titles = titles;
    if (!m_keys.isEmpty())
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, int(m_keys.size()) - 1);
}

void TableViewProtocol::setList(const QList<TableRow> &list)
{
    beginResetModel();
    m_list = list;
    endResetModel();
}

void TableViewProtocol::showIn(QAbstractItemView *tableView)
{
    tableView->setModel(this);
    const QItemSelectionModel *model = tableView->selectionModel();
    disconnect(model, &QItemSelectionModel::selectionChanged, this, nullptr);
    connect(model, &QItemSelectionModel::selectionChanged, this,
            [this, model] { tableViewSelectionDidChange(selectionOf(*model)); });
}

TableSelection TableViewProtocol::selectionOf(const QItemSelectionModel &model) const
{
    TableSelection selection;
    selection.keys = m_keys;
    const QModelIndexList indexes = model.selectedIndexes();
    for (const QModelIndex &index : indexes)
        selection.rows.append(index.row());
    std::sort(selection.rows.begin(), selection.rows.end());
    selection.rows.erase(std::unique(selection.rows.begin(), selection.rows.end()), selection.rows.end());
    for (const int row : std::as_const(selection.rows))
        selection.values.append(m_list.value(row));
    return selection;
}

QString TableViewProtocol::objectValueForTableColumn(const QString &identifier, int row) const
{
    const qint64 column = identifier.isNull() ? -1 : Number::toInteger(identifier);
    if (column < 0 || column >= m_keys.size())
        return QString();
    return m_list.value(row).value(m_keys[column]);
}

QString TableViewProtocol::dataCellForTableColumn(const QString &identifier, int row) const
{
    const QString value = objectValueForTableColumn(identifier, row);
    return value.isEmpty() ? QLatin1String("") : value;
}

void TableViewProtocol::tableViewSelectionDidChange(const TableSelection &selection) const
{
    auto *receiver = dynamic_cast<TableSelectionReceiver *>(m_ower.data());
    if (!receiver)
        return;
    // A selection for which no thread can be had is dropped.
    receiver->asyncScope().spawn([receiver, selection] { receiver->tableViewSelectionDidChange(selection); });
}

int TableViewProtocol::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : numberOfRowsInTableView();
}

int TableViewProtocol::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_keys.size());
}

QVariant TableViewProtocol::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return QVariant();
    return dataCellForTableColumn(QString::number(index.column()), index.row());
}

QVariant TableViewProtocol::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= m_keys.size())
        return QAbstractTableModel::headerData(section, orientation, role);
    return m_titles.value(m_keys[section], m_keys[section]);
}
