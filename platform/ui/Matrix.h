#pragma once

#include <QFrame>
#include <optional>

class QAbstractButton;
class QButtonGroup;

// A group of radio cells, of which at most one is selected. A cell is any button inside that has the dynamic
// property `tag`, a whole number. The first of several cells with the same tag stands for it. Cells may be
// added at any time. Only a person's click or key emits selectionChanged().
class Matrix : public QFrame
{
    Q_OBJECT

public:
    explicit Matrix(QWidget *parent = nullptr);

    std::optional<qint64> selectedTag();

    // Selects the cell with that tag; without one no cell is selected and the answer is false.
    bool selectCellWithTag(qint64 tag);

Q_SIGNALS:
    void selectionChanged();

protected:
    bool event(QEvent *event) override;

private:
    void adoptCells();
    void updateTabStop();

    QButtonGroup *m_cells;
    std::optional<qint64> m_known;
};
