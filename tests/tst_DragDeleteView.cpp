#include "Classes/Delegate/DragDrop/DragDeleteView.h"
#include "Classes/Delegate/DragDrop/DragDeleteWindow.h"
#include "Classes/Delegate/EditView/OZEditView.h"
#include "platform/NotificationCenter.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMimeData>
#include <QPushButton>
#include <QToolBar>
#include <QVBoxLayout>
#include <QWindow>
#include <functional>
#include <memory>

namespace
{

const QString rowsType = QStringLiteral("application/x-test-rows");
const QString otherType = QStringLiteral("application/x-test-other");
constexpr Qt::DropActions everyOperation = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

// Three parts that can be seen, tabbed through from the last to the first, and one that was hidden.
QList<QWidget *> addParts(QWidget *parent)
{
    QList<QWidget *> parts;
    QWidget *previous = nullptr;
    for (const char *name : {"first", "second", "third", "hidden"}) {
        auto *part = new QLineEdit(parent);
        part->setObjectName(QString::fromLatin1(name));
        part->setGeometry(12, 8 + 30 * int(parts.size()), 150, 24);
        if (previous)
            QWidget::setTabOrder(part, previous);
        parts += previous = part;
    }
    parts.last()->hide();
    return parts;
}

std::unique_ptr<QWidget> withLayout(std::unique_ptr<QWidget> window, bool isPadded)
{
    auto *layout = new QVBoxLayout(window.get());
    if (isPadded) {
        layout->setContentsMargins(3, 17, 29, 41);
        layout->setSpacing(13);
    }
    const QList<QWidget *> parts = addParts(window.get());
    auto *row = new QHBoxLayout;
    layout->addLayout(row);
    for (QWidget *part : parts)
        part == parts[0] || part == parts[1] ? row->addWidget(part) : layout->addWidget(part);
    return window;
}

std::unique_ptr<QWidget> withBareParts(std::unique_ptr<QWidget> window)
{
    addParts(window.get());
    return window;
}

std::unique_ptr<QWidget> mainWindow(bool hasCentralWidget)
{
    auto window = std::make_unique<QMainWindow>();
    auto *bar = new QToolBar(window.get());
    auto *field = new QLineEdit(bar);
    field->setObjectName(QStringLiteral("inToolBar"));
    bar->addWidget(field);
    window->addToolBar(bar);
    if (hasCentralWidget)
        window->setCentralWidget(withLayout(std::make_unique<QWidget>(), true).release());
    return window;
}

using MakeWindow = std::function<std::unique_ptr<QWidget>()>;

// What a person sees of a window and reaches by Tab; one line for each part.
QStringList look(const QWidget *window)
{
    QStringList result;
    const QWidget *part = window;
    do {
        part = part->nextInFocusChain();
        if (!qobject_cast<const QLineEdit *>(part))
            continue;
        const QPoint at = part->mapTo(window, QPoint());
        result += part->isVisible() ? QStringLiteral("%1 at %2,%3 sized %4x%5")
                                          .arg(part->objectName())
                                          .arg(at.x())
                                          .arg(at.y())
                                          .arg(part->width())
                                          .arg(part->height())
                                    : part->objectName() + QStringLiteral(" unseen");
    } while (part != window);
    return result;
}

class Listener : public QObject
{
public:
    Listener()
    {
        NotificationCenter::defaultCenter().addObserver(this, DragDeleteViewDetectNotification,
                                                        [this](QObject *sender) { senders += sender; });
    }
    int count() const { return int(senders.size()); }

    QList<QObject *> senders;
};

// A window 400 by 300 on the screen at (100, 50), wrapped, with the list that is dragged from in the middle
// of it: global (200, 150) to (300, 230).
class DraggedOver
{
public:
    explicit DraggedOver(const QStringList &types = {rowsType})
        : list(new QLabel(&window))
    {
        window.setGeometry(100, 50, 400, 300);
        list->setGeometry(100, 100, 100, 80);
        view = DragDeleteDetectView::addDragDetectViewtoWindow(&window, types, list);
        window.show();
        view->refresh();
        for (const QString &type : {rowsType, otherType})
            data(type)->setData(type, "[0]");
    }

    QMimeData *data(const QString &type) { return type == rowsType ? &m_rows : &m_other; }

