// The restore window: the backups of a folder with their time stamps; a
// chosen one is checked whole, expanded beside its store and put in the
// store's place, the replaced store kept as ".kmb". Delete removes a backup
// file; Verify tests one without writing anything.
#pragma once

#include <functional>
#include <vector>

#include <QString>

#include "backup/ZLib.h"
#include "ui/WindowModel.h"

namespace km {

// One row of the list: the store's name, the stamp read back from the file
// name, the size column (kept empty), the full path of the ".kmz".
struct BackupRow {
    QString text;
    QString stamp;
    QString dimensions;
    QString tag;
};

class frmRestore : public WindowModel {
public:
    struct Hooks {
        // Closes the session's store before the files change places.
        std::function<void()> closeStore;
        // Busy on or off around long work (the wait cursor, the window off).
        std::function<void(bool)> setBusy;
        // Called between slices of expanding, to keep the window drawn.
        ZLib::Progress progress;
    };
    explicit frmRestore(Hooks hooks = {});

    QString caption() const override { return QStringLiteral("Restore"); }
    static constexpr const char *Columns[3] = {"Original File Name", "Backup Date/Time", "Dimensions (KBytes)"};

    QString txtBackupFolder; // its tool tip is the same text
    std::vector<BackupRow> LV;
    int selected = -1; // the row selected, -1 for none
    bool listEnabled() const { return !LV.empty(); }

    // Shared with the caller: the folder the store was restored to, and
    // whether the window ended without a restore.
    QString DialogResult;
    bool DialogCancelled = false;
    // The store's path after a restore; empty when it could not take its place.
    QString restoredPath;

    void Form_Load();
    void LoadBackupList();
    void LV_Click(int row) { selected = row >= 0 && row < static_cast<int>(LV.size()) ? row : -1; }
    void cmdChangeDir_Click();
    void cmdDelete_Click();
    void cmdRestore_Click();
    void cmdVerify_Click();
    void cmdCancel_Click();

private:
    void busy(bool on);
    Hooks m_hooks;
    QString m_restoreFolder; // asked at load when no store was ever used here
};

// "yymmddHHnnss" at the end of a backup's stem as "date  time" in the
// system's short forms; empty when the name holds no such stamp.
QString StampText(const QString &fileName);

} // namespace km
