// The appointment editor's model against a real store, a scripted person and
// a clock fixed at 2024-05-06 (a Monday) 09:30.
#include <gtest/gtest.h>

#include "CalendarTestSupport.h"
#include "calendar/CalendarText.h"
#include "calendar/frmEditCalendar.h"
#include "support/SectionFixture.h"

using namespace CALENDAR;
using namespace km::test;

namespace {

qint32 M(const char *date, int hour, int minute = 0) {
    return MomentOf(D(date), hour * 60 + minute);
}

class EditorTest : public SectionFixture {
protected:
    // An editor on a new row opened from the calendar's date (no slot chosen).
    std::unique_ptr<frmEditCalendar> newOn(const char *date) {
        state = {};
        state.calDate = D(date);
        return open();
    }
    std::unique_ptr<frmEditCalendar> newAt(qint32 start, qint32 end = 0) {
        state = {};
        state.gEditStart = start;
        state.gEditEnd = end;
        return open();
    }
    std::unique_ptr<frmEditCalendar> openRow(qint64 id, qint32 clicked = 0) {
        state = {};
        state.gEditIsNew = false;
        state.gEditId = id;
        state.gEditStart = clicked;
        return open();
    }
    std::unique_ptr<frmEditCalendar> open() {
        auto e = std::make_unique<frmEditCalendar>(context(), state);
        e->Form_Activate();
        return e;
    }
    // Every column of a row, as the file holds it.
    QString rowBytes(qint64 id) {
        auto rows = store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        QStringList out;
        for (const char *c : {"fSec", "fSub", "fEtx", "fT1", "fT2", "fT3", "fR1", "fR2", "fR3", "fR4", "fG1", "AE"})
            out << QString::fromLatin1(rows->GetColumn(QString::fromLatin1(c)).toByteArray().toHex());
        return out.join(QLatin1Char('|'));
    }
    QStringList occurrences(const char *from, const char *to) {
        QStringList out;
        for (const Occurrence &o : CollectOccurrences(store(), D(from), D(to)))
            out << QStringLiteral("%1 %2").arg(o.id).arg(
                       DateOfMoment(o.start).toString(QStringLiteral("MM-dd")) + QStringLiteral(" ") +
                       QString::number(MinuteOfDayOfMoment(o.start)));
        return out;
    }
    // Saves and returns the row's rule as stored.
    QByteArray saveRule(frmEditCalendar &e) {
        e.SaveAppointment();
        EXPECT_TRUE(e.closeRequested && e.acceptedResult);
        return ReadAppointment(state.gEditId).value_or(AppointmentRecord{}).ctlRedoString;
    }

