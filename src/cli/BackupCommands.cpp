// kmd commands on backups: backup, restore, verify.
#include <QDir>
#include <QFileInfo>

#include "backup/Restore.h"
#include "backup/ZLib.h"
#include "cli/Cli.h"
#include "cli/CliDialogs.h"
#include "platform/Clock.h"
#include "platform/EngineMaintenance.h"
#include "platform/Environment.h"
#include "platform/SecureBytes.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace cli {

namespace {

int backup(Context &ctx) {
    SetUpDialogs(ctx, false);
    if (int e = TestStoreFile(ctx, ctx.positional.at(0))) return e;
    const QString store = db::state().DatabasePath;
    // The program's own backup folder is the default: "Backup" beside the store.
    const QString folder = QFileInfo(ctx.value(QStringLiteral("to"))
                                         .value_or(km::FolderOfPath(store, true) + QStringLiteral("/Backup")))
                               .absoluteFilePath();
    if (!km::MakePrivateFolder(folder))
        return ctx.fail(QStringLiteral("The folder cannot be made: %1").arg(folder));
    // A backup is always one of a freshly compacted store.
    km::CompactInPlace(store);
    const QString destination = QDir(folder).filePath(ZLib::BackupFileName(store, km::Clock::now()));
    if (ZLib::CompressFile(store, destination) <= 0) return ExitFailure;
    *ctx.out << destination << "\n";
    return ExitOk;
}

int restore(Context &ctx) {
    SetUpDialogs(ctx, false);
    const QString folder = QFileInfo(*ctx.value(QStringLiteral("to"))).absoluteFilePath();
    if (!QFileInfo(folder).isDir()) return ctx.fail(QStringLiteral("No such folder: %1").arg(folder));
    ZLib::Backup backup;
    if (int err = ZLib::ReadBackup(ctx.positional.at(0), backup)) return ctx.fail(LanguageUS::MessageText(err));
    const QString staged = Restore::StagedPath(backup.sourcePath, folder);
    const bool written = Restore::WriteStaged(staged, backup.store);
    km::wipe(backup.store);
    if (!written) return ctx.fail(QStringLiteral("The file cannot be written: %1").arg(staged));
    if (!Restore::PutInPlace(staged))
        return ctx.fail(QStringLiteral("The restored store could not take its place; it waits as %1").arg(staged));
    *ctx.out << Restore::TargetOf(staged) << "\n";
    return ExitOk;
}

int verify(Context &ctx) {
    SetUpDialogs(ctx, false);
    ZLib::Backup backup;
    if (int err = ZLib::ReadBackup(ctx.positional.at(0), backup)) return ctx.fail(LanguageUS::MessageText(err));
    *ctx.out << "source\t" << backup.sourcePath << "\n";
    *ctx.out << "size\t" << backup.size << "\n";
    Restore::ImageSession session(backup.store);
    km::wipe(backup.store);
    if (session.result() != 0)
        return ctx.fail(LanguageUS::MessageText(session.result()),
                        session.result() == 131 ? ExitFailure : ExitWrongPassphrase);
    const int checked = CheckRows(ctx);
    if (checked == ExitOk) *ctx.err << Restore::VerifiedText << Qt::endl;
    return checked;
}

Argument backupArgument() {
    return {QStringLiteral("FILE.kmz"), QStringLiteral("a backup file")};
}

Registration r0({QStringLiteral("backup"),
                 QStringLiteral("Compacts the store and writes its compressed backup "
                                "NAMEyymmddHHnnss.kmz; prints the backup's path."),
                 {StoreArgument()},
                 {{QStringLiteral("to"), QStringLiteral("The folder of the backup (default: \"Backup\" beside the store)."),
                   QStringLiteral("DIR")}},
                 backup});
Registration r1({QStringLiteral("restore"),
                 QStringLiteral("Expands a backup into DIR under its store's name: the store there is kept as "
                                ".kmb, the backup takes its place as .kmd; prints the restored store's path."),
                 {backupArgument()},
                 {{QStringLiteral("to"), QStringLiteral("The folder to restore into (required)."), QStringLiteral("DIR")}},
                 [](Context &ctx) { return ctx.value(QStringLiteral("to")) ? restore(ctx) : ctx.usageError(); }});
Registration r2({QStringLiteral("verify"),
                 QStringLiteral("Expands a backup in memory, checks its trailer, stream and size, opens the store "
                                "read-only with the passphrase and runs the checks of kmd check. Writes nothing."),
                 {backupArgument()},
                 {},
                 verify});

} // namespace

} // namespace cli
