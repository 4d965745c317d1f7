#include "Classes/Delegate/DragDrop/DragDeleteDelegate.h"
#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "Classes/Mode/Locale.h"
#include "Classes/Mode/SelectedLanguage.h"
#include "linklist/LinkListModel.h"
#include "linklist/PrivateView.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/Nib.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTableView>
#include <QVBoxLayout>

namespace
{

class Owner : public PrivateViewDelete
{
public:
    void saveGlobalSettings() override { ++saves; }
    int saves = 0;
};

// A window with a list editor on a workspace of its own.
struct Editor {
    Editor();

    void load(const QString &names);
    QString titles() const;
    QList<int> selection() const;
    QTableView *table() const { return view->findChild<QTableView *>(QStringLiteral("tableView")); }
    QString titlesOnDisk() const;
    DragDeleteWindow *catcher() const { return view->DragDeleteCtrl()->window(); }
    QPoint inside() const { return table()->mapToGlobal(table()->rect().center()); }
    QPoint outside() const { return table()->mapToGlobal(QPoint(table()->width() + 40, 20)); }
    bool isPuffShown() const;

    TestBundle bundle;
    Owner owner;
    QWidget window;
    PrivateView *view = nullptr;
};

Editor::Editor()
{
    const auto nib = SelectedLanguage::initWithResourceNibName(QStringLiteral("PrivateView"), bundle.path());
    view = qobject_cast<PrivateView *>(nib->instantiate());
    if (!view)
        qFatal("no editor: %s", qPrintable(nib->errorString()));
    view->setWorkSpace(bundle.workSpace());
    view->setBundlePath(bundle.path());
    view->setOwer(&owner);
    view->loadDispInfo();
    (new QVBoxLayout(&window))->addWidget(view);
    window.resize(500, 500);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        qFatal("no window");
}

void Editor::load(const QString &names)
{
    auto *model = qobject_cast<LinkListModel *>(table()->model());
    model->remove({0, 1, 2});
    for (const QChar name : names)
        model->append({{QString(name), QStringLiteral("http://example.com")}});
    view->onSave();
    owner.saves = 0;
}

QString Editor::titles() const
{
    QString result;
    for (const LinkItem &item : view->model()->items())
        result += item.title;
    return result;
}

QList<int> Editor::selection() const
{
    QList<int> rows;
    const QModelIndexList selected = table()->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

QString Editor::titlesOnDisk() const
{
    pugi::xml_document document;
    document.load_string(Fixtures::get(bundle.inWorkSpace("linklist.xml")).constData());
    QString result;
    for (const auto &node : document.select_nodes("//item/title"))
        result += QString::fromUtf8(node.node().child_value());
    return result;
}

bool Editor::isPuffShown() const
{
    const QWidgetList shown = QApplication::topLevelWidgets();
    return std::any_of(shown.begin(), shown.end(), [](const QWidget *widget) {
        return widget->objectName() == QLatin1String("disappearingItem") && widget->isVisible();
    });
}

// One step of a drag, as the window system would tell a window of it. Whether it was accepted.
template <typename Event>
bool send(QWindow *window, const QMimeData &data, const QPoint &mouse)
{
    Event event(window->mapFromGlobal(mouse), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
    return event.isAccepted();
}

} // namespace

class tst_PrivateViewDragging : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { PluginSettingsDelegate::registerInterfaceClasses(); }
    void init();
    void detectionComesWithTheWindow();
    void sessionHasDetectionBeforeItsWindowIsShown();
    void secondEditorInTheWindowAddsItsTypeOnly();
    void dragMakesACatchingWindowForTheTable();
    void newDragReplacesTheOneBefore();
    void anotherTableIsRefused();
    void droppedRowMovesIsSelectedAndSaved();
    void rowsZeroAndOneDroppedOnThree();
    void rowDroppedAtTheEndSelectsNothing();
    void dropDismissesTheCatchingWindow();
    void handSentDropOnTheTableMovesRows();
    void rowsDroppedOutsideAreDeletedWithoutAQuestion();
    void rowDroppedInsideTheExceptedAreaStays();
    void rowDroppedOnTheDetectViewIsTheCatchingWindowsMatter();
    void staleRowsAreNotDeleted();
    void otherProgramsDataDeletesNothing();
    void anotherEditorsDragIsIgnored();
    void selectedItemFollowsItsRowAfterADrop();
    void nothingIsDeletedAfterEditingEnded();
    void editorMayGoDuringADrag();
    void withoutATableThereIsNoDragging();
    void dragThatEndsAtOnceLeavesEverything();
    void dragCommitsTheCellThatIsBeingEdited();
};

void tst_PrivateViewDragging::init()
{
    TestCase::init();
    resetLocaleForTesting();
}

void tst_PrivateViewDragging::detectionComesWithTheWindow()
{
    Editor editor;
    auto *detector = editor.view->dragDeleteView();
    QVERIFY(detector);
    QCOMPARE(detector->window(), &editor.window);
    QVERIFY(detector->isAncestorOf(editor.view));
    QCOMPARE(detector->dataTypes(), QStringList{QStringLiteral("LinkListDragType")});
    QCOMPARE(detector->layoutSender(), editor.table());
    QCOMPARE(detector->size(), editor.window.size());
}

void tst_PrivateViewDragging::sessionHasDetectionBeforeItsWindowIsShown()
{
    const TestBundle bundle;
    const auto session = PluginSettingsDelegate::initWithLanguageCode(QStringLiteral("en"), bundle.path());
    session->setWorkSpace(bundle.workSpace());
    const QWidget *window = session->window();
    QVERIFY(window);
    const auto *detector = window->findChild<DragDeleteDetectView *>();
    QVERIFY(detector);
    QVERIFY(detector->isAncestorOf(session->privateView()));
    QVERIFY(detector->isAncestorOf(session->positionView()));
    session->onCancel();
}

void tst_PrivateViewDragging::secondEditorInTheWindowAddsItsTypeOnly()
{
    Editor editor;
    Editor other;
    editor.view->parentWidget()->layout()->addWidget(other.view);
    other.view->addDragDetection(); // it has left its own behind
    QCOMPARE(other.view->dragDeleteView(), editor.view->dragDeleteView());
    QCOMPARE(editor.window.findChildren<DragDeleteDetectView *>().size(), 1);

    const auto nib
        = SelectedLanguage::initWithResourceNibName(QStringLiteral("PrivateView"), editor.bundle.path());
    auto *second = qobject_cast<PrivateView *>(nib->instantiate());
    second->setWorkSpace(editor.bundle.workSpace());
    second->setBundlePath(editor.bundle.path());
    second->loadDispInfo();
    QVERIFY(!second->dragDeleteView()); // in no window yet
    editor.view->parentWidget()->layout()->addWidget(second);
    second->addDragDetection();
    QCOMPARE(second->dragDeleteView(), editor.view->dragDeleteView());
    QCOMPARE(editor.window.findChildren<DragDeleteDetectView *>().size(), 1);
    const QString type = QStringLiteral("LinkListDragType");
    QCOMPARE(editor.view->dragDeleteView()->dataTypes(), (QStringList{type, type, type}));
}

void tst_PrivateViewDragging::dragMakesACatchingWindowForTheTable()
{
    Editor editor;
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0, 2}, &pasteboard));
    QCOMPARE(pasteboard.formats(), QStringList{QStringLiteral("LinkListDragType")});
    const QRectF area(editor.table()->mapToGlobal(QPointF()), QSizeF(editor.table()->size()));
    QCOMPARE(editor.view->dragDeleteView()->exceptScreenRect(), area);
    QCOMPARE(editor.catcher()->exceptScreenRect(), area);
    QVERIFY(editor.catcher()->isVisible());
    QVERIFY(!editor.catcher()->isActive());
    QCOMPARE(editor.catcher()->dataTypes(), pasteboard.formats());

    // The table has moved since.
    editor.window.move(37, 41);
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QCOMPARE(editor.catcher()->exceptScreenRect().topLeft(), editor.table()->mapToGlobal(QPointF()));
    QCOMPARE(editor.view->dragDeleteView()->exceptScreenRect(), editor.catcher()->exceptScreenRect());
}

