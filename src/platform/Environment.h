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

// ---- Private files ----
// The store, its copies and the settings file are the owner's alone (0600),
// and so is a folder the program makes for them (0700).

// Makes the folder and every missing folder above it, each 0700; folders that
// exist already are left as they are. False if the folder is not there after.
bool MakePrivateFolder(const QString &path);
// Creates the file empty with mode 0600; false if it exists already or
// cannot be made.
bool CreatePrivateFile(const QString &path);
// Takes group and other access from a file or folder (0600 for a file that
// was 0644); false if the mode could not be set.
bool KeepPrivate(const QString &path);

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
