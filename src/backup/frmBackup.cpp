#include "backup/frmBackup.h"

#include <QDir>
#include <QFileInfo>

#include "platform/Environment.h"
#include "platform/Registry.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace km {

QString DefaultBackupFolder() {
    QString store = RegRead(QStringLiteral("MostRecentFiles\\1"));
    if (store.isEmpty()) store = db::state().DatabasePath;
    const QString folder = FolderOfPath(store, true);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/Backup");
}

frmBackup::frmBackup(QString dialogResult) : m_restore(!dialogResult.isEmpty()) {
    txtBackupTo = std::move(dialogResult);
}

QString frmBackup::caption() const {
    return m_restore ? QStringLiteral("Restore") : QStringLiteral("Backup");
}

QString frmBackup::lblBackup() const {
    return m_restore ? QStringLiteral("Restore To Folder:") : QStringLiteral("Backup To Folder:");
}

QString frmBackup::cmdBackupCaption() const {
    return m_restore ? QStringLiteral("OK") : QStringLiteral("Backup");
}

void frmBackup::Form_Load() {
    if (m_restore) {
        if (!QFileInfo(txtBackupTo).isDir()) txtBackupTo = SpecialFolder(FolderDocuments);
        return;
    }
    txtBackupTo = RegRead(QString::fromLatin1(BackupPathValue));
    if (txtBackupTo.isEmpty() || !QFileInfo(txtBackupTo).isDir()) {
        txtBackupTo = DefaultBackupFolder();
        if (txtBackupTo.isEmpty()) {
            const auto chosen = ui().pickFolder(LanguageUS::MessageText(132), SpecialFolder(FolderDocuments));
            if (!chosen || chosen->isEmpty()) return cmdCancel_Click();
            txtBackupTo = *chosen;
        }
        // A folder that cannot be made shows when the file cannot be written.
        MakePrivateFolder(txtBackupTo);
    }
    RegWrite(QString::fromLatin1(BackupPathValue), txtBackupTo);
}

void frmBackup::cmdChangeDir_Click() {
    const auto chosen = ui().pickFolder(LanguageUS::MessageText(144), txtBackupTo);
    if (chosen && !chosen->isEmpty()) txtBackupTo = *chosen;
}

void frmBackup::cmdBackup_Click() {
    DialogResult = txtBackupTo;
    close(true);
}

void frmBackup::cmdCancel_Click() {
    DialogResult.clear();
    close(false);
}

} // namespace km