void tst_PrivateViewDragging::newDragReplacesTheOneBefore()
{
    Editor editor;
    QMimeData first;
    QMimeData second;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &first));
    const QPointer<DragDeleteWindow> before(editor.catcher());
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &second));
    QVERIFY(!before || !before->isVisible());
    QVERIFY(editor.catcher()->isVisible());
}

void tst_PrivateViewDragging::anotherTableIsRefused()
{
    Editor editor;
    QTableView another;
    QMimeData pasteboard;
    QVERIFY(!editor.view->writeRowsWithIndexes(&another, {0}, &pasteboard));
    QVERIFY(!editor.view->writeRowsWithIndexes(nullptr, {0}, &pasteboard));
    QVERIFY(!editor.view->writeRowsWithIndexes(editor.table(), {}, &pasteboard));
    QVERIFY(pasteboard.formats().isEmpty());
    QVERIFY(!editor.view->DragDeleteCtrl());

    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QCOMPARE(editor.view->validateDrop(&another, &pasteboard), Qt::IgnoreAction);
    QCOMPARE(editor.view->validateDrop(editor.table(), &pasteboard),
             Qt::CopyAction | Qt::MoveAction | Qt::LinkAction);
    const QString before = editor.titles();
    QVERIFY(!editor.view->acceptDrop(&another, &pasteboard, 2));
    QVERIFY(!editor.view->acceptDrop(nullptr, &pasteboard, 2));
    QCOMPARE(editor.titles(), before);
}

