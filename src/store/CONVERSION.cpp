#include "store/CONVERSION.h"

#include <QTimeZone>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "platform/Clock.h"
#include "platform/CodePage1252.h"
#include "platform/Environment.h"
#include "ui/Dialogs.h"

namespace CONVERSION {

namespace {

// Offsets of UtcToLocal, read once from the system at start-up.
struct ConversionState {
    int standardMinutes = 0;
    int daylightMinutes = 0;
};

ConversionState &state() {
    static ConversionState s;
    return s;
}

constexpr qint64 MsecsPerDay = 86400000;

QDate dayZero() {
    return QDate(1899, 12, 30);
}
QDate epochDate() {
    return QDate(1997, 3, 20);
}

// Days from the epoch to the date of d and the whole minutes since midnight
// of d (seconds dropped), as a calendar difference in minutes.
qint64 minutesFromEpoch(const QDateTime &d) {
    const qint64 days = epochDate().daysTo(d.date());
    return days * 1440 + d.time().msecsSinceStartOfDay() / 60000;
}

qint32 checked32(qint64 v, const char *what) {
    if (v < std::numeric_limits<qint32>::min() || v > std::numeric_limits<qint32>::max())
        throw std::overflow_error(what);
    return static_cast<qint32>(v);
}

QString twoDigits(int v) {
    return QStringLiteral("%1").arg(v, 2, 10, QLatin1Char('0'));
}

QDate lastSundayOf(int year, int month) {
    QDate d(year, month, QDate(year, month, 1).daysInMonth());
    return d.addDays(-(d.dayOfWeek() % 7)); // dayOfWeek: Monday 1 ... Sunday 7
}

// The European summer period, by whole days.
bool inSummer(const QDate &d) {
    const int m = d.month();
    if (m >= 4 && m <= 9) return true;
    if (m == 3) return d >= lastSundayOf(d.year(), 3);
    if (m == 10) return d < lastSundayOf(d.year(), 10);
    return false;
}

QByteArray littleEndian(quint64 bits, int size) {
    QByteArray out(size, '\0');
    for (int i = 0; i < size && i < 8; ++i)
        out[i] = static_cast<char>((bits >> (8 * i)) & 0xFF);
    return out;
}

quint64 fromLittleEndian(const QByteArray &bytes) {
    quint64 bits = 0;
    for (qsizetype i = 0; i < bytes.size() && i < 8; ++i)
        bits |= static_cast<quint64>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return bits;
}

template <class F> QString shortestText(F value) {
    std::array<char, 64> buf{};
    const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), value);
    return QString::fromLatin1(buf.data(), res.ptr - buf.data());
}

} // namespace

// ---- Currency ----

Currency Currency::fromDouble(double v) {
    return Currency{std::llround(v * 10000.0)};
}

QString Currency::toString() const {
    const bool negative = scaled < 0;
    // Through unsigned arithmetic so that the most negative amount has a magnitude.
    const quint64 magnitude = negative ? 0 - static_cast<quint64>(scaled) : static_cast<quint64>(scaled);
    QString text = QString::number(magnitude / 10000);
    if (const quint64 fraction = magnitude % 10000) {
        QString digits = QStringLiteral("%1").arg(fraction, 4, 10, QLatin1Char('0'));
        while (digits.endsWith(QLatin1Char('0')))
            digits.chop(1);
        text += QLatin1Char('.') + digits;
    }
    return negative ? QLatin1Char('-') + text : text;
}

// ---- Date values ----

double ToDateValue(const QDateTime &dt) {
    if (!dt.isValid()) return 0;
    const qint64 days = dayZero().daysTo(dt.date());
    const double fraction = static_cast<double>(dt.time().msecsSinceStartOfDay()) / MsecsPerDay;
    // Before day 0 the fraction still counts forward from the day: -1.25 is
    // 1899-12-29 06:00.
    return days < 0 ? static_cast<double>(days) - fraction : static_cast<double>(days) + fraction;
}

double ToDateValue(const QDate &d) {
    return d.isValid() ? static_cast<double>(dayZero().daysTo(d)) : 0;
}

