#include "backup/Backup.h"

#include <QDateTime>
#include <QFileInfo>

#include "backup/frmBackup.h"
#include "backup/frmRestore.h"
#include "platform/Clock.h"
#include "platform/EngineMaintenance.h"
#include "platform/Registry.h"
#include "platform/SecureBytes.h"
#include "shell/frmMDI.h"
#include "store/KeptLogin.h"
#include "store/Users.h"
#include "store/db.h"
#include "store/frmMenuDB.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km {

namespace {

// Long work lets the events run between its slices; the window is off meanwhile.
void letEventsRun() {
    desktop().processEvents();
}

void showMenuDB() {
    frmMenuDB dialog;
    ui().showModal(dialog);
}

} // namespace

bool DbBackup(frmMDI &mdi) {
    // CloseStore wipes the key table: the kept login brings the store back
    // without the passphrase.
    db::KeptLogin login;
    const bool wasShowing = mdi.privateShown();

    mdi.GoToSection(8);
    mdi.OutlookBarEnabled(false);
    mdi.enabled = false;
    mdi.changed();
    bool result = false;

    QString path = db::state().DatabasePath;
    if (path.isEmpty()) {
        FileDialogSpec spec;
        spec.filters = {QStringLiteral("kmd-Files (*.kmd)")};
        spec.directory = db::StoreFolder();
        spec.mustExist = true;
        if (auto chosen = ui().openFile(spec)) path = *chosen;
    }
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        if (!path.isEmpty()) ShowMessage(134, Buttons::OK, Answer::OK, Icon::Exclamation);
        mdi.enabled = true;
        mdi.OutlookBarEnabled(db::state().DbOpen);
        return false;
    }

    mdi.setBusy(nullptr, true);
    if (db::state().DbOpen) mdi.CloseStore();
    bool compacted = true;
    try {
        CompactInPlace(path);
    } catch (const EngineError &) {
        compacted = false;
    }

    frmBackup dialog;
    if (compacted) {
        mdi.setBusy(nullptr, false);
        dialog.Form_Load();
        if (!dialog.closeRequested) ui().showModal(dialog);
        if (dialog.DialogResult.isEmpty()) {
            // Cancelled: the store stays closed, the keys are gone; the
            // person opens it again from the File menu.
            mdi.OutlookBarEnabled(true);
            mdi.enabled = true;
            mdi.changed();
            return false;
        }
        mdi.setBusy(nullptr, true);
        RegWrite(QString::fromLatin1(BackupPathValue), dialog.DialogResult);
        const QString destination =
            dialog.DialogResult + QLatin1Char('/') + ZLib::BackupFileName(path, Clock::now());
        const qint64 written = ZLib::CompressFile(path, destination, letEventsRun);
        if (written > 0) {
            result = true;
            const QString name = QFileInfo(path).fileName().section(QLatin1Char('.'), 0, 0);
            ui().message(LanguageUS::MessageText(136) + QLatin1Char('\n') + name +
                             ZLib::TimeStamp(Clock::now()) + QStringLiteral(".kmz"),
                         Buttons::OK, Answer::OK, Icon::Information);
        }
    } else {
        ShowMessage(137, Buttons::OK, Answer::OK, Icon::Exclamation);
    }

    if (login.held()) {
        try {
            login.reopen(path);
            mdi.setPrivateShown(wasShowing);
        } catch (const EngineError &e) {
            ui().message(e.description(), Buttons::OK, Answer::OK, Icon::Exclamation);
        }
        mdi.setBusy(nullptr, false);
        mdi.OutlookBarEnabled(db::state().DbOpen);
    } else {
        mdi.setBusy(nullptr, false);
        showMenuDB();
    }
    mdi.enabled = true;
    mdi.changed();
    return result;
}

bool DbRestore(frmMDI &mdi) {
    mdi.GoToSection(8);
    mdi.OutlookBarEnabled(false);
    frmRestore::Hooks hooks;
    hooks.closeStore = [&mdi] {
        if (db::state().DbOpen) mdi.CloseStore();
    };
    hooks.setBusy = [&mdi](bool on) { mdi.setBusy(nullptr, on); };
    hooks.progress = letEventsRun;
    frmRestore window(hooks);
    window.Form_Load();
    if (!window.closeRequested) ui().showModal(window);

    bool restored = false;
    if (!window.DialogCancelled) {
        restored = !window.restoredPath.isEmpty();
        db::state().DatabasePath = window.restoredPath;
        if (restored) {
            if (ShowMessage(141, Buttons::YesNo, Answer::Yes, Icon::Question) == Answer::Yes) {
                if (db::OpenStore() != 0) showMenuDB();
                if (!db::state().DbOpen) {
                    ShowMessage(97, Buttons::OK, Answer::OK, Icon::Critical);
                    throw ProgramEnd{1, 97};
                }
            } else {
                showMenuDB();
            }
        } else {
            showMenuDB();
        }
    }
    desktop().setWaitCursor(false);
    mdi.OutlookBarEnabled(db::state().DbOpen);
    return restored;
}

void RegisterBackup(frmMDI &mdi) {
    mdi.DbBackup = [&mdi] { return DbBackup(mdi); };
    mdi.DbRestore = [&mdi] { return DbRestore(mdi); };
    mdi.changed();
}

} // namespace km
