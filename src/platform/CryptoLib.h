// The crypto library: standard primitives under the operation names the store
// calls them by. Blowfish, AES, SHA-1, SHA-256, PBKDF2 and random bytes come
// from OpenSSL 3; Rijndael with a 192-bit block is written here (no maintained
// library offers that block size). Buffers are raw bytes, lengths in bytes.
// Every operation returns 0 on success and a negative status on bad arguments;
// the store keeps the status and never tests it, as the primitives cannot fail
// on the arguments it passes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace CryptoLib {

constexpr int Encrypt = -1; // direction words as the store passes them
constexpr int Decrypt = 0;

// Blowfish, block 8 bytes, no padding of its own. mode "ECB" or "CBC" (case-insensitive).
int BLF_BytesMode(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                  const std::uint8_t *key, std::size_t keyLength, int direction, const char *mode,
                  const std::uint8_t *iv);
// Blowfish ECB over the whole buffer.
int BLF_Bytes(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *key,
              std::size_t keyLength, int direction);
// Blowfish ECB on hex texts (input and key as hex digits; output hex, upper case, NUL-terminated,
// output must hold 2 x bytes + 1).
int BLF_Hex(char *output, const char *inputHex, const char *keyHex, int direction);

// AES in ECB or CBC with block bits 128; key bits 128, 192 or 256. No padding.
int AES_BytesMode(std::uint8_t *output, const std::uint8_t *input, std::size_t length,
                  const std::uint8_t *key, int keyBits, int blockBits, int direction, const char *mode,
                  const std::uint8_t *iv);
// Rijndael without chaining, block by block; key bits and block bits each 128, 192 or 256.
int AES_Bytes(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *key,
              int keyBits, int blockBits, int direction);

// PBKDF2; options 0 selects HMAC-SHA-1.
int PBE_Kdf2(std::uint8_t *derivedKey, std::size_t derivedLength, const std::uint8_t *password,
             std::size_t passwordLength, const std::uint8_t *salt, std::size_t saltLength, int iterations,
             int options);

// Output and input may be the same buffer.
int SHA1_BytesHash(std::uint8_t *output20, const std::uint8_t *input, std::size_t length);
int SHA2_BytesHash(std::uint8_t *output32, const std::uint8_t *input, std::size_t length);

// Random bytes from OpenSSL's generator. Seed and quality are accepted and
// passed over: OpenSSL's generator is strong in every case.
int RNG_KeyGenerate(std::uint8_t *output, std::size_t length, const char *seed, std::size_t seedLength,
                    int quality);
int RNG_Nonce(std::uint8_t *output, std::size_t length, const char *seed, std::size_t seedLength);
// A random whole number from lower to upper, both included.
std::int32_t RNG_Long(std::int32_t lower, std::int32_t upper);

// A prepared Blowfish key schedule, for callers that decrypt many fields under
// few keys (the key schedule costs far more than a short field). Wipes itself.
class BlowfishSchedule {
public:
    BlowfishSchedule();
    BlowfishSchedule(const std::uint8_t *key, std::size_t keyLength);
    ~BlowfishSchedule();
    BlowfishSchedule(const BlowfishSchedule &) = delete;
    BlowfishSchedule &operator=(const BlowfishSchedule &) = delete;

    void setKey(const std::uint8_t *key, std::size_t keyLength);
    void wipe();
    // CBC over length bytes (a multiple of 8); iv is not changed.
    void cbc(std::uint8_t *output, const std::uint8_t *input, std::size_t length, const std::uint8_t *iv,
             int direction) const;
    static constexpr std::size_t Size = 4168; // bytes of key schedule (P-array and S-boxes)

private:
    alignas(8) unsigned char m_state[Size];
};

} // namespace CryptoLib
