#include <gtest/gtest.h>

#include "CalendarTestSupport.h"
#include "calendar/frmCalendar.h"
#include "store/Startvariables.h"
#include "support/SectionFixture.h"
#include "ui/LanguageUS.h"

using namespace CALENDAR;
using namespace km::test;

namespace {

qint32 At(const char *date, const char *time) {
    const QTime t = QTime::fromString(QString::fromLatin1(time), QStringLiteral("HH:mm"));
    return MomentOf(D(date), t.hour() * 60 + t.minute());
}

class CalendarView : public SectionFixture {
protected:
    void SetUp() override {
        SectionFixture::SetUp();
        Startvariables::state() = {};
        Startvariables::state().CalView = ViewDay;
        view = std::make_unique<frmCalendar>(context());
        view->Form_Load();
        view->visibleWidth = HourGutter + 7 * 1800; // a week's columns of 1800 units
    }
    void TearDown() override {
        view.reset();
        SectionFixture::TearDown();
    }

    qint64 add(const char *date, const char *from, const char *to, const char *subject,
               const QByteArray &rule = {}, bool isPrivate = false, bool allDay = false) {
        AppointmentRecord r;
        r.UserNumber = 1;
        r.ctlAppoStart = allDay ? At(date, "00:00") : At(date, from);
        r.ctlAppoEnd = allDay ? r.ctlAppoStart + MinutesPerDay : At(date, to);
        r.ctlAllday = allDay ? 1 : 0;
        r.ctlAlarmTime = r.ctlAppoStart;
        r.ctlSubject = QString::fromUtf8(subject);
        r.ctlPrivate = isPrivate;
        r.ctlRedoString = rule;
        return WriteAppointment(0, r);
    }
    qint64 addAllDay(const char *date, const char *subject) { return add(date, "", "", subject, {}, false, true); }

    // Shows the day (or the mode's range around it) with everything collected anew.
    void show(const char *date, int mode = ViewDay) {
        view->calView_Click(mode);
        view->SetDate(D(date));
        view->state.gCalendarDirty = true;
        view->DrawAppointments();
    }
    // "subject slot/columns" of each box in layout order.
    QStringList layout() const {
        QStringList out;
        for (const CalendarBox &b : view->boxes)
            out << QStringLiteral("%1 %2/%3").arg(b.subject).arg(b.slot).arg(b.columns);
        return out;
    }
    const CalendarBox &box(const char *subject) const {
        for (const CalendarBox &b : view->boxes)
            if (b.subject == QString::fromUtf8(subject)) return b;
        throw std::logic_error("no such box");
    }
    int indexOf(const char *subject) const { return static_cast<int>(&box(subject) - view->boxes.data()); }
    // A press in the middle of a box's top row, a drag by (dx, dy), a release.
    bool dragBy(const char *subject, double dx, double dy, bool toStrip = false) {
        const CalendarBox &b = box(subject);
        const double x = b.box.left + 100, y = b.box.top + 10;
        view->BoxPress(indexOf(subject), x, y);
        view->DragMove(x + dx / 2, y + dy / 2, toStrip);
        return view->DragRelease(x + dx, y + dy, toStrip);
    }
    AppointmentRecord row(qint64 id) { return ReadAppointment(id).value(); }