void tst_PrivateViewDragging::droppedRowMovesIsSelectedAndSaved()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    editor.table()->selectRow(2);
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 2));
    QCOMPARE(editor.titles(), QStringLiteral("BACD"));
    QCOMPARE(editor.selection(), QList<int>{1});
    QCOMPARE(editor.owner.saves, 1);
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("BACD"));

    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {3}, &pasteboard));
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 1));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("BDAC"));
    QCOMPARE(editor.selection(), QList<int>{1});
    QCOMPARE(editor.owner.saves, 2);
}

void tst_PrivateViewDragging::rowsZeroAndOneDroppedOnThree()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0, 1}, &pasteboard));
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 3));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("BACD"));
    QCOMPARE(editor.selection(), QList<int>{2});
}

void tst_PrivateViewDragging::rowDroppedAtTheEndSelectsNothing()
{
    Editor editor;
    editor.load(QStringLiteral("ABC"));
    editor.table()->selectRow(1);
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 3));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("BCA"));
    QCOMPARE(editor.selection(), QList<int>());
    QCoreApplication::processEvents();
    QVERIFY(!editor.view->findChild<QLineEdit *>(QStringLiteral("txtLink"))->isEnabled());
}

void tst_PrivateViewDragging::dropDismissesTheCatchingWindow()
{
    Editor editor;
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QVERIFY(editor.catcher()->isVisible());
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 2));
    QVERIFY(!editor.catcher()->isVisible());
    editor.view->onDeleteWindowDismiss(); // a second time does nothing
}

void tst_PrivateViewDragging::handSentDropOnTheTableMovesRows()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {3}, &pasteboard));
    const QTableView *table = editor.table();
    const QPoint at = table->viewport()->mapToGlobal(QPoint(20, table->rowViewportPosition(1) + 8));
    QVERIFY(send<QDragEnterEvent>(editor.window.windowHandle(), pasteboard, at));
    QVERIFY(send<QDragMoveEvent>(editor.window.windowHandle(), pasteboard, at));
    QVERIFY(send<QDropEvent>(editor.window.windowHandle(), pasteboard, at));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("ADBC"));
}

void tst_PrivateViewDragging::rowsDroppedOutsideAreDeletedWithoutAQuestion()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1, 3}, &pasteboard));
    const QPoint at = editor.outside();
    QVERIFY(send<QDragEnterEvent>(editor.catcher(), pasteboard, at));
    QVERIFY(send<QDragMoveEvent>(editor.catcher(), pasteboard, at));
    QVERIFY(editor.catcher()->isActive());
    QVERIFY(send<QDropEvent>(editor.catcher(), pasteboard, at));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("AC"));
    QCOMPARE(editor.owner.saves, 1);
    QVERIFY(!editor.catcher()->isVisible());
    QVERIFY(editor.catcher()->ignoresMouseEvents());

    const QWidgetList shown = QApplication::topLevelWidgets();
    const auto puff = std::find_if(shown.begin(), shown.end(), [](const QWidget *widget) {
        return widget->objectName() == QLatin1String("disappearingItem");
    });
    QVERIFY(puff != shown.end());
    QCOMPARE((*puff)->geometry(), QRect(at - QPoint(24, 24), QSize(48, 48)));
    QTRY_VERIFY(!editor.isPuffShown());
    editor.view->deleteAnimationEnd(nullptr);
}

