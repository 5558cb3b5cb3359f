#include "backup/Restore.h"

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>

#include "platform/Engine.h"
#include "platform/SecureBytes.h"
#include "store/CRY.h"
#include "store/Passphrase.h"
#include "store/Record_Get.h"
#include "store/Users.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace Restore {

namespace {

QByteArray native(const QString &path) {
    return QFile::encodeName(path);
}

void syncFolderOf(const QString &path) {
    const int dir = ::open(native(QFileInfo(path).absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
}

} // namespace

QString StagedPath(const QString &storedPath, const QString &folder) {
    QString path = storedPath;
    if (!folder.isEmpty()) {
        // The stored path may come from another system, with backslashes.
        const qsizetype cut = std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
        path = folder + QLatin1Char('/') + path.mid(cut + 1);
    }
    path.chop(1);
    return path + QLatin1Char('r');
}

QString TargetOf(const QString &staged) {
    return staged.chopped(1) + QLatin1Char('d');
}

bool WriteStaged(const QString &staged, const QByteArray &store) {
    return ZLib::WriteFileWhole(staged, store);
}

bool PutInPlace(const QString &staged) {
    const QString stem = staged.chopped(1);
    const QString kmd = stem + QLatin1Char('d'), kmb = stem + QLatin1Char('b');
    if (!QFileInfo::exists(staged)) return false;
    QFile::remove(kmb);
    QFile::remove(kmb + QStringLiteral("-wal"));
    if (QFileInfo::exists(kmd)) {
        // A log left beside the store belongs to it, never to the file that
        // takes its name.
        const QString wal = kmd + QStringLiteral("-wal");
        if (QFileInfo::exists(wal) && std::rename(native(wal).constData(), native(kmb + "-wal").constData()) != 0)
            return false;
        // A second name first, so that the store is never without its own;
        // where links are refused, a rename.
        if (::link(native(kmd).constData(), native(kmb).constData()) != 0 &&
            std::rename(native(kmd).constData(), native(kmb).constData()) != 0)
            return false;
    }
    if (std::rename(native(staged).constData(), native(kmd).constData()) != 0) return false;
    syncFolderOf(kmd);
    return true;
}

struct ImageSession::Saved {
    std::unique_ptr<km::StoreDb> store;
    QString path;
    bool hadKeys = false;
    km::SecureBytes keys;
    Users::State users;
    bool dbOpen = false;
};

ImageSession::ImageSession(const QByteArray &store) : m_saved(std::make_unique<Saved>()) {
    db::State &d = db::state();
    Saved &s = *m_saved;
    s.hadKeys = CRY::KeyTableLoaded();
    if (s.hadKeys) s.keys = CRY::state().KeyTable;
    s.users = Users::state();
    s.store = std::move(d.StoreDb);
    s.path = d.DatabasePath;
    s.dbOpen = d.DbOpen;
    try {
        d.StoreDb = km::StoreDb::OpenImage(store);
    } catch (const km::EngineError &) {
        m_result = 131;
        return;
    }
    try {
        int err = Passphrase::GetPassphrase(false);
        if (err == 0) err = Passphrase::OpenKeyRows();
        if (err != 0) m_result = err < 0 ? -err : 97;
    } catch (const km::EngineError &) {
        // A key row the open would have to mend: the image is read-only.
        m_result = 97;
    }
    Passphrase::Wipe();
}

ImageSession::~ImageSession() {
    db::State &d = db::state();
    Saved &s = *m_saved;
    d.StoreDb = std::move(s.store);
    d.DatabasePath = s.path;
    d.DbOpen = s.dbOpen;
    Users::Wipe();
    Users::state() = s.users;
    if (s.hadKeys)
        CRY::LoadKeyTable(s.keys);
    else
        CRY::UnloadKeyTable();
    km::wipe(s.keys);
    km::wipe(s.users.User.PassHash);
    km::wipe(s.users.User.SealedMaster);
    km::wipe(s.users.Pin);
}

qint64 CheckPayloads(km::StoreDb &store, qint64 *rows, qint64 *firstBad) {
    auto r = store.OpenRowSet(QStringLiteral("SELECT fPK, fSec, fSub, fEtx FROM tt ORDER BY fPK"), km::Snapshot);
    qint64 bad = 0, total = 0;
    for (; !r->Eof(); r->MoveNext()) {
        ++total;
        const int section = r->GetColumn("fSec").toInt();
        const int sub = r->GetColumn("fSub").toInt();
        // Key rows and user rows are sealed under the passphrase, not the table.
        if ((section == 1 && (sub == 1 || sub == 2)) || section == 2) continue;
        bool ok = CRY::DecryptToPlainBytes(r->GetColumn("fEtx").toByteArray());
        if (ok) {
            QStringList values;
            ok = Record_Get::UnpackRecord(values, CRY::state().PlainBytes);
            for (QString &v : values)
                km::wipe(v);
        }
        if (!ok && bad++ == 0 && firstBad) *firstBad = r->GetColumn("fPK").toLongLong();
    }
    if (rows) *rows = total;
    return bad;
}

QString VerifyBackup(const QString &path, const ZLib::Progress &progress) {
    ZLib::Backup backup;
    if (const int err = ZLib::ReadBackup(path, backup, progress)) return LanguageUS::MessageText(err);
    ImageSession session(backup.store);
    km::wipe(backup.store);
    if (session.result() != 0) return LanguageUS::MessageText(session.result());
    qint64 rows = 0, firstBad = 0;
    const qint64 bad = CheckPayloads(db::Store(), &rows, &firstBad);
    if (bad != 0)
        return QStringLiteral("%1 of %2 records do not decrypt (the first: %3).").arg(bad).arg(rows).arg(firstBad);
    return QString::fromLatin1(VerifiedText);
}

} // namespace Restore
