#include "Classes/Mode/Locale.h"
#include "platform/ui/Matrix.h"
#include "platform/ui/Nib.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Stepper.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QRadioButton>
#include <QTranslator>

namespace
{
QByteArray interfaceFile(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\"><class>Form</class>"
           "<widget class=\"QWidget\" name=\"Form\">"
        + content + "</widget></ui>";
}

QByteArray label(const QByteArray &string)
{
    return "<widget class=\"QLabel\" name=\"lbl\"><property name=\"text\">" + string + "</property></widget>";
}

class Owned : public QLabel
{
    Q_OBJECT

public:
    explicit Owned(QWidget *parent)
        : QLabel(parent)
    {
    }
};
} // namespace

class tst_Nib : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { resetLocaleForTesting(); }
    void makesTheWidgetsAndTheirDynamicProperties();
    void eachInstantiationMakesNewWidgets();
    void translatesTexts_data();
    void translatesTexts();
    void leavesNamesAndStyleSheetsAlone();
    void hostsTranslatorsAreNotAsked();
    void makesRegisteredClasses();
    void libraryPathsAreBack();
    void readsAFile();
    void tellsWhyItFails_data();
    void tellsWhyItFails();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Nib::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_folder = std::make_unique<QTemporaryDir>();
    Fixtures::put(
        m_folder->filePath(QStringLiteral("de.lproj/PluginLocale.strings")),
        "\"Title\" = \"Titel <1>\";\n\" \" = \"blank\";\n\"lbl\" = \"wrong\";\n\"color: red\" = \"wrong\";\n"
        "\"A & B\" = \"B & A\";\n");
    setDefaultLanguageCode(QStringLiteral("de"));
    setDefaultBundlePath(m_folder->path());
}

void tst_Nib::makesTheWidgetsAndTheirDynamicProperties()
{
    Nib nib(interfaceFile(
        "<widget class=\"Slider\" name=\"sldTrans\"><property "
        "name=\"maximumValue\"><double>50</double></property></widget>"
        "<widget class=\"Stepper\" name=\"stSize\"><property name=\"minValue\"><number>8</number></property>"
        "<property name=\"maxValue\"><number>200</number></property><property "
        "name=\"value\"><number>150</number></property></widget>"
        "<widget class=\"Matrix\" name=\"matLayer\"><layout class=\"QVBoxLayout\">"
        "<item><widget class=\"QRadioButton\" name=\"a\"><property name=\"tag\" "
        "stdset=\"0\"><number>0</number></property></widget></item>"
        "<item><widget class=\"QRadioButton\" name=\"b\"><property "
        "name=\"checked\"><bool>true</bool></property>"
        "<property name=\"tag\" "
        "stdset=\"0\"><longlong>5000000000</longlong></property></widget></item></layout></widget>"));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY2(widget, qPrintable(nib.errorString()));
    QCOMPARE(widget->findChild<Slider *>(QStringLiteral("sldTrans"))->maximumValue(), 50.0);
    QCOMPARE(widget->findChild<Stepper *>(QStringLiteral("stSize"))->integerValue(), 150);
    auto *matrix = widget->findChild<Matrix *>(QStringLiteral("matLayer"));
    QCOMPARE(matrix->selectedTag(), Q_INT64_C(5000000000));
    QVERIFY(matrix->selectCellWithTag(0));
    QVERIFY(matrix->findChild<QRadioButton *>(QStringLiteral("a"))->isChecked());
    QVERIFY(!matrix->findChild<QRadioButton *>(QStringLiteral("b"))->isChecked());
}

void tst_Nib::eachInstantiationMakesNewWidgets()
{
    Nib nib(interfaceFile(label("<string>Title</string>")));
    QWidget parent;
    QWidget *first = nib.instantiate(&parent);
    QWidget *second = nib.instantiate(&parent);
    QVERIFY(first && second && first != second);
    QCOMPARE(first->parentWidget(), &parent);
}

