// The field cipher: layouts proved byte for byte with independent library
// calls, key selection on a known table, the empty-value and pad edge cases,
// the sealed and verifier forms, and the cache of key schedules.
#include "store/CRY.h"

#include <gtest/gtest.h>

#include <QSet>

#include "platform/CodePage1252.h"
#include "platform/CryptoLib.h"
#include "ui/LanguageUS.h"
#include "store/CRYDetail.h"
#include "support/ScriptedDialogs.h"

using namespace CRY;

namespace {

SecureBytes knownTable() {
    SecureBytes t(270);
    for (std::size_t i = 0; i < t.size(); ++i)
        t[i] = static_cast<std::uint8_t>((i * 7 + 3) % 256);
    return t;
}

SecureBytes bytesOf(const char *s) {
    return SecureBytes(s, s + std::strlen(s));
}

QByteArray hexOf(const SecureBytes &b) {
    return km::toQByteArray(b).toHex();
}

const std::uint8_t *u8(const QByteArray &b) {
    return reinterpret_cast<const std::uint8_t *>(b.constData());
}

// The padded plain block of a field, decrypted by a plain library call under
// the key that the field's head selects.
QByteArray independentPlainBlock(const QByteArray &field) {
    SelectFieldKey(static_cast<std::uint8_t>(field[0]) * 256 + static_cast<std::uint8_t>(field[1]));
    QByteArray out(field.size() - 10, '\0');
    CryptoLib::BLF_BytesMode(reinterpret_cast<std::uint8_t *>(out.data()), u8(field) + 10,
                             static_cast<std::size_t>(out.size()), state().FieldKey.data(), 16,
                             CryptoLib::Decrypt, "CBC", u8(field) + 2);
    return out;
}

// A field form under a chosen key number, made through mode 3.
QByteArray fieldUnderNumber(int number, const QString &text) {
    SelectFieldKey(number);
    QByteArray head;
    head.append(static_cast<char>(number / 256));
    head.append(static_cast<char>(number % 256));
    return head + FieldCipher(3, text);
}

class CRYTest : public ::testing::Test {
protected:
    void SetUp() override { LoadKeyTable(knownTable()); }
    void TearDown() override { UnloadKeyTable(); }
};

} // namespace

// ---- Field form ----

TEST_F(CRYTest, FieldLayoutAndPadProvedByIndependentDecryption) {
    struct Case {
        QString plain;
        int blockBytes;
    } cases[] = {{"ABCDEF", 8},
                 {"ABCDEFG", 16},
                 {"ABCDEFGHIJKLMN", 16},
                 {"ABCDEFGHIJKLMNO", 24},
                 {QStringLiteral("\u00e9t\u00e9"), 8}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.plain.toStdString());
        const QByteArray field = EncryptField(c.plain);
        ASSERT_EQ(field.size(), 2 + 8 + c.blockBytes);
        const QByteArray block = independentPlainBlock(field);
        const int p = c.blockBytes - static_cast<int>(c.plain.size()) - 1;
        QByteArray expected = km::cp1252::toBytes(c.plain);
        expected.append('\x03');
        expected.append(QByteArray(p, static_cast<char>(p)));
        EXPECT_EQ(block.toHex(), expected.toHex());
        EXPECT_EQ(DecryptField(field), c.plain);
    }
}

TEST_F(CRYTest, EmptyValuesBecomeRandomBlankRuns) {
    QSet<int> lengths;
    const QVariant empties[] = {QVariant(QString()), QVariant(QStringLiteral("")), QVariant(QByteArray()),
                                QVariant::fromValue(nullptr)};
    for (int round = 0; round < 40; ++round) {
        for (const QVariant &v : empties) {
            const QByteArray field = EncryptField(v);
            ASSERT_GE(field.size(), 18);
            ASSERT_LE(field.size(), 26); // at most 12 blanks, the 3 and the pad
            lengths.insert(static_cast<int>(field.size()));
            ASSERT_EQ(DecryptField(field), QString());
            const QByteArray block = independentPlainBlock(field);
            const int blanks = static_cast<int>(block.indexOf('\x03'));
            ASSERT_EQ(block.left(blanks), QByteArray(blanks, ' '));
        }
    }
    EXPECT_EQ(lengths, (QSet<int>{18, 26})); // both one and two blocks occur
    EXPECT_NE(EncryptField(QString()), EncryptField(QString()));
}

