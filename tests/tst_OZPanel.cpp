#include "Classes/Mode/Locale.h"
#include "Classes/Mode/OZPanel.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QThread>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <semaphore>
#include <thread>
#include <unistd.h>

namespace
{
// The standard's, which the thread sanitizer understands.
using Semaphore = std::counting_semaphore<>;
constexpr std::chrono::seconds patience{20}; // never spent when all is well

// What an owner was told, by which of its functions and on which thread.
struct Told {
    QString function;
    PanelResult panel;
    Qt::HANDLE thread = nullptr;
};

class Record
{
public:
    void add(const char *function, const PanelResult &panel)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_told.append({QString::fromLatin1(function), panel, QThread::currentThreadId()});
        }
        arrived.release();
        leave.acquire();
    }
    QList<Told> told()
    {
        const std::lock_guard lock(m_mutex);
        return m_told;
    }

    Semaphore arrived{0};
    Semaphore leave{0};
    // How often the owner was asked for its scope, which comes before every call, also before one that a
    // closing scope would keep back.
    int asked = 0;

private:
    std::mutex m_mutex;
    QList<Told> m_told;
};

class Owner : public WindowController, public OpenPanelReceiver, public SavePanelReceiver
{
    Q_OBJECT

public:
    void endOpenPanel(const PanelResult &panel) override { record.add("endOpenPanel", panel); }
    void endSavePanel(const PanelResult &panel) override { record.add("endSavePanel", panel); }
    AsyncScope &asyncScope() override
    {
        ++record.asked;
        return m_scope;
    }

    Record record;

private:
    AsyncScope m_scope;
};

class OwnerOfOpenPanels : public WindowController, public OpenPanelReceiver
{
    Q_OBJECT

public:
    void endOpenPanel(const PanelResult &panel) override { record.add("endOpenPanel", panel); }
    AsyncScope &asyncScope() override
    {
        ++record.asked;
        return m_scope;
    }

    Record record;

private:
    AsyncScope m_scope;
};

class OwnerOfSavePanels : public WindowController, public SavePanelReceiver
{
    Q_OBJECT

public:
    void endSavePanel(const PanelResult &panel) override { record.add("endSavePanel", panel); }
    AsyncScope &asyncScope() override
    {
        ++record.asked;
        return m_scope;
    }

    Record record;

private:
    AsyncScope m_scope;
};

// Whether a call is to tell of this result, or has told of it: the call carries a copy, the record keeps one.
bool isToldOf(const PanelResult &result)
{
    return !result.paths.isDetached();
}

const QByteArray plainWindow = "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"root\"/></ui>";

// What a function writes to standard error.
QByteArray standardError(const std::function<void()> &write)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    std::fflush(stderr);
    const int before = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    write();
    std::fflush(stderr);
    dup2(before, STDERR_FILENO);
    close(before);
    file.seek(0);
    return file.readAll();
}

// Showing a panel starts a thread of Qt's that lists folders. Qt is built without the thread sanitizer, which
// cannot follow it: there, only what shows no panel runs. That is all that has to do with threads of ours.
bool runsHere(const char *function)
{
#ifdef __SANITIZE_THREAD__
    static const QList<QByteArray> withoutAPanel{
        "startsWithoutTypesAndAsASavePanel", "saveOwnerWithoutEndOpenPanelIsNotTold",
        "openOwnerIsNotToldOfASavePanel",    "endPanelSelectorIsCalledInstead",
        "everyCodeButZeroIsAConfirmation",   "eachCompletedPanelHasAThreadOfItsOwn",
        "threadThatCannotStartIsDropped",    "wrapperThatGoesBeforeItsPanelShowsNone",
        "wrapperMayGoWhileItsOwnerIsTold",   "ownerThatGoesIsNotTold",
        "ownerThatIsNoReceiverIsNotTold",
    };
    return withoutAPanel.contains(function);
#else
    return function;
#endif
}
} // namespace

