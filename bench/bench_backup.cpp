// Backups of a store of about 100 MB: the whole backup (compact, compress,
// write) against zlib's own compress of the same bytes in the same run, the
// expanding against zlib's uncompress, and the peak memory of a backup.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <zlib.h>

#include <fstream>
#include <string>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "backup/ZLib.h"
#include "platform/Engine.h"
#include "platform/EngineMaintenance.h"
#include "platform/Random.h"

namespace {

struct Scratch {
    QTemporaryDir dir;
    QString store;
    QByteArray bytes; // the compacted store as the backup reads it
    QByteArray packed;

    Scratch() {
        store = dir.filePath(QStringLiteral("PersonalData.kmd"));
        km::StoreDb::CreateDatabase(store);
        {
            auto db = km::StoreDb::OpenDatabase(store);
            sqlite3 *h = db->Handle();
            sqlite3_exec(h, "BEGIN", nullptr, nullptr, nullptr);
            sqlite3_stmt *st = nullptr;
            sqlite3_prepare_v2(h,
                               "INSERT INTO tt (fEtx, fSec, fSub, fR1, fR2, fT1, fT2, fT3, AE) "
                               "VALUES (?, 14, 0, ?, ?, ?, ?, ?, 1)",
                               -1, &st, nullptr);
            // Cipher text reads as random bytes: records of 1 to 4 KB, short
            // texts of 8 to 24 bytes, as a store of many memos holds them.
            QByteArray blob(4096, '\0'), t(24, '\0');
            qint64 total = 0;
            for (int i = 0; total < 100LL * 1024 * 1024; ++i) {
                const int n = 1024 + (i * 977) % 3072;
                for (int k = 0; k < n; ++k)
                    blob[k] = static_cast<char>(km::RndInt(256));
                for (int k = 0; k < 24; ++k)
                    t[k] = static_cast<char>(km::RndInt(256));
                sqlite3_bind_blob(st, 1, blob.constData(), n, SQLITE_TRANSIENT);
                sqlite3_bind_int(st, 2, km::RndInt(1 << 30));
                sqlite3_bind_int(st, 3, km::RndInt(1 << 30));
                sqlite3_bind_blob(st, 4, t.constData(), 16, SQLITE_TRANSIENT);
                sqlite3_bind_blob(st, 5, t.constData(), 8, SQLITE_TRANSIENT);
                sqlite3_bind_blob(st, 6, t.constData(), 24, SQLITE_TRANSIENT);
                sqlite3_step(st);
                sqlite3_reset(st);
                total += n + 48;
            }
            sqlite3_finalize(st);
            sqlite3_exec(h, "COMMIT", nullptr, nullptr, nullptr);
        }
        km::CompactInPlace(store);
        QFile f(store);
        f.open(QIODevice::ReadOnly);
        bytes = f.readAll();
    }
};

Scratch &scratch() {
    static Scratch s;
    return s;
}

// The peak resident set since the last reset, in MB.
void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}
double peakMb() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024.0;
    return 0;
}

void BM_ZlibCompress(benchmark::State &state) {
    Scratch &s = scratch();
    for (auto _ : state) {
        uLongf room = compressBound(static_cast<uLong>(s.bytes.size()));
        QByteArray out(static_cast<qsizetype>(room), Qt::Uninitialized);
        compress(reinterpret_cast<Bytef *>(out.data()), &room, reinterpret_cast<const Bytef *>(s.bytes.constData()),
                 static_cast<uLong>(s.bytes.size()));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * s.bytes.size());
    state.counters["storeMB"] = double(s.bytes.size()) / (1024 * 1024);
}
BENCHMARK(BM_ZlibCompress)->Unit(benchmark::kMillisecond)->Iterations(3);

// Compact in place, compress, write through the synced temporary file.
void BM_Backup(benchmark::State &state) {
    Scratch &s = scratch();
    const QString kmz = s.dir.filePath(QStringLiteral("PersonalData.kmz"));
    double peak = 0;
    for (auto _ : state) {
        resetPeak();
        km::CompactInPlace(s.store);
        benchmark::DoNotOptimize(ZLib::CompressFile(s.store, kmz));
        peak = std::max(peak, peakMb());
    }
    state.SetBytesProcessed(state.iterations() * s.bytes.size());
    state.counters["peakMB"] = peak;
    state.counters["kmzMB"] = double(QFileInfo(kmz).size()) / (1024 * 1024);
}
BENCHMARK(BM_Backup)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ZlibUncompress(benchmark::State &state) {
    Scratch &s = scratch();
    if (s.packed.isEmpty()) {
        s.packed = s.bytes;
        ZLib::CompressBytes(s.packed);
    }
    for (auto _ : state) {
        QByteArray out(s.bytes.size(), Qt::Uninitialized);
        uLongf size = static_cast<uLongf>(out.size());
        uncompress(reinterpret_cast<Bytef *>(out.data()), &size, reinterpret_cast<const Bytef *>(s.packed.constData()),
                   static_cast<uLong>(s.packed.size()));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * s.bytes.size());
}
BENCHMARK(BM_ZlibUncompress)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_Expand(benchmark::State &state) {
    Scratch &s = scratch();
    if (s.packed.isEmpty()) {
        s.packed = s.bytes;
        ZLib::CompressBytes(s.packed);
    }
    for (auto _ : state) {
        QByteArray data = s.packed;
        ZLib::ExpandBytes(data, s.bytes.size());
        benchmark::DoNotOptimize(data.data());
    }
    state.SetBytesProcessed(state.iterations() * s.bytes.size());
}
BENCHMARK(BM_Expand)->Unit(benchmark::kMillisecond)->Iterations(3);

// The restore's whole reading: file, trailer, expansion, the store's tests in memory.
void BM_ReadBackup(benchmark::State &state) {
    Scratch &s = scratch();
    const QString kmz = s.dir.filePath(QStringLiteral("read.kmz"));
    ZLib::CompressFile(s.store, kmz);
    double peak = 0;
    for (auto _ : state) {
        resetPeak();
        ZLib::Backup b;
        benchmark::DoNotOptimize(ZLib::ReadBackup(kmz, b));
        peak = std::max(peak, peakMb());
    }
    state.SetBytesProcessed(state.iterations() * s.bytes.size());
    state.counters["peakMB"] = peak;
}
BENCHMARK(BM_ReadBackup)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