void tst_PrivateViewDragging::rowDroppedInsideTheExceptedAreaStays()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
    QVERIFY(send<QDragEnterEvent>(editor.catcher(), pasteboard, editor.inside()));
    QVERIFY(send<QDropEvent>(editor.catcher(), pasteboard, editor.inside()));
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
    QCOMPARE(editor.owner.saves, 0);
    QVERIFY(!editor.isPuffShown());
    QVERIFY(!editor.catcher()->isVisible());
}

void tst_PrivateViewDragging::rowDroppedOnTheDetectViewIsTheCatchingWindowsMatter()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
    const QPoint at = editor.window.mapToGlobal(QPoint(3, 3));
    QVERIFY(send<QDragEnterEvent>(editor.window.windowHandle(), pasteboard, at));
    QVERIFY(send<QDragMoveEvent>(editor.window.windowHandle(), pasteboard, at));
    QVERIFY(editor.catcher()->isActive());
    QVERIFY(send<QDropEvent>(editor.window.windowHandle(), pasteboard, at));
    QCOMPARE(editor.view->dragDeleteView()->dropPoint(), QPointF(at));
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
}

void tst_PrivateViewDragging::staleRowsAreNotDeleted()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
    editor.view->onAdd();
    editor.owner.saves = 0;
    send<QDragEnterEvent>(editor.catcher(), pasteboard, editor.outside());
    send<QDropEvent>(editor.catcher(), pasteboard, editor.outside());
    QCOMPARE(editor.view->model()->items().size(), 5);
    QCOMPARE(editor.owner.saves, 0);
    QVERIFY(!editor.isPuffShown());
}

void tst_PrivateViewDragging::otherProgramsDataDeletesNothing()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData own;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &own));
    QMimeData foreign;
    foreign.setData(LinkListModel::dragType(), QByteArray("\0\0\0\1", 4));
    send<QDragEnterEvent>(editor.catcher(), foreign, editor.outside());
    send<QDropEvent>(editor.catcher(), foreign, editor.outside());
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
    QVERIFY(!editor.view->acceptDrop(editor.table(), &foreign, 0));
    QCOMPARE(editor.owner.saves, 0);
}

void tst_PrivateViewDragging::anotherEditorsDragIsIgnored()
{
    Editor editor;
    Editor other;
    editor.load(QStringLiteral("ABCD"));
    other.load(QStringLiteral("WXYZ"));
    QMimeData pasteboard;
    QMimeData others;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
    QVERIFY(other.view->writeRowsWithIndexes(other.table(), {0, 1}, &others));

    // The other window's detector says nothing to this one's catching window.
    other.view->dragDeleteView()->draggingUpdated(other.outside());
    QVERIFY(other.catcher()->isActive());
    QVERIFY(!editor.catcher()->isActive());
    // These rows mean nothing to the other list, wherever they are dropped.
    QVERIFY(!other.view->acceptDrop(other.table(), &pasteboard, 0));
    send<QDragEnterEvent>(other.catcher(), pasteboard, other.outside());
    send<QDropEvent>(other.catcher(), pasteboard, other.outside());
    QCOMPARE(other.titles(), QStringLiteral("WXYZ"));
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
    // An end that is not of the own window deletes nothing.
    editor.view->DeleteWindowDragEndA(other.catcher());
    editor.view->DeleteWindowDragEndA(nullptr);
    QVERIFY(editor.catcher()->isVisible());
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
}

void tst_PrivateViewDragging::selectedItemFollowsItsRowAfterADrop()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    editor.table()->selectRow(0);
    QCoreApplication::processEvents();
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {0}, &pasteboard));
    QVERIFY(editor.view->acceptDrop(editor.table(), &pasteboard, 3));
    QCoreApplication::processEvents();
    auto *content = editor.view->findChild<QLineEdit *>(QStringLiteral("txtContent"));
    QCOMPARE(content->text(), QStringLiteral("A"));
    content->selectAll();
    QTest::keyClicks(content, QStringLiteral("Q"));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("BCQD"));
}

