#include "platform/CryptoLib.h"

#include <openssl/blowfish.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "platform/Rijndael.h"
#include "platform/SecureBytes.h"

namespace CryptoLib {

static_assert(sizeof(BF_KEY) == BlowfishSchedule::Size, "BlowfishSchedule must hold exactly one BF_KEY");
static_assert(alignof(BF_KEY) <= 8);

namespace {

constexpr int BadArgument = -1;
constexpr int LibraryFailure = -2;

enum class Mode { Unknown, ECB, CBC };

Mode parseMode(const char *mode) {
    if (!mode) return Mode::Unknown;
    auto is = [mode](const char *name) {
        for (int i = 0;; ++i) {
            const char a = mode[i], b = name[i];
            const char upper = (a >= 'a' && a <= 'z') ? static_cast<char>(a - 'a' + 'A') : a;
            if (upper != b) return false;
            if (!a) return true;
        }
    };
    if (is("ECB")) return Mode::ECB;
    if (is("CBC")) return Mode::CBC;
    return Mode::Unknown;
}

bool directionAccepted(int direction) {
    return direction == Encrypt || direction == Decrypt;
}

// A BF_KEY living in its own wiped storage for one call.
struct ScopedBfKey {
    BF_KEY key;
    ~ScopedBfKey() { km::cleanse(&key, sizeof key); }
};

// OpenSSL's one-shot functions refuse a null pointer even for zero bytes.
const std::uint8_t *nonNull(const std::uint8_t *p) {
    static const std::uint8_t none = 0;
    return p ? p : &none;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool parseHex(const char *hex, km::SecureBytes &out) {
    const std::size_t n = std::strlen(hex);
    if (n % 2) return false;
    out.assign(n / 2, 0);
    for (std::size_t i = 0; i < n / 2; ++i) {
        const int hi = hexValue(hex[2 * i]), lo = hexValue(hex[2 * i + 1]);
        if (hi < 0 || lo < 0) return false;
        out[i] = static_cast<std::uint8_t>(hi * 16 + lo);
    }
    return true;
}

const EVP_CIPHER *aesCipher(int keyBits, Mode mode) {
    const bool cbc = mode == Mode::CBC;
    switch (keyBits) {
    case 128:
        return cbc ? EVP_aes_128_cbc() : EVP_aes_128_ecb();
    case 192:
        return cbc ? EVP_aes_192_cbc() : EVP_aes_192_ecb();
    case 256:
        return cbc ? EVP_aes_256_cbc() : EVP_aes_256_ecb();
    default:
        return nullptr;
    }
}

int evpAes(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *key,
           int keyBits, int direction, Mode mode, const std::uint8_t *iv) {
    const EVP_CIPHER *cipher = aesCipher(keyBits, mode);
    if (!cipher || length > static_cast<std::size_t>(INT_MAX)) return BadArgument;
    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                        EVP_CIPHER_CTX_free);
    if (!ctx) return LibraryFailure;
    const int enc = direction == Encrypt ? 1 : 0;
    if (EVP_CipherInit_ex(ctx.get(), cipher, nullptr, key, mode == Mode::CBC ? iv : nullptr, enc) != 1)
        return LibraryFailure;
    EVP_CIPHER_CTX_set_padding(ctx.get(), 0);
    int written = 0;
    if (length && EVP_CipherUpdate(ctx.get(), output, &written, input, static_cast<int>(length)) != 1)
        return LibraryFailure;
    int tail = 0;
    if (EVP_CipherFinal_ex(ctx.get(), output + written, &tail) != 1) return LibraryFailure;
    return 0;
}

// Rijndael in ECB or CBC for the block sizes OpenSSL does not have.
int rijndaelBytes(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                  const std::uint8_t *key, int keyBits, int blockBits, int direction, Mode mode,
                  const std::uint8_t *iv) {
    km::Rijndael cipher(key, keyBits, blockBits);
    if (!cipher.valid()) return BadArgument;
    const std::size_t b = static_cast<std::size_t>(cipher.blockBytes());
    if (length % b) return BadArgument;
    std::uint8_t chain[km::Rijndael::MaxBlockBytes] = {};
    std::uint8_t block[km::Rijndael::MaxBlockBytes];
    if (mode == Mode::CBC) std::memcpy(chain, iv, b);
    for (std::size_t off = 0; off < length; off += b) {
        if (mode == Mode::ECB) {
            if (direction == Encrypt)
                cipher.encryptBlock(input + off, output + off);
            else
                cipher.decryptBlock(input + off, output + off);
            continue;
        }
        if (direction == Encrypt) {
            for (std::size_t i = 0; i < b; ++i)
                block[i] = static_cast<std::uint8_t>(input[off + i] ^ chain[i]);
            cipher.encryptBlock(block, output + off);
            std::memcpy(chain, output + off, b);
        } else {
            std::uint8_t next[km::Rijndael::MaxBlockBytes];
            std::memcpy(next, input + off, b); // input and output may be one buffer
            cipher.decryptBlock(next, block);
            for (std::size_t i = 0; i < b; ++i)
                output[off + i] = static_cast<std::uint8_t>(block[i] ^ chain[i]);
            std::memcpy(chain, next, b);
        }
    }
    km::cleanse(block, sizeof block);
    km::cleanse(chain, sizeof chain);
    return 0;
}

} // namespace

// ---- Blowfish ----

int BLF_BytesMode(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                  const std::uint8_t *key, std::size_t keyLength, int direction, const char *mode,
                  const std::uint8_t *iv) {
    const Mode m = parseMode(mode);
    if (m == Mode::Unknown || !directionAccepted(direction) || length % 8 || !key || keyLength == 0 ||
        keyLength > static_cast<std::size_t>(INT_MAX) || (m == Mode::CBC && !iv) ||
        (length && (!input || !output)))
        return BadArgument;
    ScopedBfKey k;
    BF_set_key(&k.key, static_cast<int>(keyLength), key);
    const int enc = direction == Encrypt ? BF_ENCRYPT : BF_DECRYPT;
    if (m == Mode::CBC) {
        unsigned char chain[8];
        std::memcpy(chain, iv, 8);
        if (length) BF_cbc_encrypt(input, output, static_cast<long>(length), &k.key, chain, enc);
        km::cleanse(chain, sizeof chain);
    } else {
        for (std::size_t off = 0; off < length; off += 8)
            BF_ecb_encrypt(input + off, output + off, &k.key, enc);
    }
    return 0;
}

int BLF_Bytes(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *key,
              std::size_t keyLength, int direction) {
    return BLF_BytesMode(output, input, length, key, keyLength, direction, "ECB", nullptr);
}

int BLF_Hex(char *output, const char *inputHex, const char *keyHex, int direction) {
    if (!output || !inputHex || !keyHex) return BadArgument;
    km::SecureBytes in, key;
    if (!parseHex(inputHex, in) || !parseHex(keyHex, key)) return BadArgument;
    km::SecureBytes out(in.size());
    const int status = BLF_Bytes(out.data(), in.data(), in.size(), key.data(), key.size(), direction);
    if (status != 0) return status;
    static const char digits[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < out.size(); ++i) {
        output[2 * i] = digits[out[i] >> 4];
        output[2 * i + 1] = digits[out[i] & 15];
    }
    output[2 * out.size()] = '\0';
    return 0;
}

// ---- AES and Rijndael ----

int AES_BytesMode(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                  const std::uint8_t *key, int keyBits, int blockBits, int direction, const char *mode,
                  const std::uint8_t *iv) {
    const Mode m = parseMode(mode);
    if (m == Mode::Unknown || !directionAccepted(direction) || !key || (m == Mode::CBC && !iv) ||
        (length && (!input || !output)))
        return BadArgument;
    if (blockBits == 128) {
        if (length % 16) return BadArgument;
        return evpAes(output, input, length, key, keyBits, direction, m, iv);
    }
    return rijndaelBytes(output, input, length, key, keyBits, blockBits, direction, m, iv);
}

int AES_Bytes(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *key,
              int keyBits, int blockBits, int direction) {
    return AES_BytesMode(output, input, length, key, keyBits, blockBits, direction, "ECB", nullptr);
}

// ---- Key derivation and hashes ----

int PBE_Kdf2(std::uint8_t *derivedKey, std::size_t derivedLength, const std::uint8_t *password,
             std::size_t passwordLength, const std::uint8_t *salt, std::size_t saltLength, int iterations,
             int options) {
    if (options != 0 || !derivedKey || iterations < 1 || derivedLength > static_cast<std::size_t>(INT_MAX) ||
        passwordLength > static_cast<std::size_t>(INT_MAX) || saltLength > static_cast<std::size_t>(INT_MAX))
        return BadArgument;
    if (derivedLength == 0) return 0;
    if (PKCS5_PBKDF2_HMAC(reinterpret_cast<const char *>(nonNull(password)), static_cast<int>(passwordLength),
                          nonNull(salt), static_cast<int>(saltLength), iterations, EVP_sha1(),
                          static_cast<int>(derivedLength), derivedKey) != 1)
        return LibraryFailure;
    return 0;
}

int SHA1_BytesHash(std::uint8_t *output20, const std::uint8_t *input, std::size_t length) {
    if (!output20 || (length && !input)) return BadArgument;
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA1(nonNull(input), length, digest);
    std::memcpy(output20, digest, sizeof digest); // input may be this very buffer
    km::cleanse(digest, sizeof digest);
    return 0;
}

int SHA2_BytesHash(std::uint8_t *output32, const std::uint8_t *input, std::size_t length) {
    if (!output32 || (length && !input)) return BadArgument;
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(nonNull(input), length, digest);
    std::memcpy(output32, digest, sizeof digest);
    km::cleanse(digest, sizeof digest);
    return 0;
}

// ---- Random bytes ----

namespace {

int randomFill(std::uint8_t *output, std::size_t length, bool priv) {
    if (length && !output) return BadArgument;
    while (length) {
        const int chunk = length > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(length);
        if ((priv ? RAND_priv_bytes(output, chunk) : RAND_bytes(output, chunk)) != 1) return LibraryFailure;
        output += chunk;
        length -= static_cast<std::size_t>(chunk);
    }
    return 0;
}

} // namespace

int RNG_KeyGenerate(std::uint8_t *output, std::size_t length, const char *, std::size_t, int) {
    return randomFill(output, length, true);
}

int RNG_Nonce(std::uint8_t *output, std::size_t length, const char *, std::size_t) {
    return randomFill(output, length, false);
}

std::int32_t RNG_Long(std::int32_t lower, std::int32_t upper) {
    if (lower > upper) std::swap(lower, upper);
    const std::uint64_t span = static_cast<std::uint64_t>(static_cast<std::int64_t>(upper) - lower) + 1;
    // Rejection keeps the draw uniform: accept only below the largest multiple of span.
    const std::uint64_t limit = (std::uint64_t{1} << 32) - ((std::uint64_t{1} << 32) % span);
    for (;;) {
        std::uint32_t r = 0;
        if (randomFill(reinterpret_cast<std::uint8_t *>(&r), sizeof r, false) != 0) return lower;
        if (r < limit) return static_cast<std::int32_t>(lower + static_cast<std::int64_t>(r % span));
    }
}

// ---- Prepared Blowfish schedule ----

namespace {

BF_KEY *asKey(unsigned char *state) {
    return std::launder(reinterpret_cast<BF_KEY *>(state));
}
const BF_KEY *asKey(const unsigned char *state) {
    return std::launder(reinterpret_cast<const BF_KEY *>(state));
}

} // namespace

BlowfishSchedule::BlowfishSchedule() {
    ::new (static_cast<void *>(m_state)) BF_KEY;
    std::memset(m_state, 0, Size);
}

BlowfishSchedule::BlowfishSchedule(const std::uint8_t *key, std::size_t keyLength) : BlowfishSchedule() {
    setKey(key, keyLength);
}

BlowfishSchedule::~BlowfishSchedule() {
    wipe();
}

void BlowfishSchedule::setKey(const std::uint8_t *key, std::size_t keyLength) {
    if (!key || keyLength == 0) {
        wipe();
        return;
    }
    // OpenSSL uses at most 72 key bytes.
    BF_set_key(asKey(m_state), static_cast<int>(keyLength > 72 ? 72 : keyLength), key);
}

void BlowfishSchedule::wipe() {
    km::cleanse(m_state, Size);
}

void BlowfishSchedule::cbc(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                           const std::uint8_t *iv, int direction) const {
    length -= length % 8;
    if (!length) return;
    unsigned char chain[8];
    std::memcpy(chain, iv, 8);
    BF_cbc_encrypt(input, output, static_cast<long>(length), asKey(m_state), chain,
                   direction == Encrypt ? BF_ENCRYPT : BF_DECRYPT);
    km::cleanse(chain, sizeof chain);
}

} // namespace CryptoLib
