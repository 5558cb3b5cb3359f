// Find and address-book figures: Find over 10,000 records spread over all
// nine sections with a text that matches nothing (so every payload is
// decrypted), cold and again warm; the address list of 10,000 addresses cold
// and warm; the tab-delimited export of those 10,000 addresses. Each against
// the cipher floor of the same decryptions.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include <QTemporaryDir>

#include "address/AddressRecord.h"
#include "address/AddressSections.h"
#include "address/frmAddress.h"
#include "calendar/CALENDAR.h"
#include "calendar/frmCalendar.h"
#include "calendar/frmDiary.h"
#include "platform/Random.h"
#include "records/RecordsSections.h"
#include "records/frmNotepad.h"
#include "records/frmTodo.h"
#include "shell/BasicShell.h"
#include "shell/SessionGuards.h"
#include "shell/frmFind.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Record_Put.h"
#include "store/db.h"

namespace {

using bench::Clock;
using bench::msSince;
std::map<std::string, double> g_ms;

// The payloads (or columns) of a section's rows, for the floor.
std::vector<QByteArray> columnOf(const QString &column, const QString &where) {
    std::vector<QByteArray> out;
    auto rows = db::Store().OpenRowSet("SELECT " + column + " FROM tt WHERE " + where, km::Snapshot);
    for (; !rows->Eof(); rows->MoveNext())
        out.push_back(rows->GetColumn(column).toByteArray());
    return out;
}

// A row of a section that has no writer of its own here (confidential data,
// the budgets): a packed record of short texts with its private flag.
void putRow(int section, int privateField, bool isPrivate, int i) {
    QList<Record_Put::Field> layout;
    QVariantList values;
    for (int f = 0; f < 8; ++f) {
        layout.append({f, f == privateField ? Record_Put::tBoolean : Record_Put::tText});
        values.append(f == privateField ? QVariant(isPrivate) : QVariant(bench::RandomTitle(i, 2 + f % 3)));
    }
    db::StandardWrite w(db::Store(), 0, section);
    w.setRecord(Record_Put::PackRecord(layout, values));
    w.setText("fT1", bench::RandomTitle(i, 3));
    w.Commit();
}

void addAddress(km::frmAddress &a, int i) {
    a.record = km::Address::EmptyRecord();
    a.record[km::Address::FirstName] = bench::RandomTitle(i, 2);
    a.record[km::Address::LastName] = bench::RandomTitle(i, 3);
    a.record[km::Address::CompanyName] = i % 3 == 0 ? QStringLiteral("Company %1").arg(i) : QString();
    a.record[km::Address::Com1] = QStringLiteral("+1 555 %1").arg(100000 + i);
    a.record[km::Address::Notes] = QStringLiteral("Met at the fair of year %1").arg(1990 + i % 30);
    a.record[km::Address::Private] = i % 10 == 0 ? "True" : "False";
    a.fileAs = a.record[km::Address::LastName] + ", " + a.record[km::Address::FirstName];
    a.newRecord = true;
    a.SaveRecord();
}

struct Stores {
    QTemporaryDir dir;
    km::SecureBytes table;
    QString mixed, addresses;

    void open(const QString &path) {
        db::state().StoreDb.reset();
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
    }
    void create(const QString &path) {
        km::StoreDb::CreateDatabase(path);
        open(path);
    }