QDateTime FromDateValue(double value) {
    // Far beyond any calendar the program shows; keeps the day count whole and in range.
    constexpr double MaxDays = 1e9;
    if (!std::isfinite(value) || std::fabs(value) > MaxDays) return QDateTime();
    const double day = std::trunc(value);
    const qint64 msecs = std::llround(std::fabs(value - day) * MsecsPerDay);
    const QDate date = dayZero().addDays(static_cast<qint64>(day));
    return QDateTime(date, QTime(0, 0), Qt::UTC).addMSecs(msecs);
}

bool IsDate(const QVariant &v) {
    switch (v.typeId()) {
    case QMetaType::QDateTime:
        return v.toDateTime().isValid();
    case QMetaType::QDate:
        return v.toDate().isValid();
    case QMetaType::Double:
        return FromDateValue(v.toDouble()).isValid();
    default:
        return false;
    }
}

double VariantDateValue(const QVariant &v) {
    if (!IsDate(v)) return 0;
    switch (v.typeId()) {
    case QMetaType::QDateTime:
        return ToDateValue(v.toDateTime());
    case QMetaType::QDate:
        return ToDateValue(v.toDate());
    default:
        return v.toDouble();
    }
}

// The wall-clock date and time as the argument shows them; a naive value stays as it is.
QDateTime Naive(const QDateTime &dt) {
    if (!dt.isValid()) return QDateTime();
    return QDateTime(dt.date(), dt.time(), Qt::UTC);
}

namespace {
// The naive date-time of a variant that holds a date; invalid otherwise.
QDateTime variantDateTime(const QVariant &v) {
    if (!IsDate(v)) return QDateTime();
    switch (v.typeId()) {
    case QMetaType::QDateTime: {
        const QDateTime dt = v.toDateTime();
        return QDateTime(dt.date(), dt.time(), Qt::UTC);
    }
    case QMetaType::QDate:
        return QDateTime(v.toDate(), QTime(0, 0), Qt::UTC);
    default:
        return FromDateValue(v.toDouble());
    }
}
} // namespace

// ---- Date packing ----

qint32 DateToMinutes(const QVariant &d) {
    const QDateTime dt = variantDateTime(d);
    return dt.isValid() ? DateToMinutes(dt) : 0;
}

qint32 DateToMinutes(const QDateTime &d) {
    if (!d.isValid()) return 0;
    return checked32(minutesFromEpoch(d), "date out of the range of minutes");
}

QDateTime MinutesToDate(qint32 n) {
    return QDateTime(epochDate(), QTime(0, 0), Qt::UTC).addSecs(static_cast<qint64>(n) * 60);
}

qint16 DateToDays16(const QVariant &d) {
    const QDateTime dt = variantDateTime(d);
    if (!dt.isValid()) return 0;
    const qint64 days = epochDate().daysTo(dt.date());
    if (days < -32767) return -32768;
    if (days >= 32767) return 32767;
    return static_cast<qint16>(days);
}

qint32 DayOfMinutes(qint32 n) {
    return n / 1440;
}

qint32 DayStartMinutes(qint32 n) {
    return DayOfMinutes(n) * 1440;
}

int MinuteOfDay(const QVariant &d) {
    const QDateTime dt = variantDateTime(d);
    if (!dt.isValid()) return 0;
    // The time of day, rounded to the nearest minute (23:59:30 and later give 1440).
    return static_cast<int>(std::lround(dt.time().msecsSinceStartOfDay() / 60000.0));
}

int HourOfMinutes(qint32 n) {
    return std::abs(n % 1440) / 60;
}

int MinuteOfHour(qint32 n) {
    return std::abs(n % 1440) % 60;
}

namespace {
bool spansDay(qint32 start, qint32 end) {
    return static_cast<qint64>(end) - start >= 1440;
}
} // namespace

int EndHour(qint32 start, qint32 end) {
    return spansDay(start, end) ? 24 : HourOfMinutes(end);
}

int EndMinute(qint32 start, qint32 end) {
    return MinuteOfHour(spansDay(start, end) ? DayStartMinutes(end) : end);
}

// A step below 1 would divide by zero; such a step counts as 1.
int MinuteStep(qint32 n, int step) {
    return MinuteOfHour(n) / std::max(step, 1);
}

int EndMinuteStep(qint32 start, qint32 end, int step) {
    return EndMinute(start, end) / std::max(step, 1);
}

QString HourText(qint32 n) {
    return twoDigits(HourOfMinutes(n));
}

