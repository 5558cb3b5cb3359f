// kmd for the address book (section 11), through the address window's model
// and its save, and Find across sections:
//
//   kmd list STORE 11 [--category ID] [--show-private]
//     "fPK<TAB>FileAs<TAB>ContactLine" a line, in the list's order.
//   kmd show STORE ID
//     "index<TAB>name<TAB>value" for the 61 fields (\n, \t, \\ escaped),
//     then "FileAs<TAB>text" and "category<TAB>id<TAB>name".
//   kmd add STORE 11 NAME=VALUE...   the names of the field table, category=ID
//     and FileAs=TEXT; without FileAs the editor's first candidate is taken.
//     Birthday is yyyy-MM-dd, Private True/False, ComLabelN and ComDisplay
//     numbers; a slot given without its label takes the slot's default.
//   kmd edit STORE ID NAME=VALUE...  the same names.
//   kmd export-addresses STORE FILE  the tab-delimited export, private rows too.
//   kmd find STORE TEXT [--case-sensitive] [--sections 11,12,...] [--show-private]
//     "section name<TAB>fPK<TAB>Item<TAB>Spec" per hit, in the window's order.
#include "cli/Cli.h"

#include <QFile>

#include "address/AddressSections.h"
#include "address/frmAddress.h"
#include "calendar/frmCalendar.h"
#include "platform/Engine.h"
#include "records/RecordsSections.h"
#include "shell/BasicShell.h"
#include "shell/SessionGuards.h"
#include "shell/frmFind.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace cli {

