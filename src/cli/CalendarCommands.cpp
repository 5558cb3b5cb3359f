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
//   kmd edit STORE ID NAME=VALUE...
//     changes an appointment or series through the appointment editor: the
//     row is loaded as the editor loads it, each field goes through the
//     control it names, and the editor's save writes it (nothing when nothing
//     changed). The names are those of add; alarm=none unticks the alarm and
//     rule=none ends the series as a single appointment.
//
//   kmd occurrences STORE FROM TO [--show-private]
//     every occurrence of the days FROM to TO (yyyy-MM-dd) in the calendar's
//     order, one a line: fPK, TAB, "yyyy-MM-dd HH:mm", TAB, subject.
//
//   kmd move STORE ID FROM_START NEW_START [--end NEW_END]
//     what a drag of the occurrence of ID that starts at FROM_START does: the
//     row (a series: its time of day) moves to NEW_START, keeping its length
//     unless --end gives the new end; with NEW_START equal to FROM_START only
//     the end changes. Moments "yyyy-MM-dd HH:mm".
//
//   kmd layout STORE DATE --view day|workweek|week [--show-private]
//     the boxes of the view of DATE in the order the window lays them out:
//     fPK, start, end, allday (0/1), boxSlot, boxColumns, marks (A alarm,
//     B private, C recurring, G notes) and subject, TAB-separated.
//
//   kmd check: the calendar's rows must agree with their records (fT1 and
//     fR3 with the start, fSub's class with the rule, fT3 the rule or seven
//     noise bytes, a series' fR4 and fR2 with its first and last day).
#include "cli/Cli.h"

#include "calendar/CALENDAR.h"
#include "calendar/CalendarText.h"
#include "calendar/frmEditCalendar.h"
#include "calendar/frmCalendar.h"
#include "shell/BasicShell.h"
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
        const qint64 id =
            CALENDAR::SaveAppointmentRecord(0, true, CALENDAR::AppointmentRecord{}, *record, record->UserNumber).id;
        if (id == 0) return ctx.fail(LanguageUS::MessageText(MsgUpdateImpossible));
        *ctx.out << id << Qt::endl;
    } catch (const km::EngineError &e) {
        return ctx.fail(QStringLiteral("%1 (%2)").arg(e.description()).arg(e.number()));
    }
    return cli::ExitOk;
}

