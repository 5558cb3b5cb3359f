// Find in the calendar and the diary on a logged-in main window: the Item and
// Spec columns of a hit, the private rule, and Go To landing on the
// appointment's day with its box selected, or on the diary's day.
#include <gtest/gtest.h>

#include "calendar/CALENDAR.h"
#include "calendar/frmCalendar.h"
#include "calendar/frmDiary.h"
#include "shell/MainWindowTestSupport.h"
#include "shell/frmFind.h"
#include "store/Startvariables.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace {

using namespace km;
using namespace CALENDAR;

class CalendarFindTest : public test::MainWindowFixture {
protected:
    void SetUp() override {
        MainWindowFixture::SetUp();
        ASSERT_TRUE(startOpen());
        Startvariables::state().CalView = ViewWeek;
        CALENDAR::RegisterSections();
    }
    void TearDown() override {
        UnregisterFindSections();
        MainWindowFixture::TearDown();
    }
    static qint64 add(const QDate &day, int fromMinute, int toMinute, const QString &subject, bool isPrivate = false,
                      int user = 1) {
        AppointmentRecord r;
        r.UserNumber = user;
        r.ctlAppoStart = MomentOf(day, fromMinute);
        r.ctlAppoEnd = MomentOf(day, toMinute);
        r.ctlAllday = fromMinute == 0 && toMinute == MinutesPerDay ? 1 : 0;
        r.ctlAlarmTime = r.ctlAppoStart;
        r.ctlSubject = subject;
        r.ctlPrivate = isPrivate;
        return WriteAppointment(0, r);
    }
    qint64 writeDiary(const QDate &day, const QString &text) {
        frmDiary diary(w->sectionContext());
        diary.LoadDiaryWeek(day);
        for (int i = 0; i < 7; ++i)
            if (diary.txtInput[static_cast<size_t>(i)].date == day) {
                diary.txtInput_Change(i, text);
                diary.SaveDiaryDay(i);
                return diary.txtInput[static_cast<size_t>(i)].tag;
            }
        return 0;
    }
    static QStringList hits(const QList<FindHit> &list) {
        QStringList out;
        for (const FindHit &h : list)
            out << QStringLiteral("%1|%2|%3|%4").arg(h.name).arg(h.id).arg(h.item, h.spec);
        return out;
    }
    // Find in the window over one box, and Go To its only hit.
    void findAndGo(int box, const QString &text) {
        frmFind f(*w);
        f.txtFind_Change(text);
        f.PinApp_Click(box, true);
        f.cmdFind_Click();
        ASSERT_EQ(f.LV.size(), 1);
        found = f.LV[0];
        f.cmdGoto_Click();
    }
    FindHit found;
};

} // namespace

TEST_F(CalendarFindTest, HitsShowTheUserFieldTheStartAndTheDiaryDate) {
    const QDate may7(2024, 5, 7);
    const qint64 dentist = add(may7, 14 * 60 + 30, 15 * 60, "Dentist NEEDLE", false, 2);
    const qint64 party = add(QDate(2024, 6, 1), 0, MinutesPerDay, "needle party");
    add(may7, 9 * 60, 10 * 60, "hidden needle", true);
    add(may7, 11 * 60, 12 * 60, "hay");
    const qint64 page = writeDiary(QDate(2024, 4, 2), "found a needle today");

    FindRequest r;
    r.text = "needle";
    r.boxes[1] = r.boxes[2] = true;
    const QString cal = LanguageUS::MessageText(113), diary = LanguageUS::MessageText(114);
    EXPECT_EQ(hits(SearchSections(db::Store(), r)),
              QStringList({QStringLiteral("%1|%2|2|2024-05-07 14:30").arg(cal).arg(dentist),
                           QStringLiteral("%1|%2|1|2024-06-01").arg(cal).arg(party),
                           QStringLiteral("%1|%2|2024-04-02|").arg(diary).arg(page)}))
        << "the private appointment stays out; an all-day one has no time";
    r.showPrivate = true;
    EXPECT_EQ(SearchSections(db::Store(), r).size(), 4);

    // The window writes its dates in the locale's short forms.
    r.dates.locale = QLocale(QStringLiteral("de_DE"));
    r.showPrivate = false;
    const QList<FindHit> local = SearchSections(db::Store(), r);
    ASSERT_EQ(local.size(), 3);
    EXPECT_EQ(local[0].spec, "07.05.24 14:30");
    EXPECT_EQ(local[2].item, "02.04.24");
}

TEST_F(CalendarFindTest, GoToShowsTheAppointmentsDayWithItsBoxSelected) {
    const QDate day(2024, 7, 16);
    add(day, 8 * 60, 9 * 60, "Before");
    const qint64 id = add(day, 10 * 60, 11 * 60, "Review of the needle");
    add(day, 12 * 60, 13 * 60, "After");
    findAndGo(1, "review");
    const QLocale system = QLocale::system();
    EXPECT_EQ(found.spec, system.toString(day, QLocale::ShortFormat) + " " +
                              system.toString(QTime(10, 0), QLocale::ShortFormat))
        << "the date and the time of day, in the system's short forms";

    ASSERT_EQ(w->CurrentSection, 12);
    auto *cal = dynamic_cast<frmCalendar *>(w->section());
    ASSERT_NE(cal, nullptr);
    EXPECT_EQ(cal->ViewMode, ViewDay);
    EXPECT_EQ(cal->state.calDate, day);
    ASSERT_GE(cal->selectedBox, 0);
    EXPECT_EQ(cal->boxes[static_cast<size_t>(cal->selectedBox)].id, id);
    EXPECT_EQ(cal->boxes.size(), 3u);
}

TEST_F(CalendarFindTest, GoToOpensTheDiaryOnTheDayInDayMode) {
    Startvariables::state().DiaryShow = 0; // the week
    w->setPrivateShown(true);               // the diary opens only then
    const QDate day(2023, 12, 28);
    writeDiary(day.addDays(-1), "the day before");
    writeDiary(day, "the Needle day");
    findAndGo(2, "needle");
    EXPECT_EQ(found.item, QLocale::system().toString(day, QLocale::ShortFormat));

    ASSERT_EQ(w->CurrentSection, 13);
    auto *diary = dynamic_cast<frmDiary *>(w->section());
    ASSERT_NE(diary, nullptr);
    EXPECT_EQ(diary->diaPeriod, frmDiary::DayMode);
    EXPECT_EQ(diary->calDate, day);
    EXPECT_EQ(diary->txtInput[static_cast<size_t>(diary->dayIndex())].text, "the Needle day");
}
