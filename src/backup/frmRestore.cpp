#include "backup/frmRestore.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include "backup/Restore.h"
#include "backup/frmBackup.h"
#include "platform/Environment.h"
#include "platform/Registry.h"
#include "platform/SecureBytes.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace km {

QString StampText(const QString &fileName) {
    const QString stem = fileName.section(QLatin1Char('.'), 0, 0);
    if (stem.size() < 12) return QString();
    const QString s = stem.right(12);
    for (QChar c : s)
        if (!c.isDigit()) return QString();
    const QDate date(2000 + s.mid(0, 2).toInt(), s.mid(2, 2).toInt(), s.mid(4, 2).toInt());
    const QTime time(s.mid(6, 2).toInt(), s.mid(8, 2).toInt(), s.mid(10, 2).toInt());
    if (!date.isValid() || !time.isValid()) return QString();
    const QLocale locale = QLocale::system();
    return locale.toString(date, QLocale::ShortFormat) + QStringLiteral("  ") +
           locale.toString(time, QLocale::ShortFormat);
}

frmRestore::frmRestore(Hooks hooks) : m_hooks(std::move(hooks)) {}

void frmRestore::busy(bool on) {
    if (m_hooks.setBusy) m_hooks.setBusy(on);
}

void frmRestore::Form_Load() {
    const QString recent = RegRead(QStringLiteral("MostRecentFiles\\1"));
    QString folder = RegRead(QString::fromLatin1(BackupPathValue));
    if (folder.isEmpty()) {
        folder = DefaultBackupFolder();
        if (folder.isEmpty()) {
            const auto chosen = ui().pickFolder(LanguageUS::MessageText(132), SpecialFolder(FolderDocuments));
            if (!chosen || chosen->isEmpty()) return cmdCancel_Click();
            folder = *chosen;
        }
        RegWrite(QString::fromLatin1(BackupPathValue), folder);
    }
    // With no store known here at all, the person says where a restored one goes.
    if (recent.isEmpty() && db::state().DatabasePath.isEmpty()) {
        const auto chosen = ui().pickFolder(LanguageUS::MessageText(147), SpecialFolder(FolderDocuments));
        if (chosen) m_restoreFolder = *chosen;
    }
    txtBackupFolder = folder;
    LoadBackupList();
}

void frmRestore::LoadBackupList() {
    LV.clear();
    selected = -1;
    // By name: the stamps of one store's backups then stand in time order,
    // and the last row, selected, is the newest.
    const QStringList names = QDir(txtBackupFolder).entryList({QStringLiteral("*.kmz")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        BackupRow row;
        row.text = (name.size() > 16 ? name.chopped(16) : name.chopped(4)) + QStringLiteral(".kmd");
        row.stamp = StampText(name);
        row.tag = QDir(txtBackupFolder).filePath(name);
        LV.push_back(row);
    }
    if (!LV.empty()) selected = static_cast<int>(LV.size()) - 1;
}

void frmRestore::cmdChangeDir_Click() {
    const auto chosen = ui().pickFolder(LanguageUS::MessageText(144), txtBackupFolder);
    if (!chosen || chosen->isEmpty()) return;
    txtBackupFolder = *chosen;
    LoadBackupList();
}

void frmRestore::cmdDelete_Click() {
    if (selected < 0) {
        ShowMessage(161, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    if (ShowMessage(145, Buttons::YesNo, Answer::No, Icon::Question) != Answer::Yes) return;
    QFile::remove(LV.at(static_cast<size_t>(selected)).tag);
    LV.erase(LV.begin() + selected);
    selected = std::min(selected, static_cast<int>(LV.size()) - 1);
}

void frmRestore::cmdCancel_Click() {
    DialogResult.clear();
    DialogCancelled = true;
    close(false);
}

void frmRestore::cmdVerify_Click() {
    if (selected < 0) {
        ShowMessage(161, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    busy(true);
    const QString text = Restore::VerifyBackup(LV.at(static_cast<size_t>(selected)).tag, m_hooks.progress);
    busy(false);
    const bool good = text == QLatin1String(Restore::VerifiedText);
    ui().message(text, Buttons::OK, Answer::OK, good ? Icon::Information : Icon::Exclamation);
}

void frmRestore::cmdRestore_Click() {
    if (selected < 0) {
        ShowMessage(161, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    struct Busy {
        frmRestore &w;
        ~Busy() { w.busy(false); }
    } busyUntilDone{*this};
    busy(true);

    // Everything is checked before anything is renamed or closed: a backup
    // that fails any test leaves the store open and every file as it was.
    ZLib::Backup backup;
    if (const int err = ZLib::ReadBackup(LV.at(static_cast<size_t>(selected)).tag, backup, m_hooks.progress)) {
        ShowMessage(err, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    QString staged = Restore::StagedPath(backup.sourcePath);
    const QString original = Restore::TargetOf(staged);
    if (QFileInfo::exists(original)) {
        frmBackup where(FolderOfPath(original, true));
        where.Form_Load();
        ui().showModal(where);
        if (!where.DialogResult.isEmpty()) {
            DialogResult = where.DialogResult;
            staged = Restore::StagedPath(backup.sourcePath, DialogResult);
        } else {
            DialogResult = FolderOfPath(original, true);
        }
    } else {
        // The store's old folder is not on this machine: the folder asked
        // at load, or the person's documents.
        DialogResult = m_restoreFolder.isEmpty() ? SpecialFolder(FolderDocuments) : m_restoreFolder;
        staged = Restore::StagedPath(backup.sourcePath, DialogResult);
    }
    const bool written = Restore::WriteStaged(staged, backup.store);
    wipe(backup.store);
    if (!written) {
        QFile::remove(staged);
        ShowMessage(131, Buttons::OK, Answer::OK, Icon::Exclamation);
        DialogResult.clear();
        return;
    }

    if (ShowMessage(138, Buttons::OKCancel, Answer::OK, Icon::Exclamation) == Answer::Cancel &&
        ShowMessage(139, Buttons::YesNo, Answer::Yes, Icon::Question) == Answer::Yes) {
        // The expanded file stays where it is, as the person may want it.
        DialogCancelled = true;
        DialogResult.clear();
        close(false);
        return;
    }
    if (m_hooks.closeStore) m_hooks.closeStore();
    if (Restore::PutInPlace(staged)) {
        ShowMessage(140, Buttons::OK, Answer::OK, Icon::Information);
        restoredPath = Restore::TargetOf(staged);
    } else {
        restoredPath.clear();
    }
    DialogCancelled = false;
    DialogResult.clear();
    close(true);
}

} // namespace km