    bool enter(const QPoint &global, const QString &type = rowsType, Qt::DropAction action = Qt::MoveAction)
    {
        QDragEnterEvent event(window.mapFromGlobal(global), action, data(type), Qt::LeftButton,
                              Qt::NoModifier);
        return send(event);
    }
    bool move(const QPoint &global, const QString &type = rowsType)
    {
        QDragMoveEvent event(window.mapFromGlobal(global), Qt::MoveAction, data(type), Qt::LeftButton,
                             Qt::NoModifier);
        return send(event);
    }
    bool drop(const QPoint &global, const QString &type = rowsType)
    {
        QDropEvent event(window.mapFromGlobal(global), Qt::MoveAction, data(type), Qt::LeftButton,
                         Qt::NoModifier);
        return send(event);
    }
    void leave()
    {
        QDragLeaveEvent event;
        send(event);
    }

    QWidget window;
    QLabel *list;
    DragDeleteDetectView *view = nullptr;
    Listener heard;

private:
    // As the window system does, so that the parts below the pointer have their say.
    bool send(QEvent &event)
    {
        event.ignore();
        QCoreApplication::sendEvent(window.windowHandle(), &event);
        return event.isAccepted();
    }

    QMimeData m_rows;
    QMimeData m_other;
};

constexpr QPoint onTheList(250, 190);
constexpr QPoint besideTheList(150, 300);

} // namespace

Q_DECLARE_METATYPE(MakeWindow)

class tst_DragDeleteView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void withoutAWindowThereIsNoView();
    void windowLooksAsBefore_data();
    void windowLooksAsBefore();
    void windowOwnsTheView_data();
    void windowOwnsTheView();
    void focusStaysWhereItWas_data() { windowLooksAsBefore_data(); }
    void focusStaysWhereItWas();
    void shownAndHiddenPartsStaySo();
    void windowWithoutASizeIsAsLargeAsItsParts_data() { windowOwnsTheView_data(); }
    void windowWithoutASizeIsAsLargeAsItsParts();
    void dialogsOfTheWindowStayWindows();
    void viewIsTheCentralWidgetOfAnEmptyMainWindow();
    void acceptsDropsOnceThereAreTypes();
    void addedTypesFollowTheOldOnes();
    void noAddedTypesChangeNothing();
    void exceptedAreaIsWhereTheSenderStands();
    void withoutASenderTheAreaIsEmptyAtTheOrigin();
    void senderThatIsGoneLeavesNoArea();
    void newSenderCountsFromTheNextRefresh();
    void areaThatWasSetHoldsUntilTheNextRefresh();
    void areaIsHalfOpen_data();
    void areaIsHalfOpen();
    void emptyAreaHoldsNoPoint();
    void everyOperationIsAllowed();
    void updatesAreWantedWhileThePointerRests();
    void exitAndConclusionDoNothing();
    void dropIsPreparedAndKeepsItsPoint();
    void stepOutsideTheAreaIsPosted();
    void stepInsideTheAreaIsNot();
    void enteringAndLeavingPostNothing();
    void dropPostsAtTheEndWhereverItFalls();
    void dropLeavesNoResult();
    void eachKindOfDropIsAccepted_data();
    void eachKindOfDropIsAccepted();
    void otherDataIsIgnored();
    void addedTypesAreAcceptedToo();
    void viewWithoutTypesHearsNothing();
    void viewMayGoWhileItPosts();
    void notificationsNamesAreTheirOwn();
};

// The application keeps the target of the last drag, even one that has gone: it gets one that is left again.
void tst_DragDeleteView::cleanup()
{
    DraggedOver over;
    over.enter(onTheList);
    over.leave();
}

void tst_DragDeleteView::withoutAWindowThereIsNoView()
{
    QLabel sender;
    QCOMPARE(DragDeleteDetectView::addDragDetectViewtoWindow(nullptr, {rowsType}, &sender), nullptr);
}

void tst_DragDeleteView::windowLooksAsBefore_data()
{
    QTest::addColumn<MakeWindow>("make");
    QTest::addColumn<bool>("isShownFirst");
    const struct {
        const char *name;
        MakeWindow make;
    } windows[] = {
        {"layout", [] { return withLayout(std::make_unique<QWidget>(), true); }},
        {"layout with the style's margins", [] { return withLayout(std::make_unique<QWidget>(), false); }},
        {"no layout", [] { return withBareParts(std::make_unique<QWidget>()); }},
        {"dialog with layout", [] { return withLayout(std::make_unique<QDialog>(), false); }},
        {"dialog without", [] { return withBareParts(std::make_unique<QDialog>()); }},
        {"main window", [] { return mainWindow(true); }},
    };
    for (const auto &window : windows) {
        for (const bool isShownFirst : {false, true})
            QTest::addRow("%s, %s", window.name, isShownFirst ? "shown before" : "shown afterwards")
                << window.make << isShownFirst;
    }
}

