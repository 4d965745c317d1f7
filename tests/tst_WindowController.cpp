#include "Classes/Mode/Locale.h"
#include "Classes/Mode/Log/LogAlert.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/WindowController.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>
#include <functional>

namespace
{
class Controller : public WindowController
{
    Q_OBJECT

public:
    int awoken = 0;
    int closed = 0;
    std::function<void()> whenClosing;

protected:
    void awakeFromNib() override
    {
        ++awoken;
        QVERIFY(window());
        QVERIFY(!window()->isVisible());
    }
    void windowWillClose() override
    {
        ++closed;
        if (const auto action = whenClosing)
            action();
    }
};

const QByteArray plainWindow = "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"root\">"
                               "<widget class=\"QPushButton\" name=\"btnOK\"/></widget></ui>";
const QByteArray dialogWindow = "<ui version=\"4.0\"><widget class=\"QDialog\" name=\"root\"><widget "
                                "class=\"QLineEdit\" name=\"txtA\"/>"
                                "<widget class=\"QPushButton\" name=\"btnOK\"><property "
                                "name=\"default\"><bool>true</bool></property></widget>"
                                "<widget class=\"QPushButton\" name=\"btnOther\"/>"
                                "<widget class=\"QDialogButtonBox\" name=\"box\"><property "
                                "name=\"standardButtons\"><set>QDialogButtonBox::Ok</set></property></widget>"
                                "</widget></ui>";
} // namespace

class tst_WindowController : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { resetLocaleForTesting(); }
    void withoutAnInterfaceFileThereIsNoController();
    void loadsOnceWhenFirstAskedFor();
    void brokenFileStaysWithoutAWindow();
    void outletsAreFoundByNameAndClass();
    void everyCloseIsHeard();
    void hiddenWindowsCloseIsHeard();
    void closedWindowCanBeShownAgain();
    void closeDuringTheQuestionIsDropped();
    void dialogsOwnWaysOutAreHeard();
    void escapeNeverClosesAndNoButtonIsDefault();
    void modalLoopAnswersTheCodeGivenWhileClosing();
    void deletedWithItsWindow();
    void deletedInsideTheQuestionOfItsClose();
    void deletedInsideItsModalLoop();
    void windowDeletedByTheHost();
    void controllerOfAWindowIsFound();
    void windowsOfNobodyHaveNoController();
    void windowThatOutlivesItsControllerHasNone();

private:
    std::unique_ptr<Controller> make(const QByteArray &interface = plainWindow)
    {
        Fixtures::put(m_folder->filePath(QStringLiteral("N.nib")), interface);
        auto controller = std::make_unique<Controller>();
        return controller->initWithResourceNibName(QStringLiteral("N")) ? std::move(controller) : nullptr;
    }
    void later(std::function<void()> action) { QTimer::singleShot(0, this, std::move(action)); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WindowController::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    setDefaultBundlePath(m_folder->path());
}

void tst_WindowController::withoutAnInterfaceFileThereIsNoController()
{
    Controller controller;
    QVERIFY(!controller.initWithResourceNibName(QStringLiteral("N")));
    QCOMPARE(controller.window(), nullptr);
    QVERIFY(!controller.loadError().isEmpty());
}

void tst_WindowController::loadsOnceWhenFirstAskedFor()
{
    const auto controller = make();
    QVERIFY(!controller->isWindowLoaded());
    QCOMPARE(controller->awoken, 0);
    QWidget *window = controller->window();
    QVERIFY(window && window->isWindow() && !window->isVisible());
    QVERIFY(controller->isWindowLoaded());
    QCOMPARE(controller->window(), window);
    QCOMPARE(controller->awoken, 1);
    QCOMPARE(controller->loadError(), QString());
}

