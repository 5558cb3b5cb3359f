#include "platform/CodePage1252.h"

#include <array>

namespace km::cp1252 {

namespace {

// 0x80..0x9F; the undefined positions keep their own code as a C1 control.
constexpr std::array<char16_t, 32> kHigh = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                            0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

QChar toChar(unsigned char byte) {
    if (byte >= 0x80 && byte <= 0x9F) return QChar(kHigh[byte - 0x80]);
    return QChar(static_cast<char16_t>(byte));
}

unsigned char toByte(QChar ch) {
    const char16_t u = ch.unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) return static_cast<unsigned char>(u);
    for (int i = 0; i < 32; ++i)
        if (kHigh[static_cast<std::size_t>(i)] == u) return static_cast<unsigned char>(0x80 + i);
    return static_cast<unsigned char>(ReplacementByte);
}

bool holds(char32_t codePoint) {
    if (codePoint > 0xFFFF) return false;
    const QChar ch(static_cast<char16_t>(codePoint));
    return ch.unicode() == ReplacementByte || toByte(ch) != ReplacementByte;
}

QByteArray toBytes(QStringView text) {
    QByteArray out(text.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        out[i] = static_cast<char>(toByte(text[i]));
    return out;
}

QString fromBytes(const unsigned char *data, qsizetype size) {
    QString out(size, Qt::Uninitialized);
    QChar *d = out.data();
    for (qsizetype i = 0; i < size; ++i)
        d[i] = toChar(data[i]);
    return out;
}

QString fromBytes(const QByteArray &bytes) {
    return fromBytes(reinterpret_cast<const unsigned char *>(bytes.constData()), bytes.size());
}

SecureBytes toSecureBytes(QStringView text) {
    SecureBytes out(static_cast<std::size_t>(text.size()));
    for (qsizetype i = 0; i < text.size(); ++i)
        out[static_cast<std::size_t>(i)] = toByte(text[i]);
    return out;
}

QString fromSecureBytes(const SecureBytes &bytes) {
    return fromBytes(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

} // namespace km::cp1252
