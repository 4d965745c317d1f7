#include "Classes/Delegate/TableViewProtocol.h"
#include "tests/support/TestCase.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QTableView>
#include <QThread>
#include <array>
#include <chrono>
#include <mutex>
#include <pthread.h>
#include <semaphore>

namespace
{
// The standard's, which the thread sanitizer understands.
using Semaphore = std::counting_semaphore<>;
constexpr std::chrono::seconds patience{20}; // never spent when all is well

class Owner : public QObject, public TableSelectionReceiver
{
public:
    void tableViewSelectionDidChange(const TableSelection &selection) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_last = selection;
            m_threads.append(QThread::currentThreadId());
        }
        told.release();
        leave.acquire();
    }
    AsyncScope &asyncScope() override { return m_scope; }

    // What the next call told, waited for; the call is over when the owner may go.
    TableSelection next()
    {
        leave.release();
        const bool isTold = told.try_acquire_for(patience);
        const std::lock_guard lock(m_mutex);
        return isTold ? m_last : TableSelection{{-1}, {}, {}};
    }
    QList<Qt::HANDLE> threads()
    {
        const std::lock_guard lock(m_mutex);
        return m_threads;
    }

    Semaphore told{0};
    Semaphore leave{0};

private:
    std::mutex m_mutex;
    TableSelection m_last;
    QList<Qt::HANDLE> m_threads;
    AsyncScope m_scope;
};

// Is no receiver: nothing can be told to it.
class Deaf : public QObject
{
};

QStringList names(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}
} // namespace

class tst_TableViewProtocol : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void emptyOneHasNoRowsAndNoColumns();
    void attributesBecomeRows();
    void childrenBecomeRows();
    void namesAndTextsKeepAMark();
    void anotherTypeGivesEmptyRows();
    void commentsAndTextAreNoRowsAndNoFields();
    void secondRowWithAnExtraAttributeShowsNoColumnForIt();
    void rowLackingAKeyShowsAnEmptyCell();
    void keysComeFromTheFirstRowThatHasAny();
    void keysThatWereSetStay();
    void titlesAreTheKeysUnlessTheyAreSet();
    void fillingKeysClearsTheTitles();
    void repeatedNamesRepeatTheirColumn();
    void itemFromElementFillsTheKeysOnce();
    void columnIdentifiersReadAsIndexes_data();
    void columnIdentifiersReadAsIndexes();
    void rowsOutsideTheListHaveNoValue();
    void cellsShowTextOnly();
    void listCanBeReplaced();
    void rowsOutliveTheDocument();
    void modelKeepsItsRules();
    void tableShowsRowsAndTitles();
    void selectionIsToldOnAThreadOfItsOwn();
    void selectionsAreToldOnDifferentThreads();
    void selectionOfSeveralRowsIsAscending();
    void selectionIsToldOncePerChange();
    void withoutAnOwnerSelectionIsDropped();
    void ownerThatIsNoReceiverIsLeftAlone();
    void ownerThatGoesIsNotTold();
    void ownerThatGoesAtOnceIsNotTold();
    void tableMayGoWhileItsOwnerIsTold();
    void threadThatCannotStartIsDropped();

private:
    static pugi::xml_node parsed(pugi::xml_document &document, const char *xml)
    {
        if (!document.load_string(xml))
            qFatal("no document: %s", xml);
        return document.document_element();
    }
    QStringList texts(const TableViewProtocol &table) const;
};

// Every cell, row by row.
QStringList tst_TableViewProtocol::texts(const TableViewProtocol &table) const
{
    QStringList found;
    for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column)
            found.append(table.index(row, column).data().toString());
    }
    return found;
}

