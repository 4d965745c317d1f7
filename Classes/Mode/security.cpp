#include "Classes/Mode/security.h"

#include <QRandomGenerator>
#include <array>
#include <cstring>
#include <ctime>
#include <numeric>

namespace
{

constexpr int fullState = 256;

// The key stream over a state of 256 bytes, where arithmetic modulo 256 is what bytes do by themselves.
class KeyStream
{
public:
    explicit KeyStream(const QString &keyText)
    {
        const QByteArray key = keyText.toUtf8();
        RC4C_Init(m_state.data(), reinterpret_cast<const uchar *>(key.constData()),
                  int(key.size() % fullState), fullState);
    }

    uchar next()
    {
        const uchar t = m_state[++m_i];
        m_j = uchar(m_j + t);
        m_state[m_i] = m_state[m_j];
        m_state[m_j] = t;
        return m_state[uchar(m_state[m_i] + t)];
    }

private:
    std::array<uchar, fullState> m_state;
    uchar m_i = 0;
    uchar m_j = 0;
};

// The two characters of every byte at each of the three places that a byte can have.
using Pair = std::array<char, 2>;
using PairTable = std::array<std::array<Pair, 256>, 3>;

constexpr PairTable makePairs()
{
    constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    PairTable pairs{};
    for (size_t place = 0; place < 3; ++place) {
        for (size_t byte = 0; byte < 256; ++byte)
            pairs[place][byte] = {alphabet[place * 16 + (byte >> 4)], alphabet[place * 16 + (byte & 15)]};
    }
    return pairs;
}

constexpr PairTable pairs = makePairs();

} // namespace

void RC4C_Init(uchar *state, const uchar *key, int keyLength, int n)
{
    std::iota(state, state + n, uchar(0));
    int j = 0;
    for (int i = 0; i < n; ++i) {
        const int work = keyLength != 0 ? key[i % keyLength] : 0;
        j = (j + state[i] + work) % n;
        std::swap(state[i], state[j]);
    }
}

QByteArray RC4C_Crypt(QByteArrayView data, const QString &keyText, int n)
{
    if (n < 1 || n > fullState)
        return {};
    QByteArray result(data.data(), data.size());
    if (n == fullState) {
        KeyStream stream(keyText);
        for (char &byte : result)
            byte = char(uchar(byte) ^ stream.next());
        return result;
    }
    const QByteArray key = keyText.toUtf8();
    std::array<uchar, fullState> state;
    RC4C_Init(state.data(), reinterpret_cast<const uchar *>(key.constData()), int(key.size() % 256), n);
    int i = 0;
    int j = 0;
    for (char &byte : result) {
        i = (i + 1) % n;
        const uchar t = state[size_t(i)];
        j = (j + t) % n;
        state[size_t(i)] = state[size_t(j)];
        state[size_t(j)] = t;
        byte = char(uchar(byte) ^ state[size_t((state[size_t(i)] + t) % n)]);
    }
    return result;
}

QString RC4C_KeyText(const std::function<quint32()> &random, quint64 clock)
{
    const auto value = quint32((quint64(random()) << 16) + clock);
    QString key = QString::number(value, 16).rightJustified(8, u'0');
    for (QChar &digit : key) {
        if (digit.isLetter() && random() % 2 == 0)
            digit = digit.toUpper();
    }
    return key;
}

QByteArray RC4C_EncodeString(QByteArrayView utf8)
{
    return RC4C_EncodeString(
        utf8, RC4C_KeyText([] { return QRandomGenerator::global()->generate(); }, quint64(std::clock())));
}

QByteArray RC4C_EncodeString(QByteArrayView utf8, const QString &keyText)
{
    const QByteArray tail = keyText.toUtf8() + '_';
    QByteArray result(utf8.size() * 2 + tail.size(), Qt::Uninitialized);
    char *out = result.data();
    KeyStream stream(keyText);
    size_t place = 0;
    for (const char byte : utf8) {
        const Pair &pair = pairs[place][uchar(byte) ^ stream.next()];
        std::memcpy(out, pair.data(), pair.size());
        out += pair.size();
        place = place == 2 ? 0 : place + 1;
    }
    std::memcpy(out, tail.constData(), size_t(tail.size()));
    return result;
}
