#include "Classes/Mode/security.h"
#include "tests/support/ProcessorTimer.h"
#include "tests/support/TestCase.h"

#include <QRandomGenerator>
#include <QSet>
#include <deque>
#include <numeric>
#include <vector>

namespace
{

const QByteArray alphabet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

// The schedule and the stream once more, over plain integers.
std::vector<int> modelState(const QByteArray &key, int n)
{
    std::vector<int> state(static_cast<size_t>(n));
    std::vector<int> work(static_cast<size_t>(n), 0);
    std::iota(state.begin(), state.end(), 0);
    for (int i = 0; i < n && !key.isEmpty(); ++i)
        work[static_cast<size_t>(i)] = static_cast<uchar>(key[i % key.size()]);
    size_t j = 0;
    for (size_t i = 0; i < state.size(); ++i) {
        j = (j + static_cast<size_t>(state[i]) + static_cast<size_t>(work[i])) % state.size();
        std::swap(state[i], state[j]);
    }
    return state;
}

QByteArray modelCrypt(const QByteArray &data, const QByteArray &key, int n)
{
    std::vector<int> state = modelState(key.left(key.size() % 256), n);
    const size_t size = state.size();
    size_t i = 0;
    size_t j = 0;
    QByteArray result;
    for (const char byte : data) {
        i = (i + 1) % size;
        const int t = state[i];
        j = (j + static_cast<size_t>(t)) % size;
        state[i] = state[j];
        state[j] = t;
        const size_t k = static_cast<size_t>(state[i] + t) % size;
        result.append(static_cast<char>(static_cast<uchar>(byte) ^ static_cast<uchar>(state[k])));
    }
    return result;
}

QByteArray randomBytes(QRandomGenerator &random, int count)
{
    QByteArray result(count, '\0');
    for (char &byte : result)
        byte = static_cast<char>(random.bounded(256));
    return result;
}

// What a book's player does to read the configuration; nothing when the text has not that form.
std::optional<QByteArray> unscrambled(QByteArray text)
{
    if (!text.endsWith('_') || text.size() < 9 || text.size() % 2 == 0)
        return {};
    text.chop(1);
    const QString key = QString::fromLatin1(text.right(8));
    text.chop(8);
    QByteArray encrypted;
    for (qsizetype pair = 0; pair < text.size() / 2; ++pair) {
        const qsizetype shift = 16 * (pair % 3);
        const qsizetype high = alphabet.indexOf(text[2 * pair]) - shift;
        const qsizetype low = alphabet.indexOf(text[2 * pair + 1]) - shift;
        if (high < 0 || high > 15 || low < 0 || low > 15)
            return {};
        encrypted.append(static_cast<char>(high * 16 + low));
    }
    return RC4C_Crypt(encrypted, key, 256);
}

// A random source that tells the given numbers in order and fails the test when asked for more.
class Script
{
public:
    explicit Script(std::deque<quint32> numbers)
        : m_numbers(std::move(numbers))
    {
    }
    std::function<quint32()> source()
    {
        return [this] {
            if (m_numbers.empty()) {
                ++m_missing;
                return quint32(0);
            }
            const quint32 number = m_numbers.front();
            m_numbers.pop_front();
            return number;
        };
    }
    bool isUsedUpExactly() const { return m_numbers.empty() && m_missing == 0; }

private:
    std::deque<quint32> m_numbers;
    int m_missing = 0;
};

} // namespace

class tst_security : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void publishedVectors_data();
    void publishedVectors();
    void applyingTheCipherTwiceRestoresTheData();
    void scheduleFillsExactlyNBytesWithAPermutation();
    void scheduleOfAnEmptyKeyTakesNoBytes();
    void scheduleUsesOnlyTheStatedKeyLength();
    void anyStateSizeAgreesWithTheModel();
    void stateSizeOutsideItsRangeGivesNothing();
    void keyLengthCountsModulo256();
    void keyIsTheTextInUtf8();
    void upperAndLowerCaseKeysDiffer();
    void emptyDataStaysEmpty();
    void keyTextIsBuiltFromRandomAndClock_data();
    void keyTextIsBuiltFromRandomAndClock();
    void digitsDrawNoRandomNumber();
    void everyLetterDrawsOneRandomNumber();
    void encodesUnderAGivenKey();
    void emptyInputGivesOnlyTheKey();
    void lengthIsTwicePlusNine_data();
    void lengthIsTwicePlusNine();
    void characterPairsComeFromTheirPartOfTheAlphabet();
    void everyCallMakesAFreshKey();
    void bothCasesOfLettersAppearInKeys();
    void playerReadsItBack_data();
    void playerReadsItBack();
    void playerReadsRandomBytesBack();
    void largeConfigurationIsQuick();
};

