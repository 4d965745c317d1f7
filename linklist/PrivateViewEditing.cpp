// The half of PrivateView that a person works with: fields, table, buttons, keys and colours.
#include "linklist/PrivateView.h"

#include "Classes/Mode/Locale.h"
#include "Classes/Mode/Log/LogAlert.h"
#include "Classes/Mode/Xml.h"
#include "linklist/LinkCellDelegate.h"
#include "linklist/LinkListModel.h"
#include "linklist/LinkTableView.h"
#include "platform/Number.h"
#include "platform/ui/Field.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/WindowLevel.h"
#include "text/ColorButtonCell.h"
#include "text/ColorPanelDelegate.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <algorithm>

namespace
{

constexpr qint64 chosenMode = 1; // how a colour chooser ends that was not cancelled
const LinkItem newItem = {QStringLiteral("title"), QStringLiteral("http://www.example.com")};

// Shows a button's border only while the pointer is over it.
class BorderUnderPointer : public QObject
{
public:
    explicit BorderUnderPointer(QPushButton *button)
        : QObject(button)
        , m_button(button)
    {
        button->setFlat(!button->underMouse());
        button->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Enter || event->type() == QEvent::Leave)
            m_button->setFlat(event->type() == QEvent::Leave);
        return QObject::eventFilter(watched, event);
    }

private:
    QPushButton *m_button;
};

} // namespace

void PrivateView::connectFields()
{
    for (QLineEdit *field : {m_titleContent.data(), m_titleSize.field.data(), m_bodySize.field.data(),
                             m_content.data(), m_link.data()}) {
        Field::onTextChange(field, this, [this](QLineEdit *changed) {
            if (m_edited && m_edited != changed)
                controlTextDidEndEditing(m_edited);
            m_edited = changed;
            controlTextDidChange(changed);
        });
        if (!field)
            continue;
        // Leaving a field in which nothing was typed ends no edit.
        connect(field, &QLineEdit::editingFinished, this, [this, field] {
            if (m_edited == field)
                controlTextDidEndEditing(field);
        });
    }
    for (const FontSize &size : {m_titleSize, m_bodySize}) {
        if (size.stepper)
            connect(size.stepper, &Stepper::stepped, this, [this, size] { onStepperChange(size.stepper); });
    }
}

void PrivateView::connectButtons()
{
    const auto onClick = [this](QAbstractButton *button, auto action) {
        if (button)
            connect(button, &QAbstractButton::clicked, this, action);
    };
    onClick(m_save, [this] {
        commitEditing();
        onSave(m_save);
    });
    onClick(m_add, [this] { onAdd(m_add); });
    onClick(m_remove, [this] { onRemove(m_remove); });
    onClick(m_moveUp, [this] { onMoveUp(m_moveUp); });
    onClick(m_moveDown, [this] { onMoveDown(m_moveDown); });
    onClick(m_titleColor, [this] { onOpenColorPanel(m_titleColor); });
    onClick(m_bodyColor, [this] { onOpenColorPanel(m_bodyColor); });
    if (auto *button = qobject_cast<QPushButton *>(m_save.data()))
        new BorderUnderPointer(button);
}

void PrivateView::setUpTable()
{
    if (!m_tableView)
        return;
    m_tableView->setModel(m_model);
    m_tableView->setItemDelegate(m_cells);
    m_tableView->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_tableView->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    connect(m_cells, &LinkCellDelegate::edited, this, [this](const QModelIndex &index, const QString &text) {
        setObjectValue(text, index.column(), index.row());
    });
    connect(m_tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PrivateView::scheduleEditInfo);
    connect(m_tableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &PrivateView::scheduleEditInfo);

    m_tableView->setAcceptDrops(true);
    connect(m_model, &LinkListModel::dropped, this, &PrivateView::showDroppedRows);
    // From the event loop: a drag runs one of its own, and the table may go in it.
    if (auto *table = qobject_cast<LinkTableView *>(m_tableView.data()))
        connect(table, &LinkTableView::dragStarted, this, &PrivateView::dragRows, Qt::QueuedConnection);

    m_hint = new QLabel;
    const QString hint = QStringLiteral("There are no links yet.");
    m_hint->setText(loadAppString(hint, hint));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setEnabled(false);
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    (new QVBoxLayout(m_tableView->viewport()))->addWidget(m_hint);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &PrivateView::showHint);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &PrivateView::showHint);
    showHint();
    addShortcuts();
}

void PrivateView::showHint()
{
    if (m_hint)
        m_hint->setVisible(m_model->items().isEmpty());
}

