// Known answers for every primitive of the crypto library.
#include "platform/CryptoLib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace CryptoLib;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes hex(const std::string &h) {
    Bytes out(h.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = static_cast<std::uint8_t>(std::stoi(h.substr(2 * i, 2), nullptr, 16));
    return out;
}

Bytes ascii(const std::string &s) {
    return Bytes(s.begin(), s.end());
}

std::string toHex(const Bytes &b) {
    static const char d[] = "0123456789ABCDEF";
    std::string s;
    for (auto c : b) {
        s += d[c >> 4];
        s += d[c & 15];
    }
    return s;
}

} // namespace

// ---- Blowfish ----

struct BlowfishEcbCase {
    const char *key, *plain, *cipher;
};

TEST(CryptoLibBlowfish, EcbKnownAnswersBothDirections) {
    const BlowfishEcbCase cases[] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
        {"0131D9619DC1376E", "5CD54CA83DEF57DA", "B1B8CC0B250F09A0"},
        // variable key length: prefixes of one key
        {"F0E1D2C3B4", "FEDCBA9876543210", "B39E44481BDB1E6E"},
        {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210", "05044B62FA52D080"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.key);
        const Bytes key = hex(c.key), plain = hex(c.plain);
        Bytes out(8), back(8);
        EXPECT_EQ(BLF_Bytes(out.data(), plain.data(), 8, key.data(), key.size(), Encrypt), 0);
        EXPECT_EQ(toHex(out), c.cipher);
        EXPECT_EQ(BLF_BytesMode(back.data(), out.data(), 8, key.data(), key.size(), Decrypt, "ecb", nullptr),
                  0);
        EXPECT_EQ(back, plain);

        char text[17];
        ASSERT_EQ(BLF_Hex(text, c.plain, c.key, Encrypt), 0);
        EXPECT_STREQ(text, c.cipher);
    }
}

TEST(CryptoLibBlowfish, CbcKnownAnswerAndInPlace) {
    const Bytes key = hex("0123456789ABCDEFF0E1D2C3B4A59687");
    const Bytes iv = hex("FEDCBA9876543210");
    const Bytes plain = hex("37363534333231204E6F77206973207468652074696D6520666F722000000000");
    const std::string expected = "6b77b4d63006dee605b156e27403979358deb9e7154616d959f1652bd5ff92cc";

    Bytes out(32);
    ASSERT_EQ(BLF_BytesMode(out.data(), plain.data(), 32, key.data(), 16, Encrypt, "CBC", iv.data()), 0);
    EXPECT_EQ(out, hex(expected));

    Bytes buf = out; // decrypt in place; the vector must not be consumed
    const Bytes ivBefore = iv;
    ASSERT_EQ(BLF_BytesMode(buf.data(), buf.data(), 32, key.data(), 16, Decrypt, "cbc", iv.data()), 0);
    EXPECT_EQ(buf, plain);
    EXPECT_EQ(iv, ivBefore);
}

TEST(CryptoLibBlowfish, ScheduleMatchesBytesMode) {
    const Bytes key = hex("0123456789ABCDEFF0E1D2C3B4A59687");
    const Bytes iv = hex("FEDCBA9876543210");
    Bytes plain(64);
    for (std::size_t i = 0; i < plain.size(); ++i)
        plain[i] = static_cast<std::uint8_t>(i * 37 + 5);

    Bytes viaLib(64), viaSchedule(64), back(64);
    BLF_BytesMode(viaLib.data(), plain.data(), 64, key.data(), 16, Encrypt, "CBC", iv.data());
    BlowfishSchedule schedule(key.data(), key.size());
    schedule.cbc(viaSchedule.data(), plain.data(), 64, iv.data(), Encrypt);
    EXPECT_EQ(viaSchedule, viaLib);
    schedule.cbc(back.data(), viaSchedule.data(), 64, iv.data(), Decrypt);
    EXPECT_EQ(back, plain);
}

// ---- AES ----

