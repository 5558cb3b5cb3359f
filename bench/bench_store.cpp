// Store figures: listing a large section (select fPK, fT1 + DecryptField of
// every fT1) against the cipher floor (a plain loop of key schedule + CBC
// decryption over the same cipher texts), the key-schedule cache on a second
// listing, and the sort index placing titles one by one.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <chrono>
#include <cstdio>
#include <map>

#include <QDir>
#include <QTemporaryDir>

#include "platform/CryptoLib.h"
#include "platform/Engine.h"
#include "platform/Random.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Put.h"
#include "store/db.h"

namespace {

using bench::Clock;
using bench::msSince;
std::map<std::string, double> g_ms; // figure name -> milliseconds

struct ListingStore {
    QTemporaryDir dir;
    QString path;
    km::SecureBytes table;
    std::vector<QByteArray> cipherTexts;
    int rows = 0;

    explicit ListingStore(int n) : rows(n) {
        path = dir.filePath("bench.kmd");
        km::StoreDb::CreateDatabase(path);
        auto store = km::StoreDb::OpenDatabase(path);
        table = CRY::RandomBytes(270);
        CRY::LoadKeyTable(table);
        store->BeginTrans();
        auto rs = store->OpenRowSet("tt", km::Dynaset);
        for (int i = 0; i < n; ++i) {
            rs->AddNew();
            rs->SetColumn("fSec", 14);
            rs->SetColumn("AE", 1);
            rs->SetColumn("fT1", CRY::EncryptField(bench::RandomTitle(i)));
            rs->Update();
        }
        rs.reset();
        // Rows of other sections around them, as in a real store.
        auto other = store->OpenRowSet("tt", km::Dynaset);
        for (int i = 0; i < n / 4; ++i) {
            other->AddNew();
            other->SetColumn("fSec", 12);
            other->SetColumn("fT1", CRY::RandomNoise(2));
            other->Update();
        }
        other.reset();
        store->CommitTrans();
        auto list = store->OpenRowSet("SELECT fPK, fT1 FROM tt WHERE fSec=14", km::Snapshot);
        for (; !list->Eof(); list->MoveNext())
            cipherTexts.push_back(list->GetColumn("fT1").toByteArray());
        CRY::UnloadKeyTable();
    }

    // Reads fPK and fT1 of the section and decrypts every title. limit 0: all rows.
    qint64 list(km::StoreDb &store, int limit) {
        QString sql = "SELECT fPK, fT1 FROM tt WHERE fSec=14";
        if (limit) sql += QString(" And fPK<=%1").arg(limit);
        auto rs = store.OpenRowSet(sql + " WITH OWNERACCESS OPTION;", km::Snapshot);
        qint64 chars = 0;
        for (; !rs->Eof(); rs->MoveNext())
            chars += CRY::DecryptField(rs->GetColumn("fT1").toByteArray()).size();
        return chars;
    }
};

ListingStore &listingStore() {
    static ListingStore s(100000);
    return s;
}

// The floor: what decrypting these fields costs with a fresh key schedule each.
void BM_CipherFloor(benchmark::State &state) {
    auto &s = listingStore();
    CRY::LoadKeyTable(s.table);
    for (auto _ : state) {
        const double ms = bench::CipherFloorMs(s.cipherTexts);
        g_ms["floor100k"] = ms;
        state.SetIterationTime(ms / 1000.0);
    }
    CRY::UnloadKeyTable();
}
BENCHMARK(BM_CipherFloor)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_List100kCold(benchmark::State &state) {
    auto &s = listingStore();
    auto store = km::StoreDb::OpenDatabase(s.path);
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table); // an empty schedule cache
        const auto t0 = Clock::now();
        benchmark::DoNotOptimize(s.list(*store, 0));
        const double ms = msSince(t0);
        g_ms["list100k"] = ms;
        state.SetIterationTime(ms / 1000.0);
    }
    CRY::UnloadKeyTable();
}
BENCHMARK(BM_List100kCold)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_List10kColdThenWarm(benchmark::State &state) {
    auto &s = listingStore();
    auto store = km::StoreDb::OpenDatabase(s.path);
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table);
        auto t0 = Clock::now();
        benchmark::DoNotOptimize(s.list(*store, 10000));
        g_ms["list10kCold"] = msSince(t0);
        t0 = Clock::now();
        benchmark::DoNotOptimize(s.list(*store, 10000));
        const double warm = msSince(t0);
        g_ms["list10kWarm"] = warm;
        state.SetIterationTime(warm / 1000.0);
    }
    CRY::UnloadKeyTable();
}
BENCHMARK(BM_List10kColdThenWarm)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_PlaceInOrder5000(benchmark::State &state) {
    for (auto _ : state) {
        QTemporaryDir dir;
        const QString path = dir.filePath("order.kmd");
        km::StoreDb::CreateDatabase(path);
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
        CRY::LoadKeyTable(CRY::RandomBytes(270));
        const auto t0 = Clock::now();
        for (int i = 0; i < 5000; ++i) {
            const QString title = bench::RandomTitle(i);
            db::StandardWrite w(db::Store(), 0, 14);
            w.setRecord(Record_Put::PackRecord({{4, Record_Put::tText}}, {{}, {}, {}, {}, title}));
            w.setText("fT1", title);
            w.placeInOrder(title, QString());
            w.Commit({false, true, true, false, false, true, true});
        }
        const double ms = msSince(t0);
        g_ms["place5000"] = ms;
        state.SetIterationTime(ms / 1000.0);
        db::state().StoreDb.reset();
        CRY::UnloadKeyTable();
    }
}
BENCHMARK(BM_PlaceInOrder5000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("\nFigures\n");
    auto have = [](const char *k) { return g_ms.count(k) != 0; };
    if (have("floor100k") && have("list100k"))
        std::printf("  listing 100,000 rows cold: %.0f ms; cipher floor %.0f ms; ratio %.2f (limit 1.20)\n",
                    g_ms["list100k"], g_ms["floor100k"], g_ms["list100k"] / g_ms["floor100k"]);
    if (have("list10kCold") && have("list10kWarm"))
        std::printf("  listing 10,000 rows: first %.1f ms, second %.1f ms; ratio %.3f (limit 0.25)\n",
                    g_ms["list10kCold"], g_ms["list10kWarm"], g_ms["list10kWarm"] / g_ms["list10kCold"]);
    if (have("place5000"))
        std::printf("  placing 5,000 titles one by one: %.0f ms (limit 5000 ms)\n", g_ms["place5000"]);
    return 0;
}
