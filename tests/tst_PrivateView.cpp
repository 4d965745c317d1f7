#include "Classes/Mode/Locale.h"
#include "Classes/Mode/SelectedLanguage.h"
#include "linklist/LinkListModel.h"
#include "linklist/PrivateView.h"
#include "platform/File.h"
#include "platform/ui/Nib.h"
#include "platform/ui/Stepper.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestBundle.h"
#include "tests/support/TestCase.h"
#include "text/ColorButtonCell.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QTableView>

using Fixtures::get;
using Fixtures::put;

class Owner : public PrivateViewDelete
{
public:
    void saveGlobalSettings() override { ++saves; }
    int saves = 0;
};

class tst_PrivateView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void showsTheDocument();
    void loadingAppendsItems();
    void typedHeadingSavesAtOnce();
    void sizesTakeDigitsAloneAndMoveTheStepper();
    void stepperWritesItsNumber();
    void sizeThatIsNoNumberShowsTheSteppersWhenEditingEnds_data();
    void sizeThatIsNoNumberShowsTheSteppersWhenEditingEnds();
    void saveWithoutWorkspaceDoesNothing();
    void saveWithoutDocumentWritesTheDefaultOne();
    void saveWithoutAnyDocumentDoesNothing();
    void saveButtonSaves();
    void nothingIsSavedAfterEditingEnded();
    void missingOutletKeepsItsValue();
    void pathsOfTheDocuments();
    void refersToNoFilesAndFollowsNoLinks();
    void digitsOfAText();

private:
    std::unique_ptr<PrivateView> open();
    QByteArray document() const { return get(m_bundle->inWorkSpace("linklist.xml")); }
    template <typename T = QLineEdit>
    T *part(const char *name) const
    {
        return m_view->findChild<T *>(QString::fromUtf8(name));
    }

    std::unique_ptr<TestBundle> m_bundle;
    std::unique_ptr<PrivateView> m_view;
    Owner m_owner;
};

void tst_PrivateView::initTestCase()
{
    Nib::registerClass<PrivateView>();
    Nib::registerClass<ColorButtonCell>();
}

void tst_PrivateView::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_bundle = std::make_unique<TestBundle>();
    m_owner = Owner();
    m_view = open();
}

std::unique_ptr<PrivateView> tst_PrivateView::open()
{
    const auto nib
        = SelectedLanguage::initWithResourceNibName(QStringLiteral("PrivateView"), m_bundle->path());
    std::unique_ptr<PrivateView> view(qobject_cast<PrivateView *>(nib->instantiate()));
    if (!view)
        qFatal("no editor: %s", qPrintable(nib->errorString()));
    view->setWorkSpace(m_bundle->workSpace());
    view->setBundlePath(m_bundle->path());
    view->setOwer(&m_owner);
    view->loadDispInfo();
    return view;
}

void tst_PrivateView::showsTheDocument()
{
    QCOMPARE(m_owner.saves, 0);
    QCOMPARE(part("txtTitleContent")->text(), QStringLiteral("Further reading"));
    QCOMPARE(part("txtTitleFontSize")->text(), QStringLiteral("16"));
    QCOMPARE(part<Stepper>("stTitleFontSize")->integerValue(), 16);
    QCOMPARE(part("txtBodyFontSize")->text(), QStringLiteral("12"));
    QCOMPARE(part<Stepper>("stBodyFontSize")->integerValue(), 12);
    const auto *table = part<QTableView>("tableView");
    QCOMPARE(table->model()->rowCount(), 3);
    QCOMPARE(table->model()->index(0, 0).data().toString(), QStringLiteral("About the author"));
    QVERIFY(part<ColorButtonCell>("btnTitleFontColor")->backgroundColor().has_value());
    QCOMPARE(m_view->ower(), &m_owner);
}

void tst_PrivateView::loadingAppendsItems()
{
    pugi::xml_document xml;
    QVERIFY(
        xml.load_string("<info><properties><extended><body><content><item><title>X</title></item></content>"
                        "</body></extended></properties></info>"));
    m_view->loadPrivateSetting(xml.document_element());
    QCOMPARE(m_view->model()->items().size(), 4);
    QCOMPARE(m_view->model()->items().last(), (LinkItem{QStringLiteral("X"), QString()}));
    QCOMPARE(part("txtTitleContent")->text(), QStringLiteral("Further reading"));
}

void tst_PrivateView::typedHeadingSavesAtOnce()
{
    part("txtTitleContent")->selectAll();
    QTest::keyClicks(part("txtTitleContent"), QStringLiteral("A<B> & \"C\""));
    QVERIFY(m_owner.saves >= 10);
    QVERIFY2(document().contains("A&lt;B&gt; &amp; \"C\"</content>"), document().constData());
    QVERIFY(document().startsWith("<info>") && document().endsWith("</info>"));
}

void tst_PrivateView::sizesTakeDigitsAloneAndMoveTheStepper()
{
    part("txtTitleFontSize")->selectAll();
    QTest::keyClicks(part("txtTitleFontSize"), QStringLiteral("1a2"));
    QCOMPARE(part("txtTitleFontSize")->text(), QStringLiteral("12"));
    QCOMPARE(part<Stepper>("stTitleFontSize")->integerValue(), 12);
    QVERIFY(document().contains("<fontSize type=\"number\">12</fontSize><color"));
}