void tst_TableViewProtocol::emptyOneHasNoRowsAndNoColumns()
{
    const TableViewProtocol table;
    QCOMPARE(table.numberOfRowsInTableView(), 0);
    QCOMPARE(table.rowCount(), 0);
    QCOMPARE(table.columnCount(), 0);
    QVERIFY(table.list().isEmpty() && table.getKeys().isEmpty() && table.getTitles().isEmpty());
    QCOMPARE(table.ower(), nullptr);
    const TableViewProtocol none(pugi::xml_node(), TableViewProtocol::Attributes, nullptr);
    QCOMPARE(none.rowCount(), 0);
}

void tst_TableViewProtocol::attributesBecomeRows()
{
    pugi::xml_document document;
    Deaf owner;
    const TableViewProtocol table(
        parsed(document, "<a><i z=\"1\" b=\"&lt;ü&gt;\"/><j z=\"3\" b=\"4\"><z>no</z></j></a>"),
        TableViewProtocol::Attributes, &owner);
    QCOMPARE(table.ower(), &owner);
    QCOMPARE(table.getKeys(), names({"z", "b"}));
    QCOMPARE(table.numberOfRowsInTableView(), 2);
    QCOMPARE(texts(table), names({"1", "<ü>", "3", "4"}));
    QCOMPARE(
        table.list()[1],
        (TableRow{{QStringLiteral("z"), QStringLiteral("3")}, {QStringLiteral("b"), QStringLiteral("4")}}));
}

void tst_TableViewProtocol::childrenBecomeRows()
{
    pugi::xml_document document;
    const TableViewProtocol table(
        parsed(document, "<a><i x=\"no\"><t>one <b>bold</b></t><l>1&amp;</l></i><i><t>two</t><l/></i></a>"),
        TableViewProtocol::Children, nullptr);
    QCOMPARE(table.getKeys(), names({"t", "l"}));
    QCOMPARE(texts(table), names({"one bold", "1&", "two", ""}));
}

void tst_TableViewProtocol::namesAndTextsKeepAMark()
{
    const QString name = QStringLiteral("\uFEFFk");
    const QString text = QStringLiteral("\uFEFFv");
    pugi::xml_document document;
    pugi::xml_node row = document.append_child("list").append_child("row");
    row.append_attribute(name.toUtf8().constData()) = text.toUtf8().constData();
    row.append_child(name.toUtf8().constData()).text() = text.toUtf8().constData();
    for (const int type : {TableViewProtocol::Attributes, TableViewProtocol::Children}) {
        const TableViewProtocol table(document.first_child(), type, nullptr);
        QCOMPARE(table.getKeys(), QStringList{name});
        QCOMPARE(texts(table), QStringList{text});
    }
}

void tst_TableViewProtocol::anotherTypeGivesEmptyRows()
{
    pugi::xml_document document;
    const pugi::xml_node element = parsed(document, "<a><i x=\"1\"><t>t</t></i><i/></a>");
    for (const int type : {-1, 2, 100}) {
        const TableViewProtocol table(element, type, nullptr);
        QCOMPARE(table.rowCount(), 2);
        QCOMPARE(table.columnCount(), 0);
        QVERIFY(table.list()[0].isEmpty());
    }
}

void tst_TableViewProtocol::commentsAndTextAreNoRowsAndNoFields()
{
    pugi::xml_document document;
    QVERIFY(document.load_string("<a>text<!--c--><?p i?><i>text<!--c--><t>1</t></i></a>", pugi::parse_full));
    const TableViewProtocol table(document.document_element(), TableViewProtocol::Children, nullptr);
    QCOMPARE(table.rowCount(), 1);
    QCOMPARE(table.getKeys(), names({"t"}));
}

void tst_TableViewProtocol::secondRowWithAnExtraAttributeShowsNoColumnForIt()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i x=\"1\"/><i x=\"2\" extra=\"3\"/></a>"),
                                  TableViewProtocol::Attributes, nullptr);
    QCOMPARE(table.columnCount(), 1);
    QCOMPARE(texts(table), names({"1", "2"}));
    QCOMPARE(table.list()[1].value(QStringLiteral("extra")), QStringLiteral("3"));
}

