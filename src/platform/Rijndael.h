// Rijndael with free block and key sizes (128, 192 or 256 bits each). The
// passphrase verifier of a user row is Rijndael with a 192-bit block, which no
// maintained library offers; for the 128-bit block this is plain AES.
//
// Table look-ups here are not constant-time. The cipher runs a few times per
// login on a hash of the passphrase, never per field, so that is accepted;
// everything bulk goes through OpenSSL.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace km {

class Rijndael {
public:
    static constexpr int MaxBlockBytes = 32;

    // keyBits and blockBits each 128, 192 or 256; valid() is false otherwise.
    Rijndael(const std::uint8_t *key, int keyBits, int blockBits);
    ~Rijndael(); // wipes the expanded key
    Rijndael(const Rijndael &) = delete;
    Rijndael &operator=(const Rijndael &) = delete;

    bool valid() const { return m_rounds != 0; }
    int blockBytes() const { return 4 * m_nb; }

    // One block; input and output may be the same buffer.
    void encryptBlock(const std::uint8_t *input, std::uint8_t *output) const;
    void decryptBlock(const std::uint8_t *input, std::uint8_t *output) const;

private:
    void addRoundKey(std::uint8_t *state, int round) const;

    int m_nb = 0;     // block length in 32-bit columns
    int m_rounds = 0; // 0 when the sizes were not accepted
    // Round keys, (rounds + 1) x block bytes; at most 15 x 32.
    std::array<std::uint8_t, 15 * MaxBlockBytes> m_roundKeys{};
};

} // namespace km
