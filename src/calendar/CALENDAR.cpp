#include "calendar/CALENDAR.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/Engine.h"
#include "platform/Random.h"
#include "ui/Dialogs.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/db.h"

namespace CALENDAR {

namespace {

using Record_Put::PackValue;

constexpr int MsgNoRecordFound = 31;

qint64 floorDiv(qint64 a, qint64 b) {
    const qint64 q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

qint64 floorMod(qint64 a, qint64 b) {
    return a - floorDiv(a, b) * b;
}

qint64 dayZeroJulian() {
    static const qint64 jd = QDate(1899, 12, 30).toJulianDay();
    return jd;
}

struct KeyKindInfo {
    int origin;
    int count;
};

KeyKindInfo keyKind(int kind) {
    switch (kind) {
    case SeriesStartKey:
        return {32626, 29207};
    case SeriesEndKey:
        return {35509, 26324};
    default:
        return {31608, 30225};
    }
}

int fieldType(int index) {
    using namespace Record_Put;
    switch (index) {
    case FieldPrivate:
        return tBoolean;
    case FieldUserNumber:
    case FieldAllday:
    case FieldAlarmYN:
        return tByte;
    case FieldAppoStart:
    case FieldAppoEnd:
    case FieldAlarmTime:
        return tLong;
    case FieldNotes:
        return tMemo;
    default:
        return tText;
    }
}

// A moment slot as UnpackRecord leaves it: decimal text for type 4, the date
// text where a record carries the moment as type 25.
qint32 momentOfSlot(const QString &text) {
    bool ok = false;
    const qint32 n = text.toInt(&ok);
    if (ok) return n;
    const QDateTime dt = CONVERSION::ParseDateText(text);
    if (!dt.isValid()) return 0;
    try {
        return CONVERSION::DateToMinutes(dt);
    } catch (...) {
        return 0;
    }
}

bool truthOfSlot(const QString &text) {
    if (text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0) return true;
    return text.toInt() != 0;
}

} // namespace

State &state() {
    static State s;
    return s;
}

// ---- Days and moments ----

qint64 DayNumber(const QDate &date) {
    return date.toJulianDay() - dayZeroJulian();
}

QDate DateOfDay(qint64 dayNumber) {
    return QDate::fromJulianDay(dayNumber + dayZeroJulian());
}

qint32 DayOfMoment(qint32 moment) {
    return static_cast<qint32>(floorDiv(moment, MinutesPerDay));
}

int MinuteOfDayOfMoment(qint32 moment) {
    return static_cast<int>(floorMod(moment, MinutesPerDay));
}

QDate DateOfMoment(qint32 moment) {
    return DateOfDay(EpochDay + DayOfMoment(moment));
}

qint32 MomentOf(const QDate &date, int minuteOfDay) {
    return static_cast<qint32>((DayNumber(date) - EpochDay) * MinutesPerDay + minuteOfDay);
}

QDate MakeDate(int year, int month, int day) {
    const qint64 m0 = static_cast<qint64>(month) - 1;
    const int y = static_cast<int>(year + floorDiv(m0, 12));
    const int m = static_cast<int>(floorMod(m0, 12)) + 1;
    return QDate(y, m, 1).addDays(static_cast<qint64>(day) - 1);
}

// ---- Date keys ----

int KeyOrigin(int kind) {
    return keyKind(kind).origin;
}
int KeyCount(int kind) {
    return keyKind(kind).count;
}
qint32 KeyWidth(int kind) {
    return INDICES::MaxIndex / keyKind(kind).count;
}

DateKeyValue DateKey(qint64 dayNumber, int kind) {
    const KeyKindInfo k = keyKind(kind);
    const qint64 n = std::clamp<qint64>(dayNumber - k.origin, -(k.count - 1), k.count - 1);
    const INDICES::ScatterRange r = INDICES::ScatterPoint(n, k.count, 0, INDICES::MaxIndex);
    // The random point may round onto the first value of the next bucket
    // (the random fraction reaches 1, or rounds up to it); it is kept inside
    // its own day, which the selections by bucket bounds rely on.
    return {std::clamp(r.Value, r.Low, r.High), r.High, r.Low};
}

DateKeyValue DateKey(const QDate &date, int kind) {
    return DateKey(DayNumber(date), kind);
}

qint64 DayFromKey(qint32 value, int kind) {
    return value / KeyWidth(kind) + keyKind(kind).origin;
}

QDate DateFromKey(qint32 value, int kind) {
    return DateOfDay(DayFromKey(value, kind));
}

// ---- Rule strings ----

QByteArray Days16Bytes(qint16 day) {
    const auto u = static_cast<quint16>(day);
    QByteArray out(2, Qt::Uninitialized);
    out[0] = static_cast<char>(u & 0xFF);
    out[1] = static_cast<char>(u >> 8);
    return out;
}

qint16 Days16At(QByteArrayView bytes, qsizetype pos) {
    if (pos < 0 || pos + 1 >= bytes.size()) return 0;
    const auto lo = static_cast<quint16>(static_cast<unsigned char>(bytes[pos]));
    const auto hi = static_cast<quint16>(static_cast<unsigned char>(bytes[pos + 1]));
    return static_cast<qint16>(static_cast<quint16>(lo | (hi << 8)));
}

int RuleHeaderByte0(QByteArrayView redo) {
    if (redo.isEmpty()) return 0;
    int b0 = static_cast<unsigned char>(redo[0]);
    if (b0 > 127) b0 = ~b0 & 0xFF;
    return b0;
}

int RuleKind(QByteArrayView redo) {
    return RuleHeaderByte0(redo) & 7;
}

int RuleEndKind(QByteArrayView redo) {
    return (RuleHeaderByte0(redo) >> 3) & 3;
}

QByteArray RedoString(const RedoRule &rule) {
    QByteArray out;
    out.reserve(RuleHeaderLength + 2 * rule.excepted.size());
    out.append(static_cast<char>((rule.kind & 7) | ((rule.endKind & 3) << 3)));
    out.append(static_cast<char>(rule.b1 & 0xFF));
    out.append(static_cast<char>(rule.b2 & 0xFF));
    out.append(Days16Bytes(rule.first));
    out.append(Days16Bytes(rule.last));
    for (const qint16 d : rule.excepted)
        out.append(Days16Bytes(d));
    return out;
}

std::optional<RedoRule> ParseRedoString(QByteArrayView redo) {
    if (redo.size() < RuleHeaderLength || redo.size() % 2 == 0) return std::nullopt;
    RedoRule rule;
    const int b0 = RuleHeaderByte0(redo);
    rule.kind = b0 & 7;
    rule.endKind = (b0 >> 3) & 3;
    rule.b1 = static_cast<unsigned char>(redo[1]);
    rule.b2 = static_cast<unsigned char>(redo[2]);
    rule.first = Days16At(redo, 3);
    rule.last = Days16At(redo, 5);
    for (qsizetype pos = RuleHeaderLength; pos + 1 < redo.size(); pos += 2)
        rule.excepted.append(Days16At(redo, pos));
    return rule;
}

// ---- The appointment record ----

QByteArray PackAppointment(const AppointmentRecord &r) {
    const QVariant values[AppointmentFieldCount] = {
        r.UserNumber,   r.ctlPrivate,    r.ctlAppoStart, r.ctlAppoEnd,  r.ctlAllday, r.ctlAlarmYN,
        r.ctlAlarmTime, r.ctlRedoString, r.ctlSubject,   r.ctlLocation, r.ctlNotes};
    QByteArray out;
    for (int i = 0; i < AppointmentFieldCount; ++i) {
        const QVariant &v = values[i];
        const bool empty = (v.typeId() == QMetaType::QString && v.toString().isEmpty()) ||
                           (v.typeId() == QMetaType::QByteArray && v.toByteArray().isEmpty());
        if (empty) continue;
        out.append(static_cast<char>(i));
        out.append(PackValue(v, fieldType(i)));
    }
    return out;
}

namespace {

// Every field but the rule string, a byte text that is read as its bytes.
AppointmentRecord appointmentFromSlots(const QStringList &slots) {
    const auto slot = [&](int i) { return i < slots.size() ? slots.at(i) : QString(); };
    AppointmentRecord r;
    r.UserNumber = slot(FieldUserNumber).toInt();
    r.ctlPrivate = truthOfSlot(slot(FieldPrivate));
    r.ctlAppoStart = momentOfSlot(slot(FieldAppoStart));
    r.ctlAppoEnd = momentOfSlot(slot(FieldAppoEnd));
    r.ctlAllday = slot(FieldAllday).toInt();
    r.ctlAlarmYN = slot(FieldAlarmYN).toInt();
    r.ctlAlarmTime = momentOfSlot(slot(FieldAlarmTime));
    r.ctlSubject = slot(FieldSubject);
    r.ctlLocation = slot(FieldLocation);
    r.ctlNotes = slot(FieldNotes);
    return r;
}

} // namespace

AppointmentRecord AppointmentFromClear(const km::SecureBytes &clear) {
    QStringList slots;
    Record_Get::UnpackRecord(slots, clear);
    AppointmentRecord r = appointmentFromSlots(slots);
    r.ctlRedoString = km::toQByteArray(Record_Get::ReadPackedBytes(clear, FieldRedoString));
    for (QString &s : slots)
        km::wipe(s);
    return r;
}

std::optional<AppointmentRecord> ReadAppointment(qint64 rowId) {
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT fPK, fSec, fEtx FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(rowId),
        km::Snapshot);
    if (rows->Eof() || rows->GetColumn(QStringLiteral("fSec")).toInt() != Section) return std::nullopt;
    km::SecureBytes clear = CRY::DecryptFieldBytes(rows->GetColumn(QStringLiteral("fEtx")).toByteArray());
    AppointmentRecord r = AppointmentFromClear(clear);
    km::wipe(clear);
    return r;
}

std::optional<qint32> StartOfField(const QByteArray &fT1) {
    km::SecureBytes b = CRY::DecryptFieldBytes(fT1);
    std::optional<qint32> out;
    if (b.size() >= 5 && (b[0] == Record_Put::tLong || b[0] == Record_Put::tMinutes)) {
        const quint32 u = static_cast<quint32>(b[1]) | (static_cast<quint32>(b[2]) << 8) |
                          (static_cast<quint32>(b[3]) << 16) | (static_cast<quint32>(b[4]) << 24);
        out = static_cast<qint32>(u);
    }
    km::wipe(b);
    return out;
}

// ---- Row class ----

RowClass ClassOfSub(int fSub) {
    if (fSub < SingleSubCount) return RowClass::Single;
    if (fSub < OtherSeriesSubFirst) return RowClass::Yearly;
    return RowClass::Series;
}

RowClass ClassOfRule(QByteArrayView redo) {
    if (redo.isEmpty()) return RowClass::Single;
    const int kind = RuleKind(redo);
    return kind == RedoYearly || kind == RedoYearlyNth ? RowClass::Yearly : RowClass::Series;
}

int DrawSub(QByteArrayView redo, int startMonth) {
    km::Randomize();
    switch (ClassOfRule(redo)) {
    case RowClass::Single:
        return static_cast<int>(km::RndInt(SingleSubCount));
    case RowClass::Yearly: {
        int month = RuleKind(redo) == RedoYearlyNth && redo.size() > 2 ? static_cast<unsigned char>(redo[2])
                                                                       : startMonth;
        month = std::clamp(month, 1, 12);
        return SingleSubCount + 4 * (month - 1) + static_cast<int>(km::RndInt(4));
    }
    case RowClass::Series:
        break;
    }
    return OtherSeriesSubFirst + static_cast<int>(km::RndInt(60));
}

// ---- Writing ----

namespace {

// fSub, fT3, fR2 and fR4: the columns that tell (or hide) the row's class.
void writeClassColumns(db::StandardWrite &w, const AppointmentRecord &r) {
    const QByteArray &redo = r.ctlRedoString;
    km::Randomize();
    w.setColumn(QStringLiteral("fSub"), DrawSub(redo, DateOfMoment(r.ctlAppoStart).month()));
    if (redo.isEmpty()) {
        w.setColumn(QStringLiteral("fT3"),
                    CRY::EncryptField(km::toQByteArray(CRY::RandomBytes(RuleHeaderLength))));
        // Crossed on purpose against a series: fR4 made with fR2's key kind
        // and the other way round. Never read back; single rows are selected
        // by fSub and fR3 alone.
        w.setColumn(QStringLiteral("fR4"),
                    DateKey(EpochDay + km::RndInt(KeyCount(SeriesEndKey)), SeriesEndKey).point);
        w.setColumn(
            QStringLiteral("fR2"),
            DateKey(KeyOrigin(SeriesStartKey) + km::RndInt(KeyCount(SeriesStartKey)), SeriesStartKey).point);
        return;
    }
    w.setColumn(QStringLiteral("fT3"), CRY::EncryptField(redo));
    const qint64 startDay = EpochDay + DayOfMoment(r.ctlAppoStart);
    const qint64 firstDay = redo.size() >= 5 ? EpochDay + Days16At(redo, 3) : startDay;
    qint64 lastDay = redo.size() >= 7 ? EpochDay + Days16At(redo, 5) : firstDay;
    // A series without end stands, for its key alone, on a random day of the
    // last ten years before the calendar's limit: selected by every view up to
    // then, without telling the file that it never ends.
    if (RuleEndKind(redo) == EndNever) lastDay = EpochDay + KeyCount(SeriesEndKey) - km::RndInt(3650) - 1;
    w.setColumn(QStringLiteral("fR4"), DateKey(firstDay, SeriesStartKey).point);
    w.setColumn(QStringLiteral("fR2"), DateKey(lastDay, SeriesEndKey).point);
}

} // namespace

qint64 WriteAppointment(qint64 rowId, const AppointmentRecord &record, WriteScope scope) {
    AppointmentRecord r = record;
    const qint32 start = r.ctlAppoStart;
    // Midnight to midnight is an all-day event, whatever the flag said.
    if (MinuteOfDayOfMoment(start) == 0 &&
        static_cast<qint64>(r.ctlAppoEnd) == static_cast<qint64>(start) + MinutesPerDay)
        r.ctlAllday = 1;

    km::StoreDb &store = db::Store();
    store.BeginTrans();
    try {
        qint64 id = 0;
        bool isNew = false;
        {
            db::StandardWrite w(store, rowId, Section);
            if (w.ok()) {
                isNew = w.isNew();
                w.setRecord(PackAppointment(r));
                w.setColumn(QStringLiteral("fT1"), CRY::EncryptField(PackValue(start, Record_Put::tLong)));
                w.setColumn(QStringLiteral("fT2"),
                            CRY::EncryptField(PackValue(MinuteOfDayOfMoment(start) / 6, Record_Put::tByte)));
                w.setColumn(QStringLiteral("fR3"), DateKey(EpochDay + DayOfMoment(start), DayKey).point);
                if (isNew || scope == WriteScope::Everything) writeClassColumns(w, r);
                // The calendar has no categories: fG1 is 0, and an old row
                // without a number there gets one.
                const QVariant g1 = w.oldColumn(QStringLiteral("fG1"));
                if (isNew || g1.isNull() || g1.typeId() == QMetaType::Nullptr)
                    w.setColumn(QStringLiteral("fG1"), 0);
                id = w.Commit();
            }
        }
        if (id == 0) {
            store.Rollback();
            return 0;
        }
        const qint32 order = DayOrderKey(start, id, isNew);
        auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
        rows->FindFirst(QStringLiteral("fPK=%1").arg(id));
        rows->Edit();
        rows->SetColumn(QStringLiteral("fR1"), order);
        rows->Update();
        rows.reset();
        store.CommitTrans();
        return id;
    } catch (...) {
        store.Rollback();
        throw;
    }
}

qint32 DayOrderKey(qint32 start, qint64 rowId, bool isNew) {
    km::StoreDb &store = db::Store();
    const DateKeyValue key = DateKey(EpochDay + DayOfMoment(start), DayKey);
    auto rows =
        store.OpenRowSet(QStringLiteral("SELECT fPK, fT1, fR1, AE FROM tt WHERE (fSec=%1) AND ([fR3] Between "
                                        "%2 And %3) ORDER BY [fR1] WITH OWNERACCESS OPTION;")
                             .arg(Section)
                             .arg(key.low)
                             .arg(key.high),
                         km::Dynaset);
    if (rows->RecordCount() == 0) return INDICES::ScatterPoint(0, 1, 0, INDICES::MaxIndex).Value;

    struct Entry {
        km::Bookmark mark;
        QByteArray t1;
        qint32 r1;
        std::optional<qint32> start;
    };
    std::vector<Entry> others;
    std::optional<Entry> self;
    for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) {
        Entry e{rows->GetBookmark(), rows->GetColumn(QStringLiteral("fT1")).toByteArray(),
                static_cast<qint32>(rows->GetColumn(QStringLiteral("fR1")).toLongLong()), std::nullopt};
        if (rows->GetColumn(QStringLiteral("fPK")).toLongLong() == rowId)
            self = std::move(e);
        else
            others.push_back(std::move(e));
    }
    // Starts are decrypted only as the walk needs them.
    const auto startOf = [](Entry &e) {
        if (!e.start) e.start = StartOfField(e.t1).value_or(0);
        return *e.start;
    };

