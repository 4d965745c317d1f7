#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

// Shows and edits the cells of the link table. Long texts and line breaks are shown in short on one line; the
// editor holds the whole text, without a limit of length.
class LinkCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit LinkCellDelegate(QObject *parent = nullptr);

    bool isEditing() const { return m_editor; }
    // Ends the edit, storing what was typed. Nothing happens without one.
    void commitEditor();

    QString displayText(const QVariant &value, const QLocale &locale) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    // Stores nothing by itself: whoever owns the table takes the value.
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

Q_SIGNALS:
    void edited(const QModelIndex &index, const QString &text) const;

private:
    mutable QPointer<QWidget> m_editor;
};