    CalendarState state;
    WeekLocale week{"en_US"}; // Sunday first
};

TEST_F(EditorTest, NewRowsStartWhereTheCalendarOrTheClockSays) {
    // From the calendar's date: 09:00 to 09:30.
    auto e = newOn("2024-05-08");
    EXPECT_EQ(e->times.start, M("2024-05-08", 9));
    EXPECT_EQ(e->times.end, M("2024-05-08", 9, 30));
    EXPECT_EQ(e->ctlDate, D("2024-05-08"));
    EXPECT_EQ((QStringList{e->ctlHH[0], e->ctlNN[0], e->ctlHH[1], e->ctlNN[1]}),
              (QStringList{"09", "00", "09", "30"}));
    // No calendar: the present moment rounded down to the half hour.
    clock.set(QDateTime(QDate(2024, 5, 6), QTime(10, 47)));
    state = {};
    e = open();
    EXPECT_EQ(e->times.start, M("2024-05-06", 10, 30));
    // A slot at 23:50: the end stops at midnight, shown as 24:00 of the same day.
    e = newAt(M("2024-05-06", 23, 50));
    EXPECT_EQ(e->times.end, M("2024-05-07", 0));
    EXPECT_EQ(e->ctlHH[1], "24");
    EXPECT_EQ(e->ctlNN[1], "00");
    // A range of slots keeps its end.
    e = newAt(M("2024-05-06", 14), M("2024-05-06", 16));
    EXPECT_EQ(e->times.end, M("2024-05-06", 16));
}

TEST_F(EditorTest, TimeBoxesCapRoundAndKeepTheEndAfterTheStart) {
    auto e = newOn("2024-05-06");
    EXPECT_FALSE(e->ctlHH_Validate(0, "x9")); // not a number: the focus stays
    EXPECT_TRUE(e->ctlHH_Validate(1, "30"));  // the end's hour caps at 24
    EXPECT_EQ(e->ctlHH[1], "24");
    EXPECT_EQ(e->times.end, M("2024-05-07", 0)); // and never beyond midnight
    EXPECT_TRUE(e->ctlHH_Validate(0, "30"));     // the start's at 23
    EXPECT_EQ(e->ctlHH[0], "23");
    EXPECT_TRUE(e->ctlNN_Validate(0, "61")); // minutes above 59 are 55
    EXPECT_EQ(e->times.start, M("2024-05-06", 23, 55));
    EXPECT_TRUE(e->ctlHH_Validate(0, "10"));
    EXPECT_TRUE(e->ctlNN_Validate(0, "17")); // rounded down to five
    EXPECT_EQ(e->times.start, M("2024-05-06", 10, 15));
    EXPECT_TRUE(e->ctlHH_Validate(1, "08")); // an end before the start is the start
    EXPECT_EQ(e->times.end, e->times.start);
    e->ctlHH[2] = "01"; // a duration typed sets the end when its box is left
    EXPECT_TRUE(e->ctlNN_Validate(2, "30"));
    EXPECT_EQ(e->times.end, M("2024-05-06", 11, 45));
    EXPECT_EQ(e->ctlHH[2], "00"); // and the row shows 00:00 again

    // The start's slider keeps the length, capped at midnight; the end's moves the end alone.
    e->SliderHH_Change(0, 22);
    EXPECT_EQ(e->times.start, M("2024-05-06", 22, 15));
    EXPECT_EQ(e->times.end, M("2024-05-06", 23, 45));
    e->SliderHH_Change(0, 23);
    EXPECT_EQ(e->times.end, M("2024-05-07", 0));
    e->SliderNN_Change(1, 0);
    e->SliderHH_Change(1, 5); // at or before the start: the start
    EXPECT_EQ(e->times.end, e->times.start);
}

TEST_F(EditorTest, DurationButtonsStepByFiveWhileHeld) {
    auto e = newAt(M("2024-05-06", 10), M("2024-05-06", 10, 7));
    e->cmdDuration_MouseDown(1);
    EXPECT_TRUE(e->tmrDuration.Enabled);
    EXPECT_EQ(e->times.end, M("2024-05-06", 10, 10)); // to the next multiple of five
    e->tmrDuration_Timer();
    EXPECT_EQ(e->times.end, M("2024-05-06", 10, 15));
    e->cmdDuration_MouseUp();
    EXPECT_FALSE(e->tmrDuration.Enabled);
    e->cmdDuration_MouseDown(0);
    e->tmrDuration_Timer();
    e->tmrDuration_Timer();
    EXPECT_EQ(e->times.end, M("2024-05-06", 10)); // shorter stops at the start
    e->cmdDuration_MouseUp();
    e = newAt(M("2024-05-06", 23, 30), M("2024-05-07", 0));
    e->cmdDuration_MouseDown(1); // longer stops at midnight
    EXPECT_EQ(e->times.end, M("2024-05-07", 0));
}

TEST_F(EditorTest, AllDayKeepsTheTimesAndTheAlarmListStaysForTheRowType) {
    auto e = newAt(M("2024-05-06", 14), M("2024-05-06", 15));
    ASSERT_EQ(e->ctlAlarmAnticipate.ListCount(), 11);
    EXPECT_EQ(e->ctlAlarmAnticipate.List(10), "1 Day");
    e->ctlAllday_Click(true);
    EXPECT_EQ(e->times.start, M("2024-05-06", 0));
    EXPECT_EQ(e->times.end, M("2024-05-07", 0));
    EXPECT_EQ(e->ctlAlarmAnticipate.List(10), "1 Day"); // the list stays as loaded
    e->ctlAllday_Click(false);
    EXPECT_EQ(e->times.start, M("2024-05-06", 14));
    EXPECT_EQ(e->times.end, M("2024-05-06", 15));

    // A fresh all-day row keeps its timed default for the untick, and has the all-day leads.
    state = {};
    state.calDate = D("2024-05-06");
    state.gEditAllDay = 1;
    e = open();
    EXPECT_TRUE(e->ctlAllday);
    EXPECT_EQ(e->savedTimes.start, M("2024-05-06", 9));
    EXPECT_EQ(e->ctlAlarmAnticipate.List(9), "18:00");
    EXPECT_EQ(e->ctlAlarmAnticipate.ItemData(9), -1020);
    e->ctlAlarmYN_Click(true);
    e->ctlAlarmAnticipate_Click(9);
    e->SaveAppointment();
    const AppointmentRecord r = *ReadAppointment(state.gEditId);
    EXPECT_EQ(r.ctlAllday, 1);
    EXPECT_EQ(r.ctlAppoEnd - r.ctlAppoStart, 1440);
    EXPECT_EQ(r.ctlAlarmTime, M("2024-05-06", 17)); // "18:00" is 17:00, as stored rows have it
}

TEST_F(EditorTest, SavingWritesOnlyWhatChangedAndTellsTheCalendar) {
    auto e = newOn("2024-05-06");
    e->ctlSubject = "Dentist";
    e->ctlAlarmYN_Click(true);
    e->ctlAlarmAnticipate_Click(3); // 15 Min
    e->SaveAppointment();
    const qint64 id = state.gEditId;
    ASSERT_GT(id, 0);
    EXPECT_TRUE(state.gCalendarDirty);
    EXPECT_EQ(state.gGotoDate, D("2024-05-06"));
    AppointmentRecord r = *ReadAppointment(id);
    EXPECT_EQ(r.ctlSubject, "Dentist");
    EXPECT_EQ(r.ctlAlarmTime, M("2024-05-06", 8, 45));
    EXPECT_EQ(r.UserNumber, shell.userNumber());

    // Opened again and saved without a change: not one byte of the row moves.
    const QString before = rowBytes(id);
    e = openRow(id);
    EXPECT_EQ(e->ctlAlarmAnticipate.ListIndex(), 3);
    e->SaveAppointment();
    EXPECT_FALSE(state.gCalendarDirty);
    EXPECT_TRUE(e->closeRequested);
    EXPECT_EQ(rowBytes(id), before);

    // A changed date moves the times with it.
    e = openRow(id);
    e->ctlDate_Change(D("2024-05-10"));
    e->SaveAppointment();
    EXPECT_TRUE(state.gCalendarDirty);
    r = *ReadAppointment(id);
    EXPECT_EQ(r.ctlAppoStart, M("2024-05-10", 9));
    EXPECT_EQ(r.ctlAlarmTime, M("2024-05-10", 8, 45));
    EXPECT_EQ(occurrences("2024-05-01", "2024-05-31"), QStringList{QStringLiteral("%1 05-10 540").arg(id)});

    // Esc writes nothing and sends the calendar nowhere.
    e = openRow(id);
    e->ctlSubject = "Other";
    e->cmdEsc_Click();
    EXPECT_FALSE(state.gCalendarDirty);
    EXPECT_FALSE(state.gGotoDate.has_value());
    EXPECT_EQ(ReadAppointment(id)->ctlSubject, "Dentist");
}

TEST_F(EditorTest, AMissingRowAsksWhetherToStartANewOne) {
    ui.answer(km::Answer::No);
    auto e = openRow(4242);
    EXPECT_EQ(ui.shown.value(0), "ID conflict! Treat as new appointment?");
    EXPECT_TRUE(e->closeRequested);
    EXPECT_FALSE(e->acceptedResult);
    ui.answer(km::Answer::Yes);
    e = openRow(4242, M("2024-05-07", 11));
    EXPECT_FALSE(e->closeRequested);
    EXPECT_TRUE(state.gEditIsNew);
    EXPECT_EQ(e->times.start, M("2024-05-07", 11));
}

TEST_F(EditorTest, ChangingTheRuleResetsItAndWeeklyKeepsOneWeekday) {
    auto e = newOn("2024-05-06"); // a Monday
    e->Redo_Click(frmEditCalendar::OptionWeekly);
    EXPECT_EQ(e->redoKind, RedoWeekly);
    EXPECT_EQ(e->weekFlags, (WeekFlags{false, true, false, false, false, false, false}));
    EXPECT_EQ(e->redoCount, 5);
    EXPECT_EQ(e->redoEndOption, EndAfterCount);
    // The last tick cannot go.
    e->RedoWD_Click(1, false);
    EXPECT_EQ(ui.shown.value(0), "At least one weekday has to be selected!");
    EXPECT_TRUE(e->weekFlags[1]);
    e->RedoWD_Click(4, true); // Thursday
    e->occ_Change("54");      // typed: 5, then 4
    EXPECT_EQ(e->redoCount, 54);
    e->occ_Change("4");
    EXPECT_EQ(e->redoEnd, D("2024-05-16"));
    e->QQ_Change(1, "12");
    e->QQ_Change(1, "1");
    e->ctlSubject = "Standup";
    const QByteArray weekly = saveRule(*e);
    EXPECT_EQ(weekly, Rule(RedoWeekly, (1 << 2) + (1 << 5), 1, "2024-05-06", "2024-05-16").replace(0, 1, QByteArray(1, '\x09')));
    const qint64 id = state.gEditId;
    EXPECT_EQ(occurrences("2024-05-01", "2024-05-31"),
              (QStringList{QStringLiteral("%1 05-06 540").arg(id), QStringLiteral("%1 05-09 540").arg(id),
                           QStringLiteral("%1 05-13 540").arg(id), QStringLiteral("%1 05-16 540").arg(id)}));

    // Opened on a later occurrence and saved unchanged: the row stays as it was.
    const QString before = rowBytes(id);
    e = openRow(id, M("2024-05-13", 9));
    EXPECT_EQ(e->ctlDate, D("2024-05-13"));
    EXPECT_EQ(e->redoCount, 4); // derived again from the last day
    e->SaveAppointment();
    EXPECT_EQ(rowBytes(id), before);

    // Another option starts over: count 5, interval 1, end after count.
    e = openRow(id);
    e->Redo_Click(frmEditCalendar::OptionDaily);
    EXPECT_EQ(e->redoKind, RedoDaily);
    EXPECT_EQ((std::tuple{e->redoCount, e->interval, e->redoEndOption}), (std::tuple{5, 1, int(EndAfterCount)}));
}

TEST_F(EditorTest, EachKindOfSeriesSavesTheRuleItShows) {
    struct Case {
        const char *date;
        int option, alt;
        const char *interval; // typed into the kind's box, if any
        QByteArray header;    // b0 b1 b2
        const char *last;
        QStringList days; // the first occurrences
        int inRange;      // occurrences from the first to the last day
    };
    const QList<Case> cases = {
        {"2024-05-06", 2, 0, "3", QByteArray("\x0a\x00\x03", 3), "2024-05-18", {"05-06", "05-09", "05-12"}, 5},
        {"2024-05-06", 2, 1, nullptr, QByteArray("\x0b\x7c\x00", 3), "2024-05-10", {"05-06", "05-07", "05-08"}, 5},
        {"2024-01-15", 3, 0, nullptr, QByteArray("\x0c\x0f\x01", 3), "2024-05-15", {"01-15", "02-15", "03-15"}, 5},
        {"2024-05-14", 3, 1, nullptr, QByteArray("\x0d\x13\x01", 3), "2024-09-10", {"05-14", "06-11", "07-09"}, 5},
        // The yearly rule steps by its month number when expanded, as stored rows always have.
        {"2024-05-14", 4, 0, nullptr, QByteArray("\x0e\x0e\x05", 3), "2028-05-14", {"05-14"}, 1},
        {"2024-05-14", 4, 1, nullptr, QByteArray("\x0f\x13\x05", 3), "2028-05-09", {"05-14", "05-13", "05-12"}, 5},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.date + QStringLiteral(" option %1/%2").arg(c.option).arg(c.alt).toStdString());
        auto e = newOn(c.date);
        e->Redo_Click(c.option);
        e->RedoAlt_Click(c.alt);
        if (c.interval) e->QQ_Change(0, c.interval);
        const QByteArray rule = saveRule(*e);
        EXPECT_EQ(rule.left(3), c.header);
        EXPECT_EQ(rule.mid(3, 2), Days16Bytes(Day16(c.date)));
        EXPECT_EQ(DateOfDay(EpochDay + Days16At(rule, 5)), D(c.last));
        const QStringList days = Expand(rule, c.date, c.last);
        QStringList firstDays;
        for (const QString &d : days.mid(0, c.days.size()))
            firstDays << d.mid(5);
        EXPECT_EQ(firstDays, c.days);
        EXPECT_EQ(days.size(), c.inRange);
    }
}

