#include "linklist/LinkListModel.h"
#include "tests/support/TestCase.h"

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QRandomGenerator>
#include <set>
#include <vector>

// Rows dropped within the list, against a second model that shares nothing with the first, and as a view that
// knows the list from the model's signals alone sees them.
class tst_LinkListDrop : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void rowMovesDown();
    void rowMovesUp();
    void rowMovesToTheTop();
    void lowerOfTwoRowsTakesWhatCameToItsPlace();
    void pendingRowsStayWhereTheyWere();
    void rowsFromBothSidesMeetAtTheDropRow();
    void rowsFromBelowKeepTheirOrder();
    void everyRowOntoTheTopChangesNothing();
    void rowDroppedAtTheEndIsRecordedPastIt();
    void lastRowDroppedAtTheEndIsRecordedPastIt();
    void rowsDroppedAtTheEndShareARecord();
    void dropRowPastTheEndIsTheEnd();
    void lastRowDroppedOnItselfIsRecordedThere();
    void rowThatStaysTellsNothing();
    void rowPastTheEndBlocksTheRest();
    void rowsPastTheEndMoveNothing();
    void noRowsMoveNothing();
    void emptyListTakesNothing();
    void equalItemsAreToldApart();
    void agreesWithASecondModelOnEverySmallList();
    void agreesWithASecondModel_data();
    void agreesWithASecondModel();
    void viewStaysInStepThroughDropsAndEdits();
};

namespace
{

LinkItem named(QChar name)
{
    return {QString(name), QStringLiteral("http://") + name};
}

QList<LinkItem> named(const QString &names)
{
    QList<LinkItem> items;
    for (const QChar name : names)
        items += named(name);
    return items;
}

// The list as one letter an item; '?' for one whose title and link no longer belong together.
QString names(const QList<LinkItem> &items)
{
    QString result;
    for (const LinkItem &item : items)
        result += item.title.size() == 1 && item == named(item.title[0]) ? item.title[0] : QChar(u'?');
    return result;
}

LinkItem shown(const QAbstractItemModel &model, int row)
{
    return {model.index(row, LinkListModel::TitleColumn).data().toString(),
            model.index(row, LinkListModel::LinkColumn).data().toString()};
}

// A view in small: it keeps its own copy of the rows and changes it only as the signals say. Whenever it
// hears one, the model must show what the copy holds.
class Mirror
{
public:
    explicit Mirror(const QAbstractItemModel &model)
        : m_model(model)
    {
        using Model = QAbstractItemModel;
        QObject::connect(&model, &Model::rowsInserted, &m_context, [this](const auto &, int first, int last) {
            for (int row = first; row <= last; ++row)
                m_rows.insert(row, shown(m_model, row));
            compare("rowsInserted");
        });
        QObject::connect(&model, &Model::rowsRemoved, &m_context, [this](const auto &, int first, int last) {
            m_rows.remove(first, last - first + 1);
            compare("rowsRemoved");
        });
        QObject::connect(&model, &Model::dataChanged, &m_context, [this](const auto &from, const auto &to) {
            for (int row = from.row(); row <= to.row(); ++row)
                m_rows[row] = shown(m_model, row);
            compare("dataChanged");
        });
        QObject::connect(&model, &Model::rowsAboutToBeMoved, &m_context,
                         [this] { compare("rowsAboutToBeMoved"); });
        QObject::connect(
            &model, &Model::rowsMoved, &m_context,
            [this](const auto &, int first, int last, const auto &, int to) { move(first, last, to); });
        QObject::connect(&model, &Model::modelReset, &m_context, [this] { complain("modelReset"); });
        QObject::connect(&model, &Model::layoutChanged, &m_context, [this] { complain("layoutChanged"); });
    }

    const QList<LinkItem> &rows() const { return m_rows; }
    int moves() const { return m_moves; }
    // What it heard that it should not have, or that did not hold; empty when all was well.
    const QString &complaints() const { return m_complaints; }

private:
    void move(int first, int last, int to)
    {
        ++m_moves;
        const QList<LinkItem> block = m_rows.mid(first, last - first + 1);
        m_rows.remove(first, block.size());
        const qsizetype at = to > last ? to - block.size() : to;
        for (qsizetype i = 0; i < block.size(); ++i)
            m_rows.insert(at + i, block[i]);
        compare("rowsMoved");
    }