TEST_F(CRYTest, EmptyVariantAndMissingTableGiveNothing) {
    for (int mode = 1; mode <= 4; ++mode)
        EXPECT_TRUE(FieldCipher(mode, QVariant()).isEmpty()) << mode;
    EXPECT_TRUE(FieldCipher(5, QStringLiteral("x")).isEmpty());
    EXPECT_TRUE(FieldCipher(0, QStringLiteral("x")).isEmpty());

    const QByteArray field = EncryptField(QStringLiteral("kept"));
    UnloadKeyTable();
    EXPECT_FALSE(KeyTableLoaded());
    EXPECT_TRUE(EncryptField(QStringLiteral("x")).isEmpty());
    EXPECT_TRUE(FieldCipher(1, QStringLiteral("x")).isEmpty());
    EXPECT_EQ(DecryptField(field), QString());
    LoadKeyTable(knownTable());
    EXPECT_EQ(DecryptField(field), QStringLiteral("kept"));
}

TEST_F(CRYTest, BlanksTrimmedOnlyByModeTwo) {
    const QByteArray field = EncryptField(QStringLiteral("  two ends\t  "));
    EXPECT_EQ(DecryptField(field), QStringLiteral("two ends\t"));
    EXPECT_EQ(FieldCipher(2, field), QByteArray("two ends\t"));
    EXPECT_EQ(km::toQByteArray(DecryptFieldBytes(field)), QByteArray("  two ends\t  "));
    ASSERT_TRUE(DecryptToPlainBytes(field));
    EXPECT_EQ(km::toQByteArray(state().PlainBytes), QByteArray("  two ends\t  "));
    // Mode 2 also reads a field handed over as text of its bytes.
    EXPECT_EQ(FieldCipher(2, km::cp1252::fromBytes(field)), QByteArray("two ends\t"));
}

TEST_F(CRYTest, ValueKindsGoThroughCodePage1252) {
    EXPECT_EQ(DecryptField(EncryptField(QVariant(42))), QStringLiteral("42"));
    const QByteArray binary("\x00\x01\x20\xff", 4);
    EXPECT_EQ(km::toQByteArray(DecryptFieldBytes(EncryptField(binary))), binary);
}

TEST_F(CRYTest, TypedTextsKeepEveryCharacterAndCodePageTextsTheirBytes) {
    const struct {
        const char *name;
        QString typed;
        QByteArray plain; // the bytes under the cipher
    } cases[] = {
        {"code page", QStringLiteral("\u20ac \u00e9\u00c4"), QByteArray("\x80 \xe9\xc4")},
        {"Polish", QStringLiteral("\u0141\u00f3d\u017a"),
         QByteArray("&#321;\xf3"
                    "d&#378;")},
        {"Cyrillic", QStringLiteral("\u041f\u0440\u0438\u0432\u0435\u0442"),
         QByteArray("&#1055;&#1088;&#1080;&#1074;&#1077;&#1090;")},
        {"Greek", QStringLiteral("\u03b1\u03b2\u03b3"), QByteArray("&#945;&#946;&#947;")},
        {"emoji", QStringLiteral("\U0001F600"), QByteArray("&#128512;")},
        {"typed reference", QStringLiteral("&#65;"), QByteArray("&#38;#65;")},
        {"all of it",
         QStringLiteral("\u0141\u00f3d\u017a \u2192 \u041f\u0440\u0438\u0432\u0435\u0442 \U0001F600"),
         QByteArray("&#321;\xf3"
                    "d&#378; &#8594; &#1055;&#1088;&#1080;&#1074;&#1077;&#1090; &#128512;")},
    };
    for (const auto &c : cases) {
        for (const QByteArray &field : {EncryptField(c.typed), EncryptField(QVariant(c.typed))}) {
            EXPECT_EQ(DecryptField(field), c.typed) << c.name;
            EXPECT_EQ(km::toQByteArray(DecryptFieldBytes(field)), c.plain) << c.name;
        }
    }
    // A byte text is never read as references, going in or coming out.
    const QByteArray bytes("&#65;\x80", 6);
    EXPECT_EQ(km::toQByteArray(DecryptFieldBytes(EncryptField(bytes))), bytes);
    EXPECT_EQ(FieldCipher(2, EncryptField(bytes)), bytes);
}