void tst_PrivateView::stepperWritesItsNumber()
{
    part<Stepper>("stBodyFontSize")->stepUp();
    QCOMPARE(part("txtBodyFontSize")->text(), QStringLiteral("13"));
    QCOMPARE(m_owner.saves, 1);
    QVERIFY(document().contains(">13<"));
}

void tst_PrivateView::sizeThatIsNoNumberShowsTheSteppersWhenEditingEnds_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("empty") << QString() << QStringLiteral("1");
    QTest::newRow("leading zeros") << QStringLiteral("007") << QStringLiteral("7");
    QTest::newRow("a number") << QStringLiteral("30") << QStringLiteral("30");
    QTest::newRow("past the stepper's range") << QStringLiteral("999") << QStringLiteral("999");
}

void tst_PrivateView::sizeThatIsNoNumberShowsTheSteppersWhenEditingEnds()
{
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    QLineEdit *size = part("txtBodyFontSize");
    size->setText(typed);
    QCOMPARE(size->text(), typed);
    QTest::keyClick(size, Qt::Key_Return);
    QCOMPARE(size->text(), shown);
    QVERIFY(document().contains('>' + shown.toUtf8() + '<'));
}

void tst_PrivateView::saveWithoutWorkspaceDoesNothing()
{
    QVERIFY(File::removeAll(m_bundle->workSpace()));
    QVERIFY(!m_view->onSave());
    m_view->setWorkSpace(QString());
    QVERIFY(!m_view->onSave());
    QCOMPARE(m_owner.saves, 0);
    QVERIFY(!File::exists(m_bundle->workSpace()));
}

void tst_PrivateView::saveWithoutDocumentWritesTheDefaultOne()
{
    QLineEdit *heading = part("txtTitleContent");
    for (const char *damaged : {"", "<info>", "\xFF\xFE"}) {
        put(m_bundle->inWorkSpace("linklist.xml"), damaged);
        heading->setText(QStringLiteral("Mine"));
        QVERIFY(m_view->onSave());
        QVERIFY(document().contains("Mine"));
        QVERIFY(document().contains("About the author"));
        heading->setText(QString());
    }
    QVERIFY(File::removeAll(m_bundle->inWorkSpace("linklist.xml")));
    QVERIFY(m_view->onSave());
    QVERIFY(document().contains("About the author"));
}

void tst_PrivateView::saveWithoutAnyDocumentDoesNothing()
{
    QVERIFY(File::removeAll(m_bundle->resource("data/linklist.xml")));
    put(m_bundle->inWorkSpace("linklist.xml"), "damaged");
    QVERIFY(!m_view->onSave());
    QCOMPARE(document(), QByteArray("damaged"));
    QCOMPARE(m_owner.saves, 0);
}

void tst_PrivateView::saveButtonSaves()
{
    part<QAbstractButton>("btnSave")->click();
    QCOMPARE(m_owner.saves, 1);
}

void tst_PrivateView::nothingIsSavedAfterEditingEnded()
{
    m_view->endEditing();
    QTest::keyClicks(part("txtTitleContent"), QStringLiteral("late"));
    part<Stepper>("stBodyFontSize")->stepUp();
    m_view->commitEditing();
    QCOMPARE(m_owner.saves, 0);
}

void tst_PrivateView::missingOutletKeepsItsValue()
{
    delete part("txtTitleContent");
    delete part<ColorButtonCell>("btnBodyFontColor");
    const QByteArray before = document();
    QVERIFY(m_view->onSave());
    QCOMPARE(document(), before);
}

void tst_PrivateView::pathsOfTheDocuments()
{
    QCOMPARE(m_view->settingFileInWorkspace(), m_bundle->inWorkSpace("linklist.xml"));
    QCOMPARE(m_view->settingFileInApp(), m_bundle->resource("data/linklist.xml"));
    m_view->setBundlePath(QStringLiteral("/nowhere"));
    QCOMPARE(m_view->settingFileInApp(),
             QCoreApplication::applicationDirPath() + QStringLiteral("/data/linklist.xml"));
    put(m_bundle->path() + QStringLiteral("/picture.png"), "x");
    QVERIFY(m_view->saveFile2Workspace(m_bundle->path() + QStringLiteral("/picture.png")));
    QCOMPARE(get(m_bundle->inWorkSpace("picture.png")), QByteArray("x"));
}

void tst_PrivateView::refersToNoFilesAndFollowsNoLinks()
{
    QVERIFY(m_view->locateFiles().isEmpty());
    QVERIFY(!m_view->ignoreOpenURL());
    QCOMPARE(PrivateView::convertHttpFormat(QStringLiteral("a b")), QStringLiteral("http://a%20b"));
}

void tst_PrivateView::digitsOfAText()
{
    QCOMPARE(PrivateView::stringWithNumber(QStringLiteral("1a２٣2")), QStringLiteral("12"));
    QCOMPARE(PrivateView::stringWithNumber(QString()), QString());
}

LINKLIST_GUI_TEST_MAIN(tst_PrivateView)
#include "tst_PrivateView.moc"
