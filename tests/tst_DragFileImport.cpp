#include "Classes/Delegate/DragDrop/DragFileImport.h"
#include "platform/NotificationCenter.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <QWheelEvent>
#include <QWindow>
#include <clocale>

namespace
{
QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromUtf8(text));
    return result;
}

// What arrives below the drop target.
class Below : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;
    QList<QEvent::Type> events;
    QByteArray dropped;

    int count(QEvent::Type type) const { return int(events.count(type)); }

protected:
    bool event(QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::HoverMove:
        case QEvent::Enter:
        case QEvent::Leave:
            events.append(event->type());
            event->accept();
            return true;
        case QEvent::DragEnter:
            event->accept();
            return true;
        case QEvent::Drop:
            dropped = static_cast<QDropEvent *>(event)->mimeData()->data(QStringLiteral("text/x-row"));
            event->accept();
            return true;
        default:
            return QWidget::event(event);
        }
    }
};

// One drag, as the platform tells the window of it.
class Drag
{
public:
    explicit Drag(QWidget &window, Qt::DropActions allowed = Qt::CopyAction | Qt::MoveAction)
        : m_window(window)
        , m_allowed(allowed)
    {
    }

    QMimeData &data() { return m_data; }
    void setPaths(const QStringList &paths)
    {
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls.append(QUrl::fromLocalFile(path));
        m_data.setUrls(urls);
    }
    bool enter(const QPoint &at)
    {
        QDragEnterEvent event(at, m_allowed, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window.windowHandle(), &event);
        return event.isAccepted();
    }
    // The action that is offered there; none while the drag is not accepted.
    Qt::DropAction move(const QPoint &at)
    {
        QDragMoveEvent event(at, m_allowed, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window.windowHandle(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    void leave()
    {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(m_window.windowHandle(), &event);
    }
    bool drop(const QPoint &at)
    {
        QDropEvent event(at, m_allowed, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window.windowHandle(), &event);
        return event.isAccepted() && event.dropAction() != Qt::IgnoreAction;
    }

private:
    QWidget &m_window;
    Qt::DropActions m_allowed;
    QMimeData m_data;
};
} // namespace

class tst_DragFileImport : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startsIdleAndEmpty();
    void propertiesAreKept();
    void nameOfTheNotificationHasSixtyOneCharacters();

    void jpgAndPngTakeUpperCaseAndNoText();
    void pathWithoutAnEndingMatchesOnlyAnEmptyFilterOrTheStar();
    void endings_data();
    void endings();
    void starAcceptsEverything();
    void withoutFiltersNoFileIsAccepted();
    void caseFollowsNoLocale();
    void foldersWithAllowDirectory();
    void linksToFoldersAreFolders();

    void stepsOfADrop();
    void dropKeepsTheAcceptedPathsInTheirOrder();
    void eachDropStartsAnew();
    void refusedDropTellsNobody();
    void emptyListIsRefused();
    void observersHearBeforeTheDropReturns();
    void observerMayDeleteTheView();
    void otherMachinesFilesAreLeftOut();
    void linksKeepTheirOwnPath();
    void strangeNames();
    void folderUrlLosesItsSlash();

    void eventsSentToTheViewItself();
    void dragThroughTheWindow();
    void leavingEndsTheHighlight();
    void dragWithoutFilesIsNoneOfItsBusiness();
    void offersNeverAMove();
    void disabledViewTakesNoDrop();
    void viewsSideBySideEachTakeTheirOwn();

    void hitTestFindsNothing();
    void clickReachesTheButtonBelow();
    void everythingOfTheMouseReachesWhatLiesBelow();
    void pressDragReleaseStaysWithOneReceiver();
    void receiverDeletedMeanwhile();
    void cursorIsThatOfWhatLiesBelow();
    void focusGoesToTheFieldBelow();
    void clicksPassAgainAfterADrag_data();
    void clicksPassAgainAfterADrag();
    void dragThatEndsUntoldBlocksNoMouse();
    void dragOverAnotherWindowBlocksNoMouse();

    void frameIsDrawnWhileHighlighted();
    void viewIsTransparent();
    void growsAndShrinksWithItsParent();
    void growsWithAParentThatIsNotShownYet();
    void smallParentAndBack();
    void placedAnewItKeepsItsNewMargins();
    void followsANewParent();

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }
    // A window with `m_below` all over it, and the drop target above.
    void makeWindow();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QWidget> m_window;
    Below *m_below = nullptr;
    QPointer<DragFileImport> m_view;
};

