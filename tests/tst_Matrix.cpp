#include "platform/ui/Matrix.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QVBoxLayout>

class tst_Matrix : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void noCellIsSelectedAtFirst();
    void selectsByTagSilently();
    void unknownTagSelectsNone();
    void clickSelectsOneCellAndTells();
    void clickOnTheSelectedCellChangesNothing();
    void arrowKeysSelectTheNextCell();
    void cellsMayComeLater();
    void buttonWithoutTagIsNoCell();
    void tagsHave64Bits();

private:
    QRadioButton *addCell(const QVariant &tag);
    std::unique_ptr<Matrix> m_matrix;
    QRadioButton *m_below = nullptr;
    QRadioButton *m_above = nullptr;
};

void tst_Matrix::init()
{
    TestCase::init();
    m_matrix = std::make_unique<Matrix>();
    new QVBoxLayout(m_matrix.get());
    m_below = addCell(0);
    m_above = addCell(1);
}

QRadioButton *tst_Matrix::addCell(const QVariant &tag)
{
    auto *cell = new QRadioButton(QStringLiteral("cell"), m_matrix.get());
    m_matrix->layout()->addWidget(cell);
    // After its birth, as a loader does it.
    cell->setProperty("tag", tag);
    return cell;
}

void tst_Matrix::noCellIsSelectedAtFirst()
{
    QCOMPARE(m_matrix->selectedTag(), std::nullopt);
}

void tst_Matrix::selectsByTagSilently()
{
    QSignalSpy changed(m_matrix.get(), &Matrix::selectionChanged);
    QVERIFY(m_matrix->selectCellWithTag(1));
    QCOMPARE(m_matrix->selectedTag(), 1);
    QVERIFY(m_matrix->selectCellWithTag(0));
    QCOMPARE(m_matrix->selectedTag(), 0);
    QVERIFY(m_below->isChecked() && !m_above->isChecked());
    QCOMPARE(changed.count(), 0);
}

void tst_Matrix::unknownTagSelectsNone()
{
    m_matrix->selectCellWithTag(1);
    QVERIFY(!m_matrix->selectCellWithTag(7));
    QCOMPARE(m_matrix->selectedTag(), std::nullopt);
    QVERIFY(!m_below->isChecked() && !m_above->isChecked());
    QVERIFY(m_matrix->selectCellWithTag(1));
    m_below->click();
    QVERIFY(!m_above->isChecked());
}

void tst_Matrix::clickSelectsOneCellAndTells()
{
    m_matrix->show();
    QSignalSpy changed(m_matrix.get(), &Matrix::selectionChanged);
    QTest::mouseClick(m_above, Qt::LeftButton, {}, QPoint(8, m_above->height() / 2));
    QCOMPARE(m_matrix->selectedTag(), 1);
    QTest::mouseClick(m_below, Qt::LeftButton, {}, QPoint(8, m_below->height() / 2));
    QCOMPARE(m_matrix->selectedTag(), 0);
    QVERIFY(!m_above->isChecked());
    QCOMPARE(changed.count(), 2);
}

void tst_Matrix::clickOnTheSelectedCellChangesNothing()
{
    m_matrix->show();
    m_matrix->selectCellWithTag(1);
    QSignalSpy changed(m_matrix.get(), &Matrix::selectionChanged);
    QTest::mouseClick(m_above, Qt::LeftButton, {}, QPoint(8, m_above->height() / 2));
    QCOMPARE(m_matrix->selectedTag(), 1);
    QCOMPARE(changed.count(), 0);
}

void tst_Matrix::arrowKeysSelectTheNextCell()
{
    m_matrix->show();
    m_matrix->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_matrix.get()));
    m_matrix->selectCellWithTag(0);
    m_below->setFocus();
    QSignalSpy changed(m_matrix.get(), &Matrix::selectionChanged);
    QTest::keyClick(m_below, Qt::Key_Down);
    QCOMPARE(m_matrix->selectedTag(), 1);
    QVERIFY(m_above->hasFocus());
    QCOMPARE(changed.count(), 1);
}

void tst_Matrix::cellsMayComeLater()
{
    m_matrix->show();
    m_matrix->selectCellWithTag(1);
    QRadioButton *third = addCell(2);
    QTRY_VERIFY(third->isVisible());
    third->click();
    QCOMPARE(m_matrix->selectedTag(), 2);
    QVERIFY(!m_above->isChecked());
}

void tst_Matrix::buttonWithoutTagIsNoCell()
{
    auto *button = new QPushButton(m_matrix.get());
    button->setCheckable(true);
    button->setChecked(true);
    addCell(QStringLiteral("no number"))->setAutoExclusive(false);
    QVERIFY(m_matrix->selectCellWithTag(0));
    QVERIFY(button->isChecked());
    QCOMPARE(m_matrix->selectedTag(), 0);
}

void tst_Matrix::tagsHave64Bits()
{
    addCell(Q_INT64_C(-5000000000));
    QVERIFY(m_matrix->selectCellWithTag(Q_INT64_C(-5000000000)));
    QCOMPARE(m_matrix->selectedTag(), Q_INT64_C(-5000000000));
}

LINKLIST_GUI_TEST_MAIN(tst_Matrix)
#include "tst_Matrix.moc"