    std::unique_ptr<frmCalendar> view;
};

// ---- The overlap step ----

TEST_F(CalendarView, OverlapGroupsTakeColumnsAsTheLayoutStepPlacesThem) {
    add("2024-05-06", "09:00", "10:00", "a");
    add("2024-05-06", "09:15", "09:45", "b");
    add("2024-05-06", "09:30", "10:30", "c");
    add("2024-05-06", "09:50", "10:10", "d"); // reuses column 2, where b has ended
    add("2024-05-06", "10:30", "11:00", "e"); // touches c's end: a group of its own
    add("2024-05-06", "12:00", "13:00", "f");
    add("2024-05-06", "12:00", "12:30", "g"); // equal starts: the later saved stands right
    show("2024-05-06");
    EXPECT_EQ(layout(), (QStringList{"a 1/3", "b 2/3", "c 3/3", "d 2/3", "e 1/1", "f 1/2", "g 2/2"}));
}

TEST_F(CalendarView, OverlapReusesAColumnFromItsEndAndAllDayBoxesEndGroups) {
    // d starts as c ends: c's column is free again.
    add("2024-05-06", "09:00", "11:00", "a");
    add("2024-05-06", "09:00", "09:30", "c");
    add("2024-05-06", "09:30", "10:00", "d");
    add("2024-05-06", "09:45", "10:15", "e"); // no column free: a third
    show("2024-05-06");
    EXPECT_EQ(layout(), (QStringList{"a 1/3", "c 2/3", "d 2/3", "e 3/3"}));

    // A timed box after an all-day box of the same day starts a group of its own.
    add("2024-05-07", "", "", "all", {}, false, true);
    add("2024-05-07", "00:00", "01:00", "night");
    show("2024-05-07");
    EXPECT_EQ(layout(), (QStringList{"all 1/1", "night 1/1"}));
}

TEST_F(CalendarView, AllDayBoxesOfOneDayShareTheStripAndWeekColumnsStaySeparate) {
    const WeekLocale week("de_DE"); // Monday first
    addAllDay("2024-05-07", "x");
    addAllDay("2024-05-07", "y");
    addAllDay("2024-05-07", "z");
    addAllDay("2024-05-09", "w");
    add("2024-05-07", "09:00", "10:00", "t1");
    add("2024-05-09", "09:30", "10:00", "t2"); // another day: no overlap with t1
    show("2024-05-07", ViewWeek);
    EXPECT_EQ(view->range.first, D("2024-05-06"));
    EXPECT_EQ(layout(), (QStringList{"x 1/3", "y 2/3", "z 3/3", "t1 1/1", "w 1/1", "t2 1/1"}));
    // Side by side within the day column, less the margin.
    const double cw = view->colWidth();
    EXPECT_DOUBLE_EQ(box("y").box.left, HourGutter + cw + BoxIndent + (cw - BoxMargin) / 3);
    EXPECT_DOUBLE_EQ(box("y").box.width, (cw - BoxMargin) / 3);
    EXPECT_DOUBLE_EQ(box("w").rect.left, HourGutter + 3 * cw);
}

TEST_F(CalendarView, PrivateBoxesStayOutOfViewAndLayoutWhileHidden) {
    add("2024-05-06", "09:00", "10:00", "open");
    add("2024-05-06", "09:30", "10:30", "secret", {}, true);
    shell.showPrivate = false;
    show("2024-05-06");
    EXPECT_EQ(layout(), (QStringList{"open 1/1"}));
    shell.showPrivate = true;
    view->HideShow();
    EXPECT_EQ(layout(), (QStringList{"open 1/2", "secret 2/2"}));
    EXPECT_EQ(BoxMarks(box("secret")), QStringLiteral("B"));
}

TEST_F(CalendarView, BoxRectangleFollowsTheSlotRows) {
    Startvariables::state().CalSlotMinutes = 15;
    view->Form_Load();
    add("2024-05-06", "09:30", "10:15", "a");
    add("2024-05-06", "23:00", "23:59", "late");
    show("2024-05-06");
    EXPECT_EQ(view->rowsPerHour(), 4);
    EXPECT_DOUBLE_EQ(box("a").rect.top, 4 * 9.5 * RowHeight);
    EXPECT_DOUBLE_EQ(box("a").rect.height, 3 * RowHeight);
    EXPECT_DOUBLE_EQ(view->gridHeight(), 4 * 7920.0);
    // A series occurrence carries the series' marks and its own day.
    add("2024-05-01", "08:00", "08:30", "daily", Rule(RedoDaily, 0, 1, "2024-05-01"));
    show("2024-05-06");
    EXPECT_EQ(BoxMarks(box("daily")), QStringLiteral("C"));
    EXPECT_EQ(box("daily").start, At("2024-05-06", "08:00"));
}

// ---- Points, drags and drops ----

TEST_F(CalendarView, PointToMomentRefusesTheGutterAndCountsRows) {
    show("2024-05-06", ViewDay);
    const double cw = view->colWidth();
    EXPECT_FALSE(view->PointToMoment(HourGutter - 1, 0, false));
    EXPECT_FALSE(view->PointToMoment(HourGutter + cw + 1, 0, false));
    EXPECT_EQ(view->PointToMoment(HourGutter + 1, 18 * RowHeight + 329, false), At("2024-05-06", "09:00"));
    EXPECT_EQ(view->state.gEditAllDay, 0);
    EXPECT_EQ(view->PointToMoment(HourGutter + 1, 5000, true), At("2024-05-06", "00:00"));
    EXPECT_EQ(view->state.gEditAllDay, 1);
}

TEST_F(CalendarView, DropSnapsToTheNearestRowAndWritesTheNewTimes) {
    const qint64 id = add("2024-05-06", "09:00", "10:00", "a");
    show("2024-05-06");
    // Down by one row and a half less a unit: rest 164, stays one row down.
    EXPECT_TRUE(dragBy("a", 0, RowHeight + 164));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "09:30"));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-06", "10:30"));
    // Rest 166: snaps to the row after.
    EXPECT_TRUE(dragBy("a", 0, RowHeight + 166));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "10:30"));
    EXPECT_EQ(box("a").start, At("2024-05-06", "10:30"));
}

