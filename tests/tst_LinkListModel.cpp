#include "linklist/LinkListModel.h"
#include "tests/support/ProcessorTimer.h"
#include "tests/support/TestCase.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <vector>

class tst_LinkListModel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void showsItemsInTwoColumns();
    void appendingTellsTheRowsThatCame();
    void outsideOfTheListIsNothing();
    void columnsHaveIdentifiers();
    void editedTitleIsKeptAsTyped();
    void editedLinkIsNormalised();
    void forbiddenCharactersAreDropped();
    void removesScatteredRowsAtOnce();
    void clearingRemovesEveryRowAtOnce();
    void rowsPastTheEndAreLeftOut();
    void moveUpGathersAboveTheFirst();
    void moveUpAtTheTopDoesNothing();
    void moveDownEndsOneBelowTheLast();
    void moveDownAtTheEndDoesNothing();
    void contiguousBlockIsOneMove();
    void movesAgreeWithASecondModel();
    void persistentIndexesFollowTheirItems();
    void tenThousandLinksMoveAtOnce();

    void draggedRowsComeBackAsTheyWere_data();
    void draggedRowsComeBackAsTheyWere();
    void rowsOfAnotherListAreRefused();
    void rowsAreStaleOnceRowsComeGoOrMove();
    void typedTextLeavesDraggedRowsValid();
    void damagedDataIsRefused();
    void otherDataIsRefused();
    void dropOnARowMeansBeforeItAndElsewhereTheEnd();
    void droppingTwiceMovesOnce();
    void rowsCanBeDraggedAndDroppedOn();
    void fiveThousandScatteredRowsAreDroppedQuickly();
};

namespace
{

QList<LinkItem> named(const QString &names)
{
    QList<LinkItem> items;
    for (const QChar name : names)
        items.append({QString(name), QStringLiteral("http://") + name});
    return items;
}

QString titles(const LinkListModel &model)
{
    QString result;
    for (const LinkItem &item : model.items())
        result += item.title;
    return result;
}

std::unique_ptr<LinkListModel> makeModel(const QString &names)
{
    auto model = std::make_unique<LinkListModel>();
    new QAbstractItemModelTester(model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 model.get());
    model->append(named(names));
    return model;
}

// The moves told another way: mark what is selected, take it out, put it back as one block.
struct Told {
    QString order;
    QList<int> selection;
};

Told told(const QString &order, const QList<int> &rows, bool isUp)
{
    const int count = int(order.size());
    if (rows.isEmpty() || (isUp ? rows.first() <= 0 : rows.last() >= count - 1))
        return {order, {}};
    QString block;
    QString rest;
    for (int row = 0; row < count; ++row)
        (rows.contains(row) ? block : rest) += order[row];
    const int at = isUp ? rows.first() - 1 : rows.last() + 2 - int(rows.size());
    QList<int> selection;
    for (int i = 0; i < rows.size(); ++i)
        selection += at + i;
    return {rest.insert(at, block), selection};
}

} // namespace

void tst_LinkListModel::showsItemsInTwoColumns()
{
    const auto model = makeModel(QStringLiteral("AB"));
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->columnCount(), 2);
    QCOMPARE(model->index(1, LinkListModel::TitleColumn).data().toString(), QStringLiteral("B"));
    QCOMPARE(model->index(1, LinkListModel::LinkColumn).data().toString(), QStringLiteral("http://B"));
    QCOMPARE(model->index(0, 0).data(Qt::TextAlignmentRole).toInt(),
             int(Qt::AlignJustify | Qt::AlignVCenter));
    QVERIFY(model->flags(model->index(0, 0)) & Qt::ItemIsEditable);
    QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Title"));
    QCOMPARE(model->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Link"));
}

void tst_LinkListModel::appendingTellsTheRowsThatCame()
{
    LinkListModel model;
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.append({{}, {}});
    model.append({});
    model.append({{}});
    QCOMPARE(inserted.count(), 2);
    QCOMPARE(inserted[1][1].toInt(), 2);
    QCOMPARE(inserted[1][2].toInt(), 2);
    QCOMPARE(reset.count(), 0);
}