void tst_TableViewProtocol::rowLackingAKeyShowsAnEmptyCell()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i x=\"1\" y=\"2\"/><i y=\"3\"/></a>"),
                                  TableViewProtocol::Attributes, nullptr);
    QCOMPARE(texts(table), names({"1", "2", "", "3"}));
    QVERIFY(table.objectValueForTableColumn(QStringLiteral("0"), 1).isNull());
    QVERIFY(!table.dataCellForTableColumn(QStringLiteral("0"), 1).isNull());
}

void tst_TableViewProtocol::keysComeFromTheFirstRowThatHasAny()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i/><i x=\"1\"/><i y=\"2\"/></a>"),
                                  TableViewProtocol::Attributes, nullptr);
    QCOMPARE(table.getKeys(), names({"x"}));
    QCOMPARE(texts(table), names({"", "1", ""}));
}

void tst_TableViewProtocol::keysThatWereSetStay()
{
    pugi::xml_document document;
    TableViewProtocol table;
    table.setKeys(names({"y", "x"}));
    table.setTitles({{QStringLiteral("y"), QStringLiteral("Why")}});
    table.listFromElement(parsed(document, "<a><i x=\"1\" y=\"2\" z=\"3\"/></a>"),
                          TableViewProtocol::Attributes);
    QCOMPARE(table.getKeys(), names({"y", "x"}));
    QCOMPARE(table.getTitles().value(QStringLiteral("y")), QStringLiteral("Why"));
    QCOMPARE(texts(table), names({"2", "1"}));
    pugi::xml_document other;
    table.listFromElement(parsed(other, "<a><i y=\"9\"/><i/></a>"), TableViewProtocol::Attributes);
    QCOMPARE(texts(table), names({"9", "", "", ""}));
}

void tst_TableViewProtocol::titlesAreTheKeysUnlessTheyAreSet()
{
    pugi::xml_document document;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\" y=\"2\"/></a>"), TableViewProtocol::Attributes,
                            nullptr);
    QCOMPARE(table.getTitles(),
             (QMap<QString, QString>{{QStringLiteral("x"), QStringLiteral("x")},
                                     {QStringLiteral("y"), QStringLiteral("y")}}));
    QCOMPARE(table.headerData(1, Qt::Horizontal), QVariant(QStringLiteral("y")));
    QSignalSpy changes(&table, &QAbstractItemModel::headerDataChanged);
    table.setTitles({{QStringLiteral("y"), QStringLiteral("Why")}});
    QCOMPARE(changes.size(), 1);
    QCOMPARE(table.headerData(0, Qt::Horizontal), QVariant(QStringLiteral("x")));
    QCOMPARE(table.headerData(1, Qt::Horizontal), QVariant(QStringLiteral("Why")));
    QCOMPARE(table.headerData(0, Qt::Vertical), QVariant(1));
}

void tst_TableViewProtocol::fillingKeysClearsTheTitles()
{
    pugi::xml_document document;
    TableViewProtocol table;
    table.setTitles({{QStringLiteral("x"), QStringLiteral("Ex")}, {QStringLiteral("old"), QString()}});
    table.listFromElement(parsed(document, "<a><i x=\"1\"/></a>"), TableViewProtocol::Attributes);
    QCOMPARE(table.getTitles(), (QMap<QString, QString>{{QStringLiteral("x"), QStringLiteral("x")}}));
}

void tst_TableViewProtocol::repeatedNamesRepeatTheirColumn()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i><t>1</t><t>2</t></i></a>"),
                                  TableViewProtocol::Children, nullptr);
    QCOMPARE(table.getKeys(), names({"t", "t"}));
    QCOMPARE(texts(table), names({"2", "2"}));
}