    if (!isNew) {
        if (!self) {
            km::ShowMessage(MsgNoRecordFound);
            return 0;
        }
        // The row was written with this start before: it keeps its rank,
        // also when it has moved to another day. The views sort by start.
        if (startOf(*self) == start) return self->r1;
    }

    // The row's place among the others: after all of them when it is not
    // earlier than the last, else before the first that is not earlier; so of
    // two equal starts the one saved later goes behind.
    const qint64 m = static_cast<qint64>(others.size());
    qint64 q = m;
    if (m > 0 && start < startOf(others.back())) {
        q = 0;
        while (q < m && startOf(others[static_cast<size_t>(q)]) < start)
            ++q;
    }
    // A new row counts as standing first (it has no rank yet), so its day is
    // spread over one slot more than it has rows; a changed row keeps the count.
    const qint64 base = isNew ? 1 : 0;
    const qint64 count = m + 1 + base;
    for (qint64 k = 0; k < m; ++k) {
        Entry &e = others[static_cast<size_t>(k)];
        const qint64 slot = base + (k < q ? k : k + 1);
        rows->SetBookmark(e.mark);
        db::EditRow(*rows);
        rows->SetColumn(QStringLiteral("fR1"),
                        INDICES::ScatterPoint(slot, count, 0, INDICES::MaxIndex).Value);
        rows->Update();
    }
    return INDICES::ScatterPoint(base + q, count, 0, INDICES::MaxIndex).Value;
}

} // namespace CALENDAR