void tst_DragFileImport::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_DragFileImport::cleanup()
{
    m_window.reset();
}

void tst_DragFileImport::makeWindow()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(300, 200);
    m_below = new Below(m_window.get());
    m_below->setGeometry(m_window->rect());
    m_below->setMouseTracking(true);
    m_view = new DragFileImport(m_window->rect(), m_window.get());
    m_view->setFilters(texts({"jpg"}));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void tst_DragFileImport::startsIdleAndEmpty()
{
    QWidget parent;
    const DragFileImport view(QRect(10, 20, 30, 40), &parent);
    QCOMPARE(view.geometry(), QRect(10, 20, 30, 40));
    QVERIFY(view.acceptDrops());
    QVERIFY(!view.highlight());
    QVERIFY(!view.allowDirectory());
    QVERIFY(view.filters().isEmpty());
    QVERIFY(view.dragResult().isEmpty());
}

void tst_DragFileImport::propertiesAreKept()
{
    DragFileImport view;
    view.setFilters(texts({"a"}));
    view.setDragResult(texts({"/b"}));
    view.setAllowDirectory(true);
    QCOMPARE(view.filters(), texts({"a"}));
    QCOMPARE(view.dragResult(), texts({"/b"}));
    QVERIFY(view.allowDirectory());
}

void tst_DragFileImport::nameOfTheNotificationHasSixtyOneCharacters()
{
    QCOMPARE(DragReportNotification.size(), 61);
}

void tst_DragFileImport::jpgAndPngTakeUpperCaseAndNoText()
{
    DragFileImport view;
    view.setFilters(texts({"jpg", "png"}));
    QVERIFY(view.checkFilters(QStringLiteral("/x/a.JPG")));
    QVERIFY(view.checkFilters(QStringLiteral("/x/a.png")));
    QVERIFY(!view.checkFilters(QStringLiteral("/x/a.txt")));
    view.setFilters(texts({"JpG"}));
    QVERIFY(view.checkFilters(QStringLiteral("/x/a.jPg")));
}

void tst_DragFileImport::pathWithoutAnEndingMatchesOnlyAnEmptyFilterOrTheStar()
{
    DragFileImport view;
    const QString path = QStringLiteral("/x/README");
    for (const char *filter : {"README", ".", "txt", "**", "?"}) {
        view.setFilters(texts({filter}));
        QVERIFY2(!view.checkFilters(path), filter);
    }
    for (const char *filter : {"", "*"}) {
        view.setFilters(texts({"txt", filter}));
        QVERIFY2(view.checkFilters(path), filter);
    }
}

void tst_DragFileImport::endings_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("ending");
    QTest::newRow("plain") << QStringLiteral("/x/a.jpg") << QStringLiteral("jpg");
    QTest::newRow("none") << QStringLiteral("/x/a") << QString();
    QTest::newRow("two") << QStringLiteral("/x/a.tar.gz") << QStringLiteral("gz");
    QTest::newRow("hidden") << QStringLiteral("/x/.hidden") << QStringLiteral("hidden");
    QTest::newRow("dot at the end") << QStringLiteral("/x/a.") << QString();
    QTest::newRow("dot in the folder") << QStringLiteral("/x.jpg/a") << QString();
    QTest::newRow("line feed") << QStringLiteral("/x/a\nb.jp\ng") << QStringLiteral("jp\ng");
    QTest::newRow("blank") << QStringLiteral("/x/a.jpg ") << QStringLiteral("jpg ");
    QTest::newRow("not Latin") << QStringLiteral("/x/ä.日本") << QStringLiteral("日本");
    QTest::newRow("name alone") << QStringLiteral("a.jpg") << QStringLiteral("jpg");
    QTest::newRow("empty") << QString() << QString();
}

