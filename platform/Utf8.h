#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

namespace Utf8
{

// All of the bytes as text; what is not UTF-8 becomes U+FFFD. QString::fromUtf8 drops U+FEFF at the beginning
// as the byte-order mark of a file. In a text, a name or a path it is a character like any other and stays;
// whoever reads a file skips that file's mark, once.
inline QString decoded(QByteArrayView utf8)
{
    using Flag = QStringDecoder::Flag;
    return QStringDecoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom)(utf8);
}

} // namespace Utf8