class tst_OZPanel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void startsWithoutTypesAndAsASavePanel();
    void typesAreReplacedAddedAndRemoved();
    void propertiesAreKept();
    void runModelShowsThePanelLater();
    void runModelMayBeCalledFromAnyThread();
    void panelIsASheetOfTheOwnersWindow();
    void panelWithoutAnOwnerStillShows();
    void textsAreShownWhereTheyAreGiven();
    void messageIsPlainText();
    void emptyTypeListLeavesTheTypesUnrestricted();
    void otherTypesAreRefusedUnlessAllowed_data();
    void otherTypesAreRefusedUnlessAllowed();
    void typesAreComparedWithoutRegardToCase();
    void typesAreOfferedAsFilters();
    void existingDirectoryIsWhereThePanelStarts();
    void directoryThatDoesNotExistStartsOnTheDesktop_data();
    void directoryThatDoesNotExistStartsOnTheDesktop();
    void withoutADesktopThePanelStartsAtHome();
    void fileAsDirectoryStartsBesideIt();
    void proposedNameIsSelected();

    void openPanelTellsWhatWasChosen();
    void filesCanBeChosenEvenWhereCanChooseFilesIsFalse();
    void severalFilesOnlyWhereAllowed();
    void foldersOnlyWhereAllowed();
    void filesAndFoldersTogether();
    void folderThatIsShownIsChosenWithoutASelection();
    void folderThatIsEnteredIsChosenWithoutASelection();
    void computerIsNoChoice();
    void whatDoesNotExistCannotBeOpened();
    void savePanelTellsTheNewName();
    void nameGetsTheFirstType_data();
    void nameGetsTheFirstType();
    void folderNameInASavePanelIsEntered();
    void nameWithoutAFileIsNotTold_data();
    void nameWithoutAFileIsNotTold();
    void nameCountsMoreThanASelectedFile();
    void existingFileIsReplacedOnlyAfterAQuestion();
    void whateverGoesTakesTheQuestionAlong_data();
    void whateverGoesTakesTheQuestionAlong();
    void panelsOfferNothingThatWaitsInThem();
    void newFoldersMayBeMade();

    void saveOwnerWithoutEndOpenPanelIsNotTold();
    void openOwnerIsNotToldOfASavePanel();
    void endPanelSelectorIsCalledInstead();
    void selectorNeedsNoReceiverFunctions();
    void ownerThatIsNoReceiverIsNotTold();
    void cancellingTellsNothing_data();
    void cancellingTellsNothing();
    void everyCodeButZeroIsAConfirmation();
    void panelItselfIsConfirmedByOneOnly();
    void eachCompletedPanelHasAThreadOfItsOwn();
    void onePanelObjectRunsSeveralTimes();
    void threadThatCannotStartIsDropped();

    void wrapperThatGoesBeforeItsPanelShowsNone();
    void wrapperThatGoesClosesItsPanel();
    void wrapperMayGoWhileItsOwnerIsTold();
    void ownerThatGoesClosesThePanel();
    void ownerThatGoesIsNotTold();
    void windowThatIsClosedCancelsThePanel();
    void windowThatGoesClosesThePanel();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }

    template <typename T = Owner>
    std::unique_ptr<T> makeOwner() const
    {
        auto owner = std::make_unique<T>();
        if (!owner->initWithResourceNibName(QStringLiteral("N")))
            qFatal("no interface file");
        owner->showWindow();
        return owner;
    }

    // The panel on show, null for none.
    static QFileDialog *shown()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows) {
            if (window->isVisible() && qobject_cast<QFileDialog *>(window))
                return static_cast<QFileDialog *>(window);
        }
        return nullptr;
    }
    QFileDialog *open(OZPanel &panel) const
    {
        if (panel.directory().isNull())
            panel.setDirectory(m_folder->path());
        panel.startOpenPanel();
        return shown();
    }
    QFileDialog *save(OZPanel &panel) const
    {
        if (panel.directory().isNull())
            panel.setDirectory(m_folder->path());
        panel.startSavePanel();
        return shown();
    }
    static QPushButton *confirm(const QFileDialog *dialog)
    {
        const auto *box = dialog->findChild<QDialogButtonBox *>();
        return box->button(dialog->acceptMode() == QFileDialog::AcceptOpen ? QDialogButtonBox::Open
                                                                           : QDialogButtonBox::Save);
    }
    static QLineEdit *nameField(const QFileDialog *dialog)
    {
        return dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    }
    // A file's or folder's place in the list, invalid as long as it has none.
    static QModelIndex row(const QFileDialog *dialog, const char *name)
    {
        const auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
        const QAbstractItemModel *model = list->model();
        const auto found = model->match(model->index(0, 0, list->rootIndex()), Qt::DisplayRole,
                                        QString::fromUtf8(name), 1, Qt::MatchExactly);
        return found.isEmpty() ? QModelIndex() : found.constFirst();
    }
    // Types a name; what was selected in the list follows only while the field has the focus.
    static void type(QFileDialog *dialog, const QString &name)
    {
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        nameField(dialog)->setFocus();
        QVERIFY(nameField(dialog)->hasFocus());
        nameField(dialog)->setText(name); // without its list of completions, which grabs the keyboard
        QCOMPARE(nameField(dialog)->text(), name);
    }
    // Types a name and presses the confirm button; false when the button cannot be pressed.
    static bool choose(QFileDialog *dialog, const QString &name)
    {
        type(dialog, name);
        if (!confirm(dialog)->isEnabled())
            return false;
        QTest::mouseClick(confirm(dialog), Qt::LeftButton);
        return true;
    }
    // What the owner is told next.
    static Told next(Record &record)
    {
        record.leave.release();
        return record.arrived.try_acquire_for(patience) ? record.told().constLast() : Told();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_OZPanel::initTestCase()
{
    // Where the toolkit keeps what its panels remember.
    static const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
}

void tst_OZPanel::init()
{
    TestCase::init();
    if (!runsHere(QTest::currentTestFunction()))
        QSKIP("shows a panel");
    m_folder = std::make_unique<QTemporaryDir>();
    Fixtures::put(at("bundle/N.nib"), plainWindow);
    Fixtures::put(at("a.jpg"), "a");
    Fixtures::put(at("b.PNG"), "b");
    Fixtures::put(at("c.txt"), "c");
    Fixtures::put(at("sub/d.jpg"), "d");
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("home/Desktop")));
    qputenv("HOME", at("home").toUtf8());
    setDefaultBundlePath(at("bundle"));
}

void tst_OZPanel::cleanup()
{
    // Those that were closed go when their events are handled.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete shown();
    resetLocaleForTesting();
}

void tst_OZPanel::startsWithoutTypesAndAsASavePanel()
{
    const OZPanel panel;
    QVERIFY(panel.types().isEmpty());
    QVERIFY(panel.panelTypes().isEmpty());
    QVERIFY(!panel.isOpenPanel() && !panel.canChooseFiles() && !panel.canChooseDirectories());
    QVERIFY(!panel.allowsMultipleSelection() && !panel.allowsOtherFileTypes());
    QVERIFY(panel.title().isNull() && panel.prompt().isNull() && panel.nameFieldLabel().isNull());
    QVERIFY(panel.message().isNull() && panel.directory().isNull() && panel.nameFieldStringValue().isNull());
    QVERIFY(!panel.ower() && !panel.endPanelSelector());
}

void tst_OZPanel::typesAreReplacedAddedAndRemoved()
{
    OZPanel panel;
    QStringList types{QStringLiteral("jpg")};
    panel.setTypes(types);
    types.append(QStringLiteral("later"));
    QCOMPARE(panel.types(), QStringList{QStringLiteral("jpg")});
    panel.addType(QStringLiteral("png"));
    panel.addType(QStringLiteral("jpg"));
    QCOMPARE(panel.panelTypes().size(), 3);
    panel.removeType(QStringLiteral("jpg"));
    QCOMPARE(panel.types(), QStringList{QStringLiteral("png")});
    panel.removeType(QStringLiteral("none"));
    panel.setPanelTypes({QStringLiteral("gif")});
    QCOMPARE(panel.types(), QStringList{QStringLiteral("gif")});
}