TEST_F(CRYTest, KeySelectionOnKnownTable) {
    struct Case {
        int number;
        const char *key;
    } cases[] = {{0, "088b70f3765bde6146c94c31b4371c9f"},
                 {300, "b921ebf75f65cd353ba30b1179e1494f"},
                 {65535, "5cb16ec318cf8cf550075cb16ec318cf"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.number);
        state().KeyTableSize = 0;
        SelectFieldKey(c.number);
        EXPECT_EQ(hexOf(state().FieldKey), QByteArray(c.key));
        EXPECT_EQ(state().KeyTableSize, 270);
    }
}

TEST_F(CRYTest, EdgeKeyNumbersHeadTheirFields) {
    const QByteArray low = fieldUnderNumber(0, QStringLiteral("low"));
    const QByteArray high = fieldUnderNumber(65535, QStringLiteral("high"));
    EXPECT_EQ(low.left(2), QByteArray("\x00\x00", 2));
    EXPECT_EQ(high.left(2), QByteArray("\xff\xff", 2));
    EXPECT_EQ(DecryptField(low), QStringLiteral("low"));
    EXPECT_EQ(DecryptField(high), QStringLiteral("high"));

    // Encryption draws its key numbers over the whole range.
    QSet<int> numbers;
    for (int i = 0; i < 200; ++i) {
        const QByteArray f = EncryptField(QStringLiteral("x"));
        numbers.insert(static_cast<std::uint8_t>(f[0]) * 256 + static_cast<std::uint8_t>(f[1]));
    }
    EXPECT_GT(numbers.size(), 150);
}

TEST_F(CRYTest, MalformedFieldsLeaveOneZeroByte) {
    const QByteArray good = EncryptField(QStringLiteral("value"));
    const QByteArray bad[] = {QByteArray(),  good.left(2), good.left(10),
                              good.left(17), good + 'x',   good.left(good.size() - 1)};
    for (const QByteArray &f : bad) {
        SCOPED_TRACE(f.size());
        ASSERT_TRUE(DecryptToPlainBytes(good));
        EXPECT_FALSE(DecryptToPlainBytes(f));
        EXPECT_EQ(state().PlainBytes, SecureBytes(1, 0));
        EXPECT_EQ(DecryptField(f), QString());
        EXPECT_TRUE(DecryptFieldBytes(f).empty());
        EXPECT_TRUE(FieldCipher(2, f).isEmpty());
    }
    EXPECT_TRUE(FieldCipher(2, QVariant::fromValue(nullptr)).isEmpty());
}

TEST_F(CRYTest, WrongKeyTableReadsAsFullLengthGarbage) {
    QByteArray fields[5];
    for (auto &f : fields)
        f = EncryptField(QStringLiteral("secret value"));
    LoadKeyTable(RandomBytes(270));
    int garbled = 0;
    for (const auto &f : fields) {
        if (DecryptToPlainBytes(f)) continue; // a pad can match by chance
        ++garbled;
        EXPECT_EQ(state().PlainBytes.size(), static_cast<std::size_t>(f.size() - 10));
        EXPECT_EQ(DecryptFieldBytes(f).size(), static_cast<std::size_t>(f.size() - 10));
        EXPECT_NE(DecryptField(f), QStringLiteral("secret value"));
    }
    EXPECT_GT(garbled, 0);
}

TEST_F(CRYTest, PlainBytesKeepsItsBufferAndNoStaleTail) {
    const QByteArray longField = EncryptField(QString(100, QChar('L')));
    const QByteArray shortField = EncryptField(QStringLiteral("s"));
    ASSERT_TRUE(DecryptToPlainBytes(longField));
    const std::uint8_t *buffer = state().PlainBytes.data();
    ASSERT_TRUE(DecryptToPlainBytes(shortField));
    EXPECT_EQ(state().PlainBytes.data(), buffer);
    ASSERT_EQ(state().PlainBytes.size(), 1u);
    // The long value's bytes past the short one are gone from the buffer.
    for (std::size_t i = 1; i < 100; ++i)
        ASSERT_NE(buffer[i], 'L') << i;
    EXPECT_FALSE(DecryptToPlainBytes(QByteArray("0"))); // a column's default
    EXPECT_EQ(state().PlainBytes.data(), buffer);
    ASSERT_TRUE(DecryptToPlainBytes(longField));
    EXPECT_EQ(state().PlainBytes.data(), buffer);
}