void tst_Nib::translatesTexts_data()
{
    QTest::addColumn<QByteArray>("string");
    QTest::addColumn<QString>("shown");
    QTest::newRow("translated") << QByteArray("<string>Title</string>") << QStringLiteral("Titel <1>");
    QTest::newRow("unknown") << QByteArray("<string>Other</string>") << QStringLiteral("Other");
    QTest::newRow("escaped") << QByteArray("<string>A &amp; B</string>") << QStringLiteral("B & A");
    QTest::newRow("in two parts") << QByteArray("<string>Ti<![CDATA[tle]]></string>")
                                  << QStringLiteral("Titel <1>");
    QTest::newRow("not to translate")
        << QByteArray("<string notr=\"true\">Title</string>") << QStringLiteral("Title");
    QTest::newRow("with a mark") << QByteArray("<string>\xEF\xBB\xBFTitle</string>")
                                 << QStringLiteral("\uFEFFTitle");
    QTest::newRow("empty") << QByteArray("<string/>") << QString();
}

void tst_Nib::translatesTexts()
{
    QFETCH(QByteArray, string);
    QFETCH(QString, shown);
    Nib nib(interfaceFile(label(string)));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY2(widget, qPrintable(nib.errorString()));
    QCOMPARE(widget->findChild<QLabel *>()->text(), shown);
}

void tst_Nib::leavesNamesAndStyleSheetsAlone()
{
    Nib nib(interfaceFile("<property name=\"styleSheet\"><string>color: red</string></property>"
                          "<widget class=\"QLabel\" name=\"x\"><property "
                          "name=\"objectName\"><string>lbl</string></property></widget>"));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY(widget);
    QCOMPARE(widget->styleSheet(), QStringLiteral("color: red"));
    QVERIFY(widget->findChild<QLabel *>(QStringLiteral("lbl")));
}

void tst_Nib::hostsTranslatorsAreNotAsked()
{
    struct Shouting : QTranslator {
        QString translate(const char *, const char *, const char *, int) const override
        {
            return QStringLiteral("HOST");
        }
        bool isEmpty() const override { return false; }
    } translator;
    QCoreApplication::installTranslator(&translator);
    Nib nib(interfaceFile(label("<string>Title</string>")));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(widget->findChild<QLabel *>()->text(), QStringLiteral("Titel <1>"));
}

void tst_Nib::makesRegisteredClasses()
{
    Nib::registerClass<Owned>(QStringLiteral("OwnClass"));
    Nib nib(interfaceFile("<widget class=\"OwnClass\" name=\"own\"><property "
                          "name=\"text\"><string>Title</string></property></widget>"));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY(widget);
    auto *own = widget->findChild<Owned *>(QStringLiteral("own"));
    QVERIFY(own);
    QCOMPARE(own->text(), QStringLiteral("Titel <1>"));
}

void tst_Nib::libraryPathsAreBack()
{
    const QStringList before = QCoreApplication::libraryPaths();
    QVERIFY(!before.isEmpty());
    Nib nib(interfaceFile(""));
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QCOMPARE(QCoreApplication::libraryPaths(), before);
}

void tst_Nib::readsAFile()
{
    const QString path = m_folder->filePath(QStringLiteral("a.nib"));
    Fixtures::put(path, interfaceFile(label("<string>Title</string>")));
    Nib nib = Nib::fromFile(path);
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY(widget);
    QCOMPARE(nib.errorString(), QString());
}

void tst_Nib::tellsWhyItFails_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("no markup") << QByteArray("nothing of the kind");
    QTest::newRow("cut off") << interfaceFile(label("<string>Title</string>")).chopped(20);
    QTest::newRow("another root") << QByteArray("<svg/>");
    QTest::newRow("without a widget") << QByteArray("<ui version=\"4.0\"></ui>");
    QTest::newRow("too large") << interfaceFile(QByteArray(16 * 1024 * 1024, ' '));
    QTest::newRow("nested too deep") << interfaceFile(QByteArray("<widget>").repeated(100'000)
                                                      + QByteArray("</widget>").repeated(100'000));
}

void tst_Nib::tellsWhyItFails()
{
    QFETCH(QByteArray, data);
    const QString path = m_folder->filePath(QStringLiteral("a.nib"));
    if (!data.isEmpty())
        Fixtures::put(path, data);
    Nib nib = Nib::fromFile(path);
    QCOMPARE(nib.instantiate(), nullptr);
    QVERIFY(nib.errorString().startsWith(path + QStringLiteral(": ")));
    QVERIFY(nib.errorString().size() > path.size() + 2);
}

LINKLIST_GUI_TEST_MAIN(tst_Nib)
#include "tst_Nib.moc"
