#include "platform/Rijndael.h"

#include <cstring>

#include "platform/SecureBytes.h"

namespace km {

namespace {

constexpr std::uint8_t xtime(std::uint8_t x) {
    return static_cast<std::uint8_t>((x << 1) ^ ((x >> 7) * 0x1b));
}

constexpr std::uint8_t gmul(std::uint8_t a, std::uint8_t b) {
    std::uint8_t p = 0;
    for (int i = 0; i < 8; ++i) {
        p = static_cast<std::uint8_t>(p ^ (a & (0u - (b & 1u))));
        a = xtime(a);
        b = static_cast<std::uint8_t>(b >> 1);
    }
    return p;
}

constexpr std::uint8_t rotl8(std::uint8_t x, int n) {
    return static_cast<std::uint8_t>((x << n) | (x >> (8 - n)));
}

// The S-box from its definition: multiplicative inverse in GF(2^8) followed by
// the affine map. p walks the field by powers of 3 while q walks the inverse.
constexpr std::array<std::uint8_t, 256> makeSbox() {
    std::array<std::uint8_t, 256> box{};
    std::uint8_t p = 1, q = 1;
    do {
        p = static_cast<std::uint8_t>(p ^ (p << 1) ^ ((p & 0x80) ? 0x1b : 0));
        q = static_cast<std::uint8_t>(q ^ (q << 1));
        q = static_cast<std::uint8_t>(q ^ (q << 2));
        q = static_cast<std::uint8_t>(q ^ (q << 4));
        if (q & 0x80) q = static_cast<std::uint8_t>(q ^ 0x09);
        const std::uint8_t x =
            static_cast<std::uint8_t>(q ^ rotl8(q, 1) ^ rotl8(q, 2) ^ rotl8(q, 3) ^ rotl8(q, 4));
        box[p] = static_cast<std::uint8_t>(x ^ 0x63);
    } while (p != 1);
    box[0] = 0x63;
    return box;
}

constexpr std::array<std::uint8_t, 256> makeInverse(const std::array<std::uint8_t, 256> &box) {
    std::array<std::uint8_t, 256> inv{};
    for (int i = 0; i < 256; ++i)
        inv[box[static_cast<std::size_t>(i)]] = static_cast<std::uint8_t>(i);
    return inv;
}

constexpr std::array<std::uint8_t, 256> kSbox = makeSbox();
constexpr std::array<std::uint8_t, 256> kInvSbox = makeInverse(kSbox);
static_assert(kSbox[0x00] == 0x63 && kSbox[0x01] == 0x7c && kSbox[0x53] == 0xed && kSbox[0xff] == 0x16);

// Row r of the state moves left by shiftOf(nb, r) columns.
int shiftOf(int nb, int row) {
    if (row == 0) return 0;
    if (nb == 8) return row == 1 ? 1 : row + 1; // 1, 3, 4 for the 256-bit block
    return row;                                 // 1, 2, 3
}

bool sizeAccepted(int bits) {
    return bits == 128 || bits == 192 || bits == 256;
}

void shiftRows(std::uint8_t *s, int nb, bool inverse) {
    std::uint8_t row[8];
    for (int r = 1; r < 4; ++r) {
        const int k = shiftOf(nb, r);
        for (int c = 0; c < nb; ++c)
            row[c] = s[r + 4 * c];
        for (int c = 0; c < nb; ++c) {
            const int from = inverse ? (c - k + nb) % nb : (c + k) % nb;
            s[r + 4 * c] = row[from];
        }
    }
    cleanse(row, sizeof row);
}

void mixColumns(std::uint8_t *s, int nb) {
    for (int c = 0; c < nb; ++c) {
        std::uint8_t *col = s + 4 * c;
        const std::uint8_t a0 = col[0], a1 = col[1], a2 = col[2], a3 = col[3];
        col[0] = static_cast<std::uint8_t>(xtime(a0) ^ xtime(a1) ^ a1 ^ a2 ^ a3);
        col[1] = static_cast<std::uint8_t>(a0 ^ xtime(a1) ^ xtime(a2) ^ a2 ^ a3);
        col[2] = static_cast<std::uint8_t>(a0 ^ a1 ^ xtime(a2) ^ xtime(a3) ^ a3);
        col[3] = static_cast<std::uint8_t>(xtime(a0) ^ a0 ^ a1 ^ a2 ^ xtime(a3));
    }
}

void invMixColumns(std::uint8_t *s, int nb) {
    for (int c = 0; c < nb; ++c) {
        std::uint8_t *col = s + 4 * c;
        const std::uint8_t a0 = col[0], a1 = col[1], a2 = col[2], a3 = col[3];
        col[0] = static_cast<std::uint8_t>(gmul(a0, 14) ^ gmul(a1, 11) ^ gmul(a2, 13) ^ gmul(a3, 9));
        col[1] = static_cast<std::uint8_t>(gmul(a0, 9) ^ gmul(a1, 14) ^ gmul(a2, 11) ^ gmul(a3, 13));
        col[2] = static_cast<std::uint8_t>(gmul(a0, 13) ^ gmul(a1, 9) ^ gmul(a2, 14) ^ gmul(a3, 11));
        col[3] = static_cast<std::uint8_t>(gmul(a0, 11) ^ gmul(a1, 13) ^ gmul(a2, 9) ^ gmul(a3, 14));
    }
}

void substitute(std::uint8_t *s, int n, const std::array<std::uint8_t, 256> &box) {
    for (int i = 0; i < n; ++i)
        s[i] = box[s[i]];
}

} // namespace

Rijndael::Rijndael(const std::uint8_t *key, int keyBits, int blockBits) {
    if (!key || !sizeAccepted(keyBits) || !sizeAccepted(blockBits)) return;
    const int nk = keyBits / 32;
    m_nb = blockBits / 32;
    const int rounds = (nk > m_nb ? nk : m_nb) + 6;
    const int words = m_nb * (rounds + 1);

    std::uint8_t *w = m_roundKeys.data();
    std::memcpy(w, key, static_cast<std::size_t>(4 * nk));
    std::uint8_t rcon = 1;
    for (int i = nk; i < words; ++i) {
        std::uint8_t t[4] = {w[4 * (i - 1)], w[4 * (i - 1) + 1], w[4 * (i - 1) + 2], w[4 * (i - 1) + 3]};
        if (i % nk == 0) {
            const std::uint8_t first = t[0];
            t[0] = static_cast<std::uint8_t>(kSbox[t[1]] ^ rcon);
            t[1] = kSbox[t[2]];
            t[2] = kSbox[t[3]];
            t[3] = kSbox[first];
            rcon = xtime(rcon);
        } else if (nk > 6 && i % nk == 4) {
            for (auto &b : t)
                b = kSbox[b];
        }
        for (int j = 0; j < 4; ++j)
            w[4 * i + j] = static_cast<std::uint8_t>(w[4 * (i - nk) + j] ^ t[j]);
        cleanse(t, sizeof t);
    }
    m_rounds = rounds;
}

Rijndael::~Rijndael() {
    cleanse(m_roundKeys.data(), m_roundKeys.size());
}

void Rijndael::addRoundKey(std::uint8_t *state, int round) const {
    const std::uint8_t *k = m_roundKeys.data() + static_cast<std::size_t>(round * 4 * m_nb);
    for (int i = 0; i < 4 * m_nb; ++i)
        state[i] ^= k[i];
}

void Rijndael::encryptBlock(const std::uint8_t *input, std::uint8_t *output) const {
    if (!valid()) return;
    const int n = 4 * m_nb;
    std::uint8_t s[MaxBlockBytes];
    std::memcpy(s, input, static_cast<std::size_t>(n));
    addRoundKey(s, 0);
    for (int round = 1; round < m_rounds; ++round) {
        substitute(s, n, kSbox);
        shiftRows(s, m_nb, false);
        mixColumns(s, m_nb);
        addRoundKey(s, round);
    }
    substitute(s, n, kSbox);
    shiftRows(s, m_nb, false);
    addRoundKey(s, m_rounds);
    std::memcpy(output, s, static_cast<std::size_t>(n));
    cleanse(s, sizeof s);
}

void Rijndael::decryptBlock(const std::uint8_t *input, std::uint8_t *output) const {
    if (!valid()) return;
    const int n = 4 * m_nb;
    std::uint8_t s[MaxBlockBytes];
    std::memcpy(s, input, static_cast<std::size_t>(n));
    addRoundKey(s, m_rounds);
    for (int round = m_rounds - 1; round >= 1; --round) {
        shiftRows(s, m_nb, true);
        substitute(s, n, kInvSbox);
        addRoundKey(s, round);
        invMixColumns(s, m_nb);
    }
    shiftRows(s, m_nb, true);
    substitute(s, n, kInvSbox);
    addRoundKey(s, 0);
    std::memcpy(output, s, static_cast<std::size_t>(n));
    cleanse(s, sizeof s);
}

} // namespace km