void tst_DragFileImport::endings()
{
    QFETCH(QString, path);
    QFETCH(QString, ending);
    DragFileImport view;
    for (const char *filter : {"", "jpg", "gz", "tar.gz", "hidden", "jp\ng", "jpg ", "日本"}) {
        view.setFilters(texts({filter}));
        QCOMPARE(view.checkFilters(path), QString::fromUtf8(filter) == ending);
    }
}

void tst_DragFileImport::starAcceptsEverything()
{
    DragFileImport view;
    view.setFilters(texts({"*"}));
    for (const QString &path : {QStringLiteral("/x/a.jpg"), QStringLiteral("/x/a"), m_folder->path()})
        QVERIFY(view.checkFilters(path));
    view.setFilters(texts({"*.jpg"}));
    QVERIFY(!view.checkFilters(QStringLiteral("/x/a.jpg")));
}

void tst_DragFileImport::withoutFiltersNoFileIsAccepted()
{
    const DragFileImport view;
    for (const char *path : {"/x/a.jpg", "/x/a", "/"})
        QVERIFY(!view.checkFilters(QString::fromUtf8(path)));
}

void tst_DragFileImport::caseFollowsNoLocale()
{
    QLocale::setDefault(QLocale(QLocale::Turkish));
    QVERIFY(std::setlocale(LC_ALL, "tr_TR.UTF-8"));
    DragFileImport view;
    view.setFilters(texts({"gif"}));
    const bool isAccepted = view.checkFilters(QStringLiteral("/x/A.GIF"));
    view.setFilters(texts({"GIF"}));
    const bool isAcceptedBack = view.checkFilters(QStringLiteral("/x/a.gif"));
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_ALL, "C.UTF-8");
    QVERIFY(isAccepted);
    QVERIFY(isAcceptedBack);
}

void tst_DragFileImport::foldersWithAllowDirectory()
{
    Fixtures::put(at(QStringLiteral("a.jpg")), "a");
    DragFileImport view;
    view.setAllowDirectory(true);
    QVERIFY(view.checkFilters(m_folder->path()));
    QVERIFY(!view.checkFilters(at(QStringLiteral("a.jpg"))));
    QVERIFY(!view.checkFilters(at(QStringLiteral("missing"))));
    view.setFilters(texts({"jpg"}));
    QVERIFY(view.checkFilters(m_folder->path()));
    QVERIFY(view.checkFilters(at(QStringLiteral("a.jpg"))));
    // An ending is an ending, a folder's, too.
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("f.jpg")));
    view.setAllowDirectory(false);
    QVERIFY(view.checkFilters(at(QStringLiteral("f.jpg"))));
    QVERIFY(!view.checkFilters(m_folder->path()));
}

void tst_DragFileImport::linksToFoldersAreFolders()
{
    QVERIFY(QFile::link(m_folder->path(), at(QStringLiteral("link"))));
    QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all"), at(QStringLiteral("dangling"))));
    DragFileImport view;
    view.setAllowDirectory(true);
    QVERIFY(view.checkFilters(at(QStringLiteral("link"))));
    QVERIFY(!view.checkFilters(at(QStringLiteral("dangling"))));
}

