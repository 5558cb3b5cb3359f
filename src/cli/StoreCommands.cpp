// kmd commands on the store as a whole: create, info, check, passwd,
// categories, compact, repair, and the record commands that go by section:
// add (by the section given) and edit (by the section the row belongs to).
#include <QFileInfo>

#include "cli/Cli.h"
#include "cli/CliDialogs.h"
#include "platform/EngineMaintenance.h"
#include "ui/LanguageUS.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Passphrase.h"
#include "store/Record_Get.h"
#include "store/Users.h"
#include "store/db.h"

namespace cli {

namespace {

int create(Context &ctx) {
    QString path = ctx.positional.at(0);
    if (!QFileInfo(path).fileName().contains('.')) path += QStringLiteral(".kmd");
    if (QFileInfo::exists(path) && !ctx.flag("force"))
        return ctx.fail(QStringLiteral("The file exists already: %1 (use --force to replace it)").arg(path));
    SetUpDialogs(ctx, true);
    const int err = db::CreateStore(QFileInfo(path).absoluteFilePath());
    if (err != 0) return ExitFailure;
    KeepSettingsOnClose();
    return ExitOk;
}

int info(Context &ctx) {
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    QTextStream &out = *ctx.out;
    out << "version\t" << db::ReadStoreVersion() << "\n";
    out << "user\t" << Printable(Users::state().User.Name) << "\n";
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT fSec, Count(fPK) AS N FROM tt GROUP BY fSec ORDER BY fSec"), km::Snapshot);
    for (; !rows->Eof(); rows->MoveNext())
        out << rows->GetColumn("fSec").toInt() << "\t" << rows->GetColumn("N").toLongLong() << "\n";
    return ExitOk;
}

// The checks every row can have, whatever its section.
bool checkRow(km::RowSet &row, int section, int sub, QString *why) {
    const QByteArray etx = row.GetColumn("fEtx").toByteArray();
    if (section == 1 && (sub == 1 || sub == 2)) {
        if (etx.size() < 32 || etx.size() % 16 != 0) return *why = "key row is not in sealed form", false;
        return true;
    }
    if (section == 2) {
        if (etx.size() < 32 || etx.size() % 16 != 0) return *why = "user row is not in sealed form", false;
        const int verifier = static_cast<int>(row.GetColumn("fT3").toByteArray().size());
        if (verifier < 24 || verifier > 29) return *why = "passphrase verifier has the wrong length", false;
        QStringList pin(4);
        if (!CRY::DecryptToPlainBytes(row.GetColumn("fT2").toByteArray()) ||
            !Record_Get::UnpackRecord(pin, CRY::state().PlainBytes))
            return *why = "PIN record does not decrypt", false;
        for (QString &p : pin)
            km::wipe(p);
        return true;
    }
    const bool known =
        section == 1 || section == 5 || section == 9 || section == 10 || (section >= 11 && section <= 19);
    if (!known) return *why = QStringLiteral("no such section"), false;
    if (!CRY::DecryptToPlainBytes(etx)) return *why = "payload does not decrypt", false;
    const km::SecureBytes clear = CRY::state().PlainBytes;
    QStringList values;
    const bool clean = Record_Get::UnpackRecord(values, clear);
    const int fields = static_cast<int>(values.size());
    for (QString &v : values)
        km::wipe(v);
    if (!clean) return *why = "packed record is damaged", false;
    if (section == 1 && sub == 3 && fields < 3) return *why = "version row holds no version", false;
    if (section == 5 && fields != 24)
        return *why = QStringLiteral("settings row holds %1 fields, not 24").arg(fields), false;
    if (section == 9 && fields != 4) return *why = "field names row holds no four names", false;
    if (section == 10 && fields % 2 != 0) return *why = "category list is not in pairs", false;
    if (auto check = SectionCheckFor(section))
        return (*check)(
            row,
            QByteArray(reinterpret_cast<const char *>(clear.data()), static_cast<qsizetype>(clear.size())),
            why);
    return true;
}

} // namespace

int CheckRows(Context &ctx) {
    QTextStream &out = *ctx.out;
    auto rows = db::Store().OpenRowSet(QStringLiteral("SELECT * FROM tt ORDER BY fPK"), km::Snapshot);
    qint64 total = 0, failed = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
        ++total;
        const int section = rows->GetColumn("fSec").toInt();
        const int sub = rows->GetColumn("fSub").toInt();
        if (section >= 11) {
            // Every short text is decrypted too, as a list would.
            for (const char *c : {"fT1", "fT2", "fT3"}) {
                QString t = CRY::DecryptField(rows->GetColumn(c).toByteArray());
                km::wipe(t);
            }
        }
        QString why;
        if (!checkRow(*rows, section, sub, &why)) {
            ++failed;
            out << "fail\t" << rows->GetColumn("fPK").toLongLong() << "\t" << section << "\t" << why << "\n";
        }
    }
    out << "rows\t" << total << "\n";
    out << "failed\t" << failed << "\n";
    return failed == 0 ? ExitOk : ExitFailure;
}