void tst_LinkListModel::outsideOfTheListIsNothing()
{
    const auto model = makeModel(QStringLiteral("A"));
    QVERIFY(!model->data(QModelIndex()).isValid());
    QVERIFY(!model->index(0, 0).data(Qt::DecorationRole).isValid());
    QVERIFY(!model->headerData(2, Qt::Horizontal).isValid());
    QVERIFY(!model->headerData(0, Qt::Vertical).isValid());
    QCOMPARE(model->rowCount(model->index(0, 0)), 0);
    QVERIFY(!model->setData(QModelIndex(), QStringLiteral("x")));
    QVERIFY(!model->setData(model->index(0, 0), QStringLiteral("x"), Qt::DisplayRole));
    model->setTitle(1, QStringLiteral("x"));
    model->setLink(-1, QStringLiteral("x"));
    QCOMPARE(titles(*model), QStringLiteral("A"));
}

void tst_LinkListModel::columnsHaveIdentifiers()
{
    QCOMPARE(LinkListModel::identifier(0), QStringLiteral("title"));
    QCOMPARE(LinkListModel::identifier(1), QStringLiteral("link"));
    QVERIFY(LinkListModel::identifier(2).isNull());
}

void tst_LinkListModel::editedTitleIsKeptAsTyped()
{
    const auto model = makeModel(QStringLiteral("AB"));
    QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
    QVERIFY(model->setData(model->index(1, 0), QStringLiteral(" a <b> & \"c\" ")));
    QCOMPARE(model->items()[1].title, QStringLiteral(" a <b> & \"c\" "));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed[0][0].toModelIndex(), model->index(1, 0));
    QCOMPARE(changed[0][1].toModelIndex(), model->index(1, 0));
}

void tst_LinkListModel::editedLinkIsNormalised()
{
    const auto model = makeModel(QStringLiteral("A"));
    QVERIFY(model->setData(model->index(0, 1), QStringLiteral("a b")));
    QCOMPARE(model->items()[0].link, QStringLiteral("http://a%20b"));
    model->setLink(0, QStringLiteral("a b"));
    QCOMPARE(model->items()[0].link, QStringLiteral("a b"));
}

void tst_LinkListModel::forbiddenCharactersAreDropped()
{
    const auto model = makeModel(QStringLiteral("A"));
    model->setTitle(0, QStringLiteral("a\r\nb\u0001c\uFFFF") + QChar(0xD800));
    QCOMPARE(model->items()[0].title, QStringLiteral("a\nbc"));
}

void tst_LinkListModel::removesScatteredRowsAtOnce()
{
    const auto model = makeModel(QStringLiteral("ABCDEFG"));
    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    model->remove({0, 2, 3, 6});
    QCOMPARE(titles(*model), QStringLiteral("BEF"));
    QCOMPARE(removed.count(), 3);
    model->remove({});
    QCOMPARE(removed.count(), 3);
}

void tst_LinkListModel::clearingRemovesEveryRowAtOnce()
{
    const auto model = makeModel(QStringLiteral("ABC"));
    const QPersistentModelIndex second(model->index(1, 0));
    QMimeData dragged;
    model->writeRowsWithIndexes({0}, &dragged);
    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    model->clear();
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(removed.count(), 1);
    QVERIFY(!second.isValid());
    QCOMPARE(model->validateDrop(&dragged), Qt::IgnoreAction);
    model->clear();
    QCOMPARE(removed.count(), 1);
}

void tst_LinkListModel::rowsPastTheEndAreLeftOut()
{
    const auto model = makeModel(QStringLiteral("ABC"));
    model->remove({-1, 1, 3, 99});
    QCOMPARE(titles(*model), QStringLiteral("AC"));
    QVERIFY(model->moveUp({5}).isEmpty());
    QVERIFY(model->moveDown({5}).isEmpty());
    QCOMPARE(titles(*model), QStringLiteral("AC"));
}

