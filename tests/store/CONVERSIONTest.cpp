#include "store/CONVERSION.h"

#include <gtest/gtest.h>

#include <QTimeZone>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "platform/CodePage1252.h"
#include "support/ScriptedDialogs.h"

using namespace CONVERSION;

namespace {

QDateTime at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

QByteArray hex(const char *h) {
    return QByteArray::fromHex(h);
}

constexpr qint32 Min32 = std::numeric_limits<qint32>::min();
constexpr qint32 Max32 = std::numeric_limits<qint32>::max();

} // namespace

// ---- Dates ----

TEST(ConversionDates, DateToMinutesCountsWholeMinutesFromTheEpoch) {
    struct Case {
        QDateTime d;
        qint32 minutes;
    };
    const std::vector<Case> cases = {
        {at(1997, 3, 20), 0},
        {at(1997, 3, 19, 23, 59), -1},
        {at(1997, 3, 19, 23, 59, 59), -1}, // seconds are dropped, not rounded
        {at(1997, 3, 21, 1, 1, 30), 1440 + 61},
        {at(1899, 12, 30), -35509 * 1440}, // about -51 million
        {at(1000, 1, 1), -524484000},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.d.toString(Qt::ISODate).toStdString());
        EXPECT_EQ(DateToMinutes(QVariant(c.d)), c.minutes);
        EXPECT_EQ(MinutesToDate(c.minutes), c.d.addSecs(-c.d.time().second()));
    }
    // Local date-times count by their wall clock; date values and dates are dates too.
    EXPECT_EQ(DateToMinutes(QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::LocalTime)),
              DateToMinutes(at(2024, 7, 1, 12, 0)));
    EXPECT_EQ(DateToMinutes(QVariant(35509.5)), 720);
    EXPECT_EQ(DateToMinutes(QVariant(QDate(1997, 3, 21))), 1440);
    for (const QVariant &notADate : {QVariant(QStringLiteral("1997-03-20")), QVariant(42), QVariant()})
        EXPECT_EQ(DateToMinutes(notADate), 0);
    EXPECT_THROW(DateToMinutes(at(9999, 12, 31)), std::overflow_error);
    EXPECT_THROW(DateToMinutes(at(-2500, 1, 1)), std::overflow_error);
    for (qint32 n : {Min32, Max32})
        EXPECT_EQ(DateToMinutes(MinutesToDate(n)), n);
}

TEST(ConversionDates, DateToDays16ClampsToSixteenBits) {
    const QDate epoch(1997, 3, 20);
    EXPECT_EQ(DateToDays16(QVariant(at(1997, 3, 20, 23, 59))), 0);
    EXPECT_EQ(DateToDays16(QVariant(at(1997, 3, 19, 0, 1))), -1);
    EXPECT_EQ(DateToDays16(QVariant(QDate(9999, 12, 31))), 32767);
    EXPECT_EQ(DateToDays16(QVariant(QDate(1800, 1, 1))), -32768);
    EXPECT_EQ(DateToDays16(QVariant(epoch.addDays(32766))), 32766);
    EXPECT_EQ(DateToDays16(QVariant(epoch.addDays(-32767))), -32767);
    EXPECT_EQ(DateToDays16(QVariant(35510.9)), 1);
    EXPECT_EQ(DateToDays16(QVariant(QStringLiteral("x"))), 0);
}