int editAppointment(cli::Context &ctx, qint64 id, const QStringList &assignments) {
    QString bad;
    const auto pairs = cli::ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail(QStringLiteral("Not of the form name=value: %1").arg(bad), cli::ExitUsage);
    try {
        const auto stored = CALENDAR::ReadAppointment(id);
        if (!stored) return ctx.fail(LanguageUS::MessageText(31));
        // The editor opens the row as the calendar opens it on its first occurrence.
        CALENDAR::CalendarState state;
        state.gEditIsNew = false;
        state.gEditId = id;
        state.gEditStart = stored->ctlAppoStart;
        state.gEditEnd = stored->ctlAppoEnd;
        km::BasicShell shell;
        CALENDAR::frmEditCalendar editor(shell.context(), state);
        if (!editor.Form_Activate()) return cli::ExitFailure;
        QString error;
        if (!CALENDAR::ApplyAssignments(editor, *pairs, &error))
            return ctx.fail(error + QStringLiteral("\nusage: ") + CALENDAR::EditUsage(), cli::ExitUsage);
        editor.SaveAppointment();
        if (!editor.closeRequested) return cli::ExitFailure; // the editor refused the save and said why
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

std::optional<qint32> momentArgument(const QString &text) {
    const QDateTime t = QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd HH:mm"));
    if (!t.isValid()) return std::nullopt;
    return CALENDAR::MomentOf(t.date(), t.time().hour() * 60 + t.time().minute());
}

int moveOccurrence(cli::Context &ctx) {
    bool idOk = false;
    const qint64 id = ctx.positional.at(1).toLongLong(&idOk);
    const auto from = momentArgument(ctx.positional.at(2));
    const auto to = momentArgument(ctx.positional.at(3));
    const auto endText = ctx.value(QStringLiteral("end"));
    const auto end = endText ? momentArgument(*endText) : std::nullopt;
    if (!idOk || !from || !to || (endText && !end))
        return ctx.fail(QStringLiteral("ID is a number; FROM_START, NEW_START and NEW_END are \"yyyy-MM-dd HH:mm\""),
                        cli::ExitUsage);
    const int rc = cli::Login(ctx, ctx.positional.at(0));
    if (rc != 0) return rc;
    try {
        km::BasicShell shell;
        CALENDAR::frmCalendar view(shell.context());
        QString why;
        if (!view.MoveOccurrence(id, *from, *to, end, &why)) return ctx.fail(why);
    } catch (const km::EngineError &e) {
        return ctx.fail(QStringLiteral("%1 (%2)").arg(e.description()).arg(e.number()));
    }
    return cli::ExitOk;
}

// Where the subject starts in a layout line: after its seventh tab.
qsizetype subjectColumn(const QString &line) {
    qsizetype at = 0;
    for (int tabs = 0; tabs < 7; ++tabs) {
        const qsizetype tab = line.indexOf(QLatin1Char('\t'), at);
        if (tab < 0) return 0;
        at = tab + 1;
    }
    return at;
}

int layout(cli::Context &ctx) {
    const QDate date = QDate::fromString(ctx.positional.at(1), QStringLiteral("yyyy-MM-dd"));
    const QString viewName = ctx.value(QStringLiteral("view")).value_or(QString());
    static const QStringList views = {QStringLiteral("day"), QStringLiteral("workweek"), QStringLiteral("week")};
    const int mode = static_cast<int>(views.indexOf(viewName));
    if (!date.isValid() || mode < 0)
        return ctx.fail(QStringLiteral("DATE is yyyy-MM-dd; --view is day, workweek or week"), cli::ExitUsage);
    const int rc = cli::Login(ctx, ctx.positional.at(0), cli::Access::ReadOnly);
    if (rc != 0) return rc;
    try {
        km::BasicShell shell;
        for (const QString &line :
             CALENDAR::LayoutLines(shell.context(), date, mode, ctx.flag(QStringLiteral("show-private")))) {
            // The subject is the last column and the only one the person typed.
            const qsizetype cut = subjectColumn(line);
            *ctx.out << line.left(cut) << cli::Printable(line.mid(cut)) << '\n';
        }
        ctx.out->flush();
    } catch (const km::EngineError &e) {
        return ctx.fail(QStringLiteral("%1 (%2)").arg(e.description()).arg(e.number()));
    }
    return cli::ExitOk;
}

[[maybe_unused]] const bool calendarSectionRegistered = [] {
    cli::RegisterSectionAdd(CALENDAR::Section, addAppointment, CALENDAR::AddUsage());
    cli::RegisterSectionEdit(CALENDAR::Section, editAppointment, CALENDAR::EditUsage());
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

const cli::Registration moveCommand(
    {QStringLiteral("move"),
     QStringLiteral("Moves the occurrence of ID that starts at FROM_START to NEW_START, as a drag in the "
                    "calendar does: a series keeps its days and takes the new time. The length stays unless "
                    "--end gives the new end."),
     {cli::StoreArgument(),
      {QStringLiteral("ID"), QStringLiteral("fPK of the appointment or series")},
      {QStringLiteral("FROM_START"), QStringLiteral("the occurrence's start, \"yyyy-MM-dd HH:mm\"")},
      {QStringLiteral("NEW_START"), QStringLiteral("its new start, \"yyyy-MM-dd HH:mm\"")}},
     {{QStringLiteral("end"), QStringLiteral("The new end, \"yyyy-MM-dd HH:mm\"."), QStringLiteral("NEW_END")}},
     moveOccurrence});

const cli::Registration layoutCommand(
    {QStringLiteral("layout"),
     QStringLiteral("Prints the boxes of the calendar view of DATE in layout order, one a line: fPK, start, "
                    "end, allday, boxSlot, boxColumns, marks, subject, TAB-separated, dates as "
                    "\"yyyy-MM-dd HH:mm\"."),
     {cli::StoreArgument(), {QStringLiteral("DATE"), QStringLiteral("a day of the view, yyyy-MM-dd")}},
     {{QStringLiteral("view"), QStringLiteral("The view: day, workweek or week."), QStringLiteral("VIEW")},
      {QStringLiteral("show-private"), QStringLiteral("Shows private appointments too.")}},
     layout});

} // namespace
