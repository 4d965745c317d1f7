#pragma once

#include "platform/AsyncScope.h"

#include <QAbstractTableModel>
#include <QMap>
#include <QPointer>
#include <pugixml.hpp>

class QAbstractItemView;
class QItemSelectionModel;

// One row: its values by their keys.
using TableRow = QMap<QString, QString>;

// What a table has selected: copies, free to cross to another thread.
struct TableSelection {
    QList<int> rows; // ascending
    QStringList keys; // those of the columns
    QList<TableRow> values; // of the selected rows, in their order
};

// An owner that hears of selections, each time on a new thread: see AsyncScope for what it may do there.
class TableSelectionReceiver : public virtual AsyncReceiver
{
public:
    virtual void tableViewSelectionDidChange(const TableSelection &selection) = 0;

protected:
    ~TableSelectionReceiver() = default;
};

// A read-only table of an element's child elements, one row each, with their attributes or their own children
// as columns. The columns come from the first row that has any, unless keys were set before: what a later row
// has besides them is not shown, what it lacks is an empty cell. Its rows are copies; the document may go. A
// column is asked for by an identifier that reads as an index into the keys: text that is no number is 0, and
// null, a negative index or one past the keys has no value. For the main thread only.
class TableViewProtocol : public QAbstractTableModel
{
    Q_OBJECT

public:
    // Which part of an element a row is made of. A row of any other type is empty.
    enum Type { Children = 0, Attributes = 1 };

    explicit TableViewProtocol(QObject *parent = nullptr);
    TableViewProtocol(const pugi::xml_node &element, int type, QObject *ower, QObject *parent = nullptr);

    // The element's row. Without any keys its names become the keys, in document order, and their own titles.
    TableRow itemFromElement(const pugi::xml_node &element, int type);
    // Replaces the rows by those of the element's child elements; the keys stay.
    void listFromElement(const pugi::xml_node &element, int type);

    QStringList getKeys() const { return m_keys; }
    void setKeys(const QStringList &keys);
    // The columns' headers by their keys; a key without a title is its own.
    QMap<QString, QString> getTitles() const { return m_titles; }
    void setTitles(const QMap<QString, QString> &titles);
    QList<TableRow> list() const { return m_list; }
    void setList(const QList<TableRow> &list);

    // Not owned and free to go at any time. It hears of selections when it is a TableSelectionReceiver.
    QObject *ower() const { return m_ower; }
    void setOwer(QObject *ower) { m_ower = ower; }

    // Makes a table show the rows, and tells the owner when the selection in it changes. New rows clear the
    // selection without a word. A table that is
    // given another model or selection model afterwards is told anew.
    void showIn(QAbstractItemView *tableView);

    int numberOfRowsInTableView() const { return int(m_list.size()); }
    // Null where there is no value.
    QString objectValueForTableColumn(const QString &identifier, int row) const;
    // The text of that column's cell; empty where there is no value.
    QString dataCellForTableColumn(const QString &identifier, int row) const;
    // Passes the selection on to the owner, on a new thread.
    void tableViewSelectionDidChange(const TableSelection &selection) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    TableRow readItem(const pugi::xml_node &element, int type);
    TableSelection selectionOf(const QItemSelectionModel &model) const;

    QList<TableRow> m_list;
    QStringList m_keys;
    QMap<QString, QString> m_titles;
    QPointer<QObject> m_ower;
};
