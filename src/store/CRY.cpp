#include "store/CRY.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "platform/CodePage1252.h"
#include "platform/CryptoLib.h"
#include "platform/Random.h"
#include "ui/Dialogs.h"
#include "store/CONVERSION.h"
#include "store/CRYDetail.h"

namespace CRY {

namespace {

constexpr std::uint8_t EndMark = 3; // the byte between a value and its pad
constexpr std::uint8_t Blank = 32;
constexpr int FieldHeader = 2; // key number, high byte first
constexpr int VectorBytes = 8;
constexpr int BlockBytes = 8;
constexpr int FieldKeyBytes = ScheduleCache::KeyBytes;
constexpr int MaxBlanks = 13;     // an empty value becomes 0 to 12 blanks
constexpr int MsgNoValidKey = 34; // "No Valid Key"

constexpr int SealNonceBytes = 16;
constexpr int SealBlockBytes = 16;
constexpr int SealKeyBytes = 32;
constexpr int SealIterations = 2048;

// Sets the size of a secret buffer; bytes dropped by a shrink are wiped first,
// as the buffer keeps its capacity.
void setSize(SecureBytes &b, std::size_t n) {
    if (n < b.size()) km::cleanse(b.data() + n, b.size() - n);
    b.resize(n);
}

// Frees a secret buffer completely (the allocator wipes all of its capacity)
// and leaves one byte 0.
void resetToOneByte(SecureBytes &b) {
    km::cleanse(b.data(), b.size());
    SecureBytes(1, 0).swap(b);
}

// Scratch buffer of the padded plain block on its way into the cipher.
SecureBytes &padScratch() {
    static SecureBytes scratch;
    return scratch;
}

enum class Decrypted { Malformed, BadPad, Ok };

// Blowfish-CBC of vector and cipher blocks into PlainBytes, then the pad check.
Decrypted decryptBody(const std::uint8_t *data, std::size_t n, const CryptoLib::BlowfishSchedule &schedule) {
    SecureBytes &plain = state().PlainBytes;
    const std::size_t cipherLength = n - VectorBytes;
    setSize(plain, cipherLength);
    schedule.cbc(plain.data(), data + VectorBytes, cipherLength, data, CryptoLib::Decrypt);
    const std::size_t p = plain[cipherLength - 1];
    if (p + 1 > cipherLength || plain[cipherLength - 1 - p] != EndMark) return Decrypted::BadPad;
    setSize(plain, cipherLength - 1 - p);
    return Decrypted::Ok;
}

bool bodyWellFormed(std::size_t n) {
    return n >= VectorBytes + BlockBytes && n % BlockBytes == 0;
}

Decrypted decryptFieldForm(const QByteArray &field) {
    State &s = state();
    const auto n = static_cast<std::size_t>(field.size());
    // A form without a single cipher block is as malformed as one of the wrong length.
    if (!KeyTableLoaded() || n < FieldHeader || !bodyWellFormed(n - FieldHeader)) {
        WipeBytes(s.PlainBytes); // keeps the buffer for the next field
        return Decrypted::Malformed;
    }
    const auto *d = reinterpret_cast<const std::uint8_t *>(field.constData());
    const int number = d[0] * 256 + d[1];
    SelectFieldKey(number);
    const auto &schedule = scheduleCache().get(number, s.FieldKey.data());
    return decryptBody(d + FieldHeader, n - FieldHeader, schedule);
}

// Pads the plain bytes in padScratch() (a whole block more when they end on a
// boundary) and appends vector and cipher text to out.
void encryptScratch(QByteArray &out, const CryptoLib::BlowfishSchedule &schedule) {
    SecureBytes &block = padScratch();
    const std::size_t length = block.size();
    const std::size_t p = BlockBytes - ((length + 1) % BlockBytes);
    block.push_back(EndMark);
    block.insert(block.end(), p, static_cast<std::uint8_t>(p));

    const qsizetype start = out.size();
    out.resize(start + VectorBytes + static_cast<qsizetype>(block.size()));
    auto *o = reinterpret_cast<std::uint8_t *>(out.data()) + start;
    CryptoLib::RNG_KeyGenerate(o, VectorBytes, "", 0, 0);
    schedule.cbc(o + VectorBytes, block.data(), block.size(), o, CryptoLib::Encrypt);
    setSize(block, 0);
}

// Fills padScratch() with the plain bytes of a value; an empty value becomes
// its run of blanks.
void loadBlanks() {
    padScratch().assign(static_cast<std::size_t>(km::RndInt(MaxBlanks)), Blank);
}

// A text goes in in its stored form (CONVERSION::TextToStored).
void loadPlain(const QString &text) {
    if (text.isEmpty()) return loadBlanks();
    QString stored = CONVERSION::TextToStored(text);
    SecureBytes &b = padScratch();
    setSize(b, static_cast<std::size_t>(stored.size()));
    for (qsizetype i = 0; i < stored.size(); ++i)
        b[static_cast<std::size_t>(i)] = km::cp1252::toByte(stored[i]);
    // A stored form of its own is a copy of the text; one that shares the
    // caller's buffer is the caller's to wipe.
    if (stored.constData() != text.constData()) km::wipe(stored);
}

void loadPlain(const QByteArray &bytes) {
    if (bytes.isEmpty()) return loadBlanks();
    const auto *d = reinterpret_cast<const std::uint8_t *>(bytes.constData());
    padScratch().assign(d, d + bytes.size());
}

bool isNullValue(const QVariant &v) {
    return v.typeId() == QMetaType::Nullptr;
}

void loadPlain(const QVariant &value) {
    if (isNullValue(value)) return loadBlanks();
    if (value.typeId() == QMetaType::QByteArray) return loadPlain(value.toByteArray());
    return loadPlain(value.toString());
}

// Mode 1 on the value already in padScratch().
QByteArray encryptUnderRandomKey() {
    km::Randomize();
    const int number = static_cast<int>(km::RndInt(KeyCount));
    SelectFieldKey(number);
    const auto &schedule = scheduleCache().get(number, state().FieldKey.data());
    QByteArray out;
    out.reserve(FieldHeader + VectorBytes + static_cast<qsizetype>(padScratch().size()) + BlockBytes);
    out.append(static_cast<char>(number / 256));
    out.append(static_cast<char>(number % 256));
    encryptScratch(out, schedule);
    return out;
}

// The key of modes 3 and 4: the current FieldKey, zero-filled to 16 bytes when
// it is short (the person has been told, and the operation goes on).
void currentKeySchedule(CryptoLib::BlowfishSchedule &schedule) {
    const SecureBytes &fk = state().FieldKey;
    if (fk.size() < FieldKeyBytes) km::ShowMessage(MsgNoValidKey);
    std::uint8_t key[FieldKeyBytes] = {};
    if (!fk.empty()) std::memcpy(key, fk.data(), std::min<std::size_t>(fk.size(), FieldKeyBytes));
    schedule.setKey(key, FieldKeyBytes);
    km::cleanse(key, sizeof key);
}

QByteArray fieldBytes(const QVariant &value) {
    if (value.typeId() == QMetaType::QByteArray) return value.toByteArray();
    return km::cp1252::toBytes(value.toString());
}

// The part of PlainBytes left when blanks are trimmed from both ends.
struct Span {
    const std::uint8_t *data;
    qsizetype size;
};

Span plainSpan(bool trim) {
    const SecureBytes &plain = state().PlainBytes;
    std::size_t first = 0, last = plain.size();
    if (trim) {
        while (first < last && plain[first] == Blank)
            ++first;
        while (last > first && plain[last - 1] == Blank)
            --last;
    }
    return {plain.data() + first, static_cast<qsizetype>(last - first)};
}

QByteArray plainAsBytes(bool trim) {
    const Span s = plainSpan(trim);
    return QByteArray(reinterpret_cast<const char *>(s.data), s.size);
}

} // namespace

State &state() {
    static State s;
    return s;
}

ScheduleCache &scheduleCache() {
    static ScheduleCache cache;
    return cache;
}

void LoadKeyTable(const SecureBytes &table) {
    State &s = state();
    if (&table != &s.KeyTable) {
        km::cleanse(s.KeyTable.data(), s.KeyTable.size());
        s.KeyTable = table;
    }
    if (s.KeyTable.empty()) s.KeyTable.assign(1, 0);
    WipeBytes(s.FieldKey);
    scheduleCache().clear();
}

void UnloadKeyTable() {
    State &s = state();
    resetToOneByte(s.KeyTable);
    resetToOneByte(s.FieldKey);
    resetToOneByte(s.PlainBytes);
    s.KeyTableSize = 0;
    setSize(padScratch(), 0);
    scheduleCache().clear();
}

bool KeyTableLoaded() {
    return state().KeyTable.size() > 1;
}

void SelectFieldKey(int number) {
    State &s = state();
    const SecureBytes &t = s.KeyTable;
    const auto n = static_cast<std::int64_t>(t.size());
    if (n == 0 || number < 0) throw std::out_of_range("field key selection out of range");
    s.KeyTableSize = static_cast<int>(n);
    const std::int64_t k = number;
    const std::int64_t r = k % n;
    const std::int64_t q = k / n + 1;
    const std::int64_t step = t[static_cast<std::size_t>(r)] % 3 + 1;
    setSize(s.FieldKey, FieldKeyBytes);
    for (std::int64_t i = 1; i <= FieldKeyBytes; ++i) {
        const std::int64_t p = q * i + r;
        const std::int64_t a = t[static_cast<std::size_t>(p % n)];
        const std::int64_t b = t[static_cast<std::size_t>((p + step) % n)];
        s.FieldKey[static_cast<std::size_t>(i - 1)] = t[static_cast<std::size_t>((a * 256 + b) % n)];
    }
}

// ---- Field form ----

QByteArray FieldCipher(int mode, const QVariant &value) {
    if (!value.isValid()) return {};
    switch (mode) {
    case 1:
        if (!KeyTableLoaded()) return {};
        loadPlain(value);
        return encryptUnderRandomKey();
    case 2: {
        if (isNullValue(value)) {
            WipeBytes(state().PlainBytes);
            return {};
        }
        if (decryptFieldForm(fieldBytes(value)) == Decrypted::Malformed) return {};
        return plainAsBytes(true);
    }
    case 3: {
        CryptoLib::BlowfishSchedule schedule;
        currentKeySchedule(schedule);
        loadPlain(value);
        QByteArray out;
        encryptScratch(out, schedule);
        return out;
    }
    case 4: {
        CryptoLib::BlowfishSchedule schedule;
        currentKeySchedule(schedule);
        const QByteArray body = isNullValue(value) ? QByteArray() : fieldBytes(value);
        const auto n = static_cast<std::size_t>(body.size());
        if (!bodyWellFormed(n)) {
            WipeBytes(state().PlainBytes);
            return {};
        }
        decryptBody(reinterpret_cast<const std::uint8_t *>(body.constData()), n, schedule);
        return plainAsBytes(false);
    }
    default:
        return {};
    }
}

QByteArray EncryptField(const QString &text) {
    if (!KeyTableLoaded()) return {};
    loadPlain(text);
    return encryptUnderRandomKey();
}

QByteArray EncryptField(const QByteArray &bytes) {
    if (!KeyTableLoaded()) return {};
    loadPlain(bytes);
    return encryptUnderRandomKey();
}

QByteArray EncryptField(const QVariant &value) {
    return FieldCipher(1, value);
}

QString DecryptField(const QByteArray &field) {
    if (decryptFieldForm(field) == Decrypted::Malformed) return {};
    const Span s = plainSpan(true);
    QString stored = km::cp1252::fromBytes(s.data, s.size);
    QString text = CONVERSION::StoredToText(stored);
    if (text.constData() != stored.constData()) km::wipe(stored);
    return text;
}

SecureBytes DecryptFieldBytes(const QByteArray &field) {
    if (decryptFieldForm(field) == Decrypted::Malformed) return {};
    return state().PlainBytes;
}

bool DecryptToPlainBytes(const QByteArray &field) {
    return decryptFieldForm(field) == Decrypted::Ok;
}

// ---- Sealed form ----

namespace {

void sealKey(std::uint8_t *key, const SecureBytes &password, const std::uint8_t *nonce) {
    CryptoLib::PBE_Kdf2(key, SealKeyBytes, password.data(), password.size(), nonce, SealNonceBytes,
                        SealIterations, 0);
}

} // namespace

QByteArray SealString(const SecureBytes &plain, const SecureBytes &password) {
    const std::size_t n = plain.size() + 2;
    const std::size_t p = SealBlockBytes * (n / SealBlockBytes + 1) - n;
    SecureBytes block;
    block.reserve(n + p);
    block = plain;
    block.push_back(EndMark);
    block.push_back(static_cast<std::uint8_t>(ByteSum(plain)));
    block.insert(block.end(), p, static_cast<std::uint8_t>(p));

    QByteArray out(static_cast<qsizetype>(SealNonceBytes + block.size()), Qt::Uninitialized);
    auto *o = reinterpret_cast<std::uint8_t *>(out.data());
    CryptoLib::RNG_Nonce(o, SealNonceBytes, "", 0);
    SecureBytes key(SealKeyBytes);
    sealKey(key.data(), password, o);
    CryptoLib::AES_BytesMode(o + SealNonceBytes, block.data(), block.size(), key.data(), 256, 128,
                             CryptoLib::Encrypt, "CBC", o);
    WipeBytes(key);
    WipeBytes(block);
    return out;
}

SecureBytes UnsealString(const QByteArray &sealed, const SecureBytes &password) {
    const auto total = static_cast<std::size_t>(sealed.size());
    if (total < SealNonceBytes + SealBlockBytes || (total - SealNonceBytes) % SealBlockBytes) return {};
    const auto *nonce = reinterpret_cast<const std::uint8_t *>(sealed.constData());
    SecureBytes key(SealKeyBytes);
    sealKey(key.data(), password, nonce);
    SecureBytes block(total - SealNonceBytes);
    CryptoLib::AES_BytesMode(block.data(), nonce + SealNonceBytes, block.size(), key.data(), 256, 128,
                             CryptoLib::Decrypt, "CBC", nonce);
    WipeBytes(key);

    const std::size_t p = block.back();
    if (p > SealBlockBytes || p + 2 > block.size()) return {};
    std::size_t m = block.size() - p;
    if (block[m - 2] != EndMark) return {};
    const int checksum = block[m - 1];
    m -= 2;
    setSize(block, m);
    if (ByteSum(block) != checksum) return {};
    return block;
}

// ---- Verifier form ----

SecureBytes VerifierKeyBuffer(const SecureBytes &hash) {
    SecureBytes out;
    out.reserve(hash.size() * 4);
    for (const std::uint8_t byte : hash) {
        const char16_t c = km::cp1252::toChar(byte).unicode();
        for (const auto raw : {static_cast<std::uint8_t>(c & 0xFF), static_cast<std::uint8_t>(c >> 8)}) {
            const char16_t d = km::cp1252::toChar(raw).unicode();
            out.push_back(static_cast<std::uint8_t>(d & 0xFF));
            out.push_back(static_cast<std::uint8_t>(d >> 8));
        }
    }
    return out;
}

QByteArray BlockCipherText(const QByteArray &text, const SecureBytes &password, int direction, int blockBits,
                           int keyBits) {
    auto sizeAccepted = [](int bits) { return bits == 128 || bits == 192 || bits == 256; };
    if (!sizeAccepted(blockBits) || !sizeAccepted(keyBits)) return {};
    const std::size_t b = static_cast<std::size_t>(blockBits / 8);
    SecureBytes hash = HashKey(password);
    SecureBytes key = VerifierKeyBuffer(hash);
    WipeBytes(hash);

    const auto *t = reinterpret_cast<const std::uint8_t *>(text.constData());
    SecureBytes block;
    QByteArray result;
    if (direction == CryptoLib::Encrypt) {
        block.assign(t, t + text.size());
        block.push_back(EndMark);
        if (block.size() % b) block.insert(block.end(), b - block.size() % b, static_cast<std::uint8_t>(b));
        result.resize(static_cast<qsizetype>(block.size()));
        CryptoLib::AES_Bytes(reinterpret_cast<std::uint8_t *>(result.data()), block.data(), block.size(),
                             key.data(), keyBits, blockBits, CryptoLib::Encrypt);
    } else {
        // Bytes past the last whole block are ignored.
        block.assign(t, t + (static_cast<std::size_t>(text.size()) / b) * b);
        CryptoLib::AES_Bytes(block.data(), block.data(), block.size(), key.data(), keyBits, blockBits,
                             CryptoLib::Decrypt);
        std::size_t end = block.size();
        while (end > 0 && block[end - 1] == b)
            --end;
        if (end > 0 && block[end - 1] == EndMark)
            result =
                QByteArray(reinterpret_cast<const char *>(block.data()), static_cast<qsizetype>(end - 1));
    }
    WipeBytes(key);
    WipeBytes(block);
    return result;
}

// ---- Hashes and random values ----

SecureBytes HashKey(const SecureBytes &bytes) {
    SecureBytes h(32);
    CryptoLib::SHA2_BytesHash(h.data(), bytes.data(), bytes.size());
    for (int round = 1; round < 80; ++round)
        CryptoLib::SHA2_BytesHash(h.data(), h.data(), h.size());
    return h;
}

SecureBytes HashKey(const QString &text) {
    SecureBytes bytes = km::cp1252::toSecureBytes(text);
    SecureBytes h = HashKey(bytes);
    WipeBytes(bytes);
    return h;
}

SecureBytes HashPass(const SecureBytes &bytes) {
    SecureBytes h(20);
    CryptoLib::SHA1_BytesHash(h.data(), bytes.data(), bytes.size());
    // Each further round hashes only 19 of the 20 digest bytes; stored verifiers depend on it.
    for (int round = 1; round < 47; ++round)
        CryptoLib::SHA1_BytesHash(h.data(), h.data(), 19);
    return h;
}

SecureBytes HashPass(const QString &text) {
    SecureBytes bytes = km::cp1252::toSecureBytes(text);
    SecureBytes h = HashPass(bytes);
    WipeBytes(bytes);
    return h;
}

SecureBytes RandomBytes(int n) {
    if (n <= 0) return {};
    SecureBytes out(static_cast<std::size_t>(n));
    CryptoLib::RNG_KeyGenerate(out.data(), out.size(), "", 0, 0);
    return out;
}

QByteArray RandomNoise(int n) {
    if (n <= 0) return {};
    QByteArray out(8 * static_cast<qsizetype>(n), Qt::Uninitialized);
    CryptoLib::RNG_KeyGenerate(reinterpret_cast<std::uint8_t *>(out.data()),
                               static_cast<std::size_t>(out.size()), "", 0, 1);
    return out;
}

int ByteSum(const SecureBytes &bytes) {
    unsigned sum = 0;
    for (const std::uint8_t b : bytes)
        sum += b;
    return static_cast<int>(sum % 256);
}

int ByteSum(const QByteArray &bytes) {
    unsigned sum = 0;
    for (const char c : bytes)
        sum += static_cast<std::uint8_t>(c);
    return static_cast<int>(sum % 256);
}

void WipeBytes(SecureBytes &bytes) {
    km::wipe(bytes);
    bytes.push_back(0);
}

QString WipeString(QString &text) {
    km::wipe(text);
    return QString();
}

int CachedSchedules() {
    return scheduleCache().size();
}

// ---- Schedule cache ----

ScheduleCache::ScheduleCache(int capacity) : m_capacity(capacity > 0 ? capacity : 1) {}

ScheduleCache::~ScheduleCache() {
    release();
}

const CryptoLib::BlowfishSchedule &ScheduleCache::get(int number, const std::uint8_t *key) {
    if (m_slot.empty()) m_slot.assign(KeyCount, -1);
    const auto slot = static_cast<std::size_t>(number) % KeyCount;
    int index = m_slot[slot];
    if (index >= 0) {
        Entry &e = entry(index);
        if (std::memcmp(e.key.data(), key, KeyBytes) == 0) return e.schedule;
    } else {
        if (m_used < m_capacity) {
            index = m_used++;
            if (static_cast<std::size_t>(index / ChunkEntries) >= m_chunks.size())
                m_chunks.push_back(std::make_unique<Entry[]>(ChunkEntries));
        } else {
            index = static_cast<int>(km::RndInt(m_capacity)); // a random victim
            m_slot[static_cast<std::size_t>(entry(index).number)] = -1;
        }
        m_slot[slot] = index;
        entry(index).number = static_cast<std::int32_t>(slot);
    }
    ++m_misses;
    Entry &e = entry(index);
    std::memcpy(e.key.data(), key, KeyBytes);
    e.schedule.setKey(key, KeyBytes);
    return e.schedule;
}

void ScheduleCache::clear() {
    for (int i = 0; i < m_used; ++i) {
        Entry &e = entry(i);
        e.schedule.wipe();
        km::cleanse(e.key.data(), e.key.size());
        e.number = -1;
    }
    std::fill(m_slot.begin(), m_slot.end(), -1);
    m_used = 0;
    m_misses = 0;
}

void ScheduleCache::release() {
    clear();
    m_chunks.clear();
    m_chunks.shrink_to_fit();
    m_slot.clear();
    m_slot.shrink_to_fit();
}

bool ScheduleCache::holdsNoKeyMaterial() const {
    for (const auto &chunk : m_chunks) {
        for (int i = 0; i < ChunkEntries; ++i) {
            const Entry &e = chunk[i];
            const auto *bytes = reinterpret_cast<const unsigned char *>(&e.schedule);
            if (std::any_of(bytes, bytes + sizeof e.schedule, [](unsigned char c) { return c != 0; }))
                return false;
            if (std::any_of(e.key.begin(), e.key.end(), [](std::uint8_t c) { return c != 0; })) return false;
        }
    }
    return true;
}

} // namespace CRY