void tst_DragFileImport::stepsOfADrop()
{
    DragFileImport view;
    view.setFilters(texts({"jpg"}));
    QObject observer;
    int posts = 0;
    NotificationCenter::defaultCenter().addObserver(&observer, DragReportNotification,
                                                    [&](QObject *) { ++posts; });
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/x/a.jpg"))});
    QCOMPARE(view.draggingEntered(Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    QVERIFY(view.highlight());
    view.draggingExited();
    QVERIFY(!view.highlight());
    view.draggingEntered(Qt::CopyAction);
    QVERIFY(view.prepareForDragOperation());
    QVERIFY(!view.highlight());
    QVERIFY(view.performDragOperation(data));
    QVERIFY(view.dragResult().isEmpty());
    QCOMPARE(posts, 0);
    view.concludeDragOperation(data);
    QCOMPARE(view.dragResult(), texts({"/x/a.jpg"}));
    QCOMPARE(posts, 1);
}

void tst_DragFileImport::dropKeepsTheAcceptedPathsInTheirOrder()
{
    makeWindow();
    m_view->setFilters(texts({"jpg", "png"}));
    m_view->setAllowDirectory(true);
    Drag drag(*m_window);
    drag.setPaths({QStringLiteral("/z.png"), QStringLiteral("/a.txt"), m_folder->path(),
                   QStringLiteral("/b.JPG"), QStringLiteral("/z.png")});
    QVERIFY(drag.enter({50, 50}));
    QCOMPARE(drag.move({51, 50}), Qt::CopyAction);
    QVERIFY(drag.drop({51, 50}));
    QCOMPARE(m_view->dragResult(),
             (QStringList{QStringLiteral("/z.png"), m_folder->path(), QStringLiteral("/b.JPG"),
                          QStringLiteral("/z.png")}));
}

void tst_DragFileImport::eachDropStartsAnew()
{
    makeWindow();
    for (const char *path : {"/a.jpg", "/b.jpg"}) {
        Drag drag(*m_window);
        drag.setPaths(texts({path}));
        QVERIFY(drag.enter({50, 50}));
        drag.move({50, 50});
        QVERIFY(drag.drop({50, 50}));
        QCOMPARE(m_view->dragResult(), texts({path}));
    }
}

void tst_DragFileImport::refusedDropTellsNobody()
{
    makeWindow();
    m_view->setDragResult(texts({"/before.jpg"}));
    QObject observer;
    int posts = 0;
    NotificationCenter::defaultCenter().addObserver(&observer, DragReportNotification,
                                                    [&](QObject *) { ++posts; });
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.txt", "/b.jpg.txt"}));
    QVERIFY(drag.enter({50, 50}));
    QVERIFY(m_view->highlight());
    drag.move({50, 50});
    QVERIFY(!drag.drop({50, 50}));
    QVERIFY(!m_view->highlight());
    QCOMPARE(posts, 0);
    QCOMPARE(m_view->dragResult(), texts({"/before.jpg"}));
    // Concluded without anything to accept, it tells nobody either, and forgets the drop before.
    m_view->concludeDragOperation(drag.data());
    QCOMPARE(posts, 0);
    QVERIFY(m_view->dragResult().isEmpty());
}

void tst_DragFileImport::emptyListIsRefused()
{
    DragFileImport view;
    view.setFilters(texts({"*"}));
    QMimeData data;
    QVERIFY(!view.performDragOperation(data));
    data.setUrls({});
    QVERIFY(!view.performDragOperation(data));
    makeWindow();
    m_view->setFilters(texts({"*"}));
    Drag drag(*m_window);
    drag.setPaths({});
    QVERIFY(!drag.enter({50, 50}));
}

void tst_DragFileImport::observersHearBeforeTheDropReturns()
{
    makeWindow();
    QObject observer;
    QStringList heard;
    NotificationCenter::defaultCenter().addObserver(
        &observer, DragReportNotification,
        [&](QObject *sender) {
            QCOMPARE(sender, m_view.data());
            heard = qobject_cast<DragFileImport *>(sender)->dragResult();
        },
        m_view);
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    drag.move({50, 50});
    QVERIFY(drag.drop({50, 50}));
    QCOMPARE(heard, texts({"/a.jpg"}));
}

void tst_DragFileImport::observerMayDeleteTheView()
{
    makeWindow();
    QObject observer;
    NotificationCenter::defaultCenter().addObserver(&observer, DragReportNotification,
                                                    [](QObject *sender) { delete sender; });
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    drag.move({50, 50});
    QVERIFY(drag.drop({50, 50}));
    QVERIFY(!m_view);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, {50, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
}

void tst_DragFileImport::otherMachinesFilesAreLeftOut()
{
    makeWindow();
    m_view->setFilters(texts({"*"}));
    Drag remote(*m_window);
    remote.data().setUrls({QUrl(QStringLiteral("https://example.com/a.jpg")),
                           QUrl(QStringLiteral("file://elsewhere.example/b.jpg")),
                           QUrl(QStringLiteral("c.jpg"))});
    QVERIFY(!remote.enter({50, 50}));
    QVERIFY(!m_view->highlight());
    QVERIFY(!m_view->performDragOperation(remote.data()));
    remote.leave();
    // What follows a NUL would pass for the ending of a file that has another.
    Drag hidden(*m_window);
    hidden.data().setUrls({QUrl(QStringLiteral("file:///etc/passwd%00.jpg"))});
    QVERIFY(!hidden.enter({50, 50}));
    QVERIFY(!m_view->performDragOperation(hidden.data()));
    hidden.leave();

    Drag mixed(*m_window);
    mixed.data().setUrls(
        {QUrl(QStringLiteral("https://example.com/a.jpg")), QUrl(QStringLiteral("file://localhost/d.jpg")),
         QUrl(QStringLiteral("file://") + QSysInfo::machineHostName() + QStringLiteral("/e.jpg")),
         QUrl(QStringLiteral("file:///f.jpg"))});
    QVERIFY(mixed.enter({50, 50}));
    mixed.move({50, 50});
    QVERIFY(mixed.drop({50, 50}));
    QCOMPARE(m_view->dragResult(), texts({"/d.jpg", "/e.jpg", "/f.jpg"}));
}

void tst_DragFileImport::linksKeepTheirOwnPath()
{
    Fixtures::put(at(QStringLiteral("target.txt")), "t");
    QVERIFY(QFile::link(at(QStringLiteral("target.txt")), at(QStringLiteral("link.jpg"))));
    DragFileImport view;
    view.setFilters(texts({"jpg"}));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(at(QStringLiteral("link.jpg")))});
    view.concludeDragOperation(data);
    QCOMPARE(view.dragResult(), QStringList{at(QStringLiteral("link.jpg"))});
}

void tst_DragFileImport::strangeNames()
{
    const QStringList paths = texts({"/x/two\nlines.jpg", "/x/50% #1?.jpg", "/x/ä 日本.jpg", "/x/a;b&c.jpg"});
    DragFileImport view;
    view.setFilters(texts({"jpg"}));
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    view.concludeDragOperation(data);
    QCOMPARE(view.dragResult(), paths);
}

void tst_DragFileImport::folderUrlLosesItsSlash()
{
    DragFileImport view;
    view.setAllowDirectory(true);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(m_folder->path() + u'/'), QUrl(QStringLiteral("file:///"))});
    view.concludeDragOperation(data);
    QCOMPARE(view.dragResult(), (QStringList{m_folder->path(), QStringLiteral("/")}));
}

