#include "linklist/LinkListModel.h"
#include "tests/support/TestCase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

class tst_LinkListModel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void showsItemsInTwoColumns();
    void appendingTellsTheRowsThatCame();
    void outsideOfTheListIsNothing();
    void columnsHaveIdentifiers();
};

void tst_LinkListModel::showsItemsInTwoColumns()
{
    LinkListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.append({{QStringLiteral("A"), QStringLiteral("http://a")},
                  {QStringLiteral("B"), QStringLiteral("http://b")}});
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.columnCount(), 2);
    QCOMPARE(model.index(1, LinkListModel::TitleColumn).data().toString(), QStringLiteral("B"));
    QCOMPARE(model.index(1, LinkListModel::LinkColumn).data().toString(), QStringLiteral("http://b"));
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Title"));
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Link"));
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
    LinkListModel model;
    model.append({{QStringLiteral("A"), QStringLiteral("http://a")}});
    QVERIFY(!model.data(QModelIndex()).isValid());
    QVERIFY(!model.index(0, 0).data(Qt::DecorationRole).isValid());
    QVERIFY(!model.headerData(2, Qt::Horizontal).isValid());
    QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
    QCOMPARE(model.rowCount(model.index(0, 0)), 0);
}

void tst_LinkListModel::columnsHaveIdentifiers()
{
    QCOMPARE(LinkListModel::identifier(0), QStringLiteral("title"));
    QCOMPARE(LinkListModel::identifier(1), QStringLiteral("link"));
    QVERIFY(LinkListModel::identifier(2).isNull());
}

LINKLIST_TEST_MAIN(tst_LinkListModel)
#include "tst_LinkListModel.moc"