void tst_TableViewProtocol::itemFromElementFillsTheKeysOnce()
{
    pugi::xml_document document;
    const pugi::xml_node element = parsed(document, "<a x=\"1\"><b>2</b></a>");
    TableViewProtocol table;
    QSignalSpy resets(&table, &QAbstractItemModel::modelReset);
    QCOMPARE(table.itemFromElement(element, TableViewProtocol::Attributes),
             (TableRow{{QStringLiteral("x"), QStringLiteral("1")}}));
    QCOMPARE(table.getKeys(), names({"x"}));
    QCOMPARE(resets.size(), 1);
    QCOMPARE(table.itemFromElement(element, TableViewProtocol::Children),
             (TableRow{{QStringLiteral("b"), QStringLiteral("2")}}));
    QCOMPARE(table.getKeys(), names({"x"}));
    QCOMPARE(resets.size(), 1);
    QVERIFY(table.list().isEmpty());
}

void tst_TableViewProtocol::columnIdentifiersReadAsIndexes_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("expected");
    const QString first = QStringLiteral("1");
    const QString second = QStringLiteral("2");
    QTest::newRow("0") << QStringLiteral("0") << first;
    QTest::newRow("1") << QStringLiteral("1") << second;
    QTest::newRow("at the number of keys") << QStringLiteral("2") << QString();
    QTest::newRow("past it") << QStringLiteral("99999999999999999999") << QString();
    QTest::newRow("negative") << QStringLiteral("-1") << QString();
    QTest::newRow("no number") << QStringLiteral("name") << first;
    QTest::newRow("empty") << QStringLiteral("") << first;
    QTest::newRow("number in front") << QStringLiteral(" 1st") << second;
    QTest::newRow("missing column") << QString() << QString();
}

void tst_TableViewProtocol::columnIdentifiersReadAsIndexes()
{
    QFETCH(QString, identifier);
    QFETCH(QString, expected);
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i x=\"1\" y=\"2\"/></a>"),
                                  TableViewProtocol::Attributes, nullptr);
    QCOMPARE(table.objectValueForTableColumn(identifier, 0), expected);
    QCOMPARE(table.objectValueForTableColumn(identifier, 0).isNull(), expected.isNull());
    QCOMPARE(table.dataCellForTableColumn(identifier, 0), expected);
}

void tst_TableViewProtocol::rowsOutsideTheListHaveNoValue()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i x=\"1\"/></a>"), TableViewProtocol::Attributes,
                                  nullptr);
    QVERIFY(table.objectValueForTableColumn(QStringLiteral("0"), -1).isNull());
    QVERIFY(table.objectValueForTableColumn(QStringLiteral("0"), 1).isNull());
    QVERIFY(!table.index(1, 0).isValid());
    QVERIFY(!table.data(QModelIndex()).isValid());
}

void tst_TableViewProtocol::cellsShowTextOnly()
{
    pugi::xml_document document;
    const TableViewProtocol table(parsed(document, "<a><i x=\"1\"/></a>"), TableViewProtocol::Attributes,
                                  nullptr);
    QVERIFY(!table.index(0, 0).data(Qt::DecorationRole).isValid());
    QCOMPARE(table.flags(table.index(0, 0)) & (Qt::ItemIsEditable | Qt::ItemIsSelectable),
             Qt::ItemIsSelectable);
}

void tst_TableViewProtocol::listCanBeReplaced()
{
    TableViewProtocol table;
    table.setKeys(names({"x"}));
    QSignalSpy resets(&table, &QAbstractItemModel::modelReset);
    const QList<TableRow> list{{{QStringLiteral("x"), QStringLiteral("1")}}, {}};
    table.setList(list);
    QCOMPARE(resets.size(), 1);
    QCOMPARE(table.list(), list);
    QCOMPARE(table.numberOfRowsInTableView(), 2);
    QCOMPARE(texts(table), names({"1", ""}));
    table.setList({});
    QCOMPARE(table.numberOfRowsInTableView(), 0);
}

