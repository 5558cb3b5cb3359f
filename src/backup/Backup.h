// The Tools menu's Backup and Restore on the main window.
#pragma once

#include "backup/ZLib.h"

namespace km {

class frmMDI;

// Compacts the store, asks for the folder, writes the backup and reopens the
// store with the keys it had, without asking for the passphrase again. With
// no store open it asks for a store file and ends in the DB menu.
bool DbBackup(frmMDI &mdi);
// The restore window, then the restored store opened with the passphrase.
bool DbRestore(frmMDI &mdi);
// Sets the main window's hooks; progress is called between slices of long
// work (the program lets its events run there).
void RegisterBackup(frmMDI &mdi);

} // namespace km