void tst_DragFileImport::eventsSentToTheViewItself()
{
    DragFileImport view;
    view.setFilters(texts({"jpg"}));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/a.jpg"))});
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &enter);
    QVERIFY(enter.isAccepted());
    QCOMPARE(enter.dropAction(), Qt::CopyAction);
    QVERIFY(view.highlight());
    QDragMoveEvent move(QPoint(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &move);
    QVERIFY(move.isAccepted());
    QDropEvent drop(QPointF(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &drop);
    QVERIFY(drop.isAccepted());
    QCOMPARE(view.dragResult(), texts({"/a.jpg"}));
}

void tst_DragFileImport::dragThroughTheWindow()
{
    makeWindow();
    m_view->setGeometry(100, 50, 100, 100);
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    drag.enter({10, 10});
    drag.move({10, 10});
    QVERIFY(!m_view->highlight());
    QCOMPARE(drag.move({110, 60}), Qt::CopyAction);
    QVERIFY(m_view->highlight());
    drag.move({220, 160});
    QVERIFY(!m_view->highlight());
    drag.move({150, 100});
    QVERIFY(m_view->highlight());
    QVERIFY(drag.drop({150, 100}));
    QVERIFY(!m_view->highlight());
    QCOMPARE(m_view->dragResult(), texts({"/a.jpg"}));
}

void tst_DragFileImport::leavingEndsTheHighlight()
{
    makeWindow();
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    QVERIFY(m_view->highlight());
    drag.leave();
    QVERIFY(!m_view->highlight());
    QVERIFY(m_view->dragResult().isEmpty());
}

void tst_DragFileImport::dragWithoutFilesIsNoneOfItsBusiness()
{
    makeWindow();
    m_below->setAcceptDrops(true);
    Drag drag(*m_window);
    drag.data().setData(QStringLiteral("text/x-row"), "row 7");
    QVERIFY(drag.enter({50, 50}));
    QVERIFY(!m_view->highlight());
    drag.move({50, 50});
    QVERIFY(drag.drop({50, 50}));
    QCOMPARE(m_below->dropped, QByteArray("row 7"));
}

void tst_DragFileImport::offersNeverAMove()
{
    makeWindow();
    for (const Qt::DropAction allowed : {Qt::CopyAction, Qt::LinkAction}) {
        Drag drag(*m_window, allowed | Qt::MoveAction);
        drag.setPaths(texts({"/a.jpg"}));
        QVERIFY(drag.enter({50, 50}));
        QCOMPARE(drag.move({50, 50}), allowed);
        drag.leave();
    }
    Drag moved(*m_window, Qt::MoveAction);
    moved.setPaths(texts({"/a.jpg"}));
    QVERIFY(!moved.enter({50, 50}));
    QCOMPARE(m_view->draggingEntered(Qt::MoveAction), Qt::IgnoreAction);
}

void tst_DragFileImport::disabledViewTakesNoDrop()
{
    makeWindow();
    m_view->setEnabled(false);
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(!drag.enter({50, 50}));
    QVERIFY(!m_view->highlight());
}

void tst_DragFileImport::viewsSideBySideEachTakeTheirOwn()
{
    makeWindow();
    m_view->setGeometry(0, 0, 100, 200);
    DragFileImport right(QRect(100, 0, 100, 200), m_window.get());
    right.setFilters(texts({"*"}));
    right.show();
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    QVERIFY(m_view->highlight() && !right.highlight());
    drag.move({150, 50});
    QVERIFY(!m_view->highlight() && right.highlight());
    QVERIFY(drag.drop({150, 50}));
    QVERIFY(m_view->dragResult().isEmpty());
    QCOMPARE(right.dragResult(), texts({"/a.jpg"}));
}

void tst_DragFileImport::hitTestFindsNothing()
{
    makeWindow();
    QCOMPARE(m_view->hitTest(QPoint(10, 10)), nullptr);
    QCOMPARE(m_window->childAt(10, 10), m_below);
}

void tst_DragFileImport::clickReachesTheButtonBelow()
{
    makeWindow();
    QPushButton button(m_window.get());
    button.setGeometry(40, 40, 80, 30);
    button.show();
    m_view->raise();
    QSignalSpy clicks(&button, &QPushButton::clicked);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, {60, 50});
    QCOMPARE(clicks.size(), 1);
}

