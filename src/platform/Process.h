// Process-wide hardening done first thing in both programs.
#pragma once

namespace km {
// No core file may carry a key table or a decrypted value to disk.
void DisableCoreDumps();
// Every file and folder the process makes from now on is its owner's alone
// (umask 077): the store, SQLite's log and temporary files beside it, the
// settings file and its lock. The store's own code sets its files' modes as
// well, for callers that do not start here.
void KeepNewFilesPrivate();
} // namespace km