void tst_WindowController::brokenFileStaysWithoutAWindow()
{
    const auto controller = make("<ui version=\"4.0\"><widget");
    QVERIFY(controller);
    QCOMPARE(controller->window(), nullptr);
    const QString error = controller->loadError();
    QVERIFY(error.contains(QStringLiteral("N.nib")));
    Fixtures::put(m_folder->filePath(QStringLiteral("N.nib")), plainWindow);
    QCOMPARE(controller->window(), nullptr);
    QCOMPARE(controller->loadError(), error);
    QCOMPARE(controller->awoken, 0);
    controller->showWindow();
    QCOMPARE(controller->runModal(), ModalLoop::abortCode);
    QCOMPARE(controller->outlet<QPushButton>("btnOK"), nullptr);
}

void tst_WindowController::outletsAreFoundByNameAndClass()
{
    const auto controller = make();
    QCOMPARE(controller->outlet<QPushButton>("btnOK"), nullptr);
    controller->window();
    QVERIFY(controller->outlet<QPushButton>("btnOK"));
    QCOMPARE(controller->outlet<QLineEdit>("btnOK"), nullptr);
    QCOMPARE(controller->outlet<QPushButton>("btnNone"), nullptr);
}

void tst_WindowController::everyCloseIsHeard()
{
    const auto controller = make();
    controller->showWindow();
    QVERIFY(controller->window()->isVisible());
    QVERIFY(controller->window()->close());
    QCOMPARE(controller->closed, 1);
    QVERIFY(!controller->window()->isVisible());
    controller->showWindow();
    // The title bar's close, as the window system sends it.
    QCloseEvent titleBar;
    QCoreApplication::sendEvent(controller->window()->windowHandle(), &titleBar);
    QCOMPARE(controller->closed, 2);
    QVERIFY(!controller->window()->isVisible());
}

void tst_WindowController::hiddenWindowsCloseIsHeard()
{
    const auto controller = make();
    controller->window()->close();
    QCOMPARE(controller->closed, 1);
    controller->showWindow();
    controller->window()->hide();
    QCOMPARE(controller->closed, 1);
    controller->window()->close();
    QCOMPARE(controller->closed, 2);
}

void tst_WindowController::closedWindowCanBeShownAgain()
{
    const auto controller = make();
    const QPointer<QWidget> window = controller->window();
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    for (int i = 1; i <= 2; ++i) {
        controller->showWindow();
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(window);
        QCOMPARE(controller->closed, i);
    }
}

void tst_WindowController::closeDuringTheQuestionIsDropped()
{
    const auto controller = make();
    controller->showWindow();
    QWidget *window = controller->window();
    controller->whenClosing = [&] {
        later([&] {
            window->close();
            QCloseEvent again;
            QCoreApplication::sendEvent(window, &again);
            QVERIFY(!again.isAccepted());
            QVERIFY(window->isVisible());
            ModalLoop::stopModalWithCode(0);
        });
        LogAlert::AlertOKWithMessage(QStringLiteral("?"), QString());
    };
    window->close();
    QCOMPARE(controller->closed, 1);
    QVERIFY(!window->isVisible());
}

void tst_WindowController::dialogsOwnWaysOutAreHeard()
{
    const auto controller = make(dialogWindow);
    controller->showWindow();
    auto *dialog = qobject_cast<QDialog *>(controller->window());
    QVERIFY(dialog);
    dialog->reject();
    QCOMPARE(controller->closed, 1);
    controller->showWindow();
    dialog->close();
    QCOMPARE(controller->closed, 2);
    QVERIFY(!dialog->isVisible());
}

void tst_WindowController::escapeNeverClosesAndNoButtonIsDefault()
{
    const auto controller = make(dialogWindow);
    controller->showWindow();
    QWidget *window = controller->window();
    QVERIFY(QTest::qWaitForWindowActive(window));
    auto *button = controller->outlet<QPushButton>("btnOK");
    QSignalSpy clicked(button, &QPushButton::clicked);
    auto *field = controller->outlet<QLineEdit>("txtA");
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Escape);
    QTest::keyClick(field, Qt::Key_Return);
    QTest::keyClick(window, Qt::Key_Escape);
    const auto buttons = window->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 3);
    for (const QPushButton *each : buttons)
        QVERIFY(!each->isDefault() && !each->autoDefault());
    QVERIFY(window->isVisible());
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(controller->closed, 0);
}

