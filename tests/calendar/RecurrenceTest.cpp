#include <gtest/gtest.h>

#include "CalendarTestSupport.h"
#include "calendar/Recurrence.h"
#include "calendar/RulePrompts.h"
#include "support/ScriptedDialogs.h"

using namespace CALENDAR;
using namespace km::test;

namespace {

struct ExpandCase {
    const char *name;
    QByteArray rule;
    const char *from;
    const char *to;
    QStringList expected;
};

void PrintTo(const ExpandCase &c, std::ostream *os) {
    *os << c.name;
}

class ExpandRecurrenceTest : public ::testing::TestWithParam<ExpandCase> {
protected:
    WeekLocale week{"en_US"}; // weeks from Sunday
};

TEST_P(ExpandRecurrenceTest, GivesTheRulesDays) {
    const ExpandCase &c = GetParam();
    EXPECT_EQ(Expand(c.rule, c.from, c.to), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, ExpandRecurrenceTest,
    ::testing::Values(
        // Every n days.
        ExpandCase{"daily interval 3 viewed from the 3rd starts on the 4th", Rule(RedoDaily, 0, 3, "2024-03-01"),
                   "2024-03-03", "2024-03-12", {"2024-03-04", "2024-03-07", "2024-03-10"}},
        ExpandCase{"daily across the year end up to its last day", Rule(RedoDaily, 0, 1, "2023-12-30", "2024-01-02"),
                   "2023-12-25", "2024-01-10", {"2023-12-30", "2023-12-31", "2024-01-01", "2024-01-02"}},
        ExpandCase{"daily over a leap day", Rule(RedoDaily, 0, 2, "2024-02-27"), "2024-02-26", "2024-03-04",
                   {"2024-02-27", "2024-02-29", "2024-03-02", "2024-03-04"}},
        ExpandCase{"daily with an excepted day", Rule(RedoDaily, 0, 1, "2024-05-01", nullptr, {"2024-05-03"}),
                   "2024-05-01", "2024-05-05", {"2024-05-01", "2024-05-02", "2024-05-04", "2024-05-05"}},
        ExpandCase{"daily starting inside the range", Rule(RedoDaily, 0, 2, "2024-06-10"), "2024-06-01",
                   "2024-06-15", {"2024-06-10", "2024-06-12", "2024-06-14"}},
        ExpandCase{"no end date: the stored last day is ignored",
                   [] {
                       QByteArray r = Rule(RedoDaily, 0, 7, "2024-01-01", "2024-01-10");
                       r[0] = RedoDaily; // end kind 0
                       return r;
                   }(),
                   "2024-03-01", "2024-03-31", {"2024-03-04", "2024-03-11", "2024-03-18", "2024-03-25"}},
        // Weekly on chosen days.
        ExpandCase{"Monday and Thursday every 2 weeks, a week off the phase",
                   Rule(RedoWeekly, (1 << 2) | (1 << 5), 2, "2024-01-01"), "2024-01-07", "2024-01-13", {}},
        ExpandCase{"Monday and Thursday every 2 weeks over a month",
                   Rule(RedoWeekly, (1 << 2) | (1 << 5), 2, "2024-01-01"), "2024-01-01", "2024-01-31",
                   {"2024-01-01", "2024-01-04", "2024-01-15", "2024-01-18", "2024-01-29"}},
        ExpandCase{"the Monday before a Wednesday start stays out",
                   Rule(RedoWeekly, (1 << 2) | (1 << 4), 1, "2024-01-03"), "2024-01-01", "2024-01-14",
                   {"2024-01-03", "2024-01-08", "2024-01-10"}},
        ExpandCase{"weekly with an excepted day drops that one only",
                   Rule(RedoWeekly, 1 << 3, 1, "2024-02-06", nullptr, {"2024-02-13"}), "2024-02-01", "2024-02-29",
                   {"2024-02-06", "2024-02-20", "2024-02-27"}},
        ExpandCase{"weekly across the year end with an end date", Rule(RedoWeekly, 1 << 1, 1, "2023-12-17", "2024-01-07"),
                   "2023-12-01", "2024-01-31", {"2023-12-17", "2023-12-24", "2023-12-31", "2024-01-07"}},
        // Workdays.
        ExpandCase{"workdays over a leap day", Rule(RedoWorkday, WorkdayMask, 0, "2024-02-28"), "2024-02-26",
                   "2024-03-05", {"2024-02-28", "2024-02-29", "2024-03-01", "2024-03-04", "2024-03-05"}},
        ExpandCase{"workdays with an excepted day", Rule(RedoWorkday, WorkdayMask, 0, "2024-02-28", nullptr, {"2024-02-29"}),
                   "2024-02-26", "2024-03-01", {"2024-02-28", "2024-03-01"}},
        // Monthly on a day.
        ExpandCase{"the 31st rolls on and carries its roll",
                   Rule(RedoMonthly, 31, 1, "2023-01-31"), "2023-01-01", "2023-12-31",
                   {"2023-01-31", "2023-03-03", "2023-05-01", "2023-07-01", "2023-08-31", "2023-10-01", "2023-12-01"}},
        ExpandCase{"the 30th in a leap year", Rule(RedoMonthly, 30, 1, "2024-01-30"), "2024-01-01", "2024-04-30",
                   {"2024-01-30", "2024-03-01", "2024-04-30"}},
        ExpandCase{"every 3 months viewed in phase", Rule(RedoMonthly, 15, 3, "2024-01-15"), "2024-01-01",
                   "2024-06-30", {"2024-01-15", "2024-04-15"}},
        ExpandCase{"every 3 months viewed off the phase starts on a shifted month",
                   Rule(RedoMonthly, 15, 3, "2024-01-15"), "2024-02-01", "2024-06-30", {"2024-03-15", "2024-06-15"}},
        ExpandCase{"a grid opening before the series shows a day before its first",
                   Rule(RedoMonthly, 28, 1, "2024-03-28"), "2024-02-25", "2024-04-06", {"2024-02-28", "2024-03-28"}},
        ExpandCase{"an excepted day has no effect on a monthly rule",
                   Rule(RedoMonthly, 5, 1, "2024-01-05", nullptr, {"2024-02-05"}), "2024-01-01", "2024-03-31",
                   {"2024-01-05", "2024-02-05", "2024-03-05"}},
        ExpandCase{"monthly up to its last day", Rule(RedoMonthly, 15, 1, "2024-01-15", "2024-03-15"), "2024-01-01",
                   "2024-06-30", {"2024-01-15", "2024-02-15", "2024-03-15"}},
        // Monthly on the n-th weekday.
        ExpandCase{"the last Friday, also in a month of four", Rule(RedoMonthlyNth, 6 + 8 * 5, 1, "2024-01-26"),
                   "2024-01-01", "2024-06-30",
                   {"2024-01-26", "2024-02-23", "2024-03-29", "2024-04-26", "2024-05-31", "2024-06-28"}},
        ExpandCase{"the second Tuesday every 2 months", Rule(RedoMonthlyNth, 3 + 8 * 2, 2, "2024-01-09"),
                   "2024-03-01", "2024-05-31", {"2024-03-12", "2024-05-14"}},
        ExpandCase{"the first Monday across the year end up to its last day",
                   Rule(RedoMonthlyNth, 2 + 8 * 1, 1, "2023-11-06", "2024-02-05"), "2023-11-01", "2024-03-31",
                   {"2023-11-06", "2023-12-04", "2024-01-01", "2024-02-05"}},
        // Yearly on a date.
        ExpandCase{"February 29 in a common year is March 1", Rule(RedoYearly, 29, 2, "2024-02-29"), "2025-01-01",
                   "2025-12-31", {"2025-03-01"}},
        ExpandCase{"February 29 in a leap year", Rule(RedoYearly, 29, 2, "2024-02-29"), "2028-01-01", "2028-12-31",
                   {"2028-02-29"}},
        ExpandCase{"over several years the step is the month number", Rule(RedoYearly, 3, 3, "2020-03-03"),
                   "2024-01-01", "2029-12-31", {"2024-03-03", "2027-03-03"}},
        ExpandCase{"December 31 in a grid across the year end", Rule(RedoYearly, 31, 12, "2020-12-31"), "2024-12-01",
                   "2025-01-31", {"2024-12-31"}},
        ExpandCase{"yearly after its last day", Rule(RedoYearly, 4, 7, "2020-07-04", "2023-07-04"), "2024-01-01",
                   "2024-12-31", {}},
        // Yearly on the n-th weekday.
        ExpandCase{"the fourth Thursday of November", Rule(RedoYearlyNth, 5 + 8 * 4, 11, "2020-11-26"), "2024-01-01",
                   "2024-12-31", {"2024-11-28"}},
        ExpandCase{"the last Monday of May over three years", Rule(RedoYearlyNth, 2 + 8 * 5, 5, "2020-05-25"),
                   "2024-05-01", "2026-05-31", {"2024-05-27", "2025-05-26", "2026-05-25"}},
        // Headers.
        ExpandCase{"a complemented header byte reads as its complement",
                   [] {
                       QByteArray r = Rule(RedoDaily, 0, 1, "2024-01-01", "2024-01-03");
                       r[0] = static_cast<char>(~r[0]);
                       return r;
                   }(),
                   "2024-01-01", "2024-01-31", {"2024-01-01", "2024-01-02", "2024-01-03"}},
        ExpandCase{"both end bits: nothing", [] {
                       QByteArray r = Rule(RedoDaily, 0, 1, "2024-01-01", "2024-01-03");
                       r[0] = static_cast<char>(RedoDaily | 24);
                       return r;
                   }(),
                   "2024-01-01", "2024-01-31", {}},
        ExpandCase{"kind 0 with end bits: nothing", [] {
                       QByteArray r = Rule(RedoDaily, 0, 1, "2024-01-01", "2024-01-03");
                       r[0] = 8;
                       return r;
                   }(),
                   "2024-01-01", "2024-01-31", {}},
        ExpandCase{"an even length: nothing", Rule(RedoDaily, 0, 1, "2024-01-01") + QByteArray(1, 'x'), "2024-01-01",
                   "2024-01-31", {}},
        ExpandCase{"shorter than seven: nothing", Rule(RedoDaily, 0, 1, "2024-01-01").left(5), "2024-01-01",
                   "2024-01-31", {}}));

TEST(ExpandRecurrence, AppendsMomentsWithTheMinuteOfDay) {
    std::vector<qint32> starts{7}; // what the caller had stays
    ExpandRecurrence(MomentOf(D("2024-03-01")), MomentOf(D("2024-03-02"), 1439), 615,
                     Rule(RedoDaily, 0, 1, "2024-03-01"), starts);
    EXPECT_EQ(starts,
              (std::vector<qint32>{7, MomentOf(D("2024-03-01"), 615), MomentOf(D("2024-03-02"), 615)}));
}

TEST(ExpandRecurrence, WeeksFollowTheSystemsFirstDay) {
    // Every second week on Sunday and Monday: which Sunday belongs to the
    // series' first week depends on where weeks begin.
    const QByteArray rule = Rule(RedoWeekly, (1 << 1) | (1 << 2), 2, "2024-01-07");
    {
        WeekLocale us("en_US");
        EXPECT_EQ(Expand(rule, "2024-01-01", "2024-01-31"),
                  QStringList({"2024-01-07", "2024-01-08", "2024-01-21", "2024-01-22"}));
    }
    {
        WeekLocale de("de_DE");
        EXPECT_EQ(Expand(rule, "2024-01-01", "2024-01-31"),
                  QStringList({"2024-01-07", "2024-01-15", "2024-01-21", "2024-01-29"}));
    }
}

TEST(SortOccurrences, ByStartKeepingTheOrderAtEqualStarts) {
    // Two series first (as collected), then single rows.
    std::vector<Occurrence> o{{5, 900}, {5, 60}, {7, 900}, {3, 900}, {9, 30}, {4, -1440}};
    SortOccurrences(o);
    EXPECT_EQ(o, (std::vector<Occurrence>{{4, -1440}, {9, 30}, {5, 60}, {5, 900}, {7, 900}, {3, 900}}));

    std::vector<Occurrence> none;
    SortOccurrences(none);
    EXPECT_TRUE(none.empty());
}

// ---- The week and the views ----

TEST(Week, FirstDayComesFromTheLocale) {
    {
        WeekLocale us("en_US");
        EXPECT_EQ(FirstDayOfWeek(), 1);
        EXPECT_EQ(WeekStartOf(D("2024-05-15")), D("2024-05-12"));
        for (int n = 1; n <= 7; ++n)
            EXPECT_EQ(AbsoluteWeekday(n), n);
    }
    {
        WeekLocale de("de_DE");
        EXPECT_EQ(FirstDayOfWeek(), 2);
        EXPECT_EQ(WeekStartOf(D("2024-05-15")), D("2024-05-13"));
        EXPECT_EQ(WeekStartOf(D("2024-05-19")), D("2024-05-13")); // a Sunday ends the week
        EXPECT_EQ(AbsoluteWeekday(1), 2);
        EXPECT_EQ(AbsoluteWeekday(7), 1);
        for (int w = 1; w <= 7; ++w)
            EXPECT_EQ(AbsoluteWeekday(LocalWeekday(w)), w);
    }
}

TEST(Week, ViewRangesByLocale) {
    struct Row {
        const char *locale;
        int mode;
        const char *first, *last;
    };
    const Row rows[] = {
        {"en_US", ViewDay, "2024-05-15", "2024-05-15"},  {"en_US", ViewWorkWeek, "2024-05-13", "2024-05-17"},
        {"en_US", ViewWeek, "2024-05-12", "2024-05-18"}, {"en_US", ViewMonth, "2024-04-28", "2024-06-08"},
        {"en_US", ViewYear, "2024-01-01", "2024-12-31"}, {"de_DE", ViewWorkWeek, "2024-05-13", "2024-05-17"},
        {"de_DE", ViewWeek, "2024-05-13", "2024-05-19"}, {"de_DE", ViewMonth, "2024-04-29", "2024-06-09"},
    };
    for (const Row &r : rows) {
        WeekLocale week(r.locale);
        const DateRange range = ViewRange(D("2024-05-15"), r.mode);
        EXPECT_EQ(range.first, D(r.first)) << r.locale << " mode " << r.mode;
        EXPECT_EQ(range.last, D(r.last)) << r.locale << " mode " << r.mode;
    }
}

// ---- Date helpers of the rule dialog ----

TEST(NthWeekdayInMonth, OrdinalFiveIsTheLastAndZeroesComeFromTheDate) {
    ScriptedDialogs ui; // computation only: nothing may be shown
    struct Row {
        int ordinal, weekday;
        const char *from, *day;
        bool early;
    };
    const Row rows[] = {
        {5, 6, "2024-02-10", "2024-02-23", false}, // February 2024 has four Fridays
        {5, 6, "2024-02-25", "2024-02-23", false}, // the last by stepping back is never early
        {5, 6, "2024-03-30", "2024-03-29", true},  // a fifth Friday exists: early
        {1, 2, "2024-03-10", "2024-03-04", true},
        {1, 2, "2024-03-04", "2024-03-04", false}, // on the date itself
        {2, 1, "2024-12-01", "2024-12-08", false},
    };
    for (const Row &r : rows) {
        int ordinal = r.ordinal, weekday = r.weekday;
        const NthWeekday found = NthWeekdayInMonth(ordinal, weekday, D(r.from));
        EXPECT_EQ(found.date, D(r.day)) << r.from;
        EXPECT_EQ(found.early, r.early) << r.from;
    }

    int ordinal = 0, weekday = 0;
    EXPECT_EQ(NthWeekdayInMonth(ordinal, weekday, D("2024-02-15")).date, D("2024-02-15")); // third Thursday
    EXPECT_EQ(ordinal, 3);
    EXPECT_EQ(weekday, 5);
    EXPECT_EQ(WeekOrdinalOfDate(D("2024-02-07")), 1);
    EXPECT_EQ(WeekOrdinalOfDate(D("2024-02-08")), 2);
    EXPECT_EQ(WeekOrdinalOfDate(D("2024-01-31")), 5);
    EXPECT_TRUE(ui.shown.isEmpty());
}

TEST(AskNthWeekdayFrom, AsksOnlyForAnEarlyDayYesMovesToTheNextMonthNoKeepsIt) {
    ScriptedDialogs ui;
    int ordinal = 1, weekday = 2; // the first Monday, 2024-03-04, lies before the date
    QDate from = D("2024-03-10");
    ui.answer(km::Answer::Yes);
    EXPECT_EQ(AskNthWeekdayFrom(ui, ordinal, weekday, from), D("2024-04-01"));
    EXPECT_EQ(from, D("2024-04-01"));
    ASSERT_EQ(ui.shown.size(), 1);
    EXPECT_TRUE(ui.shown.first().startsWith(QStringLiteral("No date fullfilling criteria")));

    from = D("2024-03-10");
    ui.answer(km::Answer::No);
    EXPECT_EQ(AskNthWeekdayFrom(ui, ordinal, weekday, from), D("2024-03-04"));
    EXPECT_EQ(from, D("2024-03-10"));
    EXPECT_EQ(ui.shown.size(), 2);

    from = D("2024-03-01");
    EXPECT_EQ(AskNthWeekdayFrom(ui, ordinal, weekday, from), D("2024-03-04"));
    ordinal = 5;
    weekday = 6;
    from = D("2024-02-25");
    EXPECT_EQ(AskNthWeekdayFrom(ui, ordinal, weekday, from), D("2024-02-23"));
    EXPECT_EQ(ui.shown.size(), 2);
}

TEST(RuleDialogHelpers, NthOccurrencesAndTheirCount) {
    WeekLocale us("en_US");
    // Weekdays here are in the system's week order: with weeks from Sunday, Tuesday is 3.
    EXPECT_EQ(NthOccurrenceDate(D("2024-01-10"), 2, 3, 3, "m", 1, 0), D("2024-03-12"));
    EXPECT_EQ(NthOccurrenceDate(D("2024-01-10"), 4, 5, 2, "yyyy", 1, 11), D("2025-11-27"));
    EXPECT_EQ(CountNthOccurrences(D("2024-01-09"), 2, 3, D("2024-06-30"), "m", 1), 6);
    EXPECT_EQ(CountNthOccurrences(D("2024-01-09"), 2, 3, D("2024-06-10"), "m", 1), 5);
    EXPECT_EQ(CountNthOccurrences(D("2024-01-09"), 2, 3, D("2024-06-30"), "m", 2), 3);
}

TEST(RuleDialogHelpers, WeeklyEndDateAndCountAgree) {
    WeekLocale us("en_US");
    WeekFlags monThu{};
    monThu[1] = monThu[4] = true;
    struct Row {
        const char *start;
        int count, interval;
        const char *end, *movedStart;
    };
    const Row rows[] = {
        {"2024-01-01", 5, 1, "2024-01-15", "2024-01-01"}, // ends in a partial week
        {"2024-01-01", 4, 1, "2024-01-11", "2024-01-01"}, // ends on the last flagged day of a full week
        {"2024-01-01", 5, 2, "2024-01-29", "2024-01-01"}, // the same days the expansion gives
        {"2023-12-31", 5, 1, "2024-01-15", "2024-01-01"}, // a Sunday start moves to the Monday
    };
    for (const Row &r : rows) {
        QDate start = D(r.start);
        const QDate end = WeeklyEndDate(start, r.count, r.interval, monThu);
        EXPECT_EQ(end, D(r.end)) << r.start << " x" << r.count;
        EXPECT_EQ(start, D(r.movedStart));
        if (r.interval == 1) {
            QDate again = D(r.start);
            EXPECT_EQ(CountWeeklyOccurrences(again, end, monThu, r.interval), r.count) << r.start;
        }
    }
}

TEST(RuleDialogHelpers, UpperDateLimitAndMonthEnds) {
    WeekLocale us("en_US");
    ScriptedDialogs ui;
    EXPECT_FALSE(IsPastUpperLimit(D("2069-04-15")));
    EXPECT_TRUE(IsPastUpperLimit(D("2069-04-16")));
    EXPECT_EQ(ClampUpperDate(D("2069-04-15")), D("2069-04-15"));
    EXPECT_EQ(ClampUpperDate(D("2070-01-01")), D("2069-04-15"));
    EXPECT_TRUE(ui.shown.isEmpty());

    EXPECT_EQ(ClampUpperDateTelling(ui, D("2069-04-15")), D("2069-04-15"));
    EXPECT_TRUE(ui.shown.isEmpty());
    EXPECT_EQ(ClampUpperDateTelling(ui, D("2069-04-16")), D("2069-04-15"));
    EXPECT_EQ(ui.shown, QStringList({QStringLiteral("Upper range limit for dates is 4/15/69")}));

    EXPECT_EQ(FirstOfMonth(D("2024-02-17")), D("2024-02-01"));
    EXPECT_EQ(LastOfMonth(D("2024-02-17")), D("2024-02-29"));
    EXPECT_EQ(LastOfMonth(D("2023-02-17")), D("2023-02-28"));
}

} // namespace
