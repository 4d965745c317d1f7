#include "Classes/Delegate/EditView/OZEditView.h"
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/Locale.h"
#include "Classes/Mode/security.h"
#include "linklist/LinkListModel.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/ui/Matrix.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Stepper.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableView>
#include <QTemporaryFile>
#include <QTimer>
#include <QWindow>
#include <sys/inotify.h>
#include <unistd.h>

using Fixtures::get;
using Fixtures::put;
using Controller = PluginSettingsDelegate;

class tst_PluginSettingsDelegate : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    // The session.
    void nilLanguageCodeLeavesTheProcessesLanguage();
    void nilBundlePathMakesTheMainBundleThePlugInsBundle_data();
    void nilBundlePathMakesTheMainBundleThePlugInsBundle();
    void bundleWithoutInterfaceFilesGivesNoSession();
    void brokenInterfaceFileGivesNoWindow();
    void neverSetWorkspaceIsTheDefaultSaveFolder();
    void titleIsFormattedWithTheFixedName_data();
    void titleIsFormattedWithTheFixedName();
    void windowHasNoDefaultButtonAndEscapeLeavesItOpen();
    void setModalModeAfterTheWindowLoadedComesTooLate();
    void okPublishesAndStripsTheWorkspace();
    void okKeepsNothingButTheKeepList();
    void nothingIsWrittenAfterOk();
    void cancelRestoresTheWorkspace();
    void closeBoxAsksAndOkKeepsEditsWithoutPublishing();
    void closeBoxAsksAndCancelReverts();
    void otherCloseModesRevert();
    void cancelRevertsWhateverModeTheHostSetBefore();
    void everyCloseStopsTheModalLoopWithTheCloseMode();
    void sessionDeletedInsideTheQuestionIsSafe();
    void sessionWithoutWindowRemovesItsEmptyBackup();
    void sessionDroppedWithItsWindowOpenKeepsItsBackup();
    void workspaceStaysOnceTheWindowIsLoaded();
    void buttonsOfAnEndedSessionCloseTheWindow();
    void closeDoesItsWorkWhateverIsCloseBundleWasSetTo();
    void viewsForgetTheSessionThatGoes();
    void closedSessionWritesNothing_data();
    void closedSessionWritesNothing();
    void nothingIsWrittenWhileTheCloseIsHeldBack();
    void relativeBundlePathStaysTheSameFolder();
    void tabWalksTheWindowInReadingOrder();
    void missingInterfaceElementsAreHarmless();
    void linkListFileWithoutEditorLeavesTheRest();
    void oldSettingsAreRewrittenAtTheStart();

    // Settings files, backup and undo.
    void settingsInASubFolderDoNotCount();
    void rectangleFiles_data();
    void rectangleFiles();
    void undoRestoresDeletedAndRemovesAddedFiles();
    void withoutBackupFolderUndoLeavesTheWorkspace();
    void previewPageFollowsTheBundles();
    void bundleWithoutPageLeavesTheWorkspacesPage();
    void missingWorkspaceMarksThePreviewStaleAndWritesNothing();
    void unusableWorkspaces_data();
    void unusableWorkspaces();
    void defaultButtonLoadsTheBundlesDefaults();
    void defaultButtonTakesTheBundlesFileBeforeTheWorkspaces();
    void defaultButtonWithoutAnyFileSaysSo();

    // Position and transparency controls.
    void typedLetterIsRemoved();
    void typedSecondPointIsRemoved();
    void typedMinusIsRemovedAndPastedTextKeptButItsEnd();
    void clearedFieldCountsAsZero();
    void correctionKeepsTheCaret();
    void eachFieldChangesItsOwnMargin();
    void typedTransparencyMovesTheSlider();
    void movedSliderShowsOneDecimalAndStoresSinglePrecision();
    void layerClickWaitsForTheNextSave();
    void layerWithoutACellIsKept();
    void layerClickedLastIsPublished();
    void transparencyAndLayerOutliveADrag_data();
    void transparencyAndLayerOutliveADrag();
    void loadedTransparencyIsShownAndKept();
    void dragOfAHundredStepsSavesOnceAndTheFieldsFollowLive();
    void typingMovesTheFrameToTheLastDecimal();
    void defaultButtonMovesTheFrame();
    void damagedSettingsStayEditableAndValid_data();
    void damagedSettingsStayEditableAndValid();
    void frameComesBetweenTheMarginsInTheTabOrder();
    void marginsStandAroundThePageInRightToLeftWindows_data();
    void marginsStandAroundThePageInRightToLeftWindows();

private:
    std::unique_ptr<Controller> open();
    template <typename T>
    T *part(Controller &controller, const char *name)
    {
        T *found = controller.outlet<T>(name);
        if (!found)
            qFatal("the window has no %s", name);
        return found;
    }
    QLineEdit *field(Controller &controller, const char *name) { return part<QLineEdit>(controller, name); }
    static void type(QLineEdit *field, const char *text);
    // Answers the next question while a modal loop runs; fails the test when none is asked.
    void answer(const char *button);
    QByteArrayList settings() { return get(m_bundle->inWorkSpace("settings.dat")).split('\n'); }
    // The published configuration as a player's script engine understands it, as JSON.
    QByteArray published() const;

    std::unique_ptr<TestBundle> m_bundle;
    bool m_wasAsked = false;
};

void tst_PluginSettingsDelegate::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_bundle = std::make_unique<TestBundle>();
    m_wasAsked = false;
}

void tst_PluginSettingsDelegate::cleanup()
{
    QVERIFY(!ModalLoop::isRunning());
    m_bundle.reset();
}

std::unique_ptr<Controller> tst_PluginSettingsDelegate::open()
{
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    controller->setWorkSpace(m_bundle->workSpace());
    if (!controller->window())
        qFatal("no window: %s", qPrintable(controller->loadError()));
    return controller;
}

void tst_PluginSettingsDelegate::type(QLineEdit *field, const char *text)
{
    field->selectAll();
    QTest::keyClicks(field, QString::fromUtf8(text));
}

void tst_PluginSettingsDelegate::answer(const char *button)
{
    QTimer::singleShot(0, this, [this, button] {
        const QWidget *question = QApplication::activeModalWidget();
        auto *choice = question ? question->findChild<QAbstractButton *>(QString::fromUtf8(button)) : nullptr;
        QVERIFY(choice);
        m_wasAsked = true;
        choice->click();
    });
}

QByteArray tst_PluginSettingsDelegate::published() const
{
    QProcess node;
    node.start(QStringLiteral("node"),
               {QStringLiteral(LINKLIST_SOURCE_DIR "/tests/js/evaluate.mjs"),
                m_bundle->inWorkSpace("bookPlugin.js")});
    return node.waitForFinished() && node.exitCode() == 0 ? node.readAllStandardOutput() : QByteArray();
}

void tst_PluginSettingsDelegate::nilLanguageCodeLeavesTheProcessesLanguage()
{
    setDefaultLanguageCode(QStringLiteral("de"));
    QVERIFY(Controller::initWithLanguageCode(QString(), m_bundle->path()));
    QCOMPARE(defaultLanguageCode(), QStringLiteral("de"));
    QVERIFY(Controller::initWithLanguageCode(QStringLiteral("ja"), m_bundle->path()));
    QCOMPARE(defaultLanguageCode(), QStringLiteral("ja"));
}