void tst_TableViewProtocol::rowsOutliveTheDocument()
{
    TableViewProtocol table;
    {
        pugi::xml_document document;
        table.listFromElement(parsed(document, "<a><i x=\"kept\"/></a>"), TableViewProtocol::Attributes);
    }
    QCOMPARE(texts(table), names({"kept"}));
}

void tst_TableViewProtocol::modelKeepsItsRules()
{
    TableViewProtocol table;
    const QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
    pugi::xml_document document;
    const pugi::xml_node element = parsed(document, "<a><i x=\"1\" y=\"2\"/><i x=\"3\"/></a>");
    table.listFromElement(element, TableViewProtocol::Attributes);
    table.setKeys(names({"y"}));
    table.setTitles({});
    table.setKeys({});
    table.itemFromElement(element.first_child(), TableViewProtocol::Attributes);
    table.listFromElement(pugi::xml_node(), TableViewProtocol::Attributes);
    QCOMPARE(table.rowCount(), 0);
    QCOMPARE(table.columnCount(), 2);
}

void tst_TableViewProtocol::tableShowsRowsAndTitles()
{
    pugi::xml_document document;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\" y=\"2\"/><i x=\"3\"/></a>"),
                            TableViewProtocol::Attributes, nullptr);
    QTableView view;
    table.showIn(&view);
    QCOMPARE(view.model(), &table);
    QCOMPARE(view.model()->index(0, 1).data(), QVariant(QStringLiteral("2")));
    QCOMPARE(view.model()->headerData(1, Qt::Horizontal), QVariant(QStringLiteral("y")));
}

void tst_TableViewProtocol::selectionIsToldOnAThreadOfItsOwn()
{
    pugi::xml_document document;
    Owner owner;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\"/><i x=\"2\"/></a>"),
                            TableViewProtocol::Attributes, &owner);
    QTableView view;
    table.showIn(&view);
    view.selectRow(1);
    const TableSelection selection = owner.next();
    QCOMPARE(selection.rows, QList<int>{1});
    QCOMPARE(selection.keys, names({"x"}));
    QCOMPARE(selection.values, QList<TableRow>{table.list()[1]});
    QVERIFY(owner.threads().constFirst() != QThread::currentThreadId());
    view.clearSelection();
    QCOMPARE(owner.next().rows, QList<int>());
}

void tst_TableViewProtocol::selectionsAreToldOnDifferentThreads()
{
    Owner owner;
    TableViewProtocol table;
    table.setOwer(&owner);
    for (int i = 0; i < 3; ++i)
        table.tableViewSelectionDidChange({{i}, {}, {}});
    // All are being told at once: none may leave before.
    for (int i = 0; i < 3; ++i)
        QVERIFY(owner.told.try_acquire_for(patience));
    const QList<Qt::HANDLE> threads = owner.threads();
    owner.leave.release(3);
    QCOMPARE(QSet<Qt::HANDLE>(threads.begin(), threads.end()).size(), 3);
}

void tst_TableViewProtocol::selectionOfSeveralRowsIsAscending()
{
    pugi::xml_document document;
    Owner owner;
    TableViewProtocol table(
        parsed(document, "<a><i x=\"1\" y=\"\"/><i x=\"2\"/><i x=\"3\"/><i x=\"4\"/></a>"),
        TableViewProtocol::Attributes, &owner);
    QTableView view;
    table.showIn(&view);
    QItemSelection selection(table.index(3, 0), table.index(3, 1));
    selection.select(table.index(0, 1), table.index(1, 1));
    view.selectionModel()->select(selection, QItemSelectionModel::Select);
    const TableSelection told = owner.next();
    QCOMPARE(told.rows, (QList<int>{0, 1, 3}));
    QCOMPARE(told.values, (QList<TableRow>{table.list()[0], table.list()[1], table.list()[3]}));
}

