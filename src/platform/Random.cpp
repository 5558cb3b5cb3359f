#include "platform/Random.h"

#include <openssl/rand.h>

#include <random>
#include <stdexcept>

namespace km {

namespace {

std::mt19937_64 &generator() {
    static std::mt19937_64 gen = [] {
        std::uint64_t seed[4];
        if (RAND_bytes(reinterpret_cast<unsigned char *>(seed), sizeof seed) != 1)
            throw std::runtime_error("random generator unavailable");
        std::seed_seq seq{seed[0], seed[0] >> 32, seed[1], seed[1] >> 32,
                          seed[2], seed[2] >> 32, seed[3], seed[3] >> 32};
        return std::mt19937_64(seq);
    }();
    return gen;
}

} // namespace

double Rnd() {
    return static_cast<double>(generator()() >> 11) * 0x1.0p-53;
}

std::int64_t RndInt(std::int64_t n) {
    return static_cast<std::int64_t>(Rnd() * static_cast<double>(n));
}

} // namespace km
