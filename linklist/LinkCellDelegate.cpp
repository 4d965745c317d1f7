#include "linklist/LinkCellDelegate.h"

#include <QLineEdit>
#include <limits>

LinkCellDelegate::LinkCellDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

void LinkCellDelegate::commitEditor()
{
    if (!m_editor)
        return;
    Q_EMIT commitData(m_editor);
    if (m_editor)
        Q_EMIT closeEditor(m_editor);
    m_editor = nullptr; // it is deleted later
}

QString LinkCellDelegate::displayText(const QVariant &value, const QLocale &) const
{
    constexpr qsizetype longestShown = 500; // more than fits, and a megabyte takes seconds to lay out
    QString text = value.toString();
    if (text.size() > longestShown)
        text = text.first(longestShown) + u'…';
    return text.replace(u'\n', u' ');
}

QWidget *LinkCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                        const QModelIndex &) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setMaxLength(std::numeric_limits<int>::max());
    m_editor = editor;
    return editor;
}

void LinkCellDelegate::setModelData(QWidget *editor, QAbstractItemModel *, const QModelIndex &index) const
{
    const QString text = static_cast<QLineEdit *>(editor)->text();
    if (text != index.data(Qt::EditRole).toString())
        Q_EMIT edited(index, text);
}