void tst_TableViewProtocol::selectionIsToldOncePerChange()
{
    pugi::xml_document document;
    Owner owner;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\"/><i x=\"2\"/></a>"),
                            TableViewProtocol::Attributes, &owner);
    QTableView view;
    table.showIn(&view);
    table.showIn(&view);
    owner.leave.release(10);
    view.selectRow(0);
    view.selectRow(0);
    view.selectRow(1);
    QVERIFY(owner.told.try_acquire_for(patience));
    QVERIFY(owner.told.try_acquire_for(patience));
    // Nothing more can come, as nothing begins any more.
    owner.asyncScope().close();
    QCOMPARE(owner.threads().size(), 2);
}

void tst_TableViewProtocol::withoutAnOwnerSelectionIsDropped()
{
    pugi::xml_document document;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\"/></a>"), TableViewProtocol::Attributes, nullptr);
    QTableView view;
    table.showIn(&view);
    view.selectRow(0);
    QVERIFY(view.selectionModel()->isRowSelected(0));
    Owner late;
    table.setOwer(&late);
    late.leave.release();
    view.clearSelection();
    QVERIFY(late.told.try_acquire_for(patience));
    late.asyncScope().close();
    QCOMPARE(late.threads().size(), 1);
}

void tst_TableViewProtocol::ownerThatIsNoReceiverIsLeftAlone()
{
    pugi::xml_document document;
    Deaf owner;
    TableViewProtocol table(parsed(document, "<a><i x=\"1\"/></a>"), TableViewProtocol::Attributes, &owner);
    QTableView view;
    table.showIn(&view);
    view.selectRow(0);
    QCOMPARE(table.ower(), &owner);
    QVERIFY(view.selectionModel()->isRowSelected(0));
}

void tst_TableViewProtocol::ownerThatGoesIsNotTold()
{
    TableViewProtocol table;
    {
        Owner owner;
        table.setOwer(&owner);
    }
    QCOMPARE(table.ower(), nullptr);
    table.tableViewSelectionDidChange({});
}

void tst_TableViewProtocol::ownerThatGoesAtOnceIsNotTold()
{
    // Whole, or not at all: what a call would find of an owner half gone is for the sanitizers to see.
    TableViewProtocol table;
    for (int i = 0; i < 100; ++i) {
        Owner owner;
        owner.leave.release();
        table.setOwer(&owner);
        table.tableViewSelectionDidChange({{i}, {}, {}});
    }
    QCOMPARE(table.ower(), nullptr);
}

void tst_TableViewProtocol::tableMayGoWhileItsOwnerIsTold()
{
    Owner owner;
    {
        pugi::xml_document document;
        TableViewProtocol table(parsed(document, "<a><i x=\"kept\"/></a>"), TableViewProtocol::Attributes,
                                &owner);
        QTableView view;
        table.showIn(&view);
        view.selectRow(0);
    }
    QCOMPARE(owner.next().values[0].value(QStringLiteral("x")), QStringLiteral("kept"));
}

void tst_TableViewProtocol::threadThatCannotStartIsDropped()
{
    // No machine has room for a stack of that size.
    pthread_attr_t before;
    pthread_attr_t huge;
    QCOMPARE(pthread_getattr_default_np(&before), 0);
    QCOMPARE(pthread_getattr_default_np(&huge), 0);
    QCOMPARE(pthread_attr_setstacksize(&huge, size_t(1) << 46), 0);
    Owner owner;
    TableViewProtocol table;
    table.setOwer(&owner);
    QCOMPARE(pthread_setattr_default_np(&huge), 0);
    table.tableViewSelectionDidChange({{1}, {}, {}});
    QCOMPARE(pthread_setattr_default_np(&before), 0);
    table.tableViewSelectionDidChange({{2}, {}, {}});
    QCOMPARE(owner.next().rows, QList<int>{2});
    owner.asyncScope().close();
    QCOMPARE(owner.threads().size(), 1);
}

LINKLIST_GUI_TEST_MAIN(tst_TableViewProtocol)
#include "tst_TableViewProtocol.moc"
