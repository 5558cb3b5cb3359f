// What the store benchmarks share: wall-clock timing, made-up titles spread
// over the alphabet, and the cipher floor every listing is measured against.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include <QByteArray>
#include <QString>

#include "platform/CryptoLib.h"
#include "platform/Random.h"
#include "store/CRY.h"

namespace bench {

using Clock = std::chrono::steady_clock;

inline double msSince(Clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

// A title that starts with a random capital and reads like a word.
inline QString RandomTitle(int i, int syllableCount = 5) {
    static const char *syllables[] = {"ka", "lo", "mi", "ne", "su", "ra", "te", "bo", "vi", "da", "go", "hu"};
    QString s(QChar(static_cast<char16_t>('A' + km::RndInt(26))));
    for (int k = 0; k < syllableCount; ++k)
        s += QLatin1String(syllables[km::RndInt(12)]);
    return s + QString::number(i);
}

// Milliseconds to decrypt these field forms with a fresh key schedule each:
// the cost no listing can go below without keeping schedules.
inline double CipherFloorMs(const std::vector<QByteArray> &fields) {
    std::vector<std::uint8_t> out(64);
    const auto t0 = Clock::now();
    for (const QByteArray &c : fields) {
        const auto *b = reinterpret_cast<const std::uint8_t *>(c.constData());
        CRY::SelectFieldKey(b[0] * 256 + b[1]);
        CryptoLib::BlowfishSchedule ks(CRY::state().FieldKey.data(), 16);
        const std::size_t len = static_cast<std::size_t>(c.size()) - 10;
        if (out.size() < len) out.resize(len);
        ks.cbc(out.data(), b + 10, len, b + 2, CryptoLib::Decrypt);
        benchmark::DoNotOptimize(out.data());
    }
    return msSince(t0);
}

} // namespace bench