// Against a second window that was left as it is.
void tst_DragDeleteView::windowLooksAsBefore()
{
    QFETCH(MakeWindow, make);
    QFETCH(bool, isShownFirst);
    const std::unique_ptr<QWidget> window = make();
    const std::unique_ptr<QWidget> untouched = make();
    for (QWidget *each : {window.get(), untouched.get()}) {
        each->resize(420, 330);
        if (isShownFirst)
            each->show();
    }
    auto *part = window->findChild<QLineEdit *>(QStringLiteral("second"));
    auto *view = DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, part);
    QVERIFY(view);
    QCOMPARE(view->layoutSender(), part);
    QVERIFY(view->isAncestorOf(part));
    window->show();
    untouched->show();
    QCoreApplication::processEvents();
    QCOMPARE(look(window.get()), look(untouched.get()));
    QCOMPARE(window->size(), untouched->size());
    const QSize margins = window->size() - view->size();
    for (const QSize &size : {QSize(555, 444), QSize(400, 320)}) {
        window->resize(size);
        untouched->resize(size);
        QCoreApplication::processEvents();
        QCOMPARE(look(window.get()), look(untouched.get()));
        QCOMPARE(size - view->size(), margins);
    }
    if (!qobject_cast<QMainWindow *>(window.get()))
        QCOMPARE(view->geometry(), window->rect());
}

void tst_DragDeleteView::windowOwnsTheView_data()
{
    QTest::addColumn<MakeWindow>("make");
    QTest::newRow("layout") << MakeWindow([] { return withLayout(std::make_unique<QWidget>(), true); });
    QTest::newRow("no layout") << MakeWindow([] { return withBareParts(std::make_unique<QWidget>()); });
    QTest::newRow("main window") << MakeWindow([] { return mainWindow(true); });
    QTest::newRow("empty main window") << MakeWindow([] { return mainWindow(false); });
}

void tst_DragDeleteView::windowOwnsTheView()
{
    QFETCH(MakeWindow, make);
    std::unique_ptr<QWidget> window = make();
    const QPointer<QWidget> view
        = DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, nullptr);
    QVERIFY(view);
    QCOMPARE(view->window(), window.get());
    window.reset();
    QVERIFY(!view);
}

void tst_DragDeleteView::focusStaysWhereItWas()
{
    QFETCH(MakeWindow, make);
    QFETCH(bool, isShownFirst);
    const std::unique_ptr<QWidget> window = make();
    auto *field = window->findChild<QLineEdit *>(QStringLiteral("second"));
    field->setFocus();
    if (isShownFirst) {
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QVERIFY(field->hasFocus());
    }
    DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, field);
    QCOMPARE(window->focusWidget(), field);
    window->show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QVERIFY(field->hasFocus());
}

void tst_DragDeleteView::shownAndHiddenPartsStaySo()
{
    for (const bool isShownFirst : {false, true}) {
        const auto window = withBareParts(std::make_unique<QWidget>());
        window->setVisible(isShownFirst);
        DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, nullptr);
        window->show();
        const auto parts = window->findChildren<QLineEdit *>();
        QCOMPARE(parts.size(), 4);
        for (const QLineEdit *part : parts)
            QCOMPARE(part->isVisible(), part->objectName() != QStringLiteral("hidden"));
    }
}

void tst_DragDeleteView::windowWithoutASizeIsAsLargeAsItsParts()
{
    QFETCH(MakeWindow, make);
    const std::unique_ptr<QWidget> window = make();
    const std::unique_ptr<QWidget> untouched = make();
    DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, nullptr);
    window->show();
    untouched->show();
    QCOMPARE(window->size(), untouched->size());
}

void tst_DragDeleteView::dialogsOfTheWindowStayWindows()
{
    const auto window = withBareParts(std::make_unique<QWidget>());
    auto *dialog = new QDialog(window.get());
    window->show();
    dialog->show();
    DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, nullptr);
    QVERIFY(dialog->isWindow());
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->parentWidget(), window.get());
}

