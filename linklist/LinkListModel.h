#pragma once

#include "linklist/LinkListDocument.h"

#include <QAbstractTableModel>

// The ordered list of links as a table of two columns, "title" and "link". It owns the items; views hear of
// every change through the precise signal for it.
class LinkListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { TitleColumn, LinkColumn, ColumnCount };

    explicit LinkListModel(QObject *parent = nullptr);

    const QList<LinkItem> &items() const { return m_items; }
    void append(const QList<LinkItem> &items);

    // Identifiers of the columns, which are also the keys of an item's texts.
    static QString identifier(int column);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<LinkItem> m_items;
};