void tst_DragFileImport::everythingOfTheMouseReachesWhatLiesBelow()
{
    makeWindow();
    QWindow *window = m_window->windowHandle();
    QTest::mouseMove(window, {20, 20});
    QCoreApplication::processEvents();
    QTest::mouseMove(window, {50, 50});
    QCoreApplication::processEvents();
    QVERIFY(m_below->count(QEvent::MouseMove) > 0);
    QTest::mousePress(window, Qt::RightButton, Qt::NoModifier, {50, 50});
    QTest::mouseRelease(window, Qt::RightButton, Qt::NoModifier, {50, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
    QCOMPARE(m_below->count(QEvent::MouseButtonRelease), 1);
    QCOMPARE(m_below->count(QEvent::ContextMenu), 1);
    QTest::mouseDClick(window, Qt::LeftButton, Qt::NoModifier, {50, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonDblClick), 1);
    QWheelEvent wheel(QPointF(50, 50), m_window->mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(window, &wheel);
    QCOMPARE(m_below->count(QEvent::Wheel), 1);
}

void tst_DragFileImport::pressDragReleaseStaysWithOneReceiver()
{
    makeWindow();
    m_below->setGeometry(0, 0, 100, 200);
    Below other(m_window.get());
    other.setGeometry(100, 0, 200, 200);
    other.show();
    m_view->raise();
    QWindow *window = m_window->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, {50, 50});
    QTest::mouseMove(window, {150, 50});
    QCoreApplication::processEvents();
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, {150, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
    QVERIFY(m_below->count(QEvent::MouseMove) > 0);
    QCOMPARE(m_below->count(QEvent::MouseButtonRelease), 1);
    QCOMPARE(other.count(QEvent::MouseButtonRelease), 0);
}

void tst_DragFileImport::receiverDeletedMeanwhile()
{
    makeWindow();
    auto *button = new QPushButton(m_window.get());
    button->setGeometry(40, 40, 80, 30);
    button->show();
    m_view->raise();
    connect(button, &QPushButton::pressed, button, &QObject::deleteLater);
    QWindow *window = m_window->windowHandle();
    const QPointer<QPushButton> alive = button;
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, {60, 50});
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!alive);
    QTest::mouseMove(window, {65, 50});
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, {65, 50});
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, {65, 50});
    QVERIFY(m_below->count(QEvent::MouseButtonPress) >= 1);
}

