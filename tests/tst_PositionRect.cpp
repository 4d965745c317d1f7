#include "Classes/Delegate/PositionRect.h"
#include "tests/support/Fixtures.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TestCase.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <clocale>
#include <cmath>
#include <limits>

using Fixtures::get;
using Fixtures::put;

namespace
{

PositionRect record(double left, double top, double right, double bottom, double transparency = 0,
                    qint64 layer = 0)
{
    PositionRect result;
    result.setLeft(left);
    result.setTop(top);
    result.setRight(right);
    result.setBottom(bottom);
    result.setTransparency(transparency);
    result.setLayer(layer);
    return result;
}

double percent(QRandomGenerator &random)
{
    return random.bounded(400.0) - 150;
}

bool isNear(double a, double b)
{
    return std::abs(a - b) < 1e-9;
}

} // namespace

class tst_PositionRect : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void newRecordIsAllZero();
    void fieldsKeepAnyValue();
    void recordsAreComparedByAllSixFields();
    void convertsMarginsToAFrame_data();
    void convertsMarginsToAFrame();
    void bottomMarginIsTheFramesOrigin();
    void allMarginsFiftyIsAnEmptyFrameAtTheCentre();
    void multipliesBeforeItDivides();
    void bothConversionsToAFrameAgree();
    void fullPageHasNoMargins();
    void frameToMargins_data();
    void frameToMargins();
    void frameThatReachesPastTheRightEdgeHasANegativeMargin();
    void conversionLeavesTransparencyAndLayerZero();
    void conversionsAreInverse();
    void pageOfNoSizeGivesMarginsThatAreNoNumbers();
    void writesSixLinesWithoutAFinalLineFeed();
    void writesNoByteOrderMark();
    void writesNumbersAsPrintfDoes_data();
    void writesNumbersAsPrintfDoes();
    void writesTheLayer_data();
    void writesTheLayer();
    void writingReplacesTheWholeFileAndLeavesNothingBeside();
    void writingToAMissingFolderFails();
    void writingOverAFolderFails();
    void fileIsKeptWhenWritingFails();
    void readsSixValuesInOrder();
    void readsAtSinglePrecision();
    void readsWhatCountsAsARecord_data();
    void readsWhatCountsAsARecord();
    void refusesWhatIsNoRecord_data();
    void refusesWhatIsNoRecord();
    void missingFileIsNoRecord();
    void folderIsNoRecord();
    void readsNumbers_data();
    void readsNumbers();
    void readsTheLayer_data();
    void readsTheLayer();
    void fileIsReadBack();
    void decimalCommaLocaleChangesNoByte();