TEST(ConversionDates, DateValuesCountForwardFromTheirDay) {
    struct Case {
        QDateTime d;
        double value;
    };
    const std::vector<Case> cases = {
        {at(1899, 12, 30), 0.0},        {at(1899, 12, 30, 12), 0.5}, {at(1899, 12, 29, 6), -1.25},
        {at(1899, 12, 28, 18), -2.75},  {at(1800, 1, 1), -36522.0},  {at(1997, 3, 20, 18), 35509.75},
        {at(2069, 4, 15, 6), 61833.25},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.d.toString(Qt::ISODate).toStdString());
        EXPECT_DOUBLE_EQ(VariantDateValue(QVariant(c.d)), c.value);
        EXPECT_EQ(FromDateValue(c.value), c.d);
        EXPECT_EQ(FromDateValue(c.value).timeSpec(), Qt::UTC);
    }
    EXPECT_EQ(FromDateValue(-0.5), at(1899, 12, 30, 12));
    const QDateTime odd = at(2031, 11, 7, 13, 47, 59); // odd seconds survive the double
    EXPECT_EQ(FromDateValue(ToDateValue(odd)), odd);
    EXPECT_FALSE(FromDateValue(std::nan("")).isValid());
    EXPECT_FALSE(IsDate(QVariant(QDateTime())));
    EXPECT_FALSE(IsDate(QVariant(QStringLiteral("2024-01-01"))));
    EXPECT_EQ(Naive(QDateTime(QDate(2024, 7, 1), QTime(9, 5), Qt::LocalTime)), at(2024, 7, 1, 9, 5));

    EXPECT_EQ(MinuteOfDay(QVariant(at(2024, 5, 6, 12, 30, 29))), 750);
    EXPECT_EQ(MinuteOfDay(QVariant(at(2024, 5, 6, 12, 30, 30))), 751);
    EXPECT_EQ(MinuteOfDay(QVariant(at(2024, 5, 6, 23, 59, 40))), 1440);
    EXPECT_EQ(MinuteOfDay(QVariant(-1.25)), 360);
    EXPECT_EQ(MinuteOfDay(QVariant(QStringLiteral("12:30"))), 0);
}

TEST(ConversionDates, MinuteFieldsOfPositiveAndNegativeMoments) {
    struct Case {
        qint32 n, day, dayStart;
        int hour, minute;
    };
    const std::vector<Case> cases = {
        {1439, 0, 0, 23, 59},     {1440, 1, 1440, 0, 0}, {1440 * 3 + 605, 3, 4320, 10, 5},
        {-1, 0, 0, 0, 1}, // the sign of the remainder is dropped
        {-1441, -1, -1440, 0, 1}, {-90, 0, 0, 1, 30},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.n);
        EXPECT_EQ(DayOfMinutes(c.n), c.day);
        EXPECT_EQ(DayStartMinutes(c.n), c.dayStart);
        EXPECT_EQ(HourOfMinutes(c.n), c.hour);
        EXPECT_EQ(MinuteOfHour(c.n), c.minute);
    }
    EXPECT_EQ(HourText(605), QStringLiteral("10"));
    EXPECT_EQ(MinuteText(605), QStringLiteral("05"));
    EXPECT_EQ(MinuteStep(44, 15), 2);
}

TEST(ConversionDates, EndOfAnAppointmentThatSpansADay) {
    struct Case {
        qint32 start, end;
        const char *hour, *minute;
        int minuteStep15;
    };
    const std::vector<Case> cases = {
        {600, 645, "10", "45", 3},  {0, 1439, "23", "59", 3},
        {0, 1440, "24", "00", 0},   {600, 2100, "24", "00", 0},    // end rounded down to its day first
        {-1440, 30, "24", "00", 0}, {Min32, Max32, "24", "00", 0}, // no overflow in the span
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << ".." << c.end);
        EXPECT_EQ(EndHour(c.start, c.end), QString::fromLatin1(c.hour).toInt());
        EXPECT_EQ(EndMinute(c.start, c.end), QString::fromLatin1(c.minute).toInt());
        EXPECT_EQ(EndHourText(c.start, c.end), QLatin1String(c.hour));
        EXPECT_EQ(EndMinuteText(c.start, c.end), QLatin1String(c.minute));
        EXPECT_EQ(EndMinuteStep(c.start, c.end, 15), c.minuteStep15);
    }
}

