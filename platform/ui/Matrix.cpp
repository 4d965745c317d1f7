#include "platform/ui/Matrix.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QEvent>
#include <QVariant>

namespace
{
std::optional<qint64> tagOf(const QAbstractButton *button)
{
    bool isNumber = false;
    const qint64 tag = button->property("tag").toLongLong(&isNumber);
    return isNumber ? std::optional(tag) : std::nullopt;
}
} // namespace

Matrix::Matrix(QWidget *parent)
    : QFrame(parent)
    , m_cells(new QButtonGroup(this))
{
    connect(m_cells, &QButtonGroup::buttonClicked, this, [this](QAbstractButton *cell) {
        const std::optional<qint64> before = m_known;
        m_known = tagOf(cell);
        if (m_known != before)
            Q_EMIT selectionChanged();
    });
}

std::optional<qint64> Matrix::selectedTag()
{
    adoptCells();
    const QAbstractButton *cell = m_cells->checkedButton();
    m_known = cell ? tagOf(cell) : std::nullopt;
    return m_known;
}

bool Matrix::selectCellWithTag(qint64 tag)
{
    adoptCells();
    m_known = std::nullopt;
    const QList<QAbstractButton *> cells = findChildren<QAbstractButton *>();
    for (QAbstractButton *cell : cells) {
        if (cell->group() == m_cells && tagOf(cell) == tag) {
            cell->setChecked(true);
            m_known = tag;
            return true;
        }
    }
    // An exclusive group does not let go of its last cell.
    m_cells->setExclusive(false);
    if (QAbstractButton *selected = m_cells->checkedButton())
        selected->setChecked(false);
    m_cells->setExclusive(true);
    return false;
}

// A loader adds the buttons first and gives them their tags later.
bool Matrix::event(QEvent *event)
{
    const bool handled = QFrame::event(event);
    if (event->type() == QEvent::ChildPolished || event->type() == QEvent::Show)
        selectedTag();
    return handled;
}

void Matrix::adoptCells()
{
    const QList<QAbstractButton *> buttons = findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->group() == m_cells || !tagOf(button))
            continue;
        button->setCheckable(true);
        m_cells->addButton(button);
        connect(button, &QAbstractButton::toggled, this, &Matrix::updateTabStop);
    }
    updateTabStop();
}

// Tab stops once, at the selected cell or the first; the arrow keys go on from there.
void Matrix::updateTabStop()
{
    const QList<QAbstractButton *> cells = m_cells->buttons();
    QAbstractButton *stop
        = m_cells->checkedButton() || cells.isEmpty() ? m_cells->checkedButton() : cells.first();
    for (QAbstractButton *cell : cells)
        cell->setFocusPolicy(cell == stop ? Qt::StrongFocus : Qt::ClickFocus);
}