void tst_LinkListModel::moveUpGathersAboveTheFirst()
{
    const auto model = makeModel(QStringLiteral("ABCDE"));
    QCOMPARE(model->moveUp({1, 3}), (QList<int>{0, 1}));
    QCOMPARE(titles(*model), QStringLiteral("BDACE"));
}

void tst_LinkListModel::moveUpAtTheTopDoesNothing()
{
    const auto model = makeModel(QStringLiteral("ABC"));
    QVERIFY(model->moveUp({0, 2}).isEmpty());
    QVERIFY(model->moveUp({}).isEmpty());
    QCOMPARE(titles(*model), QStringLiteral("ABC"));
}

void tst_LinkListModel::moveDownEndsOneBelowTheLast()
{
    const auto model = makeModel(QStringLiteral("ABCDE"));
    QCOMPARE(model->moveDown({2, 3}), (QList<int>{3, 4}));
    QCOMPARE(titles(*model), QStringLiteral("ABECD"));
    const auto scattered = makeModel(QStringLiteral("ABCDE"));
    QCOMPARE(scattered->moveDown({0, 2}), (QList<int>{2, 3}));
    QCOMPARE(titles(*scattered), QStringLiteral("BDACE"));
}

void tst_LinkListModel::moveDownAtTheEndDoesNothing()
{
    const auto model = makeModel(QStringLiteral("ABCDE"));
    QVERIFY(model->moveDown({4}).isEmpty());
    QVERIFY(model->moveDown({0, 4}).isEmpty());
    QCOMPARE(titles(*model), QStringLiteral("ABCDE"));
}

void tst_LinkListModel::contiguousBlockIsOneMove()
{
    const auto model = makeModel(QStringLiteral("ABCDEF"));
    QSignalSpy moved(model.get(), &QAbstractItemModel::rowsMoved);
    QSignalSpy reset(model.get(), &QAbstractItemModel::modelReset);
    model->moveUp({2, 3, 4});
    model->moveDown({1, 2, 3});
    QCOMPARE(moved.count(), 2);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(titles(*model), QStringLiteral("ABCDEF"));
}

void tst_LinkListModel::movesAgreeWithASecondModel()
{
    QRandomGenerator random(20261121);
    for (int round = 0; round < 20'000; ++round) {
        const int count = random.bounded(1, 12);
        QString order;
        QList<int> rows;
        for (int row = 0; row < count; ++row) {
            order += QChar(u'a' + row);
            if (random.bounded(3) == 0)
                rows += row;
        }
        const bool isUp = random.bounded(2) == 0;
        LinkListModel model;
        model.append(named(order));
        const QList<int> selection = isUp ? model.moveUp(rows) : model.moveDown(rows);
        const Told expected = told(order, rows, isUp);
        QCOMPARE(titles(model), expected.order);
        QCOMPARE(selection, expected.selection);
    }
}

void tst_LinkListModel::persistentIndexesFollowTheirItems()
{
    const auto model = makeModel(QStringLiteral("ABCDEFGH"));
    std::vector<QPersistentModelIndex> indexes;
    indexes.reserve(8);
    for (int row = 0; row < 8; ++row)
        indexes.emplace_back(model->index(row, 0));
    model->moveUp({2, 4, 5, 7});
    model->moveDown({0, 3});
    model->remove({1, 6});
    for (int row = 0; row < 8; ++row) {
        if (indexes[size_t(row)].isValid())
            QCOMPARE(indexes[size_t(row)].data().toString(), QString(QChar(u'A' + row)));
    }
    QCOMPARE(std::count_if(indexes.begin(), indexes.end(), [](const auto &index) { return index.isValid(); }),
             6);
}

