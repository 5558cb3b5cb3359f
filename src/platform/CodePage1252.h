// Code page 1252, the one byte <-> character table of the store. Every value on
// its way into a cipher or hash, and every cipher text that stands in a text of
// 16-bit characters, passes through it. The five positions that Windows-1252
// leaves undefined map to U+0081, U+008D, U+008F, U+0090 and U+009D, so every
// byte round-trips. A character outside the code page becomes '?' (63): the
// store's texts are written in a form that has none (CONVERSION::TextToStored).
#pragma once

#include <QByteArray>
#include <QString>

#include "platform/SecureBytes.h"

namespace km::cp1252 {

constexpr char ReplacementByte = '?';

// The character of one byte.
QChar toChar(unsigned char byte);
// The byte of one character, or ReplacementByte.
unsigned char toByte(QChar ch);
// Whether the code page has a byte for a character (a code point; a surrogate
// or a character beyond U+FFFF never has one).
bool holds(char32_t codePoint);

QByteArray toBytes(QStringView text);
QString fromBytes(const QByteArray &bytes);
QString fromBytes(const unsigned char *data, qsizetype size);

// Same conversions into and out of wiping buffers, for secrets.
SecureBytes toSecureBytes(QStringView text);
QString fromSecureBytes(const SecureBytes &bytes);

} // namespace km::cp1252
