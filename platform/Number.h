#pragma once

#include <QByteArray>
#include <QStringView>

// Numbers as text, the same in every locale: formatting rounds as C's printf does, reading takes the longest
// numeric prefix. All settings files, fields and the player configuration go through here.
namespace Number
{

// "%.Nf": the exact binary value rounded half to even, so 0.25 with one decimal is "0.2" and -0.04 is "-0.0".
// What is not finite is written as zero, which is also what reading "nan" or "inf" gives.
QByteArray fixed(double value, int decimals);

// The longest decimal prefix of the text, after leading blanks and an optional sign: "12.5abc" is 12.5,
// "abc", "nan", "inf" and "0x10" are 0. Too large a number is the largest finite one, too small a one is 0.
double toDouble(QStringView text);

// The same at single precision, widened: "33.3" is 33.299999237060547.
double toSingle(QStringView text);

// The longest integer prefix by the same rules, saturating at the ends of the 64-bit range.
qint64 toInteger(QStringView text);

} // namespace Number
