// The field cipher's cost per field, with and without prepared key schedules,
// against the floor of a Blowfish key schedule plus one short CBC decryption.
#include <benchmark/benchmark.h>

#include <array>
#include <vector>

#include <QByteArray>

#include "platform/CryptoLib.h"
#include "store/CRY.h"
#include "store/CRYDetail.h"

namespace {

constexpr int FieldsPerSet = 1000; // fewer than the cache holds, as a list of rows

QByteArray valueOf(int bytes) {
    return QByteArray(bytes, 'v');
}

std::vector<QByteArray> fieldSet(int bytes) {
    std::vector<QByteArray> fields;
    fields.reserve(FieldsPerSet);
    for (int i = 0; i < FieldsPerSet; ++i)
        fields.push_back(CRY::EncryptField(valueOf(bytes)));
    return fields;
}

struct KeyTableScope {
    KeyTableScope() { CRY::LoadKeyTable(CRY::RandomBytes(270)); }
    ~KeyTableScope() { CRY::UnloadKeyTable(); }
};

// Every encryption meets a cache emptied just before: one key schedule each.
void BM_EncryptField_Cold(benchmark::State &st) {
    KeyTableScope table;
    const QByteArray value = valueOf(static_cast<int>(st.range(0)));
    for (auto _ : st) {
        st.PauseTiming();
        CRY::scheduleCache().clear();
        st.ResumeTiming();
        benchmark::DoNotOptimize(CRY::EncryptField(value));
    }
    st.SetItemsProcessed(st.iterations());
}

// Random key numbers over all 65536 against a cache that has filled up: the
// hit rate settles near capacity / 65536.
void BM_EncryptField_Warm(benchmark::State &st) {
    KeyTableScope table;
    const QByteArray value = valueOf(static_cast<int>(st.range(0)));
    for (int i = 0; i < 3 * CRY::KeyCount; ++i)
        CRY::EncryptField(QByteArray("x"));
    const long long missesBefore = CRY::scheduleCache().misses();
    for (auto _ : st)
        benchmark::DoNotOptimize(CRY::EncryptField(value));
    st.SetItemsProcessed(st.iterations());
    st.counters["miss_rate"] = static_cast<double>(CRY::scheduleCache().misses() - missesBefore) /
                               static_cast<double>(st.iterations());
}

void BM_DecryptField_Cold(benchmark::State &st) {
    KeyTableScope table;
    const auto fields = fieldSet(static_cast<int>(st.range(0)));
    std::size_t i = 0;
    for (auto _ : st) {
        st.PauseTiming();
        CRY::scheduleCache().clear();
        st.ResumeTiming();
        benchmark::DoNotOptimize(CRY::DecryptField(fields[i++ % fields.size()]));
    }
    st.SetItemsProcessed(st.iterations());
}

// A list shown again: every field's schedule is cached.
void BM_DecryptField_Warm(benchmark::State &st) {
    KeyTableScope table;
    const auto fields = fieldSet(static_cast<int>(st.range(0)));
    for (const auto &f : fields)
        CRY::DecryptField(f);
    std::size_t i = 0;
    for (auto _ : st)
        benchmark::DoNotOptimize(CRY::DecryptField(fields[i++ % fields.size()]));
    st.SetItemsProcessed(st.iterations());
}

// The inner decryption alone, as a packed record is read.
void BM_DecryptToPlainBytes_Warm(benchmark::State &st) {
    KeyTableScope table;
    const auto fields = fieldSet(static_cast<int>(st.range(0)));
    for (const auto &f : fields)
        CRY::DecryptToPlainBytes(f);
    std::size_t i = 0;
    for (auto _ : st)
        benchmark::DoNotOptimize(CRY::DecryptToPlainBytes(fields[i++ % fields.size()]));
    st.SetItemsProcessed(st.iterations());
}

// Cipher floor: key schedule plus CBC decryption of one 24-byte cipher text,
// N times, with nothing of the field cipher around it.
void BM_CipherFloor_ScheduleAndCbc(benchmark::State &st) {
    const int n = static_cast<int>(st.range(0));
    std::vector<std::array<std::uint8_t, 16>> keys(static_cast<std::size_t>(n));
    std::vector<std::array<std::uint8_t, 32>> texts(static_cast<std::size_t>(n)); // 8 vector + 24 cipher
    for (int i = 0; i < n; ++i) {
        CryptoLib::RNG_Nonce(keys[static_cast<std::size_t>(i)].data(), 16, "", 0);
        CryptoLib::RNG_Nonce(texts[static_cast<std::size_t>(i)].data(), 32, "", 0);
    }
    CryptoLib::BlowfishSchedule schedule;
    std::uint8_t plain[24];
    for (auto _ : st) {
        for (int i = 0; i < n; ++i) {
            const auto &t = texts[static_cast<std::size_t>(i)];
            schedule.setKey(keys[static_cast<std::size_t>(i)].data(), 16);
            schedule.cbc(plain, t.data() + 8, 24, t.data(), CryptoLib::Decrypt);
            benchmark::DoNotOptimize(plain);
        }
    }
    st.SetItemsProcessed(st.iterations() * n);
}

// The same decryptions under one prepared schedule: what a cache hit leaves.
void BM_CipherFloor_CbcOnly(benchmark::State &st) {
    const int n = static_cast<int>(st.range(0));
    std::vector<std::array<std::uint8_t, 32>> texts(static_cast<std::size_t>(n));
    for (auto &t : texts)
        CryptoLib::RNG_Nonce(t.data(), 32, "", 0);
    std::uint8_t key[16];
    CryptoLib::RNG_Nonce(key, 16, "", 0);
    CryptoLib::BlowfishSchedule schedule(key, 16);
    std::uint8_t plain[24];
    for (auto _ : st) {
        for (const auto &t : texts) {
            schedule.cbc(plain, t.data() + 8, 24, t.data(), CryptoLib::Decrypt);
            benchmark::DoNotOptimize(plain);
        }
    }
    st.SetItemsProcessed(st.iterations() * n);
}

} // namespace

BENCHMARK(BM_EncryptField_Cold)->Arg(32)->Arg(512);
BENCHMARK(BM_EncryptField_Warm)->Arg(32)->Arg(512);
BENCHMARK(BM_DecryptField_Cold)->Arg(32)->Arg(512);
BENCHMARK(BM_DecryptField_Warm)->Arg(32)->Arg(512);
BENCHMARK(BM_DecryptToPlainBytes_Warm)->Arg(32)->Arg(512);
BENCHMARK(BM_CipherFloor_ScheduleAndCbc)->Arg(1000);
BENCHMARK(BM_CipherFloor_CbcOnly)->Arg(1000);

BENCHMARK_MAIN();
