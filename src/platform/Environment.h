// Folders, paths and the one-instance guard of the desktop program.
#pragma once

#include <QString>

namespace km {

// Folder ids the program asks for.
constexpr int FolderDocuments = 5; // the user's documents

// The folder of an id: FolderDocuments is the desktop's documents folder.
// Empty for any other id or when the system names no such folder.
QString SpecialFolder(int id);

// The text before the last path separator if wantFolder is set, the text after
// it if not; "" for an empty path. Both "/" and "\" separate, as paths typed or
// stored on another system use the backslash. A path without a separator has
// no folder ("") and is all name.
QString FolderOfPath(const QString &path, bool wantFolder);

// Takes the lock that keeps a second copy of the program from running on this
// machine: a lock file "kestrelmondarin.lock" in the user's runtime folder,
// held until ReleaseSingleInstance or the end of the process. False only if
// another live process holds it; a lock left behind by a process that has died
// is taken over. If no lock file can be made at all, the program is not kept
// from running (true).
bool TryLockSingleInstance();
void ReleaseSingleInstance();
// The lock file's path.
QString SingleInstanceLockPath();
// Put the lock file in this folder instead of the runtime folder (tests); an
// empty folder returns to the runtime folder.
void SetRuntimeFolder(const QString &folder);

} // namespace km