void tst_OZPanel::propertiesAreKept()
{
    OZPanel panel;
    WindowController owner;
    panel.setTitle(QStringLiteral("t"));
    panel.setPrompt(QStringLiteral("p"));
    panel.setNameFieldLabel(QStringLiteral("l"));
    panel.setMessage(QStringLiteral("m"));
    panel.setDirectory(QStringLiteral("d"));
    panel.setNameFieldStringValue(QStringLiteral("n"));
    QCOMPARE(panel.title() + panel.prompt() + panel.nameFieldLabel() + panel.message() + panel.directory()
                 + panel.nameFieldStringValue(),
             QStringLiteral("tplmdn"));
    panel.setOwer(&owner);
    QCOMPARE(panel.ower(), &owner);
    panel.setIsOpenPanel(true);
    QVERIFY(panel.isOpenPanel());
    panel.setCanChooseFiles(true);
    QVERIFY(panel.canChooseFiles());
    panel.setCanChooseDirectories(true);
    QVERIFY(panel.canChooseDirectories());
    panel.setAllowsMultipleSelection(true);
    QVERIFY(panel.allowsMultipleSelection());
    panel.setAllowsOtherFileTypes(true);
    QVERIFY(panel.allowsOtherFileTypes());
    panel.setEndPanelSelector([](const PanelResult &) {});
    QVERIFY(panel.endPanelSelector());
}

void tst_OZPanel::runModelShowsThePanelLater()
{
    for (const bool isOpenPanel : {true, false}) {
        OZPanel panel;
        panel.setIsOpenPanel(isOpenPanel);
        panel.runModel();
        QVERIFY(!shown());
        QCoreApplication::processEvents();
        QVERIFY(shown());
        QCOMPARE(shown()->acceptMode(), isOpenPanel ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    }
}

void tst_OZPanel::runModelMayBeCalledFromAnyThread()
{
    OZPanel panel;
    panel.setIsOpenPanel(true);
    std::thread other([&panel] { panel.runModel(); });
    other.join();
    QVERIFY(!shown());
    QCoreApplication::processEvents();
    QVERIFY(shown());
    QCOMPARE(shown()->thread(), QThread::currentThread());
}

void tst_OZPanel::panelIsASheetOfTheOwnersWindow()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        QVERIFY(dialog);
        QCOMPARE(dialog->parentWidget(), owner->window());
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QVERIFY(dialog->testOption(QFileDialog::DontUseNativeDialog));
        dialog->reject();
    }
}

void tst_OZPanel::panelWithoutAnOwnerStillShows()
{
    OZPanel panel;
    QFileDialog *dialog = open(panel);
    QVERIFY(dialog && !dialog->parentWidget());
    QVERIFY(choose(dialog, QStringLiteral("a.jpg")));
    QVERIFY(!shown());
}

void tst_OZPanel::textsAreShownWhereTheyAreGiven()
{
    OZPanel panel;
    const QFileDialog *plain = open(panel);
    const QString ownTitle = plain->windowTitle();
    const QString ownPrompt = confirm(plain)->text();
    const QString ownLabel = plain->labelText(QFileDialog::FileName);
    QVERIFY(!ownTitle.isEmpty() && !ownPrompt.isEmpty() && !ownLabel.isEmpty());
    QVERIFY(!plain->findChild<QLabel *>(QStringLiteral("lblMessage")));
    delete plain;

    panel.setTitle(QStringLiteral("Pick a picture"));
    panel.setPrompt(QStringLiteral("Pick"));
    panel.setNameFieldLabel(QStringLiteral("Picture:"));
    panel.setMessage(QStringLiteral("It is shown on the cover."));
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        QVERIFY(dialog->windowTitle() == panel.title());
        QCOMPARE(confirm(dialog)->text(), panel.prompt());
        QCOMPARE(dialog->findChild<QLabel *>(QStringLiteral("fileNameLabel"))->text(),
                 panel.nameFieldLabel());
        const auto *message = dialog->findChild<QLabel *>(QStringLiteral("lblMessage"));
        QVERIFY(message && message->isVisible());
        QCOMPARE(message->text(), panel.message());
        QVERIFY(message->geometry().top() <= 0);
        QVERIFY(message->height() >= message->fontMetrics().height());
        QVERIFY(message->geometry().bottom() < nameField(dialog)->geometry().top());
        dialog->reject();
    }
    // An empty text is a text.
    panel.setTitle(QStringLiteral(""));
    QVERIFY(open(panel)->windowTitle().isEmpty());
}

void tst_OZPanel::messageIsPlainText()
{
    OZPanel panel;
    panel.setMessage(QStringLiteral("<b>x</b>"));
    QCOMPARE(open(panel)->findChild<QLabel *>(QStringLiteral("lblMessage"))->textFormat(), Qt::PlainText);
}

void tst_OZPanel::emptyTypeListLeavesTheTypesUnrestricted()
{
    OZPanel panel;
    QFileDialog *dialog = open(panel);
    QCOMPARE(dialog->nameFilters().size(), 1);
    QVERIFY(dialog->nameFilters().constFirst().contains(QStringLiteral("(*)")));
    for (const char *name : {"a.jpg", "b.PNG", "c.txt"}) {
        type(dialog, QString::fromUtf8(name));
        QVERIFY2(confirm(dialog)->isEnabled(), name);
    }
}

void tst_OZPanel::otherTypesAreRefusedUnlessAllowed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isOther");
    QTest::newRow("a type of the list") << QStringLiteral("a.jpg") << false;
    QTest::newRow("another type") << QStringLiteral("c.txt") << true;
}

void tst_OZPanel::otherTypesAreRefusedUnlessAllowed()
{
    QFETCH(QString, name);
    QFETCH(bool, isOther);
    for (const bool isAllowed : {false, true}) {
        OZPanel panel;
        panel.setTypes({QStringLiteral("gif"), QStringLiteral("jpg")});
        panel.setAllowsOtherFileTypes(isAllowed);
        QFileDialog *dialog = open(panel);
        QCOMPARE(choose(dialog, name), isAllowed || !isOther);
        QCOMPARE(shown() == nullptr, isAllowed || !isOther);
    }
}

