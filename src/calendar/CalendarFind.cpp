#include "calendar/CalendarFind.h"

#include "calendar/CALENDAR.h"
#include "calendar/frmCalendar.h"
#include "calendar/frmDiary.h"
#include "shell/frmFind.h"
#include "store/Record_Get.h"

namespace CALENDAR {

namespace {

// An appointment: Item is field 0 of its record as the record gives it, Spec
// its start (a series: its first day) with the time of day.
void describeAppointment(km::RowSet &, const km::SecureBytes &clear, const km::FindDates &dates, km::FindHit &hit) {
    hit.item = Record_Get::ReadPackedField(clear, FieldUserNumber).value_or(QString());
    bool ok = false;
    const qint32 start = Record_Get::ReadPackedField(clear, FieldAppoStart).value_or(QString()).toInt(&ok);
    if (!ok) return;
    hit.date = DateOfMoment(start);
    hit.spec = dates.dateTime(QDateTime(hit.date, QTime(0, 0).addSecs(MinuteOfDayOfMoment(start) * 60)));
}

// A diary day: Item is its date, Spec stays empty.
void describeDiaryDay(km::RowSet &, const km::SecureBytes &clear, const km::FindDates &dates, km::FindHit &hit) {
    hit.date = km::DIARY::DateOfField(Record_Get::ReadPackedField(clear, km::DIARY::Date).value_or(QString()));
    hit.item = dates.date(hit.date);
}

// The day view of the appointment's start, with its box selected when the
// day shows one (a private appointment while private records are hidden
// shows none).
void goToAppointment(km::SectionWindow &window, const km::FindHit &hit) {
    auto *w = dynamic_cast<frmCalendar *>(&window);
    if (!w) return;
    w->calView_Click(ViewDay);
    if (!w->SetDate(hit.date)) return;
    for (size_t i = 0; i < w->boxes.size(); ++i)
        if (w->boxes[i].id == hit.id) {
            w->selectedBox = static_cast<int>(i);
            break;
        }
}

// The diary shows the one day.
void goToDiaryDay(km::SectionWindow &window, const km::FindHit &hit) {
    auto *w = dynamic_cast<km::frmDiary *>(&window);
    if (!w || !hit.date.isValid()) return;
    w->calDate_Click(hit.date);
    w->diaPeriod_Click(km::frmDiary::DayMode);
}

} // namespace

void RegisterFindSections() {
    km::RegisterFindSection(Section, {describeAppointment, goToAppointment});
    km::RegisterFindSection(km::DIARY::Section, {describeDiaryDay, goToDiaryDay});
}

} // namespace CALENDAR