namespace {

namespace A = km::Address;

const QString kAddUsage =
    QStringLiteral("kmd add STORE 11 LastName=... [FirstName=... CompanyName=... Com1=... ComLabel1=N ...] "
                   "[FileAs=...] [Private=True] [category=ID]");
const QString kEditUsage = QStringLiteral("kmd edit STORE ID [LastName=... Com1=... FileAs=... ...]  (an address)");

// Applies assignments to the address window's working record.
bool apply(km::frmAddress &w, const QList<QPair<QString, QString>> &pairs, bool isNew, QString *why) {
    std::optional<QString> fileAs;
    for (const auto &[name, value] : pairs) {
        if (name == QLatin1String("category")) {
            bool ok = false;
            const int id = value.toInt(&ok);
            CATEGORIES::LoadCategories(A::Section);
            if (!ok || (id != 0 && !CATEGORIES::state().CategoryIds.contains(id)))
                return *why = "No such category: " + value, false;
            w.category = id;
            continue;
        }
        if (name == QLatin1String("FileAs")) {
            fileAs = value;
            continue;
        }
        const int index = A::FieldIndex(name);
        if (index < 0 || index == A::UserNumber) return *why = "Addresses have no field " + name, false;
        if (index == A::Birthday && !value.isEmpty()) {
            const QDate d = QDate::fromString(value, QStringLiteral("yyyy-MM-dd"));
            if (!d.isValid()) return *why = LanguageUS::MessageText(49), false;
            w.record[index] = QDateTime(d, QTime(0, 0)).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        } else if (index == A::Private) {
            const bool on = value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
                            value == QLatin1String("1") || value == QLatin1String("-1");
            w.record[index] = on ? QStringLiteral("True") : QStringLiteral("False");
        } else {
            w.record[index] = value;
        }
    }
    if (w.record.value(A::Private).isEmpty()) w.record[A::Private] = QStringLiteral("False");
    // As the editor offers them: a slot without a label has its default.
    for (int n = 1; n <= 9; ++n)
        if (w.record.value(A::ComLabel1 + n - 1).isEmpty()) w.record[A::ComLabel1 + n - 1] = QString::number(A::DefaultLabel(n));
    A::NormaliseSlots(w.record);
    if (fileAs) {
        w.fileAs = *fileAs;
    } else if (isNew) {
        km::frmEditAddress editor(km::ui());
        editor.ctl = w.record;
        editor.FileAsCandidates();
        w.fileAs = editor.ctlFileAs.Text();
    }
    if (w.fileAs.isEmpty()) return *why = LanguageUS::MessageText(15), false;
    return true;
}

int list(Context &ctx) {
    bool bad = false;
    const std::optional<int> category = ctx.intValue("category", &bad);
    if (bad) return ctx.fail(QStringLiteral("--category takes a number."), ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    SessionGuards::state().ShowPrivate = ctx.flag("show-private");
    km::BasicShell shell;
    km::frmAddress w(shell.context());
    CATEGORIES::FillCategorySelector(w.cboCategories, A::Section, true, true, false);
    CATEGORIES::SelectCategory(w.cboCategories, category.value_or(CATEGORIES::CategoryAll));
    w.showListitems();
    for (int i = 0; i < w.ListSelect.ListCount(); ++i)
        *ctx.out << w.ListSelect.ItemData(i) << '\t' << w.ListSelect.List(i) << '\t' << w.contacts.value(i)
                 << '\n';
    return ExitOk;
}

int show(Context &ctx, qint64 id) {
    const A::Loaded l = A::LoadAddress(db::Store(), id);
    QTextStream &out = *ctx.out;
    for (const A::FieldDef &f : A::FieldTable())
        out << f.index << '\t' << f.name << '\t' << Printable(l.record.value(f.index)) << '\n';
    auto rows = db::Store().OpenRowSet(QStringLiteral("SELECT fT1 FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
    out << "FileAs\t" << Printable(CRY::DecryptField(rows->GetColumn(QStringLiteral("fT1")).toByteArray())) << '\n';
    CATEGORIES::LoadCategories(A::Section);
    const auto &s = CATEGORIES::state();
    const qsizetype at = s.CategoryIds.indexOf(l.category);
    out << "category\t" << l.category << '\t'
        << (l.category == 0 ? CATEGORIES::UnfiledText() : at >= 0 ? s.CategoryNames.at(at) : QString()) << '\n';
    return ExitOk;
}

int add(Context &ctx, const QStringList &assignments) {
    if (assignments.isEmpty()) return ctx.fail(QStringLiteral("usage: ") + kAddUsage, ExitUsage);
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail("Not of the form name=value: " + bad, ExitUsage);
    km::BasicShell shell;
    km::frmAddress w(shell.context());
    w.newRecord = true;
    QString why;
    if (!apply(w, *pairs, true, &why)) return ctx.fail(why, ExitUsage);
    const qint64 id = w.SaveRecord();
    if (id == 0) return ExitFailure;
    *ctx.out << id << '\n';
    return ExitOk;
}

int edit(Context &ctx, qint64 id, const QStringList &assignments) {
    QString bad;
    const auto pairs = ParseAssignments(assignments, &bad);
    if (!pairs) return ctx.fail("Not of the form name=value: " + bad, ExitUsage);
    km::BasicShell shell;
    km::frmAddress w(shell.context());
    const A::Loaded l = A::LoadAddress(db::Store(), id);
    w.record = l.record;
    w.category = l.category;
    w.RowId = id;
    auto rows = db::Store().OpenRowSet(QStringLiteral("SELECT fT1 FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
    w.fileAs = CRY::DecryptField(rows->GetColumn(QStringLiteral("fT1")).toByteArray());
    rows.reset();
    QString why;
    if (!apply(w, *pairs, false, &why)) return ctx.fail(why, ExitUsage);
    return w.SaveRecord() ? ExitOk : ExitFailure;
}

class FileSink : public A::ExportSink {
public:
    explicit FileSink(QFile &file) : m_file(file) {}
    void write(const QByteArray &bytes) override { ok = ok && m_file.write(bytes) == bytes.size(); }
    bool ok = true;

private:
    QFile &m_file;
};

int exportAddresses(Context &ctx) {
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    QFile file(ctx.positional.at(1));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return ctx.fail(QStringLiteral("Cannot write %1").arg(ctx.positional.at(1)));
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    FileSink sink(file);
    A::WriteTabDelimited(db::Store(), sink);
    file.close();
    return sink.ok ? ExitOk : ctx.fail(QStringLiteral("Cannot write %1").arg(ctx.positional.at(1)));
}

int find(Context &ctx) {
    km::FindRequest request;
    request.text = ctx.positional.at(1);
    request.caseSensitive = ctx.flag("case-sensitive");
    if (const auto sections = ctx.value("sections")) {
        for (const QString &part : sections->split(',', Qt::SkipEmptyParts)) {
            bool ok = false;
            const int code = part.trimmed().toInt(&ok);
            int box = -1;
            for (int i = 0; i < km::FindScopeCount; ++i)
                if (km::FindScopes()[static_cast<size_t>(i)].section == code) box = i;
            if (!ok || box < 0) return ctx.fail("Sections are 11 to 19: " + part, ExitUsage);
            request.boxes[static_cast<size_t>(box)] = true;
        }
    } else {
        request.boxes.fill(true);
    }
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    request.showPrivate = ctx.flag("show-private");
    address::RegisterSections();
    CALENDAR::RegisterSections();
    records::RegisterSections();
    for (const km::FindHit &hit : km::SearchSections(db::Store(), request))
        *ctx.out << hit.name << '\t' << hit.id << '\t' << Printable(hit.item) << '\t' << Printable(hit.spec) << '\n';
    return ExitOk;
}

// fT1 is a File as, fT2 the record's contact line, and fR2 lies in the
// bucket of the two joined.
bool checkAddress(km::RowSet &row, const QByteArray &clear, QString *why) {
    A::Record r = A::EmptyRecord();
    Record_Get::UnpackRecord(r, km::toSecureBytes(clear));
    const QString fileAs = CRY::DecryptField(row.GetColumn("fT1").toByteArray());
    const QString contact = CRY::DecryptField(row.GetColumn("fT2").toByteArray());
    if (fileAs.isEmpty()) return *why = QStringLiteral("fT1 holds no File as"), false;
    if (contact != A::ContactLine(r)) return *why = QStringLiteral("fT2 is not the record's contact line"), false;
    const qint64 bucket = row.GetColumn("fR2").toLongLong() / INDICES::BucketWidth;
    if (bucket != INDICES::SortBucket(INDICES::SortFold(fileAs + contact), 0))
        return *why = QStringLiteral("fR2 lies outside the bucket of File as and contact line"), false;
    return true;
}

Registration r1({QStringLiteral("export-addresses"),
                 QStringLiteral("Writes every address, private ones too, to FILE as the tab-delimited export: "
                                "a header of the 60 field names, a line per address, a tab after every "
                                "cell, UTF-8, LF."),
                 {StoreArgument(), {QStringLiteral("FILE"), QStringLiteral("the file to write (replaced)")}},
                 {},
                 exportAddresses});
Registration
    r2({QStringLiteral("find"),
        QStringLiteral("Finds TEXT in the decrypted records of the sections, as Edit > Find does: "
                       "\"section name<TAB>fPK<TAB>Item<TAB>Spec\" per hit."),
        {StoreArgument(), {QStringLiteral("TEXT"), QStringLiteral("the text to look for")}},
        {{QStringLiteral("case-sensitive"), QStringLiteral("Upper and lower case must match.")},
         {QStringLiteral("sections"), QStringLiteral("Section codes 11 to 19, by commas (default: all)."),
          QStringLiteral("LIST")},
         {QStringLiteral("show-private"), QStringLiteral("Private records are hits too.")}},
        find});

struct SectionHalves {
    SectionHalves() {
        RegisterSectionAdd(A::Section, add, kAddUsage);
        RegisterSectionCommands(A::Section, {list, show});
        RegisterSectionEdit(A::Section, edit, kEditUsage);
        RegisterSectionCheck(A::Section, checkAddress);
    }
} halves;

} // namespace

} // namespace cli