void tst_DragDeleteView::viewIsTheCentralWidgetOfAnEmptyMainWindow()
{
    const auto window = mainWindow(false);
    auto *view = DragDeleteDetectView::addDragDetectViewtoWindow(window.get(), {rowsType}, nullptr);
    QCOMPARE(static_cast<QMainWindow *>(window.get())->centralWidget(), view);
    window->resize(400, 300);
    window->show();
    QVERIFY(view->isVisible());
    QCOMPARE(view->width(), 400);
}

void tst_DragDeleteView::acceptsDropsOnceThereAreTypes()
{
    DragDeleteDetectView view(QRect(1, 2, 30, 40), {}, nullptr);
    QCOMPARE(view.geometry(), QRect(1, 2, 30, 40));
    QCOMPARE(view.dataTypes(), QStringList());
    QVERIFY(!view.acceptDrops());
    view.setDataTypes({rowsType});
    QVERIFY(view.acceptDrops());
    view.setDataTypes({});
    QVERIFY(!view.acceptDrops());
    view.addDataTypes({rowsType});
    QVERIFY(view.acceptDrops());
}

void tst_DragDeleteView::addedTypesFollowTheOldOnes()
{
    DragDeleteDetectView view(QRect(), {rowsType, otherType}, nullptr);
    QCOMPARE(view.dataTypes(), QStringList({rowsType, otherType}));
    view.addDataTypes({otherType, rowsType, QStringLiteral("third")});
    QCOMPARE(view.dataTypes(),
             QStringList({rowsType, otherType, otherType, rowsType, QStringLiteral("third")}));
}

void tst_DragDeleteView::noAddedTypesChangeNothing()
{
    DragDeleteDetectView view(QRect(), {rowsType}, nullptr);
    view.addDataTypes({});
    QCOMPARE(view.dataTypes(), QStringList(rowsType));
    QVERIFY(view.acceptDrops());
    DragDeleteDetectView none(QRect(), {}, nullptr);
    none.addDataTypes({});
    QVERIFY(!none.acceptDrops());
}

void tst_DragDeleteView::exceptedAreaIsWhereTheSenderStands()
{
    DraggedOver over;
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
    over.window.setGeometry(130, 90, 400, 300);
    over.list->resize(60, 50);
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
    over.view->refresh();
    QCOMPARE(over.view->exceptScreenRect(), QRectF(230, 190, 60, 50));
}

void tst_DragDeleteView::withoutASenderTheAreaIsEmptyAtTheOrigin()
{
    DragDeleteDetectView view(QRect(100, 100, 30, 40), {rowsType}, nullptr);
    QCOMPARE(view.layoutSender(), nullptr);
    QCOMPARE(view.exceptScreenRect(), QRectF(0, 0, 0, 0));
    view.setExceptScreenRect(QRectF(1, 2, 3, 4));
    view.refresh();
    QCOMPARE(view.exceptScreenRect(), QRectF(0, 0, 0, 0));
}

void tst_DragDeleteView::senderThatIsGoneLeavesNoArea()
{
    DraggedOver over;
    delete over.list;
    QCOMPARE(over.view->layoutSender(), nullptr);
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
    over.view->refresh();
    QCOMPARE(over.view->exceptScreenRect(), QRectF());
    over.enter(onTheList);
    over.move(onTheList);
    QCOMPARE(over.heard.count(), 1);
}

void tst_DragDeleteView::newSenderCountsFromTheNextRefresh()
{
    DraggedOver over;
    QLabel other(over.list);
    other.setGeometry(10, 20, 30, 40);
    over.view->setLayoutSender(&other);
    QCOMPARE(over.view->layoutSender(), &other);
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
    over.view->refresh();
    QCOMPARE(over.view->exceptScreenRect(), QRectF(210, 170, 30, 40));
    over.view->setLayoutSender(nullptr);
    over.view->refresh();
    QCOMPARE(over.view->exceptScreenRect(), QRectF());
}

void tst_DragDeleteView::areaThatWasSetHoldsUntilTheNextRefresh()
{
    DraggedOver over;
    over.view->setExceptScreenRect(QRectF(100.5, 50.25, 20, 10.5));
    QCOMPARE(over.view->exceptScreenRect(), QRectF(100.5, 50.25, 20, 10.5));
    over.view->draggingUpdated(QPointF(110, 55));
    QCOMPARE(over.heard.count(), 0);
    over.view->draggingUpdated(onTheList);
    QCOMPARE(over.heard.count(), 1);
    over.view->refresh();
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
}

