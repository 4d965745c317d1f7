#include "Classes/Delegate/DragDrop/DragDeleteDelegate.h"
#include "Classes/Mode/Locale.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/WindowController.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QEventLoop>
#include <QMimeData>
#include <QTimer>
#include <functional>
#include <memory>

namespace
{

const QString rowsType = QStringLiteral("application/x-test-rows");

// A controller that wants to hear of ended drags, with a view in its window that things are dragged from.
class Receiver : public WindowController, public DragDeleteReceiver
{
    Q_OBJECT

public:
    void DeleteWindowDragEnd(DragDeleteWindow *window) override
    {
        heard += window;
        if (const auto action = whenHeard)
            action();
    }

    QList<DragDeleteWindow *> heard;
    std::function<void()> whenHeard;
};

QWidget *listOf(WindowController &controller)
{
    controller.window();
    auto *list = controller.outlet<QWidget>("list");
    if (!list)
        qFatal("no list");
    return list;
}

} // namespace

class tst_DragDeleteDelegate : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { resetLocaleForTesting(); }
    void ownsAWindowForItsSender();
    void endIsForwardedToTheSendersController();
    void endReachesTheControllerOfItsOwnWindowAlone();
    void anotherWindowsEndIsNotForwarded();
    void controllerThatIsNoReceiverHearsNothing();
    void senderWithoutAControllerIsHarmless();
    void senderThatIsGoneIsHarmless();
    void controllerThatIsGoneIsHarmless();
    void windowThatIsGoneIsHarmless();
    void goesWithItsWindowAtOnceOutsideEventLoops();
    void mayGoInsideTheDropThatItHearsOf();
    void mayGoInANestedLoopOfWhoHearsTheEnd();
    void oneOfTwoMayGoWhileTheOthersEndIsTold();

private:
    // As the application does, inside an event loop; deleted later means after it.
    static void inEventLoop(const std::function<void()> &action)
    {
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] {
            action();
            loop.quit();
        });
        loop.exec();
    }

    template <typename T>
    std::unique_ptr<T> make()
    {
        auto controller = std::make_unique<T>();
        return controller->initWithResourceNibName(QStringLiteral("N")) ? std::move(controller) : nullptr;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_DragDeleteDelegate::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    setDefaultBundlePath(m_folder->path());
    Fixtures::put(m_folder->filePath(QStringLiteral("N.nib")),
                  "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"root\">"
                  "<widget class=\"QFrame\" name=\"list\"/></widget></ui>");
}

void tst_DragDeleteDelegate::ownsAWindowForItsSender()
{
    QWidget sender;
    QPointer<DragDeleteWindow> window;
    {
        const DragDeleteDelegate delegate({rowsType}, &sender);
        window = delegate.window();
        QVERIFY(window);
        QCOMPARE(delegate.sender(), &sender);
        QCOMPARE(window->sender(), &sender);
        QCOMPARE(window->dataTypes(), QStringList(rowsType));
        QVERIFY(!window->isVisible());
    }
    QVERIFY(!window);
}

void tst_DragDeleteDelegate::endIsForwardedToTheSendersController()
{
    const auto controller = make<Receiver>();
    const DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    delegate.window()->draggingEnded();
    QCOMPARE(controller->heard, QList<DragDeleteWindow *>{delegate.window()});
}

void tst_DragDeleteDelegate::endReachesTheControllerOfItsOwnWindowAlone()
{
    const auto controller = make<Receiver>();
    const auto other = make<Receiver>();
    const DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    const DragDeleteDelegate otherDelegate({rowsType}, listOf(*other));
    otherDelegate.window()->draggingEnded();
    QCOMPARE(controller->heard, QList<DragDeleteWindow *>());
    QCOMPARE(other->heard, QList<DragDeleteWindow *>{otherDelegate.window()});
}

void tst_DragDeleteDelegate::anotherWindowsEndIsNotForwarded()
{
    const auto controller = make<Receiver>();
    DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    DragDeleteWindow another({rowsType}, listOf(*controller));
    another.draggingEnded();
    delegate.DeleteWindowDragEnd(&another);
    delegate.DeleteWindowDragEnd(controller.get());
    delegate.DeleteWindowDragEnd(nullptr);
    QCOMPARE(controller->heard.size(), 0);
    delegate.DeleteWindowDragEnd(delegate.window());
    QCOMPARE(controller->heard.size(), 1);
}

void tst_DragDeleteDelegate::controllerThatIsNoReceiverHearsNothing()
{
    const auto controller = make<WindowController>();
    const auto receiver = make<Receiver>();
    listOf(*receiver);
    const DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    delegate.window()->draggingEnded();
    QVERIFY(delegate.window()->hasEnded());
    QCOMPARE(receiver->heard.size(), 0);
}

