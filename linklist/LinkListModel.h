#pragma once

#include "linklist/LinkListDocument.h"

#include <QAbstractTableModel>

// The ordered list of links as a table of two columns, "title" and "link". It owns the items; views hear of
// every change through the precise signal for it. Row sets are ascending lists without repetition; rows
// outside the list are left out of account.
class LinkListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { TitleColumn, LinkColumn, ColumnCount };

    explicit LinkListModel(QObject *parent = nullptr);

    const QList<LinkItem> &items() const { return m_items; }
    void append(const QList<LinkItem> &items);
    // Removes the rows; nothing when the first is past the end.
    void remove(const QList<int> &rows);

    // Gathers the rows, in their order, into one block that begins above the first of them, or that ends one
    // row below the last. Answers the block's rows; empty, and nothing moved, when there is no room on that
    // side.
    QList<int> moveUp(const QList<int> &rows);
    QList<int> moveDown(const QList<int> &rows);

    // Titles as they are typed, links as they are given; both without what a document cannot hold.
    void setTitle(int row, const QString &title);
    void setLink(int row, const QString &link);

    // Identifiers of the columns.
    static QString identifier(int column);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // What a person typed into a cell: a link is normalised.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    bool holds(int row) const { return row >= 0 && row < m_items.size(); }
    QList<int> held(const QList<int> &rows) const;
    void moveBlock(int first, int count, int destination);

    QList<LinkItem> m_items;
};