namespace {

int check(Context &ctx) {
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    return CheckRows(ctx);
}

int passwd(Context &ctx) {
    // A file is read without a look at it: a new passphrase given once could
    // hold a slip nobody would see until the store no longer opens. The
    // confirmation must be written out, never taken from the line before it.
    PassphraseSource &source = SetUpDialogs(ctx, false).source();
    if (source.fromFile() && source.fileEntries() < 3)
        return ctx.fail(QStringLiteral("A passphrase file for passwd needs three lines: the present passphrase, "
                                       "the new one, and the new one again. Nothing was changed."),
                        ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0))) return e;
    return Passphrase::ChangePassphrase() ? ExitOk : ExitFailure;
}

int categories(Context &ctx) {
    bool ok = false;
    const int section = ctx.positional.at(1).toInt(&ok);
    if (!ok || section < 11 || section > 19)
        return ctx.fail(QStringLiteral("No such section: %1").arg(ctx.positional.at(1)), ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0), Access::ReadOnly)) return e;
    CATEGORIES::LoadCategories(section);
    const auto &s = CATEGORIES::state();
    for (int i = 0; i < s.CategoryNames.size(); ++i)
        *ctx.out << s.CategoryIds.at(i) << "\t" << Printable(s.CategoryNames.at(i)) << "\n";
    return ExitOk;
}

int compact(Context &ctx) {
    SetUpDialogs(ctx, false);
    if (int e = TestStoreFile(ctx, ctx.positional.at(0))) return e;
    km::CompactInPlace(db::state().DatabasePath);
    return ExitOk;
}

int repair(Context &ctx) {
    SetUpDialogs(ctx, false);
    const QString path = QFileInfo(ctx.positional.at(0)).absoluteFilePath();
    const QFileInfo info(path);
    if (!info.exists())
        return ctx.fail(QStringLiteral("The file does not exist: %1").arg(ctx.positional.at(0)));
    if (!info.isFile())
        return ctx.fail(QStringLiteral("Not a store file: %1").arg(ctx.positional.at(0)));
    db::state().DatabasePath = path;
    const km::RepairReport report = db::RepairDatabase(path);
    QString text = db::RepairOutcome(report, path);
    *ctx.err << text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")) << Qt::endl;
    return report.usable() ? ExitOk : ExitFailure;
}

int add(Context &ctx) {
    bool ok = false;
    const int section = ctx.positional.at(1).toInt(&ok);
    const auto handler = ok ? SectionAddFor(section) : std::nullopt;
    if (!handler)
        return ctx.fail(
            QStringLiteral("Records of section %1 cannot be added here.").arg(ctx.positional.at(1)),
            ExitUsage);
    // Without assignments the section's half prints its own usage: no login for that.
    if (ctx.positional.size() > 2)
        if (int e = Login(ctx, ctx.positional.at(0))) return e;
    return (*handler)(ctx, ctx.positional.mid(2));
}