void tst_PluginSettingsDelegate::nilBundlePathMakesTheMainBundleThePlugInsBundle_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
}

void tst_PluginSettingsDelegate::nilBundlePathMakesTheMainBundleThePlugInsBundle()
{
    QFETCH(QString, path);
    // Somebody's bundle is the folder where the process stands.
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_bundle->path()));
    const auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), path);
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(defaultBundlePath(), Bundle::mainBundle().path());
    QVERIFY(!defaultBundlePath().isEmpty());
    QVERIFY(!controller); // this program has no interface files of its own
}

void tst_PluginSettingsDelegate::bundleWithoutInterfaceFilesGivesNoSession()
{
    QVERIFY(File::removeAll(m_bundle->resource("en.lproj")));
    QVERIFY(!Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path()));
}

void tst_PluginSettingsDelegate::brokenInterfaceFileGivesNoWindow()
{
    put(m_bundle->resource("en.lproj/PluginSettingsDelegate.nib"), "<ui><widget");
    const auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    QVERIFY(controller);
    controller->setWorkSpace(m_bundle->workSpace());
    QVERIFY(!controller->window());
    QVERIFY(!controller->loadError().isEmpty());
    controller->showWindow();
    QCOMPARE(controller->runModal(), ModalLoop::abortCode);
    QVERIFY(!File::exists(m_bundle->workSpace()));
}

void tst_PluginSettingsDelegate::neverSetWorkspaceIsTheDefaultSaveFolder()
{
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    {
        const auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
        QVERIFY(controller->workSpace().isNull());
        QVERIFY(controller->window());
        QCOMPARE(controller->workSpace(),
                 data.filePath(QStringLiteral("Harborlight/quillnest_resource/Plugin/Save/linklist")));
        QVERIFY(File::exists(controller->workSpace() + QStringLiteral("/linklist.xml")));
        controller->onCancel();
    }
    qunsetenv("XDG_DATA_HOME");
}

void tst_PluginSettingsDelegate::titleIsFormattedWithTheFixedName_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("title");
    QTest::newRow("en") << QStringLiteral("en") << QStringLiteral("Plugin Settings - Link List Plugin");
    QTest::newRow("de") << QStringLiteral("de") << QString();
    QTest::newRow("ja") << QStringLiteral("ja") << QString();
}

void tst_PluginSettingsDelegate::titleIsFormattedWithTheFixedName()
{
    QFETCH(QString, language);
    QFETCH(QString, title);
    const auto controller = Controller::initWithLanguageCode(language, m_bundle->path());
    controller->setWorkSpace(m_bundle->workSpace());
    const QString shown = controller->window()->windowTitle();
    QVERIFY2(shown.contains(QStringLiteral("Link List Plugin")), qPrintable(shown));
    QVERIFY(!shown.contains(u'@'));
    QCOMPARE(shown == QStringLiteral("Plugin Settings - Link List Plugin"), language == QStringLiteral("en"));
    if (!title.isNull())
        QCOMPARE(shown, title);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::windowHasNoDefaultButtonAndEscapeLeavesItOpen()
{
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    const auto buttons = controller->window()->findChildren<QPushButton *>();
    for (const QPushButton *button : buttons)
        QVERIFY2(!button->isDefault() && !button->autoDefault(), qPrintable(button->objectName()));
    QTest::keyClick(field(*controller, "txtLeft"), Qt::Key_Escape);
    QTest::keyClick(field(*controller, "txtLeft"), Qt::Key_Return);
    QVERIFY(controller->window()->isVisible());
    QVERIFY(!controller->isCloseBundle());
    part<QAbstractButton>(*controller, "btnCancel")->click();
}

void tst_PluginSettingsDelegate::setModalModeAfterTheWindowLoadedComesTooLate()
{
    const auto controller = open();
    controller->setModalMode(true);
    QVERIFY(controller->isModalMode());
    QVERIFY(controller->isChange());
    // The timer stays in the default mode and fires outside of modal loops.
    QTRY_VERIFY(!controller->isChange());
    part<QAbstractButton>(*controller, "btnCancel")->click();

    const auto modal = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    modal->setWorkSpace(m_bundle->workSpace());
    modal->setModalMode(true);
    QVERIFY(modal->window());
    QTimer::singleShot(0, modal.get(), [&modal] {
        QTRY_VERIFY(!modal->isChange());
        ModalLoop::stopModalWithCode(7);
    });
    QVERIFY(modal->isChange());
    QCOMPARE(modal->runModal(), 7);
    modal->onCancel();
}

void tst_PluginSettingsDelegate::okPublishesAndStripsTheWorkspace()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "12.5");
    type(field(*controller, "txtTitleContent"), "Seen \"today\"");
    put(m_bundle->inWorkSpace(".hidden"), "x");
    put(m_bundle->inWorkSpace("folder/settings.dat"), "x");
    const QString backup = controller->backupSettingPath();
    QVERIFY(File::isFolder(backup));
    part<QAbstractButton>(*controller, "btnOK")->click();

    QCOMPARE(controller->closeMode(), 1);
    QVERIFY(controller->isCloseBundle());
    QVERIFY(!controller->window()->isVisible());
    QVERIFY(!File::exists(backup));
    const QStringList left
        = QDir(m_bundle->workSpace()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    QCOMPARE(left,
             (QStringList{QStringLiteral("bookPlugin.js"), QStringLiteral("defaultsettings.dat"),
                          QStringLiteral("files"), QStringLiteral("linklist.xml"),
                          QStringLiteral("settings.dat")}));
    QCOMPARE(get(m_bundle->inWorkSpace("files")), QByteArray(""));
    QCOMPARE(settings().first(), QByteArray("12.5"));
    const QByteArray published = get(m_bundle->inWorkSpace("bookPlugin.js"));
    QVERIFY(published.endsWith('_'));
    QVERIFY(!published.contains("var bookPlugin"));

    const QByteArray decoded = this->published();
    QVERIFY2(decoded.contains("\"left\":\"12.5%\"") && decoded.contains("Seen \\\"today\\\""),
             decoded.constData());
}

void tst_PluginSettingsDelegate::okKeepsNothingButTheKeepList()
{
    const auto controller = open();
    QVERIFY(File::exists(m_bundle->inWorkSpace("index.html")));
    controller->onOK();
    QVERIFY(!File::exists(m_bundle->inWorkSpace("index.html")));
    QVERIFY(!File::exists(m_bundle->inWorkSpace("config.js")));
}

void tst_PluginSettingsDelegate::nothingIsWrittenAfterOk()
{
    const auto controller = open();
    controller->showWindow();
    field(*controller, "txtBodyFontSize")->setFocus();
    type(field(*controller, "txtBodyFontSize"), "007");
    controller->onOK();
    const auto published = Fixtures::tree(m_bundle->workSpace());
    QVERIFY(!published.contains(QStringLiteral("config.js")));
    type(field(*controller, "txtLeft"), "1");
    type(field(*controller, "txtTitleContent"), "late");
    controller->onDefaultSetting();
    controller->onCancel();
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), published);
    QCOMPARE(controller->closeMode(), 1);
}