    void compare(const char *signal)
    {
        bool isSame = m_model.rowCount() == m_rows.size();
        for (int row = 0; isSame && row < m_rows.size(); ++row)
            isSame = shown(m_model, row) == m_rows[row];
        if (!isSame)
            complain(signal);
    }

    void complain(const char *signal) { m_complaints += QLatin1Char(' ') + QLatin1String(signal); }

    const QAbstractItemModel &m_model;
    QList<LinkItem> m_rows;
    int m_moves = 0;
    QString m_complaints;
    QObject m_context;
};

// What a drop left behind. `origins` says of each row of the result where it was before.
struct Outcome {
    QString order;
    QList<int> recorded;
    QList<int> origins;
    QString complaints;

    bool operator==(const Outcome &) const = default;

    // "BACD 1": the list and the recorded indexes.
    QString text() const
    {
        QString result = order;
        for (const int index : recorded)
            result += QStringLiteral(" %1").arg(index);
        return result + complaints;
    }
};

// A drop on the model, seen from all sides: the answer, the items, a view, and an index held for each row.
Outcome drop(LinkListModel &model, const Mirror &mirror, const QList<int> &rows, int dropRow)
{
    const int count = model.rowCount();
    std::vector<QPersistentModelIndex> held;
    held.reserve(size_t(count));
    for (int row = 0; row < count; ++row)
        held.emplace_back(model.index(row, row % LinkListModel::ColumnCount));

    Outcome outcome;
    outcome.recorded = model.acceptDrop(rows, dropRow);
    outcome.order = names(model.items());
    outcome.complaints = mirror.complaints();
    if (mirror.rows() != model.items())
        outcome.complaints += QStringLiteral(" view shows ") + names(mirror.rows());
    outcome.origins = QList<int>(model.items().size(), -1);
    for (int row = 0; row < count; ++row) {
        const QPersistentModelIndex &index = held[size_t(row)];
        if (index.isValid() && index.row() < outcome.origins.size()
            && index.column() == row % LinkListModel::ColumnCount)
            outcome.origins[index.row()] = row;
    }
    return outcome;
}

Outcome drop(const QString &order, const QList<int> &rows, int dropRow)
{
    LinkListModel model;
    const Mirror mirror(model);
    model.append(named(order));
    return drop(model, mirror, rows, dropRow);
}

// The same as drop().text(), for lists of different items: the held indexes must have gone with them. The
// model is watched for breaches of what every view takes for granted.
QString dropped(const QString &order, const QList<int> &rows, int dropRow)
{
    LinkListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const Mirror mirror(model);
    model.append(named(order));
    const Outcome outcome = drop(model, mirror, rows, dropRow);
    QString followed;
    for (const int origin : outcome.origins)
        followed += origin < 0 ? QChar(u'-') : order[origin];
    return followed == outcome.order ? outcome.text() : outcome.text() + QStringLiteral(" held ") + followed;
}

// The drop told another way, a row at a time: each is taken out and put back, or put in once more and then
// taken out of its old place. The rows still to come keep the numbers that they had at the start.
Outcome told(const QString &order, const QList<int> &rows, int dropRow)
{
    struct Entry {
        QChar name;
        int origin = 0;
    };
    std::vector<Entry> items;
    items.reserve(size_t(order.size()));
    for (int row = 0; row < order.size(); ++row)
        items.push_back({order[row], row});
    const auto count = [&items] { return int(items.size()); };

    std::set<int> pending(rows.begin(), rows.end());
    std::set<int> recorded;
    int d = dropRow;
    for (qsizetype round = 0; round < rows.size(); ++round) {
        const int i = *pending.begin();
        if (i >= count())
            continue;
        const Entry item = items.at(size_t(i));
        int record = 0;
        if (i >= d) {
            items.erase(items.begin() + i);
            if (d >= count()) {
                items.push_back(item);
                record = count() - 1;
            } else {
                items.insert(items.begin() + d, item);
                record = d;
            }
        } else {
            const int n = count();
            if (d >= n) {
                items.push_back(item);
                record = n;
            } else {
                items.insert(items.begin() + d, item);
                record = d - 1;
            }
            --d;
            items.erase(items.begin() + i);
        }
        recorded.insert(record);
        pending.erase(i);
        ++d;
    }

    Outcome outcome;
    outcome.recorded = QList<int>(recorded.begin(), recorded.end());
    for (const Entry &entry : items) {
        outcome.order += entry.name;
        outcome.origins += entry.origin;
    }
    return outcome;
}

QString text(const QList<int> &numbers)
{
    QString result;
    for (const int number : numbers)
        result += QStringLiteral(" %1").arg(number);
    return result;
}

// Empty when both agree; else the case and what came of it.
QString difference(const QString &order, const QList<int> &rows, int dropRow, const Outcome &outcome)
{
    const Outcome expected = told(order, rows, dropRow);
    if (outcome == expected)
        return {};
    return QStringLiteral("rows%2 of \"%1\" to %3: is \"%4\" from%5, should be \"%6\" from%7")
        .arg(order, text(rows), QString::number(dropRow), outcome.text(), text(outcome.origins),
             expected.text(), text(expected.origins));
}

// Each row below `end` with a chance of one in two.
QList<int> someRows(QRandomGenerator &random, int end)
{
    QList<int> rows;
    for (int row = 0; row < end; ++row) {
        if (random.bounded(2) == 0)
            rows += row;
    }
    return rows;
}

// Letters of a small alphabet, so that equal items are common.
QString someNames(QRandomGenerator &random, int count)
{
    QString result;
    for (int row = 0; row < count; ++row)
        result += QChar(u'a' + random.bounded(5));
    return result;
}

} // namespace

