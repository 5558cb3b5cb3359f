// Memo figures: a store of 20,000 memos; filling the memo list (all
// categories) with private records shown (every fT1 decrypted) and hidden
// (every fEtx too), cold and again warm, against the cipher floor of the same
// decryptions; adding 2,000 memos one by one through the save path.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <chrono>
#include <cstdio>
#include <map>

#include <QTemporaryDir>

#include "platform/CryptoLib.h"
#include "platform/Random.h"
#include "records/frmNotepad.h"
#include "shell/SessionGuards.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Startvariables.h"
#include "store/db.h"

namespace {

using bench::Clock;
using bench::msSince;
std::map<std::string, double> g_ms;

struct MemoStore {
    QTemporaryDir dir;
    QString path;
    km::SecureBytes table;
    std::vector<QByteArray> titles, payloads;

    MemoStore() {
        path = dir.filePath("memos.kmd");
        km::StoreDb::CreateDatabase(path);
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
        table = CRY::RandomBytes(270);
        CRY::LoadKeyTable(table);
        // 20,000 memos written in one transaction, each with its sort index.
        km::Transaction t(db::Store());
        km::frmNotepad w;
        for (int i = 0; i < 20000; ++i) {
            w.newRecord = true;
            w.txtSubject = bench::RandomTitle(i, 4);
            w.txtInput = QStringLiteral("A short body of a memo, %1").arg(i);
            w.ctlPrivate = i % 10 == 0;
            w.SaveRecord();
        }
        t.Commit();
        auto rows = db::Store().OpenRowSet("SELECT fT1, fEtx FROM tt WHERE fSec=14", km::Snapshot);
        for (; !rows->Eof(); rows->MoveNext()) {
            titles.push_back(rows->GetColumn("fT1").toByteArray());
            payloads.push_back(rows->GetColumn("fEtx").toByteArray());
        }
    }
};

MemoStore &memoStore() {
    static MemoStore s;
    return s;
}

void listTwice(const char *name, bool showPrivate) {
    auto &s = memoStore();
    CRY::LoadKeyTable(s.table); // an empty schedule cache
    SessionGuards::state().ShowPrivate = showPrivate;
    km::frmNotepad w;
    CATEGORIES::FillCategorySelector(w.cboCategories, 14, true, true, false);
    CATEGORIES::SelectCategory(w.cboCategories, CATEGORIES::CategoryAll);
    auto t0 = Clock::now();
    w.listSelect_Initialize();
    g_ms[std::string(name) + "Cold"] = msSince(t0);
    t0 = Clock::now();
    w.listSelect_Initialize();
    g_ms[std::string(name) + "Warm"] = msSince(t0);
}

void BM_MemoList(benchmark::State &state) {
    auto &s = memoStore();
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table);
        g_ms["floorShown"] = bench::CipherFloorMs(s.titles);
        std::vector<QByteArray> both = s.titles;
        both.insert(both.end(), s.payloads.begin(), s.payloads.end());
        g_ms["floorHidden"] = bench::CipherFloorMs(both);
        listTwice("shown", true);
        listTwice("hidden", false);
        state.SetIterationTime(g_ms["shownCold"] / 1000.0);
    }
}
BENCHMARK(BM_MemoList)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_Add2000Memos(benchmark::State &state) {
    auto &s = memoStore();
    CRY::LoadKeyTable(s.table);
    for (auto _ : state) {
        km::frmNotepad w;
        const auto t0 = Clock::now();
        for (int i = 0; i < 2000; ++i) {
            w.newRecord = true;
            w.txtSubject = bench::RandomTitle(100000 + i, 4);
            w.txtInput = QStringLiteral("Added one by one");
            w.ctlPrivate = false;
            w.SaveRecord();
        }
        g_ms["add2000"] = msSince(t0);
        state.SetIterationTime(g_ms["add2000"] / 1000.0);
    }
}
BENCHMARK(BM_Add2000Memos)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("\nFigures (20,000 memos)\n");
    for (const char *k : {"shown", "hidden"}) {
        const std::string n(k);
        if (!g_ms.count(n + "Cold")) continue;
        const double floor = g_ms[n == "shown" ? "floorShown" : "floorHidden"];
        std::printf("  list, private %s: cold %.0f ms, floor %.0f ms, ratio %.2f (limit 1.30); warm %.0f ms, "
                    "ratio %.2f (limit 0.25)\n",
                    n.c_str(), g_ms[n + "Cold"], floor, g_ms[n + "Cold"] / floor, g_ms[n + "Warm"],
                    g_ms[n + "Warm"] / g_ms[n + "Cold"]);
    }
    if (g_ms.count("add2000")) std::printf("  adding 2,000 memos one by one: %.0f ms\n", g_ms["add2000"]);
    return 0;
}