// Keys of the table alone: in a text field they belong to the text.
void PrivateView::addShortcuts()
{
    const auto onKey = [this](const QKeySequence &keys, auto action) {
        auto *shortcut = new QShortcut(keys, m_tableView);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    const auto addAndEdit = [this] {
        onAdd();
        m_tableView->edit(m_model->index(int(m_model->items().size()) - 1, LinkListModel::TitleColumn));
    };
    onKey(Qt::Key_Insert, addAndEdit);
    onKey(QKeySequence::New, addAndEdit);
    onKey(Qt::Key_Delete, [this] { onRemove(); });
    onKey(Qt::ALT | Qt::Key_Up, [this] { onMoveUp(); });
    onKey(Qt::ALT | Qt::Key_Down, [this] { onMoveDown(); });
}

QString PrivateView::stringWithNumber(const QString &text)
{
    QString digits;
    for (const QChar c : text) {
        if (c >= u'0' && c <= u'9')
            digits += c;
    }
    return digits;
}

void PrivateView::showFontSize(const FontSize &size, const QString &text)
{
    Field::putText(size.field, text);
    if (size.stepper)
        size.stepper->setIntegerValue(Number::toInteger(text));
}

void PrivateView::controlTextDidChange(QWidget *field)
{
    if (!field || !m_isEditable)
        return;
    if (field == m_content || field == m_link) {
        if (!m_selectedItem.isValid())
            return;
        if (field == m_content)
            m_model->setTitle(m_selectedItem.row(), m_content->text());
        else
            m_model->setLink(m_selectedItem.row(), m_link->text());
        onSave();
        return;
    }
    for (const FontSize &size : {m_titleSize, m_bodySize}) {
        if (field != size.field)
            continue;
        // The caret stays behind the digit that it stood behind.
        const QString before = size.field->text().left(size.field->cursorPosition());
        showFontSize(size, stringWithNumber(size.field->text()));
        size.field->setCursorPosition(int(stringWithNumber(before).size()));
    }
    if (field == m_titleContent || field == m_titleSize.field || field == m_bodySize.field)
        onSave();
}

void PrivateView::controlTextDidEndEditing(QWidget *field)
{
    if (!field || !m_isEditable)
        return;
    if (field == m_edited)
        m_edited = nullptr;
    bool isChanged = false;
    for (const FontSize &size : {m_titleSize, m_bodySize}) {
        if (field == size.field)
            isChanged = completeFontSize(size);
    }
    if (m_selectedItem.isValid() && (field == m_content || field == m_link)) {
        const LinkItem before = m_model->items()[m_selectedItem.row()];
        if (field == m_content) {
            m_model->setTitle(m_selectedItem.row(), m_content->text());
        } else {
            const QString link = convertHttpFormat(Xml::cleaned(m_link->text()));
            m_model->setLink(m_selectedItem.row(), link);
            Field::putText(m_link, link);
        }
        isChanged = before != m_model->items()[m_selectedItem.row()];
    }
    if (isChanged)
        onSave();
}

void PrivateView::onStepperChange(Stepper *sender)
{
    for (const FontSize &size : {m_titleSize, m_bodySize}) {
        if (sender && sender == size.stepper && m_isEditable) {
            Field::putText(size.field, QString::number(size.stepper->integerValue()));
            onSave();
        }
    }
}

// A size that is empty or has leading zeros is no number to a script: the stepper's takes its place.
bool PrivateView::completeFontSize(const FontSize &size)
{
    if (!size.field || !size.stepper)
        return false;
    const QString text = size.field->text();
    if (!text.isEmpty() && (text == QLatin1String("0") || !text.startsWith(u'0')))
        return false;
    Field::putText(size.field, QString::number(size.stepper->integerValue()));
    return true;
}

void PrivateView::commitEditing()
{
    if (!m_isEditable)
        return;
    m_cells->commitEditor();
    if (m_edited)
        controlTextDidEndEditing(m_edited);
    const bool hasTitleSize = completeFontSize(m_titleSize);
    if (completeFontSize(m_bodySize) || hasTitleSize)
        onSave();
}

QList<int> PrivateView::selectedRows() const
{
    QList<int> rows;
    if (m_tableView && m_tableView->selectionModel()) {
        const QModelIndexList selected = m_tableView->selectionModel()->selectedRows();
        for (const QModelIndex &index : selected)
            rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

int PrivateView::selectedRow() const
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return -1;
    const int current = m_tableView->currentIndex().row();
    return std::binary_search(rows.begin(), rows.end(), current) ? current : rows.last();
}

// Replaces the selection by the rows.
void PrivateView::selectRows(const QList<int> &rows)
{
    if (!m_tableView || rows.isEmpty())
        return;
    const QModelIndex first = m_model->index(rows.first(), 0);
    QItemSelection selection;
    for (qsizetype begin = 0; begin < rows.size();) {
        qsizetype end = begin + 1;
        while (end < rows.size() && rows[end] == rows[end - 1] + 1)
            ++end;
        selection.append(QItemSelectionRange(m_model->index(rows[begin], 0),
                                             m_model->index(rows[end - 1], LinkListModel::ColumnCount - 1)));
        begin = end;
    }
    QItemSelectionModel *model = m_tableView->selectionModel();
    model->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (!selection.contains(m_tableView->currentIndex()))
        model->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    m_tableView->scrollTo(m_tableView->currentIndex());
}

void PrivateView::checkButtonStatus()
{
    const int row = selectedRow();
    const int count = int(m_model->items().size());
    const bool isInList = row >= 0 && row < count;
    const auto enable = [](QAbstractButton *button, bool isEnabled) {
        if (button)
            button->setEnabled(isEnabled);
    };
    enable(m_remove, isInList);
    enable(m_moveDown, isInList && row != count - 1);
    enable(m_moveUp, isInList && row != 0);
}

void PrivateView::scheduleEditInfo()
{
    if (m_isEditInfoDue)
        return;
    m_isEditInfoDue = true;
    QMetaObject::invokeMethod(this, &PrivateView::refreshEditInfo, Qt::QueuedConnection);
}

void PrivateView::refreshEditInfo()
{
    m_isEditInfoDue = false;
    checkButtonStatus();
    const int row = selectedRow();
    // What was typed for the row before belongs to that one.
    if (m_selectedItem.isValid() && m_selectedItem.row() != row
        && (m_edited == m_content || m_edited == m_link))
        controlTextDidEndEditing(m_edited);
    m_selectedItem = m_model->index(row, 0);
    for (QLineEdit *field : {m_content.data(), m_link.data()}) {
        if (field)
            field->setEnabled(m_selectedItem.isValid());
    }
    if (!m_selectedItem.isValid())
        return;
    Field::putText(m_content, m_model->items()[row].title);
    Field::putText(m_link, m_model->items()[row].link);
}

void PrivateView::setObjectValue(const QString &value, int column, int row)
{
    if (!m_isEditable || !m_model->setData(m_model->index(row, column), value))
        return;
    onSave();
    scheduleEditInfo();
}

void PrivateView::onAdd(QObject *)
{
    m_cells->commitEditor();
    m_model->append({newItem});
    selectRows({int(m_model->items().size()) - 1});
    onSave();
}

void PrivateView::onRemove(QObject *)
{
    if (selectedRows().isEmpty())
        return;
    m_cells->commitEditor();
    const QPointer<PrivateView> self(this);
    const QString question = QStringLiteral("Are you sure to delete the selected item(s)?");
    const bool isSure
        = LogAlert::AlertOKCancelWithMessage(loadAppString(question, question), QString(), window());
    if (!self || !isSure)
        return;
    m_model->remove(selectedRows());
    onSave();
    checkButtonStatus();
}

void PrivateView::onMoveUp(QObject *)
{
    move(&LinkListModel::moveUp);
}

void PrivateView::onMoveDown(QObject *)
{
    move(&LinkListModel::moveDown);
}

void PrivateView::move(QList<int> (LinkListModel::*step)(const QList<int> &))
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return;
    m_cells->commitEditor();
    // A selection of many pieces would be carried along through every single move.
    m_tableView->selectionModel()->clearSelection();
    const QList<int> moved = (m_model->*step)(rows);
    selectRows(moved.isEmpty() ? rows : moved);
    if (!moved.isEmpty())
        onSave();
    checkButtonStatus();
}

void PrivateView::onOpenColorPanel(ColorButtonCell *button)
{
    if (!button)
        return;
    const QPointer<QWidget> raised(window());
    WindowLevel::set(raised, WindowLevel::Level::ModalPanel);
    onChangeColor(button);
    if (raised)
        WindowLevel::set(raised, WindowLevel::Level::Floating);
}

void PrivateView::onChangeColor(ColorButtonCell *button)
{
    if (!button)
        return;
    const QPointer<PrivateView> self(this);
    const QPointer<ColorButtonCell> cell(button);
    const std::optional<Color> before = button->backgroundColor();
    ColorPanelDelegate chooser;
    chooser.setOwer(this);
    chooser.setCell(button);
    chooser.setBkColor(before);
    chooser.setColor(before);
    connect(&chooser, &ColorPanelDelegate::colorPanelDidChange, this, &PrivateView::onChangedPanelColor);

    ModalSession session;
    session.begin(chooser.window());
    qint64 response = ModalSession::continueCode;
    while (!chooser.isClosed()) {
        response = session.run();
        if (response == ModalLoop::abortCode)
            break; // the application is quitting
        if (response != ModalSession::continueCode && !chooser.isClosed())
            session.begin(chooser.window());
    }
    session.end();
    if (!self || !cell)
        return;
    const bool isChosen = response == chosenMode;
    cell->setBackgroundColor(isChosen ? chooser.color() : before.value_or(Color()));
    if (isChosen)
        onSave();
}

void PrivateView::onChangedPanelColor(ColorPanelDelegate *chooser)
{
    if (!chooser)
        return;
    // The chooser may be gone by then.
    QMetaObject::invokeMethod(
        this, [this, chooser = QPointer(chooser)] { refreshCellColor(chooser); }, Qt::QueuedConnection);
}

void PrivateView::refreshCellColor(ColorPanelDelegate *chooser)
{
    if (chooser && chooser->ower() == this && chooser->color() && chooser->cell())
        chooser->cell()->setBackgroundColor(chooser->color());
}