TEST_F(EditorTest, AnEarlierNthWeekdayOffersTheNextMonth) {
    auto e = newOn("2024-05-14"); // the second Tuesday
    e->Redo_Click(frmEditCalendar::OptionMonthly);
    e->RedoAlt_Click(1);
    EXPECT_EQ(e->cboRedoWhen.Text(), "second");
    ui.answer(km::Answer::Yes);
    e->cboRedoWhen_Click(0); // the first Tuesday of May lies before the 14th
    EXPECT_TRUE(ui.shown.value(0).startsWith("No date fullfilling criteria"));
    EXPECT_EQ(e->redoStart, D("2024-06-04"));
    EXPECT_EQ(e->redoDate, D("2024-06-04")); // the event moves with the series
    ui.answer(km::Answer::No);
    e->cboRedoWeekday_Click(1); // Monday: the 3rd of June, before the 4th; No keeps it
    EXPECT_EQ(e->redoStart, D("2024-06-03"));
    const QByteArray rule = saveRule(*e);
    EXPECT_EQ(static_cast<quint8>(rule.at(1)), 2 + 8 * 1); // Monday, first
    EXPECT_EQ(Expand(rule, "2024-06-01", "2024-08-31"), (QStringList{"2024-06-03", "2024-07-01", "2024-08-05"}));
}