    Stores() {
        table = CRY::RandomBytes(270);
        CRY::LoadKeyTable(table);
        km::BasicShell shell;

        // 10,000 records over the nine sections.
        mixed = dir.filePath("mixed.kmd");
        create(mixed);
        {
            km::Transaction t(db::Store());
            km::frmAddress book(shell.context());
            for (int i = 0; i < 1500; ++i)
                addAddress(book, i);
            const QDate first(2020, 1, 6);
            for (int i = 0; i < 1500; ++i) {
                CALENDAR::AppointmentRecord r;
                r.UserNumber = 0;
                r.ctlAppoStart = CALENDAR::MomentOf(first.addDays(i % 700), 8 * 60 + (i % 20) * 30);
                r.ctlAppoEnd = r.ctlAppoStart + 30;
                r.ctlAlarmTime = r.ctlAppoStart;
                r.ctlSubject = bench::RandomTitle(i, 3);
                r.ctlLocation = i % 2 ? QStringLiteral("Room %1").arg(i % 40) : QString();
                r.ctlPrivate = i % 10 == 0;
                CALENDAR::WriteAppointment(0, r);
            }
            km::frmDiary diary(shell.context());
            int days = 0;
            for (QDate d = first; days < 1000; d = d.addDays(7)) {
                diary.LoadDiaryWeek(d);
                for (int k = 0; k < 7 && days < 1000; ++k, ++days)
                    diary.txtInput_Change(k, QStringLiteral("What happened on day %1.").arg(days));
                diary.saveChanged();
            }
            km::frmNotepad memos(shell.context());
            for (int i = 0; i < 1500; ++i) {
                memos.newRecord = true;
                memos.txtSubject = bench::RandomTitle(i, 4);
                memos.txtInput = QStringLiteral("A short body of a memo, %1").arg(i);
                memos.ctlPrivate = i % 10 == 0;
                memos.SaveRecord();
            }
            const qint64 today = CALENDAR::DayNumber(QDate::currentDate());
            for (int i = 0; i < 1500; ++i) {
                km::TODO::Task task;
                task.Description = bench::RandomTitle(i, 4);
                task.hasDue = i % 4 != 0;
                task.due = task.hasDue ? today - 200 + km::RndInt(400) : 0;
                task.Private = i % 10 == 0;
                km::TODO::SaveTask(db::Store(), task, 0);
            }
            for (int i = 0; i < 1000; ++i)
                putRow(16, 7, i % 10 == 0, i);
            for (int i = 0; i < 2000; ++i)
                putRow(17 + i % 3, 3, i % 10 == 0, i);
            t.Commit();
        }

        // 10,000 addresses alone.
        addresses = dir.filePath("addresses.kmd");
        create(addresses);
        {
            km::Transaction t(db::Store());
            km::frmAddress book(shell.context());
            for (int i = 0; i < 10000; ++i)
                addAddress(book, i);
            t.Commit();
        }
    }
};

Stores &stores() {
    static Stores s;
    return s;
}

// The machine is shared: a warm figure is the best of three.
template <typename F> double bestOfThree(F run) {
    double best = 1e300;
    for (int k = 0; k < 3; ++k) {
        const auto t0 = Clock::now();
        run();
        best = std::min(best, msSince(t0));
    }
    return best;
}

void BM_FindNothing(benchmark::State &state) {
    auto &s = stores();
    s.open(s.mixed);
    address::RegisterSections();
    CALENDAR::RegisterSections();
    records::RegisterSections();
    const std::vector<QByteArray> payloads = columnOf("fEtx", "fSec>=11 And fSec<=19");
    km::FindRequest request;
    request.text = QStringLiteral("no such text anywhere");
    request.boxes.fill(true);
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table);
        g_ms["find-floor"] = bench::CipherFloorMs(payloads);
        CRY::LoadKeyTable(s.table); // an empty schedule cache
        int hits = 0;
        auto t0 = Clock::now();
        hits += static_cast<int>(km::SearchSections(db::Store(), request).size());
        g_ms["find-cold"] = msSince(t0);
        g_ms["find-warm"] = bestOfThree([&] { hits += static_cast<int>(km::SearchSections(db::Store(), request).size()); });
        g_ms["find-rows"] = static_cast<double>(payloads.size());
        g_ms["find-hits"] = hits;
        state.SetIterationTime(g_ms["find-cold"] / 1000.0);
    }
}
BENCHMARK(BM_FindNothing)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_AddressList(benchmark::State &state) {
    auto &s = stores();
    s.open(s.addresses);
    std::vector<QByteArray> fields = columnOf("fT1", "fSec=11");
    const std::vector<QByteArray> contact = columnOf("fT2", "fSec=11");
    fields.insert(fields.end(), contact.begin(), contact.end());
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table);
        g_ms["list-floor"] = bench::CipherFloorMs(fields);
        CRY::LoadKeyTable(s.table);
        SessionGuards::state().ShowPrivate = false;
        km::BasicShell shell;
        km::frmAddress w(shell.context());
        CATEGORIES::FillCategorySelector(w.cboCategories, km::Address::Section, true, true, false);
        CATEGORIES::SelectCategory(w.cboCategories, CATEGORIES::CategoryAll);
        auto t0 = Clock::now();
        w.listSelect_Initialize();
        g_ms["list-cold"] = msSince(t0);
        g_ms["list-warm"] = bestOfThree([&] { w.listSelect_Initialize(); });
        state.SetIterationTime(g_ms["list-cold"] / 1000.0);
    }
}
BENCHMARK(BM_AddressList)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

class CountingSink : public km::Address::ExportSink {
public:
    void write(const QByteArray &bytes) override { size += bytes.size(); }
    qint64 size = 0;
};

void BM_AddressExport(benchmark::State &state) {
    auto &s = stores();
    s.open(s.addresses);
    const std::vector<QByteArray> payloads = columnOf("fEtx", "fSec=11");
    for (auto _ : state) {
        CRY::LoadKeyTable(s.table);
        g_ms["export-floor"] = bench::CipherFloorMs(payloads);
        CRY::LoadKeyTable(s.table);
        CountingSink sink;
        auto t0 = Clock::now();
        km::Address::WriteTabDelimited(db::Store(), sink);
        g_ms["export-cold"] = msSince(t0);
        g_ms["export-warm"] = bestOfThree([&] {
            CountingSink again;
            km::Address::WriteTabDelimited(db::Store(), again);
        });
        g_ms["export-kb"] = static_cast<double>(sink.size) / 1024.0;
        state.SetIterationTime(g_ms["export-cold"] / 1000.0);
    }
}
BENCHMARK(BM_AddressExport)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void report(const char *what, const std::string &key) {
    if (!g_ms.count(key + "-cold")) return;
    const double cold = g_ms[key + "-cold"], warm = g_ms[key + "-warm"], floor = g_ms[key + "-floor"];
    std::printf("  %s: cold %.0f ms, floor %.0f ms, ratio %.2f (limit 1.20); warm %.0f ms, ratio %.2f (limit 0.25)\n",
                what, cold, floor, cold / floor, warm, warm / cold);
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("\nFigures\n");
    if (g_ms.count("find-rows"))
        std::printf("  find over %.0f records of the nine sections, no hit (%.0f found)\n", g_ms["find-rows"],
                    g_ms["find-hits"]);
    report("find", "find");
    report("address list of 10,000", "list");
    report("export of 10,000 addresses", "export");
    if (g_ms.count("export-kb")) std::printf("  export size %.0f KiB\n", g_ms["export-kb"]);
    return 0;
}
