#include "Classes/Mode/LastDocument.h"
#include "tests/support/TestCase.h"

// Whether what is taken is the very tree that was kept shows in a mark that no parse would make.
class tst_LastDocument : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void nothingKeptIsParsed();
    void keptDocumentIsTakenForItsBytes();
    void keptDocumentIsTakenOnce();
    void otherBytesAreParsed_data();
    void otherBytesAreParsed();
    void otherBytesLeaveTheKeptDocument();
    void onlyTheLastIsKept();
    void forgottenDocumentIsParsed();
    void hugeDocumentIsNotKept();
    void brokenBytesAreNoDocument();
};

namespace
{

const QByteArray bytes("<r><a>1</a></r>");

std::unique_ptr<pugi::xml_document> marked(const QByteArray &utf8)
{
    auto document = Xml::parse(utf8).document;
    document->document_element().append_child("kept");
    return document;
}

bool isMarked(const Xml::Draft &draft)
{
    return bool(draft.parsed.document->document_element().child("kept"));
}

} // namespace

void tst_LastDocument::init()
{
    TestCase::init();
    LastDocument::forget();
}

void tst_LastDocument::nothingKeptIsParsed()
{
    const Xml::Draft draft = LastDocument::take(bytes);
    QVERIFY(draft.parsed);
    QVERIFY(!isMarked(draft));
    QCOMPARE(Xml::serialize(draft.parsed.document->document_element()), bytes);
}

void tst_LastDocument::keptDocumentIsTakenForItsBytes()
{
    LastDocument::keep(bytes, marked(bytes));
    const Xml::Draft draft = LastDocument::take(QByteArray(bytes.constData(), bytes.size()));
    QVERIFY(isMarked(draft));
    QVERIFY(draft.isChecked());
    QVERIFY(draft.parsed.reason.isEmpty());
}

void tst_LastDocument::keptDocumentIsTakenOnce()
{
    LastDocument::keep(bytes, marked(bytes));
    QVERIFY(isMarked(LastDocument::take(bytes)));
    QVERIFY(!isMarked(LastDocument::take(bytes)));
}

void tst_LastDocument::otherBytesAreParsed_data()
{
    QTest::addColumn<QByteArray>("other");
    QTest::newRow("same size") << QByteArray("<r><a>2</a></r>");
    QTest::newRow("longer") << QByteArray("<r><a>1</a></r>\n");
    QTest::newRow("with a mark") << QByteArray("\xEF\xBB\xBF<r><a>1</a></r>");
    QTest::newRow("shorter") << QByteArray("<r/>");
}

void tst_LastDocument::otherBytesAreParsed()
{
    QFETCH(QByteArray, other);
    LastDocument::keep(bytes, marked(bytes));
    const Xml::Draft draft = LastDocument::take(other);
    QVERIFY(draft.parsed);
    QVERIFY(!isMarked(draft));
}

void tst_LastDocument::otherBytesLeaveTheKeptDocument()
{
    LastDocument::keep(bytes, marked(bytes));
    QVERIFY(!isMarked(LastDocument::take("<r/>")));
    QVERIFY(isMarked(LastDocument::take(bytes)));
}

void tst_LastDocument::onlyTheLastIsKept()
{
    LastDocument::keep(bytes, marked(bytes));
    LastDocument::keep("<r/>", marked("<r/>"));
    QVERIFY(!isMarked(LastDocument::take(bytes)));
    QVERIFY(isMarked(LastDocument::take("<r/>")));
}

void tst_LastDocument::forgottenDocumentIsParsed()
{
    LastDocument::keep(bytes, marked(bytes));
    LastDocument::forget();
    QVERIFY(!isMarked(LastDocument::take(bytes)));
}

void tst_LastDocument::hugeDocumentIsNotKept()
{
    const QByteArray large = "<r>" + QByteArray((32 << 20) - 7, 'x') + "</r>";
    LastDocument::keep(large, marked(large));
    QVERIFY(isMarked(LastDocument::take(large)));
    LastDocument::keep(bytes, marked(bytes));
    const QByteArray tooLarge = large + ' ';
    LastDocument::keep(tooLarge, marked(tooLarge));
    QVERIFY(!isMarked(LastDocument::take(tooLarge)));
    QVERIFY(!isMarked(LastDocument::take(bytes)));
}

void tst_LastDocument::brokenBytesAreNoDocument()
{
    LastDocument::keep(bytes, marked(bytes));
    QVERIFY(!LastDocument::take("").parsed);
    QVERIFY(!LastDocument::take("<r><a>1</a></q>").parsed);
}

LINKLIST_TEST_MAIN(tst_LastDocument)
#include "tst_LastDocument.moc"