void tst_OZPanel::typesAreComparedWithoutRegardToCase()
{
    OZPanel panel;
    panel.setTypes({QStringLiteral("Png")});
    QVERIFY(choose(open(panel), QStringLiteral("b.PNG")));
    QVERIFY(!shown());
}

void tst_OZPanel::typesAreOfferedAsFilters()
{
    OZPanel panel;
    panel.setTypes({QStringLiteral("gif"), QStringLiteral("tar.gz")});
    const QString own = QStringLiteral("*.gif *.tar.gz");
    QCOMPARE(open(panel)->nameFilters(), QStringList{own});
    delete shown();
    panel.setAllowsOtherFileTypes(true);
    const QStringList filters = open(panel)->nameFilters();
    QCOMPARE(filters.size(), 2);
    QCOMPARE(filters[0], own);
    QVERIFY(filters[1].contains(QStringLiteral("(*)")));
}

void tst_OZPanel::existingDirectoryIsWhereThePanelStarts()
{
    OZPanel panel;
    panel.setDirectory(at("sub"));
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        QCOMPARE(dialog->directory().absolutePath(), at("sub"));
        dialog->reject();
    }
}

void tst_OZPanel::directoryThatDoesNotExistStartsOnTheDesktop_data()
{
    QTest::addColumn<QString>("directory");
    QTest::newRow("nil") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("missing") << QStringLiteral("/nowhere/at/all");
}

void tst_OZPanel::directoryThatDoesNotExistStartsOnTheDesktop()
{
    QFETCH(QString, directory);
    OZPanel panel;
    panel.setDirectory(directory);
    panel.startOpenPanel();
    QCOMPARE(shown()->directory().absolutePath(), at("home/Desktop"));
    delete shown();
    panel.startSavePanel();
    QCOMPARE(shown()->directory().absolutePath(), at("home/Desktop"));
}

void tst_OZPanel::withoutADesktopThePanelStartsAtHome()
{
    QVERIFY(QDir(at("home/Desktop")).removeRecursively());
    OZPanel panel;
    panel.startOpenPanel();
    QCOMPARE(shown()->directory().absolutePath(), at("home"));
}

void tst_OZPanel::fileAsDirectoryStartsBesideIt()
{
    OZPanel panel;
    panel.setDirectory(at("sub/d.jpg"));
    QCOMPARE(open(panel)->directory().absolutePath(), at("sub"));
}

void tst_OZPanel::proposedNameIsSelected()
{
    OZPanel panel;
    panel.setNameFieldStringValue(QStringLiteral("new.jpg"));
    QCOMPARE(nameField(save(panel))->text(), QStringLiteral("new.jpg"));
    delete shown();
    panel.setNameFieldStringValue(QStringLiteral("/etc/passwd"));
    QCOMPARE(nameField(save(panel))->text(), QStringLiteral("passwd"));
    QCOMPARE(shown()->directory().absolutePath(), m_folder->path());
    delete shown();
    panel.setNameFieldStringValue(QString());
    QCOMPARE(nameField(save(panel))->text(), QString());
}

void tst_OZPanel::openPanelTellsWhatWasChosen()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setTypes({QStringLiteral("jpg")});
    QVERIFY(choose(open(panel), QStringLiteral("a.jpg")));
    const Told told = next(owner->record);
    QCOMPARE(told.function, QStringLiteral("endOpenPanel"));
    QVERIFY(told.panel.isOpenPanel);
    QCOMPARE(told.panel.paths, QStringList{at("a.jpg")});
    QCOMPARE(told.panel.path(), at("a.jpg"));
    QCOMPARE(told.panel.filter, QStringLiteral("*.jpg"));
    QVERIFY(told.thread != QThread::currentThreadId());
}

void tst_OZPanel::filesCanBeChosenEvenWhereCanChooseFilesIsFalse()
{
    for (const bool canChooseDirectories : {false, true}) {
        const auto owner = makeOwner();
        OZPanel panel;
        panel.setOwer(owner.get());
        panel.setCanChooseFiles(false);
        panel.setCanChooseDirectories(canChooseDirectories);
        QVERIFY(choose(open(panel), QStringLiteral("c.txt")));
        QCOMPARE(next(owner->record).panel.path(), at("c.txt"));
    }
}

void tst_OZPanel::severalFilesOnlyWhereAllowed()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    const QString both = QStringLiteral("\"a.jpg\" \"c.txt\"");
    QVERIFY(!choose(open(panel), both));
    delete shown();
    panel.setAllowsMultipleSelection(true);
    QVERIFY(choose(open(panel), both));
    QCOMPARE(next(owner->record).panel.paths, (QStringList{at("a.jpg"), at("c.txt")}));
}

void tst_OZPanel::foldersOnlyWhereAllowed()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    QVERIFY(choose(open(panel), QStringLiteral("sub")));
    QVERIFY(shown());
    QCOMPARE(shown()->directory().absolutePath(), at("sub"));
    delete shown();
    panel.setCanChooseDirectories(true);
    panel.setPrompt(QStringLiteral("Pick"));
    panel.setTypes({QStringLiteral("jpg")});
    QFileDialog *dialog = open(panel);
    type(dialog, QStringLiteral("sub"));
    QCOMPARE(confirm(dialog)->text(), QStringLiteral("Pick"));
    QVERIFY(choose(dialog, QStringLiteral("sub")));
    QVERIFY(!shown());
    QCOMPARE(next(owner->record).panel.paths, QStringList{at("sub")});
    QCOMPARE(owner->record.asked, 1);
}

