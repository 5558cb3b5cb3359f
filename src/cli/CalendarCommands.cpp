// The calendar's commands of kmd:
//
//   kmd add STORE 12 start="yyyy-MM-dd HH:mm" end="yyyy-MM-dd HH:mm" subject=TEXT
//       [location=TEXT notes=TEXT private=True allday=1 alarm=LEAD] [rule=RULE]
//     writes a new appointment or series through the calendar's one writer
//     and prints its fPK. LEAD is the alarm's lead in minutes before the start.
//     RULE is
//       KIND[:P1[:P2[:P3]]][,first=DATE][,last=DATE | ,count=N][,endkind=E][,except=DATE+DATE...]
//     with KIND and its parameters
//       0 none          a single appointment
//       1 weekly        DAYS[:INTERVAL]               DAYS Su+Mo+Tu+We+Th+Fr+Sa or 1..7 (1 Sunday)
//       2 daily         INTERVAL                      every n days
//       3 workday                                     Monday to Friday
//       4 monthly       DAY[:INTERVAL]                day of month every n months
//       5 monthlynth    ORDINAL[:WEEKDAY[:INTERVAL]]  ORDINAL 1..4, 5 or last
//       6 yearly        DAY[:MONTH]
//       7 yearlynth     ORDINAL[:WEEKDAY[:MONTH]]
//       raw:HEX         the rule string's bytes, as they are
//     A parameter left out comes from the series' first day. first= is that
//     day (default: the start's date); last= ends the series on a date (end
//     kind 2), count= after n occurrences (end kind 1), neither means no end
//     (end kind 0); endkind= sets the end bits as given; except= lists
//     excepted days. Example: rule=weekly:Mo+Th:2,last=2024-12-31
//
//   kmd occurrences STORE FROM TO [--show-private]
//     every occurrence of the days FROM to TO (yyyy-MM-dd) in the calendar's
//     order, one a line: fPK, TAB, "yyyy-MM-dd HH:mm", TAB, subject.
//
//   kmd check: the calendar's rows must agree with their records (fT1 and
//     fR3 with the start, fSub's class with the rule, fT3 the rule or seven
//     noise bytes, a series' fR4 and fR2 with its first and last day).
#include "cli/Cli.h"

#include "calendar/CALENDAR.h"
#include "calendar/CalendarText.h"
#include "platform/Engine.h"
#include "ui/LanguageUS.h"
#include "store/Users.h"
#include "store/db.h"

namespace {

constexpr int MsgUpdateImpossible = 16;

int addAppointment(cli::Context &ctx, const QStringList &assignments) {
    if (assignments.isEmpty()) {
        if (ctx.out) *ctx.out << CALENDAR::AddUsage() << Qt::endl;
        return cli::ExitUsage;
    }
    QString bad;
    const auto pairs = cli::ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail(QStringLiteral("Not of the form name=value: %1").arg(bad), cli::ExitUsage);
    QString error;
    const auto record = CALENDAR::AppointmentFromAssignments(*pairs, Users::state().User.Number, &error);
    if (!record) return ctx.fail(error + QStringLiteral("\nusage: ") + CALENDAR::AddUsage(), cli::ExitUsage);
    try {
        const qint64 id = CALENDAR::WriteAppointment(0, *record);
        if (id == 0) return ctx.fail(LanguageUS::MessageText(MsgUpdateImpossible));
        *ctx.out << id << Qt::endl;
    } catch (const km::EngineError &e) {
        return ctx.fail(QStringLiteral("%1 (%2)").arg(e.description()).arg(e.number()));
    }
    return cli::ExitOk;
}

int occurrences(cli::Context &ctx) {
    const QDate from = QDate::fromString(ctx.positional.at(1), QStringLiteral("yyyy-MM-dd"));
    const QDate to = QDate::fromString(ctx.positional.at(2), QStringLiteral("yyyy-MM-dd"));
    if (!from.isValid() || !to.isValid() || to < from)
        return ctx.fail(QStringLiteral("FROM and TO are dates yyyy-MM-dd, TO not before FROM"),
                        cli::ExitUsage);
    const int rc = cli::Login(ctx, ctx.positional.at(0), cli::Access::ReadOnly);
    if (rc != 0) return rc;
    try {
        // fPK and the time hold no tab: the subject after them is the value.
        for (const QString &line :
             CALENDAR::OccurrenceLines(db::Store(), from, to, ctx.flag(QStringLiteral("show-private"))))
            *ctx.out << line.section(QLatin1Char('\t'), 0, 1) << '\t'
                     << cli::Printable(line.section(QLatin1Char('\t'), 2)) << '\n';
        ctx.out->flush();
    } catch (const km::EngineError &e) {
        return ctx.fail(QStringLiteral("%1 (%2)").arg(e.description()).arg(e.number()));
    }
    return cli::ExitOk;
}

[[maybe_unused]] const bool calendarSectionRegistered = [] {
    cli::RegisterSectionAdd(CALENDAR::Section, addAppointment, CALENDAR::AddUsage());
    cli::RegisterSectionCheck(CALENDAR::Section, CALENDAR::CheckAppointmentRow);
    return true;
}();

const cli::Registration occurrencesCommand(
    {QStringLiteral("occurrences"),
     QStringLiteral("Prints every occurrence of the days FROM to TO in the calendar's order, one a line: "
                    "fPK, TAB, \"yyyy-MM-dd HH:mm\", TAB, subject."),
     {cli::StoreArgument(),
      {QStringLiteral("FROM"), QStringLiteral("the first day, yyyy-MM-dd")},
      {QStringLiteral("TO"), QStringLiteral("the last day, yyyy-MM-dd, not before FROM")}},
     {{QStringLiteral("show-private"), QStringLiteral("Shows private appointments too.")}},
     occurrences});

} // namespace