void tst_DragFileImport::cursorIsThatOfWhatLiesBelow()
{
    makeWindow();
    m_below->setCursor(Qt::PointingHandCursor);
    QTest::mouseMove(m_window->windowHandle(), {20, 20});
    QTest::mouseMove(m_window->windowHandle(), {50, 50});
    QCoreApplication::processEvents();
    QCOMPARE(m_window->windowHandle()->cursor().shape(), Qt::PointingHandCursor);
}

void tst_DragFileImport::focusGoesToTheFieldBelow()
{
    makeWindow();
    QLineEdit field(m_window.get());
    field.setGeometry(40, 40, 80, 30);
    field.show();
    m_view->raise();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_below->setFocus();
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, {60, 50});
    QVERIFY(field.hasFocus());
    QTest::keyClicks(&field, QStringLiteral("typed"));
    QCOMPARE(field.text(), QStringLiteral("typed"));
}

void tst_DragFileImport::clicksPassAgainAfterADrag_data()
{
    QTest::addColumn<bool>("isDropped");
    QTest::newRow("dropped") << true;
    QTest::newRow("left") << false;
}

void tst_DragFileImport::clicksPassAgainAfterADrag()
{
    QFETCH(bool, isDropped);
    makeWindow();
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    QCOMPARE(m_window->childAt(50, 50), m_view.data());
    drag.move({50, 50});
    if (isDropped)
        QVERIFY(drag.drop({50, 50}));
    else
        drag.leave();
    QCOMPARE(m_window->childAt(50, 50), m_below);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, {50, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
}

// Its source may crash, or the window system keep the end to itself.
void tst_DragFileImport::dragThatEndsUntoldBlocksNoMouse()
{
    makeWindow();
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    QWindow *window = m_window->windowHandle();
    QVERIFY(m_view->highlight());
    QTest::mouseMove(window, {60, 60});
    QCoreApplication::processEvents();
    QVERIFY(!m_view->highlight());
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, {60, 60});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
}

void tst_DragFileImport::dragOverAnotherWindowBlocksNoMouse()
{
    makeWindow();
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    Drag drag(other);
    drag.setPaths({at(QStringLiteral("a.jpg"))});
    drag.enter({5, 5});
    QCOMPARE(m_window->childAt(50, 50), m_below);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, {50, 50});
    QCOMPARE(m_below->count(QEvent::MouseButtonPress), 1);
}