// By the mouse, in the list.
void tst_OZPanel::filesAndFoldersTogether()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setCanChooseDirectories(true);
    panel.setAllowsMultipleSelection(true);
    QFileDialog *dialog = open(panel);
    auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
    const auto find = [dialog](const char *name) { return row(dialog, name); };
    QTRY_VERIFY(find("sub").isValid() && find("a.jpg").isValid());
    QTRY_VERIFY(!list->visualRect(find("a.jpg")).isEmpty());
    for (const char *name : {"sub", "a.jpg"}) {
        const QRect place = list->visualRect(find(name));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          place.topLeft() + QPoint(10, place.height() / 2));
    }
    QVERIFY(confirm(dialog)->isEnabled());
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    QVERIFY(!shown());
    QStringList paths = next(owner->record).panel.paths;
    paths.sort();
    QCOMPARE(paths, (QStringList{at("a.jpg"), at("sub")}));
}

void tst_OZPanel::folderThatIsShownIsChosenWithoutASelection()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    QFileDialog *dialog = open(panel);
    QVERIFY(!confirm(dialog)->isEnabled());
    delete dialog;
    panel.setCanChooseDirectories(true);
    QFileDialog *other = open(panel);
    QVERIFY(confirm(other)->isEnabled());
    other->setDirectory(at("sub"));
    QVERIFY(choose(other, QString()));
    QCOMPARE(next(owner->record).panel.paths, QStringList{at("sub")});
}

// By the mouse and the button that goes up.
void tst_OZPanel::folderThatIsEnteredIsChosenWithoutASelection()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setCanChooseDirectories(true);
    panel.setPrompt(QStringLiteral("Pick"));
    for (const bool isLeft : {false, true}) {
        QFileDialog *dialog = open(panel);
        const auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
        QTRY_VERIFY(row(dialog, "sub").isValid() && !list->visualRect(row(dialog, "sub")).isEmpty());
        const QPoint place = list->visualRect(row(dialog, "sub")).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
        QTRY_COMPARE(dialog->directory().absolutePath(), at("sub"));
        QTRY_VERIFY(row(dialog, "d.jpg").isValid());
        if (isLeft) {
            QTest::mouseClick(dialog->findChild<QWidget *>(QStringLiteral("toParentButton")), Qt::LeftButton);
            QTRY_COMPARE(dialog->directory().absolutePath(), m_folder->path());
        }
        QCoreApplication::processEvents();
        QVERIFY(confirm(dialog)->isEnabled());
        QCOMPARE(confirm(dialog)->text(), QStringLiteral("Pick"));
        QTest::mouseClick(confirm(dialog), Qt::LeftButton);
        QVERIFY(!shown());
        QCOMPARE(next(owner->record).panel.paths, QStringList{isLeft ? m_folder->path() : at("sub")});
    }
}

// Which Qt takes for the folder that the process works in.
void tst_OZPanel::computerIsNoChoice()
{
    OZPanel panel;
    panel.setCanChooseDirectories(true);
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        const auto *sidebar = dialog->findChild<QListView *>(QStringLiteral("sidebar"));
        QTest::mouseClick(sidebar->viewport(), Qt::LeftButton, {},
                          sidebar->visualRect(sidebar->model()->index(0, 0)).center());
        QVERIFY(!dialog->directory().isAbsolute());
        if (!isOpenPanel)
            type(dialog, QStringLiteral("n"));
        QCoreApplication::processEvents();
        QVERIFY(!isOpenPanel || !confirm(dialog)->isEnabled());
        QMetaObject::invokeMethod(dialog, "accept");
        QVERIFY(shown());
        delete dialog;
    }
}

void tst_OZPanel::whatDoesNotExistCannotBeOpened()
{
    OZPanel panel;
    panel.setCanChooseDirectories(true);
    panel.setAllowsOtherFileTypes(true);
    for (const char *name : {"none.jpg", "$HOME", "sub/none"})
        QVERIFY2(!choose(open(panel), QString::fromUtf8(name)), name);
}

void tst_OZPanel::savePanelTellsTheNewName()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    QVERIFY(choose(save(panel), QStringLiteral("new name.html")));
    const Told told = next(owner->record);
    QCOMPARE(told.function, QStringLiteral("endSavePanel"));
    QVERIFY(!told.panel.isOpenPanel);
    QCOMPARE(told.panel.paths, QStringList{at("new name.html")});
    QVERIFY(!QFileInfo::exists(at("new name.html")));
}

void tst_OZPanel::nameGetsTheFirstType_data()
{
    QTest::addColumn<bool>("isOtherAllowed");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    for (const bool isAllowed : {false, true}) {
        const char *of = isAllowed ? "others allowed" : "listed only";
        QTest::addRow("%s: none", of) << isAllowed << QStringLiteral("n") << QStringLiteral("n.jpg");
        QTest::addRow("%s: first", of) << isAllowed << QStringLiteral("n.jpg") << QStringLiteral("n.jpg");
        QTest::addRow("%s: second", of) << isAllowed << QStringLiteral("n.GIF") << QStringLiteral("n.GIF");
        QTest::addRow("%s: other", of) << isAllowed << QStringLiteral("n.txt")
                                       << (isAllowed ? QStringLiteral("n.txt") : QStringLiteral("n.txt.jpg"));
        QTest::addRow("%s: dot", of) << isAllowed << QStringLiteral("n.") << QStringLiteral("n.jpg");
        QTest::addRow("%s: quoted", of)
            << isAllowed << QStringLiteral("\"n m\"") << QStringLiteral("n m.jpg");
        QTest::addRow("%s: quote", of) << isAllowed << QStringLiteral("n\"m") << QStringLiteral("n\"m.jpg");
        QTest::addRow("%s: folder", of)
            << isAllowed << QStringLiteral("sub/n") << QStringLiteral("sub/n.jpg");
        QTest::addRow("%s: above", of) << isAllowed << QStringLiteral("sub/../n") << QStringLiteral("n.jpg");
    }
}

void tst_OZPanel::nameGetsTheFirstType()
{
    QFETCH(bool, isOtherAllowed);
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setTypes({QStringLiteral("jpg"), QStringLiteral("gif")});
    panel.setAllowsOtherFileTypes(isOtherAllowed);
    QVERIFY(choose(save(panel), typed));
    QCOMPARE(next(owner->record).panel.path(), m_folder->filePath(expected));
}