private:
    QString at(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QByteArray written(const PositionRect &rect) const
    {
        return rect.saveToFile(at("settings.dat")) ? get(at("settings.dat")) : QByteArray("<failed>");
    }
    std::optional<PositionRect> read(const QByteArray &content) const
    {
        put(at("settings.dat"), content);
        return PositionRect::readFromFile(at("settings.dat"));
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_PositionRect::init()
{
    TestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_PositionRect::newRecordIsAllZero()
{
    const PositionRect rect;
    QVERIFY(rect.left() == 0 && rect.top() == 0 && rect.right() == 0 && rect.bottom() == 0);
    QVERIFY(rect.transparency() == 0 && rect.layer() == 0);
}

void tst_PositionRect::fieldsKeepAnyValue()
{
    const PositionRect rect = record(-20.125, 250, 1e9, 99.99, -7, std::numeric_limits<qint64>::min());
    QVERIFY(rect.left() == -20.125);
    QVERIFY(rect.top() == 250);
    QVERIFY(rect.right() == 1e9);
    QVERIFY(rect.bottom() == 99.99);
    QVERIFY(rect.transparency() == -7);
    QCOMPARE(rect.layer(), std::numeric_limits<qint64>::min());
}

void tst_PositionRect::recordsAreComparedByAllSixFields()
{
    const PositionRect rect = record(1, 2, 3, 4, 5, 6);
    QVERIFY(rect == record(1, 2, 3, 4, 5, 6));
    QVERIFY(rect != record(0, 2, 3, 4, 5, 6));
    QVERIFY(rect != record(1, 0, 3, 4, 5, 6));
    QVERIFY(rect != record(1, 2, 0, 4, 5, 6));
    QVERIFY(rect != record(1, 2, 3, 0, 5, 6));
    QVERIFY(rect != record(1, 2, 3, 4, 0, 6));
    QVERIFY(rect != record(1, 2, 3, 4, 5, 0));
}

void tst_PositionRect::convertsMarginsToAFrame_data()
{
    QTest::addColumn<PositionRect>("rect");
    QTest::addColumn<QSizeF>("page");
    QTest::addColumn<QRectF>("frame");
    const QSizeF page(200, 400);
    QTest::newRow("each margin from its own edge")
        << record(10, 20, 30, 40) << page << QRectF(20, 160, 120, 160);
    QTest::newRow("no margins") << record(0, 0, 0, 0) << page << QRectF(0, 0, 200, 400);
    QTest::newRow("negative margins") << record(-10, -10, -10, -10) << page << QRectF(-20, -40, 240, 480);
    QTest::newRow("margins above a hundred together")
        << record(80, 80, 40, 40) << page << QRectF(160, 160, -40, -80);
    QTest::newRow("fractions") << record(12.5, 0, 0, 0.25) << page << QRectF(25, 1, 175, 399);
    QTest::newRow("page of no size") << record(10, 20, 30, 40) << QSizeF(0, 0) << QRectF(0, 0, 0, 0);
}

void tst_PositionRect::convertsMarginsToAFrame()
{
    QFETCH(PositionRect, rect);
    QFETCH(QSizeF, page);
    QTEST(rect.getObjectFrameWithOutlineSize(page), "frame");
}

void tst_PositionRect::bottomMarginIsTheFramesOrigin()
{
    QCOMPARE(record(0, 10, 0, 30).getObjectFrameWithOutlineSize({100, 100}).y(), 30.0);
}

void tst_PositionRect::allMarginsFiftyIsAnEmptyFrameAtTheCentre()
{
    QCOMPARE(record(50, 50, 50, 50).getObjectFrameWithOutlineSize({300, 200}), QRectF(150, 100, 0, 0));
}

void tst_PositionRect::multipliesBeforeItDivides()
{
    QRandomGenerator random(1);
    for (int i = 0; i < 2000; ++i) {
        const PositionRect rect = record(percent(random), percent(random), percent(random), percent(random));
        const double width = random.bounded(2000.0);
        const double height = random.bounded(2000.0);
        const QRectF frame = rect.getObjectFrameWithOutlineSize({width, height});
        QVERIFY(frame.x() == rect.left() * width / 100);
        QVERIFY(frame.y() == rect.bottom() * height / 100);
        QVERIFY(frame.width() == ((100 - rect.left()) - rect.right()) * width / 100);
        QVERIFY(frame.height() == ((100 - rect.top()) - rect.bottom()) * height / 100);
    }
}

void tst_PositionRect::bothConversionsToAFrameAgree()
{
    QRandomGenerator random(2);
    for (int i = 0; i < 500; ++i) {
        const PositionRect rect = record(percent(random), percent(random), percent(random), percent(random));
        const QSizeF page(random.bounded(2000.0), random.bounded(2000.0));
        const QRectF a = rect.getObjectFrameWithOutlineSize(page);
        const QRectF b = PositionRect::getObjectFrameWith(rect, page);
        QVERIFY(a.x() == b.x() && a.y() == b.y() && a.width() == b.width() && a.height() == b.height());
    }
}

void tst_PositionRect::fullPageHasNoMargins()
{
    const QSizeF page(612, 792);
    const PositionRect rect = PositionRect::convertObjectFrame({QPointF(0, 0), page}, page);
    QVERIFY(rect == PositionRect());
    QCOMPARE(rect.getObjectFrameWithOutlineSize(page), QRectF(QPointF(0, 0), page));
}

void tst_PositionRect::frameToMargins_data()
{
    QTest::addColumn<QRectF>("frame");
    QTest::addColumn<PositionRect>("rect");
    QTest::newRow("inside") << QRectF(20, 160, 120, 160) << record(10, 20, 30, 40);
    QTest::newRow("past every edge") << QRectF(-20, -40, 240, 480) << record(-10, -10, -10, -10);
    QTest::newRow("negative size") << QRectF(160, 160, -40, -80) << record(80, 80, 40, 40);
    QTest::newRow("empty at the centre") << QRectF(100, 200, 0, 0) << record(50, 50, 50, 50);
}

void tst_PositionRect::frameToMargins()
{
    QFETCH(QRectF, frame);
    QFETCH(PositionRect, rect);
    QVERIFY(PositionRect::convertObjectFrame(frame, {200, 400}) == rect);
}

void tst_PositionRect::frameThatReachesPastTheRightEdgeHasANegativeMargin()
{
    QCOMPARE(PositionRect::convertObjectFrame({50, 0, 100, 100}, {100, 100}).right(), -50.0);
}

void tst_PositionRect::conversionLeavesTransparencyAndLayerZero()
{
    const PositionRect rect = PositionRect::convertObjectFrame({1, 2, 3, 4}, {100, 100});
    QVERIFY(rect.transparency() == 0 && rect.layer() == 0);
}

void tst_PositionRect::conversionsAreInverse()
{
    QRandomGenerator random(3);
    for (int i = 0; i < 5000; ++i) {
        const QSizeF page(1 + random.bounded(2000.0), 1 + random.bounded(2000.0));
        const PositionRect rect = record(percent(random), percent(random), percent(random), percent(random));
        const PositionRect back
            = PositionRect::convertObjectFrame(rect.getObjectFrameWithOutlineSize(page), page);
        QVERIFY(isNear(back.left(), rect.left()) && isNear(back.top(), rect.top()));
        QVERIFY(isNear(back.right(), rect.right()) && isNear(back.bottom(), rect.bottom()));

        const QRectF frame(percent(random), percent(random), percent(random), percent(random));
        const QRectF again
            = PositionRect::convertObjectFrame(frame, page).getObjectFrameWithOutlineSize(page);
        QVERIFY(isNear(again.x(), frame.x()) && isNear(again.y(), frame.y()));
        QVERIFY(isNear(again.width(), frame.width()) && isNear(again.height(), frame.height()));
    }
}

void tst_PositionRect::pageOfNoSizeGivesMarginsThatAreNoNumbers()
{
    const PositionRect rect = PositionRect::convertObjectFrame({1, 1, 1, 1}, {0, 0});
    QVERIFY(!std::isfinite(rect.left()) && !std::isfinite(rect.top()));
    QVERIFY(!std::isfinite(rect.right()) && !std::isfinite(rect.bottom()));
    QCOMPARE(written(rect), QByteArray("0.0\n0.0\n0.0\n0.0\n0.0\n0"));
}

void tst_PositionRect::writesSixLinesWithoutAFinalLineFeed()
{
    QCOMPARE(written(record(10, 20, 30, 40, 0, 1)), QByteArray("10.0\n20.0\n30.0\n40.0\n0.0\n1"));
    QCOMPARE(written(PositionRect()), QByteArray("0.0\n0.0\n0.0\n0.0\n0.0\n0"));
}

void tst_PositionRect::writesNoByteOrderMark()
{
    QVERIFY(written(record(7, 0, 0, 0)).startsWith('7'));
}

void tst_PositionRect::writesNumbersAsPrintfDoes_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("negative") << -2.5 << QByteArray("-2.5");
    QTest::newRow("negative that rounds to zero") << -0.04 << QByteArray("-0.0");
    QTest::newRow("tie to even") << 0.25 << QByteArray("0.2");
    QTest::newRow("37.25") << 37.25 << QByteArray("37.2");
    QTest::newRow("up") << 33.36 << QByteArray("33.4");
    QTest::newRow("large") << 123456789.0 << QByteArray("123456789.0");
    QTest::newRow("above a hundred") << 250.0 << QByteArray("250.0");
}

void tst_PositionRect::writesNumbersAsPrintfDoes()
{
    QFETCH(double, value);
    QFETCH(QByteArray, line);
    QByteArray expected;
    for (int i = 0; i < 5; ++i)
        expected += line + '\n';
    QCOMPARE(written(record(value, value, value, value, value)), expected + '0');
}

void tst_PositionRect::writesTheLayer_data()
{
    QTest::addColumn<qint64>("layer");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("zero") << qint64(0) << QByteArray("0");
    QTest::newRow("negative") << qint64(-3) << QByteArray("-3");
    QTest::newRow("beyond 32 bits") << qint64(5000000000) << QByteArray("5000000000");
    QTest::newRow("largest") << std::numeric_limits<qint64>::max() << QByteArray("9223372036854775807");
    QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << QByteArray("-9223372036854775808");
}

void tst_PositionRect::writesTheLayer()
{
    QFETCH(qint64, layer);
    QFETCH(QByteArray, line);
    QCOMPARE(written(record(0, 0, 0, 0, 0, layer)), "0.0\n0.0\n0.0\n0.0\n0.0\n" + line);
    QCOMPARE(PositionRect::readFromFile(at("settings.dat"))->layer(), layer);
}

void tst_PositionRect::writingReplacesTheWholeFileAndLeavesNothingBeside()
{
    put(at("settings.dat"), QByteArray(5000, 'x'));
    QCOMPARE(written(record(1, 2, 3, 4, 5, 6)), QByteArray("1.0\n2.0\n3.0\n4.0\n5.0\n6"));
    QCOMPARE(Fixtures::tree(m_folder->path()).keys(), QStringList{QStringLiteral("settings.dat")});
}

void tst_PositionRect::writingToAMissingFolderFails()
{
    QVERIFY(!record(1, 2, 3, 4).saveToFile(at("none/settings.dat")));
    QVERIFY(!QFileInfo::exists(at("none")));
    QVERIFY(!record(1, 2, 3, 4).saveToFile(QString()));
}

void tst_PositionRect::writingOverAFolderFails()
{
    QVERIFY(QDir().mkpath(at("settings.dat")));
    const PositionRect rect = record(1, 2, 3, 4, 5, 6);
    QVERIFY(!rect.saveToFile(at("settings.dat")));
    QVERIFY(QFileInfo(at("settings.dat")).isDir());
    QVERIFY(rect == record(1, 2, 3, 4, 5, 6));
}

void tst_PositionRect::fileIsKeptWhenWritingFails()
{
    put(at("settings.dat"), "the old content");
    bool ok = true;
    {
        const FullDisk disk;
        ok = record(1, 2, 3, 4, 5, 6).saveToFile(at("settings.dat"));
    }
    QVERIFY(!ok);
    QCOMPARE(get(at("settings.dat")), QByteArray("the old content"));
    QCOMPARE(Fixtures::tree(m_folder->path()).size(), 1);
}

void tst_PositionRect::readsSixValuesInOrder()
{
    const auto rect = read("1.5\n2.5\n3.5\n4.5\n5.5\n6");
    QVERIFY(rect);
    QVERIFY(*rect == record(1.5, 2.5, 3.5, 4.5, 5.5, 6));
}

void tst_PositionRect::readsAtSinglePrecision()
{
    const auto rect = read("33.3\n33.3\n33.3\n33.3\n33.3\n0");
    QVERIFY(rect);
    for (const double value :
         {rect->left(), rect->top(), rect->right(), rect->bottom(), rect->transparency()})
        QVERIFY(value == 33.299999237060546875);
}

void tst_PositionRect::readsWhatCountsAsARecord_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<PositionRect>("rect");
    const PositionRect rect = record(1, 2, 3, 4, 5, 6);
    QTest::newRow("Windows line ends") << QByteArray("1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n") << rect;
    QTest::newRow("carriage returns anywhere") << QByteArray("\r1\r\n2.\r0\n3\n4\n\r\r5\n6\r") << rect;
    QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBF"
                                                   "1\n2\n3\n4\n5\n6")
                                     << rect;
    QTest::newRow("final line feed") << QByteArray("1\n2\n3\n4\n5\n6\n") << rect;
    QTest::newRow("seven lines") << QByteArray("1\n2\n3\n4\n5\n6\n7") << rect;
    QTest::newRow("many lines") << QByteArray("1\n2\n3\n4\n5\n6\n") + QByteArray(10000, '\n') << rect;
    QTest::newRow("five lines and a line feed") << QByteArray("1\n2\n3\n4\n5\n") << record(1, 2, 3, 4, 5, 0);
    QTest::newRow("empty lines") << QByteArray("\n\n\n\n\n") << PositionRect();
    QTest::newRow("empty line in between") << QByteArray("1\n\n3\n4\n5\n6") << record(1, 0, 3, 4, 5, 6);
    QTest::newRow("text beyond ascii") << QByteArray("1\n2\n3\n4\n5\n6 caf\xC3\xA9") << rect;
}