TEST(ConversionDates, UtcToLocalFollowsTheEuropeanSummer) {
    SetTimeZoneOffsets(60, 60);
    struct Case {
        QDateTime utc;
        bool useDaylight;
        QDateTime local;
    };
    const std::vector<Case> cases = {
        {at(2024, 1, 15, 12), true, at(2024, 1, 15, 13)},
        {at(2024, 3, 30, 12), true, at(2024, 3, 30, 13)},        // day before the last (5th) Sunday
        {at(2024, 3, 30, 23, 30), true, at(2024, 3, 31, 1, 30)}, // the offset carries into it
        {at(2023, 3, 26, 12), true, at(2023, 3, 26, 14)},        // March with four Sundays
        {at(2024, 7, 1, 12), false, at(2024, 7, 1, 13)},
        {at(2024, 10, 26, 12), true, at(2024, 10, 26, 14)},
        {at(2024, 10, 27, 12), true, at(2024, 10, 27, 13)}, // the last Sunday itself is winter
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.utc.toString(Qt::ISODate).toStdString());
        EXPECT_EQ(UtcToLocal(c.utc, c.useDaylight), c.local);
    }
    SetTimeZoneOffsets(-300, 60); // summer is decided on the date after the standard offset
    EXPECT_EQ(UtcToLocal(at(2024, 3, 31, 3), true), at(2024, 3, 30, 22));
    EXPECT_EQ(UtcToLocal(at(2024, 10, 27, 3), true), at(2024, 10, 26, 23));
    SetTimeZoneOffsets(0, 0);
}

TEST(ConversionDates, SystemZoneGivesStandardAndSummerOffsets) {
    const QByteArray old = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    const bool known = QTimeZone::systemTimeZoneId() == "Europe/Berlin";
    if (known) ReadSystemTimeZone();
    old.isNull() ? qunsetenv("TZ") : qputenv("TZ", old);
    if (!known) GTEST_SKIP() << "no zone data for Europe/Berlin";
    EXPECT_EQ(UtcToLocal(at(2024, 1, 15, 12), true), at(2024, 1, 15, 13));
    EXPECT_EQ(UtcToLocal(at(2024, 7, 15, 12), true), at(2024, 7, 15, 14));
    SetTimeZoneOffsets(0, 0);
}

TEST(ConversionDates, DateTextAndItsParse) {
    EXPECT_EQ(DateText(at(2024, 1, 2)), QStringLiteral("2024-01-02 00:00:00"));
    EXPECT_EQ(DateText(QDateTime()), QString());
    struct Case {
        const char *text;
        QDateTime d;
    };
    const std::vector<Case> cases = {
        {"1925-02-22 07:08:09", at(1925, 2, 22, 7, 8, 9)},
        {"2024-01-02 13:14", at(2024, 1, 2, 13, 14)},
        {"2024-01-02", at(2024, 1, 2)},
        {"2024-03-31 02:30:00", at(2024, 3, 31, 2, 30)}, // skipped by summer time in some zones
        {"2024-13-02", QDateTime()},
        {"2024-01-02T13:14:15", QDateTime()},
        {"2024-01-02 25:00", QDateTime()},
        {"", QDateTime()},
    };
    for (const Case &c : cases) {
        const QDateTime got = ParseDateText(QString::fromLatin1(c.text));
        EXPECT_EQ(got, c.d) << c.text;
        EXPECT_TRUE(!got.isValid() || got.timeSpec() == Qt::UTC) << c.text;
    }
}

// ---- Bytes and numbers ----