QString MinuteText(qint32 n) {
    return twoDigits(MinuteOfHour(n));
}

QString EndHourText(qint32 start, qint32 end) {
    return twoDigits(EndHour(start, end));
}

QString EndMinuteText(qint32 start, qint32 end) {
    return twoDigits(EndMinute(start, end));
}

void SetTimeZoneOffsets(int standardMinutes, int daylightMinutes) {
    state().standardMinutes = standardMinutes;
    state().daylightMinutes = daylightMinutes;
}

// The standard offset is the zone's offset from UTC outside summer time; the
// daylight offset is what summer time adds to it (60 in most zones). The
// daylight offset is read in mid-January and mid-July of this year, whichever
// lies in summer time, so that zones of both hemispheres give it; a zone
// without summer time gives 0.
void ReadSystemTimeZone() {
    const QTimeZone zone = QTimeZone::systemTimeZone();
    const QDateTime now = km::Clock::now().toUTC();
    const int year = now.date().year();
    const QDateTime january(QDate(year, 1, 15), QTime(12, 0), Qt::UTC);
    const QDateTime july(QDate(year, 7, 15), QTime(12, 0), Qt::UTC);
    int daylight = 0;
    if (zone.hasDaylightTime()) {
        daylight = zone.daylightTimeOffset(july);
        if (daylight == 0) daylight = zone.daylightTimeOffset(january);
    }
    SetTimeZoneOffsets(zone.standardTimeOffset(now) / 60, daylight / 60);
}

QDateTime UtcToLocal(const QDateTime &d, bool useDaylight) {
    if (!d.isValid()) return QDateTime();
    QDateTime local = QDateTime(d.date(), d.time(), Qt::UTC).addSecs(state().standardMinutes * 60LL);
    if (useDaylight && inSummer(local.date())) local = local.addSecs(state().daylightMinutes * 60LL);
    return local;
}

// ---- Bytes and numbers ----

QByteArray IntToBytes(qint64 value, int size) {
    // The two's complement pattern of the value, cut to size bytes, is what
    // writing the magnitude and negating it gives.
    QByteArray out = littleEndian(static_cast<quint64>(value), std::max(size, 0));
    for (int i = 8; i < size; ++i)
        out[i] = value < 0 ? '\xFF' : '\0';
    return out;
}

qint32 BytesToInt(const QByteArray &bytes) {
    if (bytes.isEmpty()) return 0;
    QByteArray b = bytes;
    const bool negative = static_cast<unsigned char>(b.back()) & 0x80;
    if (negative) NegateBytes(b);
    // Bytes past the fourth must be zero, or the magnitude has more than 32 bits.
    for (qsizetype i = 4; i < b.size(); ++i)
        if (b[i] != '\0') throw std::overflow_error("bytes out of the range of a 32-bit number");
    const qint64 magnitude = static_cast<qint64>(fromLittleEndian(b.left(4)));
    return checked32(negative ? -magnitude : magnitude, "bytes out of the range of a 32-bit number");
}

qint32 TextToInt(const QString &text) {
    if (text.size() >= 5) return 0;
    return BytesToInt(km::cp1252::toBytes(text));
}

void NegateBytes(QByteArray &bytes) {
    unsigned carry = 1;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const unsigned v = (~static_cast<unsigned char>(bytes[i]) & 0xFFu) + carry;
        bytes[i] = static_cast<char>(v & 0xFF);
        carry = v >> 8;
    }
}

QByteArray CurrencyToBytes(Currency value) {
    return littleEndian(static_cast<quint64>(value.scaled), 8);
}

Currency BytesToCurrency(const QByteArray &bytes) {
    if (bytes.size() != 8) return Currency{};
    return Currency::fromScaled(static_cast<qint64>(fromLittleEndian(bytes)));
}

Currency TextToCurrency(const QString &text) {
    if (text.size() != 8) return Currency{};
    return BytesToCurrency(km::cp1252::toBytes(text));
}

QString FloatToBinary(double value, int bits) {
    if (bits == 32) {
        const QByteArray b = SingleToBytes(static_cast<float>(value));
        return NumberToBinary(fromLittleEndian(b), 32);
    }
    if (bits == 64) return NumberToBinary(fromLittleEndian(DoubleToBytes(value)), 64);
    return QString();
}

