#pragma once

#include "linklist/LinkListDocument.h"

#include <QAbstractTableModel>
#include <QUuid>
#include <optional>

class QMimeData;

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
    void clear();

    // Gathers the rows, in their order, into one block that begins above the first of them, or that ends one
    // row below the last. Answers the block's rows; empty, and nothing moved, when there is no room on that
    // side.
    QList<int> moveUp(const QList<int> &rows);
    QList<int> moveDown(const QList<int> &rows);

    // Moves dragged rows to where they were dropped, row by row: `row` is where the next one goes, and a
    // row's number is the one that it had at the start. Answers where they went, ascending; a row that was
    // appended counts as one past the end, and a row past the end stays where it is and holds up all behind
    // it.
    QList<int> acceptDrop(const QList<int> &rows, int row);

    // Dragged rows as data of the type "LinkListDragType". The data says which list they belong to and holds
    // until rows of that list come, go or move.
    static QString dragType();
    void writeRowsWithIndexes(const QList<int> &rows, QMimeData *pasteboard) const;
    // Empty for data that is not this list's, no longer holds or is damaged.
    std::optional<QList<int>> readRows(const QByteArray &data) const;
    // What may be done with that data here: everything, or nothing when readRows() has none.
    Qt::DropActions validateDrop(const QMimeData *pasteboard) const;

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

    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    // On a row means before it, on the empty area behind the last one.
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    // Rows have been dropped, with what acceptDrop() answered.
    void dropped(const QList<int> &rows);

private:
    bool holds(int row) const { return row >= 0 && row < m_items.size(); }
    QList<int> held(const QList<int> &rows) const;
    void moveBlock(int first, int count, int destination);

    QList<LinkItem> m_items;
    const QUuid m_id = QUuid::createUuid();
    // Counts the changes of rows: what was dragged before one does not hold after it.
    quint32 m_revision = 0;
};
