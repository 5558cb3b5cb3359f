#include "platform/Environment.h"

#include <QDir>
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

} // namespace

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
