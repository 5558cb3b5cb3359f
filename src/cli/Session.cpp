// Logging in from the command line: the same open sequence the program runs,
// with the person's part played by CliDialogs.
#include <QFileInfo>
#include <memory>

#include "cli/Cli.h"
#include "cli/CliDialogs.h"
#include "ui/LanguageUS.h"
#include "store/db.h"

namespace cli {

namespace {

struct Session {
    std::unique_ptr<PassphraseSource> source;
    std::unique_ptr<CliDialogs> dialogs;
    bool saveSettings = false;
};

Session &session() {
    static Session s;
    return s;
}

} // namespace

CliDialogs &SetUpDialogs(Context &ctx, bool startWithNew) {
    Session &s = session();
    db::state().RememberRecentFiles = false;
    s.source = std::make_unique<PassphraseSource>();
    if (!ctx.passphraseFile.isEmpty()) {
        QString why;
        if (!s.source->loadFile(ctx.passphraseFile, &why)) throw km::ProgramEnd{ctx.fail(why), 0};
    }
    if (startWithNew) s.source->startWithNew();
    s.dialogs = std::make_unique<CliDialogs>(*ctx.err, *s.source);
    km::setUi(s.dialogs.get());
    return *s.dialogs;
}

int TestStoreFile(Context &ctx, const QString &path) {
    db::State &d = db::state();
    if (path.isEmpty()) return ctx.fail(LanguageUS::MessageText(1));
    d.DatabasePath = QFileInfo(path).absoluteFilePath();
    const QFileInfo info(d.DatabasePath);
    if (!info.exists() && !info.isSymLink())
        return ctx.fail(QStringLiteral("The file does not exist: %1").arg(path));
    if (!info.isFile() && !info.isDir())
        return ctx.fail(QStringLiteral("Not a store file: %1 is a device, a pipe or a socket.").arg(path));
    // TestOpenFile says what went wrong (the damaged store's question included).
    const int err = db::TestOpenFile(d.DatabasePath);
    if (err == km::EngineErr::Damaged)
        return ctx.fail(QStringLiteral("kmd repair %1 rebuilds the store from every row that can be read.")
                            .arg(path));
    if (err != 0) return ExitFailure;
    d.DatabasePath = QFileInfo(path).absoluteFilePath();
    return ExitOk;
}

int Login(Context &ctx, const QString &path, Access access) {
    if (!session().dialogs) SetUpDialogs(ctx, false);
    const int tested = TestStoreFile(ctx, path);
    if (tested != ExitOk) return tested;
    db::state().OpenAttempts = 0;
    db::state().ReadOnly = access == Access::ReadOnly;
    const int err = db::OpenStore();
    return err == 0 ? ExitOk : ExitFailure;
}

void KeepSettingsOnClose() {
    session().saveSettings = true;
}

void CloseSession() {
    Session &s = session();
    if (db::state().StoreDb) db::CloseStore(s.saveSettings);
    db::state().ReadOnly = false;
    km::setUi(nullptr);
    s.dialogs.reset();
    s.source.reset();
}

} // namespace cli