void tst_DragDeleteDelegate::senderWithoutAControllerIsHarmless()
{
    const auto receiver = make<Receiver>();
    listOf(*receiver);
    QWidget sender;
    const DragDeleteDelegate delegate({rowsType}, &sender);
    const DragDeleteDelegate ofNobody({rowsType}, nullptr);
    delegate.window()->draggingEnded();
    ofNobody.window()->draggingEnded();
    QVERIFY(delegate.window()->hasEnded());
    QVERIFY(ofNobody.window()->hasEnded());
    QCOMPARE(receiver->heard.size(), 0);
}

void tst_DragDeleteDelegate::senderThatIsGoneIsHarmless()
{
    const auto controller = make<Receiver>();
    QWidget *list = listOf(*controller);
    const DragDeleteDelegate delegate({rowsType}, list);
    delete list;
    QCOMPARE(delegate.sender(), nullptr);
    delegate.window()->draggingEnded();
    QVERIFY(delegate.window()->hasEnded());
    QCOMPARE(controller->heard.size(), 0);
}

void tst_DragDeleteDelegate::controllerThatIsGoneIsHarmless()
{
    auto controller = make<Receiver>();
    const QPointer<QWidget> window(controller->window());
    const DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    // Inside an event the window outlives its controller by a moment.
    inEventLoop([&] {
        controller.reset();
        QVERIFY(window);
        QVERIFY(delegate.sender());
        delegate.window()->draggingEnded();
    });
    QVERIFY(delegate.window()->hasEnded());
}

void tst_DragDeleteDelegate::windowThatIsGoneIsHarmless()
{
    const auto controller = make<Receiver>();
    DragDeleteDelegate delegate({rowsType}, listOf(*controller));
    delete delegate.window();
    QCOMPARE(delegate.window(), nullptr);
    delegate.DeleteWindowDragEnd(nullptr);
    QCOMPARE(controller->heard.size(), 0);
}

void tst_DragDeleteDelegate::goesWithItsWindowAtOnceOutsideEventLoops()
{
    const auto controller = make<Receiver>();
    auto delegate = std::make_unique<DragDeleteDelegate>(QStringList(rowsType), listOf(*controller));
    const QPointer<DragDeleteWindow> window(delegate->window());
    window->orderBehind();
    delegate.reset();
    QVERIFY(!window);
    QCOMPARE(controller->heard.size(), 0);
}

// The window is in the middle of the event that delivered the drop.
void tst_DragDeleteDelegate::mayGoInsideTheDropThatItHearsOf()
{
    const auto controller = make<Receiver>();
    auto delegate = std::make_unique<DragDeleteDelegate>(QStringList(rowsType), listOf(*controller));
    const QPointer<DragDeleteWindow> window(delegate->window());
    window->orderBehind();
    controller->whenHeard = [&] {
        delegate.reset();
        QVERIFY(window);
        QVERIFY(!window->isVisible());
    };
    inEventLoop([&] {
        QMimeData data;
        data.setData(rowsType, "[0]");
        QDropEvent event(QPointF(5, 5), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &event);
        QVERIFY(event.isAccepted());
        QVERIFY(window);
    });
    QCOMPARE(controller->heard.size(), 1);
    QTRY_VERIFY(!window);
}

// As when an alert asks something and the host closes the session meanwhile.
void tst_DragDeleteDelegate::mayGoInANestedLoopOfWhoHearsTheEnd()
{
    auto controller = make<Receiver>();
    const QPointer<Receiver> guard(controller.get());
    auto delegate = std::make_unique<DragDeleteDelegate>(QStringList(rowsType), listOf(*controller));
    const QPointer<DragDeleteWindow> window(delegate->window());
    window->orderBehind();
    bool isBack = false;
    controller->whenHeard = [&] {
        inEventLoop([&] {
            delegate.reset();
            controller.reset();
        });
        QVERIFY(!guard);
        isBack = true;
    };
    inEventLoop([&] {
        window->draggingEnded();
        QVERIFY(isBack);
        QVERIFY(window);
    });
    QVERIFY(!delegate);
    QTRY_VERIFY(!window);
}

void tst_DragDeleteDelegate::oneOfTwoMayGoWhileTheOthersEndIsTold()
{
    const auto controller = make<Receiver>();
    const DragDeleteDelegate first({rowsType}, listOf(*controller));
    auto second = std::make_unique<DragDeleteDelegate>(QStringList(rowsType), listOf(*controller));
    controller->whenHeard = [&] { second.reset(); };
    first.window()->draggingEnded();
    QVERIFY(!second);
    QCOMPARE(controller->heard, QList<DragDeleteWindow *>{first.window()});
}

LINKLIST_GUI_TEST_MAIN(tst_DragDeleteDelegate)
#include "tst_DragDeleteDelegate.moc"
