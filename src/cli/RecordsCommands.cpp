// kmd for the memos (section 14) and confidential data (section 16), through
// the same window models and save paths the windows use:
//
//   kmd list STORE SECTION [--category ID] [--kind K] [--show-private]
//     the section's list as its window shows it: "fPK<TAB>title" a line.
//     Memos list all categories unless --category; confidential data list
//     one kind (--kind, 1 to 16; default 1).
//   kmd show STORE ID
//     "index<TAB>name<TAB>value" for each field, then the row's category
//     (memos: "category<TAB>id<TAB>name") or kind ("kind<TAB>k<TAB>caption").
//     Values are printed through Printable: one line each, whatever they hold.
//   kmd add STORE 14 Subject=... [Memo=...] [Private=True] [category=ID]
//   kmd add STORE 16 n0=... [n1=... n4=...] [notes=...] [Private=True] [kind=K]
//     prints the new fPK.
//   kmd edit STORE ID NAME=VALUE ...    the same names; category= / kind= move the row
//     (the general edit of StoreCommands hands these rows here).
//   kmd delete STORE ID
#include "cli/Cli.h"
#include "cli/TasksCommands.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "shell/BasicShell.h"
#include "shell/SessionGuards.h"
#include "shell/SortedSection.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/db.h"

namespace cli {

namespace {

const QStringList kMemoFields = {"UserNumber",       "Private", "DateCreated",
                                 "DateLastModified", "Subject", "Memo"};
const QStringList kConfidentialFields = {"n0",      "n1",      "n2", "n3", "n4", "notes", "DateLastModified",
                                         "Private", "UserName"};
const QString kMemoAddUsage =
    QStringLiteral("kmd add STORE 14 Subject=... [Memo=...] [Private=True] [category=ID]");
const QString kConfidentialAddUsage =
    QStringLiteral("kmd add STORE 16 n0=... [n1=... n4=...] [notes=...] [Private=True] [kind=K]");

bool isTrue(const QString &v) {
    return v.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || v == QLatin1String("1") ||
           v == QLatin1String("-1");
}

int list(Context &ctx) {
    const int section = ctx.positional.at(1).toInt();
    if (section == TasksSection) return ListTasks(ctx);
    if (const auto other = SectionCommandsFor(section); other && other->list) return other->list(ctx);
    if (section != km::frmNotepad::Section && section != km::frmClassified::Section)
        return ctx.fail(QStringLiteral("Sections listed here: 11 (addresses), 14 (memos), 15 (tasks), "
                                       "16 (confidential data)."),
                        ExitUsage);
    bool bad = false;
    const auto category = ctx.intValue("category", &bad);
    const auto kind = ctx.intValue("kind", &bad);
    if (bad) return ctx.fail(QStringLiteral("--category and --kind take numbers."), ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    SessionGuards::state().ShowPrivate = ctx.flag("show-private");
    QTextStream &out = *ctx.out;
    if (section == km::frmNotepad::Section) {
        km::BasicShell shell;
        km::frmNotepad w(shell.context());
        CATEGORIES::FillCategorySelector(w.cboCategories, section, true, true, false);
        CATEGORIES::SelectCategory(w.cboCategories, category.value_or(CATEGORIES::CategoryAll));
        w.listSelect_Initialize();
        for (int i = 0; i < w.ListSelect.ListCount(); ++i)
            out << w.ListSelect.ItemData(i) << '\t' << Printable(w.ListSelect.List(i)) << '\n';
    } else {
        if (kind && !km::KindOf(*kind)) return ctx.fail(QStringLiteral("Kinds are 1 to 16."), ExitUsage);
        km::BasicShell shell;
        km::frmClassified w(shell.context());
        w.cat_Click(kind.value_or(1));
        for (int i = 0; i < w.listSelect.ListCount(); ++i)
            out << w.listSelect.ItemData(i) << '\t' << Printable(w.listSelect.List(i)) << '\n';
    }
    return ExitOk;
}

int show(Context &ctx) {
    const qint64 id = ctx.positional.at(1).toLongLong();
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    const km::SortedSection::StoredRecord r = km::SortedSection::ReadRecord(db::Store(), id);
    if (!r.found) return ctx.fail(QStringLiteral("No record found"));
    if (const auto other = SectionCommandsFor(r.section); other && other->show) return other->show(ctx, id);
    const QStringList *names = r.section == km::frmNotepad::Section      ? &kMemoFields
                               : r.section == km::frmClassified::Section ? &kConfidentialFields
                                                                         : nullptr;
    if (!names) return ctx.fail(QStringLiteral("Records of section %1 are not shown here.").arg(r.section));
    QTextStream &out = *ctx.out;
    for (int i = 0; i < names->size(); ++i)
        out << i << '\t' << names->at(i) << '\t' << Printable(r.values.value(i)) << '\n';
    if (r.section == km::frmNotepad::Section) {
        CATEGORIES::LoadCategories(r.section);
        const auto &s = CATEGORIES::state();
        const qsizetype at = s.CategoryIds.indexOf(r.g1);
        out << "category\t" << r.g1 << '\t'
            << Printable(r.g1 == 0 ? CATEGORIES::UnfiledText()
                         : at >= 0 ? s.CategoryNames.at(at)
                                   : QString())
            << '\n';
    } else {
        const km::ConfidentialKind *k = km::KindOf(r.g1);
        out << "kind\t" << r.g1 << '\t' << (k ? k->caption : QString()) << '\n';
    }
    return ExitOk;
}

// Applies name=value assignments to a memo view; false with why on a bad one.
bool applyMemo(km::frmNotepad &w, const QList<QPair<QString, QString>> &pairs, QString *why) {
    for (const auto &[name, value] : pairs) {
        if (name == QLatin1String("Subject"))
            w.txtSubject = value;
        else if (name == QLatin1String("Memo"))
            w.txtInput = value;
        else if (name == QLatin1String("Private"))
            w.ctlPrivate = isTrue(value);
        else if (name == QLatin1String("category")) {
            CATEGORIES::FillCategorySelector(w.cboCategory, km::frmNotepad::Section, false, true, false);
            if (!w.setCategory(value.toInt())) return *why = "No such category: " + value, false;
        } else
            return *why = "Memos have no field " + name, false;
    }
    if (w.txtSubject.trimmed().isEmpty()) return *why = QStringLiteral("A memo needs a Subject."), false;
    return true;
}

bool applyConfidential(km::frmClassified &w, const QList<QPair<QString, QString>> &pairs, QString *why) {
    for (const auto &[name, value] : pairs) {
        const qsizetype field = kConfidentialFields.indexOf(name);
        if (field >= 0 && field < 5)
            w.txtCtl[static_cast<size_t>(field)] = value;
        else if (name == QLatin1String("notes"))
            w.txtNotes = value;
        else if (name == QLatin1String("Private"))
            w.ctlPrivate = isTrue(value);
        else if (name == QLatin1String("kind")) {
            if (!km::KindOf(value.toInt())) return *why = "Kinds are 1 to 16: " + value, false;
            w.cat = value.toInt();
        } else
            return *why = "Confidential records have no field " + name, false;
    }
    if (w.txtCtl[0].trimmed().isEmpty())
        return *why = QStringLiteral("A record needs its first field, n0."), false;
    return true;
}

int addTo(Context &ctx, int section, const QStringList &assignments) {
    if (assignments.isEmpty())
        return ctx.fail(QStringLiteral("usage: ") +
                            (section == km::frmNotepad::Section ? kMemoAddUsage : kConfidentialAddUsage),
                        ExitUsage);
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail("Not of the form name=value: " + bad, ExitUsage);
    QString why;
    qint64 id = 0;
    if (section == km::frmNotepad::Section) {
        km::BasicShell shell;
        km::frmNotepad w(shell.context());
        CATEGORIES::FillCategorySelector(w.cboCategory, section, false, true, false);
        w.newRecord = true;
        if (!applyMemo(w, *pairs, &why)) return ctx.fail(why, ExitUsage);
        id = w.SaveRecord();
    } else {
        km::BasicShell shell;
        km::frmClassified w(shell.context());
        w.newRecord = true;
        if (!applyConfidential(w, *pairs, &why)) return ctx.fail(why, ExitUsage);
        id = w.SaveRecord();
    }
    if (id == 0) return ExitFailure;
    *ctx.out << id << '\n';
    return ExitOk;
}

int editMemo(Context &ctx, qint64 id, const QStringList &assignments) {
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail("Not of the form name=value: " + bad, ExitUsage);
    QString why;
    km::BasicShell shell;
    km::frmNotepad w(shell.context());
    CATEGORIES::FillCategorySelector(w.cboCategories, km::frmNotepad::Section, true, true, false);
    CATEGORIES::FillCategorySelector(w.cboCategory, km::frmNotepad::Section, false, true, false);
    w.listSelect_Initialize(id);
    if (w.RowId != id) {
        // A private memo is not in the list while private records are hidden.
        SessionGuards::state().ShowPrivate = true;
        w.listSelect_Initialize(id);
    }
    if (!applyMemo(w, *pairs, &why)) return ctx.fail(why, ExitUsage);
    return w.SaveRecord() ? ExitOk : ExitFailure;
}

int editConfidential(Context &ctx, qint64 id, const QStringList &assignments) {
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail("Not of the form name=value: " + bad, ExitUsage);
    const km::SortedSection::StoredRecord r = km::SortedSection::ReadRecord(db::Store(), id);
    QString why;
    SessionGuards::state().ShowPrivate = true;
    km::BasicShell shell;
    km::frmClassified w(shell.context());
    w.cat_Click(r.g1);
    w.listSelect_Initialize(id);
    if (!applyConfidential(w, *pairs, &why)) return ctx.fail(why, ExitUsage);
    return w.SaveRecord() ? ExitOk : ExitFailure;
}

int remove(Context &ctx) {
    const qint64 id = ctx.positional.at(1).toLongLong();
    if (int e = Login(ctx, ctx.positional.at(0))) return e;
    const km::SortedSection::StoredRecord r = km::SortedSection::ReadRecord(db::Store(), id);
    if (!r.found) return ctx.fail(QStringLiteral("No record found"));
    if (r.section < 11) return ctx.fail(QStringLiteral("Rows of the store itself are not deleted here."));
    km::SortedSection::DeleteRow(db::Store(), id);
    return ExitOk;
}

// The row of a sorted section: fT1 is the title field, and the bucket of fR2
// is the title's.
bool checkSorted(km::RowSet &row, const QByteArray &clear, int titleField, QString *why) {
    QStringList values;
    Record_Get::UnpackRecord(values, km::toSecureBytes(clear));
    const QString title = values.value(titleField);
    const QString listed = CRY::DecryptField(row.GetColumn("fT1").toByteArray());
    if (listed != title.trimmed()) return *why = QStringLiteral("fT1 is not the record's title"), false;
    const qint64 bucket = row.GetColumn("fR2").toLongLong() / INDICES::BucketWidth;
    if (bucket != INDICES::SortBucket(INDICES::SortFold(title), 0))
        return *why = QStringLiteral("fR2 lies outside the title's bucket"), false;
    return true;
}

Argument idArgument() {
    return {QStringLiteral("ID"), QStringLiteral("the record's fPK")};
}

Registration
    r1({QStringLiteral("list"),
        QStringLiteral("Lists addresses, memos or confidential records as their window does: "
                       "\"fPK<TAB>title\" a line (addresses: \"fPK<TAB>FileAs<TAB>ContactLine\"); tasks as "
                       "\"fPK<TAB>description<TAB>due<TAB>priority<TAB>completed\", dates yyyy-MM-dd or empty, "
                       "in the list's default order."),
        {StoreArgument(),
         {QStringLiteral("SECTION"), QStringLiteral("11 addresses, 14 memos, 15 tasks, 16 confidential data")}},
        {{QStringLiteral("category"), QStringLiteral("Addresses, memos or tasks of this category only (default: all)."),
          QStringLiteral("ID")},
         {QStringLiteral("kind"), QStringLiteral("Confidential records of this kind, 1 to 16 (default: 1)."),
          QStringLiteral("K")},
         {QStringLiteral("completed"), QStringLiteral("Lists completed tasks too.")},
         {QStringLiteral("show-private"), QStringLiteral("Lists private records too.")}},
        list});
Registration
    r2({QStringLiteral("show"),
        QStringLiteral("Prints \"index<TAB>name<TAB>value\" for each field of a memo or confidential "
                       "record, then \"category<TAB>id<TAB>name\" or \"kind<TAB>k<TAB>caption\". Line "
                       "breaks, tabs, backslashes and other control characters in values are written "
                       "\\n, \\t, \\\\, \\r and \\xHH."),
        {StoreArgument(), idArgument()},
        {},
        show});
Registration r4({QStringLiteral("delete"),
                 QStringLiteral("Deletes a record."),
                 {StoreArgument(), idArgument()},
                 {},
                 remove});

struct SectionHalves {
    SectionHalves() {
        RegisterSectionAdd(
            km::frmNotepad::Section,
            [](Context &ctx, const QStringList &a) { return addTo(ctx, km::frmNotepad::Section, a); },
            kMemoAddUsage);
        RegisterSectionAdd(
            km::frmClassified::Section,
            [](Context &ctx, const QStringList &a) { return addTo(ctx, km::frmClassified::Section, a); },
            kConfidentialAddUsage);
        RegisterSectionEdit(km::frmNotepad::Section, editMemo,
                            QStringLiteral("kmd edit STORE ID [Subject=...] [Memo=...] [Private=True] "
                                           "[category=ID]  (a memo)"));
        RegisterSectionEdit(km::frmClassified::Section, editConfidential,
                            QStringLiteral("kmd edit STORE ID [n0=... n4=...] [notes=...] [Private=True] "
                                           "[kind=K]  (a confidential record)"));
        RegisterSectionCheck(km::frmNotepad::Section,
                             [](km::RowSet &row, const QByteArray &clear, QString *why) {
                                 return checkSorted(row, clear, km::frmNotepad::Subject, why);
                             });
        RegisterSectionCheck(km::frmClassified::Section,
                             [](km::RowSet &row, const QByteArray &clear, QString *why) {
                                 return checkSorted(row, clear, km::frmClassified::n0, why);
                             });
    }
} halves;

} // namespace

} // namespace cli