TEST_F(CalendarView, ClicksRefusedDropsAndTheOtherFrameLeaveTheRowAsItWas) {
    const qint64 id = add("2024-05-06", "09:00", "10:00", "a");
    show("2024-05-06");
    // Within the 30-unit square: a click.
    EXPECT_FALSE(dragBy("a", 30, -30));
    // The box's middle left of the hour labels.
    EXPECT_FALSE(dragBy("a", -box("a").box.width / 2 - 200, 2 * RowHeight));
    // A timed box dropped on the all-day strip only ends the drag.
    EXPECT_FALSE(dragBy("a", 0, -5 * RowHeight, true));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "09:00"));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-06", "10:00"));
}

TEST_F(CalendarView, DropNearMidnightKeepsTheBoxWithinTheDay) {
    const qint64 id = add("2024-05-06", "20:00", "22:00", "a");
    show("2024-05-06");
    EXPECT_TRUE(dragBy("a", 0, 20 * RowHeight));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "22:00"));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-07", "00:00"));
}

TEST_F(CalendarView, DragToAnotherDayMovesTheRowAndTheCalendarFollows) {
    const WeekLocale week("de_DE");
    const qint64 id = add("2024-05-06", "09:10", "09:50", "a");
    show("2024-05-06", ViewWeek);
    // Two columns right, same rows: the minutes off the slot grid stay.
    EXPECT_TRUE(dragBy("a", 2 * view->colWidth(), 0));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-08", "09:10"));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-08", "09:50"));
    EXPECT_EQ(view->state.calDate, D("2024-05-08"));
}

TEST_F(CalendarView, DraggedSeriesOccurrenceKeepsTheRuleDaysAndTakesTheNewTime) {
    const WeekLocale week("de_DE");
    const qint64 id = add("2024-05-01", "08:00", "09:00", "weekly", Rule(RedoWeekly, 1 << 2, 1, "2024-05-01"));
    show("2024-05-06", ViewWeek); // Monday 6th is one of its days
    EXPECT_TRUE(dragBy("weekly", view->colWidth(), 4 * RowHeight));
    const AppointmentRecord r = row(id);
    EXPECT_EQ(r.ctlAppoStart, At("2024-05-01", "10:00")) << "the series keeps its first day";
    EXPECT_EQ(r.ctlAppoEnd, At("2024-05-01", "11:00"));
    view->SetDate(D("2024-05-06"));
    ASSERT_EQ(view->boxes.size(), 1u);
    EXPECT_EQ(view->boxes[0].start, At("2024-05-06", "10:00")) << "still on Monday";
}

TEST_F(CalendarView, ResizeMovesTheEndByRowsAndKeepsOneRow) {
    const qint64 id = add("2024-05-06", "09:00", "10:00", "a");
    show("2024-05-06");
    const auto resize = [&](double dy) {
        const CalendarBox &b = box("a");
        const double y = b.box.bottom() - 100;
        EXPECT_TRUE(view->InResizeZone(indexOf("a"), y));
        view->BoxPress(indexOf("a"), b.box.left + 100, y);
        EXPECT_EQ(view->drag.kind, frmCalendar::DragKind::Resize);
        return view->DragRelease(b.box.left + 100, y + dy, false);
    };
    EXPECT_TRUE(resize(2 * RowHeight));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "09:00"));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-06", "11:00"));
    EXPECT_TRUE(resize(-20 * RowHeight));
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-06", "09:30")) << "one row stays";
    // Above the zone a press moves.
    const CalendarBox &b = box("a");
    EXPECT_FALSE(view->InResizeZone(indexOf("a"), b.box.bottom() - ResizeZone - 1));
}