TEST(CryptoLibAes, CbcKnownAnswers) {
    const Bytes iv = hex("000102030405060708090a0b0c0d0e0f");
    const Bytes plain = hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                            "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
    struct Case {
        int bits;
        const char *key, *cipher;
    } cases[] = {
        {128, "2b7e151628aed2a6abf7158809cf4f3c",
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
         "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
        {256, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
         "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
         "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bits);
        const Bytes key = hex(c.key);
        Bytes out(plain.size());
        ASSERT_EQ(AES_BytesMode(out.data(), plain.data(), out.size(), key.data(), c.bits, 128, Encrypt, "CBC",
                                iv.data()),
                  0);
        EXPECT_EQ(out, hex(c.cipher));
        ASSERT_EQ(AES_BytesMode(out.data(), out.data(), out.size(), key.data(), c.bits, 128, Decrypt, "CBC",
                                iv.data()),
                  0);
        EXPECT_EQ(out, plain);
    }
}

// ---- Hashes and key derivation ----

TEST(CryptoLibHash, ShaKnownAnswersAndSameBuffer) {
    const std::string longer = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    struct Case {
        std::string input;
        const char *sha1, *sha256;
    } cases[] = {
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d",
         "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709",
         "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {longer, "84983e441c3bd26ebaae4aa1f95129e5e54670f1",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.input);
        const Bytes in = ascii(c.input);
        Bytes d1(20), d2(32);
        SHA1_BytesHash(d1.data(), in.data(), in.size());
        SHA2_BytesHash(d2.data(), in.data(), in.size());
        EXPECT_EQ(d1, hex(c.sha1));
        EXPECT_EQ(d2, hex(c.sha256));
    }
    // Output over its own input: the buffer starts with the input.
    Bytes buf(32, 0);
    std::memcpy(buf.data(), "abc", 3);
    SHA2_BytesHash(buf.data(), buf.data(), 3);
    EXPECT_EQ(buf, hex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    std::memcpy(buf.data(), "abc", 3);
    SHA1_BytesHash(buf.data(), buf.data(), 3);
    EXPECT_EQ(Bytes(buf.begin(), buf.begin() + 20), hex("a9993e364706816aba3e25717850c26c9cd0d89d"));
}

TEST(CryptoLibHash, Pbkdf2HmacSha1KnownAnswers) {
    struct Case {
        std::string password, salt;
        int iterations;
        const char *derived;
    } cases[] = {
        {"password", "salt", 1, "0c60c80f961f0e71f3a9b524af6012062fe037a6"},
        {"password", "salt", 2, "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957"},
        {"password", "salt", 4096, "4b007901b765489abead49d926f721d065a429c1"},
        {"passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096,
         "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"},
        {std::string("pass\0word", 9), std::string("sa\0lt", 5), 4096, "56fa6aa75548099dcc37d7f03425e0c3"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.iterations);
        const Bytes p = ascii(c.password), s = ascii(c.salt);
        Bytes out(std::strlen(c.derived) / 2);
        ASSERT_EQ(PBE_Kdf2(out.data(), out.size(), p.data(), p.size(), s.data(), s.size(), c.iterations, 0),
                  0);
        EXPECT_EQ(out, hex(c.derived));
    }
}

// ---- Random ----

TEST(CryptoLibRandom, FillsBuffersAndKeepsRange) {
    Bytes a(32, 0), b(32, 0);
    EXPECT_EQ(RNG_KeyGenerate(a.data(), a.size(), "", 0, 0), 0);
    EXPECT_EQ(RNG_Nonce(b.data(), b.size(), "", 0), 0);
    EXPECT_NE(a, Bytes(32, 0));
    EXPECT_NE(a, b);

    bool seen[7] = {};
    for (int i = 0; i < 500; ++i) {
        const auto v = RNG_Long(-3, 3);
        ASSERT_GE(v, -3);
        ASSERT_LE(v, 3);
        seen[v + 3] = true;
    }
    for (bool s : seen)
        EXPECT_TRUE(s);
    EXPECT_EQ(RNG_Long(9, 9), 9);
}