void tst_OZPanel::folderNameInASavePanelIsEntered()
{
    OZPanel panel;
    panel.setTypes({QStringLiteral("jpg")});
    QVERIFY(choose(save(panel), QStringLiteral("sub")));
    QVERIFY(shown());
    QCOMPARE(shown()->directory().absolutePath(), at("sub"));
}

void tst_OZPanel::nameWithoutAFileIsNotTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString();
    QTest::newRow("missing folder") << QStringLiteral("none/n");
    QTest::newRow("folder's end") << QStringLiteral("none/");
    QTest::newRow("existing folder's dots") << QStringLiteral("sub/...");
    QTest::newRow("file as a folder") << QStringLiteral("a.jpg/n");
    QTest::newRow("too long with its type") << QString(253, u'n');
}

void tst_OZPanel::nameWithoutAFileIsNotTold()
{
    QFETCH(QString, name);
    const auto owner = makeOwner();
    owner->record.leave.release(1); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setTypes({QStringLiteral("jpg")});
    QFileDialog *dialog = save(panel);
    type(dialog, name);
    QMetaObject::invokeMethod(dialog, "accept");
    QVERIFY(shown());
    QCOMPARE(owner->record.asked, 0);
}

void tst_OZPanel::nameCountsMoreThanASelectedFile()
{
    Fixtures::put(at("report"), "r");
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setTypes({QStringLiteral("jpg")});
    panel.setAllowsOtherFileTypes(true);
    QFileDialog *dialog = save(panel);
    dialog->selectNameFilter(dialog->nameFilters().constLast());
    QTRY_VERIFY(row(dialog, "report").isValid());
    type(dialog, QStringLiteral("rep"));
    auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
    list->selectionModel()->select(row(dialog, "report"),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    QCOMPARE(dialog->selectedFiles(), QStringList{at("report")});
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    QVERIFY(!shown());
    QCOMPARE(next(owner->record).panel.path(), at("rep.jpg"));
}

void tst_OZPanel::existingFileIsReplacedOnlyAfterAQuestion()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setTypes({QStringLiteral("jpg")});
    for (const QMessageBox::StandardButton answer : {QMessageBox::No, QMessageBox::Yes}) {
        QFileDialog *dialog = save(panel);
        QVERIFY(choose(dialog, QStringLiteral("a")));
        auto *question = dialog->findChild<QMessageBox *>();
        QVERIFY(shown() && question && question->isVisible());
        QCOMPARE(question->windowModality(), Qt::WindowModal);
        QCOMPARE(question->defaultButton(), question->button(QMessageBox::No));
        QVERIFY(question->text().contains(QStringLiteral("a.jpg")));
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(dialog->findChildren<QMessageBox *>().size(), 1);
        QTest::mouseClick(question->button(answer), Qt::LeftButton);
        QCOMPARE(shown() != nullptr, answer == QMessageBox::No);
        if (shown())
            shown()->reject();
    }
    QCOMPARE(next(owner->record).panel.path(), at("a.jpg"));
    QCOMPARE(owner->record.asked, 1);
}

void tst_OZPanel::whateverGoesTakesTheQuestionAlong_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("owner") << 0;
    QTest::newRow("wrapper") << 1;
    QTest::newRow("window") << 2;
    QTest::newRow("panel") << 3;
}

void tst_OZPanel::whateverGoesTakesTheQuestionAlong()
{
    QFETCH(int, what);
    auto owner = makeOwner();
    auto panel = std::make_unique<OZPanel>();
    panel->setOwer(owner.get());
    const QPointer<QFileDialog> dialog = save(*panel);
    QVERIFY(choose(dialog, QStringLiteral("a.jpg")));
    const QPointer<QMessageBox> question = dialog->findChild<QMessageBox *>();
    QVERIFY(question);
    if (what == 0)
        owner.reset();
    else if (what == 1)
        panel.reset();
    else if (what == 2)
        delete owner->window();
    else
        dialog->reject();
    QVERIFY(!shown() && (!question || !question->isVisible()));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialog && !question);
    if (!owner)
        return;
    owner->record.leave.release();
    QCOMPARE(owner->record.asked, 0);
}

void tst_OZPanel::panelsOfferNothingThatWaitsInThem()
{
    OZPanel panel;
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        QCOMPARE(dialog->testOption(QFileDialog::ReadOnly), isOpenPanel);
        QVERIFY(dialog->testOption(QFileDialog::DontConfirmOverwrite));
        auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
        QTRY_VERIFY(row(dialog, "c.txt").isValid());
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        list->setFocus();
        list->setCurrentIndex(row(dialog, "c.txt"));
        bool isAsked = false;
        // Only a loop inside the toolkit would come to this.
        QTimer::singleShot(0, dialog, [&isAsked] {
            if (QWidget *modal = QApplication::activeModalWidget(); qobject_cast<QMessageBox *>(modal)) {
                isAsked = true;
                modal->close();
            }
        });
        QTest::keyClick(list, Qt::Key_Delete);
        QTest::keyClick(list, Qt::Key_F2);
        QCoreApplication::processEvents();
        QVERIFY(!isAsked);
        QVERIFY(!list->viewport()->findChild<QLineEdit *>());
        for (const char *view : {"listView", "treeView"})
            QCOMPARE(dialog->findChild<QWidget *>(QString::fromLatin1(view))->contextMenuPolicy(),
                     Qt::NoContextMenu);
        delete dialog;
    }
}

void tst_OZPanel::newFoldersMayBeMade()
{
    OZPanel panel;
    QVERIFY(!save(panel)->testOption(QFileDialog::ReadOnly));
    QVERIFY(shown()->findChild<QWidget *>(QStringLiteral("newFolderButton"))->isEnabled());
}

void tst_OZPanel::saveOwnerWithoutEndOpenPanelIsNotTold()
{
    const auto owner = makeOwner<OwnerOfSavePanels>();
    owner->record.leave.release(2); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    const PanelResult saved{false, {QStringLiteral("/s")}, {}};
    panel.savePanelDidEnd(saved, 1, nullptr);
    QVERIFY(!isToldOf(saved));
    const PanelResult opened{true, {QStringLiteral("/o")}, {}};
    panel.openPanelDidEnd(opened, 1, nullptr);
    QVERIFY(!isToldOf(opened));
}

