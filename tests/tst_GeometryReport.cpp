#include "host/GeometryReport.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

class tst_GeometryReport : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void partsAreToldWhenTheirWindowIsShown();
    void partsAreToldAgainWhenTheirWindowIsResized();
    void rowsInSightAreTold();
    void rowOutOfSightIsToldByItsNameAlone();
    void rowsThatMoveAreToldAgain();
    void viewWithoutAModelHasNoRows();

private:
    // What the report's last line of that name says after the name; a null text for no line.
    QString place(const QString &name) const
    {
        QString last;
        const QStringList lines = QString::fromUtf8(Fixtures::get(path())).split(u'\n', Qt::SkipEmptyParts);
        for (const QString &line : lines)
            if (line.section(u' ', 0, 0) == name)
                last = line.section(u' ', 1);
        return last;
    }
    static QString told(const QWidget *widget, const QRect &rect)
    {
        const QPoint at = widget->mapToGlobal(rect.topLeft());
        return QStringLiteral("%1 %2 %3 %4").arg(at.x()).arg(at.y()).arg(rect.width()).arg(rect.height());
    }
    // The cells of a row, as far as the table shows them.
    QString rowInSight(int row) const
    {
        const QRect cells = m_table->visualRect(m_model.index(row, 0))
            | m_table->visualRect(m_model.index(row, m_model.columnCount() - 1));
        return told(m_table->viewport(), cells & m_table->viewport()->rect());
    }
    QString path() const { return m_folder->filePath(QStringLiteral("report")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QStandardItemModel m_model{40, 2};
    std::unique_ptr<QWidget> m_window;
    QTableView *m_table = nullptr;
};

void tst_GeometryReport::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_window = std::make_unique<QWidget>();
    auto *layout = new QVBoxLayout(m_window.get());
    m_table = new QTableView;
    m_table->setObjectName(QStringLiteral("list"));
    m_table->setModel(&m_model);
    auto *button = new QPushButton;
    button->setObjectName(QStringLiteral("button"));
    layout->addWidget(m_table);
    layout->addWidget(button);
    m_window->resize(400, 300);
    new GeometryReport(m_window.get(), path());
}

void tst_GeometryReport::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

void tst_GeometryReport::partsAreToldWhenTheirWindowIsShown()
{
    QVERIFY(!QFile::exists(path()));
    m_window->show();
    const auto *button = m_window->findChild<QPushButton *>();
    QTRY_COMPARE(place(QStringLiteral("button")), told(button, button->rect()));
    QCOMPARE(place(QStringLiteral("list")), told(m_table, m_table->rect()));
}

void tst_GeometryReport::partsAreToldAgainWhenTheirWindowIsResized()
{
    m_window->show();
    const auto *button = m_window->findChild<QPushButton *>();
    QTRY_VERIFY(!place(QStringLiteral("button")).isEmpty());
    const QRect before = button->geometry();
    m_window->resize(500, 350);
    QTRY_COMPARE(place(QStringLiteral("button")), told(button, button->rect()));
    QVERIFY(button->geometry() != before);
}

void tst_GeometryReport::rowsInSightAreTold()
{
    m_window->show();
    QTRY_COMPARE(place(QStringLiteral("list[0]")), rowInSight(0));
    QCOMPARE(place(QStringLiteral("list[3]")), rowInSight(3));
    const int last = m_table->rowAt(m_table->viewport()->height() - 1);
    QVERIFY(last > 3 && last < 39);
    QCOMPARE(place(QStringLiteral("list[%1]").arg(last)), rowInSight(last));
    QVERIFY(place(QStringLiteral("list[%1]").arg(last + 1)).isNull());
}

void tst_GeometryReport::rowOutOfSightIsToldByItsNameAlone()
{
    m_window->show();
    QTRY_VERIFY(!place(QStringLiteral("list[0]")).isEmpty());
    m_table->scrollToBottom();
    QTRY_COMPARE(place(QStringLiteral("list[0]")), QString());
    QCOMPARE(place(QStringLiteral("list[39]")), rowInSight(39));
    m_table->scrollToTop();
    QTRY_COMPARE(place(QStringLiteral("list[0]")), rowInSight(0));
    m_table->setRowHidden(1, true);
    QTRY_COMPARE(place(QStringLiteral("list[1]")), QString());
    QCOMPARE(place(QStringLiteral("list[2]")), rowInSight(2));
}

void tst_GeometryReport::rowsThatMoveAreToldAgain()
{
    m_window->show();
    QTRY_COMPARE(place(QStringLiteral("list[1]")), rowInSight(1));
    const QString before = place(QStringLiteral("list[1]"));
    m_table->verticalHeader()->resizeSection(0, 60);
    QTRY_VERIFY(place(QStringLiteral("list[1]")) != before);
    QCOMPARE(place(QStringLiteral("list[1]")), rowInSight(1));
    // What stands still is told once.
    const QByteArray report = Fixtures::get(path());
    m_table->viewport()->repaint();
    QCoreApplication::processEvents();
    QCOMPARE(Fixtures::get(path()), report);
}

void tst_GeometryReport::viewWithoutAModelHasNoRows()
{
    m_table->setModel(nullptr);
    m_window->show();
    QTRY_VERIFY(!place(QStringLiteral("list")).isEmpty());
    QVERIFY(place(QStringLiteral("list[0]")).isNull());
}

LINKLIST_GUI_TEST_MAIN(tst_GeometryReport)

#include "tst_GeometryReport.moc"
