// The store file's life: create, open with its whole check sequence, repair,
// compact, sweep and close.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "platform/EngineMaintenance.h"
#include "platform/Environment.h"
#include "platform/Registry.h"
#include "store/CRY.h"
#include "store/Passphrase.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/Startvariables.h"
#include "store/Users.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace db {

namespace {

const char *const RecentFileValue = "MostRecentFiles\\1";
const char *const LastUserValue = "User\\LastUser";

km::Answer say(int row, km::Buttons buttons = km::Buttons::OK, km::Answer def = km::Answer::OK,
               km::Icon icon = km::Icon::Exclamation) {
    return km::ShowMessage(row, buttons, def, icon);
}

[[noreturn]] void endWith(int row) {
    say(row, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
    throw km::ProgramEnd{1, row};
}

} // namespace

void LoadRecentFiles() {
    state().DatabasePath = km::RegRead(RecentFileValue);
    state().LastUser = km::RegRead(LastUserValue);
}

void SaveRecentFiles() {
    // A store that failed to open is no reason to forget it.
    if (!state().RememberRecentFiles || state().DatabasePath.isEmpty()) return;
    km::RegWrite(RecentFileValue, state().DatabasePath);
    km::RegWrite(LastUserValue, state().LastUser);
}

int TestOpenFile(const QString &path) {
    State &s = state();
    if (s.DatabasePath.isEmpty()) return 0;
    int err = 0;
    try {
        km::StoreDb::OpenDatabase(path, false, true)->Close();
    } catch (const km::EngineError &e) {
        err = e.number();
        if (err == km::EngineErr::Damaged) {
            const QString text = e.description() + QStringLiteral("\r\n\r\n") + LanguageUS::MessageText(46);
            if (km::ui().message(text, km::Buttons::YesNo, km::Answer::Yes, km::Icon::Question) ==
                km::Answer::Yes)
                err = RepairStore();
        } else if (err == km::EngineErr::NotAStore) {
            say(51);
        } else {
            km::ui().message(e.description() + QStringLiteral("\r\n") + path, km::Buttons::OK, km::Answer::OK,
                             km::Icon::Exclamation);
        }
    }
    if (err != 0) s.DatabasePath.clear();
    return err;
}

// Where a file dialog for a store starts: the folder of the store in use or
// last used, else the documents folder.
QString StoreFolder() {
    QString path = state().DatabasePath;
    if (path.isEmpty()) path = km::RegRead(QString::fromLatin1(RecentFileValue));
    const QFileInfo file(path);
    if (!path.isEmpty() && file.absoluteDir().exists()) return file.absolutePath();
    return km::SpecialFolder(km::FolderDocuments);
}

int ChooseStoreFile() {
    State &s = state();
    km::FileDialogSpec spec;
    spec.directory = StoreFolder();
    s.DatabasePath.clear();
    spec.title = LanguageUS::MessageText(88);
    spec.filters = {QStringLiteral("Kestrelmondarin KMD (*.kmd)"),
                    LanguageUS::MessageText(87) + QStringLiteral(" (*.*)")};
    spec.mustExist = true;
    const auto chosen = km::ui().openFile(spec);
    if (!chosen || chosen->isEmpty()) return km::DialogCancelledError;
    s.DatabasePath = *chosen;
    const int err = TestOpenFile(s.DatabasePath);
    if (err != 0) return err;
    s.NewStore = false;
    return 0;
}

int CreateStoreFile(const QString &path) {
    try {
        km::MakePrivateFolder(QFileInfo(path).absolutePath());
        km::StoreDb::CreateDatabase(path);
    } catch (const km::EngineError &e) {
        return e.number();
    }
    return 0;
}

int CreateStore(const QString &fixedPath) {
    State &s = state();
    QString path = fixedPath;
    if (path.isEmpty()) {
        km::FileDialogSpec spec;
        spec.directory = StoreFolder();
        spec.title = LanguageUS::MessageText(89);
        spec.filters = {QStringLiteral("Tavernholt KMD-files (*.kmd)")};
        spec.overwritePrompt = true;
        const auto chosen = km::ui().saveFile(spec);
        if (!chosen || chosen->isEmpty()) return km::DialogCancelledError;
        path = *chosen;
    }
    if (!QFileInfo(path).fileName().contains('.')) path += QStringLiteral(".kmd");
    // The dialog has asked before replacing the file.
    if (QFileInfo::exists(path) && !QFile::remove(path)) return km::EngineErr::AlreadyInUse;
    s.DatabasePath = path;

    int err = Passphrase::GetPassphrase(true);
    if (err) return err;
    err = CreateStoreFile(path);
    if (err) {
        Passphrase::Wipe();
        return err;
    }
    try {
        s.StoreDb = km::StoreDb::OpenDatabase(path, true, false);
    } catch (const km::EngineError &e) {
        Passphrase::Wipe();
        return e.number();
    }
    err = Passphrase::CreateKeyRows();
    if (err) {
        CloseStore();
        Passphrase::Wipe();
        return err;
    }
    s.LastUser = Users::state().User.Name;
    FinishOpen();
    Passphrase::Wipe();
    s.NewStore = true;
    return 0;
}

void WriteVersionRow() {
    StandardWrite w(Store(), QStringLiteral("fSec=1 And fSub=3"), 1);
    w.setColumn(QStringLiteral("fSub"), 3);
    w.setRecord(Record_Put::PackRecord({{2, Record_Put::tText}},
                                       {QVariant(), QVariant(), QString::number(ProgramVersion)}));
    w.Commit({true, true, true, true, true, true, true});
}

int ReadStoreVersion() {
    auto rows =
        Store().OpenRowSet(QStringLiteral("SELECT fEtx FROM tt WHERE fSec=1 And fSub=3"), km::Snapshot);
    if (rows->RecordCount() == 0) return 0;
    QStringList values;
    Record_Get::UnpackRecord(values, rows->GetColumn("fEtx").toByteArray(), true);
    return values.value(2).trimmed().toInt();
}

int OpenStore() {
    State &s = state();
    // PassKey and PassCheck serve until the PIN record is loaded (a store
    // without one gets the default PIN of this passphrase); whichever way
    // the sequence ends, they go.
    struct WipeOnExit {
        ~WipeOnExit() { Passphrase::Wipe(); }
    } wipeOnExit;
    s.OpenAttempts = 0;
    for (;;) {
        ++s.OpenAttempts;
        int err = Passphrase::GetPassphrase(false);
        if (err) return err;
        km::ui().status(QStringLiteral("Checking Database..."));
        err = Passphrase::OpenKeyRows();
        if (err == 0) break;
        Passphrase::Wipe();
        s.StoreDb.reset();
        km::ui().status(QString());
        // Without the main window there is nothing to go back to: the program
        // says why it ends ("aborted" after Cancel, "unsuccessful" after the
        // last attempt) and ends.
        const auto giveUp = [&](int message) -> int {
            if (km::ui().mainWindowUp()) return err;
            km::ShowMessage(message, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
            throw km::ProgramEnd{err == Passphrase::ErrWrongPassphrase ? 2 : 1, message};
        };
        if (s.OpenAttempts >= 3) return giveUp(97);
        const QString text = err < 0 ? LanguageUS::MessageText(-err) : LanguageUS::MessageText(97);
        if (km::ui().message(text, km::Buttons::RetryCancel, km::Answer::Retry, km::Icon::Exclamation) ==
            km::Answer::Cancel)
            return giveUp(95);
        km::ui().standBy(1200);
    }
    s.OpenAttempts = 0;

    const int version = ReadStoreVersion();
    if (version == 0 && !s.ReadOnly)
        WriteVersionRow();
    else if (version > ProgramVersion) {
        CloseStore();
        endWith(94);
    }
    km::ui().status(QStringLiteral("Database Check OK. Opening..."));
    s.LastUser = Users::state().User.Name;
    FinishOpen();
    km::ui().status(QString());
    if (!s.ReadOnly) SweepDuplicates();
    SaveRecentFiles();
    return 0;
}

void FinishOpen() {
    State &s = state();
    if (!s.StoreDb) s.StoreDb = km::StoreDb::OpenDatabase(s.DatabasePath, true, s.ReadOnly);
    s.DbOpen = true;
    Users::state().UnlockedSections = 0;
    try {
        Users::LoadPin();
        Startvariables::LoadStartVariables();
    } catch (const km::EngineError &e) {
        // A store without its PIN or settings rows gets defaults written;
        // a session that only reads keeps the defaults in memory.
        if (!s.ReadOnly || e.number() != km::EngineErr::ReadOnly) throw;
    }
    if (s.AfterOpen) s.AfterOpen();
}

int RepairStore() {
    State &s = state();
    const QString path = s.DatabasePath;
    try {
        const km::RepairReport report = km::RepairDatabase(path);
        if (!report.usable()) {
            km::ui().message(RepairOutcome(report, path), km::Buttons::OK, km::Answer::OK,
                             km::Icon::Critical);
            return km::EngineErr::Damaged;
        }
    } catch (const km::EngineError &e) {
        km::ui().message(e.description(), km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
        return e.number();
    }
    return TestOpenFile(path);
}

km::RepairReport RepairDatabase(const QString &path) {
    km::RepairReport report = km::RepairDatabase(path);
    if (report.opens) km::CompactInPlace(path);
    return report;
}

QString RepairOutcome(const km::RepairReport &report, const QString &path) {
    const QString kept = path + QStringLiteral(".damaged");
    if (report.wasSound && report.usable()) return LanguageUS::MessageText(166);
    QString text = report.wasSound ? QString()
                                   : QStringLiteral("%1 rows could be read and were kept; the damaged file "
                                                    "was put aside as %2.\r\n")
                                         .arg(report.rowsKept)
                                         .arg(kept);
    if (report.usable()) return text + LanguageUS::MessageText(166);
    if (!report.opens) return text + QStringLiteral("The repaired file cannot be opened as a store.");
    return text + LanguageUS::MessageText(46);
}

void CompactInPlace() {
    State &s = state();
    const bool wasOpen = static_cast<bool>(s.StoreDb);
    s.StoreDb.reset();
    km::CompactInPlace(s.DatabasePath);
    if (wasOpen) s.StoreDb = km::StoreDb::OpenDatabase(s.DatabasePath, true, s.ReadOnly);
}

int SweepDuplicates() {
    km::StoreDb &store = Store();
    int removed = 0;
    QList<int> sections;
    {
        auto rows = store.OpenRowSet(QStringLiteral("SELECT fSec FROM tt GROUP BY fSec HAVING fSec>10;"),
                                     km::Snapshot);
        for (; !rows->Eof(); rows->MoveNext())
            sections << rows->GetColumn("fSec").toInt();
    }
    for (int section : sections) {
        QList<QByteArray> doubled;
        {
            auto rows = store.OpenRowSet(
                QStringLiteral("SELECT fT1 FROM tt WHERE fSec=%1 And Not(fT1 Is Null) GROUP BY fT1 "
                               "HAVING (Count(fPK)>1);")
                    .arg(section),
                km::Snapshot);
            for (; !rows->Eof(); rows->MoveNext())
                doubled << rows->GetColumn("fT1").toByteArray();
        }
        if (doubled.isEmpty()) continue;
        km::Transaction transaction(store);
        {
            auto rows =
                store.OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fSec=%1").arg(section), km::Dynaset);
            for (const QByteArray &value : doubled) {
                bool first = true;
                for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) {
                    if (rows->GetColumn("fT1").toByteArray() != value) continue;
                    if (first) {
                        first = false;
                        continue;
                    }
                    rows->Delete();
                    ++removed;
                }
            }
        }
        transaction.Commit();
    }
    return removed;
}

QString NewArchiveFile() {
    QString path = state().DatabasePath;
    if (path.isEmpty()) {
        say(154);
        return QString();
    }
    path.chop(1);
    path += QLatin1Char('a');
    if (!QFileInfo::exists(path) && CreateStoreFile(path) != 0) {
        say(154);
        return QString();
    }
    return path;
}

void CloseStore(bool saveSettings) {
    State &s = state();
    if (saveSettings && s.StoreDb && s.DbOpen) {
        try {
            Startvariables::SaveStartVariables();
        } catch (const km::EngineError &) {
            // The store is closing all the same; its keys must go.
        }
    }
    CRY::UnloadKeyTable();
    Passphrase::Wipe();
    Users::Wipe();
    s.StoreDb.reset();
    s.DbOpen = false;
    if (s.AfterClose) s.AfterClose();
}

void ExitProgram() {
    if (state().StoreDb) CloseStore();
    SaveRecentFiles();
}

} // namespace db