int edit(Context &ctx) {
    bool ok = false;
    const qint64 id = ctx.positional.at(1).toLongLong(&ok);
    if (!ok || id <= 0) return ctx.fail(QStringLiteral("ID is a row's fPK: %1").arg(ctx.positional.at(1)), ExitUsage);
    if (int e = Login(ctx, ctx.positional.at(0))) return e;
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT fSec FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(id), km::Snapshot);
    if (rows->Eof()) return ctx.fail(LanguageUS::MessageText(31));
    const int section = rows->GetColumn(QStringLiteral("fSec")).toInt();
    rows.reset();
    const auto handler = SectionEditFor(section);
    if (!handler)
        return ctx.fail(QStringLiteral("Records of section %1 are not edited here.").arg(section));
    return (*handler)(ctx, id, ctx.positional.mid(2));
}

Argument section(const QString &which) {
    return {QStringLiteral("SECTION"), which};
}

Registration
    r0({QStringLiteral("add"),
        QStringLiteral(
            "Adds a memo (14), a confidential record (16) or an appointment (12) and "
            "prints its fPK. Without fields it prints the section's fields and asks for no passphrase."),
        {StoreArgument(),
         section(QStringLiteral("14 memos, 16 confidential data, 12 appointments")),
         {QStringLiteral("NAME=VALUE"), QStringLiteral("a field and its value"), Argument::AnyNumber}},
        {},
        add,
        [] { return QStringLiteral("Fields:\n  ") + SectionAddUsages().join(QStringLiteral("\n  ")); }});
Registration re({QStringLiteral("edit"),
                 QStringLiteral("Changes fields of a record, with the names kmd add takes for its section "
                                "(memos: category= moves it; confidential data: kind= moves it)."),
                 {StoreArgument(),
                  {QStringLiteral("ID"), QStringLiteral("the record's fPK")},
                  {QStringLiteral("NAME=VALUE"), QStringLiteral("a field and its new value"), Argument::OneOrMore}},
                 {},
                 edit,
                 [] { return QStringLiteral("Fields:\n  ") + SectionEditUsages().join(QStringLiteral("\n  ")); }});
Registration r1(
    {QStringLiteral("create"),
     QStringLiteral("Creates a new store with the user \"Admin\"; the passphrase given is its first."),
     {{QStringLiteral("STORE"), QStringLiteral("the new store (\".kmd\" is added to a name without one)")}},
     {{QStringLiteral("force"), QStringLiteral("Replaces a file that exists already.")}},
     create});
Registration
    r2({QStringLiteral("info"),
        QStringLiteral("Prints the store's version and user, then \"section<TAB>rows\" for each section."),
        {StoreArgument()},
        {},
        info});
Registration
    r3({QStringLiteral("check"),
        QStringLiteral("Decrypts and verifies every row: \"fail<TAB>fPK<TAB>section<TAB>why\" for each "
                       "that fails, then the counts; the status is 1 if any fails."),
        {StoreArgument()},
        {},
        check});
Registration r4({QStringLiteral("passwd"),
                 QStringLiteral("Changes the passphrase: the present one, then the new one twice. A passphrase "
                                "file must hold all three lines; with fewer nothing is changed, as a new "
                                "passphrase is never taken as its own confirmation."),
                 {StoreArgument()},
                 {},
                 passwd});
Registration r5({QStringLiteral("categories"),
                 QStringLiteral("Prints \"id<TAB>name\" for each of a section's categories."),
                 {StoreArgument(), section(QStringLiteral("a section code, 11 to 19"))},
                 {},
                 categories});
Registration r6({QStringLiteral("compact"),
                 QStringLiteral("Compacts the file in place."),
                 {StoreArgument()},
                 {},
                 compact});
Registration
    r7({QStringLiteral("repair"),
        QStringLiteral("Rebuilds a damaged store from every row that can be read, then compacts it, "
                       "and says how many rows it kept; the damaged file stays beside it as "
                       "STORE.damaged. The status is 1 when the result cannot serve as a store."),
        {StoreArgument()},
        {},
        repair});

} // namespace

} // namespace cli
