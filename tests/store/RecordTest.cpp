// Packed records: the bytes of each type, the text form after unpacking, and
// the round trip read -> write that must keep a record's bytes.
#include <gtest/gtest.h>

#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"

using namespace Record_Put;
using namespace Record_Get;

namespace {

QByteArray hex(const char *h) {
    return QByteArray::fromHex(h);
}

QDateTime naive(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

struct PackCase {
    const char *name;
    QVariant value;
    int type;
    QByteArray bytes; // type byte included
};

} // namespace

TEST(PackValue, EncodesEachTypeAsTheStoreHoldsIt) {
    const QList<PackCase> cases = {
        {"bool true", true, tBoolean, hex("0101")},
        {"bool from text", QStringLiteral("False"), tBoolean, hex("0100")},
        {"empty bool is false", QVariant(), tBoolean, hex("0100")},
        {"byte", 200, tByte, hex("02c8")},
        {"int16 -1", -1, tInteger, hex("03ffff")},
        {"int16 from text", QStringLiteral("-2"), tInteger, hex("03feff")},
        {"long", 0x01020304, tLong, hex("0404030201")},
        {"long negative", -2, tLong, hex("04feffffff")},
        {"currency 1.5", QVariant::fromValue(CONVERSION::Currency::fromDouble(1.5)), tCurrency,
         hex("05983a000000000000")},
        {"currency from text", QStringLiteral("-0.0001"), tCurrency, hex("05ffffffffffffffff")},
        {"empty currency", QString(), tCurrency, hex("050000000000000000")},
        {"single", 1.5, tSingle, hex("060000c03f")},
        {"double", 1.5, tDouble, hex("07000000000000f83f")},
        {"date at epoch", naive(1997, 3, 20), tDate, hex("0800000000a056e140")},
        {"text", QStringLiteral("Ab"), tText, hex("0a024162")},
        {"text cp1252", QStringLiteral("\u00e4\u20ac"), tText, hex("0a02e480")},
        {"empty text", QString(), tMemo, hex("0c00")},
        {"minutes of epoch", naive(1997, 3, 20), tMinutes, hex("1900000000")},
        {"minutes one later", naive(1997, 3, 20, 0, 1), tMinutes, hex("1901000000")},
        {"minutes of non-date", QStringLiteral("soon"), tMinutes, hex("1900000000")},
        {"minutes of empty", QVariant(), tMinutes, hex("1900000000")},
        {"time of noon", naive(2001, 1, 1, 12), tTime, hex("160000003f")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(PackValue(c.value, c.type).toHex(), c.bytes.toHex()) << c.name;
    EXPECT_TRUE(PackValue(1, 9).isEmpty()) << "a type not in the table packs as nothing";
}

TEST(PackValue, TextLengthsAndTheCut) {
    EXPECT_EQ(PackValue(QString(254, 'x'), tText).left(2), hex("0afe"));
    EXPECT_EQ(PackValue(QString(255, 'x'), tText).left(4), hex("0affff00"));
    const QByteArray full = PackValue(QString(65000, 'x'), tMemo);
    EXPECT_EQ(full.left(4), hex("0cffe8fd"));
    EXPECT_EQ(full.size(), 4 + 65000);
    EXPECT_EQ(PackValue(QString(65001, 'x'), tMemo), full) << "the 65001st character is cut";
}

class UnpackTest : public ::testing::Test {
protected:
    void SetUp() override { CRY::LoadKeyTable(CRY::RandomBytes(270)); }
    void TearDown() override { CRY::UnloadKeyTable(); }

    const QList<Field> layout = {{0, tLong}, {1, tBoolean},  {2, tText},   {3, tMinutes},
                                 {4, tDate}, {5, tCurrency}, {6, tSingle}, {7, tDouble},
                                 {8, tByte}, {9, tInteger},  {10, tMemo},  {11, tTime}};
};

TEST_F(UnpackTest, SlotsHoldTheStableTextForms) {
    const QVariantList input = {-42,
                                true,
                                QStringLiteral("  Bank  "),
                                naive(2004, 12, 24, 17, 4),
                                naive(1999, 1, 2),
                                QVariant::fromValue(CONVERSION::Currency::fromScaled(-123456)),
                                0.1,
                                2.5e-7,
                                7,
                                -300,
                                QStringLiteral("line1\r\nline2"),
                                naive(2000, 1, 1, 6)};
    const QByteArray packed = PackRecord(layout, input);
    QStringList values;
    ASSERT_TRUE(UnpackRecord(values, packed, false));
    const QStringList expected = {"-42",
                                  "True",
                                  "  Bank  ",
                                  "2004-12-24 17:04:00",
                                  "1999-01-02 00:00:00",
                                  "-12.3456",
                                  "0.1",
                                  "2.5e-07",
                                  "7",
                                  "-300",
                                  "line1\r\nline2",
                                  "0.25"};
    EXPECT_EQ(values, expected);

    // The text forms pack back into the same bytes.
    QVariantList again;
    for (const QString &s : values)
        again.append(s);
    EXPECT_EQ(PackRecord(layout, again).toHex(), packed.toHex());

    // And the same through the field cipher.
    QStringList decrypted;
    ASSERT_TRUE(UnpackRecord(decrypted, CRY::EncryptField(packed), true));
    EXPECT_EQ(decrypted, expected);
}

TEST_F(UnpackTest, EmptyAndShortRecords) {
    QStringList untouched = {"a", "b"};
    UnpackRecord(untouched, QByteArray(), true);
    EXPECT_EQ(untouched, QStringList({"a", "b"})) << "an empty blob leaves the values alone";

    QStringList values = {"a", "b", "c"};
    UnpackRecord(values, CRY::EncryptField(QByteArray()), true);
    EXPECT_EQ(values, QStringList({"", "", ""})) << "the encrypted empty record clears every slot";

    QStringList zeros = {"x"};
    UnpackRecord(zeros, QByteArray("\0\0\x01\x01", 4), false);
    EXPECT_EQ(zeros, QStringList({""})) << "a record starting with two zero bytes is empty";

    QStringList growable;
    UnpackRecord(growable, PackRecord({{0, tBoolean}, {3, tText}}, {false, QVariant(), QVariant(), "x"}),
                 false);
    EXPECT_EQ(growable, QStringList({"False", "", "", "x"}));
}

TEST_F(UnpackTest, DamagedRecordsAreReadAsFarAsTheyGo) {
    QStringList fixed = {"", ""};
    const QByteArray longer =
        PackRecord({{0, tText}, {5, tText}}, {"a", QVariant(), QVariant(), QVariant(), QVariant(), "b"});
    EXPECT_FALSE(UnpackRecord(fixed, longer, false)) << "a field beyond fixed bounds is a fault";
    EXPECT_EQ(fixed.at(0), "a");

    QStringList cut;
    QByteArray truncated = PackRecord({{0, tText}}, {"hello"});
    truncated.chop(2);
    EXPECT_FALSE(UnpackRecord(cut, truncated, false));

    // An unknown type byte has no value: the walk goes on at the next byte.
    QStringList unknown;
    QByteArray withUnknown = QByteArray("\x00\x09", 2) + PackRecord({{1, tBoolean}}, {QVariant(), true});
    EXPECT_FALSE(UnpackRecord(unknown, withUnknown, false));
    EXPECT_EQ(unknown.value(1), "True");
}

TEST_F(UnpackTest, SingleFieldsAndThePrivateFlag) {
    const QByteArray memo =
        PackRecord({{0, tLong}, {1, tBoolean}, {4, tText}}, {5, true, {}, {}, "Shopping"});
    EXPECT_EQ(ReadPackedField(memo, 4).value_or("?"), "Shopping");
    EXPECT_FALSE(ReadPackedField(memo, 2).has_value());
    EXPECT_TRUE(RowIsPrivate(memo, 3));

    const QByteArray open = PackRecord({{1, tBoolean}}, {QVariant(), false});
    EXPECT_FALSE(RowIsPrivate(open, 0));
    EXPECT_TRUE(RowIsPrivate(open, 4)) << "tasks keep the flag in field 2: missing counts as private";
    const QByteArray textFlag = PackRecord({{1, tText}}, {QVariant(), "False"});
    EXPECT_TRUE(RowIsPrivate(textFlag, 1)) << "a flag that is not boolean counts as private";
    const QByteArray confidential = PackRecord({{7, tBoolean}}, {{}, {}, {}, {}, {}, {}, {}, false});
    EXPECT_FALSE(RowIsPrivate(confidential, 5));
}

TEST(UnpackValue, NativeValues) {
    EXPECT_TRUE(UnpackValue(QByteArray(), tText).isNull());
    EXPECT_EQ(UnpackTypedValue(PackValue(-7, tInteger)).toInt(), -7);
    EXPECT_EQ(UnpackTypedValue(PackValue(true, tBoolean)).toBool(), true);
    EXPECT_EQ(UnpackTypedValue(PackValue(QStringLiteral("x\u00e9"), tText)).toString(),
              QStringLiteral("x\u00e9"));
    EXPECT_EQ(UnpackTypedValue(PackValue(naive(1997, 3, 20, 0, 1), tMinutes)).toDateTime(),
              naive(1997, 3, 20, 0, 1));
    EXPECT_EQ(
        UnpackTypedValue(PackValue(QStringLiteral("2.5"), tCurrency)).value<CONVERSION::Currency>().scaled,
        25000);
}