void tst_PrivateViewDragging::nothingIsDeletedAfterEditingEnded()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QMimeData pasteboard;
    QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
    editor.view->endEditing();
    QVERIFY(!editor.catcher()->isVisible());
    send<QDragEnterEvent>(editor.catcher(), pasteboard, editor.outside());
    send<QDropEvent>(editor.catcher(), pasteboard, editor.outside());
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("ABCD"));
    QVERIFY(!editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
}

void tst_PrivateViewDragging::editorMayGoDuringADrag()
{
    QMimeData pasteboard;
    QPointer<DragDeleteWindow> catcher;
    {
        Editor editor;
        QVERIFY(editor.view->writeRowsWithIndexes(editor.table(), {1}, &pasteboard));
        catcher = editor.catcher();
        editor.view->dragDeleteView()->draggingUpdated(editor.outside());
    }
    QVERIFY(!catcher || !catcher->isVisible());
}

void tst_PrivateViewDragging::withoutATableThereIsNoDragging()
{
    PrivateView view;
    QWidget window;
    (new QVBoxLayout(&window))->addWidget(&view);
    view.addDragDetection();
    QVERIFY(!view.dragDeleteView());
    view.onDeleteWindowDismiss();
    QMimeData pasteboard;
    QVERIFY(!view.writeRowsWithIndexes(nullptr, {0}, &pasteboard));
    view.setParent(nullptr);
}

// This platform runs no drags: it answers at once that nothing was dropped.
void tst_PrivateViewDragging::dragThatEndsAtOnceLeavesEverything()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QWindow *window = editor.window.windowHandle();
    const QTableView *table = editor.table();
    const QPoint start
        = table->viewport()->mapTo(&editor.window, QPoint(20, table->rowViewportPosition(1) + 8));
    QTest::mousePress(window, Qt::LeftButton, {}, start);
    for (int step = 1; step <= 2 * QApplication::startDragDistance(); ++step)
        QTest::mouseMove(window, start + QPoint(0, step));
    QTRY_VERIFY(editor.view->DragDeleteCtrl());
    QVERIFY(editor.catcher()->hasEnded());
    QVERIFY(!editor.catcher()->isVisible());
    QTest::mouseRelease(window, Qt::LeftButton, {}, start);
    QCoreApplication::processEvents();
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
    QCOMPARE(editor.owner.saves, 0);
}

// A drag runs from the event loop, and a key that comes before it may begin to edit the row.
void tst_PrivateViewDragging::dragCommitsTheCellThatIsBeingEdited()
{
    Editor editor;
    editor.load(QStringLiteral("ABCD"));
    QWindow *window = editor.window.windowHandle();
    QTableView *table = editor.table();
    const QPoint start(20, table->rowViewportPosition(1) + 8);
    QTest::mousePress(window, Qt::LeftButton, {}, table->viewport()->mapTo(&editor.window, start));
    for (int step = 1; step <= 2 * QApplication::startDragDistance(); ++step) {
        const QPoint at = start + QPoint(0, step);
        QMouseEvent move(QEvent::MouseMove, at, table->viewport()->mapToGlobal(at), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(table->viewport(), &move);
    }
    QTest::keyClick(table, Qt::Key_F2);
    auto *cell = table->viewport()->findChild<QLineEdit *>();
    QVERIFY(cell);
    QTest::keyClicks(cell, QStringLiteral("Z"));
    QCOMPARE(editor.titles(), QStringLiteral("ABCD"));
    QVERIFY(!editor.view->DragDeleteCtrl());

    QString titlesAtTheEnd;
    QObject context;
    NotificationCenter::defaultCenter().addObserver(&context, DragDeleteWindowNotification,
                                                    [&](QObject *) { titlesAtTheEnd = editor.titles(); });
    QTRY_VERIFY(editor.view->DragDeleteCtrl());
    QTest::mouseRelease(window, Qt::LeftButton, {}, table->viewport()->mapTo(&editor.window, start));
    QCOMPARE(titlesAtTheEnd, QStringLiteral("AZCD"));
    QCOMPARE(editor.titlesOnDisk(), QStringLiteral("AZCD"));
    QCOMPARE(editor.owner.saves, 1);
    QTRY_VERIFY(!table->viewport()->findChild<QLineEdit *>());
}

LINKLIST_GUI_TEST_MAIN(tst_PrivateViewDragging)
#include "tst_PrivateViewDragging.moc"
