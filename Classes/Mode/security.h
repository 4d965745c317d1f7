#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

// The scrambler of the published configuration. A fresh key is made for every call and travels at the end of
// the output, so that a book's player can read it back without a shared secret; it hides the text from a
// casual look and protects nothing.

// Fills `state` (n bytes) with the key schedule. `work` of the schedule stays all zero for an empty key. n is
// 1 to 256.
void RC4C_Init(uchar *state, const uchar *key, int keyLength, int n);

// Encrypts or decrypts: with n = 256 this is RC4, and applying it twice gives the data back. The key is the
// text's UTF-8 bytes, of which the count modulo 256 is used. An n outside 1 to 256 gives an empty result.
QByteArray RC4C_Crypt(QByteArrayView data, const QString &keyText, int n);

// A key of 8 hexadecimal digits out of (random << 16) + clock, its lowest 32 bits, most significant digit
// first. A letter is lower-case where a fresh random number is odd.
QString RC4C_KeyText(const std::function<quint32()> &random, quint64 clock);

// Scrambles UTF-8 text: two characters for each byte, the key text, "_". All ASCII.
QByteArray RC4C_EncodeString(QByteArrayView utf8);
// The same under a given key.
QByteArray RC4C_EncodeString(QByteArrayView utf8, const QString &keyText);