void tst_DragFileImport::frameIsDrawnWhileHighlighted()
{
    QWidget parent;
    parent.resize(60, 40);
    DragFileImport view(parent.rect(), &parent);
    const auto painted = [&view] {
        QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        return image;
    };
    QImage blank(view.size(), QImage::Format_ARGB32_Premultiplied);
    blank.fill(Qt::white);
    QCOMPARE(painted(), blank);
    view.draggingEntered(Qt::CopyAction);
    const QImage framed = painted();
    const QColor gray(128, 128, 128);
    // The frame is five points wide, centred on the bounds: half of it is inside.
    for (const QPoint &point : {QPoint(0, 0), QPoint(1, 20), QPoint(30, 1), QPoint(58, 20), QPoint(30, 38)})
        QCOMPARE(framed.pixelColor(point), gray);
    QCOMPARE(framed.pixelColor(4, 20), QColor(Qt::white));
    QCOMPARE(framed.pixelColor(30, 20), QColor(Qt::white));
    view.draggingExited();
    QCOMPARE(painted(), blank);
}

void tst_DragFileImport::viewIsTransparent()
{
    makeWindow();
    m_below->setStyleSheet(QStringLiteral("background: red"));
    m_below->setAttribute(Qt::WA_StyledBackground);
    QCOMPARE(m_window->grab().toImage().pixelColor(150, 100), QColor(Qt::red));
    Drag drag(*m_window);
    drag.setPaths(texts({"/a.jpg"}));
    QVERIFY(drag.enter({50, 50}));
    const QImage image = m_window->grab().toImage();
    QCOMPARE(image.pixelColor(150, 100), QColor(Qt::red));
    QCOMPARE(image.pixelColor(0, 100), QColor(128, 128, 128));
}

void tst_DragFileImport::growsAndShrinksWithItsParent()
{
    makeWindow();
    m_view->setGeometry(10, 20, 100, 50);
    m_window->resize(350, 220);
    QCOMPARE(m_view->geometry(), QRect(10, 20, 150, 70));
    m_window->resize(300, 200);
    QCOMPARE(m_view->geometry(), QRect(10, 20, 100, 50));
}

void tst_DragFileImport::growsWithAParentThatIsNotShownYet()
{
    QWidget parent;
    parent.resize(200, 100);
    const DragFileImport view(QRect(0, 0, 200, 100), &parent);
    parent.resize(260, 130);
    parent.show();
    QCOMPARE(view.geometry(), QRect(0, 0, 260, 130));
    // One that was placed meanwhile was placed for good.
    QWidget other;
    other.resize(200, 100);
    DragFileImport placed(QRect(0, 0, 200, 100), &other);
    other.resize(260, 130);
    placed.setGeometry(5, 5, 100, 100);
    other.show();
    QCOMPARE(placed.geometry(), QRect(5, 5, 100, 100));
}

void tst_DragFileImport::smallParentAndBack()
{
    makeWindow();
    m_view->setGeometry(10, 20, 50, 50);
    m_window->resize(100, 60);
    QVERIFY(m_view->size().isEmpty());
    m_window->resize(300, 200);
    QCOMPARE(m_view->geometry(), QRect(10, 20, 50, 50));
}

void tst_DragFileImport::placedAnewItKeepsItsNewMargins()
{
    makeWindow();
    m_window->resize(310, 210);
    m_view->setGeometry(50, 50, 10, 10);
    m_window->resize(320, 230);
    QCOMPARE(m_view->geometry(), QRect(50, 50, 20, 30));
}

void tst_DragFileImport::followsANewParent()
{
    makeWindow();
    QWidget other(m_window.get());
    other.setGeometry(0, 0, 100, 100);
    other.show();
    m_view->setParent(&other);
    m_view->setGeometry(0, 0, 100, 100);
    m_view->show();
    other.resize(120, 90);
    QCOMPARE(m_view->geometry(), QRect(0, 0, 120, 90));
    m_window->resize(500, 500);
    QCOMPARE(m_view->geometry(), QRect(0, 0, 120, 90));
}

LINKLIST_GUI_TEST_MAIN(tst_DragFileImport)
#include "tst_DragFileImport.moc"
