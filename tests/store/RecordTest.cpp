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

    // The limit counts the stored form, and a reference is never cut apart:
    // 7222 emoji of nine bytes each fit, the 7223rd does not.
    QString emoji;
    for (int i = 0; i < 8000; ++i)
        emoji += QStringLiteral("\U0001F600");
    const QByteArray packed = PackValue(emoji, tMemo);
    EXPECT_EQ(packed.size(), 4 + 7222 * 9);
    EXPECT_EQ(UnpackTypedValue(packed).toString(), emoji.left(2 * 7222));
}

TEST(PackValue, TypedTextsKeepEveryCharacterAndByteTextsTheirBytes) {
    const struct {
        const char *name;
        QString typed;
        QByteArray stored;
    } cases[] = {
        {"code page", QStringLiteral("\u00c4rzte & Caf\u00e9 \u20ac"), QByteArray("\xc4rzte & Caf\xe9 \x80")},
        {"Polish", QStringLiteral("\u0141\u00f3d\u017a"),
         QByteArray("&#321;\xf3"
                    "d&#378;")},
        {"Cyrillic", QStringLiteral("\u0416\u0443\u043a"), QByteArray("&#1046;&#1091;&#1082;")},
        {"Greek", QStringLiteral("\u0391\u03bb\u03c6\u03b1"), QByteArray("&#913;&#955;&#966;&#945;")},
        {"emoji", QStringLiteral("ok \U0001F600"), QByteArray("ok &#128512;")},
        {"typed reference", QStringLiteral("&#65;"), QByteArray("&#38;#65;")},
    };
    for (const auto &c : cases) {
        const QByteArray packed = PackValue(c.typed, tText);
        EXPECT_EQ(packed, QByteArray(1, char(tText)) + char(c.stored.size()) + c.stored) << c.name;
        EXPECT_EQ(UnpackTypedValue(packed).toString(), c.typed) << c.name;
    }
    const QByteArray bytes("&#65;\xff", 6);
    EXPECT_EQ(PackValue(bytes, tText), QByteArray("\x0a\x06", 2) + bytes) << "a byte text goes in as it is";
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

TEST_F(UnpackTest, TypedTextsRoundTripThroughTheCipher) {
    const QStringList typed = {
        QStringLiteral("\u0141\u00f3d\u017a \u2192 \u041f\u0440\u0438\u0432\u0435\u0442 \U0001F600"),
        QStringLiteral("\u0395\u03bb\u03bb\u03ac\u03b4\u03b1"), QStringLiteral("&#65; stays &#65;"),
        QStringLiteral("\u00c4rzte")};
    const QList<Field> texts = {{0, tText}, {1, tMemo}, {2, tText}, {3, tMemo}};
    const QByteArray packed = PackRecord(texts, {typed[0], typed[1], typed[2], typed[3]});
    QStringList values;
    ASSERT_TRUE(UnpackRecord(values, CRY::EncryptField(packed), true));
    EXPECT_EQ(values, typed);
    QVariantList again;
    for (const QString &v : values)
        again.append(v);
    EXPECT_EQ(PackRecord(texts, again), packed) << "read and written again, the record keeps its bytes";
    for (int i = 0; i < typed.size(); ++i)
        EXPECT_EQ(ReadPackedField(packed, i).value_or(QString()), typed[i]);
}

TEST_F(UnpackTest, ByteTextsInTextFieldsAreReadAsTheirBytes) {
    const QByteArray hashLike("\x01&#65;\x80 ", 8);
    const km::SecureBytes clear = km::toSecureBytes(
        PackRecord({{0, tByte}, {1, tText}, {2, tMemo}}, {7, hashLike, QStringLiteral("&#65;")}));
    EXPECT_EQ(km::toQByteArray(ReadPackedBytes(clear, 1)), hashLike);
    EXPECT_EQ(km::toQByteArray(ReadPackedBytes(clear, 2)), QByteArray("&#38;#65;"));
    EXPECT_TRUE(ReadPackedBytes(clear, 0).empty()) << "a byte field is no text";
    EXPECT_TRUE(ReadPackedBytes(clear, 5).empty());
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