void tst_security::publishedVectors_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("Key") << QStringLiteral("Key") << QByteArray("Plaintext")
                         << QByteArray("bbf316e8d940af0ad3");
    QTest::newRow("Wiki") << QStringLiteral("Wiki") << QByteArray("pedia") << QByteArray("1021bf0420");
    QTest::newRow("Secret") << QStringLiteral("Secret") << QByteArray("Attack at dawn")
                            << QByteArray("45a01f645fc35b383552544b9bf5");
}

void tst_security::publishedVectors()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, plain);
    QFETCH(QByteArray, hex);
    QCOMPARE(RC4C_Crypt(plain, key, 256).toHex(), hex);
    QCOMPARE(RC4C_Crypt(QByteArray::fromHex(hex), key, 256), plain);
}

void tst_security::applyingTheCipherTwiceRestoresTheData()
{
    QRandomGenerator random(1);
    for (int i = 0; i < 500; ++i) {
        const QByteArray data = randomBytes(random, random.bounded(700));
        const QString key = QString::number(random.generate64(), 36);
        QCOMPARE(RC4C_Crypt(RC4C_Crypt(data, key, 256), key, 256), data);
    }
}

void tst_security::scheduleFillsExactlyNBytesWithAPermutation()
{
    for (const int n : {1, 2, 3, 16, 100, 255, 256}) {
        QByteArray memory(n + 32, '\x5A');
        const QByteArray key("Wiki");
        auto *bytes = reinterpret_cast<uchar *>(memory.data());
        RC4C_Init(bytes + 16, reinterpret_cast<const uchar *>(key.constData()), 4, n);
        QCOMPARE(memory.left(16), QByteArray(16, '\x5A'));
        QCOMPARE(memory.right(16), QByteArray(16, '\x5A'));
        const std::vector<int> expected = modelState(key, n);
        for (int i = 0; i < n; ++i)
            QCOMPARE(int(bytes[16 + i]), expected[static_cast<size_t>(i)]);
        std::sort(bytes + 16, bytes + 16 + n);
        for (int i = 0; i < n; ++i)
            QCOMPARE(int(bytes[16 + i]), i);
    }
}

void tst_security::scheduleOfAnEmptyKeyTakesNoBytes()
{
    uchar state[256];
    RC4C_Init(state, nullptr, 0, 256);
    const std::vector<int> expected = modelState({}, 256);
    for (size_t i = 0; i < 256; ++i)
        QCOMPARE(int(state[i]), expected[i]);
}

void tst_security::scheduleUsesOnlyTheStatedKeyLength()
{
    uchar longKey[256];
    uchar shortKey[256];
    const QByteArray key("Wikipedia");
    RC4C_Init(longKey, reinterpret_cast<const uchar *>(key.constData()), 4, 256);
    RC4C_Init(shortKey, reinterpret_cast<const uchar *>("Wiki"), 4, 256);
    QVERIFY(std::equal(std::begin(longKey), std::end(longKey), std::begin(shortKey)));
}

void tst_security::anyStateSizeAgreesWithTheModel()
{
    QRandomGenerator random(2);
    for (int n = 1; n <= 256; ++n) {
        for (int keyLength : {0, 1, 7, 8, 40, 255, 256, 300}) {
            QByteArray key(keyLength, ' ');
            for (char &c : key)
                c = static_cast<char>(1 + random.bounded(127));
            const QByteArray data = randomBytes(random, 60);
            QCOMPARE(RC4C_Crypt(data, QString::fromLatin1(key), n), modelCrypt(data, key, n));
        }
    }
}