QString BytesToFloat(const QByteArray &bytes) {
    if (bytes.size() == 4) return SingleText(BytesToSingle(bytes));
    if (bytes.size() == 8) return FloatText(BytesToDouble(bytes));
    return QStringLiteral("0");
}

double TextToFloat(const QString &text) {
    if (text.size() != 4 && text.size() != 8) return 0;
    const QByteArray b = km::cp1252::toBytes(text);
    return b.size() == 4 ? static_cast<double>(BytesToSingle(b)) : BytesToDouble(b);
}

QByteArray SingleToBytes(float value) {
    quint32 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return littleEndian(bits, 4);
}

QByteArray DoubleToBytes(double value) {
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return littleEndian(bits, 8);
}

float BytesToSingle(const QByteArray &bytes) {
    if (bytes.size() != 4) return 0;
    const auto bits = static_cast<quint32>(fromLittleEndian(bytes));
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double BytesToDouble(const QByteArray &bytes) {
    if (bytes.size() != 8) return 0;
    const quint64 bits = fromLittleEndian(bytes);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Plain or exponent form ("1.5", "100", "1e-07"), whichever is shorter.
QString FloatText(double value) {
    return shortestText(value);
}

QString SingleText(float value) {
    return shortestText(value);
}

// ---- Binary texts ----

QString ByteToBinary(unsigned char b) {
    return NumberToBinary(b, 8);
}

// The lowest bits digits of the value; bits above 64 are leading zeros.
QString NumberToBinary(quint64 value, int bits) {
    QString text(std::max(bits, 0), QLatin1Char('0'));
    for (int i = 0; i < bits && i < 64; ++i)
        if ((value >> i) & 1) text[bits - 1 - i] = QLatin1Char('1');
    return text;
}

QString TextToBinary(const QByteArray &bytes) {
    QString text;
    text.reserve(bytes.size() * 8);
    for (const char c : bytes)
        text += ByteToBinary(static_cast<unsigned char>(c));
    return text;
}

namespace {
// The value of up to 8 binary digits, highest first; any digit but "1" is 0.
unsigned char digitsToByte(QStringView digits) {
    unsigned value = 0;
    for (const QChar c : digits)
        value = ((value << 1) | (c == QLatin1Char('1') ? 1u : 0u)) & 0xFF;
    return static_cast<unsigned char>(value);
}
} // namespace

// A text longer than 8 digits gives its lowest 8 bits.
unsigned char BinaryToByte(const QString &text) {
    if (text.size() % 8 != 0) {
        km::ShowMessage(33);
        return 0;
    }
    return digitsToByte(text);
}

QByteArray BinaryToText(const QString &text) {
    if (text.size() % 8 != 0) {
        km::ShowMessage(32);
        return QByteArrayLiteral("0");
    }
    const qsizetype count = text.size() / 8;
    QByteArray bytes(count, '\0');
    // The first group of digits is the highest byte and goes last.
    for (qsizetype i = 0; i < count; ++i)
        bytes[count - 1 - i] = static_cast<char>(digitsToByte(QStringView(text).mid(i * 8, 8)));
    return bytes;
}

QString NegateBinary(const QString &text) {
    QString out = text;
    for (QChar &c : out)
        c = (c == QLatin1Char('1')) ? QLatin1Char('0') : QLatin1Char('1');
    for (qsizetype i = out.size() - 1; i >= 0; --i) {
        if (out[i] == QLatin1Char('0')) {
            out[i] = QLatin1Char('1');
            break;
        }
        out[i] = QLatin1Char('0');
    }
    return out;
}

// ---- Texts and their stored form ----

namespace {

constexpr char32_t LastCodePoint = 0x10FFFF;

// A reference "&#digits;" that starts at i: its length (0 if there is none)
// and its code point (past LastCodePoint when the digits say more).
struct Reference {
    qsizetype length = 0;
    char32_t codePoint = 0;
};

Reference referenceAt(QStringView s, qsizetype i) {
    if (i + 3 >= s.size() || s[i] != u'&' || s[i + 1] != u'#') return {};
    char32_t value = 0;
    qsizetype j = i + 2;
    for (; j < s.size() && s[j] >= u'0' && s[j] <= u'9'; ++j)
        value = std::min<char32_t>(value * 10 + (s[j].unicode() - u'0'), LastCodePoint + 1);
    if (j == i + 2 || j >= s.size() || s[j] != u';') return {};
    return {j + 1 - i, value};
}

// The code point at i and the number of 16-bit units it takes; a surrogate
// without its partner stands for itself.
char32_t codePointAt(QStringView s, qsizetype i, qsizetype *units) {
    const QChar c = s[i];
    if (c.isHighSurrogate() && i + 1 < s.size() && s[i + 1].isLowSurrogate()) {
        *units = 2;
        return QChar::surrogateToUcs4(c, s[i + 1]);
    }
    *units = 1;
    return c.unicode();
}

bool needsStoredForm(QStringView text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (!km::cp1252::holds(c.unicode())) return true;
        if (c == u'&' && referenceAt(text, i).length) return true;
    }
    return false;
}

} // namespace

QString TextToStored(const QString &text, qsizetype maxLength) {
    const bool fits = maxLength < 0 || text.size() <= maxLength;
    if (fits && !needsStoredForm(text)) return text;
    // Two passes, the first to measure: the result is a copy of what the
    // person typed and must not leave earlier buffers behind as it grows.
    const auto walk = [&](QString *out) {
        qsizetype length = 0;
        char16_t digits[16];
        for (qsizetype i = 0; i < text.size();) {
            qsizetype units = 1;
            const char32_t c = codePointAt(text, i, &units);
            QStringView piece;
            const char16_t single = static_cast<char16_t>(c);
            if (!km::cp1252::holds(c)) {
                // "&#" digits ";" written from the back.
                qsizetype at = 16;
                digits[--at] = u';';
                for (char32_t n = c; n != 0 || at == 15; n /= 10)
                    digits[--at] = static_cast<char16_t>(u'0' + n % 10);
                digits[--at] = u'#';
                digits[--at] = u'&';
                piece = QStringView(digits + at, 16 - at);
            } else if (c == u'&' && referenceAt(text, i).length) {
                piece = u"&#38;";
            } else {
                piece = QStringView(&single, 1);
            }
            if (maxLength >= 0 && length + piece.size() > maxLength) break;
            length += piece.size();
            if (out) out->append(piece);
            i += units;
        }
        return length;
    };
    QString out;
    out.reserve(walk(nullptr));
    walk(&out);
    return out;
}

QString StoredToText(const QString &stored) {
    if (!stored.contains(QLatin1String("&#"))) return stored;
    QString out;
    out.reserve(stored.size());
    for (qsizetype i = 0; i < stored.size();) {
        const Reference r = referenceAt(stored, i);
        if (r.length == 0 || r.codePoint > LastCodePoint) {
            out.append(stored[i++]);
            continue;
        }
        if (QChar::requiresSurrogates(r.codePoint)) {
            out.append(QChar::highSurrogate(r.codePoint));
            out.append(QChar::lowSurrogate(r.codePoint));
        } else {
            out.append(QChar(static_cast<char16_t>(r.codePoint)));
        }
        i += r.length;
    }
    return out;
}

// ---- Other helpers ----

QString PathPart(const QString &path, bool wantFolder) {
    return km::FolderOfPath(path, wantFolder);
}

QString BytesToHex(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toHex().toUpper());
}

QString DateText(const QDateTime &dt) {
    if (!dt.isValid()) return QString();
    return dt.date().toString(QStringLiteral("yyyy-MM-dd")) + QLatin1Char(' ') +
           dt.time().toString(QStringLiteral("HH:mm:ss"));
}

// Date and time are read apart, so that no zone rule can reject or move a
// wall-clock time that a daylight change skips locally.
QDateTime ParseDateText(const QString &text) {
    const QString t = text.trimmed();
    const QDate date = QDate::fromString(t.left(10), QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid()) return QDateTime();
    if (t.size() == 10) return QDateTime(date, QTime(0, 0), Qt::UTC);
    if (t.at(10) != QLatin1Char(' ')) return QDateTime();
    const QString rest = t.mid(11);
    QTime time = QTime::fromString(rest, QStringLiteral("HH:mm:ss"));
    if (!time.isValid() && rest.size() == 5) time = QTime::fromString(rest, QStringLiteral("HH:mm"));
    if (!time.isValid()) return QDateTime();
    return QDateTime(date, time, Qt::UTC);
}

} // namespace CONVERSION
