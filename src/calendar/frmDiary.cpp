#include "calendar/frmDiary.h"

#include "calendar/CALENDAR.h"
#include "calendar/Recurrence.h"
#include "platform/Clock.h"
#include "platform/Engine.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/Startvariables.h"
#include "store/db.h"

namespace km {

namespace {

QString rangeQuery(const QDate &first, const QDate &last) {
    const qint32 low = CALENDAR::DateKey(first, CALENDAR::DayKey).low;
    const qint32 high = CALENDAR::DateKey(last, CALENDAR::DayKey).high;
    return QStringLiteral("SELECT * FROM tt WHERE fSec=%1 And (fR2 Between %2 And %3) WITH OWNERACCESS OPTION;")
        .arg(DIARY::Section)
        .arg(low)
        .arg(high);
}

// The day a row holds, by the date in its record; invalid if it has none.
QDate dateOfRow(const QStringList &values) {
    return DIARY::DateOfField(values.value(DIARY::Date));
}

} // namespace

namespace DIARY {

QDate DateOfField(const QString &value) {
    return QDateTime::fromString(value, QStringLiteral("yyyy-MM-dd HH:mm:ss")).date();
}

Day ReadDay(StoreDb &store, const QDate &date) {
    Day day;
    auto rows = store.OpenRowSet(rangeQuery(date, date), Snapshot);
    for (; !rows->Eof(); rows->MoveNext()) {
        QStringList values;
        Record_Get::UnpackRecord(values, rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
        if (dateOfRow(values) != date) continue;
        day.rowId = rows->GetColumn(QStringLiteral("fPK")).toLongLong();
        day.text = values.value(Text);
    }
    return day;
}

} // namespace DIARY

frmDiary::frmDiary(const SectionContext &context) : ctx(context) {}

void frmDiary::Form_Load() {
    // The preference "Initial diary display": 1 one day, anything else a week.
    diaPeriod = Startvariables::state().DiaryShow == 1 ? DayMode : WeekMode;
    calDate = ctx.clock.dateTime().date();
    LoadDiaryWeek(calDate);
}

void frmDiary::Form_Unload() {
    saveChanged();
}

int frmDiary::dayIndex() const {
    for (int i = 0; i < 7; ++i)
        if (txtInput[static_cast<size_t>(i)].date == calDate) return i;
    return 0;
}

QList<int> frmDiary::boxesShown() const {
    if (diaPeriod == DayMode) return {dayIndex()};
    return {0, 1, 2, 3, 4, 5, 6};
}

void frmDiary::LoadDiaryWeek(const QDate &date) {
    const QDate first = CALENDAR::WeekStartOf(date, 0);
    txtMargin.clear();
    for (int i = 0; i < 7; ++i) {
        DiaryBox &box = txtInput[static_cast<size_t>(i)];
        box = DiaryBox();
        box.date = first.addDays(i);
        txtMargin.append(ctx.locale.toString(box.date, QLocale::LongFormat));
    }
    recordChanged = false;
    auto rows = ctx.store.OpenRowSet(rangeQuery(first, first.addDays(6)), Snapshot);
    for (; !rows->Eof(); rows->MoveNext()) {
        QStringList values;
        Record_Get::UnpackRecord(values, rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
        const qint64 i = first.daysTo(dateOfRow(values));
        if (i < 0 || i > 6) continue;
        DiaryBox &box = txtInput[static_cast<size_t>(i)];
        box.text = values.value(DIARY::Text);
        box.tag = rows->GetColumn(QStringLiteral("fPK")).toLongLong();
    }
}

void frmDiary::SaveDiaryDay(int index) {
    if (index < 0 || index > 6) return;
    DiaryBox &box = txtInput[static_cast<size_t>(index)];
    QList<Record_Put::Field> layout;
    if (!box.text.isEmpty()) layout.append({DIARY::Text, Record_Put::tMemo});
    layout.append({DIARY::Date, Record_Put::tMinutes});
    const QVariantList values = {box.text, box.date};

    db::StandardWrite w(ctx.store, box.tag > 0 ? box.tag : 0, Section);
    if (!w.ok()) return;
    w.setRecord(Record_Put::PackRecord(layout, values));
    w.setColumn(QStringLiteral("fR2"), CALENDAR::DateKey(box.date, CALENDAR::DayKey).point);
    w.setColumn(QStringLiteral("fT1"), CRY::EncryptField(Record_Put::PackValue(box.date, Record_Put::tMinutes)));
    box.tag = w.Commit({false, true, true, true, false, true, true});
    box.changed = false;
    recordChanged = false;
    for (const DiaryBox &b : txtInput)
        recordChanged = recordChanged || b.changed;
    db::state().StoreChanged = true;
}

void frmDiary::saveChanged() {
    for (int i = 0; i < 7; ++i)
        if (txtInput[static_cast<size_t>(i)].changed) SaveDiaryDay(i);
}

void frmDiary::showDate(const QDate &date) {
    if (!date.isValid()) return;
    saveChanged();
    calDate = date;
    LoadDiaryWeek(date);
}

void frmDiary::calDate_Click(const QDate &date) {
    showDate(date);
}

void frmDiary::diaMoveDay(bool up) {
    const int step = diaPeriod == DayMode ? 1 : 7;
    showDate(calDate.addDays(up ? step : -step));
}

void frmDiary::diaPeriod_Click(int period) {
    saveChanged();
    diaPeriod = period == WeekMode ? WeekMode : DayMode;
    LoadDiaryWeek(calDate);
}

void frmDiary::txtMargin_Click(int line) {
    if (line < 0 || line > 6) return;
    showDate(txtInput[static_cast<size_t>(line)].date);
}

void frmDiary::txtInput_Change(int index, const QString &text) {
    if (index < 0 || index > 6) return;
    DiaryBox &box = txtInput[static_cast<size_t>(index)];
    if (box.text == text) return;
    box.text = text;
    box.changed = true;
    recordChanged = true;
}

void RegisterDiarySection() {
    frmMDI::RegisterSection(frmDiary::Section,
                            [](const SectionContext &context) { return std::make_unique<frmDiary>(context); });
}

} // namespace km
