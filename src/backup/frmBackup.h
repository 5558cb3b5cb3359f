// The folder dialog of a backup, and of a restore whose original store still
// stands at its old path. The mode is chosen by DialogResult when the window
// is made: empty for a backup, a folder for a restore.
#pragma once

#include "ui/WindowModel.h"

namespace km {

class frmBackup : public WindowModel {
public:
    explicit frmBackup(QString dialogResult = QString());

    QString caption() const override;
    bool restoreMode() const { return m_restore; }
    QString lblBackup() const;
    QString cmdBackupCaption() const;
    bool cmdCancelEnabled() const { return !m_restore; }

    // The folder shown; its tool tip is the same text.
    QString txtBackupTo;
    // The folder on Backup/OK, empty on Cancel.
    QString DialogResult;

    // Finds the start folder (and in backup mode makes it and keeps it as
    // "BackupPath" at once). A backup with no folder at all cancels.
    void Form_Load();
    void cmdChangeDir_Click();
    void cmdBackup_Click();
    void cmdCancel_Click();

private:
    bool m_restore;
};

// The registry value that keeps the backup folder.
inline constexpr char BackupPathValue[] = "BackupPath";
// The folder "Backup" beside the most recent store (or the open one); empty
// when neither is known.
QString DefaultBackupFolder();

} // namespace km