void tst_PositionRect::readsWhatCountsAsARecord()
{
    QFETCH(QByteArray, content);
    QFETCH(PositionRect, rect);
    const auto result = read(content);
    QVERIFY(result);
    QVERIFY(*result == rect);
}

void tst_PositionRect::refusesWhatIsNoRecord_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("mark alone") << QByteArray("\xEF\xBB\xBF");
    QTest::newRow("five lines") << QByteArray("1\n2\n3\n4\n5");
    QTest::newRow("five Windows lines") << QByteArray("1\r\n2\r\n3\r\n4\r\n5");
    QTest::newRow("carriage returns alone") << QByteArray("1\r2\r3\r4\r5\r6\r7");
    QTest::newRow("not UTF-8") << QByteArray("1\n2\n3\n4\n5\n6\n\xFF");
    QTest::newRow("Latin-1") << QByteArray("1\n2\n3\n4\n5\n6 caf\xE9\n");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE"
                                          "1\0\n\0"
                                          "2\0\n\0"
                                          "3\0\n\0"
                                          "4\0\n\0"
                                          "5\0\n\0"
                                          "6\0",
                                          24);
    QTest::newRow("binary") << QByteArray("\x7F"
                                          "ELF\x02\x01\x80\n\n\n\n\n\n\n\xC0\xAF");
}

