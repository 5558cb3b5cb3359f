// kmd for the tasks (section 15), through the task list's own model and the
// task's one save:
//
//   kmd list STORE 15 [--category ID] [--completed] [--show-private]
//     "fPK<TAB>description<TAB>due<TAB>priority<TAB>completed" a line, in the
//     list's default order; dates yyyy-MM-dd or empty, priority high, normal
//     or low. Completed tasks only with --completed, as the list's tick.
//   kmd add STORE 15 Description=... [Memo=...] [Private=True] [due=DATE]
//       [completed=DATE] [priority=high|normal|low] [category=ID]
//     prints the new fPK. due= and completed= take yyyy-MM-dd or nothing
//     (no date); completed=True means today.
//   kmd edit STORE ID NAME=VALUE...   the same names.
//   kmd check: fT1 must be the record's Description.
#include "cli/TasksCommands.h"

#include "platform/Clock.h"
#include "records/frmTodo.h"
#include "shell/BasicShell.h"
#include "shell/SessionGuards.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/db.h"
#include "calendar/CALENDAR.h"

namespace cli {

namespace {

const QString kTaskAddUsage = QStringLiteral(
    "kmd add STORE 15 Description=... [Memo=...] [Private=True] [due=yyyy-MM-dd] [completed=yyyy-MM-dd] "
    "[priority=high|normal|low] [category=ID]");

QString isoDate(const QDate &d) {
    return d.isValid() ? d.toString(Qt::ISODate) : QString();
}

bool isTrue(const QString &v) {
    return v.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || v == QLatin1String("1") ||
           v == QLatin1String("-1");
}

// A date assignment: a date, or no date for an empty value.
bool dateValue(const QString &value, bool &has, qint64 &day) {
    if (value.isEmpty()) {
        has = false;
        day = 0;
        return true;
    }
    const QDate d = QDate::fromString(value, Qt::ISODate);
    if (!d.isValid()) return false;
    has = true;
    day = CALENDAR::DayNumber(d);
    return true;
}

bool apply(km::TODO::Task &task, const QList<QPair<QString, QString>> &pairs, QString *why) {
    for (const auto &[name, value] : pairs) {
        if (name == QLatin1String("Description")) {
            task.Description = value;
        } else if (name == QLatin1String("Memo")) {
            task.Memo = value;
            task.hasNote = !value.isEmpty();
        } else if (name == QLatin1String("Private")) {
            task.Private = isTrue(value);
        } else if (name == QLatin1String("due")) {
            if (!dateValue(value, task.hasDue, task.due)) return *why = "Not a date (yyyy-MM-dd): " + value, false;
        } else if (name == QLatin1String("completed")) {
            if (isTrue(value)) {
                task.completed = true;
                task.completedDate = CALENDAR::DayNumber(km::Clock::current().dateTime().date());
            } else if (value.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
                task.completed = false;
                task.completedDate = 0;
            } else if (!dateValue(value, task.completed, task.completedDate)) {
                return *why = "Not a date (yyyy-MM-dd): " + value, false;
            }
        } else if (name == QLatin1String("priority")) {
            static const QStringList levels = {"high", "normal", "low"};
            const qsizetype level = levels.indexOf(value.toLower());
            if (level < 0) return *why = "Priorities are high, normal and low: " + value, false;
            task.priority = static_cast<int>(level);
        } else if (name == QLatin1String("category")) {
            bool ok = false;
            const int id = value.toInt(&ok);
            CATEGORIES::LoadCategories(km::TODO::Section);
            if (!ok || (id != 0 && !CATEGORIES::state().CategoryIds.contains(id)))
                return *why = "No such category: " + value, false;
            task.category = id;
        } else {
            return *why = "Tasks have no field " + name, false;
        }
    }
    return true;
}

// Applies the assignments and saves: 0 and the status in status when an
// assignment is wrong or the save was refused, else the row id.
qint64 save(Context &ctx, km::TODO::Task &task, const QStringList &assignments, int &status) {
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return status = ctx.fail("Not of the form name=value: " + bad, ExitUsage), 0;
    QString why;
    if (!apply(task, *pairs, &why)) return status = ctx.fail(why, ExitUsage), 0;
    km::BasicShell shell;
    const qint64 id = km::TODO::SaveTask(db::Store(), task, shell.userNumber());
    status = id ? ExitOk : ExitFailure;
    return id;
}

int addTask(Context &ctx, const QStringList &assignments) {
    if (assignments.isEmpty()) {
        if (ctx.out) *ctx.out << kTaskAddUsage << Qt::endl;
        return ExitUsage;
    }
    km::TODO::Task task;
    int status = ExitOk;
    const qint64 id = save(ctx, task, assignments, status);
    if (id) *ctx.out << id << '\n';
    return status;
}

int editTask(Context &ctx, qint64 id, const QStringList &assignments) {
    std::optional<km::TODO::Task> task = km::TODO::LoadTask(db::Store(), id);
    if (!task) return ctx.fail(QStringLiteral("No record found"));
    int status = ExitOk;
    save(ctx, *task, assignments, status);
    return status;
}

bool checkTask(km::RowSet &row, const QByteArray &clear, QString *why) {
    QStringList values;
    Record_Get::UnpackRecord(values, km::toSecureBytes(clear));
    if (CRY::DecryptField(row.GetColumn("fT1").toByteArray()) != values.value(km::TODO::Description).trimmed())
        return *why = QStringLiteral("fT1 is not the task's Description"), false;
    return true;
}

struct Halves {
    Halves() {
        RegisterSectionAdd(TasksSection, addTask, kTaskAddUsage);
        RegisterSectionEdit(TasksSection, editTask, kTaskAddUsage);
        RegisterSectionCheck(TasksSection, checkTask);
    }
} halves;

} // namespace

int ListTasks(Context &ctx) {
    bool bad = false;
    const std::optional<int> category = ctx.intValue("category", &bad);
    if (bad) return ctx.fail(QStringLiteral("--category takes a number."), ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    SessionGuards::state().ShowPrivate = ctx.flag("show-private");
    km::BasicShell shell;
    km::frmTodo w(shell.context());
    CATEGORIES::FillCategorySelector(w.cboCategories, km::TODO::Section, true, true, false);
    CATEGORIES::SelectCategory(w.cboCategories, category.value_or(CATEGORIES::CategoryAll));
    if (category && CATEGORIES::CategoryOfSelector(w.cboCategories) != *category)
        return ctx.fail(QStringLiteral("No such category: %1").arg(*category));
    w.ShowCompleted = ctx.flag("completed");
    w.showListitems();
    static const QStringList levels = {"high", "normal", "low"};
    QTextStream &out = *ctx.out;
    for (const km::TodoItem &item : w.TodoList)
        out << item.tag << '\t' << Printable(item.cells[km::TODO::ColTask]) << '\t' << isoDate(item.due) << '\t'
            << levels.value(item.priority) << '\t' << isoDate(item.completed) << '\n';
    return ExitOk;
}

} // namespace cli