void tst_PluginSettingsDelegate::cancelRestoresTheWorkspace()
{
    put(m_bundle->inWorkSpace("settings.dat"), "1.0\n2.0\n3.0\n4.0\n5.0\n1");
    put(m_bundle->inWorkSpace("mine/.note"), "kept");
    QVERIFY(QFile::link(QStringLiteral("/nowhere"), m_bundle->inWorkSpace("link")));
    const auto controller = open();
    // Opening fills the workspace with the bundle's page; the backup is taken after that.
    auto before = Fixtures::tree(m_bundle->workSpace());
    const QByteArray document = before[QStringLiteral("linklist.xml")];
    type(field(*controller, "txtTop"), "33");
    type(field(*controller, "txtTitleContent"), "Changed");
    QVERIFY(File::removeAll(m_bundle->inWorkSpace("mine")));
    QVERIFY(get(m_bundle->inWorkSpace("linklist.xml")) != document);
    part<QAbstractButton>(*controller, "btnCancel")->click();
    QCOMPARE(controller->closeMode(), 0);
    QVERIFY(controller->isCloseBundle());
    QVERIFY(!File::exists(controller->backupSettingPath()));
    // The configuration was generated anew from the loaded settings before the first edit.
    before[QStringLiteral("config.js")] = get(m_bundle->inWorkSpace("config.js"));
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), QByteArray("1.0\n2.0\n3.0\n4.0\n5.0\n1"));
}

void tst_PluginSettingsDelegate::closeBoxAsksAndOkKeepsEditsWithoutPublishing()
{
    const auto controller = open();
    controller->showWindow();
    type(field(*controller, "txtLeft"), "44");
    answer("btnAlertFirst");
    controller->window()->close();
    QVERIFY(m_wasAsked);
    QCOMPARE(controller->closeMode(), 1);
    QVERIFY(controller->isCloseBundle());
    QVERIFY(!File::exists(controller->backupSettingPath()));
    QCOMPARE(settings().first(), QByteArray("44.0"));
    for (const char *name : {"index.html", "config.js", "player.js"})
        QVERIFY2(File::exists(m_bundle->inWorkSpace(name)), name);
    QVERIFY(!File::exists(m_bundle->inWorkSpace("bookPlugin.js")));
    QVERIFY(!File::exists(m_bundle->inWorkSpace("files")));
}

void tst_PluginSettingsDelegate::closeBoxAsksAndCancelReverts()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "44");
    answer("btnAlertSecond");
    controller->window()->close();
    QVERIFY(m_wasAsked);
    QCOMPARE(controller->closeMode(), 0);
    QVERIFY(controller->isCloseBundle());
    QVERIFY(!File::exists(m_bundle->inWorkSpace("settings.dat")));
}

// A host may give a close mode of its own while the window is closing.
class CloseModeSetter : public QObject
{
public:
    explicit CloseModeSetter(Controller &controller)
        : m_controller(controller)
    {
        controller.window()->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Close)
            m_controller.setCloseMode(7);
        return false;
    }

private:
    Controller &m_controller;
};

void tst_PluginSettingsDelegate::otherCloseModesRevert()
{
    const auto controller = open();
    const CloseModeSetter setter(*controller);
    type(field(*controller, "txtLeft"), "44");
    controller->onOK();
    QCOMPARE(controller->closeMode(), 7);
    QVERIFY(!File::exists(m_bundle->inWorkSpace("settings.dat")));
    QVERIFY(File::exists(m_bundle->inWorkSpace("index.html")));
}

void tst_PluginSettingsDelegate::cancelRevertsWhateverModeTheHostSetBefore()
{
    const auto controller = open();
    const auto before = Fixtures::tree(m_bundle->workSpace());
    controller->setCloseMode(Controller::applyMode);
    type(field(*controller, "txtLeft"), "44");
    part<QAbstractButton>(*controller, "btnCancel")->click();
    QCOMPARE(controller->closeMode(), Controller::revertMode);
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
}

void tst_PluginSettingsDelegate::everyCloseStopsTheModalLoopWithTheCloseMode()
{
    for (const char *button : {"btnOK", "btnCancel"}) {
        const auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
        controller->setWorkSpace(m_bundle->workSpace());
        controller->setModalMode(true);
        auto *choice = part<QAbstractButton>(*(controller->window(), controller.get()), button);
        QTimer::singleShot(0, choice, [choice] { choice->click(); });
        const qint64 code = controller->runModal();
        QCOMPARE(code, controller->closeMode());
        QCOMPARE(controller->closeMode(), qint64(qstrcmp(button, "btnOK") == 0));
    }
    // The window was not shown modally, another window of the plug-in is: its loop ends all the same.
    const auto controller = open();
    QWidget other;
    QTimer::singleShot(0, controller.get(), [&controller] { controller->onCancel(); });
    QCOMPARE(ModalLoop::runModalForWindow(&other), 0);
}

void tst_PluginSettingsDelegate::sessionDeletedInsideTheQuestionIsSafe()
{
    auto controller = open();
    controller->showWindow();
    const QString backup = controller->backupSettingPath();
    QPointer<QWidget> window = controller->window();
    QTimer::singleShot(0, this, [&controller] { controller.reset(); });
    window->close();
    QVERIFY(!controller);
    QTRY_VERIFY(!window);
    QVERIFY(File::removeAll(backup));
}

void tst_PluginSettingsDelegate::sessionWithoutWindowRemovesItsEmptyBackup()
{
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    const QString backup = controller->backupSettingPath();
    QVERIFY(File::isFolder(backup));
    QVERIFY(QRegularExpression(QStringLiteral("^%1/\\d+\\.\\d{6}$").arg(QDir::tempPath()))
                .match(backup)
                .hasMatch());
    controller.reset();
    QVERIFY(!File::exists(backup));
}

void tst_PluginSettingsDelegate::sessionDroppedWithItsWindowOpenKeepsItsBackup()
{
    auto controller = open();
    const QString backup = controller->backupSettingPath();
    controller.reset();
    QVERIFY(File::exists(backup + QStringLiteral("/linklist.xml")));
    QVERIFY(File::removeAll(backup));
}

void tst_PluginSettingsDelegate::workspaceStaysOnceTheWindowIsLoaded()
{
    const QTemporaryDir other;
    put(other.filePath(QStringLiteral("mine")), "kept");
    const auto controller = open();
    controller->setWorkSpace(other.path());
    QCOMPARE(controller->workSpace(), m_bundle->workSpace());
    controller->onCancel();
    QCOMPARE(get(other.filePath(QStringLiteral("mine"))), QByteArray("kept"));
}

void tst_PluginSettingsDelegate::buttonsOfAnEndedSessionCloseTheWindow()
{
    const auto controller = open();
    controller->onOK();
    const auto published = Fixtures::tree(m_bundle->workSpace());
    auto *cancel = part<QAbstractButton>(*controller, "btnCancel");
    QTimer::singleShot(0, cancel, [cancel] { cancel->click(); });
    QCOMPARE(controller->runModal(), 1);
    QVERIFY(!controller->window()->isVisible());
    QCOMPARE(controller->closeMode(), 1);
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), published);
}