// ---- Modes 3 and 4 ----

TEST_F(CRYTest, CurrentKeyModesWarnWithoutKey) {
    km::test::ScriptedDialogs ui;
    SelectFieldKey(1234);
    const QByteArray sealed = FieldCipher(3, QStringLiteral("  padded  "));
    EXPECT_EQ(sealed.size(), 8 + 16);
    EXPECT_EQ(FieldCipher(4, sealed), QByteArray("  padded  "));
    EXPECT_TRUE(ui.shown.isEmpty());
    EXPECT_TRUE(FieldCipher(4, sealed.left(15)).isEmpty());

    WipeBytes(state().FieldKey); // one byte: no valid key
    const QByteArray anyway = FieldCipher(3, QStringLiteral("abc"));
    EXPECT_EQ(anyway.size(), 16);
    ASSERT_EQ(ui.shown.size(), 1);
    EXPECT_EQ(ui.shown[0], LanguageUS::MessageText(34));
    EXPECT_EQ(FieldCipher(4, anyway), QByteArray("abc"));
    EXPECT_EQ(ui.shown.size(), 2);
}

// ---- Sealed form ----

TEST_F(CRYTest, SealLayoutPadAndChecksum) {
    const SecureBytes password = bytesOf("Passphrase");
    for (int length : {1, 13, 14, 15, 30}) {
        SCOPED_TRACE(length);
        SecureBytes plain(static_cast<std::size_t>(length));
        for (int i = 0; i < length; ++i)
            plain[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(200 + i);
        const QByteArray sealed = SealString(plain, password);
        const int n = length + 2;
        const int p = 16 * (n / 16 + 1) - n;
        ASSERT_EQ(sealed.size(), 16 + n + p);

        SecureBytes key(32), block(static_cast<std::size_t>(n + p));
        CryptoLib::PBE_Kdf2(key.data(), 32, password.data(), password.size(), u8(sealed), 16, 2048, 0);
        CryptoLib::AES_BytesMode(block.data(), u8(sealed) + 16, block.size(), key.data(), 256, 128,
                                 CryptoLib::Decrypt, "CBC", u8(sealed));
        SecureBytes expected = plain;
        expected.push_back(3);
        expected.push_back(static_cast<std::uint8_t>(ByteSum(plain)));
        expected.insert(expected.end(), static_cast<std::size_t>(p), static_cast<std::uint8_t>(p));
        EXPECT_EQ(block, expected);
        if (length == 14) {
            EXPECT_EQ(p, 16);
        }

        EXPECT_EQ(UnsealString(sealed, password), plain);
    }
}

TEST_F(CRYTest, UnsealFailuresAreEmpty) {
    const SecureBytes plain = bytesOf("the key table");
    const QByteArray sealed = SealString(plain, bytesOf("Passphrase"));
    EXPECT_NE(sealed.left(16), SealString(plain, bytesOf("Passphrase")).left(16)); // fresh nonce
    EXPECT_TRUE(UnsealString(sealed, bytesOf("passphrase")).empty());
    EXPECT_TRUE(UnsealString(sealed, bytesOf("Other")).empty());
    EXPECT_TRUE(UnsealString(sealed, SecureBytes()).empty());
    QByteArray damaged = sealed;
    damaged[damaged.size() - 1] = static_cast<char>(damaged[damaged.size() - 1] ^ 1);
    EXPECT_TRUE(UnsealString(damaged, bytesOf("Passphrase")).empty());
    EXPECT_TRUE(UnsealString(sealed.left(31), bytesOf("Passphrase")).empty());
    EXPECT_TRUE(UnsealString(sealed.left(16), bytesOf("Passphrase")).empty());
    EXPECT_TRUE(UnsealString(QByteArray(), bytesOf("Passphrase")).empty());
}

// ---- Verifier form ----

TEST(CRYVerifier, KeyBufferConvertsTwice) {
    struct Case {
        std::uint8_t byte;
        const char *key;
    } cases[] = {{0x83, "19200100"}, {0x41, "41000000"}, {0xe9, "e9000000"}, {0x80, "ac002000"},
                 {0x9f, "78000100"}, {0x8d, "8d000000"}, {0x92, "19002000"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.byte);
        EXPECT_EQ(hexOf(VerifierKeyBuffer(SecureBytes(1, c.byte))), QByteArray(c.key));
    }
    EXPECT_EQ(VerifierKeyBuffer(SecureBytes(32, 0x83)).size(), 128u);
}

TEST(CRYVerifier, LayoutAndExtraBytes) {
    const SecureBytes password = bytesOf("Passphrase");
    const QByteArray text = km::toQByteArray(HashPass(QStringLiteral("Passphrase")));
    const QByteArray verifier = BlockCipherText(text, password, -1, 192, 256);
    ASSERT_EQ(verifier.size(), 24);

    SecureBytes key = VerifierKeyBuffer(HashKey(password));
    QByteArray block(24, '\0');
    CryptoLib::AES_Bytes(reinterpret_cast<std::uint8_t *>(block.data()), u8(verifier), 24, key.data(), 256,
                         192, CryptoLib::Decrypt);
    EXPECT_EQ(block, text + QByteArray("\x03\x18\x18\x18"));

    for (int extra = 0; extra <= 5; ++extra) {
        SCOPED_TRACE(extra);
        EXPECT_EQ(BlockCipherText(verifier + QByteArray(extra, 'z'), password, 0, 192, 256), text);
    }
    EXPECT_TRUE(BlockCipherText(verifier, bytesOf("passphrase"), 0, 192, 256).isEmpty());
    EXPECT_TRUE(BlockCipherText(verifier.left(23), password, 0, 192, 256).isEmpty());
}

TEST(CRYVerifier, PadReachesNextBoundaryOnly) {
    const SecureBytes password = bytesOf("pw");
    struct Case {
        QByteArray text;
        int length;
    } cases[] = {{QByteArray(23, 'a'), 24},
                 {QByteArray(24, 'b'), 48},
                 {QByteArray("ends in 24\x18"), 24},
                 {QByteArray("ends in 3\x03"), 24},
                 {QByteArray(), 24}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        const QByteArray v = BlockCipherText(c.text, password, -1, 192, 256);
        EXPECT_EQ(v.size(), c.length);
        EXPECT_EQ(BlockCipherText(v, password, 0, 192, 256), c.text);
    }
}

// ---- Hashes, random values, wiping ----

TEST(CRYHash, RepeatedHashesKnownAnswers) {
    EXPECT_EQ(hexOf(HashKey(bytesOf("abc"))),
              QByteArray("2c5cb036c7fcae9d2f8c121165f8a55c99604f69754d7bed288624b00087e219"));
    EXPECT_EQ(hexOf(HashPass(bytesOf("abc"))), QByteArray("c60db620883b68730cabfb38dc8fb4be230456fc"));
    EXPECT_EQ(HashKey(QStringLiteral("abc")), HashKey(bytesOf("abc")));
    EXPECT_EQ(HashPass(QStringLiteral("\u00e9\u20ac")), HashPass(SecureBytes{0xe9, 0x80}));
}

TEST(CRYHash, RandomValuesSumsAndWipes) {
    EXPECT_TRUE(RandomBytes(0).empty());
    EXPECT_EQ(RandomBytes(270).size(), 270u);
    EXPECT_NE(RandomBytes(16), RandomBytes(16));
    EXPECT_TRUE(RandomNoise(0).isEmpty());
    EXPECT_EQ(RandomNoise(3).size(), 24);

    EXPECT_EQ(ByteSum(SecureBytes{200, 100, 1}), 45);
    EXPECT_EQ(ByteSum(QByteArray("\xff\xff", 2)), 254);
    EXPECT_EQ(ByteSum(SecureBytes()), 0);

    for (std::size_t n : {0u, 1u, 5u}) {
        SecureBytes b(n, 0xab);
        WipeBytes(b);
        EXPECT_EQ(b, SecureBytes(1, 0));
    }
    QString text = QStringLiteral("passphrase");
    QString shared = text; // the wipe must not reach other copies' buffer through sharing
    EXPECT_TRUE(WipeString(text).isEmpty());
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(shared, QStringLiteral("passphrase"));
}

// ---- Schedule cache ----

TEST_F(CRYTest, ScheduleCacheWipedWithKeyTable) {
    const QByteArray field = EncryptField(QStringLiteral("cached"));
    for (int i = 0; i < 20; ++i)
        EncryptField(QStringLiteral("more"));
    EXPECT_GT(CachedSchedules(), 0);
    const long long misses = scheduleCache().misses();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(DecryptField(field), QStringLiteral("cached"));
    EXPECT_EQ(scheduleCache().misses(), misses); // its schedule was kept
    EXPECT_FALSE(scheduleCache().holdsNoKeyMaterial());

    UnloadKeyTable();
    EXPECT_EQ(CachedSchedules(), 0);
    EXPECT_TRUE(scheduleCache().holdsNoKeyMaterial());
    EXPECT_EQ(state().KeyTable, SecureBytes(1, 0));
    EXPECT_EQ(state().FieldKey, SecureBytes(1, 0));
    EXPECT_EQ(state().PlainBytes, SecureBytes(1, 0));
}

TEST_F(CRYTest, NewKeyTableNeverMeetsOldSchedules) {
    const int number = 4321;
    const QByteArray underA = fieldUnderNumber(number, QStringLiteral("table A"));
    EXPECT_EQ(DecryptField(underA), QStringLiteral("table A")); // schedule of 4321 under A cached

    SecureBytes b = knownTable();
    for (auto &x : b)
        x = static_cast<std::uint8_t>(x ^ 0x5a);
    LoadKeyTable(b);
    EXPECT_EQ(CachedSchedules(), 0);
    const QByteArray underB = fieldUnderNumber(number, QStringLiteral("table B"));
    EXPECT_EQ(DecryptField(underB), QStringLiteral("table B"));

    // Even a table changed in place behind the cache's back is not met by a stale schedule.
    state().KeyTable = knownTable();
    EXPECT_EQ(DecryptField(underA), QStringLiteral("table A"));
}

TEST(CRYScheduleCache, RecyclesEntriesAndKeepsMostOfALoopLargerThanItself) {
    std::uint8_t keys[120][16];
    for (int k = 0; k < 120; ++k)
        for (int i = 0; i < 16; ++i)
            keys[k][i] = static_cast<std::uint8_t>(k * 31 + i);
    const std::uint8_t iv[8] = {1, 2, 3, 4, 5, 6, 7, 8}, plain[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    auto works = [&](const CryptoLib::BlowfishSchedule &s, int k) {
        std::uint8_t a[8], b[8];
        s.cbc(a, plain, 8, iv, CryptoLib::Encrypt);
        CryptoLib::BLF_BytesMode(b, plain, 8, keys[k], 16, CryptoLib::Encrypt, "CBC", iv);
        return std::memcmp(a, b, 8) == 0;
    };

    ScheduleCache cache(100);
    // A list of 110 key numbers read ten times in the same order: a cache that
    // always dropped the oldest entry would miss every time.
    for (int round = 0; round < 10; ++round)
        for (int k = 0; k < 110; ++k)
            ASSERT_TRUE(works(cache.get(k, keys[k]), k));
    EXPECT_EQ(cache.size(), 100);
    EXPECT_LT(cache.misses(), 110 + 9 * 110 / 2);

    // Same number, other key: rebuilt rather than reused.
    const long long before = cache.misses();
    EXPECT_TRUE(works(cache.get(5, keys[119]), 119));
    EXPECT_EQ(cache.misses(), before + 1);

    cache.clear();
    EXPECT_EQ(cache.size(), 0);
    EXPECT_TRUE(cache.holdsNoKeyMaterial());
    EXPECT_TRUE(works(cache.get(65535, keys[2]), 2));
    EXPECT_EQ(cache.size(), 1);
}