void tst_security::stateSizeOutsideItsRangeGivesNothing()
{
    for (const int n : {0, -1, 257, 100000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QVERIFY(RC4C_Crypt("data", QStringLiteral("Key"), n).isEmpty());
}

void tst_security::keyLengthCountsModulo256()
{
    const QByteArray data("some text of the configuration");
    const QString key44(44, u'k');
    QCOMPARE(RC4C_Crypt(data, key44 + QString(256, u'z'), 256), RC4C_Crypt(data, key44, 256));
    QCOMPARE(RC4C_Crypt(data, QString(256, u'z'), 256), RC4C_Crypt(data, QString(), 256));
    QCOMPARE(RC4C_Crypt(data, QString(512, u'z'), 256), RC4C_Crypt(data, QString(), 256));
    QVERIFY(RC4C_Crypt(data, QString(255, u'z'), 256) != RC4C_Crypt(data, QString(), 256));
}

void tst_security::keyIsTheTextInUtf8()
{
    const QByteArray data("plain");
    const QString key = QStringLiteral("clé\U0001F511");
    QCOMPARE(RC4C_Crypt(data, key, 256), modelCrypt(data, key.toUtf8(), 256));
    // 128 characters of two bytes are 256 bytes, which count as none.
    QCOMPARE(RC4C_Crypt(data, QString(128, u'é'), 256), RC4C_Crypt(data, QString(), 256));
}

void tst_security::upperAndLowerCaseKeysDiffer()
{
    QVERIFY(RC4C_Crypt("plain", QStringLiteral("0000000a"), 256)
            != RC4C_Crypt("plain", QStringLiteral("0000000A"), 256));
}

void tst_security::emptyDataStaysEmpty()
{
    QVERIFY(RC4C_Crypt({}, QStringLiteral("Key"), 256).isEmpty());
}

void tst_security::keyTextIsBuiltFromRandomAndClock_data()
{
    QTest::addColumn<quint32>("random");
    QTest::addColumn<quint64>("clock");
    QTest::addColumn<QString>("lower");
    const auto row = [](const char *name, quint32 random, quint64 clock, const char *lower) {
        QTest::newRow(name) << random << clock << QString::fromLatin1(lower);
    };
    row("zero", 0, 0, "00000000");
    row("clock is the low half", 0, 0x1234, "00001234");
    row("random is shifted left by 16", 0x1234, 0, "12340000");
    row("both", 0xABCD, 0xEF01, "abcdef01");
    row("clock carries into the random half", 1, 0x1FFFF, "0002ffff");
    row("only the lowest 32 bits of the sum", 0xFFFF, 0x10000, "00000000");
    row("random above 16 bits is shifted out", 0x7FFF1234, 5, "12340005");
    row("clock above 32 bits is dropped", 0, 0x123456789ABCDEF0, "9abcdef0");
    row("most significant digit first", 0x1234, 0x5678, "12345678");
    row("every letter", 0xABCD, 0xEFAB, "abcdefab");
}

void tst_security::keyTextIsBuiltFromRandomAndClock()
{
    QFETCH(quint32, random);
    QFETCH(quint64, clock);
    QFETCH(QString, lower);
    const auto letters = static_cast<size_t>(
        std::count_if(lower.cbegin(), lower.cend(), [](QChar c) { return c.isLetter(); }));
    for (const quint32 number : {7u, 0x80000001u, 8u, 0u}) {
        std::deque<quint32> numbers(letters, number);
        numbers.push_front(random);
        Script script(numbers);
        QCOMPARE(RC4C_KeyText(script.source(), clock), number % 2 == 1 ? lower : lower.toUpper());
        QVERIFY(script.isUsedUpExactly());
    }
}

void tst_security::digitsDrawNoRandomNumber()
{
    Script script({0x1234});
    QCOMPARE(RC4C_KeyText(script.source(), 0x9876), QStringLiteral("12349876"));
    QVERIFY(script.isUsedUpExactly());
}

void tst_security::everyLetterDrawsOneRandomNumber()
{
    // The order in which the letters draw is free: as many lower-case ones as odd numbers, whatever the
    // place.
    Script script({0xA1B2, 1, 2, 4, 3});
    const QString key = RC4C_KeyText(script.source(), 0xC3D4);
    QCOMPARE(key.toLower(), QStringLiteral("a1b2c3d4"));
    QCOMPARE(std::count_if(key.cbegin(), key.cend(), [](QChar c) { return c.isLower(); }), 2);
    QVERIFY(script.isUsedUpExactly());
}

void tst_security::encodesUnderAGivenKey()
{
    QCOMPARE(RC4C_EncodeString("Plaintext", QStringLiteral("Key")), QByteArray("LLfThmOIdZkgKPQatjKey_"));
    const QString key = QStringLiteral("0aB1c2D3");
    const QByteArray scrambled = RC4C_EncodeString("var bookPlugin={};", key);
    QVERIFY(scrambled.endsWith("0aB1c2D3_"));
    QCOMPARE(unscrambled(scrambled), QByteArray("var bookPlugin={};"));
    QCOMPARE(RC4C_EncodeString("var bookPlugin={};", key), scrambled);
}

void tst_security::emptyInputGivesOnlyTheKey()
{
    const QByteArray scrambled = RC4C_EncodeString(QByteArrayView());
    QCOMPARE(scrambled.size(), 9);
    QVERIFY(scrambled.endsWith('_'));
    for (const char c : scrambled.left(8))
        QVERIFY(QByteArray("0123456789abcdefABCDEF").contains(c));
    QCOMPARE(RC4C_EncodeString("", QStringLiteral("12345678")), QByteArray("12345678_"));
}

void tst_security::lengthIsTwicePlusNine_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("one character") << QStringLiteral("a");
    QTest::newRow("ascii") << QStringLiteral("var bookPlugin={};");
    QTest::newRow("two bytes each") << QStringLiteral("ééé");
    QTest::newRow("emoji") << QStringLiteral("\U0001F600");
}

void tst_security::lengthIsTwicePlusNine()
{
    QFETCH(QString, text);
    QCOMPARE(RC4C_EncodeString(text.toUtf8()).size(), 2 * text.toUtf8().size() + 9);
}

void tst_security::characterPairsComeFromTheirPartOfTheAlphabet()
{
    QRandomGenerator random(3);
    const QByteArray parts[] = {alphabet.mid(0, 16), alphabet.mid(16, 16), alphabet.mid(32, 16)};
    QCOMPARE(parts[0], QByteArray("ABCDEFGHIJKLMNOP"));
    QCOMPARE(parts[1], QByteArray("QRSTUVWXYZabcdef"));
    QCOMPARE(parts[2], QByteArray("ghijklmnopqrstuv"));
    QSet<char> seen;
    for (int round = 0; round < 50; ++round) {
        const QByteArray scrambled = RC4C_EncodeString(randomBytes(random, 100));
        for (int i = 0; i < 200; ++i) {
            QVERIFY(parts[i / 2 % 3].contains(scrambled[i]));
            seen.insert(scrambled[i]);
        }
    }
    QCOMPARE(seen.size(), 48);
}

void tst_security::everyCallMakesAFreshKey()
{
    QSet<QByteArray> outputs;
    for (int i = 0; i < 100; ++i) {
        const QByteArray scrambled = RC4C_EncodeString("the same text");
        QCOMPARE(scrambled.size(), 35);
        outputs.insert(scrambled);
    }
    // Two of a hundred random keys may agree by chance.
    QVERIFY(outputs.size() > 90);
}

void tst_security::bothCasesOfLettersAppearInKeys()
{
    QByteArray keys;
    for (int i = 0; i < 200; ++i)
        keys += RC4C_EncodeString("").left(8);
    for (const char c : QByteArray("0123456789abcdefABCDEF"))
        QVERIFY2(keys.contains(c), QByteArray(1, c).constData());
    QVERIFY(!keys.contains('_'));
}

void tst_security::playerReadsItBack_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("configuration") << QByteArray("var bookPlugin={\"left\":\"10.0%\",\"layer\":1};");
    QTest::newRow("zero byte") << QByteArray("a\0b", 3);
    QTest::newRow("text beyond ascii") << QStringLiteral("héllo \U0001F600 日本").toUtf8();
    QTest::newRow("underscores and hexadecimal digits at the end") << QByteArray("deadbeef_0A1b2C3d_");
}

void tst_security::playerReadsItBack()
{
    QFETCH(QByteArray, text);
    for (int i = 0; i < 20; ++i)
        QCOMPARE(unscrambled(RC4C_EncodeString(text)), text);
}

void tst_security::playerReadsRandomBytesBack()
{
    QRandomGenerator random(4);
    for (int size = 0; size < 600; ++size) {
        const QByteArray data = randomBytes(random, size);
        QCOMPARE(unscrambled(RC4C_EncodeString(data)), data);
    }
}

void tst_security::largeConfigurationIsQuick()
{
    const QByteArray text(4 << 20, 'x');
    ProcessorTimer timer;
    timer.start();
    const QByteArray scrambled = RC4C_EncodeString(text);
    QVERIFY(timer.elapsed() < 5000);
    QCOMPARE(unscrambled(scrambled), text);
}

LINKLIST_TEST_MAIN(tst_security)
#include "tst_security.moc"