void tst_PluginSettingsDelegate::closeDoesItsWorkWhateverIsCloseBundleWasSetTo()
{
    const auto controller = open();
    const auto before = Fixtures::tree(m_bundle->workSpace());
    controller->setIsCloseBundle(true);
    type(field(*controller, "txtTitleContent"), "Edited");
    answer("btnAlertSecond");
    controller->window()->close();
    QVERIFY(m_wasAsked);
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
    QVERIFY(!File::exists(controller->backupSettingPath()));

    // And the second close of a session that has ended does nothing of it.
    controller->setIsCloseBundle(false);
    m_wasAsked = false;
    QTimer::singleShot(0, this, [this] {
        if (QWidget *question = QApplication::activeModalWidget()) {
            m_wasAsked = true;
            question->close();
        }
    });
    controller->window()->close();
    QCoreApplication::processEvents();
    QVERIFY(!m_wasAsked);
    QVERIFY(!controller->isCloseBundle());
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
}

// The window of a session that goes within an event goes after that.
void tst_PluginSettingsDelegate::viewsForgetTheSessionThatGoes()
{
    auto controller = open();
    const QPointer<PositionView> position(controller->positionView());
    const QPointer<PrivateView> list(controller->privateView());
    controller->clearBackupSettings(); // which a dropped session keeps
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        controller.reset();
        QVERIFY(position && list);
        QCOMPARE(position->ower(), nullptr);
        QCOMPARE(list->ower(), nullptr);
        loop.quit();
    });
    loop.exec();
}

void tst_PluginSettingsDelegate::closedSessionWritesNothing_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("OK") << QByteArray("btnOK") << QByteArray();
    QTest::newRow("Cancel") << QByteArray("btnCancel") << QByteArray();
    QTest::newRow("close box, apply") << QByteArray() << QByteArray("btnAlertFirst");
    QTest::newRow("close box, revert") << QByteArray() << QByteArray("btnAlertSecond");
}

void tst_PluginSettingsDelegate::closedSessionWritesNothing()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, answer);
    const auto controller = open();
    controller->showWindow();
    PrivateView *list = controller->privateView();
    auto *table = part<QTableView>(*controller, "tableView");
    const auto click = [&](const char *name) { part<QAbstractButton>(*controller, name)->click(); };
    const auto select = [&](int row) {
        table->selectRow(row);
        QCoreApplication::processEvents();
    };
    type(field(*controller, "txtTitleContent"), "Edited");
    if (answer.isNull()) {
        click(button.constData());
    } else {
        this->answer(answer.constData());
        controller->window()->close();
    }
    QVERIFY(controller->isCloseBundle());

    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    const QString outside = m_bundle->path() + QStringLiteral("/picture.png");
    put(outside, "x");
    const std::pair<const char *, std::function<void()>> steps[] = {
        {"typing",
         [&] {
             select(1);
             for (QLineEdit *edit : controller->window()->findChildren<QLineEdit *>()) {
                 type(edit, "5");
                 QTest::keyClick(edit, Qt::Key_Return);
             }
         }},
        {"slider", [&] { part<Slider>(*controller, "sldTrans")->setValue(4200); }},
        {"steppers",
         [&] {
             part<Stepper>(*controller, "stTitleFontSize")->stepUp();
             part<Stepper>(*controller, "stBodyFontSize")->stepUp();
         }},
        {"layer",
         [&] {
             click("cellBelow");
             click("cellAbove");
         }},
        {"frame",
         [&] {
             QTest::keyClick(part<PositionView>(*controller, "positionView")->objectView(), Qt::Key_Left);
         }},
        {"Default", [&] { click("btnDefault"); }},
        {"Add", [&] { click("btnAdd"); }},
        {"cell",
         [&] {
             table->edit(table->model()->index(0, 0));
             auto *editor = table->viewport()->findChild<QLineEdit *>();
             QTest::keyClicks(editor, QStringLiteral("late"));
             QTest::keyClick(editor, Qt::Key_Return);
         }},
        {"Move up",
         [&] {
             select(1);
             click("btnMoveUp");
         }},
        {"Move down",
         [&] {
             select(1);
             click("btnMoveDown");
         }},
        {"drop",
         [&] {
             const std::unique_ptr<QMimeData> rows(list->model()->mimeData({list->model()->index(0, 0)}));
             QVERIFY(table->model()->dropMimeData(rows.get(), Qt::MoveAction, 3, 0, {}));
         }},
        {"Remove",
         [&] {
             select(0);
             this->answer("btnAlertFirst");
             click("btnRemove");
         }},
        {"colour",
         [&] {
             this->answer("btnColorChoose");
             click("btnTitleFontColor");
         }},
        {"Save", [&] { click("btnSave"); }},
        {"a file for the workspace", [&] { QVERIFY(!list->saveFile2Workspace(outside)); }},
        {"what a program asks",
         [&] {
             QVERIFY(!list->onSave());
             list->commitEditing();
             controller->saveGlobalSettings();
             controller->didChangedPositionView();
             controller->onTransparency();
         }},
    };
    const auto ended = Fixtures::tree(m_bundle->workSpace());
    auto before = ended;
    QStringList writers;
    for (const auto &[name, step] : steps) {
        step();
        QCoreApplication::processEvents();
        if (Fixtures::tree(m_bundle->workSpace()) == before)
            continue;
        writers += QString::fromUtf8(name);
        put(m_bundle->inWorkSpace("linklist.xml"), ended[QStringLiteral("linklist.xml")]);
        before = Fixtures::tree(m_bundle->workSpace());
    }
    QCOMPARE(writers.join(QStringLiteral(", ")), QString());
    controller->window()->close(); // asks nothing any more
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), ended);
}

// A host may hold a close back.
class CloseStopper : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override { return event->type() == QEvent::Close; }
};

void tst_PluginSettingsDelegate::nothingIsWrittenWhileTheCloseIsHeldBack()
{
    for (const char *button : {"btnOK", "btnCancel"}) {
        const auto controller = open();
        type(field(*controller, "txtTitleContent"), "Edited");
        CloseStopper stopper;
        controller->window()->installEventFilter(&stopper);
        part<QAbstractButton>(*controller, button)->click();
        QVERIFY(!controller->isCloseBundle());
        const auto decided = Fixtures::tree(m_bundle->workSpace());
        part<QAbstractButton>(*controller, "btnAdd")->click();
        type(field(*controller, "txtLeft"), "5");
        QCOMPARE(Fixtures::tree(m_bundle->workSpace()), decided);
        controller->window()->removeEventFilter(&stopper);
        controller->window()->close();
        QVERIFY(controller->isCloseBundle());
    }
}