TEST(ConversionBytes, IntegersAreLittleEndianTwosComplement) {
    struct Case {
        qint64 value;
        int size;
        const char *bytes;
        qint32 back; // BytesToInt of the bytes
    };
    const std::vector<Case> cases = {
        {256, 2, "0001", 256},
        {-1, 2, "ffff", -1},
        {-1, 4, "ffffffff", -1},
        {-300, 4, "d4feffff", -300},
        {-300, 2, "d4fe", -300},
        {32767, 2, "ff7f", 32767},
        {-32768, 2, "0080", -32768},
        {32768, 2, "0080", -32768}, // does not fit: the top bit reads as the sign
        {Max32, 4, "ffffff7f", Max32},
        {Min32, 4, "00000080", Min32},
        {200, 1, "c8", -56},
        {-1, 10, "ffffffffffffffffffff", -1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.value << " in " << c.size);
        const QByteArray b = IntToBytes(c.value, c.size);
        EXPECT_EQ(b.toHex(), QByteArray(c.bytes));
        EXPECT_EQ(BytesToInt(b), c.back);
    }
    EXPECT_EQ(BytesToInt(QByteArray()), 0);
    EXPECT_EQ(BytesToInt(hex("ffffff7f00")), Max32);
    EXPECT_THROW(BytesToInt(hex("0000008000")), std::overflow_error);
    EXPECT_THROW(BytesToInt(hex("ffffff7fff")), std::overflow_error); // below -2^31

    for (auto [in, out] : {std::pair{"0100", "ffff"}, {"0000", "0000"}, {"0001", "00ff"}, {"ffff", "0100"}}) {
        QByteArray b = hex(in);
        NegateBytes(b);
        EXPECT_EQ(b.toHex(), QByteArray(out)) << in;
    }
    EXPECT_EQ(TextToInt(km::cp1252::fromBytes(hex("feff"))), -2);
    EXPECT_EQ(TextToInt(km::cp1252::fromBytes(hex("80000000"))), 128); // the euro sign is byte 128
    EXPECT_EQ(TextToInt(km::cp1252::fromBytes(hex("0100000000"))), 0); // five characters
}

