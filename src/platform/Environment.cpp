#include "platform/Environment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>

#include <algorithm>
#include <memory>

namespace km {

namespace {

struct EnvironmentState {
    QString runtimeFolder; // empty: QStandardPaths::RuntimeLocation
    std::unique_ptr<QLockFile> instanceLock;
};

EnvironmentState &state() {
    static EnvironmentState s;
    return s;
}

constexpr QFile::Permissions OwnerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

} // namespace

bool MakePrivateFolder(const QString &path) {
    if (path.isEmpty()) return false;
    const QString folder = QDir::cleanPath(QDir(path).absolutePath());
    if (QFileInfo(folder).isDir()) return true;
    const QString parent = QFileInfo(folder).path();
    if (parent != folder && !MakePrivateFolder(parent)) return false;
    return QDir().mkdir(folder, OwnerOnly) || QFileInfo(folder).isDir();
}

bool CreatePrivateFile(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner);
}

bool KeepPrivate(const QString &path) {
    if (!QFileInfo::exists(path)) return false;
    const QFile::Permissions now = QFile::permissions(path);
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (!(now & others)) return true;
    return QFile::setPermissions(path, now & OwnerOnly);
}

QString SpecialFolder(int id) {
    if (id != FolderDocuments) return QString();
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString FolderOfPath(const QString &path, bool wantFolder) {
    if (path.isEmpty()) return QString();
    const qsizetype cut = std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
    if (wantFolder) return cut < 0 ? QString() : path.left(cut);
    return path.mid(cut + 1);
}

QString SingleInstanceLockPath() {
    QString folder = state().runtimeFolder;
    if (folder.isEmpty()) folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) folder = QDir::tempPath();
    return QDir(folder).filePath(QStringLiteral("kestrelmondarin.lock"));
}

bool TryLockSingleInstance() {
    EnvironmentState &s = state();
    if (s.instanceLock) return true;
    auto lock = std::make_unique<QLockFile>(SingleInstanceLockPath());
    // The program may run for days: only a dead owner makes the lock stale,
    // never its age.
    lock->setStaleLockTime(0);
    if (lock->tryLock(0)) {
        s.instanceLock = std::move(lock);
        return true;
    }
    return lock->error() != QLockFile::LockFailedError;
}

void ReleaseSingleInstance() {
    state().instanceLock.reset();
}

void SetRuntimeFolder(const QString &folder) {
    ReleaseSingleInstance();
    state().runtimeFolder = folder;
}

} // namespace km
