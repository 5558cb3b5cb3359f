// Rijndael against published AES answers (128-bit block) and the recorded
// 192-bit block answers of tests/data, through the class and through AES_Bytes.
#include "platform/Rijndael.h"

#include "platform/CryptoLib.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes hex(const std::string &h) {
    Bytes out(h.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = static_cast<std::uint8_t>(std::stoi(h.substr(2 * i, 2), nullptr, 16));
    return out;
}

struct Vector {
    Bytes key, plain, cipher;
};

std::vector<Vector> readVectors(const std::string &path) {
    std::vector<Vector> out;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string k, p, c;
        fields >> k >> p >> c;
        out.push_back({hex(k), hex(p), hex(c)});
    }
    return out;
}

void expectBothWays(const Vector &v, int keyBits, int blockBits) {
    km::Rijndael cipher(v.key.data(), keyBits, blockBits);
    ASSERT_TRUE(cipher.valid());
    Bytes out(v.plain.size());
    cipher.encryptBlock(v.plain.data(), out.data());
    EXPECT_EQ(out, v.cipher);
    cipher.decryptBlock(out.data(), out.data()); // in place
    EXPECT_EQ(out, v.plain);
}

} // namespace

TEST(Rijndael, Fips197AesKnownAnswers) {
    const Bytes plain = hex("00112233445566778899aabbccddeeff");
    const Vector cases[] = {
        {hex("2b7e151628aed2a6abf7158809cf4f3c"), hex("3243f6a8885a308d313198a2e0370734"),
         hex("3925841d02dc09fbdc118597196a0b32")},
        {hex("000102030405060708090a0b0c0d0e0f"), plain, hex("69c4e0d86a7b0430d8cdb78070b4c55a")},
        {hex("000102030405060708090a0b0c0d0e0f1011121314151617"), plain,
         hex("dda97ca4864cdfe06eaf70a0ec0d7191")},
        {hex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"), plain,
         hex("8ea2b7ca516745bfeafc49904b496089")},
    };
    for (const auto &v : cases) {
        SCOPED_TRACE(v.key.size());
        expectBothWays(v, static_cast<int>(v.key.size() * 8), 128);
    }
}

TEST(Rijndael, Block192Key256RecordedAnswers) {
    const auto vectors = readVectors(std::string(KM_TEST_DATA_DIR) + "/rijndael192_256.txt");
    ASSERT_GE(vectors.size(), 5u);
    for (std::size_t i = 0; i < vectors.size(); ++i) {
        SCOPED_TRACE(i);
        const auto &v = vectors[i];
        ASSERT_EQ(v.key.size(), 32u);
        ASSERT_EQ(v.plain.size(), 24u);
        expectBothWays(v, 256, 192);

        // The library call chains nothing: two copies of a block give two equal cipher blocks.
        Bytes two = v.plain;
        two.insert(two.end(), v.plain.begin(), v.plain.end());
        Bytes out(two.size());
        ASSERT_EQ(CryptoLib::AES_Bytes(out.data(), two.data(), two.size(), v.key.data(), 256, 192,
                                       CryptoLib::Encrypt),
                  0);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 24), v.cipher);
        EXPECT_EQ(Bytes(out.begin() + 24, out.end()), v.cipher);
    }
}

TEST(Rijndael, EverySizeRoundTripsAndDiffers) {
    Bytes key(32);
    for (std::size_t i = 0; i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(i * 11 + 1);
    for (int keyBits : {128, 192, 256}) {
        for (int blockBits : {128, 192, 256}) {
            SCOPED_TRACE(std::to_string(keyBits) + "/" + std::to_string(blockBits));
            km::Rijndael cipher(key.data(), keyBits, blockBits);
            ASSERT_TRUE(cipher.valid());
            ASSERT_EQ(cipher.blockBytes(), blockBits / 8);
            Bytes plain(static_cast<std::size_t>(blockBits / 8));
            for (std::size_t i = 0; i < plain.size(); ++i)
                plain[i] = static_cast<std::uint8_t>(255 - i);
            Bytes enc(plain.size()), dec(plain.size());
            cipher.encryptBlock(plain.data(), enc.data());
            EXPECT_NE(enc, plain);
            cipher.decryptBlock(enc.data(), dec.data());
            EXPECT_EQ(dec, plain);
        }
    }
    EXPECT_FALSE(km::Rijndael(key.data(), 160, 128).valid());
    EXPECT_FALSE(km::Rijndael(key.data(), 128, 64).valid());
}
