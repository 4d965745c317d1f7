#include "Classes/Mode/Locale.h"
#include "Classes/Mode/SelectedLanguage.h"
#include "platform/Bundle.h"
#include "platform/ui/Nib.h"
#include "tests/support/Fixtures.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QWidget>

namespace
{
QByteArray interfaceFile(const QString &root)
{
    return "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"" + root.toUtf8() + "\"/></ui>";
}
} // namespace

class tst_SelectedLanguage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void languageThenEnglishThenTheFolder();
    void nilLanguageMeansEnglish();
    void resourcesMayLieInContents();
    void windowLooksInTheDefaultBundlePlainNibInItsOwn();
    void withoutABundleTheMainOneIsSearched();
    void nothingFoundIsEmpty();
    void unreadableIsEmpty();

private:
    void put(const QString &bundle, const char *path)
    {
        const QString relative = QString::fromLatin1(path);
        Fixtures::put(bundle + u'/' + relative, interfaceFile(relative));
    }
    // The plain nib of that bundle by the name of its root, null for none.
    static QString plain(const QString &bundle)
    {
        const std::unique_ptr<Nib> nib
            = SelectedLanguage::initWithResourceNibName(QStringLiteral("N"), bundle);
        const std::unique_ptr<QWidget> widget(nib ? nib->instantiate() : nullptr);
        return widget ? widget->objectName() : QString();
    }
    static QString windowNib() { return SelectedLanguage::windowNibPath(QStringLiteral("N")); }

    std::unique_ptr<QTemporaryDir> m_default;
    std::unique_ptr<QTemporaryDir> m_other;
};

void tst_SelectedLanguage::init()
{
    TestCase::init();
    resetLocaleForTesting();
    m_default = std::make_unique<QTemporaryDir>();
    m_other = std::make_unique<QTemporaryDir>();
    setDefaultBundlePath(m_default->path());
    setDefaultLanguageCode(QStringLiteral("de"));
}

void tst_SelectedLanguage::cleanup()
{
    resetLocaleForTesting();
}

void tst_SelectedLanguage::languageThenEnglishThenTheFolder()
{
    const QString folder = m_default->path();
    for (const char *path : {"de.lproj/N.nib", "en.lproj/N.nib", "N.nib", "fr.lproj/N.nib"})
        put(folder, path);
    for (const char *path : {"de.lproj/N.nib", "en.lproj/N.nib", "N.nib"}) {
        const QString expected = QString::fromLatin1(path);
        QCOMPARE(windowNib(), folder + u'/' + expected);
        QCOMPARE(plain(folder), expected);
        QVERIFY(QFile::remove(folder + u'/' + expected));
    }
    QCOMPARE(plain(folder), QString());
}

void tst_SelectedLanguage::nilLanguageMeansEnglish()
{
    setDefaultLanguageCode(QString());
    put(m_default->path(), "N.nib");
    put(m_default->path(), "de.lproj/N.nib");
    QCOMPARE(plain(m_default->path()), QStringLiteral("N.nib"));
    put(m_default->path(), "en.lproj/N.nib");
    QCOMPARE(plain(m_default->path()), QStringLiteral("en.lproj/N.nib"));
    QCOMPARE(windowNib(), m_default->filePath(QStringLiteral("en.lproj/N.nib")));
}

void tst_SelectedLanguage::resourcesMayLieInContents()
{
    put(m_default->path(), "Contents/Resources/en.lproj/N.nib");
    QCOMPARE(windowNib(), m_default->filePath(QStringLiteral("Contents/Resources/en.lproj/N.nib")));
}

void tst_SelectedLanguage::windowLooksInTheDefaultBundlePlainNibInItsOwn()
{
    put(m_default->path(), "en.lproj/N.nib");
    put(m_other->path(), "N.nib");
    QCOMPARE(windowNib(), m_default->filePath(QStringLiteral("en.lproj/N.nib")));
    QCOMPARE(plain(m_other->path()), QStringLiteral("N.nib"));
    setDefaultBundlePath(m_other->path());
    QCOMPARE(windowNib(), m_other->filePath(QStringLiteral("N.nib")));
    QCOMPARE(plain(m_default->path()), QStringLiteral("en.lproj/N.nib"));
}

void tst_SelectedLanguage::withoutABundleTheMainOneIsSearched()
{
    const QString name = QStringLiteral("tst_SelectedLanguage-own");
    const QString path = Bundle::mainBundle().resourcePath() + u'/' + name + QStringLiteral(".nib");
    Fixtures::put(path, interfaceFile(name));
    const auto found = SelectedLanguage::initWithResourceNibName(name, QString());
    const QString window = SelectedLanguage::windowNibPath(name);
    const bool inOther = bool(SelectedLanguage::initWithResourceNibName(name, m_other->path()));
    QVERIFY(QFile::remove(path));
    QVERIFY(found);
    QCOMPARE(window, path);
    QVERIFY(!inOther);
}

void tst_SelectedLanguage::nothingFoundIsEmpty()
{
    QCOMPARE(windowNib(), QString());
    QVERIFY(!SelectedLanguage::initWithResourceNibName(QStringLiteral("N"), m_default->path()));
    setDefaultBundlePath(QString());
    QCOMPARE(windowNib(), QString());
    QVERIFY(!SelectedLanguage::initWithResourceNibName(QString(), m_default->path()));
}

void tst_SelectedLanguage::unreadableIsEmpty()
{
    QVERIFY(QDir(m_default->path()).mkpath(QStringLiteral("de.lproj/N.nib")));
    put(m_default->path(), "en.lproj/N.nib");
    // A folder counts as found, and there is no interface in it.
    QCOMPARE(windowNib(), m_default->filePath(QStringLiteral("de.lproj/N.nib")));
    QCOMPARE(plain(m_default->path()), QString());
}

LINKLIST_GUI_TEST_MAIN(tst_SelectedLanguage)
#include "tst_SelectedLanguage.moc"