void tst_DragDeleteView::areaIsHalfOpen_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<bool>("isInside");
    QTest::newRow("middle") << QPointF(250, 190) << true;
    QTest::newRow("left edge") << QPointF(200, 190) << true;
    QTest::newRow("left of it") << QPointF(199.99, 190) << false;
    QTest::newRow("right edge") << QPointF(300, 190) << false;
    QTest::newRow("left of the right edge") << QPointF(299.99, 190) << true;
    QTest::newRow("lower edge") << QPointF(250, 230) << true;
    QTest::newRow("below it") << QPointF(250, 230.01) << false;
    QTest::newRow("upper edge") << QPointF(250, 150) << false;
    QTest::newRow("below the upper edge") << QPointF(250, 150.01) << true;
    QTest::newRow("lower left corner") << QPointF(200, 230) << true;
    QTest::newRow("upper left corner") << QPointF(200, 150) << false;
    QTest::newRow("lower right corner") << QPointF(300, 230) << false;
    QTest::newRow("upper right corner") << QPointF(300, 150) << false;
    QTest::newRow("far away") << QPointF(-5000, 5000) << false;
}

void tst_DragDeleteView::areaIsHalfOpen()
{
    QFETCH(QPointF, point);
    QFETCH(bool, isInside);
    ExceptedArea area;
    area.setRect(QRectF(200, 150, 100, 80));
    QCOMPARE(area.contains(point), isInside);
    DraggedOver over;
    over.view->draggingUpdated(point);
    QCOMPARE(over.heard.count(), isInside ? 0 : 1);
}

void tst_DragDeleteView::emptyAreaHoldsNoPoint()
{
    const ExceptedArea area;
    for (const QPointF &point : {QPointF(0, 0), QPointF(0, -1), QPointF(-1, 0), QPointF(1, 1)})
        QVERIFY(!area.contains(point));
    DragDeleteDetectView view(QRect(), {rowsType}, nullptr);
    const Listener heard;
    view.draggingUpdated(QPointF(0, 0));
    QCOMPARE(heard.count(), 1);
}

void tst_DragDeleteView::everyOperationIsAllowed()
{
    DraggedOver over;
    QCOMPARE(over.view->draggingEntered(), everyOperation);
    QCOMPARE(over.view->draggingUpdated(onTheList), everyOperation);
    QCOMPARE(over.view->draggingUpdated(besideTheList), everyOperation);
}

void tst_DragDeleteView::updatesAreWantedWhileThePointerRests()
{
    const DraggedOver over;
    QVERIFY(over.view->wantsPeriodicDraggingUpdates());
}

void tst_DragDeleteView::exitAndConclusionDoNothing()
{
    DraggedOver over;
    over.view->performDragOperation(QPointF(7, 8));
    over.view->draggingExited();
    over.view->concludeDragOperation();
    QCOMPARE(over.heard.count(), 0);
    QCOMPARE(over.view->dropPoint(), QPointF(7, 8));
    QCOMPARE(over.view->dragResult(), QList<QByteArray>());
    QCOMPARE(over.view->exceptScreenRect(), QRectF(200, 150, 100, 80));
}

void tst_DragDeleteView::dropIsPreparedAndKeepsItsPoint()
{
    DraggedOver over;
    QCOMPARE(over.view->dropPoint(), QPointF());
    QVERIFY(over.view->prepareForDragOperation());
    QVERIFY(over.view->performDragOperation(QPointF(12.5, 34.25)));
    QCOMPARE(over.view->dropPoint(), QPointF(12.5, 34.25));
    QCOMPARE(over.heard.count(), 0);
    over.view->draggingEnded();
    QCOMPARE(over.heard.senders, QList<QObject *>{over.view});
}

void tst_DragDeleteView::stepOutsideTheAreaIsPosted()
{
    DraggedOver over;
    QVERIFY(over.enter(onTheList));
    const int before = over.heard.count();
    QVERIFY(over.move(besideTheList));
    QVERIFY(over.move(besideTheList + QPoint(1, 0)));
    QCOMPARE(over.heard.count() - before, 2);
    for (const QObject *sender : over.heard.senders)
        QCOMPARE(sender, over.view);
}