void tst_LinkListDrop::rowMovesDown()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0}, 2), QStringLiteral("BACD 1"));
}

void tst_LinkListDrop::rowMovesUp()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {3}, 1), QStringLiteral("ADBC 1"));
}

void tst_LinkListDrop::rowMovesToTheTop()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {2}, 0), QStringLiteral("CABD 0"));
}

// The second round takes row 1, where C stands by then; both are recorded at row 2.
void tst_LinkListDrop::lowerOfTwoRowsTakesWhatCameToItsPlace()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0, 1}, 3), QStringLiteral("BACD 2"));
}

void tst_LinkListDrop::pendingRowsStayWhereTheyWere()
{
    QCOMPARE(dropped(QStringLiteral("ABCDE"), {0, 2}, 4), QStringLiteral("BCADE 3"));
    QCOMPARE(dropped(QStringLiteral("ABCDE"), {0, 1, 2}, 4), QStringLiteral("BDCAE 3"));
}

void tst_LinkListDrop::rowsFromBothSidesMeetAtTheDropRow()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0, 3}, 2), QStringLiteral("BADC 1 2"));
    QCOMPARE(dropped(QStringLiteral("ABCDEF"), {1, 4, 5}, 3), QStringLiteral("ACBEFD 2 3 4"));
}

void tst_LinkListDrop::rowsFromBelowKeepTheirOrder()
{
    QCOMPARE(dropped(QStringLiteral("ABCDE"), {2, 4}, 0), QStringLiteral("CEABD 0 1"));
    QCOMPARE(dropped(QStringLiteral("ABCDE"), {2, 3, 4}, 1), QStringLiteral("ACDEB 1 2 3"));
}

void tst_LinkListDrop::everyRowOntoTheTopChangesNothing()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {0, 1, 2}, 0), QStringLiteral("ABC 0 1 2"));
}

void tst_LinkListDrop::rowDroppedAtTheEndIsRecordedPastIt()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {0}, 3), QStringLiteral("BCA 3"));
}

void tst_LinkListDrop::lastRowDroppedAtTheEndIsRecordedPastIt()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {2}, 3), QStringLiteral("ABC 3"));
    QCOMPARE(dropped(QStringLiteral("A"), {0}, 1), QStringLiteral("A 1"));
}

void tst_LinkListDrop::rowsDroppedAtTheEndShareARecord()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0, 1}, 4), QStringLiteral("BDAC 4"));
}

void tst_LinkListDrop::dropRowPastTheEndIsTheEnd()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {0}, 4), QStringLiteral("BCA 3"));
    QCOMPARE(dropped(QStringLiteral("ABC"), {1}, 1000), QStringLiteral("ACB 3"));
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0, 1}, 7), QStringLiteral("BDAC 4"));
}

void tst_LinkListDrop::lastRowDroppedOnItselfIsRecordedThere()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {2}, 2), QStringLiteral("ABC 2"));
}

void tst_LinkListDrop::rowThatStaysTellsNothing()
{
    LinkListModel model;
    const Mirror mirror(model);
    model.append(named(QStringLiteral("ABC")));
    QCOMPARE(drop(model, mirror, {1}, 1).text(), QStringLiteral("ABC 1"));
    QCOMPARE(drop(model, mirror, {1}, 2).text(), QStringLiteral("ABC 1"));
    QCOMPARE(mirror.moves(), 0);
    QCOMPARE(drop(model, mirror, {1}, 0).text(), QStringLiteral("BAC 0"));
    QCOMPARE(mirror.moves(), 1);
}