void tst_PositionRect::refusesWhatIsNoRecord()
{
    QFETCH(QByteArray, content);
    QVERIFY(!read(content));
}

void tst_PositionRect::missingFileIsNoRecord()
{
    QVERIFY(!PositionRect::readFromFile(at("none")));
    QVERIFY(!PositionRect::readFromFile(QString()));
}

void tst_PositionRect::folderIsNoRecord()
{
    QVERIFY(!PositionRect::readFromFile(m_folder->path()));
}

void tst_PositionRect::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<double>("value");
    const double largest = std::numeric_limits<float>::max();
    const auto row = [](const char *line, double value) { QTest::newRow(line) << QByteArray(line) << value; };
    row("12.5abc", 12.5);
    row("abc", 0);
    row("", 0);
    row("-2.5", -2.5);
    row("-0.0", 0);
    row("+5", 5);
    row("  7.5", 7.5);
    row("\t7.5", 7.5);
    row(".5", 0.5);
    row("1e2", 100);
    row("12,5", 12);
    row("nan", 0);
    row("inf", 0);
    row("-inf", 0);
    row("0x10", 0);
    row("1e400", largest);
    row("-1e400", -largest);
    row("1e39", largest);
    row("1e-60", 0);
    row("\xD9\xA3", 0);
    QTest::newRow("zero bytes after the number") << QByteArray("5\0\0", 3) << 5.0;
}