TEST(ConversionBytes, CurrencyKeepsFourDecimals) {
    struct Case {
        double value;
        qint64 scaled;
        const char *bytes, *text;
    };
    const std::vector<Case> cases = {
        {1.5, 15000, "983a000000000000", "1.5"},
        {0, 0, "0000000000000000", "0"},
        {12, 120000, "c0d4010000000000", "12"},
        {-12.3456, -123456, "c01dfeffffffffff", "-12.3456"},
        {-0.0001, -1, "ffffffffffffffff", "-0.0001"},
        {1234567.89, 12345678900, "341cdcdf02000000", "1234567.89"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const Currency cur = Currency::fromDouble(c.value);
        EXPECT_EQ(cur.scaled, c.scaled);
        EXPECT_EQ(cur.toString(), QLatin1String(c.text));
        EXPECT_EQ(CurrencyToBytes(cur).toHex(), QByteArray(c.bytes));
        EXPECT_EQ(TextToCurrency(km::cp1252::fromBytes(hex(c.bytes))), cur);
    }
    const Currency bottom = Currency::fromScaled(std::numeric_limits<qint64>::min());
    EXPECT_EQ(bottom.toString(), QStringLiteral("-922337203685477.5808"));
    EXPECT_EQ(Currency::fromScaled(std::numeric_limits<qint64>::max()).toString(),
              QStringLiteral("922337203685477.5807"));
    EXPECT_EQ(BytesToCurrency(CurrencyToBytes(bottom)), bottom);
    EXPECT_EQ(Currency::fromDouble(0.1 + 0.2).scaled, 3000);
    EXPECT_EQ(BytesToCurrency(hex("983a0000000000")).scaled, 0); // seven bytes
}

TEST(ConversionBytes, FloatsOfBothWidthsAreIeeeLittleEndian) {
    struct Case {
        double value;
        int bits;
        const char *bytes, *text;
    };
    const std::vector<Case> cases = {
        {1.5, 64, "000000000000f83f", "1.5"},
        {0.0, 64, "0000000000000000", "0"},
        {0.1, 64, "9a9999999999b93f", "0.1"},
        {35509.75, 64, "00000000b856e140", "35509.75"},
        {1e-7, 64, "48afbc9af2d77a3e", "1e-07"},
        {1e300, 64, "9c7500883ce4377e", "1e+300"},
        {5e-324, 64, "0100000000000000", "5e-324"},
        {-123456789.125, 64, "00008054346f9dc1", "-123456789.125"},
        {1.5, 32, "0000c03f", "1.5"},
        {0.1, 32, "cdcccc3d", "0.1"}, // a double narrows to the nearest single
        {-0.75, 32, "000040bf", "-0.75"},
        {1.0 / 1440, 32, "610b363a", "0.00069444446"},
        {3.4028234663852886e38, 32, "ffff7f7f", "3.4028235e+38"},
        {1e-45, 32, "01000000", "1e-45"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " in " << c.bits);
        const QByteArray b =
            c.bits == 32 ? SingleToBytes(static_cast<float>(c.value)) : DoubleToBytes(c.value);
        EXPECT_EQ(b.toHex(), QByteArray(c.bytes));
        // The records' route: binary digits, then bytes with the first group last.
        EXPECT_EQ(BinaryToText(FloatToBinary(c.value, c.bits)), b);
        EXPECT_EQ(BytesToFloat(b), QLatin1String(c.text));
        const double back = TextToFloat(km::cp1252::fromBytes(b));
        const double fromText = QString::fromLatin1(c.text).toDouble();
        if (c.bits == 32) {
            EXPECT_EQ(static_cast<float>(back), static_cast<float>(c.value));
            EXPECT_EQ(static_cast<float>(fromText), static_cast<float>(c.value));
        } else {
            EXPECT_EQ(back, c.value);
            EXPECT_EQ(fromText, c.value);
        }
    }
    EXPECT_EQ(FloatToBinary(1.5, 64), QStringLiteral("0011111111111000") + QString(48, QLatin1Char('0')));
    EXPECT_EQ(FloatToBinary(1.5, 16), QString());
    EXPECT_EQ(TextToFloat(QString(QChar(0))), 0.0);
    EXPECT_EQ(BytesToSingle(hex("0000c0")), 0.0f);
}

// ---- Binary texts ----

TEST(ConversionBinary, DigitsAndBytes) {
    EXPECT_EQ(ByteToBinary(5), QStringLiteral("00000101"));
    EXPECT_EQ(NumberToBinary(5, 4), QStringLiteral("0101"));
    EXPECT_EQ(NumberToBinary(0x8000000000000001ULL, 64),
              QStringLiteral("1") + QString(62, QLatin1Char('0')) + QStringLiteral("1"));
    EXPECT_EQ(TextToBinary(hex("0180")), QStringLiteral("0000000110000000"));
    EXPECT_EQ(BinaryToText(QStringLiteral("0000000110000000")), hex("8001"));
    EXPECT_EQ(BinaryToByte(QStringLiteral("11111110")), 254);
    for (auto [in, out] : {std::pair{"0001", "1111"}, {"0000", "0000"}, {"0110", "1010"}, {"1000", "1000"}})
        EXPECT_EQ(NegateBinary(QLatin1String(in)), QLatin1String(out)) << in;
}

TEST(ConversionBinary, BadLengthsShowTheirMessage) {
    km::test::ScriptedDialogs dialogs;
    EXPECT_EQ(BinaryToText(QStringLiteral("0101010")), QByteArray("0"));
    EXPECT_EQ(BinaryToByte(QStringLiteral("101")), 0);
    EXPECT_EQ(dialogs.shown, QStringList({QStringLiteral("Conversion error (binary to string)!"),
                                          QStringLiteral("Irregular Binary String")}));
}

// ---- Other helpers ----

TEST(ConversionHelpers, PathPartsAndHex) {
    EXPECT_EQ(PathPart(QStringLiteral("/home/u/Personaldata.kmd"), true), QStringLiteral("/home/u"));
    EXPECT_EQ(PathPart(QStringLiteral("My Documents\\Personaldata.kmd"), false),
              QStringLiteral("Personaldata.kmd"));
    EXPECT_EQ(BytesToHex(hex("00ab0f")), QStringLiteral("00AB0F"));
    EXPECT_EQ(BytesToHex(QByteArray()), QString());
}

// ---- Texts and their stored form ----

TEST(ConversionStoredText, CharactersOutsideTheCodePageBecomeReferences) {
    struct Case {
        const char *name;
        QString typed;
        QString stored;
    } cases[] = {
        {"Polish", QStringLiteral("\u0141\u00f3d\u017a"), QStringLiteral("&#321;\u00f3d&#378;")},
        {"Cyrillic", QStringLiteral("\u041f\u0440\u0438"), QStringLiteral("&#1055;&#1088;&#1080;")},
        {"Greek", QStringLiteral("\u03a9 = 1"), QStringLiteral("&#937; = 1")},
        {"emoji is one reference", QStringLiteral("a\U0001F600b"), QStringLiteral("a&#128512;b")},
        {"last code point", QStringLiteral("\U0010FFFF"), QStringLiteral("&#1114111;")},
        {"lone surrogate", QString(QChar(0xD83D)) + 'x', QStringLiteral("&#55357;x")},
        {"typed reference", QStringLiteral("&#65;"), QStringLiteral("&#38;#65;")},
        {"typed reference of a big number", QStringLiteral("x&#99999999;"),
         QStringLiteral("x&#38;#99999999;")},
        {"both", QStringLiteral("&#321;\u0141"), QStringLiteral("&#38;#321;&#321;")},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(TextToStored(c.typed), c.stored) << c.name;
        EXPECT_EQ(StoredToText(c.stored), c.typed) << c.name;
        for (QChar ch : TextToStored(c.typed))
            EXPECT_TRUE(km::cp1252::holds(ch.unicode())) << c.name;
    }
}

TEST(ConversionStoredText, CodePageTextsAndAmpersandsThatAreNoReferenceStayAsTheyAre) {
    const QString texts[] = {QStringLiteral("M\u00fcllerstra\u00dfe \u20ac \u0178 \u00ff"),
                             QStringLiteral("Tom & Jerry"),
                             QStringLiteral("&#"),
                             QStringLiteral("&#;"),
                             QStringLiteral("&#x41;"),
                             QStringLiteral("&#12"),
                             QStringLiteral("& #65;"),
                             QStringLiteral("&amp;"),
                             QString()};
    for (const QString &t : texts) {
        const QString stored = TextToStored(t);
        EXPECT_EQ(stored, t);
        EXPECT_EQ(stored.constData(), t.constData()) << "no copy of a text that needs none";
        EXPECT_EQ(StoredToText(t), t);
    }
}

TEST(ConversionStoredText, ReferencesNotMadeHereReadAsTheirCharacterOrStay) {
    EXPECT_EQ(StoredToText(QStringLiteral("&#65;&#38;&#0233;")), QStringLiteral("A&\u00e9"));
    EXPECT_EQ(StoredToText(QStringLiteral("&#1114112; &#99999999999999999999;")),
              QStringLiteral("&#1114112; &#99999999999999999999;"))
        << "beyond the last code point is no reference";
    EXPECT_EQ(StoredToText(QStringLiteral("&&#65;;")), QStringLiteral("&A;"));
}

TEST(ConversionStoredText, ACutKeepsReferencesWhole) {
    const QString typed = QStringLiteral("ab\U0001F600c");
    const struct {
        qsizetype max;
        QString stored;
    } cuts[] = {{0, QString()},
                {2, QStringLiteral("ab")},
                {10, QStringLiteral("ab")},
                {11, QStringLiteral("ab&#128512;")},
                {12, QStringLiteral("ab&#128512;c")},
                {99, QStringLiteral("ab&#128512;c")}};
    for (const auto &c : cuts)
        EXPECT_EQ(TextToStored(typed, c.max), c.stored) << c.max;
    EXPECT_EQ(TextToStored(QStringLiteral("abc"), 2), QStringLiteral("ab"));
    EXPECT_EQ(TextToStored(QStringLiteral("&#1;"), 4), QString()) << "its & takes five";
}
