// Conversions between values and the bytes that packed records hold, the
// packing of dates into whole numbers for plain sort columns, and text
// helpers. Everything is little-endian and two's complement; floats are IEEE
// 754. Date-times of the store are wall-clock values without a zone: they are
// carried as QDateTime in UTC spec so that no daylight rule ever shifts them,
// and a "date value" is the double of days since 1899-12-30 with the time as
// fraction.
#pragma once

#include <cstdint>

#include <QByteArray>
#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QVariant>

namespace CONVERSION {

constexpr int StoreEpoch = 35509; // 1997-03-20, day number of the date system

// ---- Currency: value x 10000 as a 64-bit whole number ----
struct Currency {
    qint64 scaled = 0;
    static Currency fromDouble(double v);
    static Currency fromScaled(qint64 s) { return Currency{s}; }
    double toDouble() const { return static_cast<double>(scaled) / 10000.0; }
    // Shortest text that converts back to the same amount, "." as decimal point ("1.5", "-0.0001", "12").
    QString toString() const;
    friend bool operator==(Currency a, Currency b) { return a.scaled == b.scaled; }
};

// ---- Date values ----
// A date-time (its date and time parts, whatever its spec) as the date system's double.
double ToDateValue(const QDateTime &dt);
double ToDateValue(const QDate &d);
// The naive date-time of a date value (UTC spec); fractions round to the nearest millisecond.
QDateTime FromDateValue(double value);
// A variant that holds a date: QDateTime, QDate, or a double date value; other kinds are not dates.
bool IsDate(const QVariant &v);
double VariantDateValue(const QVariant &v); // 0 for a non-date
// The naive form of a local date-time.
QDateTime Naive(const QDateTime &dt);

// ---- Date packing ----
// Throw std::overflow_error where the result does not fit in 32 bits.
qint32 DateToMinutes(const QVariant &d);
qint32 DateToMinutes(const QDateTime &d);
QDateTime MinutesToDate(qint32 n);
qint16 DateToDays16(const QVariant &d);
qint32 DayOfMinutes(qint32 n);
qint32 DayStartMinutes(qint32 n);
int MinuteOfDay(const QVariant &d);
int HourOfMinutes(qint32 n);
int MinuteOfHour(qint32 n);
int EndHour(qint32 start, qint32 end);
int EndMinute(qint32 start, qint32 end);
int MinuteStep(qint32 n, int step);
int EndMinuteStep(qint32 start, qint32 end, int step);
QString HourText(qint32 n);
QString MinuteText(qint32 n);
QString EndHourText(qint32 start, qint32 end);
QString EndMinuteText(qint32 start, qint32 end);

// The standard and daylight offsets in minutes (read once from the system at
// start-up; tests set them).
void SetTimeZoneOffsets(int standardMinutes, int daylightMinutes);
void ReadSystemTimeZone();
QDateTime UtcToLocal(const QDateTime &d, bool useDaylight);

// ---- Bytes and numbers ----
QByteArray IntToBytes(qint64 value, int size);
qint32 BytesToInt(const QByteArray &bytes); // throws std::overflow_error past 32 bits
qint32 TextToInt(const QString &text);
void NegateBytes(QByteArray &bytes);
QByteArray CurrencyToBytes(Currency value);
Currency BytesToCurrency(const QByteArray &bytes);
Currency TextToCurrency(const QString &text);
QString FloatToBinary(double value, int bits);
QString BytesToFloat(const QByteArray &bytes); // the value as text (shortest round-trip form)
double TextToFloat(const QString &text);
QByteArray SingleToBytes(float value);
QByteArray DoubleToBytes(double value);
float BytesToSingle(const QByteArray &bytes);
double BytesToDouble(const QByteArray &bytes);
// Shortest text that converts back to the same value, "." as decimal point.
QString FloatText(double value);
QString SingleText(float value);

// ---- Binary texts ----
QString ByteToBinary(unsigned char b);
QString NumberToBinary(quint64 value, int bits);
QString TextToBinary(const QByteArray &bytes);
unsigned char BinaryToByte(const QString &text); // message 33 for a length not divisible by 8
QByteArray BinaryToText(const QString &text);    // message 32 and "0" for a bad length
QString NegateBinary(const QString &text);

// ---- Texts and their stored form ----
// Every text the person types is stored as code page 1252 bytes. A character
// the code page has no byte for is written as the decimal character reference
// "&#N;", N its code point (one reference for a character beyond U+FFFF, not
// one for each half of its surrogate pair). A typed "&#" that is followed by
// digits and ";" has its "&" written as "&#38;", so it reads back as typed. A
// text with neither is stored exactly as it is.
//
// Only typed texts take this form. Byte texts (cipher text, hashes, random
// values, rule strings) that travel in text fields keep their bytes as they
// are and are never read through StoredToText.

// The stored form, every character of it in code page 1252. A maxLength of 0
// or more cuts the form at that many characters, before the first character
// whose form would not fit whole. A text that needs no change comes back as
// the same (shared) QString.
QString TextToStored(const QString &text, qsizetype maxLength = -1);
// The typed text of a stored form: every reference "&#N;" (N up to 1114111)
// becomes its character. A form without "&#" comes back as the same QString.
QString StoredToText(const QString &stored);

// ---- Other helpers ----
QString PathPart(const QString &path, bool wantFolder);
QString BytesToHex(const QByteArray &bytes);

// Text of a date-time in the store's one text form "yyyy-MM-dd HH:mm:ss".
QString DateText(const QDateTime &dt);
// Reads that form back (also "yyyy-MM-dd HH:mm" and "yyyy-MM-dd"); invalid on failure.
QDateTime ParseDateText(const QString &text);

} // namespace CONVERSION

Q_DECLARE_METATYPE(CONVERSION::Currency)