void tst_OZPanel::openOwnerIsNotToldOfASavePanel()
{
    const auto owner = makeOwner<OwnerOfOpenPanels>();
    owner->record.leave.release(1); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    const PanelResult saved{false, {QStringLiteral("/s")}, {}};
    panel.savePanelDidEnd(saved, 1, nullptr);
    QVERIFY(!isToldOf(saved));
    const PanelResult opened{true, {QStringLiteral("/o")}, {}};
    panel.openPanelDidEnd(opened, 1, nullptr);
    QVERIFY(isToldOf(opened));
    const Told told = next(owner->record);
    QCOMPARE(told.function, QStringLiteral("endOpenPanel"));
    QVERIFY(told.panel.isOpenPanel);
    QCOMPARE(told.panel.path(), QStringLiteral("/o"));
}

void tst_OZPanel::endPanelSelectorIsCalledInstead()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setEndPanelSelector(
        [record = &owner->record](const PanelResult &result) { record->add("selector", result); });
    panel.openPanelDidEnd({true, {QStringLiteral("/o")}, QStringLiteral("*.o")}, 1, nullptr);
    Told told = next(owner->record);
    QCOMPARE(told.function, QStringLiteral("selector"));
    QCOMPARE(told.panel.path(), QStringLiteral("/o"));
    QCOMPARE(told.panel.filter, QStringLiteral("*.o"));
    QVERIFY(told.thread != QThread::currentThreadId());
    panel.savePanelDidEnd({false, {QStringLiteral("/s")}, {}}, 1, nullptr);
    told = next(owner->record);
    QCOMPARE(told.function, QStringLiteral("selector"));
    QCOMPARE(told.panel.path(), QStringLiteral("/s"));
    QVERIFY(!told.panel.isOpenPanel);
}

void tst_OZPanel::selectorNeedsNoReceiverFunctions()
{
    const auto owner = makeOwner<OwnerOfSavePanels>();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.setEndPanelSelector(
        [record = &owner->record](const PanelResult &result) { record->add("selector", result); });
    QVERIFY(choose(open(panel), QStringLiteral("a.jpg")));
    QCOMPARE(next(owner->record).function, QStringLiteral("selector"));
}

void tst_OZPanel::ownerThatIsNoReceiverIsNotTold()
{
    const auto owner = makeOwner<WindowController>();
    OZPanel panel;
    panel.setOwer(owner.get());
    const auto isTold = std::make_shared<std::atomic<bool>>(false);
    panel.setEndPanelSelector([isTold](const PanelResult &) { *isTold = true; });
    const QByteArray warning = standardError([&] {
        panel.openPanelDidEnd({true, {QStringLiteral("/o")}, {}}, 1, nullptr);
    });
    // No call carries the selector: it is here and in the panel.
    QCOMPARE(isTold.use_count(), 2);
    QVERIFY(!*isTold);
    QVERIFY(warning.startsWith("Warn:OZPanel: ") && warning.contains(" WindowController "));
    QCOMPARE(warning.count('\n'), 1);
    // Without a selector nothing was asked for.
    panel.setEndPanelSelector({});
    QVERIFY(standardError([&] { panel.openPanelDidEnd({}, 1, nullptr); }).isEmpty());
}

void tst_OZPanel::cancellingTellsNothing_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("the button") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("title bar") << 2;
}

void tst_OZPanel::cancellingTellsNothing()
{
    QFETCH(int, way);
    const auto owner = makeOwner();
    owner->record.leave.release(2); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    for (const bool isOpenPanel : {true, false}) {
        QFileDialog *dialog = isOpenPanel ? open(panel) : save(panel);
        type(dialog, QStringLiteral("a.jpg"));
        if (way == 0)
            QTest::mouseClick(dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel),
                              Qt::LeftButton);
        else if (way == 1)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            dialog->close();
        QVERIFY(!dialog->isVisible());
    }
    QCOMPARE(owner->record.asked, 0);
}

void tst_OZPanel::everyCodeButZeroIsAConfirmation()
{
    const auto owner = makeOwner();
    owner->record.leave.release(2); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.openPanelDidEnd({true, {QStringLiteral("/none")}, {}}, 0, nullptr);
    panel.savePanelDidEnd({false, {QStringLiteral("/none")}, {}}, 0, nullptr);
    QCOMPARE(owner->record.asked, 0);
    for (const int code : {1, -1, 2, 1000}) {
        panel.openPanelDidEnd({true, {QStringLiteral("/o")}, {}}, code, &panel);
        QCOMPARE(next(owner->record).panel.path(), QStringLiteral("/o"));
        panel.savePanelDidEnd({false, {QStringLiteral("/s")}, {}}, code, nullptr);
        QCOMPARE(next(owner->record).panel.path(), QStringLiteral("/s"));
    }
    QCOMPARE(owner->record.asked, 8);
}

// Any other code that a panel ends with cancels it.
void tst_OZPanel::panelItselfIsConfirmedByOneOnly()
{
    const auto owner = makeOwner();
    owner->record.leave.release(3); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    for (const int code : {0, -1, 2}) {
        QFileDialog *dialog = open(panel);
        type(dialog, QStringLiteral("a.jpg"));
        static_cast<QDialog *>(dialog)->QDialog::done(code);
        QVERIFY(!shown());
    }
    QCOMPARE(owner->record.asked, 0);
}

void tst_OZPanel::eachCompletedPanelHasAThreadOfItsOwn()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    panel.openPanelDidEnd({true, {QStringLiteral("/a")}, {}}, 1, nullptr);
    panel.savePanelDidEnd({false, {QStringLiteral("/b")}, {}}, 1, nullptr);
    // Both are told at once: neither may leave before.
    QVERIFY(owner->record.arrived.try_acquire_for(patience));
    QVERIFY(owner->record.arrived.try_acquire_for(patience));
    const QList<Told> told = owner->record.told();
    owner->record.leave.release(2);
    QVERIFY(told[0].thread != told[1].thread);
    QVERIFY(told[0].thread != QThread::currentThreadId() && told[1].thread != QThread::currentThreadId());
}

