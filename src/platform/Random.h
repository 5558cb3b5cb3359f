// Rnd: the process-wide plain generator of the store (key numbers of field
// encryption, blank counts, noise, scatter points). It is seeded once from
// OpenSSL's random bytes and never again: where the store's routines "seed
// from the clock" (Randomize) nothing happens, so two draws in the same clock
// tick never repeat by construction.
#pragma once

#include <cstdint>

namespace km {

// A double at least 0 and below 1.
double Rnd();
// Int(Rnd x n): a whole number from 0 to n - 1.
std::int64_t RndInt(std::int64_t n);
// Kept for the store's call sites that seed from the clock; deliberately inert.
inline void Randomize() {}

} // namespace km
