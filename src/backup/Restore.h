// Putting a backup's store in place, and looking into a backup without
// writing anything. Three files take part: ".kmd" the store, ".kmr" the
// expanded backup waiting to take its place, ".kmb" the store it replaced.
#pragma once

#include <memory>

#include <QByteArray>
#include <QString>

#include "backup/ZLib.h"

namespace km {
class StoreDb;
}

namespace Restore {

// The staged file for a backup's stored path: the path with its last letter
// replaced by "r" (".kmd" gives ".kmr"), under folder if one is given.
QString StagedPath(const QString &storedPath, const QString &folder = QString());

// Writes the expanded store as the staged file (whole, synced, private).
bool WriteStaged(const QString &staged, const QByteArray &store);

// The staged file takes the store's place: an older ".kmb" goes, the store
// becomes the ".kmb" (its log with it), the ".kmr" becomes the ".kmd". A
// store stands under the ".kmd" name at every moment where the file system
// allows a second name for it. True when the ".kmd" now holds the backup.
bool PutInPlace(const QString &staged);

// The ".kmd" the staged file becomes.
QString TargetOf(const QString &staged);

// Opens a backup's store in memory, read-only, as the session's store and
// logs in to it with the passphrase asked through the dialogs. The store
// and keys of the session until then are kept aside and come back when the
// returned guard goes. 0, or the message row of the failure.
class ImageSession {
public:
    explicit ImageSession(const QByteArray &store);
    ~ImageSession();
    ImageSession(const ImageSession &) = delete;
    ImageSession &operator=(const ImageSession &) = delete;
    // 0 when the store opened with the passphrase, else the message row.
    int result() const { return m_result; }

private:
    struct Saved;
    std::unique_ptr<Saved> m_saved;
    int m_result = 0;
};

// Decrypts and unpacks every row's record of the open store; the number of
// rows that fail (the first one's id in *firstBad).
qint64 CheckPayloads(km::StoreDb &store, qint64 *rows, qint64 *firstBad);

// The text shown when a backup passed every test.
inline constexpr char VerifiedText[] = "Backup is complete and opens with your passphrase.";

// Everything the Verify button runs: expand in memory, the trailer, the
// stream and the size, the store, the passphrase, every record. The text to
// show: VerifiedText or what failed.
QString VerifyBackup(const QString &path, const ZLib::Progress &progress = {});

} // namespace Restore