TEST_F(EditorTest, NumberBoxesTakeDigitsOnly) {
    auto e = newOn("2024-05-06");
    e->Redo_Click(frmEditCalendar::OptionDaily);
    e->QQ_Change(0, "1x"); // not a digit: "1", message 12
    EXPECT_EQ(e->QQ[0], "11");
    EXPECT_EQ(ui.shown.value(0), "Must be valid number");
    e->QQ_Change(0, "");
    e->QQ_Change(0, "0"); // a leading zero is a one
    EXPECT_EQ(e->QQ[0], "1");
    e->QQ_Change(0, "25");
    e->QQ_Change(0, "256"); // above 255: the last character again, message 13
    EXPECT_EQ(e->QQ[0], "255");
    EXPECT_EQ(ui.shown.value(1), "Out of range (1-255)");
    EXPECT_EQ(e->interval, 255);
    e = newOn("2024-05-06");
    e->Redo_Click(frmEditCalendar::OptionDaily);
    e->occ_Change("");
    e->occ_Change("3");
    e->occ_Change("300"); // the count has no such limit
    EXPECT_EQ(e->redoCount, 300);
    EXPECT_EQ(ui.shown.size(), 2);
}

TEST_F(EditorTest, DatesStayWithinTheCalendarAndASeriesFollowsItsDay) {
    auto e = newOn("2024-05-06");
    e->ctlDate_Change(D("1920-01-01"));
    EXPECT_TRUE(ui.shown.value(0).startsWith("Lower range limit for dates is "));
    EXPECT_EQ(e->ctlDate, D("1925-02-22"));
    e->ctlDate_Change(D("2024-05-06"));
    e->Redo_Click(frmEditCalendar::OptionDaily);
    e->ctlDateEndRedo_Change(D("2070-01-01"));
    EXPECT_TRUE(ui.shown.value(1).startsWith("Upper range limit for dates is "));
    EXPECT_EQ(e->redoEnd, D("2069-04-15"));
    EXPECT_EQ(e->redoEndOption, EndOnDate);
    // A day outside the series moves the series' first day there.
    e->ctlDateEndRedo_Change(D("2024-05-20"));
    EXPECT_EQ(e->redoCount, 15);
    e->ctlDate_Change(D("2024-06-01"));
    EXPECT_EQ(e->redoStart, D("2024-06-01"));
    EXPECT_EQ(e->redoEnd, D("2024-06-01"));
    EXPECT_EQ(e->times.start, M("2024-06-01", 9));
}