void tst_DragDeleteView::stepInsideTheAreaIsNot()
{
    DraggedOver over;
    QVERIFY(over.enter(onTheList));
    QVERIFY(over.move(onTheList));
    QVERIFY(over.move(onTheList + QPoint(3, 4)));
    QCOMPARE(over.heard.count(), 0);
}

void tst_DragDeleteView::enteringAndLeavingPostNothing()
{
    DraggedOver over;
    QVERIFY(over.enter(onTheList));
    over.leave();
    QCOMPARE(over.heard.count(), 0);
}

void tst_DragDeleteView::dropPostsAtTheEndWhereverItFalls()
{
    for (const QPoint &point : {onTheList, besideTheList}) {
        DraggedOver over;
        over.enter(onTheList);
        QPointF whenPosted;
        NotificationCenter::defaultCenter().addObserver(
            &over.heard, DragDeleteViewDetectNotification,
            [&](QObject *) { whenPosted = over.view->dropPoint(); });
        QVERIFY(over.drop(point));
        QCOMPARE(over.heard.senders, QList<QObject *>{over.view});
        QCOMPARE(over.view->dropPoint(), QPointF(point));
        QCOMPARE(whenPosted, QPointF(point));
    }
}

void tst_DragDeleteView::dropLeavesNoResult()
{
    DraggedOver over;
    QCOMPARE(over.view->dragResult(), QList<QByteArray>());
    over.enter(besideTheList);
    QVERIFY(over.drop(besideTheList));
    QCOMPARE(over.view->dragResult(), QList<QByteArray>());
}

void tst_DragDeleteView::eachKindOfDropIsAccepted_data()
{
    QTest::addColumn<int>("action");
    QTest::newRow("copy") << int(Qt::CopyAction);
    QTest::newRow("move") << int(Qt::MoveAction);
    QTest::newRow("link") << int(Qt::LinkAction);
}

void tst_DragDeleteView::eachKindOfDropIsAccepted()
{
    QFETCH(int, action);
    DraggedOver over;
    QVERIFY(over.enter(besideTheList, rowsType, Qt::DropAction(action)));
}

void tst_DragDeleteView::otherDataIsIgnored()
{
    DraggedOver over;
    QVERIFY(!over.enter(besideTheList, otherType));
    QVERIFY(!over.move(besideTheList, otherType));
    // Even when the drag came in with data of the right type.
    QVERIFY(over.enter(onTheList));
    QVERIFY(!over.move(besideTheList, otherType));
    QVERIFY(over.enter(onTheList));
    QVERIFY(!over.drop(besideTheList, otherType));
    QCOMPARE(over.heard.count(), 0);
    QCOMPARE(over.view->dropPoint(), QPointF());
}

void tst_DragDeleteView::addedTypesAreAcceptedToo()
{
    DraggedOver over;
    over.view->addDataTypes({otherType});
    for (const QString &type : {rowsType, otherType}) {
        QVERIFY(over.enter(besideTheList, type));
        QVERIFY(over.drop(besideTheList, type));
    }
}

void tst_DragDeleteView::viewWithoutTypesHearsNothing()
{
    DraggedOver over{QStringList()};
    QVERIFY(!over.enter(besideTheList));
    QVERIFY(!over.move(besideTheList));
    QCOMPARE(over.heard.count(), 0);
}

// Whoever hears of a step or a drop may close the window for good.
void tst_DragDeleteView::viewMayGoWhileItPosts()
{
    for (const bool isDrop : {false, true}) {
        DraggedOver over;
        over.enter(onTheList);
        const QPointer<QWidget> view(over.view);
        NotificationCenter::defaultCenter().addObserver(&over.heard, DragDeleteViewDetectNotification,
                                                        [&](QObject *sender) { delete sender; });
        if (isDrop)
            over.drop(besideTheList);
        else
            over.move(besideTheList);
        QVERIFY(!view);
    }
}

void tst_DragDeleteView::notificationsNamesAreTheirOwn()
{
    const QStringList names = {DragDeleteViewDetectNotification, DragDeleteWindowNotification,
                               EditViewChangeNotification, EditViewDidChangedNotification};
    for (const QString &name : names) {
        QVERIFY(!name.isEmpty());
        QCOMPARE(names.count(name), 1);
    }
}

LINKLIST_GUI_TEST_MAIN(tst_DragDeleteView)
#include "tst_DragDeleteView.moc"