void tst_LinkListDrop::rowPastTheEndBlocksTheRest()
{
    QCOMPARE(dropped(QStringLiteral("ABCD"), {1, 4, 5}, 0), QStringLiteral("BACD 0"));
    QCOMPARE(dropped(QStringLiteral("ABCD"), {0, 1, 9}, 3), QStringLiteral("BACD 2"));
}

void tst_LinkListDrop::rowsPastTheEndMoveNothing()
{
    QCOMPARE(dropped(QStringLiteral("ABC"), {3}, 0), QStringLiteral("ABC"));
    QCOMPARE(dropped(QStringLiteral("ABC"), {3, 4}, 5), QStringLiteral("ABC"));
}

void tst_LinkListDrop::noRowsMoveNothing()
{
    for (int dropRow = 0; dropRow <= 4; ++dropRow)
        QCOMPARE(dropped(QStringLiteral("ABC"), {}, dropRow), QStringLiteral("ABC"));
}

void tst_LinkListDrop::emptyListTakesNothing()
{
    QCOMPARE(dropped({}, {}, 0), QString());
    QCOMPARE(dropped({}, {0}, 0), QString());
    QCOMPARE(dropped({}, {0, 1}, 2), QString());
}

// Two links may be the same to the last letter; an index held for one never comes to point at the other.
void tst_LinkListDrop::equalItemsAreToldApart()
{
    const Outcome outcome = drop(QStringLiteral("AAB"), {0}, 3);
    QCOMPARE(outcome.text(), QStringLiteral("ABA 3"));
    QCOMPARE(outcome.origins, (QList<int>{1, 2, 0}));
    QCOMPARE(drop(QStringLiteral("AAA"), {2}, 0).origins, (QList<int>{2, 0, 1}));
}

void tst_LinkListDrop::agreesWithASecondModelOnEverySmallList()
{
    const QString alphabet = QStringLiteral("ABCDEF");
    for (int count = 0; count <= alphabet.size(); ++count) {
        const QString order = alphabet.left(count);
        for (uint set = 0; set < 1U << 8; ++set) {
            QList<int> rows;
            for (int row = 0; row < 8; ++row) {
                if (set >> row & 1U)
                    rows += row;
            }
            for (int dropRow = 0; dropRow <= 8; ++dropRow)
                QCOMPARE(difference(order, rows, dropRow, drop(order, rows, dropRow)), QString());
        }
    }
}

void tst_LinkListDrop::agreesWithASecondModel_data()
{
    QTest::addColumn<int>("rounds");
    QTest::addColumn<int>("longest");
    QTest::newRow("short lists") << 200'000 << 9;
    QTest::newRow("long lists") << 500 << 60;
}

void tst_LinkListDrop::agreesWithASecondModel()
{
    QFETCH(int, rounds);
    QFETCH(int, longest);
    QRandomGenerator random(20261122);
    for (int round = 0; round < rounds; ++round) {
        const QString order = someNames(random, random.bounded(longest + 1));
        const QList<int> rows = someRows(random, longest + 2);
        const int dropRow = random.bounded(longest + 3);
        QCOMPARE(difference(order, rows, dropRow, drop(order, rows, dropRow)), QString());
    }
}

void tst_LinkListDrop::viewStaysInStepThroughDropsAndEdits()
{
    LinkListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const Mirror mirror(model);
    QRandomGenerator random(20261123);
    for (int round = 0; round < 2'000; ++round) {
        const int count = model.rowCount();
        model.append(named(someNames(random, random.bounded(count < 6 ? 4 : 1))));
        if (random.bounded(8) == 0)
            model.remove(someRows(random, count));
        if (model.rowCount() > 0) {
            const QString name = someNames(random, 1);
            const int row = random.bounded(model.rowCount());
            model.setTitle(row, name);
            model.setLink(row, named(name[0]).link);
        }
        const QString order = names(model.items());
        const QList<int> rows = someRows(random, model.rowCount() + 1);
        const int dropRow = random.bounded(model.rowCount() + 2);
        QCOMPARE(difference(order, rows, dropRow, drop(model, mirror, rows, dropRow)), QString());
    }
    QVERIFY(mirror.moves() > 1'000);
}

LINKLIST_TEST_MAIN(tst_LinkListDrop)
#include "tst_LinkListDrop.moc"