TEST_F(CalendarView, AllDayBoxMovesByWholeDaysWithinTheStrip) {
    const WeekLocale week("de_DE");
    const qint64 id = addAllDay("2024-05-07", "trip");
    show("2024-05-07", ViewWeek);
    const CalendarBox &b = box("trip");
    view->BoxPress(indexOf("trip"), b.box.left + 10, 100);
    EXPECT_EQ(view->drag.kind, frmCalendar::DragKind::MoveAllDay);
    EXPECT_TRUE(view->DragRelease(b.box.left + 10 + 3 * view->colWidth(), 100, true));
    const AppointmentRecord r = row(id);
    EXPECT_EQ(r.ctlAppoStart, At("2024-05-10", "00:00"));
    EXPECT_EQ(r.ctlAppoEnd, At("2024-05-11", "00:00"));
    EXPECT_EQ(r.ctlAllday, 1);
}

TEST_F(CalendarView, SaveBoxChangeModesWriteOnlyTheirFields) {
    AppointmentRecord r;
    r.UserNumber = 1;
    r.ctlAppoStart = At("2024-05-06", "09:00");
    r.ctlAppoEnd = At("2024-05-06", "10:00");
    r.ctlAlarmYN = 1;
    r.ctlAlarmTime = r.ctlAppoStart - 15;
    r.ctlSubject = QStringLiteral("meeting");
    r.ctlNotes = QStringLiteral("bring slides");
    const qint64 id = WriteAppointment(0, r);
    show("2024-05-06");
    ASSERT_TRUE(view->SaveBoxChange(0, frmCalendar::ModeEnd, At("2024-05-06", "11:00"), At("2024-05-06", "12:00")));
    EXPECT_EQ(row(id).ctlAppoStart, r.ctlAppoStart) << "mode 1 writes only the end";
    EXPECT_EQ(row(id).ctlAppoEnd, At("2024-05-06", "12:00"));
    ASSERT_TRUE(view->SaveBoxChange(0, frmCalendar::ModeMove, At("2024-05-06", "14:00"), At("2024-05-06", "15:00")));
    AppointmentRecord moved = row(id);
    EXPECT_EQ(moved.ctlAppoStart, At("2024-05-06", "14:00"));
    EXPECT_EQ(moved.ctlAlarmTime, At("2024-05-06", "13:45")) << "the alarm keeps its lead";
    EXPECT_EQ(moved.ctlNotes, QStringLiteral("bring slides"));
    ASSERT_TRUE(view->SaveBoxChange(0, frmCalendar::ModeSubject, 0, 0, QStringLiteral("renamed")));
    EXPECT_EQ(row(id).ctlSubject, QStringLiteral("renamed"));
    EXPECT_EQ(row(id).ctlAppoStart, At("2024-05-06", "14:00"));
}

// ---- Creation, editor, delete, dates ----

TEST_F(CalendarView, DoubleClickFillsTheRequestAndRedrawsWhatTheEditorSaved) {
    show("2024-05-06");
    CalendarState seen;
    view->openEditor = [&] {
        seen = view->state;
        AppointmentRecord r;
        r.ctlAppoStart = view->state.gEditStart;
        r.ctlAppoEnd = view->state.gEditEnd;
        r.ctlSubject = QStringLiteral("new");
        WriteAppointment(0, r);
        view->state.gCalendarDirty = true;
        view->state.gGotoDate = D("2024-05-06");
    };
    view->NewAppointmentAt(HourGutter + 10, 29 * RowHeight + 5, false);
    EXPECT_TRUE(seen.gEditIsNew);
    EXPECT_EQ(seen.gEditStart, At("2024-05-06", "14:30"));
    EXPECT_EQ(seen.gEditEnd, At("2024-05-06", "15:00"));
    EXPECT_EQ(layout(), (QStringList{"new 1/1"}));
    EXPECT_EQ(view->state.gEditStart, 0) << "reset after the editor";

    // A double-click on the box opens it with its occurrence.
    view->openEditor = [&] { seen = view->state; };
    view->OpenBox(0);
    EXPECT_FALSE(seen.gEditIsNew);
    EXPECT_EQ(seen.gEditId, view->boxes[0].id);
    EXPECT_EQ(seen.gEditStart, At("2024-05-06", "14:30"));

    // A selected range of rows gives start and end to New Appointment.
    view->SelectArea(HourGutter + 10, 20 * RowHeight, HourGutter + 10, 23 * RowHeight + 1, false);
    view->mnuNewAppointment(false);
    EXPECT_EQ(seen.gEditStart, At("2024-05-06", "10:00"));
    EXPECT_EQ(seen.gEditEnd, At("2024-05-06", "12:00"));
    // Without a selection the editor starts from the calendar's date.
    view->ClearSelection();
    view->menuCommand(QStringLiteral("mnuCalendarNewAllday"), -1, QString());
    EXPECT_EQ(seen.gEditStart, 0);
    EXPECT_EQ(seen.gEditAllDay, 1);
}

