#include "Classes/Mode/Locale.h"
#include "platform/File.h"
#include "tests/examples/PicturesWindow.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QUrl>
#include <QWindow>

// The example of docs/plugin-contract.md for windows of the plug-in's family: it stands there as it is
// compiled here, and does what the page says.
class tst_Examples : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { resetLocaleForTesting(); }
    void pageShowsTheExampleAsItIs();
    void chosenPicturesAreAdded();
    void droppedPicturesAreAdded();
    void selectedPicturesAreAdded();
    void windowMayGoAtAnyTime();

private:
    std::unique_ptr<PicturesWindow> makeWindow() const;
    static QFileDialog *panel();

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Examples::initTestCase()
{
    static const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
}

void tst_Examples::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    Fixtures::put(
        m_folder->filePath(QStringLiteral("bundle/Pictures.nib")),
        "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"Pictures\"><widget class=\"QTableView\" "
        "name=\"tableView\"/></widget></ui>");
    Fixtures::put(m_folder->filePath(QStringLiteral("home/Desktop/a.jpg")), "a");
    qputenv("HOME", m_folder->filePath(QStringLiteral("home")).toUtf8());
    setDefaultBundlePath(m_folder->filePath(QStringLiteral("bundle")));
}

std::unique_ptr<PicturesWindow> tst_Examples::makeWindow() const
{
    auto window = std::make_unique<PicturesWindow>();
    if (!window->initWithResourceNibName(QStringLiteral("Pictures")))
        qFatal("no interface file");
    window->showWindow();
    return window;
}

QFileDialog *tst_Examples::panel()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && qobject_cast<QFileDialog *>(window))
            return static_cast<QFileDialog *>(window);
    }
    return nullptr;
}

void tst_Examples::pageShowsTheExampleAsItIs()
{
    const QString root = QStringLiteral(LINKLIST_SOURCE_DIR);
    const auto example = File::readText(root + QStringLiteral("/tests/examples/PicturesWindow.h"));
    const auto page = File::readText(root + QStringLiteral("/docs/plugin-contract.md"));
    QVERIFY(example && page);
    QString shown;
    const QStringList lines = example->split(u'\n');
    for (const QString &line : lines)
        shown += line.isEmpty() ? QStringLiteral("\n") : QStringLiteral("    ") + line + u'\n';
    QVERIFY2(page->contains(shown.trimmed()), "the page and the example differ");
}

void tst_Examples::chosenPicturesAreAdded()
{
    const auto window = makeWindow();
    window->choosePictures();
    QCoreApplication::processEvents();
    QVERIFY(panel());
    QCOMPARE(panel()->parentWidget(), window->window());
    panel()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(QStringLiteral("a.jpg"));
    QTest::mouseClick(panel()->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open),
                      Qt::LeftButton);
    const QString chosen = m_folder->filePath(QStringLiteral("home/Desktop/a.jpg"));
    QTRY_COMPARE(window->pictures(), QStringList{chosen});
    QVERIFY(Fixtures::get(Log().path()).endsWith("{bundle}:1 pictures, the last is " + chosen.toUtf8()));
}

void tst_Examples::droppedPicturesAreAdded()
{
    const auto window = makeWindow();
    QVERIFY(QTest::qWaitForWindowExposed(window->window()));
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("file:///x/a.JPG")), QUrl(QStringLiteral("file:///x/b.txt")),
                  QUrl(QStringLiteral("file:///x/c.png"))});
    QWindow *handle = window->window()->windowHandle();
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(handle, &enter);
    QDragMoveEvent move(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(handle, &move);
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(handle, &drop);
    QCOMPARE(window->pictures(), (QStringList{QStringLiteral("/x/a.JPG"), QStringLiteral("/x/c.png")}));
}

void tst_Examples::selectedPicturesAreAdded()
{
    const auto window = makeWindow();
    pugi::xml_document known;
    QVERIFY(known.load_string("<pictures><picture title=\"Cover\" file=\"/cover.jpg\"/>"
                              "<picture title=\"Back\" file=\"/back.jpg\"/></pictures>"));
    window->showKnownPictures(known.document_element());
    auto *table = window->outlet<QTableView>("tableView");
    QCOMPARE(table->model()->index(1, 0).data(), QVariant(QStringLiteral("Back")));
    table->selectRow(1);
    QTRY_COMPARE(window->pictures(), QStringList{QStringLiteral("/back.jpg")});
}

void tst_Examples::windowMayGoAtAnyTime()
{
    for (int i = 0; i < 20; ++i) {
        const auto window = makeWindow();
        window->endOpenPanel({true, {QStringLiteral("/x.jpg")}, {}});
        window->choosePictures();
        if (i % 2)
            QCoreApplication::processEvents();
    }
    QCoreApplication::processEvents();
    QVERIFY(!panel());
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

LINKLIST_GUI_TEST_MAIN(tst_Examples)
#include "tst_Examples.moc"