void tst_PluginSettingsDelegate::relativeBundlePathStaysTheSameFolder()
{
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(QFileInfo(m_bundle->path()).path()));
    const auto controller
        = Controller::initWithLanguageCode(QStringLiteral("en"), QFileInfo(m_bundle->path()).fileName());
    QVERIFY(controller);
    QVERIFY(QDir::setCurrent(previous));
    controller->setWorkSpace(m_bundle->workSpace());
    QVERIFY(controller->window());
    controller->onDefaultSetting();
    QCOMPARE(settings().first(), QByteArray("10.0"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::tabWalksTheWindowInReadingOrder()
{
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowActive(controller->window()));
    field(*controller, "txtTop")->setFocus();
    QTRY_VERIFY(field(*controller, "txtTop")->hasFocus());
    QStringList walked;
    for (int stops = 0; stops < 40; ++stops) {
        QWidget *focused = QApplication::focusWidget();
        QVERIFY(focused);
        if (stops > 0 && focused == field(*controller, "txtTop"))
            break;
        walked += focused->objectName();
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    QStringList expected
        = {QStringLiteral("txtTop"),          QStringLiteral("txtLeft"),         QStringLiteral("objectView"),
           QStringLiteral("txtRight"),        QStringLiteral("txtBottom"),       QStringLiteral("sldTrans"),
           QStringLiteral("txtTransparency"), QStringLiteral("cellAbove"),       QStringLiteral("btnSave"),
           QStringLiteral("txtTitleContent"), QStringLiteral("txtTitleFontSize")};
    QVERIFY2(walked.first(expected.size()) == expected, qPrintable(walked.join(u' ')));
    // The buttons below come after everything of the editor.
    QVERIFY(walked.indexOf(QStringLiteral("btnAdd")) > walked.indexOf(QStringLiteral("tableView")));
    QVERIFY(walked.indexOf(QStringLiteral("btnDefault")) > walked.indexOf(QStringLiteral("btnAdd")));
    QCOMPARE(walked.count(QStringLiteral("cellBelow")), 0);
    QVERIFY(walked.endsWith(QStringLiteral("btnOK")) || walked.endsWith(QStringLiteral("btnCancel")));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::missingInterfaceElementsAreHarmless()
{
    static const QRegularExpression elements(QStringLiteral("<widget class=\"\\w+\" name=\"(\\w+)\""));
    for (const char *nib : {"PluginSettingsDelegate", "PrivateView"}) {
        const QString file
            = m_bundle->resource("en.lproj/") + QString::fromUtf8(nib) + QStringLiteral(".nib");
        const QByteArray complete = get(file);
        QRegularExpressionMatchIterator matches = elements.globalMatch(QString::fromUtf8(complete));
        matches.next(); // the window or the editor itself
        while (matches.hasNext()) {
            const QByteArray name = matches.next().captured(1).toUtf8();
            QByteArray without = complete;
            without.replace("name=\"" + name + '"', "name=\"another\"");
            put(file, without.replace("<tabstop>" + name + "</tabstop>", ""));
            const auto controller = open();
            for (QLineEdit *edit : controller->window()->findChildren<QLineEdit *>())
                type(edit, "5");
            controller->onTransparency();
            controller->onDefaultSetting();
            controller->timerRepeat();
            controller->onOK();
            QVERIFY2(File::exists(m_bundle->inWorkSpace("bookPlugin.js")), name.constData());
            QVERIFY2(get(m_bundle->inWorkSpace("linklist.xml")).contains("About the author"),
                     name.constData());
            QVERIFY(File::removeAll(m_bundle->workSpace()));
        }
        put(file, complete);
    }
}

void tst_PluginSettingsDelegate::linkListFileWithoutEditorLeavesTheRest()
{
    put(m_bundle->resource("en.lproj/PrivateView.nib"),
        "<ui version=\"4.0\"><class>X</class><widget class=\"QWidget\" name=\"X\"/></ui>");
    const auto controller = open();
    QVERIFY(!controller->privateView());
    controller->onOK();
    QCOMPARE(controller->closeMode(), 1);
}

void tst_PluginSettingsDelegate::oldSettingsAreRewrittenAtTheStart()
{
    put(m_bundle->inWorkSpace("settings.dat"), "10.0\r\n20.0\r\n30.0\r\n40.0\r\n25.0\r\n2\r\nmore");
    const auto controller = open();
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), QByteArray("10.0\n20.0\n30.0\n40.0\n25.0\n2"));
    QVERIFY(get(m_bundle->inWorkSpace("config.js")).contains("\"opacity\":0.750000,\"layout\":2"));
    controller->onCancel();
    QVERIFY(get(m_bundle->inWorkSpace("settings.dat")).endsWith("more"));
}

void tst_PluginSettingsDelegate::settingsInASubFolderDoNotCount()
{
    put(m_bundle->inWorkSpace("sub/settings.dat"), "1\n1\n1\n1\n1\n1");
    put(m_bundle->inWorkSpace("defaultsettings.dat"), "7\n8\n9\n10\n11\n1");
    const auto controller = open();
    QCOMPARE(field(*controller, "txtLeft")->text(), QStringLiteral("7.0"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::rectangleFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("transparency");
    QTest::newRow("line feeds") << QByteArray("12\n1\n1\n1\n5\n1") << QStringLiteral("12.0")
                                << QStringLiteral("5.0");
    QTest::newRow("Windows line ends")
        << QByteArray("12\r\n1\r\n1\r\n1\r\n5\r\n1\r\n") << QStringLiteral("12.0") << QStringLiteral("5.0");
    QTest::newRow("five lines") << QByteArray("12\n1\n1\n1\n5") << QStringLiteral("0.0")
                                << QStringLiteral("0.0");
    QTest::newRow("12.5abc") << QByteArray("12.5abc\n1\n1\n1\nabc\n1") << QStringLiteral("12.5")
                             << QStringLiteral("0.0");
    QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF"
                                        "12\n1\n1\n1\n5\n1")
                          << QStringLiteral("12.0") << QStringLiteral("5.0");
    QTest::newRow("binary") << QByteArray("12\n\xFF\xFE\n1\n1\n5\n1") << QStringLiteral("0.0")
                            << QStringLiteral("0.0");
    QTest::newRow("nan and inf") << QByteArray("nan\n1\n1\n1\ninf\n1") << QStringLiteral("0.0")
                                 << QStringLiteral("0.0");
    QTest::newRow("empty") << QByteArray("") << QStringLiteral("0.0") << QStringLiteral("0.0");
}

void tst_PluginSettingsDelegate::rectangleFiles()
{
    QFETCH(QByteArray, content);
    put(m_bundle->inWorkSpace("settings.dat"), content);
    const auto controller = open();
    QTEST(field(*controller, "txtLeft")->text(), "left");
    QTEST(field(*controller, "txtTransparency")->text(), "transparency");
    controller->onCancel();
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), content);
}

void tst_PluginSettingsDelegate::undoRestoresDeletedAndRemovesAddedFiles()
{
    const auto controller = open();
    const auto before = Fixtures::tree(m_bundle->workSpace());
    QVERIFY(File::removeAll(m_bundle->inWorkSpace("linklist.xml")));
    put(m_bundle->inWorkSpace("added/file"), "x");
    QVERIFY(controller->undoSettings());
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
    QVERIFY(!File::exists(controller->backupSettingPath()));
}

void tst_PluginSettingsDelegate::withoutBackupFolderUndoLeavesTheWorkspace()
{
    auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
    QVERIFY(controller->clearBackupSettings());
    controller->setBackupSettingPath(QStringLiteral("/proc/no/backup"));
    controller->setWorkSpace(m_bundle->workSpace());
    QVERIFY(controller->window());
    type(field(*controller, "txtLeft"), "55");
    QVERIFY(!controller->saveInitialSettings());
    controller->onCancel();
    QCOMPARE(settings().first(), QByteArray("55.0"));
}