TEST_F(EditorTest, ASeriesWithExceptedDaysOpensAsNone) {
    AppointmentRecord r;
    r.ctlAppoStart = M("2024-05-06", 9);
    r.ctlAppoEnd = M("2024-05-06", 10);
    r.ctlAlarmTime = r.ctlAppoStart;
    r.ctlRedoString = Rule(RedoDaily, 0, 1, "2024-05-06", "2024-05-20", {"2024-05-08"});
    const qint64 id = WriteAppointment(0, r);
    auto e = openRow(id);
    EXPECT_EQ(e->redoOption, frmEditCalendar::OptionNone);
    EXPECT_TRUE(e->RedoStringOut().isEmpty());
}

TEST_F(EditorTest, WeekdaysFollowTheSystemsWeek) {
    auto e = newOn("2024-05-06");
    EXPECT_EQ(e->weekdayLetter(0), "S");
    EXPECT_EQ(e->cboRedoWeekday.List(0), "Sunday");
    WeekLocale monday("de_DE");
    e = newOn("2024-05-06");
    EXPECT_EQ(e->weekdayLetter(0), "M");
    e->Redo_Click(frmEditCalendar::OptionWeekly);
    EXPECT_TRUE(e->weekFlags[0]); // Monday is first; stored as weekday 2 all the same
    EXPECT_EQ(static_cast<quint8>(e->RedoStringOut().at(1)), 1 << 2);
}

