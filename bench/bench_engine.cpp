// Engine figures: opening a SELECT of 100,000 rows (fPK and a 30-byte blob),
// the same list sorted by bucket with the dialect's integer division, a
// FindFirst by row id on the live cursor, and opening a store of that size
// (which walks every page once).
#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "platform/Engine.h"

namespace {

struct BigStore {
    QTemporaryDir dir;
    QString path;
    std::unique_ptr<km::StoreDb> db;

    BigStore() {
        path = dir.filePath(QStringLiteral("bench.kmd"));
        km::StoreDb::CreateDatabase(path);
        db = km::StoreDb::OpenDatabase(path);
        db->BeginTrans();
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        for (int i = 0; i < 100000; ++i) {
            rows->AddNew();
            rows->SetColumn(QStringLiteral("fEtx"), QByteArray(30, static_cast<char>('a' + i % 26)));
            rows->SetColumn(QStringLiteral("fSec"), 14);
            rows->SetColumn(QStringLiteral("fR2"), (i * 7919) % 100000 * 40000 - 2000000000);
            rows->Update();
        }
        rows.reset();
        db->CommitTrans();
    }
};

BigStore &store() {
    static BigStore s;
    return s;
}

void BM_ListHundredThousandRows(benchmark::State &state) {
    km::StoreDb &db = *store().db; // built once, outside the timing
    for (auto _ : state) {
        auto rows = db.OpenRowSet(QStringLiteral("SELECT fPK, fEtx FROM tt WHERE fSec=14"), km::Snapshot);
        benchmark::DoNotOptimize(rows->RecordCount());
    }
}
BENCHMARK(BM_ListHundredThousandRows)->Unit(benchmark::kMillisecond);

void BM_ListSortedByBucket(benchmark::State &state) {
    km::StoreDb &db = *store().db;
    for (auto _ : state) {
        auto rows = db.OpenRowSet(QStringLiteral(
            "SELECT fPK, fT1, fEtx, fR1, fR2\\51130563 AS X, fG1 FROM tt WHERE fSec=14 ORDER BY "
            "fR2\\51130563, fR1 WITH OWNERACCESS OPTION;"));
        benchmark::DoNotOptimize(rows->RecordCount());
    }
}
BENCHMARK(BM_ListSortedByBucket)->Unit(benchmark::kMillisecond);

void BM_FindFirstByRowId(benchmark::State &state) {
    auto rows = store().db->OpenRowSet(QStringLiteral("tt"));
    qint64 id = 1;
    for (auto _ : state) {
        rows->FindFirst(QStringLiteral("fPK=%1").arg(id));
        id = id % 100000 + 7;
    }
}
BENCHMARK(BM_FindFirstByRowId)->Unit(benchmark::kMicrosecond);

void BM_OpenStore(benchmark::State &state) {
    BigStore &s = store();
    s.db.reset();
    for (auto _ : state)
        benchmark::DoNotOptimize(km::StoreDb::OpenDatabase(s.path));
    s.db = km::StoreDb::OpenDatabase(s.path);
}
BENCHMARK(BM_OpenStore)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