void tst_PluginSettingsDelegate::previewPageFollowsTheBundles()
{
    put(m_bundle->inWorkSpace("index.html"), "an old page");
    const auto controller = open();
    controller->saveGlobalSettings();
    QCOMPARE(get(m_bundle->inWorkSpace("index.html")), get(m_bundle->resource("html/index.html")));
    QVERIFY(File::removeAll(m_bundle->inWorkSpace("index.html")));
    controller->saveGlobalSettings();
    QCOMPARE(get(m_bundle->inWorkSpace("index.html")), get(m_bundle->resource("html/index.html")));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::bundleWithoutPageLeavesTheWorkspacesPage()
{
    QVERIFY(File::removeAll(m_bundle->resource("html/index.html")));
    put(m_bundle->inWorkSpace("index.html"), "my own page");
    const auto controller = open();
    controller->saveGlobalSettings();
    QCOMPARE(get(m_bundle->inWorkSpace("index.html")), QByteArray("my own page"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::missingWorkspaceMarksThePreviewStaleAndWritesNothing()
{
    const auto controller = open();
    controller->timerRepeat();
    QVERIFY(!controller->isChange());
    QVERIFY(File::removeAll(m_bundle->workSpace()));
    controller->saveGlobalSettings();
    QVERIFY(controller->isChange());
    QVERIFY(!File::exists(m_bundle->workSpace()));
    controller->onOK();
    QVERIFY(!File::exists(m_bundle->workSpace()));
}

void tst_PluginSettingsDelegate::unusableWorkspaces_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("relative") << QStringLiteral("some/where");
    QTest::newRow("a file") << QStringLiteral("FILE");
    QTest::newRow("below a file") << QStringLiteral("FILE/below");
    QTest::newRow("nowhere") << QStringLiteral("/proc/nothing/here");
}

void tst_PluginSettingsDelegate::unusableWorkspaces()
{
    QFETCH(QString, path);
    const QTemporaryDir folder;
    put(folder.filePath(QStringLiteral("file")), "mine");
    path.replace(QStringLiteral("FILE"), folder.filePath(QStringLiteral("file")));
    const QTemporaryDir current;
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(current.path()));
    for (const bool isApplied : {true, false}) {
        const auto controller = Controller::initWithLanguageCode(QStringLiteral("en"), m_bundle->path());
        controller->setWorkSpace(path);
        QVERIFY(controller->window());
        type(field(*controller, "txtLeft"), "1");
        type(field(*controller, "txtTitleContent"), "x");
        controller->onDefaultSetting();
        isApplied ? controller->onOK() : controller->onCancel();
        QVERIFY(controller->isCloseBundle());
        QVERIFY(!File::exists(controller->backupSettingPath()));
    }
    QVERIFY(QDir::setCurrent(previous));
    QVERIFY(File::subpaths(current.path()).isEmpty());
    QCOMPARE(get(folder.filePath(QStringLiteral("file"))), QByteArray("mine"));
}

void tst_PluginSettingsDelegate::defaultButtonLoadsTheBundlesDefaults()
{
    put(m_bundle->inWorkSpace("settings.dat"), "1\n1\n1\n1\n50\n0");
    const auto controller = open();
    type(field(*controller, "txtTitleContent"), "Stays");
    part<QAbstractButton>(*controller, "btnDefault")->click();
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), get(m_bundle->resource("data/defaultsettings.dat")));
    QCOMPARE(field(*controller, "txtLeft")->text(), QStringLiteral("10.0"));
    QCOMPARE(part<Slider>(*controller, "sldTrans")->doubleValue(), 0.0);
    QCOMPARE(part<Matrix>(*controller, "matLayer")->selectedTag(), 1);
    QVERIFY(controller->isChange());
    QVERIFY(get(m_bundle->inWorkSpace("linklist.xml")).contains("Stays"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::defaultButtonTakesTheBundlesFileBeforeTheWorkspaces()
{
    put(m_bundle->inWorkSpace("settings.dat"), "1\n1\n1\n1\n50\n0");
    put(m_bundle->inWorkSpace("defaultsettings.dat"), "3\n4\n5\n6\n7\n0");
    const auto controller = open();
    auto *button = part<QAbstractButton>(*controller, "btnDefault");
    button->click();
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), get(m_bundle->resource("data/defaultsettings.dat")));
    QVERIFY(File::removeAll(m_bundle->resource("data/defaultsettings.dat")));
    button->click();
    QCOMPARE(settings(), (QByteArrayList{"3.0", "4.0", "5.0", "6.0", "7.0", "0"}));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::defaultButtonWithoutAnyFileSaysSo()
{
    const auto controller = open();
    QVERIFY(File::removeAll(m_bundle->resource("data/defaultsettings.dat")));
    QVERIFY(File::removeAll(m_bundle->inWorkSpace("defaultsettings.dat")));
    const auto before = Fixtures::tree(m_bundle->workSpace());
    controller->timerRepeat();

    QTemporaryFile output;
    QVERIFY(output.open());
    std::fflush(stdout);
    const int standardOutput = dup(STDOUT_FILENO);
    dup2(output.handle(), STDOUT_FILENO);
    controller->onDefaultSetting();
    std::fflush(stdout);
    dup2(standardOutput, STDOUT_FILENO);
    ::close(standardOutput);

    QCOMPARE(get(output.fileName()), QByteArray("defaultsettings.dat not found!\n"));
    QCOMPARE(Fixtures::tree(m_bundle->workSpace()), before);
    QVERIFY(!controller->isChange());
    controller->onCancel();
}

void tst_PluginSettingsDelegate::typedLetterIsRemoved()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "12a");
    QCOMPARE(field(*controller, "txtLeft")->text(), QStringLiteral("12"));
    QCOMPARE(controller->ptRect().left(), 12.0);
    QCOMPARE(settings().first(), QByteArray("12.0"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::typedSecondPointIsRemoved()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "1.2.");
    QCOMPARE(field(*controller, "txtLeft")->text(), QStringLiteral("1.2"));
    QCOMPARE(controller->ptRect().left(), double(1.2F));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::typedMinusIsRemovedAndPastedTextKeptButItsEnd()
{
    const auto controller = open();
    QLineEdit *left = field(*controller, "txtLeft");
    type(left, "-");
    QCOMPARE(left->text(), QString());
    left->selectAll();
    left->insert(QStringLiteral("-150.5x"));
    QCOMPARE(left->text(), QStringLiteral("-150.5"));
    QCOMPARE(controller->ptRect().left(), -150.5);
    left->selectAll();
    left->insert(QStringLiteral("a1"));
    QCOMPARE(left->text(), QStringLiteral("a1"));
    QCOMPARE(controller->ptRect().left(), 0.0);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::clearedFieldCountsAsZero()
{
    const auto controller = open();
    QLineEdit *top = field(*controller, "txtTop");
    top->selectAll();
    QTest::keyClick(top, Qt::Key_Backspace);
    QCOMPARE(top->text(), QString());
    QCOMPARE(controller->ptRect().top(), 0.0);
    QCOMPARE(settings().value(1), QByteArray("0.0"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::correctionKeepsTheCaret()
{
    const auto controller = open();
    QLineEdit *left = field(*controller, "txtLeft");
    left->setText(QStringLiteral("123x"));
    QCOMPARE(left->text(), QStringLiteral("123"));
    left->setCursorPosition(1);
    QTest::keyClicks(left, QStringLiteral("7"));
    QCOMPARE(left->text(), QStringLiteral("1723"));
    QCOMPARE(left->cursorPosition(), 2);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::eachFieldChangesItsOwnMargin()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "1");
    type(field(*controller, "txtTop"), "2");
    type(field(*controller, "txtRight"), "3");
    type(field(*controller, "txtBottom"), "4");
    QCOMPARE(settings(), (QByteArrayList{"1.0", "2.0", "3.0", "4.0", "0.0", "1"}));
    controller->controlTextDidChange(part<QLineEdit>(*controller, "txtTitleContent"));
    controller->controlTextDidChange(nullptr);
    QCOMPARE(settings(), (QByteArrayList{"1.0", "2.0", "3.0", "4.0", "0.0", "1"}));
    const QByteArray config = get(m_bundle->inWorkSpace("config.js"));
    QVERIFY2(config.contains("\"left\":\"1.0%\",\"top\":\"2.0%\",\"width\":\"96.0%\",\"height\":\"94.0%\""),
             config);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::typedTransparencyMovesTheSlider()
{
    const auto controller = open();
    type(field(*controller, "txtTransparency"), "50");
    QCOMPARE(part<Slider>(*controller, "sldTrans")->doubleValue(), 50.0);
    QCOMPARE(settings().value(4), QByteArray("50.0"));
    QVERIFY(get(m_bundle->inWorkSpace("config.js")).contains("\"opacity\":0.500000"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::movedSliderShowsOneDecimalAndStoresSinglePrecision()
{
    const auto controller = open();
    auto *slider = part<Slider>(*controller, "sldTrans");
    slider->setValue(3725); // in hundredths
    QCOMPARE(field(*controller, "txtTransparency")->text(), QStringLiteral("37.2"));
    QCOMPARE(controller->ptRect().transparency(), 37.25);
    slider->setValue(3333);
    QCOMPARE(controller->ptRect().transparency(), double(33.33F));
    QCOMPARE(settings().value(4), QByteArray("33.3"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::layerClickWaitsForTheNextSave()
{
    const auto controller = open();
    type(field(*controller, "txtLeft"), "9");
    QCOMPARE(settings().value(5), QByteArray("1"));
    part<QAbstractButton>(*controller, "cellBelow")->click();
    QCOMPARE(settings().value(5), QByteArray("1"));
    type(field(*controller, "txtLeft"), "8");
    QCOMPARE(settings().value(5), QByteArray("0"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::layerWithoutACellIsKept()
{
    put(m_bundle->inWorkSpace("settings.dat"), "1\n1\n1\n1\n1\n9223372036854775807");
    const auto controller = open();
    QCOMPARE(part<Matrix>(*controller, "matLayer")->selectedTag(), std::nullopt);
    type(field(*controller, "txtLeft"), "8");
    QCOMPARE(settings().value(5), QByteArray("9223372036854775807"));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::layerClickedLastIsPublished()
{
    for (const char *cell : {"cellBelow", "cellAbove"}) {
        const auto controller = open();
        const QByteArray layer = part<QWidget>(*controller, cell)->property("tag").toByteArray();
        QVERIFY(settings().value(5) != layer);
        part<QAbstractButton>(*controller, cell)->click();
        part<QAbstractButton>(*controller, "btnOK")->click();
        QCOMPARE(settings().value(5), layer);
        const QByteArray script = published();
        QVERIFY2(script.contains("\"layout\":" + layer), script.constData());
    }
}

void tst_PluginSettingsDelegate::transparencyAndLayerOutliveADrag_data()
{
    QTest::addColumn<bool>("isTyped");
    QTest::newRow("typed") << true;
    QTest::newRow("slider") << false;
}

void tst_PluginSettingsDelegate::transparencyAndLayerOutliveADrag()
{
    QFETCH(bool, isTyped);
    put(m_bundle->inWorkSpace("settings.dat"), "10\n20\n60\n30\n5\n9223372036854775807");
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    if (isTyped)
        type(field(*controller, "txtTransparency"), "40");
    else
        part<Slider>(*controller, "sldTrans")->setValue(4000); // in hundredths
    auto *view = part<PositionView>(*controller, "positionView");
    QWindow *window = controller->window()->windowHandle();
    const QPoint start = view->mapTo(controller->window(), view->objectView()->geometry().center());
    QTest::mousePress(window, Qt::LeftButton, {}, start);
    QTest::mouseMove(window, start + QPoint(20, 0));
    QTest::mouseRelease(window, Qt::LeftButton, {}, start + QPoint(20, 0));
    QVERIFY(settings().first().toDouble() > 10);
    QCOMPARE(settings().value(4), QByteArray("40.0"));
    QCOMPARE(settings().value(5), QByteArray("9223372036854775807"));
    QCOMPARE(part<Slider>(*controller, "sldTrans")->doubleValue(), 40.0);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::loadedTransparencyIsShownAndKept()
{
    const QByteArray stored = "10.0\n20.0\n60.0\n30.0\n33.3\n1";
    put(m_bundle->inWorkSpace("settings.dat"), stored);
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    QVERIFY(part<Slider>(*controller, "sldTrans")->doubleValue() == double(33.3F));
    QVERIFY(controller->ptRect().transparency() == double(33.3F));
    QCOMPARE(field(*controller, "txtTransparency")->text(), QStringLiteral("33.3"));
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), stored);
    controller->saveGlobalSettings();
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), stored);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::dragOfAHundredStepsSavesOnceAndTheFieldsFollowLive()
{
    put(m_bundle->inWorkSpace("settings.dat"), "10\n20\n60\n30\n0\n1");
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    auto *view = part<PositionView>(*controller, "positionView");
    QWindow *window = controller->window()->windowHandle();
    const QPoint start = view->mapTo(controller->window(), view->objectView()->geometry().center());
    const QByteArray before = get(m_bundle->inWorkSpace("settings.dat"));

    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    QVERIFY(inotify_add_watch(watch, qPrintable(m_bundle->workSpace()), IN_CREATE | IN_MOVED_TO) >= 0);
    QTest::mousePress(window, Qt::LeftButton, {}, start);
    for (int step = 1; step <= 100; ++step) {
        QTest::mouseMove(window, start + QPoint(step / 2, step % 10));
        const PositionRect &rect = view->getPositionRect();
        QVERIFY(controller->ptRect() == rect);
        QCOMPARE(field(*controller, "txtLeft")->text(), QString::asprintf("%.1f", rect.left()));
        QCOMPARE(field(*controller, "txtTop")->text(), QString::asprintf("%.1f", rect.top()));
        QCOMPARE(field(*controller, "txtRight")->text(), QString::asprintf("%.1f", rect.right()));
        QCOMPARE(field(*controller, "txtBottom")->text(), QString::asprintf("%.1f", rect.bottom()));
    }
    QCOMPARE(get(m_bundle->inWorkSpace("settings.dat")), before);
    QTest::mouseRelease(window, Qt::LeftButton, {}, start + QPoint(50, 0));

    int writes = 0;
    alignas(inotify_event) char events[16384];
    const ssize_t length = read(watch, events, sizeof events);
    for (ssize_t at = 0; at < length;) {
        const auto *event = reinterpret_cast<const inotify_event *>(events + at);
        writes += event->len > 0 && qstrcmp(event->name, "settings.dat") == 0;
        at += ssize_t(sizeof(inotify_event)) + event->len;
    }
    close(watch);
    QCOMPARE(writes, 1);
    QCOMPARE(settings().value(0), field(*controller, "txtLeft")->text().toLatin1());
    QVERIFY(settings().value(0).toDouble() > 20);
    QVERIFY(get(m_bundle->inWorkSpace("config.js")).contains("\"left\":\"" + settings().value(0) + "%\""));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::typingMovesTheFrameToTheLastDecimal()
{
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    const auto *view = part<PositionView>(*controller, "positionView");
    type(field(*controller, "txtLeft"), "33.3");
    type(field(*controller, "txtBottom"), "0.125");
    type(field(*controller, "txtTop"), "1");
    type(field(*controller, "txtRight"), "7.7");
    const QRectF frame = view->objectView()->frameRect();
    QVERIFY(frame.x() == double(33.3F) * view->width() / 100);
    QVERIFY(frame.y() == 0.125 * view->height() / 100);
    QVERIFY(frame.width() == (100 - double(33.3F) - double(7.7F)) * view->width() / 100);
    QVERIFY(frame.height() == (100 - 1 - 0.125) * view->height() / 100);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::defaultButtonMovesTheFrame()
{
    put(m_bundle->inWorkSpace("settings.dat"), "1\n1\n1\n1\n50\n0");
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    auto *view = part<PositionView>(*controller, "positionView");
    QCOMPARE(view->objectView()->frameRect().x(), view->width() / 100.0);
    part<QAbstractButton>(*controller, "btnDefault")->click();
    PositionRect defaults;
    defaults.setLeft(10);
    defaults.setTop(26);
    defaults.setRight(60);
    defaults.setBottom(26);
    defaults.setLayer(1);
    QVERIFY(view->getPositionRect() == defaults);
    QCOMPARE(view->objectView()->frameRect(), PositionRect::getObjectFrameWith(defaults, view->size()));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::damagedSettingsStayEditableAndValid_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no numbers") << QByteArray("nan\ninf\n-inf\nnan\nnan\nnan");
    QTest::newRow("huge") << QByteArray("1e999\n1e999\n1e999\n1e999\n1e999\n1e999");
    QTest::newRow("huge outward") << QByteArray("-1e999\n-1e999\n-1e999\n-1e999\n-1e999\n-9e999");
    QTest::newRow("far off") << QByteArray("1e9\n-1e9\n-2e9\n2e9\n7\n1");
    QTest::newRow("no area") << QByteArray("60\n60\n60\n60\n7\n1");
    QTest::newRow("noise") << QByteArray("\x01\n\x02\n;\n'\n\"\n\n");
}

void tst_PluginSettingsDelegate::damagedSettingsStayEditableAndValid()
{
    QFETCH(QByteArray, content);
    static const QRegularExpression sixLines(QStringLiteral("^(-?[0-9]+\\.[0-9]\n){5}-?[0-9]+\\z"));
    put(m_bundle->inWorkSpace("settings.dat"), content);
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    controller->window()->grab();
    for (const char *text : {"abc", "1.2.3", "..", "-", "999999999999999999999999999999999999999999", "5"}) {
        type(field(*controller, "txtLeft"), text);
        const QString written = QString::fromLatin1(get(m_bundle->inWorkSpace("settings.dat")));
        QVERIFY2(sixLines.match(written).hasMatch(), qPrintable(written));
    }
    controller->window()->grab();
    QTest::keyClick(part<PositionView>(*controller, "positionView")->objectView(), Qt::Key_Left);
    const QString written = QString::fromLatin1(get(m_bundle->inWorkSpace("settings.dat")));
    QVERIFY2(sixLines.match(written).hasMatch(), qPrintable(written));
    controller->onCancel();
}

void tst_PluginSettingsDelegate::frameComesBetweenTheMarginsInTheTabOrder()
{
    const auto controller = open();
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    QStringList names;
    QWidget *first = field(*controller, "txtTop");
    QWidget *at = first;
    do {
        if (at->isVisible() && at->focusPolicy() & Qt::TabFocus)
            names += at->objectName();
        at = at->nextInFocusChain();
    } while (at != first);
    const QStringList expected
        = {QStringLiteral("txtTop"),         QStringLiteral("txtLeft"),   QStringLiteral("objectView"),
           QStringLiteral("txtRight"),       QStringLiteral("txtBottom"), QStringLiteral("sldTrans"),
           QStringLiteral("txtTransparency")};
    QCOMPARE(names.mid(0, expected.size()), expected);
    controller->onCancel();
}

void tst_PluginSettingsDelegate::marginsStandAroundThePageInRightToLeftWindows_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QString>("interfaceFile");
    const QByteArray arabic = "Left = \"يسار\"; Right = \"يمين\"; Top = \"أعلى\"; Bottom = \"أسفل\"; "
                              "Position = \"الموضع\"; Transparency = \"الشفافية\"; Layer = \"الطبقة\";";
    const QByteArray hebrew = "Left = \"שמאל\"; Right = \"ימין\"; Top = \"למעלה\"; Bottom = \"למטה\";";
    const QDir resources(QStringLiteral(LINKLIST_BUNDLE_DIR "/Contents/Resources"));
    const QStringList folders = resources.entryList({QStringLiteral("*.lproj")}, QDir::Dirs);
    for (const QString &folder : folders) {
        const QString file = resources.filePath(folder + QStringLiteral("/PluginSettingsDelegate.nib"));
        if (!QFileInfo::exists(file))
            continue;
        const QByteArray name = folder.toUtf8();
        QTest::newRow("Arabic, " + name) << QStringLiteral("ar") << arabic << file;
        QTest::newRow("Hebrew, " + name) << QStringLiteral("he") << hebrew << file;
    }
}

void tst_PluginSettingsDelegate::marginsStandAroundThePageInRightToLeftWindows()
{
    QFETCH(QString, language);
    QFETCH(QByteArray, table);
    QFETCH(QString, interfaceFile);
    const QByteArray folder = language.toUtf8() + ".lproj/";
    put(m_bundle->resource(folder + "PluginLocale.strings"), table);
    put(m_bundle->resource(folder + "PluginSettingsDelegate.nib"),
        get(interfaceFile).replace("class=\"WebView\"", "class=\"QFrame\""));
    const auto controller = Controller::initWithLanguageCode(language, m_bundle->path());
    controller->setWorkSpace(m_bundle->workSpace());
    QVERIFY(controller->window());
    controller->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
    const auto place = [&](const char *name) {
        const auto *widget = part<QWidget>(*controller, name);
        return QRect(widget->mapTo(controller->window(), QPoint()), widget->size());
    };
    const QRect page = place("positionView");
    QVERIFY(place("txtLeft").right() < page.left());
    QVERIFY(place("txtRight").left() > page.right());
    QVERIFY(place("txtTop").bottom() < page.top());
    QVERIFY(place("txtBottom").top() > page.bottom());
    for (const QByteArray side : {"Left", "Top", "Right", "Bottom"}) {
        const QRect margin = place("txt" + side);
        QVERIFY2(place("lbl" + side).right() < margin.left(), side.constData());
        QVERIFY2(place("unit" + side).left() > margin.right(), side.constData());
    }
    // All else follows the language.
    QVERIFY(place("lblTransparency").left() > place("txtTransparency").right());
    QVERIFY(place("previewPanel").right() < place("positionPanel").left());
    controller->onCancel();
}

LINKLIST_GUI_TEST_MAIN(tst_PluginSettingsDelegate)
#include "tst_PluginSettingsDelegate.moc"