void tst_PositionRect::readsNumbers()
{
    QFETCH(QByteArray, line);
    QFETCH(double, value);
    const auto rect = read(line + '\n' + line + '\n' + line + '\n' + line + '\n' + line + "\n1");
    QVERIFY(rect);
    QVERIFY(*rect == record(value, value, value, value, value, 1));
}

void tst_PositionRect::readsTheLayer_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<qint64>("layer");
    const auto row = [](const char *line, qint64 layer) { QTest::newRow(line) << QByteArray(line) << layer; };
    row("1", 1);
    row("-3", -3);
    row("+4", 4);
    row(" 5x", 5);
    row("2.9", 2);
    row("abc", 0);
    row("", 0);
    row("1e400", 1);
    row("5000000000", 5000000000);
    row("99999999999999999999", std::numeric_limits<qint64>::max());
    row("-99999999999999999999", std::numeric_limits<qint64>::min());
}

void tst_PositionRect::readsTheLayer()
{
    QFETCH(QByteArray, line);
    const auto rect = read("0\n0\n0\n0\n0\n" + line);
    QVERIFY(rect);
    QTEST(rect->layer(), "layer");
}

void tst_PositionRect::fileIsReadBack()
{
    QRandomGenerator random(4);
    const auto tenth = [&random] { return double(static_cast<float>(random.bounded(4000) - 1500) / 10.0F); };
    for (int i = 0; i < 200; ++i) {
        const PositionRect rect
            = record(tenth(), tenth(), tenth(), tenth(), tenth(), static_cast<qint64>(random.generate64()));
        QVERIFY(rect.saveToFile(at("settings.dat")));
        const auto back = PositionRect::readFromFile(at("settings.dat"));
        QVERIFY(back);
        QVERIFY(*back == rect);
    }
}

void tst_PositionRect::decimalCommaLocaleChangesNoByte()
{
    QVERIFY2(std::setlocale(LC_ALL, "de_DE.UTF-8"), "the locale de_DE.UTF-8 is not installed");
    const bool comma = *std::localeconv()->decimal_point == ',';
    const QByteArray bytes = written(record(12345.5, -2.5, 0.25, 40, 33.3, 123456789));
    const auto rect = read("1.5\n1,5\n12345.5\n0\n0\n123456789");
    std::setlocale(LC_ALL, "C");
    QVERIFY(comma);
    QCOMPARE(bytes, QByteArray("12345.5\n-2.5\n0.2\n40.0\n33.3\n123456789"));
    QVERIFY(rect);
    QVERIFY(*rect == record(1.5, 1, 12345.5, 0, 0, 123456789));
}

LINKLIST_TEST_MAIN(tst_PositionRect)
#include "tst_PositionRect.moc"