void tst_OZPanel::onePanelObjectRunsSeveralTimes()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    for (const char *name : {"a.jpg", "c.txt", "a.jpg"}) {
        panel.setIsOpenPanel(true);
        panel.setDirectory(m_folder->path());
        panel.runModel();
        QCoreApplication::processEvents();
        QVERIFY(choose(shown(), QString::fromUtf8(name)));
        QCOMPARE(next(owner->record).panel.path(), at(name));
    }
}

void tst_OZPanel::threadThatCannotStartIsDropped()
{
    // No machine has room for a stack of that size.
    pthread_attr_t before;
    pthread_attr_t huge;
    QCOMPARE(pthread_getattr_default_np(&before), 0);
    QCOMPARE(pthread_getattr_default_np(&huge), 0);
    QCOMPARE(pthread_attr_setstacksize(&huge, size_t(1) << 46), 0);
    const auto owner = makeOwner();
    owner->record.leave.release(1); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    const PanelResult result{true, {QStringLiteral("/o")}, {}};
    QCOMPARE(pthread_setattr_default_np(&huge), 0);
    panel.openPanelDidEnd(result, 1, nullptr);
    QCOMPARE(pthread_setattr_default_np(&before), 0);
    QCOMPARE(owner->record.asked, 1);
    QVERIFY(!isToldOf(result));
}

void tst_OZPanel::wrapperThatGoesBeforeItsPanelShowsNone()
{
    auto panel = std::make_unique<OZPanel>();
    panel->runModel();
    std::thread other([&panel] { panel->runModel(); });
    other.join();
    panel.reset();
    QCoreApplication::processEvents();
    QVERIFY(!shown());
}

void tst_OZPanel::wrapperThatGoesClosesItsPanel()
{
    const auto owner = makeOwner();
    auto panel = std::make_unique<OZPanel>();
    owner->record.leave.release(1); // a test that fails ends, too
    panel->setOwer(owner.get());
    const QPointer<QFileDialog> dialog = open(*panel);
    type(dialog, QStringLiteral("a.jpg"));
    panel.reset();
    QVERIFY(!shown());
    QMetaObject::invokeMethod(dialog, "accept");
    QCOMPARE(owner->record.asked, 0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialog);
}

void tst_OZPanel::wrapperMayGoWhileItsOwnerIsTold()
{
    const auto owner = makeOwner();
    auto panel = std::make_unique<OZPanel>();
    panel->setOwer(owner.get());
    panel->openPanelDidEnd({true, {QStringLiteral("/a")}, {}}, 1, nullptr);
    panel.reset();
    QCOMPARE(next(owner->record).panel.path(), QStringLiteral("/a"));
}

void tst_OZPanel::ownerThatGoesClosesThePanel()
{
    // With a window, to which the panel belongs, and without.
    for (const bool hasWindow : {true, false}) {
        auto owner = hasWindow ? makeOwner() : std::make_unique<Owner>();
        OZPanel panel;
        panel.setOwer(owner.get());
        QVERIFY(open(panel));
        QCOMPARE(shown()->parentWidget() != nullptr, hasWindow);
        owner.reset();
        QVERIFY(!shown());
        QCOMPARE(panel.ower(), nullptr);
    }
}

void tst_OZPanel::ownerThatGoesIsNotTold()
{
    OZPanel panel;
    // Whole, or not at all: what a call would find of an owner half gone is for the sanitizers to see.
    for (int i = 0; i < 100; ++i) {
        Owner owner;
        owner.record.leave.release();
        panel.setOwer(&owner);
        panel.openPanelDidEnd({true, {QStringLiteral("/x")}, {}}, 1, nullptr);
    }
    QCOMPARE(panel.ower(), nullptr);
    const auto calls = std::make_shared<std::atomic<int>>(0);
    panel.setEndPanelSelector([calls](const PanelResult &) { ++*calls; });
    {
        Owner owner;
        panel.setOwer(&owner);
        owner.asyncScope().close();
        panel.openPanelDidEnd({}, 1, nullptr);
    }
    panel.openPanelDidEnd({}, 1, nullptr);
    panel.savePanelDidEnd({}, 1, nullptr);
    // No call carries the selector: it is here and in the panel.
    QCOMPARE(calls.use_count(), 2);
    QCOMPARE(*calls, 0);
}

void tst_OZPanel::windowThatIsClosedCancelsThePanel()
{
    const auto owner = makeOwner();
    OZPanel panel;
    panel.setOwer(owner.get());
    const QPointer<QFileDialog> opened = open(panel);
    type(opened, QStringLiteral("a.jpg"));
    owner->window()->close();
    QVERIFY(!shown());
    owner->showWindow();
    const QPointer<QFileDialog> asking = save(panel);
    QVERIFY(choose(asking, QStringLiteral("a.jpg")));
    const QPointer<QMessageBox> question = asking->findChild<QMessageBox *>();
    owner->record.leave.release(2); // a test that fails ends, too
    QVERIFY(question && question->isVisible());
    owner->window()->close();
    QVERIFY(!shown() && !question->isVisible());
    owner->showWindow();
    QVERIFY(!shown());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!opened && !asking && !question);
    QCOMPARE(owner->record.asked, 0);
}

void tst_OZPanel::windowThatGoesClosesThePanel()
{
    const auto owner = makeOwner();
    owner->record.leave.release(1); // a test that fails ends, too
    OZPanel panel;
    panel.setOwer(owner.get());
    const QPointer<QFileDialog> dialog = open(panel);
    delete owner->window();
    QVERIFY(!dialog);
    QCOMPARE(owner->record.asked, 0);
}

LINKLIST_GUI_TEST_MAIN(tst_OZPanel)
#include "tst_OZPanel.moc"
