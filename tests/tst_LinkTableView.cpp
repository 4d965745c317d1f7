#include "linklist/LinkListModel.h"
#include "linklist/LinkTableView.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>

class tst_LinkTableView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void landsOnTheRowBelowThePointer_data();
    void landsOnTheRowBelowThePointer();
    void lowerEdgeOfAFullTableLandsBehindTheLast();
    void emptyTableLandsAtItsBeginning();
    void pressAndMoveBeginsADragOfTheRow();
    void clickAloneBeginsNone();
    void lineShowsWhereRowsLand();
    void lineFollowsTheRowsThatScrollBelowThePointer();
    void lineBeginsWhereReadingDoes();
    void lineGoesWhenTheDragLeavesOrDrops();
    void foreignDataIsRefusedWithoutALine();
    void dropMovesRowsAlsoOntoThemselves();
    void withoutAModelNothingHappens();

private:
    QPoint middleOf(int row) const
    {
        return {40, m_table->rowViewportPosition(row) + m_table->rowHeight(row) / 2};
    }
    std::unique_ptr<QMimeData> dragged(const QList<int> &rows) const;
    bool enter(const QMimeData &data) const;
    bool move(const QMimeData &data, const QPoint &at) const;
    bool drop(const QMimeData &data, const QPoint &at) const;
    // The viewport's rows of pixels that have the line's colour from side to side.
    QList<int> lineAt() const;
    QString titles() const;

    std::unique_ptr<LinkListModel> m_model;
    std::unique_ptr<LinkTableView> m_table;
};

void tst_LinkTableView::init()
{
    TestCase::init();
    m_model = std::make_unique<LinkListModel>();
    for (const char *title : {"A", "B", "C", "D"})
        m_model->append({{QString::fromLatin1(title), QStringLiteral("http://example.com")}});
    m_table = std::make_unique<LinkTableView>();
    m_table->setModel(m_model.get());
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->verticalHeader()->setDefaultSectionSize(30);
    m_table->resize(300, 240);
    m_table->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_table.get()));
}

void tst_LinkTableView::cleanup()
{
    m_table.reset();
    m_model.reset();
}

std::unique_ptr<QMimeData> tst_LinkTableView::dragged(const QList<int> &rows) const
{
    auto data = std::make_unique<QMimeData>();
    m_model->writeRowsWithIndexes(rows, data.get());
    return data;
}

bool tst_LinkTableView::enter(const QMimeData &data) const
{
    QDragEnterEvent event(middleOf(0), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_table->viewport(), &event);
    return event.isAccepted();
}

bool tst_LinkTableView::move(const QMimeData &data, const QPoint &at) const
{
    QDragMoveEvent event(at, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_table->viewport(), &event);
    return event.isAccepted();
}

bool tst_LinkTableView::drop(const QMimeData &data, const QPoint &at) const
{
    QDropEvent event(at, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_table->viewport(), &event);
    return event.isAccepted();
}

QList<int> tst_LinkTableView::lineAt() const
{
    QImage image(m_table->viewport()->size(), QImage::Format_RGB32);
    m_table->viewport()->render(&image);
    const QRgb color = m_table->palette().color(QPalette::Highlight).rgb();
    QList<int> rows;
    for (int y = 0; y < image.height(); ++y) {
        int count = 0;
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color;
        if (count > image.width() * 9 / 10)
            rows.append(y);
    }
    return rows;
}

QString tst_LinkTableView::titles() const
{
    QString result;
    for (const LinkItem &item : m_model->items())
        result += item.title;
    return result;
}

void tst_LinkTableView::landsOnTheRowBelowThePointer_data()
{
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("row");
    QTest::newRow("top of the first") << 0 << 0;
    QTest::newRow("middle of the first") << 15 << 0;
    QTest::newRow("lower part of the first") << 22 << 0;
    QTest::newRow("lower edge of the first") << 29 << 0;
    QTest::newRow("top of the second") << 30 << 1;
    QTest::newRow("middle of the last") << 105 << 3;
    QTest::newRow("lower edge of the last") << 119 << 3;
    QTest::newRow("empty area") << 150 << 4;
    QTest::newRow("far below") << 5000 << 4;
}

void tst_LinkTableView::landsOnTheRowBelowThePointer()
{
    QFETCH(const int, y);
    QFETCH(const int, row);
    QCOMPARE(m_table->landingRow({40, y}), row);
}

void tst_LinkTableView::lowerEdgeOfAFullTableLandsBehindTheLast()
{
    const int frame = m_table->height() - m_table->viewport()->height();
    m_table->resize(300, frame + 120);
    QCOMPARE(m_table->viewport()->height(), 120);
    QCOMPARE(m_table->landingRow({40, 105}), 3);
    QCOMPARE(m_table->landingRow({40, 119}), 4);
    QCOMPARE(m_table->landingRow({40, 89}), 2);
}

void tst_LinkTableView::emptyTableLandsAtItsBeginning()
{
    m_model->remove({0, 1, 2, 3});
    QCOMPARE(m_table->landingRow({40, 15}), 0);
}