TEST_F(CalendarView, ListDropMakesARowOfOneSlotOrAnAllDayRow) {
    show("2024-05-06");
    const qint64 timed = view->CreateAppointmentRow(QStringLiteral("Call Ann"), HourGutter + 5, 16 * RowHeight, false);
    const AppointmentRecord r = row(timed);
    EXPECT_EQ(r.ctlAppoStart, At("2024-05-06", "08:00"));
    EXPECT_EQ(r.ctlAppoEnd, At("2024-05-06", "08:30"));
    EXPECT_EQ(r.ctlSubject, QStringLiteral("Call Ann"));
    EXPECT_FALSE(r.ctlPrivate);
    EXPECT_EQ(r.ctlAlarmYN, 0);
    const qint64 allDay = view->CreateAppointmentRow(QStringLiteral("Holiday"), HourGutter + 5, 0, true);
    EXPECT_EQ(row(allDay).ctlAllday, 1);
    EXPECT_EQ(layout(), (QStringList{"Holiday 1/1", "Call Ann 1/1"}));
    EXPECT_EQ(view->CreateAppointmentRow(QStringLiteral("x"), HourGutter - 5, 0, false), 0);
}

TEST_F(CalendarView, DeleteAsksMessageSevenAndTakesTheWholeSeries) {
    add("2024-05-01", "08:00", "09:00", "daily", Rule(RedoDaily, 0, 1, "2024-05-01"));
    add("2024-05-06", "10:00", "11:00", "single");
    show("2024-05-06");
    ASSERT_EQ(view->ContextMenuAt(box("daily").box.left + 5, box("daily").box.top + 5, false),
              QStringLiteral("mnuCalendarAppoRC"));
    ui.answer(km::Answer::No);
    view->menuCommand(QStringLiteral("mnuCalendarAppoRCDelete"), -1, QString());
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(7));
    EXPECT_EQ(layout(), (QStringList{"daily 1/1", "single 1/1"}));
    ui.answer(km::Answer::Yes);
    EXPECT_TRUE(view->DeleteBox(indexOf("daily")));
    EXPECT_EQ(layout(), (QStringList{"single 1/1"}));
    EXPECT_TRUE(CollectOccurrences(store(), D("2024-05-01"), D("2024-05-31")).size() == 1u);
    // The grid's own menu over empty space selects the slot.
    EXPECT_EQ(view->ContextMenuAt(HourGutter + 5, 2 * RowHeight, false), QStringLiteral("mnuCalendarRC"));
    EXPECT_TRUE(view->selection.active);
}

TEST_F(CalendarView, DateChangesRespectTheLimitsAndMoveTheRange) {
    const WeekLocale week("de_DE");
    show("2024-05-08", ViewWeek);
    EXPECT_EQ(view->range.first, D("2024-05-06"));
    EXPECT_EQ(view->range.last, D("2024-05-12"));
    view->calView_Click(ViewWorkWeek);
    EXPECT_EQ(view->range.last, D("2024-05-10"));
    EXPECT_EQ(Startvariables::state().CalView, ViewWorkWeek);
    EXPECT_FALSE(view->SetDate(D("1925-02-21")));
    EXPECT_TRUE(ui.shown.last().startsWith(LanguageUS::MessageText(149)));
    EXPECT_FALSE(view->SetDate(D("2069-04-15")));
    EXPECT_TRUE(ui.shown.last().startsWith(LanguageUS::MessageText(150)));
    EXPECT_EQ(view->state.calDate, D("2024-05-08"));
    EXPECT_TRUE(view->SetDate(D("2069-04-14")));
    view->cmdToday_Click();
    EXPECT_EQ(view->state.calDate, D("2024-05-06")); // the fixture's clock
    view->Step(1);
    EXPECT_EQ(view->range.first, D("2024-05-13"));
}

} // namespace