void tst_WindowController::modalLoopAnswersTheCodeGivenWhileClosing()
{
    const auto controller = make();
    controller->whenClosing = [] { ModalLoop::stopModalWithCode(1); };
    later([&] {
        QVERIFY(controller->window()->isVisible());
        controller->window()->close();
    });
    QCOMPARE(controller->runModal(), 1);
    QVERIFY(!controller->window()->isVisible());
    QCOMPARE(controller->window()->windowModality(), Qt::NonModal);
}

void tst_WindowController::deletedWithItsWindow()
{
    auto controller = make();
    const QPointer<QWidget> window = controller->window();
    controller->showWindow();
    controller.reset();
    QVERIFY(!window);
}

void tst_WindowController::deletedInsideTheQuestionOfItsClose()
{
    for (const bool modal : {false, true}) {
        auto controller = make();
        const QPointer<QWidget> window = controller->window();
        int afterQuestion = 0;
        controller->whenClosing = [&, self = QPointer<QObject>(controller.get())] {
            later([&] { controller.reset(); });
            LogAlert::AlertOKCancelWithMessage(QStringLiteral("?"), QString());
            QVERIFY(!self);
            ++afterQuestion;
        };
        if (modal) {
            later([&] { window->close(); });
            QCOMPARE(controller->runModal(), ModalLoop::abortCode);
        } else {
            controller->showWindow();
            window->close();
        }
        QCOMPARE(afterQuestion, 1);
        QVERIFY(!ModalLoop::isRunning());
        QTRY_VERIFY(!window);
    }
}

void tst_WindowController::deletedInsideItsModalLoop()
{
    auto controller = make();
    const QPointer<QWidget> window = controller->window();
    auto *button = controller->outlet<QPushButton>("btnOK");
    // By one of the window's own elements, whose event is still being handled.
    connect(button, &QPushButton::clicked, this, [&] { controller.reset(); });
    later([&] { QTest::mouseClick(button, Qt::LeftButton); });
    QCOMPARE(controller->runModal(), ModalLoop::abortCode);
    QVERIFY(!controller);
    QTRY_VERIFY(!window);
}

void tst_WindowController::windowDeletedByTheHost()
{
    const auto controller = make();
    later([&] { delete controller->window(); });
    QCOMPARE(controller->runModal(), ModalLoop::abortCode);
    QVERIFY(!controller->isWindowLoaded());
    QCOMPARE(controller->window(), nullptr);
}

void tst_WindowController::controllerOfAWindowIsFound()
{
    const auto first = make();
    const auto second = make();
    QVERIFY(!first->isWindowLoaded());
    QCOMPARE(WindowController::ofWindow(first->window()), first.get());
    QCOMPARE(WindowController::ofWindow(second->window()), second.get());
    first->window()->close();
    QCOMPARE(WindowController::ofWindow(first->window()), first.get());
}

void tst_WindowController::windowsOfNobodyHaveNoController()
{
    const auto notLoaded = make();
    const auto controller = make();
    controller->window();
    QCOMPARE(WindowController::ofWindow(nullptr), nullptr);
    const QWidget other;
    QCOMPARE(WindowController::ofWindow(&other), nullptr);
    // Only the window itself counts, not what is in it.
    QCOMPARE(WindowController::ofWindow(controller->outlet<QPushButton>("btnOK")), nullptr);
    QVERIFY(!notLoaded->isWindowLoaded());
}

void tst_WindowController::windowThatOutlivesItsControllerHasNone()
{
    auto controller = make();
    const QPointer<QWidget> window = controller->window();
    controller->showWindow();
    QCOMPARE(WindowController::ofWindow(window), controller.get());
    // Its window is deleted when the close has been handled.
    controller->whenClosing = [&] {
        controller.reset();
        QVERIFY(window);
        QCOMPARE(WindowController::ofWindow(window), nullptr);
    };
    window->close();
    QVERIFY(!controller);
    QTRY_VERIFY(!window);
}

LINKLIST_GUI_TEST_MAIN(tst_WindowController)
#include "tst_WindowController.moc"