void tst_LinkTableView::pressAndMoveBeginsADragOfTheRow()
{
    QSignalSpy started(m_table.get(), &LinkTableView::dragStarted);
    QTest::mousePress(m_table->viewport(), Qt::LeftButton, {}, middleOf(1));
    for (int step = 1; step <= QApplication::startDragDistance() + 2; ++step) {
        QMouseEvent move(QEvent::MouseMove, middleOf(1) + QPoint(0, step),
                         m_table->viewport()->mapToGlobal(middleOf(1) + QPoint(0, step)), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_table->viewport(), &move);
    }
    QCOMPARE(started.size(), 1);
    QCOMPARE(started.first().first().value<QList<int>>(), QList<int>{1});
    // Moves that come before the drag runs select nothing more.
    QMouseEvent far(QEvent::MouseMove, middleOf(3), m_table->viewport()->mapToGlobal(middleOf(3)),
                    Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_table->viewport(), &far);
    QCOMPARE(started.size(), 1);
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.first().row(), 1);
    QTest::mouseRelease(m_table->viewport(), Qt::LeftButton, {}, middleOf(1));
}

void tst_LinkTableView::clickAloneBeginsNone()
{
    QSignalSpy started(m_table.get(), &LinkTableView::dragStarted);
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, middleOf(1));
    QCOMPARE(started.size(), 0);
}

void tst_LinkTableView::lineShowsWhereRowsLand()
{
    const auto data = dragged({0});
    QVERIFY(lineAt().isEmpty());
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(2)));
    QCOMPARE(lineAt(), (QList<int>{59, 60}));
    QVERIFY(move(*data, {40, 200}));
    QCOMPARE(lineAt(), (QList<int>{119, 120}));
    // Above the first row it is pushed into sight.
    QVERIFY(move(*data, middleOf(0)));
    QCOMPARE(lineAt(), (QList<int>{3, 4}));
}

void tst_LinkTableView::lineFollowsTheRowsThatScrollBelowThePointer()
{
    for (int i = 0; i < 20; ++i)
        m_model->append({{QString::number(i), QString()}});
    const auto data = dragged({0});
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(2)));
    m_table->verticalScrollBar()->setValue(m_table->verticalScrollBar()->maximum());
    const QPoint at(40, 75);
    const int row = m_table->landingRow(at);
    QVERIFY(row > 2);
    const int below = m_table->rowViewportPosition(row);
    QCOMPARE(lineAt(), (QList<int>{below - 1, below}));
    QVERIFY(drop(*data, at));
    QCOMPARE(m_model->items()[row - 1].title, QStringLiteral("A"));
}

void tst_LinkTableView::lineBeginsWhereReadingDoes()
{
    const auto knobs = [this] {
        QImage image(m_table->viewport()->size(), QImage::Format_RGB32);
        m_table->viewport()->render(&image);
        const QRgb color = m_table->palette().color(QPalette::Highlight).rgb();
        const auto isThere
            = [&](int x) { return image.pixel(x, 57) == color || image.pixel(x, 62) == color; };
        return std::pair(isThere(4) || isThere(3), isThere(image.width() - 5) || isThere(image.width() - 4));
    };
    const auto data = dragged({0});
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(2)));
    QCOMPARE(knobs(), std::pair(true, false));
    m_table->setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(knobs(), std::pair(false, true));
}

void tst_LinkTableView::lineGoesWhenTheDragLeavesOrDrops()
{
    const auto data = dragged({0});
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(2)));
    QVERIFY(!lineAt().isEmpty());
    QDragLeaveEvent leave;
    QApplication::sendEvent(m_table->viewport(), &leave);
    QVERIFY(lineAt().isEmpty());
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(2)));
    QVERIFY(drop(*data, middleOf(2)));
    m_table->clearSelection();
    QVERIFY(lineAt().isEmpty());
}

void tst_LinkTableView::foreignDataIsRefusedWithoutALine()
{
    QMimeData foreign;
    foreign.setData(LinkListModel::dragType(), "anything");
    QVERIFY(!enter(foreign));
    QVERIFY(!move(foreign, middleOf(2)));
    QVERIFY(lineAt().isEmpty());
    m_table->selectRow(1);
    QVERIFY(!drop(foreign, middleOf(2)));
    QCOMPARE(titles(), QStringLiteral("ABCD"));
    QCOMPARE(m_table->selectionModel()->selectedRows().size(), 1);
}

void tst_LinkTableView::dropMovesRowsAlsoOntoThemselves()
{
    const auto data = dragged({0, 3});
    QVERIFY(enter(*data));
    QVERIFY(move(*data, middleOf(3)));
    QVERIFY(drop(*data, middleOf(3)));
    QCOMPARE(titles(), QStringLiteral("BCAD"));
}

void tst_LinkTableView::withoutAModelNothingHappens()
{
    const auto data = dragged({0});
    m_table->setModel(nullptr);
    QCOMPARE(m_table->landingRow({40, 15}), 0);
    QVERIFY(!drop(*data, {40, 15}));
    QVERIFY(lineAt().isEmpty());
}

LINKLIST_GUI_TEST_MAIN(tst_LinkTableView)
#include "tst_LinkTableView.moc"