void tst_LinkListModel::tenThousandLinksMoveAtOnce()
{
    LinkListModel model;
    model.append(
        QList<LinkItem>(10'000, {QStringLiteral("title"), QStringLiteral("http://www.example.com")}));
    QList<int> rows(9'999);
    std::iota(rows.begin(), rows.end(), 1);
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QCOMPARE(model.moveUp(rows).size(), 9'999);
    QCOMPARE(moved.count(), 1);
}

void tst_LinkListModel::draggedRowsComeBackAsTheyWere_data()
{
    QTest::addColumn<QList<int>>("rows");
    QTest::newRow("none") << QList<int>{};
    QTest::newRow("one") << QList<int>{0};
    QTest::newRow("scattered") << QList<int>{0, 2, 3};
    QTest::newRow("past the end") << QList<int>{1, 7, 2147483647};
}

void tst_LinkListModel::draggedRowsComeBackAsTheyWere()
{
    QFETCH(const QList<int>, rows);
    const auto model = makeModel(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    model->writeRowsWithIndexes(rows, &pasteboard);
    QCOMPARE(pasteboard.formats(), QStringList{QStringLiteral("LinkListDragType")});
    const auto read = model->readRows(pasteboard.data(LinkListModel::dragType()));
    QVERIFY(read);
    QCOMPARE(*read, rows);
    QCOMPARE(model->validateDrop(&pasteboard), Qt::CopyAction | Qt::MoveAction | Qt::LinkAction);
}

void tst_LinkListModel::rowsOfAnotherListAreRefused()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    const auto other = makeModel(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    other->writeRowsWithIndexes({0}, &pasteboard);
    QCOMPARE(model->validateDrop(&pasteboard), Qt::IgnoreAction);
    QVERIFY(!model->dropMimeData(&pasteboard, Qt::MoveAction, 3, 0, {}));
    QCOMPARE(titles(*model), QStringLiteral("ABCD"));
}

void tst_LinkListModel::rowsAreStaleOnceRowsComeGoOrMove()
{
    const std::vector<std::function<void(LinkListModel &)>> changes
        = {[](LinkListModel &model) { model.append(named(QStringLiteral("E"))); },
           [](LinkListModel &model) { model.remove({3}); }, [](LinkListModel &model) { model.moveUp({3}); }};
    for (const auto &change : changes) {
        const auto model = makeModel(QStringLiteral("ABCD"));
        QMimeData pasteboard;
        model->writeRowsWithIndexes({0}, &pasteboard);
        change(*model);
        const QString before = titles(*model);
        QVERIFY(!model->readRows(pasteboard.data(LinkListModel::dragType())));
        QVERIFY(!model->dropMimeData(&pasteboard, Qt::MoveAction, 3, 0, {}));
        QCOMPARE(titles(*model), before);
    }
}

void tst_LinkListModel::typedTextLeavesDraggedRowsValid()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    model->writeRowsWithIndexes({0}, &pasteboard);
    model->setTitle(0, QStringLiteral("Z"));
    QVERIFY(model->dropMimeData(&pasteboard, Qt::MoveAction, 2, 0, {}));
    QCOMPARE(titles(*model), QStringLiteral("BZCD"));
}

void tst_LinkListModel::damagedDataIsRefused()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    model->writeRowsWithIndexes({1, 2}, &pasteboard);
    const QByteArray whole = pasteboard.data(LinkListModel::dragType());
    for (qsizetype size = 0; size < whole.size(); ++size) {
        if (const auto rows = model->readRows(whole.left(size)))
            QVERIFY(*rows == QList<int>() || *rows == QList<int>{1}); // cut between two rows
    }
    const QByteArray row(reinterpret_cast<const char *>("\0\0\0\1"), 4);
    QVERIFY(!model->readRows(whole + row)); // not ascending
    QVERIFY(!model->readRows(whole + whole.right(4))); // twice
    QVERIFY(!model->readRows(whole + QByteArray("\xFF\xFF\xFF\xFE", 4))); // negative
    QVERIFY(!model->readRows(whole + 'x'));
    QVERIFY(!model->readRows(QByteArray(1 << 20, 'x')));
}

void tst_LinkListModel::otherDataIsRefused()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    QVERIFY(!model->canDropMimeData(nullptr, Qt::MoveAction, 0, 0, {}));
    QVERIFY(!model->dropMimeData(nullptr, Qt::MoveAction, 0, 0, {}));
    QMimeData text;
    text.setText(QStringLiteral("0"));
    QVERIFY(!model->canDropMimeData(&text, Qt::MoveAction, 0, 0, {}));
    QVERIFY(!model->dropMimeData(&text, Qt::MoveAction, 0, 0, {}));
    // Another program's data under the same name.
    QMimeData foreign;
    foreign.setData(LinkListModel::dragType(), "0,1,2");
    QVERIFY(!model->canDropMimeData(&foreign, Qt::MoveAction, 0, 0, {}));
    QVERIFY(!model->dropMimeData(&foreign, Qt::MoveAction, 0, 0, {}));
    QCOMPARE(titles(*model), QStringLiteral("ABCD"));
}

void tst_LinkListModel::dropOnARowMeansBeforeItAndElsewhereTheEnd()
{
    struct Place {
        int row;
        int parent;
        QString order;
    };
    const QList<Place> places
        = {{-1, 2, QStringLiteral("BACD")}, {2, -1, QStringLiteral("BACD")}, {-1, -1, QStringLiteral("BCDA")},
           {4, -1, QStringLiteral("BCDA")}, {9, -1, QStringLiteral("BCDA")}, {-1, 0, QStringLiteral("ABCD")}};
    for (const Place &place : places) {
        const auto model = makeModel(QStringLiteral("ABCD"));
        const std::unique_ptr<QMimeData> pasteboard(model->mimeData({model->index(0, 0)}));
        QSignalSpy dropped(model.get(), &LinkListModel::dropped);
        QVERIFY(model->dropMimeData(pasteboard.get(), Qt::MoveAction, place.row, 0,
                                    place.parent < 0 ? QModelIndex() : model->index(place.parent, 1)));
        QCOMPARE(titles(*model), place.order);
        QCOMPARE(dropped.size(), 1);
    }
}

void tst_LinkListModel::droppingTwiceMovesOnce()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    const std::unique_ptr<QMimeData> pasteboard(model->mimeData({model->index(0, 0)}));
    QVERIFY(model->dropMimeData(pasteboard.get(), Qt::MoveAction, 2, 0, {}));
    QVERIFY(!model->dropMimeData(pasteboard.get(), Qt::MoveAction, 2, 0, {}));
    QCOMPARE(titles(*model), QStringLiteral("BACD"));
}

void tst_LinkListModel::rowsCanBeDraggedAndDroppedOn()
{
    const auto model = makeModel(QStringLiteral("ABCD"));
    QCOMPARE(model->mimeTypes(), QStringList{QStringLiteral("LinkListDragType")});
    QVERIFY(model->flags(model->index(1, 1)).testFlag(Qt::ItemIsDragEnabled));
    QVERIFY(model->flags(model->index(1, 1)).testFlag(Qt::ItemIsDropEnabled));
    QVERIFY(model->flags({}).testFlag(Qt::ItemIsDropEnabled));
    // Whoever drags takes nothing away afterwards: the drop has moved the rows.
    QCOMPARE(model->supportedDragActions(), Qt::MoveAction);
    QVERIFY(!model->removeRows(0, 1));
    // Cells count once a row.
    const std::unique_ptr<QMimeData> pasteboard(
        model->mimeData({model->index(2, 1), model->index(0, 0), model->index(2, 0)}));
    QCOMPARE(model->readRows(pasteboard->data(LinkListModel::dragType())).value(), (QList<int>{0, 2}));
    QVERIFY(!model->mimeData({}));
}

void tst_LinkListModel::fiveThousandScatteredRowsAreDroppedQuickly()
{
    constexpr int count = 10'000;
    LinkListModel model;
    QList<LinkItem> items;
    QList<int> rows;
    for (int i = 0; i < count; ++i) {
        items.append({QString::number(i), QString()});
        if (i % 2)
            rows.append(i);
    }
    model.append(items);
    ProcessorTimer timer;
    timer.start();
    QCOMPARE(model.acceptDrop(rows, 0).size(), count / 2);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(model.items()[0].title, QStringLiteral("1"));
    QCOMPARE(model.items()[count / 2].title, QStringLiteral("0"));
}

LINKLIST_TEST_MAIN(tst_LinkListModel)
#include "tst_LinkListModel.moc"
