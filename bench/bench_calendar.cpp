// Calendar figures: a store of 20,000 single appointments over ten years and
// 500 series of every kind; collecting the occurrences of a month grid (42
// days) and of a year; writing 5,000 appointments onto 50 days through the
// calendar's writer, the renumbering of each day's order included.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <vector>

#include <QTemporaryDir>

#include "BenchSupport.h"
#include "calendar/CALENDAR.h"
#include "calendar/Recurrence.h"
#include "calendar/frmCalendar.h"
#include "shell/BasicShell.h"
#include "platform/Engine.h"
#include "platform/Random.h"
#include "store/CRY.h"
#include "store/db.h"

namespace {

using Clock = std::chrono::steady_clock;
std::map<std::string, double> g_ms;    // figure name -> milliseconds
std::map<std::string, double> g_count; // figure name -> a count

double msSince(Clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

const QDate kFirstDay(2020, 1, 1);
constexpr int kDays = 3653; // ten years

CALENDAR::AppointmentRecord appointment(const QDate &day, int minute, int length) {
    CALENDAR::AppointmentRecord r;
    r.UserNumber = 1;
    r.ctlAppoStart = CALENDAR::MomentOf(day, minute);
    r.ctlAppoEnd = r.ctlAppoStart + std::min(length, 1440 - minute);
    r.ctlAlarmTime = r.ctlAppoStart;
    r.ctlSubject = QStringLiteral("Appointment %1").arg(km::RndInt(100000));
    r.ctlLocation = QStringLiteral("Room %1").arg(km::RndInt(50));
    return r;
}

QByteArray randomRule(int kind, const QDate &first) {
    CALENDAR::RedoRule r;
    r.kind = kind;
    const int weekday = first.dayOfWeek() % 7 + 1;
    const int ordinal = static_cast<int>(km::RndInt(5)) + 1;
    switch (kind) {
    case CALENDAR::RedoWeekly:
        r.b1 = (static_cast<int>(km::RndInt(127)) + 1) << 1;
        r.b2 = static_cast<int>(km::RndInt(3)) + 1;
        break;
    case CALENDAR::RedoDaily:
        r.b2 = static_cast<int>(km::RndInt(10)) + 1;
        break;
    case CALENDAR::RedoWorkday:
        r.b1 = CALENDAR::WorkdayMask;
        break;
    case CALENDAR::RedoMonthly:
        r.b1 = first.day();
        r.b2 = static_cast<int>(km::RndInt(3)) + 1;
        break;
    case CALENDAR::RedoMonthlyNth:
        r.b1 = weekday + 8 * ordinal;
        r.b2 = static_cast<int>(km::RndInt(3)) + 1;
        break;
    case CALENDAR::RedoYearly:
        r.b1 = first.day();
        r.b2 = first.month();
        break;
    default:
        r.b1 = weekday + 8 * ordinal;
        r.b2 = static_cast<int>(km::RndInt(12)) + 1;
        break;
    }
    const bool ends = km::RndInt(2) == 0;
    r.endKind = ends ? CALENDAR::EndOnDate : CALENDAR::EndNever;
    const QDate last = ends ? first.addDays(30 + km::RndInt(1500)) : QDate(2050, 1, 1);
    r.first = static_cast<qint16>(CALENDAR::DayNumber(first) - CALENDAR::EpochDay);
    r.last = static_cast<qint16>(CALENDAR::DayNumber(last) - CALENDAR::EpochDay);
    return CALENDAR::RedoString(r);
}

struct CalendarStore {
    QTemporaryDir dir;
    QString path;
    km::SecureBytes table;

    CalendarStore() {
        path = dir.filePath("calendar.kmd");
        km::StoreDb::CreateDatabase(path);
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
        table = CRY::RandomBytes(270);
        CRY::LoadKeyTable(table);
        const auto t0 = Clock::now();
        // One transaction around the whole build: the writer's own becomes a savepoint.
        db::Store().BeginTrans();
        for (int i = 0; i < 20000; ++i) {
            const QDate day = kFirstDay.addDays(km::RndInt(kDays));
            CALENDAR::WriteAppointment(0, appointment(day, 360 + 5 * static_cast<int>(km::RndInt(192)),
                                                      30 + 15 * static_cast<int>(km::RndInt(8))));
        }
        for (int i = 0; i < 500; ++i) {
            const QDate first = kFirstDay.addDays(km::RndInt(kDays));
            CALENDAR::AppointmentRecord r =
                appointment(first, 420 + 30 * static_cast<int>(km::RndInt(24)), 60);
            r.ctlRedoString = randomRule(1 + i % 7, first);
            CALENDAR::WriteAppointment(0, r);
        }
        db::Store().CommitTrans();
        g_ms["build"] = msSince(t0);
    }
    ~CalendarStore() {
        db::state().StoreDb.reset();
        CRY::UnloadKeyTable();
    }
};

CalendarStore &calendarStore() {
    static CalendarStore s;
    return s;
}

// The best of several runs: the figure of a view that is repainted.
double bestCollect(const CALENDAR::DateRange &range, const char *figure) {
    calendarStore();
    std::vector<CALENDAR::Occurrence> occurrences;
    double best = 1e300;
    for (int run = 0; run < 20; ++run) {
        const auto t0 = Clock::now();
        occurrences = CALENDAR::CollectOccurrences(db::Store(), range.first, range.last);
        best = std::min(best, msSince(t0));
    }
    g_ms[figure] = best;
    g_count[figure] = static_cast<double>(occurrences.size());
    return best;
}

void collect(benchmark::State &state, const CALENDAR::DateRange &range, const char *figure) {
    for (auto _ : state)
        state.SetIterationTime(bestCollect(range, figure) / 1000.0);
}

void BM_CollectMonthGrid(benchmark::State &state) {
    collect(state, CALENDAR::ViewRange(QDate(2025, 6, 15), CALENDAR::ViewMonth), "month");
}
BENCHMARK(BM_CollectMonthGrid)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_CollectYear(benchmark::State &state) {
    collect(state, CALENDAR::ViewRange(QDate(2025, 6, 15), CALENDAR::ViewYear), "year");
}
BENCHMARK(BM_CollectYear)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// Each appointment written as the editor writes it: one transaction of its own.
void BM_Write5000On50Days(benchmark::State &state) {
    for (auto _ : state) {
        QTemporaryDir dir;
        const QString path = dir.filePath("days.kmd");
        km::StoreDb::CreateDatabase(path);
        auto kept = std::move(db::state().StoreDb);
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
        CRY::LoadKeyTable(CRY::RandomBytes(270));
        const auto t0 = Clock::now();
        for (int i = 0; i < 5000; ++i) {
            const QDate day = QDate(2025, 3, 1).addDays(km::RndInt(50));
            CALENDAR::WriteAppointment(0, appointment(day, 5 * static_cast<int>(km::RndInt(288)), 30));
        }
        const double ms = msSince(t0);
        g_ms["write5000"] = ms;
        state.SetIterationTime(ms / 1000.0);
        db::state().StoreDb = std::move(kept);
        if (db::state().StoreDb) CRY::LoadKeyTable(calendarStore().table);
    }
}
BENCHMARK(BM_Write5000On50Days)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// ---- Switching the window's view: collect, unpack, lay out ----

// The store of the view figures: 20,000 single appointments over five years
// and 500 series of every kind.
struct FiveYearStore {
    QTemporaryDir dir;
    km::SecureBytes table;
    std::unique_ptr<km::StoreDb> db;

    FiveYearStore() {
        const QString path = dir.filePath("five.kmd");
        km::StoreDb::CreateDatabase(path);
        auto kept = std::move(db::state().StoreDb);
        db::state().StoreDb = km::StoreDb::OpenDatabase(path);
        table = CRY::RandomBytes(270);
        CRY::LoadKeyTable(table);
        db::Store().BeginTrans();
        for (int i = 0; i < 20000; ++i) {
            const QDate day = kFirstDay.addDays(km::RndInt(1826));
            CALENDAR::WriteAppointment(0, appointment(day, 360 + 5 * static_cast<int>(km::RndInt(192)),
                                                      30 + 15 * static_cast<int>(km::RndInt(8))));
        }
        for (int i = 0; i < 500; ++i) {
            const QDate first = kFirstDay.addDays(km::RndInt(1826));
            CALENDAR::AppointmentRecord r = appointment(first, 420 + 30 * static_cast<int>(km::RndInt(24)), 60);
            r.ctlRedoString = randomRule(1 + i % 7, first);
            CALENDAR::WriteAppointment(0, r);
        }
        db::Store().CommitTrans();
        db = std::move(db::state().StoreDb);
        db::state().StoreDb = std::move(kept);
    }
};

FiveYearStore &fiveYearStore() {
    static FiveYearStore s;
    return s;
}

// The cipher texts a switch to the days first..last decrypts: fT1 and fT3 of
// the series the keys select, fT1 of the single rows of the days, and fEtx of
// every row with an occurrence in them.
std::vector<QByteArray> viewCipherTexts(const CALENDAR::DateRange &range) {
    std::vector<QByteArray> fields;
    km::StoreDb &store = db::Store();
    const qint32 h = CALENDAR::DateKey(range.last, CALENDAR::SeriesStartKey).high;
    const qint32 l = CALENDAR::DateKey(range.first, CALENDAR::SeriesEndKey).low;
    auto series = store.OpenRowSet(QStringLiteral("SELECT fT1, fT3 FROM tt WHERE (fSec=12) AND (fSub >= 148) AND "
                                                  "((fR4 < %1 AND fR2 > %2)) WITH OWNERACCESS OPTION;")
                                       .arg(h)
                                       .arg(l),
                                   km::Snapshot);
    for (; !series->Eof(); series->MoveNext()) {
        fields.push_back(series->GetColumn(QStringLiteral("fT1")).toByteArray());
        fields.push_back(series->GetColumn(QStringLiteral("fT3")).toByteArray());
    }
    const CALENDAR::DateKeyValue lo = CALENDAR::DateKey(range.first, CALENDAR::DayKey);
    const CALENDAR::DateKeyValue hi = CALENDAR::DateKey(range.last, CALENDAR::DayKey);
    auto singles = store.OpenRowSet(
        QStringLiteral("SELECT fT1 FROM tt WHERE (fSec=12) AND (fSub < 148) AND (fR3 Between %1 And %2) WITH "
                       "OWNERACCESS OPTION;")
            .arg(lo.low)
            .arg(hi.high),
        km::Snapshot);
    for (; !singles->Eof(); singles->MoveNext())
        fields.push_back(singles->GetColumn(QStringLiteral("fT1")).toByteArray());
    std::vector<qint64> ids;
    const qint32 first = CALENDAR::MomentOf(range.first);
    const qint32 last = CALENDAR::MomentOf(range.last) + CALENDAR::MinutesPerDay;
    for (const CALENDAR::Occurrence &o : CALENDAR::CollectOccurrences(store, range.first, range.last))
        if (o.start >= first && o.start < last && std::find(ids.begin(), ids.end(), o.id) == ids.end())
            ids.push_back(o.id);
    for (const qint64 id : ids) {
        auto row = store.OpenRowSet(QStringLiteral("SELECT fEtx FROM tt WHERE fPK=%1;").arg(id), km::Snapshot);
        fields.push_back(row->GetColumn(QStringLiteral("fEtx")).toByteArray());
    }
    return fields;
}

// Switching the view of one date to that of the next week (or day): cold
// right after the key table was loaded, warm when the same days come again.
void viewSwitch(benchmark::State &state, int mode, const char *figure) {
    FiveYearStore &five = fiveYearStore();
    auto kept = std::move(db::state().StoreDb);
    db::state().StoreDb = std::move(five.db);
    km::BasicShell shell;
    shell.setPrivateShown(true);
    for (auto _ : state) {
        double cold = 0, warm = 1e300, floor = 0, collectWarm = 1e300;
        int boxes = 0;
        const int runs = 12;
        for (int run = 0; run < runs; ++run) {
            const QDate date = QDate(2021, 3, 3).addDays(7 * run * 5);
            CALENDAR::frmCalendar view(shell.context());
            view.ViewMode = mode;
            view.state.calDate = date.addDays(-7);
            view.range = CALENDAR::ViewRange(view.state.calDate, mode);
            CRY::LoadKeyTable(five.table); // no key schedule kept
            const auto t0 = bench::Clock::now();
            view.SetDate(date);
            cold += bench::msSince(t0);
            boxes += static_cast<int>(view.boxes.size());
            for (int again = 0; again < 3; ++again) {
                view.SetDate(view.state.calDate.addDays(-7));
                const auto t1 = bench::Clock::now();
                view.SetDate(date);
                warm = std::min(warm, bench::msSince(t1));
            }
            for (int again = 0; again < 3; ++again) {
                const auto t2 = bench::Clock::now();
                benchmark::DoNotOptimize(CALENDAR::CollectOccurrences(db::Store(), view.range.first, view.range.last));
                collectWarm = std::min(collectWarm, bench::msSince(t2));
            }
            const std::vector<QByteArray> fields = viewCipherTexts(view.range);
            CRY::LoadKeyTable(five.table);
            floor += bench::CipherFloorMs(fields);
            g_count[std::string(figure) + "-fields"] += static_cast<double>(fields.size());
        }
        g_ms[std::string(figure) + "-cold"] = cold / runs;
        g_ms[std::string(figure) + "-warm"] = warm;
        g_ms[std::string(figure) + "-collect-warm"] = collectWarm;
        g_ms[std::string(figure) + "-floor"] = floor / runs;
        g_count[std::string(figure) + "-fields"] /= runs;
        g_count[std::string(figure) + "-boxes"] = static_cast<double>(boxes) / runs;
        state.SetIterationTime(cold / runs / 1000.0);
    }
    five.db = std::move(db::state().StoreDb);
    db::state().StoreDb = std::move(kept);
    if (db::state().StoreDb) CRY::LoadKeyTable(calendarStore().table);
}

void BM_SwitchWeekView(benchmark::State &state) {
    viewSwitch(state, CALENDAR::ViewWeek, "week");
}
BENCHMARK(BM_SwitchWeekView)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_SwitchDayView(benchmark::State &state) {
    viewSwitch(state, CALENDAR::ViewDay, "day");
}
BENCHMARK(BM_SwitchDayView)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("\nFigures\n");
    auto have = [](const char *k) { return g_ms.count(k) != 0; };
    if (have("build"))
        std::printf(
            "  building 20,000 appointments and 500 series through the writer, one transaction: %.0f ms\n",
            g_ms["build"]);
    if (have("month"))
        std::printf("  month grid (42 days): %.2f ms for %.0f occurrences (limit 50 ms)\n", g_ms["month"],
                    g_count["month"]);
    if (have("year")) std::printf("  year: %.2f ms for %.0f occurrences\n", g_ms["year"], g_count["year"]);
    if (have("write5000"))
        std::printf(
            "  writing 5,000 appointments onto 50 days, a transaction each: %.0f ms (%.2f ms a row)\n",
            g_ms["write5000"], g_ms["write5000"] / 5000.0);
    for (const char *view : {"week", "day"}) {
        const std::string k(view);
        if (!have((k + "-cold").c_str())) continue;
        const double cold = g_ms[k + "-cold"], warm = g_ms[k + "-warm"], floor = g_ms[k + "-floor"];
        std::printf("  switching the %s view (collect, unpack, lay out), %.0f boxes, %.0f fields decrypted:\n"
                    "    cold %.2f ms, cipher floor %.2f ms: %.2fx (target at most 1.3x)\n"
                    "    warm %.2f ms: %.2fx of cold (target at most 0.25x), of which collecting %.2f ms\n",
                    view, g_count[k + "-boxes"], g_count[k + "-fields"], cold, floor, cold / floor, warm,
                    warm / cold, g_ms[k + "-collect-warm"]);
    }
    return 0;
}