TEST_F(EditorTest, EditAssignmentsGoThroughTheControls) {
    auto e = newOn("2024-05-06");
    e->ctlSubject = "Review";
    e->SaveAppointment();
    const qint64 id = state.gEditId;
    e = openRow(id);
    QString error;
    ASSERT_TRUE(ApplyAssignments(
        *e, {{"start", "2024-05-08 13:00"}, {"alarm", "10"}, {"rule", "weekly:We+Fr,count=3"}}, &error))
        << error.toStdString();
    e->SaveAppointment();
    EXPECT_EQ(occurrences("2024-05-01", "2024-05-31"),
              (QStringList{QStringLiteral("%1 05-08 780").arg(id), QStringLiteral("%1 05-10 780").arg(id),
                           QStringLiteral("%1 05-15 780").arg(id)}));
    const AppointmentRecord r = *ReadAppointment(id);
    EXPECT_EQ(r.ctlAppoEnd - r.ctlAppoStart, 30); // the length stays
    EXPECT_EQ(r.ctlAlarmTime, r.ctlAppoStart - 10);
    e = openRow(id);
    EXPECT_FALSE(ApplyAssignments(*e, {{"colour", "red"}}, &error));
    EXPECT_EQ(error, "Unknown field of an appointment: colour");
    EXPECT_FALSE(ApplyAssignments(*e, {{"rule", "daily,except=2024-05-09"}}, &error));
    EXPECT_FALSE(ApplyAssignments(*e, {{"end", "2024-05-09 10:00"}}, &error));
}

} // namespace
